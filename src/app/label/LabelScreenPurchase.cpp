#include "app/label/LabelScreen.h"
#include "app/label/PreparedPurchase.h"
#include "app/label/SpendGuard.h"
#include "app/purchase/CustomsPapers.h"
#include "app/purchase/LabelPrinting.h"
#include "app/purchase/PurchaseFlow.h"
#include "app/purchase/PurchaseLookup.h"
#include "app/purchase/PurchaseTexts.h"
#include "app/purchase/Purchases.h"
#include "carrier/ShippoRecords.h"
#include "compose/SecondLabel.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/StaleCheck.h"
#include "core/Task.h"
#include "core/Text.h"
#include "records/ShipmentLog.h"
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

/// "the queue ZD421 is paused" as "The queue ZD421 is paused."; a print tool's text may end with a line break.
QString asSentence(const QString &reason)
{
    const QString said = reason.trimmed(), text = said.left(1).toUpper() + said.mid(1);
    return text.isEmpty() || text.endsWith(u'.') ? text : text + u'.';
}

/// "Label sent to ZD421 · 9:29 PM", or why it was not printed.
QString messageOf(const LabelResult &label, const QDateTime &now)
{
    const QString sentence = asSentence(label.text);
    return !label.isPrinted || sentence.isEmpty()
               ? sentence
               : sentence.chopped(1) + u" · "_s + QLocale::c().toString(now.toLocalTime(), u"h:mm AP"_s);
}

} // namespace

/// Clears what is still on the screen of a parcel that turned out to be sold, so that it is not sold again.
void LabelScreen::takeResolved(const ResolvedPurchase &resolved)
{
    if (resolved.isBought) {
        forgetSoldUndo(resolved.recipient);
        last.takeLogged(resolved.record.transactionID);
        const RefundState refund = refundState(resolved.record);
        if (refund == RefundState::granted || refund == RefundState::pending)
            last.takeRefund(resolved.record.transactionID);
    }
    if (!m_unresolved.contains(resolved.id))
        return; // a purchase of an earlier run: nothing of it is on the screen
    const PreparedPurchase purchase = m_unresolved.take(resolved.id);
    if (buying || purchase.edits != edits || purchase.parcel.reference != reference.value())
        return; // the clerk has begun another parcel
    banner = std::nullopt;
    if (resolved.isBought)
        clearSold(purchase);
}

SecondLabelFacts LabelScreen::secondLabelFacts() const
{
    return {.recipient = m_app.draftTo,
            .reference = reference.value().simplified(),
            .invoiceTracking = invoiceTracking(),
            .lastOutcomeUnknown = purchases.unresolvedFor(m_app.draftTo).has_value(),
            .now = m_app.platform.clock.now(),
            .earlier = {},
            .elsewhere = m_account.boughtFor(m_app.draftTo, m_app.platform.clock.now())};
}

/// The warning has to be beside the price before the clerk presses the button. During a purchase, the label that is
/// being bought would be found.
void LabelScreen::watchForSecondLabel()
{
    ++m_secondLabelLooks;
    if (!selectedRate() || buying)
        return;
    spawn([this, alive = QPointer(&m_lifetime)]() -> Task<> {
        const auto isOver = staleCheck(edits, m_secondLabelLooks);
        const SecondLabelFacts facts = secondLabelFacts();
        const bool testMode = co_await hasTestKey();
        if (!alive)
            co_return;
        const QString warning = co_await secondLabelWarning(facts, testMode);
        if (alive && !isOver() && facts.reference == reference.value().simplified() && selectedRate())
            showSecondLabel(warning, secondLabelAgreed && warning == secondLabel.value());
    });
}

Task<bool> LabelScreen::hasTestKey()
{
    const QString token = co_await onPool([&keys = m_app.keys] { return keys.activeToken().value_or(QString()); });
    co_return ShippoKeys::isTest(token);
}

/// Shows what would make the purchase a second label. The button says something else then, so for a moment it takes no
/// press: the second click of a double click was meant for the button as it was.
void LabelScreen::showSecondLabel(const QString &warning, bool agreed)
{
    const bool changes = warning != secondLabel.value() || agreed != secondLabelAgreed.value();
    secondLabel = warning;
    secondLabelAgreed = agreed;
    if (changes && !warning.isEmpty())
        pauseBuy();
}

