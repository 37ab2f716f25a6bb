#pragma once

#include "core/Sqlite.h"
#include "records/ChainHashes.h"
#include "records/ShipmentLogRows.h"

#include <QByteArray>
#include <QFuture>
#include <QThreadPool>

#include <array>
#include <cstddef>
#include <deque>
#include <optional>
#include <span>
#include <vector>

/// Stores many new rows with their entries in the chain of hashes.
namespace parcelory::NewRows {

/// The row and the entry before the new rows.
struct Last {
    qint64 id;       ///< the largest that a shipment ever had
    QByteArray hash; ///< of the last entry
};

/// Nothing if it could not be read.
std::optional<Last> last(const Database &db);

/// Binds the values of a row to parameters from `first` on; returns the parameter after the last. The row must stay
/// unchanged until the statement has run.
int bind(Statement &statement, int first, const ShipmentLogRows::NewRow &row);

/// Inserts many rows of a table.
class Insertion {
public:
    /// `sql` inserts one row.
    Insertion(const Database &db, const QByteArray &sql);

    /// `bind` binds the values of a row to parameters from a number on, and returns the parameter after the last. False
    /// if a statement failed.
    template <class Row, class Bind>
    [[nodiscard]] bool run(std::span<const Row> rows, Bind bind)
    {
        while (!rows.empty()) {
            const std::size_t count = rows.size() < group ? 1 : group;
            Statement &statement = count == group ? m_group : m_one;
            if (!statement.isPrepared())
                return false;
            int parameter = 1;
            for (const Row &row : rows.first(count))
                parameter = bind(statement, parameter, row);
            if (!statement.execute())
                return false;
            rows = rows.subspan(count);
        }
        return true;
    }

private:
    /// How many rows a statement stores: starting a statement takes as long as storing a short row.
    static constexpr std::size_t group = 50;

    Statement m_one, m_group;
};

/// Lives within one transaction, after LogChain::Sealer has created the chain.
class Storage {
public:
    Storage(Database &db, const Last &last);
    ~Storage();
    Storage(const Storage &) = delete;
    Storage &operator=(const Storage &) = delete;

    /// Stores rows, which seal() must follow; another thread hashes them meanwhile. False if a statement failed, or if
    /// the rows got other ids than they are sealed with.
    [[nodiscard]] bool store(std::vector<ShipmentLogRows::NewRow> rows);
    /// Stores the entries of all rows. False if a statement failed.
    [[nodiscard]] bool seal();
    qint64 lastId() const { return m_lastId; }

private:
    struct Entry {
        qint64 shipment;
        decltype(LogChain::RowHashes::kept) kept;
        std::array<char, LogChain::hashBytes> hash;
    };

    struct Chained {
        QFuture<QByteArray> hash; ///< of the last entry
        std::size_t rows;
    };

    Database &m_db;
    Insertion m_insertion;
    qint64 m_lastId;
    LogChain::RowHasher m_hasher;             ///< used on m_thread
    std::deque<std::vector<Entry>> m_entries; ///< written on m_thread
    QThreadPool m_thread;          ///< of its own: if all other threads hang, the import still ends and unlocks the log
    std::deque<Chained> m_chained; ///< the last portions; each follows the portion before
    std::size_t m_unhashed = 0;    ///< rows of m_chained
};

} // namespace parcelory::NewRows
