#include "ui/settings/SettingsView.h"

#include "app/AppState.h"
#include "app/Screens.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TabOrder.h"
#include "ui/settings/ApiKeysPage.h"
#include "ui/settings/ContactsPage.h"
#include "ui/settings/CustomBoxesPage.h"
#include "ui/settings/PrintersPage.h"
#include "ui/settings/RecordsPage.h"
#include "ui/settings/RulesPage.h"
#include "ui/settings/SenderProfilesPage.h"
#include "ui/settings/UpdatesPage.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPainter>
#include <QStackedWidget>
#include <QStyledItemDelegate>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int iconRole = Qt::UserRole, sectionWidth = 220, rowHeight = 32, rowGap = 2, glyph = 16;

class SectionDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        return {100, Theme::current().scaled(rowHeight) + rowGap};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const Theme &theme = Theme::current();
        const Tokens &t = theme.tokens();
        const bool chosen = option.state & QStyle::State_Selected;
        const QRect row = option.rect.adjusted(0, 0, 0, -rowGap);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (chosen) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(t.rowSel);
            painter->drawRoundedRect(row, Theme::radius, Theme::radius);
        }
        const int size = theme.scaled(glyph);
        paintIcon(*painter, index.data(iconRole).toString(),
                  {row.left() + 11, row.center().y() - size / 2 + 1, size, size}, chosen ? t.accentText : t.muted);
        painter->setFont(theme.font(chosen ? FontRole::strong : FontRole::body));
        painter->setPen(t.text);
        const QRect words = row.adjusted(11 + size + 11, 0, -8, 0);
        painter->drawText(words, Qt::AlignVCenter,
                          painter->fontMetrics().elidedText(index.data().toString(), Qt::ElideRight, words.width()));
        if (option.state & QStyle::State_HasFocus)
            theme.drawFocusRing(*painter, row, Theme::radius);
        painter->restore();
    }
};

} // namespace

SettingsView::SettingsView(AppState &app, Screens &screens, QWidget *parent)
    : QWidget(parent), m_sections(new QListWidget), m_pages(new QStackedWidget)
{
    m_sections->setAccessibleName(u"Settings sections"_s);
    m_sections->setItemDelegate(new SectionDelegate(m_sections));
    m_sections->setFrameShape(QFrame::NoFrame);
    m_sections->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_sections->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_sections->viewport()->setAutoFillBackground(false);

    auto *side = new PanelFrame(&Tokens::window);
    side->setLines(Qt::RightEdge);
    side->setFixedWidth(Theme::current().scaled(sectionWidth) + 1);
    auto *sideRows = new QVBoxLayout(side);
    sideRows->setContentsMargins(12, 14, 13, 12);
    sideRows->addWidget(m_sections);
    auto *columns = new QHBoxLayout(this);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(0);
    columns->addWidget(side);
    columns->addWidget(m_pages, 1);

    // In the order of Page.
    add(u"Sender Profiles"_s, u"ui_sender"_s, new SenderProfilesPage(app, screens.settings));
    add(u"Custom Boxes"_s, u"popup_package"_s, new CustomBoxesPage(app, screens.settings));
    add(u"Printers & Scale"_s, u"ui_printer"_s, new PrintersPage(app, screens.settings));
    add(u"Carrier API Keys"_s, u"ui_key"_s, new ApiKeysPage(screens.keys, screens.tracking));
    add(u"Shipping Rules"_s, u"ui_document"_s, new RulesPage(screens.rules));
    add(u"Records"_s, u"ui_shield"_s, new RecordsPage(screens.records));
    add(u"Contacts Diagnostics"_s, u"ui_contacts"_s, new ContactsPage(app));
    add(u"Updates"_s, u"ui_update"_s, new UpdatesPage(screens.updates));
    orderTabsByLayout(this);
    connect(m_sections, &QListWidget::currentRowChanged, m_pages, &QStackedWidget::setCurrentIndex);
    m_sections->setCurrentRow(0);
}

void SettingsView::add(const QString &title, const QString &icon, QWidget *page)
{
    auto *item = new QListWidgetItem(title, m_sections); // the list owns it
    item->setData(iconRole, icon);
    m_pages->addWidget(page);
}

void SettingsView::showPage(Page page)
{
    m_sections->setCurrentRow(int(page));
}

} // namespace parcelory
