#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

/// POST transactions/: buys a rate. A refused purchase is created, too, with the status ERROR.
CarrierAnswer createTransaction(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body);

/// POST refunds/: requests a refund for a label; the transaction's status shows the outcome later.
CarrierAnswer createRefund(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body);

} // namespace parcelory
