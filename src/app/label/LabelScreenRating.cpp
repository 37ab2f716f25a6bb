#include "app/label/LabelScreen.h"
#include "carrier/RequestBodies.h"
#include "carrier/ShippoRecords.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/Deployment.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"

#include "core/SettingsKeys.h"
#include "core/StaleCheck.h"
#include "core/Text.h"

#include <QScopeGuard>

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

bool belongsTo(Carrier carrier, const ShippoRate &rate)
{
    if (carrier == Carrier::fedex)
        return rate.provider.toUpper().contains(u"FEDEX"_s);
    return rate.provider.compare(u"usps"_s, Qt::CaseInsensitive) == 0;
}

/// The carrier's own rates, cheapest first; equal prices keep the order in which they came.
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

QString noRatesText(Carrier carrier)
{
    if (carrier == Carrier::fedex)
        return u"No FedEx rates returned — is your FedEx account connected in the Shippo dashboard?"_s;
    return u"No USPS rates returned for this shipment."_s;
}

} // namespace

Task<> LabelScreen::fetchRates(bool intlConfirmed)
{
    if (busy)
        co_return;
    if (const std::optional<Obstacle> found = obstacle()) {
        warn(found->text, found->field);
        co_return;
    }
    if (isInternational() && !intlConfirmed) {
        showIntlPaperwork = true;
        co_return;
    }
    showIntlPaperwork = false;
    faultyField = std::nullopt;
    clearRates();
    banner = std::nullopt;
    busy = true;
    rating = true;
    const auto done = qScopeGuard([this] {
        rating = false;
        busy = false;
    });
    const auto isEdited = staleCheck(edits);
    try {
        const ShippoShipment shipment = co_await m_app.shippo.rates(ratingRequest());
        if (!isEdited())
            co_await applyRates(shipment);
        else if (!m_app.draftTo.value().isEmpty()) // otherwise the form was cleared, and rates are no longer needed
            warn(u"The draft was changed while its rates were loading — get rates again."_s);
    } catch (const AppError &error) {
        fail(u"Get Rates"_s, error);
    }
}

Task<> LabelScreen::applyRates(ShippoShipment shipment)
{
    const QList<ShippoRate> offered = offeredRates(carrier, shipment.rates);
    if (offered.isEmpty()) {
        const QString text = joinPresent({noRatesText(carrier), reasonsOf(carrier, shipment)}, u"\n"_s);
        warn(text);
        m_app.errors.record(u"Get Rates"_s, AppError(text), Popup::no);
        co_return;
    }
    rates = offered;
    selectRateOfClass();
    const auto isReplaced = staleCheck(edits);
    const bool keep = co_await reviewPrintedAddress(shipment);
    if (keep)
        co_return;
    if (isReplaced()) { // a scan may fill in another recipient while the dialog is open
        warn(draftChanged);
        co_return;
    }
    clearRates();
    forgetValidation();
    warn(u"Rates cleared — adjust the address and validate again."_s);
}

void LabelScreen::selectRateOfClass()
{
    const QList<ShippoRate> &offered = rates.value();
    if (offered.isEmpty())
        return;
    const ServiceClassInfo &wanted = serviceClassInfo(effectiveClass());
    const auto found = std::ranges::find_if(
        offered, [&wanted](const ShippoRate &rate) { return rate.servicelevel.token == wanted.rawValue; });
    if (found != offered.end()) {
        selectedRateID = found->objectId;
        banner = std::nullopt;
        return;
    }
    selectedRateID = std::nullopt;
    warn(u"No "_s + wanted.displayName + u" rate came back — pick from the list."_s);
    m_bannerAboutRates = true;
}

} // namespace parcelory
