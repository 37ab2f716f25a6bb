#include "records/SearchBlock.h"

#include "core/ByteSearch.h"
#include "core/Progress.h"
#include "records/LikePattern.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace parcelory {

void SearchBlock::add(Place place, const Texts &texts)
{
    for (const char *text : texts) {
        if (!text)
            continue;
        LikePattern::appendFolded(m_text, text);
        m_text += '\0';
    }
    m_places.push_back(place);
    m_starts.push_back(m_text.size());
}

void SearchBlock::sort()
{
    std::vector<std::size_t> rows(m_places.size());
    std::iota(rows.begin(), rows.end(), 0);
    std::ranges::sort(rows, [this](std::size_t one, std::size_t other) { return m_places[one] < m_places[other]; });
    SearchBlock sorted;
    sorted.m_text.reserve(m_text.size());
    sorted.m_starts.reserve(m_starts.size());
    sorted.m_places.reserve(m_places.size());
    for (const std::size_t row : rows) {
        sorted.m_text.append(m_text, m_starts[row], m_starts[row + 1] - m_starts[row]);
        sorted.m_starts.push_back(sorted.m_text.size());
        sorted.m_places.push_back(m_places[row]);
    }
    *this = std::move(sorted);
}

std::vector<SearchBlock::Place> SearchBlock::find(const LikePattern &pattern, std::size_t limit,
                                                  const CancelToken &cancel) const
{
    constexpr int candidatesBetweenChecks = 1024;
    constexpr std::size_t sampleSize = 32 * 1024;
    const std::string_view literal = pattern.rarestLiteral(std::string_view(m_text).substr(0, sampleSize));
    std::vector<Place> found;
    const char *const begin = m_text.data(), *const end = begin + m_text.size(), *at = begin;
    std::size_t row = 0;
    std::optional<ByteSearch> search; // without a literal, every row is a candidate
    if (!literal.empty())
        search.emplace(literal, m_text);
    const auto next = [&search, end](const char *from) -> const char * {
        if (search)
            return search->next(from);
        return from < end ? from : nullptr;
    };
    for (int candidate = 1; found.size() < limit && (at = next(at)); ++candidate) {
        while (begin + m_starts[row + 1] <= at)
            ++row;
        if (pattern.matchesAny(begin + m_starts[row], begin + m_starts[row + 1]))
            found.push_back(m_places[row]);
        at = begin + m_starts[row + 1];
        if (candidate % candidatesBetweenChecks == 0 && cancel.isCanceled())
            break;
    }
    return found;
}

} // namespace parcelory
