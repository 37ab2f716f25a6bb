#include "compose/Weight.h"

#include "core/Text.h"

#include <cmath>

namespace parcelory {
using namespace Qt::StringLiterals;

QString weightText(double ounces)
{
    const double pounds = std::floor(ounces / 16);
    const QString rest = fixed(ounces - 16 * pounds, 1) + u" oz"_s;
    return pounds > 0 ? fixed(pounds, 0) + u" lb "_s + rest : rest;
}

} // namespace parcelory
