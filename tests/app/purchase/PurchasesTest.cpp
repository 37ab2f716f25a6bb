#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class PurchasesTest : public LabelTest {
protected:
    void rate(const QString &reference = {})
    {
        composeParcel(homeAddress());
        screen().reference = reference;
        run(screen().fetchRates());
        ASSERT_TRUE(isRated()) << banner().toStdString();
    }
    /// The mailing log has each label that the carrier sold, once.
    void expectAllLogged(qsizetype count)
    {
        const QDate today = QDate::currentDate();
        QStringList logged = each(app->log.records(), &ShipmentRecord::transactionID);
        QStringList sold =
            each(runTask(app->shippo.masterLog(today.addDays(-1), today.addDays(1)), &clock), &MasterEntry::id);
        sold.sort();
        logged.sort();
        EXPECT_EQ(logged, sold);
        EXPECT_EQ(logged.size(), count);
    }
};

/// A purchase whose response does not say whether the label was sold.
CarrierScenario failingPurchase(int status = 500)
{
    return answering("transactions/", status, "down", "POST");
}

} // namespace

TEST_F(PurchasesTest, ALabelWhoseResponseIsLostIsFoundPrintedAndLogged)
{
    rate();
    carrier.setScenario({.droppedPath = "transactions/"});
    pressBuy();
    EXPECT_TRUE(banner().startsWith(u"Success! "_s)) << banner().toStdString();
    EXPECT_EQ(sent("/transactions/").size(), 1);
    expectAllLogged(1);
    EXPECT_TRUE(processes.lastPrinted().contains("^XA") && app->journal.openPurchases().isEmpty());
}

TEST_F(PurchasesTest, BuyingIsDisabledForTheRecipientWhileTheCarrierIsUnreachable)
{
    rate(u"48213"_s);
    pressUnheard();
    EXPECT_TRUE(banner().endsWith(
        u"We don't know yet if this label was bought. Don't buy it again — Parcelory keeps checking."_s))
        << banner().toStdString();
    const OpenPurchase open = app->journal.openPurchases().first();
    EXPECT_TRUE(errors->entries().first().detail.contains(u"rate "_s + open.rateId)) << "support can find it";
    EXPECT_TRUE(screen().isBuyClosed() && app->log.records().isEmpty());
    app->draftTo = londonAddress();
    EXPECT_FALSE(screen().isBuyClosed());
    app->draftTo = homeAddress();
    screen().reference = u"48999"_s;

    const QByteArray foreign =
        R"({"object_id": "1", "status": "SUCCESS", "rate": {"object_id": "2"}})"; // hides nothing
    carrier.setScenario(answering("transactions", 200,
                                  R"({"results": [)" + foreign + R"(], "next": ")" + carrier.baseUrl().toEncoded() +
                                      R"(transactions?results=100"})",
                                  "GET"));
    checkAgain();
    EXPECT_EQ(unresolved(), 0);
    ASSERT_EQ(purchases().resolved.value().size(), 1);
    const ResolvedPurchase found = purchases().resolved.value().first();
    expectAllLogged(1);
    EXPECT_EQ(screen().reference.value(), u"48999"_s) << "a new draft for the same recipient";
    screen().reference = u"48213"_s;
    EXPECT_TRUE(processes.lastPrinted().isEmpty()) << "a label that is found later prints only when the clerk says so";
    run(purchases().print(found));
    EXPECT_TRUE(processes.lastPrinted().contains("^XA"));
    EXPECT_EQ(app->draftTo.value(), homeAddress()) << "printing must not clear the draft";
    EXPECT_TRUE(purchases().resolved.value().isEmpty()) << "there is nothing more to do";
    EXPECT_FALSE(bannerIsWarning());
}

