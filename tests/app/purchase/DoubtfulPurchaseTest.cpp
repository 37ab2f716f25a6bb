// When pressing Buy does not simply buy: second labels, and purchases whose outcome stays unknown.

#include "compose/Customs.h"
#include "core/PostalContact.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "practice/carrier/CarrierScenario.h"
#include "records/ShipmentRecord.h"
#include "shell/ErrorLog.h"
#include "support/CarrierDesk.h"
#include "support/HeldPool.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <algorithm>
#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class DoubtfulPurchaseTest : public testing::Test, public LabelDesk {
protected:
    void TearDown() override { endLookups(); }
    qsizetype bought() { return sent("/transactions/").size(); }
    /// A purchase whose response is lost; then the list of transactions fails.
    void losePurchase(const CarrierFailure &listFailure)
    {
        composeAndRate(homeAddress());
        carrier.setScenario({.dropConnection = true});
        pressBuy();
        CarrierScenario scenario;
        scenario.failNext = listFailure;
        carrier.setScenario(scenario);
    }
};

} // namespace

TEST_F(DoubtfulPurchaseTest, ADoubleClickBuysNoSecondLabel)
{
    for (const auto pause : {120ms, 250ms, 400ms, 599ms}) {
        composeAndRate(homeAddress());
        buy();
        const qsizetype before = bought();
        composeAndRate(homeAddress());
        runUntil([this] { return !screen().secondLabel.value().isEmpty(); });
        pressBuy(); // the button says "second label" now
        ASSERT_TRUE(screen().secondLabelAgreed.value());
        clock.advance(pause);
        run(screen().buyAndPrint());
        EXPECT_EQ(bought(), before) << pause.count() << " ms";
        clock.advance(600ms - pause);
        run(screen().buyAndPrint());
        EXPECT_EQ(bought(), before + 1);
    }
}

TEST_F(DoubtfulPurchaseTest, AScanBetweenPressAndCheckBuysNoWarnedLabel)
{
    composeAndRate(homeAddress());
    buy();
    const qsizetype before = bought();
    composeAndRate(homeAddress());
    runUntil([this] { return !screen().secondLabel.value().isEmpty(); });
    clock.advance(LabelScreen::buyPause);
    const auto pressAndScan = [this](const ShippoAddress &scanned) {
        auto held = std::make_unique<HeldPool>(); // the key is not read yet
        Task<> buying = screen().buyAndPrint();
        app->fillRecipient(PostalContact::of(scanned));
        held.reset();
        run(std::move(buying));
    };
    pressAndScan(londonAddress());
    EXPECT_EQ(bought(), before);
    EXPECT_TRUE(banner().startsWith(u"The label for Eleanor Whitfield was not bought"_s)) << banner().toStdString();
    EXPECT_EQ(app->draftTo.value().name, londonAddress().name);

    // And a first label is bought although the next recipient, with a label of today, is on the screen by then.
    app->fillRecipient(PostalContact::of(londonAddress()));
    composeParcel(londonAddress());
    screen().customs = CustomsInfo{CustomsItemType::gold, u"1"_s, u"50"_s, {}};
    run(screen().fetchRates(true));
    clock.advance(LabelScreen::buyPause);
    pressAndScan(homeAddress());
    EXPECT_EQ(bought(), before + 1);
    EXPECT_EQ(app->draftTo.value().name, homeAddress().name);
}

TEST_F(DoubtfulPurchaseTest, BuyOpensAgainWhateverTheListOfTransactionsAnswers)
{
    for (const int status : {400, 405, 410, 422, 429, 500, 503}) {
        losePurchase({.pathPrefix = "transactions",
                      .status = status,
                      .contentType = "text/plain",
                      .body = "no",
                      .count = 1000,
                      .method = "GET"});
        ASSERT_EQ(purchases().unresolved.value().size(), 1) << status;
        checkAgain();
        EXPECT_TRUE(screen().isBuyClosed()) << status << ": the request may still arrive";
        clock.advance(61s);
        for (int look = 0; look < 3; ++look)
            checkAgain();
        EXPECT_FALSE(screen().isBuyClosed()) << status;

        const qsizetype before = bought();
        run(screen().fetchRates());
        settle();
        pressBuy();
        EXPECT_EQ(bought(), before) << "the first press shows the warning";
        carrier.setScenario({});
        pressBuy();
        EXPECT_EQ(bought(), before + 1) << banner().toStdString();
        EXPECT_TRUE(std::ranges::any_of(errors->entries(), [](const APIErrorEntry &entry) {
            return entry.detail.startsWith(u"Bought although an earlier purchase is unresolved: "_s);
        }));
        checkAgain();
        EXPECT_TRUE(purchases().unresolved.value().isEmpty());
        for (const ShipmentRecord &record : app->log.records())
            EXPECT_TRUE(app->log.setStatus(record.id, u"REFUNDED"_s)); // the next round's label is a first label
        screen().clearDraft();
    }
}

TEST_F(DoubtfulPurchaseTest, TheClerkResolvesAPurchaseByHand)
{
    for (const auto outcome : {Purchases::ByHand::notBought, Purchases::ByHand::haveLabel}) {
        losePurchase({.pathPrefix = "transactions", .status = 503, .body = "{}", .count = 1000, .method = "GET"});
        const qint64 id = purchases().unresolved.value().first().purchase.id;
        prompts.answer = 0;
        run(purchases().resolveByHand(id, outcome));
        EXPECT_EQ(purchases().unresolved.value().size(), 1) << "the clerk keeps checking";
        prompts.answer = 1;
        run(purchases().resolveByHand(id, outcome));
        EXPECT_TRUE(purchases().unresolved.value().isEmpty());
        EXPECT_TRUE(app->journal.openPurchases().isEmpty());
        EXPECT_TRUE(errors->entries().first().detail.startsWith(u"Resolved by hand, "_s));
        screen().clearDraft();
    }
}

TEST_F(DoubtfulPurchaseTest, TheMonthsEndNeedsTheCarriersAnswer)
{
    CarrierFailure failure{.pathPrefix = "transactions", .status = 500, .body = "{}", .count = 1000, .method = "GET"};
    losePurchase(failure);
    clock.start = clock.start.addDays(31);
    for (int look = 0; look < 4; ++look)
        checkAgain();
    EXPECT_EQ(purchases().unresolved.value().size(), 1) << "the desk's clock alone ends nothing";
    failure.status = 403;
    carrier.setScenario({.failNext = failure});
    checkAgain();
    EXPECT_TRUE(purchases().unresolved.value().isEmpty());
    EXPECT_TRUE(errors->entries().first().detail.startsWith(u"The outcome of this purchase was never found: "_s));
}

} // namespace parcelory::test
