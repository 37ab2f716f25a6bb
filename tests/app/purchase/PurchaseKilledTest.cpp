// The program is killed at every step of a purchase; after the next start, every label is logged exactly once.

#include "support/AppTest.h"

#include <QSet>

namespace parcelory::test {
namespace {

/// A desk that shares its folder and its carrier with a program that is killed while it buys labels.
struct Survivor : LabelDesk {
    QProcess victim;
    QStringList sold;
    std::optional<DraftKeeper> keeper;

    void startVictim(int step)
    {
        victim.start(QStringLiteral(PARCELORY_VICTIM),
                     {path(u"books"_s), carrier.baseUrl().toString(), QString::number(step)});
    }
    /// Starts the program in the victim's folder; returns how many rows and unresolved purchases it shows then.
    qsizetype takeOver()
    {
        carrier.setScenario({});
        platform.dataFolder = QDir(path(u"books"_s));
        screenOwner.reset();
        app = std::make_unique<AppState>(platform);
        screenOwner = std::make_unique<LabelScreen>(*app);
        keeper.emplace(*app, screen());
        run(keeper->takeStored());
        run(purchases().resume());
        const qsizetype shown = purchases().unresolved.value().size() + app->log.records().size();
        checkLater();
        settle();
        EXPECT_TRUE(purchases().unresolved.value().isEmpty() && app->journal.openPurchases().isEmpty());
        const QDate today = QDate::currentDate();
        sold = each(runTask(app->shippo.masterLog(today.addDays(-1), today.addDays(1))), &MasterEntry::id);
        sold.sort();
        return shown;
    }
};

/// False if the purchase has fewer steps.
bool dieAndStartAgain(int step, const CarrierScenario &scenario)
{
    SCOPED_TRACE(step);
    Survivor desk;
    desk.carrier.setScenario(scenario);
    desk.startVictim(step);
    EXPECT_TRUE(desk.victim.waitForFinished(-1));
    const bool wasKilled = desk.victim.exitStatus() == QProcess::CrashExit;
    EXPECT_EQ(desk.victim.exitCode(), wasKilled ? SIGKILL : 0) << desk.victim.readAllStandardError().toStdString();
    const qsizetype shown = desk.takeOver();
    const QList<ShipmentRecord> rows = desk.app->log.records();
    EXPECT_EQ(desk.sold.size(), rows.size());
    EXPECT_LE(rows.size(), 1);
    EXPECT_GE(shown, rows.size());
    EXPECT_TRUE(wasKilled || rows.size() == 1);
    EXPECT_EQ(desk.screen().recipient().isEmpty(), !rows.isEmpty()) << "only a draft without a label comes back";
    for (const ShipmentRecord &row : rows) {
        EXPECT_TRUE(desk.sold.contains(row.transactionID));
        EXPECT_TRUE(*desk.app->log.zpl(row.id)) << "its label can be printed";
    }
    return wasKilled;
}

void killAtEveryStep(const CarrierScenario &scenario)
{
    int step = 1;
    while (dieAndStartAgain(step, scenario))
        ++step;
    EXPECT_GT(step, 8) << "a purchase has more steps than that";
}

} // namespace

TEST(KilledDuringAPurchase, EveryLabelIsLoggedOnce)
{
    killAtEveryStep({});
}

TEST(KilledDuringAPurchase, EveryLabelWhoseResponseIsLostIsLoggedOnce)
{
    killAtEveryStep({.droppedPath = "transactions/"});
}

TEST(KilledDuringAPurchase, AtRandomMomentsNoLabelIsLostOrDoubled)
{
    constexpr int kills = 25, mostRequests = 20;
    Survivor desk;
    std::mt19937 random(20261122);
    std::uniform_int_distribution lifetime(1, mostRequests); // in requests, so that it lasts on a slow machine, too
    for (int kill = 0; kill < kills; ++kill) {
        const qsizetype last = desk.carrier.requests().size() + lifetime(random);
        desk.startVictim(0);
        runUntil([&] { return desk.carrier.requests().size() >= last; });
        desk.victim.kill();
        EXPECT_TRUE(desk.victim.waitForFinished(-1));
        runTask(desk.app->shippo.carrierAccounts()); // the carrier has answered what the victim sent before
    }
    desk.takeOver();

    QStringList logged;
    QSet<QString> recipients;
    const Database log(desk.path(u"books/mailing_log.sqlite"_s));
    for (Statement rows(log, "SELECT transaction_id, recipient FROM shipments"); rows.step();) {
        logged += rows.text(0);
        EXPECT_FALSE(recipients.contains(rows.text(1))) << rows.text(1).toStdString();
        recipients.insert(rows.text(1));
    }
    logged.sort();
    EXPECT_EQ(logged, desk.sold);
    EXPECT_GT(desk.sold.size(), kills / 2);
    Statement check(log, "PRAGMA quick_check");
    EXPECT_TRUE(check.step() && check.text(0) == u"ok");
}

} // namespace parcelory::test
