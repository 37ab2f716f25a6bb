#pragma once

#include "records/ShipmentLog.h"

#include <QList>
#include <QString>

namespace parcelory {

/// One line of what reading a label back has found, in words, because a later version may know more of them.
struct StoredFinding {
    QString item, match;
    QString onParcel, onLabel;
    QList<qsizetype> elements; ///< of the label

    bool operator==(const StoredFinding &) const = default;
};

/// What reading the labels back has found, beside the rows of the mailing log. Stored in a table of the log's file,
/// which comes with the first verdict. May be called from any thread; waits for the disk.
namespace LabelVerdicts {

/// Replaces what is stored for a label.
[[nodiscard]] bool put(ShipmentLog &log, const ShipmentRecord &label, const QList<StoredFinding> &findings);
/// Empty if the label was not compared.
LogRead<QList<StoredFinding>> of(const ShipmentLog &log, qint64 shipment);

} // namespace LabelVerdicts
} // namespace parcelory
