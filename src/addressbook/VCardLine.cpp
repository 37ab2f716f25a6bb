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

/// Searches for a character outside quotation marks, in a text that may grow between two calls.
class UnquotedSearch {
public:
    explicit UnquotedSearch(char wanted, qsizetype from = 0) : m_wanted(wanted), m_at(from) {}

    /// The first position of the character; -1 if all are quoted or missing.
    qsizetype find(QByteArrayView text)
    {
        for (; m_at < text.size(); ++m_at) {
            if (text[m_at] == '"')
                m_isQuoted = !m_isQuoted;
            else if (text[m_at] == m_wanted && !m_isQuoted)
                return m_at;
        }
        return -1;
    }

private:
    char m_wanted;
    qsizetype m_at;
    bool m_isQuoted = false;
};

std::pair<QByteArray, QByteArray> parameterOf(QByteArrayView text)
{
    const qsizetype equals = text.indexOf('=');
    QByteArray value = text.sliced(equals + 1).trimmed().toByteArray();
    return {equals < 0 ? QByteArray() : text.first(equals).trimmed().toByteArray().toUpper(), value.replace('"', "")};
}

/// Parses a property whose head ends at `colon`; nothing without a colon.
std::optional<VCardProperty> propertyOf(QByteArrayView line, qsizetype colon)
{
    if (colon < 0)
        return std::nullopt;
    const QByteArrayView head = line.first(colon);
    const auto endOfPart = [head](qsizetype from) {
        const qsizetype semicolon = UnquotedSearch(';', from).find(head);
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

/// The value of a hexadecimal digit; -1 for any other character.
int digit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char small = char(c | 0x20);
    return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

/// Decodes quoted-printable: "=C3=A9". Anything but a pair of hexadecimal digits stays unchanged.
QByteArray unquoted(const QByteArray &text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool mayBeByte = text[at] == '=' && at + 2 < text.size();
        const int high = mayBeByte ? digit(text[at + 1]) : -1, low = mayBeByte ? digit(text[at + 2]) : -1;
        const bool isByte = high >= 0 && low >= 0;
        bytes += isByte ? char(high << 4 | low) : text[at];
        at += isByte ? 2 : 0;
    }
    return bytes;
}

/// Removes the "=" of a quoted-printable value that continues on the next line; false if the value ends here. Mail
/// programs add blanks after it. `lineStart`: where the value's last line begins.
bool takeSoftBreak(QByteArray &value, qsizetype lineStart)
{
    qsizetype end = value.size();
    while (end > lineStart && (value[end - 1] == ' ' || value[end - 1] == '\t'))
        --end;
    if (end == lineStart || value[end - 1] != '=')
        return false;
    value.truncate(end - 1);
    return true;
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
    whole.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n').remove(QChar(QChar::ByteOrderMark));
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

/// A line ends with LF, CR LF, CR, or CR CR LF, which comes from a program that adds a CR to each LF once too often.
QByteArrayView VCardLines::takeLine()
{
    const auto find = [this](char end, qsizetype from, qsizetype to) -> qsizetype {
        const auto *start = m_file.data() + from;
        const auto *found =
            static_cast<const char *>(to > from ? std::memchr(start, end, std::size_t(to - from)) : nullptr);
        return found ? found - m_file.data() : to;
    };
    if (m_lineFeed < m_at) // remembered, so that a file without a line feed is not searched again for each line
        m_lineFeed = find('\n', m_at, m_file.size());
    const qsizetype end = find('\r', m_at, m_lineFeed);
    QByteArrayView line = m_file.sliced(m_at, end - m_at);
    const bool hasBoth = end < m_lineFeed && m_lineFeed < m_file.size() && m_lineFeed - end <= 2 &&
                         (m_lineFeed - end == 1 || m_file[end + 1] == '\r');
    m_at = std::min((hasBoth ? m_lineFeed : end) + 1, m_file.size());
    return line.startsWith("\xEF\xBB\xBF") ? line.sliced(3) : line; // files may have been joined
}

bool VCardLines::isContinued() const
{
    return !isAtEnd() && (m_file[m_at] == ' ' || m_file[m_at] == '\t');
}

/// A fold may be anywhere, in quotation marks or within the bytes of a character, so lines are joined before they are
/// read. The value of an unwanted property, such as a picture, is discarded.
std::optional<VCardProperty> VCardLines::takeProperty(const QList<QByteArray> &names)
{
    QByteArray head = takeLine().toByteArray();
    UnquotedSearch colon(':');
    std::optional<VCardProperty> property = propertyOf(head, colon.find(head));
    while (!property && isContinued()) {
        head += takeLine().sliced(1);
        property = propertyOf(head, colon.find(head));
    }
    if (!property) // a quotation mark that is never closed hides the colon
        property = propertyOf(head, head.indexOf(':'));
    if (!property)
        return std::nullopt;
    const bool isWanted = names.contains(property->name), breaksSoftly = property->isQuotedPrintable();
    QByteArray &value = property->value;
    qsizetype lineStart = 0;
    while (!isAtEnd()) {
        const bool isSoftBreak = breaksSoftly && takeSoftBreak(value, lineStart);
        if (!isSoftBreak && !isContinued())
            break;
        if (!isWanted)
            value.clear();
        lineStart = value.size();
        value += isSoftBreak ? takeLine() : takeLine().sliced(1);
    }
    return isWanted ? property : std::nullopt;
}

std::optional<VCardProperty> VCardLines::next(const QList<QByteArray> &names)
{
    while (!isAtEnd()) {
        if (std::optional<VCardProperty> property = takeProperty(names))
            return property;
    }
    return std::nullopt;
}

QByteArray vCardBytes(const QByteArray &file)
{
    // A card begins with an ASCII character, so the zero bytes around it tell the encoding without a byte order mark.
    const auto isZero = [&file](qsizetype at) { return at < file.size() && file[at] == '\0'; };
    const bool first = isZero(0), second = isZero(1), third = isZero(2), fourth = isZero(3);
    std::optional<QStringConverter::Encoding> encoding;
    if (file.startsWith(QByteArrayView("\xFF\xFE\0\0", 4)) || (!first && second && third && fourth))
        encoding = QStringConverter::Utf32LE;
    else if (file.startsWith(QByteArrayView("\0\0\xFE\xFF", 4)) || (first && second && third && !fourth))
        encoding = QStringConverter::Utf32BE;
    else if (file.startsWith("\xFF\xFE") || (!first && second))
        encoding = QStringConverter::Utf16LE;
    else if (file.startsWith("\xFE\xFF") || (first && !second))
        encoding = QStringConverter::Utf16BE;
    return encoding ? QString(QStringDecoder(*encoding)(file)).toUtf8() : file;
}

} // namespace parcelory
