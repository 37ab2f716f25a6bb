#include "app/purchase/Purchases.h"

#include "app/purchase/CustomsPapers.h"
#include "app/purchase/LabelPrinting.h"
#include "app/purchase/PurchaseFlow.h"
#include "app/purchase/PurchaseLookup.h"
#include "app/purchase/PurchaseTexts.h"
#include "app/purchase/ReprintCheck.h"
#include "carrier/ShippoClient.h"
#include "carrier/ShippoRecords.h"
#include "compose/SecondLabel.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "records/PurchaseJournal.h"
#include "records/ShipmentRecord.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString journalContext = u"Purchase Journal"_s;
constexpr int mostDays = 30;   ///< an unresolved purchase that is older is given up
constexpr int enoughLooks = 3; ///< lookups in vain after which buying is enabled again

} // namespace

Purchases::~Purchases()
{
    m_app.platform.clock.cancel(m_timer);
    m_app.platform.clock.cancel(m_secondsTimer);
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
    m_isJournalNew = true;
    const QDateTime now = m_app.platform.clock.steadyNow();
    for (const OpenPurchase &purchase : open)
        replaceUnresolved(purchase.id,
                          UnresolvedPurchase{.purchase = purchase, .text = u"Asking the carrier…"_s, .since = now});
}

/// Lists the purchases that a restored copy of the journal has brought.
Task<> Purchases::resumeRestored()
{
    const QDateTime now = m_app.platform.clock.steadyNow();
    try {
        const QList<OpenPurchase> open = co_await onPool(m_app.journal, &PurchaseJournal::openPurchases);
        for (const OpenPurchase &purchase : open) {
            if (!isListed(purchase.id))
                replaceUnresolved(
                    purchase.id,
                    UnresolvedPurchase{.purchase = purchase, .text = u"Asking the carrier…"_s, .since = now});
        }
    } catch (const AppError &error) {
        m_app.errors.record(journalContext, error, Popup::yes);
    }
    co_await resume();
}

bool Purchases::isListed(qint64 id) const
{
    return std::ranges::any_of(unresolved.value(),
                               [id](const UnresolvedPurchase &listed) { return listed.purchase.id == id; });
}

Task<qint64> Purchases::begin(OpenPurchase purchase)
{
    if (!m_isLoaded) { // the journal could not be opened at the start
        co_await load();
        askLater();
    }
    // The list may have been loaded since the button was pressed.
    if (const std::optional<UnresolvedPurchase> pending = unresolvedFor(purchase.recipient);
        pending && !pending->isInconclusive)
        throw AppError(u"We don't know yet if this recipient's last label was bought. Parcelory is asking the "
                       "carrier. No second label was bought."_s);
    co_return co_await m_flow.begin(purchase);
}

void Purchases::markUnresolved(const OpenPurchase &purchase, const LookupAnswer &answer)
{
    replaceUnresolved(purchase.id, UnresolvedPurchase{.purchase = purchase,
                                                      .text = answer.text,
                                                      .isInconclusive = answer.isInconclusive,
                                                      .isUnlogged = answer.isUnlogged,
                                                      .since = m_app.platform.clock.steadyNow()});
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
    // The last run may have ended within the minute in which a repeated request still arrives.
    m_looksForSeconds = !m_app.keys.activeName().isEmpty();
    co_await checkAgain();
}

/// What the clerk must know about the journal and was not told yet. A journal that is opened late may be damaged.
Task<QString> Purchases::newTrouble()
{
    if (!std::exchange(m_isJournalNew, false))
        co_return QString();
    const QString trouble = co_await onPool(m_app.journal, &PurchaseJournal::trouble);
    co_return std::exchange(m_toldTrouble, trouble) == trouble ? QString() : trouble;
}

Task<> Purchases::giveUp(OpenPurchase purchase)
{
    m_app.errors.record(u"Buy Label"_s,
                        AppError(u"Parcelory never found out whether this label was bought: %1, %2, rate %3."_s.arg(
                            PurchaseTexts::title(purchase.record),
                            purchase.askedAt.toLocalTime().toString(u"MMM d, yyyy"_s), purchase.rateId)),
                        Popup::no);
    co_await m_flow.closeAsSold(purchase);
    replaceUnresolved(purchase.id, std::nullopt);
}

