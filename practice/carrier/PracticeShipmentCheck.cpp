#include "practice/carrier/PracticeShipmentCheck.h"

#include "core/Json.h"
#include "core/Text.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeAddresses.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeLedger.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QStringList parcelTemplates = {u"USPS_FlatRateEnvelope"_s,
                                     u"USPS_FlatRateLegalEnvelope"_s,
                                     u"USPS_FlatRatePaddedEnvelope"_s,
                                     u"USPS_SmallFlatRateBox"_s,
                                     u"USPS_MediumFlatRateBox1"_s,
                                     u"USPS_LargeFlatRateBox"_s,
                                     u"FedEx_Envelope"_s,
                                     u"FedEx_Pak_1"_s,
                                     u"FedEx_Pak_2"_s,
                                     u"FedEx_Padded_Pak"_s,
                                     u"FedEx_XL_Pak"_s,
                                     u"FedEx_Box_Small_1"_s,
                                     u"FedEx_Box_Medium_1"_s,
                                     u"FedEx_Box_Large_1"_s,
                                     u"FedEx_Box_Extra_Large_1"_s,
                                     u"FedEx_Tube"_s};
const QStringList massUnits = {u"g"_s, u"kg"_s, u"lb"_s, u"oz"_s};
const QStringList distanceUnits = {u"cm"_s, u"in"_s, u"ft"_s, u"m"_s, u"mm"_s, u"yd"_s};
const QStringList signatures = {u"STANDARD"_s, u"ADULT"_s, u"CERTIFIED"_s, u"INDIRECT"_s, u"CARRIER_CONFIRMATION"_s};
const QStringList insurers = {u"FEDEX"_s, u"UPS"_s, u"ONTRAC"_s};
const QStringList contentsTypes = {u"DOCUMENTS"_s,         u"GIFT"_s,  u"SAMPLE"_s,
                                   u"MERCHANDISE"_s,       u"OTHER"_s, u"HUMANITARIAN_DONATION"_s,
                                   u"RETURN_MERCHANDISE"_s};
const QStringList nonDelivery = {u"ABANDON"_s, u"RETURN"_s};
const QStringList exportCodes = {u"NOEEI_30_37_a"_s, u"NOEEI_30_37_h"_s, u"NOEEI_30_37_f"_s, u"NOEEI_30_36"_s,
                                 u"AES_ITN"_s};
const QStringList incoterms = {u"DDP"_s, u"DDU"_s, u"DAP"_s, u"FCA"_s, u"eDAP"_s};

void checkChoice(Json &errors, const Json &object, const char *key, const QStringList &choices)
{
    if (!isUsableText(errors, object, key) || choices.contains(textOf(object, key)))
        return;
    complain(errors, key, "\"" + textOf(object, key).toStdString() + "\" is not a valid choice.");
}

void requireChoice(Json &errors, const Json &object, const char *key, const QStringList &choices)
{
    requireText(errors, object, key);
    if (!errors.contains(key))
        checkChoice(errors, object, key, choices);
}

/// Numbers are texts with at most six digits before and four after the point.
void requireNumber(Json &errors, const Json &object, const char *key)
{
    static const QRegularExpression form(u"^(\\d{1,6}(\\.\\d{0,4})?|\\.\\d{1,4})$"_s);
    requireText(errors, object, key);
    if (errors.contains(key))
        return;
    const QString value = textOf(object, key);
    if (!decimal(value))
        complain(errors, key, "A valid number is required.");
    else if (!form.match(value).hasMatch())
        complain(errors, key, "Ensure that there are no more than 6 digits before and 4 after the decimal point.");
    else if (decimalOrZero(value) <= 0)
        complain(errors, key, "Ensure this value is greater than 0.");
}

void requireMoney(Json &errors, const Json &object, const char *key)
{
    requireText(errors, object, key);
    if (!errors.contains(key) && decimal(textOf(object, key)).value_or(-1) < 0)
        complain(errors, key, "A valid number is required.");
}

Json parcelErrors(const Json &parcel, bool acceptsWeightOnly)
{
    static constexpr const char *sizeKeys[] = {"length", "width", "height", "distance_unit"};
    Json errors = Json::object();
    requireNumber(errors, parcel, "weight");
    requireChoice(errors, parcel, "mass_unit", massUnits);
    const auto has = [&](const char *key) { return parcel.contains(key) && !parcel[key].is_null(); };
    if (has("template")) {
        checkChoice(errors, parcel, "template", parcelTemplates);
        return errors;
    }
    if (std::ranges::none_of(sizeKeys, has)) {
        if (!acceptsWeightOnly)
            complain(errors, "__all__", "Either a template or length, width, height and distance_unit are required.");
        return errors;
    }
    for (const char *key : {"length", "width", "height"})
        requireNumber(errors, parcel, key);
    requireChoice(errors, parcel, "distance_unit", distanceUnits);
    return errors;
}

