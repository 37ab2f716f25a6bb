#include "practice/PracticeDay.h"
#include "practice/PracticeMonth.h"
#include "support/UiTest.h"
#include "ui/parts/WindowSize.h"
#include "ui/theme/Tokens.h"

#include <QAbstractButton>
#include <QLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>

namespace parcelory::test {
namespace {

TEST(Look, EveryTextHasEnoughContrast)
{
    using T = Tokens;
    const std::tuple<const char *, double, Token, std::vector<Token>> rows[] = {
        {"text",
         7,
         &T::text,
         {&T::sheet, &T::window, &T::panel, &T::rowSel, &T::header, &T::segBg, &T::segOn, &T::warnTint}},
        {"second line", 4.5, &T::muted, {&T::sheet, &T::window, &T::rowSel, &T::header}},
        {"solid button", 4.5, &T::onAccent, {&T::accent, &T::accentHover}},
        {"link or selected", 4.5, &T::accentText, {&T::sheet, &T::window, &T::accentTint}},
        {"success", 4.5, &T::ok, {&T::okTint, &T::sheet}},
        {"warning", 4.5, &T::warn, {&T::warnTint, &T::sheet}},
        {"error", 4.5, &T::bad, {&T::badTint, &T::sheet}},
        {"test mode", 4.5, &T::onTest, {&T::test}},
        {"practice", 4.5, &T::onPractice, {&T::practice}},
        {"disabled", 4.5, &T::disabledText, {&T::disabledFill}},
        {"edge of a field", 3, &T::control, {&T::sheet, &T::window}},
        {"focus ring", 3, &T::accent, {&T::sheet}},
        {"edge of a warning", 3, &T::warnEdge, {&T::warnTint}},
    };
    for (const Tokens *tokens : {&lightTokens(), &darkTokens()}) {
        for (const auto &[what, least, ink, grounds] : rows) {
            for (size_t ground = 0; ground < grounds.size(); ++ground)
                EXPECT_GE(contrast(tokens->*ink, tokens->*grounds[ground]), least)
                    << what << " on its ground " << ground << (tokens == &darkTokens() ? ", dark" : ", light");
        }
    }
}

TEST(Look, EveryControlHasANameForAScreenReader)
{
    WindowDesk desk;
    desk.composeAndRate(homeAddress());
    for (const MainTabInfo &info : mainTabs()) {
        desk.app().tab = info.tab;
        desk.settleAll();
        for (const QWidget *widget : desk.window().findChildren<QWidget *>()) {
            if (!widget->isVisible() || !(widget->focusPolicy() & Qt::TabFocus))
                continue;
            const auto *button = qobject_cast<const QAbstractButton *>(widget);
            EXPECT_FALSE(widget->accessibleName().isEmpty() && (!button || button->text().isEmpty()))
                << widget->metaObject()->className() << " in " << info.title.toStdString();
        }
    }
}

/// True if a part of the widget is outside of a widget that holds it, and nothing scrolls it into sight.
bool isCut(const QWidget &widget)
{
    for (const QWidget *around = widget.parentWidget(); around; around = around->parentWidget()) {
        const auto *area = qobject_cast<const QAbstractScrollArea *>(around->parentWidget());
        if (area && area->viewport() == around) {
            const int left = widget.mapTo(around, QPoint()).x();
            return area->horizontalScrollBarPolicy() == Qt::ScrollBarAlwaysOff &&
                   (left < 0 || left + widget.width() > around->width());
        }
        if (!around->rect().contains(QRect(widget.mapTo(around, QPoint()), widget.size())))
            return true;
        if (around->isWindow())
            break;
    }
    return false;
}

/// Texts that do not fit in the screens as they are shown now.
QStringList clippedTexts(const QWidget &root)
{
    QStringList clipped;
    for (const TextLabel *text : root.findChildren<TextLabel *>()) {
        const bool shortened = dynamic_cast<const ElidedLabel *>(text); // its tooltip has the whole text
        if (!text->isVisible() || shortened || text->text().isEmpty())
            continue;
        const bool tooNarrow = !text->wordWrap() && text->width() < text->sizeHint().width();
        const bool tooLow = text->wordWrap() && text->height() < text->heightForWidth(text->width());
        if (tooNarrow || tooLow || isCut(*text))
            clipped += text->text();
    }
    for (const Button *button : root.findChildren<Button *>()) {
        const bool isShown = button->isVisible() && !button->text().isEmpty();
        if (isShown && (button->width() < button->sizeHint().width() || isCut(*button)))
            clipped += button->text();
    }
    for (const QTabBar *tabs : root.findChildren<QTabBar *>()) {
        if (tabs->isVisible() && tabs->width() < tabs->sizeHint().width()) // a tab is behind arrows
            clipped += tabs->accessibleName();
    }
    return clipped;
}

/// Parts of a view that got less height than they need.
QStringList squeezedParts(const QWidget &root)
{
    QStringList squeezed;
    for (const QWidget *part : root.findChildren<QWidget *>()) {
        QLayout *inside = part->layout();
        if (!part->isVisible() || !inside)
            continue;
        const int need = inside->hasHeightForWidth() ? inside->totalMinimumHeightForWidth(part->width())
                                                     : inside->totalMinimumSize().height();
        if (need > part->height())
            squeezed +=
                u"%1 %2: %3 of %4"_s.arg(QLatin1StringView(part->metaObject()->className()), part->accessibleName(),
                                         QString::number(part->height()), QString::number(need));
    }
    return squeezed;
}

void expectAllFits(WindowDesk &desk)
{
    desk.settleAll();
    EXPECT_EQ(clippedTexts(desk.window()), QStringList());
    EXPECT_EQ(squeezedParts(desk.window().labelView()), QStringList());
}

/// An insured parcel abroad with FedEx, in the desk's own box, which has the longest form.
void composeLongest(WindowDesk &desk)
{
    DesklineInvoice invoice{.invoiceID = u"48377"_s, .buyerName = u"Harriet Ashcombe"_s, .address = londonAddress()};
    invoice.items = {{.title = u"Sovereigns"_s, .qty = u"4"_s, .total = u"$1,860.00"_s}};
    desk.label().carrier = Carrier::fedex;
    desk.label().mailpiece = BuiltinMailpiece::package;
    desk.app().scannedInvoice = invoice;
    desk.app().fillFromInvoice(invoice);
    desk.label().weightLb = u"1"_s;
    for (auto *size : {&desk.label().dimLength, &desk.label().dimWidth, &desk.label().dimHeight})
        *size = u"6"_s;
    desk.settleAll();
}

TEST(Look, TheLongestFormFitsTheScreenOfADesk)
{
    WindowDesk desk(true);
    desk.window().resize(MainWindow::firstSize({1280, 800}));
    composeLongest(desk);
    ASSERT_TRUE(desk.button(u"Invoice $1,860.00 — insure"_s)->isVisible());
    const auto areas = desk.window().labelView().findChildren<QScrollArea *>();
    for (const QScrollArea *area : areas) {
        if (area->isAncestorOf(desk.named(u"Signer"_s)) && Theme::current().scaled(100) == 100)
            EXPECT_EQ(area->verticalScrollBar()->maximum(), 0);
    }
}

TEST(Look, NothingIsClippedInTheSmallestWindow)
{
    WindowDesk desk;
    desk.window().resize(desk.window().minimumSize());
    composeLongest(desk);
    desk.label().validationOK = true;
    spawn([&desk] { return desk.label().fetchRates(true); });
    desk.idle();
    ASSERT_FALSE(desk.label().rates.value().isEmpty());
    for (const MainTabInfo &info : mainTabs()) {
        SCOPED_TRACE(info.title.toStdString());
        desk.app().tab = info.tab;
        expectAllFits(desk);
    }
    desk.app().tab = MainTab::newLabel;
    desk.label().selectedRateID = desk.label().rates.value().first().objectId;
    desk.settleAll();
    desk.clock.advance(LabelScreen::buyPause);
    desk.pressBuy();
    desk.settleAll(); // the purchase ends before the window is laid out
    ASSERT_TRUE(desk.label().last.hasCustoms());
    expectAllFits(desk);
    desk.compose(londonAddress());
    desk.label().carrier = Carrier::fedex;
    desk.label().service = ServiceOption::fedexIndirect;
    desk.press(Qt::Key_K, Qt::ControlModifier);
    desk.idle();
    expectAllFits(desk);
    desk.label().carrier = Carrier::usps;
    desk.composeAndRate(homeAddress());
    expectAllFits(desk);
    LastLabel unprinted = other(LastLabel());
    unprinted.isPrinted = false;
    unprinted.message = u"The queue ZD421 did not take the label: lpr: Error - no default destination available."_s;
    desk.label().last.label = unprinted; // beside the rates, with the warning of a second label
    desk.settleAll();
    EXPECT_TRUE(desk.button(u"Reprint"_s)->isVisible() && desk.button(u"Dismiss"_s)->isEnabled());
    EXPECT_TRUE(shows(desk.window(), u"Eleanor Whitfield\n418 MONTFORD AVE, APT 3B\nASHEVILLE NC 28801-6168"_s));
    expectAllFits(desk);
    desk.app().senders.profiles = QList<SenderProfile>{{.name = u"Bullion Vault"_s}};
    expectAllFits(desk);
}

/// The header and both logs with the longest mode, a user, open items, chosen labels and counts.
TEST(Look, NothingIsClippedInFullLogs)
{
    WindowDesk desk(true);
    desk.app().signedInUser = u"dana.marsh"_s;
    desk.window().resize(desk.window().minimumSize());
    addPracticeMonth(desk.app().log, desk.clock.now());
    const Screens &screens = desk.program->screens();
    desk.wait([&] { return screens.openItems.count > 9; });
    for (const bool openItems : {true, false}) {
        desk.program->screens().openItems.isShown = openItems;
        desk.app().tab = MainTab::mailingLog;
        desk.settleAll();
        desk.window().mailingLogView().table()->selectRow(0);
        expectAllFits(desk);
    }
    desk.carrier.seedHistory(12, desk.clock.now(), 9h);
    desk.app().tab = MainTab::masterLog;
    runUntil([&] { return screens.masterLog.loaded && !screens.masterLog.busy; }); // on the same day
    desk.program->screens().masterLog.search = u"Reno"_s;
    desk.settleAll();
    EXPECT_TRUE(desk.named(u"Master log"_s)->isVisible());
    expectAllFits(desk);
}

TEST(Look, NothingIsClippedAtTheEndOfTheDay)
{
    WindowDesk desk(true);
    addPracticeDay(desk.app(), desk.label().purchases, desk.carrier);
    const EndOfDayScreen &day = desk.program->screens().endOfDay;
    desk.window().openWindow(u"endofday"_s);
    runUntil([&] { // without the timers of the purchase
        return !day.report.value().differences.isEmpty() && !desk.label().purchases.checking;
    });
    desk.settleAll();
    const QWidgetList all = QApplication::topLevelWidgets();
    const auto found = std::ranges::find(all, u"End of Day — PRACTICE MODE"_s, &QWidget::windowTitle);
    ASSERT_NE(found, all.end());
    QWidget *window = *found;
    window->resize(window->minimumSize());
    desk.settleAll();
    EXPECT_EQ(clippedTexts(*window), QStringList());
    EXPECT_EQ(desk.named<RowTable>(u"Differs from the account"_s, window)->model()->rowCount(), 3);
    EXPECT_TRUE(desk.button(u"Check again"_s, window)->isEnabled());
    desk.button(u"Show in Master Log"_s, window)->click();
    const MasterLogScreen &log = desk.program->screens().masterLog;
    runUntil([&log] { return log.loaded && !log.busy && log.selectedEntry(); });
    EXPECT_EQ(log.selectedEntry()->recipient, u"Grant Holloway"_s);
    window->close();
    desk.label().purchases.unresolved = QList<UnresolvedPurchase>();
    desk.settleAll();
}

TEST(Look, TheFirstWindowFitsTheScreen)
{
    const bool isLarge = Theme::current().scaled(100) > 100; // its sizes are the screen's
    const std::pair<QSize, QSize> rooms[] = {{{1920, 1080}, {1280, 800}}, {{1280, 800}, {1280, 764}},
                                             {{1280, 768}, {1280, 732}},  {{1024, 768}, {1024, 732}},
                                             {{1024, 640}, {1024, 604}},  {{800, 600}, {1024, 604}}};
    for (const auto &[room, size] : rooms)
        EXPECT_TRUE(isLarge || MainWindow::firstSize(room) == size) << room.width();
    WindowDesk desk;
    desk.window().resize(desk.window().minimumSize());
    desk.composeAndRate(homeAddress());
    const Button *buy = desk.button(u"Buy & Print Label"_s);
    EXPECT_LT(buy->mapTo(&desk.window(), buy->rect().bottomLeft()).y(), desk.window().height());
    EXPECT_LE(desk.window().height(), std::max(604, roomFor(desk.window()).height()));
}

TEST(Look, TheOtherWindowsFitTheScreen)
{
    WindowDesk desk;
    for (const QString &window : {u"scanform"_s, u"label"_s, u"addressbook"_s, u"endofday"_s})
        desk.window().openWindow(window);
    desk.press(Qt::Key_F1);
    Dialog *shortcuts = desk.dialog();
    EXPECT_EQ(clippedTexts(*shortcuts), QStringList());
    const QSize room = roomFor(desk.window()).expandedTo({1024, 0}); // no supported screen is narrower
    for (const QWidget *shown : QApplication::topLevelWidgets()) {
        if (!shown->isVisible() || qobject_cast<const MainWindow *>(shown))
            continue;
        EXPECT_EQ(shown->size().boundedTo(room), shown->size()) << shown->windowTitle().toStdString();
        EXPECT_EQ(shown->minimumSize().boundedTo(room), shown->minimumSize()) << shown->windowTitle().toStdString();
    }
    desk.clock.advance(Dialog::keyGuard);
    auto *area = shortcuts->findChild<QScrollArea *>();
    const int before = area->verticalScrollBar()->value();
    desk.press(Qt::Key_Down);
    EXPECT_EQ(area->verticalScrollBar()->value() > before, area->verticalScrollBar()->maximum() > 0);
    desk.press(Qt::Key_Return);
    EXPECT_FALSE(QApplication::activeModalWidget());
}

TEST(Look, TheLastScanIsShortenedBeforeTheLastShipment)
{
    WindowDesk desk;
    desk.window().resize(1024, 732);
    desk.app().lastShipmentSummary = u"USPS Priority Mail · Eleanor Whitfield, Asheville NC · $10.60"_s;
    desk.app().setScanStatus(StatusKind::failure, QString(u"The deskline session has expired. "_s).repeated(4));
    desk.settleAll();
    const auto *last = dynamic_cast<ElidedLabel *>(desk.named<QLabel>(desk.app().lastShipmentSummary));
    EXPECT_EQ(last->text(), last->fullText());
}

TEST(Look, TheModeIsShownThreeTimes)
{
    const std::tuple<bool, QString, QString, QString, Button::Kind> modes[] = {
        {true, PracticeCarrier::testToken, u"Parcelory — PRACTICE MODE"_s,
         u"Practice — nothing is sent, charged or printed"_s, Button::Kind::practice},
        {false, PracticeCarrier::testToken, u"Parcelory — TEST MODE"_s,
         u"Shippo TEST mode (Practice) — labels are not real postage"_s, Button::Kind::test},
        {false, PracticeCarrier::liveToken, u"Parcelory"_s, u"Shippo LIVE (Practice) — labels cost real money"_s,
         Button::Kind::solid},
    };
    for (const auto &[practice, token, title, strip, buy] : modes) {
        WindowDesk desk(practice);
        desk.useToken(token);
        runTask(desk.program->screens().keys.refresh(), &desk.clock);
        desk.composeAndRate(homeAddress());
        EXPECT_EQ(desk.window().windowTitle(), title);
        EXPECT_EQ(desk.button(u"Buy & Print Label"_s)->kind(), buy);
        EXPECT_TRUE(shows(desk.window(), strip)) << strip.toStdString();
    }
}

TEST(Look, TheRunningProgramSwitchesBetweenLightAndDark)
{
    WindowDesk desk;
    const auto ground = [&] { return desk.window().grab().toImage().pixelColor(400, 700); };
    const auto ink = [&] { return desk.named<LineEdit>(u"City"_s)->palette().color(QPalette::Text); };
    EXPECT_EQ(ground(), lightTokens().sheet);
    Theme::current().setDark(true);
    desk.settleAll();
    EXPECT_EQ(ground(), darkTokens().sheet);
    EXPECT_EQ(ink(), darkTokens().text);
    for (const TextLabel *text : desk.window().findChildren<TextLabel *>()) {
        if (text->isVisible())
            EXPECT_GT(contrast(text->palette().color(QPalette::WindowText), darkTokens().sheet), 4)
                << text->text().toStdString();
    }
    Theme::current().setDark(false);
    desk.settleAll();
    EXPECT_EQ(ground(), lightTokens().sheet);
}

} // namespace
} // namespace parcelory::test
