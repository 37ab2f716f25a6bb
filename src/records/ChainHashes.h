#pragma once

#include "core/Sqlite.h"
#include "records/ShipmentLogRows.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <array>

/// The hashes of LogChain: what they cover, and how many of their bytes an entry keeps.
namespace parcelory::LogChain {

/// The parts of a row that have a hash of their own, so that a finding names what was changed.
enum class Part { time, service, postage, recipient, tracking, transaction, label, details, status };
constexpr int partCount = int(Part::status);

/// The columns of a row that was read to be hashed; the columns of the parts follow.
constexpr int statusColumn = 1, refundColumn = 2, firstPartColumn = 3;

/// An entry keeps so much of each part's hash, to name the part that was changed. The chained hash covers all of it.
constexpr qsizetype keptBytes = 8;
constexpr qsizetype hashBytes = 32; ///< of a whole hash

/// What an entry says of a row. Computing it is most of the work of sealing, and any thread may do it.
struct RowHashes {
    std::array<char, partCount * hashBytes> parts;      ///< a hash for each part but the status, one after the other
    std::array<char, (partCount + 1) * keptBytes> kept; ///< the first bytes of these hashes and of the status's
};

RowHashes hashesOf(const Statement &row);

/// Hashes new rows, one after the other. Many have the same service or description as the row before, and hashing is
/// most of the work.
class RowHasher {
public:
    RowHashes hashesOf(const ShipmentLogRows::NewRow &row);

private:
    struct Hashed {
        QByteArray text, hash;
    };
    QByteArrayView hashOf(int part, QByteArrayView text);

    QCryptographicHash m_hash{QCryptographicHash::Blake2b_256};
    std::array<Hashed, partCount + 1> m_last; ///< of the row before, in the order of Part
};

/// The hashes of the parts, one after the other.
QByteArray partsOf(const Statement &row);
QByteArrayView hashOfPart(QByteArrayView parts, int part);
/// What an entry keeps of the status and the noted refund.
QByteArray keptStatusOf(const Statement &row);
/// Of one value.
QByteArray hashOf(const Statement &row, int column);
/// The hash of an entry. `parts` are the whole hashes of the parts that `kept` abbreviates, without the status.
QByteArray chained(QByteArrayView before, qint64 shipment, QByteArrayView kind, QByteArrayView kept,
                   QByteArrayView parts);

} // namespace parcelory::LogChain
