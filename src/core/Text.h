#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace parcelory {

/// The user-perceived characters of a text: a surrogate pair or a letter with its accents is one character.
QStringList characters(const QString &text);

/// The first `count` user-perceived characters; never splits a character.
QString firstCharacters(const QString &text, qsizetype count);

/// The text of UTF-8 bytes; empty if they are not valid UTF-8.
QString utf8OrEmpty(const QByteArray &bytes);

/// Without the spaces and tabs at both ends; line breaks stay.
QString trimBlanks(const QString &text);

/// A plain decimal number ("24.5", ".75", "-3"), blanks around it allowed. No exponent, no thousands separator.
std::optional<double> decimal(const QString &text);
/// The same for UTF-8.
std::optional<double> decimal(QByteArrayView text);

/// The number in a typed text; 0 if the text is not a number.
double decimalOrZero(const QString &text);

/// A decimal text with exactly `places` digits after the point, as "%.2f" formats it, in any locale.
QString fixed(double value, int places);

/// At most six significant digits, as "%g" gives them: 8.5, 24, 1.23457e+06.
QString general(double value);

/// The shortest decimal text of at most `places` digits after the point: 24.5, 8, 0.0625.
QString shortest(double value, int places);

/// The non-empty parts, joined.
QString joinPresent(const QStringList &parts, const QString &separator);

/// A name with right-to-left letters, between marks that keep it in its place among the words and numbers around it on
/// the screen; any other name as it is.
QString isolated(const QString &name);

/// A tracking number as people read it: "9205 5901 7554".
QString groupsOfFour(const QString &number);

} // namespace parcelory
