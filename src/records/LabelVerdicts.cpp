#include "records/LabelVerdicts.h"

#include "records/ShipmentLogRows.h"

#include <algorithm>
#include <optional>

namespace parcelory::LabelVerdicts {
using namespace Qt::StringLiterals;

namespace {

/// Runs before every write, so that a log without verdicts gets no such table.
constexpr auto schema = "CREATE TABLE IF NOT EXISTS label_verdicts (\n"
                        "  shipment_id INTEGER NOT NULL,\n"
                        "  item TEXT NOT NULL,\n"
                        "  match TEXT NOT NULL,\n"
                        "  on_parcel TEXT NOT NULL,\n"
                        "  on_label TEXT NOT NULL,\n"
                        "  elements TEXT NOT NULL,\n"
                        "  PRIMARY KEY (shipment_id, item)\n"
                        ");";

QString listed(const QList<qsizetype> &elements)
{
    QStringList numbers;
    for (const qsizetype element : elements)
        numbers += QString::number(element);
    return numbers.join(u' ');
}

QList<qsizetype> numbersOf(const QString &text)
{
    QList<qsizetype> numbers;
    for (const QString &number : text.split(u' ', Qt::SkipEmptyParts))
        numbers += number.toLongLong();
    return numbers;
}

} // namespace

bool put(ShipmentLog &log, const ShipmentRecord &label, const QList<StoredFinding> &findings)
{
    return log.changeRow(label, [&](Database &db, qint64 shipment) {
        return db.exec(schema) && execute(db, "DELETE FROM label_verdicts WHERE shipment_id = ?", shipment) &&
               std::ranges::all_of(findings, [&](const StoredFinding &finding) {
                   return execute(db,
                                  "INSERT INTO label_verdicts (shipment_id, item, match, on_parcel, on_label, "
                                  "elements) VALUES (?, ?, ?, ?, ?, ?)",
                                  shipment, finding.item, finding.match, finding.onParcel, finding.onLabel,
                                  listed(finding.elements));
               });
    });
}

LogRead<QList<StoredFinding>> of(const ShipmentLog &log, qint64 shipment)
{
    using Findings = QList<StoredFinding>;
    return log.read<Findings>([shipment](const Database &db) -> std::optional<Findings> {
        Findings findings;
        if (!ShipmentLogRows::hasTable(db, "label_verdicts"))
            return findings;
        Statement query(db, "SELECT item, match, on_parcel, on_label, elements FROM label_verdicts "
                            "WHERE shipment_id = ? ORDER BY rowid");
        if (query.isPrepared()) // another version may have another table
            query.bind(1, shipment);
        while (query.step())
            findings += {query.text(0), query.text(1), query.text(2), query.text(3), numbersOf(query.text(4))};
        return query.isComplete() ? std::optional(findings) : std::nullopt;
    });
}

} // namespace parcelory::LabelVerdicts