Task<> Purchases::resolveByHand(qint64 id, ByHand outcome)
{
    const QList<UnresolvedPurchase> open = unresolved;
    const auto pending =
        std::ranges::find_if(open, [id](const UnresolvedPurchase &purchase) { return purchase.purchase.id == id; });
    if (pending == open.end())
        co_return;
    const OpenPurchase purchase = pending->purchase;
    const bool haveLabel = outcome == ByHand::haveLabel;
    const int answer = co_await m_app.platform.prompts.choose(
        {.title = haveLabel ? u"You Have This Label?"_s : u"This Label Was Not Bought?"_s,
         .text = PurchaseTexts::title(purchase.record) +
                 (haveLabel ? u"\n\nParcelory stops checking. The label is not in the mailing log: find it in the "
                              "Master Log."_s
                            : u"\n\nParcelory stops checking. If the label was bought after all, it is paid for and "
                              "not in the mailing log."_s),
         .choices = {u"Keep Checking"_s, haveLabel ? u"I Have the Label"_s : u"It Was Not Bought"_s},
         .safeChoice = 0});
    if (answer != 1)
        co_return;
    m_app.errors.record(u"Buy Label"_s,
                        AppError((haveLabel ? u"Resolved by hand, the clerk has the label: %1, rate %2."_s
                                            : u"Resolved by hand, not bought: %1, rate %2."_s)
                                     .arg(PurchaseTexts::title(purchase.record), purchase.rateId)),
                        Popup::no);
    if (haveLabel)
        co_await m_flow.closeAsSold(purchase);
    else
        co_await m_flow.close(id);
    replaceUnresolved(id, std::nullopt);
    emit purchaseResolved(
        {.id = id, .recipient = purchase.recipient, .record = purchase.record, .isBought = haveLabel});
}

Task<> Purchases::checkAgain()
{
    co_await loadIfPossible();
    const QString trouble = co_await newTrouble();
    co_await recheckAll();
    if (trouble.isEmpty())
        co_return;
    m_app.errors.record(journalContext, AppError(trouble), Popup::no);
    co_await m_app.platform.prompts.alert(journalContext, trouble);
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
    if (std::exchange(m_looksForSeconds, false))
        co_await lookForSeconds();
    if (!m_isLoaded || m_looksForSeconds || !unresolved.value().isEmpty())
        askLater();
}

Task<> Purchases::recheck(UnresolvedPurchase pending)
{
    const OpenPurchase &purchase = pending.purchase;
    const QDateTime steadyNow = m_app.platform.clock.steadyNow();
    const LookupAnswer answer = co_await lookUpPurchase(m_app, purchase, pending.since);
    const bool isResolvedByHand = !isListed(purchase.id);
    if (isResolvedByHand && answer.verdict != LookupAnswer::Verdict::bought)
        co_return;
    switch (answer.verdict) {
    case LookupAnswer::Verdict::unknown:
        if (mayGiveUp(pending, answer)) {
            co_await giveUp(purchase);
            break;
        }
        pending.purchase = co_await m_flow.noted(purchase, answer);
        if (!isListed(purchase.id)) // resolved by hand meanwhile
            break;
        pending.text = answer.text;
        ++pending.looks;
        // A lost request has arrived by now, or never will. If the carrier still cannot tell, waiting does not help.
        pending.isInconclusive = answer.isInconclusive || (pending.looks >= enoughLooks &&
                                                           !ShippoClient::mayStillArrive(pending.since, steadyNow));
        replaceUnresolved(purchase.id, pending);
        break;
    case LookupAnswer::Verdict::bought:
        co_await finish(pending, answer);
        break;
    case LookupAnswer::Verdict::notBought:
        co_await m_flow.close(purchase.id);
        replaceUnresolved(purchase.id, std::nullopt);
        addResolved(
            {.id = purchase.id,
             .recipient = purchase.recipient,
             .record = purchase.record,
             .text = u"%1 was not bought, and nothing was charged."_s.arg(PurchaseTexts::title(purchase.record))});
        break;
    }
}

/// Not at the first looks, nor without the carrier's answer, nor while the carrier may still sell the label: the day is
/// the desk's clock's.
bool Purchases::mayGiveUp(const UnresolvedPurchase &pending, const LookupAnswer &answer) const
{
    const Clock &clock = m_app.platform.clock;
    const OpenPurchase &purchase = pending.purchase;
    const QDateTime begun = purchase.ratedAt.isValid() ? purchase.ratedAt : purchase.askedAt;
    return answer.isInconclusive && !answer.transaction && pending.looks >= enoughLooks &&
           !ShippoClient::mayStillArrive(pending.since, clock.steadyNow()) &&
           begun.toLocalTime().daysTo(clock.now()) > mostDays;
}

