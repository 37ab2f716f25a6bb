#include "platform/SystemProcesses.h"

#include "core/AppError.h"
#include "core/Progress.h"
#include "core/ports/ProcessRunner.h"

#include <QProcess>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The tools' output is parsed by its English words. CUPS reads all four variables; LC_ALL takes precedence.
QProcessEnvironment pinnedEnvironment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    for (const QString &name : {u"LANG"_s, u"LANGUAGE"_s, u"SOFTWARE"_s})
        environment.insert(name, QString());
    return environment;
}

constexpr int checkInterval = 100; // milliseconds

void waitForEnd(QProcess &process, const CancelToken &cancel)
{
    while (!cancel.isCanceled() && process.state() != QProcess::NotRunning)
        process.waitForFinished(checkInterval);
    if (process.state() != QProcess::NotRunning)
        process.kill();
    process.waitForFinished(-1);
}

} // namespace

ProcessOutcome SystemProcesses::run(const QString &program, const QStringList &arguments, const CancelToken &cancel)
{
    QProcess process;
    process.setProcessEnvironment(pinnedEnvironment());
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForStarted(-1))
        throw AppError(u"%1 could not be started — %2"_s.arg(program, process.errorString()));
    waitForEnd(process, cancel);
    const bool ended = process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : 128 + process.exitCode(), process.readAllStandardOutput(),
            process.readAllStandardError()};
}

} // namespace parcelory
