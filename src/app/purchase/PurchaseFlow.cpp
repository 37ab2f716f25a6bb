#include "app/purchase/PurchaseFlow.h"

#include "app/purchase/CarrierRefund.h"
#include "app/purchase/CustomsPapers.h"
#include "app/purchase/KeptLabel.h"
#include "app/purchase/PurchaseLookup.h"
#include "app/purchase/PurchaseTexts.h"
#include "carrier/CarrierWords.h"
#include "carrier/PurchaseTag.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoRecords.h"
#include "compose/SecondLabel.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/ErrorDetail.h"
#include "core/Task.h"
#include "core/Text.h"
#include "devices/Zpl.h"
#include "records/DraftStore.h"
#include "records/PurchaseJournal.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "shell/ErrorLog.h"

#include <QMap>

#include <chrono>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString buyContext = u"Buy Label"_s;

/// Copies the mailing log's fields from the carrier's response.
void applyTransaction(ShipmentRecord &record, const ShippoTransaction &transaction)
{
    record.transactionID = transaction.objectId;
    record.tracking = transaction.trackingNumber.value_or(QString());
    record.trackingURL = transaction.trackingUrlProvider.value_or(QString());
    record.labelURL = transaction.labelUrl.value_or(QString());
    record.customsDocURL = transaction.commercialInvoiceUrl.value_or(QString());
    if (const std::optional<RefundState> refund = refundStateOf(transactionStatus(transaction)))
        record.status = statusAfter(*refund, record.status);
}

/// False while the label is not made, and once its refund is asked for.
bool isUsable(const ShippoTransaction &sale)
{
    const std::optional<RefundState> refund = refundStateOf(transactionStatus(sale));
    return !sale.labelUrl.value_or(QString()).isEmpty() && refund != RefundState::pending &&
           refund != RefundState::granted;
}

/// A draft that has its label must not come back at a later start. Waits for the disk; call before the purchase is
/// closed in the journal, which keeps a draft away, too.
void dropDraftOf(AppState &app, const OpenPurchase &purchase)
{
    const std::optional<StoredDraft> stored = app.drafts.stored();
    if (!stored || !(purchase.isUnreadable || isSameRecipient(stored->draft.recipient, purchase.recipient)))
        return;
    app.drafts.clear();
    app.drafts.flush();
}

/// What the tag of the purchase tells, for a purchase whose entry in the journal could not be read.
void applyTag(ShipmentRecord &record, const ShippoTransaction &transaction)
{
    const auto tag = PurchaseTag::read(transaction.metadata.value_or(QString()));
    if (!tag)
        return;
    record.recipient = joinPresent({tag->recipient, tag->country}, u", "_s);
    record.service = tag->service;
    for (const Carrier carrier : {Carrier::usps, Carrier::fedex}) {
        const QString name = carrierInfo(carrier).displayName;
        if (tag->service.startsWith(name + u' ')) {
            record.carrier = name;
            record.service = tag->service.mid(name.size() + 1);
        }
    }
}

} // namespace

Task<qint64> PurchaseFlow::begin(OpenPurchase purchase)
{
    co_return co_await onPool(m_app.journal, &PurchaseJournal::begin, purchase);
}

Task<> PurchaseFlow::save(OpenPurchase purchase)
{
    co_await onPool(m_app.journal, &PurchaseJournal::update, purchase.id, purchase.record);
}

Task<> PurchaseFlow::close(qint64 id)
{
    co_await onPool(m_app.journal, &PurchaseJournal::close, id);
}

Task<> PurchaseFlow::closeAsSold(OpenPurchase purchase)
{
    co_await onPool([&app = m_app, purchase] {
        dropDraftOf(app, purchase);
        app.journal.close(purchase.id);
    });
}

Task<SaleResult> PurchaseFlow::request(OpenPurchase purchase, QString tag)
{
    SaleResult result{.entry = purchase};
    try {
        result.transaction = co_await m_app.shippo.purchase(purchase.rateId, u"ZPLII"_s, tag);
        result.kind = SaleResult::Kind::sold;
        co_return result;
    } catch (const AppError &error) {
        result.text = error.description();
        if (fateOf(error) != RequestFate::unknown) {
            result.kind = SaleResult::Kind::notBought;
            result.text = m_app.recorded(buyContext, error, Popup::yes);
        }
        if (const auto *unconfirmed = dynamic_cast<const Unconfirmed *>(&error))
            result.entry.record.transactionID = unconfirmed->recordId();
    }
    if (result.kind == SaleResult::Kind::notBought)
        co_await close(purchase.id);
    co_return result;
}

