#pragma once

#include "core/Sqlite.h"
#include "records/ShipmentRecord.h"

#include <QList>

#include <algorithm>
#include <optional>

namespace parcelory::ShipmentLogRows {

/// The list's columns, without the documents; a WHERE or ORDER BY may follow.
extern const char *const select;
/// All remaining rows of a query of these columns.
QList<ShipmentRecord> recordsOf(Statement &query);
/// The same; nothing if reading failed before the last row.
std::optional<QList<ShipmentRecord>> allOf(Statement &query);
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
