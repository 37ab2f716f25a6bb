#include "records/EndiciaFormat.h"
#include "records/EndiciaDates.h"
#include "records/ShipmentRecord.h"
#include "support/Test.h"

#include <QLocale>
#include <QTimeZone>

#include <ctime>

namespace parcelory::test {

namespace {

void setZone(const QByteArray &zone)
{
    zone.isEmpty() ? qunsetenv("TZ") : qputenv("TZ", zone);
    tzset();
}

std::optional<ShipmentRecord> parse(const QString &line)
{
    EndiciaDates dates;
    return EndiciaFormat::parse(line.toUtf8(), dates);
}

QString written(const EndiciaFormat::Line &line)
{
    EndiciaDates dates;
    QByteArray text;
    EndiciaFormat::append(text, line, dates);
    EXPECT_TRUE(text.endsWith('\n'));
    return QString::fromUtf8(text.chopped(1));
}

QStringList linesOf(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    QByteArrayView rest = utf8;
    QStringList lines;
    for (QByteArrayView line; !(line = EndiciaFormat::takeLine(rest)).isEmpty();)
        lines += QString::fromUtf8(line);
    return lines;
}

std::optional<QDateTime> parseDate(const QString &text)
{
    const std::optional<qint64> msecs = EndiciaDates().parse(text);
    return msecs ? std::optional(QDateTime::fromMSecsSinceEpoch(*msecs)) : std::nullopt;
}

QString fieldsOf(int count)
{
    QStringList fields;
    for (int field = 0; field < count; ++field)
        fields += u" f%1 "_s.arg(field);
    fields[2] = u"11/20/26 02:41 PM"_s;
    return fields.join(u'\t');
}

} // namespace

TEST(EndiciaFormat, FillsOnlyTheFieldsThatALineHas)
{
    EXPECT_FALSE(parse(fieldsOf(11)));
    EXPECT_FALSE(parse(EndiciaFormat::header()));
    for (const int count : {12, 13, 16, 17, 18}) {
        const auto record = parse(fieldsOf(count));
        ASSERT_TRUE(record) << count;
        EXPECT_EQ((QStringList{record->status, record->transactionID, record->recipient, record->zip11, record->balance,
                               record->service, record->services, record->tracking}),
                  (QStringList{u"f0"_s, u"f3"_s, u"f4"_s, u"f5"_s, u"f8"_s, u"f9"_s, u"f10"_s, u"f11"_s}));
        const QString optional[] = {record->declaredValue, record->descriptionText, record->reference,
                                    record->groupCode, record->email};
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(optional[i], 12 + i < count ? u"f%1"_s.arg(12 + i) : QString()) << count;
        EXPECT_EQ(record->carrier, u"USPS"_s);
    }
}

TEST(EndiciaFormat, ReadsPostageAndWeight)
{
    const struct {
        QString postage, weight;
        double dollars, ounces;
        QString shown;
    } rows[] = {
        {u"1,234.50"_s, u"24.5"_s, 1234.5, 24.5, u"1 lb 8.5 oz"_s},
        {u" 7.42 "_s, u"16"_s, 7.42, 16, u"1 lb 0 oz"_s},
        {u".5"_s, u"15.99"_s, 0.5, 15.99, u"15.99 oz"_s},
        {u"-1"_s, u"-3"_s, -1, -3, {}},
        {u"$5"_s, u"0"_s, 0, 0, {}},
        {u""_s, u"3 oz"_s, 0, 0, {}},
        {u"1e2"_s, u"2000000"_s, 0, 2000000, u"125000 lb 0 oz"_s},
    };
    for (const auto &row : rows) {
        const auto record = parse(u"\t\t\t\t\t\t%1\t%2\t\t\t\t"_s.arg(row.postage, row.weight));
        ASSERT_TRUE(record);
        EXPECT_EQ(record->postage, row.dollars) << row.postage.toStdString();
        EXPECT_EQ(record->weightOz, row.ounces);
        EXPECT_EQ(record->weight, row.shown);
    }
}

TEST(EndiciaFormat, WritesWholeOuncesAndOmitsTheUsualStates)
{
    const struct {
        QByteArray status;
        double ounces, postage;
        QString statusField, postageField, ouncesField;
    } rows[] = {
        {"PRINTED", 7.5, 7.4, {}, u"7.40"_s, u"8"_s},
        {"DELIVERED", 0, 0, {}, u"0.00"_s, {}},
        {"REFUNDED", 0.4, 1234.567, u"REFUNDED"_s, u"1234.57"_s, u"0"_s},
        {"printed", 1120, -2, u"printed"_s, u"-2.00"_s, u"1120"_s},
    };
    for (const auto &row : rows) {
        const QStringList fields =
            written({.status = row.status, .postage = row.postage, .weightOz = row.ounces}).split(u'\t');
        ASSERT_EQ(fields.size(), 17);
        EXPECT_EQ((QStringList{fields[0], fields[6], fields[7]}),
                  (QStringList{row.statusField, row.postageField, row.ouncesField}));
    }
}

TEST(EndiciaFormat, KeepsARecordOnOneLineForEveryContent)
{
    const QString line = written({.recipient = "a\tb\nc\rd\ve\ff\u0085g\u2028h\u2029i"});
    EXPECT_EQ(linesOf(line), QStringList{line});
    EXPECT_EQ(line.count(u'\t'), 16);
    EXPECT_EQ(linesOf(u"a\n\nb\r\nc\rd\u2028e\n"_s), (QStringList{u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s}));
}

TEST(EndiciaFormat, WritesAndReadsDatesOnATwelveHourClockInEveryLanguage)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    const std::pair<QDateTime, QString> both[] = {
        {QDateTime(QDate(2026, 1, 2), QTime(0, 5)), u"01/02/26 12:05 AM"_s},
        {QDateTime(QDate(2026, 12, 31), QTime(12, 0)), u"12/31/26 12:00 PM"_s},
        {QDateTime(QDate(2069, 6, 7), QTime(23, 59)), u"06/07/69 11:59 PM"_s},
        {QDateTime(QDate(2000, 2, 29), QTime(11, 59)), u"02/29/00 11:59 AM"_s},
    };
    for (const auto &[time, text] : both) {
        EXPECT_EQ(EndiciaDates().text(time.toMSecsSinceEpoch()), text);
        EXPECT_EQ(parseDate(text), time) << text.toStdString();
    }
    EXPECT_EQ(parseDate(u" 1/2/26  9:05 pm "_s), QDateTime(QDate(2026, 1, 2), QTime(21, 5)));
    for (const QString &text : {u""_s, u"13/02/26 12:05 AM"_s, u"02/29/26 01:00 PM"_s, u"01/02/26 00:05 AM"_s,
                                u"01/02/26 13:05 PM"_s, u"01/02/26 11:60 AM"_s, u"01/02/26 24:05"_s, u"01/02-26"_s,
                                u"20-Nev-26"_s, u"46346.6"_s, u"01/02/202 14:05"_s})
        EXPECT_FALSE(parseDate(text)) << text.toStdString();
    QLocale::setDefault(before);
}

