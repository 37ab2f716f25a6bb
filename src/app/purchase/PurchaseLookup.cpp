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

bool hasLabel(const ShippoTransaction &sale)
{
    return !sale.labelUrl.value_or(QString()).isEmpty();
}

/// The sales of a purchase, first the sale with a label. More than one if the request reached the carrier twice,
/// because a machine on the way repeated it.
Task<QList<ShippoTransaction>> findSales(AppState &app, OpenPurchase purchase)
{
    const auto hasFailed = [](const ShippoTransaction &sale) {
        return transactionStatus(sale) == TransactionStatus::error;
    };
    const QString knownId = purchase.record.transactionID;
    std::optional<ShippoTransaction> known;
    if (!knownId.isEmpty()) {
        known = co_await app.shippo.transaction(knownId);
        if (!hasFailed(*known) || purchase.rateId.isEmpty())
            co_return {*known};
    }
    QList<ShippoTransaction> sold =
        co_await app.shippo.purchasesOf(purchase.rateId, purchase.askedAt, purchase.ratedAt);
    // A failed transaction may be an earlier attempt at the same rate, or the first of a repeated request.
    sold.removeIf(hasFailed);
    if (known && sold.isEmpty())
        co_return {*known};
    if (const auto labeled = std::ranges::find_if(sold, hasLabel); labeled != sold.end())
        std::rotate(sold.begin(), labeled, labeled + 1);
    co_return sold;
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
            .text = u"This label was requested with the %1 key “%2”. Choose that key in Settings to check it."_s.arg(
                known.testMode ? u"TEST"_s : u"LIVE"_s, purchase.keyName),
            .isInconclusive = true};
    if (purchase.rateId.isEmpty() && known.transactionID.isEmpty())
        co_return LookupAnswer{.text = u"Parcelory can't read which rate this was, so it can't ask the carrier."_s,
                               .isInconclusive = true};
    const QList<ShippoTransaction> sales = co_await findSales(app, purchase);
    const auto found = sales.isEmpty() ? std::nullopt : std::optional(sales.first());
    if (!found && ShippoClient::mayStillArrive(since, app.platform.clock.steadyNow()))
        co_return LookupAnswer{.text = u"The carrier has no such label yet."_s, .isInconclusive = true};
    if (!found || transactionStatus(*found) == TransactionStatus::error)
        co_return LookupAnswer{.verdict = notBought};
    if (!hasLabel(*found))
        co_return LookupAnswer{.transaction = found,
                               .text = u"The carrier accepted the purchase, but the label is not ready yet."_s,
                               .isInconclusive = true};
    co_return LookupAnswer{.verdict = bought, .transaction = found, .seconds = sales.sliced(1)};
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
