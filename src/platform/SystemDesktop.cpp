#include "platform/SystemDesktop.h"

#include "core/AppError.h"
#include "core/ports/ProcessRunner.h"

#include <QClipboard>
#include <QGuiApplication>

#include <chrono>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {
#ifdef Q_OS_MACOS
const QString opener = u"/usr/bin/open"_s;
#else
const QString opener = u"/usr/bin/xdg-open"_s;
#endif

/// A desktop hands a file over within a second; an opener that takes longer hangs.
constexpr std::chrono::seconds openerLimit{30};
} // namespace

void copyToClipboard(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

SystemDesktop::SystemDesktop(ProcessRunner &processes) : m_processes(processes) {}

void SystemDesktop::openUrl(const QUrl &url)
{
    const QString name = url.isLocalFile() ? url.toLocalFile() : url.host();
    if (!opened(url.toString(QUrl::FullyEncoded), name))
        throw AppError(u"no browser on this computer opens %1"_s.arg(name));
}

void SystemDesktop::openFile(const QString &path)
{
    const QString saved = u"it is saved as %1"_s.arg(path);
    if (!opened(path, u"the document — "_s + saved))
        throw AppError(u"no program on this computer can open the document — "_s + saved);
}

/// False if the opener fails. `name` says what did not open when the opener hangs.
bool SystemDesktop::opened(const QString &target, const QString &name)
{
    try {
        return m_processes.runOpener(opener, {target}, openerLimit).status == 0;
    } catch (const ProcessTimedOut &) {
        throw AppError(
            u"the desktop did not answer within %1 seconds and may still open %2"_s.arg(openerLimit.count()).arg(name));
    }
}

} // namespace parcelory
