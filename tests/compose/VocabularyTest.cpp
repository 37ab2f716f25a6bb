#include "compose/AddressGuard.h"
#include "compose/Customs.h"
#include "compose/Destination.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "compose/Weight.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

#include <QStringList>

#include <iterator>
#include <optional>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

TEST(Vocabulary, KeepsTheServiceClassesOfTheCarrierApi)
{
    using enum ServiceClass;
    const struct {
        ServiceClass serviceClass;
        QString token, name;
    } rows[] = {
        {priority, u"usps_priority"_s, u"Priority Mail"_s},
        {groundAdvantage, u"usps_ground_advantage"_s, u"Ground Advantage"_s},
        {express, u"usps_priority_express"_s, u"Priority Mail Express"_s},
        {mediaMail, u"usps_media_mail"_s, u"Media Mail"_s},
        {fedexGround, u"fedex_ground"_s, u"FedEx Ground"_s},
        {fedexHomeDelivery, u"fedex_home_delivery"_s, u"FedEx Home Delivery"_s},
        {fedex2Day, u"fedex_2_day"_s, u"FedEx 2Day"_s},
        {fedex2DayAM, u"fedex_2_day_am"_s, u"FedEx 2Day A.M."_s},
        {fedexExpressSaver, u"fedex_express_saver"_s, u"FedEx Express Saver"_s},
        {fedexStandardOvernight, u"fedex_standard_overnight"_s, u"FedEx Standard Overnight"_s},
        {fedexPriorityOvernight, u"fedex_priority_overnight"_s, u"FedEx Priority Overnight"_s},
        {fedexFirstOvernight, u"fedex_first_overnight"_s, u"FedEx First Overnight"_s},
        {fedexIntlGround, u"fedex_international_ground"_s, u"FedEx International Ground (CA/MX)"_s},
        {fedexIntlEconomy, u"fedex_international_economy"_s, u"FedEx International Economy"_s},
        {fedexIntlPriority, u"fedex_international_priority"_s, u"FedEx International Priority"_s},
        {fedexIntlPriorityExpress, u"fedex_international_priority_express"_s,
         u"FedEx International Priority Express"_s},
        {fedexIntlFirst, u"fedex_international_first"_s, u"FedEx International First"_s},
        {firstClassIntl, u"usps_first_class_package_international_service"_s, u"First-Class Package International"_s},
        {priorityIntl, u"usps_priority_mail_international"_s, u"Priority Mail International"_s},
        {expressIntl, u"usps_priority_mail_express_international"_s, u"Priority Mail Express International"_s},
    };
    ASSERT_EQ(serviceClasses().size(), qsizetype(std::size(rows)));
    for (const auto &row : rows) {
        const ServiceClassInfo &info = serviceClasses()[&row - rows];
        EXPECT_EQ(info.serviceClass, row.serviceClass) << row.token.toStdString();
        EXPECT_EQ(info.rawValue, row.token);
        EXPECT_EQ(info.displayName, row.name);
        EXPECT_EQ(info.carrier, row.token.startsWith(u"usps"_s) ? Carrier::usps : Carrier::fedex);
        EXPECT_EQ(info.international, row.token.contains(u"international"_s)) << row.token.toStdString();
        EXPECT_EQ(serviceClassInfo(row.serviceClass).rawValue, row.token);
        EXPECT_EQ(serviceClassFrom(row.token), row.serviceClass);
    }
}

