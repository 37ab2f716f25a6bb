#pragma once

#include "carrier/MasterEntry.h"
#include "records/ShipmentRecord.h"

#include <QDateTime>
#include <QList>

#include <functional>
#include <optional>

namespace parcelory {

enum class DifferenceKind { boughtElsewhere, notInAccount, otherAmount, refundedThere };

/// A label of which the carrier's account and the mailing log tell different things.
struct AccountDifference {
    QString id; ///< the transaction's
    DifferenceKind kind = DifferenceKind::boughtElsewhere;
    QDateTime time;
    QString recipient, service, tracking;
    std::optional<double> account, here; ///< the amount on each side, if that side has the label
    qint64 row = 0;                      ///< of the mailing log; 0 if only the account knows the label

    bool operator==(const AccountDifference &) const = default;
};

/// What the carrier's account listed, from some days before until after the day that is compared: its clock and the
/// desk's need not agree about midnight.
struct AccountListing {
    QList<MasterEntry> entries;
    QDateTime askedAt;  ///< labels that the desk bought later are not compared
    bool isCut = false; ///< older labels are missing

    bool operator==(const AccountListing &) const = default;
};

/// The labels of `day` that differ, newest first, each once. `rows`: the desk's labels of that day bought with the
/// active key's kind of key. `isKnown` tells whether the mailing log has a transaction on another day.
QList<AccountDifference> differencesOf(QDate day, const QList<ShipmentRecord> &rows, const AccountListing &account,
                                       const std::function<bool(const QString &id)> &isKnown);

} // namespace parcelory