Task<SaleResult> PurchaseFlow::lookFor(SaleResult unknown)
{
    constexpr int looks = 3;
    constexpr auto pause = std::chrono::seconds(2);
    constexpr std::chrono::milliseconds longest = std::chrono::minutes(1); // the clerk waits; later looks follow
    SaleResult result = unknown;
    OpenPurchase &entry = result.entry;
    // Not askedAt: the response may have failed only after a minute.
    const QDateTime since = m_app.platform.clock.steadyNow();
    co_await save(entry);
    for (int look = 0; look < looks; ++look) {
        if (since.msecsTo(m_app.platform.clock.steadyNow()) > longest.count())
            break;
        if (look > 0)
            co_await m_app.platform.clock.sleep(pause);
        result.answer = co_await lookUpPurchase(m_app, entry, since);
        result.entry = co_await noted(result.entry, result.answer);
        if (result.answer.verdict == LookupAnswer::Verdict::bought) {
            result.kind = SaleResult::Kind::sold;
            result.transaction = result.answer.transaction;
            co_return result;
        }
        if (result.answer.verdict == LookupAnswer::Verdict::notBought) {
            co_await close(entry.id);
            result.kind = SaleResult::Kind::notBought;
            result.text += u" The label was not bought."_s;
            m_app.errors.record(buyContext, AppError(result.text), Popup::yes);
            co_return result;
        }
    }
    result.text = PurchaseTexts::stillUnknown(result.text);
    m_app.errors.record(buyContext, Detailed<AppError>(result.text, PurchaseTexts::identifiers(entry)), Popup::yes);
    co_return result;
}

Task<PurchaseResult> PurchaseFlow::complete(OpenPurchase purchase, std::optional<ShippoTransaction> transaction,
                                            Delivery delivery, QList<ShippoTransaction> seconds)
{
    const QDateTime begun = m_app.platform.clock.now(); // before the label can come out
    PurchaseResult result{.entry = purchase};
    OpenPurchase &entry = result.entry;
    ShipmentRecord &record = entry.record;
    if (transaction && entry.isUnreadable)
        applyTag(record, *transaction);
    for (const ShippoTransaction &sale : seconds) { // first, because a later start would not ask the carrier again
        const ShipmentRecord second = co_await logSecond(record, sale);
        result.seconds.append(second);
    }
    if (transaction)
        applyTransaction(record, *transaction);
    co_await save(entry);
    result.hasLabel = !record.labelURL.isEmpty();
    if (!result.hasLabel)
        co_return result;

    try {
        if (!record.zpl)
            record.zpl = co_await fetchLabel(entry);
    } catch (const AppError &error) {
        result.label.text = m_app.recorded(delivery.prints ? u"Print Label"_s : u"Fetch Label"_s, error, Popup::no);
    }
    if (record.zpl)
        co_await save(entry); // the label is not downloaded again if the program ends now
    LabelDoubts doubts;
    if (record.zpl && (delivery.prints || !entry.isUnreadable)) // otherwise the parcel is unknown
        doubts = co_await doubtsAbout(*record.zpl, {parcelOf(m_app, entry)});
    result.verdict = doubts.verdict;
    const bool isHeld = delivery.prints && !doubts.isEmpty();
    if (delivery.prints && record.zpl && !isHeld)
        result.label = co_await printLabelOf(entry);
    entry.printed = entry.printed || result.label.isPrinted;

    result.papers = co_await papersOf(entry, delivery);
    if (result.papers.document)
        record.customsPDF = result.papers.document;
    if (isOnPaper(result.papers.outcome)) {
        entry.printsPapers = false;
        co_await onPool(m_app.journal, &PurchaseJournal::markPapersPrinted, entry.id);
    } else if (isMissing(result.papers.outcome) || (record.isIntl && entry.printsPapers)) {
        co_await noteEvent(m_app, {record.transactionID}, LabelEvent::papersFailed);
    }
    co_await save(entry);
    result.isLogged = co_await log(entry, doubts.verdict, begun);
    if (isHeld) { // asked last: the label is in the log, however long the clerk takes
        result.label = co_await printHeldLabelOf(entry, doubts);
        entry.printed = entry.printed || result.label.isPrinted;
    }
    if (result.isLogged && std::exchange(entry.keepRecipient, false))
        emit m_app.recipientToKeep(entry.recipient);
    m_app.lastShipmentSummary = PurchaseTexts::summary(entry);
    co_return result;
}

