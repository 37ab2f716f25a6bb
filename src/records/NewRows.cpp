#include "records/NewRows.h"

#include "records/LogChain.h"
#include "records/LogChainTable.h"

#include <algorithm>
#include <utility>

namespace parcelory::NewRows {
using ShipmentLogRows::NewRow;

namespace {

/// A statement that inserts one row, for so many rows.
QByteArray forRows(const QByteArray &sql, std::size_t rows)
{
    return sql + (", " + sql.sliced(sql.lastIndexOf('('))).repeated(qsizetype(rows) - 1);
}

} // namespace

Hashed hashed(NewRow row)
{
    LogChain::RowHashes hashes = LogChain::hashesOf(row);
    return {.row = std::move(row), .hashes = std::move(hashes)};
}

std::optional<Last> last(const Database &db)
{
    Statement id(db, "SELECT max(coalesce((SELECT max(id) FROM shipments), 0),"
                     " coalesce((SELECT seq FROM sqlite_sequence WHERE name = 'shipments'), 0))");
    const std::optional<LogChain::Head> head = LogChain::head(db);
    return head && id.step() ? std::optional(Last{.id = id.integer(0), .hash = head->hash}) : std::nullopt;
}

int bind(Statement &statement, int first, const NewRow &row)
{
    using Kind = Statement::Kind;
    static const int columns = int(NewRow::insertSql().count('?'));
    for (int column = 0; column < columns; ++column, ++first) {
        if (row.kind(column) == Kind::number)
            statement.bind(first, row.real(column));
        else if (row.kind(column) == Kind::text)
            statement.bindInPlace(first, row.bytes(column));
        else
            statement.bind(first, row.kind(column) == Kind::blob ? std::optional(row.bytes(column).toByteArray())
                                                                 : std::nullopt);
    }
    return first;
}

Storage::Storage(Database &db, const Last &last)
    : m_db(db), m_last(last), m_insert(db, NewRow::insertSql()), m_entry(db, LogChain::entrySql),
      m_insertGroup(db, forRows(NewRow::insertSql(), group)), m_entryGroup(db, forRows(LogChain::entrySql, group))
{
}

bool Storage::store(std::span<const Hashed> rows)
{
    for (; rows.size() >= group; rows = rows.subspan(group)) {
        if (!store(rows.first(group), m_insertGroup, m_entryGroup))
            return false;
    }
    return std::ranges::all_of(rows, [this](const Hashed &row) { return store({&row, 1}, m_insert, m_entry); });
}

bool Storage::store(std::span<const Hashed> rows, Statement &insert, Statement &entries)
{
    if (!insert.isPrepared() || !entries.isPrepared())
        return false;
    int value = 1, part = 1;
    for (const Hashed &row : rows) {
        m_last.id = qint64(quint64(m_last.id) + 1); // of a damaged log, it may be the largest number
        m_last.hash = LogChain::chained(m_last.hash, m_last.id, LogChain::labelKind, row.hashes.kept, row.hashes.parts);
        value = bind(insert, value, row.row);
        entries.bind(part++, m_last.id);
        entries.bindInPlace(part++, LogChain::labelKind);
        entries.bind(part++, std::optional(row.hashes.kept));
        entries.bind(part++, std::optional(m_last.hash));
    }
    return insert.execute() && m_db.lastInsertedId() == m_last.id && entries.execute();
}

} // namespace parcelory::NewRows
