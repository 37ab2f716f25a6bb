#include "records/LogMerge.h"
#include "records/ShipmentLogRows.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace parcelory::LogMerge {

namespace {

constexpr auto keyColumns = "id, created_at, transaction_id, tracking, recipient,"
                            " (label_url <> '' OR zpl IS NOT NULL) AS has_label";

/// The same in the copy and in the present log: ids may have been given again after an earlier restore.
QByteArray keyOf(const Statement &row)
{
    const QByteArrayView transaction = row.utf8(2);
    if (!transaction.isEmpty())
        return transaction.toByteArray();
    return QByteArray::number(ShipmentLogRows::msecsOf(row.real(1))) + ' ' + row.text(3).toUtf8() + ' ' +
           row.text(4).toUtf8();
}

/// An imported row has neither a label nor a link to it.
bool isBought(const Statement &row)
{
    return !row.utf8(2).isEmpty() && row.integer(5) != 0;
}

} // namespace

std::optional<Held> held(const Database &copy)
{
    Held found;
    Statement rows(copy, QByteArray("SELECT ") + keyColumns + " FROM shipments NOT INDEXED");
    double last = 0;
    while (rows.step()) {
        found.rows.insert(keyOf(rows));
        last = std::max(last, rows.real(1));
    }
    if (last > 0)
        found.last = ShipmentLogRows::timeOf(last);
    return rows.isComplete() ? std::optional(found) : std::nullopt;
}

Added addedSince(const QString &present, const Held &copy, qint64 after)
{
    Added added;
    if (!QFileInfo::exists(present))
        return added;
    const Database db(present);
    QList<qint64> bought;
    QSet<qint64> seen;
    // From both ends, so that a damaged page in between hides only its own rows.
    for (const QByteArray order : {"ASC", "DESC"}) {
        Statement rows(db, QByteArray("SELECT ") + keyColumns +
                               " FROM shipments NOT INDEXED WHERE id > ? ORDER BY id " + order);
        if (rows.isPrepared())
            rows.bind(1, after);
        while (rows.step()) {
            const qint64 id = rows.integer(0);
            if (seen.contains(id))
                break;
            seen.insert(id);
            added.lastId = std::max(added.lastId, id);
            if (copy.rows.contains(keyOf(rows)))
                continue;
            if (isBought(rows))
                bought += id;
            else
                ++added.imported;
        }
        if (rows.isComplete())
            break;
        if (added.damage.isEmpty())
            added.damage = db.lastError();
    }
    std::ranges::sort(bought);
    Statement row(db, ShipmentLogRows::select + QByteArray(" WHERE id = ?"));
    for (const qint64 id : std::as_const(bought)) {
        if (row.isPrepared())
            row.bind(1, id);
        if (!ShipmentLogRows::append(added.labels, row) && added.damage.isEmpty())
            added.damage = db.lastError();
        row.reset();
    }
    return added;
}

} // namespace parcelory::LogMerge
