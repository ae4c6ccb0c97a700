#include "sim/LineNoise.h"

#include <gtest/gtest.h>

#include <string_view>

namespace brennik {
namespace {

using namespace std::string_view_literals;

TEST(LineNoise, IsTheSameEachTimeAndNeverAControlCharacter) {
    EXPECT_EQ(sim::NoiseOf("\x05\x06\x02\x00"sv), "\xC4\xE9\xD5\x8B"sv);
    for (int iByte = 0; iByte < 256; ++iByte) {
        EXPECT_GE(static_cast<unsigned char>(sim::NoiseOf(static_cast<char>(iByte))), 0x80);
    }
}

TEST(LineNoise, ComesOfSpeedsMoreThanThreeInAHundredApart) {
    EXPECT_TRUE(sim::SuitsSpeed(9600, 9600));
    EXPECT_TRUE(sim::SuitsSpeed(10300, 10000));
    EXPECT_FALSE(sim::SuitsSpeed(10301, 10000));
    EXPECT_TRUE(sim::SuitsSpeed(9700, 10000));
    EXPECT_FALSE(sim::SuitsSpeed(9699, 10000));
    EXPECT_FALSE(sim::SuitsSpeed(0, 9600));
}

} // namespace
} // namespace brennik
