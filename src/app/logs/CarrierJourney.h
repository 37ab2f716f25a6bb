#pragma once

#include "app/AppState.h"
#include "carrier/ShippoRecords.h"
#include "records/Journeys.h"

namespace parcelory {

/// The API's name of a label's carrier.
QString carrierToken(const ShipmentRecord &record);

/// The journey after the carrier's answer; `former` is what was known before. An answer that tells nothing, as for a
/// number that the carrier has removed, leaves the journey as it was.
Journey journeyOf(const ShippoTrackStatus &answer, const std::optional<Journey> &former, const QDateTime &now);

/// Stores the carrier's answer about a label, unless the log has lost it since; an answer that tells nothing replaces
/// no status. Call on the thread pool; false if it could not be stored.
bool storeJourney(AppState &app, const ShipmentRecord &label, const ShippoTrackStatus &answer, const QDateTime &now);

} // namespace parcelory
