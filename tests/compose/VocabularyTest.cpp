#include "compose/AddressGuard.h"
#include "compose/Customs.h"
#include "compose/Destination.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "compose/Weight.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

#include <optional>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

TEST(Vocabulary, EveryTableIsInTheOrderOfItsEnumeration)
{
    for (qsizetype i = 0; i < carriers().size(); ++i)
        EXPECT_EQ(qsizetype(carriers()[i].carrier), i);
    for (qsizetype i = 0; i < serviceClasses().size(); ++i)
        EXPECT_EQ(qsizetype(serviceClasses()[i].serviceClass), i);
    for (qsizetype i = 0; i < serviceOptions().size(); ++i)
        EXPECT_EQ(qsizetype(serviceOptions()[i].option), i);
    for (qsizetype i = 0; i < builtinMailpieces().size(); ++i)
        EXPECT_EQ(qsizetype(builtinMailpieces()[i].mailpiece), i);
    for (qsizetype i = 0; i < customsItems().size(); ++i)
        EXPECT_EQ(qsizetype(customsItems()[i].type), i);
    EXPECT_EQ(serviceClasses().size(), 20);
    EXPECT_EQ(builtinMailpieces().size(), 19);
}

TEST(Vocabulary, StoredWordsAreReadBackAndUnknownWordsGiveNothing)
{
    for (const ServiceClassInfo &info : serviceClasses())
        EXPECT_EQ(serviceClassFrom(info.rawValue), info.serviceClass);
    for (const ServiceOptionInfo &info : serviceOptions())
        EXPECT_EQ(serviceOptionFrom(info.rawValue), info.option);
    for (const CustomsItem &item : customsItems())
        EXPECT_EQ(customsItemTypeFrom(item.rawValue), item.type);
    EXPECT_EQ(carrierFrom(u"fedex"_s), Carrier::fedex);
    EXPECT_EQ(serviceClassFrom(u"usps_first_class_package_international_service"_s), ServiceClass::firstClassIntl);
    EXPECT_EQ(serviceOptionFrom(u"insurance"_s), std::nullopt);
    EXPECT_EQ(customsItemTypeFrom(u"platinum"_s), std::nullopt);
    EXPECT_EQ(carrierFrom(u"dhl"_s), std::nullopt);
}

TEST(Vocabulary, OnlyOwnPackagingHasNoTemplateAndOnlySixMailpiecesAreFlatRate)
{
    int own = 0, flat = 0;
    for (const BuiltinMailpieceInfo &info : builtinMailpieces()) {
        own += info.shippoTemplate.isEmpty();
        flat += isFlatRate(info.mailpiece);
        if (isFlatRate(info.mailpiece)) {
            EXPECT_TRUE(info.shippoTemplate.startsWith(u"USPS_"_s));
        }
    }
    EXPECT_EQ(own, 3);
    EXPECT_EQ(flat, 6);
    EXPECT_EQ(builtinMailpieceInfo(BuiltinMailpiece::fedexSmallPak).shippoTemplate, u"FedEx_Pak_2"_s);
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
    };
    for (const auto &row : rows)
        EXPECT_EQ(AddressGuard::lostTokens(row.typed1, row.typed2, row.final1, row.final2), row.lost)
            << row.typed1.toStdString();
}

} // namespace parcelory::test
