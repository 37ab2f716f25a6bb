#pragma once

#include "addressbook/ImportProgress.h"
#include "core/PostalContact.h"

#include <QByteArray>

namespace parcelory {

/// The address list of the Endicia postage software (importedAddresses.plist).
namespace EndiciaList {

/// The addresses in file order. Throws AppError if the bytes are not such a list, and what `progress` throws.
QList<PostalContact> contacts(const QByteArray &file, ImportProgress &progress);

} // namespace EndiciaList
} // namespace parcelory