void LabelScreen::pauseBuy()
{
    endBuyPause();
    m_buyTimer = m_app.platform.clock.after(buyPause, [this] { m_buyTimer = 0; });
}

void LabelScreen::endBuyPause()
{
    m_app.platform.clock.cancel(std::exchange(m_buyTimer, 0));
}

Task<QString> LabelScreen::secondLabelWarning(SecondLabelFacts facts, bool testMode)
{
    const QPointer alive(&m_lifetime);
    const auto isListed = [](const QList<ShipmentRecord> &labels, const ShipmentRecord &label) {
        return std::ranges::find(labels, label.transactionID, &ShipmentRecord::transactionID) != labels.end();
    };
    const auto isWanted = [facts, isListed](const ShipmentRecord &label) {
        return isLabelFor(facts.recipient, label) || isListed(facts.elsewhere, label);
    };
    const auto earlier = co_await onPool([&log = m_app.log, facts, testMode, isWanted] {
        return log.labelsLike(facts.reference, facts.now.date().startOfDay(), testMode, isWanted);
    });
    facts.earlier = earlier.valueOr({});
    facts.isLogUnreadable = !earlier.isRead();
    // Without the log, and while a purchase is unresolved, a label of this desk could be taken for another desk's.
    const bool isUnsure = facts.isLogUnreadable || facts.lastOutcomeUnknown;
    facts.elsewhere.removeIf([&](const ShipmentRecord &label) {
        return isUnsure || label.testMode != testMode || isListed(facts.earlier, label);
    });
    // The warning is renewed at every edit; only another failure is recorded again.
    const QString failure = earlier.isRead() ? QString() : earlier.failure();
    if (alive && failure != std::exchange(m_logFailure, failure) && !failure.isEmpty())
        m_app.errors.record(u"Buy Label"_s, AppError(failure), Popup::no);
    co_return secondLabelReasons(facts).join(u'\n');
}

Task<> LabelScreen::buyAndPrint()
{
    const std::optional<ShippoRate> rate = selectedRate();
    if (busy || !rate || isBuyClosed() || awaitsFill() || m_buyTimer != 0)
        co_return;
    const SpendGuard guard = SpendGuard::of(m_app.platform.preferences);
    if (const QString lack = guard.lackOf(reference, *rate); !lack.isEmpty()) {
        warnUntilEdit(lack, DraftField::reference);
        co_return;
    }
    const QString question = guard.question(*rate, rates);
    const QString openQuestion = question == spendQuestion.value() ? QString() : question;
    m_app.lastChange.forget(m_fillChange);
    m_buyingFor = m_app.draftTo;
    busy = true; // in the same event as the press: a second press finds it set
    buying = true;
    m_purchaseComplete = false;
    const auto done = qScopeGuard([this] {
        buying = false;
        busy = false;
    });
    m_otherNews = std::nullopt;
    banner = std::nullopt;
    PreparedPurchase purchase = preparePurchase(*this, m_app, *rate, secondLabelFacts());
    const QString agreedWarning = secondLabelAgreed ? secondLabel.value() : QString();
    const bool testMode = co_await hasTestKey();
    purchase.entry.record.testMode = testMode;
    const bool agreed = co_await mayBuy(purchase, testMode, agreedWarning, openQuestion);
    if (agreed)
        co_await buy(purchase);
}

/// True for a parcel's first label, and for a second label that the clerk has agreed to, once the spend guard has no
/// open question. Judges the purchase as it was prepared, whatever is on the screen by now.
Task<bool> LabelScreen::mayBuy(PreparedPurchase purchase, bool testMode, QString agreedWarning, QString openQuestion)
{
    const QString warning = co_await secondLabelWarning(purchase.facts, testMode);
    if (openQuestion.isEmpty() && (warning.isEmpty() || warning == agreedWarning)) {
        if (!warning.isEmpty() && purchase.facts.lastOutcomeUnknown)
            m_app.errors.record(u"Buy Label"_s,
                                AppError(u"Bought although an earlier purchase is unresolved: %1."_s.arg(
                                    PurchaseTexts::title(purchase.entry.record))),
                                Popup::no);
        co_return true;
    }
    if (purchase.edits != edits) {
        warn(u"The label for %1 was not bought — the form was changed meanwhile: %2"_s.arg(
            purchase.to.name, joinPresent({warning, openQuestion}, u"\n"_s)));
    } else {
        showSecondLabel(warning, !warning.isEmpty());
        if (!openQuestion.isEmpty()) {
            spendQuestion = openQuestion;
            pauseBuy();
        }
    }
    co_return false;
}

