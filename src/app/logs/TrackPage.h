#pragma once

#include "app/AppState.h"
#include "core/Task.h"

namespace parcelory {

/// Opens the carrier's tracking page in the browser; answers why it could not, or nothing.
Task<QString> openTrackingPage(AppState &app, QString address);

} // namespace parcelory
