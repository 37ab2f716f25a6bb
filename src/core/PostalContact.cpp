#include "core/PostalContact.h"

#include "core/ShippoAddress.h"
#include "core/Text.h"

namespace parcelory {
using namespace Qt::StringLiterals;

QString PostalContact::addressSummary() const
{
    const QString place = trimBlanks(city + u' ' + state + u' ' + zip);
    return joinPresent({street1, place}, u", "_s);
}

PostalContact PostalContact::of(const ShippoAddress &who)
{
    return {.name = who.name,
            .company = who.company,
            .street1 = who.street1,
            .street2 = who.street2,
            .city = who.city,
            .state = who.state,
            .zip = who.zip,
            .country = who.country,
            .phone = who.phone,
            .email = who.email};
}

ShippoAddress PostalContact::asShippoAddress() const
{
    return {name, company, street1, street2, city, state, zip, country, phone, email};
}

} // namespace parcelory