Task<QList<ShipmentRecord>> PurchaseFlow::logRepeatedSales()
{
    const QList<ShippoTransaction> newest = co_await m_app.shippo.newestPurchases();
    // Read after the list and before the log: a purchase that is finished by now is in the log, and an open purchase
    // finds its own sales.
    const QList<OpenPurchase> open = co_await onPool(m_app.journal, &PurchaseJournal::openPurchases);
    QSet<QString> openRates;
    for (const OpenPurchase &purchase : open)
        openRates.insert(purchase.rateId);
    QMap<QString, QList<ShippoTransaction>> salesByRate;
    for (const ShippoTransaction &sale : newest) {
        const QString rate = sale.rate.value_or(QString());
        if (!rate.isEmpty() && !openRates.contains(rate) && transactionStatus(sale) != TransactionStatus::error)
            salesByRate[rate].append(sale);
    }
    QList<ShipmentRecord> seconds;
    for (const QList<ShippoTransaction> &sales : std::as_const(salesByRate)) {
        if (sales.size() > 1)
            seconds += co_await secondsAmong(sales);
    }
    co_return seconds;
}

/// Logs the sales of one rate that the mailing log lacks, if it has one of them. Otherwise another desk bought them.
Task<QList<ShipmentRecord>> PurchaseFlow::secondsAmong(QList<ShippoTransaction> sales)
{
    std::optional<ShipmentRecord> first;
    QList<ShippoTransaction> unlogged;
    for (const ShippoTransaction &sale : sales) {
        const ShipmentRecord asked{.createdAt = {}, .transactionID = sale.objectId};
        const auto found = co_await onPool([&log = m_app.log, asked] { return log.find(asked); });
        const std::optional<ShipmentRecord> row = found.orThrow();
        if (row)
            first = row;
        else if (isUsable(sale))
            unlogged.append(sale);
    }
    QList<ShipmentRecord> seconds;
    for (const ShippoTransaction &sale : unlogged) {
        if (!first)
            break;
        const ShipmentRecord second = co_await logSecond(*first, sale);
        seconds.append(second);
    }
    co_return seconds;
}

Task<OpenPurchase> PurchaseFlow::noted(OpenPurchase purchase, LookupAnswer answer)
{
    if (answer.verdict == LookupAnswer::Verdict::unknown && answer.transaction &&
        purchase.record.transactionID.isEmpty()) {
        purchase.record.transactionID = answer.transaction->objectId;
        co_await save(purchase);
    }
    co_return purchase;
}

/// Logs a further sale of the rate of `first`, which was not asked for.
Task<ShipmentRecord> PurchaseFlow::logSecond(ShipmentRecord first, ShippoTransaction sale)
{
    ShipmentRecord second = first;
    second.id = 0; // a row of its own
    second.status = wordOf(LogStatus::printed);
    second.refund.clear();
    second.zpl = std::nullopt;
    second.customsPDF = std::nullopt; // the papers name the other label
    applyTransaction(second, sale);
    // First, because no later start tells of it once it is in the log.
    m_app.errors.record(buyContext, PurchaseTexts::secondError(second), Popup::yes);
    const QString reason =
        co_await onPool([&log = m_app.log, second] { return log.insertOnce(second) ? QString() : log.lastError(); });
    if (!reason.isEmpty())
        m_app.errors.record(u"Mailing Log"_s, PurchaseTexts::notLoggedError(second, reason), Popup::yes);
    co_return second;
}

/// Throws AppError for anything that is not a whole label.
Task<QByteArray> PurchaseFlow::fetchLabel(OpenPurchase purchase)
{
    const QByteArray label = co_await m_app.shippo.downloadLabel(purchase.record.labelURL);
    if (labelKind(label) == LabelKind::notALabel)
        throw AppError(u"the carrier's file is not a label"_s);
    if (!isWhole(label))
        throw AppError(u"the label arrived incomplete"_s);
    co_return label;
}

