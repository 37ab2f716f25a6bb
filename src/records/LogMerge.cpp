#include "records/LogMerge.h"

#include "records/LogChain.h"
#include "records/RefundNotes.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentStatus.h"

#include <QFileInfo>

#include <algorithm>
#include <functional>
#include <utility>

namespace parcelory::LogMerge {
using namespace Qt::StringLiterals;

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

/// Runs `work` in one transaction on `log`; if it fails, nothing is stored.
Merged inTransaction(Database &log, const std::function<std::optional<int>()> &work)
{
    std::optional<int> count;
    if (log.exec("BEGIN") && (count = work()) && log.exec("COMMIT"))
        return {.labels = *count};
    const QString failure = log.lastError();
    log.exec("ROLLBACK");
    return {.failure = failure};
}

/// Both logs on one connection: "main" gets rows of "present".
class Both {
public:
    explicit Both(Database &db) : m_db(db) {}

    /// The new id; nothing if a statement failed because of `main`, 0 if the row cannot be read.
    std::optional<qint64> copyLabel(qint64 id)
    {
        const QByteArray columns = commonColumns("shipments", {"id"});
        const auto insert = [&](const QByteArray &values) {
            return execute(m_db,
                           "INSERT INTO main.shipments (id, " + columns +
                               ") SELECT CASE WHEN EXISTS (SELECT 1 FROM main.shipments WHERE id = ?1) THEN NULL ELSE "
                               "?1 END, " +
                               values + " FROM present.shipments WHERE id = ?1",
                           id);
        };
        const int before = m_db.totalChanges();
        if (!insert(columns) && !m_db.isDamaged())
            return std::nullopt;
        // A document lies on pages of its own, which may be the damaged ones; the carrier's link leads to it again.
        if (m_db.totalChanges() == before && !insert(QByteArray(columns).replace("customs_pdf", "NULL")) &&
            !insert(QByteArray(columns).replace("customs_pdf", "NULL").replace("zpl", "NULL")) && !m_db.isDamaged())
            return std::nullopt;
        if (m_db.totalChanges() == before)
            return 0;
        const qint64 added = m_db.lastInsertedId();
        return copyNotes(id, added) ? std::optional(added) : std::nullopt;
    }

    /// Refunds of labels that both have: the money is asked back, whatever the copy says.
    bool takeOverRefunds()
    {
        Statement changed(m_db, "SELECT p.id, p.status FROM present.shipments p JOIN main.shipments m ON m.id = p.id"
                                " AND m.transaction_id = p.transaction_id WHERE p.transaction_id <> '' AND"
                                " p.status IS NOT m.status");
        QList<std::pair<qint64, QString>> refunds;
        while (changed.step()) {
            if (refundState(changed.text(1)) != RefundState::none)
                refunds.append({changed.integer(0), changed.text(1)});
        }
        return std::ranges::all_of(
            refunds, [this](const auto &row) { return RefundNotes::putStatus(m_db, row.first, row.second); });
    }

    bool copyScanForms()
    {
        if (!hasPresent("scan_forms"))
            return true;
        for (const QByteArray name : {"scan_forms", "scan_form_labels", "scan_form_documents"}) {
            if (!createLike(name))
                return false;
        }
        QList<qint64> forms;
        Statement added(m_db, "SELECT id FROM present.scan_forms WHERE asked_at NOT IN"
                              " (SELECT asked_at FROM main.scan_forms) ORDER BY id");
        while (added.step())
            forms += added.integer(0);
        return std::ranges::all_of(forms, [this](qint64 form) {
            const QByteArray columns = commonColumns("scan_forms", {"id"});
            if (!execute(m_db,
                         "INSERT INTO main.scan_forms (" + columns + ") SELECT " + columns +
                             " FROM present.scan_forms WHERE id = ?",
                         form))
                return false;
            const qint64 id = m_db.lastInsertedId();
            return copyRows("scan_form_labels", "form_id", form, id) &&
                   copyRows("scan_form_documents", "form_id", form, id);
        });
    }

private:
    /// What other tables tell of a label.
    bool copyNotes(qint64 from, qint64 to)
    {
        QByteArrayList tables;
        Statement names(m_db, "SELECT name FROM present.sqlite_master WHERE type = 'table' AND name <> 'log_chain' AND"
                              " EXISTS (SELECT 1 FROM pragma_table_info(sqlite_master.name, 'present')"
                              " WHERE name = 'shipment_id')");
        while (names.step())
            tables += names.text(0).toUtf8();
        return std::ranges::all_of(tables, [&](const QByteArray &table) {
            return createLike(table) && copyRows(table, "shipment_id", from, to);
        });
    }

