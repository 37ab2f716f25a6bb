#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

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

    /// Throws AppError when the program cannot be started.
    virtual ProcessOutcome run(const QString &program, const QStringList &arguments) = 0;
};

} // namespace parcelory
