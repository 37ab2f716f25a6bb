#pragma once

#include "records/ShipmentRecord.h"

#include <QStringList>

namespace parcelory {

/// What a label is wanted for once it is bought.
enum class LabelUse { reprint, refund, checkStatus, scanForm };

/// What is known of a label beyond its row in the mailing log, at the moment in which it is wanted.
struct LabelFacts {
    QDateTime now;
    std::optional<bool> testKey; ///< whether the active key is a test key; nothing when there is no key
    QString tracked;             ///< the carrier's last word for the parcel, "TRANSIT"; empty when it was never asked
    int reprints = 0;
    QDateTime lastReprint;               ///< valid when there was one
    std::optional<QDateTime> onScanForm; ///< when the SCAN form was made that names the label
    QString waiting;                     ///< a sentence about labels that the printer still holds; else empty
};

/// A label that is older than this may no longer be taken by the carrier; in days.
constexpr int freshDays = 25;

/// True for an id that the carrier's API gives out; an imported log holds others in its place.
bool isCarriersId(const QString &transactionId);

/// Why this can't be done with the label at all, in the clerk's words; empty when it can.
QString labelBlocker(LabelUse use, const ShipmentRecord &record);

/// What speaks against it, a sentence each; none when the clerk need not be asked.
QStringList labelWarnings(LabelUse use, const ShipmentRecord &record, const LabelFacts &facts);

} // namespace parcelory
