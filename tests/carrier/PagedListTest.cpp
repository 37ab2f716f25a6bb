#include "carrier/PagedList.h"
#include "carrier/ShippoRecords.h"
#include "support/RunTask.h"
#include "support/Table.h"

namespace parcelory::test {
namespace {

/// A paged list of transactions that counts the pages read.
struct Pages {
    QByteArrayList pages;
    int read = 0;

    QStringList ids()
    {
        const auto fetch = [this](QString path) -> Task<QByteArray> {
            ++read;
            co_return QByteArray(pages[path.toInt() % pages.size()]);
        };
        const auto created = [](const ShippoTransaction &t) { return t.objectCreated; };
        const QDateTime cutoff(QDate(2026, 11, 10), QTime(0, 0), QTimeZone::utc());
        return each(runTask(pagedList<ShippoTransaction>(fetch, u"0"_s, cutoff, created)),
                    &ShippoTransaction::objectId);
    }
};

} // namespace

TEST(PagedList, ReadsToTheFirstPageBeyondTheCutoffOrToTheLast)
{
    for (const Json &row : table(u"paged-lists"_s, "pages")) {
        Pages list;
        for (const Json &page : row[0]) {
            Json labels = Json::array();
            for (const Json &label : page[0])
                labels.push_back({{"object_id", label[0]}, {"status", "SUCCESS"}, {"object_created", label[1]}});
            list.pages += dumpJson({{"next", page[1]}, {"results", labels}});
        }
        EXPECT_EQ(list.ids(), texts(row[1])) << row;
        EXPECT_EQ(list.read, row[2].get<int>()) << row;
    }
}

TEST(PagedList, ReadsAtMostFortyPagesAndFailsOnABadPage)
{
    const QByteArray page = R"({"next": "1", "results": [{"object_id": "a", "status": ""}]})";
    Pages endless{{page}};
    EXPECT_EQ(endless.ids().size(), 40);
    EXPECT_EQ(endless.read, 40);
    EXPECT_THROW((Pages{{page, R"({"results": 5})"}}.ids()), DecodeError);
}

} // namespace parcelory::test
