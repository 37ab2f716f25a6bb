#include "records/LikePattern.h"

#include "core/ByteSearch.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace parcelory {

namespace {

constexpr std::string_view wildcards = "%_";

/// True for every byte of a UTF-8 character but the first.
bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Reads a non-ASCII character as leniently as SQLite, so that broken bytes mean the same to both: it accepts any
/// number of continuation bytes, and a lone continuation byte is the character with that number.
std::uint32_t readCharacter(const char *&at)
{
    const auto lead = static_cast<unsigned char>(*at++);
    if (lead < 0xC0)
        return lead;
    const int dataBits = lead < 0xE0 ? 5 : lead < 0xF0 ? 4 : lead < 0xF8 ? 3 : lead < 0xFC ? 2 : lead < 0xFE ? 1 : 0;
    std::uint32_t character = lead & ((1u << dataBits) - 1);
    while (isContinuation(*at))
        character = (character << 6) + (static_cast<unsigned char>(*at++) & 0x3F);
    const bool isNone = character < 0x80 || (character & 0xFFFFF800) == 0xD800 || (character & 0xFFFFFFFE) == 0xFFFE;
    return isNone ? 0xFFFD : character;
}

void appendCharacter(std::string &text, std::uint32_t character)
{
    character = std::min<std::uint32_t>(character, 0x110000); // no pattern contains a character beyond this
    const auto continuation = [character](int shift) { return char(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x800)
        text += {char(0xC0 | (character >> 6)), continuation(0)};
    else if (character < 0x10000)
        text += {char(0xE0 | (character >> 12)), continuation(6), continuation(0)};
    else
        text += {char(0xF0 | (character >> 18)), continuation(12), continuation(6), continuation(0)};
}

const char *nextCharacter(const char *at, const char *end)
{
    do {
        ++at;
    } while (at != end && isContinuation(*at));
    return at;
}

/// "%_%" means one character or more; so does "_%", which needs no backtracking.
std::string withRunsInOrder(const std::string &pattern)
{
    std::string ordered;
    for (std::size_t at = 0; at < pattern.size();) {
        const std::size_t end = std::min(pattern.find_first_not_of(wildcards, at), pattern.size());
        const std::string_view run(pattern.data() + at, end - at);
        ordered.append(std::size_t(std::ranges::count(run, '_')), '_');
        if (run.find('%') != run.npos)
            ordered += '%';
        const std::size_t next = std::min(pattern.find_first_of(wildcards, end), pattern.size());
        ordered.append(pattern, end, next - end);
        at = next;
    }
    return ordered;
}

std::vector<std::string_view> literalsOf(std::string_view pattern)
{
    std::vector<std::string_view> literals;
    for (std::size_t at = 0; at < pattern.size();) {
        const std::size_t end = std::min(pattern.find_first_of(wildcards, at), pattern.size());
        if (end > at)
            literals.push_back(pattern.substr(at, end - at));
        at = end + 1;
    }
    return literals;
}

} // namespace

LikePattern::LikePattern(const QByteArray &pattern)
{
    std::string folded;
    appendFolded(folded, pattern.constData());
    m_pattern = withRunsInOrder(folded);
    m_literals = literalsOf(m_pattern);
    m_isContained = m_literals.size() == 1 && m_pattern == '%' + std::string(m_literals[0]) + '%';
}

void LikePattern::appendFolded(std::string &folded, const char *text)
{
    while (*text) {
        const auto byte = static_cast<unsigned char>(*text);
        if (byte >= 0x80) {
            appendCharacter(folded, readCharacter(text));
        } else {
            folded += char(byte >= 'A' && byte <= 'Z' ? byte + 32 : byte);
            ++text;
        }
    }
}

std::string_view LikePattern::rarestLiteral(std::string_view sample) const
{
    const auto count = [sample](std::string_view literal) {
        int found = 0;
        ByteSearch search(literal, sample);
        for (const char *at = sample.data(); (at = search.next(at)); ++at)
            ++found;
        return found;
    };
    std::string_view rarest;
    int least = 0;
    for (const std::string_view literal : m_literals) {
        const int found = count(literal);
        if (rarest.empty() || found < least || (found == least && literal.size() > rarest.size())) {
            rarest = literal;
            least = found;
        }
    }
    return rarest;
}

bool LikePattern::matchesAny(const char *at, const char *end) const
{
    if (m_isContained)
        return true;
    while (at < end) {
        const auto *zero = static_cast<const char *>(std::memchr(at, 0, std::size_t(end - at)));
        if (matches(at, zero))
            return true;
        at = zero + 1;
    }
    return false;
}

/// Extends the text of a % character by character until the rest matches; only the last % ever needs backtracking.
bool LikePattern::matches(const char *at, const char *end) const
{
    const char *pattern = m_pattern.data(), *const patternEnd = pattern + m_pattern.size();
    const char *afterPercent = nullptr, *taken = nullptr;
    for (;;) {
        if (pattern != patternEnd && *pattern == '%') {
            if (++pattern == patternEnd)
                return true;
            afterPercent = pattern;
            taken = at;
        } else if (at == end) {
            return pattern == patternEnd;
        } else if (pattern != patternEnd && *pattern == '_') {
            at = nextCharacter(at, end);
            ++pattern;
        } else if (pattern != patternEnd && *pattern == *at) {
            ++at;
            ++pattern;
        } else if (afterPercent) {
            at = taken = nextCharacter(taken, end);
            pattern = afterPercent;
        } else {
            return false;
        }
    }
}

} // namespace parcelory
