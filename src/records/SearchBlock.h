#pragma once

#include "core/Progress.h"
#include "records/LikePattern.h"

#include <QtGlobal>

#include <array>
#include <vector>

namespace parcelory {

/// The searchable texts of the mailing log, contiguous in memory. A million rows take about 120 MB, and a search takes
/// no longer than reading them once.
class SearchBlock {
public:
    /// A row's position in the result: newest first; of rows of the same time, the row stored last.
    struct Place {
        double createdAt; ///< seconds since 1970
        qint64 id;

        bool operator<(const Place &other) const
        {
            return createdAt != other.createdAt ? createdAt > other.createdAt : id > other.id;
        }
    };
    /// As stored; null for NULL, which matches nothing.
    using Texts = std::array<const char *, 4>;

    std::size_t size() const { return m_places.size(); }
    void add(Place place, const Texts &texts);
    /// Sorts the rows into the order of the result; call after the last add().
    void sort();

    /// The first `limit` rows with a matching text. Incomplete if canceled.
    std::vector<Place> find(const LikePattern &pattern, std::size_t limit, const CancelToken &cancel = {}) const;

private:
    std::string m_text; ///< every row's texts, folded, each followed by a zero byte
    std::vector<std::size_t> m_starts{0};
    std::vector<Place> m_places;
};

} // namespace parcelory
