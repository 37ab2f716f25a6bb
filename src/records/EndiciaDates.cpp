#include "records/EndiciaDates.h"

#include <QRegularExpression>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 msecsPerMinute = 60 * 1000;
constexpr qint64 msecsPerDay = 24 * 60 * msecsPerMinute;
const QDate epoch(1970, 1, 1);

struct Written {
    QDate date;
    QTime time;
};

std::optional<Written> written(int month, int day, int year, int hour, int minute, bool afternoon)
{
    const Written result{QDate(2000 + year, month, day), QTime(hour % 12 + (afternoon ? 12 : 0), minute)};
    const bool isValid = result.date.isValid() && result.time.isValid() && hour >= 1 && hour <= 12;
    return isValid ? std::optional(result) : std::nullopt;
}

/// Reads what text() writes, "11/20/26 02:41 PM"; readAny() reads other spellings, more slowly.
std::optional<Written> readUsual(QStringView text)
{
    constexpr QStringView form = u"00/00/00 00:00 _M";
    if (text.size() != form.size())
        return std::nullopt;
    for (qsizetype at = 0; at < form.size(); ++at) {
        const bool isDigit = text[at] >= u'0' && text[at] <= u'9';
        if (form[at] == u'0' ? !isDigit : form[at] != u'_' && form[at] != text[at])
            return std::nullopt;
    }
    const QChar half = text[15];
    if (half != u'A' && half != u'P')
        return std::nullopt;
    const auto number = [text](qsizetype at) {
        return (text[at].unicode() - u'0') * 10 + (text[at + 1].unicode() - u'0');
    };
    return written(number(0), number(3), number(6), number(9), number(12), half == u'P');
}

std::optional<Written> readAny(QStringView text)
{
    static const QRegularExpression form(u"^(\\d{1,2})/(\\d{1,2})/(\\d{2}) (\\d{1,2}):(\\d{2}) ([AP])M$"_s,
                                         QRegularExpression::CaseInsensitiveOption);
    const auto match = form.match(text.toString().simplified());
    if (!match.hasMatch())
        return std::nullopt;
    const auto number = [&match](int group) { return match.capturedView(group).toInt(); };
    const bool afternoon = match.capturedView(6).compare(u"P", Qt::CaseInsensitive) == 0;
    return written(number(1), number(2), number(3), number(4), number(5), afternoon);
}

} // namespace

/// The zone's offset from UTC on that day, in milliseconds; nothing if the offset changes within two days before or
/// after.
std::optional<qint64> EndiciaDates::usualOffset(qint64 day)
{
    const auto known = m_offsets.constFind(day);
    if (known != m_offsets.cend())
        return *known;
    const auto atNoon = [day](int later) {
        return QDateTime(epoch.addDays(day + later), QTime(12, 0)).offsetFromUtc() * qint64(1000);
    };
    std::optional<qint64> offset = atNoon(0);
    for (const int later : {-2, -1, 1, 2}) {
        if (atNoon(later) != atNoon(0))
            offset = std::nullopt;
    }
    return *m_offsets.insert(day, offset);
}

QString EndiciaDates::text(qint64 msecsSinceEpoch)
{
    constexpr qint64 in2100 = 47482 * msecsPerDay;
    const bool isUsual = msecsSinceEpoch >= msecsPerDay && msecsSinceEpoch < in2100;
    const std::optional<qint64> offset = isUsual ? usualOffset(msecsSinceEpoch / msecsPerDay) : std::nullopt;
    if (!offset)
        return QDateTime::fromMSecsSinceEpoch(msecsSinceEpoch).toString(u"MM/dd/yy hh:mm AP"_s);
    const qint64 local = msecsSinceEpoch + *offset;
    int year = 0, month = 0, day = 0;
    epoch.addDays(local / msecsPerDay).getDate(&year, &month, &day);
    const int minutes = int(local % msecsPerDay / msecsPerMinute), hour = minutes / 60;
    QString text = u"00/00/00 00:00 AM"_s;
    const auto put = [&text](qsizetype at, int number) {
        text[at] = QChar(u'0' + number / 10);
        text[at + 1] = QChar(u'0' + number % 10);
    };
    put(0, month);
    put(3, day);
    put(6, year % 100);
    put(9, (hour + 11) % 12 + 1);
    put(12, minutes % 60);
    if (hour >= 12)
        text[15] = u'P';
    return text;
}

std::optional<qint64> EndiciaDates::parse(QStringView text)
{
    std::optional<Written> read = readUsual(text);
    if (!read)
        read = readAny(text);
    if (!read)
        return std::nullopt;
    const auto [date, time] = *read;
    const qint64 day = epoch.daysTo(date);
    if (const auto offset = usualOffset(day))
        return day * msecsPerDay + time.msecsSinceStartOfDay() - *offset;
    const QDateTime result(date, time);
    // An hour that daylight saving skips: 24 hours after that time on the previous day, the clock shows the hour after.
    return (result.isValid() ? result : QDateTime(date.addDays(-1), time).addSecs(24 * 60 * 60)).toMSecsSinceEpoch();
}

} // namespace parcelory
