#include "platform/HidEventQueue.h"
#include "devices/ScaleReport.h"
#include "support/Test.h"

namespace parcelory::test {
namespace {

/// A report in tenths of an ounce.
QByteArray tenths(ScaleStatus status, int weight)
{
    return {QByteArray("\x03", 1) + char(status) + "\x0B\xFF" + char(weight & 0xFF) + char(weight >> 8)};
}

using enum ScaleStatus;

} // namespace

TEST(HidEventQueue, CompactsAFloodOfReportsButKeepsTheEmptyPlate)
{
    HidEventQueue queue;
    for (int i = 0; i < 1000; ++i)
        queue.report(1, tenths(stable, 120));
    EXPECT_TRUE(queue.needsFetching());
    EXPECT_FALSE(queue.needsFetching()) << "a fetch is already under way";
    EXPECT_EQ(queue.fetch().size(), 1u);
    queue.report(1, tenths(stable, 120));
    EXPECT_FALSE(queue.needsFetching()) << "the same report is not repeated";
    queue.report(1, tenths(zero, 0));
    queue.report(1, tenths(stable, 120));
    EXPECT_TRUE(queue.needsFetching());
    EXPECT_EQ(queue.fetch().size(), 2u);
    queue.attached(1, u"after a restart"_s);
    queue.report(1, tenths(stable, 120));
    EXPECT_EQ(queue.fetch().size(), 2u);

    queue.attached(2, u"other"_s);
    for (int i = 0; i < 1000; ++i)
        queue.report(1 + i % 2, tenths(moving, i));
    queue.removed(2);
    const auto events = queue.fetch();
    ASSERT_EQ(events.size(), size_t(HidEventQueue::mostReports + 2));
    EXPECT_EQ(events.front().kind, HidEventQueue::Event::Kind::attached);
    EXPECT_EQ(events[events.size() - 2].bytes, tenths(moving, 999));
    EXPECT_EQ(events.back().kind, HidEventQueue::Event::Kind::removed);
}

} // namespace parcelory::test
