#include "app/label/OfferedRates.h"

#include "carrier/ShippoRecords.h"
#include "compose/Services.h"
#include "core/Text.h"

#include <map>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

bool belongsTo(Carrier carrier, const ShippoRate &rate)
{
    if (carrier == Carrier::fedex)
        return rate.provider.toUpper().contains(u"FEDEX"_s);
    return rate.provider.compare(u"usps"_s, Qt::CaseInsensitive) == 0;
}

/// The carrier's own words; other carriers of the account send some, too.
QString reasonsOf(Carrier carrier, const ShippoShipment &shipment)
{
    QStringList reasons;
    for (const ShippoMessage &message : shipment.messages.value_or(QList<ShippoMessage>())) {
        const bool isOfCarrier =
            message.source.value_or(QString()).compare(carrierInfo(carrier).displayName, Qt::CaseInsensitive) == 0;
        const QString text = message.text.value_or(QString());
        if (isOfCarrier && !text.isEmpty() && !reasons.contains(text))
            reasons += text;
    }
    return reasons.join(u" • "_s);
}

} // namespace

QList<ShippoRate> offeredRates(Carrier carrier, const QList<ShippoRate> &all)
{
    std::multimap<double, ShippoRate> byPrice;
    for (const ShippoRate &rate : all) {
        if (belongsTo(carrier, rate))
            byPrice.emplace(decimalOrZero(rate.amount), rate);
    }
    QList<ShippoRate> offered;
    for (const auto &[price, rate] : byPrice)
        offered.append(rate);
    return offered;
}

QString noRatesText(Carrier carrier, const ShippoShipment &shipment)
{
    const QString sentence =
        carrier == Carrier::fedex
            ? u"No FedEx rates returned — is your FedEx account connected in the Shippo dashboard?"_s
            : u"No USPS rates returned for this shipment."_s;
    return joinPresent({sentence, reasonsOf(carrier, shipment)}, u"\n"_s);
}

} // namespace parcelory
