#pragma once

#include "records/ShipmentLog.h"

namespace parcelory {

/// What became of labels after their purchase and has no column in the mailing log: when they were printed again, and
/// what the carrier said last of their parcels. In tables of its own in the log's file. From any thread; every call
/// waits for the disk.
class LabelHistory {
public:
    explicit LabelHistory(ShipmentLog &log) : m_log(log) {}

    struct Past {
        int reprints = 0;
        QDateTime lastReprint; ///< valid when there was one
        QString tracked;       ///< the carrier's last word: "TRANSIT"; empty when it was never asked
    };

    /// `shipment`: the id of a row of the log.
    bool addReprint(qint64 shipment, const QDateTime &when);
    bool setTracked(qint64 shipment, const QString &word, const QDateTime &when);
    Past of(qint64 shipment) const;

private:
    ShipmentLog &m_log;
};

} // namespace parcelory
