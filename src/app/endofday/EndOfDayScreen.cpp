#include "app/endofday/EndOfDayScreen.h"

#include "app/AppState.h"
#include "app/endofday/DayExport.h"
#include "app/endofday/DayTexts.h"
#include "app/logs/MailingLogScreen.h"
#include "app/purchase/LabelPrinting.h"
#include "app/purchase/Purchases.h"
#include "carrier/PagedList.h"
#include "carrier/ShippoClient.h"
#include "core/AppError.h"
#include "core/SaveFile.h"
#include "core/Task.h"
#include "core/ports/Prompts.h"
#include "devices/DayPage.h"
#include "records/ScanForms.h"
#include "records/ShipmentLog.h"
#include "shell/ErrorLog.h"

#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

EndOfDayScreen::EndOfDayScreen(AppState &app, const KeysScreen &keys, MailingLogScreen &log, Purchases &purchases)
    : m_app(app), m_keys(keys), m_log(log), m_purchases(purchases)
{
    buildOn(app, keys, log, purchases);
    connect(&app.log, &ShipmentLog::recordsChanged, this, &EndOfDayScreen::reread);
    connect(&app, &AppState::labelsNoted, this, &EndOfDayScreen::reread);
    m_notifiers.push_back(app.scanFormBusy.addNotifier([this] { reread(); }));
    m_notifiers.push_back(app.keyChanges.addNotifier([this] { // the new key may belong to another account
        m_accounts.clear();
        showAnew(); // without the former account's differences
    }));
    connect(&keys, &Observable::changed, this, [this] {
        if (std::exchange(m_mode, m_keys.mode) == m_keys.mode)
            return;
        showAnew();
    });
}

void EndOfDayScreen::open()
{
    m_isOpen = true;
    m_accounts.clear(); // the account may have been asked hours ago
    message = QString();
    day = m_app.platform.clock.now().date();
    selected = QString();
    showAnew();
}

void EndOfDayScreen::close()
{
    m_isOpen = false;
    if (m_listing)
        m_listing->cancel.cancel();
    m_listing.reset();
    account = AccountState::notAsked;
}

void EndOfDayScreen::showDay(QDate wanted)
{
    const QDate shown = std::min(wanted, m_app.platform.clock.now().date());
    if (!shown.isValid() || shown == day.value())
        return;
    day = shown;
    selected = QString();
    message = QString();
    showAnew();
}

void EndOfDayScreen::showAnew()
{
    compare(); // first, because a reading may end at once and tell that the day is compared
    reread();
}

void EndOfDayScreen::refresh()
{
    reread();
    if (!canRefresh())
        return;
    m_listing.reset();
    spawn([this] { return ask(day); });
}

/// Reads the day again, once for many changes.
void EndOfDayScreen::reread()
{
    if (!m_isOpen)
        return;
    m_isStale = true;
    if (!m_isReading)
        spawn([this] { return readAgain(); });
}

Task<> EndOfDayScreen::readAgain()
{
    m_isReading = true;
    while (std::exchange(m_isStale, false)) {
        const QDate asked = day;
        const std::optional<AccountListing> listing =
            m_accounts.contains(asked) ? std::optional(m_accounts[asked]) : std::nullopt;
        const DayReport read =
            co_await onPool([&app = m_app, asked, key = key(), listing] { return readDay(app, asked, key, listing); });
        if (asked != day.value())
            continue;
        takeReport(read);
        if (listing && !m_listing && account.value() != AccountState::unanswered) {
            comparedAt = listing->askedAt;
            account = AccountState::compared;
        }
    }
    m_isReading = false;
}

/// If the log cannot be read, what is known of the day stays.
void EndOfDayScreen::takeReport(const DayReport &read)
{
    if (!read.failure.isEmpty() && read.failure != report.value().failure)
        m_app.errors.record(u"End of Day"_s, AppError(read.failure), Popup::no);
    DayReport next = read;
    if (!read.failure.isEmpty() && report.value().day == read.day) {
        next = report;
        next.failure = read.failure;
    }
    report = next;
    if (!selectedDifference())
        selected = next.differences.value(0).id;
}

/// Compares the shown day with the account, which is asked once for each day.
void EndOfDayScreen::compare()
{
    if (!m_isOpen)
        return;
    if (m_listing)
        m_listing->cancel.cancel();
    m_listing.reset();
    accountFailure = QString();
    account = AccountState::notAsked;
    comparedAt = QDateTime();
    if (!m_accounts.contains(day) && hasKey())
        spawn([this] { return ask(day); });
}

Task<> EndOfDayScreen::ask(QDate asked)
{
    const auto listing = std::make_shared<Listing>();
    m_listing = listing;
    account = AccountState::asking;
    ++m_requests;
    const auto done = qScopeGuard([this] { --m_requests; });
    const QDateTime now = m_app.platform.clock.now();
    QList<MasterEntry> entries;
    QString failure;
    try {
        entries = co_await m_app.shippo.masterLog(asked.addDays(-1), asked.addDays(1), listing);
    } catch (const AppError &error) {
        if (m_listing == listing)
            failure = m_app.recorded(u"End of Day"_s, error, Popup::no);
    }
    if (m_listing != listing) // the window shows another day or account by now, or is closed
        co_return;
    m_listing.reset();
    accountFailure = failure;
    if (!failure.isEmpty()) {
        account = AccountState::unanswered;
        co_return;
    }
    m_accounts[asked] = {.entries = entries, .askedAt = now, .isCut = listing->isCut};
    reread();
}

KeyView EndOfDayScreen::key() const
{
    const PostageMode mode = m_keys.mode;
    return {.test = mode == PostageMode::test || mode == PostageMode::practice,
            .practice = mode == PostageMode::practice};
}