TEST_F(PurchasesTest, APurchaseNotFoundAfterAMinuteWasNotBought)
{
    rate();
    carrier.setScenario(failingPurchase(409));
    pressBuy();
    EXPECT_TRUE(banner().startsWith(u"Shippo rejected the request (409)."_s)) << banner().toStdString();
    ASSERT_EQ(unresolved(), 1);
    EXPECT_TRUE(purchases().unresolved.value().first().isInconclusive);
    EXPECT_FALSE(screen().isBuyClosed()) << "an inconclusive response leaves buying enabled";

    checkLater();
    ASSERT_EQ(purchases().resolved.value().size(), 1);
    EXPECT_FALSE(purchases().resolved.value().first().isBought);
    EXPECT_TRUE(purchases().resolved.value().first().text.endsWith(u" was not bought, and nothing was charged."_s));
    rate();
    pressBuy();
    expectAllLogged(1);
}

TEST_F(PurchasesTest, AnUnresolvedPurchaseIsLookedUpOnlyWithItsOwnKey)
{
    rate();
    pressUnheard();
    app->keys.set(u"shippo_test_another_account"_s, u"Other"_s);
    app->keys.makeActive(u"Other"_s);
    restart();
    checkLater();
    EXPECT_EQ(unresolved(), 1) << "another account cannot tell";
    useToken(PracticeCarrier::testToken);
    app->keyChanges = app->keyChanges + 1;
    runUntil([this] { return unresolved() == 0; });
    settle();
    expectAllLogged(1);
}

TEST_F(PurchasesTest, ALookupWithinAMinuteOfItsLastActivityNeverResolvesAPurchase)
{
    rate();
    carrier.setScenario(failingPurchase());
    clock.after(1ms, [this] { clock.start = clock.start.addSecs(300); }); // a late response
    pressBuy();
    EXPECT_EQ(unresolved(), 1) << banner().toStdString();
    carrier.setScenario({});
    restart();
    EXPECT_EQ(unresolved(), 1) << "the wait starts at the restart";

    for (const int days : {-1, 2, -1}) { // setting the clock neither ends nor prolongs the wait
        clock.start = clock.start.addDays(days);
        checkAgain();
        EXPECT_EQ(unresolved(), 1) << days;
    }
    clock.start = clock.start.addDays(-1);
    checkLater();
    EXPECT_EQ(unresolved(), 0);
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
        carrier.setScenario(answering("transactions", 200,
                                      R"({"results": [{"object_id": ")" + word + R"(", "status": ")" + word +
                                          R"(", "rate": ")" + rateId +
                                          R"(", "label_url": "https://labels.example/1"}]})",
                                      "GET", 1000));
        checkAgain();
        ASSERT_EQ(newest().transactionID, QString::fromLatin1(word));
        EXPECT_EQ(newest().status, stored);
    }
    const auto isRefusal = [](const APIErrorEntry &entry) { return entry.context == u"Refund"_s; };
    EXPECT_EQ(std::ranges::count_if(errors->entries(), isRefusal), 1) << "the row's status refers to the error log";
}

TEST_F(PurchasesTest, AnUnresolvedPurchaseEndsInTheErrorLogAfterAMonth)
{
    rate();
    pressUnheard();
    useToken(PracticeCarrier::liveToken); // the carrier is not asked with another key
    for (const auto &[days, open] : {std::pair{30, 1}, std::pair{1, 0}}) {
        clock.start = clock.start.addDays(days);
        restart();
        checkAgain(3);
        checkLater();
        EXPECT_EQ(unresolved(), open);
        EXPECT_EQ(app->journal.openPurchases().size(), open);
    }
    EXPECT_TRUE(
        errors->entries().first().detail.startsWith(u"Parcelory never found out whether this label was bought: "_s));
}

