#include "app/purchase/PurchaseLookup.h"
// What a lookup at the carrier tells about a purchase, and what follows from it.

#include "compose/Customs.h"
#include "core/Sqlite.h"
#include "core/Task.h"
#include "core/ports/ProcessRunner.h"
#include "practice/carrier/CarrierScenario.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class PurchaseLookupTest : public testing::Test, public LabelDesk {
protected:
    Purchases &purchases() { return screen().purchases; }
    /// The list of transactions answers this from now on.
    void listAnswers(int status, const QByteArray &body, bool isHeld = false)
    {
        CarrierScenario scenario{.holdsAnswers = isHeld};
        scenario.failNext = CarrierFailure{"transactions", status, "application/json", body, 1000, "GET"};
        carrier.setScenario(scenario);
    }
    void check()
    {
        runUntil([this] { return !purchases().checking; }); // a check may have started by itself
        run(purchases().checkAgain());
        runUntil([this] { return !purchases().checking; });
        settle();
    }
    /// A label is sold, but no answer arrives, so its purchase stays unresolved.
    OpenPurchase lose()
    {
        composeAndRate(homeAddress());
        carrier.setScenario({.dropConnection = true});
        pressBuy();
        runUntil([this] { return !purchases().checking; });
        EXPECT_EQ(purchases().unresolved.value().size(), 1) << banner().toStdString();
        return purchases().unresolved.value().value(0).purchase;
    }
    void changeLog(const char *sql) { EXPECT_TRUE(Database(path(u"mailing_log.sqlite"_s)).exec(sql)); }
};

} // namespace

TEST_F(PurchaseLookupTest, OnlyAListThatAnswersTellsAndOnlyLaterThatNothingWasBought)
{
    using enum LookupAnswer::Verdict;
    const QByteArray failed = R"({"object_id": "f", "status": "ERROR", "rate": "r"})";
    const QByteArray label =
        R"({"object_id": "s", "status": "SUCCESS", "rate": "r", "label_url": "https://l.example/1"})";
    const QByteArray other = QByteArray(label).replace(R"("r")", R"("other")");
    const auto list = [](const QByteArray &entries) { return R"({"results": [)" + entries + "]}"; };
    const struct {
        int status;
        QByteArray body;
        bool isLate;
        LookupAnswer::Verdict verdict;
        bool isInconclusive;
    } rows[] = {
        {200, list(failed + ',' + label), false, bought, false},
        {200, list(QByteArray(label).replace("https://l.example/1", "")), true, unknown, true},
        {200, list(other), false, unknown, true}, // the request may still arrive
        {200, list(other), true, notBought, false},
        {200, list(failed), true, notBought, false},
        {200, R"({"next": "transactions?results=100", "results": [{"object_id": "o", "status": "SUCCESS"}]})", true,
         unknown, true},                                                                 // a list without an end
        {200, R"({"next": "transactions?page=2", "results": []})", true, unknown, true}, // its rest is not known
        {200, "no list", true, unknown, true},
        {403, "{}", true, unknown, true},
        {404, "{}", true, unknown, true},
        {429, "{}", true, unknown, false},
        {500, "{}", true, unknown, false},
    };
    OpenPurchase purchase{.askedAt = clock.now(), .rateId = u"r"_s, .keyName = app->keys.activeName()};
    purchase.record.testMode = true;
    purchase.ratedAt = clock.now();
    const auto lookUp = [&](bool isLate) {
        return runTask(lookUpPurchase(*app, purchase, clock.steadyNow().addSecs(isLate ? -61 : 0)), &clock);
    };
    for (const auto &row : rows) {
        listAnswers(row.status, row.body);
        const LookupAnswer answer = lookUp(row.isLate);
        EXPECT_EQ(answer.verdict, row.verdict) << row.status << ' ' << row.body.toStdString();
        EXPECT_EQ(answer.isInconclusive, row.isInconclusive) << row.status << ' ' << row.body.toStdString();
        if (row.verdict == bought)
            EXPECT_EQ(answer.transaction.value().objectId, u"s"_s);
    }
    listAnswers(200, list(label)); // another account may hold the same list
    purchase.record.testMode = false;
    EXPECT_TRUE(lookUp(true).text.contains(u"with the LIVE key"_s));
    purchase.record.testMode = true;
    purchase.keyName = u"Old"_s;
    EXPECT_TRUE(lookUp(true).text.contains(u"with the TEST key “Old”"_s));
}

