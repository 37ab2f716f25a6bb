#include "records/RestoreStage.h"

#include "core/AppError.h"
#include "core/DiskSync.h"
#include "core/FileHash.h"
#include "core/Json.h"
#include "core/PrivateFiles.h"
#include "core/Sqlite.h"
#include "core/SqliteCheck.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString folderName = u"Restoring"_s;
const QString noteName = u"restore.json"_s; ///< in the folder: all files are complete and are to be moved into place
const QString lockName = u"restore.lock"_s;
const QString logName = u"mailing_log.sqlite"_s;
/// Never replaced: the present journal knows the purchases whose outcome is open.
const QString journalName = u"purchase_journal.sqlite"_s;

constexpr auto longestSwap = std::chrono::seconds(5);  ///< of another program
constexpr auto longestWrite = std::chrono::seconds(1); ///< of another program, for each file; longer only in an import

/// Replaces an existing file, which QFile::rename does not.
bool replaceFile(const QString &from, const QString &to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

bool removeIfThere(const QString &path)
{
    return !QFile::exists(path) || QFile::remove(path);
}

/// A present file that is about to be replaced.
struct Replaced {
    QString name;
    double bytes = -1;    ///< negative if there is no such file
    double changedAt = 0; ///< milliseconds since 1970

    bool operator==(const Replaced &) const = default;

    static constexpr auto fields()
    {
        using R = Replaced;
        return std::tuple{field("name", &R::name), field("bytes", &R::bytes), field("changedAt", &R::changedAt)};
    }
};

/// restore.json
struct StoredNote : RestoreNote {
    std::optional<QList<Replaced>> replaced; ///< absent if an earlier version wrote the note

    static constexpr auto fields()
    {
        return std::tuple_cat(RestoreNote::fields(), std::tuple{field("replaced", &StoredNote::replaced)});
    }
};

/// The files to be moved, the log first.
QStringList filesIn(const QDir &folder)
{
    QStringList names = folder.entryList({u"*.sqlite"_s, u"*.json"_s}, QDir::Files);
    names.removeOne(noteName);
    if (names.removeOne(logName))
        names.prepend(logName);
    return names;
}

/// The present files in whose place those in `folder` will be.
QList<Replaced> replacedBy(const QDir &folder, const QDir &records)
{
    QList<Replaced> files;
    for (const QString &name : filesIn(folder)) {
        const QFileInfo present(records.filePath(name));
        files += present.exists()
                     ? Replaced{name, double(present.size()), double(present.lastModified().toMSecsSinceEpoch())}
                     : Replaced{.name = name};
    }
    return files;
}

struct Moved {
    int files = 0;
    bool isComplete = false;
};

/// An empty note counts as no note.
bool hasNote(const QDir &folder)
{
    return QFileInfo(folder.filePath(noteName)).size() > 0;
}

/// Removes or empties the note, so that no later start moves a file. False if the disk refuses both. The folder may be
/// deleted only then: a note beside a part of its files would be taken for an interrupted move.
bool dropNote(const QDir &folder)
{
    const QString note = folder.filePath(noteName);
    const bool isDropped = !hasNote(folder) || (QFile::remove(note) && syncToDisk(folder.path())) ||
                           (QFile::resize(note, 0) && syncToDisk(note));
    if (!isDropped)
        qWarning("Parcelory: cannot delete the note of the restore in %s", qPrintable(folder.path()));
    return isDropped;
}

/// Keeps other programs from writing into a present file while it is replaced: what they write would be lost.
class Held {
public:
    explicit Held(const QString &path)
    {
        if (!path.endsWith(".sqlite"_L1) || !QFile::exists(path))
            return;
        m_db.emplace(path, longestWrite);
        m_isInUse = !Statement(*m_db, "BEGIN EXCLUSIVE").execute() && m_db->isLocked(); // a damaged file has no lock
    }
    bool isInUse() const { return m_isInUse; }

private:
    std::optional<Database> m_db;
    bool m_isInUse = false;
};

/// Who has the present files open.
enum class Users {
    stores, ///< of this program, which have locked the files
    others,
};

/// May be repeated after an interruption at any point.
Moved moveIntoPlace(const QDir &records, Users users)
{
    const QDir folder(records.filePath(folderName));
    Moved moved;
    for (const QString &name : filesIn(folder)) {
        const QString target = records.filePath(name);
        const Held held(users == Users::others ? target : QString());
        if (held.isInUse())
            return moved;
        // The journal of the former file would be applied to the new one.
        for (const QString &side : {u"-journal"_s, u"-wal"_s, u"-shm"_s}) {
            if (!removeIfThere(target + side))
                return moved;
        }
        if (!syncToDisk(records.path()) || !replaceFile(folder.filePath(name), target))
            return moved;
        ++moved.files;
    }
    // A note without files is left to the next start, which has nothing to move.
    moved.isComplete = true;
    if (syncToDisk(records.path()) && dropNote(folder))
        QDir(folder).removeRecursively();
    return moved;
}

/// True if no file was moved yet: the first file of the note is moved first.
bool isUntouched(const StoredNote &note, const QDir &folder)
{
    if (!note.replaced)
        return folder.exists(logName);
    return !note.replaced->isEmpty() && folder.exists(note.replaced->first().name);
}

} // namespace

