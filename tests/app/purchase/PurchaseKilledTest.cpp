// The program is killed at every step of a purchase; after the next start, every label is logged exactly once.

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/purchase/Purchases.h"
#include "carrier/MasterEntry.h"
#include "core/Sqlite.h"
#include "practice/carrier/CarrierScenario.h"
#include "records/ShipmentRecord.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QSet>

#include <chrono>
#include <csignal>
#include <memory>
#include <random>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

struct End {
    bool wasKilled;
    int labels; ///< sold by the carrier
    int rows;
    int shown; ///< rows and unresolved purchases right after the start
};

/// Kills a desk at a step of its purchase, then starts it again.
End dieAndStartAgain(int step, const CarrierScenario &scenario)
{
    LabelDesk desk;
    desk.carrier.setScenario(scenario);
    QProcess victim;
    victim.start(QStringLiteral(PARCELORY_VICTIM),
                 {desk.path(u"books"_s), desk.carrier.baseUrl().toString(), QString::number(step)});
    EXPECT_TRUE(victim.waitForFinished());
    const bool wasKilled = victim.exitStatus() == QProcess::CrashExit;
    EXPECT_TRUE(wasKilled ? victim.exitCode() == SIGKILL : victim.exitCode() == 0)
        << victim.readAllStandardError().toStdString();
    desk.carrier.setScenario({});

    desk.platform.dataFolder = QDir(desk.path(u"books"_s));
    desk.screenOwner.reset();
    desk.app = std::make_unique<AppState>(desk.platform);
    desk.screenOwner = std::make_unique<LabelScreen>(*desk.app);
    Purchases &purchases = desk.screen().purchases;
    runTask(purchases.resume());
    settle();
    const int shown = int(purchases.unresolved.value().size() + desk.app->log.records().size());
    desk.clock.advance(std::chrono::seconds(61));
    desk.run(purchases.checkAgain());
    runUntil([&] { return !purchases.checking; });
    settle();
    EXPECT_TRUE(purchases.unresolved.value().isEmpty());
    EXPECT_TRUE(desk.app->journal.openPurchases().isEmpty());

    const QDate today = QDate::currentDate();
    const QList<MasterEntry> sold = runTask(desk.app->shippo.masterLog(today.addDays(-1), today.addDays(1)));
    const QList<ShipmentRecord> rows = desk.app->log.records();
    for (const ShipmentRecord &row : rows) {
        EXPECT_TRUE(sold.isEmpty() || row.transactionID == sold.first().id);
        EXPECT_TRUE(*desk.app->log.zpl(row.id)) << "its label can be printed";
    }
    return {wasKilled, int(sold.size()), int(rows.size()), shown};
}

void killAtEveryStep(const CarrierScenario &scenario)
{
    int step = 1;
    for (End end{.wasKilled = true}; end.wasKilled; ++step) {
        SCOPED_TRACE(step);
        end = dieAndStartAgain(step, scenario);
        EXPECT_EQ(end.labels, end.rows);
        EXPECT_LE(end.labels, 1);
        EXPECT_GE(end.shown, end.labels);
        EXPECT_TRUE(end.wasKilled || end.labels == 1);
    }
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
    constexpr auto enough = std::chrono::seconds(25);
    constexpr int mostKills = 100, shortest = 100, longest = 700; // milliseconds; the first are spent before a purchase
    LabelDesk desk;
    std::mt19937 random(20261122);
    std::uniform_int_distribution lifetime(shortest, longest);
    const QDeadlineTimer over(enough);
    int kills = 0;
    for (; kills < mostKills && !over.hasExpired(); ++kills) {
        QProcess victim;
        victim.start(QStringLiteral(PARCELORY_VICTIM),
                     {desk.path(u"books"_s), desk.carrier.baseUrl().toString(), u"0"_s});
        ASSERT_FALSE(victim.waitForFinished(lifetime(random))) << victim.readAllStandardError().toStdString();
        victim.kill();
        EXPECT_TRUE(victim.waitForFinished());
        runTask(desk.app->shippo.carrierAccounts()); // the carrier has answered what the victim sent before
    }
    EXPECT_GT(kills, 5);

    desk.platform.dataFolder = QDir(desk.path(u"books"_s));
    desk.screenOwner.reset();
    desk.app = std::make_unique<AppState>(desk.platform);
    desk.screenOwner = std::make_unique<LabelScreen>(*desk.app);
    desk.run(desk.purchases().resume());
    desk.clock.advance(std::chrono::seconds(61));
    desk.checkAgain();
    EXPECT_TRUE(desk.purchases().unresolved.value().isEmpty());
    EXPECT_TRUE(desk.app->journal.openPurchases().isEmpty());

    QStringList sold, logged;
    const QDate today = QDate::currentDate();
    for (const MasterEntry &entry : runTask(desk.app->shippo.masterLog(today.addDays(-1), today.addDays(1))))
        sold += entry.id;
    QSet<QString> recipients;
    const Database log(desk.path(u"books/mailing_log.sqlite"_s));
    for (Statement rows(log, "SELECT transaction_id, recipient FROM shipments"); rows.step();) {
        logged += rows.text(0);
        EXPECT_FALSE(recipients.contains(rows.text(1))) << rows.text(1).toStdString();
        recipients.insert(rows.text(1));
    }
    sold.sort();
    logged.sort();
    EXPECT_EQ(logged, sold);
    EXPECT_GT(sold.size(), kills);
    Statement check(log, "PRAGMA quick_check");
    EXPECT_TRUE(check.step() && check.text(0) == u"ok");
}

} // namespace parcelory::test
