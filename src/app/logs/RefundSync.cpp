#include "app/logs/RefundSync.h"

#include "records/ShipmentStatus.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 refundSyncPause = 60; ///< seconds
constexpr int refundsPerSync = 50;

AppError neverAsked(const ShipmentRecord &record)
{
    return AppError(
        u"Parcelory ended before the carrier was asked for the refund of %1's label (%2). The label is as it "
        "was — press Refund again if it is to be refunded."_s.arg(record.recipientName(), record.tracking));
}

} // namespace

Task<bool> RefundSync::run()
{
    const QDateTime now = m_app.platform.clock.now();
    if (m_lastRun.isValid() && std::abs(m_lastRun.secsTo(now)) < refundSyncPause)
        co_return false;
    m_lastRun = now;
    auto reading = onPool([this] { return m_app.journal.openRefunds(); });
    const QList<OpenRefund> lost = co_await reading;
    QSet<QString> isLost;
    bool changed = false;
    for (const OpenRefund &refund : lost) {
        isLost.insert(refund.transactionId);
        const bool settled = co_await settleLost(refund);
        changed = changed || settled;
    }
    // A carrier decides within weeks; a year spares a large log being read to its end.
    auto looking = onPool([this, since = now.addYears(-1)] { return m_app.log.openRefunds(since, refundsPerSync); });
    const QList<ShipmentRecord> open = co_await looking;
    for (const ShipmentRecord &record : open) {
        if (isLost.contains(record.transactionID))
            continue;
        const bool settled = co_await settle(record);
        changed = changed || settled;
    }
    if (changed) {
        auto reloading = onPool([this] { m_app.log.reload(); });
        co_await reloading;
    }
    co_return true;
}

Task<RefundSync::Refund> RefundSync::askCarrier(QString transactionId)
{
    QString status;
    try {
        const ShippoTransaction transaction = co_await m_app.shippo.transaction(transactionId);
        status = transaction.status;
    } catch (const AppError &) { // what cannot be learned now is asked again with the next sync
    }
    if (status == u"REFUNDED")
        co_return Refund::granted;
    if (status == u"REFUNDREJECTED")
        co_return Refund::rejected;
    if (status == u"REFUNDPENDING")
        co_return Refund::pending;
    co_return status == u"SUCCESS" ? Refund::none : Refund::unknown;
}

/// True when the carrier has decided.
Task<bool> RefundSync::settle(ShipmentRecord record)
{
    const Refund refund = co_await askCarrier(record.transactionID);
    if (refund != Refund::granted && refund != Refund::rejected)
        co_return false;
    const bool stored = co_await store(record, refund);
    co_return stored;
}

/// A refund whose answer never came, because the program ended or the connection broke. True when the books are right
/// now.
Task<bool> RefundSync::settleLost(OpenRefund refund)
{
    const Refund found = co_await askCarrier(refund.transactionId);
    const bool mayStillCome = ShippoClient::mayStillArrive(refund.askedAt, m_app.platform.clock.now());
    if (found == Refund::unknown || (found == Refund::none && mayStillCome) ||
        m_app.refundsUnderWay.contains(refund.transactionId))
        co_return false;
    auto finding = onPool([this, id = refund.shipmentId] { return m_app.log.find({.id = id}); });
    const std::optional<ShipmentRecord> row = co_await finding;
    if (row) {
        const bool stored = co_await store(*row, found);
        if (!stored)
            co_return false;
    }
    auto closing = onPool([this, id = refund.transactionId] { return m_app.journal.closeRefund(id); });
    const bool closed = co_await closing;
    co_return closed;
}

/// Writes into the log what the carrier says of a label's refund; false when it cannot be written.
Task<bool> RefundSync::store(ShipmentRecord record, Refund refund)
{
    const RefundState shown = refundState(record.status);
    QString status = record.status;
    if (refund == Refund::granted)
        status = u"REFUNDED"_s;
    else if (refund == Refund::pending)
        status = u"REFUND_PENDING"_s;
    else if (refund == Refund::rejected) // it would be asked for at every sync for ever, and the clerk wait for money
        status = u"REFUND_ERROR"_s;
    else if (shown == RefundState::pending)
        status = u"PRINTED"_s;
    if (status != record.status) {
        auto storing = onPool([this, id = record.id, status] { return m_app.log.setStatus(id, status); });
        const bool stored = co_await storing;
        if (!stored)
            co_return false;
    }
    if (shown == RefundState::failed) // the error log has an entry of it
        co_return true;
    if (refund == Refund::rejected)
        m_app.errors.record(u"Refund"_s, AppError(refundRefusal(record)), Popup::no);
    else if (refund == Refund::none)
        m_app.errors.record(u"Refund"_s, neverAsked(record), Popup::no);
    co_return true;
}

} // namespace parcelory
