#include "practice/carrier/PracticeRates.h"

#include "core/Json.h"
#include "core/Text.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeAccounts.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeTariff.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// What a price depends on, read from a shipment.
struct Consignment {
    bool abroad = false;
    bool toGroundCountry = false; ///< a neighboring country that FedEx reaches by road
    bool hasPlaces = false;       ///< both addresses have a city and, in the US, a ZIP code
    bool recipientHasPhone = false;
    int zone = 1;
    double pounds = 0;
    double billedPounds = 0; ///< large light parcels are billed by size
    double girthAndLength = 0;
    QString parcelTemplate, signature, insurer;
    double insured = 0;
    std::optional<bool> residential;
};

double poundsPer(const QString &unit)
{
    static const QHash<QString, double> units = {
        {u"lb"_s, 1}, {u"oz"_s, 1 / 16.0}, {u"kg"_s, 2.20462262}, {u"g"_s, 0.00220462262}};
    return units.value(unit);
}

double inchesPer(const QString &unit)
{
    static const QHash<QString, double> units = {{u"in"_s, 1},        {u"ft"_s, 12},       {u"yd"_s, 36},
                                                 {u"cm"_s, 1 / 2.54}, {u"mm"_s, 1 / 25.4}, {u"m"_s, 1 / 0.0254}};
    return units.value(unit);
}

int zoneBetween(const Json &from, const Json &to)
{
    static constexpr int widths[] = {0, 10, 50, 120, 220, 350, 550};
    const int difference = std::abs(textOf(from, "zip").left(3).toInt() - textOf(to, "zip").left(3).toInt());
    return 1 + int(std::ranges::lower_bound(widths, difference) - std::begin(widths));
}

void readParcel(Consignment &consignment, const Json &parcel)
{
    consignment.pounds = decimalOrZero(textOf(parcel, "weight")) * poundsPer(textOf(parcel, "mass_unit"));
    consignment.parcelTemplate = textOf(parcel, "template");
    const double inches = inchesPer(textOf(parcel, "distance_unit"));
    std::array<double, 3> sides{};
    std::ranges::transform(std::array{"length", "width", "height"}, sides.begin(),
                           [&](const char *key) { return decimalOrZero(textOf(parcel, key)) * inches; });
    std::ranges::sort(sides);
    consignment.girthAndLength = sides[2] + 2 * (sides[0] + sides[1]);
    constexpr double cubicFoot = 1728, cubicInchesPerPound = 166;
    const double volume = sides[0] * sides[1] * sides[2];
    consignment.billedPounds =
        volume > cubicFoot ? std::max(consignment.pounds, volume / cubicInchesPerPound) : consignment.pounds;
}

Consignment consignmentOf(const Json &shipment)
{
    const Json &from = shipment.at("address_from"), &to = shipment.at("address_to"), &extra = shipment.at("extra");
    const QString country = textOf(to, "country");
    Consignment consignment;
    consignment.abroad = country != textOf(from, "country");
    consignment.toGroundCountry = country == u"CA" || country == u"MX";
    consignment.hasPlaces = std::ranges::all_of(std::array{&from, &to}, [](const Json *address) {
        const bool needsZip = textOf(*address, "country") == u"US";
        return !textOf(*address, "city").isEmpty() && !(needsZip && textOf(*address, "zip").isEmpty());
    });
    consignment.recipientHasPhone = !textOf(to, "phone").isEmpty();
    consignment.zone = consignment.abroad ? (consignment.toGroundCountry ? 2 : 5) : zoneBetween(from, to);
    readParcel(consignment, shipment.at("parcels").at(0));
    consignment.signature = textOf(extra, "signature_confirmation");
    if (const auto insurance = extra.find("insurance"); insurance != extra.end() && insurance->is_object()) {
        consignment.insured = decimalOrZero(textOf(*insurance, "amount"));
        consignment.insurer = textOf(*insurance, "provider");
    }
    if (extra.contains("is_residential"))
        consignment.residential = flagOf(extra, "is_residential", false);
    return consignment;
}

