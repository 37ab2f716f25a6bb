#pragma once

#include "app/AppState.h"
#include "core/Task.h"

namespace parcelory {

/// Prints a label on the printers that are chosen in Settings, gives the printer's sentence, and has the queue followed
/// until it is empty. Throws AppError.
Task<QString> printLabel(AppState &app, QByteArray label);

/// What still waits in the label printer's queue, as a sentence to be read before more is sent there; empty if nothing.
Task<QString> stillWaiting(AppState &app);

/// Prints a label once more and gives the printer's sentence. Takes the bytes that `record` carries or that the
/// mailing log keeps; a label that was logged without them is downloaded again. Throws AppError.
Task<QString> reprintLabel(AppState &app, ShipmentRecord record);

/// Downloads the customs papers of a shipment that was logged without them, and keeps them in the log.
Task<QByteArray> downloadCustoms(AppState &app, ShipmentRecord record);

/// True when the document went to the document printer; without one the viewer opens it.
Task<bool> printDocument(AppState &app, QByteArray pdf);

/// Writes a failed reprint into the error log. The alert that sends the clerk to support is raised for the carrier's
/// failures only: a printer without paper or a paused queue is put right at the desk.
void recordReprintFailure(AppState &app, const AppError &error);

} // namespace parcelory
