#include "records/ShipmentStatus.h"
#include "support/Test.h"

namespace parcelory::test {

TEST(ShipmentStatus, HasTextsForTheClerk)
{
    const QString pending = u"Refund pending (USPS: up to 14 days)"_s;
    const struct {
        QString stored, display, badge;
    } rows[] = {{u"PRINTED"_s, u"Printed"_s, {}},
                {u"DELIVERED"_s, u"Delivered"_s, {}},
                {u"REFUND_PENDING"_s, pending, u"REFUND PENDING"_s},
                {u"REFUND_REQUESTED"_s, pending, u"REFUND PENDING"_s},
                {u"REFUNDED"_s, u"Refunded"_s, u"REFUNDED"_s},
                {u"REFUND_ERROR"_s, u"Refund failed — see Error Log"_s, u"REFUND FAILED"_s},
                {{}, u"—"_s, {}},
                {u"Voided"_s, u"Voided"_s, {}}};
    for (const auto &row : rows) {
        EXPECT_EQ(friendlyStatus(row.stored), row.display);
        EXPECT_EQ(refundBadge(refundState(row.stored)), row.badge);
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
