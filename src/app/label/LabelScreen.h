#pragma once

#include "app/label/AccountLabels.h"
#include "app/label/LabelDraft.h"
#include "app/label/LastLabelCard.h"
#include "app/label/PreparedPurchase.h"
#include "app/purchase/CustomsPapers.h"
#include "app/purchase/PurchaseFlow.h"
#include "app/purchase/Purchases.h"
#include "compose/SecondLabel.h"
#include "compose/rules/RuleBook.h"
#include "core/Task.h"

#include <QHash>
#include <QPointer>
#include <QProperty>

#include <optional>
#include <vector>

namespace parcelory {

/// The screen's message line.
struct Banner {
    enum class Offer { none, signInAgain, undoPaste, undoClear };

    QString text;
    bool ok = true;            ///< false shows it as a warning
    Offer offer = Offer::none; ///< what a button beside the text does
    QString transaction = {};  ///< of the label that the text tells about, if any

    bool operator==(const Banner &) const = default;
};

/// The clerk's next step, shown as the screen's only solid button.
enum class NextStep { none, validate, getRates, buy };

/// The New Label screen: checks, rates, buys, prints and logs its draft. Lives as long as AppState.
///
/// An edit that affects the price clears the rates, so that a displayed price is always valid. A response to a draft
/// that was edited in the meantime is discarded.
class LabelScreen : public LabelDraft {
public:
    explicit LabelScreen(AppState &app);
    ~LabelScreen() override;

    // What the screen found out.
    Observed<QString> validationStatus{this}; ///< the line under the recipient
    Observed<bool> validationOK{this, false};
    Observed<bool> showIntlPaperwork{this, false};
    Observed<QList<ShippoRate>> rates{this}; ///< the current carrier's, cheapest first
    Observed<std::optional<QString>> selectedRateID{this};
    Observed<bool> busy{this, false};
    Observed<bool> validating{this, false}; ///< the address is being validated
    Observed<bool> rating{this, false};     ///< rates are being requested
    Observed<bool> buying{this, false};     ///< a purchase is in progress: the program must not end now
    Observed<std::optional<Banner>> banner{this};
    Observed<bool> needsSignIn{this, false};               ///< the back office has ended the session
    Observed<std::optional<DraftField>> faultyField{this}; ///< the field that the banner is about, until the next edit
    /// Why the selected rate would buy a second label; empty if it would not.
    Observed<QString> secondLabel{this};
    Observed<bool> secondLabelAgreed{this, false}; ///< the clerk has seen the warning; the next press buys
    Observed<QString> spendQuestion{this};         ///< of the spend guard, once it has asked; the next press buys

    /// The Buy button takes no press for so long after it has changed.
    static constexpr auto buyPause = std::chrono::milliseconds(600);

    Purchases purchases; ///< unresolved and resolved purchases
    LastLabelCard last;

    std::optional<ShippoRate> selectedRate() const;
    NextStep nextStep() const;
    /// True if the form shows a recipient that was filled in and not yet checked, and the carrier can be asked.
    bool isFillDue() const;
    /// True while a dialog asks about this label.
    bool awaitsChoice() const { return m_app.openChoices > 0 || showIntlPaperwork; }
    /// True if the window closes when the purchase in progress is done.
    bool isClosing() const { return m_app.closing; }
    /// True while a label for this recipient is being bought.
    bool isBuyingFor(const ShippoAddress &to) const { return buying && isSameRecipient(to, m_buyingFor); }
    /// True while it is unknown whether this recipient's last label was bought; buying is disabled until then.
    bool isBuyClosed() const;
    /// True while a scanned invoice is read that is about to fill the form: what the form shows is the former parcel,
    /// and a press of Buy may be meant for the scanned parcel.
    bool awaitsFill() const { return m_app.isReadingInvoice(); }
    /// What the message line shows: `banner`, as a warning while the last label waits in the printer.
    std::optional<Banner> news() const;

