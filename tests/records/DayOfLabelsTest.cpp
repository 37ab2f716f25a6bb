#include "records/DayOfLabels.h"
#include "support/LogFile.h"

namespace parcelory::test {
namespace {

TEST(DayOfLabels, EachLabelIsListedWhereItNeedsAHand)
{
    const auto listed = [](const DayOfLabels &day) {
        QStringList places;
        const QStringList reasons = {u"refund"_s, u"otherKey"_s, u"imported"_s};
        const auto add = [&places](const auto &list, const QString &name) {
            if (!list.isEmpty())
                places += name;
        };
        add(day.notOnForm, u"missing"_s);
        add(day.onForm, u"form"_s);
        if (!day.exempt.isEmpty())
            places += reasons[int(day.exempt.first().reason)];
        add(day.toHandOver, u"driver"_s);
        add(day.unprinted, u"unprinted"_s);
        add(day.spend, u"$"_s);
        return places.join(u' ');
    };
    const QStringList states = {u"unknown"_s, u"never"_s, u"sent"_s, u"done"_s};
    for (const Json &row : table(u"end-of-day"_s, "lists")) {
        const QString live = text(row[2]);
        const auto record = changed(ShipmentRecord{.postage = 2, .transactionID = transactionId()}, row[0]);
        const auto onForm = row[0].contains("on a form") ? std::optional(record.createdAt) : std::nullopt;
        const QList<DayLabel> labels = {{record, onForm, PrintState(states.indexOf(text(row[1]))), false}};
        EXPECT_EQ(listed(sortDay(labels, {.test = false})), live) << row;
        EXPECT_EQ(listed(sortDay(labels, {.test = true})), text(row[3])) << row;
        EXPECT_EQ(sortDay(labels, {.test = true, .practice = true}).counted > 0, record.testMode || live.contains(u'$'))
            << "the practice desk counts its own labels: " << row;
    }
}

TEST(DayOfLabels, TheSpendIsByCarrierTheDearestServiceFirst)
{
    QList<DayLabel> labels;
    const auto add = [&labels](const QString &carrier, const QString &service, double postage) {
        labels += DayLabel{.record = {.carrier = carrier, .service = service, .postage = postage}};
    };
    add(u"FedEx"_s, u"FedEx 2Day"_s, 44.10);
    add(u"USPS"_s, u"Priority Mail"_s, 12.35);
    add(u"USPS"_s, u"Express"_s, 31.40);
    add(u"FedEx"_s, u"FedEx Ground"_s, 60);
    add(u"USPS"_s, u"Priority Mail"_s, 9.85);
    const DayOfLabels day = sortDay(labels, {});
    QStringList lines;
    for (const ServiceSpend &line : day.spend)
        lines += u"%1/%2/%3/%4"_s.arg(line.carrier, line.service).arg(line.labels).arg(line.dollars);
    EXPECT_EQ(lines, QStringList({u"USPS/Express/1/31.4"_s, u"USPS/Priority Mail/2/22.2"_s, u"FedEx/Ground/1/60"_s,
                                  u"FedEx/2Day/1/44.1"_s}));
    EXPECT_EQ(day.counted, 5);
    EXPECT_NEAR(day.dollars, 157.70, 1e-9);
}

TEST(LabelEvents, TheLastPrintDecides)
{
    const LogFile file;
    ShipmentLog log{QDir(file.folder.path())};
    QDateTime now(QDate(2026, 11, 20), QTime(12, 0));
    const auto state = [&log] { return *LabelEvents::printState(log, u"t"_s); };
    EXPECT_EQ(state(), PrintState::unknown);
    const std::pair<LabelEvent, PrintState> steps[] = {
        {LabelEvent::refundAsked, PrintState::unknown}, {LabelEvent::notPrinted, PrintState::never},
        {LabelEvent::sent, PrintState::sent},           {LabelEvent::cameOut, PrintState::done},
        {LabelEvent::sent, PrintState::sent},           {LabelEvent::cameOut, PrintState::done}};
    for (const auto &[event, expected] : steps) {
        now = now.addSecs(3600 * 5); // the last steps are on the next day
        EXPECT_TRUE(LabelEvents::put(log, {u"t"_s, u"other"_s}, event, now));
        EXPECT_EQ(state(), expected);
    }
    EXPECT_TRUE(LabelEvents::put(log, {u"t"_s}, LabelEvent::sent, now.addSecs(-1)));
    EXPECT_EQ(state(), PrintState::sent) << "the first print came out after its reprint began";
    EXPECT_TRUE(LabelEvents::put(log, {u"late"_s}, LabelEvent::cameOut, now) &&
                LabelEvents::put(log, {u"late"_s}, LabelEvent::sent, now.addSecs(-1)));
    EXPECT_EQ(*LabelEvents::printState(log, u"late"_s), PrintState::done) << "it came out before its print was noted";
    EXPECT_EQ(LabelEvents::ofDay(log, LabelEvent::refundAsked, QDate(2026, 11, 20))->size(), 2);
    EXPECT_EQ(LabelEvents::ofDay(log, LabelEvent::cameOut, QDate(2026, 11, 20))->size(), 0);
    EXPECT_FALSE(LabelEvents::find(log, u"none"_s, LabelEvent::sent)->has_value());
    file.run("DROP TABLE label_events; CREATE TABLE label_events (junk)");
    EXPECT_FALSE(LabelEvents::printState(log, u"t"_s).isRead()) << "an unreadable table is not an unprinted label";
}

} // namespace
} // namespace parcelory::test
