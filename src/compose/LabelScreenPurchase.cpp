#include "carrier/PurchaseTag.h"
#include "carrier/ShippoError.h"
#include "compose/LabelScreen.h"
#include "core/CountryCode.h"
#include "core/Text.h"
#include "records/LabelCheck.h"
#include "records/Reprint.h"
#include "shell/SettingsKeys.h"

#include <QScopeGuard>

#include <algorithm>

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

/// True when the carrier may have sold a label although its answer did not say so.
bool outcomeUnknown(const AppError &error)
{
    const auto *shippo = dynamic_cast<const ShippoError *>(&error);
    return !shippo || shippo->kind() == ShippoError::Kind::http;
}

} // namespace

LabelScreen::Purchase LabelScreen::preparePurchase(const ShippoRate &rate) const
{
    Purchase purchase{.carrier = carrier,
                      .rate = rate,
                      .from = senderForCarrier(),
                      .to = m_app.draftTo,
                      .edits = m_edits,
                      .weighed = m_app.scale.generation(),
                      .keepRecipient = keepRecipient,
                      .draft = {weightLb, weightOz, insuranceValue, reference, descriptionText, customs},
                      .invoice = {},
                      .record = {}};
    purchase.to.company = m_app.sanitizer.sanitize(purchase.to.company);

    const QString service = rate.servicelevel.name.value_or(rate.servicelevel.token.value_or(QString()));
    const QString insured = insuranceValue.value().trimmed();
    const bool isInsured = decimalOrZero(insured) > 0;
    const QString declared = isInternational() ? customs.value().value.trimmed() : QString();
    QStringList services = {serviceOptionInfo(this->service).label};
    if (isInternational())
        services += u"Declared $"_s + declared;
    if (isInsured)
        services += u"Insurance $"_s + insured;

    ShipmentRecord &record = purchase.record;
    record.carrier = carrierInfo(carrier).displayName;
    record.service = service;
    record.postage = decimalOrZero(rate.amount);
    record.recipient = recipientLine(purchase.to, isInternational());
    record.services = services.join(u", "_s);
    record.weight = weightDisplay();
    record.weightOz = totalPounds() * 16;
    record.descriptionText = descriptionText.value().simplified();
    record.reference = reference.value().simplified();
    record.zip11 = purchase.to.zip;
    record.declaredValue = isInternational() ? declared : isInsured ? insured : QString();
    record.email = purchase.to.email;
    record.isIntl = isInternational();
    purchase.invoice = invoiceData(carrierAndService(carrier, service));
    return purchase;
}

Task<> LabelScreen::buyAndPrint()
{
    const std::optional<ShippoRate> rate = selectedRate();
    if (busy || !rate)
        co_return;
    busy = true; // in the same event as the press: a second press finds it set
    buying = true;
    m_purchaseComplete = false;
    const auto done = qScopeGuard([this] {
        buying = false;
        busy = false;
    });
    banner = std::nullopt;
    Purchase purchase = preparePurchase(*rate);
    const QString tag = PurchaseTag::of(purchase.from, purchase.to, purchase.carrier, purchase.record.service).text();
    try {
        auto tokenRead = onPool([this] { return m_app.keys.activeToken(); });
        const std::optional<QString> token = co_await tokenRead;
        purchase.record.testMode = ShippoKeys::isTest(token.value_or(QString()));
        const ShippoTransaction bought = co_await m_app.shippo.purchase(rate->objectId, u"ZPLII"_s, tag);
        co_await finishPurchase(purchase, bought);
    } catch (const AppError &error) {
        if (!outcomeUnknown(error)) {
            fail(u"Buy Label"_s, error);
            co_return;
        }
        clearRates(); // buying again takes a new look at the prices, and so a moment's thought
        const auto *unsettled = dynamic_cast<const UnsettledPurchase *>(&error);
        const QString text =
            error.description() +
            u" The label may have been bought all the same — look for it in the Shippo dashboard before "
            "buying again: "_s +
            joinPresent({purchase.record.recipient, u"rate "_s + rate->objectId,
                         unsettled ? u"transaction "_s + unsettled->transactionId() : QString()},
                        u", "_s) +
            u'.';
        fail(u"Buy Label"_s, AppError(text));
    }
}

