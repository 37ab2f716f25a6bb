#include "practice/carrier/PracticeTracking.h"

#include "core/Json.h"
#include "practice/PracticeTime.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeLedger.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QStringList carriers = {u"usps"_s, u"fedex"_s, u"ups"_s, u"dhl_express"_s, u"canada_post"_s, u"shippo"_s};

struct Stage {
    const char *status;
    const char *details;
    int daysAgo;
};

constexpr Stage preTransit = {"PRE_TRANSIT", "The carrier has received the electronic shipment information.", 3};
constexpr Stage transit = {"TRANSIT", "Your shipment has departed from the origin.", 2};
constexpr Stage lastStages[] = {
    {"DELIVERED", "Your shipment has been delivered.", 1},
    {"RETURNED", "Your shipment has been returned to the original sender.", 1},
    {"FAILURE", "The Postal Service has identified a problem with the processing of this item.", 1},
};

/// The stages of a test number, oldest first; empty for an unknown number.
std::optional<std::vector<Stage>> stagesOf(const QString &number)
{
    const QString name = number.mid(7); // after "SHIPPO_"
    if (!number.startsWith(u"SHIPPO_"))
        return std::nullopt;
    if (name == u"UNKNOWN")
        return std::vector<Stage>{{"UNKNOWN", "", 0}};
    std::vector<Stage> stages = {preTransit};
    if (name == QLatin1StringView(preTransit.status))
        return stages;
    stages.push_back(transit);
    if (name == QLatin1StringView(transit.status))
        return stages;
    const auto last =
        std::ranges::find_if(lastStages, [&](const Stage &stage) { return name == QLatin1StringView(stage.status); });
    if (last == std::end(lastStages))
        return std::nullopt;
    stages.push_back(*last);
    return stages;
}

std::string detailsOf(const std::string &status)
{
    for (const Stage &stage : {preTransit, transit, lastStages[0], lastStages[1], lastStages[2]}) {
        if (status == stage.status)
            return stage.details;
    }
    return "The carrier has no information about this shipment yet.";
}

Json statusObject(const Stage &stage)
{
    const Json location = {{"city", "San Francisco"}, {"state", "CA"}, {"zip", "94103"}, {"country", "US"}};
    return trackedEvent(stage.status, practiceNow().addDays(-stage.daysAgo),
                        stage.daysAgo < preTransit.daysAgo ? location : Json(nullptr));
}

Json historyOf(const std::vector<Stage> &stages)
{
    Json history = Json::array();
    for (const Stage &stage : stages)
        history.push_back(statusObject(stage));
    return history;
}

CarrierAnswer track(const PracticeLedger &ledger, const QString &carrier, const QString &number, const Json &history)
{
    const Json now = history.empty() ? Json(nullptr) : history.back();
    const Json eta = history.empty() ? Json(nullptr) : Json(timestamp(practiceNow().toUTC().addDays(2)));
    return jsonAnswer(200, {{"carrier", carrier.toStdString()},
                            {"tracking_number", number.toStdString()},
                            {"address_from", nullptr},
                            {"address_to", nullptr},
                            {"transaction", nullptr},
                            {"eta", eta},
                            {"original_eta", eta},
                            {"servicelevel", {{"token", nullptr}, {"name", nullptr}}},
                            {"metadata", ""},
                            {"tracking_status", now},
                            {"tracking_history", history},
                            {"messages", Json::array()},
                            {"test", ledger.test}});
}

} // namespace

Json trackedEvent(const std::string &status, const QDateTime &at, const Json &location)
{
    const std::string time = timestamp(at.toUTC());
    return {{"object_created", time},
            {"object_updated", time},
            {"object_id", newObjectId()},
            {"status", status},
            {"status_details", detailsOf(status)},
            {"status_date", time},
            {"substatus", nullptr},
            {"location", location}};
}

CarrierAnswer trackParcel(PracticeLedger &ledger, const CarrierScenario &scenario, const QString &carrier,
                          const QString &number)
{
    if (!carriers.contains(carrier))
        return detailAnswer(400, "Carrier with name '" + carrier.toStdString() + "' is not supported.");
    if (carrier == u"shippo") {
        const auto stages = stagesOf(number);
        return stages ? track(ledger, carrier, number, historyOf(*stages))
                      : notFoundPage("/tracks/shippo/" + number.toUtf8());
    }
    const auto sold = std::ranges::find_if(ledger.transactions.all(), [&](const PracticeRecord &record) {
        return !number.isEmpty() && textOf(record.shown, "tracking_number") == number;
    });
    if (sold == ledger.transactions.all().end())
        return notFoundPage("/tracks/" + carrier.toUtf8() + '/' + number.toUtf8());
    if (const auto stages = stagesOf(u"SHIPPO_"_s + scenario.trackedAs))
        return track(ledger, carrier, number, historyOf(*stages));
    if (sold->shown.contains("tracking_history"))
        return track(ledger, carrier, number, sold->shown.at("tracking_history"));
    // The carrier does not know labels of a test key, so they have no status.
    return track(ledger, carrier, number, historyOf(ledger.test ? std::vector<Stage>() : std::vector{preTransit}));
}

} // namespace parcelory
