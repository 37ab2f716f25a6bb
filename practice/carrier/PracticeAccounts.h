#pragma once

#include "practice/carrier/PracticeAnswers.h"

#include <vector>

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

/// The accounts that quote rates on the practice desk.
enum class Contract { ups, fedex, usps, secondFedex };

/// The carrier accounts of the practice desk.
namespace PracticeAccounts {

const char *id(Contract contract);
const char *provider(Contract contract); ///< "USPS", "FedEx", "UPS"

/// The accounts as the service lists them; without FedEx if it is not connected.
std::vector<Json> list(const PracticeLedger &ledger, const CarrierScenario &scenario);
bool isKnown(const QString &id);

} // namespace PracticeAccounts
} // namespace parcelory
