#pragma once

#include "addressbook/ImportProgress.h"
#include "core/PostalContact.h"

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <cstdlib>

namespace parcelory::fuzz {

/// Reads the bytes with one of the address readers. For any bytes, the result must be addresses or an error text for
/// the clerk.
template <class Read>
void read(Read read, const std::uint8_t *data, std::size_t size)
{
    ImportProgress progress;
    try {
        const QList<PostalContact> contacts =
            read(QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size)), progress);
        if (contacts.size() > ImportProgress::mostAddresses)
            std::abort();
    } catch (const AppError &error) {
        if (error.description().isEmpty())
            std::abort();
    }
}

} // namespace parcelory::fuzz
