#include "practice/carrier/PracticeManifests.h"

#include "core/IsoDate.h"
#include "core/Json.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeAccounts.h"
#include "practice/carrier/PracticeAddresses.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeLabel.h"
#include "practice/carrier/PracticeLedger.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

Json manifestErrors(PracticeLedger &ledger, const Json &body)
{
    Json errors = Json::object();
    requireText(errors, body, "carrier_account");
    const QString account = textOf(body, "carrier_account");
    if (!account.isEmpty() && !PracticeAccounts::isKnown(account))
        complain(errors, "carrier_account",
                 "Carrier account with supplied object_id " + account.toStdString() + " not found.");
    requireText(errors, body, "shipment_date");
    checkTime(errors, body, "shipment_date");
    const Json from = body.value("address_from", Json());
    if (from.is_object()) {
        if (Json found = addressErrors(from); !found.empty())
            errors["address_from"] = std::move(found);
    } else if (!from.is_string()) {
        complain(errors, "address_from", "This field is required.");
    } else if (!ledger.addresses.find(textOf(body, "address_from"))) {
        complain(errors, "address_from", "Address with supplied object_id not found.");
    }
    isUsableFlag(errors, body, "async");
    return errors;
}

/// The service does not document which time zone counts, so a label of an adjacent day fits, too.
bool leavesTogether(const Json &shipment, const QString &zip, const QDateTime &day)
{
    const auto shipDate = parseIso(textOf(shipment, "shipment_date"));
    const bool isDomestic = textOf(shipment.at("address_to"), "country") == u"US";
    return isDomestic && shipDate && std::abs(shipDate->daysTo(day)) <= 1 &&
           textOf(shipment.at("address_from"), "zip").left(5) == zip.left(5);
}

std::vector<std::string> fittingLabels(PracticeLedger &ledger, const QString &account, const QString &zip,
                                       const QDateTime &day)
{
    std::vector<std::string> ids;
    for (const PracticeRecord &record : ledger.transactions.all()) {
        const auto id = record.shown.at("object_id").get<std::string>();
        if (textOf(record.shown, "status") != u"SUCCESS" || ledger.manifested.contains(id))
            continue;
        const QuotedRate quoted = ledger.findRate(textOf(record.shown, "rate"));
        if (quoted.rate && textOf(*quoted.rate, "provider") == u"USPS" &&
            textOf(*quoted.rate, "carrier_account") == account && leavesTogether(*quoted.shipment, zip, day))
            ids.push_back(id);
    }
    return ids;
}

/// The requested ids that cannot be on the form, joined for a message.
std::string unfit(const Json &asked, const std::vector<std::string> &fitting)
{
    std::string joined;
    for (const Json &id : asked) {
        const std::string text = id.is_string() ? id.get<std::string>() : id.dump();
        if (std::ranges::find(fitting, text) == fitting.end())
            joined += (joined.empty() ? "" : ", ") + text;
    }
    return joined;
}

Json documents(PracticeLedger &ledger, const std::string &id, int count, const std::vector<std::string> &labels)
{
    Json links = Json::array();
    for (int page = 0; page < count; ++page) {
        const QStringList lines = {u"Labels on this form: %1"_s.arg(labels.size()),
                                   u"Page %1 of %2"_s.arg(page + 1).arg(count)};
        const std::string path = "documents/" + id + '_' + std::to_string(page) + "_usps.pdf";
        links.push_back(ledger.publish(path, "application/pdf", pdfPaper(u"USPS SCAN FORM"_s, lines)));
    }
    return links;
}

CarrierAnswer nothingToManifest()
{
    return detailAnswer(404,
                        "No transactions exist for Manifest request, or they were already included in a manifest.");
}

CarrierAnswer madeManifest(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body, const Json &from,
                           const std::vector<std::string> &labels)
{
    Json queued = newObject(ledger.test);
    queued.update({{"status", "QUEUED"},
                   {"provider", "usps"},
                   {"shipment_date", timestamp(*parseIso(textOf(body, "shipment_date")))},
                   {"address_from", from.at("object_id")},
                   {"documents", Json::array()},
                   {"carrier_account", body.at("carrier_account")},
                   {"transactions", Json::array()},
                   {"errors", Json::array()}});
    Json finished = queued;
    if (scenario.manifestFails) {
        finished["status"] = "ERROR";
        finished["errors"] = Json::array({"The carrier could not create the manifest."});
    } else {
        finished["status"] = "SUCCESS";
        finished["transactions"] = labels;
        finished["documents"] = documents(ledger, queued.at("object_id"), scenario.manifestDocuments, labels);
        ledger.manifested.insert(labels.begin(), labels.end());
    }
    const int reads = std::max(scenario.manifestQueuedReads, flagOf(body, "async", true) ? 1 : 0);
    if (reads == 0)
        return jsonAnswer(201, ledger.manifests.add(std::move(finished)));
    return jsonAnswer(201, ledger.manifests.add(std::move(queued), std::move(finished), reads));
}

} // namespace

CarrierAnswer createManifest(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body)
{
    if (const Json errors = manifestErrors(ledger, body); !errors.empty())
        return jsonAnswer(400, errors);
    const Json from = shipmentAddress(ledger, body.at("address_from"));
    std::vector<std::string> labels = fittingLabels(ledger, textOf(body, "carrier_account"), textOf(from, "zip"),
                                                    *parseIso(textOf(body, "shipment_date")));
    if (const Json asked = body.value("transactions", Json()); asked.is_array() && !asked.empty()) {
        if (const std::string wrong = unfit(asked, labels); !wrong.empty())
            return detailAnswer(404, "Invalid transactions " + wrong +
                                         " for manifest request.\nTransactions must be successful, of the same carrier "
                                         "account and ship date,\nand not be part of another manifest.");
        labels = asked.get<std::vector<std::string>>();
    }
    if (labels.empty() || scenario.manifestAlreadyDone)
        return nothingToManifest();
    return madeManifest(ledger, scenario, body, from, labels);
}

} // namespace parcelory
