#pragma once

#include "core/Sqlite.h"
#include "records/ShipmentRecord.h"

#include <QList>

#include <optional>

namespace parcelory::ShipmentLogRows {

/// The list's columns, without the documents; a WHERE or ORDER BY may follow.
extern const char *const select;
/// All that a query of these columns still finds.
QList<ShipmentRecord> recordsOf(Statement &query);
/// The same; nothing when they could not be read to the end.
std::optional<QList<ShipmentRecord>> allOf(Statement &query);
/// Of the value of created_at, in milliseconds.
inline qint64 msecsOf(double createdAt)
{
    return qRound64(createdAt * 1000);
}

/// The value of created_at.
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
