#include "core/CountryCode.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

#include <optional>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

TEST(CountryCode, UnderstandsTheUsualWaysToWriteACountry)
{
    const std::pair<QString, QString> rows[] = {
        {u" us"_s, u"US"_s},
        {u" de \n"_s, u"DE"_s},
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
        EXPECT_EQ(CountryCode::find(text), code) << text.toStdString();
}

TEST(CountryCode, KnowsVariantsAndNativeNames)
{
    const std::pair<QStringList, QString> rows[] = {
        {{u"Trinidad and Tobago"_s, u"TRINIDAD & TOBAGO"_s, u"Trinidad Tobago"_s}, u"TT"_s},
        {{u"Bosnia and Herzegovina"_s, u"Bosna i Hercegovina"_s}, u"BA"_s},
        {{u"The Netherlands"_s, u"Nederland"_s}, u"NL"_s},
        {{u"the United States"_s, u"The United States of America"_s, u"Estados Unidos"_s}, u"US"_s},
        {{u"The Bahamas"_s, u"Bahamas, The"_s}, u"BS"_s},
        {{u"Macao"_s, u"Macao SAR"_s, u"Macao SAR China"_s}, u"MO"_s},
        {{u"Burma"_s, u"Myanmar"_s}, u"MM"_s},
        {{u"Cote d'Ivoire"_s, u"Côte D’Ivoire"_s, u"COTE DIVOIRE"_s}, u"CI"_s},
        {{u"Türkiye"_s, u"Turkiye"_s, u"TURKEY"_s}, u"TR"_s},
        {{u"Deutschland"_s}, u"DE"_s},
        {{u"España"_s, u"ESPANA"_s}, u"ES"_s},
        {{u"Schweiz"_s, u"Suisse"_s, u"Svizzera"_s}, u"CH"_s},
        {{u"Österreich"_s, u"OSTERREICH"_s}, u"AT"_s},
        {{u"日本"_s}, u"JP"_s},
        {{u"الأردن"_s}, u"JO"_s},
        {{u"Korea, Republic of"_s, u"the Republic of Korea"_s}, u"KR"_s},
        {{u"Korea, Democratic People's Republic of"_s, u"Democratic People’s Republic of Korea"_s}, u"KP"_s},
        {{u"Congo, Republic of the"_s, u"Congo-Brazzaville"_s}, u"CG"_s},
        {{u"Congo, Democratic Republic of the"_s, u"DR Congo"_s}, u"CD"_s},
        {{u"Saint Lucia"_s}, u"LC"_s},
        {{u"Saint Vincent and the Grenadines"_s}, u"VC"_s},
        {{u"Virgin Islands, U.S."_s}, u"VI"_s},
        {{u"Dominican Republic"_s}, u"DO"_s},
        {{u"Guinea"_s, u"Guinée"_s}, u"GN"_s},
        {{u"Niger"_s}, u"NE"_s},
    };
    for (const auto &[names, code] : rows) {
        for (const QString &name : names)
            EXPECT_EQ(CountryCode::alpha2(name), code) << name.toStdString();
    }
    for (const QString &ambiguous : {u"Congo"_s, u"Korea"_s, u"Virgin Islands"_s, u"the"_s, u"'"_s})
        EXPECT_EQ(CountryCode::find(ambiguous), std::nullopt) << ambiguous.toStdString();
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
