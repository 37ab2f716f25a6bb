#include "addressbook/LocalAddressStore.h"

#include "core/PostalContact.h"
#include "core/Text.h"
#include "core/UsStates.h"

#include <QRegularExpression>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Splits "12 Main St, Springfield, IL 62704" at its commas, without surrounding blanks and empty parts.
QStringList piecesOf(const QString &street)
{
    QStringList pieces;
    for (const QString &piece : street.split(u',')) {
        if (const QString trimmed = trimBlanks(piece); !trimmed.isEmpty())
            pieces.append(trimmed);
    }
    return pieces;
}

/// Removes the postal code from the end of a piece and returns it; empty if the piece has no postal code.
QString takeZip(QString &piece)
{
    static const QRegularExpression zipAtEnd(u"\\d{5}(?:-\\d{4})?$"_s);
    constexpr qsizetype longest = 10; // only the end is searched, however long the piece is
    const auto found = zipAtEnd.match(piece, std::max<qsizetype>(0, piece.size() - longest));
    const QString zip = found.captured();
    if (!zip.isEmpty())
        piece.truncate(found.capturedStart());
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
