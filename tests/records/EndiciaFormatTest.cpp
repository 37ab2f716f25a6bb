#include "records/EndiciaFormat.h"
#include "records/EndiciaDates.h"
#include "support/Table.h"

#include <QByteArrayList>
#include <QLocale>

#include <ctime>

namespace parcelory::test {
namespace {

void setZone(const QByteArray &zone)
{
    zone.isEmpty() ? qunsetenv("TZ") : qputenv("TZ", zone);
    tzset();
}

std::optional<EndiciaFormat::Line> parse(const QByteArray &line)
{
    EndiciaDates dates;
    return EndiciaFormat::parse(line, dates);
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
    const std::optional<qint64> msecs = EndiciaDates().parse(text.toUtf8());
    return msecs ? std::optional(QDateTime::fromMSecsSinceEpoch(*msecs)) : std::nullopt;
}

QByteArray fieldsOf(int count)
{
    QByteArrayList fields;
    for (int field = 0; field < count; ++field)
        fields += " f" + QByteArray::number(field) + ' ';
    fields[2] = "11/20/26 02:41 PM";
    return fields.join('\t');
}

} // namespace

TEST(EndiciaFormat, FillsOnlyTheFieldsThatALineHas)
{
    EXPECT_FALSE(parse(fieldsOf(11)) || parse(EndiciaFormat::header().toUtf8()));
    for (const int count : {12, 13, 16, 17, 18}) {
        const QByteArray text = fieldsOf(count);
        const auto line = parse(text);
        ASSERT_TRUE(line) << count;
        const QByteArrayView required[] = {line->status,  line->transactionID, line->recipient, line->zip11,
                                           line->balance, line->service,       line->services,  line->tracking};
        EXPECT_TRUE(std::ranges::equal(required, QByteArrayList{"f0", "f3", "f4", "f5", "f8", "f9", "f10", "f11"}));
        const QByteArrayView optional[] = {line->declaredValue, line->descriptionText, line->reference, line->groupCode,
                                           line->email};
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(optional[i], 12 + i < count ? 'f' + QByteArray::number(12 + i) : QByteArray()) << count;
    }
}

TEST(EndiciaFormat, ReadsPostageAndWeight)
{
    for (const Json &row : table(u"mail-log"_s, "amounts")) {
        const auto line = parse(u"\t\t\t\t\t\t%1\t%2\t\t\t\t"_s.arg(text(row[0]), text(row[1])).toUtf8());
        ASSERT_TRUE(line);
        EXPECT_EQ(line->postage, row[2].get<double>()) << row;
        EXPECT_EQ(line->weightOz, row[3].get<double>()) << row;
        EXPECT_EQ(EndiciaFormat::shownWeight(line->weightOz), text(row[4]).toUtf8()) << row;
    }
}

TEST(EndiciaFormat, WritesWholeOuncesAndOmitsTheUsualStates)
{
    for (const Json &row : table(u"mail-log"_s, "written amounts")) {
        const QByteArray status = text(row[0]).toUtf8();
        const QStringList fields = written({.status = status, .postage = row[2], .weightOz = row[1]}).split(u'\t');
        ASSERT_EQ(fields.size(), 17);
        EXPECT_EQ((QStringList{fields[0], fields[6], fields[7]}),
                  (QStringList{text(row[3]), text(row[4]), text(row[5])}));
    }
}

TEST(EndiciaFormat, KeepsARecordOnOneLineForEveryContent)
{
    const QString line = written({.recipient = "a\tb\nc\rd\ve\ff\u0085g\u2028h\u2029i"});
    EXPECT_EQ(linesOf(line), QStringList{line});
    EXPECT_EQ(line.count(u'\t'), 16);
    EXPECT_EQ(linesOf(u"a\n\nb\r\nc\rd\u2028e\n"_s), (QStringList{u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s}));
}

TEST(EndiciaFormat, TakesWholeLinesFromAText)
{
    const QByteArray text = "a\nbc\r\nd\xE2\x80\xA8\n\re";
    for (qsizetype size = 1; size <= text.size(); ++size) {
        QByteArrayView rest = text;
        QByteArray all;
        while (!rest.isEmpty()) {
            const QByteArrayView lines = EndiciaFormat::takeLines(rest, size);
            all += lines;
            EXPECT_GE(lines.size(), std::min(size, text.size() - all.size() + lines.size()));
            EXPECT_TRUE(rest.isEmpty() || EndiciaFormat::lineEnds(lines.last(1)) || lines.endsWith("\xA8")) << size;
            EXPECT_FALSE(lines.endsWith('\r') && rest.startsWith('\n')) << size;
        }
        EXPECT_EQ(all, text);
    }
}

TEST(EndiciaFormat, WritesDatesOnATwelveHourClockAndReadsThemAsSpreadsheetsSaveThem)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt)); // the same in every language
    const auto timeOf = [](const Json &cell) { return QDateTime::fromString(text(cell), Qt::ISODate); };
    for (const Json &row : table(u"mail-log"_s, "clock times")) {
        EXPECT_EQ(EndiciaDates().text(timeOf(row[1]).toMSecsSinceEpoch()), text(row[0]).toLatin1());
        EXPECT_EQ(parseDate(text(row[0])), timeOf(row[1])) << row;
    }
    for (const Json &row : table(u"mail-log"_s, "other dates"))
        EXPECT_EQ(parseDate(text(row[0])), timeOf(row[1])) << row;
    for (const QString &other : texts(table(u"mail-log"_s, "no dates")))
        EXPECT_FALSE(parseDate(other)) << other.toStdString();
    QLocale::setDefault(before);
}

TEST(EndiciaFormat, AgreesWithTheSystemsCalendarAroundClockChanges)
{
    const QByteArray before = qgetenv("TZ");
    for (const char *zone : {"America/Los_Angeles", "America/Havana", "Australia/Lord_Howe", "Pacific/Apia", "UTC"}) {
        setZone(zone);
        EndiciaDates dates;
        constexpr qint64 step = 40'007'000; // a little over eleven hours, to cover all times of day
        for (qint64 msecs = 946'684'800'000; msecs < 1'893'456'000'000; msecs += step) { // 2000 to 2029
            const QByteArray text = QDateTime::fromMSecsSinceEpoch(msecs).toString(u"MM/dd/yy hh:mm AP"_s).toLatin1();
            ASSERT_EQ(dates.text(msecs), text) << zone << ' ' << msecs;
            ASSERT_EQ(dates.text(*dates.parse(text)), text) << zone << ' ' << msecs;
        }
    }
    setZone(before);
}

TEST(EndiciaFormat, ReadsATimeSkippedInSpringAsAnHourLater)
{
    const QByteArray before = qgetenv("TZ");
    for (const Json &row : table(u"mail-log"_s, "skipped hours")) {
        setZone(text(row[0]).toUtf8());
        const auto time = parseDate(text(row[1]));
        ASSERT_TRUE(time && time->isValid()) << row;
        EXPECT_EQ(time->toUTC().toString(Qt::ISODate), text(row[2])) << row;
    }
    setZone(before);
}

} // namespace parcelory::test
