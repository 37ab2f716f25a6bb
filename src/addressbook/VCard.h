#pragma once

#include "addressbook/ImportProgress.h"
#include "core/PostalContact.h"

#include <QByteArray>
#include <QStringList>

namespace parcelory {

/// What a file of addresses holds.
struct ReadAddresses {
    QList<PostalContact> contacts; ///< from other programs; each has a new id
    QList<PostalContact> exported; ///< from our own export: entries as the address book had them, with their ids
    QStringList skipped;           ///< the names of what could not be read

    qsizetype count() const { return contacts.size() + exported.size(); }
};

/// vCard files of versions 2.1, 3.0 and 4.0, as address books export them.
namespace VCard {

/// The postal addresses of all cards, in file order. A card without an end is skipped. Throws AppError if there are no
/// cards or the last card is cut off, and what `progress` throws.
ReadAddresses read(const QByteArray &file, ImportProgress &progress);

/// A card of version 4.0 for one address. read() returns exactly this contact, with its id, unless another program has
/// changed the card.
QByteArray card(const PostalContact &contact);

} // namespace VCard
} // namespace parcelory
