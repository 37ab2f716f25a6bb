#pragma once

#include "core/PostalContact.h"

#include <QStringList>

namespace parcelory {

/// One of the places where somebody of an address book gets mail.
struct PlatformAddress {
    QString label;  ///< as shown: "home", "work" or the user's own word
    QString street; ///< one line or more, parted by line feeds
    QString city;
    QString state;
    QString zip;
    QString isoCountry; ///< two letters, of any case
};

/// A person or company as address books keep them: the system's contacts and vCard files.
struct PlatformContact {
    QString given;
    QString family;
    QString fullName; ///< for whoever has neither of the two
    QString organisation;
    QList<PlatformAddress> addresses;
    QStringList phones;
    QStringList emails;
};

/// One contact of our own for every postal address; the first telephone number and e-mail address go with each.
QList<PostalContact> postalContacts(const PlatformContact &person);

} // namespace parcelory
