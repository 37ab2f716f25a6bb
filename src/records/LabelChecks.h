#pragma once

#include "records/ShipmentRecord.h"
#include "records/StatusWords.h"

#include <QStringList>

namespace parcelory {

/// What the clerk wants to do with a bought label.
enum class LabelUse { reprint, refund, checkStatus, scanForm };

/// What is known about a label, besides its row in the mailing log, at the time of use.
struct LabelFacts {
    QDateTime now;
    std::optional<bool> testKey; ///< whether the active key is a test key; absent if there is no key
    TrackingStatus tracked = TrackingStatus::unknown; ///< when its status was last checked
    int reprints = 0;
    QDateTime lastReprint;               ///< valid if there was a reprint
    std::optional<QDateTime> onScanForm; ///< when the SCAN form that lists the label was made
    QString waiting;                     ///< a sentence about labels that the printer still holds; else empty
};

/// The carrier may no longer accept a label that is older than this; in days.
constexpr int freshDays = 25;

/// True for an id that the carrier's API assigned; imported rows hold other ids.
bool isCarriersId(const QString &transactionId);

/// Why this use of the label is impossible, in the clerk's words; empty if it is possible.
QString labelBlocker(LabelUse use, const ShipmentRecord &record);

/// Warnings about this use, one sentence each; empty if the clerk need not confirm it.
QStringList labelWarnings(LabelUse use, const ShipmentRecord &record, const LabelFacts &facts);

} // namespace parcelory
