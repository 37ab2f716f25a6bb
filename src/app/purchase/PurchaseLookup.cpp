#include "app/purchase/PurchaseLookup.h"

#include "app/AppState.h"
#include "carrier/CarrierWords.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoRecords.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "records/PurchaseJournal.h"

#include <algorithm>
#include <optional>

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

Task<std::optional<ShippoTransaction>> findSale(AppState &app, OpenPurchase purchase)
{
    const QString known = purchase.record.transactionID;
    if (!known.isEmpty())
        co_return co_await app.shippo.transaction(known);
    const QList<ShippoTransaction> sold = co_await app.shippo.purchasesOf(purchase.rateId, purchase.askedAt);
    // A failed transaction may be an earlier attempt at the same rate.
    const auto sale = std::ranges::find_if(sold, [](const ShippoTransaction &transaction) {
        return transactionStatus(transaction) != TransactionStatus::error;
    });
    co_return sale == sold.end() ? std::nullopt : std::optional(*sale);
}

Task<LookupAnswer> evaluate(AppState &app, OpenPurchase purchase, QDateTime since)
{
    using enum LookupAnswer::Verdict;
    const ShipmentRecord &known = purchase.record;
    if (!known.labelURL.isEmpty()) // the carrier's response arrived; only the log entry is missing
        co_return LookupAnswer{.verdict = bought};
    const QString token = co_await onPool([&keys = app.keys] { return keys.activeToken().value_or(QString()); });
    const bool sameKey = app.keys.activeName() == purchase.keyName && ShippoKeys::isTest(token) == known.testMode;
    if (!sameKey) // inconclusive, because that key may be gone for good
        co_return LookupAnswer{
            .text = u"It was requested with the %1 key “%2” — choose that key in Settings to check."_s.arg(
                known.testMode ? u"TEST"_s : u"LIVE"_s, purchase.keyName),
            .isInconclusive = true};
    const std::optional<ShippoTransaction> found = co_await findSale(app, purchase);
    if (!found && ShippoClient::mayStillArrive(since, app.platform.clock.steadyNow()))
        co_return LookupAnswer{.text = u"The carrier knows of no such label yet."_s, .isInconclusive = true};
    if (!found || transactionStatus(*found) == TransactionStatus::error)
        co_return LookupAnswer{.verdict = notBought};
    if (found->labelUrl.value_or(QString()).isEmpty())
        co_return LookupAnswer{.text = u"The carrier accepted the purchase, but the label is not ready yet "
                                       "(transaction %1)."_s.arg(found->objectId),
                               .isInconclusive = true};
    co_return LookupAnswer{.verdict = bought, .transaction = found};
}

} // namespace

Task<LookupAnswer> lookUpPurchase(AppState &app, OpenPurchase purchase, QDateTime since)
{
    LookupAnswer answer;
    try {
        answer = co_await evaluate(app, purchase, since);
    } catch (const AppError &error) {
        answer.text = error.description();
        answer.isInconclusive = isLastWord(error);
    }
    co_return answer;
}

} // namespace parcelory
