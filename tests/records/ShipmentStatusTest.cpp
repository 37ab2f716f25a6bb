#include "records/ShipmentStatus.h"
#include "support/Table.h"

namespace parcelory::test {

TEST(ShipmentStatus, HasTextsForTheClerk)
{
    for (const Json &row : table(u"shipment-status"_s, "texts")) {
        EXPECT_EQ(friendlyStatus(text(row[0])), text(row[1]));
        EXPECT_EQ(refundBadge(refundState(text(row[0]))), text(row[2]));
    }
}

TEST(ShipmentStatus, FollowsWhatTheCarrierSaysAboutTheRefund)
{
    for (const Json &row : table(u"shipment-status"_s, "after an answer"))
        EXPECT_EQ(statusAfter(RefundState(row[0].get<int>()), text(row[1])), text(row[2])) << row;
}

} // namespace parcelory::test
