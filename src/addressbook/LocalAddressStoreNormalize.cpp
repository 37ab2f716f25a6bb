#include "addressbook/LocalAddressStore.h"
#include "core/Text.h"
#include "core/UsStates.h"

#include <QRegularExpression>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// "12 Main St, Springfield, IL 62704" without its blanks and empty parts.
QStringList piecesOf(const QString &street)
{
    QStringList pieces;
    for (const QString &piece : street.split(u',')) {
        if (const QString trimmed = trimBlanks(piece); !trimmed.isEmpty())
            pieces.append(trimmed);
    }
    return pieces;
}

/// Takes the postal code off the end of a piece; empty when there is none.
QString takeZip(QString &piece)
{
    static const QRegularExpression zipAtEnd(u"\\d{5}(?:-\\d{4})?$"_s);
    constexpr qsizetype longest = 10; // nothing further to the front is looked at, however long the piece
    const auto found = zipAtEnd.match(piece, std::max<qsizetype>(0, piece.size() - longest));
    const QString zip = found.captured();
    if (!zip.isEmpty())
        piece.truncate(found.capturedStart());
    return zip;
}

/// Takes a state off the end of the words, written as its code or in full; empty when there is none.
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

/// Spreads the street line over the fields that it belongs into; leaves the contact alone when it is not sure.
void spread(PostalContact &contact)
{
    QStringList pieces = piecesOf(contact.street1);
    QString last = pieces.isEmpty() ? QString() : pieces.takeLast();
    const QString zip = takeZip(last);
    if (zip.isEmpty())
        return;
    QStringList words = last.split(u' ', Qt::SkipEmptyParts);
    const QString state = takeState(words);
    if (words.isEmpty() && pieces.size() >= 2) // the city is a piece of its own
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
