#pragma once

#include "app/records/RestoreReview.h"
#include "core/Progress.h"
#include "records/RestoreStage.h"

#include <QDateTime>

namespace parcelory {

struct RestoreOutcome {
    enum class State {
        unchanged, ///< nothing was replaced
        begun,     ///< the log is replaced; the next start replaces the other files
        restored,
    };
    State state = State::unchanged;
    QString failure; ///< as a sentence; empty if restored
    RestoreNote note = {};
};

/// Puts a copy in place of the present records, with the labels bought since: sets the present records aside, prepares
/// the new files beside them, and replaces all of them at once. Waits for the disk. `progress` counts thousandths.
RestoreOutcome restoreRecords(AppState &app, const RestoreReview &review, const QDateTime &now,
                              const Progress &progress);

} // namespace parcelory
