#include "app/label/SpendGuard.h"
#include "carrier/PurchaseTag.h"
#include "practice/PracticeDay.h"
#include "support/AppTest.h"

// What is looked at before Buy beside this desk's log: the rules, the price, and the labels of other desks.

namespace parcelory::test {
namespace {

class BeforeBuyingTest : public LabelTest {
protected:
    void rateHome()
    {
        composeAndRate(homeAddress());
        constexpr int longestChain = 8; // of jobs and requests that follow one another
        for (int step = 0; step < longestChain; ++step) {
            settlePool();
            runUntil([this] { return http.underWay == 0; });
        }
    }
    /// Another desk on the same account buys the chosen rate.
    ShippoTransaction buyElsewhere(const ShippoAddress &to)
    {
        const QString tag = PurchaseTag::of(deskAddress(), to, Carrier::usps, u"Priority Mail"_s).text();
        return runTask(app->shippo.purchase(*screen().selectedRateID.value(), u"ZPLII"_s, tag), &clock);
    }
    QString warning() { return screen().secondLabel; }
    QString firstRule() { return screen().advice().isEmpty() ? QString() : screen().advice().first().id; }
};

} // namespace

TEST_F(BeforeBuyingTest, AnotherDesksLabelOfTodayWarnsLikeOurOwn)
{
    rateHome();
    EXPECT_EQ(warning(), QString());
    ShippoAddress neighbor = homeAddress();
    neighbor.name = u"Theodore Ames"_s;
    buyElsewhere(neighbor);
    const PracticeSold label = addOtherDesksLabel(homeAddress(), carrier); // as the Practice menu does
    rateHome();
    EXPECT_EQ(warning(), QString()) << "the account is asked once a minute";
    clock.advance(61s);
    rateHome();
    EXPECT_TRUE(warning().contains(u" by another desk for the same recipient."_s)) << warning().toStdString();
    EXPECT_TRUE(warning().contains(groupsOfFour(label.tracking)));
    pressBuy();
    EXPECT_TRUE(screen().secondLabelAgreed);
    EXPECT_TRUE(app->log.records().isEmpty());

    runTask(app->shippo.refund(label.transactionId), &clock);
    clock.advance(61s);
    rateHome();
    EXPECT_EQ(warning(), QString()) << "a label that was given back is not in the way";
}

TEST_F(BeforeBuyingTest, TheAccountsAnswerIsNeverWaitedForAndOurOwnLabelsAreNoOtherDesks)
{
    rateHome();
    pressBuy();
    ASSERT_EQ(app->log.records().size(), 1);
    clock.advance(61s);
    rateHome();
    EXPECT_TRUE(warning().endsWith(u" for the same recipient."_s));
    EXPECT_FALSE(warning().contains(u"another desk"_s)) << warning().toStdString();

    clock.advance(61s);
    carrier.setScenario(answering("transactions", 500, "down", "GET", 1000));
    rateHome();
    EXPECT_TRUE(isRated());
    EXPECT_FALSE(screen().banner.value()) << "no answer is no warning";
}

TEST_F(BeforeBuyingTest, ALabelThatIsBeingBoughtIsNoEarlierLabel)
{
    rateHome();
    carrier.setScenario(answering("labels/", 200, "^XA^FDx^FS^JUS^XZ")); // held, with a question
    QString warned = u"not asked"_s;
    prompts.whileAsked = [&] {
        EXPECT_EQ(app->log.records().size(), 1);
        screen().reference = u"48213"_s;
        settlePool(3);
        warned = warning();
    };
    pressBuy();
    prompts.whileAsked = {};
    EXPECT_EQ(warned, QString());
}

TEST_F(BeforeBuyingTest, TheSpendGuardAsksAboveItsLimitOnly)
{
    const auto offer = [](const QString &id, const QString &amount, std::optional<int> days) {
        ShippoRate rate{.objectId = id, .amount = amount, .estimatedDays = days};
        rate.servicelevel.name = id;
        return rate;
    };
    const QList<ShippoRate> all = {offer(u"Slow"_s, u"5.00"_s, 5), offer(u"Fast"_s, u"8.00"_s, 2),
                                   offer(u"Same"_s, u"12.00"_s, 2), offer(u"Vague"_s, u"30.00"_s, std::nullopt)};
    const SpendGuard guard{.isOn = true, .above = 10};
    const std::pair<SpendGuard, QStringList> rows[] = {
        {{.isOn = false, .above = 0, .wantsReference = true}, {QString(), QString(), QString()}},
        {guard,
         {QString(), u"This label costs $12.00, more than $10.00. Fast is just as fast and costs $8.00."_s,
          u"This label costs $30.00, more than $10.00."_s}},
        {{.isOn = true, .above = 10, .namesCheaper = false},
         {QString(), u"This label costs $12.00, more than $10.00."_s, u"This label costs $30.00, more than $10.00."_s}},
        {{.isOn = true, .above = 12}, {QString(), QString(), u"This label costs $30.00, more than $12.00."_s}},
    };
    for (const auto &[settings, questions] : rows) {
        for (int at = 0; at < 3; ++at)
            EXPECT_EQ(settings.question(all[at + 1], all), questions[at]);
        EXPECT_EQ(settings.lackOf(QString(), all[3]), QString());
    }
}

TEST_F(BeforeBuyingTest, TheSpendGuardTakesOneMorePressAndAReference)
{
    write(preferences, settings::spendGuardOn, true);
    write(preferences, settings::spendGuardAbove, u"1.00"_s);
    write(preferences, settings::spendGuardWantsReference, true);
    rateHome();
    pressBuy();
    EXPECT_EQ(screen().faultyField.value(), DraftField::reference);
    screen().reference = u"48213"_s;
    settle();
    EXPECT_FALSE(screen().faultyField.value() || screen().banner.value());
    pressBuy();
    EXPECT_FALSE(screen().spendQuestion.value().isEmpty());
    run(screen().buyAndPrint());
    EXPECT_TRUE(app->log.records().isEmpty()) << "a double click is no answer";
    screen().selectedRateID = screen().rates.value().last().objectId;
    EXPECT_TRUE(screen().spendQuestion.value().isEmpty()) << "another price is another question";
    pressBuy();
    pressBuy();
    EXPECT_EQ(app->log.records().size(), 1);
}

TEST_F(BeforeBuyingTest, TheRulesSeeTheParcelAsItIs)
{
    composeParcel(londonAddress());
    screen().customs = CustomsInfo{.itemType = CustomsItemType::gold, .value = u"2500.01"_s};
    EXPECT_FALSE(screen().ruleAt(RuleField::declaredValue).isEmpty());
    app->rules.setOn(u"export-filing"_s, false);
    EXPECT_EQ(screen().ruleAt(RuleField::declaredValue), QString());
    EXPECT_EQ(firstRule(), u"usps-priority-money"_s);
    screen().svcClass = ServiceClass::expressIntl;
    EXPECT_EQ(firstRule(), u"usps-express-money"_s);
    screen().carrier = Carrier::fedex;
    EXPECT_EQ(firstRule(), u"fedex-coins-abroad"_s);
    screen().customs = CustomsInfo{.itemType = CustomsItemType::readingMaterial, .value = u"20"_s};
    EXPECT_EQ(firstRule(), u"fedex-invoices"_s);

    composeParcel(homeAddress());
    screen().carrier = Carrier::usps;
    EXPECT_EQ(firstRule(), QString()) << "coins in the domestic mail need no word";
    screen().descriptionText = u"Silver bars"_s;
    screen().insuranceValue = u"400"_s;
    EXPECT_FALSE(screen().ruleAt(RuleField::insurance).isEmpty());
    screen().dimLength = u"31"_s;
    EXPECT_FALSE(screen().ruleAt(RuleField::size).isEmpty());
    screen().shipDate = clock.now().date().addDays(8);
    EXPECT_EQ(firstRule(), u"usps-ship-date"_s);
}

} // namespace parcelory::test
