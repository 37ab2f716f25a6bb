#include "ClientTest.h"
#include "carrier/MasterEntry.h"
#include "carrier/PagedList.h"

namespace parcelory::test {
namespace {

class PostSaleTest : public ClientTest {
protected:
    QString manifestOutcome(const QString &account)
    {
        QString status = u"no status"_s;
        const QString failure = failureOf([&] {
            status = run(client.createManifest(account, deskAddress(), desk.clock.now())).status.value_or(status);
        });
        return failure == u"no failure"_s ? status : failure;
    }
    void answerManifest(const QByteArray &body, int times = 1)
    {
        desk.carrier.setScenario(answering("manifests", 201, body, {}, times));
    }
    /// Its entry in the master log of one day.
    MasterEntry entryOf(const ShippoTransaction &bought)
    {
        const QDateTime start = QDate(2026, 11, 20).startOfDay();
        return masterEntries({bought}, {}, start, start.addDays(1)).value(0);
    }
};

} // namespace

TEST_F(PostSaleTest, WaitsForAScanFormAndSaysWhatBecameOfIt)
{
    // What the carrier answers is given word by word: these states are its own.
    for (const Json &row : table(u"carrier-errors"_s, "SCAN form states")) {
        answerManifest(body(row[0]));
        EXPECT_EQ(manifestOutcome(u"account"_s), text(row[1]));
    }
    answerManifest(R"({"object_id": "m", "status": "WAITING"})");
    EXPECT_THROW(run(client.createManifest(u"account"_s, deskAddress(), desk.clock.now())), Unconfirmed)
        << "the form may be made, only its state is unknown";
    const auto before = desk.clock.elapsed();
    desk.carrier.clearRequests();
    answerManifest(R"({"object_id": "m", "status": "QUEUED"})", 11);
    EXPECT_EQ(manifestOutcome(u"account"_s),
              u"Shippo is still generating the SCAN form (status: QUEUED). Try again in a minute."_s);
    EXPECT_EQ(desk.clock.elapsed() - before, 15s);
    EXPECT_EQ(desk.carrier.requests().size(), 11);
    const Json sent = desk.sent("/manifests/").first();
    EXPECT_EQ(sent["carrier_account"], "account");
    EXPECT_EQ(sent["async"], false);
    EXPECT_TRUE(QString::fromStdString(sent["shipment_date"]).endsWith(u'Z'));
}

TEST_F(PostSaleTest, AsksForTheVeryNumberWhateverStandsInIt)
{
    EXPECT_THROW(run(client.track(u"usps"_s, u"92 1/../x?y#z"_s)), AppError);
    EXPECT_EQ(desk.carrier.requests().last().target, "/tracks/usps/92%201%2F..%2Fx%3Fy%23z");
    EXPECT_EQ(run(client.track(u"shippo"_s, u"SHIPPO_DELIVERED"_s)).trackingStatus->status, u"DELIVERED"_s);
}

TEST_F(PostSaleTest, ListsTheLabelsOfTheDaysAskedForNewestFirst)
{
    const QDateTime noon(QDate(2025, 6, 17), QTime(12, 0)); // a day of 24 hours, whatever the zone
    desk.carrier.seedHistory(250, noon, 20min);
    int pages = 0;
    const auto listing = std::make_shared<Listing>();
    listing->onPage = [&] { ++pages; };
    const QDate day = noon.date();
    const QList<MasterEntry> entries = run(client.masterLog(day, day, listing));
    EXPECT_EQ(entries.size(), 37); // every 20 minutes from midnight to noon
    EXPECT_EQ(pages, 2) << "one page of each listing reaches back before the day";
    EXPECT_EQ(entries.first().recipient, u"Harriet Ashcombe"_s);
    EXPECT_EQ(entries.first().place, u"Reno, NV"_s);
    EXPECT_EQ(entries.first().company, u"—"_s);
    EXPECT_EQ(entries.first().service, u"UPS Next Day Air®"_s);
    EXPECT_GT(entries.first().amount, 0);
    EXPECT_TRUE(entries.first().test && std::ranges::is_sorted(entries, std::ranges::greater{}, &MasterEntry::date));
}

TEST_F(PostSaleTest, TakesFromThePurchaseTagWhatTheHistoryNoLongerHolds)
{
    const QString inside = QDateTime(QDate(2026, 11, 20), QTime(12, 0)).toUTC().toString(Qt::ISODateWithMs);
    ShippoTransaction bought{.objectId = u"t"_s, .status = u"SUCCESS"_s, .rate = u"gone"_s, .objectCreated = inside};
    MasterEntry entry = entryOf(bought);
    EXPECT_EQ(entry.recipient + entry.service + entry.country, u"—Unknown"_s);
    bought.metadata = u"KX|gb|Harriet Ashcombe|FedEx International Priority|97301"_s;
    entry = entryOf(bought);
    EXPECT_EQ(entry.recipient + entry.service + entry.country, u"Harriet AshcombeFedEx International PriorityGB"_s);
    for (const QString &created : {u"2026-11-18T18:00:00Z"_s, u"soon"_s})
        EXPECT_EQ(entryOf({.objectId = u"t"_s, .status = u"SUCCESS"_s, .objectCreated = created}).id, QString());
    bought.status = u"ERROR"_s;
    EXPECT_EQ(entryOf(bought).id, QString());
}

/// The pages of the account's lists, as foreign records and a busy carrier make them.
TEST_F(PostSaleTest, TheMasterLogSurvivesForeignRecordsAndABusyCarrier)
{
    const QDate today = desk.clock.now().date();
    QList<std::chrono::seconds> waits;
    const auto read = [&] {
        const auto listing = std::make_shared<Listing>();
        listing->onWait = [&waits](std::chrono::seconds pause) { waits += pause; };
        return run(client.masterLog(today, today, listing));
    };
    const auto answer = [&](const QByteArray &path, int status, const QByteArray &body) {
        desk.carrier.setScenario(answering(path, status, body, "GET"));
    };
    // Bought by another program in a single call: the rate is an object. The link to the next page names another port.
    answer(
        "transactions", 200,
        R"({"next": "http://127.0.0.1:1/transactions?results=100", "results": [{"object_id": "t", "status": "SUCCESS",)"
        R"("object_created": ")" +
            today.startOfDay().addSecs(60).toUTC().toString(Qt::ISODate).toUtf8() +
            R"(", "rate": {"object_id": "r", "amount": "7.25", "provider": "UPS",)"
            R"("servicelevel": {"name": "Ground"}}}]})");
    const QList<MasterEntry> entries = read();
    ASSERT_EQ(entries.size(), 1);
    EXPECT_EQ(entries.first().service, u"UPS Ground"_s);
    EXPECT_EQ(entries.first().amount, 7.25);

