#include "records/ShipmentLogIndex.h"

#include "core/Progress.h"
#include "core/Task.h"
#include "records/LikePattern.h"
#include "records/SearchBlock.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <limits>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace parcelory {

namespace {

/// With fewer rows, a plain search takes only a few milliseconds.
constexpr qint64 worthwhile = 10000;
/// Every added row sorts m_added again, so m_added must stay small.
constexpr std::size_t manyAdded = 5000;

constexpr auto searchedTexts = "SELECT id, created_at, recipient, tracking, description, reference FROM shipments ";

std::optional<qint64> number(const Database &db, const char *sql)
{
    Statement query(db, sql);
    return query.step() ? std::optional(query.integer(0)) : std::nullopt;
}

/// Adds the row; false if it holds values that only the database can compare.
bool addRow(SearchBlock &block, const Statement &row)
{
    using Kind = Statement::Kind;
    if (row.kind(1) != Kind::number)
        return false;
    SearchBlock::Texts texts{};
    for (int text = 0; text < int(texts.size()); ++text) {
        if (row.kind(text + 2) == Kind::blob)
            return false;
        texts[text] = row.utf8(text + 2).data();
    }
    block.add({row.real(1), row.integer(0)}, texts);
    return true;
}

} // namespace

ShipmentLogIndex::ShipmentLogIndex(const Database &db, const QString &path, std::mutex &connection)
    : m_db(db), m_path(path), m_connection(connection)
{
}

ShipmentLogIndex::~ShipmentLogIndex()
{
    m_closing = true;
    m_reading.waitForFinished();
}

bool ShipmentLogIndex::isCurrent()
{
    const std::optional<qint64> version = number(m_db, "PRAGMA data_version");
    if (!version)
        return false; // another program has locked the log
    if (!m_isFollowing || *version != m_version || m_added.size() > manyAdded)
        startReading(*version);
    return m_block.has_value();
}

void ShipmentLogIndex::startReading(qint64 version)
{
    m_isFollowing = false;
    m_block.reset();
    const std::optional<qint64> lastId = number(m_db, "SELECT max(id) FROM shipments");
    if (m_reading.isRunning() || m_unfit == version || lastId.value_or(0) < worthwhile)
        return; // a running read that is now outdated discards its result
    m_isFollowing = true;
    m_version = version;
    m_changes = m_db.totalChanges();
    m_added = {};
    m_reading = QtConcurrent::run(&workPool(), [this, version, lastId = *lastId] { read(version, lastId); });
}

/// Reads in portions, because writers are blocked while a portion is read.
void ShipmentLogIndex::read(qint64 version, qint64 lastId)
{
    constexpr int portion = 5000;
    const Database db(m_path, Database::Threads::oneAtATime);
    Statement rows(db, searchedTexts + QByteArray("WHERE id > ?1 AND id <= ?2 ORDER BY id LIMIT ?3"));
    SearchBlock block;
    bool isComplete = rows.isPrepared(), isFit = true;
    qint64 id = 0;
    for (bool isLast = false; isComplete && isFit && !isLast && !m_closing; rows.reset()) {
        if (db.isReplaced()) { // SQLite would take the new file's journal for this one's
            isComplete = false;
            break;
        }
        rows.bind(1, id);
        rows.bind(2, lastId);
        rows.bind(3, qint64(portion));
        int count = 0;
        for (; isFit && rows.step(); ++count) {
            id = rows.integer(0);
            isFit = addRow(block, rows);
        }
        isComplete = !isFit || rows.isComplete();
        isLast = count < portion;
    }
    if (isComplete && isFit && !m_closing)
        block.sort();

    const std::lock_guard turn(m_connection);
    const bool isStillRight = m_isFollowing && number(m_db, "PRAGMA data_version") == version;
    if (isStillRight && isComplete && isFit)
        m_block = std::move(block);
    else
        m_isFollowing = false;
    if (!isFit)
        m_unfit = version;
}

std::vector<qint64> ShipmentLogIndex::find(const QByteArray &pattern, int limit, const CancelToken &cancel) const
{
    using Places = std::vector<SearchBlock::Place>;
    const LikePattern like(pattern);
    const std::size_t most = limit < 0 ? std::numeric_limits<std::size_t>::max() : std::size_t(limit);
    const Places old = m_block->find(like, most, cancel), added = m_added.find(like, most, cancel);
    Places both;
    std::ranges::merge(old, added, std::back_inserter(both), std::less());
    std::vector<qint64> ids;
    for (const SearchBlock::Place &place : both)
        ids.push_back(place.id);
    ids.resize(std::min(ids.size(), most));
    return ids;
}

void ShipmentLogIndex::forget()
{
    m_isFollowing = false; // a read that is running discards its result
    m_block.reset();
    m_unfit.reset();
}

void ShipmentLogIndex::follow(std::optional<qint64> added)
{
    if (!m_isFollowing)
        return;
    const int changes = m_db.totalChanges() - std::exchange(m_changes, m_db.totalChanges());
    bool isFollowed = changes <= 1; // a trigger that another program added may have changed more
    if (added && isFollowed) {
        Statement row(m_db, searchedTexts + QByteArray("WHERE id = ?"));
        row.bind(1, *added);
        isFollowed = row.step() && addRow(m_added, row);
        m_added.sort();
    }
    m_isFollowing = isFollowed;
    if (!isFollowed)
        m_block.reset();
}

} // namespace parcelory