Task<> LabelScreen::buy(PreparedPurchase purchase)
{
    OpenPurchase &entry = purchase.entry;
    PapersResult drawn;
    noteHabits();
    if (entry.record.isIntl && purchase.carrier == Carrier::usps) { // only the draft has what the invoice needs
        drawn = co_await m_papers.drawInvoice(purchase.invoice);
        entry.record.customsPDF = drawn.document;
    }
    try {
        entry.id = co_await purchases.begin(entry);
    } catch (const AppError &error) {
        fail(u"Buy Label"_s, error);
        co_return;
    }
    SaleResult sale = co_await purchases.flow().request(entry, purchase.tag());
    if (sale.kind == SaleResult::Kind::unknown) {
        clearRates(); // buying again requires new rates, and thereby a moment's thought
        warn(sale.text + u" Checking whether the label was bought…"_s);
        sale = co_await purchases.flow().lookFor(sale);
    }
    entry = sale.entry;
    if (sale.kind == SaleResult::Kind::sold) {
        co_await finishPurchase(purchase, sale, drawn);
        co_return;
    }
    warn(sale.text);
    tellOutcome(purchase, {sale.text, false});
    if (sale.kind == SaleResult::Kind::unknown)
        markUnresolved(purchase, sale.answer);
}

void LabelScreen::markUnresolved(const PreparedPurchase &purchase, const LookupAnswer &answer)
{
    m_unresolved.insert(purchase.entry.id, purchase);
    purchases.markUnresolved(purchase.entry, answer);
}

Task<> LabelScreen::finishPurchase(PreparedPurchase purchase, SaleResult sale, PapersResult drawn)
{
    m_soldWeight = std::max(m_soldWeight, purchase.weighed);
    purchase.entry.record.createdAt = m_app.platform.clock.now();
    const PurchaseResult result = co_await purchases.flow().complete(
        purchase.entry, sale.transaction, {.prints = true, .drawn = drawn}, sale.answer.seconds);
    purchases.watchForSeconds(result);
    m_purchaseComplete = result.isComplete();
    purchase.entry = result.entry;
    if (!result.hasLabel) {
        const QString text = u"Purchase succeeded but no label URL was returned."_s;
        clearRates();
        warn(text);
        markUnresolved(purchase, {.text = text, .isInconclusive = true});
        m_app.errors.record(u"Buy Label"_s, AppError(text + u" Transaction "_s + purchase.entry.record.transactionID),
                            Popup::yes);
        co_return;
    }
    showSold(purchase, result);
    if (!result.isLogged)
        purchases.markUnresolved(
            result.entry,
            {.text = PurchaseTexts::notLogged(result.entry.record), .isInconclusive = true, .isUnlogged = true});
}

void LabelScreen::showSold(const PreparedPurchase &purchase, const PurchaseResult &result)
{
    const ShippoAddress &to = purchase.entry.recipient;
    const std::optional<DesklineInvoice> &invoice = m_app.scannedInvoice.value();
    if (invoice && invoice->invoiceID == purchase.parcel.reference.trimmed())
        m_app.invoiceSoldAt = result.entry.record.createdAt;
    if (result.isLogged)
        emit m_app.labelLogged(result.entry.record.transactionID);
    clearSold(purchase);
    last.show({joinPresent({to.name, trimBlanks(to.city + u' ' + to.state)}, u" · "_s), result.entry.record,
               messageOf(result.label, m_app.platform.clock.now()), result.label.isPrinted, result.verdict,
               result.isLogged});
    tellOutcome(purchase, {PurchaseTexts::successLine(result), result.isComplete(), Banner::Offer::none,
                           result.entry.record.transactionID});
}

void LabelScreen::tellOutcome(const PreparedPurchase &purchase, const Banner &outcome)
{
    banner = outcome;
    if (purchase.edits != edits && !m_app.draftTo.value().isEmpty())
        m_otherNews = outcome;
}

/// What is still as it was sold must not be sold again. What was typed since belongs to the next parcel.
void LabelScreen::clearSold(const PreparedPurchase &purchase)
{
    if (purchase.edits == edits) {
        forgetValidation();
        showIntlPaperwork = false;
        m_app.draftTo = ShippoAddress{};
    }
    clearParcel(purchase.parcel);
}

} // namespace parcelory
