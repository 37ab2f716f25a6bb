#include "support/UiTest.h"
#include "ui/log/ShipmentTable.h"
#include "ui/parts/BusyBar.h"
#include "ui/theme/Tokens.h"

#include <QComboBox>
#include <QHeaderView>

#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#endif

// The logs and the SCAN form, operated like a clerk does.

namespace parcelory::test {
namespace {

struct AfterSaleDesk : WindowDesk {
    void buyLabel()
    {
        composeAndRate(homeAddress());
        pressBuy();
    }
    void waitFor(const QProperty<bool> &busy)
    {
        wait([&] { return !busy.value(); });
        window().activateWindow(); // like a window system does after a dialog
        settleAll();
    }
};

TEST(RefundAndScanFormViews, ARefundedLabelIsNoLongerOfferedForPrinting)
{
    AfterSaleDesk desk;
    desk.processes.behave = failingPrinter("no paper");
    desk.buyLabel();
    const MailingLogScreen &log = desk.program->screens().mailingLog;
    const auto refund = [&](const QString &answer) {
        desk.press(Qt::Key_2, Qt::ControlModifier);
        desk.click(desk.button(u"Refund"_s));
        desk.click(desk.button(answer, desk.readyDialog()));
        desk.waitFor(log.busy);
        desk.press(Qt::Key_1, Qt::ControlModifier);
    };
    refund(u"Keep the Label"_s);
    EXPECT_EQ(desk.focusName(), u"Reprint");
    refund(u"Request Refund"_s);
    EXPECT_FALSE(desk.label().last.label.value());
    EXPECT_FALSE(desk.label().banner.value()) << "it told the clerk to reprint the label";
    EXPECT_EQ(desk.focusName(), u"Recipient name");
}

TEST(RefundAndScanFormViews, ARefundAsksAndEscKeepsTheLabel)
{
    AfterSaleDesk desk;
    const MailingLogScreen &log = desk.program->screens().mailingLog;
    desk.buyLabel();
    desk.press(Qt::Key_2, Qt::ControlModifier);
    desk.named(u"Mailing log"_s)->setFocus();
    desk.press(Qt::Key_Down);
    const auto ask = [&] {
        desk.click(desk.button(u"Refund"_s));
        return desk.readyDialog();
    };
    const auto barMoves = [&desk] {
        const QWidgetList parts = desk.window().mailingLogView().findChildren<QWidget *>();
        const auto bar = std::ranges::find_if(
            parts, [](const QWidget *part) { return part->isVisible() && dynamic_cast<const BusyBar *>(part); });
        for (int tick = 0; tick < 30; ++tick) { // more than a second
            QTimerEvent event(0);
            QCoreApplication::sendEvent(*bar, &event);
        }
        const QColor color = (*bar)->grab().toImage().pixelColor(1, 1);
        return color == lightTokens().line || color == lightTokens().accent;
    };
    ask();
    EXPECT_FALSE(barMoves()) << "the clerk is asked";
    desk.press(Qt::Key_Escape);
    desk.waitFor(log.busy);
    EXPECT_EQ(log.records().first().status, u"PRINTED");
    EXPECT_EQ(desk.sent("/refunds/").size(), 0);
    EXPECT_EQ(desk.focusName(), u"Mailing log"); // and not on a button that the next key would press
    desk.carrier.setScenario({.holdsAnswers = true});
    desk.click(desk.button(u"Check Status"_s));
    EXPECT_TRUE(barMoves()) << "the carrier is asked";
    desk.carrier.setScenario({});
    desk.waitFor(log.busy);
    desk.click(desk.button(u"Request Refund"_s, ask()));
    desk.waitFor(log.busy);
    EXPECT_EQ(desk.sent("/refunds/").size(), 1);
    EXPECT_NE(log.records().first().status, u"PRINTED");
    EXPECT_FALSE(desk.button(u"Refund"_s)->isEnabled());
}

TEST(RefundAndScanFormViews, TheMasterLogLoadsByItselfAndAgainOnReturn)
{
    AfterSaleDesk desk;
    MasterLogScreen &log = desk.program->screens().masterLog;
    desk.carrier.seedHistory(9, desk.clock.now().addSecs(-60), std::chrono::hours(5));
    desk.press(Qt::Key_3, Qt::ControlModifier);
    desk.waitFor(log.busy);
    EXPECT_EQ(desk.named<RowTable>(u"Master log"_s)->model()->rowCount(), 9);
    log.selected = log.entries.value()[4].id;
    desk.press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(desk.desktop.clipboard, log.entries.value()[4].tracking);
    QString other = log.entries.value()[5].tracking;
    desk.press(Qt::Key_F, Qt::ControlModifier);
    desk.type(other.insert(4, u' '));
    EXPECT_EQ(desk.named<RowTable>(u"Master log"_s)->model()->rowCount(), 1);
    EXPECT_EQ(log.foundText(), u"1 of 9 shipments"_s);
    desk.desktop.clipboard.clear();
    desk.press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(desk.desktop.clipboard, QString()) << "the search hides the selected row";
    EXPECT_FALSE(desk.button(u"Copy Tracking"_s)->isEnabled());
    desk.press(Qt::Key_Escape);
    EXPECT_EQ(desk.named<RowTable>(u"Master log"_s)->model()->rowCount(), 9);
    EXPECT_TRUE(desk.button(u"Copy Tracking"_s)->isEnabled());
    desk.named<DateField>(u"From"_s)->setFocus();
    desk.press(Qt::Key_Down); // the day before
    EXPECT_EQ(desk.solidButtons(), QStringList(u"Refresh"_s));
    desk.press(Qt::Key_Return);
    desk.waitFor(log.busy);
    EXPECT_EQ(desk.solidButtons(), QStringList());
    EXPECT_EQ(desk.focusName(), u"From");
    desk.app().keys.remove(desk.app().keys.activeName());
    runTask(desk.program->screens().keys.refresh(), &desk.clock);
    desk.settleAll();
    EXPECT_FALSE(desk.button(u"Refresh"_s)->isEnabled());
}

TEST(RefundAndScanFormViews, EveryColumnIsSortedByItsType)
{
    const QDateTime noon(QDate(2026, 11, 20), QTime(12, 0));
    const QList<ShipmentRecord> records = {
        {.id = 1, .createdAt = noon, .postage = 9.85, .weight = u"9 oz"_s, .weightOz = 9, .reference = u"9"_s},
        {.id = 2, .createdAt = noon, .postage = 12.35, .weight = u"1 lb"_s, .weightOz = 16, .reference = u"10"_s},
        {.id = 3, .createdAt = noon.addDays(40), .postage = 7, .weight = u"2 oz"_s, .weightOz = 2, .balance = u"-1"_s}};
    ShipmentTable table, next;
    table.setRecords(records);
    table.choose(qint64(1));
    const auto order = [](const RowTable &shown) {
        QList<int> ids;
        for (int row = 0; row < shown.model()->rowCount(); ++row)
            ids += shown.model()->index(row, 0).data(RowTable::idRole).toInt();
        return ids;
    };
    using M = ShipmentModel;
    const std::pair<int, QList<int>> steps[] = {{M::time, {1, 2, 3}},      {M::time, {3, 1, 2}}, // stable if equal
                                                {M::postage, {3, 1, 2}},   {M::weight, {3, 1, 2}},
                                                {M::reference, {3, 1, 2}}, {M::balance, {1, 2, 3}},
                                                {M::balance, {3, 1, 2}}};
    const QHeaderView *head = table.horizontalHeader();
    for (const auto &[column, expected] : steps) {
        QTest::mouseClick(head->viewport(), Qt::LeftButton, {}, {head->sectionViewportPosition(column) + 20, 9});
        EXPECT_EQ(order(table), expected) << column;
    }
    EXPECT_EQ(table.chosen(), qint64(1));
    next.restoreColumns(table.columnState());
    next.setRecords(records);
    EXPECT_EQ(order(next), order(table));
}

/// Ignores leaks during its lifetime: Qt's document view keeps a gesture object until the program exits.
struct ToolkitLeaks {
#if __has_feature(address_sanitizer)
    ToolkitLeaks() { __lsan_disable(); }
    ~ToolkitLeaks() { __lsan_enable(); }
#else
    ToolkitLeaks() {}
#endif
};

TEST(RefundAndScanFormViews, AScanFormOpensOnlyIfThereAreLabels)
{
    AfterSaleDesk desk;
    desk.press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(desk.readyDialog()->accessibleDescription().startsWith(u"No TEST labels have been printed today"_s));
    desk.press(Qt::Key_Return);
    desk.waitFor(desk.app().scanFormBusy);
    EXPECT_TRUE(desk.named(u"No labels printed today — nothing to manifest."_s));
    desk.buyLabel();
    const ToolkitLeaks forgiven;
    desk.click(desk.button(u"SCAN Form"_s));
    const auto opened = [] {
        return QGuiApplication::focusWindow() && QGuiApplication::focusWindow()->title() == u"SCAN Form";
    };
    desk.wait(opened);
    desk.wait([&desk] { return desk.program->screens().scanForm.labels.value().size() == 1; });
    QWidget *form = QApplication::activeWindow();
    EXPECT_EQ(desk.named<RowTable>(u"Labels on this form"_s, form)->model()->rowCount(), 1);
    EXPECT_TRUE(desk.named<QComboBox>(u"SCAN forms created here"_s, form)->currentText().endsWith(u"1 label (TEST)"));
    const size_t printed = desk.processes.calls().size();
    desk.press(Qt::Key_P, Qt::ControlModifier); // prints the form again
    desk.waitFor(desk.program->screens().scanForm.busy);
    EXPECT_GT(size_t(desk.processes.calls().size()) + desk.desktop.opened.size(), printed);
    form->activateWindow();
    desk.settleAll();
    desk.press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(opened());
}

TEST(RefundAndScanFormViews, TwoGesturesLeadFromTheEndOfDayToThePrintedForm)
{
    AfterSaleDesk desk;
    desk.preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    desk.buyLabel();
    const EndOfDayScreen &day = desk.program->screens().endOfDay;
    desk.window().openWindow(u"endofday"_s);
    const auto until = [&desk](const auto &done) { // without the clock's timers, which would end the day
        runUntil(done);
        desk.settleAll();
    };
    const auto isInFront = [](const QString &title) {
        return QGuiApplication::focusWindow() && QGuiApplication::focusWindow()->title().startsWith(title);
    };
    const auto isRead = [&day] {
        return day.account.value() == AccountState::compared && day.report.value().labels.all.size() == 1;
    };
    until([&] { return isInFront(u"End of Day"_s) && isRead(); });
    QWidget *window = QApplication::activeWindow();
    desk.press(Qt::Key_BracketLeft, Qt::ControlModifier);
    EXPECT_FALSE(day.isToday());
    EXPECT_TRUE(desk.button(u"Today"_s, window)->isEnabled());
    desk.press(Qt::Key_BracketRight, Qt::ControlModifier);
    until(isRead);
    EXPECT_EQ(desk.button(u"Make SCAN Form"_s, window)->kind(), Button::Kind::test);
    EXPECT_TRUE(desk.named(u"USPS SCAN form, 1 not on a form, 0 on a form, 0 not meant for one"_s, window));
    desk.button(u"Make SCAN Form"_s, window)->setFocus();
    const ToolkitLeaks forgiven;
    desk.press(Qt::Key_Return);
    until([&] { return isInFront(u"SCAN Form"_s) && desk.focusName() == u"Print"; });
    const qsizetype printed = printJobs(desk.processes);
    desk.press(Qt::Key_Return);
    until([&] { return printJobs(desk.processes) > printed; });
    until([&] { return day.report.value().forms.value(0).isPrinted; });
    EXPECT_EQ(desk.button(u"Print SCAN Form"_s, window)->kind(), Button::Kind::standard);
    QApplication::activeWindow()->close();
    window->close();
    desk.settleAll();
}

TEST(AfterSale, ACloseWaitsForTheScanFormAndThenForWhatMustBeRead)
{
    AfterSaleDesk desk;
    desk.buyLabel();
    const ToolkitLeaks forgiven;
    const auto closeWhileMade = [&desk](const CarrierScenario &scenario) {
        desk.carrier.setScenario({.holdsAnswers = true});
        desk.press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        ASSERT_TRUE(desk.app().scanFormBusy);
        desk.window().close();
        EXPECT_TRUE(desk.window().isVisible());
        desk.carrier.setScenario(scenario);
        desk.wait([&desk] { return !desk.app().scanFormBusy; });
    };
    closeWhileMade({.droppedPath = "manifests"});
    EXPECT_TRUE(desk.window().isVisible()) << "the clerk must read the failure";
    closeWhileMade({});
    EXPECT_FALSE(desk.window().isVisible());
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto form = std::ranges::find(windows, u"SCAN Form"_s, &QWidget::windowTitle);
    ASSERT_NE(form, windows.end()) << "the form is yet to be printed";
    desk.wait([&desk] { return desk.program->screens().scanForm.labels.value().size() == 1; });
    (*form)->close();
    desk.settleAll();
}

} // namespace
} // namespace parcelory::test
