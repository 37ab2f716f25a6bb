#include "records/RecordCopies.h"
#include "records/LogMerge.h"
#include "records/PurchaseJournal.h"
#include "support/LogFile.h"

namespace parcelory::test {

namespace {

const QDateTime noon(QDate(2026, 11, 20), QTime(12, 0));

struct Desk : LogFile {
    ShipmentLog log{QDir(folder.path())};
    PurchaseJournal journal{QDir(folder.path())};
    QDir target{path(u"Copies"_s)};
    RecordCopies copies{
        QDir(folder.path()),
        target,
        {{u"mailing_log.sqlite"_s,
          [this](const QString &to, const Progress &progress) { return log.copyTo(to, progress); }},
         {u"purchase_journal.sqlite"_s, [this](const QString &to, const Progress &) { return journal.copyTo(to); }}}};

    Desk()
    {
        EXPECT_TRUE(log.insert(shipmentTo(u"Jo"_s)));
        journal.open();
        put(u"sender_profiles.json"_s, "[]");
    }
    QStringList files(const RecordCopy &copy) const
    {
        return QDir(target.filePath(copy.folder)).entryList(QDir::Files, QDir::Name);
    }
};

/// 8 MB, four portions of a copy.
const QByteArray bulk = "CREATE TABLE bulk (bytes BLOB); INSERT INTO bulk VALUES (zeroblob(8000000))";

RecordCopy copyOf(QDate day, CopyReason reason = CopyReason::daily, const QString &failure = {})
{
    return {.folder = day.toString(Qt::ISODate) + wordOf(reason) + failure,
            .madeAt = QDateTime(day, QTime(7, 0)),
            .reason = wordOf(reason),
            .files = {},
            .failure = failure};
}

} // namespace

TEST(RecordCopies, HoldTheRecordsAndTheLabelsThatAreBoughtMeanwhile)
{
    Desk desk;
    desk.run(bulk);
    int bought = 0;
    const CancelToken tooMany;
    const Progress buys(tooMany, [&](qint64, qint64) {
        EXPECT_TRUE(desk.log.insert(shipmentTo(u"Ann"_s)));
        if (++bought == 100)
            tooMany.cancel(); // the copy starts again each time
    });
    const RecordCopy copy = desk.copies.make(CopyReason::byHand, noon, buys);
    EXPECT_GT(bought, 2);
    EXPECT_EQ(copy.failure, QString());
    EXPECT_EQ(desk.files(copy), QStringList({u"copy.json"_s, u"mailing_log.sqlite"_s, u"purchase_journal.sqlite"_s,
                                             u"sender_profiles.json"_s}));
    ASSERT_EQ(desk.copies.list().size(), 1);
    const RecordCopy listed = desk.copies.list().first();
    EXPECT_EQ(listed.folder, copy.folder);
    EXPECT_EQ(listed.labels, 1 + bought);
    EXPECT_GT(listed.bytes(), 0);
    EXPECT_TRUE(desk.log.verify({listed.head()})->findings.isEmpty());
    EXPECT_EQ(desk.copies.check(listed), QString());

    const QTemporaryDir otherDisk(u"/dev/shm/copies-XXXXXX"_s); // not on each system
    desk.copies.setFolder(QDir(otherDisk.isValid() ? otherDisk.path() : desk.target.path()));
    const RecordCopy distant = desk.copies.make(CopyReason::byHand, noon.addSecs(1));
    EXPECT_EQ(distant.failure + desk.copies.check(distant), QString());
    EXPECT_EQ(distant.labels, listed.labels);
    EXPECT_TRUE(QDir(desk.folder.path()).entryList({u"Copying-*"_s}).isEmpty());
    desk.copies.setFolder(desk.target);

    QFile file(desk.target.filePath(copy.folder + u"/mailing_log.sqlite"_s));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(file.size() - 1) && file.putChar('x'));
    file.close();
    EXPECT_EQ(desk.copies.check(listed), u"mailing_log.sqlite: not as it was copied"_s);
}

