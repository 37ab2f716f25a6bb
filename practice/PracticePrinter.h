#pragma once

#include "core/ports/Desktop.h"
#include "core/ports/ProcessRunner.h"
#include "platform/SystemDesktop.h"

#include <QDir>

#include <mutex>

namespace parcelory {

/// The practice label printer's fault. While it is paused, off or out of labels, jobs wait in its queue.
enum class PrinterFault { none, paused, off, outOfLabels, unknown };

/// Two printers without paper: imitates the print tools and saves printed documents as files, labels with a picture
/// beside them. May be called from any
/// thread.
class PracticePrinter : public ProcessRunner {
public:
    static inline const QString labelQueue = QStringLiteral("Practice_Zebra");
    static inline const QString documentQueue = QStringLiteral("Practice_Laser");

    /// Printed files go to `folder`, numbered in order of arrival.
    explicit PracticePrinter(const QDir &folder);

    /// Only the three print tools exist here; anything else throws AppError.
    ProcessOutcome run(const QString &program, const QStringList &arguments, const CancelToken &cancel = {},
                       std::chrono::milliseconds limit = noLimit) override;

    /// Waiting jobs print when the fault becomes `none`. A paused queue that is not `stubborn` resumes on request.
    void setFault(PrinterFault fault, bool stubborn = true);
    QDir folder() const { return m_folder; }

private:
    struct Job {
        int number;
        QString file; ///< name of the printed file
        QByteArray bytes;
    };

    ProcessOutcome lpstat(const QStringList &arguments) const;
    QByteArray described(const QString &queue, bool withJobs) const;
    ProcessOutcome lpr(const QStringList &arguments);
    void print(const Job &job) const;

    QDir m_folder;
    mutable std::recursive_mutex m_access;
    int m_jobs = 0;
    QList<Job> m_waiting; ///< for the label printer
    PrinterFault m_fault = PrinterFault::none;
    bool m_stubborn = false;
};

/// A viewer that keeps a copy of every document it is given.
class PracticeDesktop : public Desktop {
public:
    explicit PracticeDesktop(const QDir &folder) : m_folder(folder) {}

    void openFile(const QString &path) override;
    void openUrl(const QUrl &url) override; ///< opens the handbook; only records the address of a web page
    void copyText(const QString &text) override { copyToClipboard(text); }

private:
    QDir m_folder;
};

} // namespace parcelory
