#include "addressbook/EndiciaList.h"
#include "addressbook/ImportProgress.h"
#include "addressbook/LocalAddressStore.h"
#include "addressbook/VCard.h"
#include "core/AppError.h"
#include "core/PostalContact.h"
#include "core/Progress.h"
#include "support/Printing.h"

#include <QFile>
#include <QStringEncoder>
#include <QTemporaryDir>

#include <algorithm>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace {

using Read = QList<PostalContact> (*)(const QByteArray &, ImportProgress &);

QString shown(const PostalContact &c)
{
    return QStringList{c.name, c.company, c.street1, c.street2, c.city, c.state,
                       c.zip,  c.country, c.label,   c.phone,   c.email}
        .join(u'|');
}

/// The contacts read from the bytes, or the error's text.
QStringList outcome(Read read, const QByteArray &file, const Progress &watched = {})
{
    ImportProgress progress(watched);
    QStringList lines;
    try {
        for (const PostalContact &contact : read(file, progress))
            lines.append(shown(contact));
    } catch (const AppError &error) {
        lines = {error.description()};
    }
    return lines;
}
const auto endicia = [](const QByteArray &file) { return outcome(EndiciaList::contacts, file); };
QList<PostalContact> readCards(const QByteArray &file, ImportProgress &progress)
{
    return VCard::read(file, progress).contacts;
}
const auto vCard = [](const QByteArray &file) { return outcome(readCards, file); };

QString samplePath(const char *name)
{
    return QStringLiteral(PARCELORY_SOURCE_DIR "/practice/samples/") + QString::fromLatin1(name);
}

