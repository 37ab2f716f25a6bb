#pragma once

#include "core/PostalContact.h"
#include "core/ports/ContactsSource.h"

namespace parcelory {

/// One PostalContact for every postal address, each with the first telephone number and e-mail address.
/// A company's contact has the company as its name.
QList<PostalContact> postalContacts(const PlatformContact &person);

} // namespace parcelory
