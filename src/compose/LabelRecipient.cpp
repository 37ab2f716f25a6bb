#include "compose/LabelRecipient.h"

#include "compose/Destination.h"
#include "compose/LabelWords.h"
#include "core/CountryCode.h"
#include "core/UsStates.h"

#include <QRegularExpression>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

using LabelWords::folded;

/// A carrier cuts a line that is longer.
constexpr qsizetype shortestCutLine = 28;

const QStringList titles = {u"MR"_s, u"MRS"_s, u"MS"_s,  u"DR"_s,  u"PROF"_s, u"JR"_s,        u"SR"_s,
                            u"II"_s, u"III"_s, u"IV"_s,  u"ESQ"_s, u"ATTN"_s, u"ATTENTION"_s, u"CO"_s,
                            u"C"_s,  u"O"_s,   u"AND"_s, u"THE"_s, u"OF"_s,   u"REV"_s,       u"HON"_s};

bool hasDigit(const QString &word)
{
    return std::ranges::any_of(word, [](QChar c) { return c.isDigit(); });
}

/// A row's words without "SHIP TO".
QStringList wordsOf(const LabelRow &row)
{
    QStringList words = folded(row.text);
    for (const QString &caption : {u"DELIVER"_s, u"SHIP"_s, u"TO"_s, u"RECIPIENT"_s}) {
        if (words.size() > 1 && words.first() == caption)
            words.removeFirst();
    }
    return words;
}

/// The rows of an address: `street` and the rows up to `place` are the street, the rows before it the name and the
/// company.
class Address {
public:
    Address(const LabelBlock &block, const ShippoAddress &to) : m_to(to), m_isAbroad(isInternationalCountry(to.country))
    {
        for (const LabelRow &row : block)
            m_rows.append({row, wordsOf(row)});
        findStreet();
        findPlace();
        findNames();
    }

    LabelFinding name() const;
    std::optional<LabelFinding> houseNumber() const;
    std::optional<LabelFinding> unit() const;
    QList<LabelFinding> placeAtHome() const;
    QList<LabelFinding> placeAbroad() const;
    bool isAbroad() const { return m_isAbroad; }

private:
    struct Row {
        LabelRow printed;
        QStringList words;
    };

    void findStreet();
    void findPlace();
    void findNames();
    qsizetype overlap(const Row &row) const;
    QString streetText() const;
    QList<qsizetype> elements(qsizetype from, qsizetype to) const;
    bool isCut() const;
    LabelFinding postcodeAbroad() const;
    LabelFinding country() const;

    const ShippoAddress &m_to;
    bool m_isAbroad;
    QList<Row> m_rows;
    qsizetype m_names = 0, m_street = 0, m_place = 0; ///< first rows; each part ends where the next begins
    bool m_hasStreet = false, m_hasPlace = false;
};

qsizetype Address::overlap(const Row &row) const
{
    qsizetype count = 0;
    for (const QString &word : folded(m_to.street1 + u' ' + m_to.street2))
        count += row.words.contains(word) ? 1 : 0;
    return count;
}

void Address::findStreet()
{
    // A name may share a word with a street, so a number counts as much as two words.
    qsizetype best = 0;
    for (qsizetype at = 0; at < m_rows.size(); ++at) {
        const bool isPlace = !m_isAbroad && placeOf(m_rows[at].printed.text);
        const qsizetype words = isPlace ? 0 : overlap(m_rows[at]);
        const bool hasNumber = std::ranges::any_of(m_rows[at].words, hasDigit);
        const qsizetype points = words == 0 ? 0 : words * 2 + (hasNumber ? 3 : 0);
        if (points > best) {
            best = points;
            m_street = at;
            m_hasStreet = true;
        }
    }
    for (qsizetype at = 1; at < m_rows.size() && !m_hasStreet; ++at) { // of another address
        if (!LabelWords::streetOf(m_rows[at].printed.text).numbers.isEmpty() && !placeOf(m_rows[at].printed.text)) {
            m_street = at;
            m_hasStreet = true;
        }
    }
    if (!m_hasStreet)
        m_street = std::min<qsizetype>(1, m_rows.size());
    const QStringList numbers = LabelWords::streetOf(m_to.street1).numbers;
    while (m_hasStreet && m_street > 0) {
        const Row &above = m_rows[m_street - 1];
        const bool hasNumber = !numbers.isEmpty() && above.words.contains(numbers.first());
        if (!LabelWords::isOnlyUnit(above.printed.text) && !(hasNumber && overlap(above) >= 2))
            break;
        --m_street;
    }
}

