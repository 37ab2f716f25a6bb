#include "devices/ScaleReport.h"
#include "devices/USBScale.h"
#include "practice/PracticeScale.h"
#include "support/FakeClock.h"
#include "support/FakePlatform.h"
#include "support/Test.h"

#include <string>
#include <vector>

namespace parcelory::test {

namespace {

/// A report in tenths of an ounce.
QByteArray tenths(ScaleStatus status, int weight)
{
    return {QByteArray("\x03", 1) + char(status) + "\x0B\xFF" + char(weight & 0xFF) + char(weight >> 8)};
}

struct PluggedScale {
    FakeHid hid;
    USBScale scale{hid};

    explicit PluggedScale(const QString &name = u"DYMO M25"_s) { hid.listener.attached(1, name); }
    void say(ScaleStatus status, int weight, int device = 1) { hid.listener.report(device, tenths(status, weight)); }
    quint64 generation() { return scale.reading() ? scale.reading()->generation : 0; }
};

using enum ScaleStatus;

} // namespace

TEST(ScaleReport, IsReadWithAndWithoutReportIdAndInEveryParcelUnit)
{
    const QByteArray pad(58, '\x7F');
    const struct {
        QByteArray bytes;
        std::optional<ScaleStatus> status;
        std::optional<double> ounces;
        QString display;
    } rows[] = {
        {"03040BFF2C01", stable, 30.0, u"1 lb 14.0 oz"_s},
        {"040BFF2C01", stable, 30.0, u"1 lb 14.0 oz"_s},
        {"040BFF2C0103", stable, 30.0, u"1 lb 14.0 oz"_s}, // six bytes, but no report id
        {"03040BFF2C01" + pad.toHex(), stable, 30.0, u"1 lb 14.0 oz"_s},
        {"030BFF2C01", moving, 30.0, u"1 lb 14.0 oz"_s}, // five bytes: the 3 is the status
        {"040BFFAD00", stable, 17.3, u"1 lb 1.3 oz"_s},
        {"040BFE3C06", stable, 15.96, u"16.0 oz"_s},
        {"040200C601", stable, 454 / 28.349523125, u"1 lb 0.0 oz"_s},
        {"0403FDC601", stable, 454 / 28.349523125, u"1 lb 0.0 oz"_s},
        {"040CFF2D00", stable, 72.0, u"4 lb 8.0 oz"_s},
        {"040B00FFFF", stable, 65535.0, u"4095 lb 15.0 oz"_s},
        {"040B80FFFF", stable, 65535e-128, u"0.0 oz"_s},
        {"040A000100", stable, {}, u"—"_s}, // troy ounces
        {"FF0D000100", ScaleStatus{255}, {}, u"—"_s},
        {"040BFF2C", {}, {}, u"—"_s},
        {"", {}, {}, u"—"_s},
    };
    for (const auto &row : rows) {
        const auto report = parseScaleReport(QByteArray::fromHex(row.bytes));
        ASSERT_EQ(report.has_value(), row.status.has_value()) << row.bytes.toStdString();
        const std::optional<double> ounces = report ? report->ounces : std::nullopt;
        EXPECT_EQ(report ? std::optional(report->status) : std::nullopt, row.status) << row.bytes.toStdString();
        ASSERT_EQ(ounces.has_value(), row.ounces.has_value()) << row.bytes.toStdString();
        EXPECT_DOUBLE_EQ(ounces.value_or(0), row.ounces.value_or(0)) << row.bytes.toStdString();
        EXPECT_EQ(scaleDisplay(true, ounces), row.display) << row.bytes.toStdString();
    }
}

TEST(USBScale, FollowsItsReportsAndOtherwiseKeepsTheLastWeight)
{
    PluggedScale desk;
    USBScale &scale = desk.scale;
    EXPECT_EQ(scale.display(), u"—"_s);
    const QByteArray troy = QByteArray::fromHex("040A000100");
    const struct {
        QByteArray report;
        bool stable;
        QString display;
        bool fault, reading;
    } steps[] = {
        {tenths(moving, 120), false, u"—"_s, false, false},
        {tenths(stable, 120), true, u"12.0 oz"_s, false, true},
        {tenths(moving, 90), false, u"12.0 oz"_s, false, false},
        {tenths(stable, 300), true, u"1 lb 14.0 oz"_s, false, true},
        {tenths(overLimit, 0), false, u"1 lb 14.0 oz"_s, true, false},
        {tenths(stable, 300).left(4), false, u"1 lb 14.0 oz"_s, true, false},
        {tenths(zero, 0), true, u"0.0 oz"_s, false, false},
        {tenths(stable, 45), true, u"4.5 oz"_s, false, true},
        {troy, true, u"4.5 oz"_s, true, false}, // steady, but in a unit that is not read
        {tenths(needsCalibration, 0), false, u"4.5 oz"_s, true, false},
        {tenths(needsZeroing, 0), false, u"4.5 oz"_s, true, false},
        {tenths(fault, 0), false, u"4.5 oz"_s, true, false},
        {tenths(ScaleStatus{0}, 0), false, u"4.5 oz"_s, false, false},
        {tenths(underZero, 0), false, u"0.0 oz"_s, false, false},
        {tenths(stable, 0), true, u"0.0 oz"_s, false, false},
        {tenths(stable, 120), true, u"12.0 oz"_s, false, true},
        {troy, true, u"12.0 oz"_s, true, false},
    };
    const auto shown = [&] {
        return std::tuple(scale.connected.value(), scale.stable.value(), scale.display(), scale.fault.value());
    };
    std::vector<decltype(shown())> seen; // by an observer, since the last step
    QObject::connect(&scale, &Observable::changed, [&] { seen.push_back(shown()); });
    for (const auto &step : steps) {
        seen.clear();
        desk.hid.listener.report(1, step.report);
        const std::string what = step.report.toHex().toStdString();
        EXPECT_EQ(std::ranges::count(seen, shown()), std::ssize(seen)) << "half a change: " << what;
        EXPECT_EQ(scale.stable, step.stable) << what;
        EXPECT_EQ(scale.display(), step.display) << what;
        EXPECT_EQ(!scale.fault.value().isEmpty(), step.fault) << what;
        EXPECT_EQ(scale.reading().has_value(), step.reading) << what;
    }
    seen.clear();
    desk.hid.listener.removed(1);
    EXPECT_EQ(std::ranges::count(seen, shown()), std::ssize(seen)) << "half a change";
    EXPECT_FALSE(scale.connected);
    EXPECT_TRUE(scale.stable) << "a removed scale keeps the last state";
    EXPECT_EQ(scale.deviceName, QString());
    EXPECT_EQ(scale.fault, QString());
    EXPECT_EQ(scale.display(), u"No scale"_s);
    desk.say(stable, 10);
    EXPECT_EQ(scale.ounces.value(), std::nullopt) << "a late report of a removed scale is ignored";
    desk.hid.listener.attached(2, QString());
    EXPECT_EQ(scale.deviceName, u"USB Scale"_s);
    desk.hid.listener = {};
    scale.start();
    EXPECT_FALSE(desk.hid.listener.report) << "start() registers one listener only";
}

TEST(USBScale, DistinguishesTheNextParcelFromThePrevious)
{
    const struct {
        const char *what;
        std::vector<std::pair<ScaleStatus, int>> reports; // after a parcel of 12 oz
        bool next;
    } rows[] = {
        {"said again", {{stable, 120}}, false},
        {"creeps", {{moving, 124}, {stable, 124}, {stable, 130}}, false},
        {"pressed on and let go", {{moving, 400}, {overLimit, 0}, {moving, 60}, {stable, 120}}, false},
        {"a scale without a weight in motion", {{moving, 0}, {stable, 120}}, false},
        {"lifted off and put back", {{zero, 0}, {stable, 120}}, true},
        {"a container taken off", {{underZero, 0}, {stable, 120}}, true},
        {"a scale that calls zero a weight", {{stable, 0}, {stable, 120}}, true},
        {"exchanged quickly", {{moving, 20}, {moving, 90}, {stable, 120}}, true},
        {"a heavier one", {{stable, 131}}, true},
        {"a lighter one", {{stable, 109}}, true},
    };
    for (const auto &row : rows) {
        PluggedScale desk;
        desk.say(stable, 120);
        const quint64 sold = desk.generation();
        EXPECT_GT(sold, 0u);
        for (const auto &[status, weight] : row.reports)
            desk.say(status, weight);
        EXPECT_EQ(desk.generation() > sold, row.next) << row.what;
    }
    PluggedScale heavy;
    heavy.say(stable, 1000);
    const quint64 first = heavy.generation();
    heavy.say(stable, 1049); // a heavy parcel drifts by a twentieth
    EXPECT_EQ(heavy.generation(), first);
    heavy.say(stable, 1051);
    EXPECT_EQ(heavy.generation(), first + 1);

    PluggedScale desk;
    desk.say(stable, 120);
    const quint64 sold = desk.generation();
    desk.hid.listener.removed(1);
    desk.hid.listener.attached(2, u"DYMO M25"_s);
    EXPECT_EQ(desk.scale.display(), u"—"_s);
    EXPECT_FALSE(desk.scale.reading());
    desk.say(stable, 120, 2);
    EXPECT_EQ(desk.generation(), sold) << "a loose plug makes no new parcel";
}

TEST(USBScale, UsesTheScaleThatWasLoadedLast)
{
    PluggedScale desk(u"small"_s);
    USBScale &scale = desk.scale;
    desk.say(stable, 120);
    const quint64 sold = desk.generation();
    desk.hid.listener.attached(2, u"large"_s);
    desk.say(zero, 0, 2);
    EXPECT_EQ(scale.deviceName, u"small"_s);
    EXPECT_EQ(scale.display(), u"12.0 oz"_s);

    desk.say(stable, 800, 2);
    desk.say(moving, 121); // the table shakes
    desk.say(stable, 120);
    EXPECT_EQ(scale.deviceName, u"large"_s);
    EXPECT_EQ(scale.display(), u"5 lb 0.0 oz"_s);
    EXPECT_GT(desk.generation(), sold);

    desk.hid.listener.removed(2);
    EXPECT_TRUE(scale.connected);
    EXPECT_EQ(scale.deviceName, u"small"_s);
    EXPECT_EQ(scale.display(), u"12.0 oz"_s);
    EXPECT_EQ(desk.generation(), sold) << "the sold parcel is still on the scale";

    desk.say(moving, 121);
    desk.hid.listener.attached(3, u"large"_s);
    desk.hid.listener.removed(3);
    EXPECT_EQ(scale.display(), u"12.0 oz"_s);
    desk.hid.listener.attached(4, u"large"_s);
    desk.say(stable, 300, 4);
    desk.hid.listener.removed(4);
    EXPECT_EQ(scale.display(), u"—"_s) << "not the other scale's weight";
}

TEST(PracticeScale, BehavesLikeARealScale)
{
    FakeClock clock;
    PracticeScale practice(clock);
    USBScale scale(practice);
    quint64 sold = 0;
    for (int parcel = 0; parcel < 2; ++parcel) {
        practice.put(19.4);
        EXPECT_FALSE(scale.stable);
        clock.advance(PracticeScale::settling);
        EXPECT_EQ(scale.display(), u"1 lb 3.4 oz"_s);
        ASSERT_TRUE(scale.reading());
        EXPECT_GT(scale.reading()->generation, std::exchange(sold, scale.reading()->generation));
    }
    practice.put(PracticeScale::capacity + 0.1);
    clock.advance(PracticeScale::settling);
    EXPECT_EQ(scale.fault, u"Too heavy for this scale — type the weight."_s);
    practice.unplug();
    EXPECT_FALSE(scale.connected);
    practice.put(PracticeScale::capacity);
    practice.plug();
    EXPECT_EQ(scale.display(), u"70 lb 0.0 oz"_s);
}

} // namespace parcelory::test
