#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

/// Complaints about the body of a rating request, nested as its fields are; empty when it can be rated.
Json shipmentErrors(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body);

} // namespace parcelory
