#include "records/ShipmentLog.h"
#include "core/Progress.h"
#include "records/EndiciaFormat.h"
#include "records/RefundNotes.h"
#include "support/HeldPool.h"
#include "support/LogFile.h"

namespace parcelory::test {
namespace {

using R = ShipmentRecord;
/// Every text of a row; first the texts of an exchange file, in its order.
constexpr QString R::*allTexts[] = {
    &R::transactionID, &R::recipient,     &R::zip11,           &R::balance,   &R::service,   &R::services,
    &R::tracking,      &R::declaredValue, &R::descriptionText, &R::reference, &R::groupCode, &R::email,
    &R::carrier,       &R::trackingURL,   &R::weight,          &R::labelURL,  &R::status,    &R::customsDocURL};

/// A record with numbered texts.
ShipmentRecord fullRecord()
{
    ShipmentRecord record{.createdAt = QDateTime(QDate(2026, 11, 20), QTime(14, 41, 5, 250)),
                          .postage = 12.44,
                          .weightOz = 24,
                          .testMode = true,
                          .zpl = QByteArray("^XA\0^XZ", 7),
                          .isIntl = true,
                          .customsPDF = "%PDF"};
    for (int number = 0; QString R::*text : allTexts)
        record.*text = u"#%1"_s.arg(++number);
    return record;
}

struct LogTest : testing::Test {
    LogFile file;
    ShipmentLog log{QDir(file.folder.path())};

