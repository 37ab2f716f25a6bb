#include "addressbook/VCardLine.h"

#include <QStringDecoder>
#include <QUtf8StringView>

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The first position of `wanted` outside quotation marks; -1 if all are quoted or missing.
qsizetype findUnquoted(QByteArrayView text, char wanted, qsizetype from = 0)
{
    bool isQuoted = false;
    for (qsizetype at = from; at < text.size(); ++at) {
        if (text[at] == '"')
            isQuoted = !isQuoted;
        else if (text[at] == wanted && !isQuoted)
            return at;
    }
    return -1;
}

std::pair<QByteArray, QByteArray> parameterOf(QByteArrayView text)
{
    const qsizetype equals = text.indexOf('=');
    QByteArray value = text.sliced(equals + 1).trimmed().toByteArray();
    return {equals < 0 ? QByteArray() : text.first(equals).trimmed().toByteArray().toUpper(), value.replace('"', "")};
}

/// Parses a property's first line; nothing if it has no colon.
std::optional<VCardProperty> propertyOf(QByteArrayView line)
{
    // A quotation mark that is never closed hides the colon, so fall back to the first colon.
    const qsizetype unquoted = findUnquoted(line, ':'), colon = unquoted < 0 ? line.indexOf(':') : unquoted;
    if (colon < 0)
        return std::nullopt;
    const QByteArrayView head = line.first(colon);
    const auto endOfPart = [head](qsizetype from) {
        const qsizetype semicolon = findUnquoted(head, ';', from);
        return semicolon < 0 ? head.size() : semicolon;
    };
    qsizetype end = endOfPart(0);
    const QByteArrayView groupAndName = head.first(end).trimmed();
    const qsizetype dot = groupAndName.lastIndexOf('.');
    VCardProperty property;
    property.group = groupAndName.first(std::max<qsizetype>(dot, 0)).toByteArray().toUpper();
    property.name = groupAndName.sliced(dot + 1).toByteArray().toUpper();
    while (end < head.size()) {
        const qsizetype start = end + 1;
        end = endOfPart(start);
        property.parameters.append(parameterOf(head.sliced(start, end - start)));
    }
    property.value = line.sliced(colon + 1).toByteArray();
    return property;
}

/// Decodes quoted-printable: "=C3=A9". Anything but a pair of hexadecimal digits stays unchanged.
QByteArray unquoted(const QByteArray &text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        bool isByte = false;
        const int byte = text[at] == '=' && at + 2 < text.size() ? text.sliced(at + 1, 2).toInt(&isByte, 16) : 0;
        bytes += isByte ? char(byte) : text[at];
        at += isByte ? 2 : 0;
    }
    return bytes;
}

QString decoded(const QByteArray &bytes, const QByteArray &charset)
{
    if (!charset.isEmpty()) {
        QStringDecoder decode(charset.constData());
        if (decode.isValid()) {
            const QString text = decode(bytes);
            if (!decode.hasError())
                return text;
        }
    }
    // Old programs write in their machine's encoding without declaring it.
    if (QUtf8StringView(bytes).isValidUtf8())
        return QString::fromUtf8(bytes);
    QStringDecoder windows("windows-1252");
    const QString text = windows.isValid() ? QString(windows(bytes)) : QString();
    return text.isEmpty() || windows.hasError() ? QString::fromLatin1(bytes) : text;
}

/// The character that a backslash and `code` encode; null if they are not an escape sequence.
QChar unescaped(QChar code)
{
    if (code == u'n' || code == u'N')
        return u'\n';
    return code == u',' || code == u';' || code == u':' || code == u'\\' ? code : QChar();
}

} // namespace

QByteArray VCardProperty::parameter(const QByteArray &wanted) const
{
    const auto found = std::ranges::find(parameters, wanted, &std::pair<QByteArray, QByteArray>::first);
    return found == parameters.end() ? QByteArray() : found->second;
}

QList<QByteArray> VCardProperty::types() const
{
    QList<QByteArray> types;
    for (const auto &[parameterName, words] : parameters) {
        if (parameterName == "TYPE" || parameterName.isEmpty())
            types += words.toLower().split(',');
    }
    return types;
}

