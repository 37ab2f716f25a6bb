#pragma once

#include "app/AppState.h"
#include "app/purchase/CustomsPapers.h"
#include "app/purchase/Purchases.h"
#include "carrier/RequestBodies.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/Observable.h"
#include "core/Task.h"
#include "devices/CommercialInvoice.h"
#include "records/SenderProfile.h"
#include "records/ShipmentRecord.h"

#include <QDate>
#include <QPointer>
#include <QProperty>

#include <optional>
#include <vector>

namespace parcelory {

/// The screen's message line.
struct Banner {
    QString text;
    bool ok = true; ///< false shows it as a warning

    bool operator==(const Banner &) const = default;
};

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
};

/// The clerk's next step, shown as the screen's only solid button.
enum class NextStep { none, validate, getRates, buy };

/// The last label bought; cleared when the next recipient is filled in.
struct LastLabel {
    QString recipient; ///< "Eleanor Whitfield · Asheville NC"
    ShipmentRecord record;
    QString message; ///< result of a reprint or a copy

    bool operator==(const LastLabel &other) const
    {
        return record.transactionID == other.record.transactionID && message == other.message;
    }
};

/// The New Label screen: composes, checks, rates, buys, prints and logs one shipment. The recipient is
/// AppState::draftTo, edited in place; the rest of the draft is here. Lives as long as AppState.
///
/// An edit that affects the price clears the rates, so that a displayed price is always valid. A response to a draft
/// that was edited in the meantime is discarded.
class LabelScreen : public Observable {
public:
    explicit LabelScreen(AppState &app);

    // The draft. Texts are kept as typed and read as numbers where they are used.
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

    // What the screen found out.
    Observed<QString> validationStatus{this}; ///< the line under the recipient
    Observed<bool> validationOK{this, false};
    Observed<bool> showIntlPaperwork{this, false};
    Observed<QList<ShippoRate>> rates{this}; ///< the current carrier's, cheapest first
    Observed<std::optional<QString>> selectedRateID{this};
    Observed<bool> busy{this, false};
    Observed<bool> validating{this, false}; ///< the address is being validated
    Observed<bool> buying{this, false};     ///< a purchase is in progress: the program must not end now
    Observed<std::optional<Banner>> banner{this};
    Observed<std::optional<DraftField>> faultyField{this}; ///< the field that the banner is about, until the next edit
    Observed<std::optional<LastLabel>> lastLabel{this};
    /// Why the selected rate would buy a second label; empty if it would not.
    Observed<QString> secondLabel{this};
    Observed<bool> secondLabelAgreed{this, false}; ///< the clerk has seen the warning; the next press buys

    Purchases purchases; ///< unresolved and resolved purchases

    std::optional<SenderProfile> sender() const;
    /// The scanned invoice that the reference names; empty once its parcel is sold or another recipient is filled in.
    std::optional<DesklineInvoice> draftInvoice() const;
    /// The declared value that the draft's invoice suggests, in US dollars; empty if there is no invoice or no readable
    /// total.
    QString defaultCustomsValue() const;
    bool isInternational() const;
    bool flatRateLocked() const;
    /// The class that will be used: Priority Mail while a flat rate is chosen.
    ServiceClass effectiveClass() const;
    double totalPounds() const;
    QString weightDisplay() const;
    bool senderFilled() const;
    bool recipientFilled() const;
    bool formComplete() const;
    std::optional<ShippoRate> selectedRate() const;
    NextStep nextStep() const;
    /// True if a scanned invoice's recipient is to be validated right away.
    bool validatesScans() const { return !busy && recipientFilled(); }
    /// True while it is unknown whether this recipient's last label was bought; buying is disabled until then.
    bool isBuyClosed() const;
    /// The classes and extra services that fit carrier and destination.
    QList<ServiceClass> offeredClasses() const;
    QList<ServiceOption> offeredOptions() const;
    bool sendsOwnDimensions() const;

    // Texts that depend on the draft; empty if there is nothing to show.
    QString mailpieceName() const;
    QString mailpieceIcon() const;
    QString sizeHint() const;
    QString classHint() const;
    QString signatureWarning() const;
    QString senderHint() const;
    QString ratesHint() const;
    QString internationalHint() const;
    QString customsHint() const;
    QString paperworkText() const;
    static QString transitText(const ShippoRate &rate);
    QString nextStepHint() const;
    /// The recipient's lines as the label will show them.
    QStringList printedRecipient() const;
    QString extrasSummary() const;

