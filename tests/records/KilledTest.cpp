// The program is killed in the middle of something; what the next start finds is true.

#include "records/LogFile.h"
#include "records/MailingLogScreen.h"
#include "records/SaveFile.h"
#include "support/CarrierDesk.h"

#include <csignal>
#include <unistd.h>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

/// A folder that a test shares with the process in which its fatal part runs: that one begins the test anew.
class Killed : public testing::Test {
protected:
    Killed()
    {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        if (!qEnvironmentVariableIsSet("PARCELORY_KILLED_IN"))
            qputenv("PARCELORY_KILLED_IN", own.path().toUtf8());
    }
    ~Killed() override
    {
        if (folder() == own.path())
            qunsetenv("PARCELORY_KILLED_IN");
    }
    static QString folder() { return qEnvironmentVariable("PARCELORY_KILLED_IN"); }
    static void die() { ::kill(::getpid(), SIGKILL); }

    static void askForARefund()
    {
        CarrierDesk desk;
        desk.platform.dataFolder = QDir(folder());
        ErrorLog errors(desk.platform);
        AppState app(desk.platform);
        MailingLogScreen log(app);
        ShipmentRecord record = shipmentTo(u"Ana"_s);
        record.transactionID = u"t1"_s;
        if (!app.log.insert(record))
            return;
        settle();
        desk.prompts.answer = 1;
        desk.carrier.setScenario({.answerDelay = std::chrono::minutes(1)});
        spawn([&] { return log.refund(log.records().value(0)); });
        runUntil([&] { return !desk.carrier.requests().isEmpty(); });
        die();
    }
    static void exportTheLog()
    {
        ShipmentLog log{QDir(folder())};
        for (int row = 0; row < 20; ++row)
            EXPECT_TRUE(log.insert(shipmentTo(u"Ana"_s), false));
        std::ignore = saveFile(folder() + u"/out.csv"_s, [&log](QIODevice &file) {
            const bool written = log.exportEndicia(file);
            die(); // all is written, but not yet in its place
            return written;
        });
    }

    QTemporaryDir own;
};

} // namespace

TEST_F(Killed, WhileARefundIsAskedForTheLogSaysThatItIsPending)
{
    EXPECT_EXIT(askForARefund(), testing::KilledBySignal(SIGKILL), "");
    const ShipmentLog log{QDir(folder())};
    settle();
    ASSERT_EQ(log.records().size(), 1);
    EXPECT_EQ(log.records()[0].status, u"REFUND_PENDING"_s);
    EXPECT_TRUE(MailingLogScreen::isRefundable(log.records()[0])) << "the carrier can be asked how it is";
}

TEST_F(Killed, WhileItExportsTheFormerFileStays)
{
    const QString path = folder() + u"/out.csv"_s;
    saveBytes(path, "former");
    EXPECT_EXIT(exportTheLog(), testing::KilledBySignal(SIGKILL), "");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "former");
}

} // namespace parcelory::test