bool VCardProperty::isQuotedPrintable() const
{
    return std::ranges::any_of(parameters, [](const auto &parameter) {
        return (parameter.first == "ENCODING" || parameter.first.isEmpty()) &&
               parameter.second.compare("QUOTED-PRINTABLE", Qt::CaseInsensitive) == 0;
    });
}

QString VCardProperty::text() const
{
    return parts(0).join(u';');
}

QStringList VCardProperty::parts(qsizetype most) const
{
    QString whole = decoded(isQuotedPrintable() ? unquoted(value) : value, parameter("CHARSET"));
    whole.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
    QStringList parts{{}};
    for (qsizetype at = 0; at < whole.size(); ++at) {
        if (whole[at] == u';' && most) {
            if (parts.size() == most)
                break;
            parts.append(QString());
            continue;
        }
        const bool mayEscape = whole[at] == u'\\' && at + 1 < whole.size();
        const QChar character = mayEscape ? unescaped(whole[at + 1]) : QChar();
        parts.last() += character.isNull() ? whole[at] : character;
        at += character.isNull() ? 0 : 1;
    }
    return parts;
}

QByteArrayView VCardLines::takeLine()
{
    const auto *start = m_rest.data();
    const auto find = [start](char end, qsizetype size) -> qsizetype {
        const auto *found = static_cast<const char *>(size ? std::memchr(start, end, std::size_t(size)) : nullptr);
        return found ? found - start : size;
    };
    const qsizetype lineFeed = find('\n', m_rest.size()), end = find('\r', lineFeed);
    const QByteArrayView line = m_rest.first(end);
    const bool hasBoth = end + 1 == lineFeed && lineFeed < m_rest.size();
    m_rest = m_rest.sliced(std::min(end + (hasBoth ? 2 : 1), m_rest.size()));
    return line;
}

bool VCardLines::isContinued() const
{
    return !m_rest.isEmpty() && (m_rest.front() == ' ' || m_rest.front() == '\t');
}

/// A fold may split the bytes of a character, so lines are joined before they are decoded. The value of an unwanted
/// property, such as a picture, is discarded.
std::optional<VCardProperty> VCardLines::takeProperty(const QList<QByteArray> &names)
{
    QByteArray first = takeLine().toByteArray();
    std::optional<VCardProperty> property = propertyOf(first);
    if (!property) {
        while (isContinued()) // the fold is before the colon
            first += takeLine().sliced(1);
        property = propertyOf(first);
        if (!property)
            return std::nullopt;
    }
    const bool isWanted = names.contains(property->name), breaksSoftly = property->isQuotedPrintable();
    QByteArray &value = property->value;
    while (!m_rest.isEmpty()) {
        const bool isSoftBreak = breaksSoftly && value.endsWith('=');
        if (!isSoftBreak && !isContinued())
            break;
        if (!isWanted)
            value.clear();
        else if (isSoftBreak)
            value.chop(1);
        value += isSoftBreak ? takeLine() : takeLine().sliced(1);
    }
    return isWanted ? property : std::nullopt;
}

std::optional<VCardProperty> VCardLines::next(const QList<QByteArray> &names)
{
    while (!m_rest.isEmpty()) {
        if (std::optional<VCardProperty> property = takeProperty(names))
            return property;
    }
    return std::nullopt;
}

QByteArray vCardBytes(const QByteArray &file)
{
    constexpr QByteArrayView littleEndian[] = {"\xFF\xFE", {"B\0E\0", 4}}, bigEndian[] = {"\xFE\xFF", {"\0B\0E", 4}};
    const auto isStart = [&file](QByteArrayView bytes) { return file.startsWith(bytes); };
    for (const auto &[marks, encoding] :
         {std::pair(littleEndian, QStringConverter::Utf16LE), std::pair(bigEndian, QStringConverter::Utf16BE)}) {
        if (std::any_of(marks, marks + 2, isStart))
            return QString(QStringDecoder(encoding)(file)).toUtf8();
    }
    return file.startsWith("\xEF\xBB\xBF") ? file.sliced(3) : file;
}

} // namespace parcelory
