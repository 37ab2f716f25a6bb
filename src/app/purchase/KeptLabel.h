#pragma once

#include "compose/LabelReadBack.h"
#include "records/ShipmentLog.h"
#include "records/ShipmentRecord.h"

#include <QByteArray>

#include <optional>

namespace parcelory {

/// What the mailing log keeps of a label besides its row.
struct KeptLabel {
    std::optional<QByteArray> bytes;
    std::optional<LabelVerdict> verdict; ///< nothing if the label was never compared, or only by a later version
};

/// `record` may bring its label along, and may have no id yet. All wait for the disk.
LogRead<KeptLabel> keptLabel(const ShipmentLog &log, const ShipmentRecord &record);
/// Keeps a label that was downloaded again because its row has no label.
[[nodiscard]] bool keepFetched(ShipmentLog &log, const ShipmentRecord &record, const QByteArray &label);
[[nodiscard]] bool keepVerdict(ShipmentLog &log, const ShipmentRecord &record, const LabelVerdict &verdict);

} // namespace parcelory
