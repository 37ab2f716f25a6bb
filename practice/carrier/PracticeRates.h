#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct CarrierScenario;

/// Fills "rates" and "messages" of an otherwise complete shipment: addresses, one parcel and extras.
///
/// Prices grow with weight, size and distance (the difference of the first three ZIP digits), plus signature and
/// insurance. Equal shipments always get equal prices.
void rateShipment(Json &shipment, const CarrierScenario &scenario);

} // namespace parcelory