/// Why a carrier quotes no rates; the reason is empty if it does.
struct Refusal {
    QString reason;
    const char *code = "";
};

Refusal refusal(const QString &provider, const Consignment &consignment, const CarrierScenario &scenario)
{
    const bool isUsps = provider == u"USPS", isFedex = provider == u"FedEx";
    const int mostPounds = isUsps ? 70 : 150, mostInches = isUsps ? 130 : 165;
    if (scenario.noRates)
        return {u"No rates are available for this shipment."_s};
    if (isFedex && !scenario.fedexConnected)
        return {u"Authentication Failed: the FedEx account is not connected."_s, "803"};
    if (!consignment.hasPlaces)
        return {u"The address is incomplete: city and ZIP code are needed."_s};
    if (!consignment.parcelTemplate.isEmpty() && !consignment.parcelTemplate.startsWith(provider + u'_'))
        return {u"The parcel template %1 belongs to another carrier."_s.arg(consignment.parcelTemplate)};
    if (isUsps && consignment.signature == u"INDIRECT")
        return {u"Signature confirmation INDIRECT is not supported."_s};
    if (isFedex && consignment.abroad && !consignment.recipientHasPhone)
        return {u"Recipient phone number is required for international shipments."_s};
    if (consignment.pounds > mostPounds)
        return {u"The parcel weighs more than %1 lb."_s.arg(mostPounds)};
    if (consignment.girthAndLength > mostInches)
        return {u"Length and girth of the parcel exceed %1 in."_s.arg(mostInches)};
    return {};
}

bool isOffered(const Offer &offer, const Consignment &consignment)
{
    const QLatin1StringView token(offer.token);
    const bool isGround = token.endsWith("_ground"_L1) || token == "fedex_home_delivery"_L1;
    if (consignment.pounds > offer.mostPounds)
        return false;
    if (consignment.parcelTemplate.startsWith(u"USPS_"))
        return token == "usps_priority"_L1 || token == "usps_priority_mail_international"_L1;
    if (isGround && !consignment.parcelTemplate.isEmpty())
        return false; // the carrier's own packaging goes by air only
    if (token == "fedex_international_ground"_L1)
        return consignment.toGroundCountry;
    if (token == "fedex_ground"_L1)
        return !consignment.residential.value_or(false);
    if (token == "fedex_home_delivery"_L1)
        return consignment.residential.value_or(true);
    return true;
}

double signaturePrice(const QString &signature, bool isUsps)
{
    static const QHash<QString, std::pair<double, double>> prices = {{u"STANDARD"_s, {3.70, 6.75}},
                                                                     {u"ADULT"_s, {9.35, 8.15}},
                                                                     {u"CERTIFIED"_s, {5.30, 0}},
                                                                     {u"INDIRECT"_s, {0, 6.05}},
                                                                     {u"CARRIER_CONFIRMATION"_s, {2.95, 2.95}}};
    const auto [ofUsps, ofOthers] = prices.value(signature);
    return isUsps ? ofUsps : ofOthers;
}

/// The share of a rate that pays for insurance; 0 if another carrier insures.
double insurancePrice(const Offer &offer, const Consignment &consignment)
{
    const QString provider = QString::fromLatin1(PracticeAccounts::provider(offer.contract)).toUpper();
    if (consignment.insured <= 0 || (!consignment.insurer.isEmpty() && consignment.insurer != provider))
        return 0;
    return std::max(1.55, consignment.insured * 0.0125);
}

