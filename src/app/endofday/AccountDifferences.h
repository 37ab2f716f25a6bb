#pragma once

#include "carrier/MasterEntry.h"
#include "records/ShipmentRecord.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QSet>

#include <optional>

namespace parcelory {

enum class DifferenceKind { boughtElsewhere, notInAccount, otherAmount, refundedThere, refundedHere };

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

/// What the mailing log knows about a day.
struct DeskListing {
    QList<ShipmentRecord> rows;             ///< the day's labels bought with the active key's kind of key
    QSet<QString> known;                    ///< transactions of the account that the log has on any day
    QHash<QString, QDateTime> refundsAsked; ///< by transaction; earlier versions did not note it
};

/// The labels of `day` that differ, newest first, each once.
QList<AccountDifference> differencesOf(QDate day, const DeskListing &desk, const AccountListing &account);

} // namespace parcelory
