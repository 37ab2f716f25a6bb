#include "core/Accents.h"

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Letters that Unicode does not decompose into a letter and an accent.
QString plainLetter(QChar letter)
{
    switch (letter.unicode()) {
    case u'ß':
        return u"ss"_s;
    case u'æ':
        return u"ae"_s;
    case u'Æ':
        return u"AE"_s;
    case u'œ':
        return u"oe"_s;
    case u'Œ':
        return u"OE"_s;
    case u'ø':
        return u"o"_s;
    case u'Ø':
        return u"O"_s;
    case u'ł':
        return u"l"_s;
    case u'Ł':
        return u"L"_s;
    case u'đ':
        return u"d"_s;
    case u'Đ':
        return u"D"_s;
    case u'ħ':
        return u"h"_s;
    case u'Ħ':
        return u"H"_s;
    default:
        return letter;
    }
}

} // namespace

QString withoutAccents(const QString &text)
{
    if (std::ranges::all_of(text, [](QChar c) { return c.unicode() < 0x80; }))
        return text;
    QString plain;
    for (const QChar letter : text.normalized(QString::NormalizationForm_D)) {
        if (letter.category() != QChar::Mark_NonSpacing)
            plain += letter.unicode() < 0x80 ? QString(letter) : plainLetter(letter);
    }
    return plain.normalized(QString::NormalizationForm_C);
}

QString plainForm(const QString &text)
{
    return withoutAccents(text.toCaseFolded());
}

} // namespace parcelory
