#pragma once

#include "core/Sqlite.h"
#include "records/SearchBlock.h"

#include <QFuture>

#include <atomic>
#include <mutex>
#include <optional>

namespace parcelory {

/// An in-memory search index of a large mailing log; it finds the same rows as the database. Rows that this program
/// adds are added to the index; after a change by another program the log is read again on a worker thread, and the
/// index is not current until then. A small log, which a plain search reads quickly, has no index.
class ShipmentLogIndex {
public:
    /// `connection` is the lock of `db`: callers of all functions below hold it.
    ShipmentLogIndex(const Database &db, const QString &path, std::mutex &connection);
    ~ShipmentLogIndex();
    ShipmentLogIndex(const ShipmentLogIndex &) = delete;
    ShipmentLogIndex &operator=(const ShipmentLogIndex &) = delete;

    /// True if find() knows the current rows; otherwise starts to read them. The result is valid as long as the
    /// caller's Snapshot of the database exists.
    bool isCurrent();
    /// The ids of the first `limit` rows with a text that is LIKE the pattern, newest first.
    std::vector<qint64> find(const QByteArray &pattern, int limit, const CancelToken &cancel) const;

    /// Call after every write on the connection, with the id of the added row, if any.
    void follow(std::optional<qint64> added = std::nullopt);
    /// Call after the connection was opened again.
    void forget();
    /// Call after writes that changed no shipment.
    void skipOwnWrite() { m_changes = m_db.totalChanges(); }

private:
    void startReading(qint64 version);
    void read(qint64 version, qint64 lastId);

    const Database &m_db;
    const QString m_path;
    std::mutex &m_connection;

    std::optional<SearchBlock> m_block; ///< the rows as they were at m_version
    SearchBlock m_added;                ///< rows that this program has added since then; few
    qint64 m_version = 0;               ///< the file's data_version, which counts commits by other connections
    std::optional<qint64> m_unfit;      ///< a version with values that only the database can compare
    int m_changes = 0;                  ///< the connection's change count at the last call that followed it
    bool m_isFollowing = false;         ///< m_block is loaded or being read, and m_added is complete
    QFuture<void> m_reading;
    std::atomic<bool> m_closing = false;
};

} // namespace parcelory
