#include "app/Screens.h"

#include "app/AppState.h"
#include "app/purchase/Purchases.h"
#include "app/records/CopyRecords.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/ports/Prompts.h"
#include "records/BoxStore.h"
#include "records/LabelChecks.h"
#include "records/SenderProfile.h"
#include "records/SenderStore.h"
#include "records/ShipmentRecord.h"

#include <QScopeGuard>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

Screens::Screens(AppState &app)
    : signIn(app), addressBook(app), label(app), draft(app, label), mailingLog(app), keys(app), masterLog(app, keys),
      scanForm(app), endOfDay(app, keys, mailingLog, label.purchases), settings(app), updates(app), records(app),
      rules(app), tracking(app, keys), openItems(app, mailingLog, records, tracking), openLabel(app), handbook(app),
      activity(app, label, addressBook, mailingLog, updates), support(app, label, addressBook, keys, activity.trace),
      m_app(app)
{
    connect(&mailingLog, &MailingLogScreen::reprinted, &label.last, &LastLabelCard::takeReprint);
    connect(&mailingLog, &MailingLogScreen::reprinted, &label.purchases, &Purchases::takeReprint);
    buildOn(app, signIn, addressBook, label, mailingLog, keys, masterLog, scanForm, endOfDay, settings, updates,
            records, rules, tracking, openItems, openLabel, handbook, support);
    for (LabelPreview *place : {&label.last.preview, &mailingLog.preview, &settings.testLabel})
        connect(place, &LabelPreview::opened, this, [this, place] {
            openLabel.follow(*place);
            labelsOpened = labelsOpened + 1;
        });
    connect(&app, &AppState::labelToShow, this,
            [this](const ShipmentRecord &record, const std::optional<LabelVerdict> &verdict) {
                openLabel.show(record, verdict);
                labelsOpened = labelsOpened + 1;
            });
    connect(&app.senders, &SenderStore::overridden, this, &Screens::tellOverridden);
    connect(&app.boxes, &BoxStore::overridden, this, &Screens::tellOverridden);
    records.restore.obstacle = [this] { return obstacleToRestore(); };
    connect(&records, &RecordsScreen::recordsReplaced, this, [this] {
        mailingLog.selected = std::nullopt; // its id may be another label's
        spawn([this] { return addressBook.reload(); });
        spawn([this] { return label.purchases.resumeRestored(); });
        tracking.planAgain();
    });
    connect(&app.log, &ShipmentLog::replacedElsewhere, this, &Screens::takeReplacedRecords, Qt::QueuedConnection);
    connect(&label.purchases, &Purchases::refundWanted, this,
            [this](const ShipmentRecord &record) { spawn([this, record] { return refundSecond(record); }); });
}

/// The folder of the copies may be on a network disk that does not answer: the clerk hears first what the records tell.
Task<> Screens::startRecords()
{
    const bool isDamaged = co_await records.lookForDamage();
    if (!isDamaged)
        spawn([this] { return mailingLog.tellTrouble(); });
    const bool isOffered = co_await records.offerCopy();
    if (isDamaged && !isOffered)
        spawn([this] { return mailingLog.tellTrouble(); });
    co_await records.start();
}

/// Another Parcelory has restored a copy: the lists are of the former records.
void Screens::takeReplacedRecords()
{
    records.takeReplacedRecords();
    mailingLog.selected = std::nullopt;
    spawn([&log = m_app.log] { return onPool([&log] { return log.reload(); }); });
    spawn([this] { return addressBook.reload(); });
    tracking.planAgain();
}

QString Screens::obstacleToRestore() const
{
    if (label.busy || label.buying)
        return u"A purchase is in progress — restore the copy when it is done."_s;
    if (label.purchases.checking || label.purchases.printing)
        return u"A label is being checked or printed — restore the copy when it is done."_s;
    if (m_app.scanFormBusy)
        return u"A SCAN form is in progress — restore the copy when it is done."_s;
    if (addressBook.importing || mailingLog.busy || !m_app.refundsUnderWay.isEmpty())
        return u"An import or a refund is in progress — restore the copy when it is done."_s;
    return {};
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
    if (restarting || !mayRestart())
        co_return;
    restarting = true;
    const auto done = qScopeGuard([this] { restarting = false; });
    try {
        co_await copyRecordsBefore(m_app, CopyReason::beforeUpdate);
    } catch (const AppError &error) {
        m_app.errors.record(u"Update"_s, error, Popup::no);
        co_return; // as the clerk chose
    }
    co_await draft.storeNow();
    // The copy may take a while: the clerk may have called the restart off, or pressed Buy.
    co_await updates.relaunchNow([this] { return restarting && mayRestart(); });
}

QString Screens::changeText() const
{
    const QString last = m_app.lastChange.text;
    return last.isEmpty() ? addressBook.changeText() : last;
}

bool Screens::canUndo() const
{
    const bool isForm = m_app.flow == AppFlow::main && m_app.tab == MainTab::newLabel && label.canUndo();
    return isForm || !changeText().isEmpty();
}

void Screens::undo()
{
    if (m_app.flow != AppFlow::main || m_app.tab != MainTab::newLabel || !label.undo())
        undoChange();
}

void Screens::undoChange()
{
    if (!m_app.lastChange.text.value().isEmpty())
        m_app.lastChange.undo();
    else if (!addressBook.changeText().isEmpty())
        spawn([this] { return addressBook.undo(); });
}

void Screens::tellOverridden(const QStringList &names)
{
    const QString text =
        u"Another Parcelory window also changed %1. Parcelory kept this window's version."_s.arg(names.join(u", "_s));
    spawn([&prompts = m_app.platform.prompts, text] { return prompts.alert(u"Changed Twice"_s, text); });
}

Task<> Screens::createScanForm(ScanFormScope scope)
{
    return m_app.createScanForm(label.sender().value_or(SenderProfile()).address, scope);
}

Task<> Screens::showDifference(AccountDifference difference)
{
    if (difference.row != 0) {
        m_app.tab = MainTab::mailingLog;
        openItems.isShown = false;
        mailingLog.selected = difference.row;
        if (!mailingLog.selectedRecord()) // not among the newest rows
            mailingLog.search = difference.tracking;
        co_return;
    }
    m_app.tab = MainTab::masterLog;
    co_await masterLog.showEntry(difference.time.date(), difference.id);
}

} // namespace parcelory
