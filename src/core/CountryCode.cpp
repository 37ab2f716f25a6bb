#include "core/CountryCode.h"

#include <QHash>
#include <unicode/locid.h>
#include <unicode/unistr.h>

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

/// `text` is uppercase. Removes dots, turns commas into blanks and collapses runs of blanks.
QString normalize(QString text)
{
    return text.remove(u'.').replace(u',', u' ').simplified();
}

struct Regions {
    QHash<QString, QString> names; ///< in English, by code
    QHash<QString, QString> nameMap;

    Regions()
    {
        const icu::Locale english("en", "US");
        for (const char *const *code = icu::Locale::getISOCountries(); *code; ++code) {
            const QString alpha2 = QString::fromLatin1(*code).toUpper();
            icu::UnicodeString name;
            icu::Locale("", *code).getDisplayCountry(english, name);
            const QString text = QString::fromUtf16(name.getBuffer(), name.length());
            names.insert(alpha2, text.isEmpty() ? alpha2 : text);
            if (!text.isEmpty())
                nameMap.insert(normalize(text.toUpper()), alpha2);
        }
        for (const auto &[name, code] : aliases) // after the locale's names, so that an alias wins
            nameMap.insert(normalize(name.toString()), code.toString());
    }
};

const Regions &regions()
{
    static const Regions known;
    return known;
}

} // namespace

QString alpha2(const QString &text)
{
    QString upper = text.trimmed().toUpper();
    if (upper.size() == 2 && regions().names.contains(upper))
        return upper;
    return regions().nameMap.value(normalize(upper), upper);
}

QString displayName(const QString &text)
{
    return regions().names.value(alpha2(text), text.trimmed());
}

} // namespace parcelory::CountryCode
