#include "practice/carrier/PracticeTariff.h"

#include "practice/carrier/PracticeAccounts.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <span>

namespace parcelory {

namespace {

using enum Contract;

constexpr const char *oneToThreeDays =
    "Delivery within 1, 2, or 3 days based on where your package started and where it’s being sent.";
constexpr const char *upsGroundTerms = "Delivery times vary. Delivered usually in 1-5\u00a0business days.";

// The second FedEx contract quotes some services again: Ground and Home Delivery at a higher price, 2Day at the same
// price.
constexpr Offer domestic[] = {
    {ups, "ups_next_day_air", "Next Day Air®", 1, "10:30:00", "", 31.40, 2.60, 3.10},
    {fedex, "fedex_first_overnight", "First Overnight", 1, "08:00:00", "", 58.20, 2.90, 3.40},
    {usps, "usps_priority_express", "Priority Mail Express", 1, nullptr, "Overnight delivery to most U.S. locations.",
     27.35, 2.45, 2.15, 70},
    {secondFedex, "fedex_2_day", "2Day", 2, "16:30:00", "", 19.80, 1.45, 1.35},
    {usps, "usps_priority", "Priority Mail", 2, nullptr, oneToThreeDays, 7.90, 0.95, 0.70, 70},
    {fedex, "fedex_standard_overnight", "Standard Overnight", 1, "15:00:00", "", 30.10, 2.30, 2.80},
    {fedex, "fedex_2_day", "2Day", 2, "16:30:00", "", 19.80, 1.45, 1.35},
    {ups, "ups_ground", "Ground", 4, nullptr, upsGroundTerms, 10.90, 0.60, 0.55},
    {fedex, "fedex_ground", "Ground", 3, nullptr, "", 9.60, 0.55, 0.60},
    {secondFedex, "fedex_home_delivery", "Home Delivery", 3, nullptr, "", 11.25, 0.60, 0.60},
    {usps, "usps_ground_advantage", "Ground Advantage", 4, nullptr, "Delivery in 2 to 5 days.", 4.60, 0.80, 0.45, 70},
    {fedex, "fedex_express_saver", "Express Saver", 3, "16:30:00", "", 16.70, 1.30, 1.25},
    {fedex, "fedex_2_day_am", "2Day A.M.", 2, "10:30:00", "", 22.40, 1.50, 1.45},
    {fedex, "fedex_home_delivery", "Home Delivery", 3, nullptr, "", 10.35, 0.55, 0.60},
    {fedex, "fedex_priority_overnight", "Priority Overnight", 1, "10:30:00", "", 33.70, 2.40, 2.90},
    {usps, "usps_media_mail", "Media Mail", 0, nullptr, "", 3.85, 0.72, 0.00, 70},
    {secondFedex, "fedex_ground", "Ground", 3, nullptr, "", 10.45, 0.60, 0.60},
};

constexpr Offer international[] = {
    {fedex, "fedex_international_first", "International First", 2, "09:00:00", "", 92.00, 6.80, 9.50},
    {usps, "usps_priority_mail_international", "Priority Mail International", 8, nullptr,
     "Delivery within 6 to 10 business days for many major markets.", 31.50, 3.90, 4.80, 66},
    {ups, "ups_worldwide_expedited", "Worldwide Expedited®", 4, nullptr, "", 66.00, 5.00, 7.70},
    {fedex, "fedex_international_economy", "International Economy", 5, nullptr, "", 48.70, 4.20, 6.10},
    {secondFedex, "fedex_international_priority", "International Priority", 3, nullptr, "", 61.98, 5.10, 7.30},
    {usps, "usps_first_class_package_international_service", "First-Class Package International", 11, nullptr, "",
     13.20, 4.60, 1.20, 4},
    {fedex, "fedex_international_priority", "International Priority", 3, nullptr, "", 61.98, 5.10, 7.30},
    {usps, "usps_priority_mail_express_international", "Priority Mail Express International", 4, nullptr,
     "Delivery within 3 to 5 business days for many major markets.", 52.60, 4.70, 6.20, 66},
    {fedex, "fedex_international_priority_express", "International Priority Express", 2, "12:00:00", "", 74.30, 5.60,
     8.20},
    {fedex, "fedex_international_ground", "International Ground", 5, nullptr, "", 18.40, 1.20, 2.20},
};

struct FlatRate {
    const char *parcelTemplate;
    double domestic, abroad;
};

constexpr FlatRate flatRates[] = {
    {"USPS_FlatRateEnvelope", 9.65, 45.85},        {"USPS_FlatRateLegalEnvelope", 9.95, 45.85},
    {"USPS_FlatRatePaddedEnvelope", 10.60, 45.85}, {"USPS_SmallFlatRateBox", 10.40, 47.10},
    {"USPS_MediumFlatRateBox1", 18.40, 89.45},     {"USPS_LargeFlatRateBox", 24.75, 116.60},
};

} // namespace

std::span<const Offer> offers(bool abroad)
{
    return abroad ? std::span<const Offer>(international) : std::span<const Offer>(domestic);
}

std::optional<double> flatRate(const QString &parcelTemplate, bool abroad)
{
    const auto found = std::ranges::find_if(
        flatRates, [&](const FlatRate &rate) { return parcelTemplate == QLatin1StringView(rate.parcelTemplate); });
    if (found == std::end(flatRates))
        return std::nullopt;
    return abroad ? found->abroad : found->domestic;
}

} // namespace parcelory
