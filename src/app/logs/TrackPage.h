#pragma once

#include "app/AppState.h"
#include "core/Task.h"

namespace parcelory {

/// The carrier's tracking page of a label; empty if the label has no page. An imported row has no address, but a
/// carrier.
QString trackingPageOf(const ShipmentRecord &record);
/// Opens the carrier's tracking page in the browser. Returns an error text, empty on success.
Task<QString> openTrackingPage(AppState &app, QString address);

} // namespace parcelory