    /// Takes the weight from the scale, but not the weight of a parcel that is already sold.
    void weigh();
    /// Prints the commercial invoice of the current draft.
    Task<> printIntlInvoice();
    /// Validates the recipient with the carrier, lets the clerk choose if the carrier drops a number, and continues to
    /// rating.
    Task<> validate();
    /// Checks the draft and requests rates. An international draft opens the paperwork sheet first; the sheet calls
    /// again with `intlConfirmed`.
    Task<> fetchRates(bool intlConfirmed = false);
    /// Buys the selected rate, prints the label and writes the mailing log. A second label for the same parcel takes
    /// two presses: the first press only shows the warning in `secondLabel`.
    Task<> buyAndPrint();
    /// Clears the draft for the next parcel; sender, carrier, mailpiece with its box's size, class and option stay.
    void clearDraft();

    /// True if the last purchase needs no attention: its label and papers are printed, and it is logged.
    bool purchaseComplete() const { return m_purchaseComplete; }

    /// Reprints the last label; the result is in lastLabel's message.
    Task<> reprintLast();
    void copyLastTracking();

private:
    /// Why the draft cannot be rated yet, and which field to correct.
    struct Obstacle {
        QString text;
        DraftField field;
    };

    /// The draft fields that belong to one parcel only.
    struct SoldDraft {
        QString weightLb, weightOz, insuranceValue, reference, descriptionText;
        CustomsInfo customs;
    };

    /// Everything that a purchase needs, captured when the clerk pressed the button.
    struct Purchase {
        Carrier carrier;
        ShippoRate rate;
        ShippoAddress from;
        int edits;       ///< m_edits at that moment
        quint64 weighed; ///< scale readings up to this generation count as sold
        SoldDraft draft;
        CommercialInvoice::Data_ invoice;
        OpenPurchase entry; ///< the journal's entry
    };

    void watchEdits();
    void draftEdited();
    void recipientEdited();
    void mailpieceChosen();
    void carrierChosen();
    void boxesChanged();
    void syncClassToDestination();
    void invalidateIntlRates();
    void takeFilledDraft();
    void takeCustoms();
    void forgetValidation();
    void setSize(const QString &length, const QString &width, const QString &height);
    void clearRates();
    void selectRateOfClass();
    void warn(const QString &text, std::optional<DraftField> field = std::nullopt);
    void noteOnLastLabel(const QString &text);
    void fail(const QString &context, const AppError &error);

    QString templateName() const;
    QString boxName() const;
    DraftField missingField() const;
    std::optional<Obstacle> obstacle() const;
    ShippoAddress senderForCarrier() const;
    RatingRequest ratingRequest() const;
    Task<> applyRates(ShippoShipment shipment);
    void adoptStandardised(const ShippoValidatedAddress &standardised);
    Task<> applyValidation(ShippoAddress typed, ShippoValidatedAddress answer);
    Task<> continueTowardsRating();
    Task<bool> reviewPrintedAddress(ShippoShipment shipment);

    Purchase preparePurchase(const ShippoRate &rate) const;
    void takeResolved();
    void watchForSecondLabel();
    void warnOfSecondLabel(const QString &warning);
    Task<bool> hasTestKey();
    Task<QString> secondLabelWarning(bool testMode);
    Task<> buy(Purchase purchase);
    Task<std::optional<ShippoTransaction>> lookForLabel(OpenPurchase entry, QString doubt);
    Task<> finishPurchase(Purchase purchase, ShippoTransaction transaction);
    void showSold(const Purchase &purchase, const QString &outcome, bool logged);
    Task<PrintedDocument> fetchAndPrint(OpenPurchase entry);
    CommercialInvoice::Data_ invoiceData(const QString &service) const;
    bool takeWeight();
    void clearSold(const SoldDraft &sold);

    AppState &m_app;
    CustomsPapers m_papers;
    int m_edits = 0;              ///< counts edits that a price depends on
    quint64 m_soldWeight = 0;     ///< scale generation that the last label was bought with
    qsizetype m_resolvedSeen = 0; ///< entries of purchases.resolved already handled
    bool m_sizeFromBox = false;
    bool m_purchaseComplete = false;
    bool m_bannerAboutRates = false; ///< the banner is cleared together with the rates
    ShippoAddress m_lastRecipient;
    CustomsInfo m_filledCustoms; ///< as filled in automatically; the clerk typed the values that differ
    std::vector<QPropertyNotifier> m_notifiers;
    QObject m_lifetime; ///< lets a background lookup detect that the screen is gone
};

} // namespace parcelory
