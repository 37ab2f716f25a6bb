#include "Compare.h"
#include "LargeLog.h"
#include "core/Task.h"
#include "records/EndiciaFormat.h"
#include "records/ShipmentLog.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <unistd.h>

namespace parcelory::bench {
using namespace Qt::StringLiterals;

namespace {

constexpr int lineCount = 100000;

/// One mail log line like those of a busy desk.
QByteArray mailLine(int number)
{
    const QByteArray n = QByteArray::number(number);
    return "\tStamp\t" + QByteArray::number(number % 12 + 1).rightJustified(2, '0') + "/" +
           QByteArray::number(number % 28 + 1).rightJustified(2, '0') + "/26 02:41 PM\t3a377267a25d49b595117fa2" + n +
           "\tEleanor Whitfield, " + n + " Montford Ave, Apt 3B, Asheville NC 28801\t28801\t7.42\t24.5\t512.10\t" +
           "Priority Mail\tSignature\t9210890175547700" + n + "\t100.00\tThree coins\tINV-" + n + "\tdesk\t" + n +
           "@example.com\n";
}

void sqliteTool(const QStringList &arguments)
{
    QProcess tool;
    tool.setStandardOutputFile(QProcess::nullDevice());
    tool.start(u"sqlite3"_s, arguments);
    if (!tool.waitForFinished(-1) || tool.exitCode() != 0)
        qFatal("sqlite3: %s", tool.readAllStandardError().constData());
}

double residentMegabytes()
{
    QFile status(u"/proc/self/statm"_s);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    return status.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1e6;
}

/// Reads every column of every row and keeps nothing.
void readAll(const Database &db, const QByteArray &sql, int columns = 26)
{
    for (Statement rows(db, sql); rows.step();) {
        for (int column = 0; column < columns; ++column)
            benchmark::DoNotOptimize(rows.blob(column));
    }
}

void reload(ShipmentLog &log, const QString &search)
{
    log.reload(search);
    QCoreApplication::sendPostedEvents();
}

/// Until the search index is loaded.
void prepareSearch(ShipmentLog &log)
{
    reload(log, {});
    workPool().waitForDone();
}

/// Our way lasts from opening the log until the search index is loaded; the plain way reads the same texts.
void readTheTextsIntoMemory(benchmark::State &state)
{
    const Database plain(largeLog().filePath(u"mailing_log.sqlite"_s));
    compare(
        state,
        [&] {
            ShipmentLog log(largeLog());
            prepareSearch(log);
        },
        [&] { readAll(plain, "SELECT recipient, tracking, description, reference FROM shipments", 4); });
}

void importOf100000Lines(benchmark::State &state)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"log.txt"_s);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("no space for the benchmark");
    file.write(EndiciaFormat::header().toUtf8() + '\n');
    for (int line = 0; line < lineCount; ++line)
        file.write(mailLine(line));
    file.close();
    // With an index on the date, as in the log.
    const QString plainTable = u"CREATE TABLE mail (\"%1\"); CREATE INDEX dates ON mail(\"Date_Time\" DESC)"_s.arg(
        EndiciaFormat::header().replace(u'\t', u"\", \""_s));
    int round = 0;
    compare(
        state,
        [&] {
            ShipmentLog log(QDir(folder.filePath(QString::number(++round))));
            if (log.importEndiciaCSV(path).imported != lineCount)
                qFatal("lines are missing");
        },
        [&] {
            sqliteTool({folder.filePath(u"plain%1"_s.arg(round)), u".mode tabs"_s, plainTable,
                        u".import --skip 1 %1 mail"_s.arg(path)});
        });
}

void exportOfTheLog(benchmark::State &state)
{
    const QDir &folder = largeLog();
    ShipmentLog log(folder);
    prepareSearch(log); // memory that grows from here on is the export's
    const double before = residentMegabytes();
    double most = before;
    const Progress watch({}, [&most](qint64, qint64) { most = std::max(most, residentMegabytes()); });
    compare(
        state,
        [&] {
            QFile file(folder.filePath(u"export.txt"_s));
            if (!file.open(QIODevice::WriteOnly) || !*log.exportEndiciaCSV(file, watch))
                qFatal("not exported");
        },
        [&] {
            sqliteTool({folder.filePath(u"mailing_log.sqlite"_s), u".mode tabs"_s,
                        u".output %1"_s.arg(folder.filePath(u"plain.txt"_s)),
                        u"SELECT status, 'Stamp', strftime('%m/%d/%Y %H:%M', created_at, 'unixepoch', 'localtime'),"
                        " transaction_id, recipient, zip11, postage, weight_oz, balance, service, services, tracking,"
                        " declared_value, description, reference, group_code, email FROM shipments"
                        " ORDER BY created_at"_s});
        });
    state.counters["grown_MB"] = most - before;
}

/// The plain way reads every byte of the rows and hashes nothing.
void verifyTheLog(benchmark::State &state)
{
    const ShipmentLog log(largeLog());
    const Database plain(largeLog().filePath(u"mailing_log.sqlite"_s));
    compare(
        state,
        [&] {
            const LogRead<LogChain::Report> report = log.verify();
            if (!report.isRead() || report->labels != rowCount() || !report->findings.isEmpty())
                qFatal("not verified");
        },
        [&] { readAll(plain, "SELECT * FROM shipments"); });
}

void newest1000Rows(benchmark::State &state)
{
    ShipmentLog log(largeLog());
    const Database plain(largeLog().filePath(u"mailing_log.sqlite"_s));
    compare(
        state, [&] { reload(log, {}); },
        [&] { readAll(plain, "SELECT * FROM shipments ORDER BY created_at DESC, id DESC LIMIT 1000"); });
}

void search(benchmark::State &state, const char *word)
{
    ShipmentLog log(largeLog());
    const Database plain(largeLog().filePath(u"mailing_log.sqlite"_s));
    const QByteArray pattern = QByteArray("'%") + word + "%'";
    const QByteArray sql = "SELECT * FROM shipments WHERE recipient LIKE " + pattern + " OR tracking LIKE " + pattern +
                           " OR description LIKE " + pattern + " OR reference LIKE " + pattern +
                           " ORDER BY created_at DESC LIMIT 1000";
    prepareSearch(log);
    compare(state, [&] { reload(log, QString::fromLatin1(word)); }, [&] { readAll(plain, sql); });
}

BENCHMARK(importOf100000Lines)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(exportOfTheLog)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(verifyTheLog)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(readTheTextsIntoMemory)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(newest1000Rows)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(search, oneRow, "INV-77777")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK_CAPTURE(search, noRow, "zq")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK_CAPTURE(search, someRows, "i%7777_,%ville")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK_CAPTURE(search, wildcards, "m_n%f_rd%x")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK_CAPTURE(search, everyRow, "Montford")->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
} // namespace parcelory::bench
