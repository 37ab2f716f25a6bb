#pragma once

#include "core/ShippoAddress.h"

namespace parcelory {

class AppState;
class LocalAddressStore;
class ShipmentLog;

// People and parcels of the practice desk, for pictures and first steps.

ShippoAddress practiceRecipient();
ShippoAddress practiceBoxHolder(); ///< whose street loses a number when the carrier standardises it
ShippoAddress practiceRecipientAbroad();

/// Fills the mailing log with two weeks of a small desk.
void addPracticeShipments(ShipmentLog &log);
/// Writes down whom a small desk ships to, when its address book is empty.
void addPracticeAddresses(LocalAddressStore &book);
/// Two more return addresses and three boxes.
void addPracticeProfiles(AppState &app);

} // namespace parcelory
