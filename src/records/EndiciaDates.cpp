#include "records/EndiciaDates.h"

#include <QLocale>
#include <QRegularExpression>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 msecsPerMinute = 60 * 1000;
constexpr qint64 msecsPerDay = 24 * 60 * msecsPerMinute;
const QDate epoch(1970, 1, 1);

constexpr QByteArrayView usualForm = "00/00/00 00:00 _M";

struct Written {
    QDate date;
    QTime time;
    std::optional<int> offset = {}; ///< from UTC in seconds, if it is written; otherwise the machine's time zone
};

/// Two-digit years from 70 on are of the last century: no label is older or bought that far ahead.
int fullYear(int year)
{
    return year >= 100 ? year : year + (year >= 70 ? 1900 : 2000);
}

enum class Clock { am, pm, fullDay };

std::optional<Written> written(QDate date, int hour, int minute, int second, Clock clock)
{
    const bool isFullDay = clock == Clock::fullDay;
    if (!isFullDay && (hour < 1 || hour > 12))
        return std::nullopt;
    const Written result{date, QTime(isFullDay ? hour : hour % 12 + (clock == Clock::pm ? 12 : 0), minute, second)};
    return result.date.isValid() && result.time.isValid() ? std::optional(result) : std::nullopt;
}

/// Reads what text() writes, "11/20/26 02:41 PM"; readAny() reads other spellings, more slowly.
std::optional<Written> readUsual(QByteArrayView text)
{
    if (text.size() != usualForm.size())
        return std::nullopt;
    for (qsizetype at = 0; at < usualForm.size(); ++at) {
        const bool isDigit = text[at] >= '0' && text[at] <= '9';
        if (usualForm[at] == '0' ? !isDigit : usualForm[at] != '_' && usualForm[at] != text[at])
            return std::nullopt;
    }
    const char half = text[15];
    if (half != 'A' && half != 'P')
        return std::nullopt;
    const auto number = [text](qsizetype at) { return (text[at] - '0') * 10 + (text[at + 1] - '0'); };
    return written(QDate(fullYear(number(6)), number(0), number(3)), number(9), number(12), 0,
                   half == 'P' ? Clock::pm : Clock::am);
}

/// 1 to 12 for an English name of a month or its first three letters; otherwise 0.
int monthNamed(QStringView name)
{
    const QLocale english = QLocale::c();
    for (int month = 1; month <= 12; ++month) {
        for (const auto length : {QLocale::LongFormat, QLocale::ShortFormat}) {
            if (name.compare(english.monthName(month, length), Qt::CaseInsensitive) == 0)
                return month;
        }
    }
    return 0;
}

