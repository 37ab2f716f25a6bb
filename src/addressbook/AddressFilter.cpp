#include "addressbook/AddressFilter.h"

#include "core/Accents.h"
#include "core/ByteSearch.h"
#include "core/PostalContact.h"
#include "core/Text.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string>

namespace parcelory {

namespace {

/// Ends every text. Not a byte of UTF-8, so that no query matches across two texts.
constexpr char textEnd = '\xFF';

/// Turkish has an I without a dot, which is a different letter from the I with a dot.
bool hasDotlessI(const QLocale &locale)
{
    return locale.language() == QLocale::Turkish || locale.language() == QLocale::Azerbaijani;
}

bool isAscii(const QString &text)
{
    return std::ranges::all_of(text, [](QChar c) { return c.unicode() < 0x80; });
}

std::string foldedUnicode(const QString &text, bool dotlessI)
{
    const QString joined = text.normalized(QString::NormalizationForm_C); // an accent may be a character of its own
    icu::UnicodeString folded(reinterpret_cast<const char16_t *>(joined.utf16()), int32_t(joined.size()));
    folded.foldCase(dotlessI ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT);
    const QStringView result(folded.getBuffer(), folded.length());
    return withoutAccents(result.toString()).toStdString();
}

} // namespace

std::string AddressFilter::folded(const QString &text, const QLocale &locale)
{
    const bool dotlessI = hasDotlessI(locale);
    if (dotlessI || !isAscii(text))
        return foldedUnicode(text, dotlessI);
    std::string folded(std::size_t(text.size()), '\0');
    std::ranges::transform(text, folded.begin(), [](QChar c) {
        const char letter = c.toLatin1();
        return letter >= 'A' && letter <= 'Z' ? char(letter + 'a' - 'A') : letter;
    });
    return folded;
}

AddressFilter::AddressFilter(const QList<PostalContact> &contacts, const QLocale &locale) : m_locale(locale)
{
    m_starts.reserve(std::size_t(contacts.size()) + 1);
    for (const PostalContact &contact : contacts) {
        for (const QString &text : {contact.name, contact.company, contact.addressSummary()}) {
            m_block += folded(text, m_locale);
            m_block += textEnd;
        }
        m_starts.push_back(m_block.size());
    }
}

QList<int> AddressFilter::filtered(const QString &query) const
{
    const std::string wanted = folded(trimBlanks(query), m_locale);
    QList<int> rows;
    if (wanted.empty()) {
        rows.resize(qsizetype(m_starts.size()) - 1);
        std::iota(rows.begin(), rows.end(), 0);
        return rows;
    }
    ByteSearch search(wanted, m_block);
    const char *const block = m_block.data(), *place = block;
    for (std::size_t row = 0; (place = search.next(place)); place = block + m_starts[row + 1]) {
        while (block + m_starts[row + 1] <= place)
            ++row;
        rows.append(int(row));
    }
    return rows;
}

} // namespace parcelory
