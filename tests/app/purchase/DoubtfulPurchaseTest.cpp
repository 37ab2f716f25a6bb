// When pressing Buy does not simply buy: second labels, and purchases whose outcome stays unknown.

#include "support/AppTest.h"

namespace parcelory::test {
namespace {

constexpr int always = 1'000'000; // more requests than a lookup that repeats while a test waits can send

class DoubtfulPurchaseTest : public LabelTest {
protected:
    qsizetype bought() { return sent("/transactions/").size(); }
    /// A recipient who has a label already; the button says so.
    void rateSecondLabel()
    {
        buyLabel();
        composeAndRate(homeAddress());
        runUntil([this] { return !screen().secondLabel.value().isEmpty(); });
    }
    /// A purchase whose response is lost; then the list of transactions fails.
    void losePurchase(int listStatus, const QByteArray &body = "no")
    {
        composeAndRate(homeAddress());
        pressUnheard();
        carrier.setScenario(answering("transactions", listStatus, body, "GET", always));
    }
};

} // namespace

TEST_F(DoubtfulPurchaseTest, ADoubleClickBuysNoSecondLabel)
{
    for (const auto pause : {120ms, 599ms}) {
        rateSecondLabel();
        const qsizetype before = bought();
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
    rateSecondLabel();
    const qsizetype before = bought();
    const auto pressAndScan = [this](const ShippoAddress &scanned) {
        clock.advance(LabelScreen::buyPause);
        auto held = std::make_unique<HeldPool>(); // the key is not read yet
        Task<> buying = screen().buyAndPrint();
        app->fillRecipient(PostalContact::of(scanned));
        held.reset();
        run(std::move(buying));
        EXPECT_EQ(app->draftTo.value().name, scanned.name);
    };
    pressAndScan(londonAddress());
    EXPECT_EQ(bought(), before);
    EXPECT_TRUE(banner().startsWith(u"The label for Eleanor Whitfield was not bought"_s)) << banner().toStdString();

    // And a first label is bought although the next recipient, with a label of today, is on the screen by then.
    composeAbroad({CustomsItemType::gold, u"1"_s, u"50"_s, {}});
    run(screen().fetchRates(true));
    pressAndScan(homeAddress());
    EXPECT_EQ(bought(), before + 1);
}

TEST_F(DoubtfulPurchaseTest, BuyOpensAgainWhateverTheListOfTransactionsAnswers)
{
    for (const int status : {400, 405, 410, 422, 429, 500, 503}) {
        SCOPED_TRACE(status);
        losePurchase(status);
        ASSERT_EQ(unresolved(), 1);
        checkAgain();
        EXPECT_TRUE(screen().isBuyClosed()) << "the request may still arrive";
        checkLater(3);
        EXPECT_FALSE(screen().isBuyClosed());

        const qsizetype before = bought();
        run(screen().fetchRates());
        pressBuy();
        EXPECT_EQ(bought(), before) << "the first press shows the warning";
        pressBuy();
        EXPECT_EQ(bought(), before + 1) << banner().toStdString();
        carrier.setScenario({}); // not before the press: a lookup meanwhile would change the warning
        EXPECT_TRUE(hasRecorded(u"Bought although an earlier purchase is unresolved: "_s));
        checkAgain();
        EXPECT_EQ(unresolved(), 0);
        for (const ShipmentRecord &record : app->log.records())
            EXPECT_TRUE(app->log.setStatus(record, u"REFUNDED"_s)); // the next round's label is a first label
        screen().clearDraft();
    }
}

TEST_F(DoubtfulPurchaseTest, TheClerkResolvesAPurchaseByHand)
{
    for (const auto outcome : {Purchases::ByHand::notBought, Purchases::ByHand::haveLabel}) {
        losePurchase(503);
        const qint64 id = purchases().unresolved.value().first().purchase.id;
        for (const int answer : {0, 1}) { // the clerk keeps checking, or decides
            prompts.answer = answer;
            run(purchases().resolveByHand(id, outcome));
            EXPECT_EQ(unresolved(), 1 - answer);
        }
        EXPECT_TRUE(app->journal.openPurchases().isEmpty());
        EXPECT_TRUE(errors->entries().first().detail.startsWith(u"Resolved by hand, "_s));
        screen().clearDraft();
    }
}

TEST_F(DoubtfulPurchaseTest, TheMonthsEndNeedsTheCarriersAnswer)
{
    losePurchase(500, "{}");
    clock.start = clock.start.addDays(31);
    checkAgain(4);
    EXPECT_EQ(purchases().unresolved.value().size(), 1) << "the desk's clock alone ends nothing";
    clock.advance(61s);
    carrier.setScenario(answering("transactions", 403, "{}", "GET", always));
    checkAgain();
    EXPECT_TRUE(purchases().unresolved.value().isEmpty());
    EXPECT_TRUE(
        errors->entries().first().detail.startsWith(u"Parcelory never found out whether this label was bought: "_s));

    losePurchase(200, R"({"results": []})");
    clock.start = clock.start.addDays(31);
    restart();
    checkAgain(3);
    EXPECT_EQ(unresolved(), 1) << "the request may still arrive";
    carrier.setScenario({.queuedReads = 100});
    checkLater();
    EXPECT_EQ(purchases().resolved.value().size(), 1);
    screen().clearDraft();

    composeAndRate(homeOf(u"Second Parcel"_s));
    carrier.setScenario({.droppedPath = "transactions/", .queuedReads = 100});
    pressBuy();
    carrier.setScenario({.queuedReads = 100});
    clock.start = clock.start.addDays(31);
    checkLater(5);
    EXPECT_EQ(unresolved(), 1) << "the carrier has accepted it";
}

} // namespace parcelory::test
