#pragma once

#include "core/PostalContact.h"
#include "core/ports/ContactsSource.h"

namespace parcelory {

/// One contact of our own for every postal address; the first telephone number and e-mail address go with each.
QList<PostalContact> postalContacts(const PlatformContact &person);

} // namespace parcelory
