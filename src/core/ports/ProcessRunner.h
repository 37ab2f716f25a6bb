#pragma once

#include "core/AppError.h"
#include "core/Progress.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>

namespace parcelory {

struct ProcessOutcome {
    int status = 0; ///< exit status; for a killed process, 128 plus the signal
    QByteArray out;
    QByteArray err;
};

/// A child process did not end within its time limit and was killed. It may have done its work nevertheless.
class ProcessTimedOut : public AppError {
public:
    using AppError::AppError;
};

/// Starts a child process by its absolute path, never through a shell, and waits for it. Blocks: call it from
/// onPool. The child's output is English (a pinned locale), regardless of the user's language.
class ProcessRunner {
public:
    virtual ~ProcessRunner() = default;

    /// No time limit.
    static constexpr std::chrono::milliseconds noLimit{-1};

    /// Throws AppError if the program cannot be started, ProcessTimedOut if it has not ended after `limit`. The child
    /// is killed soon after `cancel` is canceled; use this for work that is useless once the program ends.
    virtual ProcessOutcome run(const QString &program, const QStringList &arguments, const CancelToken &cancel = {},
                               std::chrono::milliseconds limit = noLimit) = 0;

    /// The same for a program that starts another program, which goes on: its output is dropped, because a pipe would
    /// break and end it.
    virtual ProcessOutcome runOpener(const QString &program, const QStringList &arguments,
                                     std::chrono::milliseconds limit)
    {
        return run(program, arguments, {}, limit);
    }
};

} // namespace parcelory
