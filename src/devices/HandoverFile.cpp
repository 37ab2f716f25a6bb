#include "devices/HandoverFile.h"

#include "core/AppError.h"

#include <QDir>
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

constexpr auto viewerMode = QFile::ReadOwner; // distinguishes a viewer's file from a leftover
constexpr std::time_t viewerTime = 24 * 60 * 60;

bool lock(int file)
{
    return ::flock(file, LOCK_EX | LOCK_NB) == 0;
}

/// True if the file is ours and no longer needed.
bool isLeftover(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    struct stat facts{};
    const bool isOurs = ::fstat(file, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_uid == ::geteuid();
    const bool isForViewer = (facts.st_mode & S_IWUSR) == 0;
    const bool isOld = std::time(nullptr) - facts.st_mtime > viewerTime;
    const bool isUnused = isOurs && (isForViewer ? isOld : lock(file));
    ::close(file);
    return isUnused;
}

} // namespace

HandoverFile::HandoverFile(const QByteArray &bytes, const QString &prefix, const QString &suffix)
{
    const QDir folder = QDir::temp();
    if (!folder.exists()) // the file would end up in the current directory
        throw AppError(u"The folder for temporary files, %1, does not exist."_s.arg(folder.path()));
    m_file.setFileName(folder.filePath(prefix + QUuid::createUuid().toString(QUuid::WithoutBraces) + suffix));
    const bool isOpen = m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFile::ReadOwner | QFile::WriteOwner);
    if (isOpen)
        lock(m_file.handle()); // some file systems have no locks
    if (!isOpen || m_file.write(bytes) != bytes.size() || !m_file.flush()) {
        const QString reason = m_file.errorString();
        m_file.remove();
        throw AppError(u"The label could not be handed to the printer — "_s + reason + u'.');
    }
}

HandoverFile::~HandoverFile()
{
    if (!m_isKept)
        m_file.remove();
}

void HandoverFile::keepForViewer()
{
    m_isKept = true;
    m_file.setPermissions(viewerMode);
}

void HandoverFile::sweep()
{
    static const QRegularExpression ours(u"^parcelory-(label-)?[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"
                                         "\\.(zpl|pdf|png)$"_s);
    const QDir folder = QDir::temp();
    for (const QString &name : folder.entryList({u"parcelory-*"_s}, QDir::Files | QDir::System)) {
        const QString path = folder.filePath(name);
        if (ours.match(name).hasMatch() && isLeftover(QFile::encodeName(path)))
            QFile::remove(path);
    }
}

} // namespace parcelory
