#pragma once

#include "carrier/ShippoRecords.h"
#include "core/ShippoAddress.h"
#include "records/ShipmentRecord.h"

#include <QDateTime>
#include <QList>

#include <optional>

namespace parcelory {

/// The newest labels of the carrier account, which several desks may share. The label's tag names its recipient; no
/// label names its reference.
struct AccountLabels {
    QList<ShippoTransaction> newest;
    QDateTime askedAt;      ///< a steady time; invalid: never
    std::optional<int> key; ///< AppState::keyChanges at that time

    /// True if the carrier is to be asked again: once a minute spares the account's limit on requests.
    bool isOld(const QDateTime &steadyNow, int keyChanges) const;
    /// The labels of today for this recipient that were not given back, newest first.
    QList<ShipmentRecord> boughtFor(const ShippoAddress &recipient, const QDateTime &now) const;
};

} // namespace parcelory
