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
    using enum RefundState;
    const std::tuple<RefundState, QString, QString> rows[] = {{pending, u"PRINTED"_s, u"REFUND_PENDING"_s},
                                                              {granted, u"REFUND_PENDING"_s, u"REFUNDED"_s},
                                                              {failed, u"REFUND_PENDING"_s, u"REFUND_ERROR"_s},
                                                              {none, u"REFUND_REQUESTED"_s, u"PRINTED"_s},
                                                              {none, u"DELIVERED"_s, u"DELIVERED"_s}};
    for (const auto &[refund, before, after] : rows)
        EXPECT_EQ(statusAfter(refund, before), after);
}

} // namespace parcelory::test
