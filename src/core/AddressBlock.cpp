#include "core/AddressBlock.h"

#include "core/CountryCode.h"
#include "core/UsStates.h"

#include <QRegularExpression>

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

bool hasDigit(const QString &line)
{
    return std::ranges::any_of(line, [](QChar c) { return c.isDigit(); });
}

/// The lines of the text without a comma at their end; blank lines are left out.
QStringList linesOf(const QString &text)
{
    static const QRegularExpression breaks(u"[\\r\\n\\x{2028}\\x{2029}]+"_s), comma(u",$"_s);
    QStringList lines;
    for (const QString &part : text.split(breaks))
        lines += part.simplified().remove(comma);
    lines.removeAll(QString());
    return lines;
}

/// Removes the line that the pattern matches as a whole, and returns what its first group holds.
QString taken(QStringList &lines, const QRegularExpression &pattern)
{
    for (const QString &line : std::as_const(lines)) {
        if (const auto found = pattern.match(line); found.hasMatch()) {
            const QString value = found.captured(1);
            lines.removeOne(line);
            return value;
        }
    }
    return {};
}

/// A US state's postal code; empty for any other text.
QString stateCode(const QString &text)
{
    const QString name = QString(text).remove(u'.').simplified();
    const auto &states = usStates();
    if (const auto found = states.find(name.toLower()); found != states.end())
        return found->second;
    const QString code = name.toUpper();
    return std::ranges::any_of(states, [&code](const auto &state) { return state.second == code; }) ? code : QString();
}

/// "Asheville, NC 28801-1234"
bool takeUsPlace(ShippoAddress &to, const QString &line)
{
    static const QRegularExpression ending(u"^(.+?)[, ]+([0-9]{5}(?:-[0-9]{4})?)$"_s);
    const auto found = ending.match(line);
    if (!found.hasMatch())
        return false;
    const QString place = found.captured(1);
    static const QRegularExpression gap(u"[, ]+"_s);
    for (qsizetype at = place.indexOf(gap); at > 0; at = place.indexOf(gap, at + 1)) {
        const QString state = stateCode(place.mid(at + 1).remove(u','));
        if (state.isEmpty())
            continue;
        to.city = place.left(at);
        to.state = state;
        to.zip = found.captured(2);
        return true;
    }
    return false;
}

/// "75008 Paris", "London WC2N 4HS", "Montréal QC H2Y 1N3"
bool takeForeignPlace(ShippoAddress &to, const QString &line)
{
    static const QRegularExpression codeFirst(u"^((?:[A-Z]{1,2}-)?[0-9]{3,6}(?: ?[A-Z]{2}|-[0-9]{3,4})?) +(\\D+)$"_s);
    static const QRegularExpression codeLast(u"^(\\D+?)[, ]+([A-Z]{0,2}[0-9][0-9A-Z]*(?:[ -][0-9A-Z]{3,4})?)$"_s);
    static const QRegularExpression province(u"^(.+?)[, ]+([A-Z]{2,3})$"_s);
    if (const auto found = codeFirst.match(line); found.hasMatch()) {
        to.zip = found.captured(1);
        to.city = found.captured(2);
        return true;
    }
    const auto found = codeLast.match(line);
    if (!found.hasMatch())
        return false;
    to.city = found.captured(1);
    to.zip = found.captured(2);
    if (const auto split = province.match(to.city); split.hasMatch()) {
        to.city = split.captured(1);
        to.state = split.captured(2);
    }
    return true;
}

/// Name, company, street and unit from the lines above the place. The street is the first line with a number.
void takeHead(ShippoAddress &to, QStringList head)
{
    if (head.size() > 1 || (head.size() == 1 && !hasDigit(head[0])))
        to.name = head.takeFirst();
    const auto street = std::ranges::find_if(head, hasDigit);
    const qsizetype at = street == head.end() ? 0 : street - head.begin();
    to.company = head.mid(0, at).join(u", "_s);
    to.street1 = head.value(at);
    to.street2 = head.mid(at + 1).join(u", "_s);
}

} // namespace

std::optional<ShippoAddress> addressFromBlock(const QString &text)
{
    QStringList lines = linesOf(text);
    if (lines.size() < 2)
        return std::nullopt;
    static const QRegularExpression mail(u"^(?:e-?mail:? *)?([^\\s@]+@[^\\s@]+\\.[^\\s@]+)$"_s,
                                         QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression phone(
        u"^(?:(?:phone|tel|telephone|mobile|cell)[.:]* *)?([+(]?[0-9][0-9 ().\\-/]{8,})$"_s,
        QRegularExpression::CaseInsensitiveOption);
    ShippoAddress to;
    to.email = taken(lines, mail);
    to.phone = taken(lines, phone);
    if (lines.size() > 2 && !hasDigit(lines.last())) {
        if (const auto code = CountryCode::find(lines.last())) {
            to.country = *code;
            lines.removeLast();
        }
    }
    if (lines.size() < 2)
        return std::nullopt;
    const bool isAbroad = !to.country.isEmpty() && to.country != u"US";
    const bool hasPlace = isAbroad ? takeForeignPlace(to, lines.last()) : takeUsPlace(to, lines.last());
    if (!hasPlace)
        return std::nullopt;
    if (to.country.isEmpty())
        to.country = u"US"_s;
    takeHead(to, lines.mid(0, lines.size() - 1));
    return to;
}

} // namespace parcelory
