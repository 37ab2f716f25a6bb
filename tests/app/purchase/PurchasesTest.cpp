#include "app/purchase/Purchases.h"
#include "app/AppState.h"
#include "carrier/MasterEntry.h"
#include "compose/Customs.h"
#include "core/ShippoAddress.h"
#include "practice/carrier/CarrierScenario.h"
#include "records/ShipmentRecord.h"
#include "shell/ErrorLog.h"
#include "support/CarrierDesk.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>

#include <QDir>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

class PurchasesTest : public testing::Test, public LabelDesk {
protected:
    void TearDown() override { endLookups(); }
    void rate(const QString &reference = {})
    {
        composeParcel(homeAddress());
        screen().reference = reference;
        run(screen().fetchRates());
        ASSERT_TRUE(screen().selectedRate()) << banner().toStdString();
    }
    void press() { pressBuy(); }
    void restart()
    {
        runUntil([this] { return !purchases().checking; });
        screenOwner.reset();
        app.reset();
        app = std::make_unique<AppState>(platform);
        screenOwner = std::make_unique<LabelScreen>(*app);
        settle();
        run(purchases().resume());
    }
    /// The ids of the transactions sold by the carrier, and of those in the mailing log.
    QList<QString> sold()
    {
        QList<QString> ids;
        const QDate today = QDate::currentDate();
        for (const MasterEntry &entry : runTask(app->shippo.masterLog(today.addDays(-1), today.addDays(1)), &clock))
            ids.append(entry.id);
        std::ranges::sort(ids);
        return ids;
    }
    QList<QString> logged()
    {
        QList<QString> ids;
        for (const ShipmentRecord &record : app->log.records())
            ids.append(record.transactionID);
        std::ranges::sort(ids);
        return ids;
    }
};

/// A purchase whose response does not say whether the label was sold.
CarrierScenario failingPurchase(int status = 500)
{
    CarrierScenario scenario;
    scenario.failNext = CarrierFailure{"transactions/", status, "text/plain", "down", 1, "POST"};
    return scenario;
}

} // namespace

TEST_F(PurchasesTest, ALabelWhoseResponseIsLostIsFoundPrintedAndLogged)
{
    rate();
    carrier.setScenario({.droppedPath = "transactions/"});
    press();
    EXPECT_TRUE(banner().startsWith(u"Success! "_s)) << banner().toStdString();
    EXPECT_EQ(sent("/transactions/").size(), 1);
    EXPECT_EQ(logged(), sold());
    EXPECT_TRUE(processes.lastPrinted().contains("^XA"));
    EXPECT_TRUE(app->journal.openPurchases().isEmpty());
}

TEST_F(PurchasesTest, BuyingIsDisabledForTheRecipientWhileTheCarrierIsUnreachable)
{
    rate();
    carrier.setScenario({.dropConnection = true}); // it still sells the label
    press();
    EXPECT_TRUE(banner().endsWith(
        u"We don't know yet if this label was bought. Don't buy it again — Parcelory keeps checking."_s))
        << banner().toStdString();
    const OpenPurchase open = app->journal.openPurchases().first();
    EXPECT_TRUE(errors->entries().first().detail.contains(u"rate "_s + open.rateId)) << "support can find it";
    EXPECT_TRUE(screen().isBuyClosed());
    EXPECT_TRUE(logged().isEmpty());
    app->draftTo = londonAddress();
    EXPECT_FALSE(screen().isBuyClosed());

    carrier.setScenario({});
    checkAgain();
    EXPECT_TRUE(purchases().unresolved.value().isEmpty());
    ASSERT_EQ(purchases().resolved.value().size(), 1);
    EXPECT_EQ(logged(), sold());
    EXPECT_EQ(logged().size(), 1);
    EXPECT_TRUE(processes.lastPrinted().isEmpty()) << "a label that is found later prints only when the clerk says so";
    run(purchases().print(purchases().resolved.value().first()));
    EXPECT_TRUE(processes.lastPrinted().contains("^XA"));
    EXPECT_TRUE(purchases().resolved.value().isEmpty()) << "there is nothing more to do";
    EXPECT_FALSE(bannerIsWarning());
}

