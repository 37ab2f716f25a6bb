#pragma once

#include "practice/carrier/CarrierScenario.h"

#include <vector>

namespace parcelory {

struct HostileAnswer {
    const char *name;
    CarrierFailure failure; ///< for any request; none of them says that something was sold
};

/// What a broken or hostile server, or a machine on the way, may answer to any request.
std::vector<HostileAnswer> hostileAnswers();

} // namespace parcelory
