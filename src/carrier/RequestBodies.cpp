#include "carrier/RequestBodies.h"

#include "carrier/ShippoRecords.h"
#include "compose/Customs.h"
#include "core/CountryCode.h"
#include "core/IsoDate.h"
#include "core/Json.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"

#include <QRegularExpression>

#include <string>
#include <tuple>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype nameLimit = 50;

std::string utf8(const QString &text)
{
    return text.toStdString();
}

/// "# Box 239" becomes "Box 239": the carrier drops everything after a "#".
QString withoutBoxSign(QString street)
{
    static const QRegularExpression boxSign(u"(?i)#\\s*(box\\s+)(?=\\d)"_s);
    return street.replace(boxSign, u"\\1"_s);
}

Json parcelObject(const RatingRequest &request)
{
    const ShippoParcel &parcel = request.parcel;
    Json object = {{"weight", utf8(parcel.weight)}, {"mass_unit", utf8(parcel.massUnit)}};
    if (!request.parcelTemplate.isEmpty()) {
        object["template"] = utf8(request.parcelTemplate);
    } else if (!parcel.length.isEmpty() && !parcel.width.isEmpty() && !parcel.height.isEmpty()) {
        object["length"] = utf8(parcel.length);
        object["width"] = utf8(parcel.width);
        object["height"] = utf8(parcel.height);
        object["distance_unit"] = utf8(parcel.distanceUnit);
    }
    return object;
}

Json extrasObject(const RatingRequest &request)
{
    Json extras = Json::object();
    if (!request.signatureConfirmation.isEmpty())
        extras["signature_confirmation"] = utf8(request.signatureConfirmation);
    if (decimalOrZero(request.insuranceAmount) > 0) {
        Json insurance = {{"amount", utf8(request.insuranceAmount)}, {"currency", "USD"}};
        if (!request.insuranceProvider.isEmpty())
            insurance["provider"] = utf8(request.insuranceProvider);
        extras["insurance"] = std::move(insurance);
    }
    if (request.isResidential)
        extras["is_residential"] = *request.isResidential;
    return extras;
}

Json customsObject(const CustomsInfo &customs, const ShippoParcel &parcel)
{
    const CustomsItem &item = customsItem(customs.itemType);
    bool isWhole = false;
    const int quantity = customs.quantity.trimmed().toInt(&isWhole);
    const Json line = {{"description", utf8(item.description)},
                       {"quantity", isWhole ? quantity : 1},
                       {"net_weight", utf8(parcel.weight)},
                       {"mass_unit", utf8(parcel.massUnit)},
                       {"value_amount", utf8(customs.value)},
                       {"value_currency", "USD"},
                       {"origin_country", "US"},
                       {"tariff_number", utf8(item.hsCode)}};
    return {{"contents_type", "MERCHANDISE"},
            {"contents_explanation", utf8(item.description)},
            {"non_delivery_option", "RETURN"},
            {"eel_pfc", "NOEEI_30_37_a"},
            {"incoterm", "DDU"},
            {"certify", true},
            {"certify_signer", utf8(customs.signer.isEmpty() ? u"Corvallon"_s : customs.signer)},
            {"items", Json::array({line})}};
}

} // namespace

ShippoAddress addressAsSent(const ShippoAddress &address)
{
    ShippoAddress sent = address;
    sent.name = firstCharacters(address.name, nameLimit);
    std::tie(sent.street1, sent.street2) =
        ShippoAddress::splitStreet(withoutBoxSign(address.street1), withoutBoxSign(address.street2));
    const QString country = CountryCode::alpha2(address.country);
    sent.country = country.isEmpty() ? u"US"_s : country;
    return sent;
}

Json addressObject(const ShippoAddress &address)
{
    const ShippoAddress sent = addressAsSent(address);
    return {{"name", utf8(sent.name)},       {"company", utf8(sent.company)}, {"street1", utf8(sent.street1)},
            {"street2", utf8(sent.street2)}, {"city", utf8(sent.city)},       {"state", utf8(sent.state)},
            {"zip", utf8(sent.zip)},         {"country", utf8(sent.country)}, {"phone", utf8(sent.phone)},
            {"email", utf8(sent.email)}};
}

Json shipmentBody(const RatingRequest &request)
{
    Json body = {{"address_from", addressObject(request.from)},
                 {"address_to", addressObject(request.to)},
                 {"parcels", Json::array({parcelObject(request)})},
                 {"shipment_date", utf8(isoUtc(request.shipDate))},
                 {"async", false}};
    if (Json extras = extrasObject(request); !extras.empty())
        body["extra"] = std::move(extras);
    if (request.customs)
        body["customs_declaration"] = customsObject(*request.customs, request.parcel);
    return body;
}

} // namespace parcelory
