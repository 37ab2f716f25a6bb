#pragma once

// What the tests of the screens use most: their records, the practice carrier's faults, and the desks.

// IWYU pragma: begin_exports
#include "app/AppState.h"
#include "app/Screens.h"
#include "app/addressbook/AddressBook.h"
#include "app/label/DraftKeeper.h"
#include "app/logs/MasterLogScreen.h"
#include "app/purchase/Purchases.h"
#include "app/records/RecordsScreen.h"
#include "app/scanform/ScanFormScreen.h"
#include "app/settings/KeysScreen.h"
#include "app/settings/SettingsScreen.h"
#include "app/update/UpdateChecker.h"
#include "backoffice/DesklineInvoice.h"
#include "carrier/MasterEntry.h"
#include "carrier/ShippoRecords.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/PostalContact.h"
#include "core/SaveFile.h"
#include "core/SettingsKeys.h"
#include "core/Sqlite.h"
#include "core/StatusKind.h"
#include "core/Text.h"
#include "core/ports/Preferences.h"
#include "core/ports/ProcessRunner.h"
#include "core/ports/Prompts.h"
#include "devices/Zpl.h"
#include "records/BoxProfile.h"
#include "records/PurchaseJournal.h"
#include "records/ScanForms.h"
#include "records/SenderProfile.h"
#include "shell/UpdateFeed.h"
#include "support/HeldPool.h"
#include "support/LogFile.h"
#include "support/MailingLogDesk.h"

#include <QProcess>
// IWYU pragma: end_exports

namespace parcelory::test {

/// A print tool that fails with this text when labels or papers are sent to it.
inline auto failingPrinter(const QByteArray &reason)
{
    return [reason](const QString &program, const QStringList &) {
        return program.endsWith(u"/lpr"_s) ? ProcessOutcome{1, {}, reason} : ProcessOutcome{};
    };
}

/// How many jobs the print tool was given.
inline qsizetype printJobs(const FakeProcesses &processes)
{
    return std::ranges::count_if(processes.calls(), [](const auto &call) { return call.program.endsWith(u"/lpr"_s); });
}

inline ShippoAddress homeOf(const QString &name)
{
    ShippoAddress to = homeAddress();
    to.name = name;
    return to;
}

/// The label screen over the practice carrier; what a test has started ends with it.
class LabelTest : public testing::Test, public LabelDesk {
protected:
    void TearDown() override { endLookups(); }

    ShipmentRecord newest() const { return app->log.records().value(0); }
    bool isRated() { return screen().selectedRate().has_value(); }
    qsizetype unresolved() { return purchases().unresolved.value().size(); }
    /// Opens the program again over the same folder.
    void restart(const std::function<void()> &meanwhile = {})
    {
        endLookups();
        screenOwner.reset();
        app.reset();
        if (meanwhile)
            meanwhile();
        app = std::make_unique<AppState>(platform);
        screenOwner = std::make_unique<LabelScreen>(*app);
        settle();
        run(purchases().resume());
    }
    /// A press of Buy whose outcome stays unknown, because the carrier sells the label and no answer arrives.
    void pressUnheard()
    {
        carrier.setScenario({.dropConnection = true});
        pressBuy();
        runUntil([this] { return !purchases().checking; });
        carrier.setScenario({});
    }
    /// Presses Buy and lets the clerk do something before the carrier answers.
    template <class Work>
    void buyAndMeanwhile(Work work)
    {
        clock.advance(LabelScreen::buyPause);
        carrier.setScenario({.holdsAnswers = true});
        const qsizetype before = sent("/transactions/").size();
        Task<> buying = screen().buyAndPrint();
        runUntil([&] { return sent("/transactions/").size() > before; });
        work();
        carrier.setScenario({});
        run(std::move(buying));
        ASSERT_TRUE(banner().startsWith(u"Success!"_s)) << banner().toStdString();
    }
    /// An international parcel with its customs declaration.
    void composeAbroad(const CustomsInfo &customs)
    {
        composeParcel(londonAddress());
        screen().customs = customs;
    }
};

} // namespace parcelory::test
