#include "platform/LinuxClock.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

constexpr int64_t kDay = 86400;

TEST(LinuxClock, TimeOfDayBeginsAtMidnight) {
    EXPECT_EQ(LinuxClock::SecondsOfDay(0, 0), 0.0F);
    EXPECT_EQ(LinuxClock::SecondsOfDay(5 * kDay, 500000000), 0.5F);
    EXPECT_EQ(LinuxClock::SecondsOfDay(5 * kDay + 43200, 0), 43200.0F);
    EXPECT_EQ(LinuxClock::SecondsOfDay(5 * kDay + 86399, 0), 86399.0F);
    EXPECT_EQ(LinuxClock::SecondsOfDay(-1, 0), 86399.0F);
    EXPECT_EQ(LinuxClock::SecondsOfDay(-kDay, 0), 0.0F);
}

TEST(LinuxClock, TimeOfDayHasSinglePrecision) {
    EXPECT_EQ(LinuxClock::SecondsOfDay(80000, 123456789), 80000.123456789F);
}

TEST(LinuxClock, TimeOfDayNeverReachesTheNextDay) {
    // The last value below 86400 that single precision has.
    EXPECT_EQ(LinuxClock::SecondsOfDay(86399, 999999999), 86399.9921875F);
    EXPECT_EQ(LinuxClock::SecondsOfDay(86399, 997000000), 86399.9921875F);
    EXPECT_EQ(LinuxClock::SecondsOfDay(86399, 990000000), 86399.9921875F);
    EXPECT_EQ(LinuxClock::SecondsOfDay(86399, 984375000), 86399.984375F);
}

} // namespace
} // namespace brennik
