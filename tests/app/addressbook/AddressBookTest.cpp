// The address book as the screens use it: over a real store, beside the label screen.

#include "app/addressbook/AddressBook.h"
#include "core/Sqlite.h"
#include "core/Task.h"
#include "support/CarrierDesk.h"
#include "support/HeldPool.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>

#include <vector>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace {

class AddressBookTest : public testing::Test, public LabelDesk {
protected:
    AddressBook book{*app};
    AddressBookPane pane{*app, book};

    AddressBookTest()
    {
        run(book.reload());
        finish();
    }
    void TearDown() override { finish(); }

    void finish()
    {
        for (int turn = 0; turn < 6; ++turn) { // each step of a chain may start the next step
            workPool().waitForDone();
            settle();
        }
    }
    std::vector<QString> shown() const
    {
        std::vector<QString> names;
        for (const int at : pane.filtered())
            names.push_back(book.contacts()[at].name);
        return names;
    }
    void add(const QString &name, const QString &city)
    {
        EXPECT_TRUE(
            runTask(book.save({.name = name, .street1 = u"1 Main St"_s, .city = city, .zip = u"97301"_s}), &clock));
    }
};

} // namespace

TEST_F(AddressBookTest, FindsFillsDeletesAndUndoesADeletion)
{
    EXPECT_EQ(book.status.value(), u"0 addresses"_s);
    add(u"baker"_s, u"Salem"_s);
    add(u"Adams"_s, u"Keene"_s);
    EXPECT_EQ(book.status.value(), u"Saved Adams"_s);
    EXPECT_THAT(shown(), ElementsAre(u"Adams"_s, u"baker"_s));
    pane.query = u"  KEENE "_s;
    EXPECT_THAT(shown(), ElementsAre(u"Adams"_s));
    pane.selection = book.contacts()[0].id;

    const int fills = app->draftFillCount;
    pane.choose(*pane.selected());
    EXPECT_EQ(book.status.value(), u"Filled label for Adams"_s);
    EXPECT_EQ(app->draftFillCount.value(), fills + 1);
    EXPECT_EQ(app->draftTo.value().city, u"Keene"_s);

    run(book.remove(*pane.selected()));
    EXPECT_EQ(book.status.value(), u"Address deleted."_s);
    EXPECT_FALSE(pane.selection.value());
    EXPECT_THAT(shown(), testing::IsEmpty());
    run(book.undoRemove());
    EXPECT_THAT(shown(), ElementsAre(u"Adams"_s));
    EXPECT_FALSE(book.deleted.value());
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
    EXPECT_EQ(book.contacts()[0].phone, u"828 555 0142"_s);

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
    checked.street1 = u"418 Elm St"_s; // another person with the same name
    run(book.keep(checked));
    EXPECT_EQ(book.contacts().size(), 2);
    run(book.remove(book.contacts()[0].street1 == checked.street1 ? book.contacts()[0] : book.contacts()[1]));

    screen().keepRecipient = false;
    ShippoAddress other = homeAddress();
    other.name = u"Somebody Else"_s;
    composeAndRate(other);
    pressBuy();
    finish();
    EXPECT_EQ(book.contacts().size(), 1);
}

TEST_F(AddressBookTest, ImportsAFileOrReportsWhyNotAndStaysUnchanged)
{
    const auto import = [this](const QString &name, const QByteArray &bytes, auto how) {
        prompts.file = path(name);
        QFile file(prompts.file);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        run(how());
    };
    const auto vCard = [this] { return book.importVCard(); };
    const QByteArray card = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Eng;Theodore;;;\r\nFN:Theodore Eng\r\n"
                            "ADR;TYPE=home:;;2217 W Alder St;Tacoma;WA;98406;USA\r\nEND:VCARD\r\n";
    import(u"one.vcf"_s, card, vCard);
    EXPECT_EQ(book.status.value(), u"Imported 1 addresses (0 duplicates skipped) — 1 total."_s);
    import(u"again.vcf"_s, card, vCard);
    EXPECT_EQ(book.status.value(), u"Imported 0 addresses (1 duplicates skipped) — 1 total."_s);
    import(u"cut.vcf"_s, card.left(card.size() - 20), vCard);
    EXPECT_FALSE(book.status.value().startsWith(u"Imported"_s)) << book.status.value().toStdString();
    import(u"list.plist"_s, "<plist version=\"1.0\"><dict/></plist>", [this] { return book.importEndicia(); });
    EXPECT_EQ(book.status.value(), u"That file isn't an Endicia address plist."_s);
    EXPECT_EQ(prompts.fileQuestions.last().first, u"Pick Endicia's importedAddresses.plist"_s);
    EXPECT_EQ(book.contacts().size(), 1);
    EXPECT_FALSE(book.importing);
    {
        const HeldPool held;
        Task<> first = book.importVCard();
        const qsizetype asked = prompts.fileQuestions.size();
        Task<> second = book.importVCard();
        EXPECT_EQ(prompts.fileQuestions.size(), asked) << "one import at a time";
    }
    finish();
    EXPECT_TRUE(Database(path(u"addresses.sqlite"_s))
                    .exec("CREATE TRIGGER refuse BEFORE INSERT ON addresses BEGIN SELECT RAISE(ABORT, 'full'); END"));
    EXPECT_FALSE(runTask(book.save({.name = u"Zoe"_s}), &clock));
    EXPECT_EQ(book.status.value(), u"The address book could not be written — full."_s);
    prompts.file = QString();
    book.status = u"untouched"_s;
    run(book.importVCard());
    EXPECT_EQ(book.status.value(), u"untouched"_s);
}

} // namespace parcelory::test