TEST_F(PurchasesTest, APurchaseNotFoundAfterAMinuteWasNotBought)
{
    rate();
    carrier.setScenario(failingPurchase(409));
    press();
    EXPECT_TRUE(banner().startsWith(u"Shippo rejected the request (409)."_s)) << banner().toStdString();
    ASSERT_EQ(purchases().unresolved.value().size(), 1);
    EXPECT_TRUE(purchases().unresolved.value().first().isInconclusive);
    EXPECT_FALSE(screen().isBuyClosed()) << "an inconclusive response leaves buying enabled";

    clock.advance(std::chrono::seconds(61));
    checkAgain();
    ASSERT_EQ(purchases().resolved.value().size(), 1);
    EXPECT_FALSE(purchases().resolved.value().first().isBought);
    EXPECT_TRUE(purchases().resolved.value().first().text.endsWith(u" was not bought, and nothing was charged."_s));
    rate();
    press();
    EXPECT_EQ(logged().size(), 1);
    EXPECT_EQ(logged(), sold());
}

TEST_F(PurchasesTest, AnUnresolvedPurchaseIsLookedUpOnlyWithItsOwnKey)
{
    rate();
    carrier.setScenario({.dropConnection = true});
    press();
    carrier.setScenario({});
    useToken(PracticeCarrier::liveToken);
    restart();
    ASSERT_EQ(purchases().unresolved.value().size(), 1);
    EXPECT_TRUE(purchases().unresolved.value().first().text.contains(u"the TEST key “Practice”"_s));
    app->keys.set(u"shippo_test_another_account"_s, u"Other"_s);
    app->keys.makeActive(u"Other"_s);
    clock.advance(std::chrono::seconds(61));
    checkAgain();
    EXPECT_EQ(purchases().unresolved.value().size(), 1) << "another account cannot tell";
    useToken(PracticeCarrier::testToken);
    app->keyChanges = app->keyChanges + 1;
    runUntil([this] { return purchases().unresolved.value().isEmpty(); });
    settle();
    EXPECT_TRUE(purchases().unresolved.value().isEmpty());
    EXPECT_EQ(logged(), sold());
}

TEST_F(PurchasesTest, ALookupWithinAMinuteOfItsLastActivityNeverResolvesAPurchase)
{
    rate();
    carrier.setScenario(failingPurchase());
    clock.after(std::chrono::milliseconds(1), [this] { clock.start = clock.start.addSecs(300); }); // a late response
    press();
    EXPECT_EQ(purchases().unresolved.value().size(), 1) << banner().toStdString();
    carrier.setScenario({});
    restart();
    EXPECT_EQ(purchases().unresolved.value().size(), 1) << "the wait starts at the restart";

    for (const int days : {-1, 2, -1}) { // setting the clock neither ends nor prolongs the wait
        clock.start = clock.start.addDays(days);
        checkAgain();
        EXPECT_EQ(purchases().unresolved.value().size(), 1) << days;
    }
    clock.start = clock.start.addDays(-1);
    clock.advance(std::chrono::seconds(61));
    checkAgain();
    EXPECT_TRUE(purchases().unresolved.value().isEmpty());
}

TEST_F(PurchasesTest, AnUnreadableListEnablesBuyingAndAForeignRecordHidesNothing)
{
    rate();
    carrier.setScenario({.dropConnection = true});
    press();
    EXPECT_TRUE(screen().isBuyClosed());
    const auto list = [this](const QByteArray &body) {
        CarrierScenario scenario;
        scenario.failNext = CarrierFailure{"transactions", 200, "application/json", body, 1, "GET"};
        carrier.setScenario(scenario);
        checkAgain();
    };
    list(R"({"results": 1})");
    EXPECT_FALSE(screen().isBuyClosed()) << "a retry may get the same answer";
    list(R"({"results": [{"object_id": "1", "status": "SUCCESS", "rate": {"object_id": "2"}}], "next": ")" +
         carrier.baseUrl().toEncoded() + R"(transactions?results=100"})");
    EXPECT_EQ(logged(), sold());
    EXPECT_EQ(logged().size(), 1);
}

