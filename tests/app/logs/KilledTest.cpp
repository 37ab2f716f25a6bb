// The program is killed during an operation; the next start must find the true state.

#include "support/AppTest.h"

#include <unistd.h>

#include <limits>

namespace parcelory::test {
namespace {

constexpr int rounds = 24;

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

    /// A label is bought, a process dies `turns` turns after it began `work`, and the program starts again. A round is
    /// over for the victim when it has died.
    void dieInRound(int turns, const std::function<Task<>(AppState &)> &work,
                    const std::function<void(const ShipmentRecord &label)> &check)
    {
        ShipmentRecord label;
        if (!isVictim) {
            composeAndRate(homeAddress());
            pressBuy();
            label = app->log.records().value(0);
            settlePool();
            screenOwner.reset(); // only one program at a time can hold the records
            app.reset();
        }
        // In the last round it dies at the end of the work, however many turns that takes on a busy machine.
        const int most = turns + 1 < rounds ? turns : std::numeric_limits<int>::max();
        EXPECT_EXIT(dieAfter(most, work), testing::KilledBySignal(SIGKILL), "");
        if (isVictim)
            return;
        app = std::make_unique<AppState>(platform);
        screenOwner = std::make_unique<LabelScreen>(*app);
        settle();
        for (int answers = 0; answers < 3; ++answers) // the carrier may still be reading the dead program's request
            runTask(app->shippo.carrierAccounts(), &clock);
        SCOPED_TRACE(turns);
        check(label);
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
        const Task<> task = work(program);
        for (int turn = 0; turn < turns && !task.isReady(); ++turn)
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

} // namespace

TEST_F(Killed, AtAnyMomentOfARefundTheNextStartFindsItsOutcome)
{
    QMap<QString, int> ends;
    const auto check = [&](const ShipmentRecord &label) {
        const QString found = app->log.find(label)->value().status;
        clock.advance(90s);
        run(app->syncRefundStatuses());
        const QString settled = app->log.find(label)->value().status;
        const QString real = runTask(app->shippo.transaction(label.transactionID), &clock).status;
        EXPECT_EQ(settled, real == u"REFUNDED" ? u"REFUNDED"_s : u"PRINTED"_s);
        EXPECT_TRUE(app->journal.openRefunds().isEmpty());
        ++ends[found + u' ' + real];
        if (found == u"REFUND_PENDING" && real == u"SUCCESS")
            EXPECT_TRUE(errors->entries().value(0).detail.contains(label.tracking))
                << "the clerk had asked for the refund";
    };
    for (int turns = 0; turns < rounds; ++turns)
        dieInRound(turns, refundNewest, check);
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
    const auto check = [&](const ShipmentRecord &label) {
        clock.advance(90s);
        run(app->syncRefundStatuses());
        if (app->scanForms.finished(1)->value(0).transactions.contains(label.transactionID)) {
            ++recovered;
        } else {
            prompts.answer = 1; // the labels of the earlier rounds are on forms
            run(app->createScanForm(deskAddress()));
        }
        const QList<ScanForm> forms = *app->scanForms.finished(1);
        EXPECT_EQ(forms.value(0).transactions, QStringList(label.transactionID));
        EXPECT_TRUE(app->scanForms.underWay(true)->isEmpty());
        EXPECT_EQ(app->scanForms.documents(forms.value(0).id)->size(), 1);
    };
    for (int turns = 0; turns < rounds; ++turns)
        dieInRound(turns, makeScanForm, check);
    if (!isVictim)
        EXPECT_TRUE(recovered > 0 && recovered < rounds) << recovered;
}

TEST_F(Killed, DuringAnExportTheOldFileStays)
{
    const QString path = folder() + u"/out.csv"_s;
    if (!isVictim)
        saveBytes(path, "former");
    EXPECT_EXIT(exportTheLog(), testing::KilledBySignal(SIGKILL), "");
    EXPECT_EQ(contentsOf(path), "former");
}

} // namespace parcelory::test