TEST_F(PurchaseLookupTest, ALabelIsFoundAmongNewerLabelsWhateverTheDesksClock)
{
    for (const int days : {3, -3}) {
        clock.start = QDateTime::currentDateTime().addDays(days);
        carrier.setScenario({});
        ShippoAddress to = homeAddress();
        to.name = u"Parcel %1"_s.arg(days);
        composeAndRate(to);
        carrier.setScenario({.dropConnection = true});
        pressBuy();
        ASSERT_EQ(purchases().unresolved.value().size(), 1) << banner().toStdString();
        EXPECT_TRUE(purchases().unresolved.value().first().purchase.ratedAt.isValid());
        carrier.seedHistory(150, QDateTime::currentDateTimeUtc().addSecs(60), 0s);
        carrier.setScenario({});
        clock.advance(61s);
        check();
        ASSERT_EQ(purchases().resolved.value().size(), 1) << days;
        EXPECT_TRUE(purchases().resolved.value().first().isBought) << days;
        purchases().dismiss(purchases().resolved.value().first());
        workPool().waitForDone();
    }
}

TEST_F(PurchaseLookupTest, BothLabelsOfARepeatedRequestAreLoggedAndTheSecondIsToBeRefunded)
{
    // The response is lost, and the sales are found while the clerk waits or by a later check. Or it arrives as usual.
    for (const QString &kind : {u"Soon"_s, u"Late"_s, u"Usual"_s}) {
        ShippoAddress to = homeAddress();
        to.name = kind;
        carrier.setScenario({});
        composeAndRate(to);
        carrier.setScenario({.dropConnection = kind == u"Late",
                             .droppedPath = kind == u"Usual" ? "" : "transactions/",
                             .repeatsPurchases = true});
        pressBuy();
        EXPECT_EQ(purchases().resolved.value().isEmpty(), kind != u"Soon") << kind.toStdString();
        carrier.setScenario({});
        clock.advance(62s);
        check();
        const QList<ResolvedPurchase> told = purchases().resolved;
        const auto second = std::ranges::find_if(told, &ResolvedPurchase::isSecond);
        ASSERT_NE(second, told.end()) << banner().toStdString();
        EXPECT_TRUE(second->text.startsWith(u"A second label was sold for the same parcel: "_s));
        const auto isHis = [&to](const ShipmentRecord &row) { return row.recipientName() == to.name; };
        QSet<QString> numbers;
        for (const ShipmentRecord &row : app->log.records()) {
            if (isHis(row))
                numbers += row.tracking;
        }
        EXPECT_EQ(numbers.size(), 2);
        EXPECT_TRUE(numbers.contains(second->record.tracking));
        EXPECT_TRUE(std::ranges::any_of(errors->entries(), [&](const APIErrorEntry &entry) {
            return entry.detail.contains(second->record.tracking) && entry.detail.contains(u"request its refund"_s);
        }));
        for (const ResolvedPurchase &purchase : told)
            purchases().dismiss(purchase);
        clock.advance(62s);
        check(); // a second label is told once
        EXPECT_TRUE(purchases().resolved.value().isEmpty());
        EXPECT_TRUE(app->journal.openPurchases().isEmpty());
    }
}

