#pragma once

#include "records/OpenItems.h"

#include <QDateTime>
#include <QList>

namespace parcelory {

class PracticeCarrier;
class ShipmentLog;

/// Adds a month of labels to the mailing log, with every kind of open item among them: labels that were never
/// scanned, refunds that are not decided or were rejected, parcels that came back, stand still or went to another ZIP,
/// papers that were not printed, and a label that was not checked.
void addPracticeMonth(ShipmentLog &log, const QDateTime &now);
/// Adds these labels of the mailing log to the practice carrier's account, which then tells where their parcels are and
/// how their refunds ended. The account keeps the labels that it knows as they are.
void addToAccount(PracticeCarrier &carrier, const QList<OpenFacts> &labels);

} // namespace parcelory
