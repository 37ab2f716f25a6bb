#pragma once

// What the tests of the carrier's client share.

// IWYU pragma: begin_exports
#include "carrier/ShippoClient.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoKeys.h"
#include "carrier/ShippoRecords.h"
#include "support/CarrierDesk.h"
// IWYU pragma: end_exports

namespace parcelory::test {

class ClientTest : public testing::Test {
protected:
    CarrierDesk desk;
    ShippoKeys keys{desk.secrets, desk.preferences};
    ShippoClient client{desk.platform, keys};

    template <class T>
    T run(Task<T> task)
    {
        return runTask(std::move(task), &desk.clock);
    }
};

} // namespace parcelory::test
