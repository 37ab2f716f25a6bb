#pragma once

#include "core/ports/ProcessRunner.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace parcelory {

/// The update steps that run child processes. Each call waits for its process: call it through onPool, with a copy.
/// Calls throw AppError, or SystemError with a process's exit status.
class UpdateTools {
public:
    explicit UpdateTools(ProcessRunner &processes) : m_processes(processes) {}

    /// Ends the running child process of every copy, and any later process.
    void stop() const { m_cancel.cancel(); }

    void curlDownload(const QString &url, const QString &file) const;
    QByteArray curlData(const QString &url) const;
    /// Size of a download in bytes, after redirects; empty if the server does not tell.
    std::optional<qint64> contentLength(const QString &url) const;

    /// Unpacks an archive into its own `folder`, adds the helper script and deletes the archive. Returns the unpacked
    /// application.
    QString stage(const QString &archive, const QString &folder) const;
    /// Path where stage() puts the script that swaps the applications after this program ends.
    static QString helperIn(const QString &folder);
    /// The version that an application says it has, on any system; nothing if it has no file for it. Throws AppError if
    /// its property list names no version.
    std::optional<QString> versionIn(const QString &app) const;
    /// True if stage()'s files are still there: a cleanup of temporary files may have removed them.
    static bool isStaged(const QString &helper, const QString &app);

private:
    ProcessOutcome start(const QString &program, const QStringList &arguments) const;
    void run(const QString &program, const QStringList &arguments, const QString &failure) const;
    void download(const QString &url, const QString &file, qint64 largest) const;
    void unpack(const QString &archive, const QString &folder) const;
    void writeHelper(const QString &folder) const;

    ProcessRunner &m_processes;
    CancelToken m_cancel;
};

} // namespace parcelory
