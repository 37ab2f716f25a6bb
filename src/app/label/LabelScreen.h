#pragma once

#include "app/AppState.h"
#include "app/purchase/CustomsPapers.h"
#include "app/purchase/Purchases.h"
#include "carrier/RequestBodies.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
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

/// What the screen's message line says.
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

/// What the clerk does next; the screen's one solid button.
enum class NextStep { none, validate, getRates, buy };

/// The label just bought, until the next recipient.
struct LastLabel {
    QString recipient; ///< "Eleanor Whitfield · Asheville NC"
    ShipmentRecord record;
    QString message; ///< what became of a reprint or a copy

    bool operator==(const LastLabel &other) const
    {
        return record.transactionID == other.record.transactionID && message == other.message;
    }
};

/// The New Label screen: one shipment is composed, checked, rated, bought, printed and logged. The recipient is
/// AppState::draftTo, edited in place; everything else of the draft stands here. Lives as long as AppState.
///
/// Editing anything that a price depends on clears the rates, so that a price on the screen is always true; an answer
/// that comes back to a draft edited meanwhile is dropped.
class LabelScreen {
public:
    explicit LabelScreen(AppState &app);

    // The draft. Texts are kept as typed and read as numbers where they are used.
    QProperty<std::optional<QUuid>> senderID; ///< none: the default profile
    QProperty<Carrier> carrier{Carrier::usps};
    QProperty<MailpieceSelection> mailpiece{BuiltinMailpiece::package};
    QProperty<ServiceClass> svcClass{ServiceClass::priority};
    QProperty<QString> weightLb, weightOz;
    QProperty<QString> dimLength, dimWidth, dimHeight; ///< inches
    QProperty<ServiceOption> service{ServiceOption::tracking};
    QProperty<QString> insuranceValue; ///< US dollars; empty insures nothing
    QProperty<QDate> shipDate;
    QProperty<bool> fedexResidential{false};
    QProperty<CustomsInfo> customs;
    QProperty<bool> printInvoiceWithRates{true}; ///< the commercial invoice prints with the label
    QProperty<QString> descriptionText;          ///< for the local log only
    QProperty<QString> reference;                ///< for the local log only
    QProperty<bool> keepRecipient{true};         ///< the address book takes whoever a label was bought for

    // What the screen found out.
    QProperty<QString> validationStatus; ///< the line under the recipient
    QProperty<bool> validationOK{false};
    QProperty<bool> showIntlPaperwork{false};
    QProperty<QList<ShippoRate>> rates; ///< the current carrier's, cheapest first
    QProperty<std::optional<QString>> selectedRateID;
    QProperty<bool> busy{false};
    QProperty<bool> validating{false}; ///< busy with the address
    QProperty<bool> buying{false};     ///< busy with a purchase: the program must not end now
    QProperty<std::optional<Banner>> banner;
    QProperty<std::optional<DraftField>> faultyField; ///< the one that the banner is about, until the next edit
    QProperty<std::optional<LastLabel>> lastLabel;
    /// Why the selected rate would buy a second label; empty for a first one.
    QProperty<QString> secondLabel;
    QProperty<bool> secondLabelAgreed{false}; ///< the clerk has read that, and the next press buys

    Purchases purchases; ///< what is under way, and what became of what was

    std::optional<SenderProfile> sender() const;
    /// The scanned invoice that the draft is about; nothing once its parcel is sold or another recipient is filled in.
    std::optional<DesklineInvoice> draftInvoice() const;
    /// The declared value that the draft's invoice suggests, in US dollars; empty without one.
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
    /// Whether this recipient's last label was bought is still being asked: buying waits for the answer.
    bool isBuyClosed() const;
    /// The classes and extra services that fit carrier and destination.
    QList<ServiceClass> offeredClasses() const;
    QList<ServiceOption> offeredOptions() const;
    bool sendsOwnDimensions() const;

    // Texts that depend on the draft; empty where nothing is to be said.
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
    /// The recipient as the label will show it, a line each.
    QStringList printedRecipient() const;
    QString extrasSummary() const;

    /// Takes the weight of a parcel that was not sold yet from the scale.
    void weigh();
    /// Prints the commercial invoice of the draft as it stands.
    Task<> printIntlInvoice();
    /// Checks the recipient with the carrier, asks the clerk where a number would be lost, and goes on to rating.
    Task<> validate();
    /// Checks the draft and asks for rates. An international draft opens the paperwork sheet first; the sheet calls
    /// again with `intlConfirmed`.
    Task<> fetchRates(bool intlConfirmed = false);
    /// Buys the selected rate, prints the label and writes the mailing log. What would be a parcel's second label is
    /// bought at the second press only; the first one says why in `secondLabel`.
    Task<> buyAndPrint();
    /// Empties the draft for the next parcel; sender, carrier, mailpiece with its box's size, class and option stay.
    void clearDraft();

    /// The last purchase left nothing that has to be read: its label and papers are printed, and it is logged.
    bool purchaseComplete() const { return m_purchaseComplete; }

    /// Prints the last label once more; lastLabel's message says what came of it.
    Task<> reprintLast();
    void copyLastTracking();

private:
    /// Why the draft cannot be rated yet, and which field is to blame.
    struct Obstacle {
        QString text;
        DraftField field;
    };

    /// What of a draft belongs to one parcel only.
    struct SoldDraft {
        QString weightLb, weightOz, insuranceValue, reference, descriptionText;
        CustomsInfo customs;
    };

    /// A purchase with everything it needs, as it stood when the clerk pressed the button.
    struct Purchase {
        Carrier carrier;
        ShippoRate rate;
        ShippoAddress from;
        int edits;       ///< m_edits at that moment
        quint64 weighed; ///< whatever has been on the scale by then counts as sold
        SoldDraft draft;
        CommercialInvoice::Data_ invoice;
        OpenPurchase entry; ///< as the journal keeps it
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
    quint64 m_soldWeight = 0;     ///< generation of the scale's reading that the last label was bought with
    qsizetype m_resolvedSeen = 0; ///< of purchases.resolved
    bool m_sizeFromBox = false;
    bool m_purchaseComplete = false;
    bool m_bannerAboutRates = false; ///< the banner goes with the rates that it is about
    ShippoAddress m_lastRecipient;
    CustomsInfo m_filledCustoms; ///< as the draft was filled; what differs the clerk has typed
    std::vector<QPropertyNotifier> m_notifiers;
    QObject m_lifetime; ///< what looks something up by itself asks whether the screen is still there
};

} // namespace parcelory
