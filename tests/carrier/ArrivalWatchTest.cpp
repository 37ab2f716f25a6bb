#include "carrier/ArrivalWatch.h"
#include "support/FakeClock.h"
#include "support/Test.h"

namespace parcelory::test {

TEST(ArrivalWatch, WaitsAMinuteHoweverTheClockIsSet)
{
    for (const int setBack : {0, 30, 3600, 365 * 24 * 3600, -61, -24 * 3600}) {
        FakeClock clock;
        ArrivalWatch watch(clock);
        const QDateTime asked = clock.now();
        clock.start = clock.start.addSecs(-setBack);
        EXPECT_TRUE(watch.mayStillArrive(u"1"_s, asked));
        clock.advance(60s);
        EXPECT_TRUE(watch.mayStillArrive(u"1"_s, asked)) << setBack;
        clock.advance(1s);
        EXPECT_FALSE(watch.mayStillArrive(u"1"_s, asked)) << setBack;
        EXPECT_TRUE(watch.mayStillArrive(u"1"_s, clock.now())) << "a later request of the same kind";
    }
    FakeClock clock;
    ArrivalWatch afterRestart(clock);
    EXPECT_FALSE(afterRestart.mayStillArrive(u"1"_s, clock.now().addSecs(-61)));
}

} // namespace parcelory::test