    /// The shipping rules that apply to the parcel with the chosen rate, the most severe first.
    QList<Rule> advice() const;
    /// What the most severe rule says of this field; empty if no rule does.
    QString ruleAt(RuleField field) const;

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
    bool canClear() const { return !isClear() || !rates.value().isEmpty() || banner.value(); }
    /// Tells that a typed ship date was not taken.
    void refuseDate(const QString &reason) { warnUntilEdit(reason); }
    /// Asks for what a recipient that was filled in lacks.
    void askForMissing();
    /// Fills in the recipient from an address that the clerk has pasted as one text.
    void takePastedAddress(const ShippoAddress &pasted);
    /// Takes back that the form was cleared, or an address was pasted or filled in; false if that is no longer what the
    /// form shows.
    bool undo();
    bool canUndo() const;
    /// What the message line offers: what its message does, or else a new sign-in as long as one is needed.
    Banner::Offer offer() const;
    /// Does what the message line offers.
    void takeOffer();

    /// True if the last purchase needs no attention: its label and papers are printed, and it is logged.
    bool purchaseComplete() const { return m_purchaseComplete; }

private:
    void draftEdited();
    void dropBanner();
    void tellOutcome(const PreparedPurchase &purchase, const Banner &outcome);
    void forgetFault();
    void recipientEdited();
    void invalidateIntlRates();
    void takeFilledDraft();
    void noteFill();
    bool isPasteShown() const;
    bool isClearShown() const;
    bool isFillShown() const;
    void forgetSoldUndo(const ShippoAddress &sold);
    void forgetValidation();
    void clearRates();
    void selectRateOfClass();
    void warn(const QString &text, std::optional<DraftField> field = std::nullopt);
    void warnUntilEdit(const QString &text, std::optional<DraftField> field = std::nullopt);
    void fail(const QString &context, const AppError &error);
    bool takeWeight();

    Task<int> ask(Question question);
    Task<> applyRates(ShippoShipment shipment);
    Task<> applyValidation(ShippoAddress typed, ShippoValidatedAddress answer);
    Task<> continueTowardRating();
    Task<bool> reviewPrintedAddress(ShippoShipment shipment);

    Task<> askOtherDesks();
    SecondLabelFacts secondLabelFacts() const;
    void watchForSecondLabel();
    void pauseBuy();
    void endBuyPause();
    void showSecondLabel(const QString &warning, bool agreed);
    Task<bool> hasTestKey();
    Task<QString> secondLabelWarning(SecondLabelFacts facts, bool testMode);
    Task<bool> mayBuy(PreparedPurchase purchase, bool testMode, QString agreedWarning, QString openQuestion);
    Task<> buy(PreparedPurchase purchase);
    void markUnresolved(const PreparedPurchase &purchase, const LookupAnswer &answer);
    Task<> finishPurchase(PreparedPurchase purchase, SaleResult sale, PapersResult drawn);
    void showSold(const PreparedPurchase &purchase, const PurchaseResult &result);
    void clearSold(const PreparedPurchase &purchase);
    void takeResolved(const ResolvedPurchase &resolved);

    static const inline QString draftChanged =
        QStringLiteral("The draft was changed while its address was checked — validate again.");

    CustomsPapers m_papers;
    QHash<qint64, PreparedPurchase> m_unresolved; ///< by the journal's id; what was sold if the carrier confirms it
    QString m_logFailure;                         ///< why the log could not be searched for an earlier label
    quint64 m_soldWeight = 0;                     ///< scale generation that the last label was bought with
    quint64 m_buyTimer = 0;                       ///< runs while the Buy button has just changed and takes no press
    bool m_isReading = false;                     ///< a scanned invoice, at the last look
    int m_secondLabelLooks = 0;                   ///< how often a second label was looked for
    bool m_purchaseComplete = false;
    bool m_bannerAboutDraft = false; ///< the next edit clears the banner
    /// News of another parcel than the one in the form: the outcome of a purchase that ended late, or a scan that was
    /// ignored. The steps of the parcel in the form follow by themselves and must not hide it.
    std::optional<Banner> m_otherNews;
    bool m_isTakingInvoice = false; ///< the scan in progress has filled the form
    ShippoAddress m_buyingFor;      ///< the recipient of the last press of Buy
    AccountLabels m_account;
    ShippoAddress m_beforePaste, m_pasted;
    SavedDraft m_cleared;    ///< the draft before it was cleared
    SavedDraft m_beforeFill; ///< the draft before the last fill
    ShippoAddress m_filled;  ///< the recipient of the last fill
    int m_fillChange = 0;    ///< the last fill's number in AppState::lastChange
    ShippoAddress m_lastRecipient;
    std::vector<QPropertyNotifier> m_notifiers;
    QObject m_lifetime; ///< lets a background lookup detect that the screen is gone
};

} // namespace parcelory
