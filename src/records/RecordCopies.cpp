#include "records/RecordCopies.h"

#include "core/DiskSync.h"
#include "core/FileHash.h"
#include "core/Json.h"
#include "core/OwnerLock.h"
#include "core/PrivateFiles.h"
#include "core/Sqlite.h"
#include "core/SqliteCheck.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString logName = u"mailing_log.sqlite"_s, bookName = u"addresses.sqlite"_s;
const QStringList plainFiles{u"sender_profiles.json"_s, u"box_profiles.json"_s};
const QString manifestName = u"copy.json"_s;
const QString partial = u".partial"_s; ///< of the folder's name until the copy is complete
const QString stage = u"Copying-"_s;   ///< beside the records, for databases on their way into that folder

int countOf(const Database &db, const QByteArray &table)
{
    Statement count(db, "SELECT count(*) FROM " + table);
    return count.step() ? int(count.integer(0)) : 0;
}

QString freeName(const QDir &copies, const QString &name)
{
    QString free = name;
    for (int number = 2; copies.exists(free); ++number)
        free = name + u' ' + QString::number(number);
    return free;
}

/// A program that was killed leaves its unfinished copy. Several desks may share the folder of the copies, but no
/// program works on a copy for a day.
void removeOldLeftovers(const QDir &copies, const QDateTime &now)
{
    for (const QFileInfo &entry : copies.entryInfoList({u'*' + partial}, QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (entry.lastModified().daysTo(now) > 1)
            QDir(entry.filePath()).removeRecursively();
    }
}

/// Keeps other programs from copying these records, and deletes what a killed program left beside them: a whole log may
/// be what fills the disk.
class Copying {
public:
    explicit Copying(const QDir &records) : m_lock(records.filePath(u"copying.lock"_s))
    {
        if (!m_lock.tryLock(0) && m_lock.error() == QLockFile::LockFailedError) {
            m_obstacle = u"another Parcelory copies the records"_s;
            return;
        }
        makePrivate(m_lock.fileName());
        for (const QString &name : records.entryList({stage + u'*'}, QDir::Dirs | QDir::NoDotAndDotDot))
            QDir(records.filePath(name)).removeRecursively();
    }

    const QString &obstacle() const { return m_obstacle; }

private:
    OwnerLock m_lock;
    QString m_obstacle;
};

/// Also to another disk, and flushes the file there. Returns what failed.
QString moveFile(const QString &from, const QString &to, const CancelToken &cancel)
{
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0) {
        constexpr qint64 portion = 2'000'000;
        QFile source(from), target(to);
        createPrivateFile(to);
        if (!source.open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly))
            return source.isOpen() ? target.errorString() : source.errorString();
        while (!source.atEnd() && !cancel.isCanceled()) {
            const QByteArray bytes = source.read(portion);
            if (bytes.isEmpty() || target.write(bytes) != bytes.size())
                return bytes.isEmpty() ? source.errorString() : target.errorString();
        }
        if (!target.flush())
            return target.errorString();
    }
    return syncToDisk(to) ? QString() : u"the disk could not be written"_s;
}

QString named(const QString &name, const QString &failure)
{
    return failure.isEmpty() ? QString() : name + u": "_s + failure;
}

} // namespace

RecordCopies::RecordCopies(const QDir &records, const QDir &copies, QList<OwnedFile> owned)
    : m_records(records), m_owned(std::move(owned)), m_copies(copies)
{
}

QDir RecordCopies::folder() const
{
    const std::lock_guard access(m_access);
    return m_copies;
}

void RecordCopies::setFolder(const QDir &copies)
{
    const std::lock_guard access(m_access);
    m_copies = copies;
}

RecordCopy RecordCopies::make(CopyReason reason, const QDateTime &now, const Progress &progress)
{
    const std::lock_guard making(m_making);
    const Copying copying(m_records);
    const QDir copies = this->folder();
    RecordCopy copy{.madeAt = now, .reason = wordOf(reason)};
    copy.folder = freeName(copies, now.toString(u"yyyy-MM-dd HH.mm.ss "_s) + copy.reason);
    const QDir folder(copies.filePath(copy.folder + partial));
    removeOldLeftovers(copies, now);
    createPrivateFolder(copies);
    createPrivateFolder(folder);
    copy.failure = !folder.exists()               ? u"The copies folder can't be written"_s
                   : copying.obstacle().isEmpty() ? fill(folder, copy, progress)
                                                  : copying.obstacle();
    if (progress.cancelToken().isCanceled()) {
        QDir(folder).removeRecursively();
        return copy;
    }
    if (!copy.isGood()) {
        for (const QString &name : folder.entryList(QDir::Files))
            QFile::remove(folder.filePath(name)); // they may be what fills the disk
    }
    if (!writeManifest(folder, copy) || !QDir().rename(folder.path(), copies.filePath(copy.folder))) {
        if (copy.isGood())
            copy.failure = u"The copies folder can't be written"_s;
        QDir(folder).removeRecursively();
        return copy;
    }
    for (const RecordCopy &old : expired(ofLog(list(), copy.logId.value_or(QString()))))
        QDir(copies.filePath(old.folder)).removeRecursively();
    return copy;
}

