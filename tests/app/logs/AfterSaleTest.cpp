// Refunds, delivery status, export and master log: the real screens over the practice carrier.

#include "records/ShipmentStatus.h"
#include "support/AppTest.h"
#include "support/FaultyDisk.h"

namespace parcelory::test {
namespace {

class AfterSaleTest : public MailingLogDesk {
protected:
    KeysScreen keys{*app};
    MasterLogScreen master{*app, keys};

    ShipmentRecord row() { return log.records().value(0); }
    QString status() { return row().status; }
    /// A shipment in the log that was not bought here.
    ShipmentRecord labelOf(const QString &recipient, const QString &status = u"PRINTED"_s, int number = 1)
    {
        ShipmentRecord record = shipmentTo(recipient, number);
        record.transactionID = transactionId(number);
        record.tracking = u"9400"_s;
        record.status = status;
        record.postage = 7.4;
        return logged(record);
    }
    /// Asks for the outcome of the refunds, a minute after the last time.
    void sync()
    {
        clock.advance(61s);
        run(app->syncRefundStatuses());
    }
};

} // namespace

TEST_F(AfterSaleTest, ARefundEndsAsTheCarrierRespondsAndIsRequestedOnce)
{
    const QString approval = u" — USPS refunds take up to 14 days to approve."_s;
    prompts.answer = 1;
    int minute = 0;
    for (const Json &row : table(u"after-sale"_s, "refund answers")) {
        const QString outcome = text(row[2]);
        const ShipmentRecord record = labelOf(u"Ana"_s, u"PRINTED"_s, ++minute);
        answer("refunds", body(row[0]), row[1]);
        carrier.clearRequests();
        log.message = QString();
        // The log marks the refund before the request is sent, because the program may exit at any time.
        bool marked = false;
        QObject here;
        QObject::connect(&log, &MailingLogScreen::recordsChanged, &here,
                         [&] { marked = marked || status() == u"REFUND_PENDING"; });
        run(log.refund(record));
        EXPECT_TRUE(marked);
        EXPECT_EQ(status(), outcome);
        EXPECT_EQ(log.message.value(), text(row[3]));
        EXPECT_EQ(carrier.requests().size(), 1);
        run(log.refund(log.records().value(0)));
        const bool again = outcome != u"REFUNDED"; // after a failure, requests again; if pending, looks up the state
        EXPECT_EQ(carrier.requests().size(), again ? 2 : 1);
        if (outcome == u"REFUND_PENDING")
            EXPECT_EQ(carrier.requests().last().target, "/transactions/" + record.transactionID.toUtf8());
    }
    // The program exited after it had written only this mark.
    const ShipmentRecord marked = labelOf(u"Eve"_s, u"REFUND_PENDING"_s, ++minute);
    answer("transactions", R"({"object_id": "t9", "status": "REFUNDPENDING"})");
    run(log.refund(marked));
    EXPECT_EQ(log.message.value(), u"The carrier already has this refund"_s + approval);
    answer("transactions", R"({"object_id": "t9", "status": "SUCCESS"})");
    carrier.clearRequests();
    run(log.refund(marked));
    EXPECT_EQ(carrier.requests().last().target, "/refunds/") << "the carrier had not been asked";

    prompts.answer = 0;
    carrier.clearRequests();
    run(log.refund(labelOf(u"Ben"_s, u"PRINTED"_s, ++minute)));
    EXPECT_EQ(carrier.requests().size(), 0);
    EXPECT_EQ(status(), u"PRINTED"_s);
    EXPECT_TRUE(prompts.questions.last().text.contains(u"Ben"_s) && prompts.questions.last().text.contains(u"$7.40"_s));
}

TEST_F(AfterSaleTest, PollsAllRefundsInTurnOnceAMinuteAndFiftyAtATime)
{
    for (int number = 0; number < 51; ++number) {
        ShipmentRecord record = shipmentTo(u"Recipient %1"_s.arg(number), number);
        record.transactionID = u"t%1"_s.arg(number);
        record.createdAt = record.createdAt.addYears(number < 5 ? -2 : 0);
        record.status = number % 2 ? u"REFUND_REQUESTED"_s : u"REFUND_PENDING"_s;
        EXPECT_TRUE(app->log.insert(record, false));
    }
    carrier.clearRequests();
    answer("transactions", R"({"object_id": "t50", "status": "REFUNDED"})");
    run(app->syncRefundStatuses());
    run(app->syncRefundStatuses());
    EXPECT_EQ(carrier.requests().size(), 50);
    EXPECT_EQ(log.records().value(0).status, u"REFUNDED"_s);
    EXPECT_EQ(log.records().value(1).status, u"REFUND_REQUESTED"_s)
        << "a status that the carrier does not confirm stays";
    answer("transactions", R"({"object_id": "t0", "status": "REFUNDREJECTED"})");
    sync();
    EXPECT_EQ(carrier.requests().size(), 100);
    EXPECT_EQ(carrier.requests()[50].target, "/transactions/t0") << "the oldest row, which the first round left out";
    EXPECT_EQ(carrier.requests()[51].target, "/transactions/t49");
    EXPECT_EQ(log.records().last().status, u"REFUND_ERROR"_s);
}

TEST_F(AfterSaleTest, ATrackingStatusChangesTheLogOnlyOnDelivery)
{
    ShipmentRecord record = labelOf(u"Ana"_s);
    for (const Json &row : table(u"after-sale"_s, "tracking answers")) {
        record.carrier = text(row[0]);
        answer(bytes(row[1]), body(row[2]));
        run(log.checkStatus(record));
        EXPECT_EQ(log.message.value(), text(row[3]));
        EXPECT_EQ(status(), text(row[4]));
    }
    for (const QString &url : {u"file:///bin/sh"_s, u"ftp://tools.example.com/1"_s, u"https://tools.example.com/1"_s}) {
        record.trackingURL = url;
        run(log.trackOnline(record));
        EXPECT_EQ(desktop.opened, url.startsWith(u"https"_s) ? QStringList{url} : QStringList());
    }
}

TEST_F(AfterSaleTest, ARefundWhoseResponseIsLostIsResolvedByALookup)
{
    const std::pair<CarrierScenario, QString> rows[] = {
        {{.droppedPath = "refunds"}, u"REFUNDED"_s}, // refunded, but the response was lost
        {{.failNext = CarrierFailure{.pathPrefix = "refunds"}}, u"REFUND_ERROR"_s}};
    prompts.answer = 1;
    for (const auto &[scenario, settled] : rows) {
        const ShipmentRecord label = bought();
        carrier.setScenario(scenario);
        run(log.refund(label));
        EXPECT_EQ(status(), u"REFUND_ERROR"_s);
        carrier.setScenario({});
        EXPECT_EQ(app->journal.openRefunds().size(), 1);
        const qsizetype entries = errors->entries().size();
        sync();
        EXPECT_EQ(status(), settled);
        EXPECT_TRUE(app->journal.openRefunds().isEmpty());
        EXPECT_EQ(errors->entries().size(), entries) << "already reported";
    }
}

TEST_F(AfterSaleTest, TheRefundOfADeliveredParcelIsKeptAndAskedFor)
{
    const ShipmentRecord record = labelOf(u"Ana"_s, u"REFUND_PENDING"_s);
    answer("tracks/", R"({"tracking_status": {"status": "DELIVERED"}})");
    run(log.checkStatus(record));
    EXPECT_EQ(friendlyStatus(row()), u"Delivered — Refund pending (USPS: up to 14 days)"_s);
    EXPECT_EQ(refundBadge(refundState(row())), u"REFUND PENDING"_s);
    answer("transactions", R"({"object_id": "t", "status": "REFUNDPENDING"})");
    run(log.refund(row()));
    EXPECT_EQ(requestsTo("/refunds"), 0) << "it was requested before";
    EXPECT_TRUE(prompts.questions.isEmpty());
    answer("transactions", R"({"object_id": "t", "status": "REFUNDED"})");
    run(app->syncRefundStatuses());
    EXPECT_EQ(friendlyStatus(row()), u"Delivered — Refunded"_s);
    EXPECT_FALSE(MailingLogScreen::isRefundable(row()));
}

TEST_F(AfterSaleTest, AnAnswerGoesToItsLabelEvenIfARestoreGivesItAnotherId)
{
    const ShipmentRecord ana = labelOf(u"Ana"_s, u"REFUND_PENDING"_s, 1);
    std::ignore = labelOf(u"Ben"_s, u"PRINTED"_s, 2);
    const std::tuple<QByteArray, QByteArray, std::function<Task<>()>, QString> rows[] = {
        {"transactions", R"({"object_id": "t", "status": "REFUNDED"})", [this] { return app->syncRefundStatuses(); },
         u"REFUNDED"_s},
        {"tracks/", R"({"tracking_status": {"status": "DELIVERED"}})", [&] { return log.checkStatus(ana); },
         u"DELIVERED"_s},
    };
    for (const auto &[below, reply, work, expected] : rows) {
        carrier.clearRequests();
        carrier.setScenario(
            {.holdsAnswers = true, .failNext = CarrierFailure{below, 200, "application/json", reply, 1, ""}});
        Task<> task = work();
        runUntil([this] { return !carrier.requests().isEmpty(); });
        Database file(app->log.path());
        ASSERT_TRUE(file.exec("UPDATE shipments SET id = -id; UPDATE shipments SET id = id + 3"));
        carrier.setScenario({});
        runTask(std::move(task));
        Statement statuses(file, "SELECT status FROM shipments ORDER BY recipient");
        EXPECT_TRUE(statuses.step() && statuses.text(0) == expected) << statuses.text(0).toStdString();
        EXPECT_TRUE(statuses.step() && statuses.text(0) == u"PRINTED");
    }
}

TEST_F(AfterSaleTest, TheOutcomeOfAPendingRefundIsRecorded)
{
    const ShipmentRecord record = labelOf(u"Ana"_s, u"REFUND_PENDING"_s);
    answer("transactions", {}, 500);
    run(log.refund(record));
    EXPECT_EQ(status(), u"REFUND_PENDING"_s);
    answer("transactions", R"({"object_id": "t", "status": "REFUNDREJECTED"})");
    run(log.refund(record));
    EXPECT_EQ(status(), u"REFUND_ERROR"_s);
    EXPECT_EQ(errors->entries().value(0).detail, u"The carrier has refused the refund of Ana's label (9400)."_s);
    EXPECT_EQ(errors->entries().size(), 2);
}

TEST_F(AfterSaleTest, AnImportEndsWithASheetAboutWhatIsNotAsUsual)
{
    const QByteArray ana = mailLine("Ana"),
                     odd = "a\tb\n" + mailLine("Ben").replace("11/20/26", "soon").replace("9400", "7");
    prompts.file = path(u"log.txt"_s);
    for (const Json &row : table(u"after-sale"_s, "imports")) {
        saveBytes(prompts.file, row[0].get<bool>() ? ana + odd : ana);
        prompts.answer = row[1];
        prompts.alerts.clear();
        run(log.importCSV());
        EXPECT_EQ(log.message.value(), text(row[2]));
        EXPECT_EQ(prompts.alerts.value(0).second, text(row[3]));
    }
    EXPECT_EQ(prompts.questions.size(), 3) << "the first file is as usual";
    EXPECT_TRUE(prompts.questions.value(0).text.startsWith(u"1 shipment in log.txt has a tracking number"_s));
    EXPECT_EQ(log.records().size(), 3);
}

TEST_F(AfterSaleTest, ATrackingStatusCausesAWarningBeforeARefund)
{
    const ShipmentRecord label = bought();
    carrier.setScenario({.trackedAs = u"TRANSIT"_s});
    run(log.checkStatus(label));
    EXPECT_EQ(status(), u"PRINTED"_s);
    carrier.clearRequests();
    run(log.refund(label));
    EXPECT_TRUE(prompts.questions.last().text.contains(u"• This package is already on its way."_s));
    ShipmentRecord imported = label;
    imported.transactionID = u"1"_s;
    run(log.refund(imported));
    run(log.checkStatus(imported));
    EXPECT_EQ(requestsTo("/refunds") + requestsTo("/tracks") + requestsTo("/transactions/"), 0);
}

TEST_F(AfterSaleTest, TheWholeLogIsExportedAndImportedAgain)
{
    logged(shipmentTo(u"Ana"_s, 1));
    prompts.file = path(u"out.csv"_s);
    run(log.exportCSV());
    EXPECT_EQ(log.message.value(), u"Exported to out.csv"_s);
    EXPECT_EQ(prompts.fileQuestions.last(), (std::pair{u"Export Mail Log"_s, u"Mail Log Export.csv"_s}));
    run(log.importCSV());
    EXPECT_EQ(log.records().size(), 2);

    const QByteArray before = contentsOf(prompts.file);
    Task<> exporting;
    {
        const HeldPool held;
        exporting = log.exportCSV();
        log.cancel();
    }
    run(std::move(exporting));
    EXPECT_EQ(log.message.value(), u"Export canceled."_s);
    EXPECT_EQ(contentsOf(prompts.file), before);

    prompts.file = QString(); // the clerk cancels
    log.message = QString();
    run(log.exportCSV());
    EXPECT_EQ(log.message.value(), QString());
}

TEST_F(AfterSaleTest, NothingIsRequestedUnlessItIsNotedAndStillTrue)
{
    prompts.answer = 1;
    bought();
    Database file(path(u"mailing_log.sqlite"_s));
    for (const QByteArray &change : {"id = id + 1", "status = 'REFUND_ERROR'"}) { // another program
        prompts.whileAsked = [&] { EXPECT_TRUE(file.exec(("UPDATE shipments SET " + change).constData())); };
        run(log.refund(row()));
        prompts.whileAsked = {};
        EXPECT_EQ(log.message.value(), u"The status of this shipment has just changed. No refund was requested."_s);
    }
    EXPECT_TRUE(file.exec("CREATE TRIGGER refuse BEFORE UPDATE ON shipments BEGIN SELECT RAISE(ABORT, 'full'); END"));
    run(log.refund(log.records().value(0)));
    EXPECT_EQ(log.message.value(), u"The mailing log could not be written — full. No refund was requested."_s);
    EXPECT_TRUE(sent("/refunds/").isEmpty() && app->journal.openRefunds().isEmpty());
}

TEST_F(AfterSaleTest, ARefundMayStillArriveAndIsNotSettledTwice)
{
    const ShipmentRecord label = bought();
    clock.advance(std::chrono::seconds(62));
    checkAgain(); // for second labels: it must not take the answers below
    const auto openAfterSync = [&] {
        answer("transactions", R"({"object_id": "t", "status": "SUCCESS"})");
        sync();
        return app->journal.openRefunds().size();
    };
    app->journal.beginRefund({label.transactionID, label.id, clock.now().addSecs(60)});
    EXPECT_EQ(openAfterSync(), 1) << "the request may still arrive";
    app->refundsUnderWay.insert(label.transactionID);
    EXPECT_EQ(openAfterSync(), 1) << "the screen waits for its answer";
    app->refundsUnderWay.remove(label.transactionID);
    EXPECT_EQ(openAfterSync(), 0);
}

TEST_F(AfterSaleTest, WhatCannotBeReadOrWrittenIsSaid)
{
    emit app->log.readingFailed(u"busy"_s);
    EXPECT_EQ(log.message.value(), u"busy The list may be out of date. Parcelory keeps trying."_s);
    desktop.clipboard = u"kept"_s;
    log.copyTracking({});
    const QString before = log.message;
    run(log.reprintCustoms(shipmentTo(u"Ana"_s)));
    EXPECT_EQ(log.message.value(), before) << "a domestic parcel has no papers";
    EXPECT_EQ(desktop.clipboard, u"kept"_s);
    EXPECT_TRUE(processes.calls().isEmpty());

    {
        const FullDisk disk(1024);
        EXPECT_THROW(saveBytes(path(u"full.csv"_s), QByteArray(5000, 'x')), AppError);
    }
    EXPECT_FALSE(QFile::exists(path(u"full.csv"_s)));
    for (const mode_t mask : {0022, 0077}) { // an export is for other people, too, if the clerk's umask says so
        const QString exported = path(u"for-%1.csv"_s.arg(mask));
        const mode_t usualMask = ::umask(mask);
        saveBytes(exported, "rows");
        ::umask(usualMask);
        struct stat facts{};
        ASSERT_EQ(::stat(QFile::encodeName(exported).constData(), &facts), 0);
        EXPECT_EQ(facts.st_mode & 0777, 0666 & ~mask);
    }

    EXPECT_TRUE(Database(path(u"mailing_log.sqlite"_s)).exec("DROP TABLE shipments"));
    prompts.file = path(u"out.csv"_s);
    run(log.exportCSV());
    EXPECT_TRUE(errors->entries().first().detail.startsWith(u"The mailing log could not be read"_s))
        << errors->entries().first().detail.toStdString();
    EXPECT_FALSE(QFile::exists(prompts.file));
}

TEST_F(AfterSaleTest, TheMasterLogShowsOnlyTheDaysAndTheAccountThatWereAskedFor)
{
    carrier.seedHistory(3, clock.now(), 1h);
    EXPECT_EQ(master.from.value(), clock.now().date().addDays(-14));
    run(master.load());
    const auto entries = master.entries.value();
    EXPECT_EQ(entries.size(), 3);
    carrier.setScenario({.holdsAnswers = true});
    Task<> loading = master.load();
    master.from = master.to.value().addDays(1);
    carrier.setScenario({});
    run(std::move(loading));
    EXPECT_FALSE(master.loaded.value());
    run(master.load());
    EXPECT_EQ(master.message.value(), u"The From date is after the To date."_s);
    EXPECT_EQ(master.entries.value(), entries);
    app->keyChanges = app->keyChanges + 1;
    EXPECT_TRUE(master.entries.value().isEmpty()) << "the new key may belong to another account";
}

TEST_F(AfterSaleTest, TheMasterLogCountsWhatWasPaidAndExportsWhatItShows)
{
    carrier.seedHistory(3, clock.now(), 1h);
    run(master.load());
    ASSERT_EQ(master.entries.value().size(), 3) << master.message.value().toStdString();
    const double paid = master.entries.value()[1].amount + master.entries.value()[2].amount;
    auto entries = master.entries.value();
    entries[0].status = u"REFUNDED"_s;
    entries[0].recipient = u"Al \"Ace\" Ng, Jr."_s;
    master.entries = entries;
    EXPECT_EQ(master.summaryLine(), u"2 shipments • $%1 postage"_s.arg(paid, 0, 'f', 2));
    master.selected = entries[0].id;
    EXPECT_TRUE(master.selectedEntry());
    master.search = u"no such name"_s;
    EXPECT_FALSE(master.selectedEntry()) << "nothing acts on a row that is not shown";
    master.search = QString();

    prompts.file = path(u"master.csv"_s);
    run(master.exportCSV());
    EXPECT_EQ(master.message.value(), u"Exported 3 rows to master.csv"_s);
    EXPECT_EQ(prompts.fileQuestions.last().second,
              u"Parcelory Master Log %1.csv"_s.arg(clock.now().date().toString(Qt::ISODate)));
    const QList<QByteArray> lines = contentsOf(prompts.file).split('\n');
    EXPECT_EQ(lines.size(), 5);
    EXPECT_EQ(lines[0], "Date,Time,Recipient,Company,City/State,Country,Service,Postage,Tracking,Status,Test");
    EXPECT_TRUE(lines[1].contains(R"(,"Al ""Ace"" Ng, Jr.",)")) << lines[1].toStdString();
    EXPECT_TRUE(lines[1].endsWith(R"(,"Refunded","TEST")")) << lines[1].toStdString();

    answer("shipments", {}, 500);
    run(master.load());
    EXPECT_EQ(master.entries.value(), entries) << "a failed load keeps the list";
    EXPECT_TRUE(master.isFailure && !master.message.value().isEmpty());
}

} // namespace parcelory::test
