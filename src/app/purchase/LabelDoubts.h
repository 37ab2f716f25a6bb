#pragma once

#include "compose/LabelReadBack.h"
#include "core/Task.h"
#include "core/ports/Prompts.h"
#include "records/PurchaseJournal.h"
#include "records/ShipmentRecord.h"

#include <QByteArray>

#include <optional>

namespace parcelory {

class AppState;

/// Why a label is not printed without asking the clerk; empty for a usual label.
struct LabelDoubts {
    QString changes;                      ///< commands that change the printer for good: "^JUS"
    PrintedParcel parcel;                 ///< what the label was compared with
    LabelVerdict verdict{};               ///< of the comparison
    QList<QuestionPicture> pictures = {}; ///< where the label differs

    bool isEmpty() const;
    /// Why it is held, for the message line: "not printed because the ZIP on the label differs".
    QString reason() const;
    /// Takes the differences that were found when the label was bought, with the whole address at hand.
    void remember(const std::optional<LabelVerdict> &kept);
};

/// A purchase as its label has to tell it.
PrintedParcel parcelOf(const AppState &app, const OpenPurchase &purchase);
/// The same for a label of the mailing log, whose recipient is one line that may mean several addresses.
QList<PrintedParcel> recordedParcels(const ShipmentRecord &record);

/// Compares a label with its parcel, on the thread pool. Of several parcels, the parcel with the fewest differences
/// counts.
Task<LabelDoubts> doubtsAbout(QByteArray label, QList<PrintedParcel> parcels);

/// Asks the clerk whether a doubtful label is printed all the same. True at once for a usual label. `label` brings its
/// bytes, which the clerk may look at meanwhile.
Task<bool> mayPrint(AppState &app, LabelDoubts doubts, ShipmentRecord label);

} // namespace parcelory
