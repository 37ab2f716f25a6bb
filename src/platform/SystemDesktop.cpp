#include "platform/SystemDesktop.h"

#include "core/AppError.h"
#include "core/ports/ProcessRunner.h"

#include <QClipboard>
#include <QGuiApplication>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {
#ifdef Q_OS_MACOS
const QString opener = u"/usr/bin/open"_s;
#else
const QString opener = u"/usr/bin/xdg-open"_s;
#endif
} // namespace

void copyToClipboard(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

SystemDesktop::SystemDesktop(ProcessRunner &processes) : m_processes(processes) {}

void SystemDesktop::openUrl(const QUrl &url)
{
    if (m_processes.run(opener, {url.toString(QUrl::FullyEncoded)}).status != 0)
        throw AppError(u"no browser on this computer opens %1"_s.arg(url.host()));
}

void SystemDesktop::openFile(const QString &path)
{
    if (m_processes.run(opener, {path}).status != 0)
        throw AppError(u"no program on this computer can open the document — it is saved as %1"_s.arg(path));
}

} // namespace parcelory
