#pragma once

#include "core/ShippoAddress.h"

#include <optional>

namespace parcelory {

/// The address in a text of several lines, as people copy it from a letter or an e-mail: name, company, street and
/// unit, place, country, in this order; telephone and e-mail on lines of their own anywhere. Nothing if no line reads
/// as a place with its postal code: a text that is no address must not be spread over the fields.
std::optional<ShippoAddress> addressFromBlock(const QString &text);

} // namespace parcelory
