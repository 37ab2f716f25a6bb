#include "records/OpenItems.h"

#include "records/LabelEvents.h"
#include "records/TrackingPlan.h"
#include "support/LogFile.h"

#include <deque>

namespace parcelory::test {
namespace {

const QDateTime now(QDate(2026, 11, 20), QTime(14, 0));

ShipmentRecord labelOf(double days, int number = 1)
{
    return {.id = number,
            .createdAt = now.addSecs(qint64(-days * 86400)),
            .postage = 9.85,
            .recipient = u"Ruth Abernathy, 88 Quarry Ln, Bend OR 97701"_s,
            .tracking = u"94055%1"_s.arg(number),
            .transactionID = transactionId(number)};
}

Journey journey(TrackingStatus status, double still = 0, const QString &zip = {})
{
    const bool isScanned = status != TrackingStatus::unknown && status != TrackingStatus::preTransit;
    const QDateTime moved = now.addSecs(qint64(-still * 86400));
    return {.status = status, .isScanned = isScanned, .movedAt = moved, .zip = zip, .place = {}, .askedAt = now};
}

QString reasonOf(const OpenFacts &facts)
{
    const std::optional<OpenItem> item = OpenItems::itemOf(facts, now);
    return item ? wordOf(item->reason) : QString();
}

} // namespace

TEST(OpenItems, NamesTheOneReasonOfALabel)
{
    for (const Json &row : table(u"open-items"_s, "reasons")) {
        const Json &fact = row[1];
        const QString reason = text(row[2]);
        OpenFacts facts{.label = labelOf(row[0])};
        facts.label.status = text(fact.value("status", Json("PRINTED")));
        facts.label.carrier = text(fact.value("carrier", Json("USPS")));
        if (const Json tracked = fact.value("tracked", Json()); !tracked.is_null())
            facts.journey =
                journey(trackingStatusFrom(text(tracked)), fact.value("still", 0.0), text(fact.value("zip", Json())));
        EXPECT_EQ(reasonOf(facts), reason) << row;
        facts.done = {reason};
        EXPECT_TRUE(reason.isEmpty() || reasonOf(facts) != reason) << "taken off the list";
    }
    OpenFacts paper{.label = labelOf(1), .isPapersOpen = true, .isUnchecked = true};
    EXPECT_EQ(reasonOf(paper), u"CUSTOMS_PAPERS"_s);
    paper.isPapersOpen = false;
    EXPECT_EQ(reasonOf(paper), u"LABEL_UNCHECKED"_s);
    paper.journey = journey(TrackingStatus::transit);
    EXPECT_EQ(reasonOf(paper), QString()) << "the parcel is gone";
}

TEST(OpenItems, ReadsWhatDecidesFromTheLog)
{
    LogFile file;
    ShipmentLog log(QDir(file.folder.path()));
    const auto add = [&](int number, double days, bool test = false) {
        ShipmentRecord label = labelOf(days, number);
        label.testMode = test;
        label.zpl = "^XA^XZ";
        ASSERT_TRUE(log.insert(label));
    };
    add(1, 26);
    add(2, 3);
    add(3, 26, true);
    add(4, 20);
    add(5, 100);
    ASSERT_TRUE(log.insert({.createdAt = now.addDays(-26), .transactionID = u"Piece 1"_s})); // imported
    const Journey told{.status = TrackingStatus::transit,
                       .isScanned = true,
                       .movedAt = now,
                       .zip = u"97701"_s,
                       .place = u"Bend OR"_s,
                       .askedAt = now};
    ASSERT_TRUE(log.change([&](Database &db) { return Journeys::put(db, 1, told); }) &&
                LabelVerdicts::put(log, rowOf(log, 1), {{u"zip"_s, u"same"_s, {}, {}, {}}}));
    ASSERT_TRUE(LabelEvents::put(log, {transactionId(2)}, LabelEvent::papersFailed, now.addDays(-3)));
    ASSERT_TRUE(LabelEvents::put(log, {transactionId(4)}, LabelEvent::papersFailed, now.addDays(-3)) &&
                LabelEvents::put(log, {transactionId(4)}, LabelEvent::papersPrinted, now.addDays(-2)) &&
                LabelEvents::put(log, {transactionId(4)}, LabelEvent::refundAsked, now.addDays(-2)));
    ASSERT_TRUE(OpenItems::setDone(log, rowOf(log, 2), OpenReason::customsPapers, true));
    const QList<OpenFacts> facts = *OpenItems::read(log, now);
    ASSERT_EQ(facts.size(), 3);
    EXPECT_TRUE(facts[0].journey == told && !facts[0].isUnchecked && facts[1].isUnchecked);
    EXPECT_TRUE(facts[2].isPapersOpen && facts[2].done.contains(u"CUSTOMS_PAPERS"_s) && !facts[1].isPapersOpen);
    EXPECT_EQ(facts[1].refundAskedAt, now.addDays(-2));
    ASSERT_TRUE(OpenItems::setDone(log, rowOf(log, 2), OpenReason::customsPapers, false));
    EXPECT_EQ(OpenItems::itemsOf(*OpenItems::read(log, now), now).last().reason, OpenReason::customsPapers);
    const auto addOld = [&](int number, const QString &status) {
        ShipmentRecord old = labelOf(100, number);
        old.status = status;
        ASSERT_TRUE(log.insert(old) &&
                    LabelEvents::put(log, {old.transactionID}, LabelEvent::refundAsked, now.addDays(-95)));
    };
    addOld(7, u"REFUND_PENDING"_s);
    addOld(8, u"REFUND_ERROR"_s);
    const QList<OpenFacts> old = *OpenItems::read(log, now);
    ASSERT_EQ(old.size(), 5) << "an unsettled refund stays, however old it is";
    EXPECT_EQ(old[0].refundAskedAt, now.addDays(-95));
    EXPECT_EQ(OpenItems::itemOf(old[1], now)->reason, OpenReason::refundRejected);
    ASSERT_TRUE(OpenItems::setDone(log, old[1].label, OpenReason::refundRejected, true));
    EXPECT_FALSE(OpenItems::itemOf(OpenItems::read(log, now)->at(1), now)) << "until the clerk settles it";
}

/// A year of 5,000 labels. The carrier scans most parcels; the clerk refunds what the list asks to refund a day later.
TEST(OpenItems, MissNoRefundInAYearAndNeverAskTooOften)
{
    std::mt19937 dice(7);
    struct Parcel {
        OpenFacts facts;
        std::optional<QDateTime> scannedAt; ///< nothing: the label is never used
        std::optional<QDateTime> shownAt;   ///< as a refund that ends
        std::optional<QDateTime> alarmedAt; ///< first of all
    };
    std::vector<Parcel> parcels;
    const QDateTime begin(QDate(2026, 1, 1), QTime(9, 0), QTimeZone::utc());
    for (int number = 1; number <= 5000; ++number) {
        Parcel parcel{.facts = {.label = labelOf(0, number)}, .scannedAt = {}, .shownAt = {}, .alarmedAt = {}};
        parcel.facts.label.createdAt = begin.addSecs(qint64(number) * 365 * 86400 / 5000);
        if (dice() % 50 != 0)
            parcel.scannedAt = parcel.facts.label.createdAt.addSecs(3600 * qint64(1 + dice() % 60));
        parcels.push_back(parcel);
    }
    TrackingPlan plan;
    std::deque<QDateTime> asked; ///< within the last minute
    std::size_t first = 0, bought = 0;
    int questions = 0, tooMany = 0;
    const QDateTime end = begin.addDays(400);
    constexpr qint64 step = 6 * 3600; // the list is looked at
    for (QDateTime time = begin; time < end; time = time.addSecs(step)) {
        while (bought < parcels.size() && parcels[bought].facts.label.createdAt <= time)
            ++bought;
        while (first < bought && parcels[first].facts.label.createdAt.addDays(30) < time)
            ++first;
        QList<OpenFacts> followed;
        for (std::size_t at = first; at < bought; ++at)
            followed += parcels[at].facts;
        plan.setLabels(followed, time, time);
        QDateTime moment = time;
        for (auto next = plan.nextAt(); next && *next < time.addSecs(step); next = plan.nextAt()) {
            moment = std::max(moment, *next);
            const std::optional<OpenFacts> label = plan.next(moment);
            if (!label || questions > 500000)
                break;
            ++questions;
            while (!asked.empty() && asked.front().secsTo(moment) >= 60)
                asked.pop_front();
            tooMany += asked.size() >= 50 || (!asked.empty() && asked.back().msecsTo(moment) < 1000);
            asked.push_back(moment);
            Parcel &parcel = parcels[std::size_t(label->label.id - 1)];
            const bool isScanned = parcel.scannedAt && *parcel.scannedAt <= moment;
            const bool isDelivered = parcel.scannedAt && parcel.scannedAt->addDays(3) <= moment;
            parcel.facts.journey = Journey{.status = isDelivered ? TrackingStatus::delivered
                                                     : isScanned ? TrackingStatus::transit
                                                                 : TrackingStatus::preTransit,
                                           .isScanned = isScanned,
                                           .movedAt = moment,
                                           .zip = {},
                                           .place = {},
                                           .askedAt = moment};
        }
        for (std::size_t at = first; at < bought; ++at) {
            Parcel &parcel = parcels[at];
            const std::optional<OpenItem> item = OpenItems::itemOf(parcel.facts, time.addSecs(step));
            if (!item)
                continue;
            if (!parcel.alarmedAt)
                parcel.alarmedAt = time.addSecs(step);
            if (stepOf(item->reason) == OpenStep::refund) {
                if (!parcel.shownAt)
                    parcel.shownAt = time.addSecs(step);
                if (parcel.shownAt->addDays(1) <= time)
                    parcel.facts.label.status = u"REFUND_PENDING"_s;
            }
        }
    }
    int refundable = 0, missed = 0, late = 0, wrong = 0;
    for (const Parcel &parcel : parcels) {
        const QDateTime &bought = parcel.facts.label.createdAt;
        wrong += parcel.scannedAt && parcel.shownAt;
        if (parcel.scannedAt)
            continue;
        ++refundable;
        missed += !parcel.shownAt || *parcel.shownAt >= bought.addDays(28);
        late += !parcel.alarmedAt || *parcel.alarmedAt > bought.addDays(2); // a day until the label is late, and a day
    }
    EXPECT_GT(refundable, 50);
    EXPECT_EQ(missed, 0);
    EXPECT_EQ(late, 0);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(tooMany, 0);
    EXPECT_LT(questions, 5000 * 40);

    const QList<OpenFacts> two = {{.label = labelOf(4, 1)}, {.label = labelOf(3, 2)}};
    TrackingPlan failing;
    failing.setLabels(two, now, now);
    failing.putBack(*failing.next(now), now.addSecs(3600)); // no answer about the newer label
    failing.setLabels(two, now, now);
    EXPECT_EQ(failing.next(now.addSecs(2))->label.id, 1) << "the older label does not wait";
    EXPECT_FALSE(failing.next(now.addSecs(3599)));
    EXPECT_EQ(failing.next(now.addSecs(3600))->label.id, 2);
}

} // namespace parcelory::test
