#include "compose/LabelReadBack.h"
#include "core/CountryCode.h"
#include "devices/zpl/ZplContents.h"
#include "devices/zpl/ZplReader.h"
#include "practice/carrier/PracticeLabel.h"
#include "support/Test.h"

#include <map>
#include <set>

namespace parcelory::test {

namespace {

struct Parcel {
    ShippoAddress to;
    ShippoAddress printed; ///< the recipient as the carrier prints the name and the place
};

struct Person {
    QString name, printed; ///< as typed, as carriers print it; equal if empty
    QString company;
};

const Person people[] = {
    {u"Eleanor Whitfield"_s, {}, {}},
    {u"Theodore Eng"_s, {}, u"Eng Numismatics LLC"_s},
    {u"J. P. Caldwell Jr."_s, u"J P CALDWELL JR"_s, {}},
    {u"Siobhán O'Brien-Maguire"_s, u"SIOBHAN OBRIEN MAGUIRE"_s, {}},
    {u"Jürgen Müller"_s, u"JUERGEN MUELLER"_s, u"Müller & Söhne GmbH"_s},
    {u"Søren Ångström"_s, u"SOREN ANGSTROM"_s, {}},
    {u"Łukasz Wójcik"_s, u"LUKASZ WOJCIK"_s, {}},
    {u"Юрий Хрущёв"_s, u"YURII KHRUSHCHEV"_s, {}},
    {u"Наталия Шевченко"_s, u"NATALIYA SHEVCHENKO"_s, u"Kyiv Coin Club"_s},
    {u"Γιώργος Παπαδόπουλος"_s, u"GIORGOS PAPADOPOULOS"_s, {}},
    {u"山田 太郎"_s, u"YAMADA TARO"_s, {}},
    {u"Maximiliana Wilhelmina Featherstonehaugh-Cholmondeley"_s, u"MAXIMILIANA WILHELMINA FEATHERSTONEH"_s, {}},
    {u"Dr. Ana Park"_s, u"ANA PARK"_s, u"Park Street Coins"_s},
    {u"Lee Sample"_s, {}, {}},
    {u"Christopher Robin Longfellow III"_s, u"CHRISTOPHER LONGFELLOW III"_s, {}},
};

struct Place {
    QString street1, street2, city, state, zip, country;
};

const Place places[] = {
    {u"418 Montford Ave"_s, u"Apt 3B"_s, u"Asheville"_s, u"NC"_s, u"28801-6168"_s, {}},
    {u"1180 Harbor View Rd"_s, u"Suite 300"_s, u"Salem"_s, u"OR"_s, u"97304"_s, {}},
    {u"PO Box 239"_s, {}, u"Elko"_s, u"NV"_s, u"89803"_s, {}},
    {u"PO Box 14500 #12"_s, {}, u"Mount Pleasant"_s, u"South Carolina"_s, u"29464"_s, {}},
    {u"14500 5th Ave N Unit 12"_s, {}, u"Saint Petersburg"_s, u"FL"_s, u"33701"_s, {}},
    {u"N6W23001 Bluemound Rd"_s, u"# 7"_s, u"Waukesha"_s, u"WI"_s, u"53188"_s, {}},
    {u"88 Park Street"_s, u"2nd Floor"_s, u"Keene"_s, u"NH"_s, u"03431"_s, {}},
    {u"PSC 1234 Box 5678"_s, {}, u"APO"_s, u"AE"_s, u"09128"_s, {}},
    {u"Unit 2050 Box 4190"_s, {}, u"FPO"_s, u"AP"_s, u"96691-2050"_s, {}},
    {u"RR 2 Box 152"_s, {}, u"Truth or Consequences"_s, u"NM"_s, u"87901"_s, {}},
    {u"1600 Old Country Road North Building of Merchants"_s, u"Apt 22C"_s, u"Westbury"_s, u"NY"_s, u"11590"_s, {}},
    {u"12 1/2 Calle Luna"_s, u"Apt B"_s, u"San Juan"_s, u"PR"_s, u"00901"_s, {}},
    {u"14 Chandos Place"_s, u"Flat 3"_s, u"London"_s, {}, u"WC2N 4HS"_s, u"GB"_s},
    {u"1-9-1 Marunouchi"_s, {}, u"Tokyo"_s, {}, u"100-0005"_s, u"JP"_s},
    {u"Via Roma 22"_s, {}, u"Milano"_s, u"MI"_s, u"20121"_s, u"IT"_s},
    {u"410 Rue Saint-Paul"_s, u"Apt 5"_s, u"Montréal"_s, u"QC"_s, u"H2Y 1H7"_s, u"CA"_s},
    {u"Hauptstraße 7"_s, {}, u"Köln"_s, {}, u"50667"_s, u"DE"_s},
    {u"Nathan Road 120"_s, u"Room 1204"_s, u"Hong Kong"_s, {}, {}, u"HK"_s},
};

/// All people at all places: 270 parcels; with each carrier and with a second set of numbers 1080 labels.
QList<Parcel> parcels(int set)
{
    QList<Parcel> all;
    int number = 0;
    for (const Place &place : places) {
        for (const Person &person : people) {
            ++number;
            ShippoAddress to{.name = person.name,
                             .company = person.company,
                             .street1 = place.street1,
                             .street2 = place.street2,
                             .city = place.city,
                             .state = place.state,
                             .zip = place.zip,
                             .country = place.country};
            // The second set has other house numbers.
            if (set == 1)
                to.street1.replace(u'1', QChar(u'2' + number % 8));
            ShippoAddress printed = to;
            printed.country = place.country.isEmpty() ? QString() : CountryCode::displayName(place.country);
            printed.name = person.printed.isEmpty() ? person.name : person.printed;
            if (place.state.size() > 2)
                printed.state = u"SC"_s;
            all.append({to, printed});
        }
    }
    return all;
}

LabelContent contentOf(const Parcel &parcel, bool isUsps, int number)
{
    return {.provider = isUsps ? u"USPS"_s : u"FedEx"_s,
            .service = isUsps ? u"Priority Mail"_s : u"2Day"_s,
            .tracking = isUsps ? u"92108901755477%1"_s.arg(number, 12, 10, QChar(u'0'))
                               : u"7946%1"_s.arg(number, 8, 10, QChar(u'0')),
            .reference = u"SAMPLE 48213"_s,
            .shipDate = u"2026-11-23"_s,
            .ounces = 17.3,
            .needsSignature = number % 3 == 0,
            .from = {.name = u"Shipping Desk"_s,
                     .company = u"Corvallon"_s,
                     .street1 = u"1180 Harbor View Rd"_s,
                     .street2 = u"Suite 300"_s,
                     .city = u"Salem"_s,
                     .state = u"OR"_s,
                     .zip = u"97301"_s},
            .to = parcel.printed};
}

PrintedParcel expected(const Parcel &parcel, const LabelContent &content)
{
    return {.to = parcel.to,
            .senderZip = u"97301"_s,
            .tracking = content.tracking,
            .isLive = false,
            .ownTexts = {content.reference}};
}

LabelVerdict verdictOf(const QByteArray &zpl, const PrintedParcel &parcel)
{
    return readBack(contentsOf(readZpl(zpl)), parcel);
}

/// The items with this match, for messages and comparisons.
std::string itemsOf(const LabelVerdict &verdict, LabelMatch match)
{
    static const char *names[] = {"name",    "house number",  "unit",          "city",       "state", "ZIP",
                                  "country", "tracking text", "tracking code", "sender ZIP", "mark"};
    std::string items;
    for (const LabelFinding &finding : verdict.findings) {
        if (finding.match == match)
            items += std::string(items.empty() ? "" : ", ") + names[int(finding.item)] + " (" +
                     finding.onParcel.toStdString() + " / " + finding.onLabel.toStdString() + ")";
    }
    return items;
}

QString withOtherDigit(QString text)
{
    for (qsizetype at = text.size() - 1; at >= 0; --at) {
        if (text[at].isDigit()) {
            text[at] = text[at] == u'9' ? u'1' : QChar(text[at].unicode() + 1);
            return text;
        }
    }
    return text;
}

struct Fault {
    const char *name;
    LabelItem item;
    std::function<bool(LabelContent &)> seed; ///< false if the parcel cannot have the fault
};

const Fault faults[] = {{"the unit is dropped", LabelItem::unit,
                         [](LabelContent &content) {
                             const bool has = !content.to.street2.isEmpty();
                             content.to.street2.clear();
                             return has;
                         }},
                        {"the unit is another", LabelItem::unit,
                         [](LabelContent &content) {
                             const QString before = content.to.street2;
                             content.to.street2 = withOtherDigit(before);
                             return content.to.street2 != before;
                         }},
                        {"the house number is another", LabelItem::houseNumber,
                         [](LabelContent &content) {
                             // The first number, which in a street with an ordinal is the house's.
                             QStringList words = content.to.street1.split(u' ');
                             for (QString &word : words) {
                                 const QString other = withOtherDigit(word);
                                 if (other != word && content.to.street1.indexOf(u"Unit 20"_s) < 0) {
                                     word = other;
                                     content.to.street1 = words.join(u' ');
                                     return true;
                                 }
                             }
                             return false;
                         }},
                        {"a ZIP digit is another", LabelItem::zip,
                         [](LabelContent &content) {
                             const QString before = content.to.zip;
                             content.to.zip = content.to.country.isEmpty()
                                                  ? withOtherDigit(before.left(5)) + before.mid(5)
                                                  : withOtherDigit(before);
                             return content.to.zip != before;
                         }},
                        {"the name is another's", LabelItem::name,
                         [](LabelContent &content) {
                             content.to.name = u"Gustav Blumenthal"_s;
                             return true;
                         }},
                        {"the first name is another's", LabelItem::name,
                         [](LabelContent &content) {
                             QStringList words = content.to.name.split(u' ');
                             words[0] = u"Gudrun"_s;
                             content.to.name = words.join(u' ');
                             return !content.to.name.startsWith(u"Dr"_s);
                         }},
                        {"tracking number of another label", LabelItem::trackingText,
                         [](LabelContent &content) {
                             content.tracking = withOtherDigit(content.tracking);
                             return true;
                         }},
                        {"tracking number of another bar code", LabelItem::trackingCode, [](LabelContent &content) {
                             content.tracking = withOtherDigit(content.tracking);
                             return true;
                         }}};

} // namespace

TEST(LabelReadBack, FindsEverySeededFaultAndNoFaultInGoodLabels)
{
    int labels = 0, seeded = 0;
    std::map<std::string, int> caught;
    for (const int set : {0, 1}) {
        for (const Parcel &parcel : parcels(set)) {
            for (const bool isUsps : {true, false}) {
                const LabelContent good = contentOf(parcel, isUsps, ++labels);
                const PrintedParcel wanted = expected(parcel, good);
                const QByteArray zpl = zplLabel(good);
                const LabelVerdict verdict = verdictOf(zpl, wanted);
                ASSERT_EQ(itemsOf(verdict, LabelMatch::different), "") << zpl.toStdString();
                const bool isHan = parcel.to.name.contains(u'山');
                ASSERT_EQ(itemsOf(verdict, LabelMatch::unchecked).empty(), !isHan) << zpl.toStdString();
                ASSERT_EQ(itemsOf(verdict, LabelMatch::notFound), "") << zpl.toStdString();

                PrintedParcel live = wanted;
                live.isLive = true;
                ASSERT_EQ(verdictOf(zpl, live).find(LabelItem::mark)->match, LabelMatch::different);
                for (const Fault &fault : faults) {
                    LabelContent bad = good;
                    if (!fault.seed(bad) || (fault.item == LabelItem::name && isHan))
                        continue;
                    ++seeded;
                    ++caught[fault.name];
                    const QByteArray wrong = zplLabel(bad);
                    const LabelVerdict found = verdictOf(wrong, wanted);
                    const LabelFinding *finding = found.find(fault.item);
                    ASSERT_TRUE(finding && finding->match == LabelMatch::different && !found.faults().isEmpty())
                        << fault.name << '\n'
                        << wrong.toStdString() << "\nnot found: " << itemsOf(found, LabelMatch::notFound)
                        << "\ndifferent: " << itemsOf(found, LabelMatch::different);
                }
            }
        }
    }
    EXPECT_GE(labels, 800);
    EXPECT_GE(seeded, 5000);
    EXPECT_EQ(caught.size(), std::size(faults)) << "every fault was tried";
}

/// Labels of other layouts, each beside what a reader finds: split lines, formats, turned text, pictures.
TEST(LabelReadBack, ReadsOtherLayouts)
{
    const PrintedParcel parcel{.to = {.name = u"Ruth Abernathy"_s,
                                      .company = {},
                                      .street1 = u"88 Quarry Ln"_s,
                                      .street2 = u"Apt 4"_s,
                                      .city = u"Bend"_s,
                                      .state = u"OR"_s,
                                      .zip = u"97702"_s},
                               .senderZip = u"97301"_s,
                               .tracking = u"794600000001"_s,
                               .isLive = true};
    struct Row {
        const char *file;
        std::string different, notFound, unchecked;
    };
    const Row table[] = {
        {"split-fields.zpl", "", "", ""},
        {"typeset-turned.zpl", "", "", ""},
        {"stored-format.zpl", "", "", ""},
        {"unit-before-street.zpl", "", "", ""},
        {"other-parcel.zpl",
         "name (Ruth Abernathy / OTTO BECKER), house number (88 / 5000), unit (APT 4 / ), city (Bend / OMAHA), "
         "state (OR / NE), ZIP (97702 / 68105), tracking text (794600000001 / 7946 0000 0077), "
         "tracking code (794600000001 / 9632001900000000000000794600000077)",
         "", ""},
        {"void.zpl", "mark (live / *** VOID - DO NOT MAIL ***)", "", ""},
        {"text-and-code-differ.zpl", "tracking code (794600000001 / 9632001900000000000000794600000011)", "", ""},
        {"picture.zpl", "", "",
         "name (Ruth Abernathy / ), house number (88 / ), unit (APT 4 / ), city (Bend / ), state (OR / ), "
         "ZIP (97702 / ), tracking text (794600000001 / ), tracking code (794600000001 / ), "
         "sender ZIP (97301 / ), mark (live / )"},
        {"address-as-picture.zpl", "",
         "name (Ruth Abernathy / ), house number (88 / ), unit (APT 4 / ), city (Bend / ), state (OR / ), "
         "ZIP (97702 / ), sender ZIP (97301 / )",
         ""}};
    for (const Row &row : table) {
        QFile file(QStringLiteral(PARCELORY_TEST_DATA "/labels/") + QString::fromLatin1(row.file));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << row.file;
        const LabelVerdict verdict = verdictOf(file.readAll(), parcel);
        EXPECT_EQ(itemsOf(verdict, LabelMatch::different), row.different) << row.file;
        EXPECT_EQ(itemsOf(verdict, LabelMatch::notFound), row.notFound) << row.file;
        EXPECT_EQ(itemsOf(verdict, LabelMatch::unchecked), row.unchecked) << row.file;
    }
}

} // namespace parcelory::test
