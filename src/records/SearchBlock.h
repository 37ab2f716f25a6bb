#pragma once

#include "records/LikePattern.h"

#include <QtGlobal>

#include <array>
#include <functional>
#include <vector>

namespace parcelory {

/// The texts that a search of the mailing log looks at, in memory and one after the other. A million rows take about
/// 120 MB, and no search takes longer than reading those.
class SearchBlock {
public:
    /// Where a row stands in the answer: the newest first, and of the same time the one that was stored first.
    struct Place {
        double createdAt; ///< seconds since 1970
        qint64 id;

        bool operator<(const Place &other) const
        {
            return createdAt != other.createdAt ? createdAt > other.createdAt : id < other.id;
        }
    };
    /// As stored; null for NULL, which matches nothing.
    using Texts = std::array<const char *, 4>;

    std::size_t size() const { return m_places.size(); }
    void add(Place place, const Texts &texts);
    /// Brings the rows into the order of the answer; to be called after the last add().
    void arrange();

    /// The first `limit` rows of which a text matches. Incomplete once `wanted` says false.
    std::vector<Place> find(const LikePattern &pattern, std::size_t limit,
                            const std::function<bool()> &wanted = {}) const;

private:
    std::string m_text; ///< every row's texts, folded, each with a zero byte behind
    std::vector<std::size_t> m_starts{0};
    std::vector<Place> m_places;
};

} // namespace parcelory