Json rateObject(const Offer &offer, const Consignment &consignment, const Json &shipment)
{
    const QString provider = QString::fromLatin1(PracticeAccounts::provider(offer.contract));
    const double insurance = insurancePrice(offer, consignment);
    const double carriage = flatRate(consignment.parcelTemplate, consignment.abroad)
                                .value_or(offer.base + offer.perPound * std::ceil(consignment.billedPounds) +
                                          offer.perZone * consignment.zone);
    const double total = carriage + insurance + signaturePrice(consignment.signature, provider == u"USPS");
    const std::string amount = fixed(total, 2).toStdString();
    const std::string images = "https://shippo-static.s3.amazonaws.com/providers/";
    const auto orNull = [](bool isPresent, Json value) { return isPresent ? value : Json(nullptr); };
    return {{"object_created", timestampNow()},
            {"object_id", newObjectId()},
            {"object_owner", objectOwner},
            {"shipment", shipment.at("object_id")},
            {"attributes", Json::array()},
            {"amount", amount},
            {"currency", "USD"},
            {"amount_local", amount},
            {"currency_local", "USD"},
            {"provider", provider.toStdString()},
            {"provider_image_75", images + "75/" + provider.toStdString() + ".png"},
            {"provider_image_200", images + "200/" + provider.toStdString() + ".png"},
            {"servicelevel",
             {{"name", offer.name},
              {"token", offer.token},
              {"terms", ""},
              {"extended_token", offer.token},
              {"display_name", nullptr},
              {"parent_servicelevel", nullptr}}},
            {"estimated_days", orNull(offer.days > 0, offer.days)},
            {"arrives_by", offer.arrives ? Json(offer.arrives) : Json(nullptr)},
            {"duration_terms", offer.terms},
            {"messages", Json::array()},
            {"carrier_account", PracticeAccounts::id(offer.contract)},
            {"test", shipment.at("test")},
            {"zone", orNull(provider != u"UPS", std::to_string(consignment.zone))},
            {"included_insurance_price", orNull(insurance > 0, fixed(insurance, 2).toStdString())}};
}

double amountOf(const Json &rate)
{
    return decimalOrZero(textOf(rate, "amount"));
}

void markAttributes(Json &rates)
{
    if (rates.empty())
        return;
    constexpr int never = 99;
    const auto days = [](const Json &rate) {
        return rate.at("estimated_days").is_null() ? never : rate["estimated_days"].get<int>();
    };
    const auto cheapest = std::ranges::min_element(rates, {}, amountOf);
    const auto fastest =
        std::ranges::min_element(rates, {}, [&](const Json &rate) { return std::pair(days(rate), amountOf(rate)); });
    const auto bestValue = std::ranges::min_element(
        rates, {}, [&](const Json &rate) { return std::pair(days(rate) > 3, amountOf(rate)); });
    (*cheapest)["attributes"].push_back("CHEAPEST");
    (*bestValue)["attributes"].push_back("BESTVALUE");
    (*fastest)["attributes"].push_back("FASTEST");
}

Json message(const QString &source, const char *code, const QString &text)
{
    return {{"source", source.toStdString()}, {"code", code}, {"text", text.toStdString()}};
}

/// Messages of other carriers, which the service always adds; they indicate no problem.
Json unrelatedMessages(bool abroad)
{
    const QString place = abroad ? u"this destination"_s : u"shipments to inside of the US"_s;
    return Json::array({message(u"DHLExpress"_s, "", u"Shippo's DHL Express master account doesn't support "_s + place),
                        message(u"UPS"_s, "110971",
                                u"RatedShipmentWarning: Your invoice may vary from the displayed reference rates"_s)});
}

} // namespace

void rateShipment(Json &shipment, const CarrierScenario &scenario)
{
    const Consignment consignment = consignmentOf(shipment);
    Json messages = unrelatedMessages(consignment.abroad);
    QStringList quoting;
    for (const QString &provider : {u"USPS"_s, u"FedEx"_s, u"UPS"_s}) {
        const Refusal refused = refusal(provider, consignment, scenario);
        if (refused.reason.isEmpty())
            quoting += provider;
        else
            messages.push_back(message(provider, refused.code, refused.reason));
    }
    Json rates = Json::array();
    for (const Offer &offer : offers(consignment.abroad)) {
        if (quoting.contains(QLatin1StringView(PracticeAccounts::provider(offer.contract))) &&
            isOffered(offer, consignment))
            rates.push_back(rateObject(offer, consignment, shipment));
    }
    markAttributes(rates);
    shipment["rates"] = std::move(rates);
    shipment["messages"] = std::move(messages);
}

} // namespace parcelory
