#pragma once

#include <QAnyStringView>
#include <QString>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>

namespace parcelory {

/// One row of a table that maps words of a foreign format (a response of the carrier, a column of a database) to the
/// values of an enumeration and back.
template <class Value>
struct Word {
    Value value;
    QStringView text;
};

/// The value of a word; absent if the table does not have the word.
template <class Value, std::size_t count>
std::optional<Value> valueOf(const Word<Value> (&table)[count], QAnyStringView text,
                             Qt::CaseSensitivity sensitivity = Qt::CaseSensitive)
{
    const auto *found = std::ranges::find_if(
        table, [&](const Word<Value> &word) { return QAnyStringView::compare(word.text, text, sensitivity) == 0; });
    return found == std::end(table) ? std::nullopt : std::optional(found->value);
}

/// The word of a value; empty if the table does not have the value.
template <class Value, std::size_t count>
QString textOf(const Word<Value> (&table)[count], Value value)
{
    const auto *found = std::ranges::find(table, value, &Word<Value>::value);
    return found == std::end(table) ? QString() : found->text.toString();
}

} // namespace parcelory
