// What a lookup at the carrier tells about a purchase, and what follows from it.

#include "app/purchase/PurchaseLookup.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class PurchaseLookupTest : public LabelTest {
protected:
    /// The list of transactions answers this from now on.
    void listAnswers(int status, const QByteArray &body, bool isHeld = false)
    {
        CarrierScenario scenario = answering("transactions", status, body, "GET", 1000);
        scenario.holdsAnswers = isHeld;
        carrier.setScenario(scenario);
    }
    /// A purchase of a label that is sold but not heard of.
    OpenPurchase lose(const ShippoAddress &to = homeAddress())
    {
        composeAndRate(to);
        pressUnheard();
        EXPECT_EQ(unresolved(), 1) << banner().toStdString();
        return purchases().unresolved.value().value(0).purchase;
    }
    void changeLog(const char *sql) { EXPECT_TRUE(Database(path(u"mailing_log.sqlite"_s)).exec(sql)); }
    const char *refuseRows = "CREATE TRIGGER refuse BEFORE INSERT ON shipments BEGIN SELECT RAISE(ABORT, 'full'); END";
};

} // namespace

TEST_F(PurchaseLookupTest, OnlyAListThatAnswersTellsAndOnlyLaterThatNothingWasBought)
{
    const QStringList verdicts = {u"bought"_s, u"notBought"_s, u"unknown"_s};
    OpenPurchase purchase{.askedAt = clock.now(), .rateId = u"r"_s, .keyName = app->keys.activeName()};
    purchase.record.testMode = true;
    purchase.ratedAt = clock.now();
    const auto lookUp = [&](bool isLate) {
        return runTask(lookUpPurchase(*app, purchase, clock.steadyNow().addSecs(isLate ? -61 : 0)), &clock);
    };
    const Json rows = table(u"after-sale"_s, "lookups of a purchase"); // status, list, late, verdict, inconclusive
    for (const Json &row : rows) {
        listAnswers(row[0], body(row[1]));
        const LookupAnswer answer = lookUp(row[2]);
        EXPECT_EQ(answer.verdict, LookupAnswer::Verdict(verdicts.indexOf(text(row[3])))) << row;
        EXPECT_EQ(answer.isInconclusive, row[4].get<bool>()) << row;
        if (answer.verdict == LookupAnswer::Verdict::bought)
            EXPECT_EQ(answer.transaction.value().objectId, u"s"_s);
    }
    listAnswers(200, body(rows[0][1])); // another account may hold the same list
    purchase.record.testMode = false;
    EXPECT_TRUE(lookUp(true).text.contains(u"with the LIVE key"_s));
    purchase.record.testMode = true;
    purchase.keyName = u"Old"_s;
    EXPECT_TRUE(lookUp(true).text.contains(u"with the TEST key “Old”"_s));
}

TEST_F(PurchaseLookupTest, ALabelIsFoundAmongNewerLabelsWhateverTheDesksClock)
{
    for (const int days : {3, -3}) {
        SCOPED_TRACE(days);
        clock.start = QDateTime::currentDateTime().addDays(days);
        EXPECT_TRUE(lose(homeOf(u"Parcel %1"_s.arg(days))).ratedAt.isValid());
        carrier.seedHistory(150, QDateTime::currentDateTimeUtc().addSecs(60), 0s);
        checkLater();
        ASSERT_EQ(purchases().resolved.value().size(), 1);
        EXPECT_TRUE(purchases().resolved.value().first().isBought);
        purchases().dismiss(purchases().resolved.value().first());
        workPool().waitForDone();
    }
}

