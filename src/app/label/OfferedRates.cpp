#include "app/label/OfferedRates.h"

#include "carrier/ShippoRecords.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/Text.h"

#include <map>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

bool belongsTo(Carrier carrier, const ShippoRate &rate)
{
    if (carrier == Carrier::fedex)
        return rate.provider.toUpper().contains(u"FEDEX"_s);
    return rate.provider.compare(u"usps"_s, Qt::CaseInsensitive) == 0;
}

/// The price as a plain amount of money; nothing for a negative one or any other text. Such a rate must not be bought:
/// it would count as free.
std::optional<double> priceOf(const ShippoRate &rate)
{
    constexpr double most = 1e6;
    const std::optional<double> price = decimal(rate.amount);
    return price && *price >= 0 && *price < most ? price : std::nullopt;
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

OfferedRates offeredRates(Carrier carrier, const QList<ShippoRate> &all)
{
    constexpr qsizetype most = 500;
    std::multimap<double, ShippoRate> byPrice;
    QStringList unpriced;
    for (const ShippoRate &rate : all) {
        if (!belongsTo(carrier, rate))
            continue;
        if (const std::optional<double> price = priceOf(rate))
            byPrice.emplace(*price, rate);
        else
            unpriced += u"%1 (“%2”)"_s.arg(serviceName(rate.servicelevel), rate.amount);
    }
    OfferedRates offered;
    for (const auto &[price, rate] : byPrice) {
        if (offered.rates.size() < most)
            offered.rates.append(rate);
    }
    QStringList leftOut;
    if (!unpriced.isEmpty())
        leftOut += u"Rates without a readable price were left out: "_s + unpriced.join(u", "_s) + u'.';
    if (qsizetype(byPrice.size()) > most)
        leftOut += u"Only the %1 cheapest of %2 rates are shown."_s.arg(most).arg(byPrice.size());
    offered.leftOut = leftOut.join(u' ');
    return offered;
}

QString noRatesText(Carrier carrier, const ShippoShipment &shipment)
{
    const QString sentence =
        carrier == Carrier::fedex
            ? u"No FedEx rates returned — is your FedEx account connected in the Shippo dashboard?"_s
            : u"No USPS rates returned for this shipment."_s;
    return firstCharacters(joinPresent({sentence, reasonsOf(carrier, shipment)}, u"\n"_s), AppError::longest);
}

} // namespace parcelory