TEST_F(PurchasesTest, ALabelThatIsFoundLaterIsLoggedWithTheStateOfItsRefund)
{
    const std::pair<QByteArray, QString> rows[] = {{"SUCCESS", u"PRINTED"_s},
                                                   {"REFUNDPENDING", u"REFUND_PENDING"_s},
                                                   {"REFUNDED", u"REFUNDED"_s},
                                                   {"REFUNDREJECTED", u"REFUND_ERROR"_s}};
    for (const auto &[word, stored] : rows) {
        rate();
        const QByteArray rateId = screen().selectedRateID.value()->toUtf8();
        carrier.setScenario({.dropConnection = true});
        buy();
        CarrierScenario scenario;
        scenario.failNext = CarrierFailure{.pathPrefix = "transactions", .status = 200};
        scenario.failNext->body = R"({"results": [{"object_id": ")" + word + R"(", "status": ")" + word +
                                  R"(", "rate": ")" + rateId + R"(", "label_url": "https://labels.example/1"}]})";
        carrier.setScenario(scenario);
        checkAgain();
        ASSERT_EQ(app->log.records().value(0).transactionID, QString::fromLatin1(word));
        EXPECT_EQ(app->log.records().value(0).status, stored);
    }
    const auto isRefusal = [](const APIErrorEntry &entry) { return entry.context == u"Refund"_s; };
    EXPECT_EQ(std::ranges::count_if(errors->entries(), isRefusal), 1) << "the row's status refers to the error log";
}

TEST_F(PurchasesTest, ResolvingAPurchaseKeepsANewDraftForTheSameRecipient)
{
    rate(u"48213"_s);
    carrier.setScenario({.dropConnection = true});
    press();
    carrier.setScenario({});
    EXPECT_EQ(app->draftTo.value(), homeAddress());
    screen().reference = u"48999"_s;
    checkAgain();
    EXPECT_EQ(screen().reference.value(), u"48999"_s);
    screen().reference = u"48213"_s;
    const ResolvedPurchase found = purchases().resolved.value().first();
    run(purchases().print(found));
    EXPECT_EQ(app->draftTo.value(), homeAddress()) << "printing must not clear the draft";

    EXPECT_TRUE(app->log.setStatus(app->log.records().first().id, u"REFUNDED"_s));
    run(purchases().print(found));
    EXPECT_TRUE(prompts.questions.last().text.contains(u"This label was refunded"_s));
}

TEST_F(PurchasesTest, AnUnresolvedPurchaseEndsInTheErrorLogAfterAMonth)
{
    rate();
    carrier.setScenario({.dropConnection = true});
    press();
    useToken(PracticeCarrier::liveToken);
    for (const auto &[days, open] : {std::pair{30, 1}, std::pair{1, 0}}) {
        clock.start = clock.start.addDays(days);
        restart();
        EXPECT_EQ(purchases().unresolved.value().size(), open);
        EXPECT_EQ(app->journal.openPurchases().size(), open);
    }
    EXPECT_TRUE(errors->entries().first().detail.startsWith(u"The outcome of this purchase was never found: "_s));
}

TEST_F(PurchasesTest, NothingIsBoughtWithoutAJournal)
{
    rate();
    app->journal.open();
    AppState second(platform);
    LabelScreen other(second);
    const std::optional<QString> chosen = screen().selectedRateID;
    second.draftTo = homeAddress();
    other.rates = screen().rates.value();
    other.selectedRateID = chosen;
    run(other.buyAndPrint());
    ASSERT_TRUE(other.banner.value());
    EXPECT_TRUE(other.banner.value()->text.contains(
        u"Parcelory is already open. Use that window; labels can't be bought here"_s))
        << other.banner.value()->text.toStdString();
    EXPECT_TRUE(sent("/transactions/").isEmpty());
    run(other.purchases.resume());
    EXPECT_TRUE(prompts.alerts.last().second.contains(u"no label can be bought here"_s))
        << "an alert at the start says so";
}

TEST_F(PurchasesTest, APurchaseThatTheJournalShowsOnlyLaterIsNotMadeTwice)
{
    rate();
    carrier.setScenario({.dropConnection = true});
    press();
    carrier.setScenario({});
    screenOwner.reset();
    app.reset();
    auto busy = std::make_unique<PurchaseJournal>(QDir(folder.path()));
    busy->open();
    app = std::make_unique<AppState>(platform);
    screenOwner = std::make_unique<LabelScreen>(*app);
    run(purchases().resume());
    EXPECT_TRUE(prompts.alerts.last().second.contains(
        u"Parcelory is already open. Use that window; labels can't be bought here"_s));
    EXPECT_TRUE(purchases().unresolved.value().isEmpty());
    rate();
    busy.reset();
    press();
    EXPECT_EQ(sent("/transactions/").size(), 1) << banner().toStdString(); // a check by itself may have been faster
    checkAgain();
    EXPECT_EQ(logged(), sold());
    EXPECT_EQ(logged().size(), 1);
}

