#include "carrier/MasterEntry.h"

#include "carrier/CarrierWords.h"
#include "carrier/PurchaseTag.h"
#include "carrier/ShippoRecords.h"
#include "core/IsoDate.h"
#include "core/Text.h"

#include <QHash>

#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// A bought rate and its shipment.
struct BoughtRate {
    const ShippoShipmentListed *shipment = nullptr;
    const ShippoRate *rate = nullptr;
};

QHash<QString, BoughtRate> ratesById(const QList<ShippoShipmentListed> &shipments)
{
    QHash<QString, BoughtRate> index;
    for (const ShippoShipmentListed &shipment : shipments) {
        if (!shipment.rates)
            continue;
        for (const ShippoRate &rate : *shipment.rates)
            index.insert(rate.objectId, {&shipment, &rate});
    }
    return index;
}

QString orElse(const QString &text, const QString &other)
{
    return text.trimmed().isEmpty() ? other : text;
}

QString serviceOf(const ShippoRate &rate)
{
    const QString carrier = orElse(rate.provider, u"Unknown"_s);
    return joinPresent({carrier, rate.servicelevel.name.value_or(QString())}, u" "_s);
}

MasterEntry entryOf(const ShippoTransaction &transaction, const BoughtRate &bought)
{
    // The account lists a shipment under the day of its rating, which may be before the listed days if the label was
    // bought later. Then the tag of the purchase supplies the data.
    const auto tag = PurchaseTag::read(transaction.metadata.value_or(QString())).value_or(PurchaseTag{});
    ShippoShipmentListed::Address to;
    if (bought.shipment && bought.shipment->addressTo)
        to = *bought.shipment->addressTo;
    MasterEntry entry{.id = transaction.objectId, .status = transaction.status};
    entry.recipient = orElse(orElse(to.name.value_or(QString()), tag.recipient), u"—"_s);
    entry.company = orElse(to.company.value_or(QString()), u"—"_s);
    entry.place = joinPresent({to.city.value_or(QString()), to.state.value_or(QString())}, u", "_s);
    entry.country = orElse(to.country.value_or(QString()), tag.country);
    const ShippoKnownRate known = transaction.rateObject.value_or(ShippoKnownRate{});
    const QString knownService =
        joinPresent({known.provider.value_or(QString()), known.service.value_or(QString())}, u" "_s);
    entry.service = bought.rate ? serviceOf(*bought.rate) : orElse(tag.service, orElse(knownService, u"Unknown"_s));
    entry.amount = decimalOrZero(bought.rate ? bought.rate->amount : known.amount.value_or(QString()));
    entry.tracking = transaction.trackingNumber.value_or(QString());
    entry.trackingURL = transaction.trackingUrlProvider.value_or(QString());
    entry.labelURL = transaction.labelUrl.value_or(QString());
    entry.office = tag.office;
    entry.test = transaction.test.value_or(false);
    return entry;
}

} // namespace

QString statusDisplay(const QString &status)
{
    switch (transactionStatusFrom(status)) {
    case TransactionStatus::success:
        return u"Printed"_s;
    case TransactionStatus::refunded:
        return u"Refunded"_s;
    case TransactionStatus::refundPending:
        return u"Refund Pending"_s;
    case TransactionStatus::queued:
    case TransactionStatus::waiting:
        return u"Processing"_s;
    case TransactionStatus::unknown:
    case TransactionStatus::error:
    case TransactionStatus::refundRejected:
        break;
    }
    return status;
}

QList<MasterEntry> masterEntries(const QList<ShippoTransaction> &transactions,
                                 const QList<ShippoShipmentListed> &shipments, const QDateTime &start,
                                 const QDateTime &end)
{
    const QHash<QString, BoughtRate> rates = ratesById(shipments);
    std::multimap<QDateTime, MasterEntry, std::greater<>> byDate; // equal times keep the carrier's order
    for (const ShippoTransaction &transaction : transactions) {
        const std::optional<QDateTime> date = parseIso(transaction.objectCreated.value_or(QString()));
        if (transactionStatus(transaction) == TransactionStatus::error || !date || *date < start || *date >= end)
            continue;
        MasterEntry entry = entryOf(transaction, rates.value(transaction.rate.value_or(QString())));
        entry.date = date->toLocalTime();
        byDate.emplace(*date, std::move(entry));
    }
    QList<MasterEntry> entries;
    for (const auto &[date, entry] : byDate)
        entries.append(entry);
    return entries;
}

} // namespace parcelory
