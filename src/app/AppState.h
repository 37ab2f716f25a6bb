#pragma once

#include "addressbook/ContactsAddressProvider.h"
#include "addressbook/LocalAddressStore.h"
#include "app/LastChange.h"
#include "app/MainTab.h"
#include "backoffice/DesklineInvoiceFetcher.h"
#include "backoffice/SavedCredentials.h"
#include "carrier/ShippoClient.h"
#include "carrier/ShippoKeys.h"
#include "compose/LabelReadBack.h"
#include "compose/rules/ShippingRules.h"
#include "core/CompanySanitizer.h"
#include "core/Observable.h"
#include "core/Platform.h"
#include "core/PostalContact.h"
#include "core/StatusKind.h"
#include "devices/LabelPrinter.h"
#include "devices/PrintWatch.h"
#include "devices/ScanWedgeListener.h"
#include "devices/USBScale.h"
#include "records/BoxStore.h"
#include "records/DraftStore.h"
#include "records/LabelHistory.h"
#include "records/PurchaseJournal.h"
#include "records/RecordCopies.h"
#include "records/RestoreStage.h"
#include "records/ScanForms.h"
#include "records/SenderStore.h"
#include "records/ShipmentLog.h"
#include "shell/ErrorLog.h"

#include <QSet>

#include <functional>
#include <memory>
#include <optional>

namespace parcelory {

/// Which of today's labels a SCAN form is requested for; the carrier decides in the end.
enum class ScanFormScope {
    allOfToday,
    missing, ///< of USPS, on no form, and no refund is asked: the clerk sees the others beside the button
};

class InvoiceFlow;
class RefundSync;
class ScanFormFlow;
class SignInFlow;

/// State that several screens share, and the owner of every long-lived service. Created once; lives until the program
/// ends. Main thread only. Services are members in order of creation. A change of the rules, the scale, the printer's
/// notice, the profiles, the boxes or the mailing log counts as a change of this state.
class AppState : public Observable {
    Q_OBJECT
public:
    explicit AppState(Platform &platform);
    ~AppState() override; ///< waits for work that still runs on the thread pool

    Platform &platform;
    ErrorLog &errors; ///< ErrorLog::shared()

    Observed<AppFlow> flow{this, AppFlow::login};
    Observed<MainTab> tab{this, MainTab::newLabel};
    Observed<bool> loginBusy{this, false};
    Observed<std::optional<QString>> loginError{this};
    Observed<int> loginSecondsLeft{this, 0}; ///< how long the sign-in waits for the back office at most
    Observed<QString> signedInUser{this};
    bool autoLoginTried = false;
    /// Incremented at each sign-in and sign-out, so that one clerk's results are not shown to the next clerk.
    int session = 0;
    Observed<int> openChoices{this, 0};  ///< dialogs that ask about the label on the screen
    Observed<bool> closing{this, false}; ///< the window closes when the purchase or SCAN form in progress is done
    Observed<QString> lastShipmentSummary{this}; ///< one line about the last label bought
    Observed<int> keyChanges{this, 0};           ///< counts key changes; rates from one key are not valid with another
    Observed<int> copyCount{this, 0};            ///< counts copies of the records

    Observed<bool> scanFormBusy{this, false};
    Observed<QString> scanFormStatus{this};
    bool scanFormComplete = true; ///< the last SCAN form operation left nothing for the clerk to read but the form
    Observed<std::optional<QByteArray>> scanFormPDF{this}; ///< the last SCAN form
    Observed<int> scanFormOpenTick{this, 0};               ///< incremented to open the SCAN Form window

    // Hand-off to the New Label screen: set draftTo and draftReference, then increment draftFillCount.
    Observed<ShippoAddress> draftTo{this};
    Observed<QString> draftReference{this};
    Observed<int> draftFillCount{this, 0};
    ShippoAddress replacedRecipient; ///< the recipient that the last fill replaced
    LastChange lastChange;

    Observed<bool> scanBusy{this, false}; ///< an invoice is being read
    Observed<QString> scanStatus{this};   ///< scanner and invoice status line
    Observed<StatusKind> scanStatusKind{this, StatusKind::none};
    Observed<QString> scanNote{this}; ///< what the clerk must know besides scanStatus; usually empty
    Observed<std::optional<DesklineInvoice>> scannedInvoice{this}; ///< the last invoice read
    Observed<QDateTime> invoiceSoldAt{this};                       ///< when its label was bought; invalid: not yet

