#include "records/EndiciaFormat.h"

#include "core/Text.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace parcelory::EndiciaFormat {
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype requiredFields = 12;

/// Everything that ends a line somewhere.
constexpr QStringView newlines = u"\n\r\v\f\u0085\u2028\u2029";

QString weightText(double ounces)
{
    const double pounds = std::floor(ounces * 0.0625);
    if (pounds > 0)
        return fixed(pounds, 0) + u" lb "_s + general(ounces - 16 * pounds) + u" oz"_s;
    return general(ounces) + u" oz"_s;
}

QString oneField(QString field)
{
    const auto breaksTheLine = [](QChar c) { return c == u'\t' || newlines.contains(c); };
    if (std::any_of(field.cbegin(), field.cend(), breaksTheLine)) // rare, and without it nothing is copied
        std::replace_if(field.begin(), field.end(), breaksTheLine, QChar(u' '));
    return field;
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

QString line(const ShipmentRecord &record)
{
    const bool plainStatus = record.status == u"PRINTED" || record.status == u"DELIVERED";
    const QString fields[] = {plainStatus ? QString() : record.status,
                              u"Stamp"_s,
                              dateText(record.createdAt),
                              record.transactionID,
                              record.recipient,
                              record.zip11,
                              fixed(record.postage, 2),
                              record.weightOz > 0 ? general(std::round(record.weightOz)) : QString(),
                              record.balance,
                              record.service,
                              record.services,
                              record.tracking,
                              record.declaredValue,
                              record.descriptionText,
                              record.reference,
                              record.groupCode,
                              record.email};
    QStringList cleaned;
    for (const QString &field : fields)
        cleaned += oneField(field);
    return cleaned.join(u'\t');
}

std::optional<ShipmentRecord> parse(const QString &line)
{
    QStringList fields = line.split(u'\t');
    if (fields.size() < requiredFields || fields.first() == u"Status")
        return std::nullopt;
    for (QString &field : fields)
        field = trimBlanks(field);

    const std::optional<QDateTime> date = parseDate(fields[2]);
    ShipmentRecord record{.createdAt = date ? *date : QDateTime::currentDateTime()};
    record.carrier = u"USPS"_s;
    record.status = fields[0]; // as read, even when empty
    record.transactionID = fields[3];
    record.recipient = fields[4];
    record.zip11 = fields[5];
    record.postage = decimalOrZero(fields[6].remove(u','));
    if (const auto ounces = decimal(fields[7])) {
        record.weightOz = *ounces;
        if (*ounces > 0)
            record.weight = weightText(*ounces);
    }
    record.balance = fields[8];
    record.service = fields[9];
    record.services = fields[10];
    record.tracking = fields[11];
    record.declaredValue = fields.value(12);
    record.descriptionText = fields.value(13);
    record.reference = fields.value(14);
    record.groupCode = fields.value(15);
    record.email = fields.value(16);
    return record;
}

QStringList lines(const QString &text)
{
    QStringList found;
    qsizetype start = 0;
    for (qsizetype at = 0; at <= text.size(); ++at) {
        if (at < text.size() && !newlines.contains(text[at]))
            continue;
        if (at > start)
            found += text.mid(start, at - start);
        start = at + 1;
    }
    return found;
}

QString dateText(const QDateTime &time)
{
    return time.toLocalTime().toString(u"MM/dd/yy hh:mm AP"_s);
}

std::optional<QDateTime> parseDate(const QString &text)
{
    static const QRegularExpression form(u"^(\\d{1,2})/(\\d{1,2})/(\\d{2}) (\\d{1,2}):(\\d{2}) ([AP])M$"_s,
                                         QRegularExpression::CaseInsensitiveOption);
    const auto match = form.match(text.simplified());
    if (!match.hasMatch())
        return std::nullopt;
    const auto number = [&match](int group) { return match.capturedView(group).toInt(); };
    const QDate date(2000 + number(3), number(1), number(2));
    const int hour = number(4);
    const bool afternoon = match.capturedView(6).compare(u"P", Qt::CaseInsensitive) == 0;
    const QTime time(hour % 12 + (afternoon ? 12 : 0), number(5));
    if (!date.isValid() || !time.isValid() || hour < 1 || hour > 12)
        return std::nullopt;
    const QDateTime result(date, time);
    // An hour skipped in spring: a day after that time of the day before, the clock shows the hour after it.
    return result.isValid() ? result : QDateTime(date.addDays(-1), time).addSecs(24 * 60 * 60);
}

} // namespace parcelory::EndiciaFormat
