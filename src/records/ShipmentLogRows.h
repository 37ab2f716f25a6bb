#pragma once

#include "core/Sqlite.h"
#include "records/ShipmentRecord.h"

#include <QList>

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace parcelory::ShipmentLogRows {

/// The list's columns, without the documents; a WHERE or ORDER BY may follow.
extern const char *const select;
using Wanted = std::function<bool(const ShipmentRecord &)>;

/// Appends all remaining rows of a query of these columns, without noted refunds; false if reading failed before the
/// last row. `isWanted`: keeps only such rows; empty for all.
bool append(QList<ShipmentRecord> &records, Statement &query, const Wanted &isWanted = {});
/// The same as a list with the noted refunds; nothing if reading failed.
std::optional<QList<ShipmentRecord>> allOf(const Database &db, Statement &query, const Wanted &isWanted = {});
/// The rows with these ids, in their order, with the noted refunds; nothing if reading failed.
std::optional<QList<ShipmentRecord>> withIds(const Database &db, const std::vector<qint64> &ids);
/// The row of a record by its id, or by its transaction for a label that was just bought: a list of at most one row;
/// nothing if it could not be read.
std::optional<QList<ShipmentRecord>> rowOf(const Database &db, const ShipmentRecord &record);
/// The present id of a label whose row was read before the log may have been replaced; 0 if the label is gone.
std::optional<qint64> idOf(const Database &db, const ShipmentRecord &label);
/// Ids as json_each() takes them.
QString listOf(std::span<const qint64> ids);
/// The rows with these transactions since `since`, oldest first, with the noted refunds; nothing if reading failed.
/// Reads every row since then.
std::optional<QList<ShipmentRecord>> withTransactions(const Database &db, const QStringList &ids,
                                                      const QDateTime &since);
/// For the tables that later versions added with their first row.
bool hasTable(const Database &db, const char *name);
/// Marks an imported row as dated with the day of its import, because its own date is unknown. It counts for no day.
bool markUndated(Database &db, qint64 id);
/// The rows that count for the days of their dates, as a condition that begins with AND; empty if all do.
QByteArray datedCondition(const Database &db);

/// A value of created_at in milliseconds since 1970. A damaged row may hold any number.
inline qint64 msecsOf(double createdAt)
{
    constexpr double farthest = 1e12; // seconds; date arithmetic is not reliable beyond this
    return qRound64(std::clamp(createdAt, -farthest, farthest) * 1000);
}

/// A time as a value of created_at: seconds since 1970.
inline double secondsOf(qint64 msecs)
{
    return double(msecs) / 1000;
}

inline double secondsOf(const QDateTime &time)
{
    return secondsOf(time.toMSecsSinceEpoch());
}

inline QDateTime timeOf(double createdAt)
{
    return QDateTime::fromMSecsSinceEpoch(msecsOf(createdAt));
}

/// The columns that LogChain seals, in the order of its parts. A column that a later version adds needs a part of its
/// own, so that today's entries stay valid.
extern const char *const sealedColumns;

/// The values of a row that is not stored yet, as SQLite will hold them: the sealed columns, the status and the customs
/// form. They read like a row of a query.
class NewRow {
public:
    static constexpr int statusColumn = 23, columns = 25;

    /// Texts are UTF-8.
    struct Values {
        double createdAt = 0; ///< as secondsOf()
        QByteArrayView carrier, service, services;
        double postage = 0;
        QByteArrayView balance, declaredValue, recipient, zip11, email;
        bool isIntl = false;
        QByteArrayView tracking, trackingURL, transactionID, labelURL, customsDocURL;
        bool testMode = false;
        std::optional<QByteArrayView> zpl = {};
        QByteArrayView weight;
        double weightOz = 0;
        QByteArrayView descriptionText, reference, groupCode, status;
        std::optional<QByteArrayView> customsPDF = {};
    };
    explicit NewRow(const Values &values);
    explicit NewRow(const ShipmentRecord &record);

    static QByteArray insertSql();
    /// Runs a statement of insertSql(); false if it failed.
    [[nodiscard]] bool store(Statement &insert) const;

    Statement::Kind kind(int column) const;
    double real(int column) const;          ///< of a number
    QByteArrayView bytes(int column) const; ///< of a text or document; never null
    /// `count` columns as LogChain hashes them.
    QByteArrayView sealed(int column, int count) const;

private:
    std::array<qsizetype, columns + 1> m_starts; ///< of the columns in m_sealed, and its end
    QByteArray m_sealed;                         ///< all columns as LogChain hashes them
};

} // namespace parcelory::ShipmentLogRows
