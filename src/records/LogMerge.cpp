#include "records/LogMerge.h"

#include "records/LogChain.h"
#include "records/RefundNotes.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentStatus.h"

#include <QFileInfo>
#include <QHash>

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

bool seal(Database &log, qint64 id)
{
    LogChain::Sealer sealer(log);
    return sealer.seal(id) && sealer.sealFetched(id);
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

/// Binds a row's values to the parameters from `parameter` on; they are valid until the row's next step.
void bindValues(const Statement &row, qsizetype columns, Statement &insert, int parameter)
{
    for (int column = 0; column < columns; ++column, ++parameter) {
        switch (row.kind(column)) {
        case Statement::Kind::null:
            insert.bind(parameter, std::optional<QByteArray>());
            break;
        case Statement::Kind::number:
            insert.bind(parameter, row.real(column));
            break;
        case Statement::Kind::text:
            insert.bindInPlace(parameter, row.utf8(column));
            break;
        case Statement::Kind::blob:
            insert.bind(parameter, std::optional(row.bytes(column).toByteArray()));
            break;
        }
    }
}

/// Copies rows from the present log, which may be damaged, over a connection of its own: a transaction that has read a
/// damaged page cannot be committed. What cannot be read is left out; false only if the log could not be written.
class Transfer {
public:
    Transfer(const Database &from, Database &to) : m_from(from), m_to(to) {}

    /// The new id; 0 if the row cannot be read, nothing if it could not be stored.
    std::optional<qint64> copyLabel(qint64 id)
    {
        const QByteArrayList columns = commonColumns("shipments", "id");
        // A document lies on pages of its own, which may be the damaged ones; the carrier's link leads to it again.
        for (const QByteArrayList &left : {QByteArrayList(), {"customs_pdf"}, {"customs_pdf", "zpl"}}) {
            QByteArrayList values = columns;
            for (const QByteArray &document : left)
                values.replace(values.indexOf(document), "NULL");
            Statement row(m_from, "SELECT " + values.join(", ") + " FROM shipments WHERE id = ?");
            if (row.isPrepared())
                row.bind(1, id);
            if (!row.step())
                continue;
            Statement insert(m_to, "INSERT INTO shipments (id, " + columns.join(", ") +
                                       ") VALUES (CASE WHEN EXISTS (SELECT 1 FROM shipments WHERE id = ?1) THEN NULL"
                                       " ELSE ?1 END" +
                                       QByteArray(", ?").repeated(columns.size()) + ")");
            if (!insert.isPrepared())
                return std::nullopt;
            insert.bind(1, id);
            bindValues(row, columns.size(), insert, 2);
            if (!insert.execute())
                return std::nullopt;
            const qint64 added = m_to.lastInsertedId();
            return copyNotes(id, added) ? std::optional(added) : std::nullopt;
        }
        return 0;
    }

    /// Refunds of labels that both have: the money is asked back, whatever the copy says.
    bool takeOverRefunds()
    {
        Statement rows(m_from, "SELECT transaction_id, status, " + noteIn(m_from) +
                                   ", id FROM shipments WHERE transaction_id <> ''");
        Statement same(m_to, "SELECT transaction_id, status, " + noteIn(m_to) + " FROM shipments WHERE id = ?");
        QHash<QString, Refund> moved;
        while (rows.step()) {
            const Refund refund = refundOf(rows);
            if (refundState(refund.word()) == RefundState::none)
                continue;
            const qint64 id = rows.integer(3);
            same.bind(1, id);
            const bool isSame = same.step() && same.text(0) == rows.text(0);
            const bool isKnown = isSame && refundOf(same) == refund;
            same.reset();
            if (!isSame)
                moved.insert(rows.text(0), refund);
            else if (!isKnown && !put(id, refund))
                return false;
        }
        return moved.isEmpty() || takeOverMoved(moved);
    }

    /// What happened to the labels, which the carrier's id identifies there.
    bool copyEvents()
    {
        const QByteArray table = "label_events";
        if (!ShipmentLogRows::hasTable(m_from, table.constData()))
            return true;
        if (!createLike(table))
            return false;
        const QByteArrayList columns = commonColumns(table, {});
        Statement rows(m_from, "SELECT " + columns.join(", ") + " FROM " + table);
        Statement insert(m_to, "INSERT OR REPLACE INTO " + table + " (" + columns.join(", ") + ") VALUES (?" +
                                   QByteArray(", ?").repeated(columns.size() - 1) + ")");
        while (rows.step()) {
            bindValues(rows, columns.size(), insert, 1);
            if (!insert.execute())
                return false;
        }
        return true;
    }

    bool copyScanForms()
    {
        if (!ShipmentLogRows::hasTable(m_from, "scan_forms"))
            return true;
        for (const QByteArray table : {"scan_forms", "scan_form_labels", "scan_form_documents"}) {
            if (!createLike(table))
                return false;
        }
        Statement known(m_to, "SELECT 1 FROM scan_forms WHERE asked_at = ?");
        Statement forms(m_from, "SELECT id, asked_at FROM scan_forms ORDER BY id");
        while (forms.step()) {
            known.bind(1, forms.real(1));
            const bool isKnown = known.step();
            known.reset();
            if (isKnown)
                continue;
            if (!copyRows("scan_forms", "id", forms.integer(0), std::nullopt))
                return false;
            const qint64 id = m_to.lastInsertedId();
            if (!copyRows("scan_form_labels", "form_id", forms.integer(0), id) ||
                !copyRows("scan_form_documents", "form_id", forms.integer(0), id))
                return false;
        }
        return true;
    }

private:
    /// A delivered label has its refund in a note.
    struct Refund {
        QString status, note;

        bool operator==(const Refund &) const = default;
        QString word() const { return note.isEmpty() ? status : note; }
    };

    /// The column of the note.
    static QByteArray noteIn(const Database &db)
    {
        return RefundNotes::exist(db) ? "(SELECT word FROM label_refunds WHERE shipment_id = shipments.id)" : "''";
    }

    static Refund refundOf(const Statement &row) { return {.status = row.text(1), .note = row.text(2)}; }

    bool put(qint64 id, const Refund &refund)
    {
        return RefundNotes::putStatus(m_to, id, refund.word()) &&
               (refund.note.isEmpty() || RefundNotes::putStatus(m_to, id, refund.status));
    }

    /// Refunds of labels that an earlier restore gave another id. Reads the table once: its transactions may have no
    /// index.
    bool takeOverMoved(const QHash<QString, Refund> &refunds)
    {
        QHash<qint64, Refund> changed;
        Statement rows(m_to, "SELECT transaction_id, status, " + noteIn(m_to) +
                                 ", id FROM shipments WHERE transaction_id <> ''");
        while (rows.step()) {
            const auto refund = refunds.constFind(rows.text(0));
            if (refund != refunds.cend() && refundOf(rows) != *refund)
                changed.insert(rows.integer(3), *refund);
        }
        return rows.isComplete() && std::ranges::all_of(changed.asKeyValueRange(), [this](const auto &change) {
                   return put(change.first, change.second);
               });
    }

    /// What other tables tell of a label.
    bool copyNotes(qint64 from, qint64 to)
    {
        QByteArrayList tables;
        Statement names(m_from, "SELECT name FROM sqlite_master WHERE type = 'table' AND name <> 'log_chain' AND EXISTS"
                                " (SELECT 1 FROM pragma_table_info(sqlite_master.name) WHERE name = 'shipment_id')");
        while (names.step())
            tables += names.text(0).toUtf8();
        return std::ranges::all_of(tables, [&](const QByteArray &table) {
            return createLike(table) && copyRows(table, "shipment_id", from, to);
        });
    }

    /// Copies the rows whose `owner` is `from`, now `to`; without `to`, the log gives a new one.
    bool copyRows(const QByteArray &table, const QByteArray &owner, qint64 from, std::optional<qint64> to)
    {
        const QByteArrayList columns = commonColumns(table, owner);
        const QByteArray list = columns.isEmpty() ? QByteArray() : ", " + columns.join(", ");
        Statement rows(m_from, "SELECT " + owner + list + " FROM " + table + " WHERE " + owner + " = ? ORDER BY rowid");
        Statement insert(m_to, "INSERT OR REPLACE INTO " + table + " (" + owner + list + ") VALUES (?" +
                                   QByteArray(", ?").repeated(columns.size()) + ")");
        if (!rows.isPrepared() || !insert.isPrepared())
            return !rows.isPrepared();
        rows.bind(1, from);
        while (rows.step()) {
            bindValues(rows, columns.size() + 1, insert, 1);
            if (to)
                insert.bind(1, *to);
            else
                insert.bind(1, std::optional<QByteArray>());
            if (!insert.execute())
                return false;
        }
        return true;
    }

    bool createLike(const QByteArray &table)
    {
        if (ShipmentLogRows::hasTable(m_to, table.constData()))
            return true;
        Statement made(m_from, "SELECT sql FROM sqlite_master WHERE tbl_name = '" + table +
                                   "' AND sql IS NOT NULL ORDER BY type DESC");
        while (made.step()) {
            if (!m_to.exec(made.text(0).toUtf8().constData()))
                return false;
        }
        return true;
    }

    static QByteArrayList columnsOf(const Database &db, const QByteArray &table)
    {
        QByteArrayList columns;
        Statement names(db, "SELECT name FROM pragma_table_info('" + table + "')");
        while (names.step())
            columns += names.text(0).toUtf8();
        return columns;
    }

    /// The columns that the table has in both logs, but not `without`.
    QByteArrayList commonColumns(const QByteArray &table, const QByteArray &without) const
    {
        QByteArrayList columns = columnsOf(m_to, table);
        const QByteArrayList others = columnsOf(m_from, table);
        columns.removeIf([&](const QByteArray &name) { return name == without || !others.contains(name); });
        return columns;
    }

    const Database &m_from;
    Database &m_to;
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
        if (!ShipmentLogRows::append(added.labels, row) && added.damage.isEmpty())
            added.damage = db.lastError();
        row.reset();
    }
    return added;
}