void Address::findPlace()
{
    const QString zip = folded(m_to.zip).join(QString()), city = folded(m_to.city).join(QString());
    m_place = m_rows.size();
    for (qsizetype at = m_street; at < m_rows.size() && !m_hasPlace; ++at) {
        const QString joined = m_rows[at].words.join(QString());
        const bool isFound = m_isAbroad ? at > m_street && ((!zip.isEmpty() && joined.contains(zip)) ||
                                                            (!city.isEmpty() && joined.contains(city)))
                                        : placeOf(m_rows[at].printed.text).has_value();
        if (isFound) {
            m_place = at;
            m_hasPlace = true;
        }
    }
    if (m_isAbroad && !m_hasPlace && m_street + 1 < m_rows.size())
        m_place = m_street + 1;
}

/// The names begin below the last row of another address.
void Address::findNames()
{
    for (qsizetype at = 0; at < m_street; ++at) {
        if (placeOf(m_rows[at].printed.text))
            m_names = at + 1;
    }
}

QString Address::streetText() const
{
    QStringList lines;
    for (qsizetype at = m_street; at < m_place; ++at)
        lines += m_rows[at].words.join(u' ');
    return lines.join(u' ');
}

QList<qsizetype> Address::elements(qsizetype from, qsizetype to) const
{
    QList<qsizetype> result;
    for (qsizetype at = from; at < to && at < m_rows.size(); ++at)
        result += m_rows[at].printed.elements;
    return result;
}

/// True if the street on the label ends early because it is too long.
bool Address::isCut() const
{
    const QString printed = streetText(), whole = folded(m_to.street1 + u' ' + m_to.street2).join(u' ');
    return printed.size() >= shortestCutLine && printed.size() < whole.size() && whole.startsWith(printed);
}

LabelFinding Address::name() const
{
    const bool usesCompany = m_to.name.trimmed().isEmpty();
    const QString &whole = usesCompany ? m_to.company : m_to.name;
    LabelFinding finding{LabelItem::name, LabelMatch::notFound, whole, {}, elements(m_names, m_street)};
    QStringList printed, lines;
    for (qsizetype at = m_names; at < m_street; ++at) {
        printed += m_rows[at].words;
        lines += m_rows[at].printed.text;
    }
    const QStringList company = usesCompany ? QStringList() : folded(m_to.company);
    const QStringList parcel = folded(whole);
    const bool isRomanized =
        LabelWords::isForeignScript(whole) || whole.toUpper() != QString::fromLatin1(whole.toUpper().toLatin1());
    const QString joined = printed.join(QString());
    if (printed.isEmpty() || parcel.isEmpty())
        return finding;
    if (LabelWords::isForeignScript(whole)) {
        finding.match = joined.contains(parcel.join(QString())) ? LabelMatch::same : LabelMatch::unchecked;
        finding.onLabel = lines.join(u", "_s);
        return finding;
    }
    QStringList missing, others = printed;
    bool hasAny = false;
    for (const QString &word : parcel) {
        const auto fits = [&](const QString &other) {
            return LabelWords::isSameWord(other, word, isRomanized) || (word.startsWith(other) && !other.isEmpty());
        };
        const auto found = std::ranges::find_if(others, fits);
        if (found != others.end()) {
            others.erase(found);
            hasAny = true;
        } else if (!titles.contains(word)) {
            missing += word;
        }
    }
    for (const QString &word : company) {
        const auto fits = [&](const QString &other) { return LabelWords::isShortForm(other, word); };
        if (const auto found = std::ranges::find_if(others, fits); found != others.end())
            others.erase(found);
    }
    others.removeIf([](const QString &word) { return titles.contains(word); });
    QStringList ownLines; // without the company
    for (qsizetype at = m_names; at < m_street; ++at) {
        if (company.isEmpty() || m_rows[at].words != company)
            ownLines += m_rows[at].printed.text;
    }
    finding.onLabel = ownLines.join(u", "_s);
    if (missing.isEmpty() || joined.contains(parcel.join(QString())))
        finding.match = LabelMatch::same;
    else if (!others.isEmpty())
        finding.match = LabelMatch::different;
    else
        finding.match = hasAny ? LabelMatch::same : LabelMatch::notFound; // the carrier shortened it
    return finding;
}