/// Reads the forms in which spreadsheets and other programs save dates.
std::optional<Written> readAny(const QString &text)
{
    const auto formOf = [](const QString &date) {
        const QString time = u"(?:(?:,? |T)(?<hour>\\d{1,2}):(?<minute>\\d{2})(?::(?<second>\\d{2})(?:\\.\\d+)?)?"
                             "(?: ?(?<half>[AP])\\.?M\\.?)?(?<zone> ?Z| ?[+-]\\d{2}:?\\d{2})?)?"_s;
        return QRegularExpression(u'^' + date + time + u'$', QRegularExpression::CaseInsensitiveOption);
    };
    static const QRegularExpression forms[] = {
        formOf(u"(?<m>\\d{1,2})([/-])(?<d>\\d{1,2})\\g2(?<y>\\d{4}|\\d{2})"_s),       // 11/20/26
        formOf(u"(?<y>\\d{4})([/-])(?<m>\\d{1,2})\\g2(?<d>\\d{1,2})"_s),              // 2026-11-20
        formOf(u"(?<d>\\d{1,2})\\.(?<m>\\d{1,2})\\.(?<y>\\d{4}|\\d{2})"_s),           // 20.11.2026
        formOf(u"(?<d>\\d{1,2})[- ](?<m>[A-Z]{3,9})\\.?[- ,]+(?<y>\\d{4}|\\d{2})"_s), // 20-Nov-26
        formOf(u"(?<m>[A-Z]{3,9})\\.? (?<d>\\d{1,2}),? (?<y>\\d{4})"_s)};             // Nov 20, 2026
    const QString plain = text.simplified();
    QRegularExpressionMatch match;
    for (const QRegularExpression &form : forms) {
        if (match = form.match(plain); match.hasMatch())
            break;
    }
    if (!match.hasMatch())
        return std::nullopt;
    const auto number = [&match](const char *group) { return match.captured(QLatin1StringView(group)).toInt(); };
    const QString month = match.captured(u"m"_s), half = match.captured(u"half"_s).toUpper();
    const QDate day(fullYear(number("y")), month[0].isDigit() ? month.toInt() : monthNamed(month), number("d"));
    std::optional<Written> result = written(day, number("hour"), number("minute"), number("second"),
                                            half.isEmpty() ? Clock::fullDay
                                            : half == u'P' ? Clock::pm
                                                           : Clock::am);
    QString zone = match.captured(u"zone"_s).remove(u':').trimmed();
    if (!result || zone.isEmpty())
        return result;
    const bool isUtc = zone.compare(u'Z', Qt::CaseInsensitive) == 0;
    const int seconds =
        isUtc ? 0 : QStringView(zone).sliced(1, 2).toInt() * 3600 + QStringView(zone).sliced(3).toInt() * 60;
    result->offset = zone.startsWith(u'-') ? -seconds : seconds;
    return result;
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
    const qint64 today = atNoon(0);
    std::optional<qint64> offset = today;
    for (const int later : {-2, -1, 1, 2}) {
        if (atNoon(later) != today)
            offset = std::nullopt;
    }
    return *m_offsets.insert(day, offset);
}

QByteArrayView EndiciaDates::text(qint64 msecsSinceEpoch)
{
    constexpr qint64 in2100 = 47482 * msecsPerDay;
    const bool isUsual = msecsSinceEpoch >= msecsPerDay && msecsSinceEpoch < in2100;
    const std::optional<qint64> offset = isUsual ? usualOffset(msecsSinceEpoch / msecsPerDay) : std::nullopt;
    if (!offset)
        return m_text = QDateTime::fromMSecsSinceEpoch(msecsSinceEpoch).toString(u"MM/dd/yy hh:mm AP"_s).toLatin1();
    const qint64 local = msecsSinceEpoch + *offset;
    int year = 0, month = 0, day = 0;
    epoch.addDays(local / msecsPerDay).getDate(&year, &month, &day);
    const int minutes = int(local % msecsPerDay / msecsPerMinute), hour = minutes / 60;
    m_text.replace(0, m_text.size(), usualForm);
    const auto put = [written = m_text.data()](qsizetype at, int number) {
        written[at] = char('0' + number / 10);
        written[at + 1] = char('0' + number % 10);
    };
    put(0, month);
    put(3, day);
    put(6, year % 100);
    put(9, (hour + 11) % 12 + 1);
    put(12, minutes % 60);
    m_text[15] = hour < 12 ? 'A' : 'P';
    return m_text;
}

std::optional<qint64> EndiciaDates::parse(QByteArrayView text)
{
    std::optional<Written> read = readUsual(text);
    if (!read)
        read = readAny(QString::fromUtf8(text));
    if (!read)
        return std::nullopt;
    const auto [date, time, written] = *read;
    const qint64 day = epoch.daysTo(date);
    if (written)
        return day * msecsPerDay + time.msecsSinceStartOfDay() - *written * qint64(1000);
    if (const auto offset = usualOffset(day))
        return day * msecsPerDay + time.msecsSinceStartOfDay() - *offset;
    const QDateTime result(date, time);
    // An hour that daylight saving skips: 24 hours after that time on the previous day, the clock shows the hour after.
    return (result.isValid() ? result : QDateTime(date.addDays(-1), time).addSecs(24 * 60 * 60)).toMSecsSinceEpoch();
}

} // namespace parcelory
