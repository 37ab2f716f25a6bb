#include "records/RecordCopies.h"
#include "core/FileHash.h"
#include "records/FetchedLabels.h"
#include "records/Journeys.h"
#include "records/LogMerge.h"
#include "records/PurchaseJournal.h"
#include "records/RestoreStage.h"
#include "support/LogFile.h"
#include "support/WaitingRoom.h"

#include <QLockFile>

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

    explicit Desk(const QString &recipient = u"Jo"_s)
    {
        EXPECT_TRUE(log.insert(shipmentTo(recipient)));
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

    ASSERT_TRUE(QDir(desk.folder.path()).mkdir(u"Copying-killed"_s)); // by a program that was killed a minute ago
    {
        QLockFile other(desk.path(u"copying.lock"_s));
        ASSERT_TRUE(other.tryLock(0));
        makeOld(desk.path(u"copying.lock"_s));
        EXPECT_EQ(desk.copies.setAside(noon).failure, u"another Parcelory copies the records"_s);
        EXPECT_TRUE(QDir(desk.path(u"Copying-killed"_s)).exists());
    }
    desk.put(u"copying.lock"_s, ""); // of a program that cannot be told to be gone
    makeOld(desk.path(u"copying.lock"_s));
    const RecordCopy aside = desk.copies.setAside(noon).copy;
    EXPECT_FALSE(QDir(desk.path(u"Copying-killed"_s)).exists());
    EXPECT_EQ(RecordCopies::headsOf(desk.copies.list()).size(), 1) << "nothing is replaced yet";
    EXPECT_TRUE(desk.copies.markReplaced(aside, noon.addDays(-1)));
    EXPECT_TRUE(RecordCopies::headsOf(desk.copies.list()).isEmpty());
    desk.copies.discard(aside);

    CancelToken canceled;
    canceled.cancel();
    desk.copies.make(CopyReason::byHand, noon.addSecs(2), Progress(canceled));
    EXPECT_EQ(desk.copies.list().size(), 2);
    EXPECT_EQ(desk.target.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 2);
}

TEST(RestoreStage, TheNextStartCompletesOnlyWhatWasBegunAndNotGivenUp)
{
    // What happened since the program was killed before it moved a file, if the restore is completed, and if its folder
    // is left.
    const std::tuple<const char *, std::function<void(const LogFile &)>, bool, bool> cases[] = {
        {"killed", [](const LogFile &) {}, true, false},
        {"went on with the log", [](const LogFile &file) { file.put(u"mailing_log.sqlite"_s, "present, label"); },
         false, false},
        {"went on with the boxes", [](const LogFile &file) { file.put(u"box_profiles.json"_s, "[1]"); }, false, false},
        {"gave up", [](const LogFile &file) { file.put(u"Restoring/restore.json"_s, ""); }, false, false},
        {"killed while it deleted the folder",
         [](const LogFile &file) {
             file.put(u"mailing_log.sqlite"_s, "present, label");
             QFile::remove(file.path(u"Restoring/box_profiles.json"_s));
         },
         false, false},
        {"note cannot be read",
         [](const LogFile &file) {
             const QString note = file.path(u"Restoring/restore.json"_s);
             EXPECT_TRUE(QFile::remove(note) && QDir().mkpath(note + u"/kept"_s));
         },
         false, true},
    };
    const LogFile copy;
    Database(copy.path()).exec("CREATE TABLE shipments (id)");
    for (const auto &[name, since, isCompleted, isLeft] : cases) {
        SCOPED_TRACE(name);
        const LogFile file;
        const QDir records(file.folder.path());
        file.put(u"mailing_log.sqlite"_s, "present");
        const QFileInfo log(file.path());
        ASSERT_TRUE(records.mkdir(u"Restoring"_s) &&
                    QFile::copy(copy.path(), file.path(u"Restoring/mailing_log.sqlite"_s)));
        file.put(u"Restoring/box_profiles.json"_s, "[]");
        file.put(u"Restoring/restore.json"_s,
                 R"({"copyMadeAt": 816000000, "broughtBack": 3, "missing": 0, "replaced": [
                     {"name": "mailing_log.sqlite", "bytes": 7, "changedAt": )" +
                     QByteArray::number(log.lastModified().toMSecsSinceEpoch()) +
                     R"(}, {"name": "box_profiles.json", "bytes": -1, "changedAt": 0}]})");
        since(file);
        EXPECT_EQ(RestoreStage::finishInterrupted(records).has_value(), isCompleted);
        EXPECT_EQ(contentsOf(file.path()).startsWith("present"), !isCompleted);
        EXPECT_EQ(records.exists(u"Restoring"_s), isLeft);
    }

    const LogFile file; // a copy without a log, whose first file cannot be moved
    const QDir records(file.folder.path());
    copy.put(u"box_profiles.json"_s, "[]");
    QFile boxes(copy.path(u"box_profiles.json"_s));
    ASSERT_TRUE(boxes.open(QIODevice::ReadOnly) && records.mkpath(u"box_profiles.json-shm"_s));
    ASSERT_TRUE(records.mkdir(u"Restoring"_s));
    file.put(u"Restoring/restore.json"_s, "{}"); // all files of an earlier restore are in place
    {
        RestoreStage stage(records);
        EXPECT_EQ(stage.fill(QDir(copy.folder.path()), {{u"box_profiles.json"_s, 2, contentHash(boxes)}}), QString());
        EXPECT_EQ(stage.commit({}), u"the files could not be moved"_s);
        EXPECT_EQ(stage.rest(), RestoreStage::Rest::nothing);
    }
    EXPECT_FALSE(records.exists(u"Restoring"_s));
}

