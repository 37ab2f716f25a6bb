#include "app/AppState.h"

#include "app/invoice/InvoiceFlow.h"
#include "app/logs/RefundSync.h"
#include "app/purchase/LabelPrinting.h"
#include "app/records/CopyRecords.h"
#include "app/scanform/ScanFormFlow.h"
#include "app/signin/SignInFlow.h"
#include "backoffice/DesklineInvoice.h"
#include "core/AppError.h"
#include "core/CountryCode.h"
#include "core/Platform.h"
#include "core/PostalContact.h"
#include "core/SettingsKeys.h"
#include "core/ShippoAddress.h"
#include "core/StatusKind.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Preferences.h"
#include "records/LabelEvents.h"
#include "shell/ErrorLog.h"

#include <functional>
#include <memory>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

AppState::AppState(Platform &host)
    : platform(host), errors(ErrorLog::shared()), completedRestore(RestoreStage::finishInterrupted(host.dataFolder)),
      sanitizer(host.deployment.storeNames), rules(host), credentials(host), auth(host), invoices(auth, sanitizer),
      keys(host.secrets, host.preferences), shippo(host, keys), scale(host.hid), log(host.dataFolder),
      labelHistory(log), scanForms(log), journal(host.dataFolder), senders(host), boxes(host), drafts(host.dataFolder),
      addressBook(host.dataFolder),
      copies(host.dataFolder, copiesFolder(host),
             {{u"mailing_log.sqlite"_s,
               [this](const QString &path, const Progress &progress) { return log.copyTo(path, progress); }},
              {u"addresses.sqlite"_s,
               [this](const QString &path, const Progress &progress) { return addressBook.copyTo(path, progress); }},
              {u"purchase_journal.sqlite"_s,
               [this](const QString &path, const Progress &) { return journal.copyTo(path); }}}),
      appleContacts(host.contacts, host.clock, host.dataFolder), printer(host), printWatch(printer, host.clock),
      scanListener(host.keyboard, host.clock, host.deployment.shortLinkHost),
      m_signIn(std::make_unique<SignInFlow>(*this)), m_invoice(std::make_unique<InvoiceFlow>(*this)),
      m_scanForm(std::make_unique<ScanFormFlow>(*this)), m_refundSync(std::make_unique<RefundSync>(*this))
{
    buildOn(rules, scale, printWatch, senders, boxes, lastChange);
    connect(&log, &ShipmentLog::recordsChanged, this, &AppState::changed);
    connect(&printWatch, &PrintWatch::cameOut, this, [this](const QStringList &labels) {
        spawn([this, labels] { return noteEvent(*this, labels, LabelEvent::cameOut); });
    });
    scanListener.isWanted = [this] { return flow == AppFlow::main; };
    scanListener.onScan = [this](const QString &code) { handleInvoiceScan(code); };
    scanListener.onNoise = [this](const QString &heard) { reportScanNoise(heard); };
    scanListener.start();
}

AppState::~AppState()
{
    workPool().waitForDone();
}

void AppState::fillDraft(const ShippoAddress &to, const QString &referenceText)
{
    emit fillBegins();
    replacedRecipient = draftTo;
    ShippoAddress recipient = to;
    recipient.country = CountryCode::find(to.country).value_or(to.country);
    draftTo = recipient;
    draftReference = referenceText;
    draftFillCount = draftFillCount + 1;
    tab = MainTab::newLabel;
}

void AppState::fillRecipient(const PostalContact &contact)
{
    ShippoAddress recipient = contact.asShippoAddress();
    recipient.company = sanitizer.sanitize(recipient.company);
    fillDraft(recipient, QString()); // an address book recipient has no invoice number
    m_invoice->forgetFailure();
    emit recipientTaken();
}

Task<> AppState::signIn(QString user, QString pass, bool remember)
{
    co_await m_signIn->signIn(user, pass, remember);
}

void AppState::cancelSignIn()
{
    m_signIn->cancel();
}

Task<> AppState::attemptAutoLogin()
{
    co_await m_signIn->signInAutomatically();
}

Task<bool> AppState::hasSavedCredentials()
{
    co_return co_await credentials.areUsable();
}

Task<bool> AppState::renewSession(std::function<bool()> isGivenUp)
{
    co_return co_await m_signIn->renewSession(isGivenUp);
}

void AppState::signOut()
{
    signInAgain();
    spawn([this] { return credentials.forget(); });
}

void AppState::signInAgain()
{
    ++session;
    m_invoice->cancel();
    flow = AppFlow::login;
    signedInUser = QString();
    loginError = std::nullopt;
    setScanStatus(StatusKind::none, QString());
    scannedInvoice = std::nullopt; // the next clerk did not request it
    if (!scanFormBusy)
        scanFormStatus = QString();
    auth.clear();
}

void AppState::handleInvoiceScan(const QString &text)
{
    m_invoice->handleScan(text);
}

void AppState::cancelInvoiceScan()
{
    m_invoice->cancel();
}

void AppState::fillFromInvoice(const DesklineInvoice &invoice)
{
    fillDraft(invoice.address, invoice.invoiceID);
}

Task<> AppState::createScanForm(ShippoAddress from, ScanFormScope scope)
{
    co_await m_scanForm->create(from, scope);
}

QString AppState::scanFormNews() const
{
    return m_scanForm->news();
}

Task<> AppState::syncRefundStatuses()
{
    const bool didAsk = co_await m_refundSync->run();
    if (didAsk)
        co_await m_scanForm->recoverLostForms();
}

void AppState::reportScanNoise(const QString &heard)
{
    const bool isSecret = platform.keyboard.fieldState().isMasked; // a password manager types as fast as a scanner
    const AppError noise(isSecret ? u"Scanner heard something that is not an invoice QR."_s
                                  : u"Scanner heard “"_s + firstCharacters(heard, 40) + u"” — not an invoice QR."_s);
    failScan(recorded(u"Scanner"_s, noise, Popup::no));
}

QString AppState::recorded(const QString &context, const AppError &error, Popup popup)
{
    errors.record(context, error, popup);
    return withAdvice(error, keys.activeName());
}

void AppState::failScan(const QString &text, bool isSessionOver)
{
    if (!isReadingInvoice()) // otherwise the form still waits for its invoice
        setScanStatus(StatusKind::failure, text);
    emit scanFailed(text, isSessionOver);
}

void AppState::setScanStatus(StatusKind kind, const QString &text, const QString &note)
{
    scanStatus = text;
    scanStatusKind = kind;
    scanNote = note;
}

QString AppState::scanLine() const
{
    return joinPresent({scanStatus, scanNote}, u" "_s);
}

} // namespace parcelory
