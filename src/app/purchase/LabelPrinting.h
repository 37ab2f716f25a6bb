#pragma once

#include "app/AppState.h"
#include "compose/LabelReadBack.h"
#include "core/Task.h"
#include "records/LabelEvents.h"

#include <QDateTime>

#include <functional>

namespace parcelory {

/// Writes that a printer took a paper; `at` is the time when the print began. Returns why that failed, or an empty
/// text. Runs on the thread pool in the job that prints: the end of the program waits for the job, so that no paper
/// comes out without its note.
using PrintNote = std::function<QString(const QDateTime &at)>;
/// The note that this happened to labels or to a SCAN form, in the mailing log.
PrintNote noteOf(AppState &app, QStringList ids, LabelEvent event);

/// Writes such a note without a print. A failure is an entry in the error log.
Task<> noteEvent(AppState &app, QStringList ids, LabelEvent event);
/// That entry, for a caller that has written by itself. Without a reason, there is no entry.
void recordUnnoted(AppState &app, const QString &reason);

struct PrintedLabel {
    QString text;    ///< the printer's message
    QString unnoted; ///< why the note was not written; otherwise empty
};

/// Prints a label on the printers chosen in Settings and watches the queue until it is empty. `transactionId`: of a
/// label of the log, where it is noted once the queue is empty. Throws AppError.
Task<PrintedLabel> printLabel(AppState &app, QByteArray label, QString transactionId = {}, PrintNote note = {});

/// A sentence about jobs that wait in the label printer's queue, for the clerk to read before more are sent; empty if
/// no job is waiting.
Task<QString> stillWaiting(AppState &app);

struct ReprintResult {
    PrintedLabel printed; ///< without a message if the clerk does not want a doubtful label
    /// Of an old row, whose label was compared with its parcel for the first time; otherwise empty.
    LabelVerdict firstVerdict{};
};

/// Reprints a label. Uses the label data in `record` or in the mailing log; downloads the label again if the log has no
/// data. Throws AppError.
Task<ReprintResult> reprintLabel(AppState &app, ShipmentRecord record, PrintNote note);

/// Downloads the customs papers of a shipment that was logged without them, and stores them in the log.
Task<QByteArray> downloadCustoms(AppState &app, ShipmentRecord record);

/// True if the document went to the document printer; without a document printer, the viewer opens it. That the note
/// was not written is an entry in the error log.
Task<bool> printDocument(AppState &app, QByteArray pdf, PrintNote note = {});
/// The same for all documents of a SCAN form, which is noted with the last of them.
Task<bool> printForm(AppState &app, QList<QByteArray> documents, QString manifestId);
/// Prints the customs papers of a logged parcel, and says so. Throws AppError.
Task<QString> reprintCustoms(AppState &app, ShipmentRecord record);
/// Prints a parcel's papers for customs, closes what was noted about missing papers, and says so.
Task<QString> printCustoms(AppState &app, QByteArray document, QString transactionId);

/// Deletes the labels and documents that a killed program left in the folder for temporary files.
Task<> sweepPrintFiles();

/// Logs a failed reprint. A SystemError, such as a printer without paper or a paused queue, does not raise the support
/// alert, because the clerk fixes it at the desk.
void recordReprintFailure(AppState &app, const AppError &error);

} // namespace parcelory
