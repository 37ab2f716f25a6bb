#include "platform/SystemApplication.h"

#include "core/AppError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <cstdlib>
#include <thread>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {
#ifdef Q_OS_MACOS
const QString bundleFromPrograms = u"../.."_s; // Parcelory.app/Contents/MacOS
#else
const QString bundleFromPrograms = u".."_s; // Parcelory.app/bin
#endif
} // namespace

QString SystemApplication::bundleAround(const QString &programFolder)
{
    // Only a folder of this kind may be swapped as a whole: the folder around /usr/bin is the system.
    const QString bundle = QDir::cleanPath(programFolder + u'/' + bundleFromPrograms);
    return QFileInfo(bundle).suffix() == u"app" ? bundle : QString();
}

QString SystemApplication::version() const
{
    return QCoreApplication::applicationVersion();
}

QString SystemApplication::installedPath() const
{
    return bundleAround(QCoreApplication::applicationDirPath());
}

qint64 SystemApplication::processId() const
{
    return QCoreApplication::applicationPid();
}

void SystemApplication::startDetached(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setWorkingDirectory(u"/"_s); // it would keep the present one from being removed
    // Whoever reads this program's output would otherwise wait for the other's end, too.
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (!process.startDetached())
        throw AppError(u"%1 could not be started — %2"_s.arg(program, process.errorString()));
}

void SystemApplication::quitWithin(std::chrono::milliseconds patience)
{
    // Not by a timer: the program may also be held up when its event loop has ended.
    std::thread([patience] {
        std::this_thread::sleep_for(patience);
        std::_Exit(0);
    }).detach();
    QCoreApplication::quit();
}

} // namespace parcelory
