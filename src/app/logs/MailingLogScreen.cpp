#include "app/logs/MailingLogScreen.h"

#include "app/AppState.h"
#include "app/logs/CarrierJourney.h"
#include "app/logs/TrackPage.h"
#include "app/purchase/LabelPrinting.h"
#include "app/purchase/ReprintCheck.h"
#include "carrier/ShippoRecords.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Prompts.h"
#include "records/LabelChecks.h"
#include "records/LabelHistory.h"
#include "records/LogRead.h"
#include "records/ShipmentLog.h"
#include "records/ShipmentRecord.h"
#include "records/StatusWords.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

MailingLogScreen::MailingLogScreen(AppState &app)
    : preview(app), m_app(app), m_searchWatch(search.addNotifier([this] {
          m_query.cancel(); // its rows are no longer needed
          spawn([this] { return catchUp(); });
      })),
      m_selectedWatch(selected.addNotifier([this] {
          if (selected.value()) // the clerk looks at this row now
              m_bought.clear();
          showSelected();
      }))
{
    buildOn(preview);
    connect(&app.log, &ShipmentLog::recordsChanged, this, &MailingLogScreen::takeRecords);
    connect(this, &MailingLogScreen::recordsChanged, this, &MailingLogScreen::changed);
    connect(&app, &AppState::labelLogged, this, [this](const QString &transactionId) {
        m_bought = m_app.tab == MainTab::mailingLog ? QString() : transactionId; // the clerk may be looking at a row
        selectBought();
    });
    connect(&app.log, &ShipmentLog::readingFailed, this, &MailingLogScreen::takeReadFailure);
}

MailingLogScreen::~MailingLogScreen()
{
    m_app.platform.clock.cancel(m_retry);
}

void MailingLogScreen::takeReadFailure(const QString &failure)
{
    if (failure != readFailure.value()) // a retry that fails is not another failure
        m_app.errors.record(u"Mailing Log"_s, AppError(failure), Popup::no);
    readFailure = failure;
    m_failureMessage = failure + u" The list may be out of date. Parcelory keeps trying."_s;
    say(m_failureMessage, true);
    m_app.platform.clock.cancel(m_retry);
    m_retry = m_app.platform.clock.after(retryPause, [this] { spawn([this] { return catchUp(); }); });
}

/// A new label reloads the list without the search; the search is then repeated.
void MailingLogScreen::takeRecords()
{
    m_app.platform.clock.cancel(m_retry);
    readFailure = QString();
    if (!m_failureMessage.isEmpty() && message.value() == m_failureMessage)
        say(QString());
    if (!isUpToDate()) {
        spawn([this] { return catchUp(); });
        return;
    }
    if (!selectedRecord())
        selected = std::nullopt;
    else
        showSelected(); // the row may have changed
    selectBought();
    emit recordsChanged();
}

/// The next question about the log is mostly about the label that was just bought.
void MailingLogScreen::selectBought()
{
    const auto found = std::ranges::find(records(), m_bought, &ShipmentRecord::transactionID);
    if (m_bought.isEmpty() || found == records().end())
        return;
    m_bought.clear();
    selected = found->id;
}

void MailingLogScreen::showSelected()
{
    if (const std::optional<ShipmentRecord> record = selectedRecord())
        preview.show(*record);
    else
        preview.clear();
}

/// Runs one query at a time, always for the latest search text; skips the texts in between.
Task<> MailingLogScreen::catchUp()
{
    if (m_reloading)
        co_return;
    m_reloading = true;
    QString asked;
    do {
        asked = search.value();
        m_query = {};
        const bool read = co_await onPool(m_app.log, &ShipmentLog::reload, asked, ShipmentLog::listLimit, m_query);
        if (!read && asked == search.value()) { // the next change of the search or the log retries
            m_reloading = false;
            co_return;
        }
    } while (asked != search.value());
    // The rows arrive in a queued event, and so may the rows of a label bought meanwhile; check after both.
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_reloading = false;
            if (!isUpToDate())
                spawn([this] { return catchUp(); });
        },
        Qt::QueuedConnection);
}

std::optional<ShipmentRecord> MailingLogScreen::selectedRecord() const
{
    const std::optional<qint64> id = selected;
    const auto found = std::ranges::find_if(records(), [id](const ShipmentRecord &record) { return record.id == id; });
    if (found != records().end())
        return *found;
    return m_unlisted && m_unlisted->id == id ? m_unlisted : std::nullopt;
}

void MailingLogScreen::lookAt(const ShipmentRecord &record)
{
    const bool isSelected = selected.value() == record.id;
    if (std::exchange(m_unlisted, record) != record && isSelected) {
        showSelected(); // the row may have changed
        emit changed();
    }
    selected = record.id;
}