TEST_F(PurchaseLookupTest, BothLabelsOfARepeatedRequestAreLoggedAndTheSecondIsToBeRefunded)
{
    // The response is lost, and the sales are found while the clerk waits or by a later check. Or it arrives as usual,
    // and the program runs on or ends.
    for (const QString &kind : {u"Soon"_s, u"Late"_s, u"Usual"_s, u"Ended"_s}) {
        const ShippoAddress to = homeOf(kind);
        carrier.setScenario({});
        composeAndRate(to);
        carrier.setScenario({.dropConnection = kind == u"Late",
                             .droppedPath = kind == u"Usual" || kind == u"Ended" ? "" : "transactions/",
                             .repeatsPurchases = true});
        pressBuy();
        EXPECT_EQ(purchases().resolved.value().isEmpty(), kind != u"Soon") << kind.toStdString();
        carrier.setScenario({});
        if (kind == u"Ended")
            restart();
        else
            clock.advance(62s);
        checkAgain();
        const QList<ResolvedPurchase> told = purchases().resolved;
        const auto second = std::ranges::find_if(told, &ResolvedPurchase::isSecond);
        ASSERT_NE(second, told.end()) << banner().toStdString();
        EXPECT_TRUE(second->text.startsWith(u"The carrier sold a second label for this package: "_s));
        QSet<QString> numbers;
        for (const ShipmentRecord &row : app->log.records()) {
            if (row.recipientName() == to.name)
                numbers += row.tracking;
        }
        EXPECT_TRUE(numbers.size() == 2 && numbers.contains(second->record.tracking));
        EXPECT_TRUE(std::ranges::any_of(errors->entries(), [&](const APIErrorEntry &entry) {
            return entry.detail.contains(second->record.tracking) && entry.detail.contains(u"Request a refund"_s);
        }));
        for (const ResolvedPurchase &purchase : told)
            purchases().dismiss(purchase);
        clock.advance(62s);
        checkAgain(); // a second label is told once
        EXPECT_TRUE(purchases().resolved.value().isEmpty() && app->journal.openPurchases().isEmpty());
    }
}

TEST_F(PurchaseLookupTest, AQueuedPurchaseIsLookedUpByItsId)
{
    composeAndRate(homeAddress());
    carrier.setScenario({.dropConnection = true, .queuedReads = 6});
    pressBuy();
    carrier.setScenario({});
    checkAgain();
    ASSERT_EQ(unresolved(), 1);
    const QString id = purchases().unresolved.value().first().purchase.record.transactionID;
    EXPECT_FALSE(id.isEmpty());
    EXPECT_EQ(app->journal.openPurchases().value(0).record.transactionID, id) << "kept if the program ends now";
    for (int look = 0; look < 10 && unresolved() > 0; ++look)
        checkAgain();
    EXPECT_EQ(newest().transactionID, id);
    EXPECT_GT(requestsTo("/transactions/" + id.toLatin1()), 0);
}

TEST_F(PurchaseLookupTest, APurchaseWhoseEntryCannotBeReadIsFoundByItsRate)
{
    const OpenPurchase lost = lose();
    restart([this] {
        ASSERT_TRUE(Database(path(u"purchase_journal.sqlite"_s))
                        .exec("UPDATE purchases SET shipment = '{\"hold\"', recipient = 'x'"));
    });
    checkAgain();
    EXPECT_TRUE(std::ranges::any_of(prompts.alerts, [](const auto &alert) {
        return alert.second.startsWith(u"Open purchases in the journal that cannot be read"_s);
    }));
    ASSERT_EQ(app->log.records().size(), 1);
    EXPECT_EQ(newest().recipientName(), homeAddress().name);
    EXPECT_TRUE(newest().testMode && !newest().tracking.isEmpty() && !newest().service.isEmpty());
    EXPECT_EQ(newest().createdAt.toMSecsSinceEpoch(), lost.askedAt.toMSecsSinceEpoch())
        << "the time of the purchase, not of the lookup";
}

TEST_F(PurchaseLookupTest, TheCarrierIsAskedLessAndLessOften)
{
    const OpenPurchase lost = lose();
    listAnswers(404, "{}");
    purchases().markUnresolved(lost, {});
    for (const auto pause : {5s, 10s, 20s, 40s, 60s, 60s}) {
        const int before = requestsTo("/transactions");
        clock.advance(pause - 1ms);
        EXPECT_FALSE(purchases().checking) << pause.count();
        clock.advance(1ms);
        runUntil([&] { return requestsTo("/transactions") > before && !purchases().checking; });
    }
}

