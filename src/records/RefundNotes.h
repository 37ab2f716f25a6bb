#pragma once

#include "core/Sqlite.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"

#include <QList>

namespace parcelory {

/// Refunds of labels whose status no longer tells them, because the parcel was delivered. Stored in a table of the
/// mailing log's file. The caller holds the log's connection, and a transaction for the writes.
namespace RefundNotes {

/// True if the table is there; it is created with the first note.
bool exist(const Database &db);
/// The condition of a pending refund, for a query of the shipments.
QByteArray pendingCondition(const Database &db);
/// A query of the ids of rows whose refund is pending or was rejected. Fast in a log with the index of addIndex().
QByteArray unsettledIds(const Database &db);
/// Adds an index of the few rows with such a status. Reads every row of a log without the index; false if it failed.
bool addIndex(Database &db);
/// Fills in ShipmentRecord::refund; false if reading failed.
bool addTo(const Database &db, QList<ShipmentRecord> &records);

/// Stores a row's status. "Delivered" keeps the refund as a note, and a status that tells a refund replaces the note.
bool putStatus(Database &db, qint64 shipment, const QString &status);
/// Stores the outcome of a refund: in the status, or as a note if the parcel was delivered.
bool putRefund(Database &db, qint64 shipment, RefundState refund);

} // namespace RefundNotes
} // namespace parcelory
