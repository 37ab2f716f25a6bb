#include "compose/Destination.h"

namespace parcelory {
using namespace Qt::StringLiterals;

bool isInternationalCountry(const QString &country)
{
    const QString upper = country.trimmed().toUpper();
    return !upper.isEmpty() && upper != u"US"_s && upper != u"USA"_s && upper != u"UNITED STATES"_s;
}

} // namespace parcelory
