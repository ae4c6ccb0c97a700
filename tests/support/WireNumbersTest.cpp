#include "support/WireNumbers.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

TEST(WireNumbers, HexStringToLongReadsDigitsOfEitherCase) {
    EXPECT_EQ(HexStringToLong("0"), 0);
    EXPECT_EQ(HexStringToLong("1"), 1);
    EXPECT_EQ(HexStringToLong("A"), 10);
    EXPECT_EQ(HexStringToLong("f"), 15);
    EXPECT_EQ(HexStringToLong("10"), 16);
    EXPECT_EQ(HexStringToLong("0012aBcD"), 1223629);
    EXPECT_EQ(HexStringToLong("9F"), 159);
}

TEST(WireNumbers, HexStringToLongOfNoHexadecimalDigitIsZero) {
    for (const char* strHex : {"", " ", "G", "1G", "G1", " 1", "1 ", "-1", "+1", "0x1", "1.0", "/",
                               ":", "@", "`", "g"}) {
        EXPECT_EQ(HexStringToLong(strHex), 0) << strHex;
    }
    EXPECT_EQ(HexStringToLong(std::string("1\0", 2)), 0);
    EXPECT_EQ(HexStringToLong("1\xFF"), 0);
}

TEST(WireNumbers, HexStringToLongBeyond31BitsIsZero) {
    EXPECT_EQ(HexStringToLong("7FFFFFFF"), 2147483647);
    EXPECT_EQ(HexStringToLong("80000000"), 0);
    EXPECT_EQ(HexStringToLong("FFFFFFFF"), 0);
    EXPECT_EQ(HexStringToLong("100000001"), 0);
    EXPECT_EQ(HexStringToLong("00007FFFFFFF"), 2147483647);
    EXPECT_EQ(HexStringToLong("10000000000000000000000000000000001"), 0);
}

TEST(WireNumbers, HexStringToLongEndsWhereADoubleEnds) {
    EXPECT_EQ(HexStringToLong(std::string(255, '0') + "5"), 5);
    EXPECT_EQ(HexStringToLong(std::string(256, '0') + "5"), 0);
}

TEST(WireNumbers, BinaryStringToLongIsBigEndian) {
    EXPECT_EQ(BinaryStringToLong(""), 0);
    EXPECT_EQ(BinaryStringToLong("\x05"), 5);
    EXPECT_EQ(BinaryStringToLong("\xFF"), 255);
    EXPECT_EQ(BinaryStringToLong("\x01\x02"), 258);
    EXPECT_EQ(BinaryStringToLong(std::string("\x00\x01\x00\x00", 4)), 65536);
    EXPECT_EQ(BinaryStringToLong("\x12\x34\x56\x78"), 305419896);
    EXPECT_EQ(BinaryStringToLong(std::string("\x00\x00\x00\x00\x09", 5)), 9);
}

TEST(WireNumbers, BinaryStringToLongBeyond31BitsIsZero) {
    EXPECT_EQ(BinaryStringToLong("\x7F\xFF\xFF\xFF"), 2147483647);
    EXPECT_EQ(BinaryStringToLong(std::string("\x80\x00\x00\x00", 4)), 0);
    EXPECT_EQ(BinaryStringToLong("\xFF\xFF\xFF\xFF"), 0);
    EXPECT_EQ(BinaryStringToLong(std::string("\x01\x00\x00\x00\x00", 5)), 0);
}

TEST(WireNumbers, BinaryStringToLongEndsWhereADoubleEnds) {
    EXPECT_EQ(BinaryStringToLong(std::string(127, '\0') + "\x05"), 5);
    EXPECT_EQ(BinaryStringToLong(std::string(128, '\0') + "\x05"), 0);
}

} // namespace
} // namespace brennik