TEST(RestoreStage, TheNextStartReplacesNoFileThatAnotherProgramWrites)
{
    const WaitingRoom room;
    for (const bool isBegun : {true, false}) { // the log is moved first
        SCOPED_TRACE(isBegun);
        const LogFile file;
        const QDir records(file.folder.path());
        const QString name = isBegun ? u"addresses.sqlite"_s : u"mailing_log.sqlite"_s;
        const QString restored = file.path(u"Restoring/"_s + name);
        ASSERT_TRUE(records.mkdir(u"Restoring"_s));
        file.put(u"Restoring/restore.json"_s, "{}");
        Database other(file.path(name));
        ASSERT_TRUE(Database(restored).exec("CREATE TABLE restored (id)") && other.exec("BEGIN EXCLUSIVE"));
        EXPECT_FALSE(RestoreStage::finishInterrupted(records));
        EXPECT_TRUE(QFile::exists(restored) && !other.isReplaced());
        ASSERT_TRUE(other.exec("CREATE TABLE present (id); COMMIT"));
        EXPECT_EQ(RestoreStage::finishInterrupted(records).has_value(), isBegun) << "otherwise it was given up";
        EXPECT_EQ(other.isReplaced(), isBegun);
        EXPECT_FALSE(records.exists(u"Restoring"_s));
    }
}

TEST(LogMerge, TakesOverRefundsAndDocumentsAlsoOfLabelsWithAnotherId)
{
    // The statuses since the copy, each of which is an entry of the chain, and the note beside the last of them.
    const std::pair<QStringList, QString> cases[] = {
        {{u"REFUND_PENDING"_s}, {}},
        {{u"REFUNDED"_s, u"DELIVERED"_s}, u"REFUNDED"_s},
        {{u"REFUND_PENDING"_s, u"DELIVERED"_s}, u"REFUND_PENDING"_s},
    };
    constexpr int before = 1 + 3; // the chain of a new log is complete, and then three labels
    for (const auto &[statuses, refund] : cases) {
        SCOPED_TRACE(statuses.join(u' ').toStdString());
        const LogFile present, copied;
        ShipmentLog log{QDir(present.folder.path())}, copy{QDir(copied.folder.path())};
        for (const auto &[at, inCopy] : {std::pair(1, 2), std::pair(2, 1), std::pair(3, 3)}) {
            ASSERT_TRUE(log.insert({.recipient = u"Jo"_s, .transactionID = transactionId(at)}));
            ASSERT_TRUE(copy.insert({.recipient = u"Jo"_s, .transactionID = transactionId(inCopy)}));
        }
        for (const QString &status : statuses)
            ASSERT_TRUE(log.setStatus(rowOf(log, 1), status) && log.setStatus(rowOf(log, 3), status));
        const ShipmentRecord moved = rowOf(log, 1);
        const QList<StoredFinding> findings = {{u"NAME"_s, {}, {}, {}, {}}, {u"ZIP"_s, {}, {}, {}, {}}};
        ASSERT_TRUE(LabelHistory(log).addReprint(moved, noon) && LabelVerdicts::put(log, moved, findings) &&
                    FetchedLabels::put(log, moved, "^XA^XZ") && log.storeCustomsPDF(moved, "%PDF"));
        const auto ask = [](ShipmentLog &to, qint64 id, int seconds) {
            return to.change([=](Database &db) {
                return Journeys::put(db, id, {.movedAt = noon, .askedAt = noon.addSecs(seconds)});
            });
        };
        ASSERT_TRUE(ask(log, 1, 60) && ask(copy, 2, 0) && ask(log, 2, 0) && ask(copy, 1, 60)); // by an earlier restore
        for (int time = 0; time < 2; ++time) { // the last labels are merged after the first ones
            Database db(copied.path());
            EXPECT_EQ(LogMerge::bringBack(db, present.path(), {}).failure, QString());
        }
        for (const qint64 id : {2, 3}) {
            EXPECT_EQ(copy.find({.id = id})->value().status, statuses.last());
            EXPECT_EQ(copy.find({.id = id})->value().refund, refund);
        }
        EXPECT_EQ(copy.find({.id = 1})->value().status, log.find({.id = 2})->value().status);
        EXPECT_EQ(LabelHistory(copy).of(2)->reprints, 1);
        const Journey later{.movedAt = noon, .askedAt = noon.addSecs(60)};
        EXPECT_EQ(*Journeys::among(Database(copied.path()), {1, 2}), (QHash<qint64, Journey>{{1, later}, {2, later}}));
        EXPECT_EQ(*LabelVerdicts::of(copy, 2), findings);
        EXPECT_EQ(*FetchedLabels::of(copy, 2), "^XA^XZ");
        EXPECT_EQ(*copy.customsPDF(2), "%PDF");
        EXPECT_EQ(copied.ask("SELECT count(*) FROM log_chain").value(0).toInt(), before + 2 * statuses.size() + 1);
        EXPECT_TRUE(copy.verify()->findings.isEmpty());
    }
}

TEST(RecordCopies, DesksThatShareAFolderKeepTheirOwn)
{
    Desk first, second(u"Ana"_s);
    second.copies.setFolder(first.target);
    for (const int minute : {0, 2})
        EXPECT_TRUE(first.copies.make(CopyReason::daily, noon.addSecs(60 * minute)).isGood());
    EXPECT_TRUE(second.copies.make(CopyReason::daily, noon.addSecs(60)).isGood());
    const QList<RecordCopy> all = first.copies.list();
    ASSERT_EQ(all.size(), 2) << "of each desk, the newest of the day";
    for (const Desk *desk : {&first, &second})
        EXPECT_EQ(RecordCopies::ofLog(all, desk->copies.logId()).size(), 1);
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
