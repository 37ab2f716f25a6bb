#pragma once

#include "core/ports/Desktop.h"
#include "core/ports/ProcessRunner.h"

namespace parcelory {

/// The desktop's own "open this" tool.
class SystemDesktop : public Desktop {
public:
    explicit SystemDesktop(ProcessRunner &processes);

    void openFile(const QString &path) override;

private:
    ProcessRunner &m_processes;
};

} // namespace parcelory
