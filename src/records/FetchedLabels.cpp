#include "records/FetchedLabels.h"

#include "records/LogChain.h"
#include "records/ShipmentLogRows.h"

namespace parcelory::FetchedLabels {

namespace {

constexpr auto schema = "CREATE TABLE IF NOT EXISTS fetched_labels (\n"
                        "  shipment_id INTEGER PRIMARY KEY,\n"
                        "  label BLOB NOT NULL\n"
                        ");";

} // namespace

bool put(ShipmentLog &log, const ShipmentRecord &row, const QByteArray &label)
{
    return log.changeRow(row, [&](Database &db, qint64 shipment) {
        return db.exec(schema) &&
               execute(db, "INSERT OR REPLACE INTO fetched_labels (shipment_id, label) VALUES (?, ?)", shipment,
                       std::optional(label)) &&
               LogChain::Sealer(db).sealFetched(shipment);
    });
}

LogRead<std::optional<QByteArray>> of(const ShipmentLog &log, qint64 shipment)
{
    using Label = std::optional<QByteArray>;
    return log.read<Label>([shipment](const Database &db) -> std::optional<Label> {
        if (!ShipmentLogRows::hasTable(db, "fetched_labels"))
            return Label();
        Statement query(db, "SELECT label FROM fetched_labels WHERE shipment_id = ?");
        query.bind(1, shipment);
        if (query.step())
            return query.blob(0);
        return query.isComplete() ? std::optional(Label()) : std::nullopt;
    });
}

} // namespace parcelory::FetchedLabels
