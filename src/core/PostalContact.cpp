#include "core/PostalContact.h"

#include "core/Text.h"

namespace parcelory {
using namespace Qt::StringLiterals;

QString PostalContact::addressSummary() const
{
    const QString place = trimBlanks(city + u' ' + state + u' ' + zip);
    return joinPresent({street1, place}, u", "_s);
}

ShippoAddress PostalContact::asShippoAddress() const
{
    return {name, company, street1, street2, city, state, zip, country, phone, email};
}

} // namespace parcelory
