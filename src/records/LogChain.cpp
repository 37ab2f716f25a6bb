#include "records/LogChain.h"

#include "records/LogChainTable.h"
#include "records/ShipmentLogRows.h"

#include <algorithm>
#include <utility>

namespace parcelory::LogChain {
using namespace Qt::StringLiterals;

namespace {

constexpr auto schema = "CREATE TABLE IF NOT EXISTS log_chain (\n"
                        "  position INTEGER PRIMARY KEY AUTOINCREMENT,\n"
                        "  shipment_id INTEGER NOT NULL,\n"
                        "  kind TEXT NOT NULL,\n"
                        "  parts BLOB NOT NULL,\n"
                        "  hash BLOB NOT NULL\n"
                        ");\n"
                        "CREATE INDEX IF NOT EXISTS idx_log_chain_shipment ON log_chain(shipment_id);";

const QByteArray statusKind = "status";
const QByteArray fetchedKind = "fetched"; ///< the hash of bytes that were downloaded after the purchase, and the status
const QByteArray completeKind = "complete"; ///< all rows of an older log have an entry; belongs to no shipment

/// The condition of a row without an entry.
const QByteArray unsealed = "NOT EXISTS (SELECT 1 FROM log_chain WHERE shipment_id = shipments.id AND kind = 'label')";

/// The latest entry of a shipment ends with its status.
constexpr auto latestSql = "SELECT parts FROM log_chain WHERE shipment_id = ? ORDER BY position DESC LIMIT 1";

QByteArray rowSql(const Database &db)
{
    const QByteArray refund = ShipmentLogRows::hasTable(db, "label_refunds")
                                  ? "(SELECT word FROM label_refunds WHERE shipment_id = shipments.id)"
                                  : "NULL";
    return "SELECT id, status, " + refund + ", " + ShipmentLogRows::sealedColumns + " FROM shipments WHERE id = ?";
}

/// The downloaded bytes of a shipment, and the position of their latest entry.
QByteArray fetchedSql(const Database &db)
{
    const QByteArray label = ShipmentLogRows::hasTable(db, "fetched_labels")
                                 ? "(SELECT label FROM fetched_labels WHERE shipment_id = ?1)"
                                 : "NULL";
    return "SELECT " + label + ", (SELECT max(position) FROM log_chain WHERE shipment_id = ?1 AND kind = '" +
           fetchedKind + "')";
}

/// Moves to a shipment's row; false if it is gone or a statement failed.
bool moveTo(Statement &row, qint64 shipment)
{
    if (!row.isPrepared())
        return false;
    row.reset();
    row.bind(1, shipment);
    return row.step();
}

} // namespace

Sealer::Sealer(Database &db)
    : m_table(tableIn(db)), m_row(db, rowSql(db)), m_latest(db, latestSql), m_fetched(db, fetchedSql(db)),
      m_entry(db, entrySql), m_last(m_table.isThere ? head(db) : std::nullopt)
{
    if (m_table.isNew && !complete())
        m_last.reset();
}

/// Creates the table with the first entry. The chain of a log without rows is complete from then on.
Sealer::Table Sealer::tableIn(Database &db)
{
    if (ShipmentLogRows::hasTable(db, "log_chain"))
        return {.isThere = true, .isNew = false};
    Statement older(db, "SELECT 1 FROM shipments LIMIT 1");
    const bool hasRows = older.step() || !older.isComplete();
    return {.isThere = db.exec(schema), .isNew = !hasRows};
}

bool Sealer::append(qint64 shipment, QByteArrayView kind, QByteArrayView kept, QByteArrayView parts)
{
    if (!m_last || !m_entry.isPrepared())
        return false;
    m_last->hash = chained(m_last->hash, shipment, kind, kept, parts);
    m_entry.bind(1, shipment);
    m_entry.bindInPlace(2, kind);
    m_entry.bindBlobInPlace(3, kept);
    m_entry.bindBlobInPlace(4, m_last->hash);
    return m_entry.execute();
}

bool Sealer::seal(qint64 shipment)
{
    if (!moveTo(m_row, shipment))
        return false;
    const RowHashes hashes = hashesOf(m_row);
    m_row.reset();
    return append(shipment, labelKind, hashes.kept, hashes.parts);
}

bool Sealer::sealStatus(qint64 shipment)
{
    if (!moveTo(m_row, shipment))
        return m_row.isComplete();
    const QByteArray kept = keptStatusOf(m_row);
    m_row.reset();
    const bool isSealed = moveTo(m_latest, shipment) && m_latest.bytes(0).endsWith(kept);
    m_latest.reset();
    return isSealed || append(shipment, statusKind, kept);
}

bool Sealer::sealFetched(qint64 shipment)
{
    if (!moveTo(m_fetched, shipment))
        return false;
    const bool isThere = m_fetched.kind(0) != Statement::Kind::null;
    const QByteArray hash = hashOf(m_fetched, 0);
    m_fetched.reset();
    if (!isThere || !moveTo(m_row, shipment))
        return !isThere;
    const QByteArray kept = hash + keptStatusOf(m_row); // the latest entry of a shipment ends with its status
    m_row.reset();
    return append(shipment, fetchedKind, kept);
}

bool Sealer::complete()
{
    return append(0, completeKind, QByteArray("")); // an empty blob, not NULL
}

std::optional<qint64> sealOlder(Database &db, qint64 after, int limit)
{
    if (isComplete(db))
        return 0;
    Sealer sealer(db);
    QList<qint64> open;
    Statement ids(db, "SELECT id FROM shipments WHERE id > ? AND " + unsealed + " ORDER BY id LIMIT " +
                          QByteArray::number(limit));
    if (ids.isPrepared())
        ids.bind(1, after);
    while (ids.step())
        open += ids.integer(0);
    if (!ids.isComplete())
        return std::nullopt;
    for (const qint64 id : open) {
        if (!sealer.seal(id))
            return std::nullopt;
    }
    if (!open.isEmpty())
        return open.last();
    return sealer.complete() ? std::optional<qint64>(0) : std::nullopt;
}

bool isComplete(const Database &db)
{
    if (!ShipmentLogRows::hasTable(db, "log_chain"))
        return false;
    Statement entry(db, "SELECT 1 FROM log_chain WHERE shipment_id = 0");
    return entry.step();
}

std::optional<bool> hasPassed(const Database &db, const QList<Head> &known)
{
    if (known.isEmpty() || !ShipmentLogRows::hasTable(db, "log_chain"))
        return known.isEmpty();
    Statement entry(db, "SELECT hash FROM log_chain WHERE position = ?");
    for (const Head &head : known) {
        const bool isThere = moveTo(entry, head.position);
        if (!isThere && !entry.isComplete())
            return std::nullopt;
        if (!isThere || entry.bytes(0) != head.hash)
            return false;
    }
    return true;
}

QByteArray idOf(const Database &db)
{
    if (!ShipmentLogRows::hasTable(db, "log_chain"))
        return {};
    Statement first(db, "SELECT hash FROM log_chain WHERE shipment_id <> 0 ORDER BY position LIMIT 1");
    return first.step() ? first.bytes(0).toByteArray() : QByteArray();
}

std::optional<Head> head(const Database &db)
{
    if (!ShipmentLogRows::hasTable(db, "log_chain"))
        return Head();
    Statement last(db, "SELECT position, hash FROM log_chain ORDER BY position DESC LIMIT 1");
    if (last.step())
        return Head{.position = last.integer(0), .hash = last.bytes(1).toByteArray()};
    return last.isComplete() ? std::optional(Head()) : std::nullopt;
}

Walk::Walk(const QList<Head> &known)
{
    for (const Head &head : known) {
        if (head.log.isEmpty())
            m_known.insert(head.position, head.hash);
        else
            m_named += head;
    }
}

/// Copies of another log would otherwise count as a changed chain.
void Walk::takeHeadsOf(const QByteArray &log)
{
    const qsizetype others = std::ranges::count_if(m_named, [&](const Head &head) { return head.log != log; });
    for (const Head &head : std::exchange(m_named, {})) {
        if (head.log == log)
            m_known.insert(head.position, head.hash);
    }
    if (others > 0)
        add({.problem = Problem::otherLog});
}

bool Walk::next(const Database &db, int limit)
{
    if (!ShipmentLogRows::hasTable(db, "log_chain"))
        return end(db);
    Statement entries(db, "SELECT position, shipment_id, kind, parts, hash FROM log_chain WHERE position > ?"
                          " ORDER BY position LIMIT " +
                              QByteArray::number(limit));
    Statement row(db, rowSql(db));
    Statement latest(db, latestSql);
    Statement fetched(db, fetchedSql(db));
    if (entries.isPrepared())
        entries.bind(1, m_last.position);
    const qint64 before = m_entries;
    while (entries.step()) {
        if (!check(entries, row, latest, fetched)) {
            m_isFailed = true;
            return false;
        }
    }
    m_isFailed = !entries.isComplete();
    return !m_isFailed && (m_entries > before || end(db));
}

/// False if a statement failed.
bool Walk::check(const Statement &entry, Statement &row, Statement &latest, Statement &fetched)
{
    const qint64 shipment = entry.integer(1);
    const QByteArray kind = entry.bytes(2).toByteArray();
    const QByteArray kept = entry.bytes(3).toByteArray();
    const Head here{.position = entry.integer(0), .hash = entry.bytes(4).toByteArray()};
    const QByteArray before = std::exchange(m_last, here).hash;
    ++m_entries;
    if (shipment && !m_named.isEmpty()) // the first row
        takeHeadsOf(here.hash);
    const bool isThere = shipment && moveTo(row, shipment);
    if (shipment && !isThere && !row.isComplete())
        return false;
    Finding finding{.problem = Problem::changed,
                    .shipment = shipment,
                    .parts = {},
                    .createdAt = {},
                    .recipient = {},
                    .tracking = {}};
    if (isThere) {
        finding.createdAt = ShipmentLogRows::timeOf(row.real(firstPartColumn));
        finding.recipient = row.text(firstPartColumn + 7);
        finding.tracking = row.text(firstPartColumn + 11);
    }
    QByteArray parts;
    if (kind == labelKind) {
        ++m_labels;
        if (!isThere) {
            finding.problem = Problem::removed;
            add(finding);
            return true; // its hash cannot be computed any more
        }
        parts = partsOf(row);
        for (int part = 0; part < partCount; ++part) {
            if (hashOfPart(parts, part).first(keptBytes) != kept.mid(part * keptBytes, keptBytes))
                finding.parts += Part(part);
        }
        if (moveTo(latest, shipment) && !latest.bytes(0).endsWith(keptStatusOf(row)))
            finding.parts += Part::status;
        latest.reset();
    }
    row.reset();
    if (kind == fetchedKind && isThere) {
        // Bytes that were downloaded again have a later entry.
        const bool isLatest = moveTo(fetched, shipment) && fetched.integer(1) == here.position;
        if (isLatest && hashOf(fetched, 0) != kept.first(hashBytes))
            finding.parts += Part::label;
        fetched.reset();
    }
    const auto known = m_known.constFind(here.position);
    const bool isKnown = known == m_known.cend() || *known == here.hash;
    if (!finding.parts.isEmpty())
        add(finding);
    else if (!isKnown || here.hash != chained(before, shipment, kind, kept, parts)) {
        finding.problem = Problem::chain;
        add(finding);
    }
    return true;
}

/// What has no entry: entries that are missing at the end, and rows. Returns false.
bool Walk::end(const Database &db)
{
    qint64 last = 0; // of all entries that ever were
    for (const qint64 position : m_known.keys())
        last = std::max(last, position);
    for (const Head &head : std::as_const(m_named)) // no row has an entry
        last = std::max(last, head.position);
    Statement sequence(db, "SELECT seq FROM sqlite_sequence WHERE name = 'log_chain'");
    const bool hasSequence = sequence.step();
    m_isFailed = !hasSequence && !sequence.isComplete();
    if (hasSequence)
        last = std::max(last, sequence.integer(0));
    if (m_last.position < last)
        add({.problem = m_entries ? Problem::chain : Problem::unsealed});
    if (isComplete(db)) {
        Statement rows(db,
                       "SELECT id, created_at, recipient, tracking FROM shipments WHERE " + unsealed + " ORDER BY id");
        while (rows.step())
            add({.problem = Problem::added,
                 .shipment = rows.integer(0),
                 .parts = {},
                 .createdAt = ShipmentLogRows::timeOf(rows.real(1)),
                 .recipient = rows.text(2),
                 .tracking = rows.text(3)});
        m_isFailed = m_isFailed || !rows.isComplete();
    }
    return false;
}

void Walk::add(Finding finding)
{
    if (m_findings.size() < mostFindings)
        m_findings += std::move(finding);
}

} // namespace parcelory::LogChain
