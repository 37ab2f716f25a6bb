#pragma once

#include "app/AppState.h"
#include "app/label/DeskHabits.h"
#include "carrier/RequestBodies.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/Observable.h"
#include "devices/CommercialInvoice.h"
#include "records/DraftStore.h"
#include "records/SenderProfile.h"

#include <QDate>
#include <QProperty>

#include <optional>
#include <vector>

namespace parcelory {

/// A field of the draft that a message is about.
enum class DraftField {
    profile,
    name,
    street,
    city,
    zip,
    phone,
    weight,
    length,
    width,
    height,
    declaredValue,
    insurance,
    ounces,
    quantity,
    reference,
};

/// One shipment as the clerk composes it, and everything that follows from it alone. The recipient is
/// AppState::draftTo, edited in place. The draft keeps itself consistent: the class fits carrier and destination, a box
/// brings its size.
class LabelDraft : public Observable {
public:
    explicit LabelDraft(AppState &app);

    // Texts are kept as typed and read as numbers where they are used.
    Observed<std::optional<QUuid>> senderID{this}; ///< empty: the default profile
    Observed<Carrier> carrier{this, Carrier::usps};
    Observed<MailpieceSelection> mailpiece{this, BuiltinMailpiece::package};
    Observed<ServiceClass> svcClass{this, ServiceClass::priority};
    Observed<QString> weightLb{this}, weightOz{this};
    Observed<QString> dimLength{this}, dimWidth{this}, dimHeight{this}; ///< inches
    Observed<ServiceOption> service{this, ServiceOption::tracking};
    Observed<QString> insuranceValue{this}; ///< US dollars; empty: not insured
    Observed<QDate> shipDate{this};
    Observed<bool> fedexResidential{this, false};
    Observed<CustomsInfo> customs{this};
    Observed<bool> printInvoiceWithRates{this, true}; ///< the commercial invoice prints with the label
    Observed<QString> descriptionText{this};          ///< for the local log only
    Observed<QString> reference{this};                ///< for the local log only
    Observed<bool> keepRecipient{this, true};         ///< save the recipient in the address book after the purchase

    Observed<int> edits{this, 0}; ///< counts changes that a price depends on, and every new parcel

    std::optional<SenderProfile> sender() const;
    /// The scanned invoice that the reference names; empty once its parcel is sold or another recipient is filled in.
    std::optional<DesklineInvoice> draftInvoice() const;
    /// The tracking number that the draft's invoice has already; also of an invoice that was scanned before a restart.
    QString invoiceTracking() const;
    /// The declared value that the draft's invoice suggests, in US dollars; empty if there is no invoice or no readable
    /// total.
    QString defaultCustomsValue() const;
    /// The total of the draft's invoice in US dollars; 0 without an invoice.
    double invoiceValue() const;
    /// True if the draft's invoice is worth more than the parcel is insured for.
    bool isInsurable() const;
    void insureForInvoice();
    /// Replaces the recipient's country with its two-letter code, so that every rule reads the country as the carrier
    /// will. Call when the clerk has finished typing it. An unknown country stays as typed.
    void settleCountry();
    bool isInternational() const;
    bool flatRateLocked() const;
    /// The class that will be used: while a flat rate is chosen, Priority Mail or abroad Priority Mail International.
    ServiceClass effectiveClass() const;
    double totalPounds() const;
    QString weightDisplay() const;
    bool senderFilled() const;
    bool recipientFilled() const;
    bool formComplete() const;
    /// The classes and extra services that fit carrier and destination.
    QList<ServiceClass> offeredClasses() const;
    QList<ServiceOption> offeredOptions() const;
    bool sendsOwnDimensions() const;

    /// Why the draft cannot be rated yet, and which field to correct.
    struct Obstacle {
        QString text;
        DraftField field;
    };
    /// The first reason against rating; empty for a draft that can be rated.
    std::optional<Obstacle> obstacle() const;
    RatingRequest ratingRequest() const;
    /// The sender with the fallback e-mail and telephone of the settings.
    ShippoAddress senderForCarrier() const;
    CommercialInvoice::Data_ invoiceData(const QString &service) const;

    const ShippoAddress &recipient() const { return m_app.draftTo.value(); }
    /// The recipient's company as the label shows it.
    QString printedCompany() const;
    /// The name of the stock mailer or of the desk's own box; empty for other packaging and for a box without a name.
    QString boxName() const;

    /// The packaging of the last parcel of about this weight, if it is offered.
    std::optional<MailpieceSelection> usualMailpiece() const;

    /// The draft for the DraftStore.
    SavedDraft saved() const;
    /// Takes over a stored draft. A choice that no longer exists stays as it is, and a day in the past becomes today.
    void restore(const SavedDraft &from);

    /// What belongs to one parcel only.
    struct Parcel {
        QString weightLb, weightOz, dimLength, dimWidth, dimHeight, insuranceValue, reference, descriptionText;
        CustomsInfo customs;
        bool fedexResidential = false;
        QDate shipDate;

        bool operator==(const Parcel &) const = default;
    };
    Parcel parcel() const;
    /// True if nothing is filled in that belongs to one parcel only.
    bool isClear() const;
    /// Clears what belongs to one parcel; a box's size stays. With `sold`, clears only what is still as it was sold:
    /// the rest belongs to the next parcel.
    void clearParcel(const std::optional<Parcel> &sold = std::nullopt);

protected:
    void countEdit() { edits = edits + 1; }
    /// Remembers the packaging and the signer of a parcel that is bought now.
    void noteHabits();

    AppState &m_app;

private:
    void watch();
    void recallChoice();
    void noteChoice();
    void destinationChanged();
    CustomsInfo freshCustoms() const;
    void mailpieceChosen();
    void carrierChosen();
    void boxesChanged();
    void syncClassToDestination();
    void takeFill();
    void takeCustoms();
    void setSize(const QString &length, const QString &width, const QString &height);
    QString templateName() const;
    DraftField missingField() const;

    DeskHabits m_habits;
    bool m_sizeFromBox = false;
    bool m_wasAbroad = false;
    CustomsInfo m_filledCustoms; ///< as filled in automatically; the clerk typed the values that differ
    QString m_restoredReference, m_restoredTracking; ///< of a draft that a restart has brought back
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
