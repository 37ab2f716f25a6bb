#pragma once

#include "core/Sqlite.h"
#include "records/ShipmentRecord.h"

#include <QDir>
#include <QList>
#include <QObject>

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
    /// wildcards.
    void reload(const QString &search = {}, int limit = listLimit);

    /// Appends a row; false when it could not be stored (the reason is logged and in lastError()).
    [[nodiscard]] bool insert(const ShipmentRecord &record, bool reloadAfter = true);
    [[nodiscard]] bool setStatus(qint64 id, const QString &status);
    [[nodiscard]] bool storeCustomsPDF(qint64 id, const QByteArray &document);
    /// How many labels of a day, in the machine's time zone, were bought with test keys, or with live ones.
    qsizetype labelCount(QDate day, bool testMode) const;
    /// Shipments whose refund the carrier has not decided, newest first.
    QList<ShipmentRecord> openRefunds(int limit) const;
    std::optional<QByteArray> zpl(qint64 id) const;
    std::optional<QByteArray> customsPDF(qint64 id) const;

    /// The whole log as an Endicia mail log, oldest first. `complete` becomes false when it could not be
    /// read to its end; such a text must not replace an earlier export.
    QString exportEndiciaCSV(bool *complete = nullptr) const;
    /// Appends the rows of an Endicia mail log and gives their number. All or none: throws AppError when the file
    /// cannot be read or a row cannot be stored, and the log is then as it was.
    int importEndiciaCSV(const QString &path);

    /// Why the last write failed.
    QString lastError() const;

signals:
    void recordsChanged();

private:
    struct Rows {
        QList<ShipmentRecord> found;
        bool complete = false; ///< false when reading failed on the way
    };

    void migrate();
    Rows rows(const QString &search, int limit) const;
    bool write(Statement &statement);
    std::optional<QByteArray> blob(const QByteArray &sql, qint64 id) const;

    QString m_path;
    Database m_db;
    mutable std::mutex m_writing; ///< one writer of this program at a time; guards m_lastError
    QString m_lastError;
    std::mutex m_reloading; ///< the list that was read last is also the one that is handed over last
    QList<ShipmentRecord> m_records;
    QString m_shownSearch;
};

} // namespace parcelory
