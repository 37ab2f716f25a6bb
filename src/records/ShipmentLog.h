#pragma once

#include "core/Sqlite.h"
#include "records/ShipmentLogIndex.h"
#include "records/ShipmentRecord.h"

#include <QDir>
#include <QIODevice>
#include <QList>
#include <QObject>

#include <functional>
#include <mutex>
#include <optional>

namespace parcelory {

/// The permanent record of every bought label, in mailing_log.sqlite. Everything but records() and shownSearch() may be
/// called from any thread; reading and writing wait for the disk, so screens call them through onPool.
class ShipmentLog : public QObject {
    Q_OBJECT
public:
    /// How many rows the list shows.
    static constexpr int listLimit = 1000;

    /// Opens or creates the log in `folder`, adds missing columns to an older log and loads the newest rows. A failure
    /// is logged; later calls then return empty results.
    explicit ShipmentLog(const QDir &folder);

    /// The rows last loaded, newest first, without their blobs. Main thread only.
    const QList<ShipmentRecord> &records() const { return m_records; }
    /// The search text of records(). Empty again after a change of the log, which reloads the newest rows. Main thread
    /// only.
    const QString &shownSearch() const { return m_shownSearch; }
    /// Runs the query now and hands the rows to the main thread. `search` goes into LIKE as it is: % and _ are
    /// wildcards. A canceled query ends early, hands over nothing and returns false.
    bool reload(const QString &search = {}, int limit = listLimit, const CancelToken &cancel = {});

    /// Appends a row; false if it could not be stored (the reason is logged and in lastError()).
    [[nodiscard]] bool insert(const ShipmentRecord &record, bool reloadAfter = true);
    [[nodiscard]] bool setStatus(qint64 id, const QString &status);
    [[nodiscard]] bool storeCustomsPDF(qint64 id, const QByteArray &document);
    /// A record's current row, found by its id, or by its transaction for a label that was just bought; nothing if the
    /// row is missing or unreadable.
    std::optional<ShipmentRecord> find(const ShipmentRecord &record) const;
    /// The labels of a day, in the machine's time zone, in the order in which they were bought.
    QList<ShipmentRecord> labelsOf(QDate day) const;
    /// Labels of one kind of key that were bought for this reference or since `since`, newest first.
    QList<ShipmentRecord> labelsLike(const QString &reference, const QDateTime &since, bool testMode);
    /// Shipments since `since` whose refund the carrier has not decided, newest first.
    QList<ShipmentRecord> openRefunds(const QDateTime &since, int limit) const;
    std::optional<QByteArray> zpl(qint64 id) const;
    std::optional<QByteArray> customsPDF(qint64 id) const;

    /// Writes the whole log as an Endicia mail log, oldest first, in portions: `progress` counts rows. False if it was
    /// canceled, the log could not be read completely or `out` did not accept everything; then the output must not
    /// replace an earlier export.
    [[nodiscard]] bool exportEndiciaCSV(QIODevice &out, const Progress &progress = {}) const;
    /// Appends the rows of an Endicia mail log and returns their number; `progress` counts bytes of the file. Appends
    /// all rows or no rows: throws AppError if the file cannot be read or a row cannot be stored, and returns 0 if
    /// canceled; in both cases the log is unchanged.
    int importEndiciaCSV(const QString &path, const Progress &progress = {});

    /// Why the last write failed.
    QString lastError() const;

    // For stores with their own tables in the same file. They share the connection, because a second connection could
    // delay the writing of a bought label, and each of its writes would make the search index read the log again.

    /// Runs `work`, which writes on the connection, as one transaction; false if it failed and nothing was stored.
    [[nodiscard]] bool change(const std::function<bool(Database &)> &work);
    /// Runs `work`, which reads on the connection.
    void look(const std::function<void(const Database &)> &work) const;

signals:
    void recordsChanged();
    /// The rows could not be read, because another program has locked the log or its file is damaged: records() is
    /// unchanged.
    void readingFailed(const QString &reason);

private:
    void migrate();
    std::optional<QList<ShipmentRecord>> rows(const QString &search, int limit, const CancelToken &cancel);
    bool write(Statement &statement);
    template <class Value>
    bool update(const QByteArray &sql, const Value &value, qint64 id);
    std::optional<QByteArray> blob(const QByteArray &sql, qint64 id) const;

    QString m_path;
    mutable std::mutex m_connection; ///< m_db serves one thread at a time: the search index depends on its state
    Database m_db;
    ShipmentLogIndex m_index;
    mutable std::mutex m_writing; ///< one writer of this program at a time; guards m_lastError
    QString m_lastError;
    std::mutex m_reloading; ///< the list that is read last is also handed over last
    QList<ShipmentRecord> m_records;
    QString m_shownSearch;
};

} // namespace parcelory
