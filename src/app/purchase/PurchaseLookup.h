#pragma once

#include "app/AppState.h"
#include "carrier/ShippoRecords.h"
#include "core/Task.h"
#include "records/PurchaseJournal.h"

#include <optional>

namespace parcelory {

/// What the carrier can tell about a purchase whose response was lost.
struct LookupAnswer {
    enum class Verdict { bought, notBought, unknown };
    Verdict verdict = Verdict::unknown;
    std::optional<ShippoTransaction> transaction = {}; ///< the sale, if the carrier names one
    QList<ShippoTransaction> seconds = {};             ///< further sales of the same rate
    QString text = {};                                 ///< why the outcome is unknown
    bool isInconclusive = false;                       ///< a retry may get the same answer
    bool isUnlogged = false;                           ///< it was bought, and only the mailing log lacks it
};

/// Looks up a purchase at the carrier by its transaction, or by its rate among the account's newest transactions. A
/// request sent before `since` (a steady time) may still arrive there for a while. Never buys a label; throws nothing.
Task<LookupAnswer> lookUpPurchase(AppState &app, OpenPurchase purchase, QDateTime since);

} // namespace parcelory
