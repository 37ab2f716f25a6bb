#pragma once

#include "core/ShippoAddress.h"
#include "records/ShipmentRecord.h"

#include <QStringList>

namespace parcelory {

/// What could make a purchase the second one of a parcel.
struct SecondLabelFacts {
    ShippoAddress recipient;
    QString reference;
    QString invoiceTracking; ///< what the draft's invoice already has
    bool lastOutcomeUnknown; ///< a label for this recipient may have been bought
    QDateTime now;
    QList<ShipmentRecord> earlier; ///< labels of the same kind of key: of this reference, and of today
};

/// The person and place of two labels are the same: name, and ZIP without its last four digits.
bool isSameRecipient(const ShippoAddress &one, const ShippoAddress &other);

/// Why the label may exist already, in sentences, the weightiest first; empty for a parcel's first label. Labels that
/// were given back, or are about to be, do not count.
QStringList secondLabelReasons(const SecondLabelFacts &facts);

} // namespace parcelory
