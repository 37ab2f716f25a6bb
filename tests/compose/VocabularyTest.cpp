#include "compose/AddressGuard.h"
#include "compose/Customs.h"
#include "compose/Destination.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "compose/Weight.h"
#include "core/UsStates.h"
#include "records/BoxProfile.h"
#include "support/Table.h"

#include <QStringList>

namespace parcelory::test {
namespace {

constexpr const char *carrierIds[] = {"usps", "fedex"};

QString line(const char *kind, Carrier carrier, const QStringList &texts)
{
    return QStringList{QLatin1StringView(kind), QLatin1StringView(carrierIds[int(carrier)]), texts.join(u'|')}.join(
        u'|');
}

/// All fixed words, a line each, as in data/vocabulary.txt.
QStringList vocabulary()
{
    QStringList lines;
    for (const CarrierInfo &info : carriers())
        lines += line("carrier", info.carrier, {info.rawValue, info.displayName, QString::number(info.weightLimit)});
    for (const ServiceClassInfo &info : serviceClasses())
        lines += line("class", info.carrier,
                      {info.rawValue, info.displayName, info.international ? u"abroad"_s : u"domestic"_s});
    for (const ServiceOptionInfo &info : serviceOptions())
        lines += line("option", info.carrier, {info.rawValue, info.label, info.signatureConfirmation});
    for (const BuiltinMailpieceInfo &info : builtinMailpieces())
        lines += line("mailpiece", info.carrier,
                      {info.id, info.displayName, info.shippoTemplate, info.iconResource, info.subtitle,
                       isFlatRate(info.mailpiece) ? u"flat rate"_s : QString()});
    for (const PresetBox &box : presetBoxes())
        lines += QStringList{u"mailer"_s, box.id, box.name, box.length, box.width, box.height, box.icon}.join(u'|');
    for (const CustomsItem &item : customsItems())
        lines += QStringList{u"customs"_s, item.rawValue,  item.pickerText,      item.description,
                             item.hsCode,  item.summary(), item.invoiceExtraLine}
                     .join(u'|');
    for (const auto &[name, code] : usStates())
        lines += QStringList{u"state"_s, name, code}.join(u'|');
    return lines;
}

} // namespace

TEST(Vocabulary, KeepsTheWordsOfTheCarriersAndOfTheScreens)
{
    EXPECT_EQ((vocabulary().join(u'\n') + u'\n').toStdString(), dataFile(u"vocabulary.txt"_s).toStdString());
    // Each table is in the order of its enumeration, and each word is found again.
    const auto check = [](const auto &table, const auto &value, const auto &find) {
        for (const auto &info : table) {
            EXPECT_EQ(int(std::invoke(value, info)), &info - table.data());
            EXPECT_EQ(find(info.rawValue), std::invoke(value, info));
        }
    };
    check(carriers(), &CarrierInfo::carrier, carrierFrom);
    check(serviceClasses(), &ServiceClassInfo::serviceClass, serviceClassFrom);
    check(serviceOptions(), &ServiceOptionInfo::option, serviceOptionFrom);
    check(customsItems(), &CustomsItem::type, customsItemTypeFrom);
    for (const BuiltinMailpieceInfo &info : builtinMailpieces())
        EXPECT_EQ(int(info.mailpiece), &info - builtinMailpieces().data());
    EXPECT_FALSE(carrierFrom(u"dhl"_s) || serviceClassFrom(u"usps_first"_s));
    EXPECT_FALSE(serviceOptionFrom(u"insurance"_s) || customsItemTypeFrom(u"platinum"_s));
}

TEST(Vocabulary, OffersTheCarriersPackagingsThenMailersAndBoxes)
{
    const auto menu = [](Carrier carrier, const QList<BoxProfile> &boxes) {
        return each(mailpieceMenu(carrier, boxes), [](const MailpieceGroup &group) {
            const auto &first = group.entries.first(), &last = group.entries.last();
            return u"%1: %2, %3 … %4, %5"_s.arg(group.title)
                .arg(group.entries.size())
                .arg(first.title, last.title, last.subtitle);
        });
    };
    const QString mailers =
        u"Stock mailers: 4, Bubble Mailer #0 - S-5147 … Jiffy Rigi Bag #2 - S-1611, 11 × 7.25 × 0.75 in"_s;
    EXPECT_EQ(menu(Carrier::usps, {}),
              (QStringList{u"USPS: 9, Package … Large Flat Rate Box, For Priority Mail Large Flat Rate Box packaging"_s,
                           mailers}));
    EXPECT_EQ(menu(Carrier::fedex, {{.length = u"9"_s, .width = u"6"_s, .height = u"3"_s}}),
              (QStringList{u"FedEx: 10, FedEx Envelope … FedEx Tube, For FedEx® Tube packaging"_s, mailers,
                           u"Custom boxes: 1, Box 9×6×3\" … Box 9×6×3\", Custom box — inside dims 9×6×3\""_s}));
}

TEST(Vocabulary, NamesTheCarrierOnceAndProposesAClassForTheDestination)
{
    EXPECT_EQ(carrierAndService(Carrier::usps, u"Priority Mail"_s), u"USPS Priority Mail"_s);
    EXPECT_EQ(carrierAndService(Carrier::fedex, u"FedEx Ground"_s), u"FedEx Ground"_s);
    using enum ServiceClass;
    EXPECT_EQ(defaultServiceClass(Carrier::usps, false), priority);
    EXPECT_EQ(defaultServiceClass(Carrier::usps, true), priorityIntl);
    EXPECT_EQ(defaultServiceClass(Carrier::fedex, false), fedex2Day);
    EXPECT_EQ(defaultServiceClass(Carrier::fedex, true), fedexIntlPriority);
}

TEST(Destination, TreatsTheHomeCountryInEverySpellingAndNoCountryAsDomestic)
{
    for (const QString &home : {u""_s, u"  "_s, u"us"_s, u" USA "_s, u"United States"_s})
        EXPECT_FALSE(isInternationalCountry(home)) << home.toStdString();
    for (const QString &abroad : {u"CA"_s, u"UK"_s, u"U.S.A."_s})
        EXPECT_TRUE(isInternationalCountry(abroad)) << abroad.toStdString();
}

TEST(Weight, ReadsInPoundsAndTenthsOfAnOunce)
{
    for (const Json &row : table(u"compose"_s, "weights"))
        EXPECT_EQ(weightText(row[0]), text(row[1]));
}

TEST(AddressGuard, ReportsExactlyTheLostNumbers)
{
    for (const Json &row : table(u"compose"_s, "lost numbers"))
        EXPECT_EQ(AddressGuard::lostTokens(text(row[0]), text(row[1]), text(row[2]), text(row[3])), texts(row[4]))
            << row;
}

} // namespace parcelory::test
