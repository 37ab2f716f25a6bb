#pragma once

#include "records/ShipmentRecord.h"
#include "ui/log/LogModel.h"

namespace parcelory {

// A logged shipment as the list and its details show it.

/// "11/20/26, 2:41 PM"
QString timeText(const ShipmentRecord &record);
/// "$12.35"
QString postageText(const ShipmentRecord &record);
/// A tracking number in groups of four, broken after the fourth group: in a narrow place it is never elided.
QString trackingLines(const QString &tracking);
/// The stored line begins with the recipient's name; the rest is the address.
QString recipientName(const ShipmentRecord &record);
QString recipientAddress(const ShipmentRecord &record);

/// A shipment's badges: its refund state, and TEST for a label that is not real postage.
QList<RowBadge> badgesOf(const ShipmentRecord &record);

} // namespace parcelory