TEST(RecordCopies, AFailedCopySaysWhyAndTakesNoSpace)
{
    Desk desk;
    desk.run(bulk);
    Database other(desk.path());
    const Progress writes({}, [&](qint64, qint64) { other.exec("UPDATE shipments SET status = status || 'x'"); });
    const RecordCopy copy = desk.copies.make(CopyReason::daily, noon, writes);
    EXPECT_EQ(copy.failure, u"mailing_log.sqlite: another program writes into it all the time"_s);
    EXPECT_EQ(desk.files(copy), QStringList{u"copy.json"_s});
    EXPECT_EQ(desk.copies.list().first().failure, copy.failure);

    desk.put(u"blocked"_s, "a file");
    desk.copies.setFolder(QDir(desk.path(u"blocked"_s)));
    EXPECT_EQ(desk.copies.make(CopyReason::daily, noon).failure, u"The copies folder can't be written"_s);

    RecordCopies damaged(QDir(desk.folder.path()), desk.target,
                         {{u"addresses.sqlite"_s, [](const QString &to, const Progress &) {
                               put(to, QByteArray(5000, 'x'));
                               return QString();
                           }}});
    EXPECT_TRUE(damaged.make(CopyReason::daily, noon.addSecs(1)).failure.startsWith(u"addresses.sqlite: "_s));
    desk.copies.setFolder(desk.target);

    CancelToken canceled;
    canceled.cancel();
    desk.copies.make(CopyReason::byHand, noon.addSecs(2), Progress(canceled));
    EXPECT_EQ(desk.copies.list().size(), 2);
    EXPECT_EQ(desk.target.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 2);
}

TEST(LogMerge, TakesOverRefundsAlsoOfDeliveredLabelsAndOfLabelsWithAnotherId)
{
    struct Case {
        QStringList later; ///< statuses since the copy; each is an entry of the chain
        QString refund;    ///< the note beside the last of them
    };
    const Case cases[] = {
        {{u"REFUND_PENDING"_s}, {}},
        {{u"REFUNDED"_s, u"DELIVERED"_s}, u"REFUNDED"_s},
        {{u"REFUND_PENDING"_s, u"DELIVERED"_s}, u"REFUND_PENDING"_s},
    };
    constexpr int before = 1 + 3; // the chain of a new log is complete, and then three labels
    for (const Case &row : cases) {
        SCOPED_TRACE(row.later.join(u' ').toStdString());
        const LogFile present, copied;
        ShipmentLog log{QDir(present.folder.path())}, copy{QDir(copied.folder.path())};
        for (const auto &[at, inCopy] : {std::pair(1, 2), std::pair(2, 1), std::pair(3, 3)}) {
            ASSERT_TRUE(log.insert({.recipient = u"Jo"_s, .transactionID = transactionId(at)}));
            ASSERT_TRUE(copy.insert({.recipient = u"Jo"_s, .transactionID = transactionId(inCopy)}));
        }
        for (const QString &status : row.later)
            ASSERT_TRUE(log.setStatus(1, status) && log.setStatus(3, status));
        for (int time = 0; time < 2; ++time) { // the last labels are merged after the first ones
            Database db(copied.path());
            EXPECT_EQ(LogMerge::bringBack(db, present.path(), {}).failure, QString());
        }
        for (const qint64 id : {2, 3}) {
            EXPECT_EQ(copy.find({.id = id})->value().status, row.later.last());
            EXPECT_EQ(copy.find({.id = id})->value().refund, row.refund);
        }
        EXPECT_EQ(copy.find({.id = 1})->value().status, log.find({.id = 2})->value().status);
        EXPECT_EQ(copied.ask("SELECT count(*) FROM log_chain").value(0).toInt(), before + 2 * row.later.size());
        EXPECT_TRUE(copy.verify()->findings.isEmpty());
    }
}

TEST(RecordCopies, KeepThirtyDaysAndTwelveMonths)
{
    QList<RecordCopy> copies;
    const QDate last(2026, 11, 20);
    for (int day = 0; day < 500; ++day) {
        copies += copyOf(last.addDays(-day));
        if (day % 10 == 0)
            copies += copyOf(last.addDays(-day), CopyReason::beforeImport);
        if (day % 7 == 0)
            copies += copyOf(last.addDays(-day), CopyReason::daily, u"disk was full"_s);
    }
    QStringList kept;
    const QList<RecordCopy> gone = RecordCopies::expired(copies);
    for (const RecordCopy &copy : copies) {
        const bool isGone = std::ranges::any_of(gone, [&](const auto &old) { return old.folder == copy.folder; });
        if (copy.isGood() && copy.reason == u"daily"_s && !isGone)
            kept += copy.madeAt.toString(u"MM-dd"_s);
        EXPECT_TRUE(copy.reason == u"daily"_s || isGone == (copy.madeAt.date() < last.addDays(-29)));
    }
    EXPECT_EQ(kept.size(), 30 + 10); // November and October are among the days
    EXPECT_EQ(kept.mid(0, 2), QStringList({u"11-20"_s, u"11-19"_s}));
    EXPECT_EQ(kept.mid(29), QStringList({u"10-22"_s, u"09-30"_s, u"08-31"_s, u"07-31"_s, u"06-30"_s, u"05-31"_s,
                                         u"04-30"_s, u"03-31"_s, u"02-28"_s, u"01-31"_s, u"12-31"_s}));
}

} // namespace parcelory::test
