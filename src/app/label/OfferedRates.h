#pragma once

#include "carrier/ShippoRecords.h"
#include "compose/Services.h"

namespace parcelory {

/// The carrier's own rates, cheapest first; equal prices keep the order in which they came.
QList<ShippoRate> offeredRates(Carrier carrier, const QList<ShippoRate> &all);

/// What the clerk reads if there is no rate: below the sentence, the carrier's own reasons.
QString noRatesText(Carrier carrier, const ShippoShipment &shipment);

} // namespace parcelory