TEST(Vocabulary, KeepsTheMailpiecesAndTheirTemplates)
{
    using enum BuiltinMailpiece;
    const struct {
        BuiltinMailpiece mailpiece;
        QString id, name, parcelTemplate, icon, subtitle;
    } rows[] = {
        {package, u"package"_s, u"Package"_s, {}, u"popup_package"_s, u"Length + girth cannot exceed 108\""_s},
        {oversizedPackage,
         u"oversizedPackage"_s,
         u"Oversized Package"_s,
         {},
         u"popup_oversized_package"_s,
         u"Length + girth cannot exceed 130\""_s},
        {largeEnvelope,
         u"largeEnvelope"_s,
         u"Large Envelope (Flat)"_s,
         {},
         u"popup_flat"_s,
         u"Maximum size ¾\" thick, 12\" tall, or 15\" long"_s},
        {flatRateEnvelope, u"flatRateEnvelope"_s, u"Flat Rate Envelope"_s, u"USPS_FlatRateEnvelope"_s,
         u"popup_flatrateenvelope"_s, u"For Priority Mail Flat Rate packaging"_s},
        {legalFlatRateEnvelope, u"legalFlatRateEnvelope"_s, u"Legal Flat Rate Envelope"_s,
         u"USPS_FlatRateLegalEnvelope"_s, u"popup_flatrateenvelope"_s,
         u"For Priority Mail Legal Flat Rate packaging"_s},
        {paddedFlatRateEnvelope, u"paddedFlatRateEnvelope"_s, u"Padded Flat Rate Envelope"_s,
         u"USPS_FlatRatePaddedEnvelope"_s, u"popup_flatrateenvelope"_s,
         u"For Priority Mail Padded Flat Rate Envelope packaging"_s},
        {smallFlatRateBox, u"smallFlatRateBox"_s, u"Small Flat Rate Box"_s, u"USPS_SmallFlatRateBox"_s,
         u"popup_flatratebox"_s, u"For Priority Mail Small Flat Rate Box packaging"_s},
        {mediumFlatRateBox, u"mediumFlatRateBox"_s, u"Medium Flat Rate Box"_s, u"USPS_MediumFlatRateBox1"_s,
         u"popup_flatratebox"_s, u"For Priority Mail Flat Rate Box packaging"_s},
        {largeFlatRateBox, u"largeFlatRateBox"_s, u"Large Flat Rate Box"_s, u"USPS_LargeFlatRateBox"_s,
         u"popup_flatratebox"_s, u"For Priority Mail Large Flat Rate Box packaging"_s},
        {fedexEnvelope, u"fedexEnvelope"_s, u"FedEx Envelope"_s, u"FedEx_Envelope"_s, u"popup_fedex_padded"_s,
         u"For FedEx® Envelope packaging"_s},
        {fedexSmallPak, u"fedexSmallPak"_s, u"FedEx Small Pak"_s, u"FedEx_Pak_2"_s, u"popup_fedex_padded"_s,
         u"For FedEx® Small Pak packaging"_s},
        {fedexLargePak, u"fedexLargePak"_s, u"FedEx Large Pak"_s, u"FedEx_Pak_1"_s, u"popup_fedex_padded"_s,
         u"For FedEx® Large Pak packaging"_s},
        {fedexPaddedPak, u"fedexPaddedPak"_s, u"FedEx Padded Pak"_s, u"FedEx_Padded_Pak"_s, u"popup_fedex_padded"_s,
         u"For FedEx® Padded Pak packaging"_s},
        {fedexXLPak, u"fedexXLPak"_s, u"FedEx Extra Large Pak"_s, u"FedEx_XL_Pak"_s, u"popup_fedex_padded"_s,
         u"For FedEx® Extra Large Pak packaging"_s},
        {fedexSmallBox, u"fedexSmallBox"_s, u"FedEx Small Box"_s, u"FedEx_Box_Small_1"_s, u"popup_fedex_small"_s,
         u"For FedEx® Small Box packaging"_s},
        {fedexMediumBox, u"fedexMediumBox"_s, u"FedEx Medium Box"_s, u"FedEx_Box_Medium_1"_s, u"popup_fedex_medium"_s,
         u"For FedEx® Medium Box packaging"_s},
        {fedexLargeBox, u"fedexLargeBox"_s, u"FedEx Large Box"_s, u"FedEx_Box_Large_1"_s, u"popup_fedex_large"_s,
         u"For FedEx® Large Box packaging"_s},
        {fedexExtraLargeBox, u"fedexExtraLargeBox"_s, u"FedEx Extra Large Box"_s, u"FedEx_Box_Extra_Large_1"_s,
         u"popup_fedex_xl"_s, u"For FedEx® Extra Large Box packaging"_s},
        {fedexTube, u"fedexTube"_s, u"FedEx Tube"_s, u"FedEx_Tube"_s, u"popup_package"_s,
         u"For FedEx® Tube packaging"_s},
    };
    ASSERT_EQ(builtinMailpieces().size(), qsizetype(std::size(rows)));
    for (const auto &row : rows) {
        const BuiltinMailpieceInfo &info = builtinMailpieces()[&row - rows];
        EXPECT_EQ(info.mailpiece, row.mailpiece) << row.id.toStdString();
        EXPECT_EQ((QStringList{info.id, info.displayName, info.shippoTemplate, info.iconResource, info.subtitle}),
                  (QStringList{row.id, row.name, row.parcelTemplate, row.icon, row.subtitle}));
        EXPECT_EQ(info.carrier, row.mailpiece < fedexEnvelope ? Carrier::usps : Carrier::fedex);
        EXPECT_EQ(isFlatRate(row.mailpiece), row.mailpiece >= flatRateEnvelope && row.mailpiece <= largeFlatRateBox);
    }
    const QStringList mailers[] = {
        {u"uline-s-5147"_s, u"Bubble Mailer #0 - S-5147"_s, u"10"_s, u"6"_s, u"0.75"_s, u"popup_bubblemailer"_s},
        {u"uline-s-5632"_s, u"Bubble Mailer #1 - S-5632"_s, u"12"_s, u"7.25"_s, u"0.75"_s, u"popup_bubblemailer"_s},
        {u"uline-s-5148"_s, u"Bubble Mailer #2 - S-5148"_s, u"12"_s, u"8.5"_s, u"0.75"_s, u"popup_bubblemailer"_s},
        {u"uline-s-1611"_s, u"Jiffy Rigi Bag #2 - S-1611"_s, u"11"_s, u"7.25"_s, u"0.75"_s, u"popup_airseal"_s},
    };
    ASSERT_EQ(presetBoxes().size(), qsizetype(std::size(mailers)));
    for (const QStringList &mailer : mailers) {
        const PresetBox &box = presetBoxes()[&mailer - mailers];
        EXPECT_EQ((QStringList{box.id, box.name, box.length, box.width, box.height, box.icon}), mailer);
    }
}

