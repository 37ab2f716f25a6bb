#pragma once

#include "core/Sqlite.h"

#include <QByteArrayView>
#include <QtEndian>

#include <algorithm>
#include <bit>

/// A value as the chain of hashes covers it: its type, and the length and bytes of a text or the number, so that no two
/// rows give the same bytes. The caller provides enough memory; each function returns the place after its last byte.
namespace parcelory::LogChain {

/// The bytes of a value beside its text, at most: a null has half of them.
constexpr qsizetype valueHead = 2 * sizeof(qint64);

inline char *putNumber(char *at, qint64 number)
{
    qToLittleEndian(number, at);
    return at + sizeof number;
}

inline char *putBytes(char *at, QByteArrayView bytes)
{
    return std::copy(bytes.begin(), bytes.end(), putNumber(at, bytes.size()));
}

inline char *putValue(char *at, Statement::Kind kind, double real, QByteArrayView bytes)
{
    at = putNumber(at, qint64(kind));
    if (kind == Statement::Kind::null)
        return at;
    return kind == Statement::Kind::number ? putNumber(at, std::bit_cast<qint64>(real)) : putBytes(at, bytes);
}

} // namespace parcelory::LogChain
