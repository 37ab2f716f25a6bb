#pragma once

#include "carrier/ShippoRecords.h"

#include <QDateTime>

#include <optional>

namespace parcelory {

/// A label of the carrier account, regardless of the desk that bought it.
struct MasterEntry {
    QString id; ///< the transaction's
    std::optional<QDateTime> date;
    QString recipient; ///< "—" if it is unknown
    QString company;   ///< "—" if it is unknown
    QString place;     ///< "Asheville, NC"
    QString country;
    QString service;   ///< carrier and service: "USPS Priority Mail"
    double amount = 0; ///< US dollars
    QString tracking;
    QString trackingURL; ///< the carrier's page
    QString status;      ///< in the carrier's words
    bool test = false;
    QString labelURL;
    QString office; ///< the sender's ZIP, if Parcelory bought the label; otherwise empty

    bool operator==(const MasterEntry &) const = default;
};

/// The status in the clerk's words; an unknown status stays unchanged.
QString statusDisplay(const QString &status);

/// The labels bought from `start` until before `end`, newest first. Failed purchases are left out.
QList<MasterEntry> masterEntries(const QList<ShippoTransaction> &transactions,
                                 const QList<ShippoShipmentListed> &shipments, const QDateTime &start,
                                 const QDateTime &end);

} // namespace parcelory
