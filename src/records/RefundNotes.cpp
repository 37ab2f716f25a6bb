#include "records/RefundNotes.h"

#include "records/LogChain.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "records/StatusWords.h"

#include <QByteArrayList>
#include <QHash>

#include <initializer_list>
#include <optional>

namespace parcelory::RefundNotes {

namespace {

/// Runs before the first note, so that a log without such refunds gets no such table.
constexpr auto schema = "CREATE TABLE IF NOT EXISTS label_refunds (\n"
                        "  shipment_id INTEGER PRIMARY KEY,\n"
                        "  word TEXT NOT NULL\n"
                        ");";

bool remember(Database &db, qint64 shipment, const QString &word)
{
    return db.exec(schema) &&
           execute(db, "INSERT OR REPLACE INTO label_refunds (shipment_id, word) VALUES (?, ?)", shipment, word);
}

bool forget(Database &db, qint64 shipment)
{
    return !exist(db) || execute(db, "DELETE FROM label_refunds WHERE shipment_id = ?", shipment);
}

bool seal(Database &db, qint64 shipment)
{
    return LogChain::Sealer(db).sealStatus(shipment);
}

bool update(Database &db, qint64 shipment, const QString &status)
{
    return execute(db, "UPDATE shipments SET status = ? WHERE id = ?", status, shipment);
}

constexpr auto pending = {LogStatus::refundRequested, LogStatus::refundPending};
constexpr auto unsettled = {LogStatus::refundRequested, LogStatus::refundPending, LogStatus::refundError};

/// " IN ('REFUND_REQUESTED', …)"
QByteArray isOneOf(std::initializer_list<LogStatus> statuses)
{
    QByteArrayList words;
    for (const LogStatus status : statuses)
        words += '\'' + wordOf(status).toLatin1() + '\'';
    return " IN (" + words.join(", ") + ")";
}

/// Empty if the row is missing; absent if reading failed.
std::optional<QString> statusOf(const Database &db, qint64 shipment)
{
    Statement query(db, "SELECT status FROM shipments WHERE id = ?");
    if (query.isPrepared())
        query.bind(1, shipment);
    if (query.step())
        return query.text(0);
    return query.isComplete() ? std::optional(QString()) : std::nullopt;
}

} // namespace

bool exist(const Database &db)
{
    return ShipmentLogRows::hasTable(db, "label_refunds");
}

QByteArray pendingCondition(const Database &db)
{
    const QByteArray isOne = isOneOf(pending);
    const QByteArray noted =
        exist(db) ? " OR id IN (SELECT shipment_id FROM label_refunds WHERE word" + isOne + ")" : QByteArray();
    return "(status" + isOne + noted + ")";
}

QByteArray unsettledIds(const Database &db)
{
    const QByteArray isOne = isOneOf(unsettled);
    const QByteArray noted =
        exist(db) ? " UNION ALL SELECT shipment_id FROM label_refunds WHERE word" + isOne : QByteArray();
    return "SELECT id FROM shipments WHERE status" + isOne + noted;
}

bool addIndex(Database &db)
{
    const QByteArray sql =
        "CREATE INDEX IF NOT EXISTS idx_shipments_unsettled ON shipments(status) WHERE status" + isOneOf(unsettled);
    return db.exec(sql.constData());
}

bool addTo(const Database &db, QList<ShipmentRecord> &records)
{
    if (records.isEmpty() || !exist(db))
        return true;
    QHash<qint64, QString> notes;
    Statement query(db, "SELECT shipment_id, word FROM label_refunds");
    while (query.step())
        notes.insert(query.integer(0), query.text(1));
    for (ShipmentRecord &record : records)
        record.refund = notes.value(record.id);
    return query.isComplete();
}

bool putStatus(Database &db, qint64 shipment, const QString &status)
{
    const std::optional<QString> before = statusOf(db, shipment);
    if (!before || (refundState(status) != RefundState::none && !forget(db, shipment)))
        return false;
    const bool hides = logStatusFrom(status) == LogStatus::delivered && refundState(*before) != RefundState::none;
    return (!hides || remember(db, shipment, *before)) && update(db, shipment, status) && seal(db, shipment);
}

bool putRefund(Database &db, qint64 shipment, RefundState refund)
{
    const std::optional<QString> before = statusOf(db, shipment);
    if (!before)
        return false;
    if (logStatusFrom(*before) != LogStatus::delivered)
        return putStatus(db, shipment, statusAfter(refund, *before));
    const bool stored =
        refund == RefundState::none ? forget(db, shipment) : remember(db, shipment, statusAfter(refund, *before));
    return stored && seal(db, shipment);
}

} // namespace parcelory::RefundNotes
