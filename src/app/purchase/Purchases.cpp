#include "app/purchase/Purchases.h"

#include "app/purchase/CarrierRefund.h"
#include "app/purchase/LabelPrinting.h"
#include "app/purchase/ReprintCheck.h"
#include "carrier/CarrierWords.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoRecords.h"
#include "compose/SecondLabel.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/Text.h"
#include "devices/Zpl.h"
#include "records/PurchaseJournal.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// True if the carrier was reached and a retry would get the same response. Buying must not stay disabled forever.
bool isLastWord(const AppError &error)
{
    if (dynamic_cast<const DecodeError *>(&error))
        return true;
    constexpr int forbidden = 403, unknown = 404;
    const auto *shippo = dynamic_cast<const ShippoError *>(&error);
    return shippo &&
           (shippo->kind() == ShippoError::Kind::api || shippo->status() == forbidden || shippo->status() == unknown);
}

constexpr int mostDays = 30; ///< an inconclusive purchase that is older is given up

} // namespace

Purchases::~Purchases()
{
    m_app.platform.clock.cancel(m_timer);
}

QString Purchases::titleOf(const ShipmentRecord &record)
{
    return u"%1 %2 to %3, $%4"_s.arg(record.carrier, record.service, record.recipientName(), fixed(record.postage, 2));
}

QString Purchases::notLogged(const ShipmentRecord &record)
{
    return u"It was bought, but the mailing log could not be written. Tracking %1."_s.arg(record.tracking);
}

void Purchases::applyTransaction(ShipmentRecord &record, const ShippoTransaction &transaction)
{
    record.transactionID = transaction.objectId;
    record.tracking = transaction.trackingNumber.value_or(QString());
    record.trackingURL = transaction.trackingUrlProvider.value_or(QString());
    record.labelURL = transaction.labelUrl.value_or(QString());
    record.customsDocURL = transaction.commercialInvoiceUrl.value_or(QString());
    if (const std::optional<RefundState> refund = refundStateOf(transactionStatus(transaction)))
        record.status = statusAfter(*refund, record.status);
}

Task<qint64> Purchases::begin(OpenPurchase purchase)
{
    if (!m_isLoaded) { // the journal could not be opened at the start
        co_await load();
        askLater();
        if (unresolvedFor(purchase.recipient))
            throw AppError(u"An earlier purchase for this recipient is still unresolved. Parcelory asks the carrier "
                           "about it now; nothing was bought."_s);
    }
    const qint64 id = co_await onPool(m_app.journal, &PurchaseJournal::begin, purchase);
    co_return id;
}

/// Lists the purchases that earlier runs left unresolved. Throws AppError while the journal cannot be opened.
Task<> Purchases::load()
{
    const QList<OpenPurchase> open = co_await onPool([&journal = m_app.journal] {
        journal.open();
        return journal.openPurchases();
    });
    if (std::exchange(m_isLoaded, true)) // another call was faster, and a new purchase may be in the list by now
        co_return;
    const QDateTime now = m_app.platform.clock.steadyNow();
    for (const OpenPurchase &purchase : open)
        replaceUnresolved(purchase.id, UnresolvedPurchase{purchase, u"Asking the carrier…"_s, false, now});
}

Task<> Purchases::save(OpenPurchase purchase)
{
    co_await onPool(m_app.journal, &PurchaseJournal::update, purchase.id, purchase.record);
}

Task<> Purchases::markPrinted(qint64 id)
{
    co_await onPool(m_app.journal, &PurchaseJournal::markPrinted, id);
}

Task<> Purchases::close(qint64 id)
{
    co_await onPool(m_app.journal, &PurchaseJournal::close, id);
}

Task<bool> Purchases::enterIntoLog(OpenPurchase purchase)
{
    struct Outcome {
        bool stored;
        QString reason;
    };
    const Outcome outcome = co_await onPool([&app = m_app, purchase] {
        const ShipmentRecord &record = purchase.record;
        const bool stored = app.log.find(record) || app.log.insert(record);
        if (stored)
            app.journal.close(purchase.id);
        return Outcome{stored, stored ? QString() : app.log.lastError()};
    });
    if (!outcome.stored && !isKnownUnlogged(purchase.id)) {
        const ShipmentRecord &record = purchase.record;
        const AppError error(u"Bought but not logged: %1, %2, tracking %3, transaction %4, label %5 (%6)"_s.arg(
            record.recipient, record.service, record.tracking, record.transactionID, record.labelURL, outcome.reason));
        m_app.errors.record(u"Mailing Log"_s, error, Popup::yes);
    }
    if (outcome.stored && refundState(purchase.record.status) == RefundState::failed) // the row refers to the error log
        m_app.errors.record(u"Refund"_s, AppError(refundRefusal(purchase.record)), Popup::no);
    co_return outcome.stored;
}