    QString path() const { return file.path(u"log.txt"_s); }
    /// Inserts rows that tests/data tells: the minute and other fields. An imported text may be megabytes long.
    void insertRows(const char *name)
    {
        for (const Json &row : table(u"mailing-log"_s, name)) {
            ShipmentRecord record = changed(shipmentTo({}, row[0]), row[1]);
            record.services = QString(1001, u'x');
            EXPECT_TRUE(log.insert(record, false));
        }
    }
    void putLines(const QByteArray &lines) { file.put(u"log.txt"_s, lines); }
};

} // namespace

TEST(ShipmentLog, MigratesALogOfTheFirstVersionOnce)
{
    const LogFile file;
    file.run(dataFile(u"first-mailing-log.sql"_s) +
             "INSERT INTO shipments (created_at, recipient, postage, status, zpl)"
             " VALUES (1500000000.5, 'Old', 7.42, NULL, x'5E5841');");
    const QByteArray columns = "SELECT name FROM pragma_table_info('shipments') ORDER BY cid";
    const QStringList before = file.ask(columns);
    for (int start = 0; start < 2; ++start) {
        ShipmentLog log(QDir(file.folder.path()));
        EXPECT_EQ(file.ask(columns),
                  before + QStringList({u"weight_oz"_s, u"zip11"_s, u"declared_value"_s, u"group_code"_s, u"email"_s,
                                        u"balance"_s, u"is_intl"_s, u"customs_doc_url"_s, u"customs_pdf"_s}));
        EXPECT_EQ(shown(log), QStringList{u"Old"_s});
        const ShipmentRecord &old = log.records().first();
        EXPECT_EQ(old.createdAt.toMSecsSinceEpoch(), 1500000000500);
        EXPECT_TRUE(old.status.isEmpty() && old.zip11.isEmpty() && old.weightOz == 0 && !old.hasCustomsPDF);
        EXPECT_EQ(*log.zpl(old.id), "^XA");
    }
}

TEST(ShipmentLog, ReadsBackEveryFieldAndTheDocumentsOnlyOnDemand)
{
    const LogFile file;
    const ShipmentRecord written = fullRecord();
    {
        ShipmentLog log(QDir(file.path(u"not/yet/there"_s)));
        EXPECT_TRUE(log.insert(written));
        EXPECT_TRUE(log.records().isEmpty()); // delivered later, by the event loop
    }
    ShipmentLog log(QDir(file.path(u"not/yet/there"_s)));
    ASSERT_EQ(shown(log).size(), 1);
    ShipmentRecord listed = written;
    listed.id = 1;
    listed.hasCustomsPDF = true;
    listed.zpl = listed.customsPDF = std::nullopt;
    EXPECT_EQ(log.records().first(), listed);
    EXPECT_EQ(*log.zpl(1), written.zpl);
    EXPECT_EQ(*log.customsPDF(1), written.customsPDF);
}

TEST_F(LogTest, HasNoDocumentForARowWithoutOneNorForAnUnknownRow)
{
    ShipmentRecord empty = shipmentTo(u"Empty"_s);
    empty.zpl = QByteArray();
    EXPECT_TRUE(log.insert(shipmentTo(u"None"_s)) && log.insert(empty));
    for (const qint64 id : {1, 2, 3}) {
        EXPECT_EQ(*log.zpl(id), std::nullopt);
        EXPECT_EQ(*log.customsPDF(id), std::nullopt);
    }
    EXPECT_TRUE(log.storeCustomsPDF(rowOf(log, 1), "%PDF"));
    EXPECT_EQ(shown(log).size(), 2);
    EXPECT_EQ(std::ranges::count(log.records(), true, &ShipmentRecord::hasCustomsPDF), 1) << "the list is read again";
    EXPECT_TRUE(log.setStatus(rowOf(log, 2), u"REFUND_PENDING"_s));
    log.reload();
    EXPECT_EQ(shown(log).size(), 2);
    EXPECT_EQ(*log.customsPDF(1), "%PDF");
    EXPECT_EQ(file.ask("SELECT status || (customs_pdf IS NULL) FROM shipments ORDER BY id"),
              (QStringList{u"PRINTED0"_s, u"REFUND_PENDING1"_s}));
}

TEST_F(LogTest, ListsTheNewestRowsFirstAndSearchesFourColumnsWithWildcards)
{
    insertRows("searched rows");
    EXPECT_TRUE(shown(log).isEmpty());

    for (const Json &row : table(u"mailing-log"_s, "search")) {
        log.reload(text(row[0]), row[1]);
        EXPECT_EQ(shown(log), texts(row[2])) << row;
    }
    log.reload(u"inv-"_s);
    shown(log);
    EXPECT_EQ(log.records().first().services, QString(1000, u'x') + u'…');
}

TEST_F(LogTest, LooksAgainForWhatIsSpelledAlike)
{
    insertRows("rows that are spelled alike");
    for (const Json &row : table(u"mailing-log"_s, "spelled alike")) {
        log.reload(text(row[0]));
        EXPECT_EQ(shown(log), texts(row[1])) << row;
        EXPECT_EQ(log.isShownAlike(), row[2].get<bool>()) << row;
    }
    log.reload(u"AMÉLI"_s, 1);
    EXPECT_EQ(shown(log), QStringList{u"Amelia"_s});
}

TEST_F(LogTest, ExportsOldestFirstAndImportsItBackInTheSameOrder)
{
    EXPECT_EQ(exported(log), EndiciaFormat::header() + u'\n');
    ShipmentRecord full = fullRecord();
    full.createdAt = shipmentTo({}, 42).createdAt; // an exchange file has no seconds
    full.status = u"REFUNDED"_s;
    EXPECT_TRUE(log.insert(full) && log.insert(shipmentTo(u"Second\r\nline\t\U0001FA99 'א';"_s, 42)) &&
                log.insert(shipmentTo(u"First"_s)));
    const QString text = exported(log);
    EXPECT_EQ(text,
              EndiciaFormat::header() +
                  u"\n\tStamp\t11/20/26 02:00 PM\t\tFirst\t\t0.00\t\t\t\t\t\t\t\t\t\t\n"
                  "REFUNDED\tStamp\t11/20/26 02:42 PM\t#1\t#2\t#3\t12.44\t24\t#4\t#5\t#6\t#7\t#8\t#9\t#10\t#11\t#12\n"
                  "\tStamp\t11/20/26 02:42 PM\t\tSecond  line \U0001FA99 'א';\t\t0.00\t\t\t\t\t\t\t\t\t\t\n"_s);

    putLines(text.toUtf8());
    const LogFile copy;
    ShipmentLog second(QDir(copy.folder.path()));
    EXPECT_EQ(second.importEndiciaCSV(path()).imported, 3);
    EXPECT_EQ(exported(second), text);
    EXPECT_EQ(shown(second), (QStringList{u"Second  line \U0001FA99 'א';"_s, full.recipient, u"First"_s}));
    EXPECT_EQ(second.records()[0].status, QString()); // "PRINTED" is not exported
    EXPECT_EQ(second.records()[1].weight, u"1 lb 8 oz"_s);
    EXPECT_EQ(second.importEndiciaCSV(path()).imported, 3); // imports do not check for duplicates
    EXPECT_EQ(copy.recipients().size(), 6);
}

TEST_F(LogTest, TellsWhichLinesOfAnImportWereKnownShortOrUndated)
{
    const auto line = [](const QByteArray &recipient, const QByteArray &date, const QByteArray &tracking) {
        return mailLine(recipient).replace("11/20/26 02:41 PM", date).replace("9400", tracking);
    };
    putLines(EndiciaFormat::header().toUtf8() + "\r\n" +                  // line 1
             line("Ana", "11/20/2016 14:41", "1").replace("\n", "\r\n") + // 2
             "\r\na\tb\tc\r\n" +                                          // 3 is empty, 4 too short
             line("Ben", "yesterday", "2") + line("Cy", "", "") + "total\n");
    const auto imported = [&](KnownRows known) {
        const ImportReport report = log.importEndiciaCSV(path(), known);
        EXPECT_EQ(report.skippedLines, (QList<int>{4, 7}));
        return report;
    };
    EXPECT_EQ(log.knownLines(path()), 0);
    const ImportReport first = imported(KnownRows::skip);
    EXPECT_EQ(std::tuple(first.imported, first.known), std::tuple(3, 0));
    EXPECT_EQ(first.undatedLines, (QList<int>{5, 6}));
    EXPECT_EQ(log.knownLines(path()), 2);
    const ImportReport second = imported(KnownRows::skip);
    EXPECT_EQ(std::tuple(second.imported, second.known), std::tuple(1, 2)) << "the row without a number";
    const ImportReport third = imported(KnownRows::import);
    EXPECT_EQ(std::tuple(third.imported, third.known), std::tuple(3, 2));

    ASSERT_EQ(shown(log).size(), 7);
    for (const ShipmentRecord &record : log.records()) {
        const qint64 age = record.createdAt.secsTo(QDateTime::currentDateTime());
        EXPECT_TRUE(record.recipient == u"Ana"_s || (age >= 0 && age < 60)) << "dated with its import";
    }
    for (const int days : {-1, 0}) // midnight may pass meanwhile
        EXPECT_EQ(log.labelsOf(QDate::currentDate().addDays(days))->size(), 0) << "a row without a date is of no day";
    EXPECT_EQ(log.labelsOf(QDate(2016, 11, 20))->size(), 2);
}

TEST_F(LogTest, NumbersAndSealsTheLinesOfALongImportAndKeepsTheIndexes)
{
    QByteArray text;
    QStringList recipients;
    for (int line = 1; line <= 9000; ++line) { // several portions
        const QString recipient = u"Recipient %1"_s.arg(line);
        if (line == 8500) {
            text += "too\tshort\n";
            continue;
        }
        text += mailLine(recipient.toLatin1())
                    .replace("11/20/26 02:41 PM", line == 8700 ? "yesterday" : "11/20/26 02:41 PM");
        recipients += recipient;
    }
    putLines(text);
    const ImportReport report = log.importEndiciaCSV(path());
    EXPECT_EQ(report.skippedLines, QList<int>{8500});
    EXPECT_EQ(report.undatedLines, QList<int>{8700});
    EXPECT_EQ(file.ask("SELECT recipient FROM shipments JOIN undated_imports ON shipment_id = id"),
              QStringList{u"Recipient 8700"_s});
    EXPECT_EQ(file.recipients(), recipients);
    const auto verified = log.verify();
    EXPECT_TRUE(verified.isRead() && verified->labels == 8999 && verified->findings.isEmpty());
    EXPECT_EQ(file.ask("SELECT count(*) FROM sqlite_master WHERE type = 'index' AND tbl_name = 'shipments'"),
              QStringList(u"3"_s));
}

TEST_F(LogTest, KeepsTheRefundOfADeliveredParcel)
{
    ShipmentRecord label = shipmentTo(u"Ana"_s);
    label.transactionID = transactionId();
    EXPECT_TRUE(log.insert(label));
    const auto row = [&] { return (*log.find({.id = 1})).value(); };
    const QStringList refunds = {u"none"_s, u"pending"_s, u"granted"_s, u"failed"_s};
    for (const Json &step : table(u"mailing-log"_s, "refund of a delivered parcel")) {
        const qsizetype refund = refunds.indexOf(text(step[0]));
        EXPECT_TRUE(refund < 0 ? log.setStatus(rowOf(log, 1), text(step[0]))
                               : log.setRefund(rowOf(log, 1), RefundState(refund)))
            << step;
        EXPECT_EQ(row().status + u' ' + row().refund, text(step[1]) + u' ' + text(step[2])) << step;
        EXPECT_EQ(log.openRefunds(99, 50)->size(), step[3].get<bool>()) << step;
    }
}

TEST(ShipmentLog, ImportsFilesAsOtherProgramsWriteThem)
{
    const QByteArray a = mailLine("Ana"), b = mailLine("Bé"), head = EndiciaFormat::header().toUtf8() + '\n';
    const std::tuple<const char *, QByteArray, QStringList> rows[] = {
        {"carriage returns", QByteArray(head + a + b).replace("\n", "\r\n"), {u"Ana"_s, u"Bé"_s}},
        {"a byte order mark before the header", "\xEF\xBB\xBF" + head + a, {u"Ana"_s}},
        {"a byte order mark before a row", "\xEF\xBB\xBFVOID" + a, {u"Ana"_s}},
        {"no last line feed", (a + b).chopped(1), {u"Ana"_s, u"Bé"_s}},
        {"blank and short lines", "\n\n \nStatus\n" + a + "a\tb\tc\n\n" + b, {u"Ana"_s, u"Bé"_s}},
        {"nothing", "", {}},
    };
    for (const auto &[what, bytes, recipients] : rows) {
        const LogFile file;
        ShipmentLog log(QDir(file.folder.path()));
        file.put(u"log.txt"_s, bytes);
        EXPECT_EQ(log.importEndiciaCSV(file.path(u"log.txt"_s)).imported, recipients.size()) << what;
        EXPECT_EQ(file.recipients(), recipients) << what;
        EXPECT_EQ(file.ask("SELECT 1 FROM shipments WHERE status NOT IN ('', 'VOID')"), QStringList()) << what;
    }
}

TEST_F(LogTest, AnImportNeedsNoThreadThatHangs)
{
    putLines(mailLine("Ana").repeated(5000)); // several pieces
    const HeldPool held;
    EXPECT_EQ(log.importEndiciaCSV(path()).imported, 5000);
    EXPECT_TRUE(log.verify()->findings.isEmpty());
}

TEST_F(LogTest, ReportsTheProgressOfAnExchangeAndCancelsIt)
{
    putLines(mailLine("Ana").repeated(5000));
    QList<std::pair<qint64, qint64>> told;
    const Progress tell({}, [&told](qint64 done, qint64 total) { told.append({done, total}); });
    const auto canceledAt = [](int percent) {
        const CancelToken cancel;
        return Progress(cancel, [cancel, percent](qint64 done, qint64 total) {
            if (done >= total * percent / 100)
                cancel.cancel();
        });
    };

    for (const Progress &end : {canceledAt(50), canceledAt(60), canceledAt(100)}) // rows, indexes, the end
        EXPECT_TRUE(log.importEndiciaCSV(path(), KnownRows::import, end).isCanceled);
    file.run("CREATE TABLE bulk (bytes BLOB); INSERT INTO bulk VALUES (zeroblob(8000000))"); // portions of a copy
    bool isCanceled = false;
    const Progress importing({}, [&](qint64, qint64) { // while the log is copied
        isCanceled = std::async(std::launch::async, [&] {
                         return log.importEndiciaCSV(path(), KnownRows::import, canceledAt(100)).isCanceled;
                     }).get();
    });
    EXPECT_EQ(log.copyTo(file.path(u"copy.sqlite"_s), importing), QString());
    EXPECT_TRUE(isCanceled);
    EXPECT_EQ(file.recipients(), QStringList());
    EXPECT_EQ(log.importEndiciaCSV(path(), KnownRows::import, tell).imported, 5000);
    const qint64 bytes = 5000 * mailLine("Ana").size(); // indexes and entries count as much
    EXPECT_EQ(told.last(), std::pair(2 * bytes, 2 * bytes));
    EXPECT_GT(told.size(), 1);

    told.clear();
    QBuffer whole, half, refusing;
    ASSERT_TRUE(whole.open(QIODevice::WriteOnly) && half.open(QIODevice::WriteOnly));
    EXPECT_TRUE(*log.exportEndiciaCSV(whole, tell));
    EXPECT_EQ(told.last(), std::pair(qint64(5000), qint64(5000)));
    EXPECT_EQ(whole.data().count('\n'), 5001);
    EXPECT_FALSE(*log.exportEndiciaCSV(half, canceledAt(50)));
    EXPECT_LT(half.size(), whole.size());
    EXPECT_TRUE(whole.data().startsWith(half.data()));
    EXPECT_FALSE(*log.exportEndiciaCSV(refusing)); // not open, so writing fails
}

TEST_F(LogTest, RejectsAFileThatIsNotText)
{
    file.put(u"latin1.txt"_s, mailLine("Ana") + mailLine("B\xE9"));
    file.put(u"cut.txt"_s, mailLine("Ana") + mailLine("B").chopped(1) + "\xC3"); // ends inside a character
    file.put(u"utf16.txt"_s, QByteArray("\xFF\xFE"
                                        "A\0\t\0",
                                        6));
    for (const QString &name : {u"latin1.txt"_s, u"cut.txt"_s, u"utf16.txt"_s, u"missing.txt"_s, u"."_s})
        EXPECT_THROW(log.importEndiciaCSV(file.path(name)), AppError) << name.toStdString();
    EXPECT_THROW(log.importEndiciaCSV(u"/proc/self/mem"_s), AppError) << "opens, but cannot be read";
    EXPECT_EQ(file.recipients(), QStringList());
}

TEST_F(LogTest, TheIndexesChangeNothingButTheSpeed)
{
    const auto indexes = [&] { return file.ask("SELECT count(*) FROM sqlite_master WHERE name LIKE '%_exported'"); };
    EXPECT_EQ(indexes(), QStringList(u"1"_s)) << "a new log has it";
    for (int minute : {7, 3, 3, 9})
        EXPECT_TRUE(log.insert(shipmentTo(u"Ana %1"_s.arg(minute), minute)));
    file.run("UPDATE shipments SET email = 'late', created_at = 'no date' WHERE id = 2");
    const QString indexed = exported(log);
    const auto isSearched = [&] {
        const auto plan = log.read<bool>([](const Database &db) -> std::optional<bool> {
            Statement query(db, "EXPLAIN QUERY PLAN " + RefundNotes::unsettledIds(db));
            return query.step() && query.text(3).startsWith(u"SEARCH"_s);
        });
        return *plan;
    };
    EXPECT_TRUE(isSearched());
    file.run("DROP INDEX idx_shipments_exported; DROP INDEX idx_shipments_unsettled");
    EXPECT_EQ(exported(log), indexed);
    EXPECT_FALSE(isSearched());
    EXPECT_TRUE(log.addIndexes());
    EXPECT_TRUE(isSearched());
    EXPECT_EQ(indexes(), QStringList(u"1"_s)) << "an older log gets it";
    file.run("DROP INDEX idx_shipments_exported; UPDATE sqlite_sequence SET seq = 300001;"
             "UPDATE shipments SET id = 300001 WHERE id = 1");
    EXPECT_TRUE(log.addIndexes());
    EXPECT_EQ(indexes(), QStringList(u"0"_s)) << "the clerk would wait for the index of a large log";
}

} // namespace parcelory::test
