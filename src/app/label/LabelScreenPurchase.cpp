#include "app/label/LabelScreen.h"
#include "app/purchase/CustomsPapers.h"
#include "app/purchase/LabelPrinting.h"
#include "app/purchase/Purchases.h"
#include "app/purchase/ReprintCheck.h"
#include "carrier/PurchaseTag.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoRecords.h"
#include "compose/SecondLabel.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/CountryCode.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/Text.h"
#include "devices/Zpl.h"
#include "records/ShipmentLog.h"
#include "records/ShipmentRecord.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QString recipientLine(const ShippoAddress &to, bool international)
{
    const QString country = international ? CountryCode::alpha2(to.country) : QString();
    return joinPresent({to.name, to.company, to.oneLine(), country}, u", "_s).simplified();
}

QString summaryOf(Carrier carrier, const ShippoAddress &to, const ShipmentRecord &record, const QString &amount)
{
    const QString place = trimBlanks(to.city + u' ' + to.state);
    return joinPresent({carrierAndService(carrier, record.service), joinPresent({to.name, place}, u", "_s),
                        u'$' + amount, record.tracking},
                       u" · "_s);
}

} // namespace

LabelScreen::Purchase LabelScreen::preparePurchase(const ShippoRate &rate) const
{
    Purchase purchase{.carrier = carrier,
                      .rate = rate,
                      .from = senderForCarrier(),
                      .edits = m_edits,
                      .weighed = m_app.scale.generation(),
                      .draft = {weightLb, weightOz, insuranceValue, reference, descriptionText, customs},
                      .invoice = {},
                      .entry = {.askedAt = m_app.platform.clock.now(),
                                .rateId = rate.objectId,
                                .keyName = m_app.keys.activeName(),
                                .recipient = m_app.draftTo,
                                .keepRecipient = keepRecipient,
                                .record = {}}};
    ShippoAddress &to = purchase.entry.recipient;
    to.company = m_app.sanitizer.sanitize(to.company);

    const QString service = serviceName(rate.servicelevel);
    const QString insured = insuranceValue.value().trimmed();
    const bool isInsured = decimalOrZero(insured) > 0;
    const QString declared = isInternational() ? customs.value().value.trimmed() : QString();
    QStringList services = {serviceOptionInfo(this->service).label};
    if (isInternational())
        services += u"Declared $"_s + declared;
    if (isInsured)
        services += u"Insurance $"_s + insured;

    ShipmentRecord &record = purchase.entry.record;
    record.createdAt = purchase.entry.askedAt;
    record.carrier = carrierInfo(carrier).displayName;
    record.service = service;
    record.postage = decimalOrZero(rate.amount);
    record.recipient = recipientLine(to, isInternational());
    record.services = services.join(u", "_s);
    record.weight = weightDisplay();
    record.weightOz = totalPounds() * 16;
    record.descriptionText = descriptionText.value().simplified();
    record.reference = reference.value().simplified();
    record.zip11 = to.zip;
    record.declaredValue = isInternational() ? declared : isInsured ? insured : QString();
    record.email = to.email;
    record.isIntl = isInternational();
    purchase.invoice = invoiceData(carrierAndService(carrier, service));
    return purchase;
}

/// Clears the draft of a parcel that turned out to be sold, so that it is not sold again. A draft with another
/// reference for the same recipient, begun in the meantime, stays.
void LabelScreen::takeResolved()
{
    const QList<ResolvedPurchase> &all = purchases.resolved.value();
    const bool isNews = all.size() > std::exchange(m_resolvedSeen, all.size());
    if (busy || !isNews)
        return;
    const ResolvedPurchase latest = all.last();
    if (!isSameRecipient(latest.recipient, m_app.draftTo))
        return;
    if (!latest.isBought)
        banner = std::nullopt;
    else if (latest.record.reference == reference.value().simplified())
        clearDraft();
}

/// Shows the warning next to the price before the clerk presses the button.
void LabelScreen::watchForSecondLabel()
{
    if (!selectedRate())
        return;
    spawn([this, alive = QPointer(&m_lifetime)]() -> Task<> {
        const int edits = m_edits;
        const QString asked = reference;
        const bool testMode = co_await hasTestKey();
        if (!alive)
            co_return;
        const QString warning = co_await secondLabelWarning(testMode);
        if (alive && edits == m_edits && asked == reference.value() && selectedRate())
            warnOfSecondLabel(warning);
    });
}

Task<bool> LabelScreen::hasTestKey()
{
    const QString token = co_await onPool([&keys = m_app.keys] { return keys.activeToken().value_or(QString()); });
    co_return ShippoKeys::isTest(token);
}

/// The clerk's agreement applies to one warning for one set of rates only.
void LabelScreen::warnOfSecondLabel(const QString &warning)
{
    secondLabelAgreed = secondLabelAgreed && warning == secondLabel.value();
    secondLabel = warning;
}

