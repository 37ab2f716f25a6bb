#pragma once

#include "core/Sqlite.h"

#include <QByteArrayView>
#include <QtEndian>

#include <algorithm>
#include <bit>

/// The bytes that the chain of hashes covers of a value: its type and its length, too, so that no two rows give the
/// same bytes. Each function writes to memory that is large enough, and returns the place after what it wrote.
namespace parcelory::LogChain {

/// The bytes of a value beside its text.
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
