#include "platform/DateTime.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

TEST(DateTime, CountsFromTheEpoch) {
    EXPECT_EQ(DateTimeFromSeconds(0), (DateTime{1970, 1, 1, 0, 0, 0}));
    EXPECT_EQ(DateTimeFromSeconds(86399), (DateTime{1970, 1, 1, 23, 59, 59}));
    EXPECT_EQ(DateTimeFromSeconds(86400), (DateTime{1970, 1, 2, 0, 0, 0}));
    EXPECT_EQ(DateTimeFromSeconds(1000000000), (DateTime{2001, 9, 9, 1, 46, 40}));
    EXPECT_EQ(DateTimeFromSeconds(4102444800), (DateTime{2100, 1, 1, 0, 0, 0}));
}

TEST(DateTime, CountsBackwardsFromTheEpoch) {
    EXPECT_EQ(DateTimeFromSeconds(-1), (DateTime{1969, 12, 31, 23, 59, 59}));
    EXPECT_EQ(DateTimeFromSeconds(-86401), (DateTime{1969, 12, 30, 23, 59, 59}));
}

TEST(DateTime, KnowsLeapDays) {
    EXPECT_EQ(DateTimeFromSeconds(951782400), (DateTime{2000, 2, 29, 0, 0, 0}));
    EXPECT_EQ(DateTimeFromSeconds(1709251199), (DateTime{2024, 2, 29, 23, 59, 59}));
    EXPECT_EQ(DateTimeFromSeconds(4107542400), (DateTime{2100, 3, 1, 0, 0, 0}));
}

TEST(DateTime, DayNumbersCountDatesAlone) {
    EXPECT_EQ(DayNumber({1970, 1, 1, 23, 59, 59}), 0);
    EXPECT_EQ(DayNumber({1969, 12, 31, 0, 0, 0}), -1);
    EXPECT_EQ(DayNumber({2024, 3, 1, 0, 0, 0}) - DayNumber({2024, 2, 28, 23, 0, 0}), 2);
    EXPECT_EQ(DayNumber({2023, 3, 1, 0, 0, 0}) - DayNumber({2023, 2, 28, 23, 0, 0}), 1);
}

TEST(DateTime, ComparesInTheOrderOfTime) {
    EXPECT_LT((DateTime{2023, 12, 31, 23, 59, 59}), (DateTime{2024, 1, 1, 0, 0, 0}));
    EXPECT_LT((DateTime{2024, 1, 1, 9, 59, 0}), (DateTime{2024, 1, 1, 10, 0, 0}));
}

} // namespace
} // namespace brennik