QByteArray sample(const char *name)
{
    QFile file(samplePath(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

QByteArray plist(const QByteArray &inside)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\"><plist version=\"1.0\">" +
           inside + "</plist>";
}

/// A list of one address with this value as its name.
QByteArray named(const QByteArray &value)
{
    return plist("<array><dict><key>SFAddressNameKey</key>" + value + "</dict></array>");
}

/// A binary property list of these objects; the first object is the root.
QByteArray binary(const QList<QByteArray> &objects, quint64 count = 0)
{
    QByteArray file = "bplist00", table;
    for (const QByteArray &object : objects) {
        table += char(file.size());
        file += object;
    }
    QByteArray trailer = QByteArray(6, '\0') + "\x01\x01";
    for (const quint64 number : {count ? count : quint64(objects.size()), quint64(0), quint64(file.size())}) {
        for (int shift = 56; shift >= 0; shift -= 8)
            trailer += char(number >> shift);
    }
    return file + table + trailer;
}

QByteArray inUtf32(const QString &text, bool isLittle, bool hasMark)
{
    QStringEncoder encode(isLittle ? QStringConverter::Utf32LE : QStringConverter::Utf32BE,
                          hasMark ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default);
    return encode(text);
}

QByteArray card(const QByteArray &lines)
{
    return "BEGIN:VCARD\nN:Doe;Jo\n" + lines + "\nEND:VCARD\n";
}

} // namespace

TEST(EndiciaList, ReadsBothFormsAlike)
{
    const auto expected = ElementsAre(
        u"Eleanor Whitfield||418 Montford Ave|Apt 3B|Asheville|NC|28801|US|endicia|828-555-0117|eleanor@example.com"_s,
        u"Theodore Brandt|Brandt & Sons Numismatics|2210 Prospect St||Topeka|KS|66614|US|endicia||"_s,
        u"Rosalind Okafor||77 Lakeshore Dr, Duluth, MN 55802|||||US|endicia|218-555-0164|"_s,
        u"José Ibáñez||Calle de Alcalá 44|Oficina 4|Madrid||28014|Spain|endicia||jose@example.com"_s,
        u"Margaret Lindqvist||905 King St W||Toronto|ON|M5V 1P5|Canada|endicia|416-555-0139|"_s,
        u"|Cascade Coin Exchange|340 Alder St|Suite 12|Portland|OR|97204|US|endicia||"_s, // no name, but a suite
        u"Hiroshi Tanaka 田中||1-2-3 Ginza||Tokyo||104-0061|Japan|endicia||"_s);
    EXPECT_THAT(endicia(sample("importedAddresses.plist")), expected);
    EXPECT_THAT(endicia(sample("importedAddresses-binary.plist")), expected);
}

TEST(EndiciaList, ReadsTextsInEveryEncodingAndNoOtherValues)
{
    const auto name = [](const QByteArray &file) { return endicia(file).value(0).section(u'|', 0, 0); };
    const QByteArray file = named("<string>Jörg 😀</string>");
    QStringEncoder utf16(QStringConverter::Utf16, QStringConverter::Flag::WriteBom);
    EXPECT_EQ(name("\xEF\xBB\xBF" + file), u"Jörg 😀"_s);
    EXPECT_EQ(name(utf16(QString::fromUtf8(file).replace(u"UTF-8"_s, u"UTF-16"_s))), u"Jörg 😀"_s);
    for (const auto encoding :
         {QStringConverter::Utf16LE, QStringConverter::Utf16BE, QStringConverter::Utf32LE, QStringConverter::Utf32BE}) {
        QStringEncoder encode(encoding);
        EXPECT_EQ(name(encode(QString::fromUtf8(file).section(u"?>"_s, 1))), u"Jörg 😀"_s) << encoding;
    }
    EXPECT_EQ(name(named("<string>J\xF6rg</string>").replace("UTF-8", "ISO-8859-1")), u"Jörg"_s);
    EXPECT_EQ(name(binary({"\xA1\x01", "\xD1\x02\x03", "\x5F\x10\x10SFAddressNameKey",
                           QByteArray("\x5F\x13\0\0\0\0\0\0\0\2Jo", 12)})), // a length of eight bytes
              u"Jo"_s);
    EXPECT_EQ(name(named("<string>A &amp; B<![CDATA[ <C>]]>\n\t</string>")), u"A & B <C>\n\t"_s);
    for (const char *value : {"<integer>5</integer>", "<true/>", "<data>QUJD</data>", "<array><dict/></array>",
                              "<dict><key>SFAddressNameKey</key><string>x</string></dict>"})
        EXPECT_THAT(endicia(named(value)), ElementsAre()) << value;
}

TEST(EndiciaList, RejectsFilesThatAreNotAddressLists)
{
    const QByteArray xml = sample("importedAddresses.plist"), bytes = sample("importedAddresses-binary.plist");
    const QByteArray deep = QByteArray("<array>").repeated(200000);
    for (const QByteArray &other :
         {QByteArray(), QByteArray("\x01\x02 nothing"), QByteArray("<html><array/></html>"), plist(""),
          plist("<dict><key>a</key><array/></dict>"), plist("<array><string>a</string></array>"), plist(deep),
          binary({"\xD0"}), binary({"\xA1\x01", "\x51x"}), binary({QByteArray("\xA1\x00", 2)}) /* holds itself */})
        EXPECT_THAT(endicia(other), ElementsAre(u"That file isn't an Endicia address plist."_s))
            << other.left(200).toStdString();
    // A hundred references to a dictionary that references the same text thousands of times.
    const QByteArray bomb = binary({"\xAF\x10\x64" + QByteArray(100, '\2'), "\x5F\x10\x64" + QByteArray(100, 'x'),
                                    QByteArray("\xDF\x11\x40\x00", 4) + QByteArray(0x8000, '\1')});
    for (const QByteArray &damaged :
         {xml.first(xml.size() / 2), xml.chopped(10), named(deep), bytes.first(bytes.size() / 2),
          QByteArray("bplist00"), binary({"\xA1\x07"}), binary({"\xA0"}, quint64(1) << 60), bomb,
          binary({QByteArray("\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF")}),
          binary({"\xA1\x01", "\xD1\x02\x02", "\x5F\x11\x7F\xFF"})})
        EXPECT_THAT(endicia(damaged),
                    ElementsAre(u"The property list is damaged or incomplete, so nothing was imported."
                                " Copy or export it again."_s))
            << damaged.left(200).toStdString();
    EXPECT_THAT(endicia(plist("<array/>")), ElementsAre());
    EXPECT_TRUE(endicia(named("<string>J\xF6rg</string>")).value(0).startsWith(u"The property list is damaged"_s))
        << "not the encoding that it declares";
}

TEST(VCard, ReadsTheThreeVersions)
{
    EXPECT_THAT(vCard(sample("contacts-2.1.vcf")),
                ElementsAre(u"Eleanor Whitfield||418 Montford Ave|Apt 3B|Asheville|NC|28801|US|home|828-555-0117|"
                            "eleanor@example.com"_s,
                            u"Jörg Müller|Münzhandlung Müller|Leopoldstraße 12|Hinterhaus|München||80802|DE|work|"
                            "+49 89 5550 1234|"_s));
    const QString brandt = u"Theodore Brandt|Brandt & Sons Numismatics|%1|785-555-0102|theo@example.com"_s;
    EXPECT_THAT(vCard(sample("contacts-3.0.vcf")),
                ElementsAre(brandt.arg(u"2210 Prospect St|Suite 4, rear|Topeka|KS|66614|US|work"_s),
                            brandt.arg(u"15 Juniper Ct||Lawrence|KS|66044|US|home"_s),
                            brandt.arg(u"Calle Mayor 8||Toledo||45001|ES|other"_s),
                            brandt.arg(u"3 Mill Ln||Bath||BA1 2PQ|GB|Summer house"_s),
                            u"Cascade Coin Exchange|Cascade Coin Exchange|PO Box 1187||Portland|OR|97207|US|work||"_s));
    EXPECT_THAT(vCard(sample("contacts-4.0.vcf")),
                ElementsAre(u"Hiroshi Tanaka||1-2-3 Ginza||Chuo-ku|Tokyo|104-0061|JP|home|+81-3-5550-1234|"
                            "hiroshi@example.com"_s,
                            u"Margaret Lindqvist||905 King St W||Toronto|ON|M5V 1P5|CA|work||"_s));
}

TEST(VCard, ReadsAnAddressInEveryNotation)
{
    const QByteArray adr = "ADR;HOME:;;1 Elm St;Salem;OR;97301;US";
    const QString text = QString::fromUtf8(card(adr));
    const QByteArray littleEndian = QStringEncoder(QStringConverter::Utf16LE)(text);
    const QByteArray bigEndian = QStringEncoder(QStringConverter::Utf16BE)(text);
    for (const QByteArray &file :
         {card(adr).replace("\n", "\r\n"),
          card(adr).replace("\n", "\r"),
          "\xEF\xBB\xBF" + card(adr),
          littleEndian,
          bigEndian,
          "\xFF\xFE" + littleEndian,
          "\xFE\xFF" + bigEndian,
          inUtf32(text, true, false),
          inUtf32(text, false, false),
          inUtf32(text, true, true),
          inUtf32(text, false, true),
          QByteArray(littleEndian).replace('B', 'b'),
          "\r\n\xEF\xBB\xBF" + card(adr),
          card("\n\nadr;type=\"home\":;;1 Elm St;Salem;OR;97301;US\n"), // lower case, blank lines
          card("ADR;TYPE=dom,HOME,pref:;;1 Elm St;Salem;OR;97301;US;more"),
          card("ADR: ;;;\\n;;;\n" + adr),
          card("ADR\n ;HOME\n\t:;;1 Elm St;Salem;OR;97301;US"), // line folds before the colon
          card("ADR;HOME;QUOTED-PRINTABLE:;;1 Elm=\n St;Sa=6C=\nem;OR;97301;US"),
          card("NOTE;QUOTED-PRINTABLE:a=\nEND:VCARD=\nb\n" + adr), // the END line is part of the note
          card("ADR;X=\"a:b;c\";HOME:;;1 Elm St;Salem;OR;97301;US"),
          card("ADR;HOME;X=\"a:;;1 Elm St;Salem;OR;97301;US"),
          card("ADR;HOME;QUOTED-PRINTABLE:;;1 Elm= \n St;Salem= \t\n;OR;97301;US"), // blanks after a soft break
          card("ADR;HOME;QUOTED-PRINTABLE:;;1 Elm=\n St;Salem=\n;OR;97301;US").replace("\n", "\r\r\n"),
          card("ADR;HOME;LABEL=\"Jo: 1\n  Elm; St\";X=\"a\n b\":;;1 Elm\n  St;Salem;OR;97301;US"), // a quoted fold
          card("AGENT:\nBEGIN:VCARD\nN:S\nAGENT:\nBEGIN:VCARD\nEND:VCARD\nADR:;;9\nEND:VCARD\n" + adr),
          "BEGIN:VCARD\nN:Lost\nADR:;;9\n" + card(adr)}) // a card without its END
        EXPECT_THAT(vCard(file), ElementsAre(u"Jo Doe||1 Elm St||Salem|OR|97301|US|home||"_s)) << file.toStdString();
}

TEST(VCard, UnderstandsEscapesCharsetsAndCountries)
{
    const std::pair<QByteArray, QString> rows[] = {
        {"ADR;CHARSET=ISO-8859-1:;;Calle \xD1;;;;ES", u"Calle Ñ|||||ES|"_s},
        {"ADR:;;Calle \xD1;;;;ES", u"Calle Ñ|||||ES|"_s}, // Latin-1 without a declaration
        {"ADR;CHARSET=windows-1252:;;\x80 St;;;;ES", u"€ St|||||ES|"_s},
        {"ADR;CHARSET=x-none:;;Calle Ñ;;;;ES", u"Calle Ñ|||||ES|"_s},
        {"ADR:;;M\xC3\n \xBCnchner St;;;;DE", u"Münchner St|||||DE|"_s}, // a line fold inside a character
        {"ADR;QUOTED-PRINTABLE:;;=ZZ=4;Salem;;;US", u"=ZZ=4||Salem|||US|"_s},
        {"ADR;QUOTED-PRINTABLE:;;# = 5 =+F =3d=3D;Salem;;;US", u"# = 5 =+F ==||Salem|||US|"_s},
        {"ADR:;;1\\, Elm\\; St\\nUp\\N2 \\x;Salem;OR;97301;US", u"1, Elm; St|Up 2 \\x|Salem|OR|97301|US|"_s},
        {"ADR:;;1 Elm St", u"1 Elm St||||||"_s},
        {"ADR:Box 7;Suite 2;1 Elm St;;;;us", u"1 Elm St|Suite 2 Box 7||||US|"_s},
        {"A.X-ABADR:nl\na.ADR:;;Dam 1;;;;Holland", u"Dam 1|||||NL|"_s}, // the group's country comes first
        {"ADR:;;1 St;;;;Atlantis", u"1 St|||||ATLANTIS|"_s},
    };
    for (const auto &[lines, expected] : rows)
        EXPECT_THAT(vCard(card(lines)), ElementsAre(u"Jo Doe||"_s + expected + u"||"_s)) << lines.toStdString();
}

TEST(VCard, RejectsOtherFilesAndTruncatedFiles)
{
    const QByteArray whole = card("ADR:;;1 Elm St;Salem;OR;97301;US");
    for (const QByteArray &other : {QByteArray(), QByteArray("\x00\xFF:;=\r", 6), sample("importedAddresses.plist")})
        EXPECT_THAT(vCard(other), ElementsAre(u"That file isn't a vCard file."_s));
    for (const QByteArray &cut : {whole.chopped(8), QByteArray("BEGIN:VCARD\nADR;QUOTED-PRINTABLE:;;1=")})
        EXPECT_THAT(vCard(cut), ElementsAre(u"The vCard file ends in the middle of a card, so nothing was "
                                            "imported. Export it again."_s));
    EXPECT_THAT(vCard(card("TEL:5")), ElementsAre()); // a person without an address
    EXPECT_THAT(vCard(card("TEL:5\nTEL:6\nEMAIL:a@b\nEMAIL:c@d\nADR:;;1 Elm St")),
                ElementsAre(u"Jo Doe||1 Elm St|||||||5|a@b"_s)); // the first of each
}

TEST(VCard, NamesTheCardsWithoutAnEndAndReadsJoinedFiles)
{
    const QByteArray whole = card("ADR:;;1 Elm St");
    const struct {
        QByteArray file;
        QStringList people, skipped;
    } rows[] = {
        {"BEGIN:VCARD\nN:Lost;Ana\nADR:;;9\nBEGIN:VCARD\nADR:;;8\n" + whole,
         {u"Jo Doe, 1 Elm St"_s},
         {u"Ana Lost"_s, u"a card without a name"_s}},
        {whole + "BEGIN:VCARD\nN:Lost;Ana\nADR:;;9;Sal", {u"Jo Doe, 1 Elm St"_s}, {u"Ana Lost"_s}}, // cut off
        {whole.trimmed() + card("N:Poe;Bo\nADR:;;2 Oak St"), {u"Jo Doe, 1 Elm St"_s, u"Bo Poe, 2 Oak St"_s}, {}},
        {whole.trimmed() + "\xEF\xBB\xBF" + whole, {u"Jo Doe, 1 Elm St"_s, u"Jo Doe, 1 Elm St"_s}, {}},
        {whole + "\xEF\xBB\xBF" + whole, {u"Jo Doe, 1 Elm St"_s, u"Jo Doe, 1 Elm St"_s}, {}},
        {"BEGIN:VCARD\nFN:\nORG:Harbor Books\nADR:;;3 Pier\n" + whole, {u"Jo Doe, 1 Elm St"_s}, {u"Harbor Books"_s}},
    };
    for (const auto &row : rows) {
        ImportProgress progress;
        const ReadAddresses read = VCard::read(row.file, progress);
        QStringList people;
        for (const PostalContact &contact : read.contacts)
            people += contact.name + u", "_s + contact.street1;
        EXPECT_EQ(people, row.people) << row.file.toStdString();
        EXPECT_EQ(read.skipped, row.skipped) << row.file.toStdString();
    }
}

/// Reading takes time in proportion to the size: in proportion to its square, this file takes several minutes.
TEST(VCard, ReadsALargeFileWithCarriageReturns)
{
    const QByteArray note = "NOTE:" + QByteArray(1000, 'x') + '\r';
    const QByteArray file = card("ADR:;;1 Elm St").replace('\n', '\r');
    EXPECT_EQ(vCard(note.repeated(100'000) + file).size(), 1);
}

TEST(ImportProgress, ReportsProgressAndStopsCanceledOrOversizedImports)
{
    const QByteArray cards = card("ADR:;;1 Elm St;Salem;OR;97301;US").repeated(3000);
    QList<qsizetype> reports;
    const auto until = [&](qsizetype most) {
        const CancelToken cancel;
        return Progress(cancel, [&reports, cancel, most](qint64 addresses, qint64) {
            reports.append(addresses);
            if (addresses >= most)
                cancel.cancel();
        });
    };
    EXPECT_EQ(outcome(readCards, cards, until(9999)).size(), 3000);
    EXPECT_GT(reports.size(), 10);
    EXPECT_TRUE(std::ranges::is_sorted(reports));
    EXPECT_THAT(outcome(readCards, cards, until(1000)), ElementsAre(u"The import was canceled."_s));
    EXPECT_LT(reports.last(), 1200);
    EXPECT_NO_THROW(ImportProgress().reached(ImportProgress::mostAddresses));
    EXPECT_THROW(ImportProgress().reached(ImportProgress::mostAddresses + 1), AppError);
}

TEST(ImportFiles, AreFoundBesideTheDataFolder)
{
    const QTemporaryDir support;
    const QDir data(support.filePath(u"Parcelory"_s));
    const QString path = support.filePath(u"Endicia/importedAddresses.plist"_s);
    EXPECT_FALSE(LocalAddressStore::endiciaPlistURL(data));
    EXPECT_THROW(LocalAddressStore::importEndicia(path), AppError);
    try {
        LocalAddressStore::importVCard(u"/dev/null"_s);
        ADD_FAILURE() << "a device may never end";
    } catch (const AppError &error) {
        EXPECT_EQ(error.description(), u"This is not a file."_s);
    }
    ASSERT_TRUE(QDir().mkpath(path)); // a folder of that name
    EXPECT_FALSE(LocalAddressStore::endiciaPlistURL(data));
    ASSERT_TRUE(QDir().rmdir(path));
    ASSERT_TRUE(QFile::copy(samplePath("importedAddresses.plist"), path));
    EXPECT_EQ(LocalAddressStore::endiciaPlistURL(data), path);
    EXPECT_EQ(LocalAddressStore::importEndicia(path).size(), 7);
}

} // namespace parcelory::test
