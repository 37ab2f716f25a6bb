#pragma once

#include "core/Sqlite.h"
#include "records/SearchBlock.h"

#include <QFuture>

#include <atomic>
#include <mutex>
#include <optional>

namespace parcelory {

/// Finds rows of a large mailing log in memory, and never others than the database would. It follows the rows that
/// this program adds; after a change from elsewhere it is read anew, off the caller's thread, and finds nothing until
/// then. A log of which a plain search takes no time has no such copy.
class ShipmentLogIndex {
public:
    /// `connection` is the lock of `db`: the callers of everything below hold it.
    ShipmentLogIndex(const Database &db, const QString &path, std::mutex &connection);
    ~ShipmentLogIndex();
    ShipmentLogIndex(const ShipmentLogIndex &) = delete;
    ShipmentLogIndex &operator=(const ShipmentLogIndex &) = delete;

    /// Whether find() knows the rows as they are now; starts reading them when it does not. The answer holds as long
    /// as the caller's Snapshot of the database.
    bool isCurrent();
    /// The ids of the first `limit` rows of which a text is LIKE the pattern, in the order of the answer.
    std::vector<qint64> find(const QByteArray &pattern, int limit, const StillWanted &wanted) const;

    /// To be called after every write on the connection, with the id of the row that was added, if any.
    void follow(std::optional<qint64> added = std::nullopt);
    /// The same after writes that touched no shipment.
    void pass() { m_changes = m_db.totalChanges(); }

private:
    void startReading(qint64 version);
    void read(qint64 version, qint64 lastId);

    const Database &m_db;
    const QString m_path;
    std::mutex &m_connection;

    std::optional<SearchBlock> m_block; ///< the rows as they were at m_version
    SearchBlock m_added;                ///< rows of this program since then; few
    qint64 m_version = 0;               ///< of the file, as the connection counts the commits of others
    std::optional<qint64> m_unfit;      ///< the version that holds values which only the database can compare
    int m_changes = 0;                  ///< of this connection, as far as they were followed
    bool m_isFollowing = false;         ///< m_block is there or being read, and m_added is complete
    QFuture<void> m_reading;
    std::atomic<bool> m_closing = false;
};

} // namespace parcelory
