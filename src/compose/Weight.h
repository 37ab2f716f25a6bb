#pragma once

#include <QString>

namespace parcelory {

/// "2 lb 6.4 oz", or "6.4 oz" below a pound.
QString weightText(double ounces);

} // namespace parcelory
