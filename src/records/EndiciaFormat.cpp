#include "records/EndiciaFormat.h"

#include "core/Text.h"
#include "records/EndiciaDates.h"
#include "records/ShipmentRecord.h"
#include "records/StatusWords.h"

#include <QStringList>
#include <QTimeZone>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace parcelory::EndiciaFormat {
using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t requiredFields = 12;

QString importedWeight(double ounces)
{
    const double pounds = std::floor(ounces * 0.0625);
    if (pounds > 0)
        return fixed(pounds, 0) + u" lb "_s + general(ounces - 16 * pounds) + u" oz"_s;
    return general(ounces) + u" oz"_s;
}

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

/// Without the blanks around it; a field contains no tab.
QByteArrayView trimmed(QByteArrayView field)
{
    while (field.startsWith(' '))
        field = field.sliced(1);
    while (field.endsWith(' '))
        field.chop(1);
    return field;
}

void appendField(QByteArray &text, QByteArrayView field)
{
    const auto isPlain = [](char byte) {
        return static_cast<unsigned char>(byte) < 0x80 && byte != '\t' && !isAsciiNewline(byte);
    };
    if (std::all_of(field.begin(), field.end(), isPlain)) {
        text += field;
        return;
    }
    const QByteArray valid = QString::fromUtf8(field).toUtf8();
    for (const char *at = valid.begin(), *const end = valid.end(); at != end;) {
        const qsizetype breaking = *at == '\t' ? 1 : newlineAt(at, end);
        text += breaking ? ' ' : *at;
        at += std::max<qsizetype>(breaking, 1);
    }
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
    const QByteArray date = dates.text(line.createdAt).toLatin1();
    const QByteArray postage = fixed(line.postage, 2).toLatin1();
    const QByteArray ounces = line.weightOz > 0 ? general(std::round(line.weightOz)).toLatin1() : QByteArray();
    const QByteArrayView fields[] = {plainStatus ? QByteArrayView() : line.status,
                                     "Stamp",
                                     date,
                                     line.transactionID,
                                     line.recipient,
                                     line.zip11,
                                     postage,
                                     ounces,
                                     line.balance,
                                     line.service,
                                     line.services,
                                     line.tracking,
                                     line.declaredValue,
                                     line.descriptionText,
                                     line.reference,
                                     line.groupCode,
                                     line.email};
    for (const QByteArrayView &field : fields) {
        appendField(text, field);
        text += '\t';
    }
    text.back() = '\n';
}

QByteArrayView takeLine(QByteArrayView &text)
{
    const char *start = text.begin(), *at = start, *const end = text.end();
    while (at != end) {
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

std::optional<ShipmentRecord> parse(QByteArrayView line, EndiciaDates &dates)
{
    const QByteArrayView mark = "\xEF\xBB\xBF";
    std::array<QString, 17> fields;
    std::size_t count = 0;
    QByteArrayView rest = line.startsWith(mark) ? line.sliced(mark.size()) : line;
    if (rest.startsWith("Status\t"))
        return std::nullopt;
    for (bool isLast = false; !isLast; ++count) {
        const qsizetype tab = rest.indexOf('\t');
        isLast = tab < 0;
        if (count < fields.size())
            fields[count] = QString::fromUtf8(trimmed(isLast ? rest : rest.first(tab)));
        if (!isLast)
            rest = rest.sliced(tab + 1);
    }
    if (count < requiredFields)
        return std::nullopt;

    const std::optional<qint64> date = dates.parse(fields[2]);
    ShipmentRecord record{.createdAt = date ? QDateTime::fromMSecsSinceEpoch(*date, QTimeZone::utc()) : QDateTime()};
    record.carrier = u"USPS"_s;
    record.status = fields[0]; // as read, even if empty
    record.transactionID = fields[3];
    record.recipient = fields[4];
    record.zip11 = fields[5];
    record.postage = decimalOrZero(fields[6].remove(u','));
    if (const auto ounces = decimal(fields[7])) {
        record.weightOz = *ounces;
        if (*ounces > 0)
            record.weight = importedWeight(*ounces);
    }
    record.balance = fields[8];
    record.service = fields[9];
    record.services = fields[10];
    record.tracking = fields[11];
    record.declaredValue = fields[12];
    record.descriptionText = fields[13];
    record.reference = fields[14];
    record.groupCode = fields[15];
    record.email = fields[16];
    return record;
}

} // namespace parcelory::EndiciaFormat