Task<QString> LabelScreen::secondLabelWarning(bool testMode)
{
    const std::optional<UnresolvedPurchase> question = purchases.unresolvedFor(m_app.draftTo);
    SecondLabelFacts facts{.recipient = m_app.draftTo,
                           .reference = reference.value().simplified(),
                           .invoiceTracking = draftInvoice().value_or(DesklineInvoice{}).tracking,
                           .lastOutcomeUnknown = question.has_value(),
                           .now = m_app.platform.clock.now(),
                           .earlier = {}};
    facts.earlier =
        co_await onPool(m_app.log, &ShipmentLog::labelsLike, facts.reference, facts.now.date().startOfDay(), testMode);
    co_return secondLabelReasons(facts).join(u'\n');
}

Task<> LabelScreen::buyAndPrint()
{
    const std::optional<ShippoRate> rate = selectedRate();
    if (busy || !rate || isBuyClosed())
        co_return;
    busy = true; // set in the same event as the press, so that a second press is ignored
    buying = true;
    m_purchaseComplete = false;
    const auto done = qScopeGuard([this] {
        buying = false;
        busy = false;
    });
    banner = std::nullopt;
    Purchase purchase = preparePurchase(*rate);
    const bool testMode = co_await hasTestKey();
    purchase.entry.record.testMode = testMode;
    const QString warning = co_await secondLabelWarning(testMode);
    warnOfSecondLabel(warning);
    if (!warning.isEmpty() && !secondLabelAgreed) {
        secondLabelAgreed = true;
        co_return;
    }
    co_await buy(purchase);
}

Task<> LabelScreen::buy(Purchase purchase)
{
    OpenPurchase &entry = purchase.entry;
    const QString tag = PurchaseTag::of(purchase.from, entry.recipient, purchase.carrier, entry.record.service).text();
    try {
        if (entry.record.isIntl && purchase.carrier == Carrier::usps)
            entry.record.customsPDF =
                co_await m_papers.drawInvoice(purchase.invoice); // cannot be redrawn after a restart
        entry.id = co_await purchases.begin(entry);
    } catch (const AppError &error) {
        fail(u"Buy Label"_s, error);
        co_return;
    }
    std::optional<ShippoTransaction> bought;
    QString doubt; // why the outcome is unknown
    try {
        bought = co_await m_app.shippo.purchase(entry.rateId, u"ZPLII"_s, tag);
    } catch (const AppError &error) {
        if (fateOf(error) == RequestFate::unknown)
            doubt = error.description();
        else
            fail(u"Buy Label"_s, error);
        if (const auto *unsettled = dynamic_cast<const UnconfirmedPurchase *>(&error))
            entry.record.transactionID = unsettled->transactionId();
    }
    if (!bought && doubt.isEmpty()) {
        co_await purchases.close(entry.id);
        co_return;
    }
    if (!bought)
        bought = co_await lookForLabel(entry, doubt);
    if (bought)
        co_await finishPurchase(purchase, *bought);
}

/// The parcel is still on the desk, so poll the carrier a few times before leaving the purchase unresolved.
Task<std::optional<ShippoTransaction>> LabelScreen::lookForLabel(OpenPurchase entry, QString doubt)
{
    constexpr int looks = 3;
    constexpr auto pause = std::chrono::seconds(2);
    const QDateTime since =
        m_app.platform.clock.steadyNow(); // not askedAt: the response may have failed only after a minute
    clearRates();                         // buying again requires new rates, which gives the clerk time to think
    warn(doubt + u" Asking the carrier whether the label was bought…"_s);
    co_await purchases.save(entry);
    Purchases::Answer answer;
    for (int look = 0; look < looks; ++look) {
        if (look > 0)
            co_await m_app.platform.clock.sleep(pause);
        answer = co_await purchases.lookUp(entry, since);
        if (answer.verdict == Purchases::Verdict::bought)
            co_return answer.transaction;
        if (answer.verdict == Purchases::Verdict::notBought) {
            co_await purchases.close(entry.id);
            fail(u"Buy Label"_s, AppError(doubt + u" The label was not bought."_s));
            co_return std::nullopt;
        }
    }
    purchases.markUnresolved(entry, answer);
    const QString transaction = entry.record.transactionID;
    fail(u"Buy Label"_s,
         AppError(doubt +
                  u" The label may still have been bought. Parcelory keeps checking and completes the purchase "
                  "if so: "_s +
                  joinPresent({entry.record.recipient, u"rate "_s + entry.rateId,
                               transaction.isEmpty() ? QString() : u"transaction "_s + transaction},
                              u", "_s) +
                  u'.'));
    co_return std::nullopt;
}

