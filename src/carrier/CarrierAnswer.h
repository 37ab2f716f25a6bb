#pragma once

// Include it only in .cpp files and PagedList.h, because it includes the JSON library.

#include "core/Json.h"
#include "core/Task.h"

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

/// The same on the thread pool: a response may have megabytes.
template <class T>
Task<T> readAnswer(QByteArray answer)
{
    const T record = co_await onPool([answer] { return decodeAnswer<T>(answer); });
    co_return record;
}

/// The records of a list's page that can be read; a damaged record is left out. Throws DecodeError if the page is no
/// list.
template <class T>
QList<T> readableRecords(const QByteArray &page)
{
    const Json list = parseJsonIfPossible(page).value_or(Json());
    if (!list.is_object() || !list.contains("results") || !list["results"].is_array())
        throw DecodeError(QStringLiteral("Shippo's response could not be read — it is no list."));
    QList<T> records;
    for (const Json &record : list["results"]) {
        try {
            records += decodeAnswer<T>(dumpJson(record));
        } catch (const DecodeError &) { // another desk's record, in a form that this version does not know
        }
    }
    return records;
}

} // namespace parcelory
