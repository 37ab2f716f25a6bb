#include "platform/SystemProcesses.h"

#include "core/AppError.h"

#include <QProcess>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The tools' answers are read by their English words. CUPS looks at all four; the first decides where it is set.
QProcessEnvironment pinnedEnvironment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    for (const QString &name : {u"LANG"_s, u"LANGUAGE"_s, u"SOFTWARE"_s})
        environment.insert(name, QString());
    return environment;
}

constexpr int lookInterval = 100; // milliseconds

void waitForEnd(QProcess &process, const std::atomic<bool> *stop)
{
    while (stop && !*stop && process.state() != QProcess::NotRunning)
        process.waitForFinished(lookInterval);
    if (stop && process.state() != QProcess::NotRunning)
        process.kill();
    process.waitForFinished(-1);
}

} // namespace

ProcessOutcome SystemProcesses::run(const QString &program, const QStringList &arguments, const std::atomic<bool> *stop)
{
    QProcess process;
    process.setProcessEnvironment(pinnedEnvironment());
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForStarted(-1))
        throw AppError(u"%1 could not be started — %2"_s.arg(program, process.errorString()));
    waitForEnd(process, stop);
    const bool ended = process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : 128 + process.exitCode(), process.readAllStandardOutput(),
            process.readAllStandardError()};
}

} // namespace parcelory
