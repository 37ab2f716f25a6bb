#include "app/logs/TrackPage.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class MailingLogScreenTest : public MailingLogDesk {
protected:
    qsizetype printed() const { return printJobs(processes); }
    void lpstatSays(const QByteArray &text)
    {
        processes.behave = [text](const QString &program, const QStringList &) {
            return ProcessOutcome{0, program.endsWith(u"lpstat"_s) ? text : QByteArray(), {}};
        };
    }
};

} // namespace

TEST_F(MailingLogScreenTest, TheListMatchesTheSearchThroughEveryReload)
{
    QList<QStringList> lists;
    QObject here; // disconnects late signals from the test's variables
    QObject::connect(&log, &MailingLogScreen::recordsChanged, &here,
                     [&] { lists += each(log.records(), &ShipmentRecord::recipient); });
    int queries = 0;
    QObject::connect(&app->log, &ShipmentLog::recordsChanged, &here, [&] { ++queries; });
    const auto waitFor = [&](const QStringList &names) {
        runUntil([&] { return !lists.isEmpty(); });
        EXPECT_EQ(lists, QList<QStringList>{names}) << "no other list may appear in between";
        lists.clear();
    };
    EXPECT_TRUE(app->log.insert(shipmentTo(u"Ana"_s, 1), false) && app->log.insert(shipmentTo(u"Ben"_s, 2)));
    waitFor({u"Ben"_s, u"Ana"_s});
    EXPECT_EQ(log.countText(), u"2 shipments"_s);
    const qint64 ben = log.records()[0].id, ana = log.records()[1].id;

    log.selected = ben;
    queries = 0;
    for (const QString &typed : {u"B"_s, u""_s, u"a"_s, u"an"_s, u"ana"_s})
        log.search = typed;
    waitFor({u"Ana"_s});
    EXPECT_LE(queries, 2) << "one query for the first letter, one for the last text";
    EXPECT_EQ(log.countText(), u"1 shipment found"_s);
    EXPECT_FALSE(log.selected.value()) << "a hidden row must not stay selected";

    log.selected = ana;
    EXPECT_TRUE(app->log.insert(shipmentTo(u"Zoe"_s, 3), false) && app->log.insert(shipmentTo(u"Anabel"_s, 4)));
    waitFor({u"Anabel"_s, u"Ana"_s});
    EXPECT_EQ(log.selectedRecord()->recipient, u"Ana"_s);
    log.search = QString();
    waitFor({u"Anabel"_s, u"Zoe"_s, u"Ben"_s, u"Ana"_s});

    ShipmentRecord zoe = shipmentTo(u"Zoe"_s, 5);
    zoe.transactionID = transactionId(5);
    EXPECT_TRUE(app->log.insert(zoe));
    waitFor({u"Zoe"_s, u"Anabel"_s, u"Zoe"_s, u"Ben"_s, u"Ana"_s});
    log.search = u"ana"_s;
    waitFor({u"Anabel"_s, u"Ana"_s});
    log.selected = std::nullopt;
    emit app->labelLogged(zoe.transactionID); // is selected as soon as it is listed
    log.selected = ana;
    log.search = QString();
    waitFor({u"Zoe"_s, u"Anabel"_s, u"Zoe"_s, u"Ben"_s, u"Ana"_s});
    EXPECT_EQ(log.selected.value(), ana) << "the clerk has chosen a row since";
}

TEST_F(MailingLogScreenTest, ReprintsFromTheNearestCopyOfTheLabel)
{
    const ShipmentRecord row = bought();
    const QByteArray label = **app->log.zpl(row.id);
    prompts.answer = 1;
    checkLater(); // for second labels: it sends a request
    const size_t requests = carrier.requests().size();
    ShipmentRecord carried = row, bare = row;
    carried.zpl = "^XA^FDcarried^FS^XZ";
    carried.id = bare.id = 0;
    Database file(path(u"mailing_log.sqlite"_s));
    const QByteArray move = "UPDATE shipments SET id = id + 1; INSERT INTO shipments (id, created_at, zpl)"
                            " VALUES (1, 0, '^XA^FDanother^FS^XZ')"; // as after a restore
    const std::tuple<const char *, ShipmentRecord, QByteArray, size_t, QByteArray> cases[] = {
        {"kept in the log", row, label, 0, ""},
        {"carried by the record", carried, *carried.zpl, 0, ""},
        {"kept in the log under another id", row, label, 0, move},
        {"nowhere but at the carrier", bare, label, 1, "UPDATE shipments SET zpl = NULL"}};
    for (const auto &[what, record, bytes, downloads, change] : cases) {
        EXPECT_TRUE(file.exec(change.constData()));
        run(log.reprint(record));
        EXPECT_EQ(log.message.value(), u"Label sent to ZD421."_s) << what;
        EXPECT_EQ(processes.lastPrinted(), Zpl::rotated(bytes)) << what;
        EXPECT_EQ(size_t(carrier.requests().size()), requests + downloads) << what;
    }
    EXPECT_EQ(printed(), 5);
    QSemaphore paper;
    processes.behave = [&paper](const QString &program, const QStringList &) {
        if (program.endsWith(u"/lpr"_s))
            paper.acquire();
        return ProcessOutcome{};
    };
    Task<> first = log.reprint(row);
    run(log.reprint(row));
    paper.release();
    run(std::move(first));
    EXPECT_EQ(printed(), 6) << "a second press during printing prints no second label";
    EXPECT_TRUE(app->errors.entries().isEmpty());
}