void checkParcels(Json &errors, const Json &body, bool acceptsWeightOnly)
{
    const Json parcels = body.value("parcels", Json());
    if (parcels.is_null() || parcels == Json::array())
        return complain(errors, "parcels", "This field is required.");
    if (!parcels.is_array())
        return complain(errors, "parcels", "Expected a list of items.");
    if (parcels.size() > 1)
        return complain(errors, "parcels", "Only shipments of one parcel can be rated here.");
    if (parcels[0].is_string())
        return complain(errors, "parcels", "Parcel with supplied object_id not found.");
    if (!parcels[0].is_object())
        return complain(errors, "parcels", "Invalid data. Expected a dictionary.");
    if (Json found = parcelErrors(parcels[0], acceptsWeightOnly); !found.empty())
        errors["parcels"].push_back(std::move(found));
}

void checkAddress(Json &errors, PracticeLedger &ledger, const Json &body, const char *key)
{
    const Json address = body.value(key, Json());
    if (address.is_null())
        return complain(errors, key, "This field is required.");
    if (address.is_string()) {
        if (!ledger.addresses.find(textOf(body, key)))
            complain(errors, key, "Address with supplied object_id not found.");
        return;
    }
    if (!address.is_object())
        return complain(errors, key, "Invalid data. Expected a dictionary.");
    if (Json found = addressErrors(address); !found.empty())
        errors[key] = std::move(found);
}

/// The service reports every error in the extras as a text under "extra", however deeply it is nested.
void checkExtras(Json &errors, const Json &body)
{
    const Json extra = body.value("extra", Json::object());
    if (!extra.is_object())
        return complain(errors, "extra", "Invalid data. Expected a dictionary.");
    Json found = Json::object();
    checkChoice(found, extra, "signature_confirmation", signatures);
    isUsableFlag(found, extra, "is_residential");
    if (const Json insurance = extra.value("insurance", Json()); insurance.is_object()) {
        requireMoney(found, insurance, "amount");
        requireText(found, insurance, "currency");
        const QString provider = textOf(insurance, "provider");
        if (isUsableText(found, insurance, "provider") && !insurers.contains(provider))
            complain(found, "provider", "Invalid value specified for provider '" + provider.toStdString() + "'");
    } else if (!insurance.is_null()) {
        complain(found, "insurance", "Invalid data. Expected a dictionary.");
    }
    for (const auto &[key, texts] : found.items())
        complain(errors, "extra", key + ": " + texts[0].get<std::string>());
}

Json itemErrors(const Json &item)
{
    Json errors = Json::object();
    requireText(errors, item, "description");
    const Json quantity = item.value("quantity", Json());
    if (quantity.is_null())
        complain(errors, "quantity", "This field is required.");
    else if (!quantity.is_number_integer())
        complain(errors, "quantity", "A valid integer is required.");
    else if (quantity < 1)
        complain(errors, "quantity", "Ensure this value is greater than or equal to 1.");
    requireNumber(errors, item, "net_weight");
    requireChoice(errors, item, "mass_unit", massUnits);
    requireMoney(errors, item, "value_amount");
    requireText(errors, item, "value_currency");
    requireText(errors, item, "origin_country");
    isUsableText(errors, item, "tariff_number");
    return errors;
}

Json customsErrors(const Json &customs)
{
    Json errors = Json::object();
    if (!isUsableFlag(errors, customs, "certify") && !errors.contains("certify"))
        complain(errors, "certify", "This field is required.");
    requireText(errors, customs, "certify_signer");
    requireChoice(errors, customs, "contents_type", contentsTypes);
    requireChoice(errors, customs, "non_delivery_option", nonDelivery);
    checkChoice(errors, customs, "eel_pfc", exportCodes);
    checkChoice(errors, customs, "incoterm", incoterms);
    isUsableText(errors, customs, "contents_explanation");
    const Json items = customs.value("items", Json());
    if (!items.is_array() || items.empty()) {
        complain(errors, "items", "This field is required.");
        return errors;
    }
    for (const Json &item : items) {
        if (!item.is_object())
            complain(errors, "items", "Invalid data. Expected a dictionary.");
        else if (Json found = itemErrors(item); !found.empty())
            errors["items"].push_back(std::move(found));
    }
    return errors;
}

void checkCustoms(Json &errors, PracticeLedger &ledger, const Json &body)
{
    const Json customs = body.value("customs_declaration", Json());
    if (customs.is_string()) {
        if (!ledger.customs.find(textOf(body, "customs_declaration")))
            complain(errors, "customs_declaration",
                     "CustomsDeclaration with supplied object_id " + customs.get<std::string>() + " not found.");
    } else if (customs.is_object()) {
        if (Json found = customsErrors(customs); !found.empty())
            errors["customs_declaration"] = std::move(found);
    } else if (!customs.is_null()) {
        complain(errors, "customs_declaration", "Invalid data. Expected a dictionary.");
    }
}

} // namespace

Json shipmentErrors(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body)
{
    Json errors = Json::object();
    checkCustoms(errors, ledger, body);
    checkParcels(errors, body, scenario.acceptsWeightOnly);
    checkAddress(errors, ledger, body, "address_to");
    checkAddress(errors, ledger, body, "address_from");
    checkExtras(errors, body);
    isUsableFlag(errors, body, "async");
    checkTime(errors, body, "shipment_date");
    return errors;
}

} // namespace parcelory
