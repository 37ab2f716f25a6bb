#include "records/JournalRescue.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QSet>

namespace parcelory {

namespace {

/// The row ids up to the first page that cannot be read, and those behind the last one.
QSet<qint64> readableRows(const Database &db, const QByteArray &table)
{
    QSet<qint64> rows;
    for (const QByteArray order : {"ASC", "DESC"}) {
        Statement ids(db, "SELECT rowid FROM damaged." + table + " NOT INDEXED ORDER BY rowid " + order);
        while (ids.step())
            rows.insert(ids.integer(0));
        if (ids.isComplete())
            break;
    }
    return rows;
}

int copyRows(const Database &db, const QByteArray &table, const QByteArray &required, const QByteArrayList &optional)
{
    int copied = 0;
    for (const qint64 row : readableRows(db, table)) {
        const int before = db.totalChanges();
        execute(db,
                "INSERT OR IGNORE INTO main." + table + " (rowid, " + required + ") SELECT rowid, " + required +
                    " FROM damaged." + table + " WHERE rowid = ?",
                row);
        if (db.totalChanges() == before)
            continue;
        ++copied;
        // One by one: a long value lies on pages of its own, which may be damaged, and older versions lack some
        // columns.
        for (const QByteArray &column : optional)
            execute(db,
                    "UPDATE main." + table + " SET " + column + " = (SELECT " + column + " FROM damaged." + table +
                        " WHERE rowid = ?1) WHERE rowid = ?1",
                    row);
    }
    return copied;
}

} // namespace

int copyReadableEntries(Database &journal, const QString &damaged)
{
    if (!execute(journal, "ATTACH ? AS damaged", damaged))
        return 0;
    const int purchases =
        copyRows(journal, "purchases", "asked_at, rate_id, key_name, recipient, keep_recipient, shipment, printed",
                 {"rated_at", "test_mode", "transaction_id", "prints_papers", "label", "customs_pdf"});
    const int refunds = copyRows(journal, "refunds", "transaction_id, shipment_id, asked_at", {});
    journal.exec("DETACH damaged");
    return purchases + refunds;
}

} // namespace parcelory