TEST_F(PurchasesTest, NothingIsBoughtWithoutAJournalNorTwiceIfItIsReadLate)
{
    rate();
    pressUnheard();
    auto busy = std::make_unique<PurchaseJournal>(QDir(folder.path()));
    restart([&busy] { busy->open(); });
    EXPECT_TRUE(prompts.alerts.last().second.contains(
        u"Parcelory is already open. Use that window; labels can't be bought here"_s));
    EXPECT_EQ(unresolved(), 0);
    rate();
    buy(); // the account may tell of the label by now, which takes one more press
    EXPECT_TRUE(banner().contains(u"labels can't be bought here"_s)) << banner().toStdString();
    ASSERT_TRUE(isRated());
    busy.reset();
    buy();
    EXPECT_EQ(sent("/transactions/").size(), 1) << banner().toStdString(); // a check by itself may have been faster
    checkAgain();
    expectAllLogged(1);
}

TEST_F(PurchasesTest, DamageThatIsFoundLaterIsTold)
{
    auto busy = std::make_unique<PurchaseJournal>(QDir(folder.path()));
    restart([&busy] { busy->open(); });
    settlePool(3); // the check by itself has ended: the file must not change beneath it
    busy.reset();
    QFile file(path(u"purchase_journal.sqlite"_s));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.write(QByteArray(4096, 'x'));
    file.close();
    checkAgain(2);
    runUntil([this] { return prompts.alerts.size() > 1; }); // a check by itself may have found it
    settlePool(3);
    EXPECT_TRUE(prompts.alerts.last().second.contains(u"kept as "_s)) << prompts.alerts.last().second.toStdString();
    EXPECT_EQ(prompts.alerts.size(), 2) << "each sentence once";
}

TEST_F(PurchasesTest, ADamagedJournalIsKeptAndANewJournalStarted)
{
    for (const qint64 from : {4096, 0}) { // only a table, or the whole file
        restart([this, from] {
            QFile file(path(u"purchase_journal.sqlite"_s));
            ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(from));
            file.write(QByteArray(4096, 'x'));
        });
        ASSERT_FALSE(prompts.alerts.empty());
        const QString kept = prompts.alerts.back().second.section(u"kept as "_s, 1).section(u',', 0, 0);
        EXPECT_TRUE(QFile::remove(kept)) << kept.toStdString();
        prompts.alerts.clear();
        composeAndRate(homeOf(u"Parcel %1"_s.arg(from)));
        pressBuy();
    }
    expectAllLogged(2);
}

/// A clerk who stops at every warning never gets a second label for a parcel, whatever fails.
TEST_F(PurchasesTest, NoSequenceOfFailuresBuysTwiceOrLosesALabel)
{
    std::mt19937 random(20261120);
    const auto chance = [&random](int of) { return std::uniform_int_distribution(0, of - 1)(random); };
    const CarrierScenario mishaps[] = {
        {},
        {},
        {.droppedPath = "transactions/"},
        {.dropConnection = true},
        {.queuedReads = 15},
        {.purchaseFails = true, .purchaseMessages = {u"Insufficient funds."_s}},
        failingPurchase(),
    };
    for (int step = 0; step < 60; ++step) {
        carrier.setScenario({});
        composeParcel(homeOf(u"Parcel %1"_s.arg(chance(12)))); // often with a label or an unresolved purchase
        run(screen().fetchRates());
        carrier.setScenario(mishaps[chance(7)]);
        for (int presses = chance(3); presses >= 0; --presses) {
            if (screen().secondLabel.value().isEmpty())
                pressBuy();
        }
        if (chance(5) == 0)
            restart();
        if (chance(3) == 0)
            clock.start = clock.start.addSecs(20);
    }
    carrier.setScenario({});
    clock.start = clock.start.addSecs(61);
    checkAgain();
    EXPECT_EQ(unresolved(), 0);
    EXPECT_TRUE(app->journal.openPurchases().isEmpty());
    QMap<QString, int> labels;
    for (const ShipmentRecord &record : app->log.records())
        EXPECT_EQ(++labels[record.recipient], 1) << record.recipient.toStdString();
    EXPECT_GT(labels.size(), 5);
    expectAllLogged(labels.size());
}

} // namespace parcelory::test
