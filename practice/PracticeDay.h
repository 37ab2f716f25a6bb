#pragma once

#include "core/ShippoAddress.h"
#include "practice/carrier/PracticeHistory.h"

namespace parcelory {

class AppState;
class PracticeCarrier;
class Purchases;

/// Adds a day to the practice desk that leaves something to do on every card of the End of Day window: labels on a SCAN
/// form and on none, a refund, a FedEx parcel, a label that perhaps did not come out, a purchase of unknown outcome,
/// and labels that the carrier's account lists differently.
void addPracticeDay(AppState &app, Purchases &purchases, PracticeCarrier &carrier);

/// Another desk on the account buys a label for this recipient now; for a sample recipient if the name is empty.
PracticeSold addOtherDesksLabel(const ShippoAddress &recipient, PracticeCarrier &carrier);

} // namespace parcelory