/// The journal notes it for log(); `note` is for a label that is in the log.
Task<LabelResult> PurchaseFlow::printLabelOf(OpenPurchase purchase, PrintNote note)
{
    try {
        const ShipmentRecord &record = purchase.record;
        const PrintNote inBooks = [&journal = m_app.journal, id = purchase.id, note](const QDateTime &at) {
            journal.markPrinted(id);
            return note ? note(at) : QString();
        };
        const PrintedLabel printed =
            co_await printLabel(m_app, record.zpl.value_or(QByteArray()), record.transactionID, inBooks);
        recordUnnoted(m_app, printed.unnoted);
        if (note)
            emit m_app.labelsNoted();
        co_return LabelResult{.isPrinted = true, .text = printed.text};
    } catch (const AppError &error) {
        m_app.errors.record(u"Print Label"_s, error, Popup::no);
        co_return LabelResult{.text = error.description()};
    }
}

Task<LabelResult> PurchaseFlow::printHeldLabelOf(OpenPurchase purchase, LabelDoubts doubts)
{
    const bool isAgreed = co_await mayPrint(m_app, doubts, purchase.record);
    if (isAgreed)
        co_return co_await printLabelOf(purchase, noteOf(m_app, {purchase.record.transactionID}, LabelEvent::sent));
    const QString reason = doubts.reason();
    m_app.errors.record(u"Print Label"_s, AppError(reason), Popup::no);
    co_return LabelResult{.text = reason};
}

Task<PapersResult> PurchaseFlow::papersOf(OpenPurchase purchase, Delivery delivery)
{
    const ShipmentRecord &record = purchase.record;
    const bool isPrinting = delivery.prints && purchase.printsPapers;
    if (!record.isIntl)
        co_return PapersResult{};
    if (record.carrier == carrierInfo(Carrier::fedex).displayName) {
        if (record.customsPDF)
            co_return PapersResult{.outcome = PapersOutcome::kept, .document = record.customsPDF};
        co_return co_await m_papers.fetchFedexInvoice(record.customsDocURL, isPrinting);
    }
    if (isPrinting)
        co_return co_await m_papers.printInvoice(delivery.drawn);
    co_return delivery.drawn;
}

/// Adds the label to the mailing log, unless it is already there, and then removes it from the journal. Returns false,
/// and reports it, if the mailing log cannot be written.
Task<bool> PurchaseFlow::log(OpenPurchase purchase, LabelVerdict verdict, QDateTime begun)
{
    struct Outcome {
        bool stored;
        QString reason;
        QString verdictReason; ///< why the verdict is not beside the row
        QString eventReason;   ///< the same for whether it was printed
    };
    const Outcome outcome = co_await onPool([&app = m_app, purchase, verdict, begun] {
        const ShipmentRecord &record = purchase.record;
        const bool stored = app.log.insertOnce(record);
        if (stored) {
            dropDraftOf(app, purchase);
            app.journal.close(purchase.id);
        }
        const QString reason = stored ? QString() : app.log.lastError();
        const bool isKept = !stored || verdict.findings.isEmpty() || keepVerdict(app.log, record, verdict);
        const QString verdictReason = isKept ? QString() : app.log.lastError();
        const LabelEvent event = purchase.printed ? LabelEvent::sent : LabelEvent::notPrinted;
        const bool isNoted = !stored || LabelEvents::put(app.log, {record.transactionID}, event, begun);
        return Outcome{stored, reason, verdictReason, isNoted ? QString() : app.log.lastError()};
    });
    recordUnnoted(m_app, outcome.eventReason);
    emit m_app.labelsNoted();
    if (!outcome.verdictReason.isEmpty())
        m_app.errors.record(
            u"Mailing Log"_s,
            AppError(u"The mailing log can't keep the result of the label check — %1."_s.arg(outcome.verdictReason)),
            Popup::no);
    if (!outcome.stored && !m_unlogged.contains(purchase.id)) {
        m_unlogged.insert(purchase.id);
        m_app.errors.record(u"Mailing Log"_s, PurchaseTexts::notLoggedError(purchase.record, outcome.reason),
                            Popup::yes);
    }
    if (outcome.stored && refundState(purchase.record.status) == RefundState::failed) // the row refers to the error log
        m_app.errors.record(u"Refund"_s, AppError(refundRefusal(purchase.record)), Popup::no);
    co_return outcome.stored;
}

} // namespace parcelory
