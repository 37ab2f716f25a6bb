#pragma once

#include "records/ShipmentLog.h"

#include <QByteArray>

#include <optional>

namespace parcelory {

/// Labels that were downloaded again because their row has no label, beside the rows of the mailing log: a row itself
/// is never changed. Stored in a table of the log's file, which comes with the first such label. May be called from any
/// thread; waits for the disk.
namespace FetchedLabels {

[[nodiscard]] bool put(ShipmentLog &log, const ShipmentRecord &row, const QByteArray &label);
LogRead<std::optional<QByteArray>> of(const ShipmentLog &log, qint64 shipment);

} // namespace FetchedLabels
} // namespace parcelory
