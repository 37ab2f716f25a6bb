#pragma once

#include "core/AppError.h"

#include <QString>

#include <optional>
#include <utility>

namespace parcelory {

/// The result of reading the mailing log: a value, or a sentence for the clerk that says why the log could not be read.
/// A label that is not in the log is a value, too: an empty list or an empty optional.
template <class T>
class [[nodiscard]] LogRead {
public:
    LogRead(T value) : m_value(std::move(value)) {}
    static LogRead failed(QString sentence)
    {
        LogRead read{T{}};
        read.m_value.reset();
        read.m_failure = std::move(sentence);
        return read;
    }

    bool isRead() const { return m_value.has_value(); }
    /// Why the log could not be read; empty if it was read.
    const QString &failure() const { return m_failure; }
    const T &operator*() const & { return *m_value; }
    T operator*() && { return std::move(*m_value); } // so that a loop over a temporary keeps its list
    const T *operator->() const { return &*m_value; }
    T valueOr(T other) const { return m_value.value_or(std::move(other)); }
    /// Throws AppError if the log could not be read.
    const T &orThrow() const &
    {
        if (!m_value)
            throw AppError(m_failure);
        return *m_value;
    }
    T orThrow() && { return std::as_const(*this).orThrow(); }

private:
    std::optional<T> m_value;
    QString m_failure;
};

} // namespace parcelory