TEST(EndiciaFormat, ReadsDatesAsSpreadsheetsSaveThem)
{
    const QDateTime minute(QDate(2026, 11, 20), QTime(14, 41)), second = minute.addSecs(9);
    const std::pair<QString, QDateTime> rows[] = {
        {u"11/20/2026 2:41 PM"_s, minute},
        {u"11/20/2026 14:41"_s, minute},
        {u"11/20/26 14:41:09"_s, second},
        {u"11/20/2026 02:41:09 p.m."_s, second},
        {u"11/20/26, 2:41\u202FPM"_s, minute},
        {u"11-20-2026 14:41"_s, minute},
        {u"11/20/2026"_s, QDateTime(minute.date(), QTime(0, 0))},
        {u"2026-11-20 14:41"_s, minute},
        {u"2026-11-20T14:41:09.250"_s, second},
        {u"2026-11-20T14:41:09Z"_s, QDateTime(minute.date(), QTime(14, 41, 9), QTimeZone::utc())},
        {u"2026-11-20 14:41:09 -05:30"_s, QDateTime(minute.date(), QTime(20, 11, 9), QTimeZone::utc())},
        {u"20.11.2026 14:41"_s, minute},
        {u"20-Nov-26 14:41"_s, minute},
        {u"Nov 20, 2026 2:41 PM"_s, minute},
        {u"november 20, 2026 2:41 pm"_s, minute},
        {u"12/31/99 11:59 PM"_s, QDateTime(QDate(1999, 12, 31), QTime(23, 59))},
        {u"1/1/70 0:00"_s, QDateTime(QDate(1970, 1, 1), QTime(0, 0))},
    };
    for (const auto &[text, time] : rows)
        EXPECT_EQ(parseDate(text), time) << text.toStdString();
}

TEST(EndiciaFormat, AgreesWithTheSystemsCalendarAroundClockChanges)
{
    const QByteArray before = qgetenv("TZ");
    for (const char *zone : {"America/Los_Angeles", "America/Havana", "Australia/Lord_Howe", "Pacific/Apia", "UTC"}) {
        setZone(zone);
        EndiciaDates dates;
        constexpr qint64 step = 40'007'000; // a little over eleven hours, to cover all times of day
        for (qint64 msecs = 946'684'800'000; msecs < 1'893'456'000'000; msecs += step) { // 2000 to 2029
            const QString text = QDateTime::fromMSecsSinceEpoch(msecs).toString(u"MM/dd/yy hh:mm AP"_s);
            ASSERT_EQ(dates.text(msecs), text) << zone << ' ' << msecs;
            ASSERT_EQ(dates.text(*dates.parse(text)), text) << zone << ' ' << msecs;
        }
    }
    setZone(before);
}

TEST(EndiciaFormat, ReadsATimeSkippedInSpringAsAnHourLater)
{
    const struct {
        const char *zone;
        QString text, utc;
    } rows[] = {
        {"America/Los_Angeles", u"03/08/26 02:30 AM"_s, u"2026-03-08T10:30:00Z"_s},
        {"America/Los_Angeles", u"03/08/26 01:59 AM"_s, u"2026-03-08T09:59:00Z"_s},
        {"America/Los_Angeles", u"03/08/26 03:30 AM"_s, u"2026-03-08T10:30:00Z"_s},
        {"America/Phoenix", u"03/08/26 02:30 AM"_s, u"2026-03-08T09:30:00Z"_s},
        {"America/Havana", u"03/08/26 12:30 AM"_s, u"2026-03-08T05:30:00Z"_s}, // the skipped hour starts at midnight
    };
    const QByteArray before = qgetenv("TZ");
    for (const auto &row : rows) {
        setZone(row.zone);
        const auto time = parseDate(row.text);
        ASSERT_TRUE(time && time->isValid()) << row.zone;
        EXPECT_EQ(time->toUTC().toString(Qt::ISODate), row.utc) << row.zone << ' ' << row.text.toStdString();
    }
    setZone(before);
}

} // namespace parcelory::test
