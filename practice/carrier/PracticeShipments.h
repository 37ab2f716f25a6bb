#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

/// POST shipments/: checks the body, rates it and keeps the shipment.
CarrierAnswer createShipment(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body);

} // namespace parcelory
