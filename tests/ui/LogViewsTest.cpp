#include "support/UiTest.h"
#include "ui/ErrorLogWindow.h"
#include "ui/log/OpenItemsTable.h"
#include "ui/log/ShipmentTable.h"
#include "ui/parts/SearchField.h"

#include <QHelpEvent>
#include <QPushButton>
#include <QStackedWidget>
#include <QToolTip>

namespace parcelory::test {
namespace {

struct LogViewsTest : testing::Test, FakePlatform {
    ErrorLog errors{platform};
    AppState app{platform};
    MailingLogScreen screen{app};
    KeysScreen keys{app};
    RecordsScreen records{app};
    TrackingWatch tracking{app, keys};
    OpenItemsScreen items{app, screen, records, tracking};
    MailingLogView view{app, screen, items};
    ShipmentTable *table = view.findChild<ShipmentTable *>();
    SearchField *search = view.findChild<SearchField *>();

    void SetUp() override
    {
        view.resize(1280, 690);
        view.show();
        for (int minute = 0; minute < 60; ++minute)
            add(u"Ana %1"_s.arg(minute), minute);
        app.log.reload();
        settle();
    }
    void TearDown() override { settlePool(); } // a query that the test did not wait for still reports to the screen
    void add(const QString &recipient, int minute)
    {
        const ShipmentRecord record{.createdAt = QDateTime(QDate(2026, 11, 20), QTime(12, minute)),
                                    .postage = 148.2,
                                    .recipient = recipient + u", 88 Quarry Ln, Bend OR 97702"_s,
                                    .tracking = u"92055901755477"_s,
                                    .status = u"REFUND_PENDING"_s};
        EXPECT_TRUE(app.log.insert(record, false));
    }
    QString cell(int row, int column, int role = Qt::DisplayRole) const
    {
        return table->model()->index(row, column).data(role).toString();
    }
};

} // namespace

TEST_F(LogViewsTest, TheMailingLogIsSearchedAndUsedFromTheKeyboard)
{
    QString row;
    for (int column = 0; column < table->model()->columnCount(); ++column)
        row += table->model()->headerData(column, Qt::Horizontal).toString() + u'=' + cell(58, column) + u'|';
    EXPECT_EQ(row, u"Date/Time=11/20/26, 12:01 PM|Postage=$148.20|Recipient=Ana 1|Services=|"
                   "Tracking ID=9205 5901 7554 77|Weight=|Balance=|Description=|Ref #=|"_s);
    EXPECT_TRUE(cell(58, ShipmentModel::recipient, Qt::AccessibleTextRole).startsWith(u"Ana 1, REFUND PENDING, "_s))
        << "and the rest of the row";
    view.focusSearch();
    QTest::keyClicks(search, u"ana 7"_s);
    runUntil([&] { return table->model()->rowCount() == 1; });
    QTest::keyClick(search, Qt::Key_Down);
    ASSERT_TRUE(table->hasFocus() && view.selectedRecord());
    const qint64 chosen = view.selectedRecord()->id;
    QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(desktop.clipboard, u"92055901755477"_s);
    QTest::keyClick(search, Qt::Key_Escape);
    runUntil([&] { return table->model()->rowCount() == 60; });
    EXPECT_EQ(search->text(), QString());
    EXPECT_EQ(screen.selected.value(), chosen);
    QTest::keyClicks(search, u"5590 1755"_s); // a part of the number as the table shows it
    runUntil([&] { return screen.countText() == u"60 similar shipments found"_s; });
    search->selectAll();
    add(u"Amélie"_s, 59);
    QTest::keyClicks(search, u"amelie"_s);
    runUntil([&] { return screen.countText() == u"1 similar shipment found"_s; });
    QTest::keyClick(search, Qt::Key_Escape);
    runUntil([&] { return table->model()->rowCount() == 61; });
}

TEST_F(LogViewsTest, TheClerksLayoutSurvivesReloadsAndRestarts)
{
    screen.selected = app.log.records()[20].id;
    settle();
    table->scrollTo(table->model()->index(30, 0), QAbstractItemView::PositionAtTop);
    add(u"new"_s, 59);
    app.log.reload();
    settle();
    EXPECT_EQ(cell(table->rowAt(0), ShipmentModel::recipient), u"Ana 29"_s) << "the row on top stays";
    EXPECT_EQ(table->rowViewportPosition(table->rowAt(0)), 0);
    EXPECT_EQ(cell(table->currentIndex().row(), ShipmentModel::recipient), u"Ana 39"_s);

    table->setColumnWidth(ShipmentModel::recipient, 301);
    table->setColumnWidth(ShipmentModel::tracking, 20);
    const QFontMetrics numbers(Theme::current().font(FontRole::mono));
    EXPECT_GT(table->columnWidth(ShipmentModel::tracking), numbers.horizontalAdvance(u"9205 5901 7554 77"_s) + 15);
    const int widest = QFontMetrics(Theme::current().font(FontRole::body)).horizontalAdvance(cell(0, 0));
    EXPECT_GT(table->columnWidth(0), widest + 15);
    {
        QStackedWidget pages; // the log is behind another page, and is never shown
        pages.addWidget(new QWidget);
        auto *unseen = new MailingLogView(app, screen, items);
        pages.addWidget(unseen);
        pages.show();
        app.log.reload();
        settle();
        pages.hide();
        EXPECT_EQ(read(preferences, settings::mailingLogColumns), QByteArray());
    }
    view.hide();
    MailingLogView next(app, screen, items);
    next.show();
    EXPECT_EQ(next.findChild<ShipmentTable *>()->columnWidth(ShipmentModel::recipient), 301);
}

TEST_F(LogViewsTest, BadgesLeaveRoomForTheNameInANarrowWindow)
{
    ShipmentRecord label = shipmentTo(u"Bartholomew Featherstonehaugh"_s);
    label.testMode = true;
    label.status = u"REFUND_PENDING"_s;
    EXPECT_TRUE(app.log.insert(label, false));
    app.log.reload();
    settle();
    screen.selected = app.log.records()[0].id; // the newest
    table->setColumnWidth(ShipmentModel::recipient, 150);
    view.resize(1024, 690);
    settle();
    const auto isShort = [](Badge *badge) { return badge->toolTip() == plainToolTip(u"REFUND PENDING, TEST"_s); };
    EXPECT_TRUE(std::ranges::any_of(view.findChildren<Badge *>(), isShort));
    const QPoint cell = table->visualRect(table->model()->index(0, ShipmentModel::recipient)).center();
    QHelpEvent asked(QEvent::ToolTip, cell, table->viewport()->mapToGlobal(cell));
    QApplication::sendEvent(table->viewport(), &asked);
    EXPECT_EQ(QToolTip::text(), plainToolTip(u"Bartholomew Featherstonehaugh\nREFUND PENDING, TEST"_s));
}

TEST_F(LogViewsTest, OpenItemsAreUsedFromTheKeyboard)
{
    const ShipmentRecord label{.createdAt = clock.now().addDays(-3),
                               .recipient = u"Grant Holloway, 77 Peach St, Macon GA 31201"_s,
                               .tracking = u"940011189956"_s,
                               .transactionID = QString(32, u'a'),
                               .status = u"REFUND_ERROR"_s};
    const ShipmentRecord unused{.createdAt = QDateTime(clock.now().date().addDays(-26), QTime(9, 0)),
                                .recipient = u"Silas Okonkwo, 1550 Poplar Ave, Memphis TN 38104"_s,
                                .tracking = u"940551189956"_s,
                                .transactionID = QString(32, u'b')};
    const qint64 first = app.log.records().size() + 1;
    ASSERT_TRUE(app.log.insert(label) && app.log.insert(unused));
    ASSERT_TRUE(app.log.change([&](Database &db) {
        return Journeys::put(db, first, {.isScanned = true, .askedAt = clock.now()}) &&
               Journeys::put(db, first + 1, {.askedAt = clock.now()});
    }));
    items.isShown = true;
    runTask(items.start());
    auto *list = view.findChild<OpenItemsTable *>();
    runUntil([&] { return list->isVisible() && list->model()->rowCount() == 2; });
    const auto status = [this] {
        for (const TextLabel *text : view.findChildren<TextLabel *>()) {
            if (text->isVisible() && text->text().startsWith(u"Not scanned — refund ends "_s))
                return text->text().section(u' ', -1);
        }
        return QString();
    };
    list->selectRow(0);
    const QString end = unused.createdAt.addDays(30).toString(u"MM/dd/yy"_s);
    runUntil([&] { return status() == end; });
    EXPECT_EQ(
        list->model()->index(1, 1).data(Qt::AccessibleTextRole).toString(),
        u"Refund rejected, the carrier has scanned the label, Grant Holloway, 3 days old, next step Track Online"_s);
    list->setFocus();
    list->selectRow(1);
    EXPECT_EQ(view.selectedRecord()->recipient, label.recipient) << "the pane shows it";
    runUntil([&] { return status().isEmpty(); });
    QTest::keyClick(list, Qt::Key_Space);
    runUntil([&] { return !desktop.opened.isEmpty(); });
    const QPoint button = list->visualRect(list->model()->index(1, 5)).center();
    QTest::mousePress(list->viewport(), Qt::LeftButton, {}, button);
    list->setItems(items.items()); // the carrier has told something meanwhile
    QTest::mouseRelease(list->viewport(), Qt::LeftButton, {}, button);
    runUntil([&] { return desktop.opened.size() == 2; });
    const auto firstName = [&] { return list->model()->index(0, 2).data().toString(); };
    for (const auto &[column, name] : {std::pair{2, u"Grant Holloway"_s}, std::pair{4, u"Grant Holloway"_s}}) {
        list->sortBy(column); // by name, and the newest first
        runUntil([&] { return firstName() == name; });
        list->sortBy(column);
        runUntil([&] { return firstName() == u"Silas Okonkwo"_s; });
    }
    list->selectRow(1);
    QTest::keyClick(list, Qt::Key_Delete);
    runUntil([&] { return list->model()->rowCount() == 1 && items.canUndo; });
    runTask(items.undo());
    runUntil([&] { return list->model()->rowCount() == 2; });
    list->selectRow(1);
    QTest::keyClick(list, Qt::Key_Return);
    runUntil([&] { return table->isVisible(); });
    EXPECT_EQ(screen.selectedRecord()->recipient, label.recipient);
    items.stop();
}

TEST_F(LogViewsTest, TheErrorLogUpdatesCopiesAndClears)
{
    ErrorLogWindow window(errors, desktop);
    window.show();
    window.activateWindow();
    auto *rows = window.findChild<RowTable *>();
    const auto press = [&](const QString &text) {
        for (QPushButton *button : window.findChildren<QPushButton *>()) {
            if (button->text() == text)
                QTest::mouseClick(button, Qt::LeftButton);
        }
    };
    errors.record(u"Refund"_s, AppError(u"Too late."_s), Popup::no);
    errors.record(u"Update"_s, AppError(u"A long story. "_s.repeated(40)), Popup::no);
    runUntil([&] { return rows->model()->rowCount() == 2; });
    EXPECT_GT(rows->rowHeight(0), 2 * rows->rowHeight(1)) << "the Error column wraps";
    desktop.clipboard = u"mine"_s;
    QTest::keyClick(rows, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(desktop.clipboard, u"mine"_s) << "no row is chosen";
    press(u"Copy All"_s);
    EXPECT_EQ(desktop.clipboard, errors.asText());
    rows->selectRow(1);
    QTest::keyClick(rows, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(desktop.clipboard, errors.asText().section(u'\n', 1));
    press(u"Clear"_s); // the clerk cancels
    EXPECT_EQ(errors.entries().size(), 2);
    prompts.answer = 1;
    press(u"Clear"_s);
    press(u"Copy All"_s);
    EXPECT_EQ(desktop.clipboard, QString());
    runUntil([&] { return rows->model()->rowCount() == 0; });
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST(DamagedLog, IsToldAtTheStartOnWhateverTabTheClerkIs)
{
    WindowDesk desk(false, QByteArray(5000, 'j'));
    EXPECT_EQ(desk.dialog()->windowTitle(), u"Mailing Log"_s);
    QApplication::activeModalWidget()->close();
    desk.settleAll();
}

} // namespace parcelory::test
