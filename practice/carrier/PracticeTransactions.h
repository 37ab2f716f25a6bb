#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

/// POST transactions/: buys a rate. A purchase that the carrier refuses is created all the same, as an ERROR.
CarrierAnswer createTransaction(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body);

/// POST refunds/: asks for a label's postage back, which in time shows in the transaction's status.
CarrierAnswer createRefund(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body);

} // namespace parcelory
