#pragma once

#include "core/AppError.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace parcelory::fuzz {

/// Ends the program, which is a finding, if `holds` is false.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}

/// The first byte selects one of the readers, 'A' the first; the reader gets the other bytes. For any bytes, a reader
/// returns, or throws an error with a text for the clerk.
template <std::size_t count>
void oneOf(void (*const (&readers)[count])(const QByteArray &), const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return;
    try {
        readers[(data[0] + 256u - 'A') % 256 % count](
            QByteArray(reinterpret_cast<const char *>(data) + 1, qsizetype(size) - 1));
    } catch (const AppError &error) {
        require(!error.description().isEmpty());
    }
}

} // namespace parcelory::fuzz
