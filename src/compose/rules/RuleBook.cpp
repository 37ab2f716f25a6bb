#include "compose/rules/RuleBook.h"

#include "compose/Services.h"
#include "core/CountryCode.h"
#include "core/Deployment.h"
#include "core/Json.h"
#include "core/RecordField.h"
#include "core/UsStates.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

static void loadResources()
{
    Q_INIT_RESOURCE(rules); // a static library's resources are linked only if referenced
}

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString insurerSlot = u"{insurerExclusion}"_s;

/// A rule as the file has it.
struct RuleText {
    QString id, group, text, severity, source, checked;
    std::optional<QString> field;
    RuleCondition when;

    static constexpr auto fields()
    {
        using R = RuleText;
        return std::tuple{parcelory::field("id", &R::id),           parcelory::field("group", &R::group),
                          parcelory::field("text", &R::text),       parcelory::field("severity", &R::severity),
                          parcelory::field("field", &R::field),     parcelory::field("source", &R::source),
                          parcelory::field("checked", &R::checked), parcelory::field("when", &R::when)};
    }
};

template <class T>
using Words = QList<std::pair<QString, T>>;

const Words<RuleSeverity> severities = {
    {u"serious"_s, RuleSeverity::serious}, {u"warning"_s, RuleSeverity::warning}, {u"note"_s, RuleSeverity::note}};
const Words<RuleField> ruleFields = {{u"weight"_s, RuleField::weight},
                                     {u"size"_s, RuleField::size},
                                     {u"shipDate"_s, RuleField::shipDate},
                                     {u"insurance"_s, RuleField::insurance},
                                     {u"declaredValue"_s, RuleField::declaredValue}};
const QStringList knownCarriers = {u"usps"_s, u"fedex"_s};

template <class T>
T meaningOf(const QString &word, const Words<T> &words)
{
    for (const auto &[known, meaning] : words) {
        if (known == word)
            return meaning;
    }
    throw DecodeError(u"\"%1\" is no known word"_s.arg(word));
}

QDate dateOf(const QString &text)
{
    const QDate date = QDate::fromString(text, Qt::ISODate);
    if (!date.isValid())
        throw DecodeError(u"\"%1\" is no date"_s.arg(text));
    return date;
}

template <class R>
void requireKnownKeys(const Json &object)
{
    const auto isKnown = [](std::string_view key) {
        return std::apply([&](const auto &...entries) { return ((key == entries.name) || ...); }, R::fields());
    };
    if (!object.is_object())
        throw DecodeError(u"it is no object"_s);
    for (const auto &[key, value] : object.items()) {
        if (!isKnown(key))
            throw DecodeError(u"\"%1\" is no known key"_s.arg(QString::fromStdString(key)));
    }
}

void requireWords(const QStringList &words, const QStringList &known)
{
    for (const QString &word : words) {
        if (!known.contains(word))
            throw DecodeError(u"\"%1\" is no known word"_s.arg(word));
    }
}

/// A misspelled name would make a rule silent, or let it speak about what it excepts.
void requireNames(const std::optional<QStringList> &names, const QString &kind, bool (*isKnown)(const QString &))
{
    for (const QString &name : names.value_or(QStringList())) {
        if (!isKnown(name))
            throw DecodeError(u"\"%1\" is no known %2"_s.arg(name, kind));
    }
}

bool isService(const QString &name)
{
    return serviceClassFrom(name).has_value();
}

bool isCountry(const QString &name)
{
    return CountryCode::find(name) == name;
}

bool isState(const QString &name)
{
    return std::ranges::find(usStates(), name, &std::pair<const QString, QString>::second) != usStates().end();
}

Rule ruleOf(const Json &json)
{
    requireKnownKeys<RuleText>(json);
    if (const auto when = json.find("when"); when != json.end())
        requireKnownKeys<RuleCondition>(*when);
    RuleText text;
    detail::decodeValue(json, text, std::string(), Keys::asIs);
    for (const QString &part : {text.id, text.group, text.text}) {
        if (part.trimmed().isEmpty())
            throw DecodeError(u"a rule needs an id, a group and a text"_s);
    }
    if (text.when.carrier)
        requireWords({*text.when.carrier}, knownCarriers);
    requireWords(text.when.contents.value_or(QStringList()), Deployment::knownContents());
    for (const auto &services : {text.when.services, text.when.exceptServices})
        requireNames(services, u"service"_s, isService);
    for (const auto &countries : {text.when.countries, text.when.exceptCountries})
        requireNames(countries, u"country"_s, isCountry);
    requireNames(text.when.states, u"state"_s, isState);
    return {.id = text.id,
            .group = text.group,
            .text = text.text,
            .severity = meaningOf(text.severity, severities),
            .field = text.field ? std::optional(meaningOf(*text.field, ruleFields)) : std::nullopt,
            .source = text.source,
            .checked = dateOf(text.checked),
            .when = text.when};
}

int lineAt(const QByteArray &text, qsizetype position)
{
    return 1 + int(std::count(text.begin(), text.begin() + std::min(position, text.size()), '\n'));
}

