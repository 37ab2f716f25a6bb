#pragma once

#include <cstdint>
#include <string_view>

namespace parcelory {

/// Finds all places of a few bytes in a large block at the pace of the memory, for lists that are searched anew at
/// every key.
class ByteSearch {
public:
    /// `bytes` are not empty. Both must outlive the search.
    ByteSearch(std::string_view bytes, std::string_view block);

    /// The first place at or behind `from`, which must not go back; null when there is none.
    const char *next(const char *from);

private:
    /// Sixteen bytes that are compared at once. In a result, 0xFF stands for true.
    using Vector = unsigned char __attribute__((vector_size(16)));
    using Mask = std::uint64_t; ///< one bit for each of the bytes that are looked at together

    void lookAt(const char *at);
    Mask candidates(const char *at) const;
    const char *nextInTail(const char *from) const;
    bool isHere(const char *place) const;

    std::string_view m_bytes;
    Vector m_first, m_middle, m_last;
    const char *m_at; ///< where the bytes of m_found begin
    const char *m_end;
    Mask m_found = 0; ///< places that were not given out yet
    bool m_isAtTail = false;
};

} // namespace parcelory
