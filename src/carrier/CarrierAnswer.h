#pragma once

// Included by .cpp files and by PagedList.h, because it brings the JSON library along.

#include "core/Json.h"

namespace parcelory {

/// An answer of the carrier as a record; a failure says that it was the carrier's answer that could not be read.
template <class T>
T decodeAnswer(const QByteArray &answer)
{
    try {
        return decodeJson<T>(answer, Keys::snake);
    } catch (const DecodeError &error) {
        throw DecodeError(QStringLiteral("Shippo's answer could not be read — ") + error.description() + u'.');
    }
}

} // namespace parcelory
