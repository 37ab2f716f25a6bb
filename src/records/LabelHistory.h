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

    [[nodiscard]] bool addReprint(const ShipmentRecord &label, const QDateTime &when);
    /// Stores the parcel's tracking status, and "delivered" also as the row's status, in a transaction of the caller.
    [[nodiscard]] static bool putTracked(Database &db, qint64 shipment, const QString &word, const QDateTime &when);
    /// `shipment`: the id of a row of the log.
    LogRead<Past> of(qint64 shipment) const;

private:
    ShipmentLog &m_log;
};

} // namespace parcelory
