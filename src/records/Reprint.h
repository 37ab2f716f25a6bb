#pragma once

#include "core/AppState.h"
#include "core/Task.h"

namespace parcelory {

/// Prints a label once more and gives the printer's sentence. Takes the bytes that `record` carries or that the
/// mailing log keeps; a label that was logged without them is downloaded again. Throws AppError.
Task<QString> reprintLabel(AppState &app, ShipmentRecord record);

/// Writes a failed reprint into the error log. The alert that sends the clerk to support is raised for the carrier's
/// failures only: a printer without paper or a paused queue is put right at the desk.
void recordReprintFailure(AppState &app, const AppError &error);

} // namespace parcelory
