#pragma once

#include <QByteArray>
#include <QString>

namespace parcelory {

/// The bytes of a field in which each pair of hexadecimal digits after `sign` stands for a byte; a sign without two
/// digits stays.
QByteArray withoutHexEscapes(const QByteArray &data, char sign);

/// The text of a field in the character set of the ^CI command with this number (28 is UTF-8, 27 Windows' Latin, below
/// 14 the printers' own page 850). Bytes that are not UTF-8 although they should be are read as page 850.
QString fieldText(const QByteArray &bytes, int characterSet);

/// The text of a field of several lines: `\&` starts a line, `\\` is a backslash, `\-` a place to divide a word.
QString blockText(const QString &text);

} // namespace parcelory
