#include "records/LabelChecks.h"
#include "records/ShipmentRecord.h"
#include "support/LogFile.h"
#include "support/Test.h"

namespace parcelory::test {
namespace {

/// A fact about a label, and the number of warnings it causes for a reprint, a refund and a SCAN form.
struct Trait {
    const char *name;
    std::function<void(ShipmentRecord &, LabelFacts &)> apply;
    int reprint = 0, refund = 0, scanForm = 0;
};
/// Exactly one trait of each group applies.
using Group = QList<Trait>;

const QDateTime now(QDate(2026, 11, 20), QTime(14, 41));

Trait status(const char *word, int reprint, int refund, int scanForm)
{
    const auto apply = [word](ShipmentRecord &r, LabelFacts &) { r.status = QString::fromLatin1(word); };
    return {word, apply, reprint, refund, scanForm};
}

Trait tracked(const char *word, int warnings)
{
    const auto apply = [word](ShipmentRecord &, LabelFacts &f) { f.tracked = trackingStatusFrom(word); };
    return {word, apply, warnings, warnings, warnings};
}

Trait age(qint64 seconds, int warnings)
{
    const auto apply = [seconds](ShipmentRecord &r, LabelFacts &) { r.createdAt = now.addSecs(-seconds); };
    return {"age", apply, warnings, warnings, warnings};
}

Trait mode(bool testLabel, std::optional<bool> testKey, int warnings)
{
    const auto apply = [=](ShipmentRecord &r, LabelFacts &f) {
        r.testMode = testLabel;
        f.testKey = testKey;
    };
    return {"mode", apply, warnings, warnings, warnings};
}

const QList<Group> &groups()
{
    constexpr qint64 day = 24 * 3600;
    const auto none = [](ShipmentRecord &, LabelFacts &) {};
    const auto printedTwice = [](ShipmentRecord &, LabelFacts &f) {
        f.reprints = 1;
        f.lastReprint = now.addSecs(-60);
    };
    static const QList<Group> all = {
        {status("PRINTED", 0, 0, 0), status("REFUND_PENDING", 1, 1, 1), status("REFUND_REQUESTED", 1, 1, 1),
         status("REFUNDED", 1, 1, 1), status("REFUND_ERROR", 0, 0, 0), status("", 0, 0, 0), status("Stamp", 0, 0, 0)},
        {tracked("", 0), tracked("UNKNOWN", 0), tracked("PRE_TRANSIT", 0), tracked("TRANSIT", 1),
         tracked("DELIVERED", 1), tracked("RETURNED", 1), tracked("FAILURE", 1)},
        {age(0, 0), age(-day, 0), age(25 * day, 0), age(25 * day + 1, 1), age(400 * day, 1)},
        {mode(false, false, 0), mode(true, true, 0), mode(true, {}, 0), mode(true, false, 1), mode(false, true, 1)},
        {{"printed once", none}, {"printed twice", printedTwice, 1, 1, 0}},
        {{"on no form", none}, {"on a form", [](ShipmentRecord &, LabelFacts &f) { f.onScanForm = now; }, 0, 1, 1}},
        {{"idle", none}, {"waits", [](ShipmentRecord &, LabelFacts &f) { f.waiting = u"2 wait."_s; }, 1, 0, 0}},
    };
    return all;
}

} // namespace

TEST(LabelChecks, WarnsOnceForEveryReasonAndNeverOfAFreshLabel)
{
    int combinations = 1, wrong = 0;
    for (const Group &group : groups())
        combinations *= int(group.size());
    EXPECT_EQ(combinations, 7 * 7 * 5 * 5 * 2 * 2 * 2);
    for (int combination = 0; combination < combinations; ++combination) {
        ShipmentRecord record;
        LabelFacts facts{.now = now};
        int expected[3] = {};
        QStringList names;
        int rest = combination;
        for (const Group &group : groups()) {
            const Trait &trait = group[rest % group.size()];
            rest /= int(group.size());
            trait.apply(record, facts);
            expected[0] += trait.reprint;
            expected[1] += trait.refund;
            expected[2] += trait.scanForm;
            names += QString::fromLatin1(trait.name);
        }
        const LabelUse uses[] = {LabelUse::reprint, LabelUse::refund, LabelUse::scanForm};
        for (int use = 0; use < 3; ++use) {
            const QStringList warnings = labelWarnings(uses[use], record, facts);
            const bool isRight = warnings.size() == expected[use] && warnings.filter(u"%"_s).isEmpty();
            if (!isRight && ++wrong < 5)
                ADD_FAILURE() << use << ": " << names.join(u", "_s).toStdString() << " — "
                              << warnings.join(u' ').toStdString();
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
    const QString own = transactionId(0xabc), capitals = own.toUpper();
    const struct {
        QString id, tracking, status;
        bool refundable, checkable;
    } rows[] = {
        {own, u"9400"_s, u"PRINTED"_s, true, true},      {capitals, u"9400"_s, u"PRINTED"_s, true, true},
        {own, u""_s, u"PRINTED"_s, true, false},         {own, u"9400"_s, u"REFUNDED"_s, false, true},
        {own, u"9400"_s, u"REFUND_ERROR"_s, true, true}, {u""_s, u"9400"_s, u"PRINTED"_s, false, false},
        {u"1"_s, u"9400"_s, u""_s, false, false},        {own.chopped(1), u"9400"_s, u""_s, false, false},
        {own + u'0', u"9400"_s, u""_s, false, false},    {own.chopped(1) + u'g', u"9400"_s, u""_s, false, false},
    };
    for (const auto &[id, tracking, status, refundable, checkable] : rows) {
        const ShipmentRecord record{.tracking = tracking, .transactionID = id, .status = status};
        EXPECT_EQ(labelBlocker(LabelUse::refund, record).isEmpty(), refundable) << id.toStdString();
        EXPECT_EQ(labelBlocker(LabelUse::checkStatus, record).isEmpty(), checkable) << id.toStdString();
        EXPECT_EQ(labelBlocker(LabelUse::reprint, record).isEmpty(), refundable || checkable)
            << "an imported row has no label";
    }
}

} // namespace parcelory::test