Merged bringBack(Database &log, const QString &present, const QList<ShipmentRecord> &labels)
{
    if (!QFileInfo::exists(present))
        return {};
    const Database from(present);
    return inTransaction(log, [&]() -> std::optional<int> {
        Transfer transfer(from, log);
        int count = 0;
        const LogChain::Sealer first(log); // before the first row, so that the chain of an empty log is complete
        for (const ShipmentRecord &label : labels) {
            const std::optional<qint64> id = transfer.copyLabel(label.id);
            if (!id || (*id && !seal(log, *id)))
                return std::nullopt;
            count += *id != 0;
        }
        return transfer.takeOverRefunds() && transfer.copyEvents() && transfer.copyScanForms() ? std::optional(count)
                                                                                               : std::nullopt;
    });
}

Merged append(Database &log, const QList<ShipmentRecord> &labels)
{
    return inTransaction(log, [&]() -> std::optional<int> {
        LogChain::Sealer sealer(log);
        Statement insert(log, ShipmentLogRows::NewRow::insertSql());
        for (const ShipmentRecord &label : labels) {
            if (!ShipmentLogRows::NewRow(label).store(insert) || !sealer.seal(log.lastInsertedId()))
                return std::nullopt;
        }
        return int(labels.size());
    });
}

} // namespace parcelory::LogMerge
