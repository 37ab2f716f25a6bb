#include "core/AppState.h"

#include "devices/Zpl.h"

#include <QScopeGuard>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 refundSyncPause = 60; ///< seconds
constexpr int refundsPerSync = 50;

QString readyText(qsizetype labels)
{
    return u"SCAN form ready: "_s + QString::number(labels) + (labels == 1 ? u" label"_s : u" labels"_s) +
           u" — hand one printed copy to the carrier."_s;
}

} // namespace

Task<> AppState::createScanForm(ShippoAddress from)
{
    if (scanFormBusy)
        co_return;
    scanFormBusy = true;
    const std::tuple asked(m_signIns, keyChanges.value());
    const auto isStale = [this, asked] { return asked != std::tuple(m_signIns, keyChanges.value()); };
    const auto done = qScopeGuard([this] { scanFormBusy = false; });
    auto tokenRead = onPool([this] { return keys.activeToken().value_or(QString()); });
    const QString token = co_await tokenRead;
    const bool testKey = ShippoKeys::isTest(token);
    auto counting =
        onPool([this, testKey, today = platform.clock.now().date()] { return log.labelCount(today, testKey); });
    const qsizetype labels = co_await counting;
    if (isStale()) // whoever is here now has not asked, or asked with another key
        co_return;
    if (labels == 0) {
        scanFormBusy = false;
        co_await sayNothingToManifest(testKey);
        co_return;
    }
    scanFormStatus = u"Creating SCAN form for today's labels…"_s;
    try {
        const QByteArray form = co_await scanForm(from);
        if (isStale()) {
            scanFormPDF = form; // made only once, so it is kept: the Window menu opens it
            scanFormStatus = readyText(labels);
            co_return;
        }
        scanFormPDF = form;
        scanFormStatus = readyText(labels);
        scanFormOpenTick = scanFormOpenTick + 1;
    } catch (const AppError &error) {
        scanFormStatus = error.description();
        errors.record(u"SCAN Form"_s, error, Popup::no);
    }
}

Task<> AppState::sayNothingToManifest(bool testKey)
{
    scanFormStatus = u"No labels printed today — nothing to manifest."_s;
    co_await platform.prompts.alert(
        u"SCAN Form"_s,
        testKey ? u"No TEST labels have been printed today, so there's nothing to put on a SCAN form. (You're on the "
                  "test key — labels bought under a different key don't count.)"_s
                : u"No labels have been printed today, so there's nothing to put on a SCAN form."_s);
}

Task<QByteArray> AppState::scanForm(ShippoAddress from)
{
    const QList<ShippoCarrierAccount> accounts = co_await shippo.carrierAccounts();
    const auto usps = std::ranges::find(accounts, u"usps"_s, &ShippoCarrierAccount::carrier);
    if (usps == accounts.end())
        throw ShippoError::api(u"No USPS carrier account found on this Shippo account."_s);
    const ShippoManifest manifest = co_await shippo.createManifest(usps->objectId, from, platform.clock.now());
    const QString link = manifest.documents.value_or(QList<QString>()).value(0);
    if (link.isEmpty())
        throw ShippoError::api(u"SCAN form created but no document came back."_s);
    QByteArray form = co_await shippo.downloadLabel(link);
    if (labelKind(form) != LabelKind::pdf || !isWhole(form))
        throw ShippoError::api(u"SCAN form created, but what came back is not a complete PDF document. Press SCAN Form "
                               "again."_s);
    co_return form;
}

Task<> AppState::syncRefundStatuses()
{
    const QDateTime now = platform.clock.now();
    if (m_lastRefundSync.isValid() && std::abs(m_lastRefundSync.secsTo(now)) < refundSyncPause)
        co_return;
    m_lastRefundSync = now;
    // A carrier decides within weeks; a year spares a large log being read to its end.
    auto looking = onPool([this, since = now.addYears(-1)] { return log.openRefunds(since, refundsPerSync); });
    const QList<ShipmentRecord> open = co_await looking;
    bool changed = false;
    for (const ShipmentRecord &record : open) {
        const bool settled = co_await settleRefund(record);
        changed = changed || settled;
    }
    if (changed) {
        auto reloading = onPool([this] { log.reload(); });
        co_await reloading;
    }
}

/// True when the carrier has decided. What cannot be learned now is asked again with the next sync.
Task<bool> AppState::settleRefund(ShipmentRecord record)
{
    QString status;
    try {
        const ShippoTransaction transaction = co_await shippo.transaction(record.transactionID);
        status = transaction.status;
    } catch (const AppError &) {
        co_return false;
    }
    if (status == u"REFUNDREJECTED") { // it would be asked for at every sync for ever, and the clerk wait for money
        errors.record(u"Refund"_s,
                      AppError(u"The carrier has refused the refund of %1's label (%2)."_s.arg(record.recipient,
                                                                                               record.tracking)),
                      Popup::no);
        status = u"REFUND_ERROR"_s;
    } else if (status != u"REFUNDED") {
        co_return false;
    }
    auto storing = onPool([this, id = record.id, status] { return log.setStatus(id, status); });
    const bool stored = co_await storing;
    co_return stored;
}

} // namespace parcelory
