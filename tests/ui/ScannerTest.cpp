#include "backoffice/DesklineAuth.h"
#include "practice/backoffice/PracticeBackOffice.h"
#include "support/UiTest.h"

#include <QPlainTextEdit>
#include <QSpinBox>
#include <QVBoxLayout>

// The scanner in a window: key presses at a scanner's speed.

namespace parcelory::test {
namespace {

struct ScannerDesk : WindowDesk {
    explicit ScannerDesk(const QUrl &backOffice = {}) : WindowDesk(false, {}, backOffice) {}

    void typeAt(std::chrono::milliseconds spacing, const QString &text, QWidget *top)
    {
        for (const QChar letter : text) {
            clock.advance(spacing);
            if (letter.isUpper())
                QTest::keyClick(top->windowHandle(), Qt::Key_Shift);
            QTest::keyClick(top->windowHandle(), letter.toLatin1());
        }
    }
    void pressReturn(QWidget *top)
    {
        clock.advance(8ms);
        QTest::keyClick(top->windowHandle(), Qt::Key_Return);
        settleAll();
    }
    void scan(QWidget *top)
    {
        clock.advance(1s);
        typeAt(8ms, u"https://"_s + world.deployment.shortLinkHost.toUpper() + u"/i48213"_s, top);
        pressReturn(top);
    }
    /// The scanned invoice, as named in the error log because the back office is unreachable in this test.
    QString invoiceAskedFor()
    {
        const auto &entries = app().errors.entries();
        return entries.isEmpty() ? QString() : entries.first().context;
    }
};

TEST(Scanner, LeavesEveryKindOfFieldUnchanged)
{
    ScannerDesk desk;
    QWidget other;
    auto *rows = new QVBoxLayout(&other);
    auto *line = new QLineEdit(u"Eleanor"_s), *password = new QLineEdit(u"secret"_s);
    auto *text = new QPlainTextEdit(u"two\nlines"_s);
    auto *spin = new QSpinBox;
    auto *button = new QPushButton(u"Buy"_s);
    password->setEchoMode(QLineEdit::Password);
    spin->setRange(0, 100000);
    spin->setValue(12);
    int pressed = 0, edited = 0;
    QObject::connect(button, &QPushButton::clicked, [&] { ++pressed; });
    QObject::connect(line, &QLineEdit::textEdited, [&] { ++edited; });
    const QList<QWidget *> fields = {line, password, text, spin, button};
    for (QWidget *field : fields)
        rows->addWidget(field);
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    line->setFocus();
    line->setSelection(0, 4); // the first key of a code replaces the selection
    password->setCursorPosition(2);
    for (QWidget *field : fields) {
        field->setFocus();
        desk.app().errors.clear();
        desk.scan(&other);
        EXPECT_EQ(desk.invoiceAskedFor(), u"Deskline Invoice 48213") << field->metaObject()->className();
        if (field == line)
            EXPECT_EQ(line->selectedText(), u"Elea");
        if (field == password)
            EXPECT_EQ(password->cursorPosition(), 2);
        EXPECT_EQ(line->text() + password->text() + text->toPlainText() + spin->text(), u"Eleanorsecrettwo\nlines12");
    }
    QMenu menu;
    menu.addAction(u"&Help"_s, [&] { ++pressed; }); // the code begins with its letter
    line->setFocus();
    menu.popup(other.pos());
    desk.scan(&other);
    menu.close();
    EXPECT_EQ(pressed, 0);
    EXPECT_EQ(edited, 2); // the field reported the restored text as an edit
    button->setFocus();
    desk.typeAt(35ms, u"a "_s, &other);
    desk.clock.advance(1s);
    EXPECT_EQ(pressed, 1) << "the held blank is pressed and released";

    line->setFocus();
    line->clear();
    desk.clock.advance(1s);
    for (const QString &word : {u"Whit"_s, u"field"_s}) { // a quick typist's overlapping keys
        desk.typeAt(35ms, word, &other);
        desk.clock.advance(150ms);
    }
    EXPECT_EQ(line->text(), u"Whitfield");
}

TEST(Scanner, ADialogThatOpensDuringAScanAsksForNoOtherInvoice)
{
    ScannerDesk desk;
    desk.clock.advance(1s);
    desk.typeAt(8ms, u"https://"_s + desk.world.deployment.shortLinkHost + u"/i482"_s, &desk.window());
    spawn([&desk] { return desk.app().platform.prompts.alert(u"Attention"_s, u"Look."_s); });
    QWidget *dialog = QApplication::activeModalWidget();
    ASSERT_TRUE(dialog);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog));
    desk.typeAt(8ms, u"13"_s, dialog);
    desk.clock.advance(1s);
    desk.settleAll();
    EXPECT_EQ(desk.invoiceAskedFor(), u"Scanner");
    EXPECT_TRUE(dialog->isVisible());
    dialog->close();
}

TEST(Scanner, WorksInTheMainWindowWithAnyFocus)
{
    ScannerDesk desk;
    desk.composeAndRate(homeAddress());
    Button *buy = desk.button(u"Buy & Print Label"_s);
    buy->setFocus();
    desk.scan(&desk.window());
    EXPECT_EQ(desk.invoiceAskedFor(), u"Deskline Invoice 48213");
    desk.clock.advance(1s);
    desk.typeAt(8ms, u"0123456789 01"_s, &desk.window()); // noise with a space, which would press a focused button
    desk.pressReturn(&desk.window());
    EXPECT_TRUE(desk.app().scanStatus.value().startsWith(u"Scanner heard “0123456789"_s));
    EXPECT_EQ(desk.purchases(), 0);
    ASSERT_TRUE(desk.label().selectedRate());

    desk.press(Qt::Key_L, Qt::ControlModifier);
    desk.type(u"Zoe"_s);
    EXPECT_EQ(desk.app().draftTo.value().name, u"Zoe");
    desk.scan(&desk.window());
    EXPECT_EQ(desk.app().draftTo.value().name, u"Zoe");
}

TEST(Scanner, AScannedParcelIsBoughtInTwoGestures)
{
    const PracticeBackOffice office;
    ScannerDesk desk(office.baseUrl());
    desk.web.answer = [](const QString &script) -> QVariant {
        if (script == DesklineAuth::loginFormProbe)
            return false;
        return script.startsWith(u"document.readyState"_s)
                   ? QVariant(true)
                   : uR"({"fields": {"Name": "Eleanor Whitfield", "Address": "418 Montford Ave Apt 3B",
                                     "City": "Asheville, NC", "Zip": "28801"}})"_s;
    };
    desk.label().weightLb = u"1"_s; // from the scale
    desk.label().mailpiece = PresetMailpiece{u"uline-s-5148"_s};
    desk.scan(&desk.window());
    desk.wait([&desk] { return !desk.label().rates.value().isEmpty() && !desk.label().busy; });
    desk.clock.advance(LabelScreen::buyPause);
    desk.pressBuy();
    EXPECT_EQ(desk.purchases(), 1);
    EXPECT_TRUE(desk.app().log.records().first().recipient.startsWith(u"Eleanor Whitfield"_s));
}

} // namespace
} // namespace parcelory::test
