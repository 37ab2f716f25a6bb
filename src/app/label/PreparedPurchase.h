#pragma once

#include "app/label/LabelDraft.h"
#include "compose/SecondLabel.h"
#include "records/PurchaseJournal.h"

namespace parcelory {

/// Everything that a purchase needs, captured when the clerk pressed the button: what is typed from then on belongs to
/// the next parcel.
struct PreparedPurchase {
    Carrier carrier;
    ShippoAddress from;
    ShippoAddress to; ///< with the company as the label shows it
    LabelDraft::Parcel parcel;
    int edits;       ///< as LabelDraft counts them
    quint64 weighed; ///< scale readings up to this generation count as sold
    CommercialInvoice::Data_ invoice;
    SecondLabelFacts facts;
    OpenPurchase entry; ///< the journal's entry

    /// The text that goes with the purchase, so that the account's list tells recipient and sender.
    QString tag() const;
};

PreparedPurchase preparePurchase(const LabelDraft &draft, const AppState &app, const ShippoRate &rate,
                                 const SecondLabelFacts &facts);

} // namespace parcelory
