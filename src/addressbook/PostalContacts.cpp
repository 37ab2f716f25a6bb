#include "addressbook/PostalContacts.h"

#include "core/PostalContact.h"
#include "core/Text.h"
#include "core/ports/ContactsSource.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QString nameOf(const PlatformContact &person)
{
    const QString name = joinPresent({person.given, person.family}, u" "_s);
    if (!name.isEmpty())
        return name;
    return person.fullName.isEmpty() ? person.organization : person.fullName;
}

} // namespace

QList<PostalContact> postalContacts(const PlatformContact &person)
{
    const QString name = nameOf(person); // one text for all addresses: a hostile card may have a long name
    QList<PostalContact> contacts;
    for (const PlatformAddress &address : person.addresses) {
        const QStringList lines = address.street.split(u'\n');
        contacts.append({.name = name,
                         .company = person.organization,
                         .street1 = lines.first(),
                         .street2 = lines.sliced(1).join(u' '),
                         .city = address.city,
                         .state = address.state,
                         .zip = address.zip,
                         .country = address.isoCountry.toUpper(),
                         .label = address.label,
                         .phone = person.phones.value(0),
                         .email = person.emails.value(0)});
    }
    return contacts;
}

} // namespace parcelory
