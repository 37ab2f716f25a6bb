#include "practice/carrier/PracticeShipments.h"

#include "core/IsoDate.h"
#include "core/Json.h"
#include "core/Text.h"
#include "practice/PracticeTime.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeAddresses.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeLedger.h"
#include "practice/carrier/PracticeRates.h"
#include "practice/carrier/PracticeShipmentCheck.h"

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Sizes come back with four decimals, absent sizes as null.
Json fourDecimals(const Json &parcel, const char *key)
{
    const QString typed = textOf(parcel, key);
    return typed.isEmpty() ? Json(nullptr) : Json(fixed(decimalOrZero(typed), 4).toStdString());
}

Json textOrNull(const Json &object, const char *key)
{
    const QString text = textOf(object, key);
    return text.isEmpty() ? Json(nullptr) : Json(text.toStdString());
}

Json parcelObject(const Json &typed, bool test)
{
    Json parcel = newObject(test);
    parcel.update({{"object_state", "VALID"},
                   {"template", textOrNull(typed, "template")},
                   {"extra", Json::object()},
                   {"length", fourDecimals(typed, "length")},
                   {"width", fourDecimals(typed, "width")},
                   {"height", fourDecimals(typed, "height")},
                   {"distance_unit", textOrNull(typed, "distance_unit")},
                   {"weight", fourDecimals(typed, "weight")},
                   {"mass_unit", textOrNull(typed, "mass_unit")},
                   {"value_amount", nullptr},
                   {"value_currency", nullptr},
                   {"metadata", ""},
                   {"line_items", Json::array()}});
    return parcel;
}

/// The id of the declaration; a shipment shows only this id.
Json customsId(PracticeLedger &ledger, const Json &body)
{
    Json customs = body.value("customs_declaration", Json());
    if (!customs.is_object())
        return customs;
    customs["object_id"] = newObjectId();
    for (Json &item : customs["items"])
        item["value_amount"] = fixed(decimalOrZero(textOf(item, "value_amount")), 2).toStdString();
    return ledger.customs.add(std::move(customs)).at("object_id");
}

Json shipmentObject(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body)
{
    const Json from = shipmentAddress(ledger, body.at("address_from"));
    const Json to = shipmentAddress(ledger, body.at("address_to"));
    const auto shipDate = parseIso(textOf(body, "shipment_date"));
    Json shipment = newObject(ledger.test);
    shipment.update({{"carrier_accounts", Json::array()},
                     {"status", "QUEUED"},
                     {"address_from", from},
                     {"address_to", scenario.rewrittenAddressTo ? rewrittenAddress(to) : to},
                     {"parcels", Json::array({parcelObject(body.at("parcels").at(0), ledger.test)})},
                     {"shipment_date", timestamp(shipDate.value_or(practiceNow().toUTC()))},
                     {"address_return", from},
                     {"alternate_address_to", nullptr},
                     {"customs_declaration", customsId(ledger, body)},
                     {"extra", body.value("extra", Json::object())},
                     {"rates", Json::array()},
                     {"messages", Json::array()},
                     {"metadata", textOf(body, "metadata").toStdString()},
                     {"order", nullptr}});
    return shipment;
}

} // namespace

CarrierAnswer createShipment(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body)
{
    if (const Json errors = shipmentErrors(ledger, scenario, body); !errors.empty())
        return jsonAnswer(400, errors);
    const Json queued = shipmentObject(ledger, scenario, body);
    Json rated = queued;
    rateShipment(rated, scenario);
    if (!scenario.shipmentQueuedWithRates)
        rated["status"] = "SUCCESS";
    // If async, the client gets a shipment without rates and has to read it again.
    if (flagOf(body, "async", true))
        return jsonAnswer(201, ledger.shipments.add(queued, std::move(rated), 0));
    return jsonAnswer(201, ledger.shipments.add(std::move(rated)));
}

} // namespace parcelory
