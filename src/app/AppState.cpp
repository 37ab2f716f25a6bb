#include "app/AppState.h"

#include "core/Text.h"

namespace parcelory {
using namespace Qt::StringLiterals;

const QList<MainTabInfo> &mainTabs()
{
    static const QList<MainTabInfo> table = {{MainTab::newLabel, u"New Label"_s},
                                             {MainTab::mailingLog, u"My Mailing Log"_s},
                                             {MainTab::masterLog, u"Master Log"_s},
                                             {MainTab::settings, u"Settings"_s}};
    return table;
}

AppState::AppState(Platform &host)
    : platform(host), errors(ErrorLog::shared()), sanitizer(host.deployment.storeNames), credentials(host), auth(host),
      invoices(auth, sanitizer), keys(host.secrets, host.preferences), shippo(host, keys), scale(host.hid),
      log(host.dataFolder), labelHistory(log), scanForms(log), journal(host.dataFolder), senders(host), boxes(host),
      addressBook(host.dataFolder), appleContacts(host.contacts, host.clock, host.dataFolder), printer(host),
      printWatch(printer, host.clock), scanListener(host.keyboard, host.clock, host.deployment.shortLinkHost)
{
    const auto announce = [this] { emit changed(); };
    const auto observe = [&](auto &...property) { (m_notifiers.push_back(property.addNotifier(announce)), ...); };
    observe(flow, tab, loginBusy, loginError, signedInUser, lastShipmentSummary, keyChanges, draftTo, draftReference,
            draftFillCount, scanFormBusy, scanFormStatus, scanFormPDF, scanFormOpenTick, scanBusy, scanStatus,
            scannedInvoice);
    scanListener.isWanted = [this] { return flow == AppFlow::main; };
    scanListener.onScan = [this](const QString &code) { handleInvoiceScan(code); };
    scanListener.onNoise = [this](const QString &heard) { reportScanNoise(heard); };
    scanListener.start();
    connect(&log, &ShipmentLog::recordsChanged, this, &AppState::changed);
}

AppState::~AppState()
{
    workPool().waitForDone();
}

void AppState::fillRecipient(const PostalContact &contact)
{
    ShippoAddress recipient = contact.asShippoAddress();
    recipient.company = sanitizer.sanitize(recipient.company);
    draftTo = recipient;
    draftReference = QString(); // a recipient of the address book carries no invoice number
    draftFillCount = draftFillCount + 1;
    tab = MainTab::newLabel;
}

void AppState::reportScanNoise(const QString &heard)
{
    scanStatus = u"Scanner heard “"_s + firstCharacters(heard, 40) + u"” — not an invoice QR."_s;
}

} // namespace parcelory
