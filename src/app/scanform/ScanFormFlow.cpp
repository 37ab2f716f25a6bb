#include "app/scanform/ScanFormFlow.h"

#include "carrier/CarrierWords.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoRecords.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/IsoDate.h"
#include "core/ShippoAddress.h"
#include "core/StaleCheck.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Clock.h"
#include "core/ports/Prompts.h"
#include "devices/Zpl.h"
#include "records/LabelChecks.h"
#include "records/ScanForms.h"
#include "records/ShipmentLog.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QString readyText(qsizetype labels, qsizetype leftOff)
{
    const QString text = u"SCAN form ready: "_s + QString::number(labels) + (labels == 1 ? u" label"_s : u" labels"_s) +
                         u" — hand one printed copy to the carrier."_s;
    return leftOff == 0 ? text : text + u" The carrier did not put %1 of them on the form."_s.arg(leftOff);
}

/// How many of the requested labels the manifest does not name; 0 if it names no label, like some accounts' manifests.
qsizetype leftOff(const ShippoManifest &manifest, const ScanForm &form)
{
    const QList<QString> named = manifest.transactions.value_or(QList<QString>());
    const auto isOn = [&named](const QString &transaction) { return named.contains(transaction); };
    return named.isEmpty() ? 0 : std::max<qsizetype>(0, form.labels - std::ranges::count_if(form.transactions, isOn));
}

/// The first active account, otherwise the first.
std::optional<ShippoCarrierAccount> uspsAccount(const QList<ShippoCarrierAccount> &accounts)
{
    std::optional<ShippoCarrierAccount> first;
    for (const ShippoCarrierAccount &account : accounts) {
        if (account.carrier != u"usps")
            continue;
        if (account.active.value_or(true))
            return account;
        if (!first)
            first = account;
    }
    return first;
}

Question oddLabelsQuestion(const QStringList &lines)
{
    constexpr qsizetype most = 8;
    QString text = u"Check these labels first:\n\n• "_s + lines.first(std::min(most, lines.size())).join(u"\n• "_s);
    if (lines.size() > most)
        text += u"\n• and %1 more"_s.arg(lines.size() - most);
    return {.title = u"SCAN Form"_s,
            .text = text + u"\n\nOnly labels the carrier still accepts go on the form."_s,
            .choices = {u"Cancel"_s, u"Make the SCAN Form"_s},
            .safeChoice = 0};
}

/// Asked if no label is a USPS label: the carrier refuses such a form.
Question noUspsQuestion()
{
    return {.title = u"SCAN Form"_s,
            .text =
                u"Today's labels are not USPS labels. SCAN forms are only for USPS. Hand the packages over without a "
                "form."_s,
            .choices = {u"Cancel"_s, u"Make the SCAN Form"_s},
            .safeChoice = 0};
}

} // namespace

ScanFormFlow::ScanFormFlow(AppState &app)
    : m_app(app), m_arrivals(app.platform.clock), m_statusWatch(app.scanFormStatus.addNotifier([this] {
          m_day = m_app.platform.clock.now().date();
          awaitMidnight();
      }))
{
}

ScanFormFlow::~ScanFormFlow()
{
    m_app.platform.clock.cancel(m_midnight);
}

QString ScanFormFlow::news() const
{
    return m_day == m_app.platform.clock.now().date() ? m_app.scanFormStatus.value() : QString();
}

/// Without this, nothing might redraw a window that is open overnight, and yesterday's news would stay in it.
void ScanFormFlow::awaitMidnight()
{
    Clock &clock = m_app.platform.clock;
    clock.cancel(m_midnight);
    if (m_app.scanFormStatus.value().isEmpty())
        return;
    const std::chrono::milliseconds left(clock.now().msecsTo(m_day.addDays(1).startOfDay()));
    m_midnight = clock.after(std::max(left, std::chrono::milliseconds(0)), [this] {
        if (news().isEmpty())
            emit m_app.changed();
        else
            awaitMidnight(); // the time of day was set back, or the computer slept
    });
}

AppError ScanFormFlow::notStored(const ShipmentLog &log)
{
    return AppError(u"The mailing log could not be written — %1."_s.arg(log.lastError()));
}

