#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

/// Errors in the body of a rating request, nested like its fields; empty if it can be rated.
Json shipmentErrors(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body);

} // namespace parcelory
