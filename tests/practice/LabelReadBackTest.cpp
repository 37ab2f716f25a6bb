#include "compose/LabelReadBack.h"
#include "core/CountryCode.h"
#include "devices/zpl/ZplContents.h"
#include "devices/zpl/ZplReader.h"
#include "practice/carrier/PracticeLabel.h"
#include "support/SampleParcel.h"
#include "support/Table.h"

#include <map>
#include <set>

namespace parcelory::test {
namespace {

struct Parcel {
    ShippoAddress to;
    ShippoAddress printed; ///< the recipient as the carrier prints the name and the place
};

/// All people at all places: 270 parcels; with each carrier and with a second set of numbers 1080 labels.
QList<Parcel> parcels(int set)
{
    QList<Parcel> all;
    int number = 0;
    for (const Json &place : table(u"parcels"_s, "places")) {
        for (const Json &person : table(u"parcels"_s, "people")) {
            ++number;
            ShippoAddress to{.name = text(person[0]),
                             .company = text(person[2]),
                             .street1 = text(place[0]),
                             .street2 = text(place[1]),
                             .city = text(place[2]),
                             .state = text(place[3]),
                             .zip = text(place[4]),
                             .country = text(place[5])};
            // The second set has other house numbers.
            if (set == 1)
                to.street1.replace(u'1', QChar(u'2' + number % 8));
            ShippoAddress printed = to;
            printed.country = to.country.isEmpty() ? QString() : CountryCode::displayName(to.country);
            printed.name = person[1].is_null() ? to.name : text(person[1]); // as carriers print it
            if (to.state.size() > 2)
                printed.state = u"SC"_s;
            all.append({to, printed});
        }
    }
    return all;
}

const ShippoAddress sender = changed(ShippoAddress(), table(u"parcels"_s, "sender")[0]);

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
            .from = sender,
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

/// The first number, which in a street with an ordinal is the house's.
QString withOtherHouse(const QString &street)
{
    QStringList words = street.split(u' ');
    const auto number = std::ranges::find_if(words, [](const QString &word) { return withOtherDigit(word) != word; });
    if (number != words.end() && !street.contains(u"Unit 20"_s))
        *number = withOtherDigit(*number);
    return words.join(u' ');
}

struct Fault {
    const char *name;
    LabelItem item;
    void (*seed)(ShippoAddress &to, QString &tracking); ///< changes nothing if the parcel cannot have the fault
};

const auto otherTracking = [](ShippoAddress &, QString &tracking) { tracking = withOtherDigit(tracking); };
const Fault faults[] = {
    {"the unit is dropped", LabelItem::unit, [](auto &to, auto &) { to.street2.clear(); }},
    {"the unit is another", LabelItem::unit, [](auto &to, auto &) { to.street2 = withOtherDigit(to.street2); }},
    {"the house number is another", LabelItem::houseNumber,
     [](auto &to, auto &) { to.street1 = withOtherHouse(to.street1); }},
    {"a ZIP digit is another", LabelItem::zip,
     [](auto &to, auto &) {
         const qsizetype checked = to.country.isEmpty() ? 5 : to.zip.size();
         to.zip = withOtherDigit(to.zip.left(checked)) + to.zip.mid(checked);
     }},
    {"the name is another's", LabelItem::name, [](auto &to, auto &) { to.name = u"Gustav Blumenthal"_s; }},
    {"the first name is another's", LabelItem::name,
     [](auto &to, auto &) { to.name = u"Gudrun"_s + to.name.mid(to.name.indexOf(u' ')); }},
    {"tracking number of another label", LabelItem::trackingText, otherTracking},
    {"tracking number of another bar code", LabelItem::trackingCode, otherTracking}};

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
                const LabelVerdict ofLive = verdictOf(zpl, live);
                ASSERT_EQ(ofLive.find(LabelItem::mark)->match, LabelMatch::different);
                ASSERT_FALSE(ofLive.find(LabelItem::mark)->onLabel.contains(u"mint"_s, Qt::CaseInsensitive));
                for (const Fault &fault : faults) {
                    LabelContent bad = good;
                    fault.seed(bad.to, bad.tracking);
                    const bool isSame = bad.to == good.to && bad.tracking == good.tracking;
                    if (isSame || (fault.item == LabelItem::name && isHan))
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
    PrintedParcel parcel = fedexParcel();
    parcel.isLive = true;
    for (const Json &row : table(u"parcels"_s, "layouts")) {
        const LabelVerdict verdict = verdictOf(dataFile(u"labels/"_s + text(row[0])), parcel);
        EXPECT_EQ(itemsOf(verdict, LabelMatch::different), row[1].get<std::string>()) << row;
        EXPECT_EQ(itemsOf(verdict, LabelMatch::notFound), row[2].get<std::string>()) << row;
        EXPECT_EQ(itemsOf(verdict, LabelMatch::unchecked), row[3].get<std::string>()) << row;
    }
}

} // namespace parcelory::test
