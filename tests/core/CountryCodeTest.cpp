#include "core/CountryCode.h"
#include "support/Table.h"

namespace parcelory::test {

TEST(CountryCode, UnderstandsTheUsualWaysToWriteACountry)
{
    for (const Json &row : table(u"countries"_s, "usual"))
        EXPECT_EQ(CountryCode::find(text(row[0])), text(row[1])) << row;
    for (const Json &row : table(u"countries"_s, "names")) {
        for (const QString &name : texts(row[1]))
            EXPECT_EQ(CountryCode::alpha2(name), text(row[0])) << name.toStdString();
    }
    for (const QString &ambiguous : {u"Congo"_s, u"Korea"_s, u"Virgin Islands"_s, u"the"_s, u"'"_s})
        EXPECT_EQ(CountryCode::find(ambiguous), std::nullopt) << ambiguous.toStdString();
}

TEST(CountryCode, PassesOnUnknownTextsInCapitalsAndWritesACountryOut)
{
    for (const Json &row : table(u"countries"_s, "unknown"))
        EXPECT_EQ(CountryCode::alpha2(text(row[0])), text(row[1])) << row;
    for (const Json &row : table(u"countries"_s, "written out"))
        EXPECT_EQ(CountryCode::displayName(text(row[0])), text(row[1])) << row;
}

} // namespace parcelory::test
