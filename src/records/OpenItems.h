#pragma once

#include "records/Journeys.h"
#include "records/LogRead.h"
#include "records/ShipmentLog.h"
#include "records/ShipmentRecord.h"

#include <QDateTime>
#include <QList>
#include <QSet>
#include <QString>

#include <optional>

namespace parcelory {

/// Why a label needs a person. Of several reasons for the same label, the first in this order is listed.
enum class OpenReason {
    refundRejected,
    refundUndecided,
    refundUrgent, ///< not scanned, and the carrier's time for a refund is nearly over
    refundEnding, ///< not scanned, and the refund is due
    scanUnknown,  ///< the refund is due, and it is not known if the carrier scanned the label
    returned,
    otherZip,       ///< delivered to another ZIP than the label's
    customsPapers,  ///< the papers of a parcel abroad were not printed
    labelUnchecked, ///< nothing was read back from the label
    unused,         ///< not scanned for days
    notScanned,     ///< not scanned for a day
    noMovement,
    lateCopy, ///< of the records, and not of a label
};

/// What the clerk does next about an open item.
enum class OpenStep { track, refund, checkStatus, fillLabel, customsDocs, reprint, copyNow };

OpenStep stepOf(OpenReason reason);
/// The reason as it is stored.
QString wordOf(OpenReason reason);

struct OpenItem {
    OpenReason reason = OpenReason::notScanned;
    ShipmentRecord label;   ///< without a recipient for lateCopy
    int days = 0;           ///< whole days since the label was bought, or since the last copy
    int daysLeft = 0;       ///< until the carrier's time for a refund is over
    int daysOpen = 0;       ///< whole days since the refund was asked (0 if unknown), or since the parcel moved
    bool isScanned = false; ///< the carrier has had the parcel
    bool isNever = false;   ///< there is no copy at all
    QString zip, place;     ///< where the carrier saw the parcel last

    qint64 id() const { return label.id; }
};

/// What decides whether a label is an open item, besides the time.
struct OpenFacts {
    ShipmentRecord label;
    std::optional<Journey> journey; ///< nothing if the carrier was never asked
    QDateTime refundAskedAt;        ///< invalid if that is unknown
    bool isPapersOpen = false;      ///< the customs papers were not printed
    bool isUnchecked = false;       ///< there is a copy of the label, and nothing was read back from it
    QSet<QString> done;             ///< reasons for which the clerk said that there is nothing to do
};

namespace OpenItems {

// In days unless the name says otherwise.
constexpr int notScannedHours = 24, unusedAfter = 5, refundDueAfter = 20, refundUrgentAfter = 25, refundEndsAfter = 30;
constexpr int undecidedAfter = 14, stillAfter = 5;
constexpr int movesFor = 45;     ///< a parcel that stands still for longer is lost, and the carrier is not asked again
constexpr int remembersFor = 90; ///< older labels are no open items, unless a refund is pending or was rejected
constexpr int uncheckedMinutes = 60; ///< the label is compared while it is bought

/// Nothing if the label needs no action now.
std::optional<OpenItem> itemOf(const OpenFacts &facts, const QDateTime &now);
/// The open items of these labels, in their order.
QList<OpenItem> itemsOf(const QList<OpenFacts> &labels, const QDateTime &now);

/// The facts of the labels, oldest first, that were bought here with a live key and may be open items at `now`. May be
/// called from any thread; waits for the disk.
LogRead<QList<OpenFacts>> read(const ShipmentLog &log, const QDateTime &now);

/// Takes an item off the list for good, or puts it back. A later reason for the same label is listed again.
[[nodiscard]] bool setDone(ShipmentLog &log, const ShipmentRecord &label, OpenReason reason, bool isDone);

} // namespace OpenItems
} // namespace parcelory
