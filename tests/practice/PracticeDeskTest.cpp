#include "practice/PracticeDesk.h"
#include "app/logs/CarrierJourney.h"
#include "app/purchase/CarrierRefund.h"
#include "carrier/CarrierWords.h"
#include "carrier/ShippoClient.h"
#include "carrier/ShippoKeys.h"
#include "core/SettingsKeys.h"
#include "core/ports/Keyboard.h"
#include "core/ports/Preferences.h"
#include "devices/LabelPrinter.h"
#include "devices/Zpl.h"
#include "platform/SystemPlatform.h"
#include "practice/PracticeMonth.h"
#include "practice/PracticePrinter.h"
#include "records/ShipmentStatus.h"
#include "support/FakePlatform.h"

namespace parcelory::test {
namespace {
class PracticeDeskTest : public testing::Test {
protected:
    QTemporaryDir folder;
    FakePrompts prompts;
    SilentKeyboard keyboard;
    PracticeDesk desk{folder.path(), prompts, keyboard};
};
} // namespace

TEST_F(PracticeDeskTest, ReachesNothingButLoopbackAndStartsNoRealTool)
{
    EXPECT_EQ(desk.platform().deployment.carrierApi.host(), u"127.0.0.1"_s);
    EXPECT_THROW(runTask(desk.platform().http.send({.url = QUrl(u"https://api.goshippo.com/"_s)})), AppError);
    EXPECT_THROW(desk.platform().processes.run(u"/bin/sh"_s, {}), AppError);
    EXPECT_THROW(PracticeDesk(applicationSupportFolder().absolutePath(), prompts, keyboard), AppError);
}

TEST_F(PracticeDeskTest, HasAKeyAndPrintersThatKeepTheirJobs)
{
    Platform &platform = desk.platform();
    ShippoKeys keys(platform.secrets, platform.preferences);
    EXPECT_EQ(keys.statusText(keys.activeToken().value_or(QString())),
              u"Shippo TEST mode (Practice) — labels are not real postage"_s);
    LabelPrinter printer(platform);
    EXPECT_EQ(printer.queues(), (QStringList{PracticePrinter::documentQueue, PracticePrinter::labelQueue}));
    EXPECT_EQ(printer.zebraQueues(), QStringList{PracticePrinter::labelQueue});
    write(platform.preferences, settings::rotate180, false);
    printer.printZPL(Zpl::testLabel, PracticePrinter::labelQueue);
    EXPECT_EQ(contentsOf(desk.printer().folder().filePath(u"0001-Practice_Zebra.zpl"_s)), Zpl::testLabel);
}

TEST_F(PracticeDeskTest, ItsCarrierKnowsTheMonthInTheMailingLogAlsoAfterARestart)
{
    const QTemporaryDir home;
    const QDateTime now = desk.platform().clock.now();
    ShipmentLog log(QDir(home.path()));
    addPracticeMonth(log, now);
    const QList<OpenFacts> labels = *OpenItems::read(log, now);
    for (const int additions : {2, 0}) { // nothing is added twice
        PracticeDesk month(home.path(), prompts, keyboard);
        for (int addition = 0; addition < additions; ++addition)
            addToAccount(month.carrier(), labels);
        ShippoKeys keys(month.platform().secrets, month.platform().preferences);
        ShippoClient client(month.platform(), keys);
        EXPECT_EQ(runTask(client.newestPurchases()).size(), labels.size());
        for (const OpenFacts &facts : labels) {
            const ShippoTransaction sold = runTask(client.transaction(facts.label.transactionID));
            EXPECT_EQ(refundStateOf(transactionStatus(sold)), refundState(facts.label));
            const Journey way = journeyOf(runTask(client.track(u"usps"_s, facts.label.tracking)), {}, now);
            EXPECT_EQ(std::pair(way.status, way.place), std::pair(facts.journey->status, facts.journey->place));
        }
    }
}

} // namespace parcelory::test
