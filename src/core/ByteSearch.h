#pragma once

#include <cstdint>
#include <string_view>

namespace parcelory {

/// Finds every occurrence of a short byte string in a large block at memory speed, for lists that are searched again
/// at every keystroke.
class ByteSearch {
public:
    /// `bytes` must not be empty. Both must outlive the search.
    ByteSearch(std::string_view bytes, std::string_view block);

    /// The first occurrence at or after `from`, or null. `from` must not decrease from call to call.
    const char *next(const char *from);

private:
    /// Sixteen bytes that are compared at once. In a result, 0xFF means true.
    using Vector = unsigned char __attribute__((vector_size(16)));
    using Mask = std::uint64_t; ///< one bit for each byte of a batch

    void lookAt(const char *at);
    Mask candidates(const char *at) const;
    const char *nextInTail(const char *from) const;
    bool isHere(const char *place) const;

    std::string_view m_bytes;
    Vector m_first, m_middle, m_last;
    const char *m_at; ///< the position of m_found's lowest bit
    const char *m_end;
    Mask m_found = 0; ///< candidates that were not returned yet
    bool m_isAtTail = false;
};

} // namespace parcelory
