#include "records/LogMerge.h"

#include "records/LabelHistory.h"
#include "records/LogChain.h"
#include "records/LogMergeTables.h"
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

/// The ids of labels in the copy by those in the present log.
using Ids = QHash<qint64, qint64>;

const QByteArray fetchedTable = "fetched_labels";

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

    /// An earlier restore may have given a label another id. Reads both tables once: their transactions may have no
    /// index. Nothing if the copy could not be read.
    std::optional<Ids> commonLabels() const
    {
        const QByteArray sql = "SELECT transaction_id, id FROM shipments WHERE transaction_id <> ''";
        QHash<QString, qint64> copied;
        Statement copies(m_to, sql);
        while (copies.step())
            copied.insert(copies.text(0), copies.integer(1));
        Ids ids;
        for (Statement rows(m_from, sql); rows.step();) {
            if (const auto same = copied.constFind(rows.text(0)); same != copied.cend())
                ids.insert(rows.integer(1), *same);
        }
        return copies.isComplete() ? std::optional(ids) : std::nullopt;
    }

    /// Refunds of labels that both have: the money is asked back, whatever the copy says.
    bool takeOverRefunds(const Ids &ids)
    {
        Statement rows(m_from, "SELECT id, status, " + noteIn(m_from) + " FROM shipments");
        Statement same(m_to, "SELECT id, status, " + noteIn(m_to) + " FROM shipments WHERE id = ?");
        while (rows.step()) {
            const Refund refund = refundOf(rows);
            const qint64 id = ids.value(rows.integer(0));
            if (id == 0 || refundState(refund.word()) == RefundState::none)
                continue;
            same.bind(1, id);
            const bool isKnown = same.step() && refundOf(same) == refund;
            same.reset();
            if (!isKnown && !put(id, refund))
                return false;
        }
        return true;
    }

    /// What was learned and noted since of labels that both have. Of a label's own documents and of their check, only
    /// what the copy lacks altogether.
    bool takeOverHistory(const Ids &ids)
    {
        return takeOver("label_journeys", ids) && takeOver("open_items_done", ids) && takeOver("label_reprints", ids) &&
               takeOverTracking(ids) && takeOver("label_verdicts", ids, Take::newLabels) &&
               takeOver(fetchedTable, ids, Take::newLabels) && takeOverPapers(ids);
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

    /// Of a row with the id, the status and the note.
    static Refund refundOf(const Statement &row) { return {.status = row.text(1), .note = row.text(2)}; }

    bool put(qint64 id, const Refund &refund)
    {
        return RefundNotes::putStatus(m_to, id, refund.word()) &&
               (refund.note.isEmpty() || RefundNotes::putStatus(m_to, id, refund.status));
    }

    enum class Take {
        newRows,   ///< that the copy does not have; it may have another one with the same key
        newLabels, ///< all rows of labels that the copy has no row of
    };

    /// Rows that are the same in both are not written: the last labels are merged while no label can be stored.
    bool takeOver(const QByteArray &table, const Ids &ids, Take take = Take::newRows)
    {
        if (!ShipmentLogRows::hasTable(m_from, table.constData()))
            return true;
        if (!createLike(table))
            return false;
        const QByteArrayList columns = QByteArrayList{"shipment_id"} + commonColumns(table, "shipment_id");
        const QByteArray list = columns.join(", ");
        Statement rows(m_from, "SELECT " + list + " FROM " + table);
        Statement same(m_to, "SELECT 1 FROM " + table + " WHERE " + columns.join(" IS ? AND ") + " IS ?" +
                                 orLaterThan(columns.indexOf("asked_at") + 1));
        Statement insert(m_to, "INSERT OR REPLACE INTO " + table + " (" + list + ") VALUES (?" +
                                   QByteArray(", ?").repeated(columns.size() - 1) + ")");
        QSet<qint64> held;
        if (take == Take::newLabels) {
            for (Statement has(m_to, "SELECT shipment_id FROM " + table); has.step();)
                held.insert(has.integer(0));
        }
        while (rows.step()) {
            const qint64 id = ids.value(rows.integer(0));
            if (id == 0 || held.contains(id))
                continue;
            for (Statement *statement : {&same, &insert}) {
                bindValues(rows, columns.size(), *statement, 1);
                statement->bind(1, id);
            }
            const bool isKnown = same.step();
            same.reset();
            if (!isKnown && !insert.execute())
                return false;
            if (table == fetchedTable && !LogChain::Sealer(m_to).sealFetched(id))
                return false;
        }
        return true;
    }

    /// An earlier restore may have left the older answer of the carrier in the present log. `askedAt` is the parameter
    /// with its time, 0 if the table has no such column.
    static QByteArray orLaterThan(qsizetype askedAt)
    {
        return askedAt > 0 ? " OR (shipment_id = ?1 AND asked_at >= ?" + QByteArray::number(askedAt) + ')'
                           : QByteArray();
    }

    /// Customs papers, which are not sealed.
    bool takeOverPapers(const Ids &ids)
    {
        Statement rows(m_from, "SELECT id FROM shipments WHERE customs_pdf IS NOT NULL");
        Statement lacks(m_to, "SELECT 1 FROM shipments WHERE id = ? AND customs_pdf IS NULL");
        Statement papers(m_from, "SELECT customs_pdf FROM shipments WHERE id = ?");
        while (rows.step()) {
            const qint64 id = ids.value(rows.integer(0));
            lacks.bind(1, id);
            const bool isLacking = lacks.step();
            lacks.reset();
            if (!isLacking)
                continue;
            papers.bind(1, rows.integer(0));
            if (papers.step() &&
                !execute(m_to, "UPDATE shipments SET customs_pdf = ? WHERE id = ?", papers.blob(0), id))
                return false;
            papers.reset();
        }
        return true;
    }

    /// A delivered parcel's label has this as its status, too.
    bool takeOverTracking(const Ids &ids)
    {
        if (!ShipmentLogRows::hasTable(m_from, "label_tracking"))
            return true;
        if (!createLike("label_tracking"))
            return false;
        Statement rows(m_from, "SELECT shipment_id, word, heard_at FROM label_tracking");
        Statement same(m_to, "SELECT 1 FROM label_tracking WHERE shipment_id = ? AND word = ?");
        while (rows.step()) {
            const qint64 id = ids.value(rows.integer(0));
            same.bind(1, id);
            same.bind(2, rows.text(1));
            const bool isKnown = id == 0 || same.step();
            same.reset();
            if (!isKnown && !LabelHistory::putTracked(m_to, id, rows.text(1), ShipmentLogRows::timeOf(rows.real(2))))
                return false;
        }
        return true;
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

    bool createLike(const QByteArray &table) { return LogMerge::createLike(m_from, m_to, table); }
    QByteArrayList commonColumns(const QByteArray &table, const QByteArray &without) const
    {
        return LogMerge::commonColumns(m_from, m_to, table, without);
    }

    const Database &m_from;
    Database &m_to;
};

} // namespace

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
        const std::optional<Ids> ids = transfer.commonLabels();
        const bool isWhole = ids && transfer.takeOverRefunds(*ids) && transfer.takeOverHistory(*ids) &&
                             transfer.copyEvents() && transfer.copyScanForms();
        return isWhole ? std::optional(count) : std::nullopt;
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
