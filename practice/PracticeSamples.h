#pragma once

#include "core/ShippoAddress.h"

namespace parcelory {

class AppState;
class LocalAddressStore;
class ShipmentLog;

// People and parcels of the practice desk, for pictures and for the first run.

ShippoAddress practiceRecipient();
ShippoAddress practiceBoxHolder(); ///< a street that loses a number when the carrier standardizes it
ShippoAddress practiceRecipientAbroad();

/// Fills the mailing log with three days of a small desk.
void addPracticeShipments(ShipmentLog &log);
/// Fills an empty address book with a small desk's recipients.
void addPracticeAddresses(LocalAddressStore &book);
/// Adds two return addresses and sets two boxes.
void addPracticeProfiles(AppState &app);

} // namespace parcelory
