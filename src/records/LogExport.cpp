#include "records/LogExport.h"

#include "core/Task.h"
#include "records/EndiciaFormat.h"
#include "records/ShipmentLogRows.h"

#include <algorithm>

namespace parcelory::LogExport {

namespace {

const QByteArray columns = "status, created_at, transaction_id, recipient, zip11, postage, weight_oz, balance, service,"
                           " services, tracking, declared_value, description, reference, group_code, email, id";
constexpr int idColumn = 16;

const char *const index = "CREATE INDEX IF NOT EXISTS idx_shipments_exported ON shipments(created_at, id, status,"
                          " transaction_id, recipient, zip11, postage, weight_oz, balance, service, services, tracking,"
                          " declared_value, description, reference, group_code, email)";

bool hasIndex(const Database &db)
{
    return Statement(db, "SELECT 1 FROM sqlite_master WHERE name = 'idx_shipments_exported'").step();
}

EndiciaFormat::Line lineOf(const Statement &row)
{
    return {.status = row.utf8(0),
            .createdAt = ShipmentLogRows::msecsOf(row.real(1)),
            .transactionID = row.utf8(2),
            .recipient = row.utf8(3),
            .zip11 = row.utf8(4),
            .postage = row.real(5),
            .weightOz = row.real(6),
            .balance = row.utf8(7),
            .service = row.utf8(8),
            .services = row.utf8(9),
            .tracking = row.utf8(10),
            .declaredValue = row.utf8(11),
            .descriptionText = row.utf8(12),
            .reference = row.utf8(13),
            .groupCode = row.utf8(14),
            .email = row.utf8(15)};
}

} // namespace

bool addIndex(Database &db)
{
    constexpr qint64 mostRows = 300'000;
    if (hasIndex(db))
        return true;
    Statement last(db, "SELECT coalesce(max(id), 0) FROM shipments");
    if (!last.step())
        return false;
    const bool isSmall = last.integer(0) <= mostRows;
    last.reset();
    return !isSmall || db.exec(index);
}

std::optional<std::vector<qint64>> oldestFirst(const Database &db)
{
    Statement query(db, "SELECT id FROM shipments ORDER BY created_at DESC, id DESC");
    std::vector<qint64> ids;
    while (query.step())
        ids.push_back(query.integer(0));
    if (!query.isComplete())
        return std::nullopt;
    std::ranges::reverse(ids);
    return ids;
}

LineReader::LineReader(const QString &path)
    : m_db(path, Database::Threads::oneAtATime), m_row(m_db, "SELECT " + columns + " FROM shipments WHERE id = ?")
{
    if (hasIndex(m_db))
        m_range.emplace(m_db, "SELECT " + columns +
                                  " FROM shipments INDEXED BY idx_shipments_exported"
                                  " WHERE (created_at, id) >= ((SELECT created_at FROM shipments WHERE id = ?1), ?1)"
                                  " ORDER BY created_at, id LIMIT ?2");
}

LineReader::~LineReader()
{
    m_reading.waitForFinished();
}

void LineReader::start(std::span<const qint64> ids)
{
    m_reading = QtConcurrent::run(&workPool(), [this, ids] { return read(ids); });
}

/// False if these are not exactly the rows, because another program has changed the log since.
bool LineReader::readRange(std::span<const qint64> ids, QByteArray &lines)
{
    if (!m_range || ids.empty())
        return ids.empty();
    m_range->bind(1, ids.front());
    m_range->bind(2, qint64(ids.size()));
    std::size_t count = 0;
    while (m_range->step() && m_range->integer(idColumn) == ids[count]) {
        EndiciaFormat::append(lines, lineOf(*m_range), m_dates);
        ++count;
    }
    const bool isComplete = m_range->isComplete();
    m_range->reset();
    return isComplete && count == ids.size();
}

std::optional<QByteArray> LineReader::read(std::span<const qint64> ids)
{
    constexpr qsizetype usualLine = 256;
    if (m_db.isReplaced()) // SQLite would take the new file's journal for this one's
        return std::nullopt;
    const Snapshot snapshot(m_db); // one lock for all rows, released before they are written
    QByteArray lines;
    lines.reserve(qsizetype(ids.size()) * usualLine);
    if (readRange(ids, lines))
        return lines;
    lines.clear();
    for (const qint64 id : ids) {
        m_row.bind(1, id);
        if (m_row.step())
            EndiciaFormat::append(lines, lineOf(m_row), m_dates);
        else if (!m_row.isComplete())
            return std::nullopt;
        m_row.reset();
    }
    return lines;
}

} // namespace parcelory::LogExport
