#include "compose/SecondLabel.h"
#include "records/ShipmentRecord.h"
#include "support/CarrierDesk.h"

namespace parcelory::test {

TEST(SecondLabel, WarnsByReferenceRecipientInvoiceAndUnresolvedPurchase)
{
    const QDateTime now(QDate(2026, 11, 20), QTime(15, 0));
    const ShipmentRecord label{.service = u"Priority Mail"_s,
                               .recipient = u"Eleanor Whitfield, 418 Montford Ave, Asheville NC 28801"_s,
                               .tracking = u"92055901"_s,
                               .reference = u"48213"_s,
                               .zip11 = u"28801-1224"_s};
    for (const Json &row : table(u"second-label"_s, "reasons")) {
        const Json &change = row[0];
        ShipmentRecord earlier = changed(label, change.value("label", Json::object()));
        earlier.createdAt = now.addSecs(-3600).addDays(change.value("days", 0));
        const SecondLabelFacts facts{.recipient = changed(homeAddress(), change.value("recipient", Json::object())),
                                     .reference = text(change.value("reference", Json())),
                                     .invoiceTracking = text(change.value("tracking", Json())),
                                     .lastOutcomeUnknown = change.value("unknown", false),
                                     .now = now,
                                     .earlier = {earlier, earlier}}; // the newest is enough
        const QString reason = text(row[1]).replace(u"%1"_s, u"USPS Priority Mail label 9205 5901 was bought "_s);
        EXPECT_EQ(secondLabelReasons(facts).join(u'|'), reason) << row;
    }
}

} // namespace parcelory::test
