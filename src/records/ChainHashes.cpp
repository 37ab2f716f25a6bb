#include "records/ChainHashes.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <bit>

namespace parcelory::LogChain {
using ShipmentLogRows::NewRow;

namespace {

/// How many of the sealed columns belong to each part of a row but the status, in the order of Part.
constexpr int columnsOfPart[] = {1, 3, 3, 4, 2, 4, 1, 5};

void addNumber(QByteArray &text, qint64 number)
{
    const qint64 bytes = qToLittleEndian(number);
    text.append(reinterpret_cast<const char *>(&bytes), sizeof bytes);
}

void addBytes(QByteArray &text, QByteArrayView bytes)
{
    addNumber(text, bytes.size());
    text.append(bytes);
}

/// Adds a value with its type and length, so that no two rows give the same bytes. `Row`: a Statement or a NewRow.
template <class Row>
void addValue(QByteArray &text, const Row &row, int column)
{
    const Statement::Kind kind = row.kind(column);
    addNumber(text, qint64(kind));
    if (kind == Statement::Kind::number)
        addNumber(text, std::bit_cast<qint64>(row.real(column)));
    else if (kind != Statement::Kind::null)
        addBytes(text, row.bytes(column));
}

QByteArray hashOf(const QByteArray &text)
{
    return QCryptographicHash::hash(text, QCryptographicHash::Blake2b_256);
}

/// Enough for the texts of an entry, and of most parts of a row: a text that grows byte by byte takes longer than its
/// hash.
QByteArray emptyText()
{
    QByteArray text;
    text.reserve(512);
    return text;
}

/// One hash after the other.
template <class Row>
QByteArray partsFrom(const Row &row, int column)
{
    QCryptographicHash hash(QCryptographicHash::Blake2b_256);
    QByteArray hashes, text = emptyText();
    hashes.reserve(partCount * hashBytes);
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

QByteArray keptStatusOf(const NewRow &row)
{
    QByteArray text;
    addValue(text, row, NewRow::statusColumn);
    addNumber(text, qint64(Statement::Kind::null)); // no refund is noted yet
    return hashOf(text).first(keptBytes);
}

template <class Row>
RowHashes hashesFrom(const Row &row, int firstColumn, const QByteArray &keptStatus)
{
    RowHashes hashes{.parts = partsFrom(row, firstColumn), .kept = {}};
    hashes.kept.reserve((partCount + 1) * keptBytes);
    for (int part = 0; part < partCount; ++part)
        hashes.kept += hashOfPart(hashes.parts, part).first(keptBytes);
    hashes.kept += keptStatus;
    return hashes;
}

} // namespace

RowHashes hashesOf(const NewRow &row)
{
    return hashesFrom(row, 0, keptStatusOf(row));
}

RowHashes hashesOf(const Statement &row)
{
    return hashesFrom(row, firstPartColumn, keptStatusOf(row));
}

QByteArray partsOf(const Statement &row)
{
    return partsFrom(row, firstPartColumn);
}

QByteArray hashOf(const Statement &row, int column)
{
    QByteArray text;
    addValue(text, row, column);
    return hashOf(text);
}

QByteArrayView hashOfPart(const QByteArray &parts, int part)
{
    return QByteArrayView(parts).sliced(part * hashBytes, hashBytes);
}

QByteArray keptStatusOf(const Statement &row)
{
    QByteArray text;
    addValue(text, row, statusColumn);
    addValue(text, row, refundColumn);
    return hashOf(text).first(keptBytes);
}

QByteArray chained(const QByteArray &before, qint64 shipment, const QByteArray &kind, const QByteArray &kept,
                   const QByteArray &parts)
{
    QByteArray text = emptyText();
    text += before;
    addNumber(text, shipment);
    addBytes(text, kind);
    addBytes(text, kept);
    for (int part = 0; part < parts.size() / hashBytes; ++part)
        addBytes(text, hashOfPart(parts, part));
    return hashOf(text);
}

} // namespace parcelory::LogChain
