#pragma once

#include "compose/LabelBlocks.h"

namespace parcelory {

/// Compares the lines of the recipient's address on a label with the address of the parcel: name, house number, unit,
/// city, state, ZIP and, abroad, the country. Items that the parcel does not have are left out, except a unit that only
/// the label has.
QList<LabelFinding> compareRecipient(const LabelBlock &block, const ShippoAddress &to);

} // namespace parcelory
