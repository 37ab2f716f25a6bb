#include "core/ShippoAddress.h"

#include "core/Text.h"

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The longest street line that is sent, in characters.
constexpr qsizetype streetLimit = 50;

bool isBlankOrComma(const QString &character)
{
    return character == u" " || character == u"\t" || character == u",";
}

QString trimBlanksAndCommas(const QStringList &line)
{
    qsizetype start = 0, end = line.size();
    while (start < end && isBlankOrComma(line[start]))
        ++start;
    while (end > start && isBlankOrComma(line[end - 1]))
        --end;
    return line.mid(start, end - start).join(QString());
}

} // namespace

std::pair<QString, QString> ShippoAddress::splitStreet(const QString &street1, const QString &street2)
{
    const QStringList line = characters(street1);
    if (line.size() <= streetLimit)
        return {street1, firstCharacters(street2, streetLimit)};
    qsizetype split = streetLimit - 1;
    while (split > 0 && !isBlankOrComma(line[split]))
        --split;
    if (split == 0)
        split = streetLimit;
    QString rest = trimBlanksAndCommas(line.mid(split));
    if (!street2.isEmpty())
        rest += u", "_s + street2;
    return {trimBlanksAndCommas(line.first(split)), firstCharacters(rest, streetLimit)};
}

QString ShippoAddress::oneLine() const
{
    const QString place = trimBlanks(city + u' ' + state + u' ' + zip);
    return joinPresent({street1, street2, place}, u", "_s);
}

bool ShippoAddress::isEmpty() const
{
    ShippoAddress filled = *this;
    filled.country.clear();
    return filled == ShippoAddress{};
}

} // namespace parcelory
