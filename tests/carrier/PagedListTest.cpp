#include "carrier/PagedList.h"
#include "carrier/ShippoRecords.h"
#include "core/Task.h"
#include "support/Test.h"

#include "support/RunTask.h"

#include <QTimeZone>

namespace parcelory::test {

namespace {

/// A paged list of transactions that counts the pages read.
struct Pages {
    QList<QByteArray> pages;
    int read = 0;

    QStringList ids(const QDateTime &cutoff)
    {
        read = 0;
        const auto fetch = [this](QString path) -> Task<QByteArray> {
            ++read;
            QByteArray page = pages[path.toInt() % pages.size()];
            co_return page;
        };
        const auto created = [](const ShippoTransaction &t) { return t.objectCreated; };
        const auto all = runTask(pagedList<ShippoTransaction>(fetch, u"0"_s, cutoff, created));
        QStringList ids;
        for (const ShippoTransaction &transaction : all)
            ids += transaction.objectId;
        return ids;
    }
};

QByteArray record(const char *id, const char *created)
{
    return QByteArray(R"({"object_id":")") + id + R"(","status":"SUCCESS","object_created":)" + created + '}';
}

QByteArray page(const QByteArrayList &records, const char *next)
{
    return R"({"next":)" + QByteArray(next) + R"(,"results":[)" + records.join(',') + "]}";
}

const QDateTime cutoff(QDate(2026, 11, 10), QTime(0, 0), QTimeZone::utc());

} // namespace

TEST(PagedList, StopsAfterTheFirstPageBeyondTheCutoffAndKeepsAllOfIt)
{
    Pages pages{
        {page({record("a", R"("2026-11-12T10:00:00.123Z")"), record("b", R"("2026-11-11T10:00:00Z")")}, R"("1")"),
         page({record("c", R"("2026-11-10T00:00:00Z")"), record("d", R"("2026-11-09T23:59:59Z")")}, R"("2")"),
         page({record("e", R"("2026-11-08T10:00:00Z")")}, "null")}};
    EXPECT_EQ(pages.ids(cutoff), (QStringList{u"a"_s, u"b"_s, u"c"_s, u"d"_s}));
    EXPECT_EQ(pages.read, 2);
}

TEST(PagedList, ContinuesPastUndatedRecordsAndEndsAtTheLastLinkOrAnEmptyPage)
{
    Pages undated{{page({record("a", "null")}, R"("1")"), page({record("b", R"("yesterday")")}, "null")}};
    EXPECT_EQ(undated.ids(cutoff), (QStringList{u"a"_s, u"b"_s}));
    Pages empty{QByteArrayList{page({}, R"("0")")}};
    EXPECT_EQ(empty.ids(cutoff), QStringList());
    EXPECT_EQ(empty.read, 1);
}

TEST(PagedList, ReadsAtMostFortyPagesAndFailsOnABadPage)
{
    Pages endless{QByteArrayList{page({record("a", R"("2026-11-12T10:00:00Z")")}, R"("0")")}};
    EXPECT_EQ(endless.ids(cutoff).size(), 40);
    EXPECT_EQ(endless.read, 40);
    Pages bad{{page({record("a", "null")}, R"("1")"), "{\"results\": 5}"}};
    EXPECT_THROW(bad.ids(cutoff), DecodeError);
}

} // namespace parcelory::test
