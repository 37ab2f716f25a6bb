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
#include <exception>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Tolerated difference between the clocks of desk and carrier, in seconds.
constexpr qint64 clockSkew = 300;

/// True if the carrier made the manifest after `form` was requested.
bool isLater(const ShippoManifest &manifest, const ScanForm &form)
{
    const std::optional<QDateTime> created = parseIso(manifest.objectCreated.value_or(QString()));
    return created && *created >= form.askedAt.addSecs(-clockSkew);
}

/// True if the manifest names a label that was requested for `form`. Other desks of the account make forms, too.
bool holdsLabelsOf(const ShippoManifest &manifest, const ScanForm &form)
{
    return std::ranges::any_of(manifest.transactions.value_or(QList<QString>()),
                               [&form](const QString &transaction) { return form.transactions.contains(transaction); });
}

} // namespace

/// The form among the account's latest manifests; nothing if it is not there.
Task<std::optional<ShippoManifest>> ScanFormFlow::findListed(ScanForm form)
{
    const QList<ShippoManifest> newest = co_await m_app.shippo.newestManifests();
    for (const ShippoManifest &manifest : newest) {
        const bool isKnown =
            co_await onPool([this, id = manifest.objectId] { return m_app.scanForms.knowsManifest(id).orThrow(); });
        if (isKnown || !isLater(manifest, form))
            continue;
        ShippoManifest whole = manifest;
        if (manifest.transactions.value_or(QList<QString>()).isEmpty() && isPending(manifest))
            whole = co_await m_app.shippo.manifest(manifest.objectId); // its labels are named once it is made
        if (holdsLabelsOf(whole, form))
            co_return whole;
    }
    co_return std::nullopt;
}

/// Looks up a requested form at the carrier. Throws while the carrier cannot be asked, and for the minute in which the
/// request may still arrive there.
Task<ScanFormFlow::Recovery> ScanFormFlow::findManifest(ScanForm form)
{
    const bool mayArrive = m_arrivals.mayStillArrive(QString::number(form.id), form.askedAt);
    QString id = form.manifestId;
    if (id.isEmpty()) {
        try {
            const std::optional<ShippoManifest> listed = co_await findListed(form);
            if (listed && manifestStatus(*listed) == ManifestStatus::error)
                co_return Recovery{};
            id = listed ? listed->objectId : QString();
        } catch (const ShippoError &error) {
            if (mayArrive)
                throw;
            m_app.errors.record(u"SCAN Form"_s, error, Popup::no);
            co_return Recovery{.isUnknown = true}; // the carrier answers, but cannot tell: waiting does not help
        } catch (const DecodeError &error) {
            if (mayArrive)
                throw;
            m_app.errors.record(u"SCAN Form"_s, error, Popup::no);
            co_return Recovery{.isUnknown = true};
        }
    }
    if (id.isEmpty() && mayArrive)
        throw ShippoError::api(u"We don't know yet if the SCAN form of %1 was made. Try again in a minute."_s.arg(
            dateTimeText(form.askedAt)));
    Recovery recovery;
    if (!id.isEmpty()) {
        const ShippoManifest manifest = co_await m_app.shippo.manifest(id);
        if (manifestStatus(manifest) == ManifestStatus::success)
            recovery.manifest = manifest;
    }
    co_return recovery;
}

/// Returns the first document of a form whose response was lost; empty if the carrier did not make the form, has no
/// document for it, or cannot tell.
Task<std::optional<ScanFormFlow::Documents>> ScanFormFlow::recoverForm(ScanForm form)
{
    const Recovery recovery = co_await findManifest(form);
    if (recovery.isUnknown)
        co_return std::nullopt; // it stays under way: the carrier may tell later
    const std::optional<ShippoManifest> &made = recovery.manifest;
    if (made && made->documents && !made->documents->isEmpty())
        co_return co_await fetchDocuments(form, *made);
    const bool closed = co_await onPool([this, form, made] {
        return made ? m_app.scanForms.setMade(form.id, made->objectId, made->transactions.value_or(QList<QString>())) &&
                          m_app.scanForms.store(form.id, {})
                    : m_app.scanForms.remove(form.id);
    });
    if (!closed)
        throw notStored(m_app.log);
    co_return std::nullopt;
}

/// Recovers SCAN forms whose response was lost. True if one is from today; it becomes the shown form. An older form is
/// only added to the history: it is no longer handed over, and a failure to fetch it must not block today's form.
Task<bool> ScanFormFlow::recoverForms(QList<ScanForm> forms)
{
    bool shown = false;
    for (const ScanForm &form : forms) {
        const bool isOfToday = form.askedAt.toLocalTime().date() == m_app.platform.clock.now().date();
        std::optional<Documents> documents;
        try {
            documents = co_await recoverForm(form);
        } catch (const AppError &) {
            if (isOfToday)
                throw;
        }
        if (!documents || !isOfToday)
            continue;
        showForm(*documents, form.labels);
        shown = true;
    }
    co_return shown;
}

/// Runs with the refund sync; silent if the carrier cannot be asked.
Task<> ScanFormFlow::recoverLostForms()
{
    const QList<ScanForm> lost = co_await onPool([this] {
        const QString token = m_app.keys.activeToken().value_or(QString());
        return token.isEmpty()
                   ? QList<ScanForm>()
                   : m_app.scanForms.underWay(ShippoKeys::isTest(token)).valueOr({}); // the next sync retries
    });
    if (m_app.scanFormBusy || lost.isEmpty())
        co_return;
    m_app.scanFormBusy = true;
    m_app.scanFormComplete = true;
    const auto done = qScopeGuard([this] { m_app.scanFormBusy = false; });
    try {
        co_await recoverForms(lost);
    } catch (const AppError &) { // the next press of SCAN Form shows the error
    }
}

} // namespace parcelory
