// The program is killed at every step of a purchase; after the next start, every label is logged exactly once.

#include "support/AppTest.h"

#include <QProcess>

#include <csignal>

namespace parcelory::test {
namespace {

/// Kills a program at a step of its purchase and starts the program again over its folder; false if the purchase has
/// fewer steps.
bool dieAndStartAgain(int step, const CarrierScenario &scenario)
{
    LabelDesk desk;
    desk.carrier.setScenario(scenario);
    const QString folder = desk.path(u"books"_s);
    QProcess victim;
    victim.start(QStringLiteral(PARCELORY_VICTIM), {folder, desk.carrier.baseUrl().toString(), QString::number(step)});
    EXPECT_TRUE(victim.waitForFinished());
    const bool wasKilled = victim.exitStatus() == QProcess::CrashExit;
    EXPECT_EQ(victim.exitCode(), wasKilled ? SIGKILL : 0) << victim.readAllStandardError().toStdString();
    desk.carrier.setScenario({});

    desk.platform.dataFolder = QDir(folder);
    desk.screenOwner.reset();
    desk.app = std::make_unique<AppState>(desk.platform);
    desk.screenOwner = std::make_unique<LabelScreen>(*desk.app);
    desk.run(desk.purchases().resume());
    const qsizetype shown = desk.purchases().unresolved.value().size() + desk.app->log.records().size();
    desk.clock.advance(61s);
    desk.checkAgain();
    settle();
    EXPECT_TRUE(desk.purchases().unresolved.value().isEmpty());
    EXPECT_TRUE(desk.app->journal.openPurchases().isEmpty());

    const QDate today = QDate::currentDate();
    const QList<MasterEntry> sold = runTask(desk.app->shippo.masterLog(today.addDays(-1), today.addDays(1)));
    const QList<ShipmentRecord> rows = desk.app->log.records();
    EXPECT_EQ(sold.size(), rows.size());
    EXPECT_LE(rows.size(), 1);
    EXPECT_GE(shown, rows.size()) << "what the program shows right after the start";
    EXPECT_TRUE(wasKilled || rows.size() == 1);
    for (const ShipmentRecord &row : rows) {
        EXPECT_EQ(row.transactionID, sold.value(0).id);
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

} // namespace parcelory::test