QString RecordCopies::logId() const
{
    const QString path = m_records.filePath(logName);
    return QFile::exists(path) ? QString::fromLatin1(LogChain::idOf(Database(path)).toHex()) : QString();
}

/// Notes the files and counts what the copied databases hold. Returns what is wrong with them.
QString RecordCopies::describe(const QDir &folder, RecordCopy &copy)
{
    for (const QString &name : folder.entryList(QDir::Files)) {
        QFile file(folder.filePath(name));
        const QString hash = file.open(QIODevice::ReadOnly) ? contentHash(file) : QString();
        if (hash.isEmpty())
            return named(name, file.errorString());
        copy.files.append({.name = name, .bytes = double(file.size()), .hash = hash});
    }
    if (folder.exists(logName)) {
        const Database log(folder.filePath(logName));
        copy.labels = countOf(log, "shipments");
        const auto head = LogChain::head(log).value_or(LogChain::Head());
        copy.headPosition = double(head.position);
        copy.headHash = QString::fromLatin1(head.hash.toHex());
        copy.logId = QString::fromLatin1(LogChain::idOf(log).toHex());
    }
    if (folder.exists(bookName))
        copy.addresses = countOf(Database(folder.filePath(bookName)), "addresses");
    return checkDatabases(folder, copy.files);
}

/// Returns what failed.
QString RecordCopies::fill(const QDir &folder, RecordCopy &copy, const Progress &progress) const
{
    qint64 total = 0, done = 0;
    for (const OwnedFile &file : m_owned)
        total += QFileInfo(m_records.filePath(file.name)).size();
    for (const OwnedFile &file : m_owned) {
        const qint64 size = QFileInfo(m_records.filePath(file.name)).size();
        const Progress part(progress.cancelToken(), [&](qint64 pages, qint64 allPages) {
            [[maybe_unused]] const bool goesOn = progress.report(done + size * pages / allPages, total);
        });
        if (const QString failure = take(file, folder, part); !failure.isEmpty())
            return named(file.name, failure);
        if (progress.cancelToken().isCanceled())
            return {};
        done += size;
    }
    const QString failure = copyPlainFiles(folder);
    return failure.isEmpty() ? describe(folder, copy) : failure;
}

/// Has the owner copy its file beside the records, and then moves the copy into `folder`: that may be on a slow or
/// missing disk, and a purchase waits for each portion of the owner's copy. Returns what failed.
QString RecordCopies::take(const OwnedFile &file, const QDir &folder, const Progress &progress) const
{
    constexpr qint64 reserve = 100'000'000; // bytes: what purchases write meanwhile must not find a full disk
    const qint64 room = QStorageInfo(m_records.path()).bytesAvailable(); // below 0 if it is not known
    if (room >= 0 && room < QFileInfo(m_records.filePath(file.name)).size() + reserve)
        return u"the disk of the records has too little room"_s;
    const QTemporaryDir staged(m_records.filePath(stage + u"XXXXXX"_s));
    if (!staged.isValid())
        return staged.errorString();
    const QString failure = file.copyTo(staged.filePath(file.name), progress);
    if (!failure.isEmpty() || progress.cancelToken().isCanceled())
        return failure;
    return moveFile(staged.filePath(file.name), folder.filePath(file.name), progress.cancelToken());
}

/// Returns what failed.
QString RecordCopies::copyPlainFiles(const QDir &folder) const
{
    for (const QString &name : plainFiles) {
        QFile source(m_records.filePath(name));
        if (source.exists() && !source.copy(folder.filePath(name)))
            return named(name, source.errorString());
    }
    return {};
}

QString RecordCopies::setAsideName(const QDateTime &now) const
{
    return freeName(folder(), u"Before Restore "_s + now.toLocalTime().toString(u"MM-dd-yy"_s));
}

RecordCopies::SetAside RecordCopies::setAside(const QDateTime &now, const Progress &progress)
{
    const std::lock_guard making(m_making);
    const Copying copying(m_records);
    const QDir copies = this->folder();
    SetAside aside{.copy = {.madeAt = now, .reason = wordOf(CopyReason::beforeRestore), .files = {}}};
    aside.copy.folder = setAsideName(now);
    QDir folder(copies.filePath(aside.copy.folder + partial));
    folder.removeRecursively(); // of a program that was killed
    createPrivateFolder(folder);
    aside.failure = copying.obstacle().isEmpty() ? keepAsTheyAre(folder, aside.copy, progress) : copying.obstacle();
    if (aside.failure.isEmpty()) {
        const QString damage = describe(folder, aside.copy);
        aside.copy.failure = aside.copy.failure.isEmpty() ? damage : aside.copy.failure;
        bool isWritten = writeManifest(folder, aside.copy);
        for (const QString &name : folder.entryList(QDir::Files))
            isWritten = syncToDisk(folder.filePath(name)) && isWritten;
        if (!isWritten || !QDir().rename(folder.path(), copies.filePath(aside.copy.folder)) ||
            !syncToDisk(copies.path()))
            aside.failure = u"the copies folder can't be written"_s;
    }
    if (!aside.failure.isEmpty())
        folder.removeRecursively();
    return aside;
}