std::optional<LabelFinding> Address::houseNumber() const
{
    const LabelWords::Street parcel = LabelWords::streetOf(m_to.street1 + u' ' + m_to.street2);
    if (parcel.numbers.isEmpty())
        return std::nullopt;
    LabelFinding finding{
        LabelItem::houseNumber, LabelMatch::notFound, parcel.numbers.join(u' '), {}, elements(m_street, m_place)};
    if (!m_hasStreet)
        return finding;
    const LabelWords::Street label = LabelWords::streetOf(streetText());
    QStringList words = folded(streetText());
    // A number that occurs twice has to be there twice.
    const bool isAll =
        std::ranges::all_of(parcel.numbers, [&](const QString &number) { return words.removeOne(number); });
    finding.onLabel = label.numbers.join(u' ');
    const bool mayBeCut = isCut() && label.numbers.contains(parcel.numbers.first());
    finding.match = isAll ? LabelMatch::same : mayBeCut ? LabelMatch::notFound : LabelMatch::different;
    return finding;
}

std::optional<LabelFinding> Address::unit() const
{
    const LabelWords::Street parcel = LabelWords::streetOf(m_to.street1 + u' ' + m_to.street2);
    if (folded(m_to.street1 + m_to.street2).isEmpty())
        return std::nullopt; // the street is not known
    const LabelWords::Street label = m_hasStreet ? LabelWords::streetOf(streetText()) : LabelWords::Street();
    LabelFinding finding{LabelItem::unit, LabelMatch::notFound, parcel.unitText, label.unitText,
                         elements(m_street, m_place)};
    if (parcel.units.isEmpty()) {
        const QStringList known = folded(m_to.street1 + u' ' + m_to.street2);
        const bool isNew = std::ranges::any_of(label.units, [&](const QString &id) { return !known.contains(id); });
        if (!isNew)
            return std::nullopt;
        finding.match = LabelMatch::different;
        return finding;
    }
    if (!m_hasStreet)
        return finding;
    const QStringList words = folded(streetText());
    const bool isAll = std::ranges::all_of(parcel.units, [&](const QString &id) {
        return label.units.contains(id) || label.numbers.contains(id) || (!words.isEmpty() && words.last() == id);
    });
    finding.match = isAll ? LabelMatch::same : LabelMatch::different; // also if the carrier has cut it off
    return finding;
}

QList<LabelFinding> Address::placeAtHome() const
{
    const QList<qsizetype> where = elements(m_place, m_place + 1);
    LabelFinding city{LabelItem::city, LabelMatch::notFound, m_to.city, {}, where};
    LabelFinding state{LabelItem::state, LabelMatch::notFound, m_to.state, {}, where};
    LabelFinding zip{LabelItem::zip, LabelMatch::notFound, m_to.zip, {}, where};
    const auto place = m_hasPlace ? placeOf(m_rows[m_place].printed.text) : std::nullopt;
    if (place) {
        const auto named = usStates().find(m_to.state.trimmed().toLower());
        const QString code = named == usStates().end() ? m_to.state.trimmed().toUpper() : named->second;
        const QString parcelZip = QString(m_to.zip).remove(u'-').remove(u' ');
        const bool isPlusSame = place->plus4.isEmpty() || parcelZip.size() < 9 || parcelZip.mid(5, 4) == place->plus4;
        zip.onLabel = place->zip + (place->plus4.isEmpty() ? QString() : u'-' + place->plus4);
        zip.match = parcelZip.left(5) == place->zip && isPlusSame ? LabelMatch::same : LabelMatch::different;
        state.onLabel = place->state;
        state.match = place->state == code ? LabelMatch::same : LabelMatch::different;

        LabelRow row{place->city, {}};
        const QStringList printed = wordsOf(row), parcel = folded(m_to.city);
        city.onLabel = printed.join(u' ');
        const bool isShort = printed.size() == parcel.size() &&
                             std::equal(printed.begin(), printed.end(), parcel.begin(), &LabelWords::isShortForm);
        const QString joined = printed.join(QString()), whole = parcel.join(QString());
        city.match =
            isShort || joined.endsWith(whole) || whole.startsWith(joined) ? LabelMatch::same : LabelMatch::different;
        if (joined.isEmpty())
            city.match = LabelMatch::notFound;
    }
    QList<LabelFinding> findings = {city, state, zip};
    findings.removeIf([](const LabelFinding &finding) { return finding.onParcel.trimmed().isEmpty(); });
    return findings;
}

