#include "core/AddressBlock.h"
#include "core/Accents.h"
#include "support/Table.h"

namespace parcelory::test {

TEST(AddressBlock, IsSplitIntoItsFieldsOrNotAtAll)
{
    for (const Json &row : table(u"addresses"_s, "blocks"))
        EXPECT_EQ(addressFromBlock(text(row[0])), addressOf(row[1])) << row;
    for (const QString &other : texts(table(u"addresses"_s, "no blocks")))
        EXPECT_FALSE(addressFromBlock(other)) << other.toStdString();
}

TEST(Accents, LeavePlainLetters)
{
    for (const Json &row : table(u"addresses"_s, "plain letters"))
        EXPECT_EQ(plainForm(text(row[0])), text(row[1]));
    EXPECT_EQ(withoutAccents(u"ÆON"_s), u"AEON"_s);
}

} // namespace parcelory::test