TEST(Vocabulary, KeepsTheExtraServicesAndTheCustomsItems)
{
    const struct {
        ServiceOption option;
        Carrier carrier;
        QStringList texts; ///< stored word, label, the carrier API's signature
    } options[] = {
        {ServiceOption::tracking, Carrier::usps, {u"tracking"_s, u"USPS Tracking"_s, QString()}},
        {ServiceOption::signature, Carrier::usps, {u"signature"_s, u"Signature Confirmation"_s, u"STANDARD"_s}},
        {ServiceOption::certified, Carrier::usps, {u"certified"_s, u"Certified Mail"_s, u"CERTIFIED"_s}},
        {ServiceOption::adult, Carrier::usps, {u"adult"_s, u"Adult Signature Required"_s, u"ADULT"_s}},
        {ServiceOption::fedexNone, Carrier::fedex, {u"fedexNone"_s, u"No Signature Required"_s, QString()}},
        {ServiceOption::fedexIndirect,
         Carrier::fedex,
         {u"fedexIndirect"_s, u"Indirect Signature Required"_s, u"INDIRECT"_s}},
        {ServiceOption::fedexDirect, Carrier::fedex, {u"fedexDirect"_s, u"Direct Signature Required"_s, u"STANDARD"_s}},
    };
    ASSERT_EQ(serviceOptions().size(), qsizetype(std::size(options)));
    for (const auto &row : options) {
        const ServiceOptionInfo &info = serviceOptions()[&row - options];
        EXPECT_EQ(info.option, row.option);
        EXPECT_EQ(info.carrier, row.carrier);
        EXPECT_EQ((QStringList{info.rawValue, info.label, info.signatureConfirmation}), row.texts);
        EXPECT_EQ(serviceOptionFrom(row.texts[0]), row.option);
    }
    const std::pair<CustomsItemType, QStringList> items[] = {
        {CustomsItemType::gold,
         {u"gold"_s, u"Numismatic Study Item - HS Code 71189000  (Gold)"_s, u"Numismatic Study Item"_s, u"71189000"_s,
          QString()}},
        {CustomsItemType::silver,
         {u"silver"_s, u"Numismatic Study Item - HS Code 71181000  (Silver)"_s, u"Numismatic Study Item"_s,
          u"71181000"_s, QString()}},
        {CustomsItemType::currency,
         {u"currency"_s, u"Numismatic Study Item - HS Code 49070030  (Currency)"_s, u"Numismatic Study Item"_s,
          u"49070030"_s, QString()}},
        {CustomsItemType::readingMaterial,
         {u"readingMaterial"_s, u"Reading Material HS Code 4901.10.0040"_s, u"Reading Material"_s, u"4901.10.0040"_s,
          QString()}},
        {CustomsItemType::investmentGold,
         {u"investmentGold"_s, u"Investment Gold Coin. ex-legal tender. 0% Duty, 0% VAT (VAT Notice 702/21A)"_s,
          u"Numismatic Study Item"_s, u"71189000"_s,
          u"Investment Gold Coin. ex-legal tender. 0% Duty, 0% VAT (VAT Notice 702/21A)"_s}},
    };
    ASSERT_EQ(customsItems().size(), qsizetype(std::size(items)));
    for (const auto &row : items) {
        const CustomsItem &item = customsItems()[&row - items];
        EXPECT_EQ(item.type, row.first);
        EXPECT_EQ((QStringList{item.rawValue, item.pickerText, item.description, item.hsCode, item.invoiceExtraLine}),
                  row.second);
        EXPECT_EQ(item.summary(), row.second[2] + u" - HS Code "_s + row.second[3]);
        EXPECT_EQ(customsItemTypeFrom(row.second[0]), row.first);
    }
}

