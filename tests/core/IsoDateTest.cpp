#include "core/IsoDate.h"
#include "support/Table.h"

namespace parcelory::test {

TEST(IsoDate, ReadsInternetDateTimesInAnyZoneAndNothingElse)
{
    for (const Json &row : table(u"iso-dates"_s, "read")) {
        const auto time = parseIso(text(row[0]));
        ASSERT_TRUE(time) << row;
        EXPECT_EQ(time->toUTC().toString(u"yyyy-MM-ddTHH:mm:ss.zzz"_s), text(row[1])) << row;
        EXPECT_EQ(isoUtc(*time), text(row[1]).left(19) + u'Z');
    }
    for (const QString &other : texts(table(u"iso-dates"_s, "rejected")))
        EXPECT_FALSE(parseIso(other)) << other.toStdString();
}

} // namespace parcelory::test