Task<> Purchases::finish(UnresolvedPurchase pending, LookupAnswer answer)
{
    const std::optional<ShippoTransaction> &transaction = answer.transaction;
    OpenPurchase purchase = pending.purchase;
    const PapersResult drawn{.outcome = purchase.record.customsPDF ? PapersOutcome::kept : PapersOutcome::none,
                             .document = purchase.record.customsPDF};
    const PurchaseResult result = co_await m_flow.complete(purchase, transaction, {.drawn = drawn}, answer.seconds);
    watchForSeconds(result);
    const ShipmentRecord &record = result.entry.record;
    if (!result.isLogged) {
        pending.purchase = result.entry;
        pending.text = PurchaseTexts::notLogged(record);
        pending.isInconclusive = true;
        pending.isUnlogged = true;
        replaceUnresolved(purchase.id, pending);
        co_return;
    }
    replaceUnresolved(purchase.id, std::nullopt);
    addResolved({.id = purchase.id,
                 .recipient = purchase.recipient,
                 .record = record,
                 .isBought = true,
                 .isPrinted = result.entry.printed,
                 .text = PurchaseTexts::foundLater(result)});
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
        if (!pending.purchase.recipient.isEmpty() && isSameRecipient(pending.purchase.recipient, recipient))
            return pending;
    }
    return std::nullopt;
}

void Purchases::addResolved(const ResolvedPurchase &purchase)
{
    resolved = resolved.value() + QList{purchase};
    emit purchaseResolved(purchase);
}

void Purchases::watchForSeconds(const PurchaseResult &result)
{
    showSeconds(result.seconds);
    lookForSecondsLater();
}

void Purchases::showSeconds(const QList<ShipmentRecord> &seconds)
{
    for (const ShipmentRecord &record : seconds)
        addResolved({.id = -(++m_seconds),
                     .record = record,
                     .isBought = true,
                     .isSecond = true,
                     .text = PurchaseTexts::boughtTwice(record)});
}

/// A repeated request has arrived at the carrier by then. One look serves all purchases of that minute.
void Purchases::lookForSecondsLater()
{
    if (m_secondsTimer != 0)
        return;
    m_secondsTimer = m_app.platform.clock.after(ShippoClient::arrivalTime + std::chrono::seconds(1), [this] {
        m_secondsTimer = 0;
        m_looksForSeconds = true;
        spawn([this] { return checkAgain(); });
    });
}

Task<> Purchases::lookForSeconds()
{
    try {
        const QList<ShipmentRecord> seconds = co_await m_flow.logRepeatedSales();
        showSeconds(seconds);
    } catch (const AppError &) {
        lookForSecondsLater();
    }
}

void Purchases::dismiss(ResolvedPurchase label)
{
    QList<ResolvedPurchase> left = resolved;
    left.removeOne(label);
    resolved = left;
}

/// A second label waits for its refund only.
void Purchases::forgetResolved(const QString &transactionId, bool isRefunded)
{
    QList<ResolvedPurchase> left = resolved;
    left.removeIf([&](const ResolvedPurchase &label) {
        return label.isBought && (isRefunded || !label.isSecond) && label.record.transactionID == transactionId;
    });
    resolved = left;
}

Task<> Purchases::print(ResolvedPurchase label)
{
    if (printing)
        co_return;
    const QString title = PurchaseTexts::title(label.record) + u": "_s;
    printing = true;
    const auto done = qScopeGuard([this] { printing = false; });
    try {
        // Checked, because the label may be refunded or old by now. The first print of a new label shows no question.
        const QString printed = co_await reprintChecked(m_app, label.record);
        if (printed.isEmpty()) // canceled
            co_return;
        dismiss(label);
        emit resolvedPrinted(label.record.transactionID, title + printed);
        co_return;
    } catch (const AppError &error) {
        recordReprintFailure(m_app, error);
        ResolvedPurchase after = label;
        after.text = title + error.description();
        QList<ResolvedPurchase> all = resolved;
        std::ranges::replace(all, label, after);
        resolved = all;
    }
}

} // namespace parcelory
