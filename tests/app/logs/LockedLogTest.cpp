// Another program holds a lock of the mailing log for a while during each operation: every message is true, the clerk
// waits for it once, and nothing is lost.

#include "support/AppTest.h"
#include "support/WaitingRoom.h"

namespace parcelory::test {
namespace {

struct Lock {
    const char *name;
    const char *script;
    bool stopsReads = false;
};
constexpr Lock locks[] = {{"shared", "BEGIN"}, {"reserved", "BEGIN IMMEDIATE"}, {"exclusive", "BEGIN EXCLUSIVE", true}};
constexpr int seconds[] = {1, 4, 6, 30};

class LockedLogTest : protected WaitingRoom, public MailingLogDesk {
protected:
    Database other{platform.dataFolder.filePath(u"mailing_log.sqlite"_s)};
    int labels = 0, imported = 0;

    void hold(const Lock &lock, int secondsHeld)
    {
        // Waiting takes no time here, so a read of the program that is still under way refuses the lock at once.
        runUntil([&] { return other.exec(lock.script); });
        EXPECT_TRUE(Statement(other, "SELECT 1 FROM sqlite_master").step()); // a transaction locks at its first read
        WaitingRoom::expect(secondsHeld * 1000000, [this] { EXPECT_TRUE(other.exec("ROLLBACK")); });
    }
    void letGo()
    {
        WaitingRoom::expect(0, {});
        Statement(other, "ROLLBACK").execute(); // fails if the lock is released already
        settle();
    }
    /// A label in the log, bought just now.
    ShipmentRecord label(const QString &status = u"PRINTED"_s)
    {
        ShipmentRecord record = shipmentTo(u"Ana"_s);
        record.createdAt = clock.now();
        record.transactionID = transactionId(++labels);
        record.tracking = u"9400%1"_s.arg(labels);
        record.testMode = true;
        record.isIntl = true;
        record.status = status;
        record.zpl = "^XA^FDx^FS^XZ";
        record.customsPDF = "%PDF-1.4\n%%EOF\n";
        return logged(record);
    }
    ShipmentRecord row(const ShipmentRecord &record) { return app->log.find(record)->value(); }
};

} // namespace

TEST_F(LockedLogTest, EveryMessageIsTrueAndNothingIsLost)
{
    struct Operation {
        const char *name;
        bool writes;
        std::function<Task<>(ShipmentRecord)> run;
        QString success;
        /// What must hold of the row afterwards; `done`: the operation was not stopped by the lock.
        std::function<void(const ShipmentRecord &row, bool done)> check;
    };
    const auto unchanged = [](const ShipmentRecord &row, bool) { EXPECT_EQ(row.status, u"PRINTED"_s); };
    prompts.file = path(u"log.txt"_s);
    const Operation operations[] = {
        {"reprint", true, [this](auto record) { return log.reprint(record); }, u"Label sent to ZD421."_s,
         [this](const ShipmentRecord &row, bool done) { EXPECT_EQ(app->labelHistory.of(row.id)->reprints, done); }},
        {"customs", false, [this](auto record) { return log.reprintCustoms(record); },
         u"Customs docs opened in Preview — set a document printer in Settings."_s, unchanged},
        {"check status", true,
         [this](auto record) {
             answer("tracks/", R"({"tracking_status": {"status": "DELIVERED", "status_details": "Porch"}})");
             return log.checkStatus(record);
         },
         u"DELIVERED: Porch"_s,
         [this](const ShipmentRecord &row, bool done) {
             EXPECT_EQ(row.status, done ? u"DELIVERED"_s : u"PRINTED"_s);
             EXPECT_THAT(log.message.value().toStdString(), StartsWith("DELIVERED: Porch"));
         }},
        {"refund", true,
         [this](auto record) {
             answer("refunds", R"({"status": "SUCCESS"})");
             return log.refund(record);
         },
         u"Refunded."_s,
         [this](const ShipmentRecord &row, bool done) {
             EXPECT_EQ(row.status, done ? u"REFUNDED"_s : u"PRINTED"_s);
             EXPECT_EQ(requestsTo("/refunds"), done);
             EXPECT_TRUE(app->journal.openRefunds().isEmpty());
             if (!done)
                 EXPECT_THAT(log.message.value().toStdString(), HasSubstr("No refund was requested."));
         }},
        {"export", false, [this](auto) { return log.exportCSV(); }, u"Exported to log.txt"_s, unchanged},
        {"import", true,
         [this](auto) {
             saveBytes(path(u"log.txt"_s), mailLine("Imported").replace("9400", ""));
             return log.importCSV();
         },
         u"Imported 1 shipments from log.txt"_s,
         [this](const ShipmentRecord &, bool done) {
             Statement count(other, "SELECT count(*) FROM shipments WHERE recipient = 'Imported'");
             EXPECT_TRUE(count.step());
             EXPECT_EQ(count.integer(0), imported += done);
         }},
    };
    for (const Operation &operation : operations) {
        for (const Lock &lock : locks) {
            for (const int held : seconds) {
                SCOPED_TRACE(std::string(operation.name) + ", " + lock.name + ", " + std::to_string(held) + " s");
                const ShipmentRecord record = label();
                carrier.setScenario({});
                carrier.clearRequests();
                errors->clear();
                prompts.answer = 1;
                log.message = QString();
                hold(lock, held);
                run(operation.run(record));
                const int waited = WaitingRoom::waited;
                letGo();
                const QString message = log.message;
                const bool isStopped = held > 5 && (lock.stopsReads || operation.writes);
                EXPECT_LT(waited, 5500000);
                EXPECT_GE(waited, operation.writes || lock.stopsReads ? std::min(held, 4) * 1000000 : 0);
                if (!isStopped)
                    EXPECT_EQ(message, operation.success);
                else
                    EXPECT_THAT(message.toStdString(), HasSubstr("another program has it open"));
                EXPECT_EQ(errors->entries().size(), isStopped ? 1 : 0) << "recorded for support";
                operation.check(row(record), !isStopped);
            }
        }
    }
}

TEST_F(LockedLogTest, ADamagedLogIsToldAtTheStartAndALockedOneIsNot)
{
    hold(locks[2], 30);
    run(log.tellTrouble());
    letGo();
    run(log.tellTrouble());
    EXPECT_TRUE(prompts.alerts.isEmpty());
    QFile file(path(u"mailing_log.sqlite"_s));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.write(QByteArray(200, 'j')) == 200 && file.flush());
    run(log.tellTrouble());
    ASSERT_EQ(prompts.alerts.size(), 1);
    EXPECT_THAT(prompts.alerts[0].second.toStdString(), testing::AllOf(StartsWith("The mailing log cannot be used — "),
                                                                       HasSubstr("What to do: quit Parcelory")));
    EXPECT_EQ(errors->entries().value(0).context, u"Mailing Log"_s);
}

