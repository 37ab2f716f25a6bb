#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct CarrierScenario;
struct PracticeLedger;

/// GET tracks/<carrier>/<number>. Carrier "shippo" knows SHIPPO_PRE_TRANSIT, SHIPPO_TRANSIT, SHIPPO_DELIVERED,
/// SHIPPO_RETURNED, SHIPPO_FAILURE and SHIPPO_UNKNOWN; other carriers know the labels bought here, which move as the
/// scenario says.
CarrierAnswer trackParcel(PracticeLedger &ledger, const CarrierScenario &scenario, const QString &carrier,
                          const QString &number);

} // namespace parcelory
