#pragma once

#include <QString>

namespace parcelory {

/// True when a recipient's country, as typed, lies abroad. An empty country counts as domestic.
bool isInternationalCountry(const QString &country);

} // namespace parcelory
