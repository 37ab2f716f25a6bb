#pragma once

#include "carrier/ShippoRecords.h"
#include "compose/Services.h"

namespace parcelory {

struct OfferedRates {
    QList<ShippoRate> rates; ///< the carrier's own, cheapest first; equal prices keep the order in which they came
    QString leftOut;         ///< says which rates of the carrier are missing and why; empty if no rate is missing
};

/// Leaves out a rate whose price is no plain amount of money, and all but the cheapest rates of an endless list.
OfferedRates offeredRates(Carrier carrier, const QList<ShippoRate> &all);

/// What the clerk reads if there is no rate: below the sentence, the carrier's own reasons as far as they fit.
QString noRatesText(Carrier carrier, const ShippoShipment &shipment);

} // namespace parcelory
