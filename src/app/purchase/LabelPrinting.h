#pragma once

#include "app/AppState.h"
#include "compose/LabelReadBack.h"
#include "core/Task.h"
#include "records/LabelEvents.h"

namespace parcelory {

/// Prints a label on the printers chosen in Settings, watches the queue until it is empty, and returns the printer's
/// message. `transactionId`: of a label of the log, where it is noted once the queue is empty. Throws AppError.
Task<QString> printLabel(AppState &app, QByteArray label, QString transactionId = {});

/// Notes in the mailing log what happened to labels. A failure is an entry in the error log.
Task<> noteEvent(AppState &app, QStringList labels, LabelEvent event);
/// That entry, for a caller that has written by itself.
void recordUnnoted(AppState &app, const QString &reason);

/// Notes in the mailing log what happened to labels. A failure is an entry in the error log.
Task<> noteEvent(AppState &app, QStringList labels, LabelEvent event);

/// Closes what was noted about a parcel's missing papers, if anything was.
Task<> notePapersPrinted(AppState &app, QString transactionId);

/// A sentence about jobs that wait in the label printer's queue, for the clerk to read before more are sent; empty if
/// no job is waiting.
Task<QString> stillWaiting(AppState &app);

struct ReprintResult {
    QString printed; ///< the printer's message; empty if the clerk does not want a doubtful label
    /// Of an old row, whose label was compared with its parcel for the first time; otherwise empty.
    LabelVerdict firstVerdict{};
};

/// Reprints a label. Uses the label data in `record` or in the mailing log; downloads the label again if the log has no
/// data. Throws AppError.
Task<ReprintResult> reprintLabel(AppState &app, ShipmentRecord record);

/// Downloads the customs papers of a shipment that was logged without them, and stores them in the log.
Task<QByteArray> downloadCustoms(AppState &app, ShipmentRecord record);

/// True if the document went to the document printer; without a document printer, the viewer opens it.
Task<bool> printDocument(AppState &app, QByteArray pdf);
/// Prints the customs papers of a logged parcel, and says so. Throws AppError.
Task<QString> reprintCustoms(AppState &app, ShipmentRecord record);
/// Prints papers for customs, and says so.
Task<QString> printCustoms(AppState &app, QByteArray document);

/// Deletes the labels and documents that a killed program left in the folder for temporary files.
Task<> sweepPrintFiles();

/// Logs a failed reprint. A SystemError, such as a printer without paper or a paused queue, does not raise the support
/// alert, because the clerk fixes it at the desk.
void recordReprintFailure(AppState &app, const AppError &error);

} // namespace parcelory
