#include "app/logs/RefundSync.h"

#include "app/purchase/CarrierRefund.h"
#include "carrier/CarrierWords.h"
#include "carrier/ShippoRecords.h"
#include "core/AppError.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"
#include "records/PurchaseJournal.h"
#include "records/ShipmentLog.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "shell/ErrorLog.h"

#include <cstdlib>
#include <limits>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 refundSyncPause = 60; ///< seconds
constexpr int refundsPerSync = 50;

AppError neverAsked(const ShipmentRecord &record)
{
    return AppError(
        u"Parcelory closed before it requested the refund of %1's label (%2). The label is unchanged — press "
        "Refund to request it."_s.arg(record.recipientName(), record.tracking));
}

QString missingRow(const QString &transactionId, RefundState refund)
{
    const QString state = refund == RefundState::granted  ? u"was granted"_s
                          : refund == RefundState::failed ? u"was refused"_s
                          : refund == RefundState::none   ? u"was not requested"_s
                                                          : u"is pending"_s;
    return u"The refund of transaction %1 %2. The label is no longer in the mailing log."_s.arg(transactionId, state);
}

} // namespace

Task<bool> RefundSync::run()
{
    const QDateTime now = m_app.platform.clock.steadyNow();
    if (m_app.lastRefundSync.isValid() && m_app.lastRefundSync.secsTo(now) < refundSyncPause)
        co_return false;
    m_app.lastRefundSync = now;
    const QList<OpenRefund> lost = co_await onPool(m_app.journal, &PurchaseJournal::openRefunds);
    QSet<QString> isLost;
    bool changed = false;
    for (const OpenRefund &refund : lost) {
        isLost.insert(refund.transactionId);
        const bool settled = co_await settleLost(refund);
        changed = changed || settled;
    }
    const QList<ShipmentRecord> open = co_await nextRefunds();
    for (const ShipmentRecord &record : open) {
        if (isLost.contains(record.transactionID))
            continue;
        const bool settled = co_await settle(record);
        changed = changed || settled;
    }
    if (changed) {
        co_await onPool([this] { m_app.log.reload(); });
    }
    co_return true;
}

/// The pending refunds whose turn it is: the next older ones after the last sync, then the newest ones again.
Task<QList<ShipmentRecord>> RefundSync::nextRefunds()
{
    Preferences &preferences = m_app.platform.preferences;
    const qint64 after = read(preferences, settings::lastSyncedRefund);
    const QList<ShipmentRecord> turn = co_await onPool([&log = m_app.log, after] {
        const auto newest = log.openRefunds(std::numeric_limits<qint64>::max(), refundsPerSync);
        if (newest.valueOr({}).size() < refundsPerSync || after == 0)
            return newest.valueOr({}); // a log that cannot be read is read again by the next sync
        QList<ShipmentRecord> older = log.openRefunds(after, refundsPerSync).valueOr({});
        for (const ShipmentRecord &record : *newest) {
            if (older.size() < refundsPerSync && record.id >= after)
                older += record;
        }
        return older;
    });
    const qint64 last = turn.size() < refundsPerSync ? 0 : turn.last().id;
    if (last != after)
        write(preferences, settings::lastSyncedRefund, last);
    co_return turn;
}

/// Absent if the carrier cannot be asked, or if its answer does not tell; the next sync asks again.
Task<std::optional<RefundState>> RefundSync::askCarrier(QString transactionId)
{
    std::optional<RefundState> refund;
    try {
        const ShippoTransaction transaction = co_await m_app.shippo.transaction(transactionId);
        refund = refundStateOf(transactionStatus(transaction));
    } catch (const AppError &) {
    }
    co_return refund;
}

/// Updates the log if the carrier has decided. True if the log is updated.
Task<bool> RefundSync::settle(ShipmentRecord record)
{
    const std::optional<RefundState> refund = co_await askCarrier(record.transactionID);
    if (refund != RefundState::granted && refund != RefundState::failed)
        co_return false;
    co_return co_await store(record, *refund);
}

/// Settles a refund whose response was lost because the program ended or the connection broke. True if log and journal
/// are up to date now.
Task<bool> RefundSync::settleLost(OpenRefund refund)
{
    const std::optional<RefundState> found = co_await askCarrier(refund.transactionId);
    const bool mayStillCome = m_arrivals.mayStillArrive(refund.transactionId, refund.askedAt);
    if (!found || (found == RefundState::none && mayStillCome) || m_app.refundsUnderWay.contains(refund.transactionId))
        co_return false;
    const auto row = co_await onPool([&log = m_app.log, refund] {
        auto row = log.find({.id = refund.shipmentId});
        if (row.isRead() && (!*row || (*row)->transactionID != refund.transactionId))
            row = log.find({.createdAt = {}, .transactionID = refund.transactionId}); // the log was replaced
        return row;
    });
    if (!row.isRead())
        co_return false;
    if (*row) {
        const bool stored = co_await store(**row, *found);
        if (!stored)
            co_return false;
    } else {
        m_app.errors.record(u"Refund"_s, AppError(missingRow(refund.transactionId, *found)), Popup::no);
    }
    const bool closed = co_await onPool(m_app.journal, &PurchaseJournal::closeRefund, refund.transactionId);
    co_return closed;
}

/// Writes a refund's outcome into the log; false if the log cannot be written.
Task<bool> RefundSync::store(ShipmentRecord record, RefundState refund)
{
    const RefundState shown = refundState(record);
    if (refund != shown) {
        const bool stored = co_await onPool(m_app.log, &ShipmentLog::setRefund, record, refund);
        if (!stored)
            co_return false;
        if (refund == RefundState::granted || refund == RefundState::pending)
            emit m_app.refundTaken(record.transactionID);
    }
    if (shown == RefundState::failed) // already in the error log
        co_return true;
    if (refund == RefundState::failed)
        m_app.errors.record(u"Refund"_s, AppError(refundRefusal(record)), Popup::no);
    else if (refund == RefundState::none)
        m_app.errors.record(u"Refund"_s, neverAsked(record), Popup::no);
    co_return true;
}

} // namespace parcelory
