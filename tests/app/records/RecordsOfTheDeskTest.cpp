// What all screens do when another program replaces the records.

#include "app/Screens.h"
#include "support/AppTest.h"
#include "support/LogFile.h"

#include <cstdio>

namespace parcelory::test {
namespace {

class RecordsOfTheDesk : public testing::Test, public CarrierDesk {
protected:
    RecordsOfTheDesk() { start(); }
    ~RecordsOfTheDesk() override { settlePool(3); }
    /// Starts the program, or starts it again.
    void start(const std::function<void()> &meanwhile = {})
    {
        settlePool(3);
        screens.reset();
        app.reset();
        if (meanwhile)
            meanwhile();
        app = std::make_unique<AppState>(platform);
        screens = std::make_unique<Screens>(*app);
    }
    QString file(const QString &name) const { return platform.dataFolder.filePath(name); }
    RecordsScreen &records() { return screens->records; }

    ErrorLog errors{platform};
    std::unique_ptr<AppState> app;
    std::unique_ptr<Screens> screens;
};

} // namespace

TEST_F(RecordsOfTheDesk, AreShownAsAnotherProgramHasRestoredThem)
{
    EXPECT_TRUE(app->log.insert(shipmentTo(u"Former"_s)) && app->addressBook.upsert({.name = u"Former"_s}));
    runTask(screens->addressBook.reload());
    records().report = LogChain::Report{};
    records().restore.logDamaged = true;
    const QTemporaryDir other;
    {
        ShipmentLog log{QDir(other.path())};
        LocalAddressStore book{QDir(other.path())};
        EXPECT_TRUE(log.insert(shipmentTo(u"Restored"_s), false) && book.upsert({.name = u"Restored"_s}));
    }
    for (const QString &name : {u"mailing_log.sqlite"_s, u"addresses.sqlite"_s})
        ASSERT_EQ(std::rename(qUtf8Printable(other.filePath(name)), qUtf8Printable(file(name))), 0);
    EXPECT_EQ(rowOf(app->log, 1).recipient, u"Restored"_s);
    const QStringList restored{u"Restored"_s};
    runUntil([&] {
        return shown(app->log) == restored && each(screens->addressBook.contacts(), &PostalContact::name) == restored;
    });
    EXPECT_FALSE(records().report.value() || records().restore.isDamaged());
}

} // namespace parcelory::test
