#include "shell/platform/SystemDesktop.h"

#include "core/AppError.h"

#include <QClipboard>
#include <QGuiApplication>

namespace parcelory {
using namespace Qt::StringLiterals;

void copyToClipboard(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

SystemDesktop::SystemDesktop(ProcessRunner &processes) : m_processes(processes) {}

void SystemDesktop::openFile(const QString &path)
{
#ifdef Q_OS_MACOS
    const QString tool = u"/usr/bin/open"_s;
#else
    const QString tool = u"/usr/bin/xdg-open"_s;
#endif
    if (m_processes.run(tool, {path}).status != 0)
        throw AppError(u"no program on this computer opens the document — it is kept as %1"_s.arg(path));
}

} // namespace parcelory
