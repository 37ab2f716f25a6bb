#include "compose/SecondLabel.h"
#include "records/ShipmentRecord.h"
#include "support/CarrierDesk.h"
#include "support/Test.h"

namespace parcelory::test {

TEST(SecondLabel, WarnsByReferenceRecipientInvoiceAndUnresolvedPurchase)
{
    const QDateTime now(QDate(2026, 11, 20), QTime(15, 0));
    ShipmentRecord label{.createdAt = now.addSecs(-3600),
                         .service = u"Priority Mail"_s,
                         .recipient = u"Eleanor Whitfield, 418 Montford Ave, Asheville NC 28801"_s,
                         .tracking = u"92055901"_s,
                         .reference = u"48213"_s,
                         .zip11 = u"28801-1224"_s};
    const SecondLabelFacts first{.recipient = homeAddress(),
                                 .reference = {},
                                 .invoiceTracking = {},
                                 .lastOutcomeUnknown = false,
                                 .now = now,
                                 .earlier = {}};
    struct Row {
        std::function<void(SecondLabelFacts &, ShipmentRecord &)> change;
        QString reason;
    };
    const QString same = u"USPS Priority Mail label 9205 5901 was bought today at 2:00 PM for the same "_s;
    const Row rows[] = {
        {[](auto &, auto &) {}, same + u"recipient."_s},
        {[](auto &facts, auto &) { facts.recipient.name = u" eleanor  whitfield"_s; }, same + u"recipient."_s},
        {[](auto &facts, auto &) { facts.recipient.name = u"Eleanor"_s; }, {}},
        {[](auto &facts, auto &) { facts.recipient.zip = u"28802"_s; }, {}},
        {[](auto &, auto &row) { row.createdAt = row.createdAt.addDays(-1); }, {}},
        {[](auto &, auto &row) { row.status = u"REFUND_PENDING"_s; }, {}},
        {[](auto &, auto &row) { row.status = u"REFUND_ERROR"_s; }, same + u"recipient."_s},
        {[](auto &facts, auto &) { facts.reference = u" 48213 "_s; }, same + u"reference."_s},
        {[](auto &facts, auto &row) {
             facts.reference = u"cc-7"_s;
             row.reference = u"CC-7 "_s;
         },
         same + u"reference."_s},
        {[](auto &facts, auto &row) {
             facts.reference = u"48213"_s;
             facts.recipient.name = u"Somebody"_s;
             row.createdAt = row.createdAt.addYears(-1);
         },
         u"USPS Priority Mail label 9205 5901 was bought on Nov 20, 2025 at 2:00 PM for the same reference."_s},
        {[](auto &facts, auto &row) {
             row.status = u"REFUNDED"_s;
             facts.invoiceTracking = u"9400111"_s;
         },
         u"The invoice already has a tracking number: 9400 111."_s},
        {[](auto &facts, auto &row) {
             row.status = u"REFUNDED"_s;
             facts.lastOutcomeUnknown = true;
         },
         u"A label for this recipient may have been bought: the carrier has not confirmed it yet."_s},
    };
    for (const Row &row : rows) {
        SecondLabelFacts facts = first;
        ShipmentRecord earlier = label;
        row.change(facts, earlier);
        facts.earlier = {earlier, earlier}; // the newest is enough
        EXPECT_EQ(secondLabelReasons(facts).join(u'|'), row.reason);
    }
}

} // namespace parcelory::test
