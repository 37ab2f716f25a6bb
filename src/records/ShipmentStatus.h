#pragma once

#include "records/ShipmentRecord.h"

#include <QDateTime>
#include <QString>

namespace parcelory {

/// The state of a label's refund.
enum class RefundState { none, pending, granted, failed };

RefundState refundState(const QString &status);
/// The same for a row, whose refund may be noted beside its status.
RefundState refundState(const ShipmentRecord &record);

/// The status to store in a row with `status` once the carrier has told the state of its refund.
QString statusAfter(RefundState refund, const QString &status);

/// The badge of a refund in a list, such as "REFUND PENDING"; empty if there is no refund.
QString refundBadge(RefundState refund);

/// A record's status in the clerk's words. An unknown status from an imported log is shown unchanged.
QString friendlyStatus(const QString &status);
/// The status of a row, followed by a refund that is noted beside it.
QString friendlyStatus(const ShipmentRecord &record);

/// The error log's text for a label whose refund the carrier has refused.
QString refundRefusal(const ShipmentRecord &record);

/// A point in time as the log shows it: "11/20/26, 2:41 PM"; "—" for no time.
QString dateTimeText(const QDateTime &time);

} // namespace parcelory
