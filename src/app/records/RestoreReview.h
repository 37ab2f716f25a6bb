#pragma once

#include "app/AppState.h"
#include "carrier/MasterEntry.h"
#include "records/LogMerge.h"
#include "records/RecordCopies.h"

#include <QDateTime>
#include <QList>

namespace parcelory {

/// What a restore of a copy would bring and cost.
struct RestoreReview {
    enum class Account { notAsked, asking, answered, silent };

    RecordCopy copy;
    QString setAside; ///< the folder that keeps the present records

    LogMerge::Held held; ///< by the copy's log
    int boxes = 0, profiles = 0;

    LogMerge::Added added;                     ///< to the present log since
    LocalAddressStore::Difference addresses;   ///< of the address book since
    int changedBoxes = 0, changedProfiles = 0; ///< also those that were added since
    QString unreadable;                        ///< why the copy cannot be restored; otherwise empty
    Account account = Account::notAsked;
    QList<ShipmentRecord> fromAccount; ///< labels that neither log knows
    bool isAccountCut = false;         ///< older labels of the account were not listed

    /// False if the present log is damaged, so that it may have held more labels.
    bool isLogWhole() const { return added.damage.isEmpty(); }
    qsizetype lost() const { return added.labels.size() + fromAccount.size(); }
};

/// Reads the copy and the present records; waits for the disk.
RestoreReview reviewOf(AppState &app, const RecordCopy &copy, const QDateTime &now);

/// Of the account's labels, those that were bought at one of these offices (ZIP codes) and that neither log knows.
QList<ShipmentRecord> unknownLabels(const QList<MasterEntry> &account, const RestoreReview &review,
                                    const QStringList &offices);

} // namespace parcelory
