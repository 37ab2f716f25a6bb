#include "records/LikePattern.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace parcelory {

namespace {

constexpr std::string_view wildcards = "%_";

/// A byte of a character in UTF-8 that is not its first.
bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Reads a character beyond ASCII with SQLite's leniency, so that broken bytes mean the same to both: it takes every
/// continuation byte that follows, and a lone one for the character of that number.
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
    character = std::min<std::uint32_t>(character, 0x110000); // no pattern holds any of those beyond
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

/// "%_%" asks for one character or more, and so does "_%", which never has to go back.
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

/// Sixteen bytes that are compared at once. In a result, 0xFF stands for true.
using Bytes = unsigned char __attribute__((vector_size(16)));

Bytes sixteen(const char *at)
{
    Bytes bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    return bytes;
}

bool isAnyTrue(const Bytes &bytes)
{
    const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(bytes);
    return (halves[0] | halves[1]) != 0;
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
        const char *at = sample.data(), *const end = at + sample.size();
        while ((at = find(literal, at, end))) {
            ++found;
            ++at;
        }
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

/// The library's search takes up to 50 ms for the log of a million rows and
/// a short literal; this one reads it at the pace of the memory. It looks at the first, middle and last byte, because
/// rows of a log differ at the end of numbers more than at their start.
const char *LikePattern::find(std::string_view literal, const char *at, const char *end)
{
    if (literal.empty())
        return at < end ? at : nullptr;
    constexpr int batch = 4;
    const std::size_t last = literal.size() - 1, middle = last / 2;
    const auto same = [&literal](std::size_t place) { return Bytes{} + static_cast<unsigned char>(literal[place]); };
    const Bytes first = same(0), inTheMiddle = same(middle), atTheEnd = same(last);
    const auto isHere = [&](const char *place) { return !std::memcmp(place, literal.data(), literal.size()); };
    while (end - at >= std::ptrdiff_t(last + batch * sizeof(Bytes))) {
        Bytes hits[batch], any{};
        for (int i = 0; i < batch; ++i) {
            const char *from = at + i * sizeof(Bytes);
            hits[i] = Bytes((sixteen(from) == first) & (sixteen(from + middle) == inTheMiddle) &
                            (sixteen(from + last) == atTheEnd));
            any |= hits[i];
        }
        for (int i = 0; isAnyTrue(any) && i < batch; ++i) {
            for (std::size_t place = 0; isAnyTrue(hits[i]) && place < sizeof(Bytes); ++place) {
                const char *found = at + i * sizeof(Bytes) + place;
                if (hits[i][place] && isHere(found))
                    return found;
            }
        }
        at += sizeof hits;
    }
    for (; end - at > std::ptrdiff_t(last); ++at) {
        if (isHere(at))
            return at;
    }
    return nullptr;
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

/// What a % takes grows character by character until the rest fits; only the last % ever has to be asked again.
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
