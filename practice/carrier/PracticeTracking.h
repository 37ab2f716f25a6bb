#pragma once

#include "core/Json.h"
#include "practice/carrier/PracticeAnswers.h"

#include <QDateTime>

#include <string>

namespace parcelory {

struct CarrierScenario;
struct PracticeLedger;

/// GET tracks/<carrier>/<number>. Carrier "shippo" knows SHIPPO_PRE_TRANSIT, SHIPPO_TRANSIT, SHIPPO_DELIVERED,
/// SHIPPO_RETURNED, SHIPPO_FAILURE and SHIPPO_UNKNOWN; other carriers know the labels bought here, which move as the
/// scenario says.
CarrierAnswer trackParcel(PracticeLedger &ledger, const CarrierScenario &scenario, const QString &carrier,
                          const QString &number);
/// An event on a parcel's way, as the service lists it. `location`: null if it is not told.
Json trackedEvent(const std::string &status, const QDateTime &at, const Json &location);

} // namespace parcelory
