#include "carrier/ExpandedRates.h"

#include "core/Json.h"

#include <utility>

namespace parcelory {

namespace {

void copyText(const Json &from, const char *key, Json &to, const char *as)
{
    if (from.is_object() && from.contains(key) && from[key].is_string())
        to[as] = from[key];
}

} // namespace

QByteArray withRateIds(const QByteArray &page)
{
    Json list = parseJsonIfPossible(page).value_or(Json());
    if (!list.is_object() || !list.contains("results"))
        return page;
    bool isChanged = false;
    for (Json &record : list["results"]) {
        if (!record.is_object() || !record.contains("rate") || !record["rate"].is_object())
            continue;
        const Json rate = std::exchange(record["rate"], Json());
        Json known = Json::object();
        copyText(rate, "object_id", record, "rate");
        copyText(rate, "amount", known, "amount");
        copyText(rate, "provider", known, "provider");
        copyText(rate, "servicelevel_name", known, "service"); // as older versions of the API call it
        copyText(rate.value("servicelevel", Json()), "name", known, "service");
        record["rate_object"] = known;
        isChanged = true;
    }
    return isChanged ? dumpJson(list) : page;
}

} // namespace parcelory