RestoreStage::RestoreStage(const QDir &records)
    : m_records(records), m_folder(records.filePath(folderName)), m_lock(records.filePath(lockName))
{
    if (!m_lock.tryLock(0)) {
        m_obstacle = m_lock.error() == QLockFile::LockFailedError ? u"another Parcelory restores a copy"_s
                                                                  : u"the folder of the records can't be written"_s;
        return;
    }
    // A restore whose files are all in place may have left its note; beside other files, it would count for them.
    if (hasNote(m_folder) && (!filesIn(m_folder).isEmpty() || !dropNote(m_folder))) {
        m_obstacle = u"an earlier restore is not complete; start Parcelory again"_s;
        return;
    }
    QDir(m_folder).removeRecursively();
    createPrivateFolder(m_folder);
    if (!m_folder.exists())
        m_obstacle = u"the folder of the records can't be written"_s;
}

RestoreStage::~RestoreStage()
{
    if (m_lock.isLocked() && !hasNote(m_folder))
        QDir(m_folder).removeRecursively();
}

QString RestoreStage::path(const QString &name) const
{
    return m_folder.filePath(name);
}

bool RestoreStage::has(const QString &name) const
{
    return m_folder.exists(name);
}

QString RestoreStage::fill(const QDir &copy, const QList<RecordCopy::File> &files, const Progress &progress)
{
    double total = 0, done = 0;
    for (const RecordCopy::File &file : files)
        total += file.bytes;
    for (const RecordCopy::File &kept : files) {
        if (!m_obstacle.isEmpty())
            return m_obstacle;
        // A manifest that was changed must not name a file elsewhere.
        if (kept.name == journalName || kept.name.contains(u'/') || kept.name == noteName)
            continue;
        QFile source(copy.filePath(kept.name)), file(path(kept.name));
        if (!source.open(QIODevice::ReadOnly))
            return kept.name + u": "_s + source.errorString();
        source.close();
        if (!source.copy(file.fileName()))
            return u"the disk is full or can't be written (%1)"_s.arg(kept.name);
        makePrivate(file.fileName());
        if (!file.open(QIODevice::ReadOnly) || double(file.size()) != kept.bytes || contentHash(file) != kept.hash)
            return kept.name + u": not as it was copied"_s;
        done += kept.bytes;
        if (!progress.report(qint64(done), qint64(total)))
            return u"it was canceled"_s;
        if (!kept.name.endsWith(".sqlite"_L1))
            continue;
        if (const QString damage = integrityFailure(Database(file.fileName())); !damage.isEmpty())
            return kept.name + u": "_s + damage;
    }
    return m_obstacle;
}

QString RestoreStage::sync() const
{
    const QStringList names = m_folder.entryList(QDir::Files);
    const bool isStored = std::ranges::all_of(names, [this](const QString &name) { return syncToDisk(path(name)); });
    return isStored && syncToDisk(m_folder.path()) ? QString() : u"the disk could not be written"_s;
}

QString RestoreStage::commit(const RestoreNote &note)
{
    QSaveFile file(path(noteName));
    const QByteArray text = encodeJson(StoredNote{note, replacedBy(m_folder, m_records)}, Keys::asIs);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit() ||
        !syncToDisk(m_folder.path())) {
        giveUp();
        return u"the folder of the records can't be written"_s;
    }
    const Moved moved = moveIntoPlace(m_records, Users::stores);
    if (moved.isComplete)
        return {};
    if (moved.files > 0)
        m_rest = Rest::begun;
    else
        giveUp();
    return u"the files could not be moved"_s;
}

/// No file was moved, and the program goes on with the present files. A later start must not replace them then: labels
/// are bought meanwhile.
void RestoreStage::giveUp()
{
    m_rest = dropNote(m_folder) ? Rest::nothing : Rest::note;
}

bool RestoreStage::isInterrupted(const QDir &records)
{
    return hasNote(QDir(records.filePath(folderName)));
}

std::optional<RestoreNote> RestoreStage::finishInterrupted(const QDir &records)
{
    const QDir folder(records.filePath(folderName));
    if (!folder.exists())
        return std::nullopt;
    OwnerLock lock(records.filePath(lockName));
    if (!lock.tryLock(hasNote(folder) ? longestSwap : std::chrono::milliseconds(0)))
        return std::nullopt; // another program restores a copy
    if (!hasNote(folder)) {
        QDir(folder).removeRecursively();
        return std::nullopt;
    }
    QFile file(folder.filePath(noteName));
    if (!file.open(QIODevice::ReadOnly)) // some of the files may be in place: a later start completes it
        return std::nullopt;
    StoredNote note;
    try {
        note = decodeJson<StoredNote>(file.readAll(), Keys::asIs);
    } catch (const AppError &) {
        note = {}; // it was written completely before the first file was moved
    }
    file.close();
    const bool isWhole = isUntouched(note, folder);
    if (isWhole && note.replaced && *note.replaced != replacedBy(folder, records)) {
        if (dropNote(folder)) // the program went on with the present files
            QDir(folder).removeRecursively();
        return std::nullopt;
    }
    const Moved moved = moveIntoPlace(records, Users::others);
    if (moved.isComplete)
        return note;
    if (isWhole && moved.files == 0)
        dropNote(folder);
    return std::nullopt;
}

} // namespace parcelory
