#include "practice/carrier/PracticeHistory.h"

#include "core/Json.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeLedger.h"
#include "practice/carrier/PracticeShipments.h"
#include "practice/carrier/PracticeTracking.h"
#include "practice/carrier/PracticeTransactions.h"

#include <chrono>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

namespace parcelory {

namespace {

constexpr int created = 201;

struct Recipient {
    std::string_view name, company, street, city, state, zip, country;
};

constexpr Recipient recipients[] = {
    {"Harriet Ashcombe", "", "17 Orchard Ct", "Reno", "NV", "89501", "US"},
    {"Desmond Pruitt", "Pruitt Coin Supply", "400 Harbor Blvd, Ste 12", "Portland", "ME", "04101", "US"},
    {"Ines Valdivia", "", "2210 Cactus Wren Rd", "Tucson", "AZ", "85701", "US"},
    {"Callum Breckenridge", "", "3 Weavers Row", "Leeds", "", "LS1 4AP", "GB"},
};

Json shipmentBody(const Recipient &to)
{
    const Json from = {
        {"name", "Web Shop"}, {"street1", "88 Exchange Pl"}, {"city", "Salem"}, {"state", "OR"}, {"zip", "97301"},
        {"country", "US"},    {"phone", "5035550142"}};
    Json body = {{"address_from", from},
                 {"address_to",
                  {{"name", to.name},
                   {"company", to.company},
                   {"street1", to.street},
                   {"city", to.city},
                   {"state", to.state},
                   {"zip", to.zip},
                   {"country", to.country},
                   {"phone", "2025550117"}}},
                 {"parcels", Json::array({{{"weight", "9.5"},
                                           {"mass_unit", "oz"},
                                           {"length", "10"},
                                           {"width", "6"},
                                           {"height", "1"},
                                           {"distance_unit", "in"}}})},
                 {"async", false}};
    if (to.country != "US") {
        body["customs_declaration"] = {{"contents_type", "MERCHANDISE"},
                                       {"non_delivery_option", "RETURN"},
                                       {"eel_pfc", "NOEEI_30_37_a"},
                                       {"certify", true},
                                       {"certify_signer", "Web Shop"},
                                       {"items", Json::array({{{"description", "Coin album"},
                                                               {"quantity", 1},
                                                               {"net_weight", "9.5"},
                                                               {"mass_unit", "oz"},
                                                               {"value_amount", "40"},
                                                               {"value_currency", "USD"},
                                                               {"origin_country", "US"}}})}};
    }
    return body;
}

void setDates(Json &record, const std::string &time)
{
    record["object_created"] = time;
    record["object_updated"] = time;
}

PracticeSold soldOf(const Json &transaction)
{
    return {textOf(transaction, "object_id"), textOf(transaction, "tracking_number"),
            textOf(transaction, "tracking_url_provider"), textOf(transaction, "label_url")};
}

/// The last event on the parcel's way, as a list.
Json wayOf(const PracticeSale &sale)
{
    const std::size_t gap = sale.place.rfind(' ');
    Json location = nullptr;
    if (gap != std::string::npos)
        location = {{"city", sale.place.substr(0, gap)},
                    {"state", sale.place.substr(gap + 1)},
                    {"zip", sale.placeZip},
                    {"country", "US"}};
    return Json::array({trackedEvent(sale.way, sale.movedAt, location)});
}

} // namespace

void addHistory(PracticeLedger &ledger, int labels, const QDateTime &newest, std::chrono::seconds step)
{
    const CarrierScenario quietDay;
    for (int number = 0; number < labels; ++number) {
        const std::string time = timestamp(newest.addSecs(-step.count() * number));
        createShipment(ledger, quietDay, shipmentBody(recipients[number % std::size(recipients)]));
        Json &shipment = ledger.shipments.all().back().shown;
        // A bought shipment needs only one rate; all rates would make a long history large.
        Json &rates = shipment["rates"];
        rates = Json::array({rates.at(number % rates.size())});
        rates[0]["object_created"] = time;
        shipment["shipment_date"] = time;
        setDates(shipment, time);
        createTransaction(ledger, quietDay,
                          {{"rate", rates[0]["object_id"]},
                           {"label_file_type", "PDF_4x6"},
                           {"metadata", "Web order " + std::to_string(20000 + number)},
                           {"async", false}});
        setDates(ledger.transactions.all().back().shown, time);
    }
    ledger.shipments.sortByCreation();
    ledger.transactions.sortByCreation();
}

PracticeSold addSale(PracticeLedger &ledger, const PracticeSale &sale)
{
    if (PracticeRecord *known = sale.id.empty() ? nullptr : ledger.transactions.find(QString::fromStdString(sale.id)))
        return soldOf(known->shown);
    const CarrierScenario quietDay;
    const std::string time = timestamp(sale.at);
    const CarrierAnswer rated = createShipment(
        ledger, quietDay, shipmentBody({sale.name, "", sale.street, sale.city, sale.state, sale.zip, sale.country}));
    if (rated.status != created)
        return {};
    Json &shipment = ledger.shipments.all().back().shown;
    Json rate = shipment.at("rates").at(0);
    for (const Json &offered : shipment.at("rates")) {
        if (offered.at("provider") == sale.carrier)
            rate = offered;
    }
    rate["amount"] = sale.amount;
    rate["servicelevel"]["name"] = sale.service;
    rate["object_created"] = time;
    const Json rateId = rate.at("object_id");
    shipment["rates"] = Json::array({rate});
    setDates(shipment, time);
    createTransaction(ledger, quietDay,
                      {{"rate", rateId}, {"label_file_type", "ZPLII"}, {"metadata", sale.tag}, {"async", false}});
    Json &transaction = ledger.transactions.all().back().shown;
    setDates(transaction, time);
    transaction["status"] = sale.status;
    if (!sale.id.empty())
        transaction["object_id"] = sale.id;
    if (!sale.tracking.empty())
        transaction["tracking_number"] = sale.tracking;
    if (!sale.way.empty())
        transaction["tracking_history"] = wayOf(sale);
    const PracticeSold sold = soldOf(transaction);
    if (sale.isOnForm)
        ledger.manifested.insert(sold.transactionId.toStdString());
    ledger.shipments.sortByCreation();
    ledger.transactions.sortByCreation();
    return sold;
}

} // namespace parcelory