TEST_F(PurchaseLookupTest, AQueuedPurchaseIsLookedUpByItsId)
{
    composeAndRate(homeAddress());
    carrier.setScenario({.dropConnection = true, .queuedReads = 6});
    pressBuy();
    carrier.setScenario({});
    check();
    ASSERT_EQ(purchases().unresolved.value().size(), 1);
    const QString id = purchases().unresolved.value().first().purchase.record.transactionID;
    EXPECT_FALSE(id.isEmpty());
    EXPECT_EQ(app->journal.openPurchases().value(0).record.transactionID, id) << "kept if the program ends now";
    for (int look = 0; look < 10 && !purchases().unresolved.value().isEmpty(); ++look)
        check();
    EXPECT_EQ(app->log.records().value(0).transactionID, id);
    EXPECT_GT(requestsTo("/transactions/" + id.toLatin1()), 0);
}

TEST_F(PurchaseLookupTest, APurchaseWhoseEntryCannotBeReadIsFoundByItsRate)
{
    lose();
    screenOwner.reset();
    app.reset();
    ASSERT_TRUE(Database(path(u"purchase_journal.sqlite"_s))
                    .exec("UPDATE purchases SET shipment = '{\"hold\"', recipient = 'x'"));
    carrier.setScenario({});
    app = std::make_unique<AppState>(platform);
    screenOwner = std::make_unique<LabelScreen>(*app);
    settle();
    run(purchases().resume());
    check();
    EXPECT_TRUE(std::ranges::any_of(prompts.alerts, [](const auto &alert) {
        return alert.second.startsWith(u"Open purchases in the journal that cannot be read"_s);
    }));
    ASSERT_EQ(app->log.records().size(), 1);
    const ShipmentRecord row = app->log.records().first();
    EXPECT_EQ(row.recipientName(), homeAddress().name);
    EXPECT_TRUE(row.testMode && !row.tracking.isEmpty() && !row.service.isEmpty());
}

TEST_F(PurchaseLookupTest, APurchaseThatWasResolvedByHandDoesNotComeBack)
{
    const OpenPurchase lost = lose();
    listAnswers(503, "{}", true);
    Task<> checking = purchases().checkAgain();
    runUntil([this] { return purchases().checking.value(); });
    prompts.answer = 1;
    Task<> resolving = purchases().resolveByHand(lost.id, Purchases::ByHand::notBought);
    runUntil([this] { return purchases().unresolved.value().isEmpty(); });
    listAnswers(503, "{}");
    run(std::move(checking));
    run(std::move(resolving));
    EXPECT_TRUE(purchases().unresolved.value().isEmpty());
}

TEST_F(PurchaseLookupTest, ALabelThatIsFoundLaterIsKeptUntilItIsLogged)
{
    const OpenPurchase lost = lose();
    changeLog("CREATE TRIGGER refuse BEFORE INSERT ON shipments BEGIN SELECT RAISE(ABORT, 'full'); END");
    carrier.setScenario({});
    clock.advance(30s);
    check();
    ASSERT_EQ(purchases().unresolved.value().size(), 1);
    EXPECT_TRUE(purchases().unresolved.value().first().isUnlogged);
    EXPECT_TRUE(purchases().resolved.value().isEmpty());
    EXPECT_EQ(app->journal.openPurchases().size(), 1) << "still recorded, if the program ends now";
    const qsizetype reports = errors->entries().size();
    check();
    EXPECT_EQ(errors->entries().size(), reports) << "already reported";
    changeLog("DROP TRIGGER refuse");
    check();
    EXPECT_TRUE(purchases().unresolved.value().isEmpty());
    ASSERT_EQ(app->log.records().size(), 1);
    EXPECT_TRUE(app->log.records().first().trackingURL.startsWith(u"http"_s));
    EXPECT_TRUE(app->journal.openPurchases().isEmpty());
    EXPECT_EQ(app->log.records().first().createdAt.toMSecsSinceEpoch(), lost.askedAt.toMSecsSinceEpoch())
        << "the time of the purchase, not of the lookup";

    EXPECT_TRUE(app->log.setStatus(app->log.records().first().id, u"REFUNDED"_s));
    run(purchases().print(purchases().resolved.value().value(0)));
    EXPECT_EQ(prompts.questions.size(), 1);
    EXPECT_FALSE(purchases().resolved.value().value(0).isPrinted) << "the clerk canceled";
}

