#include "compose/Weight.h"

#include "core/Text.h"

#include <cmath>

namespace parcelory {
using namespace Qt::StringLiterals;

PoundsAndOunces inPounds(double ounces)
{
    const double pounds = std::trunc(ounces * 0.0625);
    return {pounds, ounces - 16 * pounds};
}

QString weightText(double ounces)
{
    const PoundsAndOunces weight = inPounds(ounces);
    if (weight.pounds > 0)
        return fixed(weight.pounds, 0) + u" lb "_s + fixed(weight.ounces, 1) + u" oz"_s;
    return fixed(ounces, 1) + u" oz"_s;
}

} // namespace parcelory
