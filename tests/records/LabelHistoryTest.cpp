#include "records/LabelHistory.h"
#include "records/ScanForms.h"
#include "support/LogFile.h"

namespace parcelory::test {
namespace {

const QDateTime midnight = QDate(2026, 11, 20).startOfDay();

QString namesOf(const QList<ShipmentRecord> &labels)
{
    return each(labels, &ShipmentRecord::recipient).join(u' ');
}

/// A log with labels around a midnight; each has its recipient as its transaction.
struct LabelHistoryTest : testing::Test {
    LogFile file;
    ShipmentLog log{QDir(file.folder.path())};
    LabelHistory history{log};
    ScanForms forms{log};

    LabelHistoryTest()
    {
        for (const Json &row : table(u"mailing-log"_s, "labels around a midnight"))
            EXPECT_TRUE(log.insert(changed(ShipmentRecord{.createdAt = midnight.addSecs(row[0])}, row[1])));
    }
    QString found(const ShipmentRecord &wanted) const
    {
        const std::optional<ShipmentRecord> row = *log.find(wanted);
        return row ? row->recipient : QString();
    }
};

} // namespace

TEST_F(LabelHistoryTest, FindsTheLabelsOfADayAReferenceAndATransaction)
{
    EXPECT_EQ(namesOf(*log.labelsOf(midnight.date())), u"Test Noon"_s);
    const auto isAny = [](const ShipmentRecord &) { return true; };
    EXPECT_EQ(namesOf(*log.labelsLike(u"INV-7"_s, midnight, false, isAny)), u"Imported Next Noon Late Past"_s);
    EXPECT_EQ(namesOf(*log.labelsLike({}, midnight, true, isAny)), u"Test"_s);
    EXPECT_EQ(namesOf(*log.openRefunds(1000, 50)), u"Next Late Past"_s);
    EXPECT_EQ(namesOf(*log.openRefunds(1000, 2)), u"Next Late"_s);
    EXPECT_EQ(found({.id = 3}), u"Test"_s);
    // The clock may have been set back by up to a day since the label was bought.
    EXPECT_EQ(found({.createdAt = midnight.addSecs(80000), .transactionID = u"Late"_s}), u"Late"_s);
    EXPECT_EQ(found({.createdAt = midnight.addDays(2), .transactionID = u"Late"_s}), QString());
    EXPECT_EQ(found({.createdAt = midnight}), QString());
}

TEST_F(LabelHistoryTest, KeepsReprintsAndTheLastTrackingStatus)
{
    EXPECT_EQ(history.of(1)->reprints, 0);
    EXPECT_TRUE(history.addReprint(rowOf(log, 1), midnight) && history.addReprint(rowOf(log, 1), midnight.addSecs(60)));
    EXPECT_TRUE(history.addReprint(rowOf(log, 2), midnight.addSecs(90)));
    EXPECT_TRUE(log.change([](Database &db) {
        return LabelHistory::putTracked(db, 1, u"TRANSIT"_s, midnight) &&
               LabelHistory::putTracked(db, 1, u"DELIVERED"_s, midnight);
    }));
    const LabelHistory::Past past = *history.of(1);
    EXPECT_EQ(past.reprints, 2);
    EXPECT_EQ(past.lastReprint, midnight.addSecs(60));
    EXPECT_EQ(past.tracked, TrackingStatus::delivered);
    EXPECT_EQ(history.of(2)->tracked, TrackingStatus::unknown);
}

TEST_F(LabelHistoryTest, KeepsTheVerdictOnALabel)
{
    const QList<StoredFinding> first = {{u"NAME"_s, u"SAME"_s, u"Ruth"_s, u"RUTH"_s, {3, 4}},
                                        {u"COLOR"_s, u"FADED"_s, {}, {}, {}}}; // a later version knows more words
    EXPECT_TRUE(LabelVerdicts::of(log, 1)->isEmpty()) << "a log without the table";
    EXPECT_TRUE(LabelVerdicts::put(log, rowOf(log, 1), first) && LabelVerdicts::put(log, rowOf(log, 2), first));
    EXPECT_EQ(*LabelVerdicts::of(log, 1), first);
    EXPECT_TRUE(LabelVerdicts::put(log, rowOf(log, 1), first.first(1)));
    EXPECT_EQ(*LabelVerdicts::of(log, 1), first.first(1)) << "replaced";
    EXPECT_EQ(*LabelVerdicts::of(log, 2), first);

    ShipmentRecord moved = rowOf(log, 2); // a restore has given the label another id since it was read
    moved.id = 3;
    ShipmentRecord gone = moved;
    gone.transactionID = u"gone"_s;
    EXPECT_TRUE(LabelVerdicts::put(log, moved, first.first(1)));
    EXPECT_FALSE(LabelVerdicts::put(log, gone, first));
    EXPECT_EQ(log.lastError(), u"the label is no longer in it"_s);
    EXPECT_TRUE(history.addReprint(moved, midnight) && log.setRefund(moved, RefundState::granted));
    EXPECT_EQ(LabelVerdicts::of(log, 2)->size(), 1);
    EXPECT_EQ(history.of(2)->reprints, 1);
    EXPECT_EQ(refundState(rowOf(log, 2)), RefundState::granted);
    EXPECT_TRUE(LabelVerdicts::of(log, 3)->isEmpty() && history.of(3)->reprints == 0);

    file.run("DROP TABLE label_verdicts; CREATE TABLE label_verdicts (label INTEGER)"); // another version's table
    EXPECT_FALSE(LabelVerdicts::of(log, 1).isRead() || LabelVerdicts::put(log, rowOf(log, 1), first));
    EXPECT_TRUE(log.zpl(1).isRead() && log.insert({.recipient = u"Later"_s})) << "the log stays usable";
}

TEST_F(LabelHistoryTest, KeepsScanFormsFromTheRequestToTheirPages)
{
    ScanForm form{.askedAt = midnight, .labels = 3, .transactions = {u"Late"_s, u"Test"_s, u"Other"_s}};
    ScanForm test = form;
    test.testMode = true;
    form.id = forms.begin(form).value_or(0);
    test.id = forms.begin(test).value_or(0);
    EXPECT_EQ(*forms.underWay(false), QList{form});
    EXPECT_EQ(*forms.underWay(true), QList{test});
    EXPECT_EQ(*forms.formWith(u"Late"_s), std::nullopt) << "a form that was only requested may not exist";
    EXPECT_EQ(namesOf(*forms.labelsOn(form)), u"Late Test"_s);

    EXPECT_TRUE(forms.setMade(form.id, u"m1"_s, {}));
    form.manifestId = u"m1"_s;
    EXPECT_EQ(*forms.underWay(false), QList{form}) << "some accounts' responses list no labels";
    EXPECT_TRUE(forms.setMade(form.id, u"m1"_s, {u"Late"_s}));
    form.transactions = {u"Late"_s};
    EXPECT_TRUE(*forms.knowsManifest(u"m1"_s) && !*forms.knowsManifest(u"m2"_s));
    EXPECT_EQ(*forms.formWith(u"Late"_s), midnight);
    EXPECT_TRUE(forms.finished(9)->isEmpty());

    EXPECT_TRUE(forms.store(form.id, {"page 1", "page 2"}));
    EXPECT_EQ(*forms.finished(9), QList{form});
    EXPECT_EQ(*forms.documents(form.id), (QList<QByteArray>{"page 1", "page 2"}));
    EXPECT_TRUE(forms.underWay(false)->isEmpty() && forms.remove(test.id) && forms.underWay(true)->isEmpty());
}

} // namespace parcelory::test
