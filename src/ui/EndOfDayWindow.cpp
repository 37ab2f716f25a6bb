#include "ui/EndOfDayWindow.h"

#include "app/AppState.h"
#include "app/Screens.h"
#include "app/endofday/DayTexts.h"
#include "app/endofday/EndOfDayScreen.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"
#include "ui/ModeStripe.h"
#include "ui/endofday/DayCards.h"
#include "ui/endofday/DayPanels.h"
#include "ui/log/LogFoot.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/DateField.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/TabOrder.h"
#include "ui/parts/TextLabel.h"
#include "ui/parts/Toolbar.h"
#include "ui/parts/WindowSize.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QScrollArea>
#include <QShortcut>
#include <QVBoxLayout>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr QSize leastSize(1000, 640), usualSize(1000, 660);
constexpr int margin = 16;
const QKeySequence beforeKeys(Qt::CTRL | Qt::Key_BracketLeft), afterKeys(Qt::CTRL | Qt::Key_BracketRight),
    refreshKeys(Qt::CTRL | Qt::Key_R);

Button *iconButton(const QString &icon, const QString &name, const QKeySequence &keys)
{
    auto *button = new Button({}, Button::Kind::standard, icon);
    button->setFixedWidth(button->height());
    button->describe(name, keys.toString(QKeySequence::NativeText));
    return button;
}

} // namespace

EndOfDayWindow::EndOfDayWindow(AppState &app, Screens &screens, QWidget *parent)
    : QWidget(parent, Qt::Window), m_app(app), m_screens(screens), m_screen(screens.endOfDay), m_stripe(new ModeStripe),
      m_day(new DateField(u"Day"_s)), m_before(iconButton(u"ui_chevron_left"_s, u"Day before"_s, beforeKeys)),
      m_after(iconButton(u"ui_chevron_right"_s, u"Day after"_s, afterKeys)), m_today(new Button(u"Today"_s)),
      m_print(new Button(u"Print Page"_s, Button::Kind::standard, u"ui_printer"_s)),
      m_export(new Button(u"Export Day…"_s, Button::Kind::standard, u"ui_export"_s)),
      m_mode(new Badge({}, BadgeKind::plain)), m_headline(new ElidedLabel({}, FontRole::caption, &Tokens::muted)),
      m_scanForm(new ScanFormCard(screens, m_day)), m_fedex(new FedexCard(screens.endOfDay)),
      m_open(new OpenLabelsCard(screens, m_day)), m_spend(new SpendPanel(screens.endOfDay)),
      m_differences(new DifferencePanel(screens.endOfDay)), m_lower(new QBoxLayout(QBoxLayout::LeftToRight)),
      m_foot(new LogFoot), m_summary(new TextLabel({}, FontRole::strong)),
      m_note(new Notice({}, &Tokens::muted, FontRole::caption)),
      m_account(new Notice({}, &Tokens::muted, FontRole::caption)),
      m_askAgain(new Button(u"Refresh"_s, Button::Kind::standard, u"ui_refresh"_s)), m_refresh([this] { refresh(); })
{
    const Theme &theme = Theme::current();
    const QSize room = roomFor(*this).expandedTo({leastSize.width(), 0});
    const auto inRoom = [&](QSize size) {
        return QSize(theme.scaled(size.width()), theme.scaled(size.height())).boundedTo(room);
    };
    setMinimumSize(inRoom(leastSize));
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(m_stripe);
    rows->addWidget(makeToolbar());
    rows->addWidget(makePage(), 1);
    rows->addWidget(makeFoot());
    connect(m_differences, &DifferencePanel::opened, this, [this](const AccountDifference &chosen) {
        spawn([&screens = m_screens, chosen] { return screens.showDifference(chosen); });
        emit labelShown();
    });
    addShortcuts();
    orderTabs();
    if (!restoreGeometry(read(app.platform.preferences, settings::endOfDayGeometry)))
        resize(inRoom(usualSize));
    m_screen.open();
    m_refresh.follow(app, m_screen, screens.keys, screens.label);
    refresh();
}

