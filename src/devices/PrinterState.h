#pragma once

#include <QByteArray>
#include <QString>

namespace parcelory {

/// Why a print queue does not print.
enum class PrinterTrouble {
    none,
    noPrintSystem,
    unknownQueue,
    paused,
    refusing,
    held,
    outOfLabels,
    open,
    ribbon,
    jammed,
    inUse,
    offline,
};

/// The print system's report on one queue.
struct PrinterReport {
    bool readable = false; ///< false: nothing is known, and nothing may be concluded
    PrinterTrouble trouble = PrinterTrouble::none;
    QString words;     ///< the print system's own words, in any language; for an unreadable report, why it is
    int waiting = 0;   ///< jobs that have not left the queue, including the job that prints
    QString oldestJob; ///< changes as long as labels come out

    bool isIdle() const { return readable && trouble == PrinterTrouble::none && waiting == 0; }
};

/// Parses what `lpstat -l -p QUEUE -a QUEUE -o QUEUE` wrote to stdout and stderr. An unknown queue and a print system
/// that is not running look alike there; both are reported as unknownQueue.
PrinterReport readPrinterReport(const QByteArray &out, const QByteArray &err);

/// What a queue prints; selects the words of a sentence.
enum class Paper { label, document };

/// The report as a sentence for the clerk, such as "2 labels are still waiting on ZD421 — the printer is out of
/// labels."; empty if there is nothing to report.
QString printerSentence(const QString &queue, const PrinterReport &report, Paper paper);

} // namespace parcelory
