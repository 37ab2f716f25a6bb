#include "ui/sidebar/AddressBookView.h"
#include "practice/PracticeSamples.h"
#include "support/UiTest.h"

// The address book beside the label form and in its own window, operated like a clerk does.

namespace parcelory::test {
namespace {

struct BookDesk : WindowDesk {
    AddressBook &book = program->screens().addressBook;

    BookDesk()
    {
        addPracticeAddresses(app().addressBook);
        runTask(book.reload(), &clock);
        settleAll();
    }
    void waitFor(const QString &status)
    {
        wait([&] { return book.status.value() == status; });
    }
    QString chosen() { return window().labelView().addressBook().pane().selected().value_or(PostalContact{}).name; }
    bool isShown(const QString &text) { return shows(window(), text); }
    /// The book's file, as another program has it open.
    Database file() { return Database(path(u"addresses.sqlite"_s)); }
};

TEST(AddressBookPane, FillsTheLabelWithoutTheMouse)
{
    BookDesk desk;
    desk.carrier.setScenario({.holdsAnswers = true}); // each address is checked as soon as it is filled
    desk.press(Qt::Key_F, Qt::ControlModifier);
    desk.type(u"okonk"_s);
    QKeyEvent heldDown(QEvent::KeyPress, Qt::Key_Return, {}, u"\r"_s, true);
    QCoreApplication::sendEvent(desk.window().windowHandle(), &heldDown);
    EXPECT_TRUE(desk.app().draftTo.value().isEmpty());
    desk.press(Qt::Key_Return); // the only match
    EXPECT_EQ(desk.app().draftTo.value().street1, u"1550 Poplar Ave");
    desk.type(u"or 97"_s);      // replaces the first search
    desk.press(Qt::Key_Return); // two matches: the clerk must choose
    EXPECT_EQ(desk.app().draftTo.value().name, u"Silas Okonkwo");
    EXPECT_EQ(desk.focusName(), u"Parcelory Address Book");
    desk.press(Qt::Key_Down);
    desk.press(Qt::Key_Return);
    EXPECT_TRUE(desk.isShown(u"Filled label for Ruth Abernathy"_s));
    desk.press(Qt::Key_Up);
    desk.press(Qt::Key_Up); // from the first row back to the search
    desk.type(u"<b>"_s);
    EXPECT_TRUE(desk.isShown(u"No address matches “<b>”"_s));
    EXPECT_FALSE(desk.button(u"Fill Label"_s)->isEnabled());
    const QString place = desk.focusName();
    desk.carrier.setScenario({});
    desk.idle();
    EXPECT_EQ(desk.focusName(), place) << "the end of the check takes no focus from the clerk who types";
}

TEST(AddressBookPane, EditsDeletesAndUndoesADeletion)
{
    BookDesk desk;
    desk.press(Qt::Key_F, Qt::ControlModifier);
    desk.type(u"zielinski"_s);
    desk.press(Qt::Key_Down);
    desk.click(desk.named(u"Edit the selected address"_s));
    EXPECT_EQ(desk.readyDialog()->windowTitle(), u"Edit Address");
    desk.type(u"Paula Zabel"_s); // does not match the search
    desk.press(Qt::Key_Return);
    desk.waitFor(u"Saved Paula Zabel"_s);
    desk.window().activateWindow();
    desk.press(Qt::Key_F, Qt::ControlModifier);
    desk.press(Qt::Key_Down); // moves to her row, which is already chosen
    const auto answer = [&desk](const QString &choice) {
        desk.press(Qt::Key_Delete);
        desk.click(desk.button(choice, desk.readyDialog()));
        desk.window().activateWindow();
    };
    desk.book.importing = true;
    desk.press(Qt::Key_Delete);
    EXPECT_FALSE(QApplication::activeModalWidget()) << "nothing is deleted during an import";
    desk.book.importing = false;
    answer(u"Keep the Address"_s);
    EXPECT_EQ(desk.chosen(), u"Paula Zabel");
    answer(u"Delete"_s);
    desk.waitFor(u"Address deleted."_s);
    EXPECT_TRUE(desk.isShown(u"11 addresses"_s));
    EXPECT_EQ(desk.chosen(), QString()); // a second press deletes nothing
    desk.press(Qt::Key_Z, Qt::ControlModifier);
    desk.waitFor(u"Restored Paula Zabel"_s);
    EXPECT_EQ(desk.chosen(), u"Paula Zabel");
    desk.press(Qt::Key_Z, Qt::ControlModifier); // her name, too
    desk.waitFor(u"Restored Paul Zielinski"_s);
    EXPECT_FALSE(desk.book.canUndo());
    desk.press(Qt::Key_F, Qt::ControlModifier);
    desk.type(u"or 97"_s);
    EXPECT_TRUE(desk.isShown(u"2 of 12 addresses"_s));
    desk.press(Qt::Key_Escape); // shows everyone
    const QList<PostalContact> everyone = desk.book.contacts();
    for (const PostalContact &contact : everyone)
        runTask(desk.book.remove(contact), &desk.clock);
    desk.settleAll();
    EXPECT_TRUE(desk.isShown(u"No addresses yet"_s) && desk.isShown(u"0 addresses"_s));
}

TEST(AddressEditSheet, StaysOpenWithTheReasonUntilTheAddressIsSaved)
{
    BookDesk desk;
    Database other = desk.file();
    ASSERT_TRUE(
        other.exec("CREATE TRIGGER t BEFORE INSERT ON addresses BEGIN SELECT RAISE(FAIL, 'disk is full'); END"));
    desk.click(desk.named(u"New address"_s));
    Dialog *sheet = desk.readyDialog();
    desk.type(u"Ida Penn"_s);
    ASSERT_TRUE(other.exec("BEGIN EXCLUSIVE"));
    desk.press(Qt::Key_Return);
    desk.press(Qt::Key_Escape); // the outcome is not known yet
    EXPECT_EQ(QApplication::activeModalWidget(), sheet);
    ASSERT_TRUE(other.exec("ROLLBACK"));
    desk.wait([&] { return desk.book.status.value().startsWith(u"The address book could not be written — "_s); });
    EXPECT_TRUE(desk.named<Notice>(desk.book.status, sheet)->isVisible());
    EXPECT_EQ(desk.named<LineEdit>(u"Name"_s, sheet)->text(), u"Ida Penn"_s);
    ASSERT_TRUE(other.exec("DROP TRIGGER t"));
    desk.type(u"y"_s);
    desk.press(Qt::Key_Return);
    desk.waitFor(u"Saved Ida Penny"_s);
    EXPECT_FALSE(QApplication::activeModalWidget());
    EXPECT_EQ(desk.chosen(), u"Ida Penny");
}

TEST(AddressBookPane, SaysThatTheBookCannotBeReadAndReadsItAgain)
{
    BookDesk desk;
    AddressBook &book = desk.book;
    book.loaded = false; // as if it had never been read
    Database other = desk.file();
    ASSERT_TRUE(other.exec("ALTER TABLE addresses RENAME TO away"));
    runTask(book.reload(), &desk.clock);
    desk.settleAll();
    auto *again = desk.button(u"Read Again"_s);
    EXPECT_FALSE(desk.isShown(u"No addresses yet"_s));
    ASSERT_TRUE(other.exec("ALTER TABLE away RENAME TO addresses"));
    desk.click(again);
    desk.wait([&] { return book.loaded.value(); });
    desk.settleAll();
    EXPECT_FALSE(again->isVisible());
}

TEST(AddressBookPane, OffersExportsAndUndoesALabelsChangeInTheStrip)
{
    BookDesk desk;
    ShippoAddress changed = desk.book.contacts()[0].asShippoAddress();
    changed.phone = u"503 555 0199"_s;
    desk.app().draftTo = changed;
    desk.settleAll();
    auto *save = desk.button(u"Save to Address Book"_s);
    desk.click(save);
    desk.click(save); // a double click
    desk.wait([&] { return desk.book.canUndo(); });
    desk.settleAll();
    EXPECT_TRUE(desk.named(desk.book.changeText())->isVisible());
    EXPECT_EQ(desk.book.contacts().size(), 12);
    const auto *undo = desk.button(u"Undo"_s, &desk.window().labelView().addressBook());
    desk.click(desk.named<Button>(u"Undo the change in the address book"_s));
    desk.wait([&] { return desk.book.contacts()[0].phone != changed.phone; });
    EXPECT_FALSE(desk.book.canUndo() || undo->isVisible());

    const auto *exports = desk.named<Button>(u"Export Address Book"_s);
    EXPECT_TRUE(exports->isEnabled());
    ASSERT_EQ(exports->menu()->actions().size(), 2);
    EXPECT_EQ(exports->menu()->actions()[1]->text(), u"To CSV File (.csv)…"_s);
}

TEST(AddressBookPane, KeepsItsModeAndShowsTheInvoiceDuringAScan)
{
    BookDesk desk;
    desk.app().scanBusy = true;
    desk.settleAll();
    EXPECT_TRUE(desk.named(u"Invoice #"_s)->isVisible());
    EXPECT_EQ(read(desk.preferences, settings::addressBookMode), u"endicia"); // the clerk's own choice is unchanged
    desk.app().scanBusy = false;
    desk.press(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(desk.focusName(), u"Invoice #");
    EXPECT_EQ(read(desk.preferences, settings::addressBookMode), u"deskline");
}

TEST(AddressBookWindow, FillsTheLabelWhichCanBeSavedToTheBook)
{
    BookDesk desk;
    desk.app().tab = MainTab::settings;
    desk.settleAll();
    desk.press(Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    desk.wait([&] { return !desk.window().isActiveWindow() && QApplication::activeWindow(); });
    desk.type(u"montr"_s);
    desk.press(Qt::Key_Return);
    desk.wait([&] { return desk.window().isActiveWindow(); });
    EXPECT_EQ(desk.app().draftTo.value().name, u"Amélie Dufresne");
    EXPECT_EQ(desk.app().tab.value(), MainTab::newLabel);
    desk.click(desk.button(u"Save to Address Book"_s));
    desk.waitFor(u"Recipient saved to the address book."_s);
    EXPECT_EQ(desk.book.contacts().size(), 12); // the recipient was already in the book
    const auto *outcome = desk.named<Notice>(u"Recipient saved to the address book."_s);
    desk.app().draftTo = londonAddress();
    desk.settleAll();
    EXPECT_FALSE(outcome->isVisible());
}

} // namespace
} // namespace parcelory::test
