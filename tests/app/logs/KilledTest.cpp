// The program is killed during an operation; the next start must find the true state.

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/logs/MailingLogScreen.h"
#include "core/SaveFile.h"
#include "core/Task.h"
#include "records/ShipmentRecord.h"
#include "shell/ErrorLog.h"
#include "support/CarrierDesk.h"
#include "support/LabelDesk.h"
#include "support/LogFile.h"
#include "support/RunTask.h"

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <limits>
#include <memory>
#include <tuple>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

/// A desk whose folder and carrier the test shares with the process that is killed. That process runs the same test
/// from the start and skips everything but the fatal part.
class Killed : public testing::Test, public LabelDesk {
protected:
    Killed() : isVictim(qEnvironmentVariableIsSet("PARCELORY_KILLED_IN"))
    {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        if (isVictim)
            return;
        qputenv("PARCELORY_KILLED_IN", platform.dataFolder.path().toUtf8());
        qputenv("PARCELORY_KILLED_CARRIER", carrier.baseUrl().toEncoded());
    }
    ~Killed() override
    {
        if (!isVictim)
            qunsetenv("PARCELORY_KILLED_IN");
    }
    static QString folder() { return qEnvironmentVariable("PARCELORY_KILLED_IN"); }
    static void die() { ::kill(::getpid(), SIGKILL); }

    /// Required before another program starts, because only one program at a time can hold the records.
    void closeProgram()
    {
        workPool().waitForDone();
        settle();
        screenOwner.reset();
        app.reset();
    }
    void startProgram()
    {
        app = std::make_unique<AppState>(platform);
        screenOwner = std::make_unique<LabelScreen>(*app);
        settle();
    }
    ShipmentRecord bought()
    {
        composeAndRate(homeAddress());
        pressBuy();
        return app->log.records().value(0);
    }
    QString statusAtCarrier(const ShipmentRecord &record)
    {
        return runTask(app->shippo.transaction(record.transactionID), &clock).status;
    }

    /// Dies after `turns` turns of the event loop since the start of `work`, or at its end.
    static void dieAfter(int turns, const std::function<Task<>(AppState &)> &work)
    {
        CarrierDesk desk;
        desk.clock.start = QDateTime::currentDateTime();
        desk.platform.dataFolder = QDir(folder());
        desk.platform.deployment.carrierApi = QUrl(qEnvironmentVariable("PARCELORY_KILLED_CARRIER"));
        desk.prompts.answer = 1;
        const ErrorLog errors(desk.platform);
        AppState program(desk.platform);
        settle();
        bool isDone = false;
        spawn([&]() -> Task<> {
            co_await work(program);
            isDone = true;
        });
        for (int turn = 0; turn < turns && !isDone; ++turn)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        die();
    }
    static Task<> refundNewest(AppState &program)
    {
        const auto log = std::make_shared<MailingLogScreen>(program);
        co_await log->refund(program.log.records().value(0));
    }
    static Task<> makeScanForm(AppState &program) { co_await program.createScanForm(deskAddress()); }
    static void exportTheLog()
    {
        ShipmentLog log{QDir(folder())};
        for (int row = 0; row < 20; ++row)
            EXPECT_TRUE(log.insert(shipmentTo(u"Ana"_s), false));
        std::ignore = saveFile(folder() + u"/out.csv"_s, [&log](QIODevice &file) {
            const bool written = *log.exportEndiciaCSV(file);
            die(); // everything is written, but the file is not yet renamed
            return written;
        });
    }

    const bool isVictim;
};

constexpr int rounds = 24;

/// In the last round it dies at the end of the work, however many turns that takes on a busy machine.
constexpr int inRound(int turns)
{
    return turns + 1 < rounds ? turns : std::numeric_limits<int>::max();
}

} // namespace

TEST_F(Killed, AtAnyMomentOfARefundTheNextStartFindsItsOutcome)
{
    QMap<QString, int> ends;
    for (int turns = 0; turns < rounds; ++turns) {
        ShipmentRecord label;
        if (!isVictim) {
            label = bought();
            closeProgram();
        }
        EXPECT_EXIT(dieAfter(inRound(turns), refundNewest), testing::KilledBySignal(SIGKILL), "");
        if (isVictim)
            continue;
        startProgram();
        const QString found = app->log.find(label)->value().status;
        const bool isMarked = found == u"REFUND_PENDING";
        clock.advance(std::chrono::seconds(90));
        run(app->syncRefundStatuses());
        const QString settled = app->log.find(label)->value().status, real = statusAtCarrier(label);
        EXPECT_EQ(settled, real == u"REFUNDED" ? u"REFUNDED"_s : u"PRINTED"_s) << turns;
        EXPECT_TRUE(app->journal.openRefunds().isEmpty()) << turns;
        ++ends[found + u' ' + real];
        if (isMarked && real == u"SUCCESS")
            EXPECT_TRUE(errors->entries().value(0).detail.contains(label.tracking))
                << "the clerk had asked for the refund";
    }
    if (isVictim)
        return;
    // The states that a kill can leave. On a busy machine, a turn of the loop may skip an intermediate state.
    const QStringList states = {u"PRINTED SUCCESS"_s, u"REFUNDED REFUNDED"_s, u"REFUND_PENDING REFUNDED"_s,
                                u"REFUND_PENDING SUCCESS"_s};
    EXPECT_GE(ends.size(), 3);
    for (const QString &end : ends.keys())
        EXPECT_TRUE(states.contains(end)) << end.toStdString();
}

TEST_F(Killed, AtAnyMomentOfAScanFormRequestNoFormIsLost)
{
    int recovered = 0;
    for (int turns = 0; turns < rounds; ++turns) {
        ShipmentRecord label;
        if (!isVictim) {
            label = bought();
            closeProgram();
        }
        EXPECT_EXIT(dieAfter(inRound(turns), makeScanForm), testing::KilledBySignal(SIGKILL), "");
        if (isVictim)
            continue;
        startProgram();
        clock.advance(std::chrono::seconds(90));
        run(app->syncRefundStatuses());
        if (app->scanForms.finished(1)->value(0).transactions.contains(label.transactionID)) {
            ++recovered;
        } else {
            prompts.answer = 1; // the labels of the earlier rounds are on forms
            run(app->createScanForm(deskAddress()));
        }
        const QList<ScanForm> forms = *app->scanForms.finished(1);
        EXPECT_EQ(forms.value(0).transactions, QStringList(label.transactionID)) << turns;
        EXPECT_TRUE(app->scanForms.underWay(true)->isEmpty()) << turns;
        EXPECT_EQ(app->scanForms.documents(forms.value(0).id)->size(), 1) << turns;
    }
    if (!isVictim)
        EXPECT_TRUE(recovered > 0 && recovered < rounds) << recovered;
}

TEST_F(Killed, DuringAnExportTheOldFileStays)
{
    const QString path = folder() + u"/out.csv"_s;
    if (!isVictim)
        saveBytes(path, "former");
    EXPECT_EXIT(exportTheLog(), testing::KilledBySignal(SIGKILL), "");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "former");
}

} // namespace parcelory::test
