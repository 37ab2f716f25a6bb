#include "ui/HeaderBar.h"

#include "app/AppState.h"
#include "app/Screens.h"
#include "app/settings/KeysScreen.h"
#include "core/Task.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QTabBar>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

HeaderBar::HeaderBar(AppState &app, Screens &screens, QWidget *parent)
    : PanelFrame(&Tokens::sheet, parent), m_app(app), m_screens(screens),
      m_name(new TextLabel(u"Parcelory"_s, FontRole::h2)), m_tabs(new QTabBar), m_mode(new Badge({}, BadgeKind::plain)),
      m_scanStatus(new ElidedLabel({}, FontRole::caption, &Tokens::muted)),
      m_scanForm(new Button(u"SCAN Form"_s, Button::Kind::standard, u"ui_scanform"_s)),
      m_userSeparator(new Separator(Qt::Vertical)), m_user(new ElidedLabel({}, FontRole::caption, &Tokens::muted)),
      m_signOut(nullptr), m_refresh([this] { refresh(); })
{
    const Theme &theme = Theme::current();
    setLines(Qt::BottomEdge);
    setFixedHeight(theme.scaled(47));
    m_tabs->setDocumentMode(true);
    m_tabs->setExpanding(false);
    m_tabs->setDrawBase(false);
    m_tabs->setAccessibleName(u"Screens"_s);
    m_tabs->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred); // no tab behind arrows
    setAccessibleRole(m_scanStatus, QAccessible::Notification);
    m_tabs->setFont(theme.font(FontRole::strong)); // measured in bold, so that changing tabs moves nothing
    for (const MainTabInfo &info : mainTabs())
        m_tabs->addTab(info.title);
    m_mode->setTall(24);
    m_userSeparator->setFixedHeight(theme.scaled(20));
    m_user->setMaximumWidth(theme.scaled(160));
    m_scanStatus->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_scanStatus->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // takes only unused width
    m_scanForm->setToolTip(u"Create today's USPS SCAN form (manifest) and print it"_s);
    auto *signOut = new Button(u"Sign Out"_s, Button::Kind::link);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(16, 0, 12, 1);
    row->setSpacing(8);
    row->addWidget(new IconView(u"parcelory_mark"_s, 22, &Tokens::accent));
    row->addWidget(m_name);
    row->addSpacing(4);
    row->addWidget(m_tabs);
    row->addWidget(m_scanStatus, 1);
    row->addWidget(m_mode);
    row->addWidget(m_scanForm);
    row->addSpacing(4);
    row->addWidget(m_userSeparator);
    row->addWidget(m_user);
    row->addWidget(signOut);
    m_signOut = signOut;

    connect(m_tabs, &QTabBar::currentChanged, this, [this](int at) { m_app.tab = mainTabs()[at].tab; });
    connect(m_scanForm, &QPushButton::clicked, this,
            [this] { spawn([&screens = m_screens] { return screens.createScanForm(); }); });
    connect(signOut, &QPushButton::clicked, this, [this] { m_app.signOut(); });
    m_refresh.follow(screens);
    refresh();
}

/// A badge on the mailing log's tab.
void HeaderBar::showOpenItems(int count)
{
    if (std::exchange(m_openItems, count) == count)
        return;
    const int tab = int(MainTab::mailingLog);
    m_tabs->setTabButton(tab, QTabBar::RightSide,
                         count > 0 ? new Badge(QString::number(count), BadgeKind::pending) : nullptr);
    m_tabs->setAccessibleTabName(tab, count == 0   ? QString()
                                      : count == 1 ? mainTabs()[tab].title + u", 1 open item"_s
                                                   : mainTabs()[tab].title + u", %1 open items"_s.arg(count));
}

/// The program's name leaves before a tab, a button or the user's name is cut.
void HeaderBar::placeName()
{
    if (!isVisible()) // it has no width yet
        return;
    const int name = m_name->sizeHint().width() + layout()->spacing();
    const int all = layout()->sizeHint().width() + (m_name->isHidden() ? name : 0);
    m_name->setVisible(all <= width());
}

void HeaderBar::showEvent(QShowEvent *event)
{
    PanelFrame::showEvent(event);
    placeName();
}

void HeaderBar::resizeEvent(QResizeEvent *event)
{
    PanelFrame::resizeEvent(event);
    placeName();
}

void HeaderBar::refresh()
{
    m_tabs->setCurrentIndex(int(m_app.tab.value()));
    showOpenItems(m_screens.openItems.count);
    m_signOut->setEnabled(!m_screens.label.busy); // the operation may still ask the clerk a question
    m_user->setFullText(m_app.signedInUser);
    m_user->setVisible(!m_user->fullText().isEmpty());
    m_userSeparator->setVisible(!m_user->fullText().isEmpty());
    enable(m_scanForm, !m_app.scanFormBusy, m_tabs); // a second press must not reach Sign Out
    const QString closing = m_app.scanFormBusy ? u"Parcelory closes when the SCAN form is done."_s
                                               : u"Parcelory closes when the purchase is done."_s;
    if (const QString status = m_app.closing ? closing : m_app.scanFormNews(); status != m_scanStatus->fullText()) {
        m_scanStatus->setFullText(status);
        if (!status.isEmpty())
            announce(m_scanStatus);
    }
    const PostageMode mode = m_screens.keys.mode;
    m_mode->setVisible(mode == PostageMode::test || mode == PostageMode::practice);
    if (mode == PostageMode::practice)
        m_mode->set(u"PRACTICE MODE"_s, BadgeKind::practice);
    else
        m_mode->set(u"TEST MODE"_s, BadgeKind::test);
    placeName();
}

} // namespace parcelory
