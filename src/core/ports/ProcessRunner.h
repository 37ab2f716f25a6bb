#pragma once

#include "core/Progress.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace parcelory {

struct ProcessOutcome {
    int status = 0; ///< exit status; for a killed process, 128 plus the signal
    QByteArray out;
    QByteArray err;
};

/// Starts a child process by its absolute path, never through a shell, and waits for it. Blocks: call it from
/// onPool. The child's output is English (a pinned locale), regardless of the user's language.
class ProcessRunner {
public:
    virtual ~ProcessRunner() = default;

    /// Throws AppError if the program cannot be started. The child is killed soon after `cancel` is canceled; use this
    /// for work that is useless once the program ends.
    virtual ProcessOutcome run(const QString &program, const QStringList &arguments,
                               const CancelToken &cancel = {}) = 0;
};

} // namespace parcelory
