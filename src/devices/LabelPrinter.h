#pragma once

#include "core/AppError.h"
#include "core/Platform.h"
#include "devices/PrinterState.h"
#include "devices/Zpl.h"

#include <QStringList>

namespace parcelory {

/// Brings a label to its device through the CUPS tools. Keeps no state; every operation waits for its child process,
/// so screens call it through onPool. Queue names are CUPS destinations; the empty text is "none chosen".
class LabelPrinter {
public:
    static constexpr int noQueue = 1, pausedQueue = 2, notALabel = 3; ///< codes of SystemError; others are lpr's status

    explicit LabelPrinter(Platform &platform);

    /// Prints a label of any kind and says in a sentence where it went. Throws SystemError, or AppError when a tool
    /// cannot be started or the temporary file not written. Bytes that are no label go nowhere, on no way to a printer.
    QString print(const QByteArray &label, const QString &zebraQueue, const QString &documentQueue);
    /// Sends ZPL raw, its length clamped and, if so set, turned. Otherwise it is set upright on a printer that was ever
    /// sent a turned label: printers keep their orientation until they are told another.
    void printZPL(const QByteArray &zpl, const QString &queue);
    /// True when sent to the queue; without one the viewer opens the document.
    bool printPDF(const QByteArray &pdf, const QString &queue);

    QStringList queues();
    QStringList zebraQueues(); ///< those whose name or device looks like a Zebra printer
    bool queueIsPaused(const QString &queue);
    void tryResume(const QString &queue);
    /// What the print system says of a queue and of the jobs that wait in it. Never throws.
    PrinterReport queueReport(const QString &queue);
    bool rotate180() const;

private:
    void lpr(const QString &path, const QString &queue, bool raw);
    QStringList lpstatLines(const QString &option);
    void rememberTurned(const QString &queue);

    ProcessRunner &m_processes;
    Desktop &m_desktop;
    Preferences &m_preferences;
};

} // namespace parcelory
