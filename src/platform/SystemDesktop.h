#pragma once

#include "core/ports/Desktop.h"
#include "core/ports/ProcessRunner.h"

namespace parcelory {

/// Puts a text on the system's clipboard.
void copyToClipboard(const QString &text);

/// Opens files and addresses with the desktop's own opener tool.
class SystemDesktop : public Desktop {
public:
    explicit SystemDesktop(ProcessRunner &processes);

    void openFile(const QString &path) override;
    void openUrl(const QUrl &url) override;
    void copyText(const QString &text) override { copyToClipboard(text); }

private:
    bool opened(const QString &target, const QString &name);

    ProcessRunner &m_processes;
};

} // namespace parcelory