    answer("shipments", 429, "slow down");
    desk.carrier.clearRequests();
    EXPECT_NO_THROW(read());
    EXPECT_EQ(waits, QList{30s});
    EXPECT_EQ(desk.carrier.requests().size(), 3) << "only the refused page is asked for again";

    waits.clear();
    // The carrier names its own time, which is the real one.
    desk.clock.start = QDateTime::currentDateTime().addMSecs(-desk.clock.elapsed().count());
    desk.carrier.setScenario({.rateLimitAfterListReads = 0}); // names the time when it takes requests again: in 60 s
    EXPECT_THAT([&] { read(); }, testing::Throws<ShippoError>(testing::Property(&ShippoError::isRateLimit, true)));
    ASSERT_FALSE(waits.isEmpty());
    EXPECT_GE(waits.first(), 59s);
    EXPECT_LE(waits.first(), 91s);

    answer("shipments", 500, "down");
    EXPECT_THAT([&] { read(); }, testing::Throws<ShippoError>(testing::Property(&ShippoError::status, 500)));
}

TEST_F(PostSaleTest, ADamagedFormOfAnotherDeskHidesNoOther)
{
    desk.carrier.setScenario(answering("manifests", 200, R"({"results": [{"status": 7}, {"object_id": "m"}]})"));
    const QList<ShippoManifest> forms = run(client.newestManifests());
    ASSERT_EQ(forms.size(), 1);
    EXPECT_EQ(forms.first().objectId, u"m"_s);
}

} // namespace parcelory::test
