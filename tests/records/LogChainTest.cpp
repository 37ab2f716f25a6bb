#include "records/LogChain.h"
#include "records/FetchedLabels.h"
#include "support/LogFile.h"

namespace parcelory::test {
using LogChain::Part;
using LogChain::Problem;

namespace {

ShipmentRecord parcel(int number)
{
    return {.createdAt = QDateTime(QDate(2026, 11, 20), QTime(14, number)),
            .service = u"Priority Mail"_s,
            .postage = 8.25 + number,
            .recipient = u"Eleanor Whitfield, %1 Montford Ave, Asheville NC"_s.arg(number),
            .tracking = u"92108901755477%1"_s.arg(number),
            .transactionID = transactionId(number),
            .zpl = "^XA^FD" + QByteArray::number(number) + "^FS^XZ"};
}

/// A log of five parcels, an imported row and every change of a status.
struct SealedLog : LogFile {
    ShipmentLog log{QDir(folder.path())};

    SealedLog()
    {
        for (int number = 1; number <= 5; ++number)
            EXPECT_TRUE(log.insert(parcel(number)));
        put(u"mail.txt"_s, mailLine("Imported, 1 Elm St, Bend OR 97701").replace("1.00", "-0")); // stored as 0
        EXPECT_EQ(log.importEndiciaCSV(path(u"mail.txt"_s)).imported, 1);
        EXPECT_TRUE(log.setRefund(rowOf(log, 2), RefundState::pending));
        EXPECT_TRUE(log.change([](Database &db) {
            return LabelHistory::putTracked(db, 2, wordOf(TrackingStatus::delivered), QDateTime::currentDateTime());
        }));
        EXPECT_TRUE(FetchedLabels::put(log, rowOf(log, 5), "^XA1^XZ") &&
                    FetchedLabels::put(log, rowOf(log, 5), "^XA2^XZ"));
        EXPECT_TRUE(log.setRefund(rowOf(log, 2), RefundState::granted) && log.setStatus(rowOf(log, 3), u"SHIPPED"_s));
        EXPECT_TRUE(log.storeCustomsPDF(rowOf(log, 4), "%PDF"));
    }
    LogChain::Report verified(const QList<LogChain::Head> &known = {}) const { return log.verify(known).orThrow(); }
    LogChain::Head head() const { return *LogChain::head(Database(path())); }
};

} // namespace

TEST(LogChain, NamesTheRowAndThePartThatWasChanged)
{
    const QStringList parts = {u"time"_s,        u"service"_s, u"postage"_s, u"recipient"_s, u"tracking"_s,
                               u"transaction"_s, u"label"_s,   u"details"_s, u"status"_s};
    const SealedLog sealed;
    for (const Json &row : table(u"mailing-log"_s, "changes of a sealed row")) {
        SCOPED_TRACE(row);
        sealed.run("CREATE TABLE kept AS SELECT * FROM shipments WHERE id = 3");
        sealed.run("UPDATE shipments SET " + bytes(row[0]) + " WHERE id = 3");
        const QList<LogChain::Finding> findings = sealed.verified().findings;
        ASSERT_EQ(findings.size(), 1);
        EXPECT_EQ(findings.first().problem, Problem::changed);
        EXPECT_EQ(findings.first().shipment, 3);
        EXPECT_EQ(findings.first().parts, QList{Part(parts.indexOf(text(row[1])))});
        sealed.run("DELETE FROM shipments WHERE id = 3; INSERT INTO shipments SELECT * FROM kept; DROP TABLE kept");
    }
    EXPECT_TRUE(sealed.verified({sealed.head()}).findings.isEmpty()) << "all that the program stores fits";
    EXPECT_EQ(sealed.verified().labels, 6);
}

TEST(LogChain, FindsRowsAndEntriesThatWereRemovedAddedOrRewritten)
{
    const QStringList problems = {u"changed"_s, u"removed"_s, u"added"_s, u"chain"_s, u"unsealed"_s};
    for (const Json &row : table(u"mailing-log"_s, "damages of a sealed log")) {
        SCOPED_TRACE(row);
        const SealedLog sealed;
        sealed.run(bytes(row[0]));
        const QList<LogChain::Finding> findings = sealed.verified().findings;
        EXPECT_TRUE(std::ranges::any_of(findings, [&](const LogChain::Finding &finding) {
            return finding.problem == Problem(problems.indexOf(text(row[1]))) &&
                   finding.shipment == row[2].get<qint64>();
        }));
    }
}

TEST(LogChain, AHeadThatWasKeptElsewhereShowsARewrittenChain)
{
    const SealedLog sealed;
    const LogChain::Head kept = sealed.head();
    sealed.run("DELETE FROM shipments WHERE id = 6; DROP TABLE log_chain; DELETE FROM sqlite_sequence");
    ShipmentLog rewritten(QDir(sealed.folder.path()));
    EXPECT_TRUE(rewritten.sealOlder({kept}));
    EXPECT_EQ(rewritten.verify({kept})->findings.value(0).problem, Problem::unsealed) << "it is not sealed anew";
    EXPECT_TRUE(rewritten.sealOlder() && rewritten.verify()->findings.isEmpty());
    EXPECT_FALSE(rewritten.verify({kept})->findings.isEmpty());
}

TEST(LogChain, HeadsOfAnotherLogAreNamedAndNotCompared)
{
    const SealedLog sealed;
    const LogChain::Head own{sealed.head().position, sealed.head().hash, LogChain::idOf(Database(sealed.path()))};
    const LogChain::Head other{own.position + 9, "hash", "another log"};
    const LogChain::Head changed{own.position, "hash", own.log};
    const std::tuple<QList<LogChain::Head>, QList<Problem>> cases[] = {
        {{own}, {}},
        {{other, own}, {Problem::otherLog}},
        {{other, changed}, {Problem::otherLog, Problem::chain}},
    };
    for (const auto &[known, problems] : cases) {
        const QList<LogChain::Finding> findings = sealed.verified(known).findings;
        ASSERT_EQ(findings.size(), problems.size());
        for (qsizetype at = 0; at < findings.size(); ++at)
            EXPECT_EQ(findings[at].problem, problems[at]);
    }
    const LogFile empty;
    EXPECT_EQ(ShipmentLog(QDir(empty.folder.path())).verify({other})->findings.value(0).problem, Problem::unsealed);
}

TEST(LogChain, SealsTheRowsOfAnOlderLogInPortions)
{
    const LogFile file;
    ShipmentLog(QDir(file.folder.path())).reload(); // makes the table
    file.run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 450)"
             " INSERT INTO shipments (created_at, recipient, zpl) SELECT i, 'Recipient ' || i, randomblob(50) FROM n");
    ShipmentLog log(QDir(file.folder.path()));
    EXPECT_TRUE(log.setStatus(rowOf(log, 7), u"SHIPPED"_s)); // before its row has an entry
    EXPECT_TRUE(log.insert(parcel(1)));
    EXPECT_TRUE(log.verify()->findings.isEmpty()) << "rows without an entry are no findings yet";
    EXPECT_TRUE(log.sealOlder());
    EXPECT_EQ(log.verify()->labels, 451);
    EXPECT_TRUE(log.verify()->findings.isEmpty());
    file.run("DELETE FROM log_chain WHERE shipment_id = 9; UPDATE shipments SET zpl = x'00' WHERE id = 8");
    EXPECT_FALSE(log.verify()->findings.isEmpty());

    const CancelToken canceled;
    canceled.cancel();
    EXPECT_TRUE(log.verify({}, Progress(canceled))->isCanceled);
}

} // namespace parcelory::test
