#include "practice/carrier/PracticeAccounts.h"

#include "core/Json.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeLedger.h"

#include <algorithm>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

struct Account {
    const char *id;
    const char *carrier;
    const char *name;
    const char *number;
    bool isOwn; ///< the dealer's own contract, not an account that comes with the service
};

// In the order of Contract, then the accounts without rates. USPS is not the first account, so that code that simply
// takes the first account fails.
constexpr Account accounts[] = {
    {"2716480a9d7b4b31837c0dacd7d48104", "ups", "UPS", "shippo_ups_account", false},
    {"86a7793d3788422a8169cfae9c87ed02", "fedex", "FedEx", "867530990", true},
    {"2da62634606540c082f3612afe95ec01", "usps", "USPS", "shippo_usps_account", false},
    {"8d6dbc109aaf4bb983d534f1556ddc03", "fedex", "FedEx", "867530981", true},
    {"3d05ffe6076741228dfea04385050c05", "dhl_express", "DHL Express", "shippo_dhlexpress_account", false},
    {"bef77ddbd2a5455eba8fcd4511eef606", "parcelforce", "Parcelforce", "shippo_parcelforce_account", false},
};

Json parametersOf(const Account &account)
{
    if (!account.isOwn)
        return Json::array();
    return {{"meter", "******"}, {"smartpost_id", 5531}};
}

Json listed(const Account &account, bool test)
{
    return {{"carrier", account.carrier},
            {"object_id", account.id},
            {"object_owner", objectOwner},
            {"account_id", account.number},
            {"parameters", parametersOf(account)},
            {"test", test},
            {"active", true},
            {"is_shippo_account", !account.isOwn},
            {"metadata", ""},
            {"carrier_name", account.name},
            {"carrier_images", Json::object()},
            {"object_info", nullptr}};
}

} // namespace

namespace PracticeAccounts {

const char *id(Contract contract)
{
    return accounts[int(contract)].id;
}

const char *provider(Contract contract)
{
    return accounts[int(contract)].name;
}

std::vector<Json> list(const PracticeLedger &ledger, const CarrierScenario &scenario)
{
    std::vector<Json> result;
    for (const Account &account : accounts) {
        if (scenario.fedexConnected || QLatin1StringView(account.name) != "FedEx"_L1)
            result.push_back(listed(account, ledger.test));
    }
    return result;
}

bool isKnown(const QString &id)
{
    return std::ranges::any_of(accounts, [&](const Account &account) { return id == QLatin1StringView(account.id); });
}

} // namespace PracticeAccounts
} // namespace parcelory
