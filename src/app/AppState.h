#pragma once

#include "addressbook/ContactsAddressProvider.h"
#include "addressbook/LocalAddressStore.h"
#include "backoffice/DesklineInvoiceFetcher.h"
#include "backoffice/SavedCredentials.h"
#include "carrier/ShippoClient.h"
#include "carrier/ShippoKeys.h"
#include "core/CompanySanitizer.h"
#include "core/Platform.h"
#include "core/PostalContact.h"
#include "devices/LabelPrinter.h"
#include "devices/PrintWatch.h"
#include "devices/ScanWedgeListener.h"
#include "devices/USBScale.h"
#include "records/BoxStore.h"
#include "records/LabelHistory.h"
#include "records/PurchaseJournal.h"
#include "records/ScanForms.h"
#include "records/SenderStore.h"
#include "records/ShipmentLog.h"
#include "shell/ErrorLog.h"

#include <QObject>
#include <QProperty>
#include <QSet>

#include <memory>
#include <optional>
#include <vector>

namespace parcelory {

enum class AppFlow { login, main };

/// The main window's tabs, in the order of the tab bar.
enum class MainTab { newLabel, mailingLog, masterLog, settings };

struct MainTabInfo {
    MainTab tab;
    QString title;
};

const QList<MainTabInfo> &mainTabs();

class InvoiceFlow;
class RefundSync;
class ScanFormFlow;
class SignInFlow;

/// The state that more than one screen reads, and the owner of every long-lived service. Made once, lives until the
/// program ends; main thread only. Services are members in their order of creation.
class AppState : public QObject {
    Q_OBJECT
public:
    explicit AppState(Platform &platform);
    ~AppState() override; ///< waits for what still runs on the thread pool

    Platform &platform;
    ErrorLog &errors; ///< ErrorLog::shared()

    QProperty<AppFlow> flow{AppFlow::login};
    QProperty<MainTab> tab{MainTab::newLabel};
    QProperty<bool> loginBusy{false};
    QProperty<std::optional<QString>> loginError;
    QProperty<QString> signedInUser;
    bool autoLoginTried = false;
    /// Counts sign-ins and sign-outs. What one clerk asked for is not shown to the next.
    int session = 0;
    QProperty<QString> lastShipmentSummary; ///< one line about the last label bought
    QProperty<int> keyChanges{0}; ///< counts changes of the API keys: what was rated under one is not another's

    QProperty<bool> scanFormBusy{false};
    QProperty<QString> scanFormStatus;
    QProperty<std::optional<QByteArray>> scanFormPDF; ///< the last SCAN form
    QProperty<int> scanFormOpenTick{0};               ///< counts up whenever the SCAN form's window is to open

    // The hand-off to the New Label screen: set draftTo and draftReference, then count draftFillCount up.
    QProperty<ShippoAddress> draftTo;
    QProperty<QString> draftReference;
    QProperty<int> draftFillCount{0};

    QProperty<bool> scanBusy{false};                          ///< an invoice is being read
    QProperty<QString> scanStatus;                            ///< scanner and invoice status line
    QProperty<std::optional<DesklineInvoice>> scannedInvoice; ///< the last one that was read

    CompanySanitizer sanitizer;
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
    LocalAddressStore addressBook;
    ContactsAddressProvider appleContacts;
    LabelPrinter printer;
    PrintWatch printWatch;
    ScanWedgeListener scanListener;

    /// Pushes a recipient of the address book into the label draft and shows it.
    void fillRecipient(const PostalContact &contact);

    /// Signs in to the back office. On success the main flow begins; otherwise loginError says why not.
    Task<> signIn(QString user, QString pass, bool remember);
    /// Signs in with what is remembered, at most once a run.
    Task<> attemptAutoLogin();
    Task<bool> hasSavedCredentials();
    /// Forgets the remembered sign-in and the session; stores and draft stay.
    void signOut();

    /// Reads the invoice whose code or number this is and fills the label with it. Dropped while another is being read.
    void handleInvoiceScan(const QString &text);
    void fillFromInvoice(const DesklineInvoice &invoice);
    /// Asks the carrier for one form of all the labels of today, bought with keys of the active one's kind. The outcome
    /// is scanFormStatus.
    Task<> createScanForm(ShippoAddress from);
    /// Learns what became of the refunds that were asked for, and of refunds and SCAN forms whose answer was lost; at
    /// most once a minute.
    Task<> syncRefundStatuses();
    /// Transactions whose refund is being asked for right now: their answer is still to come.
    QSet<QString> refundsUnderWay;

    /// The scanner heard keys that are no invoice code.
    void reportScanNoise(const QString &heard);

signals:
    /// Any observable field, or the mailing log, has changed.
    void changed();
    /// A label was bought for somebody whom the address book shall know.
    void recipientToKeep(const ShippoAddress &recipient);
    /// An invoice has filled the label, and the clerk has read what it says.
    void invoiceTaken();

private:
    const std::unique_ptr<SignInFlow> m_signIn;
    const std::unique_ptr<InvoiceFlow> m_invoice;
    const std::unique_ptr<ScanFormFlow> m_scanForm;
    const std::unique_ptr<RefundSync> m_refundSync;
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
