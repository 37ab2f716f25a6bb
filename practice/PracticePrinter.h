#pragma once

#include "core/ports/Desktop.h"
#include "core/ports/ProcessRunner.h"
#include "platform/SystemDesktop.h"

#include <QDir>

#include <mutex>

namespace parcelory {

/// What ails the practice label printer. While it is off or out of labels, jobs wait in its queue.
enum class PrinterFault { none, paused, off, outOfLabels, unknown };

/// Two printers of paper-free stock. It answers as the print tools would and keeps what they get as files. May be
/// called from any thread.
class PracticePrinter : public ProcessRunner {
public:
    static inline const QString labelQueue = QStringLiteral("Practice_Zebra");
    static inline const QString documentQueue = QStringLiteral("Practice_Laser");

    /// Printed files go to `folder`, numbered in the order in which they came.
    explicit PracticePrinter(QDir folder);

    /// Only the three print tools exist here; anything else throws AppError.
    ProcessOutcome run(const QString &program, const QStringList &arguments,
                       const std::atomic<bool> *stop = nullptr) override;

    /// What waits is printed once there is none. A queue that is paused and not `stubborn` resumes when it is asked to.
    void setFault(PrinterFault fault, bool stubborn = true);
    QDir folder() const { return m_folder; }

private:
    struct Job {
        int number;
        QString file; ///< where it is printed to
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
    explicit PracticeDesktop(QDir folder) : m_folder(std::move(folder)) {}

    void openFile(const QString &path) override;
    void openUrl(const QUrl &url) override; ///< only notes the address: nothing of the desk goes out
    void copyText(const QString &text) override { copyToClipboard(text); }

private:
    QDir m_folder;
};

} // namespace parcelory
