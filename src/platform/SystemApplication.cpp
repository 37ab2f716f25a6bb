#include "platform/SystemApplication.h"

#include "core/AppBundle.h"
#include "core/AppError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace parcelory {
using namespace Qt::StringLiterals;

QString SystemApplication::bundleAround(const QString &programFolder)
{
    // Only an .app folder may be swapped as a whole: the parent folder of /usr/bin is the system.
    const QString up = u"/.."_s.repeated(programInBundle.count(u'/'));
    const QString bundle = QDir::cleanPath(programFolder + up);
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
    process.setWorkingDirectory(u"/"_s); // otherwise the new process would keep the current folder from being removed
    // Otherwise a process that reads this program's output would also wait for the new process to end.
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (!process.startDetached())
        throw AppError(u"%1 could not be started — %2"_s.arg(program, process.errorString()));
}

void SystemApplication::quitWithin(std::chrono::milliseconds patience)
{
    // Not a timer: the program may hang after its event loop has ended.
    std::thread([patience] {
        std::this_thread::sleep_for(patience);
        std::_Exit(0);
    }).detach();
    QCoreApplication::quit();
}

} // namespace parcelory
