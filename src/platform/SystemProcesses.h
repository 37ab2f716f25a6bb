#pragma once

#include "core/ports/ProcessRunner.h"

namespace parcelory {

class SystemProcesses : public ProcessRunner {
public:
    ProcessOutcome run(const QString &program, const QStringList &arguments, const CancelToken &cancel = {},
                       std::chrono::milliseconds limit = noLimit) override;
    ProcessOutcome runOpener(const QString &program, const QStringList &arguments,
                             std::chrono::milliseconds limit) override;
};

} // namespace parcelory