LabelFinding Address::postcodeAbroad() const
{
    LabelFinding finding{LabelItem::zip, LabelMatch::notFound, m_to.zip, {}, elements(m_place, m_rows.size())};
    const QString code = folded(m_to.zip).join(QString());
    QStringList others;
    for (qsizetype at = m_place; at < m_rows.size(); ++at) {
        if (m_rows[at].words.join(QString()).contains(code)) {
            finding.match = LabelMatch::same;
            finding.onLabel = m_to.zip;
            return finding;
        }
        for (const QString &word : m_rows[at].words) {
            if (hasDigit(word))
                others += word;
        }
    }
    if (!others.isEmpty()) {
        finding.match = LabelMatch::different;
        finding.onLabel = others.join(u' ');
    }
    return finding;
}

LabelFinding Address::country() const
{
    const QString code = CountryCode::alpha2(m_to.country);
    LabelFinding finding{LabelItem::country, LabelMatch::notFound, CountryCode::displayName(m_to.country), {}, {}};
    for (qsizetype at = m_rows.size() - 1; at >= m_place && at >= 0; --at) {
        QStringList words = m_rows[at].printed.text.split(u' ', Qt::SkipEmptyParts);
        while (!words.isEmpty()) { // the country may follow the place
            const QString text = words.join(u' ').remove(u'(').remove(u')');
            const bool isName = text.size() > 2 || words.size() == 1;
            const auto found = isName ? CountryCode::find(text) : std::nullopt;
            const bool isWholeRow = words.size() == m_rows[at].printed.text.split(u' ', Qt::SkipEmptyParts).size();
            if (found && (*found == code || (isWholeRow && finding.match == LabelMatch::notFound))) {
                finding = {LabelItem::country, *found == code ? LabelMatch::same : LabelMatch::different,
                           finding.onParcel, text, m_rows[at].printed.elements};
                if (*found == code)
                    return finding;
            }
            words.removeFirst();
        }
    }
    return finding;
}

QList<LabelFinding> Address::placeAbroad() const
{
    LabelFinding city{LabelItem::city, LabelMatch::notFound, m_to.city, {}, elements(m_place, m_place + 1)};
    const QString whole = folded(m_to.city).join(QString());
    for (qsizetype at = m_place; at < m_rows.size(); ++at) {
        for (const QString &word : folded(m_to.city)) {
            if (m_rows[at].words.join(QString()).contains(whole) || m_rows[at].words.contains(word)) {
                city.match = LabelMatch::same;
                city.onLabel = m_to.city;
            }
        }
    }
    if (LabelWords::isForeignScript(m_to.city) && city.match == LabelMatch::notFound)
        city.match = LabelMatch::unchecked;
    QList<LabelFinding> findings = {city};
    if (!m_to.zip.trimmed().isEmpty())
        findings += postcodeAbroad();
    findings += country();
    return findings;
}

} // namespace

QList<LabelFinding> compareRecipient(const LabelBlock &block, const ShippoAddress &to)
{
    const Address address(block, to);
    QList<LabelFinding> findings = {address.name()};
    if (const auto number = address.houseNumber())
        findings += *number;
    if (const auto unit = address.unit())
        findings += *unit;
    return findings + (address.isAbroad() ? address.placeAbroad() : address.placeAtHome());
}

} // namespace parcelory
