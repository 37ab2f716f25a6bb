#include "compose/Weight.h"

#include "core/Text.h"

#include <cmath>

namespace parcelory {
using namespace Qt::StringLiterals;

QString weightText(double ounces)
{
    const double shown = std::round(ounces * 10) / 10; // rounded first, so that 15.96 oz reads 1 lb 0.0 oz
    const double pounds = std::floor(shown / 16);
    const QString rest = fixed(shown - 16 * pounds, 1) + u" oz"_s;
    return pounds > 0 ? fixed(pounds, 0) + u" lb "_s + rest : rest;
}

} // namespace parcelory
