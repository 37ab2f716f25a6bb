#pragma once

#include "app/AppState.h"
#include "core/Task.h"

namespace parcelory {

/// Opens the carrier's tracking page in the browser. Returns an error text, empty on success.
Task<QString> openTrackingPage(AppState &app, QString address);

} // namespace parcelory
