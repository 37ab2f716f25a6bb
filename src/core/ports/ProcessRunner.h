#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <atomic>

namespace parcelory {

struct ProcessOutcome {
    int status = 0; ///< exit status; a process that was killed counts as 128 plus the signal
    QByteArray out;
    QByteArray err;
};

/// Starts a child process by its absolute path, never through a shell, and waits for it. Blocks: call it from
/// onPool. The child speaks plain English (a pinned locale), whatever the user's language.
class ProcessRunner {
public:
    virtual ~ProcessRunner() = default;

    /// Throws AppError when the program cannot be started. `stop`: for a child whose work is worth nothing once the
    /// program ends; it is killed soon after the flag is set. A child without one is never cut off.
    virtual ProcessOutcome run(const QString &program, const QStringList &arguments,
                               const std::atomic<bool> *stop = nullptr) = 0;
};

} // namespace parcelory
