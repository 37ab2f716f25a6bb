#pragma once

#include "records/ShipmentRecord.h"

#include <QDateTime>
#include <QString>

namespace parcelory {

/// The state of a label's refund.
enum class RefundState { none, pending, granted, failed };

RefundState refundState(const QString &status);

/// The status to store in a row with `status` once the carrier has told the state of its refund.
QString statusAfter(RefundState refund, const QString &status);

/// The badge of a refund in a list, such as "REFUND PENDING"; empty if there is no refund.
QString refundBadge(const QString &status);

/// A record's status in the clerk's words. An unknown status from an imported log is shown unchanged.
QString friendlyStatus(const QString &status);

/// The error log's text for a label whose refund the carrier has refused.
QString refundRefusal(const ShipmentRecord &record);

/// A point in time as the log shows it: "11/20/26, 2:41 PM".
QString dateTimeText(const QDateTime &time);

} // namespace parcelory
