#include "sim/BlockCheck.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

namespace brennik {
namespace {

using sim::BlockCheck;

// The rule itself, bit by bit.
uint16_t BitByBit(std::string_view strBytes) {
    uint32_t crc = 0;
    for (const char c : strBytes) {
        uint32_t word = static_cast<uint32_t>(static_cast<uint8_t>(c)) << 8;
        for (int bit = 0; bit < 8; ++bit) {
            crc = ((crc ^ word) & 0x8000U) != 0 ? (crc << 1 ^ 0x8005U) : crc << 1;
            crc &= 0xFFFFU;
            word <<= 1;
        }
    }
    return static_cast<uint16_t>(crc);
}

TEST(BlockCheck, GivesTheCataloguedValue) {
    EXPECT_EQ(BlockCheck("123456789"), 0xFEE8);
}

TEST(BlockCheck, IsZeroForNothingAndForZeros) {
    EXPECT_EQ(BlockCheck(""), 0);
    EXPECT_EQ(BlockCheck(std::string(100, '\0')), 0);
}

TEST(BlockCheck, TakesHighBytesAsUnsigned) {
    EXPECT_EQ(BlockCheck("\xFF"), 0x0202);
}

TEST(BlockCheck, AgreesWithTheBitwiseRuleAtEveryLength) {
    std::mt19937 random(20150522);
    std::string strBytes;
    for (int length = 0; length < 400; ++length) {
        ASSERT_EQ(BlockCheck(strBytes), BitByBit(strBytes)) << length << " bytes";
        strBytes.push_back(static_cast<char>(random()));
    }
}

TEST(BlockCheck, AgreesWithTheBitwiseRuleOnTheLongestFrame) {
    std::mt19937 random(7);
    std::string strBytes;
    while (strBytes.size() < 65542) {
        strBytes.push_back(static_cast<char>(random()));
    }
    EXPECT_EQ(BlockCheck(strBytes), BitByBit(strBytes));
}

} // namespace
} // namespace brennik
