#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

/// POST manifests/: a SCAN form for the USPS labels to domestic addresses that leave from one ZIP code on one day and
/// are on no form yet. The service makes no forms with a test key; the practice carrier does.
CarrierAnswer createManifest(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body);

} // namespace parcelory
