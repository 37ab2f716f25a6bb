#include "core/IsoDate.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

TEST(IsoDate, ReadsInternetDateTimesInAnyZone)
{
    const std::pair<QString, QString> rows[] = {
        {u"2022-01-10T17:24:14Z"_s, u"2022-01-10T17:24:14.000"_s},
        {u"2022-01-10T17:24:14.782Z"_s, u"2022-01-10T17:24:14.782"_s},
        {u"2022-01-10T17:24:14.5Z"_s, u"2022-01-10T17:24:14.500"_s},
        {u"2022-01-10T17:24:14.123456Z"_s, u"2022-01-10T17:24:14.123"_s},
        {u"2022-01-10T17:24:14-08:00"_s, u"2022-01-11T01:24:14.000"_s},
        {u"2022-01-10T17:24:14+0530"_s, u"2022-01-10T11:54:14.000"_s},
        {u"2024-02-29T23:59:59Z"_s, u"2024-02-29T23:59:59.000"_s},
    };
    for (const auto &[text, utc] : rows) {
        const auto time = parseIso(text);
        ASSERT_TRUE(time) << text.toStdString();
        EXPECT_EQ(time->toUTC().toString(u"yyyy-MM-ddTHH:mm:ss.zzz"_s), utc) << text.toStdString();
        EXPECT_EQ(isoUtc(*time), utc.left(19) + u'Z');
    }
}

TEST(IsoDate, RejectsTextsWithoutAZoneOrAValidDate)
{
    for (const QString &text :
         {u""_s, u"2022-01-10"_s, u"2022-01-10T17:24:14"_s, u"2022-01-10 17:24:14Z"_s, u"2022-01-10T17:24Z"_s,
          u"2022-02-29T00:00:00Z"_s, u"2022-13-01T00:00:00Z"_s, u"2022-01-10T25:00:00Z"_s, u"2022-01-10T17:24:14.Z"_s,
          u" 2022-01-10T17:24:14Z"_s, u"2022-01-10T17:24:14Z\n"_s, u"2022-01-10T17:24:14z"_s, u"1641835454"_s})
        EXPECT_FALSE(parseIso(text)) << text.toStdString();
}

} // namespace parcelory::test
