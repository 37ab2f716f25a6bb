#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct PracticeLedger;

/// GET tracks/<carrier>/<number>. Carrier "shippo" knows SHIPPO_PRE_TRANSIT, SHIPPO_TRANSIT, SHIPPO_DELIVERED,
/// SHIPPO_RETURNED, SHIPPO_FAILURE and SHIPPO_UNKNOWN; other carriers know the labels bought here, which never move.
CarrierAnswer trackParcel(PracticeLedger &ledger, const QString &carrier, const QString &number);

} // namespace parcelory