TEST_F(LockedLogTest, TheListTellsWhyItIsOldAndRecoversByItself)
{
    const ShipmentRecord record = label();
    hold(locks[2], 30);
    log.search = u"Ana"_s;
    runUntil([&] { return !log.readFailure.value().isEmpty(); });
    EXPECT_THAT(log.message.value().toStdString(), HasSubstr("another program has it open (database is locked)"));
    EXPECT_EQ(log.records().size(), 1) << "the list is unchanged";
    workPool().waitForDone();
    letGo();
    clock.advance(10s);
    runUntil([&] { return log.readFailure.value().isEmpty(); });
    EXPECT_EQ(log.message.value(), QString());
    EXPECT_EQ(log.countText(), u"1 shipment found"_s);
}

TEST_F(LockedLogTest, AScanFormIsNotDeniedBecauseTheLogIsLocked)
{
    label();
    hold(locks[2], 30);
    run(app->createScanForm(deskAddress()));
    EXPECT_LT(WaitingRoom::waited, 5500000);
    EXPECT_THAT(app->scanFormStatus.value().toStdString(), HasSubstr("another program has it open"));
    EXPECT_TRUE(prompts.alerts.isEmpty());
    settle();
    EXPECT_EQ(errors->entries().value(0).context, u"SCAN Form"_s);
    EXPECT_EQ(requestsTo("/manifests"), 0);
}

TEST_F(LockedLogTest, ASecondLabelIsNotBoughtUnseen)
{
    bought();
    composeAndRate(homeAddress());
    settlePool(); // the check that follows the rates
    carrier.clearRequests();
    hold(locks[2], 30);
    pressBuy();
    EXPECT_EQ(screen().secondLabel.value(),
              u"The mailing log can't be read, so Parcelory can't check for an earlier label."_s);
    EXPECT_TRUE(sent("/transactions/").isEmpty());
    letGo();
    EXPECT_EQ(app->log.records().size(), 1);
}

TEST_F(LockedLogTest, ALostRefundIsForgottenOnlyWhenTheLogHasItsOutcome)
{
    const ShipmentRecord record = bought();
    prompts.answer = 1;
    carrier.setScenario({.droppedPath = "refunds"});
    run(log.refund(record));
    EXPECT_EQ(row(record).status, u"REFUND_ERROR"_s);
    carrier.setScenario({});
    for (const Lock &lock : locks) {
        clock.advance(61s);
        hold(lock, 30);
        run(app->syncRefundStatuses());
        letGo();
        EXPECT_EQ(app->journal.openRefunds().size(), 1) << lock.name;
        EXPECT_EQ(row(record).status, u"REFUND_ERROR"_s) << lock.name;
    }
    clock.advance(61s);
    run(app->syncRefundStatuses());
    EXPECT_EQ(row(record).status, u"REFUNDED"_s);
    EXPECT_TRUE(app->journal.openRefunds().isEmpty());
}

} // namespace parcelory::test
