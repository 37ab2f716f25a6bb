#pragma once

#include "core/Sqlite.h"
#include "records/ShipmentLog.h"
#include "records/StatusWords.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace parcelory {

/// A parcel on its way, as the carrier told it last.
struct Journey {
    TrackingStatus status = TrackingStatus::unknown;
    bool isScanned = false; ///< the carrier has had the parcel in its hands at some time
    QDateTime movedAt;      ///< the last event of the journey
    QString zip;            ///< of that event; empty if the carrier does not tell
    QString place;          ///< "Nashua NH"
    QDateTime askedAt;

    bool operator==(const Journey &) const = default;
};

/// The journeys of the mailing log's parcels. Stored in a table of the log's file, which comes with the first journey.
/// May be called from any thread; waits for the disk.
namespace Journeys {

/// Stores what the carrier told about a label's parcel. `next` makes the new journey from the former journey. `word` is
/// the carrier's word for the status; a new word goes into the label's history. False, too, if the label is gone.
[[nodiscard]] bool learn(ShipmentLog &log, const ShipmentRecord &label, const QString &word,
                         const std::function<Journey(const std::optional<Journey> &former)> &next);
/// Stores a journey in a transaction of the caller.
[[nodiscard]] bool put(Database &db, qint64 shipment, const Journey &journey);

/// The journeys of these shipments, for a work that reads other tables, too; nothing if reading failed.
std::optional<QHash<qint64, Journey>> among(const Database &db, const QList<qint64> &shipments);

} // namespace Journeys
} // namespace parcelory
