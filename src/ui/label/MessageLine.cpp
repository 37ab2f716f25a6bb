#include "ui/label/MessageLine.h"
#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int longestText = 600; ///< characters; the tooltip shows the whole text

QString textOf(Banner::Offer offer)
{
    switch (offer) {
    case Banner::Offer::signInAgain:
        return u"Sign In Again"_s;
    case Banner::Offer::undoPaste:
    case Banner::Offer::undoClear:
        return u"Undo"_s;
    case Banner::Offer::none:
        break;
    }
    return {};
}

} // namespace

MessageLine::MessageLine(LabelScreen &screen, QWidget *parent)
    : PanelFrame(&Tokens::window, parent), m_screen(screen), m_icon(new IconView(u"ui_info"_s, 18)),
      m_text(new TextLabel), m_offer(new Button({})), m_sidebar(new Button({}, Button::Kind::icon, u"ui_sidebar"_s)),
      m_refresh([this] { refresh(); })
{
    auto *clear = new Button(u"Clear Form"_s, Button::Kind::link, u"ui_clear"_s);
    clear->setToolTip(QKeySequence(Qt::CTRL | Qt::Key_N).toString(QKeySequence::NativeText));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(16, 6, 10, 6);
    row->setSpacing(10);
    row->addWidget(m_icon);
    row->addWidget(m_text, 1);
    row->addWidget(m_offer);
    row->addWidget(clear);
    row->addSpacing(2);
    row->addWidget(m_sidebar);
    m_sidebar->setCheckable(true);
    const QKeySequence windowKeys(Qt::CTRL | Qt::SHIFT | Qt::Key_B);
    m_sidebar->describe(u"Show or hide the address book sidebar"_s,
                        u"separate window: "_s + windowKeys.toString(QKeySequence::NativeText));
    m_text->setWordWrap(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse); // the clerk may need to copy a transaction id
    setAccessibleRole(this, QAccessible::Notification);
    setMinimumHeight(Theme::current().scaled(42));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    setLines(Qt::BottomEdge);
    connect(m_offer, &QPushButton::clicked, this, &MessageLine::offerTaken);
    connect(clear, &QPushButton::clicked, this, &MessageLine::clearRequested);
    connect(m_sidebar, &QPushButton::clicked, this, &MessageLine::sidebarToggled);
    m_refresh.follow(screen);
    refresh();
}

void MessageLine::refresh()
{
    const std::optional<Banner> banner = m_screen.awaitsChoice() ? std::nullopt : m_screen.news();
    const QString text = banner ? banner->text : LabelTexts::nextStepHint(m_screen);
    const bool news = text != m_said;
    m_said = text;
    m_text->setText(breakable(text.size() > longestText ? text.left(longestText) + u'…' : text));
    m_text->setToolTip(text.size() > longestText ? plainToolTip(text) : QString());
    m_text->setFont(Theme::current().font(banner ? FontRole::strong : FontRole::body));
    m_text->setInk(banner ? &Tokens::text : &Tokens::muted);
    setFill(!banner ? &Tokens::window : banner->ok ? &Tokens::okTint : &Tokens::warnTint);
    setEdge(!banner ? &Tokens::line : banner->ok ? &Tokens::ok : &Tokens::warnEdge);
    m_icon->set(!banner      ? u"ui_info"_s
                : banner->ok ? u"ui_success"_s
                             : u"ui_warning"_s,
                !banner      ? &Tokens::muted
                : banner->ok ? &Tokens::ok
                             : &Tokens::warn);
    const Banner::Offer offer = m_screen.awaitsChoice() ? Banner::Offer::none : m_screen.offer();
    if (const QString label = textOf(offer); label != m_offer->text()) {
        m_offer->setText(label);
        m_offer->updateGeometry();
    }
    m_offer->setEnabled(!m_screen.busy);
    m_offer->setVisible(offer != Banner::Offer::none);
    nameWidget(this, text);
    if (banner && news)
        announce(this);
}

} // namespace parcelory
