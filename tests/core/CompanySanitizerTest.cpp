#include "core/CompanySanitizer.h"
#include "support/Table.h"

namespace parcelory::test {

TEST(CompanySanitizer, CutsRevealingWordsAndReplacesStoreNamesInTheirOrder)
{
    // The second store's name contains the first store's code.
    const CompanySanitizer sanitizer(
        {{u"harborlightcoins"_s, u"HLC"_s}, {u"hlcoldmint"_s, u"OMB"_s}, {u"loopcode"_s, u"xLoopCode"_s}});
    for (const Json &row : table(u"company-names"_s, "words")) {
        EXPECT_EQ(sanitizer.sanitize(text(row[0])), text(row[1])) << row;
        EXPECT_EQ(sanitizer.sanitize(text(row[1])), text(row[1])) << "again: " << row;
    }
    for (const Json &row : table(u"company-names"_s, "stores"))
        EXPECT_EQ(sanitizer.sanitize(text(row[0])), text(row[1])) << row;
}

} // namespace parcelory::test