Task<Purchases::Answer> Purchases::lookUp(OpenPurchase purchase, QDateTime since)
{
    Answer answer;
    try {
        answer = co_await evaluate(purchase, since);
    } catch (const AppError &error) {
        answer.text = error.description();
        answer.isInconclusive = isLastWord(error);
    }
    co_return answer;
}

Task<Purchases::Answer> Purchases::evaluate(OpenPurchase purchase, QDateTime since)
{
    const ShipmentRecord &known = purchase.record;
    if (!known.labelURL.isEmpty()) // the carrier's response arrived; only the log entry is missing
        co_return Answer{.verdict = Verdict::bought};
    const QString token = co_await onPool([&keys = m_app.keys] { return keys.activeToken().value_or(QString()); });
    const bool sameKey = m_app.keys.activeName() == purchase.keyName && ShippoKeys::isTest(token) == known.testMode;
    if (!sameKey) // inconclusive, because that key may be gone for good
        co_return Answer{.text = u"It was requested with the %1 key “%2” — choose that key in Settings to check."_s.arg(
                             known.testMode ? u"TEST"_s : u"LIVE"_s, purchase.keyName),
                         .isInconclusive = true};
    std::optional<ShippoTransaction> found;
    if (!known.transactionID.isEmpty()) {
        found = co_await m_app.shippo.transaction(known.transactionID);
    } else {
        const QList<ShippoTransaction> sold = co_await m_app.shippo.purchasesOf(purchase.rateId, purchase.askedAt);
        // A failed transaction may be an earlier attempt at the same rate.
        const auto isSale = [](const ShippoTransaction &one) {
            return transactionStatus(one) != TransactionStatus::error;
        };
        const auto sale = std::ranges::find_if(sold, isSale);
        if (sale != sold.end())
            found = *sale;
    }
    if (!found && ShippoClient::mayStillArrive(since, m_app.platform.clock.steadyNow()))
        co_return Answer{.text = u"The carrier knows of no such label yet."_s, .isInconclusive = true};
    if (!found || transactionStatus(*found) == TransactionStatus::error)
        co_return Answer{.verdict = Verdict::notBought};
    if (found->labelUrl.value_or(QString()).isEmpty())
        co_return Answer{.text = u"The carrier accepted the purchase, but the label is not ready yet "
                                 "(transaction %1)."_s.arg(found->objectId),
                         .isInconclusive = true};
    co_return Answer{.verdict = Verdict::bought, .transaction = found};
}

void Purchases::markUnresolved(const OpenPurchase &purchase, const Answer &answer)
{
    replaceUnresolved(purchase.id, UnresolvedPurchase{purchase, answer.text, answer.isInconclusive,
                                                      m_app.platform.clock.steadyNow()});
    m_pause = firstPause;
    askLater();
}

void Purchases::askLater()
{
    m_app.platform.clock.cancel(m_timer);
    m_timer = m_app.platform.clock.after(m_pause, [this] { spawn([this] { return checkAgain(); }); });
    m_pause = std::min(m_pause * 2, longestPause);
}

/// The next check tries again if the journal cannot be opened.
Task<> Purchases::loadIfPossible()
{
    if (m_isLoaded)
        co_return;
    try {
        co_await load();
    } catch (const AppError &) {
    }
}

Task<> Purchases::resume()
{
    co_await loadIfPossible();
    const QString trouble = co_await onPool(m_app.journal, &PurchaseJournal::trouble);
    co_await recheckAll();
    if (!trouble.isEmpty()) {
        m_app.errors.record(u"Purchase Journal"_s, AppError(trouble), Popup::no);
        co_await m_app.platform.prompts.alert(u"Purchase Journal"_s, trouble);
    }
}

Task<> Purchases::giveUp(OpenPurchase purchase)
{
    m_app.errors.record(
        u"Buy Label"_s,
        AppError(u"The outcome of this purchase was never found: %1, %2, rate %3."_s.arg(
            titleOf(purchase.record), purchase.askedAt.toLocalTime().toString(u"MMM d, yyyy"_s), purchase.rateId)),
        Popup::no);
    co_await close(purchase.id);
    replaceUnresolved(purchase.id, std::nullopt);
}

Task<> Purchases::checkAgain()
{
    co_await loadIfPossible();
    co_await recheckAll();
}

Task<> Purchases::recheckAll()
{
    if (checking)
        co_return;
    checking = true;
    const auto done = qScopeGuard([this] { checking = false; });
    const QList<UnresolvedPurchase> open = unresolved;
    for (const UnresolvedPurchase &pending : open)
        co_await recheck(pending);
    if (!m_isLoaded || !unresolved.value().isEmpty())
        askLater();
}

