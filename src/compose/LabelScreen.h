#pragma once

#include "carrier/RequestBodies.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/AppState.h"
#include "core/Task.h"
#include "records/SenderProfile.h"
#include "records/ShipmentRecord.h"

#include <QDate>
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
    QProperty<QString> descriptionText; ///< for the local log only
    QProperty<QString> reference;       ///< for the local log only

    // What the screen found out.
    QProperty<QString> validationStatus; ///< the line under the recipient
    QProperty<bool> validationOK{false};
    QProperty<bool> showIntlPaperwork{false};
    QProperty<QList<ShippoRate>> rates; ///< the current carrier's, cheapest first
    QProperty<std::optional<QString>> selectedRateID;
    QProperty<bool> busy{false};
    QProperty<std::optional<Banner>> banner;

    std::optional<SenderProfile> sender() const;
    bool isInternational() const;
    bool flatRateLocked() const;
    /// The class that will be used: Priority Mail while a flat rate is chosen.
    ServiceClass effectiveClass() const;
    double totalPounds() const;
    QString weightDisplay() const;
    bool formComplete() const;
    std::optional<ShippoRate> selectedRate() const;

    // Texts that depend on the draft; empty where nothing is to be said.
    QString mailpieceName() const;
    QString sizeHint() const;
    QString classHint() const;
    QString signatureWarning() const;
    QString senderHint() const;
    QString ratesHint() const;
    QString internationalHint() const;
    QString customsHint() const;
    QString paperworkText() const;
    static QString transitText(const ShippoRate &rate);

    /// Checks the recipient with the carrier, asks the clerk where a number would be lost, and goes on to rating.
    Task<> validate();
    /// Checks the draft and asks for rates. An international draft opens the paperwork sheet first; the sheet calls
    /// again with `intlConfirmed`.
    Task<> fetchRates(bool intlConfirmed = false);
    /// Buys the selected rate, prints the label and writes the mailing log.
    Task<> buyAndPrint();
    /// Empties the draft for the next parcel; sender, carrier, mailpiece with its box's size, class and option stay.
    void clearDraft();

private:
    /// A purchase with everything it needs, as it stood when the clerk pressed the button.
    struct Purchase {
        Carrier carrier;
        ShippoRate rate;
        ShippoAddress from;
        ShippoAddress to;
        int edits; ///< m_edits at that moment
        ShipmentRecord record;
    };

    /// What became of a document: its bytes for the log, and what to append to the success line.
    struct Printed {
        std::optional<QByteArray> document;
        QString note;
    };

    void watchEdits();
    void draftEdited();
    void recipientEdited();
    void mailpieceChosen();
    void carrierChosen();
    void syncClassToDestination();
    void invalidateIntlRates();
    void takeFilledDraft();
    void forgetValidation();
    void setSize(const QString &length, const QString &width, const QString &height);
    void clearRates();
    void selectRateOfClass();
    void warn(const QString &text);
    void fail(const QString &context, const AppError &error);

    bool sendsOwnDimensions() const;
    QString templateName() const;
    QString boxName() const;
    std::optional<QString> obstacle() const;
    ShippoAddress senderForCarrier() const;
    RatingRequest ratingRequest() const;
    Task<> applyRates(ShippoShipment shipment);
    void adoptStandardised(const ShippoValidatedAddress &standardised);
    Task<> judge(ShippoAddress typed, ShippoValidatedAddress answer);
    Task<> continueTowardsRating();
    Task<bool> reviewPrintedAddress(ShippoShipment shipment);

    Purchase preparePurchase(const ShippoRate &rate) const;
    Task<> finishPurchase(Purchase purchase, ShippoTransaction transaction);
    Task<Printed> fetchAndPrint(QString labelUrl);
    Task<Printed> printFedexInvoice(QString documentUrl);
    Task<bool> logPurchase(ShipmentRecord record);

    AppState &m_app;
    int m_edits = 0; ///< counts edits that a price depends on
    bool m_sizeFromBox = false;
    ShippoAddress m_lastRecipient;
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
