#pragma once

#include "app/AppState.h"
#include "core/Task.h"
#include "records/LabelChecks.h"

namespace parcelory {

/// What is known now of a logged label: from its history, the SCAN forms and the active key.
Task<LabelFacts> loadLabelFacts(AppState &app, ShipmentRecord record);

/// The doubts as the lines of a question, with an empty line before them; empty when there are none.
QString warningLines(const QStringList &doubts);

/// Prints a label once more; where something speaks against it, the clerk is asked first. Gives the printer's
/// sentence, or nothing when the clerk keeps from it. Throws AppError.
Task<QString> reprintChecked(AppState &app, ShipmentRecord record);

} // namespace parcelory