Task<> Purchases::recheck(UnresolvedPurchase pending)
{
    const OpenPurchase &purchase = pending.purchase;
    const Answer answer = co_await lookUp(purchase, pending.since);
    switch (answer.verdict) {
    case Verdict::unknown:
        if (answer.isInconclusive && purchase.askedAt.daysTo(m_app.platform.clock.now()) > mostDays)
            co_await giveUp(purchase);
        else
            replaceUnresolved(purchase.id,
                              UnresolvedPurchase{purchase, answer.text, answer.isInconclusive, pending.since});
        break;
    case Verdict::bought:
        co_await finish(pending, answer.transaction);
        break;
    case Verdict::notBought:
        co_await close(purchase.id);
        replaceUnresolved(purchase.id, std::nullopt);
        addResolved({.recipient = purchase.recipient,
                     .record = purchase.record,
                     .text = u"%1 was not bought, and nothing was charged."_s.arg(titleOf(purchase.record))});
        break;
    }
}

Task<> Purchases::finish(UnresolvedPurchase pending, std::optional<ShippoTransaction> transaction)
{
    OpenPurchase &purchase = pending.purchase;
    ShipmentRecord &record = purchase.record;
    if (transaction) {
        record.createdAt = purchase.askedAt;
        applyTransaction(record, *transaction);
    }
    if (!record.zpl)
        record.zpl = co_await fetch(record.labelURL);
    if (!record.customsPDF && !record.customsDocURL.isEmpty())
        record.customsPDF = co_await fetch(record.customsDocURL);
    co_await save(purchase);
    const bool logged = co_await enterIntoLog(purchase);
    if (!logged) {
        replaceUnresolved(purchase.id, UnresolvedPurchase{purchase, notLogged(record), true, pending.since});
        co_return;
    }
    if (purchase.keepRecipient)
        emit m_app.recipientToKeep(purchase.recipient);
    replaceUnresolved(purchase.id, std::nullopt);
    const QString whereabouts =
        purchase.printed ? u", and its label went to the printer"_s : u"; its label may not be printed yet"_s;
    const QString papers = record.isIntl
                               ? u" Check that its customs papers printed: Customs Docs in the log prints them again."_s
                               : QString();
    addResolved(
        {.recipient = purchase.recipient,
         .record = record,
         .isBought = true,
         .isPrinted = purchase.printed,
         .text = u"%1 was bought %2. It is in the mailing log%3.%4"_s.arg(
             titleOf(record), record.createdAt.toLocalTime().toString(u"MMM d, h:mm AP"_s), whereabouts, papers)});
}

/// A document that cannot be downloaded now is downloaded when it is printed.
Task<std::optional<QByteArray>> Purchases::fetch(QString url)
{
    std::optional<QByteArray> document;
    try {
        const QByteArray bytes = co_await m_app.shippo.downloadLabel(url);
        if (isWhole(bytes))
            document = bytes;
    } catch (const AppError &error) {
        m_app.errors.record(u"Fetch Label"_s, error, Popup::no);
    }
    co_return document;
}

/// Already reported as not logged; do not report again.
bool Purchases::isKnownUnlogged(qint64 id) const
{
    return std::ranges::any_of(unresolved.value(), [id](const UnresolvedPurchase &pending) {
        const OpenPurchase &purchase = pending.purchase;
        return purchase.id == id && pending.text == notLogged(purchase.record);
    });
}

void Purchases::replaceUnresolved(qint64 id, std::optional<UnresolvedPurchase> with)
{
    QList<UnresolvedPurchase> open = unresolved;
    const auto place =
        std::ranges::find_if(open, [id](const UnresolvedPurchase &pending) { return pending.purchase.id == id; });
    if (place == open.end() && with)
        open.append(*with);
    else if (place != open.end() && with)
        *place = *with;
    else if (place != open.end())
        open.erase(place);
    unresolved = open;
}

std::optional<UnresolvedPurchase> Purchases::unresolvedFor(const ShippoAddress &recipient) const
{
    for (const UnresolvedPurchase &pending : unresolved.value()) {
        if (isSameRecipient(pending.purchase.recipient, recipient))
            return pending;
    }
    return std::nullopt;
}

void Purchases::addResolved(const ResolvedPurchase &purchase)
{
    resolved = resolved.value() + QList{purchase};
}

void Purchases::dismiss(const ResolvedPurchase &label)
{
    QList<ResolvedPurchase> left = resolved;
    left.removeOne(label);
    resolved = left;
}

Task<> Purchases::print(ResolvedPurchase label)
{
    ResolvedPurchase after = label;
    const QString title = titleOf(label.record) + u": "_s;
    try {
        // Checked, because the label may be refunded or old by now. The first print of a new label shows no question.
        const QString printed = co_await reprintChecked(m_app, label.record);
        if (printed.isEmpty()) // canceled
            co_return;
        after.text = title + printed;
        after.isPrinted = true;
    } catch (const AppError &error) {
        after.text = title + error.description();
        recordReprintFailure(m_app, error);
    }
    QList<ResolvedPurchase> all = resolved;
    std::ranges::replace(all, label, after);
    resolved = all;
}

} // namespace parcelory
