#pragma once

#include "records/OpenItems.h"

#include <QString>

namespace parcelory::OpenItemTexts {

/// "Unused for 25 days — refund ends in 5 days"
QString title(const OpenItem &item);
/// The status of a label that was never scanned: "Not scanned — refund ends 11/25/26"; otherwise empty.
QString status(const OpenItem &item);
/// What the label was bought for: "USPS Priority Mail · $9.85"; or where the carrier saw the parcel last.
QString detail(const OpenItem &item);
/// "Memphis TN"
QString place(const ShipmentRecord &label);
/// "25 days"
QString age(const OpenItem &item);
/// The words of the button for the next step.
QString step(OpenStep step);
/// True if money or the parcel is lost soon.
bool isUrgent(OpenReason reason);
/// The row for screen readers.
QString spoken(const OpenItem &item);

} // namespace parcelory::OpenItemTexts