Task<> ScanFormFlow::create(ShippoAddress from, ScanFormScope scope)
{
    if (m_app.scanFormBusy)
        co_return;
    m_app.scanFormBusy = true;
    m_app.scanFormComplete = true;
    const auto isStale = staleCheck(m_app.session, m_app.keyChanges);
    auto done = qScopeGuard([this] { m_app.scanFormBusy = false; });
    const QString token = co_await onPool([this] { return m_app.keys.activeToken().value_or(QString()); });
    const bool testKey = ShippoKeys::isTest(token);
    const auto found = co_await todaysLabels(scope);
    if (isStale()) // the clerk or the key has changed since the request
        co_return;
    if (!found.isRead()) {
        fail(AppError(found.failure()));
        co_return;
    }
    const QList<ShipmentRecord> &today = *found;
    const qsizetype labels = std::ranges::count(today, testKey, &ShipmentRecord::testMode);
    const auto underWay = co_await onPool(m_app.scanForms, &ScanForms::underWay, testKey);
    // A form whose document did not arrive has taken the missing labels already.
    const bool isFetchedAgain =
        scope != ScanFormScope::allOfToday && underWay.isRead() && !underWay.orThrow().isEmpty();
    if (isStale())
        co_return;
    if (labels == 0 && !isFetchedAgain) {
        m_app.scanFormComplete = false;
        m_app.scanFormBusy = false;
        done.dismiss(); // while the alert is open, another window may begin a form
        co_await showNoLabelsToManifest(testKey);
        co_return;
    }
    const QString before = m_app.scanFormStatus, creating = u"Creating SCAN form for today's labels…"_s;
    try {
        const QList<ScanForm> &lost = underWay.orThrow();
        if (!lost.isEmpty())
            m_app.scanFormStatus = creating;
        const bool shown = co_await recoverForms(lost);
        if (!shown && labels == 0)
            throw AppError(u"The SCAN form is not ready yet — try again in a minute."_s);
        if (!shown) {
            const bool agreed = co_await confirmOddLabels(today, testKey);
            if (!agreed || isStale()) {
                m_app.scanFormStatus = before;
                co_return;
            }
            m_app.scanFormStatus = creating;
            const Documents documents = co_await requestForm(today, testKey, from);
            showForm(documents, labels);
        }
        if (!isStale()) // the form is kept even if stale; the Window menu opens it
            m_app.scanFormOpenTick = m_app.scanFormOpenTick + 1;
    } catch (const AppError &error) {
        fail(error);
    }
}

Task<LogRead<QList<ShipmentRecord>>> ScanFormFlow::todaysLabels(ScanFormScope scope)
{
    using Labels = LogRead<QList<ShipmentRecord>>;
    auto found = co_await onPool([this, scope, today = m_app.platform.clock.now().date()] {
        const Labels labels = m_app.log.labelsOf(today);
        if (!labels.isRead() || scope == ScanFormScope::allOfToday)
            return labels;
        QList<ShipmentRecord> missing;
        for (const ShipmentRecord &label : *labels) {
            const auto form = m_app.scanForms.formWith(label.transactionID);
            if (!form.isRead())
                return Labels::failed(form.failure());
            const RefundState refund = refundState(label);
            const bool isUsps = label.carrier.trimmed().compare(u"USPS"_s, Qt::CaseInsensitive) == 0;
            if (isUsps && isCarriersId(label.transactionID) && !*form && refund != RefundState::pending &&
                refund != RefundState::granted)
                missing += label;
        }
        return Labels(missing);
    });
    co_return found;
}

void ScanFormFlow::fail(const AppError &error)
{
    m_app.scanFormComplete = false;
    m_app.scanFormStatus = m_app.recorded(u"SCAN Form"_s, error, Popup::no);
}

Task<> ScanFormFlow::showNoLabelsToManifest(bool testKey)
{
    m_app.scanFormStatus = u"No labels printed today — nothing to manifest."_s;
    co_await m_app.platform.prompts.alert(
        u"SCAN Form"_s,
        testKey ? u"No TEST labels have been printed today, so there's nothing to put on a SCAN form. (You're on the "
                  "test key — labels bought under a different key don't count.)"_s
                : u"No labels have been printed today, so there's nothing to put on a SCAN form."_s);
}

/// True if a label is a USPS label and no label that may go on the form has a warning, or if the clerk confirms. Throws
/// AppError if the mailing log cannot be read.
Task<bool> ScanFormFlow::confirmOddLabels(QList<ShipmentRecord> labels, bool testKey)
{
    const QStringList lines = co_await onPool([this, labels, testKey, now = m_app.platform.clock.now()] {
        QStringList lines;
        for (const ShipmentRecord &label : labels) {
            if (label.carrier == carrierInfo(Carrier::fedex).displayName)
                continue; // it is never on the form
            const QStringList warnings =
                labelWarnings(LabelUse::scanForm, label,
                              {.now = now,
                               .testKey = testKey,
                               .tracked = m_app.labelHistory.of(label.id).orThrow().tracked,
                               .lastReprint = {},
                               .onScanForm = m_app.scanForms.formWith(label.transactionID).orThrow(),
                               .waiting = {}});
            if (!warnings.isEmpty())
                lines += u"%1 (%2): %3"_s.arg(isolated(label.recipientName()), label.tracking, warnings.join(u' '));
        }
        return lines;
    });
    const bool hasUsps = std::ranges::any_of(labels, [testKey](const ShipmentRecord &label) {
        return label.testMode == testKey && label.carrier == carrierInfo(Carrier::usps).displayName;
    });
    if (hasUsps && lines.isEmpty())
        co_return true;
    const int answer = co_await m_app.platform.prompts.choose(hasUsps ? oddLabelsQuestion(lines) : noUspsQuestion());
    co_return answer == 1;
}