bool RecordCopies::markReplaced(RecordCopy aside, const QDateTime &restored) const
{
    aside.restored = restored;
    return writeManifest(QDir(folder().filePath(aside.folder)), aside);
}

void RecordCopies::correctMark() const
{
    const QList<RecordCopy> copies = list();
    const auto last = std::ranges::find_if(copies, [](const RecordCopy &copy) { return copy.restored.has_value(); });
    if (last == copies.end() || last->headPosition <= 0 || !m_records.exists(logName) ||
        !LogChain::hasPassed(Database(m_records.filePath(logName)), {last->head()}).value_or(false))
        return;
    RecordCopy aside = *last;
    aside.restored = std::nullopt;
    if (!writeManifest(QDir(folder().filePath(aside.folder)), aside))
        qWarning("Parcelory: cannot correct the copy %s", qPrintable(aside.folder));
}

void RecordCopies::discard(const RecordCopy &aside) const
{
    if (!aside.folder.isEmpty())
        QDir(folder().filePath(aside.folder)).removeRecursively();
}

/// Copies the records, also if they are damaged. Returns why that failed; the copy's failure is the damage.
QString RecordCopies::keepAsTheyAre(const QDir &folder, RecordCopy &copy, const Progress &progress) const
{
    if (!folder.exists() || !QFileInfo(folder.path()).isWritable())
        return u"the copies folder can't be written"_s;
    for (const OwnedFile &owned : m_owned) {
        const QString source = m_records.filePath(owned.name), target = folder.filePath(owned.name);
        const QString failure = take(owned, folder, progress);
        if (progress.cancelToken().isCanceled())
            return u"it was canceled"_s;
        if (failure.isEmpty())
            continue;
        // A sound file that cannot be copied now is not copied as bytes: its program may write meanwhile.
        const bool isDamaged = !damageIn(source, std::chrono::minutes(1)).isEmpty();
        if (!isDamaged || (owned.name != logName && owned.name != bookName))
            return named(owned.name, failure);
        copy.failure = named(owned.name, failure);
        for (const QString &side : {QString(), u"-journal"_s}) {
            QFile::remove(target + side);
            QFile file(source + side);
            if (file.exists() && !file.copy(target + side))
                return named(owned.name, file.errorString());
        }
    }
    return copyPlainFiles(folder);
}

bool RecordCopies::writeManifest(const QDir &folder, const RecordCopy &copy)
{
    QSaveFile file(folder.filePath(manifestName));
    const QByteArray text = encodeJson(copy, Keys::asIs);
    return file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
           file.write(text) == text.size() && file.commit();
}

QList<RecordCopy> RecordCopies::list() const
{
    const QDir all = folder();
    QList<RecordCopy> copies;
    for (const QString &name : all.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(QDir(all.filePath(name)).filePath(manifestName));
        if (name.endsWith(partial) || !file.open(QIODevice::ReadOnly))
            continue;
        try {
            RecordCopy copy = decodeJson<RecordCopy>(file.readAll(), Keys::asIs);
            copy.folder = name;
            copies += copy;
        } catch (const AppError &) {
            continue; // another program's folder
        }
    }
    std::ranges::sort(copies, std::ranges::greater(), &RecordCopy::madeAt);
    return copies;
}

QString RecordCopies::check(const RecordCopy &copy) const
{
    return check(QDir(folder().filePath(copy.folder)), copy.files);
}

QString RecordCopies::check(const QDir &folder, const QList<RecordCopy::File> &files)
{
    for (const RecordCopy::File &kept : files) {
        QFile file(folder.filePath(kept.name));
        if (!file.open(QIODevice::ReadOnly) || double(file.size()) != kept.bytes || contentHash(file) != kept.hash)
            return named(kept.name, u"not as it was copied"_s);
    }
    return checkDatabases(folder, files);
}

QString RecordCopies::checkDatabases(const QDir &folder, const QList<RecordCopy::File> &files)
{
    for (const RecordCopy::File &kept : files) {
        if (!kept.name.endsWith(".sqlite"_L1))
            continue;
        if (const QString damage = integrityFailure(Database(folder.filePath(kept.name))); !damage.isEmpty())
            return named(kept.name, damage);
    }
    return {};
}

} // namespace parcelory
