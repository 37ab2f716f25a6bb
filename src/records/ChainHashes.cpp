#include "records/ChainHashes.h"

#include "records/SealedValue.h"

#include <algorithm>
#include <cstddef>

namespace parcelory::LogChain {
using ShipmentLogRows::NewRow;

namespace {

/// How many of the sealed columns belong to each part of a row but the status, in the order of Part.
constexpr int columnsOfPart[] = {1, 3, 3, 4, 2, 4, 1, 5};

void addValue(QByteArray &text, const Statement &row, int column)
{
    const Statement::Kind kind = row.kind(column);
    const bool isNumber = kind == Statement::Kind::number;
    const double real = isNumber ? row.real(column) : 0;
    const QByteArrayView bytes = isNumber ? QByteArrayView() : row.bytes(column);
    const qsizetype start = text.size();
    text.resize(start + valueHead + bytes.size());
    text.truncate(putValue(text.data() + start, kind, real, bytes) - text.constData());
}

QByteArray hashOf(const QByteArray &text)
{
    return QCryptographicHash::hash(text, QCryptographicHash::Blake2b_256);
}

void keep(RowHashes &hashes, int part, QByteArrayView hash)
{
    std::ranges::copy(hash.first(keptBytes), hashes.kept.begin() + part * keptBytes);
}

} // namespace

RowHashes hashesOf(const Statement &row)
{
    RowHashes hashes;
    const QByteArray parts = partsOf(row);
    std::ranges::copy(parts, hashes.parts.begin());
    for (int part = 0; part < partCount; ++part)
        keep(hashes, part, hashOfPart(parts, part));
    keep(hashes, partCount, keptStatusOf(row));
    return hashes;
}

QByteArrayView RowHasher::hashOf(int part, QByteArrayView text)
{
    Hashed &last = m_last[std::size_t(part)];
    if (last.hash.isEmpty() || text != last.text) {
        last.text.truncate(0); // keeps its memory
        last.text += text;
        m_hash.reset();
        m_hash.addData(text);
        last.hash.truncate(0);
        last.hash += m_hash.resultView();
    }
    return last.hash;
}

RowHashes RowHasher::hashesOf(const NewRow &row)
{
    RowHashes hashes;
    int column = 0;
    for (int part = 0; part < partCount; ++part) {
        const QByteArrayView hash = hashOf(part, row.sealed(column, columnsOfPart[part]));
        column += columnsOfPart[part];
        std::ranges::copy(hash, hashes.parts.begin() + part * hashBytes);
        keep(hashes, part, hash);
    }
    // No refund is noted yet, which is a null.
    const QByteArrayView status = row.sealed(NewRow::statusColumn, 1);
    QByteArray text(status.size() + valueHead, Qt::Uninitialized);
    std::ranges::copy(status, text.begin());
    text.truncate(putValue(text.data() + status.size(), Statement::Kind::null, 0, {}) - text.constData());
    keep(hashes, partCount, hashOf(partCount, text));
    return hashes;
}

QByteArray partsOf(const Statement &row)
{
    constexpr qsizetype mostTexts = 512; // of most parts: a text that grows byte by byte takes longer than its hash
    QCryptographicHash hash(QCryptographicHash::Blake2b_256);
    QByteArray hashes, text;
    hashes.reserve(partCount * hashBytes);
    text.reserve(mostTexts);
    int column = firstPartColumn;
    for (const int count : columnsOfPart) {
        text.truncate(0);
        for (const int end = column + count; column < end; ++column)
            addValue(text, row, column);
        hash.reset();
        hash.addData(text);
        hashes += hash.resultView();
    }
    return hashes;
}

QByteArray hashOf(const Statement &row, int column)
{
    QByteArray text;
    addValue(text, row, column);
    return hashOf(text);
}

QByteArrayView hashOfPart(QByteArrayView parts, int part)
{
    return parts.sliced(part * hashBytes, hashBytes);
}

QByteArray keptStatusOf(const Statement &row)
{
    QByteArray text;
    addValue(text, row, statusColumn);
    addValue(text, row, refundColumn);
    return hashOf(text).first(keptBytes);
}

QByteArray chained(QByteArrayView before, qint64 shipment, QByteArrayView kind, QByteArrayView kept,
                   QByteArrayView parts)
{
    constexpr qsizetype lengths = 3 + partCount; // numbers beside the bytes
    QByteArray text(before.size() + kind.size() + kept.size() + parts.size() + lengths * qsizetype(sizeof(qint64)),
                    Qt::Uninitialized);
    char *at = std::ranges::copy(before, text.data()).out;
    at = putBytes(putBytes(putNumber(at, shipment), kind), kept);
    for (int part = 0; part < parts.size() / hashBytes; ++part)
        at = putBytes(at, hashOfPart(parts, part));
    text.truncate(at - text.constData());
    return hashOf(text);
}

} // namespace parcelory::LogChain
