#include "app/label/AccountLabels.h"

#include "app/label/LabelScreen.h"
#include "carrier/CarrierWords.h"
#include "carrier/PurchaseTag.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/IsoDate.h"
#include "core/StaleCheck.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// True if the label was bought and not given back.
bool isInUse(const ShippoTransaction &label)
{
    switch (transactionStatus(label)) {
    case TransactionStatus::error:
    case TransactionStatus::refunded:
    case TransactionStatus::refundPending:
        return false;
    default:
        return true;
    }
}

} // namespace

bool AccountLabels::isOld(const QDateTime &steadyNow, int keyChanges) const
{
    constexpr qint64 secondsBetween = 60;
    return key != keyChanges || !askedAt.isValid() || askedAt.secsTo(steadyNow) >= secondsBetween;
}

QList<ShipmentRecord> AccountLabels::boughtFor(const ShippoAddress &recipient, const QDateTime &now) const
{
    QList<ShipmentRecord> labels;
    const PurchaseTag wanted = PurchaseTag::of({}, recipient, Carrier::usps, {});
    const QString name = wanted.recipient.simplified();
    for (const ShippoTransaction &sale : newest) {
        const std::optional<PurchaseTag> tag = PurchaseTag::read(sale.metadata.value_or(QString()));
        const std::optional<QDateTime> bought = parseIso(sale.objectCreated.value_or(QString()));
        if (name.isEmpty() || !tag || !bought || !isInUse(sale) || tag->country != wanted.country ||
            tag->recipient.simplified().compare(name, Qt::CaseInsensitive) != 0 ||
            bought->toLocalTime().date() != now.date())
            continue;
        ShipmentRecord label{.createdAt = bought->toLocalTime(), .carrier = {}, .service = tag->service};
        label.tracking = sale.trackingNumber.value_or(QString());
        label.transactionID = sale.objectId;
        label.testMode = sale.test.value_or(false);
        labels.append(label);
    }
    return labels;
}

/// Asks what other desks have bought. Nothing waits for the answer, and without it the log of this desk is still
/// searched.
Task<> LabelScreen::askOtherDesks()
{
    const QPointer alive(&m_lifetime);
    const int key = m_app.keyChanges;
    const QDateTime now = m_app.platform.clock.steadyNow();
    if (!m_account.isOld(now, key))
        co_return;
    if (m_account.key != key)
        m_account.newest.clear(); // labels of the other key
    m_account.askedAt = now;
    m_account.key = key;
    const auto isOver = staleCheck(m_app.keyChanges);
    try {
        const QList<ShippoTransaction> newest = co_await m_app.shippo.newestPurchases();
        if (!alive || isOver())
            co_return;
        m_account.newest = newest;
    } catch (const AppError &) {
        co_return;
    }
    watchForSecondLabel();
}

} // namespace parcelory
