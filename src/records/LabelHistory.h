#pragma once

#include "records/ShipmentLog.h"
#include "records/StatusWords.h"

namespace parcelory {

/// The history of labels after their purchase that has no column in the mailing log: reprints, and the last tracking
/// status of their parcels. Stored in separate tables of the log's file. May be called from any thread; every call
/// waits for the disk.
class LabelHistory {
public:
    explicit LabelHistory(ShipmentLog &log) : m_log(log) {}

    struct Past {
        int reprints = 0;
        QDateTime lastReprint;                            ///< valid if there was a reprint
        TrackingStatus tracked = TrackingStatus::unknown; ///< when its status was last checked
    };

    /// `shipment`: the id of a row of the log.
    bool addReprint(qint64 shipment, const QDateTime &when);
    /// Stores the parcel's tracking status, and "delivered" also as the row's status.
    bool setTracked(qint64 shipment, const QString &word, const QDateTime &when);
    /// The same in a transaction of the caller.
    static bool putTracked(Database &db, qint64 shipment, const QString &word, const QDateTime &when);
    LogRead<Past> of(qint64 shipment) const;

private:
    ShipmentLog &m_log;
};

} // namespace parcelory