EndOfDayWindow::~EndOfDayWindow()
{
    m_screen.close();
}

QWidget *EndOfDayWindow::makeToolbar()
{
    auto *label = new TextLabel(u"Day:"_s, FontRole::body, &Tokens::muted);
    label->setBuddy(m_day);
    connect(m_day, &DateField::dateChosen, this, [this](QDate date) { m_screen.showDay(date); });
    connect(m_day, &DateField::refused, this, [this](const QString &reason) { m_screen.message = reason; });
    connect(m_before, &QPushButton::clicked, this, [this] { m_screen.showDay(m_screen.day.value().addDays(-1)); });
    connect(m_after, &QPushButton::clicked, this, [this] { m_screen.showDay(m_screen.day.value().addDays(1)); });
    connect(m_today, &QPushButton::clicked, this, [this] { m_screen.showDay(m_app.platform.clock.now().date()); });
    connect(m_print, &QPushButton::clicked, this, [this] { spawn([this] { return m_screen.printPage(); }); });
    connect(m_export, &QPushButton::clicked, this, [this] { spawn([this] { return m_screen.exportCSV(); }); });
    auto *bar = new Toolbar;
    bar->add(label)->add(m_before)->add(m_day)->add(m_after)->add(m_today)->add(m_mode)->add(m_headline)->fill();
    return bar->add(m_print)->add(m_export);
}

/// What is between the bars: it scrolls if the window is too low or too narrow for it.
QWidget *EndOfDayWindow::makePage()
{
    m_lower->setSpacing(margin);
    m_lower->addWidget(m_spend);
    m_lower->addWidget(m_differences, 1);
    auto *page = new PanelFrame(&Tokens::panel);
    auto *rows = new QVBoxLayout(page);
    rows->setContentsMargins(margin, margin, margin, margin);
    rows->setSpacing(margin);
    rows->addWidget(makeCards());
    rows->addLayout(m_lower, 1);
    auto *area = new QScrollArea;
    area->setWidget(page);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    return area;
}

/// In a window that is narrow for its texts, the differences are above the spend, whose sum is in the foot.
void EndOfDayWindow::arrange()
{
    constexpr int leastDifferences = 240, leastSpend = 340; // heights of panels below each other
    const Theme &theme = Theme::current();
    const bool isNarrow = width() < theme.scaled(leastSize.width());
    m_spend->setFullWidth(isNarrow);
    m_spend->setMinimumHeight(isNarrow ? theme.scaled(leastSpend) : 0);
    m_differences->setMinimumHeight(isNarrow ? theme.scaled(leastDifferences) : 0);
    if (const auto direction = isNarrow ? QBoxLayout::BottomToTop : QBoxLayout::LeftToRight;
        direction != m_lower->direction()) {
        m_lower->setDirection(direction);
        orderTabs();
    }
}

void EndOfDayWindow::orderTabs()
{
    orderTabsByLayout(this);
    setTabOrder(m_day, m_before);
}

void EndOfDayWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    arrange();
}

QWidget *EndOfDayWindow::makeCards()
{
    auto *cards = new QWidget;
    auto *row = new QHBoxLayout(cards);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(margin);
    for (QWidget *card :
         {static_cast<QWidget *>(m_scanForm), static_cast<QWidget *>(m_fedex), static_cast<QWidget *>(m_open)}) {
        card->setMinimumWidth(0);
        row->addWidget(card, 1);
    }
    return cards;
}

QWidget *EndOfDayWindow::makeFoot()
{
    QHBoxLayout *row = m_foot->row();
    m_account->setUnwrapped();
    m_account->setTextInk(&Tokens::text);
    m_askAgain->setToolTip(refreshKeys.toString(QKeySequence::NativeText));
    connect(m_askAgain, &QPushButton::clicked, this, [this] { m_screen.refresh(); });
    row->addWidget(m_summary);
    row->addWidget(m_note, 1, Qt::AlignVCenter);
    row->addWidget(m_account, 0, Qt::AlignVCenter);
    row->addWidget(m_askAgain);
    return m_foot;
}

