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
    /// Runs the query now and hands the rows to the main thread. `search` goes into LIKE as it is: % and _ are
    /// wildcards.
    void reload(const QString &search = {}, int limit = listLimit);

    /// Appends a row; false when it could not be stored (the reason is logged and in lastError()).
    [[nodiscard]] bool insert(const ShipmentRecord &record, bool reloadAfter = true);
    bool setStatus(qint64 id, const QString &status);
    bool storeCustomsPDF(qint64 id, const QByteArray &document);
    std::optional<QByteArray> zpl(qint64 id) const;
    std::optional<QByteArray> customsPDF(qint64 id) const;

    /// The whole log as an Endicia mail log, oldest first.
    QString exportEndiciaCSV() const;
    /// Appends the rows of an Endicia mail log and gives their number. All or none: throws AppError when the file
    /// cannot be read or a row cannot be stored, and the log is then as it was.
    int importEndiciaCSV(const QString &path);

    QString lastError() const { return m_db.lastError(); }

signals:
    void recordsChanged();

private:
    void migrate();
    QList<ShipmentRecord> rows(const QString &search, int limit) const;
    std::optional<int> appendLines(const QStringList &lines);
    std::optional<QByteArray> blob(const QByteArray &sql, qint64 id) const;

    Database m_db;
    std::mutex m_writing; ///< keeps a row of another thread out of an import's transaction
    QList<ShipmentRecord> m_records;
};

} // namespace parcelory
