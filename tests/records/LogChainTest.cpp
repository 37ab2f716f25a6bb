#include "records/LogChain.h"
#include "records/LabelHistory.h"
#include "support/LogFile.h"

#include <vector>

namespace parcelory::test {
using namespace Qt::StringLiterals;
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
        put(u"mail.txt"_s, mailLine("Imported, 1 Elm St, Bend OR 97701"));
        EXPECT_EQ(log.importEndiciaCSV(path(u"mail.txt"_s)).imported, 1);
        EXPECT_TRUE(log.setRefund(2, RefundState::pending));
        EXPECT_TRUE(LabelHistory(log).setTracked(2, wordOf(TrackingStatus::delivered), QDateTime::currentDateTime()));
        EXPECT_TRUE(log.setRefund(2, RefundState::granted));
        EXPECT_TRUE(log.setStatus(3, u"SHIPPED"_s));
        EXPECT_TRUE(log.storeCustomsPDF(4, "%PDF"));
    }
    LogChain::Report verified(const QList<LogChain::Head> &known = {}) const { return log.verify(known).orThrow(); }
    LogChain::Head head() const { return *LogChain::head(Database(path())); }
};

} // namespace

TEST(LogChain, FitsWhateverTheProgramStores)
{
    const SealedLog sealed;
    const LogChain::Report report = sealed.verified({sealed.head()});
    EXPECT_EQ(report.labels, 6);
    EXPECT_TRUE(report.findings.isEmpty());
}

TEST(LogChain, NamesTheRowAndThePartThatWasChanged)
{
    const std::vector<std::pair<const char *, Part>> changes{
        {"created_at = created_at + 0.001", Part::time},
        {"service = 'Priority Mail '", Part::service},
        {"services = NULL", Part::service},
        {"carrier = 'FedEx'", Part::service},
        {"postage = 11.2500000001", Part::postage},
        {"declared_value = '0'", Part::postage},
        {"recipient = replace(recipient, '3', '4')", Part::recipient},
        {"zip11 = '97701'", Part::recipient},
        {"is_intl = 1", Part::recipient},
        {"tracking = tracking || ' '", Part::tracking},
        {"transaction_id = lower(hex(randomblob(16)))", Part::transaction},
        {"test_mode = 1", Part::transaction},
        {"zpl = x'5E5841'", Part::label},
        {"zpl = NULL", Part::label},
        {"zpl = CAST(zpl AS TEXT)", Part::label},
        {"weight_oz = 1", Part::details},
        {"reference = 'x'", Part::details},
        {"status = 'PRINTED'", Part::status},
    };
    const SealedLog sealed;
    for (const auto &[change, part] : changes) {
        SCOPED_TRACE(change);
        sealed.run("CREATE TABLE kept AS SELECT * FROM shipments WHERE id = 3");
        sealed.run(("UPDATE shipments SET " + QByteArray(change) + " WHERE id = 3").constData());
        const QList<LogChain::Finding> findings = sealed.verified().findings;
        ASSERT_EQ(findings.size(), 1);
        EXPECT_EQ(findings.first().problem, Problem::changed);
        EXPECT_EQ(findings.first().shipment, 3);
        EXPECT_EQ(findings.first().parts, QList{part});
        sealed.run("DELETE FROM shipments WHERE id = 3; INSERT INTO shipments SELECT * FROM kept; DROP TABLE kept");
    }
    EXPECT_TRUE(sealed.verified().findings.isEmpty());
}

TEST(LogChain, FindsRowsAndEntriesThatWereRemovedAddedOrRewritten)
{
    struct Case {
        const char *script;
        Problem problem;
        qint64 shipment;
    };
    const Case cases[] = {
        {"DELETE FROM shipments WHERE id = 1", Problem::removed, 1},
        {"DELETE FROM shipments WHERE id = 6", Problem::removed, 6},
        {"INSERT INTO shipments (created_at, recipient) VALUES (1, 'Nobody')", Problem::added, 7},
        {"DELETE FROM log_chain WHERE shipment_id = 1", Problem::added, 1},
        {"DELETE FROM shipments WHERE id = 2; DELETE FROM log_chain WHERE shipment_id = 2", Problem::chain, 3},
        {"DELETE FROM log_chain WHERE kind = 'status' AND shipment_id = 3; UPDATE shipments SET status = 'PRINTED'"
         " WHERE id = 3",
         Problem::chain, 0},
        {"UPDATE log_chain SET hash = x'00' WHERE shipment_id = 4", Problem::chain, 4},
        {"UPDATE label_refunds SET word = 'REFUND PENDING'", Problem::changed, 2},
    };
    for (const Case &made : cases) {
        SCOPED_TRACE(made.script);
        const SealedLog sealed;
        sealed.run(made.script);
        const QList<LogChain::Finding> findings = sealed.verified().findings;
        EXPECT_TRUE(std::ranges::any_of(findings, [&made](const LogChain::Finding &finding) {
            return finding.problem == made.problem && finding.shipment == made.shipment;
        }));
    }
}

TEST(LogChain, AHeadThatWasKeptElsewhereShowsARewrittenChain)
{
    const SealedLog sealed;
    const LogChain::Head kept = sealed.head();
    sealed.run("DELETE FROM shipments WHERE id = 6; DROP TABLE log_chain; DELETE FROM sqlite_sequence");
    ShipmentLog rewritten(QDir(sealed.folder.path()));
    EXPECT_TRUE(rewritten.sealOlder());
    EXPECT_TRUE(rewritten.verify()->findings.isEmpty());
    EXPECT_FALSE(rewritten.verify({kept})->findings.isEmpty());
}

TEST(LogChain, SealsTheRowsOfAnOlderLogInPortions)
{
    const LogFile file;
    ShipmentLog(QDir(file.folder.path())).reload(); // makes the table
    file.run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 450)"
             " INSERT INTO shipments (created_at, recipient, zpl) SELECT i, 'Recipient ' || i, randomblob(50) FROM n");
    ShipmentLog log(QDir(file.folder.path()));
    EXPECT_TRUE(log.setStatus(7, u"SHIPPED"_s)); // before its row has an entry
    EXPECT_TRUE(log.insert(parcel(1)));
    EXPECT_TRUE(log.verify()->findings.isEmpty()) << "rows without an entry are no findings yet";
    EXPECT_TRUE(log.sealOlder());
    EXPECT_EQ(log.verify()->labels, 451);
    EXPECT_TRUE(log.verify()->findings.isEmpty());
    file.run("DELETE FROM log_chain WHERE shipment_id = 9; UPDATE shipments SET zpl = x'00' WHERE id = 8");
    EXPECT_FALSE(log.verify()->findings.isEmpty());

    const Progress canceled([] {
        CancelToken token;
        token.cancel();
        return token;
    }());
    EXPECT_TRUE(log.verify({}, canceled)->isCanceled);
}

} // namespace parcelory::test
