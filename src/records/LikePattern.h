#pragma once

#include <QByteArray>

#include <string>
#include <string_view>
#include <vector>

namespace parcelory {

/// A pattern of SQL's LIKE with SQLite's rules: % matches any run of characters, _ matches one character, A to Z equal
/// a to z, and both the pattern and a text end at their first zero byte.
class LikePattern {
public:
    /// `pattern` in UTF-8.
    explicit LikePattern(const QByteArray &pattern);
    LikePattern(const LikePattern &) = delete;
    LikePattern &operator=(const LikePattern &) = delete;

    /// Appends a text of the database in the folded form that the functions below read: lower case, and broken bytes
    /// replaced by the character that SQLite reads them as.
    static void appendFolded(std::string &folded, const char *text);

    /// The literal part of the pattern that is rarest in `sample`; "" if the pattern is all wildcards. Here and below,
    /// texts are folded, and each ends with a zero byte.
    std::string_view rarestLiteral(std::string_view sample) const;
    /// True if a text in [at, end) matches; the caller has already found the rarest literal there.
    bool matchesAny(const char *at, const char *end) const;

private:
    bool matches(const char *at, const char *end) const;

    std::string m_pattern;                    ///< folded; a run of wildcards that contains % is written as _…_%
    std::vector<std::string_view> m_literals; ///< its parts without wildcards
    bool m_isContained = false;               ///< the pattern is %literal%
};

} // namespace parcelory
