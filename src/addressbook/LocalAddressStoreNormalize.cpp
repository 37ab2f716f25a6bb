#include "addressbook/LocalAddressStore.h"

#include "core/PostalContact.h"
#include "core/UsStates.h"

#include <QRegularExpression>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The end of a line, also in other programs' texts: line feed, carriage return, vertical tab …
bool isLineEnd(QChar c)
{
    return (c >= u'\n' && c <= u'\r') || c == u'\x85' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

bool isBlank(QChar c)
{
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

/// Splits "12 Main St, Springfield, IL 62704" at its commas, without surrounding blanks and empty parts.
QStringList piecesOf(const QString &street)
{
    QStringList pieces;
    for (QStringView piece : QStringView(street).split(u',')) {
        while (!piece.isEmpty() && isBlank(piece.front()))
            piece = piece.sliced(1);
        while (!piece.isEmpty() && isBlank(piece.back()))
            piece.chop(1);
        if (!piece.isEmpty())
            pieces.append(piece.toString());
    }
    return pieces;
}

/// Matches a piece with ^(.*?)\s*(\d{5}(?:-\d{4})?)$, returns the postal code and leaves the text before it in the
/// piece; empty if it does not match. Reads from the end, because the pattern takes forever on a long run of blanks.
QString takeZip(QString &piece)
{
    static const QRegularExpression zipAtEnd(u"\\d{5}(?:-\\d{4})?\\z"_s);
    constexpr qsizetype longest = 10; // only the end is searched, however long the piece is
    QStringView text = piece;
    if (!text.isEmpty() && isLineEnd(text.back())) // the pattern's end may be before a last line end
        text.chop(text.endsWith(u"\r\n") ? 2 : 1);
    const auto found = zipAtEnd.match(text.last(std::min(longest, text.size())).toString());
    if (!found.hasMatch())
        return {};
    const QString zip = found.captured();
    text.chop(zip.size());
    while (!text.isEmpty() && text.back().isSpace())
        text.chop(1);
    if (std::ranges::any_of(text, isLineEnd)) // a dot of the pattern is no line end
        return {};
    piece = text.toString();
    return zip;
}

/// Removes a state, written as its code or in full, from the end of the words and returns its code; empty if there is
/// no state.
QString takeState(QStringList &words)
{
    const QString last = words.isEmpty() ? QString() : words.last();
    if (last.size() == 2 && last[0].isLetter() && last[1].isLetter())
        return words.takeLast().toUpper();
    for (qsizetype taken = std::min<qsizetype>(3, words.size()); taken > 0; --taken) {
        const qsizetype left = words.size() - taken;
        const auto state = usStates().find(words.sliced(left).join(u' ').toLower());
        if (state != usStates().end()) {
            words.resize(left);
            return state->second;
        }
    }
    return {};
}

/// Splits the street line into the address fields; leaves the contact unchanged if the split is uncertain.
void spread(PostalContact &contact)
{
    QStringList pieces = piecesOf(contact.street1);
    QString last = pieces.isEmpty() ? QString() : pieces.takeLast();
    const QString zip = takeZip(last);
    if (zip.isEmpty())
        return;
    QStringList words = last.split(u' ', Qt::SkipEmptyParts);
    const QString state = takeState(words);
    if (words.isEmpty() && pieces.size() >= 2) // the city is a separate piece
        words = {pieces.takeLast()};
    if (words.isEmpty() || pieces.isEmpty())
        return;
    contact.street1 = pieces.join(u", "_s);
    contact.city = words.join(u' ');
    contact.zip = zip;
    if (!state.isEmpty())
        contact.state = state;
    if (contact.country.isEmpty())
        contact.country = u"US"_s;
}

} // namespace

PostalContact LocalAddressStore::normalized(PostalContact contact)
{
    if (contact.city.isEmpty() && contact.zip.isEmpty() && contact.street1.contains(u','))
        spread(contact);
    const QString country = contact.country.toLower();
    if (country == u"usa"_s || country == u"us"_s || country == u"u.s.a."_s || country == u"united states"_s)
        contact.country = u"US"_s;
    return contact;
}

} // namespace parcelory
