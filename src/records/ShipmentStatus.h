#pragma once

#include "records/ShipmentRecord.h"

#include <QDateTime>
#include <QString>

namespace parcelory {

/// How far the refund of a label is.
enum class RefundState { none, pending, granted, failed };

RefundState refundState(const QString &status);

/// The word for a refund in a list ("REFUND PENDING"); empty when there is none.
QString refundBadge(const QString &status);

/// A record's status in the clerk's words. A word that an imported log brought along is shown as it is.
QString friendlyStatus(const QString &status);

/// What the error log says of a label whose refund the carrier has refused.
QString refundRefusal(const ShipmentRecord &record);

/// A point in time as the log shows it: "11/20/26, 2:41 PM".
QString dateTimeText(const QDateTime &time);

} // namespace parcelory
