#include "support/UiTest.h"

#include <QClipboard>
#include <QDropEvent>
#include <QMimeData>

// Fields as a clerk types and pastes into them.

namespace parcelory::test {
namespace {

TEST(Typing, ADateStaysInItsField)
{
    WindowDesk desk;
    const QDate today = desk.clock.now().date(), day = today.addDays(3);
    const QString stays = u" Ship date stays %1."_s.arg(today.toString(u"MM/dd/yy"_s)),
                  before = today.addDays(-1).toString(u"MM/dd/yy"_s);
    const std::tuple<QString, QDate, QString> rows[] = {{day.toString(u"MM/dd/yy"_s), day, {}},
                                                        {day.toString(u"M-d-yyyy"_s), day, {}},
                                                        {day.toString(u"MMddyy"_s), day, {}},
                                                        {day.toString(u"yyyy-MM-dd"_s), day, {}},
                                                        {day.toString(u"M/d"_s), day, {}},
                                                        {u"13/45/26"_s, today, u"“13/45/26” is not a date."_s + stays},
                                                        {u"1"_s, today, u"“1” is not a date."_s + stays},
                                                        {before, today, before + u" is too early."_s + stays},
                                                        {today.toString(u"MM/dd/yy"_s), today, {}}};
    for (const auto &[typed, date, refusal] : rows) {
        SCOPED_TRACE(typed.toStdString());
        desk.label().shipDate = today;
        desk.settleAll();
        desk.named<ComboBox>(u"Class"_s)->setFocus();
        desk.press(Qt::Key_Tab);
        desk.type(typed);
        EXPECT_EQ(desk.focusName(), u"Ship date");
        desk.press(Qt::Key_Tab);
        EXPECT_NE(desk.focusName(), u"Ship date");
        EXPECT_EQ(desk.label().shipDate.value(), date);
        EXPECT_EQ(desk.named<DateField>(u"Ship date"_s)->text(), date.toString(u"MM/dd/yy"_s));
        EXPECT_EQ(desk.label().banner.value().value_or(Banner{}).text, refusal);
        desk.label().banner = std::nullopt;
    }
    desk.composeAndRate(homeAddress());
    ASSERT_FALSE(desk.label().rates.value().isEmpty());
    desk.named<DateField>(u"Ship date"_s)->setFocus();
    desk.press(Qt::Key_Up);
    EXPECT_EQ(desk.label().shipDate.value(), today.addDays(1));
    EXPECT_TRUE(desk.label().rates.value().isEmpty()) << "a price belongs to its day";

    const MasterLogScreen &log = desk.program->screens().masterLog;
    desk.press(Qt::Key_3, Qt::ControlModifier);
    desk.wait([&] { return !log.busy; });
    const QDate to = log.to;
    desk.named<DateField>(u"From"_s)->setFocus();
    desk.press(Qt::Key_Home);
    desk.type(u"10/01/26"_s);
    EXPECT_EQ(desk.focusName(), u"From");
    EXPECT_EQ(log.from.value(), QDate(2026, 10, 1));
    EXPECT_EQ(log.to.value(), to);
    desk.press(Qt::Key_Tab);
    desk.named<DateField>(u"From"_s)->setFocus();
    desk.press(Qt::Key_A, Qt::ControlModifier);
    desk.type(u"10/32/26"_s);
    desk.press(Qt::Key_Return); // would load other days than the typed ones
    EXPECT_FALSE(log.busy);
    EXPECT_EQ(log.message.value(), u"“10/32/26” is not a date. From stays 10/01/26."_s);
}

TEST(Typing, DigitsChooseTheGoodsAndTheValueIsCompared)
{
    WindowDesk desk;
    desk.compose(londonAddress());
    DesklineInvoice invoice{.invoiceID = u"48377"_s, .address = londonAddress()};
    invoice.items = {{.title = u"Sovereigns"_s, .qty = u"4"_s, .total = u"$1,860.00"_s}};
    desk.app().scannedInvoice = invoice;
    desk.app().fillFromInvoice(invoice);
    desk.label().weightLb = u"1"_s;
    desk.settleAll();
    desk.press(Qt::Key_K, Qt::ControlModifier);
    QWidget *sheet = desk.readyDialog();
    EXPECT_TRUE(shows(*sheet, u"United Kingdom"_s));
    const auto warns = [sheet] {
        const auto parts = sheet->findChildren<QWidget *>();
        return std::ranges::any_of(parts, [](const QWidget *part) {
            return part->isVisible() &&
                   part->accessibleName() == u"The value differs from the invoice's subtotal, $1860.00.";
        });
    };
    desk.type(u"2"_s);
    desk.clock.advance(std::chrono::seconds(1)); // a digit might be a scanner's
    desk.settleAll();
    for (const auto key : {Qt::Key_1, Qt::Key_3}) // the keys of a tab
        desk.press(key, Qt::ControlModifier);
    EXPECT_EQ(desk.label().customs.value().itemType, CustomsItemType::silver);
    EXPECT_EQ(desk.label().customs.value().value, u"1860.00");
    EXPECT_TRUE(desk.focusName().contains(u"(Silver)"_s)) << desk.focusName().toStdString();
    EXPECT_FALSE(warns());
    desk.named<LineEdit>(u"Declared value, US dollars"_s, sheet)->setFocus();
    desk.named<LineEdit>(u"Declared value, US dollars"_s, sheet)->end(false);
    desk.press(Qt::Key_Backspace);
    EXPECT_EQ(desk.label().customs.value().value, u"1860.0");
    EXPECT_FALSE(warns()) << "the same amount";
    desk.press(Qt::Key_4);
    EXPECT_TRUE(warns());
    desk.press(Qt::Key_4, Qt::AltModifier);
    EXPECT_EQ(desk.label().customs.value().itemType, CustomsItemType::readingMaterial);
    desk.press(Qt::Key_Return);
    desk.idle();
    EXPECT_FALSE(desk.label().rates.value().isEmpty());
}

TEST(Typing, APastedAddressIsSplitAPastedTextTrimmedAndALongTextShowsItsBeginning)
{
    WindowDesk desk;
    QClipboard *clipboard = QApplication::clipboard();
    desk.type(u"Ana"_s);
    const ShippoAddress before = desk.app().draftTo;
    const auto paste = [&](const QString &field, const QString &text) {
        desk.named<LineEdit>(field)->setFocus();
        clipboard->setText(text);
        desk.press(Qt::Key_V, Qt::ControlModifier);
    };
    const QString block = u"Eleanor Whitfield\n418 Montford Ave\nApt 3B\nAsheville, NC 28801\n"_s;
    for (const QString &field : {u"Recipient name"_s, u"City"_s, u"Email"_s}) {
        SCOPED_TRACE(field.toStdString());
        paste(field, block);
        EXPECT_EQ(desk.app().draftTo.value(), homeAddress());
        desk.press(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(desk.app().draftTo.value(), before);
        paste(field, block);
        desk.click(desk.button(u"Undo"_s));
        EXPECT_EQ(desk.app().draftTo.value(), before);
        EXPECT_FALSE(desk.label().banner.value());
    }
    QMimeData dragged;
    dragged.setText(block);
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &dragged, Qt::NoButton, Qt::NoModifier);
    QDropEvent drop({5, 5}, Qt::CopyAction, &dragged, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(desk.named<LineEdit>(u"City"_s), &enter);
    QCoreApplication::sendEvent(desk.named<LineEdit>(u"City"_s), &drop);
    EXPECT_EQ(desk.app().draftTo.value(), homeAddress());
    desk.press(Qt::Key_Z, Qt::ControlModifier);
    if (clipboard->supportsSelection()) { // a middle click pastes it
        clipboard->setText(block, QClipboard::Selection);
        QTest::mouseClick(desk.named<LineEdit>(u"City"_s), Qt::MiddleButton);
        EXPECT_EQ(desk.app().draftTo.value(), homeAddress());
        clipboard->clear(QClipboard::Selection);
    }
    paste(u"Recipient name"_s, block);
    paste(u"Phone"_s, u" \t828 555\u200B 0142 \n"_s);
    EXPECT_EQ(desk.app().draftTo.value().phone, u"828 555 0142");
    EXPECT_EQ(desk.app().draftTo.value().name, u"Eleanor Whitfield");
    EXPECT_FALSE(desk.label().banner.value()) << "after an edit there is nothing to undo";
    clipboard->clear();
    desk.named<LineEdit>(u"Recipient name"_s)->setFocus();
    desk.type(u"Eleanor Whitfield Montgomery of the Blue Ridge Society"_s);
    desk.press(Qt::Key_Tab);
    EXPECT_EQ(desk.named<LineEdit>(u"Recipient name"_s)->cursorPosition(), 0) << "a long text shows its beginning";
}

} // namespace
} // namespace parcelory::test
