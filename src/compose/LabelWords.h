#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace parcelory {

/// How texts on labels are compared.
namespace LabelWords {

/// The words of a text in Latin capitals without accents: "Søren O'Brien-Müller" is SOREN, OBRIEN, MULLER. Cyrillic and
/// Greek are romanized; letters of other scripts stay. "#" is a word of its own.
QStringList folded(const QString &text);

/// True if a word has letters that the comparison does not know in Latin letters.
bool isForeignScript(const QString &text);

/// True if `label` is `parcel` as carriers print it: equal, spelled another way (MUELLER, MULLER), with lost letters
/// ("M?LLER"), or romanized by another rule (KHRUSHCHEV, CHRUSCHTSCHOW).
bool isSameWord(const QString &label, const QString &parcel, bool isRomanized);

/// True if `label` is a shortened form: ST for SAINT, ASHEV for ASHEVILLE.
bool isShortForm(const QString &label, const QString &parcel);

/// The house numbers and the units of street lines.
struct Street {
    QStringList numbers; ///< words with a digit that belong to no unit; without ordinals such as 5TH
    QStringList units;   ///< "3B" of "Apt 3B"
    QString unitText;    ///< "APT 3B"
};
Street streetOf(const QString &lines);

/// True if the words are nothing but a unit with its designator.
bool isOnlyUnit(const QString &line);

} // namespace LabelWords
} // namespace parcelory