    bool copyRows(const QByteArray &table, const QByteArray &owner, qint64 from, qint64 to)
    {
        const QByteArray columns = commonColumns(table, {owner});
        const QByteArray others = columns.isEmpty() ? QByteArray() : ", " + columns;
        return execute(m_db,
                       "INSERT OR REPLACE INTO main." + table + " (" + owner + others + ") SELECT ?1" + others +
                           " FROM present." + table + " WHERE " + owner + " = ?2 ORDER BY rowid",
                       to, from) ||
               m_db.isDamaged();
    }

    bool hasPresent(const QByteArray &table) const
    {
        Statement query(m_db, "SELECT 1 FROM present.sqlite_master WHERE name = '" + table + "'");
        return query.step();
    }

    bool createLike(const QByteArray &table)
    {
        if (ShipmentLogRows::hasTable(m_db, table.constData()))
            return true;
        QByteArrayList scripts;
        Statement made(m_db, "SELECT sql FROM present.sqlite_master WHERE tbl_name = '" + table +
                                 "' AND sql IS NOT NULL ORDER BY type DESC");
        while (made.step())
            scripts += made.text(0).toUtf8();
        return std::ranges::all_of(scripts, [this](const QByteArray &script) { return m_db.exec(script.constData()); });
    }

    /// The columns that the table has in both logs but `without`, separated by commas.
    QByteArray commonColumns(const QByteArray &table, const QByteArrayList &without) const
    {
        QByteArrayList columns;
        Statement names(m_db, "SELECT name FROM pragma_table_info('" + table +
                                  "', 'main') WHERE name IN (SELECT name"
                                  " FROM pragma_table_info('" +
                                  table + "', 'present'))");
        while (names.step()) {
            if (const QByteArray name = names.text(0).toUtf8(); !without.contains(name))
                columns += name;
        }
        return columns.join(", ");
    }

    Database &m_db;
};

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
        const auto record = ShipmentLogRows::plainRowsOf(row);
        row.reset();
        if (record)
            added.labels += *record;
        else if (added.damage.isEmpty())
            added.damage = db.lastError();
    }
    return added;
}

Merged bringBack(Database &log, const QString &present, const QList<ShipmentRecord> &labels)
{
    if (!QFileInfo::exists(present) || !execute(log, "ATTACH ? AS present", present))
        return {.failure = {}}; // not a database: nothing comes back from it
    const Merged merged = inTransaction(log, [&]() -> std::optional<int> {
        Both both(log);
        int count = 0;
        LogChain::Sealer first(log); // before the first row, so that the chain of an empty log is complete
        for (const ShipmentRecord &label : labels) {
            const std::optional<qint64> id = both.copyLabel(label.id);
            if (!id)
                return std::nullopt;
            if (*id == 0)
                continue;
            if (!LogChain::Sealer(log).seal(*id))
                return std::nullopt;
            ++count;
        }
        return (both.takeOverRefunds() && both.copyScanForms()) || log.isDamaged() ? std::optional(count)
                                                                                   : std::nullopt;
    });
    log.exec("DETACH present");
    return merged;
}

Merged append(Database &log, const QList<ShipmentRecord> &labels)
{
    return inTransaction(log, [&]() -> std::optional<int> {
        LogChain::Sealer sealer(log);
        Statement insert(log, ShipmentLogRows::insert);
        for (const ShipmentRecord &label : labels) {
            if (!insert.isPrepared())
                return std::nullopt;
            ShipmentLogRows::bind(insert, label);
            if (!insert.execute() || !sealer.seal(log.lastInsertedId()))
                return std::nullopt;
        }
        return int(labels.size());
    });
}

} // namespace parcelory::LogMerge
