#pragma once

#include "core/ShippoAddress.h"
#include "records/ShipmentRecord.h"

#include <QStringList>

namespace parcelory {

/// The facts that show whether a purchase would be a parcel's second label.
struct SecondLabelFacts {
    ShippoAddress recipient;
    QString reference;
    QString invoiceTracking; ///< the tracking number already on the draft's invoice
    bool lastOutcomeUnknown; ///< a purchase for this recipient is unresolved
    QDateTime now;
    QList<ShipmentRecord> earlier;        ///< labels for this reference and labels of today, all test or all live
    QList<ShipmentRecord> elsewhere = {}; ///< labels of today for this recipient that another desk bought, newest first
    bool isLogUnreadable = false;         ///< the mailing log could not be read, so `earlier` is empty
};

/// True if two recipients have the same name and the same ZIP without its last four digits.
bool isSameRecipient(const ShippoAddress &one, const ShippoAddress &other);

/// True if the label went to this name and ZIP without its last four digits.
bool isLabelFor(const ShippoAddress &recipient, const ShipmentRecord &label);

/// Why the label may exist already, one sentence per reason, the most important first; empty for a parcel's first
/// label. Labels with a granted or pending refund do not count.
QStringList secondLabelReasons(const SecondLabelFacts &facts);

} // namespace parcelory