TEST_F(PurchaseLookupTest, APurchaseThatWasResolvedByHandDoesNotComeBack)
{
    prompts.answer = 1;
    for (const auto &[status, body] : {std::pair(503, "{}"), std::pair(200, R"({"results": []})")}) {
        const OpenPurchase lost = lose(homeOf(QString::number(status)));
        listAnswers(status, body, true);
        clock.advance(61s); // starts a check
        runUntil([this] { return purchases().checking.value(); });
        run(purchases().resolveByHand(lost.id, Purchases::ByHand::notBought));
        listAnswers(status, body);
        runUntil([this] { return !purchases().checking; });
        EXPECT_EQ(unresolved(), 0);
        EXPECT_TRUE(purchases().resolved.value().isEmpty()) << "the clerk has decided";
    }
}

TEST_F(PurchaseLookupTest, ALabelThatIsFoundLaterIsKeptUntilItIsLoggedOnce)
{
    const OpenPurchase lost = lose();
    EXPECT_EQ(app->draftTo.value(), lost.recipient);
    changeLog(refuseRows);
    clock.advance(30s);
    checkAgain();
    ASSERT_EQ(unresolved(), 1);
    EXPECT_TRUE(purchases().unresolved.value().first().isUnlogged && purchases().resolved.value().isEmpty());
    EXPECT_EQ(app->journal.openPurchases().size(), 1) << "still recorded, if the program ends now";
    settle();
    const qsizetype reports = errors->entries().size();
    checkAgain();
    settle();
    EXPECT_EQ(errors->entries().size(), reports) << "already reported";
    changeLog("DROP TRIGGER refuse");
    checkAgain();
    EXPECT_EQ(unresolved(), 0);
    ASSERT_EQ(app->log.records().size(), 1);
    EXPECT_TRUE(newest().trackingURL.startsWith(u"http"_s) && app->journal.openPurchases().isEmpty());
    EXPECT_TRUE(app->draftTo.value().isEmpty()) << "the parcel was sold after all";

    EXPECT_TRUE(app->log.setStatus(newest(), u"REFUNDED"_s));
    run(purchases().print(purchases().resolved.value().value(0)));
    EXPECT_TRUE(prompts.questions.value(0).text.contains(u"This label was refunded"_s));
    EXPECT_FALSE(purchases().resolved.value().value(0).isPrinted) << "the clerk canceled";

    OpenPurchase again = lost; // the program ended between the log and the journal
    again.record = newest();
    again.record.id = 0;
    again.id = app->journal.begin(again);
    purchases().markUnresolved(again, {});
    checkAgain();
    EXPECT_EQ(app->log.records().size(), 1);
    EXPECT_TRUE(app->journal.openPurchases().isEmpty());
}

TEST_F(PurchaseLookupTest, TheJournalHasTheLabelBeforeItPrintsAndKnowsThatItPrinted)
{
    const auto arePapersOpen = [this] {
        return LabelEvents::find(app->log, newest().transactionID, LabelEvent::papersFailed)->has_value();
    };
    screen().customs = CustomsInfo{.value = u"310"_s};
    lose(londonAddress());
    checkAgain();
    EXPECT_TRUE(arePapersOpen()) << "a label that is found later prints no papers";
    ShippoAddress next = londonAddress();
    next.name = u"Edith Cole"_s;
    next.street1 = u"2 Strand"_s;
    screen().customs = CustomsInfo{.value = u"310"_s};
    composeAndRate(next);
    changeLog(refuseRows);
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
    restart(); // as if the program had ended there
    changeLog("DROP TRIGGER refuse");
    checkAgain();
    EXPECT_TRUE(newest().recipient.startsWith(next.name) && !arePapersOpen()) << "they were printed with the label";
}

} // namespace parcelory::test
