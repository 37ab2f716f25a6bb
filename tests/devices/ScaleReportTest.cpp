#include "devices/ScaleReport.h"
#include "devices/USBScale.h"
#include "practice/PracticeScale.h"
#include "support/FakePlatform.h"

namespace parcelory::test {
namespace {

/// A report in tenths of an ounce.
QByteArray tenths(ScaleStatus status, int weight)
{
    return {QByteArray("\x03", 1) + char(status) + "\x0B\xFF" + char(weight & 0xFF) + char(weight >> 8)};
}

/// A report with a status by name.
QByteArray report(const QString &status, int weight)
{
    static const QStringList names = {u"off"_s,         u"fault"_s,     u"zero"_s,      u"moving"_s,
                                      u"stable"_s,      u"underZero"_s, u"overLimit"_s, u"needsCalibration"_s,
                                      u"needsZeroing"_s};
    if (status == u"troy ounces"_s) // steady, but in a unit that is not read
        return QByteArray::fromHex("040A000100");
    if (status == u"cut off"_s)
        return tenths(ScaleStatus::stable, weight).left(4);
    return tenths(ScaleStatus(names.indexOf(status)), weight);
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
    for (const Json &row : table(u"scale"_s, "reports")) {
        const auto report = parseScaleReport(QByteArray::fromHex(bytes(row[0])));
        ASSERT_EQ(report.has_value(), !row[1].is_null()) << row;
        const std::optional<double> ounces = report ? report->ounces : std::nullopt;
        EXPECT_TRUE(!report || int(report->status) == row[1].get<int>()) << row;
        ASSERT_EQ(ounces.has_value(), !row[2].is_null()) << row;
        EXPECT_DOUBLE_EQ(ounces.value_or(0), optional<double>(row[2]).value_or(0)) << row;
        EXPECT_EQ(scaleDisplay(true, ounces), text(row[3])) << row;
    }
}

TEST(USBScale, FollowsItsReportsAndOtherwiseKeepsTheLastWeight)
{
    PluggedScale desk;
    USBScale &scale = desk.scale;
    EXPECT_EQ(scale.display(), u"—"_s);
    const auto shown = [&] {
        return std::tuple(scale.connected.value(), scale.stable.value(), scale.display(), scale.fault.value());
    };
    std::vector<decltype(shown())> seen; // by an observer, since the last step
    QObject::connect(&scale, &Observable::changed, [&] { seen.push_back(shown()); });
    for (const Json &step : table(u"scale"_s, "steps")) {
        seen.clear();
        desk.hid.listener.report(1, report(text(step[0]), step[1]));
        EXPECT_EQ(std::ranges::count(seen, shown()), std::ssize(seen)) << "half a change: " << step;
        EXPECT_EQ(std::tuple(scale.stable.value(), scale.display(), !scale.fault.value().isEmpty(),
                             scale.reading().has_value()),
                  std::tuple(step[2].get<bool>(), text(step[3]), step[4].get<bool>(), step[5].get<bool>()))
            << step;
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
    for (const Json &row : table(u"scale"_s, "next parcel")) {
        PluggedScale desk;
        desk.say(stable, 120);
        const quint64 sold = desk.generation();
        EXPECT_GT(sold, 0u);
        for (const Json &said : row[1])
            desk.hid.listener.report(1, report(text(said[0]), said[1]));
        EXPECT_EQ(desk.generation() > sold, row[2].get<bool>()) << row;
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
