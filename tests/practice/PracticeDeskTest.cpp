#include "practice/PracticeDesk.h"
#include "carrier/ShippoKeys.h"
#include "core/SettingsKeys.h"
#include "core/ports/Keyboard.h"
#include "core/ports/Preferences.h"
#include "devices/LabelPrinter.h"
#include "devices/Zpl.h"
#include "platform/SystemPlatform.h"
#include "practice/PracticePrinter.h"
#include "support/FakePlatform.h"
#include "support/RunTask.h"
#include "support/Test.h"

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

} // namespace parcelory::test
