#pragma once

#include <QByteArray>

#include <string>
#include <string_view>
#include <vector>

namespace parcelory {

/// A pattern of SQL's LIKE as SQLite reads it: % stands for any run of characters and _ for one, A to Z equal a to z,
/// and both the pattern and a text end at their first zero byte.
class LikePattern {
public:
    /// `pattern` in UTF-8.
    explicit LikePattern(const QByteArray &pattern);
    LikePattern(const LikePattern &) = delete;
    LikePattern &operator=(const LikePattern &) = delete;

    /// Appends a text of the database in the form that the functions below read: lower case, and the bytes of a broken
    /// character replaced by the character that SQLite takes them for.
    static void appendFolded(std::string &folded, const char *text);

    /// The part of the pattern that the fewest texts of `sample` seem to hold; "" when it is all wildcards. Here and
    /// below, texts are folded, and each ends with a zero byte.
    std::string_view rarestLiteral(std::string_view sample) const;
    /// The first place of `literal` in [at, end), which is `at` for ""; null when there is none.
    static const char *find(std::string_view literal, const char *at, const char *end);
    /// Whether one of the texts in [at, end) matches; the rarest literal was found in them.
    bool matchesAny(const char *at, const char *end) const;

private:
    bool matches(const char *at, const char *end) const;

    std::string m_pattern;                    ///< folded; a run of wildcards with a % in it is written as _…_%
    std::vector<std::string_view> m_literals; ///< its parts without wildcards
    bool m_isContained = false;               ///< it asks for a literal and nothing else
};

} // namespace parcelory
