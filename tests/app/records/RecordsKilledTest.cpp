// The program is killed while it copies, restores or imports; the next start finds the old records or the new ones.

#include "support/AppTest.h"

#include <filesystem>

namespace parcelory::test {
namespace {

ShipmentRecord sold(int number)
{
    ShipmentRecord label = shipmentTo(u"Parcel %1"_s.arg(number), number);
    label.transactionID = transactionId(number);
    label.labelURL = u"https://labels.example.com/%1"_s.arg(number);
    label.zpl = QByteArray("^XA^FD") + QByteArray(9000, char('a' + number)) + "^XZ";
    return label;
}

/// Records with a copy, and what was added since: three labels, an imported row and an address.
struct Records : FakePlatform {
    QTemporaryDir folder;
    QString original() const { return folder.filePath(u"original"_s); }

    Records()
    {
        platform.dataFolder = QDir(original());
        clock.start = QDateTime(QDate(2026, 11, 20), QTime(14, 30));
        const ErrorLog errors(platform);
        AppState app(platform);
        std::ignore = app.journal.begin({.askedAt = clock.now(), .rateId = u"open"_s, .record = sold(99)});
        for (int number = 1; number <= 3; ++number)
            EXPECT_TRUE(app.log.insert(sold(number), false));
        EXPECT_TRUE(app.addressBook.upsert({.name = u"Ann"_s}));
        EXPECT_EQ(app.copies.make(CopyReason::byHand, clock.now()).failure, QString());
        for (int number = 4; number <= 6; ++number)
            EXPECT_TRUE(app.log.insert(sold(number), false));
        EXPECT_TRUE(app.log.insert(shipmentTo(u"Imported"_s), false));
        EXPECT_TRUE(app.log.setStatus(rowOf(app.log, 1), u"REFUND_PENDING"_s));
        EXPECT_TRUE(app.addressBook.upsert({.name = u"Bea"_s}));
        QFile lines(platform.dataFolder.filePath(u"import.txt"_s));
        EXPECT_TRUE(lines.open(QIODevice::WriteOnly) && lines.write(mailLine("Cleo") + mailLine("Dora")) > 0);
        settlePool();
    }
    /// Lets a victim work in a fresh folder; returns what it printed.
    QByteArray die(const QString &work, int step)
    {
        namespace fs = std::filesystem;
        const fs::path here = folder.filePath(u"work"_s).toStdString();
        fs::remove_all(here);
        fs::copy(original().toStdString(), here, fs::copy_options::recursive);
        QProcess victim;
        victim.start(QStringLiteral(PARCELORY_RECORDS_VICTIM),
                     {folder.filePath(u"work"_s), work, QString::number(step)});
        EXPECT_TRUE(victim.waitForFinished(-1));
        EXPECT_EQ(victim.exitCode(), step > 0 ? SIGKILL : 0) << victim.readAllStandardError().toStdString();
        return victim.readAllStandardOutput();
    }
    /// Starts the program in the victim's folder.
    void takeOver(const QString &work)
    {
        platform.dataFolder = QDir(folder.filePath(u"work"_s));
        const ErrorLog errors(platform);
        AppState app(platform);
        settle();
        EXPECT_TRUE(app.log.verify()->findings.isEmpty());
        QStringList transactions, others;
        for (const ShipmentRecord &row : app.log.records())
            (row.transactionID.size() == 32 ? transactions : others) +=
                row.transactionID.size() == 32 ? row.transactionID : row.recipient;
        transactions.sort();
        QStringList all;
        for (int number = 1; number <= 6; ++number)
            all += transactionId(number);
        EXPECT_EQ(transactions, all) << "nothing bought is missing or doubled";
        EXPECT_EQ(app.journal.openPurchases().size(), 1);
        EXPECT_EQ(app.log.find({.id = 1})->value().status, u"REFUND_PENDING"_s);
        const bool isRestored = !others.contains(u"Imported"_s);
        EXPECT_TRUE(work == u"restore" || !isRestored);
        EXPECT_EQ(app.addressBook.rows().size(), isRestored ? 1 : 2) << "all files are of one state";
        EXPECT_TRUE(others.size() == (isRestored ? 0 : 1) || (work == u"import" && others.size() == 3));
        EXPECT_FALSE(platform.dataFolder.exists(u"Restoring"_s));
        app.copies.correctMark();
        for (const RecordCopy &copy : app.copies.list()) {
            EXPECT_EQ(copy.failure + app.copies.check(copy), QString());
            EXPECT_EQ(copy.restored.has_value(), isRestored && copy.reason == wordOf(CopyReason::beforeRestore));
        }
        (isRestored ? restored : kept) += 1;
        settlePool();
    }
    int restored = 0, kept = 0;
};

} // namespace

TEST(KilledWithTheRecords, AtAnyPointTheNextStartFindsTheOldOrTheNewOnes)
{
    const int asked = qEnvironmentVariableIntValue("PARCELORY_KILL_ROUNDS"), rounds = qMax(1, asked);
    const QString only = qEnvironmentVariable("PARCELORY_KILL_WORK");
    Records records;
    for (const QString &work : {u"restore"_s, u"copy"_s, u"update"_s, u"import"_s}) {
        if (!only.isEmpty() && work != only)
            continue;
        const int steps = records.die(work, 0).split(' ').first().toInt();
        records.takeOver(work);
        EXPECT_GT(steps, work == u"import" ? 3 : 15);
        const int points = asked > 0 || work == u"restore" ? 40 : 12;
        for (int point = 0; point < qMin(points, steps) * rounds; ++point) {
            const int step = 1 + (point * steps / (points * rounds)) % steps;
            SCOPED_TRACE(work.toStdString() + ' ' + std::to_string(step));
            records.die(work, step);
            records.takeOver(work);
        }
        EXPECT_GT(records.kept, 1);
        if (asked > 0)
            std::printf("%s: %d steps; so far %d starts found the old records, %d the restored ones\n",
                        qUtf8Printable(work), steps, records.kept, records.restored);
        std::fflush(stdout);
    }
    EXPECT_TRUE(records.restored > 2 || !only.isEmpty()) << "a restore that has begun to replace files is completed";
}

} // namespace parcelory::test
