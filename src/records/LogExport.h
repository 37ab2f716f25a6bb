#pragma once

#include "core/Sqlite.h"
#include "records/EndiciaDates.h"

#include <QByteArray>
#include <QFuture>

#include <optional>
#include <span>
#include <vector>

/// The lines of an export of the mailing log. An index holds all their texts in their order, so that the labels, which
/// are most of the log, are not read.
namespace parcelory::LogExport {

/// Adds the index to a log without it, in one transaction that lasts about a second for 100,000 rows. A log of more
/// than 300,000 rows that was begun without the index stays without: others would wait too long. False if a statement
/// failed.
bool addIndex(Database &db);

/// The ids of all rows, the oldest first; nothing if they could not be read.
std::optional<std::vector<qint64>> oldestFirst(const Database &db);

/// Reads lines on its own connection and a pool thread.
class LineReader {
public:
    explicit LineReader(const QString &path);
    ~LineReader();
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

    /// `ids`: a part of oldestFirst().
    void start(std::span<const qint64> ids);
    /// The lines of the rows that start() named; nothing if they could not be read.
    std::optional<QByteArray> result() { return m_reading.result(); }
    /// After result().
    const Database &database() const { return m_db; }

private:
    std::optional<QByteArray> read(std::span<const qint64> ids);
    bool readRange(std::span<const qint64> ids, QByteArray &lines);

    Database m_db;
    Statement m_row;
    std::optional<Statement> m_range; ///< nothing without the index
    EndiciaDates m_dates;
    QFuture<std::optional<QByteArray>> m_reading;
};

} // namespace parcelory::LogExport
