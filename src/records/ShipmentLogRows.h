#pragma once

#include "core/Sqlite.h"
#include "records/ShipmentRecord.h"

#include <QList>

#include <algorithm>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace parcelory::ShipmentLogRows {

/// The list's columns, without the documents; a WHERE or ORDER BY may follow.
extern const char *const select;
using Wanted = std::function<bool(const ShipmentRecord &)>;

/// Appends all remaining rows of a query of these columns, without noted refunds; false if reading failed before the
/// last row. `isWanted`: keeps only such rows; empty for all.
bool append(QList<ShipmentRecord> &records, Statement &query, const Wanted &isWanted = {});
/// The same as a list with the noted refunds; nothing if reading failed.
std::optional<QList<ShipmentRecord>> allOf(const Database &db, Statement &query, const Wanted &isWanted = {});
/// The rows with these ids, in their order, with the noted refunds; nothing if reading failed.
std::optional<QList<ShipmentRecord>> withIds(const Database &db, const std::vector<qint64> &ids);
/// The row of a record by its id, or by its transaction for a label that was just bought: a list of at most one row;
/// nothing if it could not be read.
std::optional<QList<ShipmentRecord>> rowOf(const Database &db, const ShipmentRecord &record);
/// The present id of a label whose row was read before the log may have been replaced; 0 if the label is gone.
std::optional<qint64> idOf(const Database &db, const ShipmentRecord &label);
/// Ids as json_each() takes them.
QString listOf(std::span<const qint64> ids);
/// The rows with these transactions since `since`, oldest first, with the noted refunds; nothing if reading failed.
/// Reads every row since then.
std::optional<QList<ShipmentRecord>> withTransactions(const Database &db, const QStringList &ids,
                                                      const QDateTime &since);
/// For the tables that later versions added with their first row.
bool hasTable(const Database &db, const char *name);
/// Marks an imported row as dated with the day of its import, because its own date is unknown. It counts for no day.
bool markUndated(Database &db, qint64 id);
/// The rows that count for the days of their dates, as a condition that begins with AND; empty if all do.
QByteArray datedCondition(const Database &db);

/// A value of created_at in milliseconds since 1970. A damaged row may hold any number.
inline qint64 msecsOf(double createdAt)
{
    constexpr double farthest = 1e12; // seconds; date arithmetic is not reliable beyond this
    return qRound64(std::clamp(createdAt, -farthest, farthest) * 1000);
}

/// A time as a value of created_at: seconds since 1970.
inline double secondsOf(const QDateTime &time)
{
    return double(time.toMSecsSinceEpoch()) / 1000;
}

inline QDateTime timeOf(double createdAt)
{
    return QDateTime::fromMSecsSinceEpoch(msecsOf(createdAt));
}

extern const char *const insert;
void bind(Statement &insert, const ShipmentRecord &record);

} // namespace parcelory::ShipmentLogRows
