#include "shell/StagingFolder.h"

#include "core/AppError.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUuid>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr std::time_t helperTime = 24 * 60 * 60; ///< the script that swaps the applications holds no lock
const QString lockName = u"/lock"_s;             ///< swap.sh deletes it where the new application stays in the folder

bool lock(int file)
{
    return ::flock(file, LOCK_EX | LOCK_NB) == 0;
}

/// True if the folder is ours and no longer needed. Without its lock file, it holds an application that is in use.
bool isLeftover(const QString &folder)
{
    const QByteArray path = QFile::encodeName(folder + lockName);
    const int file = ::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    struct stat facts{};
    const bool isOurs = ::fstat(file, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_uid == ::geteuid();
    const bool isUnused = isOurs && std::time(nullptr) - facts.st_mtime > helperTime && lock(file);
    ::close(file);
    return isUnused;
}

} // namespace

void StagingFolder::create()
{
    m_path = QDir::temp().filePath(u"kxupdate-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces));
    // Only this user may access the files that are about to become the program.
    constexpr auto mode = QFile::ReadOwner | QFile::WriteOwner;
    if (!QDir().mkdir(m_path, mode | QFile::ExeOwner))
        throw AppError(u"The folder %1 could not be made."_s.arg(m_path));
    m_lock.setFileName(m_path + lockName);
    if (m_lock.open(QIODevice::WriteOnly | QIODevice::NewOnly, mode))
        lock(m_lock.handle()); // some file systems have no locks
}

void StagingFolder::remove()
{
    m_lock.close();
    if (!m_path.isEmpty()) // an empty name would mean the current folder
        QDir(m_path).removeRecursively();
}

void StagingFolder::sweep()
{
    static const QRegularExpression ours(u"^kxupdate-[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$"_s);
    const QDir temp = QDir::temp();
    for (const QFileInfo &entry : temp.entryInfoList({u"kxupdate-*"_s}, QDir::Dirs | QDir::NoSymLinks)) {
        if (ours.match(entry.fileName()).hasMatch() && isLeftover(entry.filePath()))
            QDir(entry.filePath()).removeRecursively();
    }
}

} // namespace parcelory
