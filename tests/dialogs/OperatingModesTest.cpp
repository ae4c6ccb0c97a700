#include "dialogs/OperatingModes.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

TEST(OperatingModes, SayWhatEachModeSavesForTheLinks) {
    ASSERT_EQ(OperatingModes().size(), 4U);
    EXPECT_EQ(OperatingModes()[0].lServerMode, 0);
    EXPECT_EQ(OperatingModes()[0].lClientMode, std::nullopt);
    EXPECT_EQ(OperatingModes()[1].lServerMode, 1);
    EXPECT_EQ(OperatingModes()[1].lClientMode, std::nullopt);
    EXPECT_EQ(OperatingModes()[2].lServerMode, 0);
    EXPECT_EQ(OperatingModes()[2].lClientMode, 1);
    EXPECT_EQ(OperatingModes()[3].lServerMode, 1);
    EXPECT_EQ(OperatingModes()[3].lClientMode, 1);
}

TEST(OperatingModes, TakeEveryTypeButTwoForAnUpload) {
    EXPECT_EQ(PassThruTypeOf(0), 0);
    EXPECT_EQ(PassThruTypeOf(2), 2);
    for (const int32_t lType : {1, 3, -1, 2147483647})
        EXPECT_EQ(PassThruTypeOf(lType), 1);
}

} // namespace
} // namespace brennik
