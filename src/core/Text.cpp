#include "core/Text.h"

#include <QTextBoundaryFinder>
#include <QUtf8StringView>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

QStringList characters(const QString &text)
{
    QStringList result;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end > start; end = finder.toNextBoundary()) {
        result += text.mid(start, end - start);
        start = end;
    }
    return result;
}

QString firstCharacters(const QString &text, qsizetype count)
{
    if (text.size() <= count) // no text has more characters than code units
        return text;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype end = 0;
    for (qsizetype taken = 0; taken < count; ++taken) {
        const qsizetype next = finder.toNextBoundary();
        if (next < 0)
            return text;
        end = next;
    }
    return text.left(end);
}

QString utf8OrEmpty(const QByteArray &bytes)
{
    const QUtf8StringView text(bytes);
    return text.isValidUtf8() ? text.toString() : QString();
}

QString trimBlanks(const QString &text)
{
    const auto isBlank = [](QChar c) { return c == u' ' || c == u'\t'; };
    qsizetype start = 0, end = text.size();
    while (start < end && isBlank(text[start]))
        ++start;
    while (end > start && isBlank(text[end - 1]))
        --end;
    return text.mid(start, end - start);
}

namespace {

/// True for digits with a point at most and a sign before them: no exponent, no hexadecimal.
template <class View>
bool isPlainNumber(View text)
{
    if (text.startsWith(u'+') || text.startsWith(u'-'))
        text = text.sliced(1);
    qsizetype digits = 0, points = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar c = text[at];
        digits += c >= u'0' && c <= u'9';
        points += c == u'.';
    }
    return digits > 0 && points <= 1 && digits + points == text.size();
}

} // namespace

std::optional<double> decimal(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (!isPlainNumber(QStringView(trimmed)))
        return std::nullopt;
    bool ok = false;
    const double value = trimmed.toDouble(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

std::optional<double> decimal(QByteArrayView text)
{
    if (!isPlainNumber(QLatin1StringView(text))) // there may be blanks of any kind around it
        return decimal(QString::fromUtf8(text));
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

double decimalOrZero(const QString &text)
{
    return decimal(text).value_or(0);
}

namespace {

/// Formats numbers like C's printf, but independent of the locale; QString::number rounds halves differently.
QString written(double value, std::chars_format format, int precision)
{
    char text[512]; // the longest double has 309 digits before the point
    const auto end = std::to_chars(std::begin(text), std::end(text), value, format, precision).ptr;
    return QString::fromLatin1(text, end - text);
}

} // namespace

QString fixed(double value, int places)
{
    return written(value, std::chars_format::fixed, places);
}

QString general(double value)
{
    return written(value, std::chars_format::general, 6);
}

QString shortest(double value, int places)
{
    QString text = fixed(value, places);
    if (text.contains(u'.')) {
        while (text.endsWith(u'0'))
            text.chop(1);
        if (text.endsWith(u'.'))
            text.chop(1);
    }
    return text;
}

QString joinPresent(const QStringList &parts, const QString &separator)
{
    QStringList present;
    for (const QString &part : parts) {
        if (!part.isEmpty())
            present += part;
    }
    return present.join(separator);
}

QString isolated(const QString &name)
{
    const bool isRightToLeft = std::ranges::any_of(
        name, [](QChar letter) { return letter.direction() == QChar::DirR || letter.direction() == QChar::DirAL; });
    return isRightToLeft ? u'\u2068' + name + u'\u2069' : name; // FIRST STRONG ISOLATE, POP DIRECTIONAL ISOLATE
}

QString groupsOfFour(const QString &number)
{
    QString grouped;
    for (qsizetype at = 0; at < number.size(); at += 4)
        grouped += (at ? u" "_s : QString()) + number.mid(at, 4);
    return grouped;
}

} // namespace parcelory
