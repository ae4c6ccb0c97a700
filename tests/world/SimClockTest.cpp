#include "tests/world/SimHost.h"

namespace brennik::world {
namespace {

class SimClockTest : public WorldTest {};

TEST_F(SimClockTest, StartsAtNoonOfAFixedDay) {
    EXPECT_EQ(LocalNow(), (DateTime{2026, 11, 14, 12, 0, 0}));
    EXPECT_EQ(SecondsSinceMidnight(), 43200.0F); // two calls are far below its precision
    EXPECT_EQ(host.clock.LocalOffsetSeconds(), 0);
    EXPECT_EQ(host.clock.PeekEpochSeconds(), 1794657600);
}

TEST_F(SimClockTest, SleepAdvancesTimeByItsLengthAndOneCall) {
    Sleep(250);
    EXPECT_EQ(host.Now(), 250001);
    EXPECT_EQ(host.nCalls(), 1);
}

TEST_F(SimClockTest, SleepOfNothingOrLessReturnsAtOnce) {
    Sleep(0);
    Sleep(-5);
    EXPECT_EQ(host.Now(), 2);
}

TEST_F(SimClockTest, SleepRunsWhatIsDueOnTheWay) {
    std::vector<Microseconds> moments;
    host.At(3000, [&] { moments.push_back(host.Now()); });
    host.At(1000, [&] { moments.push_back(host.Now()); });
    host.At(10002, [&] { moments.push_back(host.Now()); });
    Sleep(10);
    EXPECT_EQ(moments, (std::vector<Microseconds>{1000, 3000}));
}

TEST_F(SimClockTest, MidnightWrapsTheSecondsAndMovesTheDateOn) {
    host.clock.SetLocal(DateTime{2026, 12, 31, 23, 59, 59}, 999000);
    EXPECT_GT(SecondsSinceMidnight(), 86399.9F);
    EXPECT_EQ(LocalNow(), (DateTime{2026, 12, 31, 23, 59, 59}));
    Sleep(1);
    EXPECT_LT(SecondsSinceMidnight(), 0.1F);
    EXPECT_EQ(LocalNow(), (DateTime{2027, 1, 1, 0, 0, 0}));
}

TEST_F(SimClockTest, TheLastMomentOfADayIsBelowAWholeDay) {
    host.clock.SetTimeOfDay(86400 * kSecond - 2);
    EXPECT_LT(SecondsSinceMidnight(), 86400.0F);
}

TEST_F(SimClockTest, TheSecondsHaveSinglePrecision) {
    host.clock.SetTimeOfDay(50000 * kSecond + 1000); // 50000.001 lies between two singles
    const float dSeconds = SecondsSinceMidnight();
    EXPECT_EQ(dSeconds, 50000.0F);
    host.clock.SetTimeOfDay(kSecond + 499999); // and the call itself makes it 1.5
    EXPECT_EQ(SecondsSinceMidnight(), 1.5F);
}

TEST_F(SimClockTest, TheTimeOfDayCanBeSetWithoutChangingTheDay) {
    host.clock.SetTimeOfDay(7 * kSecond);
    EXPECT_EQ(LocalNow(), (DateTime{2026, 11, 14, 0, 0, 7}));
}

TEST_F(SimClockTest, TheZoneShiftsUniversalTimeAlone) {
    host.clock.SetLocalOffsetSeconds(3600);
    EXPECT_EQ(host.clock.LocalOffsetSeconds(), 3600);
    EXPECT_EQ(LocalNow(), (DateTime{2026, 11, 14, 12, 0, 0}));
    EXPECT_EQ(host.clock.PeekEpochSeconds(), 1794657600 - 3600);
}

TEST_F(SimClockTest, MonthNamesCanBeSet) {
    EXPECT_EQ(host.clock.MonthName(11), "Nov");
    host.clock.SetMonthName(3, "M\xC3\xA4r");
    EXPECT_EQ(host.clock.MonthName(3), "M\xC3\xA4r");
    EXPECT_EQ(host.clock.MonthName(13), "");
}

} // namespace
} // namespace brennik::world
