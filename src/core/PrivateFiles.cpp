#include "core/PrivateFiles.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr auto fileMode = QFile::ReadOwner | QFile::WriteOwner;
constexpr auto folderMode = fileMode | QFile::ExeOwner;
constexpr QLatin1StringView asideMark(".unreadable-");

bool isSocket(const QString &path)
{
    struct stat facts{};
    return ::stat(QFile::encodeName(path).constData(), &facts) == 0 && S_ISSOCK(facts.st_mode);
}

} // namespace

QString asidePath(const QString &path)
{
    return path + asideMark + QDateTime::currentDateTime().toString(u"yyyyMMdd-hhmmss-zzz"_s);
}

void createPrivateFolder(const QDir &folder)
{
    if (!folder.exists() && folder.mkpath(u"."_s))
        QFile::setPermissions(folder.path(), folderMode);
}

void createPrivateFile(const QString &path)
{
    [[maybe_unused]] const bool isNew = QFile(path).open(QIODevice::WriteOnly | QIODevice::NewOnly, fileMode);
}

void makePrivate(const QString &path)
{
    QFile::setPermissions(path, fileMode);
}

void setAsideUnlessFile(const QString &path, qint64 largest)
{
    const QFileInfo entry(path);
    if (entry.exists() && (!entry.isFile() || entry.size() > largest))
        QFile::rename(path, asidePath(path));
}

void makePrivate(const QDir &folder)
{
    createPrivateFolder(folder);
    QFile::setPermissions(folder.path(), folderMode);
    constexpr auto all = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    for (const QFileInfo &entry : folder.entryInfoList(all)) {
        if (entry.isFile())
            makePrivate(entry.filePath());
        else if (!entry.isDir() && entry.exists() && // a link may lead nowhere
                 !entry.fileName().contains(asideMark) && !isSocket(entry.filePath()))
            QFile::rename(entry.filePath(), asidePath(entry.filePath()));
    }
}

} // namespace parcelory
