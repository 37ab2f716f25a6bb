#include "core/CountryCode.h"

#include <QHash>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory::CountryCode {
using namespace Qt::StringLiterals;

namespace {

constexpr std::pair<QStringView, QStringView> aliases[] = {
    {u"USA", u"US"},
    {u"US", u"US"},
    {u"UNITED STATES", u"US"},
    {u"UNITED STATES OF AMERICA", u"US"},
    {u"AMERICA", u"US"},
    {u"UK", u"GB"},
    {u"GREAT BRITAIN", u"GB"},
    {u"ENGLAND", u"GB"},
    {u"SCOTLAND", u"GB"},
    {u"WALES", u"GB"},
    {u"NORTHERN IRELAND", u"GB"},
    {u"SOUTH KOREA", u"KR"},
    {u"KOREA SOUTH", u"KR"},
    {u"REPUBLIC OF KOREA", u"KR"},
    {u"NORTH KOREA", u"KP"},
    {u"KOREA NORTH", u"KP"},
    {u"RUSSIA", u"RU"},
    {u"TAIWAN", u"TW"},
    {u"VIETNAM", u"VN"},
    {u"CZECH REPUBLIC", u"CZ"},
    {u"CZECHIA", u"CZ"},
    {u"IVORY COAST", u"CI"},
    {u"MACAU", u"MO"},
    {u"HONG KONG", u"HK"},
    {u"UAE", u"AE"},
    {u"UNITED ARAB EMIRATES", u"AE"},
    {u"HOLLAND", u"NL"},
    {u"NETHERLANDS", u"NL"},
};

/// Names that forms, carriers and ISO 3166 use and that are not the locale's English names. Only their words count: see
/// `wordsOf`.
constexpr std::pair<QStringView, QStringView> variants[] = {
    {u"U S A", u"US"},
    {u"Britain", u"GB"},
    {u"United Kingdom of Great Britain and Northern Ireland", u"GB"},
    {u"Republic of Ireland", u"IE"},
    {u"Antigua", u"AG"},
    {u"Bolivia, Plurinational State of", u"BO"},
    {u"Bonaire, Sint Eustatius and Saba", u"BQ"},
    {u"Bosnia", u"BA"},
    {u"Brunei Darussalam", u"BN"},
    {u"Burma", u"MM"},
    {u"Cabo Verde", u"CV"},
    {u"Cape Verde", u"CV"},
    {u"People's Republic of China", u"CN"},
    {u"P R China", u"CN"},
    {u"Congo, Democratic Republic of the", u"CD"},
    {u"DR Congo", u"CD"},
    {u"Congo, Republic of the", u"CG"},
    {u"East Timor", u"TL"},
    {u"Falkland Islands (Malvinas)", u"FK"},
    {u"French Southern and Antarctic Lands", u"TF"},
    {u"Hong Kong SAR", u"HK"},
    {u"Iran, Islamic Republic of", u"IR"},
    {u"Korea, Democratic People's Republic of", u"KP"},
    {u"Lao People's Democratic Republic", u"LA"},
    {u"Macao", u"MO"},
    {u"Macao SAR", u"MO"},
    {u"Macau SAR", u"MO"},
    {u"Macedonia", u"MK"},
    {u"Republic of North Macedonia", u"MK"},
    {u"Micronesia, Federated States of", u"FM"},
    {u"Moldova, Republic of", u"MD"},
    {u"Myanmar", u"MM"},
    {u"Palestine, State of", u"PS"},
    {u"Palestine", u"PS"},
    {u"Pitcairn", u"PN"},
    {u"Russian Federation", u"RU"},
    {u"Saint Helena, Ascension and Tristan da Cunha", u"SH"},
    {u"Saint Martin (French part)", u"MF"},
    {u"Sint Maarten (Dutch part)", u"SX"},
    {u"Slovak Republic", u"SK"},
    {u"Swaziland", u"SZ"},
    {u"Syrian Arab Republic", u"SY"},
    {u"Taiwan, Province of China", u"TW"},
    {u"Tanzania, United Republic of", u"TZ"},
    {u"Turkey", u"TR"},
    {u"Türkiye", u"TR"},
    {u"Republic of Türkiye", u"TR"},
    {u"Vatican", u"VA"},
    {u"Holy See", u"VA"},
    {u"Venezuela, Bolivarian Republic of", u"VE"},
    {u"Viet Nam", u"VN"},
    {u"Virgin Islands, British", u"VG"},
    {u"Virgin Islands, U.S.", u"VI"},
    {u"US Virgin Islands", u"VI"},
};

/// The words of a name in a fixed order, in capitals and without accents, articles and conjunctions: "Côte d'Ivoire" is
/// "COTE DIVOIRE", and "Korea, Republic of" is the same as "the Republic of Korea".
QString wordsOf(const QString &name)
{
    QString plain;
    for (const QChar letter : name.normalized(QString::NormalizationForm_KD).toUpper()) {
        if (letter.isLetterOrNumber() || letter.category() == QChar::Mark_SpacingCombining || letter.isSurrogate())
            plain += letter;
        else if (!letter.isMark() && !u".'’‘ʼ`´"_s.contains(letter))
            plain += u' ';
    }
    QStringList words;
    for (const QString &word : plain.split(u' ', Qt::SkipEmptyParts)) {
        if (word == u"SAINT")
            words += u"ST"_s;
        else if (word != u"THE" && word != u"AND" && word != u"OF")
            words += word;
    }
    std::ranges::sort(words);
    return words.join(u' ');
}

QString countryName(const icu::Locale &country, const icu::Locale &language)
{
    icu::UnicodeString name;
    country.getDisplayCountry(language, name);
    return QString::fromUtf16(name.getBuffer(), name.length());
}

struct Regions {
    QHash<QString, QString> names;   ///< in English, by code
    QHash<QString, QString> nameMap; ///< codes by English name and alias, in capitals

