// The address book as the screens use it: over a real store, beside the label screen.

#include "support/AppTest.h"
#include "support/WaitingRoom.h"

namespace parcelory::test {
namespace {

class AddressBookTest : public LabelTest {
protected:
    AddressBook book{*app};
    AddressBookPane pane{*app, book};

    AddressBookTest()
    {
        run(book.reload());
        finish();
    }
    void TearDown() override { finish(); }

    void finish() { settleBook(book); }
    QStringList shown() const
    {
        return each(pane.filtered(), [this](int at) { return book.contacts()[at].name; });
    }
    void add(const QString &name, const QString &city)
    {
        EXPECT_TRUE(
            runTask(book.save({.name = name, .street1 = u"1 Main St"_s, .city = city, .zip = u"97301"_s}), &clock));
    }
};

} // namespace

TEST_F(AddressBookTest, ALockedBookHoldsUpNoStartAndComesBackByItself)
{
    add(u"Baker"_s, u"Salem"_s);
    WaitingRoom waiting;
    Database other(path(u"addresses.sqlite"_s));
    ASSERT_TRUE(other.exec("BEGIN EXCLUSIVE"));
    const LocalAddressStore later{QDir(folder.path())};
    EXPECT_EQ(WaitingRoom::waited, 0) << "the window comes first";
    EXPECT_TRUE(later.read().failure.contains(u"another program has it open"_s));

    AppState next(platform);
    AddressBook nextBook(next);
    run(nextBook.reload());
    EXPECT_TRUE(nextBook.status.value().startsWith(u"The address book could not be read — another program has"_s));
    EXPECT_EQ(nextBook.statusKind, StatusKind::failure);
    EXPECT_FALSE(nextBook.loaded);
    ASSERT_TRUE(other.exec("ROLLBACK"));
    clock.advance(std::chrono::seconds(10));
    runUntil([&] { return nextBook.loaded.value(); });
    settleBook(nextBook);
    EXPECT_EQ(nextBook.status.value(), u"1 addresses"_s);
    EXPECT_EQ(errors->entries().size(), 1);
}

TEST_F(AddressBookTest, FindsFillsDeletesAndUndoesADeletion)
{
    EXPECT_EQ(book.status.value(), u"0 addresses"_s);
    add(u"baker"_s, u"Salem"_s);
    add(u"Adams"_s, u"Keene"_s);
    EXPECT_EQ(book.status.value(), u"Saved Adams"_s);
    add({}, u"Arlo"_s);
    EXPECT_THAT(shown(), ElementsAre(u"Adams"_s, u"baker"_s, QString())) << "entries without a name come last";
    pane.query = u"  KEENE "_s;
    EXPECT_THAT(shown(), ElementsAre(u"Adams"_s));
    pane.selection = book.contacts()[0].id;

    pane.choose({.name = u"GOLD COINS"_s, .company = u"Gold Coins"_s});
    EXPECT_EQ(app->draftTo.value().name, u"G C"_s) << "a company's name is discreet on the label";
    EXPECT_EQ(app->draftTo.value().company, u"G C"_s);
    const int fills = app->draftFillCount;
    pane.choose(*pane.selected());
    EXPECT_EQ(book.status.value(), u"Filled label for Adams"_s);
    EXPECT_EQ(app->draftFillCount.value(), fills + 1);
    EXPECT_EQ(app->draftTo.value().city, u"Keene"_s);

    run(book.remove(*pane.selected()));
    EXPECT_EQ(book.status.value(), u"Address deleted."_s);
    EXPECT_FALSE(pane.selection.value());
    EXPECT_THAT(shown(), testing::IsEmpty());
    run(book.undo());
    EXPECT_THAT(shown(), ElementsAre(u"Adams"_s));
    EXPECT_FALSE(book.canUndo());
}

TEST_F(AddressBookTest, SavesTheRecipientOfALabelOnce)
{
    composeAndRate(homeAddress());
    pressBuy();
    finish();
    ASSERT_EQ(book.contacts().size(), 1) << banner().toStdString();
    EXPECT_EQ(book.status.value(), u"Recipient saved to the address book."_s);
    ASSERT_TRUE(book.kept.value());
    EXPECT_TRUE(book.kept.value()->isWritten);
    const PostalContact kept = book.contacts()[0];
    EXPECT_EQ(kept.name, u"Eleanor Whitfield"_s);
    ShippoAddress moved = kept.asShippoAddress();
    moved.name = moved.name.toUpper();
    moved.phone = u"828 555 0142"_s;
    run(book.keep(moved));
    EXPECT_EQ(book.status.value(), u"Recipient saved to the address book."_s);
    ASSERT_EQ(book.contacts().size(), 1);

    // Changes made only for the label do not overwrite the book's company and phone.
    PostalContact dealer = book.contacts()[0];
    dealer.company = u"Rare Coin Exchange"_s;
    EXPECT_TRUE(runTask(book.save(dealer), &clock));
    app->fillRecipient(dealer);
    ShippoAddress checked = app->draftTo;
    checked.street1 = checked.street1.toUpper();
    checked.zip = u"28801-6168"_s;
    checked.phone = QString();
    run(book.keep(checked));
    ASSERT_EQ(book.contacts().size(), 1);
    EXPECT_EQ(book.contacts()[0].company, u"Rare Coin Exchange"_s);
    EXPECT_EQ(book.contacts()[0].phone, u"828 555 0142"_s);
    EXPECT_EQ(book.contacts()[0].zip, u"28801-6168"_s);

    screen().keepRecipient = false;
    composeAndRate(homeOf(u"Somebody Else"_s));
    pressBuy();
    finish();
    EXPECT_EQ(book.contacts().size(), 1);
}

TEST_F(AddressBookTest, ChangesOnlyTheEntryOfTheSameRecipient)
{
    const ShippoAddress supply = addressOf(table(u"addresses"_s, "supply")[0]);
    for (const Json &row : table(u"addresses"_s, "recipients")) { // two changes of it, and whether they are the same
        run(book.keep(changed(supply, row[0])));
        ASSERT_EQ(book.contacts().size(), 1);
        const PostalContact before = book.contacts()[0];
        run(book.keep(changed(supply, row[1])));
        EXPECT_EQ(book.contacts().size(), row[2].get<bool>() ? 1 : 2) << row;
        EXPECT_TRUE(book.contacts().contains(before) || row[2].get<bool>());
        for (const PostalContact &contact : QList(book.contacts()))
            run(book.remove(contact));
    }
}

TEST_F(AddressBookTest, NamesAndUndoesWhatALabelHasChanged)
{
    run(book.keep(homeAddress()));
    EXPECT_FALSE(book.canUndo()) << "a new entry can be deleted";
    const PostalContact before = book.contacts()[0];
    ShippoAddress moved = homeAddress();
    moved.phone = u"828 555 0142"_s;
    for (int press = 0; press < 2; ++press) {
        run(book.keep(moved));
        EXPECT_EQ(book.changeText(), u"Address book entry changed: Eleanor Whitfield, "_s + before.addressSummary());
    }
    app->draftTo = londonAddress();
    EXPECT_EQ(book.changeText(), QString()) << "the next parcel has begun";
    run(book.undo());
    EXPECT_THAT(book.contacts(), ElementsAre(before));
    EXPECT_FALSE(book.kept.value() || book.canUndo());

    run(book.keep(moved));
    run(book.keep(londonAddress()));
    EXPECT_EQ(book.changeText(), QString()) << "the next label changed no entry";
    EXPECT_TRUE(book.canUndo()) << "in the address book";
    for (int parcel = 0; parcel < 2; ++parcel) { // of the same customer
        app->draftTo = ShippoAddress();
        app->draftTo = moved;
        EXPECT_FALSE(book.kept.value()) << "news of the parcel before";
        run(book.keep(moved));
        EXPECT_EQ(book.changeText(), QString());
    }
}

TEST_F(AddressBookTest, SavesAndDeletesOnceHoweverOftenItIsAsked)
{
    {
        const HeldPool held;
        spawn([this] { return book.keep(homeAddress()); });
        spawn([this] { return book.keep(homeAddress()); }); // a double click
    }
    finish();
    ASSERT_EQ(book.contacts().size(), 1);
    const PostalContact contact = book.contacts()[0];
    {
        const HeldPool held;
        spawn([this, contact] { return book.remove(contact); });
        spawn([this, contact] { return book.remove(contact); });
    }
    finish();
    EXPECT_EQ(book.status.value(), u"Address deleted."_s);
    run(book.remove(contact));
    EXPECT_EQ(book.statusKind.value(), StatusKind::failure) << "nothing was deleted";

    AddressBook unread(*app);
    {
        const HeldPool held;
        spawn([&unread] { return unread.keep(homeAddress()); }); // reads the book first
        spawn([&unread] { return unread.reload(); });
    }
    settleBook(unread);
    EXPECT_TRUE(unread.kept.value() && unread.kept.value()->isWritten);
}

TEST_F(AddressBookTest, WritesChangesInTheOrderOfTheClicks)
{
    add(u"Adams"_s, u"Keene"_s);
    const PostalContact before = book.contacts()[0];
    std::vector<Task<bool>> changes;
    for (PostalContact contact = before; changes.size() < 16; changes.push_back(book.save(contact)))
        contact.phone = QString::number(changes.size());
    finish();
    EXPECT_EQ(book.contacts()[0].phone, u"15"_s);

    ShippoAddress moved = before.asShippoAddress();
    moved.phone = u"603 555 0142"_s;
    for (int click = 0; click < 8; ++click)
        spawn([this, moved] { return book.keep(moved); });
    spawn([this] { return book.undo(); }); // of a change before
    finish();
    EXPECT_EQ(book.contacts()[0].phone, before.phone);
}

TEST_F(AddressBookTest, SaysThatItCannotBeRead)
{
    add(u"Adams"_s, u"Keene"_s);
    Database other(path(u"addresses.sqlite"_s));
    ASSERT_TRUE(other.exec("ALTER TABLE addresses RENAME TO away"));
    run(book.reload());
    EXPECT_TRUE(book.status.value().startsWith(u"The address book could not be read — no such table"_s));
    EXPECT_EQ(book.statusKind.value(), StatusKind::failure);
    EXPECT_THAT(shown(), ElementsAre(u"Adams"_s)); // as it was last read
    prompts.file = path(u"out.csv"_s);
    run(book.exportTo(AddressBook::Format::csv));
    EXPECT_FALSE(QFile::exists(prompts.file));

    AddressBook fresh(*app);
    run(fresh.keep(homeAddress()));
    EXPECT_FALSE(fresh.loaded || fresh.kept.value()->isWritten);
    ASSERT_TRUE(other.exec("ALTER TABLE away RENAME TO addresses"));
    run(fresh.reload());
    EXPECT_TRUE(fresh.loaded && fresh.unreadable.value().isEmpty());
    EXPECT_EQ(fresh.contacts().size(), 1);
    run(book.reload()); // otherwise it would try again after the test
    finish();
}

TEST_F(AddressBookTest, ExportsAndImportsItself)
{
    add(u"Zoë \"Z\""_s, u"Köln"_s);
    add(u"Adams"_s, u"Keene"_s);
    const QList<PostalContact> before = book.contacts();
    for (const auto &[format, name] : {std::pair(AddressBook::Format::vCard, u"Address Book.vcf"_s),
                                       std::pair(AddressBook::Format::csv, u"Address Book.csv"_s)}) {
        prompts.file = path(name);
        run(book.exportTo(format));
        EXPECT_EQ(book.status.value(), u"Exported 2 addresses to "_s + name);
        EXPECT_EQ(prompts.fileQuestions.last(), std::pair(u"Export Address Book"_s, name));
        for (const PostalContact &contact : before)
            run(book.remove(contact));
        run(book.importVCard());
        EXPECT_EQ(book.status.value(), u"Imported 2 addresses (0 duplicates skipped) — 2 total."_s);
        EXPECT_EQ(book.contacts(), before);
    }
    prompts.file = path(u"Address Book.vcf"_s); // in which another program has moved Zoë
    put(prompts.file, contentsOf(prompts.file).replace(";;1 Main St;Köln", ";;2 Oak St;Köln"));
    PostalContact moved = before[0];
    moved.street1 = u"9 Elm St"_s;
    EXPECT_TRUE(runTask(book.save(moved), &clock));
    run(book.importVCard());
    EXPECT_EQ(book.status.value(), u"Imported 2 addresses (0 duplicates skipped) — 4 total."_s);
    EXPECT_TRUE(book.contacts().contains(moved)) << "the export does not replace a later change";
    prompts.file = path(u"no folder/a.vcf"_s);
    run(book.exportTo(AddressBook::Format::vCard));
    EXPECT_TRUE(book.status.value().startsWith(u"Export failed: "_s)) << book.status.value().toStdString();
    EXPECT_FALSE(book.exporting);
}

TEST_F(AddressBookTest, ImportsAFileOrReportsWhyNotAndStaysUnchanged)
{
    const Json rows = table(u"addresses"_s, "imports");
    prompts.file = path(u"one.vcf"_s);
    saveBytes(prompts.file, bytes(rows[0][1]));
    Task<> canceled;
    {
        const HeldPool held;
        canceled = book.importVCard();
        book.cancelImport();
    }
    run(std::move(canceled));
    EXPECT_EQ(book.status.value(), u"The import was canceled."_s);
    for (const Json &row : rows) {
        prompts.file = path(text(row[0]));
        saveBytes(prompts.file, bytes(row[1]));
        run(prompts.file.endsWith(u".vcf") ? book.importVCard() : book.importEndicia());
        if (row[2].is_null())
            EXPECT_FALSE(book.status.value().startsWith(u"Imported"_s)) << book.status.value().toStdString();
        else
            EXPECT_EQ(book.status.value(), text(row[2]));
    }
    settle();
    EXPECT_TRUE(hasRecorded(u"1 incomplete card skipped: Ana Lost"_s));
    EXPECT_EQ(prompts.fileQuestions.last().first, u"Pick Endicia's importedAddresses.plist"_s);
    EXPECT_THAT(shown(), ElementsAre(u"Cascade Supply"_s, u"Harbor Books"_s, u"Theodore Eng"_s));
    EXPECT_FALSE(book.importing);
    {
        const HeldPool held;
        Task<> first = book.importVCard();
        const qsizetype asked = prompts.fileQuestions.size();
        Task<> second = book.importVCard();
        EXPECT_EQ(prompts.fileQuestions.size(), asked) << "one import at a time";
    }
    finish();
    prompts.file = QString();
    book.status = u"untouched"_s;
    run(book.importVCard());
    EXPECT_EQ(book.status.value(), u"untouched"_s) << "the clerk cancels";
    EXPECT_TRUE(Database(path(u"addresses.sqlite"_s))
                    .exec("CREATE TRIGGER refuse BEFORE INSERT ON addresses BEGIN SELECT RAISE(ABORT, 'full'); END"));
    EXPECT_FALSE(runTask(book.save({.name = u"Zoe"_s}), &clock));
    EXPECT_EQ(book.status.value(), u"The address book could not be written — full."_s);
}

} // namespace parcelory::test
