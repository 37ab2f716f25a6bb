#pragma once

#include "core/ports/Desktop.h"
#include "core/ports/ProcessRunner.h"
#include "shell/platform/SystemDesktop.h"

#include <QDir>

#include <atomic>

namespace parcelory {

/// Two printers of paper-free stock. It answers as the print tools would and keeps what they get as files.
class PracticePrinter : public ProcessRunner {
public:
    static inline const QString labelQueue = QStringLiteral("Practice_Zebra");
    static inline const QString documentQueue = QStringLiteral("Practice_Laser");

    /// Printed files go to `folder`, numbered in the order in which they came.
    explicit PracticePrinter(QDir folder);

    /// Only the three print tools exist here; anything else throws AppError.
    ProcessOutcome run(const QString &program, const QStringList &arguments,
                       const std::atomic<bool> *stop = nullptr) override;

    /// A paused label queue; `stubborn` stays paused when it is asked to resume.
    void pause(bool stubborn);
    void resume() { m_paused = false; }
    QDir folder() const { return m_folder; }

private:
    ProcessOutcome lpstat(const QStringList &arguments) const;
    ProcessOutcome lpr(const QStringList &arguments);

    QDir m_folder;
    std::atomic<int> m_jobs = 0;
    std::atomic<bool> m_paused = false;
    std::atomic<bool> m_stubborn = false;
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