Task<> LabelScreen::finishPurchase(Purchase purchase, ShippoTransaction transaction)
{
    m_soldWeight = std::max(m_soldWeight, purchase.weighed);
    ShipmentRecord &record = purchase.record;
    record.createdAt = m_app.platform.clock.now();
    record.transactionID = transaction.objectId;
    record.tracking = transaction.trackingNumber.value_or(QString());
    record.trackingURL = transaction.trackingUrlProvider.value_or(QString());
    record.labelURL = transaction.labelUrl.value_or(QString());
    record.customsDocURL = transaction.commercialInvoiceUrl.value_or(QString());
    if (record.labelURL.isEmpty()) {
        const QString text = u"Purchase succeeded but no label URL was returned."_s;
        clearRates();
        warn(text);
        m_app.errors.record(u"Buy Label"_s, AppError(text + u" Transaction "_s + transaction.objectId), Popup::yes);
        co_return;
    }

    const Printed label = co_await fetchAndPrint(record.labelURL);
    record.zpl = label.document;
    QString outcome = label.note;
    bool papersDone = true;
    if (record.isIntl) {
        Printed papers;
        if (purchase.carrier == Carrier::fedex)
            papers = co_await printFedexInvoice(record.customsDocURL);
        else
            papers = co_await printInvoice(purchase.invoice, printInvoiceWithRates);
        record.customsPDF = papers.document;
        if (!papers.note.isEmpty())
            outcome += papers.done ? u' ' + papers.note : papers.note;
        papersDone = papers.done;
    }
    if (purchase.keepRecipient)
        emit m_app.recipientToKeep(purchase.to);
    const bool logged = co_await logPurchase(record);
    m_purchaseComplete = label.done && papersDone && logged;
    if (!logged)
        outcome += u" (the mailing log could not be written — note the tracking number "_s + record.tracking + u')';

    m_app.lastShipmentSummary = summaryOf(purchase.carrier, purchase.to, record, purchase.rate.amount);
    if (purchase.edits != m_edits) {
        clearSold(purchase.draft);
    } else { // the clerk has not begun the next parcel yet
        clearDraft();
        lastLabel = LastLabel{
            joinPresent({purchase.to.name, trimBlanks(purchase.to.city + u' ' + purchase.to.state)}, u" · "_s), record,
            QString()};
    }
    banner = Banner{u"Success! %1 to %2, $%3"_s.arg(record.service, purchase.to.name, purchase.rate.amount) + outcome,
                    logged};
}

/// The clerk has begun the next parcel: what still stands there of the last one must not be sold again.
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

/// Fetches and prints the label. It is paid for by now, so nothing that fails here may stop it from being logged.
Task<LabelScreen::Printed> LabelScreen::fetchAndPrint(QString labelUrl)
{
    const QString zebraQueue = read(m_app.platform.preferences, settings::zebraQueue);
    const QString documentQueue = read(m_app.platform.preferences, settings::documentQueue);
    Printed result;
    try {
        const QByteArray label = co_await m_app.shippo.downloadLabel(labelUrl);
        if (labelKind(label) != LabelKind::notALabel && !isWhole(label))
            throw AppError(u"the label arrived incomplete"_s);
        if (isWhole(label))
            result.document = label; // without bytes, a reprint downloads the label again
        auto printing = onPool([=, this] { return m_app.printer.print(label, zebraQueue, documentQueue); });
        const QString printed = co_await printing;
        result.note = u". "_s + printed;
        result.done = true;
    } catch (const AppError &error) {
        result.note = u" (print failed: "_s + error.description() + u" — use Reprint from the log)"_s;
        m_app.errors.record(u"Print Label"_s, error, Popup::no);
    }
    co_return result;
}

/// The same for the customs document that FedEx makes for a parcel abroad.
Task<LabelScreen::Printed> LabelScreen::printFedexInvoice(QString documentUrl)
{
    Printed result;
    try {
        if (documentUrl.isEmpty())
            throw AppError(u"the carrier named none"_s);
        const QByteArray document = co_await m_app.shippo.downloadLabel(documentUrl);
        if (labelKind(document) != LabelKind::pdf || !isWhole(document))
            throw AppError(u"what the carrier sent is not a complete PDF document"_s);
        result.document = document;
        const bool sentToQueue = co_await printDocument(m_app, document);
        result.done = sentToQueue;
        if (!sentToQueue)
            result.note = u" (FedEx commercial invoice opened in Preview — set a document printer in Settings)"_s;
    } catch (const AppError &error) {
        const QString failed = result.document ? u" (FedEx commercial invoice print failed: "_s
                                               : u" (FedEx commercial invoice download failed: "_s;
        result.note = failed + error.description() + u')';
        m_app.errors.record(u"FedEx Commercial Invoice"_s, error, Popup::no);
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

Task<bool> LabelScreen::logPurchase(ShipmentRecord record)
{
    struct Outcome {
        bool stored;
        QString reason;
    };
    auto writing = onPool([&log = m_app.log, record] {
        const bool stored = log.insert(record);
        return Outcome{stored, stored ? QString() : log.lastError()};
    });
    const Outcome outcome = co_await writing;
    if (!outcome.stored) {
        const AppError error(u"Bought but not logged: %1, %2, tracking %3, transaction %4, label %5 (%6)"_s.arg(
            record.recipient, record.service, record.tracking, record.transactionID, record.labelURL, outcome.reason));
        m_app.errors.record(u"Mailing Log"_s, error, Popup::yes);
    }
    co_return outcome.stored;
}

} // namespace parcelory
