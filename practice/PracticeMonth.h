#pragma once

#include <QDateTime>

namespace parcelory {

class ShipmentLog;

/// Adds a month of labels to the mailing log, with every kind of open item among them: labels that were never
/// scanned, refunds that are not decided or were rejected, parcels that came back, stand still or went to another ZIP,
/// papers that were not printed, and a label that was not checked.
void addPracticeMonth(ShipmentLog &log, const QDateTime &now);

} // namespace parcelory
