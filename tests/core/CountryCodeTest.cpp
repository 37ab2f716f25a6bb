#include "core/CountryCode.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

TEST(CountryCode, UnderstandsTheUsualWaysToWriteACountry)
{
    const std::pair<QString, QString> rows[] = {
        {u"us"_s, u"US"_s},
        {u" US \n"_s, u"US"_s},
        {u"u.s.a."_s, u"US"_s},
        {u"United  States"_s, u"US"_s},
        {u"uk"_s, u"GB"_s}, // two letters, but not a code
        {u"Northern\tIreland"_s, u"GB"_s},
        {u"Korea, South"_s, u"KR"_s},
        {u"Korea,North"_s, u"KP"_s},
        {u"St. Lucia"_s, u"LC"_s},
        {u"St Lucia"_s, u"LC"_s},
        {u"Côte d’Ivoire"_s, u"CI"_s},
        {u"åland islands"_s, u"AX"_s},
    };
    for (const auto &[text, code] : rows)
        EXPECT_EQ(CountryCode::alpha2(text), code) << text.toStdString();
}

TEST(CountryCode, KnowsTheNamesThatPeopleType)
{
    const std::pair<QString, QStringList> rows[] = {
        {u"US"_s, {u"USA"_s, u"United States"_s, u"United States of America"_s, u"America"_s}},
        {u"GB"_s, {u"UK"_s, u"Great Britain"_s, u"England"_s, u"Scotland"_s, u"Wales"_s, u"Northern Ireland"_s}},
        {u"KR"_s, {u"South Korea"_s, u"Korea South"_s, u"Republic of Korea"_s}},
        {u"KP"_s, {u"North Korea"_s, u"Korea North"_s}},
        {u"AE"_s, {u"UAE"_s, u"United Arab Emirates"_s}},
        {u"NL"_s, {u"Holland"_s, u"Netherlands"_s}},
        {u"CZ"_s, {u"Czech Republic"_s, u"Czechia"_s}},
        {u"CI"_s, {u"Ivory Coast"_s}},
        {u"HK"_s, {u"Hong Kong"_s}},
        {u"MO"_s, {u"Macau"_s}},
        {u"RU"_s, {u"Russia"_s}},
        {u"TW"_s, {u"Taiwan"_s}},
        {u"VN"_s, {u"Vietnam"_s}},
    };
    for (const auto &[code, names] : rows) {
        for (const QString &name : names)
            EXPECT_EQ(CountryCode::alpha2(name), code) << name.toStdString();
    }
}

TEST(CountryCode, PassesOnUnknownTextsInCapitals)
{
    const std::pair<QString, QString> rows[] = {
        {{}, {}},
        {u" \t\n"_s, {}},
        {u"uk-england"_s, u"UK-ENGLAND"_s},
        {u"."_s, u"."_s},
        {u" Atlantis, Lost  City of. "_s, u"ATLANTIS, LOST  CITY OF."_s},
    };
    for (const auto &[text, passed] : rows)
        EXPECT_EQ(CountryCode::alpha2(text), passed) << text.toStdString();
}

TEST(CountryCode, WritesACountryOut)
{
    const std::pair<QString, QString> rows[] = {
        {u"us"_s, u"United States"_s},
        {u"CI"_s, u"Côte d’Ivoire"_s},
        {u"England"_s, u"United Kingdom"_s},
        {u" Atlantis "_s, u"Atlantis"_s},
        {u"ZZ"_s, u"ZZ"_s},
        {{}, {}},
    };
    for (const auto &[text, name] : rows)
        EXPECT_EQ(CountryCode::displayName(text), name) << text.toStdString();
}

} // namespace parcelory::test