Task<> LabelScreen::finishPurchase(Purchase purchase, ShippoTransaction transaction)
{
    m_soldWeight = std::max(m_soldWeight, purchase.weighed);
    OpenPurchase &entry = purchase.entry;
    ShipmentRecord &record = entry.record;
    record.createdAt = m_app.platform.clock.now();
    Purchases::applyTransaction(record, transaction);
    co_await purchases.save(entry);
    if (record.labelURL.isEmpty()) {
        const QString text = u"Purchase succeeded but no label URL was returned."_s;
        clearRates();
        warn(text);
        purchases.markUnresolved(entry, {.text = text, .isInconclusive = true});
        m_app.errors.record(u"Buy Label"_s, AppError(text + u" Transaction "_s + transaction.objectId), Popup::yes);
        co_return;
    }

    const PrintedDocument label = co_await fetchAndPrint(entry);
    record.zpl = label.document;
    entry.printed = label.done;
    QString outcome = label.note;
    bool papersDone = true;
    if (record.isIntl) {
        PrintedDocument papers;
        if (purchase.carrier == Carrier::fedex)
            papers = co_await m_papers.printFedexInvoice(record.customsDocURL);
        else
            papers = co_await m_papers.printInvoice(purchase.invoice, printInvoiceWithRates);
        if (papers.document) // otherwise keep the document drawn before the purchase
            record.customsPDF = papers.document;
        if (!papers.note.isEmpty())
            outcome += papers.done ? u' ' + papers.note : papers.note;
        papersDone = papers.done;
    }
    if (std::exchange(entry.keepRecipient, false))
        emit m_app.recipientToKeep(entry.recipient);
    const bool logged = co_await purchases.enterIntoLog(entry);
    m_purchaseComplete = label.done && papersDone && logged;
    if (!logged) {
        co_await purchases.save(entry);
        outcome += u" (the mailing log could not be written — note the tracking number "_s + record.tracking + u')';
        purchases.markUnresolved(entry, {.text = Purchases::notLogged(record), .isInconclusive = true});
    }
    showSold(purchase, outcome, logged);
}

void LabelScreen::showSold(const Purchase &purchase, const QString &outcome, bool logged)
{
    const ShippoAddress &to = purchase.entry.recipient;
    const ShipmentRecord &record = purchase.entry.record;
    m_app.lastShipmentSummary = summaryOf(purchase.carrier, to, record, purchase.rate.amount);
    if (purchase.edits != m_edits) {
        clearSold(purchase.draft);
    } else { // the clerk has not begun the next parcel yet
        clearDraft();
        lastLabel =
            LastLabel{joinPresent({to.name, trimBlanks(to.city + u' ' + to.state)}, u" · "_s), record, QString()};
    }
    banner = Banner{u"Success! %1 to %2, $%3"_s.arg(record.service, to.name, purchase.rate.amount) + outcome, logged};
}

/// The clerk has begun the next parcel. Clears the fields that still hold the sold parcel's values, so that they are
/// not used again.
void LabelScreen::clearSold(const SoldDraft &sold)
{
    if (weightLb.value() == sold.weightLb && weightOz.value() == sold.weightOz) {
        weightLb = QString();
        weightOz = QString();
    }
    const std::pair<QProperty<QString> *, QString> texts[] = {
        {&insuranceValue, sold.insuranceValue}, {&reference, sold.reference}, {&descriptionText, sold.descriptionText}};
    for (const auto &[field, text] : texts) {
        if (field->value() == text)
            *field = QString();
    }
    if (customs.value() == sold.customs)
        customs = CustomsInfo{};
}

/// Fetches and prints the label. The label is already paid for, so a failure here must not prevent logging.
Task<PrintedDocument> LabelScreen::fetchAndPrint(OpenPurchase entry)
{
    PrintedDocument result;
    try {
        const QByteArray label = co_await m_app.shippo.downloadLabel(entry.record.labelURL);
        if (labelKind(label) != LabelKind::notALabel && !isWhole(label))
            throw AppError(u"the label arrived incomplete"_s);
        if (isWhole(label)) { // without the data, a reprint downloads the label again
            result.document = label;
            entry.record.zpl = label;
            co_await purchases.save(entry);
        }
        const QString printed = co_await printLabel(m_app, label);
        co_await purchases.markPrinted(entry.id);
        result.note = u". "_s + printed;
        result.done = true;
    } catch (const AppError &error) {
        result.note = u" (print failed: "_s + error.description() + u" — use Reprint from the log)"_s;
        m_app.errors.record(u"Print Label"_s, error, Popup::no);
    }
    co_return result;
}

void LabelScreen::noteOnLastLabel(const QString &text)
{
    if (std::optional<LastLabel> label = lastLabel) {
        label->message = text;
        lastLabel = label;
    }
}

Task<> LabelScreen::reprintLast()
{
    if (busy || !lastLabel.value())
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    try {
        const QString printed = co_await reprintChecked(m_app, lastLabel.value()->record);
        noteOnLastLabel(printed);
    } catch (const AppError &error) {
        noteOnLastLabel(error.description());
        recordReprintFailure(m_app, error);
    }
}

void LabelScreen::copyLastTracking()
{
    if (!lastLabel.value())
        return;
    const QString tracking = lastLabel.value()->record.tracking;
    m_app.platform.desktop.copyText(tracking);
    noteOnLastLabel(u"Copied tracking "_s + tracking);
}

} // namespace parcelory
