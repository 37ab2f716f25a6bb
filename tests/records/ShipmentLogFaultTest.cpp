#include "records/ScanForms.h"
#include "support/FaultyDisk.h"
#include "support/LogFile.h"
#include "support/WaitingRoom.h"

#include <QScopeGuard>
#include <unistd.h>

namespace parcelory::test {
namespace {

QByteArray manyLines(int count)
{
    QByteArray text;
    for (int line = 0; line < count; ++line)
        text += mailLine("Recipient " + QByteArray::number(line) + QByteArray(100, 'x'));
    return text;
}

QString importFailure(ShipmentLog &log, const QString &path)
{
    return failureOf([&] { log.importEndiciaCSV(path); });
}

/// A log with one row, for faults to happen to.
struct UsedLog : LogFile {
    ShipmentLog log{QDir(folder.path())};

    explicit UsedLog(const QString &recipient = u"Before"_s) { EXPECT_TRUE(log.insert(shipmentTo(recipient))); }
};

/// The log contains only that row, still reads and writes rows, and its file is intact.
void expectHealthy(const LogFile &file, ShipmentLog &log)
{
    EXPECT_EQ(file.recipients(), QStringList{u"Before"_s});
    EXPECT_EQ(shown(log), QStringList{u"Before"_s});
    EXPECT_TRUE(log.insert(shipmentTo(u"After"_s)));
    EXPECT_EQ(file.recipients(), (QStringList{u"Before"_s, u"After"_s}));
    EXPECT_EQ(file.ask("PRAGMA integrity_check"), QStringList{u"ok"_s});
}

} // namespace

TEST(ShipmentLog, ReportsALostRowWhenTheLockIsNeverReleased)
{
    const WaitingRoom room;
    UsedLog file;
    file.put(u"log.txt"_s, mailLine("Ana"));
    Database other(file.path());
    ASSERT_TRUE(other.exec("BEGIN IMMEDIATE"));
    WaitingRoom::waited = 0;
    EXPECT_FALSE(file.log.insert(shipmentTo(u"Lost"_s)));
    EXPECT_GT(WaitingRoom::waited, 4500000); // it waited the full time
    EXPECT_TRUE(file.log.lastError().contains(u"locked"_s)) << file.log.lastError().toStdString();
    EXPECT_FALSE(file.log.setStatus({.id = 1}, u"REFUNDED"_s) || file.log.storeCustomsPDF({.id = 1}, "%PDF"));
    EXPECT_TRUE(importFailure(file.log, file.path(u"log.txt"_s)).contains(u"database is locked"_s));
    ASSERT_TRUE(other.exec("ROLLBACK"));
    expectHealthy(file, file.log);
}

TEST(ShipmentLog, FollowsAnotherProgramThatRestoresACopy)
{
    const WaitingRoom room;
    const auto restoreAt = [](const LogFile &file, const QString &recipient) { file.replaceWith(UsedLog(recipient)); };
    for (const bool isWaiting : {false, true}) {
        SCOPED_TRACE(isWaiting);
        UsedLog file;
        int told = 0;
        QObject::connect(&file.log, &ShipmentLog::replacedElsewhere, [&told] { ++told; });
        const auto after = [&](const QString &recipient, const std::function<void()> &work) {
            afterRestoring(file.path(), isWaiting, [&] { restoreAt(file, recipient); }, work);
        };
        after(u"Ana"_s, [&] { EXPECT_TRUE(file.log.insert(shipmentTo(u"After"_s))); });
        EXPECT_EQ(file.recipients(), (QStringList{u"Ana"_s, u"After"_s}));
        EXPECT_EQ(shown(file.log), (QStringList{u"After"_s, u"Ana"_s}));
        after(u"Bo"_s, [&] { EXPECT_EQ(rowOf(file.log, 1).recipient, u"Bo"_s); });
        after(u"Cy"_s, [&] { EXPECT_TRUE(file.log.reload()); });
        EXPECT_EQ(shown(file.log), QStringList{u"Cy"_s});
        EXPECT_EQ(told, 3);
        file.put(u"log.txt"_s, mailLine("Dee"));
        after(u"Di"_s, [&] { EXPECT_EQ(file.log.importEndiciaCSV(file.path(u"log.txt"_s)).imported, 1); });
        EXPECT_EQ(file.recipients(), (QStringList{u"Di"_s, u"Dee"_s}));
        ASSERT_TRUE(QFile::remove(file.path()));
        EXPECT_FALSE(file.log.insert(shipmentTo(u"Lost"_s)));
        EXPECT_FALSE(QFile::exists(file.path())) << "a log that is gone is not begun anew";
    }
}

TEST(ShipmentLog, FindsALabelThatHasAnotherIdInTheRestoredLog)
{
    const LogFile file, copy;
    ShipmentLog log(QDir(file.folder.path()));
    ShipmentRecord ana = shipmentTo(u"Ana"_s), bo = shipmentTo(u"Bo"_s);
    ana.transactionID = transactionId(1);
    bo.transactionID = transactionId(2);
    ASSERT_TRUE(log.insert(ana) && log.insert(bo));
    ana = rowOf(log, 1);
    bo = rowOf(log, 2);
    {
        ShipmentLog restored(QDir(copy.folder.path()));
        ASSERT_TRUE(restored.insert(bo, false));
    }
    file.replaceWith(copy);
    EXPECT_EQ(log.find(bo)->value_or(ShipmentRecord()).id, 1);
    EXPECT_FALSE(*log.find(ana)) << "its id is another label's";
    EXPECT_FALSE(log.setStatus(ana, u"REFUND_PENDING"_s));
    EXPECT_EQ(rowOf(log, 1).status, bo.status);
    EXPECT_TRUE(log.setStatus(bo, u"REFUND_PENDING"_s));
    EXPECT_EQ(rowOf(log, 1).status, u"REFUND_PENDING"_s);
}

TEST(ShipmentLog, TellsTheLastFailureWhileAnotherThreadWrites)
{
    UsedLog file;
    std::future<QString> reason;
    EXPECT_TRUE(file.log.change([&](Database &) {
        reason = std::async(std::launch::async, [&] { return file.log.lastError(); });
        return reason.wait_for(60s) == std::future_status::ready;
    }));
}

TEST(ShipmentLog, TellsAnUnreadableLogFromAMissingLabelAfterOneWait)
{
    const WaitingRoom room;
    UsedLog file;
    ShipmentLog &log = file.log;
    LabelHistory history(log);
    const ScanForms forms(log);
    const QDateTime now = shipmentTo({}, 9).createdAt;
    EXPECT_TRUE(history.addReprint(rowOf(log, 1), now));
    EXPECT_TRUE(ScanForms(log).begin({.askedAt = now, .manifestId = {}, .transactions = {}}));
    const auto failureOf = [](const auto &read) { return read.isRead() ? u"read"_s : read.failure(); };
    const std::function<QString()> reads[] = {
        [&] { return failureOf(log.find({.id = 99})); },
        [&] { return failureOf(log.labelsOf(now.date())); },
        [&] { return failureOf(log.labelsLike(u"R"_s, now, false, [](const ShipmentRecord &) { return true; })); },
        [&] { return failureOf(log.openRefunds(99, 50)); },
        [&] { return failureOf(log.zpl(99)); },
        [&] { return failureOf(log.customsPDF(99)); },
        [&] { return failureOf(history.of(99)); },
        [&] { return failureOf(forms.underWay(false)); },
        [&] { return failureOf(forms.formWith(u"t"_s)); },
        [&] {
            QBuffer out;
            out.open(QIODevice::WriteOnly);
            return failureOf(log.exportEndiciaCSV(out));
        },
        [&] {
            QString failure = u"read"_s;
            QObject here;
            QObject::connect(&log, &ShipmentLog::readingFailed, &here, [&](const QString &text) { failure = text; });
            log.reload(u"Before"_s);
            settle();
            return failure;
        }};
    for (const auto &read : reads)
        EXPECT_EQ(read(), u"read"_s);
    Database other(file.path());
    ASSERT_TRUE(other.exec("BEGIN EXCLUSIVE"));
    for (const auto &read : reads) {
        WaitingRoom::expect(0, {});
        EXPECT_EQ(read(), u"The mailing log could not be read — another program has it open (database is locked). "
                          "Close that program, or wait until it is done, and try again."_s);
        EXPECT_GT(WaitingRoom::waited, 4500000);
        EXPECT_LT(WaitingRoom::waited, 5500000) << &read - reads;
    }
    ASSERT_TRUE(other.exec("ROLLBACK"));
    expectHealthy(file, log);
}

TEST(ShipmentLog, OpensAnOlderLogWithoutWaitingAndPreparesItLater)
{
    const WaitingRoom room;
    const LogFile file;
    file.run(dataFile(u"first-mailing-log.sql"_s));
    for (const char *lock : {"BEGIN IMMEDIATE", "BEGIN EXCLUSIVE"}) {
        Database other(file.path());
        ASSERT_TRUE(other.exec(lock));
        WaitingRoom::expect(0, {});
        ShipmentLog log(QDir(file.folder.path()));
        EXPECT_EQ(WaitingRoom::waited, 0) << "the window is not up yet";
        EXPECT_FALSE(log.insert(shipmentTo(u"Ana"_s)));
        EXPECT_LT(WaitingRoom::waited, 5500000);
        WaitingRoom::expect(1000000, [&other] { EXPECT_TRUE(other.exec("ROLLBACK")); });
        EXPECT_TRUE(log.insert(shipmentTo(u"Ana"_s))) << lock;
        EXPECT_EQ(shown(log).first(), u"Ana"_s);
        file.run("DROP INDEX IF EXISTS idx_shipments_exported; ALTER TABLE shipments DROP COLUMN zip11");
    }
}

TEST(ShipmentLog, AddsALabelOnlyOnce)
{
    const WaitingRoom room;
    UsedLog file;
    ShipmentRecord label = shipmentTo(u"Ana"_s);
    label.transactionID = transactionId();
    Database other(file.path());
    for (const char *lock : {"BEGIN EXCLUSIVE", "BEGIN EXCLUSIVE", "BEGIN IMMEDIATE"}) {
        ASSERT_TRUE(other.exec(lock));
        WaitingRoom::expect(4000000, [&other] { EXPECT_TRUE(other.exec("ROLLBACK")); });
        EXPECT_TRUE(file.log.insertOnce(label));
    }
    ASSERT_TRUE(other.exec("BEGIN EXCLUSIVE"));
    WaitingRoom::expect(6000000, [&other] { EXPECT_TRUE(other.exec("ROLLBACK")); });
    EXPECT_FALSE(file.log.insertOnce(label)) << "neither found nor added";
    EXPECT_EQ(file.recipients(), (QStringList{u"Before"_s, u"Ana"_s}));
}

TEST(ShipmentLog, ReportsALostRowWhenTheDiskIsFull)
{
    UsedLog file;
    file.put(u"log.txt"_s, manyLines(20000));
    {
        const FullDisk disk(64 * 1024);
        ShipmentRecord large = shipmentTo(u"Lost"_s);
        large.zpl = QByteArray(200 * 1024, 'x');
        EXPECT_FALSE(file.log.insert(large));
        EXPECT_TRUE(
            importFailure(file.log, file.path(u"log.txt"_s)).contains(u"so nothing was imported — disk I/O error"_s));
    }
    expectHealthy(file, file.log);
}

TEST(ShipmentLog, UndoesAChangeThatFailsHalfway)
{
    UsedLog file;
    EXPECT_FALSE(file.log.change([](Database &db) { return db.exec("DELETE FROM shipments") && false; }));
    expectHealthy(file, file.log);
}

TEST(ShipmentLog, KeepsRowsOutOfAnImportThatFailsOnAnotherThread)
{
    UsedLog file;
    file.run("CREATE TRIGGER refuse BEFORE INSERT ON shipments WHEN NEW.recipient = 'Bad'"
             " BEGIN SELECT RAISE(ABORT, 'no such customer'); END;");
    file.put(u"log.txt"_s, manyLines(500) + mailLine("Bad"));
    std::atomic<bool> stop = false;
    std::thread importer([&] {
        while (!stop)
            EXPECT_THROW(file.log.importEndiciaCSV(file.path(u"log.txt"_s)), AppError);
    });
    QStringList bought = {u"Before"_s};
    for (int label = 0; label < 30; ++label) {
        bought += QString::number(label);
        EXPECT_TRUE(file.log.insert(shipmentTo(bought.last()), false));
    }
    stop = true;
    importer.join();
    EXPECT_EQ(file.recipients(), bought);
}

TEST(ShipmentLog, IsUnchangedWhenTheProgramIsKilledDuringAnImport)
{
    const LogFile file;
    file.put(u"log.txt"_s, manyLines(20000));
    EXPECT_TRUE(ShipmentLog(QDir(file.folder.path())).insert(shipmentTo(u"Before"_s), false));
    const auto importUntilKilled = [&file] {
        ShipmentLog log(QDir(file.folder.path()));
        const FullDisk disk(1024 * 1024, [](int) { kill(getpid(), SIGKILL); });
        log.importEndiciaCSV(file.path(u"log.txt"_s));
    };
    EXPECT_EXIT(importUntilKilled(), testing::KilledBySignal(SIGKILL), "");
    EXPECT_GT(QFile(file.path(u"mailing_log.sqlite-journal"_s)).size(), 0); // the import had started to write
    ShipmentLog log(QDir(file.folder.path()));
    expectHealthy(file, log);
}

TEST(ShipmentLog, KeepsRunningWithoutAUsableFile)
{
    const std::pair<QByteArray, const char *> rows[] = {
        {"", "cannot open mailing log at "}, // the path is a folder
        {QByteArray(5000, 'j'), "Parcelory SQL error: file is not a database"},
        {"SQLite format 3", "Parcelory SQL error: file is not a database"}};
    for (const auto &[bytes, logged] : rows) {
        const LogFile file;
        if (bytes.isEmpty())
            QDir().mkpath(file.path());
        else
            file.put(u"mailing_log.sqlite"_s, bytes);
        file.put(u"log.txt"_s, mailLine("Ana"));
        testing::internal::CaptureStderr();
        ShipmentLog log(QDir(file.folder.path()));
        EXPECT_FALSE(log.insert(shipmentTo(u"Lost"_s))) << logged;
        EXPECT_FALSE(log.setStatus({.id = 1}, u"REFUNDED"_s) || log.storeCustomsPDF({.id = 1}, "%PDF"));
        EXPECT_FALSE(log.zpl(1).isRead() || log.find({.id = 1}).isRead());
        EXPECT_NE(importFailure(log, file.path(u"log.txt"_s)), u"no failure"_s) << logged;
        EXPECT_TRUE(shown(log).isEmpty());
        EXPECT_TRUE(log.trouble().contains(u"rename "_s + file.path())) << logged;
        EXPECT_EQ(exported(log).count(u'\n'), 1);
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(logged));
    }
}

TEST(ShipmentLog, ShowsAReadOnlyLogAndReportsThatItCannotAddRows)
{
    const UsedLog file;
    const auto reading = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
    const auto entering = QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther;
    ASSERT_TRUE(QFile::setPermissions(file.path(), reading));
    ASSERT_TRUE(QFile::setPermissions(file.folder.path(), reading | entering));
    const uid_t self = geteuid();
    if (self == 0) // root ignores permissions
        ASSERT_EQ(seteuid(65534), 0);
    const auto back = qScopeGuard([self, &file] {
        EXPECT_EQ(seteuid(self), 0);
        QFile::setPermissions(file.folder.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    });
    ShipmentLog log(QDir(file.folder.path()));
    EXPECT_EQ(shown(log), QStringList{u"Before"_s});
    EXPECT_EQ(log.trouble(), QString());
    EXPECT_FALSE(log.insert(shipmentTo(u"Lost"_s)));
    EXPECT_TRUE(log.lastError().contains(u"readonly"_s)) << log.lastError().toStdString();
}

} // namespace parcelory::test
