#pragma once

#include "core/Sqlite.h"
#include "records/ChainHashes.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

/// A chain of hashes over the mailing log, in a table beside the shipments. Each row is sealed when it is stored: its
/// entry holds a hash of what was bought, chained to the entry before. Each later status is an entry of its own. A row
/// that is changed, removed or added without the program no longer fits its entry.
///
/// The chain has no secret: a person who can run programs on the computer can write a new chain. A head() that is kept
/// elsewhere, as with a copy of the log, shows that, too.
namespace parcelory::LogChain {

struct Head {
    qint64 position = 0; ///< of the last entry; 0 if the chain is empty
    QByteArray hash;
    QByteArray log = {}; ///< idOf() the log of this chain; empty if it is not known

    bool operator==(const Head &) const = default;
};

enum class Problem {
    changed,  ///< `parts` differ from what was stored
    removed,  ///< the row is gone
    added,    ///< the row was not stored by the program
    chain,    ///< the entry itself, or the order of the entries, was changed
    unsealed, ///< the whole chain is gone
    otherLog, ///< known heads are of a log that began with another row
};

struct Finding {
    Problem problem = Problem::changed;
    qint64 shipment = 0; ///< 0 for entries that are missing at the end of the chain
    QList<Part> parts;
    QDateTime createdAt; ///< as the row says now; invalid if it is gone
    QString recipient;
    QString tracking;

    bool operator==(const Finding &) const = default;
};

/// What a walk along the whole chain found.
struct Report {
    bool isCanceled = false;
    qint64 labels = 0;
    QList<Finding> findings;

    bool operator==(const Report &) const = default;
};

/// Writes entries. Lives within one transaction, and is made before its first row is stored.
class Sealer {
public:
    explicit Sealer(Database &db);

    /// Seals a row that was just stored. False if a statement failed.
    [[nodiscard]] bool seal(qint64 shipment);
    /// Seals the new status of a row; a row that is gone has no status. False if a statement failed.
    [[nodiscard]] bool sealStatus(qint64 shipment);
    /// Seals the bytes of a label that were downloaded after the purchase; a row without such bytes needs no entry.
    [[nodiscard]] bool sealFetched(qint64 shipment);
    /// Marks the chain as complete: from now on, a row without an entry is a finding.
    [[nodiscard]] bool complete();

private:
    struct Table {
        bool isThere;
        bool isNew;
    };
    static Table tableIn(Database &db);
    bool append(qint64 shipment, QByteArrayView kind, QByteArrayView kept, QByteArrayView parts = {});

    const Table m_table;
    Statement m_row;
    Statement m_latest;
    Statement m_fetched;
    Statement m_entry;
    std::optional<Head> m_last;
};

/// Seals the rows of a log that is older than its chain, in the caller's transaction: up to `limit` rows whose id is
/// larger than `after`. Returns the last id, 0 if the chain is complete now; nothing if a statement failed.
std::optional<qint64> sealOlder(Database &db, qint64 after, int limit);
/// True once sealOlder() has no work left: from then on, a row without an entry is a finding.
bool isComplete(const Database &db);

/// True if the chain passed all these heads, which were kept elsewhere; nothing if it could not be read.
std::optional<bool> hasPassed(const Database &db, const QList<Head> &known);
/// The hash of the first row's entry, which no other log has; empty if the chain is empty or could not be read.
QByteArray idOf(const Database &db);
/// Nothing if it could not be read. An empty chain has an empty head.
std::optional<Head> head(const Database &db);

/// Walks along the chain. Each call of next() reads one portion; between two calls, others can write.
class Walk {
public:
    /// A damaged log may have no row that fits; longer lists have no use.
    static constexpr qsizetype mostFindings = 1000;

    /// `known` are heads that were kept elsewhere.
    explicit Walk(const QList<Head> &known = {});

    /// Checks up to `limit` entries, in a snapshot of the caller. False at the end, and if a statement failed.
    bool next(const Database &db, int limit);

    bool isFailed() const { return m_isFailed; }
    qint64 entries() const { return m_entries; }
    qint64 labels() const { return m_labels; }
    const QList<Finding> &findings() const { return m_findings; }

private:
    bool check(const Statement &entry, Statement &row, Statement &latest, Statement &fetched);
    bool end(const Database &db);
    void add(Finding finding);
    void takeHeadsOf(const QByteArray &log);

    QHash<qint64, QByteArray> m_known; ///< hashes by position
    QList<Head> m_named;               ///< known heads of a named log, until the id of this one is read
    Head m_last;
    qint64 m_entries = 0;
    qint64 m_labels = 0;
    QList<Finding> m_findings;
    bool m_isFailed = false;
};

} // namespace parcelory::LogChain