bool EndOfDayScreen::hasFreshForm() const
{
    return std::ranges::any_of(report.value().forms, [](const DayForm &form) { return !form.isPrinted; });
}

FormStep EndOfDayScreen::formStep() const
{
    const DayReport &shown = report.value();
    const bool isMissing = isToday() && !shown.labels.notOnForm.isEmpty();
    return !isMissing && !shown.forms.isEmpty() ? FormStep::print : FormStep::make;
}

QString EndOfDayScreen::formObstacle() const
{
    const DayOfLabels &labels = report.value().labels;
    if (m_app.scanFormBusy || busy)
        return u"Wait until this is done."_s;
    if (!report.value().failure.isEmpty())
        return report.value().failure;
    if (formStep() == FormStep::print)
        return {};
    if (labels.uspsLabels() == 0)
        return u"No USPS label was bought on this day."_s;
    if (!isToday())
        return u"Make the SCAN form on the day you bought the labels."_s;
    if (!hasKey())
        return u"No Shippo key is active."_s;
    return labels.notOnForm.isEmpty() && labels.onForm.isEmpty() ? u"None of these labels needs a SCAN form."_s
                                                                 : QString();
}

bool EndOfDayScreen::isFormStepNext() const
{
    return formObstacle().isEmpty() && (formStep() == FormStep::make || hasFreshForm());
}

QString EndOfDayScreen::formFailure() const
{
    return isToday() && !m_app.scanFormBusy && !m_app.scanFormComplete ? m_app.scanFormNews() : QString();
}

QList<UnresolvedPurchase> EndOfDayScreen::unresolved() const
{
    QList<UnresolvedPurchase> open;
    for (const UnresolvedPurchase &pending : m_purchases.unresolved.value()) {
        if (pending.purchase.askedAt.toLocalTime().date() == day.value())
            open += pending;
    }
    return open;
}

std::optional<AccountDifference> EndOfDayScreen::selectedDifference() const
{
    const QList<AccountDifference> &all = report.value().differences;
    const auto found = std::ranges::find(all, selected.value(), &AccountDifference::id);
    return found == all.end() ? std::nullopt : std::optional(*found);
}

QString EndOfDayScreen::accountText() const
{
    const auto listing = m_accounts.constFind(day);
    switch (account.value()) {
    case AccountState::notAsked:
        return m_keys.mode == PostageMode::none ? u"Not compared — no Shippo key is active."_s : QString();
    case AccountState::asking:
        return u"Comparing with the account…"_s;
    case AccountState::unanswered:
        return u"Not compared — the account did not answer."_s;
    case AccountState::compared:
        break;
    }
    return u"Compared with the account at "_s + DayTexts::time(comparedAt) +
           (listing != m_accounts.cend() && listing->isCut ? u" — only its newest labels could be read."_s : QString());
}

Task<> EndOfDayScreen::run(QString context, Task<QString> (EndOfDayScreen::*operation)())
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    message = QString(); // clear first so that an identical message is announced again
    isFailure = false;
    try {
        const QString outcome = co_await (this->*operation)();
        message = outcome;
    } catch (const AppError &error) {
        message = m_app.recorded(context, error, Popup::no);
        isFailure = true;
    }
}

Task<> EndOfDayScreen::printForms(Forms which)
{
    m_wantedForms = which;
    return run(u"SCAN Form"_s, &EndOfDayScreen::printDocuments);
}

Task<QString> EndOfDayScreen::printDocuments()
{
    const Forms which = m_wantedForms;
    m_isPrintingForms = true;
    const auto done = qScopeGuard([this] { m_isPrintingForms = false; });
    const QList<DayForm> forms = report.value().forms;
    bool sentToQueue = true;
    for (const DayForm &form : forms) {
        if (which == Forms::unprinted && form.isPrinted)
            continue;
        const auto documents = co_await onPool(m_app.scanForms, &ScanForms::documents, form.form.id);
        sentToQueue = co_await printForm(m_app, documents.orThrow(), form.form.manifestId);
    }
    co_return sentToQueue ? u"SCAN form sent to the printer."_s
                          : u"SCAN form opened in Preview — set a document printer in Settings."_s;
}

Task<> EndOfDayScreen::reprint(ShipmentRecord record)
{
    if (busy || m_log.busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    message = QString();
    co_await m_log.reprint(record);
    message = m_log.message.value();
    isFailure = m_log.isFailure.value();
}

Task<> EndOfDayScreen::printPage()
{
    return run(u"Print Page"_s, &EndOfDayScreen::printReport);
}

Task<QString> EndOfDayScreen::printReport()
{
    const DayPage::Data_ page = dayPage(report, key(), unresolved(), accountText());
    const QByteArray document = co_await onPool([page] { return DayPage::pdf(page); });
    const bool sentToQueue = co_await printDocument(m_app, document);
    co_return sentToQueue ? u"The day's page was sent to the printer."_s
                          : u"The day's page opened in Preview — set a document printer in Settings."_s;
}

Task<> EndOfDayScreen::exportCSV()
{
    return run(u"Export Day"_s, &EndOfDayScreen::exportReport);
}

Task<QString> EndOfDayScreen::exportReport()
{
    const DayReport shown = report;
    const QString name = u"Parcelory Day %1.csv"_s.arg(shown.day.toString(Qt::ISODate));
    const QString path = co_await m_app.platform.prompts.saveFile(u"Export Day"_s, name);
    if (path.isEmpty())
        co_return QString();
    co_await onPool([path, shown] { saveBytes(path, dayCSV(shown).toUtf8()); });
    co_return u"Exported to "_s + QFileInfo(path).fileName();
}

} // namespace parcelory
