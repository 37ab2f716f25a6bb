#include "records/SearchBlock.h"

#include <algorithm>
#include <numeric>

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

void SearchBlock::arrange()
{
    std::vector<std::size_t> rows(m_places.size());
    std::iota(rows.begin(), rows.end(), 0);
    std::ranges::sort(rows, [this](std::size_t one, std::size_t other) { return m_places[one] < m_places[other]; });
    SearchBlock arranged;
    arranged.m_text.reserve(m_text.size());
    arranged.m_starts.reserve(m_starts.size());
    arranged.m_places.reserve(m_places.size());
    for (const std::size_t row : rows) {
        arranged.m_text.append(m_text, m_starts[row], m_starts[row + 1] - m_starts[row]);
        arranged.m_starts.push_back(arranged.m_text.size());
        arranged.m_places.push_back(m_places[row]);
    }
    *this = std::move(arranged);
}

std::vector<SearchBlock::Place> SearchBlock::find(const LikePattern &pattern, std::size_t limit,
                                                  const std::function<bool()> &wanted) const
{
    constexpr int candidatesBetweenQuestions = 1024;
    constexpr std::size_t sampleSize = 32 * 1024;
    const std::string_view literal = pattern.rarestLiteral(std::string_view(m_text).substr(0, sampleSize));
    std::vector<Place> found;
    const char *const begin = m_text.data(), *const end = begin + m_text.size(), *at = begin;
    std::size_t row = 0;
    for (int candidate = 1; found.size() < limit && (at = LikePattern::find(literal, at, end)); ++candidate) {
        while (begin + m_starts[row + 1] <= at)
            ++row;
        if (pattern.matchesAny(begin + m_starts[row], begin + m_starts[row + 1]))
            found.push_back(m_places[row]);
        at = begin + m_starts[row + 1];
        if (candidate % candidatesBetweenQuestions == 0 && wanted && !wanted())
            break;
    }
    return found;
}

} // namespace parcelory
