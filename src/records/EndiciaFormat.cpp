#include "records/EndiciaFormat.h"

#include "core/Text.h"
#include "records/EndiciaDates.h"
#include "records/StatusWords.h"

#include <QByteArrayList>
#include <QStringList>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>

namespace parcelory::EndiciaFormat {
using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t requiredFields = 12;

/// A number as fixed() and general() write it, in memory of its own: an export writes millions.
class Digits {
public:
    Digits(double value, std::chars_format format, int precision)
        : m_end(std::to_chars(m_text.begin(), m_text.end(), value, format, precision).ptr)
    {
    }
    Digits(const Digits &) = delete;
    Digits &operator=(const Digits &) = delete;

    QByteArrayView text() const { return {m_text.data(), m_end}; }

private:
    std::array<char, 320> m_text; // the longest double has 309 digits before the point
    const char *m_end;
};

bool isAsciiNewline(char byte)
{
    return byte >= '\n' && byte <= '\r';
}

/// The bytes with which a line end may begin. Looking each byte up in a table is the fast path of every search.
constexpr auto mayEndLine = [] {
    std::array<bool, 256> table{};
    for (const unsigned char byte : {0x0A, 0x0B, 0x0C, 0x0D, 0xC2, 0xE2})
        table[byte] = true;
    return table;
}();

/// The length in bytes of the line end at `at`; 0 if there is no line end.
qsizetype newlineAt(const char *at, const char *end)
{
    if (!mayEndLine[static_cast<unsigned char>(*at)])
        return 0;
    if (isAsciiNewline(*at))
        return 1;
    for (const QByteArrayView newline : {"\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"}) { // U+0085, U+2028, U+2029
        if (QByteArrayView(at, end).startsWith(newline))
            return newline.size();
    }
    return 0;
}

QByteArrayView withoutMark(QByteArrayView text)
{
    const QByteArrayView byteOrderMark = "\xEF\xBB\xBF";
    return text.startsWith(byteOrderMark) ? text.sliced(byteOrderMark.size()) : text;
}

/// Without the blanks around it; a field contains no tab.
QByteArrayView trimmed(QByteArrayView field)
{
    while (field.startsWith(' '))
        field = field.sliced(1);
    while (field.endsWith(' '))
        field.chop(1);
    return withoutMark(field);
}

/// True for ASCII without control characters, as nearly all fields are.
bool isPlain(QByteArrayView field)
{
    bool isPlain = true;
    for (const char byte : field) // without a branch, the processor compares many bytes at a time
        isPlain &= static_cast<signed char>(byte) >= ' ';
    return isPlain;
}

/// Valid UTF-8 with blanks instead of tabs and line breaks.
QByteArray onOneLine(QByteArrayView field)
{
    QByteArray text;
    const QByteArray valid = QString::fromUtf8(field).toUtf8();
    for (const char *at = valid.begin(), *const end = valid.end(); at != end;) {
        const qsizetype breaking = *at == '\t' ? 1 : newlineAt(at, end);
        text += breaking ? ' ' : *at;
        at += std::max<qsizetype>(breaking, 1);
    }
    return text;
}

} // namespace

QString header()
{
    static const QStringList names = {
        u"Status"_s,           u"Type"_s,        u"Date_Time"_s,          u"Piece"_s,       u"Address"_s,
        u"ZIP_Code_11"_s,      u"Postage ($)"_s, u"Weight (oz)"_s,        u"Balance ($)"_s, u"Service_Class"_s,
        u"Optional_Service"_s, u"Tracking_ID"_s, u"Declared_Value ($)"_s, u"Description"_s, u"Reference ID"_s,
        u"Group Code"_s,       u"Email"_s};
    return names.join(u'\t');
}

void append(QByteArray &text, const Line &line, EndiciaDates &dates)
{
    const std::optional<LogStatus> status = logStatusFrom(line.status);
    const bool plainStatus = status == LogStatus::printed || status == LogStatus::delivered;
    const Digits postage(line.postage, std::chars_format::fixed, 2);
    const Digits ounces(std::round(line.weightOz), std::chars_format::general, 6);
    QByteArrayView fields[] = {plainStatus ? QByteArrayView() : line.status,
                               "Stamp",
                               dates.text(line.createdAt.value_or(0)),
                               line.transactionID,
                               line.recipient,
                               line.zip11,
                               postage.text(),
                               line.weightOz > 0 ? ounces.text() : QByteArrayView(),
                               line.balance,
                               line.service,
                               line.services,
                               line.tracking,
                               line.declaredValue,
                               line.descriptionText,
                               line.reference,
                               line.groupCode,
                               line.email};
    QByteArrayList changed;
    qsizetype size = 0;
    for (QByteArrayView &field : fields) {
        if (!isPlain(field))
            field = changed.emplaceBack(onOneLine(field));
        size += field.size() + 1;
    }
    const qsizetype start = text.size();
    text.resize(start + size);
    char *at = text.data() + start;
    for (const QByteArrayView &field : fields) {
        at = std::copy(field.begin(), field.end(), at);
        *at++ = '\t';
    }
    text.back() = '\n';
}

