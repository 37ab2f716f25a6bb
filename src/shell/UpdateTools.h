#pragma once

#include "core/ports/ProcessRunner.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>

namespace parcelory {

/// The steps of an update that child processes do. Each waits for its process: call them through onPool, with a copy.
/// They throw AppError, or SystemError with the status that a process ended with.
class UpdateTools {
public:
    explicit UpdateTools(ProcessRunner &processes) : m_processes(processes) {}

    /// Ends the child process that is running, of every copy; no other gets far then.
    void stop() const { *m_stopped = true; }

    void curlDownload(const QString &url, const QString &file) const;
    QByteArray curlData(const QString &url) const;
    /// Bytes behind an address, after its redirects; nothing when the server does not tell.
    std::optional<qint64> contentLength(const QString &url) const;

    /// Unpacks an archive into `folder`, the archive's own, and puts the helper script beside it. Returns the
    /// application that it held. The archive is gone afterwards.
    QString stage(const QString &archive, const QString &folder) const;
    /// Where stage() puts the script that swaps the applications once this one has ended.
    static QString helperIn(const QString &folder);
    /// Whether what stage() made is still there: something may have tidied up meanwhile.
    static bool isStaged(const QString &helper, const QString &app);

private:
    ProcessOutcome start(const QString &program, const QStringList &arguments) const;
    void run(const QString &program, const QStringList &arguments, const QString &failure) const;
    void unpack(const QString &archive, const QString &folder) const;
    void writeHelper(const QString &folder) const;

    ProcessRunner &m_processes;
    std::shared_ptr<std::atomic<bool>> m_stopped = std::make_shared<std::atomic<bool>>(false);
};

} // namespace parcelory