TEST_F(PurchaseLookupTest, ALabelThatIsLoggedAlreadyIsNotLoggedTwice)
{
    const OpenPurchase lost = lose();
    carrier.setScenario({});
    check();
    ASSERT_EQ(app->log.records().size(), 1);
    OpenPurchase again = lost; // the program ended between the log and the journal
    again.record = app->log.records().first();
    again.record.id = 0;
    again.id = app->journal.begin(again);
    purchases().markUnresolved(again, {});
    check();
    EXPECT_EQ(app->log.records().size(), 1);
    EXPECT_TRUE(app->journal.openPurchases().isEmpty());
}

TEST_F(PurchaseLookupTest, ALabelThatWasNotReadyHasTheTimeOfItsPurchase)
{
    composeAndRate(homeAddress());
    carrier.setScenario({.queuedReads = 3, .emptyLabelUrl = true});
    pressBuy();
    ASSERT_EQ(purchases().unresolved.value().size(), 1) << banner().toStdString();
    const QDateTime asked = purchases().unresolved.value().first().purchase.askedAt;
    EXPECT_LT(asked, clock.now());
    listAnswers(200, R"({"object_id": "t", "status": "SUCCESS", "label_url": "http://127.0.0.1:1/label"})");
    check();
    ASSERT_EQ(app->log.records().size(), 1);
    EXPECT_EQ(app->log.records().first().createdAt.toSecsSinceEpoch(), asked.toSecsSinceEpoch());
}

TEST_F(PurchaseLookupTest, HalfACustomsPaperIsNotPrinted)
{
    preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    screen().carrier = Carrier::fedex;
    screen().customs = CustomsInfo{.value = u"310"_s};
    composeAndRate(londonAddress());
    screen().selectedRateID = screen().rates.value().value(0).objectId;
    carrier.setScenario({.failNext = CarrierFailure{"documents", 200, "application/pdf", "%PDF-1.4 half", 1, "GET"}});
    pressBuy();
    EXPECT_TRUE(
        banner().contains(u"FedEx commercial invoice download failed: the carrier's file is not a complete PDF"_s))
        << banner().toStdString();
    EXPECT_TRUE(processes.lastPrinted().startsWith("^XA")) << "the label printed, the papers did not";
}

TEST_F(PurchaseLookupTest, TheJournalHasTheLabelBeforeItPrintsAndKnowsThatItPrinted)
{
    screen().customs = CustomsInfo{.value = u"310"_s};
    composeAndRate(londonAddress());
    changeLog("CREATE TRIGGER refuse BEFORE INSERT ON shipments BEGIN SELECT RAISE(ABORT, 'full'); END");
    bool isKept = false, isPrinted = true;
    processes.behave = [&](const QString &program, const QStringList &) {
        if (program.endsWith(u"/lpr"_s)) {
            const OpenPurchase open = app->journal.openPurchases().value(0);
            isKept = open.record.zpl && open.record.customsPDF;
            isPrinted = open.printed;
        }
        return ProcessOutcome{};
    };
    pressBuy();
    EXPECT_TRUE(isKept && !isPrinted) << banner().toStdString();
    EXPECT_TRUE(app->journal.openPurchases().value(0).printed);
}

TEST_F(PurchaseLookupTest, TheDraftOfAParcelThatWasSoldAfterAllIsCleared)
{
    const OpenPurchase lost = lose();
    EXPECT_EQ(app->draftTo.value(), lost.recipient);
    carrier.setScenario({});
    check();
    EXPECT_TRUE(app->draftTo.value().isEmpty());
}

TEST_F(PurchaseLookupTest, ADomesticParcelNeedsNoPapers)
{
    screen().carrier = Carrier::fedex;
    composeAndRate(homeAddress());
    screen().selectedRateID = screen().rates.value().value(0).objectId;
    pressBuy();
    EXPECT_TRUE(banner().startsWith(u"Success! "_s) && !banner().contains(u'(')) << banner().toStdString();
    EXPECT_TRUE(errors->entries().isEmpty());
}

} // namespace parcelory::test
