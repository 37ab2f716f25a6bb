#pragma once

#include <QString>

namespace parcelory {

/// A weight as people say it: whole pounds and the remaining ounces.
struct PoundsAndOunces {
    double pounds = 0;
    double ounces = 0;
};

PoundsAndOunces inPounds(double ounces);

/// "2 lb 6.4 oz", or "6.4 oz" below a pound.
QString weightText(double ounces);

} // namespace parcelory
