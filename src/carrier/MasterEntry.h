#pragma once

#include "carrier/ShippoRecords.h"

#include <QDateTime>

#include <optional>

namespace parcelory {

/// A label of the carrier account, whichever desk bought it.
struct MasterEntry {
    QString id; ///< the transaction's
    std::optional<QDateTime> date;
    QString recipient; ///< "—" when it is not known
    QString company;   ///< likewise
    QString place;     ///< "Asheville, NC"
    QString country;
    QString service;   ///< carrier and service: "USPS Priority Mail"
    double amount = 0; ///< US dollars
    QString tracking;
    QString trackingURL; ///< the carrier's page
    QString status;      ///< the carrier's word
    bool test = false;

    bool operator==(const MasterEntry &) const = default;
};

/// The status in the clerk's words; an unknown word as it is.
QString statusDisplay(const QString &status);

/// What the labels bought between `start` and `end` (not included) were, newest first. Failed purchases are left out.
QList<MasterEntry> masterEntries(const QList<ShippoTransaction> &transactions,
                                 const QList<ShippoShipmentListed> &shipments, const QDateTime &start,
                                 const QDateTime &end);

} // namespace parcelory
