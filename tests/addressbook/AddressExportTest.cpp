#include "addressbook/AddressCsv.h"
#include "addressbook/ImportProgress.h"
#include "addressbook/LocalAddressStore.h"
#include "addressbook/VCard.h"
#include "core/PostalContact.h"
#include "core/Text.h"
#include "support/Table.h"

#include <QRandomGenerator>

// What the address book exports, and that it comes back from there unchanged.

namespace parcelory::test {
namespace {

QString randomText(QRandomGenerator &random)
{
    static const QStringList parts =
        characters(u"aZ 0é\u0308ß田Жא😀\"'\\,;:=|\n\r\t<&\u00A0\u2028\u0001"_s) +
        QStringList{u"\r\n"_s, u"tel:"_s, u"END:VCARD"_s, u"US"_s, QString(60, u'ö'), u"  "_s};
    QString text;
    for (int left = random.bounded(5); left > 0; --left)
        text += parts[random.bounded(parts.size())];
    return text;
}

QList<PostalContact> randomBook(QRandomGenerator &random, int size)
{
    QList<PostalContact> book;
    for (int i = 0; i < size; ++i) {
        PostalContact contact;
        const auto fill = [&](const auto &, const auto &...fields) {
            ((contact.*fields.member = randomText(random)), ...);
        };
        std::apply(fill, PostalContact::fields());
        if (i % 4 == 0)
            contact.name.clear(); // a company without a person
        if (i % 4 == 1)
            contact.name = contact.company;
        if (i % 3 == 0)
            contact.label = i % 2 ? u"home"_s : u"work"_s;
        book.append(contact);
    }
    return book;
}

QByteArray vCards(const QList<PostalContact> &book)
{
    return each(book, VCard::card).join();
}

QByteArray csv(const QList<PostalContact> &book)
{
    return AddressCsv::header() + each(book, AddressCsv::row).join();
}

QList<PostalContact> sorted(QList<PostalContact> contacts)
{
    std::ranges::sort(contacts, {}, &PostalContact::id);
    return contacts;
}

ReadAddresses readCards(const QByteArray &file)
{
    ImportProgress progress;
    return VCard::read(file, progress);
}

/// What a program reads that does not know this program's own property.
PostalContact readElsewhere(const PostalContact &contact)
{
    QByteArray text = VCard::card(contact).replace("\r\n ", "");
    const qsizetype own = text.indexOf("X-PARCELORY-ENTRY");
    text.remove(own, text.indexOf('\n', own) + 1 - own);
    const QList<PostalContact> read = readCards(text).contacts;
    EXPECT_EQ(read.size(), 1) << text.toStdString();
    PostalContact found = read.value(0);
    found.id = contact.id;
    return found;
}

} // namespace

TEST(AddressExport, ComesBackIntoAnEmptyBookUnchanged)
{
    QRandomGenerator random(20261122);
    for (int round = 0; round < 10; ++round) {
        const QTemporaryDir folder;
        LocalAddressStore store{QDir(folder.filePath(u"full"_s))};
        ASSERT_GT(store.add({.contacts = {}, .exported = randomBook(random, 100), .skipped = {}}).imported, 90);
        const QList<PostalContact> book = store.rows();
        int copy = 0;
        for (const QByteArray &bytes : {vCards(book), csv(book)}) {
            put(folder.filePath(u"export"_s), bytes);
            const ReadAddresses read = LocalAddressStore::importVCard(folder.filePath(u"export"_s));
            EXPECT_TRUE(read.contacts.isEmpty());
            LocalAddressStore empty{QDir(folder.filePath(QString::number(++copy)))};
            EXPECT_EQ(empty.add(read).imported, book.size());
            ASSERT_EQ(sorted(empty.rows()), sorted(book)) << bytes.toStdString();
        }
    }
}

TEST(AddressExport, IsAVCardThatOtherProgramsRead)
{
    const auto person = decodeJson<PostalContact>(dumpJson(table(u"addresses"_s, "contacts")[1]), Keys::asIs);
    PostalContact home = person, company = person;
    home.label = u"home"_s;
    company.name = company.company;
    for (const PostalContact &contact : {person, home, company})
        EXPECT_EQ(readElsewhere(contact), contact);
    const QByteArray text = VCard::card(company);
    EXPECT_TRUE(text.startsWith("BEGIN:VCARD\r\nVERSION:4.0\r\n") && text.endsWith("\r\nEND:VCARD\r\n"));
    EXPECT_THAT(text.toStdString(), HasSubstr("\r\nKIND:org\r\nFN:Ibáñez\\, Hijos\\; y Cía\r\n"));
    for (const QByteArray &line : text.split('\n'))
        EXPECT_LE(line.size(), 76) << line.toStdString();
}

TEST(AddressExport, GivesWayToWhatAnotherProgramHasChanged)
{
    const PostalContact jo{.name = u"Jo Doe"_s, .street1 = u"1 Elm St"_s, .city = u"Salem"_s, .country = u"US"_s};
    const ReadAddresses moved = readCards(VCard::card(jo).replace(";;1 Elm St;", ";;2 Oak St;"));
    ASSERT_EQ(moved.contacts.size(), 1);
    EXPECT_NE(moved.contacts[0].id, jo.id);
    EXPECT_EQ(moved.contacts[0].street1, u"2 Oak St"_s);
    const ReadAddresses mixed = readCards(VCard::card(jo) + "BEGIN:VCARD\nN:Poe;Bo\nADR:;;3\nEND:VCARD\n");
    EXPECT_EQ(mixed.contacts.size(), 1);
    EXPECT_THAT(mixed.exported, ElementsAre(jo));
    const ReadAddresses broken = readCards(VCard::card(jo).replace("ENTRY:{", "ENTRY:["));
    EXPECT_EQ(broken.contacts.value(0).name, u"Jo Doe"_s);

    const QByteArray file = csv({jo});
    for (const QByteArray &changed :
         {file.chopped(1), file.chopped(3), file + "\"", file + "\r\n", QByteArray(file).replace("\"Salem\"", "Salem"),
          csv({jo}).replace("\r\n", "\n")}) {
        ImportProgress progress;
        EXPECT_THROW(AddressCsv::read(changed, progress), AppError) << changed.toStdString();
        EXPECT_TRUE(AddressCsv::isExport(QByteArray(changed).replace('"', "").replace(',', ';')));
    }
}

} // namespace parcelory::test