/// Where the rules begin in a valid file: each rule is an object in the list in the file's object.
QList<qsizetype> placesOfRules(const QByteArray &text)
{
    constexpr int depthOfRules = 3;
    QList<qsizetype> places;
    int depth = 0;
    bool isInString = false;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (isInString && c == '\\')
            ++at;
        else if (c == '"')
            isInString = !isInString;
        else if (!isInString && (c == '[' || c == '{') && ++depth == depthOfRules)
            places.append(at);
        else if (!isInString && (c == ']' || c == '}'))
            --depth;
    }
    return places;
}

bool isAmong(const std::optional<QStringList> &list, const QString &text)
{
    return !list || list->contains(text);
}

bool isOver(const std::optional<double> &limit, double value)
{
    return !limit || value > *limit;
}

template <class T>
bool isSame(const std::optional<T> &wanted, const T &value)
{
    return !wanted || *wanted == value;
}

} // namespace

RuleFileError::RuleFileError(int line, const QString &reason)
    : DecodeError(u"line %1: %2"_s.arg(line).arg(reason)), m_line(line)
{
}

bool RuleCondition::holdsFor(const RuleParcel &parcel) const
{
    std::array sides = {parcel.length, parcel.width, parcel.height};
    std::ranges::sort(sides);
    const double girth = sides[2] + 2 * (sides[0] + sides[1]);
    constexpr double inchesOfFoot = 12;
    const double cubicFeet = sides[0] * sides[1] * sides[2] / (inchesOfFoot * inchesOfFoot * inchesOfFoot);
    const auto digits = std::ranges::count_if(parcel.tariffNumber, [](QChar c) { return c.isDigit(); });
    const auto words = parcel.description.split(u' ', Qt::SkipEmptyParts).size();
    const auto isWanted = [this](const QString &content) { return contents->contains(content); };
    return isSame(carrier, parcel.carrier) && isAmong(services, parcel.service) && isAmong(countries, parcel.country) &&
           !(exceptServices && exceptServices->contains(parcel.service)) &&
           !(exceptCountries && exceptCountries->contains(parcel.country)) && isAmong(states, parcel.state) &&
           (!contents || std::ranges::any_of(parcel.contents, isWanted)) && isSame(abroad, parcel.abroad) &&
           isSame(directSignature, parcel.directSignature) && isSame(coinContract, parcel.coinContract) &&
           isOver(valueOver, parcel.value) && isOver(insuredOver, parcel.insured) &&
           !(insuredFrom && parcel.insured < *insuredFrom) && isOver(poundsOver, parcel.pounds) &&
           isOver(longestOver, sides[2]) && isOver(girthOver, girth) && isOver(cubicFeetOver, cubicFeet) &&
           !(daysAheadOver && parcel.daysAhead <= *daysAheadOver) &&
           !(tariffDigitsUnder && digits >= *tariffDigitsUnder) &&
           !(descriptionWordsUnder && words >= *descriptionWordsUnder);
}

RuleBook RuleBook::builtIn()
{
    loadResources();
    QFile file(u":/us-shipping.json"_s);
    if (!file.open(QIODevice::ReadOnly))
        throw AppError(u"This build has no shipping rules."_s);
    return parse(file.readAll());
}

RuleBook RuleBook::parse(const QByteArray &json)
{
    if (const std::optional<qsizetype> fault = firstFault(json))
        throw RuleFileError(lineAt(json, *fault), u"it is not JSON"_s);
    int line = 1;
    try {
        const Json whole = parseJson(json);
        if (!whole.is_object() || !whole.contains("date") || !whole.contains("rules") || whole.size() != 2 ||
            !whole["rules"].is_array())
            throw DecodeError(u"it needs a \"date\" and a list of \"rules\", and nothing else"_s);
        QString date;
        detail::decodeValue(whole["date"], date, "date", Keys::asIs);
        RuleBook book{.date = dateOf(date), .rules = {}};
        const QList<qsizetype> places = placesOfRules(json);
        for (const Json &entry : whole["rules"]) {
            line = lineAt(json, places.value(book.rules.size()));
            const Rule rule = ruleOf(entry);
            if (std::ranges::find(book.rules, rule.id, &Rule::id) != book.rules.end())
                throw DecodeError(u"the id \"%1\" is used twice"_s.arg(rule.id));
            book.rules.append(rule);
        }
        return book;
    } catch (const RuleFileError &) {
        throw;
    } catch (const DecodeError &error) {
        throw RuleFileError(line, error.description());
    }
}

void RuleBook::setInsurerExclusion(const QString &text, const std::optional<QStringList> &contents)
{
    if (text.isEmpty())
        rules.removeIf([](const Rule &rule) { return rule.text == insurerSlot; });
    for (Rule &rule : rules) {
        if (contents && rule.text.contains(insurerSlot))
            rule.when.contents = contents;
        rule.text.replace(insurerSlot, text);
    }
}

QList<Rule> RuleBook::advise(const RuleParcel &parcel, const QStringList &off) const
{
    QList<Rule> advice;
    for (const auto &[word, severity] : severities) {
        for (const Rule &rule : rules) {
            if (rule.severity == severity && !off.contains(rule.id) && rule.when.holdsFor(parcel))
                advice.append(rule);
        }
    }
    return advice;
}

} // namespace parcelory
