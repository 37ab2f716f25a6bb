#pragma once

#include "app/AppState.h"
#include "core/Progress.h"
#include "core/Task.h"
#include "records/RecordCopies.h"

#include <QDir>

namespace parcelory {

/// Where the copies of the records are kept.
QDir copiesFolder(const Platform &platform);

/// Copies the records and checks the copy. Returns why it failed, as a sentence; empty on success.
Task<QString> copyRecords(AppState &app, CopyReason reason, CancelToken cancel = {});

/// Copies the records before they are changed; if that fails, asks whether to go on. Throws AppError with the reason if
/// not.
Task<> copyRecordsBefore(AppState &app, CopyReason reason, CancelToken cancel = {});

} // namespace parcelory