QString MailingLogScreen::countText() const
{
    const qsizetype count = records().size();
    if (count == 0 && !readFailure.value().isEmpty())
        return {};
    const bool searching = !m_app.log.shownSearch().isEmpty();
    const QString number = count < ShipmentLog::listLimit ? QString::number(count) : u"%1 newest"_s.arg(count);
    return number + (m_app.log.isShownAlike() ? u" similar"_s : QString()) +
           (count == 1 ? u" shipment"_s : u" shipments"_s) + (searching ? u" found"_s : QString());
}

Task<> MailingLogScreen::tellTrouble()
{
    const QString trouble = co_await onPool(m_app.log, &ShipmentLog::trouble);
    if (trouble.isEmpty())
        co_return;
    m_app.errors.record(u"Mailing Log"_s, AppError(trouble), Popup::no);
    co_await m_app.platform.prompts.alert(u"Mailing Log"_s, trouble);
}

Task<> MailingLogScreen::reprint(ShipmentRecord record)
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    say(QString()); // clear first so that an identical message is announced again
    try {
        const QString printed = co_await reprintChecked(m_app, record);
        showSelected(); // an old row's label was compared for the first time
        say(printed);
        if (!printed.isEmpty()) // otherwise the clerk canceled
            emit reprinted(record.transactionID, printed);
    } catch (const AppError &error) {
        say(error.description(), true);
        recordReprintFailure(m_app, error);
    }
}

Task<> MailingLogScreen::reprintCustoms(ShipmentRecord record)
{
    if (busy || !record.isIntl)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    say(QString());
    const auto stored = co_await onPool([&log = m_app.log, record] {
        const auto row = log.find(record);
        return row.isRead() ? log.customsPDF(row->value_or(ShipmentRecord()).id)
                            : LogRead<std::optional<QByteArray>>::failed(row.failure());
    });
    if (!stored.isRead()) {
        fail(u"Customs Docs Reprint"_s, AppError(stored.failure()), Popup::no);
        co_return;
    }
    std::optional<QByteArray> document = *stored;
    if (!document) {
        say(u"Fetching customs docs…"_s);
        try {
            document = co_await downloadCustoms(m_app, record);
        } catch (const AppError &error) {
            say(u"Customs docs download failed: "_s + m_app.recorded(u"Customs Docs Reprint"_s, error, Popup::yes),
                true);
            co_return;
        }
    }
    try {
        const QString printed = co_await printCustoms(m_app, *document, record.transactionID);
        say(printed);
    } catch (const AppError &error) {
        fail(u"Customs Docs Reprint"_s, error, Popup::no);
    }
}

Task<> MailingLogScreen::trackOnline(ShipmentRecord record)
{
    const QString failure = co_await openTrackingPage(m_app, trackingPageOf(record));
    say(failure, !failure.isEmpty());
}

bool MailingLogScreen::isCheckable(const ShipmentRecord &record)
{
    return labelBlocker(LabelUse::checkStatus, record).isEmpty();
}

Task<> MailingLogScreen::checkStatus(ShipmentRecord record)
{
    if (busy || !isCheckable(record))
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    say(QString());
    try {
        const ShippoTrackStatus track = co_await m_app.shippo.track(carrierToken(record), record.tracking);
        const auto status = track.trackingStatus.value_or(ShippoTrackStatus::TrackingStatus{});
        const QString word = status.status.value_or(wordOf(TrackingStatus::unknown));
        const QString text = joinPresent({word, status.statusDetails.value_or(QString())}, u": "_s);
        say(text);
        const QString unwritten = co_await write([record, track, now = m_app.platform.clock.now()](AppState &app) {
            return storeJourney(app, record, track, now);
        });
        if (!unwritten.isEmpty()) {
            m_app.errors.record(u"Check Status"_s, AppError(text + u". "_s + unwritten), Popup::no);
            say(text + u". "_s + unwritten, true);
        }
    } catch (const AppError &error) {
        fail(u"Check Status"_s, error, Popup::yes);
    }
}

void MailingLogScreen::say(const QString &text, bool failure)
{
    message = text;
    isFailure = failure;
}

void MailingLogScreen::fail(const QString &context, const AppError &error, Popup popup)
{
    say(m_app.recorded(context, error, popup), true);
}

/// Changes the log and lists it again. Returns a sentence if the log could not be written.
Task<QString> MailingLogScreen::write(std::function<bool(AppState &app)> change)
{
    co_return co_await onPool([&app = m_app, change, asked = search.value()] {
        if (!change(app))
            return u"The mailing log could not be written — %1."_s.arg(app.log.lastError());
        app.log.reload(asked);
        return QString();
    });
}

void MailingLogScreen::copyTracking(ShipmentRecord record)
{
    if (record.tracking.isEmpty())
        return; // keep the clipboard's content
    m_app.platform.desktop.copyText(record.tracking);
    say(u"Copied tracking "_s + record.tracking);
}

} // namespace parcelory