TEST_F(MailingLogScreenTest, OnlyTheSecondReprintOfALabelAsks)
{
    const ShipmentRecord row = bought();
    run(screen().last.reprint());
    EXPECT_EQ(printed(), 2);
    EXPECT_TRUE(prompts.questions.isEmpty());
    run(log.reprint(row)); // the clerk cancels
    EXPECT_EQ(printed(), 2);
    EXPECT_TRUE(prompts.questions.value(0).text.contains(u"This label was reprinted on "_s));
    EXPECT_EQ(log.message.value(), QString());
    prompts.answer = 1;
    run(log.reprint(row));
    run(screen().last.reprint());
    EXPECT_EQ(printed(), 4);
    EXPECT_TRUE(prompts.questions.last().text.contains(u"This label was reprinted 2 times, last on "_s));

    EXPECT_TRUE(app->log.setStatus(row, u"REFUNDED"_s)); // by another desk; the list still shows PRINTED
    prompts.answer = 0;
    run(log.reprint(row));
    EXPECT_TRUE(prompts.questions.last().text.contains(u"This label was refunded"_s));
    EXPECT_EQ(printed(), 4);
}

TEST_F(MailingLogScreenTest, AReprintAsksWhileTheLabelMayStillComeOut)
{
    const ShipmentRecord row = bought();
    lpstatSays("printer ZD421 now printing ZD421-1.  enabled since today\n"
               "ZD421-1   DESK   1024   Sat Nov 21 17:13:41 2026\n");
    run(log.reprint(row));
    ASSERT_EQ(prompts.questions.size(), 1);
    EXPECT_TRUE(prompts.questions[0].text.contains(u"1 label is still waiting on ZD421"_s));
    EXPECT_EQ(printed(), 1) << "the clerk canceled";
}

TEST_F(MailingLogScreenTest, AFailedReprintIsShownAndPrintsNothing)
{
    const ShipmentRecord row = bought();
    ShipmentRecord bare = row, lost = row;
    bare.id = 0;
    lost.id = 999;
    bare.transactionID = lost.transactionID = u"unlogged"_s;
    lost.labelURL = QString();
    // queue: lpstat's output
    const std::tuple<ShipmentRecord, LabelAnswer, const char *, QString, bool> cases[] = {
        {row, LabelAnswer::normal, "printer ZD421 disabled", u"The Zebra queue “ZD421” is PAUSED"_s, false},
        {bare, LabelAnswer::expired, "", u"Shippo HTTP 403: label download"_s, true},
        {bare, LabelAnswer::html, "", u"The carrier's file is not a label."_s, true},
        {bare, LabelAnswer::truncated, "", u"The label arrived incomplete"_s, true},
        {bare, LabelAnswer::brokenOff, "", QString(), true},
        {lost, LabelAnswer::normal, "", u"No copy of this label is stored"_s, false},
    };
    qsizetype alerts = 0;
    for (const auto &[record, link, queue, message, alert] : cases) {
        carrier.setScenario({.labelAnswer = link});
        lpstatSays(queue);
        run(log.reprint(record));
        EXPECT_TRUE(log.message.value().startsWith(message)) << log.message.value().toStdString();
        EXPECT_FALSE(log.message.value().isEmpty() || log.busy || !log.isFailure);
        EXPECT_EQ(prompts.alerts.size(), alerts += alert) << message.toStdString();
    }
    EXPECT_EQ(printed(), 1) << "only the purchase printed";
}

TEST_F(MailingLogScreenTest, TracksImportedRowsOfAKnownCarrier)
{
    for (const Json &row : table(u"after-sale"_s, "tracking pages"))
        EXPECT_EQ(trackingPageOf({.carrier = text(row[0]), .tracking = text(row[1])}), text(row[2]));
    EXPECT_EQ(trackingPageOf({.tracking = u"1"_s, .trackingURL = u"https://example.com/1"_s}),
              u"https://example.com/1"_s);
}

} // namespace parcelory::test