    Regions()
    {
        const icu::Locale english("en", "US");
        for (const char *const *code = icu::Locale::getISOCountries(); *code; ++code) {
            const QString alpha2 = QString::fromLatin1(*code).toUpper();
            const QString text = countryName(icu::Locale("", *code), english);
            names.insert(alpha2, text.isEmpty() ? alpha2 : text);
            if (!text.isEmpty())
                nameMap.insert(text.toUpper(), alpha2);
        }
        for (const auto &[name, code] : aliases) // after the locale's names, so that an alias wins
            nameMap.insert(name.toString(), code.toString());
    }
};

const Regions &regions()
{
    static const Regions known;
    return known;
}

/// Codes by the words of names: the English names, the variants, and each country's name in its own languages. Built
/// for the first name that `Regions` does not know.
QHash<QString, QString> codesByWords()
{
    QHash<QString, QString> native;
    int32_t count = 0;
    const icu::Locale *locales = icu::Locale::getAvailableLocales(count);
    for (int32_t at = 0; at < count; ++at) {
        const QString code = QString::fromLatin1(locales[at].getCountry());
        const QString words = wordsOf(countryName(locales[at], locales[at]));
        if (!regions().names.contains(code) || words.isEmpty())
            continue;
        const QString known = native.value(words, code);
        native.insert(words, known == code ? code : QString()); // two countries share the name, so it names neither
    }
    QHash<QString, QString> codes;
    for (auto name = native.cbegin(); name != native.cend(); ++name) {
        if (!name->isEmpty())
            codes.insert(name.key(), *name);
    }
    for (auto name = regions().nameMap.cbegin(); name != regions().nameMap.cend(); ++name)
        codes.insert(wordsOf(name.key()), *name);
    for (const auto &[name, code] : variants)
        codes.insert(wordsOf(name.toString()), code.toString());
    return codes;
}

} // namespace

std::optional<QString> find(const QString &text)
{
    const QString upper = text.trimmed().toUpper();
    const Regions &known = regions();
    if (upper.size() == 2 && known.names.contains(upper))
        return upper;
    if (const auto name = known.nameMap.find(upper); name != known.nameMap.end())
        return *name;
    static const QHash<QString, QString> byWords = codesByWords();
    const auto words = byWords.find(wordsOf(upper));
    return words == byWords.end() ? std::nullopt : std::optional(*words);
}

QString alpha2(const QString &text)
{
    return find(text).value_or(text.trimmed().toUpper());
}

QString displayName(const QString &text)
{
    return regions().names.value(alpha2(text), text.trimmed());
}

} // namespace parcelory::CountryCode
