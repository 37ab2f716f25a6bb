#include "addressbook/EndiciaList.h"
#include "addressbook/ImportProgress.h"
#include "addressbook/LocalAddressStore.h"
#include "addressbook/VCard.h"
#include "core/PostalContact.h"
#include "core/Progress.h"
#include "support/Table.h"

#include <QStringEncoder>

namespace parcelory::test {
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
    return contentsOf(samplePath(name));
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

TEST(ImportFiles, AreReadInEveryForm)
{
    for (const Json &row : table(u"vcards"_s, "samples")) {
        for (const Json &name : row[0]) {
            const QByteArray file = sample(name.get<std::string>().c_str());
            EXPECT_EQ(text(name).endsWith(u".vcf"_s) ? vCard(file) : endicia(file), texts(row[1])) << name;
        }
    }
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

TEST(VCard, ReadsAnAddressInEveryNotation)
{
    const QByteArray adr = "ADR;HOME:;;1 Elm St;Salem;OR;97301;US";
    const QString text = QString::fromUtf8(card(adr));
    const QByteArray littleEndian = QStringEncoder(QStringConverter::Utf16LE)(text);
    const QByteArray bigEndian = QStringEncoder(QStringConverter::Utf16BE)(text);
    QList<QByteArray> files = {
        card(adr).replace("\n", "\r\n"),
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
        card("ADR;HOME;QUOTED-PRINTABLE:;;1 Elm=\n St;Salem=\n;OR;97301;US").replace("\n", "\r\r\n"),
        "BEGIN:VCARD\nN:Lost\nADR:;;9\n" + card(adr)}; // a card without its END
    for (const Json &properties : table(u"vcards"_s, "notations"))
        files += card(bytes(properties));
    for (const QByteArray &file : files)
        EXPECT_THAT(vCard(file), ElementsAre(u"Jo Doe||1 Elm St||Salem|OR|97301|US|home||"_s)) << file.toStdString();
}

TEST(VCard, UnderstandsEscapesCharsetsAndCountries)
{
    for (const Json &row : table(u"vcards"_s, "properties"))
        EXPECT_THAT(vCard(card(bytes(row[0]))), ElementsAre(u"Jo Doe||"_s + text(row[1]) + u"||"_s)) << row;
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
    const QByteArray whole = card("ADR:;;1 Elm St").trimmed();
    for (const Json &row : table(u"vcards"_s, "joined files")) {
        ImportProgress progress;
        const ReadAddresses read = VCard::read(bytes(row[0]).replace("WHOLE", whole), progress);
        const auto line = [](const PostalContact &contact) { return contact.name + u", "_s + contact.street1; };
        EXPECT_EQ(each(read.contacts, line), texts(row[1])) << row;
        EXPECT_EQ(read.skipped, texts(row[2])) << row;
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
    EXPECT_EQ(failureOf([] { LocalAddressStore::importVCard(u"/dev/null"_s); }), u"This is not a file."_s)
        << "a device may never end";
    ASSERT_TRUE(QDir().mkpath(path)); // a folder of that name
    EXPECT_FALSE(LocalAddressStore::endiciaPlistURL(data));
    ASSERT_TRUE(QDir().rmdir(path));
    ASSERT_TRUE(QFile::copy(samplePath("importedAddresses.plist"), path));
    EXPECT_EQ(LocalAddressStore::endiciaPlistURL(data), path);
    EXPECT_EQ(LocalAddressStore::importEndicia(path).size(), 7);
}

} // namespace parcelory::test
