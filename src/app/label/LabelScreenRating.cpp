#include "app/label/LabelScreen.h"
#include "carrier/RequestBodies.h"
#include "carrier/ShippoRecords.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/Deployment.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"

#include "core/SettingsKeys.h"
#include "core/Text.h"

#include <QScopeGuard>

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

bool isPositive(const QString &text)
{
    return decimalOrZero(text) > 0;
}

bool isBlankOrNotNegative(const QString &text)
{
    return text.trimmed().isEmpty() || decimal(text).value_or(-1) >= 0;
}

bool isBlankOrCount(const QString &text)
{
    return text.trimmed().isEmpty() || text.trimmed().toInt() > 0;
}

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

QString noRatesText(Carrier carrier)
{
    if (carrier == Carrier::fedex)
        return u"No FedEx rates returned — is your FedEx account connected in the Shippo dashboard?"_s;
    return u"No USPS rates returned for this shipment."_s;
}

} // namespace

/// The first reason why the draft cannot be rated yet.
std::optional<LabelScreen::Obstacle> LabelScreen::obstacle() const
{
    if (!formComplete())
        return Obstacle{ratesHint(), missingField()};
    // A typo would otherwise count as 0, and the parcel would be rated too light.
    for (const auto &[text, field] :
         {std::pair{weightLb.value(), DraftField::weight}, std::pair{weightOz.value(), DraftField::ounces}}) {
        if (!isBlankOrNotNegative(text))
            return Obstacle{u"The weight is not a number — type pounds and ounces as plain numbers, for example 1 and "
                            "3.5."_s,
                            field};
    }
    if (sendsOwnDimensions()) {
        const QString box = boxName();
        const QString text = u"Enter the package size — length, width, and height are required for "_s +
                             (box.isEmpty() ? u"your own packaging"_s : box);
        if (!isPositive(dimLength))
            return Obstacle{text, DraftField::length};
        if (!isPositive(dimWidth))
            return Obstacle{text, DraftField::width};
        if (!isPositive(dimHeight))
            return Obstacle{text, DraftField::height};
    }
    const QString declared = customs.value().value.trimmed();
    if (isInternational() && !declared.isEmpty() && !decimal(declared))
        return Obstacle{u"The declared value is not a plain number — type it in dollars without commas, for example "
                        "1860.00."_s,
                        DraftField::declaredValue};
    if (isInternational() && !isPositive(declared))
        return Obstacle{u"Enter the declared value in the Customs Declaration to rate an international shipment."_s,
                        DraftField::declaredValue};
    if (isInternational() && !isBlankOrCount(customs.value().quantity))
        return Obstacle{u"The quantity in the Customs Declaration is not a whole number."_s, DraftField::quantity};
    const CarrierInfo &info = carrierInfo(carrier);
    if (totalPounds() > info.weightLimit)
        return Obstacle{weightDisplay() + u" is over "_s + info.displayName + u"'s "_s + fixed(info.weightLimit, 0) +
                            u" lb limit."_s,
                        DraftField::weight};
    if (carrier == Carrier::fedex && isInternational() && m_app.draftTo.value().phone.trimmed().isEmpty())
        return Obstacle{
            u"FedEx international shipments require the recipient's phone number — add it to the To section."_s,
            DraftField::phone};
    // "1,500" would otherwise count as 0, and the parcel would not be insured.
    if (!insuranceValue.value().trimmed().isEmpty() && !decimal(insuranceValue))
        return Obstacle{u"The insured value is not a number — type it as plain dollars, for example 1500.00."_s,
                        DraftField::insurance};
    return std::nullopt;
}

ShippoAddress LabelScreen::senderForCarrier() const
{
    ShippoAddress from = sender().value_or(SenderProfile{}).address;
    const Deployment &company = m_app.platform.deployment;
    if (from.email.trimmed().isEmpty())
        from.email = read(m_app.platform.preferences, settings::senderFallbackEmail, company.fallbackEmail);
    if (from.phone.trimmed().isEmpty())
        from.phone = read(m_app.platform.preferences, settings::senderFallbackPhone, company.fallbackPhone);
    return from;
}

RatingRequest LabelScreen::ratingRequest() const
{
    const QDateTime now = m_app.platform.clock.now();
    RatingRequest request{.from = senderForCarrier(),
                          .to = m_app.draftTo,
                          .parcel = {.length = dimLength.value().trimmed(),
                                     .width = dimWidth.value().trimmed(),
                                     .height = dimHeight.value().trimmed(),
                                     .distanceUnit = u"in"_s,
                                     .weight = shortest(totalPounds() * 16, 4),
                                     .massUnit = u"oz"_s},
                          .parcelTemplate = templateName(),
                          // A window left open overnight still holds yesterday's date.
                          .shipDate = shipDate.value() > now.date() ? QDateTime(shipDate, QTime(12, 0)) : now,
                          .signatureConfirmation = serviceOptionInfo(service).signatureConfirmation,
                          .insuranceAmount = insuranceValue.value().trimmed(),
                          .insuranceProvider = {},
                          .isResidential = std::nullopt,
                          .customs = std::nullopt};
    request.to.company = m_app.sanitizer.sanitize(request.to.company);
    if (carrier == Carrier::fedex) {
        request.insuranceProvider = u"FEDEX"_s; // FedEx's own insurance; USPS parcels use the service's insurance
        request.isResidential = fedexResidential.value();
    }
    if (isInternational())
        request.customs = customs;
    return request;
}

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
    const auto done = qScopeGuard([this] { busy = false; });
    const int edits = m_edits;
    try {
        const ShippoShipment shipment = co_await m_app.shippo.rates(ratingRequest());
        if (edits == m_edits)
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
        warn(noRatesText(carrier));
        co_return;
    }
    rates = offered;
    selectRateOfClass();
    const bool keep = co_await reviewPrintedAddress(shipment);
    if (keep)
        co_return;
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