void EndOfDayWindow::addShortcuts()
{
    for (const QKeySequence &keys : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)})
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
    connect(new QShortcut(beforeKeys, this), &QShortcut::activated, m_before, &QPushButton::click);
    connect(new QShortcut(afterKeys, this), &QShortcut::activated, m_after, &QPushButton::click);
    connect(new QShortcut(refreshKeys, this), &QShortcut::activated, this, [this] { m_screen.refresh(); });
}

void EndOfDayWindow::closeEvent(QCloseEvent *event)
{
    write(m_app.platform.preferences, settings::endOfDayGeometry, saveGeometry());
    QWidget::closeEvent(event);
}

/// The clock may have passed midnight.
void EndOfDayWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_refresh.touch();
}

void EndOfDayWindow::refresh()
{
    refreshToolbar();
    m_scanForm->refresh();
    m_fedex->refresh();
    m_open->refresh();
    m_spend->refresh();
    m_differences->refresh();
    refreshFoot();
    if (m_screen.report.value().day.isValid() && !std::exchange(m_hasBegun, true))
        (m_scanForm->step()->isEnabled() ? static_cast<QWidget *>(m_scanForm->step()) : m_day)->setFocus();
}

void EndOfDayWindow::refreshToolbar()
{
    const PostageMode mode = m_screens.keys.mode;
    m_stripe->setMode(mode);
    m_mode->setVisible(mode == PostageMode::test || mode == PostageMode::practice);
    if (mode == PostageMode::practice)
        m_mode->set(u"PRACTICE MODE"_s, BadgeKind::practice);
    else
        m_mode->set(u"TEST MODE"_s, BadgeKind::test);
    setWindowTitle(mode == PostageMode::practice ? u"End of Day — PRACTICE MODE"_s
                   : mode == PostageMode::test   ? u"End of Day — TEST MODE"_s
                                                 : u"End of Day"_s);
    m_day->showDate(m_screen.day);
    const bool isToday = m_screen.isToday();
    enable(m_after, !isToday, m_day);
    enable(m_today, !isToday, m_day);
    m_headline->setFullText(m_screen.report.value().day.isValid() ? DayTexts::headline(m_screen.report) : QString());
    for (Button *button : {m_print, m_export})
        enableUnless(m_screen.busy ? notWhileBusy : QString(), button, m_day);
}

void EndOfDayWindow::refreshFoot()
{
    const DayReport &report = m_screen.report.value();
    m_foot->setBusy(m_screen.account == AccountState::asking || m_screen.busy);
    m_summary->setText(DayTexts::summary(report));
    const bool isUnread = !report.failure.isEmpty();
    const QString message = isUnread ? report.failure : m_screen.message.value();
    const bool isFailure = isUnread || (m_screen.isFailure && !message.isEmpty());
    m_note->setLook(isFailure ? u"ui_warning"_s : QString(), isFailure ? &Tokens::warn : &Tokens::muted);
    const QString note = message.isEmpty() ? u"Refunded and pending labels are listed, not counted."_s : message;
    if (note != m_note->text()) {
        m_note->setText(note);
        if (!message.isEmpty())
            announce(m_note);
    }
    const bool isUnanswered = m_screen.account == AccountState::unanswered;
    const bool isCompared = m_screen.account == AccountState::compared;
    m_account->setLook(isUnanswered ? u"ui_warning"_s
                       : isCompared ? u"ui_success"_s
                                    : QString(),
                       isUnanswered ? &Tokens::warn : &Tokens::ok);
    m_account->setTextInk(isUnanswered ? &Tokens::warn : &Tokens::text);
    m_account->setToolTip(plainToolTip(m_screen.accountFailure));
    if (const QString text = m_screen.accountText(); text != m_account->text()) {
        m_account->setText(text);
        announce(m_account);
    }
    m_askAgain->setVisible(isUnanswered);
}

} // namespace parcelory
