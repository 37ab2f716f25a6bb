#include "records/RestoreStage.h"

#include "core/AppError.h"
#include "core/DiskSync.h"
#include "core/FileHash.h"
#include "core/Json.h"
#include "core/PrivateFiles.h"
#include "core/Sqlite.h"
#include "core/SqliteCheck.h"

#include <QFile>
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

constexpr auto longestSwap = std::chrono::seconds(5); ///< of another program

/// Replaces an existing file, which QFile::rename does not.
bool replaceFile(const QString &from, const QString &to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

bool removeIfThere(const QString &path)
{
    return !QFile::exists(path) || QFile::remove(path);
}

} // namespace

RestoreStage::RestoreStage(const QDir &records)
    : m_records(records), m_folder(records.filePath(folderName)), m_lock(records.filePath(lockName))
{
    m_lock.setStaleLockTime(0); // valid as long as its program runs
    if (!m_lock.tryLock(0)) {
        m_obstacle = m_lock.error() == QLockFile::LockFailedError ? u"another Parcelory restores a copy"_s
                                                                  : u"the folder of the records can't be written"_s;
        return;
    }
    if (m_folder.exists(noteName)) {
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
    if (m_lock.isLocked() && !m_folder.exists(noteName))
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
    const QByteArray text = encodeJson(note, Keys::asIs);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit() ||
        !syncToDisk(m_folder.path())) {
        QFile::remove(path(noteName));
        return u"the folder of the records can't be written"_s;
    }
    if (moveIntoPlace(m_records))
        return {};
    m_hasBegun = !giveUpUnlessBegun(m_folder);
    return u"the files could not be moved"_s;
}

/// The program goes on with the present log if the copy's could not be moved. A later start must not replace it then:
/// labels are bought meanwhile. False if the log was moved already.
bool RestoreStage::giveUpUnlessBegun(const QDir &folder)
{
    return folder.exists(logName) && QFile::remove(folder.filePath(noteName));
}

/// May be repeated after an interruption at any point. The log comes first: as long as it is not moved, no file is, and
/// the restore can be given up.
bool RestoreStage::moveIntoPlace(const QDir &records)
{
    const QDir folder(records.filePath(folderName));
    QStringList names = folder.entryList({u"*.sqlite"_s, u"*.json"_s}, QDir::Files);
    if (names.removeOne(logName))
        names.prepend(logName);
    for (const QString &name : std::as_const(names)) {
        if (name == noteName)
            continue;
        const QString target = records.filePath(name);
        // The journal of the former file would be applied to the new one.
        for (const QString &side : {u"-journal"_s, u"-wal"_s, u"-shm"_s}) {
            if (!removeIfThere(target + side))
                return false;
        }
        if (!syncToDisk(records.path()) || !replaceFile(folder.filePath(name), target))
            return false;
    }
    return syncToDisk(records.path()) && QFile::remove(folder.filePath(noteName)) && QDir(folder).removeRecursively();
}

std::optional<RestoreNote> RestoreStage::finishInterrupted(const QDir &records)
{
    const QDir folder(records.filePath(folderName));
    if (!folder.exists())
        return std::nullopt;
    QLockFile lock(records.filePath(lockName));
    lock.setStaleLockTime(0);
    if (!lock.tryLock(folder.exists(noteName) ? longestSwap : std::chrono::milliseconds(0)))
        return std::nullopt; // another program is at it
    QFile file(folder.filePath(noteName));
    if (!file.open(QIODevice::ReadOnly)) {
        QDir(folder).removeRecursively();
        return std::nullopt;
    }
    std::optional<RestoreNote> note;
    try {
        note = decodeJson<RestoreNote>(file.readAll(), Keys::asIs);
    } catch (const AppError &) {
        note.emplace(); // it was written completely before the first file was moved
    }
    if (moveIntoPlace(records))
        return note;
    giveUpUnlessBegun(folder);
    return std::nullopt;
}

} // namespace parcelory
