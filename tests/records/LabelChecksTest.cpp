#include "records/LabelChecks.h"
#include "records/ShipmentRecord.h"
#include "support/Table.h"

namespace parcelory::test {

TEST(LabelChecks, WarnsOnceForEveryReasonAndNeverOfAFreshLabel)
{
    // A fact about a label, and the number of warnings it causes for a reprint, a refund and a SCAN form. Exactly one
    // fact of each group applies.
    const Json groups = table(u"label-checks"_s, "facts");
    const QDateTime now(QDate(2026, 11, 20), QTime(14, 41));
    int wrong = 0;
    for (int combination = 0; combination < 7 * 7 * 5 * 5 * 2 * 2 * 2; ++combination) {
        Json fact;
        int expected[3] = {}, rest = combination;
        for (const Json &group : groups) {
            const Json &one = group[rest % group.size()];
            rest /= int(group.size());
            fact.update(one[0]);
            for (int use = 0; use < 3; ++use)
                expected[use] += one[use + 1].get<int>();
        }
        const ShipmentRecord record{.createdAt = now.addSecs(-fact["age"].get<qint64>()),
                                    .status = text(fact["status"]),
                                    .testMode = fact["TEST label"]};
        const LabelFacts facts{.now = now,
                               .testKey = optional<bool>(fact["TEST key"]),
                               .tracked = trackingStatusFrom(text(fact["tracked"])),
                               .reprints = fact["reprints"],
                               .lastReprint = now.addSecs(-60),
                               .onScanForm = fact["on a form"].get<bool>() ? std::optional(now) : std::nullopt,
                               .waiting = text(fact["waiting"])};
        const LabelUse uses[] = {LabelUse::reprint, LabelUse::refund, LabelUse::scanForm};
        for (int use = 0; use < 3; ++use) {
            const QStringList warnings = labelWarnings(uses[use], record, facts);
            const bool isRight = warnings.size() == expected[use] && warnings.filter(u"%"_s).isEmpty();
            if (!isRight && ++wrong < 5)
                ADD_FAILURE() << use << ": " << fact << " — " << warnings.join(u' ').toStdString();
        }
        EXPECT_TRUE(labelWarnings(LabelUse::checkStatus, record, facts).isEmpty());
    }
    EXPECT_EQ(wrong, 0);
    // The log's status is enough; an earlier tracking status is not a second reason.
    EXPECT_EQ(labelWarnings(LabelUse::reprint, {.createdAt = now, .status = u"DELIVERED"_s},
                            {.now = now, .tracked = TrackingStatus::transit}),
              QStringList(u"The carrier has delivered this package."_s));
}

TEST(LabelChecks, AsksTheCarrierOnlyOfItsOwnLabels)
{
    for (const Json &row : table(u"label-checks"_s, "asked of the carrier")) {
        const ShipmentRecord record{.tracking = text(row[1]), .transactionID = text(row[0]), .status = text(row[2])};
        const bool refundable = row[3], checkable = row[4];
        EXPECT_EQ(labelBlocker(LabelUse::refund, record).isEmpty(), refundable) << row;
        EXPECT_EQ(labelBlocker(LabelUse::checkStatus, record).isEmpty(), checkable) << row;
        EXPECT_EQ(labelBlocker(LabelUse::reprint, record).isEmpty(), refundable || checkable)
            << "an imported row has no label";
    }
}

} // namespace parcelory::test
