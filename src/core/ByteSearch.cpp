#include "core/ByteSearch.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace parcelory {

namespace {

constexpr std::ptrdiff_t maskSize = 64;
using Bits = bool __attribute__((ext_vector_type(16)));

} // namespace

ByteSearch::ByteSearch(std::string_view bytes, std::string_view block)
    : m_bytes(bytes), m_at(block.data()), m_end(block.data() + block.size())
{
    const auto everywhere = [](char byte) { return Vector{} + static_cast<unsigned char>(byte); };
    m_first = everywhere(bytes.front());
    m_middle = everywhere(bytes[(bytes.size() - 1) / 2]);
    m_last = everywhere(bytes.back());
    lookAt(m_at);
}

// Library searches look for the first byte, or for a hash of a few bytes, and stop at too many false candidates. This
// search compares the first, middle and last byte at once, because names and numbers differ more at their end than at
// their start.
ByteSearch::Mask ByteSearch::candidates(const char *at) const
{
    constexpr int batch = maskSize / sizeof(Vector);
    const std::size_t last = m_bytes.size() - 1, middle = last / 2;
    const auto load = [](const char *from) {
        Vector bytes;
        std::memcpy(&bytes, from, sizeof bytes);
        return bytes;
    };
    std::array<Vector, batch> hits;
    for (std::size_t i = 0; i < batch; ++i) {
        const char *from = at + i * sizeof(Vector);
        hits[i] = Vector((load(from) == m_first) & (load(from + middle) == m_middle) & (load(from + last) == m_last));
    }
    const auto any = std::bit_cast<std::array<std::uint64_t, 2>>((hits[0] | hits[1]) | (hits[2] | hits[3]));
    Mask mask = 0;
    for (std::size_t i = 0; (any[0] | any[1]) && i < batch; ++i)
        mask |= Mask(std::bit_cast<std::uint16_t>(__builtin_convertvector(hits[i], Bits))) << (i * sizeof(Vector));
    return mask;
}

bool ByteSearch::isHere(const char *place) const
{
    return !std::memcmp(place, m_bytes.data(), m_bytes.size());
}

const char *ByteSearch::next(const char *from)
{
    if (from - m_at >= maskSize)
        lookAt(from);
    else if (from > m_at)
        m_found &= ~Mask(0) << (from - m_at);
    const bool isCompared = m_bytes.size() <= 3; // the first, middle and last byte are all of it
    while (!m_isAtTail) {
        while (m_found) {
            const char *place = m_at + std::countr_zero(m_found);
            m_found &= m_found - 1;
            if (isCompared || isHere(place))
                return place;
        }
        lookAt(m_at + maskSize);
    }
    return nextInTail(std::max(from, m_at));
}

/// A vector load near the end would read beyond the block, so its tail is searched byte by byte.
void ByteSearch::lookAt(const char *at)
{
    m_at = at;
    m_isAtTail = m_end - at < maskSize + std::ptrdiff_t(m_bytes.size());
    m_found = m_isAtTail ? 0 : candidates(at);
}

const char *ByteSearch::nextInTail(const char *from) const
{
    for (; m_end - from >= std::ptrdiff_t(m_bytes.size()); ++from) {
        if (isHere(from))
            return from;
    }
    return nullptr;
}

} // namespace parcelory
