#pragma once

#include "addressbook/ImportProgress.h"
#include "core/PostalContact.h"

#include <QByteArray>

namespace parcelory {

/// vCard files of versions 2.1, 3.0 and 4.0, as address books export them.
namespace VCard {

/// The postal addresses of all cards, in file order. Throws AppError if there are no cards or the last card is cut off,
/// and what `progress` throws.
QList<PostalContact> contacts(const QByteArray &file, ImportProgress &progress);

} // namespace VCard
} // namespace parcelory
