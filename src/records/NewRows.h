#pragma once

#include "core/Sqlite.h"
#include "records/ChainHashes.h"
#include "records/ShipmentLogRows.h"

#include <QByteArray>

#include <optional>
#include <span>

/// Stores many new rows with their entries in the chain of hashes.
namespace parcelory::NewRows {

/// A row that is not stored yet, and its hashes.
struct Hashed {
    ShipmentLogRows::NewRow row;
    LogChain::RowHashes hashes;
};

/// Any thread may do it.
Hashed hashed(ShipmentLogRows::NewRow row);

/// What the next rows follow.
struct Last {
    qint64 id;       ///< the last that the shipments ever had
    QByteArray hash; ///< of the last entry
};

/// Nothing if it could not be read.
std::optional<Last> last(const Database &db);

/// Binds the values of a row to parameters from `first` on; returns the parameter after the last.
int bind(Statement &statement, int first, const ShipmentLogRows::NewRow &row);

/// Lives within one transaction, after LogChain::Sealer has created the chain.
class Storage {
public:
    Storage(Database &db, const Last &last);

    /// Stores and seals rows. False if a statement failed, or if the rows got other ids than they are sealed with.
    [[nodiscard]] bool store(std::span<const Hashed> rows);
    qint64 lastId() const { return m_last.id; }

private:
    /// How many rows a statement stores: starting a statement takes as long as storing a short row.
    static constexpr std::size_t group = 25;
    bool store(std::span<const Hashed> rows, Statement &insert, Statement &entries);

    Database &m_db;
    Last m_last;
    Statement m_insert, m_entry, m_insertGroup, m_entryGroup;
};

} // namespace parcelory::NewRows
