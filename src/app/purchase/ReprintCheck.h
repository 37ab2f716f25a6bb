#pragma once

#include "app/AppState.h"
#include "core/Task.h"
#include "records/LabelChecks.h"

namespace parcelory {

/// Current facts about a logged label, from its history, the SCAN forms and the active key. Throws AppError if the
/// mailing log cannot be read.
Task<LabelFacts> loadLabelFacts(AppState &app, ShipmentRecord record);

/// The warnings as lines for a question, with an empty line before them; empty if there are no warnings.
QString warningLines(const QStringList &warnings);

/// Reprints a label; asks the clerk first if there is a warning. Returns the printer's message, empty if canceled.
/// If the log cannot be read, a label that the record carries is printed after a question. Throws AppError.
Task<QString> reprintChecked(AppState &app, ShipmentRecord record);

} // namespace parcelory
