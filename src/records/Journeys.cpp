#include "records/Journeys.h"

#include "records/LabelHistory.h"
#include "records/ShipmentLogRows.h"

#include <optional>

namespace parcelory::Journeys {

using ShipmentLogRows::secondsOf;
using ShipmentLogRows::timeOf;

namespace {

/// Runs before every write, so that a log without journeys gets no such table.
constexpr auto schema = "CREATE TABLE IF NOT EXISTS label_journeys (\n"
                        "  shipment_id INTEGER PRIMARY KEY,\n"
                        "  word TEXT NOT NULL,\n"
                        "  is_scanned INTEGER NOT NULL,\n"
                        "  moved_at REAL NOT NULL,\n"
                        "  zip TEXT NOT NULL,\n"
                        "  place TEXT NOT NULL,\n"
                        "  asked_at REAL NOT NULL\n"
                        ");";

} // namespace

bool learn(ShipmentLog &log, const ShipmentRecord &label, const QString &word,
           const std::function<Journey(const std::optional<Journey> &former)> &next)
{
    const TrackingStatus status = trackingStatusFrom(word);
    return log.changeRow(label, [&](Database &db, qint64 id) {
        const auto journeys = among(db, {id});
        if (!journeys)
            return false;
        const auto found = journeys->constFind(id);
        const auto former = found == journeys->cend() ? std::optional<Journey>() : *found;
        const bool isNew = !former || (former->status != status && status != TrackingStatus::unknown);
        const Journey journey = next(former);
        return put(db, id, journey) && (!isNew || LabelHistory::putTracked(db, id, word, journey.askedAt));
    });
}

bool put(Database &db, qint64 shipment, const Journey &journey)
{
    return db.exec(schema) &&
           execute(db,
                   "INSERT OR REPLACE INTO label_journeys (shipment_id, word, is_scanned, moved_at, zip, place, "
                   "asked_at) VALUES (?, ?, ?, ?, ?, ?, ?)",
                   shipment, wordOf(journey.status), journey.isScanned,
                   secondsOf(journey.movedAt.isValid() ? journey.movedAt : journey.askedAt), journey.zip, journey.place,
                   secondsOf(journey.askedAt));
}

std::optional<QHash<qint64, Journey>> among(const Database &db, const QList<qint64> &shipments)
{
    QHash<qint64, Journey> journeys;
    if (!ShipmentLogRows::hasTable(db, "label_journeys"))
        return journeys;
    Statement query(db, "SELECT shipment_id, word, is_scanned, moved_at, zip, place, asked_at FROM label_journeys "
                        "WHERE shipment_id IN (SELECT value FROM json_each(?))");
    if (query.isPrepared()) // another version may have another table
        query.bind(1, ShipmentLogRows::listOf(shipments));
    while (query.step())
        journeys.insert(query.integer(0), {.status = trackingStatusFrom(query.text(1)),
                                           .isScanned = query.integer(2) != 0,
                                           .movedAt = timeOf(query.real(3)),
                                           .zip = query.text(4),
                                           .place = query.text(5),
                                           .askedAt = timeOf(query.real(6))});
    return query.isComplete() ? std::optional(journeys) : std::nullopt;
}

} // namespace parcelory::Journeys
