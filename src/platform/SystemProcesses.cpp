#include "platform/SystemProcesses.h"

#include "core/AppError.h"
#include "core/Progress.h"
#include "core/ports/ProcessRunner.h"

#include <QDeadlineTimer>
#include <QProcess>

#include <chrono>
#include <memory>
#include <unistd.h>

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
constexpr int longestDying = 5000; // milliseconds; a killed process that waits for a dead disk stays for ever

/// Waits for the start, too: a program on a dead disk does not start. False if the process had to be killed because its
/// time was over.
bool waitForEnd(QProcess &process, const CancelToken &cancel, const QDeadlineTimer &deadline)
{
    while (!cancel.isCanceled() && !deadline.hasExpired() && process.state() != QProcess::NotRunning)
        process.waitForFinished(checkInterval);
    if (process.state() == QProcess::NotRunning)
        return true;
    process.kill();
    process.waitForFinished(longestDying);
    return cancel.isCanceled();
}

enum class Output { kept, dropped };

ProcessOutcome runProcess(const QString &program, const QStringList &arguments, const CancelToken &cancel,
                          std::chrono::milliseconds limit, Output output)
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(pinnedEnvironment());
    process->setStandardInputFile(QProcess::nullDevice());
    if (output == Output::dropped) {
        process->setStandardOutputFile(QProcess::nullDevice());
        process->setStandardErrorFile(QProcess::nullDevice());
    }
    // A session of its own has no terminal: cupsenable would ask there for the password of an administrator, and wait.
    process->setChildProcessModifier([] { ::setsid(); });
    process->start(program, arguments);
    const bool isInTime = waitForEnd(*process, cancel, QDeadlineTimer(limit.count()));
    if (process->error() == QProcess::FailedToStart)
        throw AppError(u"%1 could not be started — %2"_s.arg(program, process->errorString()));
    const bool hasEnded = process->state() == QProcess::NotRunning;
    if (!hasEnded) [[maybe_unused]]
        const QProcess *left = process.release(); // its destructor would wait for it again
    if (!isInTime || !hasEnded)
        throw ProcessTimedOut(u"%1 did not end within %2 seconds."_s.arg(program).arg(
            std::chrono::duration_cast<std::chrono::seconds>(limit).count()));
    const bool isNormal = process->exitStatus() == QProcess::NormalExit;
    return {isNormal ? process->exitCode() : 128 + process->exitCode(), process->readAllStandardOutput(),
            process->readAllStandardError()};
}

} // namespace

ProcessOutcome SystemProcesses::run(const QString &program, const QStringList &arguments, const CancelToken &cancel,
                                    std::chrono::milliseconds limit)
{
    return runProcess(program, arguments, cancel, limit, Output::kept);
}

ProcessOutcome SystemProcesses::runOpener(const QString &program, const QStringList &arguments,
                                          std::chrono::milliseconds limit)
{
    return runProcess(program, arguments, {}, limit, Output::dropped);
}

} // namespace parcelory
