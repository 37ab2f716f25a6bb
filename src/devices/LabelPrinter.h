#pragma once

#include "core/AppError.h"
#include "core/Platform.h"
#include "core/ports/ProcessRunner.h"
#include "devices/PrinterState.h"
#include "devices/Zpl.h"

#include <QStringList>

#include <chrono>

namespace parcelory {

/// Sends labels and documents to their printers through the CUPS tools. Keeps no state; every operation waits for its
/// child process, so screens call it through onPool. Queue names are CUPS destinations; empty: no queue is chosen.
class LabelPrinter {
public:
    static constexpr int noQueue = 1, pausedQueue = 2, notALabel = 3,
                         noAnswer = 4; ///< codes of SystemError; others are lpr's status

    explicit LabelPrinter(Platform &platform);

    /// Prints a label of any kind and returns a sentence that says where it went. Throws SystemError, or AppError if a
    /// tool cannot be started or the temporary file cannot be written. Anything that is not a label is rejected.
    QString print(const LabelFile &label, const QString &zebraQueue, const QString &documentQueue);
    /// Sends ZPL raw, with its length clamped, and rotated if the setting says so. Otherwise sets the normal
    /// orientation on a printer that ever received a rotated label: printers keep their orientation until it is set
    /// again.
    void printZPL(const QByteArray &zpl, const QString &queue);
    /// True if sent to the queue; without a queue, the viewer opens the document.
    bool printPDF(const QByteArray &pdf, const QString &queue);

    struct Queues {
        QStringList all, zebras;
    };
    /// All queues at once. Throws SystemError, or AppError if the tool cannot be started, when the print system does
    /// not answer; queues() and zebraQueues() are then empty.
    Queues listQueues();
    QStringList queues();
    QStringList zebraQueues(); ///< queues whose name or device looks like a Zebra printer
    bool queueIsPaused(const QString &queue);
    void tryResume(const QString &queue);
    /// The print system's report on a queue and its waiting jobs. Never throws.
    PrinterReport queueReport(const QString &queue);
    bool rotate180() const;

private:
    /// A print tool that takes longer hangs.
    static constexpr std::chrono::seconds toolLimit{30};

    ProcessOutcome runTool(const QString &tool, const QStringList &arguments);
    void sendZpl(const LabelFile &label, const QString &queue);
    bool sendPdf(const LabelFile &document, const QString &queue);
    void view(const QByteArray &bytes, const QString &prefix, const QString &suffix);
    void lpr(const QString &path, const QString &queue, bool raw);
    QStringList lpstatLines(const QString &option);
    void rememberTurned(const QString &queue);

    ProcessRunner &m_processes;
    Desktop &m_desktop;
    Preferences &m_preferences;
};

} // namespace parcelory
