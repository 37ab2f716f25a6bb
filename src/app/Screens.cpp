#include "app/Screens.h"

#include "app/AppState.h"
#include "app/purchase/Purchases.h"
#include "app/records/CopyRecords.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "records/DraftStore.h"
#include "records/LabelChecks.h"
#include "records/SenderProfile.h"
#include "records/ShipmentRecord.h"

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

Screens::Screens(AppState &app)
    : signIn(app), addressBook(app), label(app), mailingLog(app), keys(app), masterLog(app, keys), scanForm(app),
      endOfDay(app, keys, mailingLog, label.purchases), settings(app), updates(app), records(app), openLabel(app),
      handbook(app), m_app(app)
{
    connect(&mailingLog, &MailingLogScreen::reprinted, &label, &LabelScreen::takeReprint);
    buildOn(app, signIn, addressBook, label, mailingLog, keys, masterLog, scanForm, endOfDay, settings, updates,
            records, openLabel, handbook);
    for (LabelPreview *place : {&label.preview, &mailingLog.preview, &settings.testLabel})
        connect(place, &LabelPreview::opened, this, [this, place] {
            openLabel.follow(*place);
            labelsOpened = labelsOpened + 1;
        });
    connect(&label.purchases, &Purchases::refundWanted, this,
            [this](const ShipmentRecord &record) { spawn([this, record] { return refundSecond(record); }); });
}

/// The mailing log asks the clerk and shows the outcome.
Task<> Screens::refundSecond(ShipmentRecord label)
{
    m_app.tab = MainTab::mailingLog;
    const auto found = co_await onPool([&log = m_app.log, label] { return log.find(label); });
    const std::optional<ShipmentRecord> row = found.valueOr(std::nullopt);
    const QString obstacle = !found.isRead() ? found.failure()
                             : !row
                                 ? u"The label with tracking number %1 is not in the mailing log."_s.arg(label.tracking)
                                 : labelBlocker(LabelUse::refund, *row);
    if (obstacle.isEmpty())
        co_await mailingLog.refund(*row);
    else
        mailingLog.refuse(obstacle);
}

Task<> Screens::restartIntoUpdate()
{
    try {
        co_await copyRecordsBefore(m_app, CopyReason::beforeUpdate);
    } catch (const AppError &error) {
        m_app.errors.record(u"Update"_s, error, Popup::no);
        co_return; // as the clerk chose
    }
    m_app.drafts.save(label.saved());
    co_await onPool([&drafts = m_app.drafts] { drafts.flush(); });
    co_await updates.relaunchNow();
    if (!updates.isRelaunching())
        m_app.drafts.clear(); // the clerk goes on with the draft on the screen
}

void Screens::takeSavedDraft()
{
    const std::optional<SavedDraft> draft = m_app.drafts.saved();
    if (!draft)
        return;
    m_app.drafts.clear(); // a later start must not bring back a parcel that has its label by then
    label.restore(*draft);
    if (!draft->recipient.isEmpty())
        label.banner = Banner{QStringLiteral("The draft is back after the update — validate the address again.")};
}

Task<> Screens::createScanForm(ScanFormScope scope)
{
    return m_app.createScanForm(label.sender().value_or(SenderProfile()).address, scope);
}

Task<> Screens::showDifference(AccountDifference difference)
{
    if (difference.row != 0) {
        m_app.tab = MainTab::mailingLog;
        mailingLog.selected = difference.row;
        if (!mailingLog.selectedRecord()) // not among the newest rows
            mailingLog.search = difference.tracking;
        co_return;
    }
    m_app.tab = MainTab::masterLog;
    co_await masterLog.showEntry(difference.time.date(), difference.id);
}

} // namespace parcelory