QByteArrayView takeLine(QByteArrayView &text)
{
    const char *start = text.begin(), *at = start, *const end = text.end();
    const auto mayEnd = [](char byte) { return mayEndLine[static_cast<unsigned char>(byte)]; };
    while ((at = std::find_if(at, end, mayEnd)) != end) {
        const qsizetype newline = newlineAt(at, end);
        if (newline && at != start)
            break;
        at += newline ? newline : 1;
        if (newline)
            start = at;
    }
    text = QByteArrayView(at, end);
    return {start, at};
}

QByteArrayView takeLines(QByteArrayView &text, qsizetype size)
{
    const char *const start = text.begin(), *const end = text.end();
    const char *at = start + std::min(size, text.size());
    while (at != end && !newlineAt(at, end))
        ++at;
    if (at != end)
        at += QByteArrayView(at, end).startsWith("\r\n") ? 2 : newlineAt(at, end);
    text = QByteArrayView(at, end);
    return {start, at};
}

int lineEnds(QByteArrayView text)
{
    int ends = 0;
    for (const char *at = text.begin(), *const end = text.end(); at != end;) {
        const qsizetype newline = newlineAt(at, end);
        const bool continues = *at == '\r' && at + 1 != end && at[1] == '\n';
        ends += newline && !continues;
        at += std::max<qsizetype>(newline, 1);
    }
    return ends;
}

bool isHeaderOrBlank(QByteArrayView line)
{
    const qsizetype tab = line.indexOf('\t');
    return line.trimmed().isEmpty() || (tab < 0 ? line : line.first(tab)) == "Status";
}

QByteArray trackingOf(QByteArrayView line)
{
    constexpr int place = 11;
    if (line.count('\t') < qsizetype(requiredFields) - 1 || isHeaderOrBlank(line))
        return {};
    qsizetype start = 0;
    for (int field = 0; field < place; ++field)
        start = line.indexOf('\t', start) + 1;
    const qsizetype end = line.indexOf('\t', start);
    return trimBlanks(QString::fromUtf8(line.sliced(start, (end < 0 ? line.size() : end) - start))).toUtf8();
}

std::optional<Line> parse(QByteArrayView line, EndiciaDates &dates)
{
    std::array<QByteArrayView, 17> fields;
    std::size_t count = 0;
    QByteArrayView rest = withoutMark(line);
    if (rest.startsWith("Status\t"))
        return std::nullopt;
    for (bool isLast = false; !isLast; ++count) {
        const qsizetype tab = rest.indexOf('\t');
        isLast = tab < 0;
        if (count < fields.size())
            fields[count] = trimmed(isLast ? rest : rest.first(tab));
        if (!isLast)
            rest = rest.sliced(tab + 1);
    }
    if (count < requiredFields)
        return std::nullopt;
    return Line{.status = fields[0], // as read, even if empty
                .createdAt = dates.parse(fields[2]),
                .transactionID = fields[3],
                .recipient = fields[4],
                .zip11 = fields[5],
                .postage = decimal(QByteArrayView(fields[6].toByteArray().replace(',', ""))).value_or(0),
                .weightOz = decimal(fields[7]).value_or(0),
                .balance = fields[8],
                .service = fields[9],
                .services = fields[10],
                .tracking = fields[11],
                .declaredValue = fields[12],
                .descriptionText = fields[13],
                .reference = fields[14],
                .groupCode = fields[15],
                .email = fields[16]};
}

QByteArray shownWeight(double ounces)
{
    if (!(ounces > 0))
        return {};
    const double pounds = std::floor(ounces * 0.0625);
    const Digits whole(pounds, std::chars_format::fixed, 0);
    const Digits rest(pounds > 0 ? ounces - 16 * pounds : ounces, std::chars_format::general, 6);
    return (pounds > 0 ? whole.text().toByteArray() + " lb " : QByteArray()) + rest.text().toByteArray() + " oz";
}

} // namespace parcelory::EndiciaFormat
