#pragma once

#include "carrier/ShippoRecords.h"
#include "core/ShippoAddress.h"
#include "core/ports/Prompts.h"

#include <optional>

/// The questions that protect the address: asked when the carrier's version lacks a number that the clerk typed.
namespace parcelory::AddressReview {

/// Choice 0 keeps the typed address, choice 1 uses the USPS version. Nothing if no number is lost.
std::optional<Question> standardized(const ShippoAddress &typed, const ShippoValidatedAddress &answer);
/// Choice 0 goes back to the address, choice 1 continues. Nothing if no number is lost.
std::optional<Question> printed(const ShippoAddress &typed, const ShippoShipmentListed::Address &printed);
/// The typed address with the carrier's street and place.
ShippoAddress adopted(const ShippoAddress &typed, const ShippoValidatedAddress &standardized);

} // namespace parcelory::AddressReview
