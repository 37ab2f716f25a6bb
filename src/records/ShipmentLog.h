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

/// The permanent record of every label bought, in mailing_log.sqlite. Everything but records() may be called from any
/// thread; reading and writing wait for the disk, so screens call them through onPool.
class ShipmentLog : public QObject {
    Q_OBJECT
public:
    /// How many rows the list shows.
    static constexpr int listLimit = 1000;

    /// Opens or creates the log in `folder`, brings an older one to today's columns and loads the newest rows. A
    /// failure is logged; later calls then come back empty.
    explicit ShipmentLog(const QDir &folder);

    /// The rows last loaded, newest first, without their blobs. Main thread only.
    const QList<ShipmentRecord> &records() const { return m_records; }
    /// What records() was searched for: every change of the log brings the newest rows without a search. Main thread
    /// only.
    const QString &shownSearch() const { return m_shownSearch; }
    /// Runs the query now and hands the rows to the main thread. `search` goes into LIKE as it is: % and _ are
    /// wildcards. Once `wanted` says false, the query ends early, nothing is handed over and the answer is false.
    bool reload(const QString &search = {}, int limit = listLimit, const StillWanted &wanted = {});

    /// Appends a row; false when it could not be stored (the reason is logged and in lastError()).
    [[nodiscard]] bool insert(const ShipmentRecord &record, bool reloadAfter = true);
    [[nodiscard]] bool setStatus(qint64 id, const QString &status);
    [[nodiscard]] bool storeCustomsPDF(qint64 id, const QByteArray &document);
    /// A record's row as it is now, that of a label just bought by its transaction; nothing when it is gone or cannot
    /// be read.
    std::optional<ShipmentRecord> find(const ShipmentRecord &record) const;
    /// The labels of a day, in the machine's time zone, in the order in which they were bought.
    QList<ShipmentRecord> labelsOf(QDate day) const;
    /// Labels of one kind of key that were bought for this reference or since `since`, newest first.
    QList<ShipmentRecord> labelsLike(const QString &reference, const QDateTime &since, bool testMode);
    /// Shipments since then whose refund the carrier has not decided, newest first.
    QList<ShipmentRecord> openRefunds(const QDateTime &since, int limit) const;
    std::optional<QByteArray> zpl(qint64 id) const;
    std::optional<QByteArray> customsPDF(qint64 id) const;

    /// Told how much of the whole is done; false ends the operation early.
    using Progress = std::function<bool(qint64 done, qint64 total)>;

    /// Writes the whole log as an Endicia mail log, oldest first, in portions: `progress` counts rows. False when it
    /// was ended early, could not be read to its end or `out` did not take all of it; then what was written must not
    /// replace an earlier export.
    [[nodiscard]] bool exportEndicia(QIODevice &out, const Progress &progress = {}) const;
    /// The same as a text; `complete` becomes what exportEndicia() says.
    QString exportEndiciaCSV(bool *complete = nullptr) const;
    /// Appends the rows of an Endicia mail log and gives their number; `progress` counts bytes of the file. All or
    /// none: throws AppError when the file cannot be read or a row cannot be stored, and gives 0 when it was ended
    /// early; the log is then as it was.
    int importEndiciaCSV(const QString &path, const Progress &progress = {});

    /// Why the last write failed.
    QString lastError() const;

    // For the stores that keep tables of their own in the same file. They share its one connection, because another
    // one could make the writing of a bought label wait, and each of its writes would have the search read anew.

    /// `work` writes on the connection; all of it is stored, or nothing and the answer is false.
    [[nodiscard]] bool change(const std::function<bool(Database &)> &work);
    /// `work` reads on the connection.
    void look(const std::function<void(const Database &)> &work) const;

signals:
    void recordsChanged();
    /// The rows could not be read, because another program holds the log or its file is damaged: records() is as
    /// before.
    void readingFailed(const QString &reason);

private:
    void migrate();
    std::optional<QList<ShipmentRecord>> rows(const QString &search, int limit, const StillWanted &wanted);
    bool write(Statement &statement);
    template <class Value>
    bool update(const QByteArray &sql, const Value &value, qint64 id);
    std::optional<QByteArray> blob(const QByteArray &sql, qint64 id) const;

    QString m_path;
    mutable std::mutex m_connection; ///< m_db serves one thread at a time: its state tells what a search has to know
    Database m_db;
    ShipmentLogIndex m_index;
    mutable std::mutex m_writing; ///< one writer of this program at a time; guards m_lastError
    QString m_lastError;
    std::mutex m_reloading; ///< the list that was read last is also the one that is handed over last
    QList<ShipmentRecord> m_records;
    QString m_shownSearch;
};

} // namespace parcelory