    /// A restore of the records that an earlier run began and this start completed. Before the stores open their files.
    const std::optional<RestoreNote> completedRestore;
    CompanySanitizer sanitizer;
    ShippingRules rules;
    SavedCredentials credentials;
    DesklineAuth auth;
    DesklineInvoiceFetcher invoices;
    ShippoKeys keys;
    ShippoClient shippo;
    USBScale scale;
    ShipmentLog log;
    LabelHistory labelHistory;
    ScanForms scanForms;
    PurchaseJournal journal;
    SenderStore senders;
    BoxStore boxes;
    DraftStore drafts;
    LocalAddressStore addressBook;
    RecordCopies copies;
    ContactsAddressProvider appleContacts;
    LabelPrinter printer;
    PrintWatch printWatch;
    ScanWedgeListener scanListener;

    /// Fills the draft with a recipient and a reference, and shows the New Label tab. A known country becomes its
    /// two-letter code.
    void fillDraft(const ShippoAddress &to, const QString &referenceText);
    /// Puts an address book recipient into the label draft and shows the New Label tab.
    void fillRecipient(const PostalContact &contact);

    /// Signs in to the back office. On success the main flow starts; otherwise loginError holds the reason.
    Task<> signIn(QString user, QString pass, bool remember);
    /// Stops signing in, without an error; nothing that is saved is forgotten.
    void cancelSignIn();
    /// Signs in with the saved credentials, at most once per run.
    Task<> attemptAutoLogin();
    Task<bool> hasSavedCredentials();
    /// Signs in once more with the saved credentials of the clerk who is signed in, because the back office has ended
    /// the session. False if no credentials are saved, if the back office rejects them, or if `isGivenUp` says that the
    /// clerk has canceled.
    Task<bool> renewSession(std::function<bool()> isGivenUp);
    /// Discards the saved credentials and the session; stores and draft stay.
    void signOut();
    /// Shows the sign-in page after the back office has ended the session. Saved credentials stay, too.
    void signInAgain();

    /// Reads the invoice that this code or number names and fills the label from it. Ignored while signed out or while
    /// another invoice is being read; scanNote then names the ignored invoice. A number that begins with the number
    /// being read replaces it: the scanner paused inside the code.
    void handleInvoiceScan(const QString &text);
    /// True from the scan until the invoice fills the label, or is not read.
    bool isReadingInvoice() const { return scanBusy && scanStatusKind == StatusKind::progress; }
    /// Stops reading an invoice; the label stays as it is.
    void cancelInvoiceScan();
    void fillFromInvoice(const DesklineInvoice &invoice);
    /// Requests one SCAN form for today's labels bought with a key of the active key's kind (test or live). The outcome
    /// is in scanFormStatus.
    Task<> createScanForm(ShippoAddress from, ScanFormScope scope = ScanFormScope::allOfToday);
    /// scanFormStatus until the end of its day.
    QString scanFormNews() const;
    /// Asks the carrier about pending refunds, and about refunds and SCAN forms whose response was lost; at most once a
    /// minute.
    Task<> syncRefundStatuses();
    /// Transactions whose refund request is in progress.
    QSet<QString> refundsUnderWay;
    QDateTime lastRefundSync; ///< invalid: never

    /// Records a failure in the error log, and returns what to show: the description, and what the clerk can do about a
    /// refused key or too many requests.
    QString recorded(const QString &context, const AppError &error, Popup popup);
    void setScanStatus(StatusKind kind, const QString &text, const QString &note = {});
    /// The status and its note in one line.
    QString scanLine() const;
    /// Shows the clerk scanned text that is not an invoice code.
    void reportScanNoise(const QString &heard);
    /// A scan brought no invoice: the text goes to the status line and to the screens.
    void failScan(const QString &text, bool isSessionOver = false);

signals:
    /// The draft is about to be filled: it is still as it was.
    void fillBegins();
    /// A label was bought, and its recipient is to be saved in the address book.
    void recipientToKeep(const ShippoAddress &recipient);
    /// A label was bought and is in the mailing log.
    void labelLogged(const QString &transactionId);
    /// The carrier has refunded a label, or decides about its refund.
    void refundTaken(const QString &transactionId);
    /// What happened to labels is noted beside the mailing log's rows.
    void labelsNoted();
    /// An address or an invoice has filled the label, and the clerk has closed the invoice's alert, if any.
    void recipientTaken();
    /// A question is about a label that the clerk wants to see. `verdict` is empty if the log has it.
    void labelToShow(const ShipmentRecord &label, const std::optional<LabelVerdict> &verdict);
    /// A scan brought no invoice. `isSessionOver`: because the back office asks for a new sign-in.
    void scanFailed(const QString &text, bool isSessionOver);

private:
    const std::unique_ptr<SignInFlow> m_signIn;
    const std::unique_ptr<InvoiceFlow> m_invoice;
    const std::unique_ptr<ScanFormFlow> m_scanForm;
    const std::unique_ptr<RefundSync> m_refundSync;
};

} // namespace parcelory
