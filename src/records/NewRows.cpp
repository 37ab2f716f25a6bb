#include "records/NewRows.h"

#include "core/Task.h"
#include "records/LogChain.h"
#include "records/LogChainTable.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace parcelory::NewRows {
using ShipmentLogRows::NewRow;

namespace {

/// Rows, which keep their texts until they are hashed: about 60 MB. Hashing goes on while the indexes are built.
constexpr std::size_t mostUnhashed = 64000;

/// A statement that inserts one row, for so many rows.
QByteArray forRows(const QByteArray &sql, std::size_t rows)
{
    return sql + (", " + sql.sliced(sql.lastIndexOf('('))).repeated(qsizetype(rows) - 1);
}

} // namespace

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
    for (int column = 0; column < NewRow::columns; ++column, ++first) {
        switch (row.kind(column)) {
        case Kind::number:
            statement.bind(first, row.real(column));
            break;
        case Kind::text:
            statement.bindInPlace(first, row.bytes(column));
            break;
        case Kind::blob:
            statement.bindBlobInPlace(first, row.bytes(column));
            break;
        case Kind::null:
            statement.bind(first, std::nullopt);
        }
    }
    return first;
}

Insertion::Insertion(const Database &db, const QByteArray &sql) : m_one(db, sql), m_group(db, forRows(sql, group)) {}

Storage::Storage(Database &db, const Last &last)
    : m_db(db), m_insertion(db, NewRow::insertSql()), m_lastId(last.id),
      m_chained{{.hash = QtFuture::makeReadyFuture(last.hash), .rows = 0}}
{
    m_thread.setMaxThreadCount(1);
}

Storage::~Storage()
{
    waitForEnd(m_chained.back().hash);
}

bool Storage::store(std::vector<NewRow> rows)
{
    if (rows.empty())
        return true;
    const qint64 before = m_lastId;
    m_lastId = qint64(quint64(before) + rows.size()); // of a damaged log, it may be the largest number
    if (!m_insertion.run(std::span<const NewRow>(rows), bind) || m_db.lastInsertedId() != m_lastId)
        return false;
    for (m_unhashed += rows.size(); m_unhashed > mostUnhashed && m_chained.size() > 1; m_chained.pop_front()) {
        m_chained.front().hash.waitForFinished();
        m_unhashed -= m_chained.front().rows;
    }
    const std::size_t count = rows.size();
    auto chain = [this, id = before, rows = std::move(rows)](QByteArray hash) mutable {
        std::vector<Entry> &entries = m_entries.emplace_back();
        entries.reserve(rows.size());
        for (const NewRow &row : rows) {
            const LogChain::RowHashes hashes = m_hasher.hashesOf(row);
            hash = LogChain::chained(hash, ++id, LogChain::labelKind, hashes.kept, hashes.parts);
            Entry &entry = entries.emplace_back(Entry{.shipment = id, .kept = hashes.kept, .hash = {}});
            std::ranges::copy(hash, entry.hash.begin());
        }
        rows = {};
        return hash;
    };
    m_chained.push_back({.hash = m_chained.back().hash.then(&m_thread, std::move(chain)), .rows = count});
    return true;
}

bool Storage::seal()
{
    m_chained.back().hash.waitForFinished();
    Insertion insertion(m_db, LogChain::entrySql);
    const auto bindEntry = [](Statement &statement, int parameter, const Entry &entry) {
        statement.bind(parameter++, entry.shipment);
        statement.bindInPlace(parameter++, LogChain::labelKind);
        statement.bindBlobInPlace(parameter++, entry.kept);
        statement.bindBlobInPlace(parameter++, entry.hash);
        return parameter;
    };
    for (; !m_entries.empty(); m_entries.pop_front()) {
        if (!insertion.run(std::span<const Entry>(m_entries.front()), bindEntry))
            return false;
    }
    return true;
}

} // namespace parcelory::NewRows
