#pragma once

#include <QString>

namespace parcelory {

/// True if a recipient's country, as typed, is not the United States. An empty country counts as domestic.
bool isInternationalCountry(const QString &country);

} // namespace parcelory
