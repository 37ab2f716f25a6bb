#pragma once

#include "core/Sqlite.h"
#include "records/ShipmentRecord.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QSet>
#include <QString>

#include <optional>

/// What the present mailing log has that a copy of it lacks, and how a copy gets it back.
namespace parcelory::LogMerge {

/// What a copy's log holds.
struct Held {
    QSet<QByteArray> rows; ///< a key of each row, see Added
    QDateTime last;        ///< when its newest label was bought; invalid if it has no label
};
/// Nothing if it could not be read.
std::optional<Held> held(const Database &copy);

/// The rows of the present log that a copy does not hold.
struct Added {
    QList<ShipmentRecord> labels; ///< bought since, without their documents, the oldest first
    int imported = 0;             ///< rows of imports
    qint64 lastId = 0;            ///< of all rows that could be read
    QString damage;               ///< why some rows could not be read; empty if all could
};
/// `after`: only rows with a larger id. A file that is not there has no rows and is no damage.
Added addedSince(const QString &present, const Held &copy, qint64 after = 0);

struct Merged {
    int labels = 0;  ///< how many are in the log now
    QString failure; ///< why nothing was stored
};
/// Puts labels of the present log into `log`, with their documents and their rows in other tables, and seals them.
/// Leaves out a label whose row cannot be read; a label whose documents cannot be read comes without them. For labels
/// that both logs have, takes over refunds, reprints, journeys and open items that were taken off the list, and
/// documents and label checks that `log` lacks. Takes over SCAN forms, too.
Merged bringBack(Database &log, const QString &present, const QList<ShipmentRecord> &labels);
/// Puts labels of another source into `log`, and seals them.
Merged append(Database &log, const QList<ShipmentRecord> &labels);

} // namespace parcelory::LogMerge