/// Requests a form from the carrier. The request is recorded first, because the response may be lost. Returns the first
/// document.
Task<ScanFormFlow::Documents> ScanFormFlow::requestForm(QList<ShipmentRecord> labels, bool testKey, ShippoAddress from)
{
    const QList<ShippoCarrierAccount> accounts = co_await m_app.shippo.carrierAccounts();
    const std::optional<ShippoCarrierAccount> usps = uspsAccount(accounts);
    if (!usps)
        throw ShippoError::api(u"No USPS carrier account found on this Shippo account."_s);
    ScanForm form{.askedAt = m_app.platform.clock.now(), .testMode = testKey, .manifestId = {}, .transactions = {}};
    for (const ShipmentRecord &label : labels) {
        if (label.testMode == testKey)
            form.transactions += label.transactionID;
    }
    form.labels = int(form.transactions.size());
    const std::optional<qint64> id = co_await onPool(m_app.scanForms, &ScanForms::begin, form);
    if (!id)
        throw notStored(m_app.log);
    form.id = *id;
    ShippoManifest manifest;
    std::exception_ptr failure;
    bool isOpen = false; // the form may exist; the next request looks for it first
    try {
        manifest = co_await m_app.shippo.createManifest(usps->objectId, from, form.askedAt);
    } catch (const AppError &error) {
        failure = std::current_exception();
        isOpen = fateOf(error) == RequestFate::unknown;
        if (const auto *unconfirmed = dynamic_cast<const Unconfirmed *>(&error))
            form.manifestId = unconfirmed->recordId();
    }
    if (failure && isOpen && !form.manifestId.isEmpty())
        co_await onPool([this, form] { return m_app.scanForms.setMade(form.id, form.manifestId, {}); });
    else if (failure && !isOpen)
        co_await onPool(m_app.scanForms, &ScanForms::remove, form.id);
    if (failure)
        std::rethrow_exception(failure);
    co_return co_await fetchDocuments(form, manifest);
}

/// Downloads and stores the documents of a form that the carrier has made. Returns the first document, even if another
/// fails: the form then stays under way, and the next press fetches all of them again.
Task<ScanFormFlow::Documents> ScanFormFlow::fetchDocuments(ScanForm form, ShippoManifest manifest)
{
    const bool noted = co_await onPool([this, form, manifest] {
        return m_app.scanForms.setMade(form.id, manifest.objectId, manifest.transactions.value_or(QList<QString>()));
    });
    const QList<QString> links = manifest.documents.value_or(QList<QString>());
    if (links.isEmpty())
        throw ShippoError::api(u"SCAN form created but no document came back."_s);
    QList<QByteArray> documents;
    QStringList missing;
    for (qsizetype i = 0; i < links.size(); ++i) {
        try {
            documents += co_await fetchDocument(links[i]);
        } catch (const AppError &error) {
            if (i == 0)
                throw;
            m_app.errors.record(u"SCAN Form"_s, error, Popup::no);
            missing += QString::number(i + 1);
        }
    }
    Documents result{.first = documents.first(), .note = {}, .leftOff = leftOff(manifest, form)};
    if (!missing.isEmpty()) {
        result.note = u" Part %1 of %2 of the form didn't download. Press SCAN Form again."_s.arg(missing.join(u", "_s))
                          .arg(links.size());
        co_return result;
    }
    const bool stored = co_await onPool([this, form, documents] { return m_app.scanForms.store(form.id, documents); });
    if (!noted || !stored) // it can be printed now, and the next press fetches it again
        m_app.errors.record(u"SCAN Form"_s, notStored(m_app.log), Popup::no);
    co_return result;
}

Task<QByteArray> ScanFormFlow::fetchDocument(QString link)
{
    const QByteArray document = co_await m_app.shippo.downloadLabel(link);
    if (!parseLabel(document).isWholePdf())
        throw ShippoError::api(u"SCAN form created, but the document is not a complete PDF. Press SCAN "
                               "Form again."_s);
    co_return document;
}

void ScanFormFlow::showForm(const Documents &documents, qsizetype labels)
{
    m_app.scanFormPDF = documents.first;
    m_app.scanFormStatus = readyText(labels, documents.leftOff) + documents.note;
    m_app.scanFormComplete = documents.note.isEmpty();
}

} // namespace parcelory
