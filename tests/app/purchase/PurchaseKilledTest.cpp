// The program is killed at every step of a purchase; after the next start, every label is logged exactly once.

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/purchase/Purchases.h"
#include "carrier/MasterEntry.h"
#include "practice/carrier/CarrierScenario.h"
#include "records/ShipmentRecord.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <QProcess>

#include <chrono>
#include <csignal>
#include <memory>

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

} // namespace parcelory::test
