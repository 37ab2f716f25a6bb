#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct CarrierScenario;

/// Fills "rates" and "messages" of a shipment that stands complete otherwise: addresses, one parcel and extras.
///
/// Prices grow with weight, size and distance (the difference of the first three ZIP digits) and are otherwise always
/// the same.
void rateShipment(Json &shipment, const CarrierScenario &scenario);

} // namespace parcelory
