#pragma once

// Include it only in .cpp files and PagedList.h, because it includes the JSON library.

#include "core/Json.h"

namespace parcelory {

/// Decodes a carrier's response into a record; the error names the carrier's response as unreadable.
template <class T>
T decodeAnswer(const QByteArray &answer)
{
    try {
        return decodeJson<T>(answer, Keys::snake);
    } catch (const DecodeError &error) {
        throw DecodeError(QStringLiteral("Shippo's response could not be read — ") + error.description() + u'.');
    }
}

} // namespace parcelory
