#include "records/LabelHistory.h"

#include "records/RefundNotes.h"
#include "records/ShipmentLogRows.h"
#include "records/StatusWords.h"

#include <optional>

namespace parcelory {

using ShipmentLogRows::secondsOf;

namespace {

/// Runs before every write, so that a log without reprints and lookups gets no such tables.
constexpr auto schema = "CREATE TABLE IF NOT EXISTS label_reprints (\n"
                        "  shipment_id INTEGER NOT NULL,\n"
                        "  printed_at REAL NOT NULL\n"
                        ");\n"
                        "CREATE INDEX IF NOT EXISTS idx_label_reprints ON label_reprints(shipment_id);\n"
                        "CREATE TABLE IF NOT EXISTS label_tracking (\n"
                        "  shipment_id INTEGER PRIMARY KEY,\n"
                        "  word TEXT NOT NULL,\n"
                        "  heard_at REAL NOT NULL\n"
                        ");";

} // namespace

bool LabelHistory::addReprint(const ShipmentRecord &label, const QDateTime &when)
{
    return m_log.changeRow(label, [&](Database &db, qint64 id) {
        return db.exec(schema) &&
               execute(db, "INSERT INTO label_reprints (shipment_id, printed_at) VALUES (?, ?)", id, secondsOf(when));
    });
}

bool LabelHistory::putTracked(Database &db, qint64 shipment, const QString &word, const QDateTime &when)
{
    return db.exec(schema) &&
           execute(db, "INSERT OR REPLACE INTO label_tracking (shipment_id, word, heard_at) VALUES (?, ?, ?)", shipment,
                   word, secondsOf(when)) &&
           (trackingStatusFrom(word) != TrackingStatus::delivered ||
            RefundNotes::putStatus(db, shipment, wordOf(LogStatus::delivered)));
}

LogRead<LabelHistory::Past> LabelHistory::of(qint64 shipment) const
{
    return m_log.read<Past>([shipment](const Database &db) -> std::optional<Past> {
        Past past;
        if (!ShipmentLogRows::hasTable(db, "label_reprints"))
            return past;
        Statement reprints(db, "SELECT count(*), max(printed_at) FROM label_reprints WHERE shipment_id = ?");
        reprints.bind(1, shipment);
        if (!reprints.step())
            return std::nullopt;
        if (reprints.integer(0) > 0) {
            past.reprints = int(reprints.integer(0));
            past.lastReprint = ShipmentLogRows::timeOf(reprints.real(1));
        }
        Statement tracking(db, "SELECT word FROM label_tracking WHERE shipment_id = ?");
        tracking.bind(1, shipment);
        if (tracking.step())
            past.tracked = trackingStatusFrom(tracking.text(0));
        else if (!tracking.isComplete())
            return std::nullopt;
        return past;
    });
}

} // namespace parcelory