TEST_F(PurchasesTest, ADamagedJournalIsKeptAndANewJournalStarted)
{
    for (const qint64 from : {4096, 0}) { // only a table, or the whole file
        screenOwner.reset();
        app.reset();
        QFile file(path(u"purchase_journal.sqlite"_s));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(from));
        file.write(QByteArray(4096, 'x'));
        file.close();
        app = std::make_unique<AppState>(platform);
        screenOwner = std::make_unique<LabelScreen>(*app);
        run(purchases().resume());
        ASSERT_FALSE(prompts.alerts.empty());
        const QString kept = prompts.alerts.back().second.section(u"kept as "_s, 1).section(u',', 0, 0);
        EXPECT_TRUE(QFile::remove(kept)) << kept.toStdString();
        prompts.alerts.clear();
        composeParcel(from ? homeAddress() : londonAddress());
        screen().customs = CustomsInfo{CustomsItemType::gold, u"1"_s, u"50"_s, {}};
        run(screen().fetchRates(true));
        press();
    }
    EXPECT_EQ(logged().size(), 2);
}

TEST_F(PurchasesTest, ASecondLabelNeedsAnExtraPressAndAFirstLabelDoesNot)
{
    rate(u"48213"_s);
    press();
    EXPECT_EQ(logged().size(), 1);
    rate();
    settle();
    press();
    EXPECT_EQ(logged().size(), 1);
    EXPECT_TRUE(screen().secondLabel.value().endsWith(u" for the same recipient."_s));
    EXPECT_TRUE(screen().selectedRate());
    press();
    EXPECT_EQ(logged().size(), 2);
    for (const ShipmentRecord &record : app->log.records())
        EXPECT_TRUE(app->log.setStatus(record.id, u"REFUNDED"_s));
    rate(u"48213"_s);
    press();
    EXPECT_EQ(logged().size(), 3) << "a refunded label does not count";
}

/// A clerk who stops at every warning never gets a second label for a parcel, whatever fails.
TEST_F(PurchasesTest, NoSequenceOfFailuresBuysTwiceOrLosesALabel)
{
    std::mt19937 random(20261120);
    const auto chance = [&random](int of) { return std::uniform_int_distribution(0, of - 1)(random); };
    const std::function<CarrierScenario()> mishaps[] = {
        [] { return CarrierScenario{}; },
        [] { return CarrierScenario{}; },
        [] { return CarrierScenario{.droppedPath = "transactions/"}; },
        [] { return CarrierScenario{.dropConnection = true}; },
        [] { return CarrierScenario{.queuedReads = 15}; },
        [] { return CarrierScenario{.purchaseFails = true, .purchaseMessages = {u"Insufficient funds."_s}}; },
        [] { return failingPurchase(); },
    };
    for (int step = 0; step < 60; ++step) {
        carrier.setScenario({});
        ShippoAddress to = homeAddress();
        to.name = u"Parcel %1"_s.arg(chance(12)); // often a recipient with a label or an unresolved purchase
        composeParcel(to);
        run(screen().fetchRates());
        carrier.setScenario(mishaps[chance(7)]());
        for (int presses = chance(3); presses >= 0; --presses) {
            if (screen().secondLabel.value().isEmpty())
                press();
        }
        if (chance(5) == 0)
            restart();
        if (chance(3) == 0)
            clock.start = clock.start.addSecs(20);
    }
    carrier.setScenario({});
    clock.start = clock.start.addSecs(61);
    checkAgain();
    EXPECT_TRUE(purchases().unresolved.value().isEmpty());
    EXPECT_TRUE(app->journal.openPurchases().isEmpty());
    EXPECT_EQ(logged(), sold());
    QMap<QString, int> labels;
    for (const ShipmentRecord &record : app->log.records())
        EXPECT_EQ(++labels[record.recipient], 1) << record.recipient.toStdString();
    EXPECT_GT(labels.size(), 5);
}

} // namespace parcelory::test