TEST(Vocabulary, ReadsUnknownWordsAsNothing)
{
    EXPECT_EQ(carrierFrom(u"usps"_s), Carrier::usps);
    EXPECT_EQ(carrierFrom(u"fedex"_s), Carrier::fedex);
    EXPECT_EQ(carrierFrom(u"dhl"_s), std::nullopt);
    EXPECT_EQ(serviceClassFrom(u"usps_first"_s), std::nullopt);
    EXPECT_EQ(serviceOptionFrom(u"insurance"_s), std::nullopt);
    EXPECT_EQ(customsItemTypeFrom(u"platinum"_s), std::nullopt);
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
    const std::pair<double, QString> rows[] = {{0, u"0.0 oz"_s},
                                               {15.94, u"15.9 oz"_s},
                                               {15.96, u"16.0 oz"_s},
                                               {71 * 16 + 2, u"71 lb 2.0 oz"_s},
                                               {14.25, u"14.2 oz"_s}};
    for (const auto &[ounces, text] : rows)
        EXPECT_EQ(weightText(ounces), text);
}

TEST(AddressGuard, ReportsExactlyTheLostNumbers)
{
    const struct {
        QString typed1, typed2, final1, final2;
        QStringList lost;
    } rows[] = {
        {u"123 Main St #4"_s, {}, u"123 MAIN ST APT 4"_s, {}, {}},
        {u"PO Box 239 #12"_s, {}, u"PO BOX 239"_s, {}, {u"12"_s}},
        {u"Unit 4B, 55 Elm"_s, {}, u"55 ELM UNIT 4B"_s, {}, {}},
        {u"1/2 Oak Rd"_s, {}, u"12 OAK RD"_s, {}, {u"1"_s, u"2"_s}},
        {u"12 Elm"_s, u"Apt 9"_s, u"12 ELM APT 9"_s, {}, {}},
        {u"9 Elm"_s, u"Ste 10 #9"_s, u"ELM"_s, {}, {u"10"_s, u"9"_s}},
        {u"#12b Elm"_s, {}, u"12B ELM"_s, {}, {}},
        {u"Apt Box Street"_s, {}, {}, {}, {}},
        {u"RR-7"_s, {}, u"RR 77"_s, {}, {u"7"_s}},
        {u"Bâtiment 4è"_s, {}, u"BA\u0302TIMENT 4E\u0300"_s, {}, {}}, // composed and decomposed accents
        {u"12e\u0301tage"_s, {}, u"12E TAGE"_s, {}, {u"12\u00C9TAGE"_s}},
        {u"7x\u0301y"_s, {}, u"7X"_s, {}, {u"7X\u0301Y"_s}}, // an accent that no composed letter has
    };
    for (const auto &row : rows)
        EXPECT_EQ(AddressGuard::lostTokens(row.typed1, row.typed2, row.final1, row.final2), row.lost)
            << row.typed1.toStdString();
}

} // namespace parcelory::test
