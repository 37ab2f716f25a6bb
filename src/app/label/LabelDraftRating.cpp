#include "app/label/LabelDraft.h"
#include "app/label/LabelTexts.h"
#include "carrier/RequestBodies.h"
#include "compose/Customs.h"
#include "compose/Services.h"
#include "core/Deployment.h"
#include "core/SettingsKeys.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "core/ports/Preferences.h"
#include "devices/CommercialInvoice.h"
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

} // namespace

/// The first field that keeps the form from being complete.
DraftField LabelDraft::missingField() const
{
    const ShippoAddress &to = m_app.draftTo.value();
    if (!senderFilled())
        return DraftField::profile;
    if (to.name.trimmed().isEmpty())
        return DraftField::name;
    if (to.street1.trimmed().isEmpty())
        return DraftField::street;
    if (to.city.trimmed().isEmpty())
        return DraftField::city;
    return to.zip.trimmed().isEmpty() ? DraftField::zip : DraftField::weight;
}

/// The first reason why the draft cannot be rated yet.
std::optional<LabelDraft::Obstacle> LabelDraft::obstacle() const
{
    if (!formComplete())
        return Obstacle{LabelTexts::formHint(*this), missingField()};
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

ShippoAddress LabelDraft::senderForCarrier() const
{
    ShippoAddress from = sender().value_or(SenderProfile{}).address;
    const Deployment &company = m_app.platform.deployment;
    if (from.email.trimmed().isEmpty())
        from.email = read(m_app.platform.preferences, settings::senderFallbackEmail, company.fallbackEmail);
    if (from.phone.trimmed().isEmpty())
        from.phone = read(m_app.platform.preferences, settings::senderFallbackPhone, company.fallbackPhone);
    return from;
}

RatingRequest LabelDraft::ratingRequest() const
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
    request.to.company = printedCompany();
    if (carrier == Carrier::fedex) {
        request.insuranceProvider = u"FEDEX"_s; // FedEx's own insurance; USPS parcels use the service's insurance
        request.isResidential = fedexResidential.value();
    }
    if (isInternational())
        request.customs = customs;
    return request;
}

CommercialInvoice::Data_ LabelDraft::invoiceData(const QString &service) const
{
    const ShippoAddress &to = m_app.draftTo.value();
    const CustomsItem &item = customsItem(customs.value().itemType);
    const QString quantity = customs.value().quantity.trimmed();
    CommercialInvoice::Data_ invoice;
    invoice.invoiceNumber = reference.value().trimmed();
    invoice.recipient = {.name = to.name,
                         .company = printedCompany(),
                         .street1 = to.street1,
                         .street2 = to.street2,
                         .city = to.city,
                         .state = to.state,
                         .zip = to.zip,
                         .country = to.country,
                         .phone = to.phone,
                         .email = to.email};
    invoice.shipVia = service;
    invoice.date = m_app.platform.clock.now().date();
    invoice.itemDescription = item.description;
    invoice.hsCode = item.hsCode;
    invoice.quantity = quantity.isEmpty() ? u"1"_s : quantity;
    invoice.value = decimalOrZero(customs.value().value);
    if (!item.invoiceExtraLine.isEmpty())
        invoice.extraLine = item.invoiceExtraLine;
    invoice.signer = customs.value().signer.trimmed();
    if (totalPounds() > 0)
        invoice.weight = weightDisplay();
    return invoice;
}

} // namespace parcelory
