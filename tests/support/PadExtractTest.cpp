#include "support/PadExtract.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

class PadExtractTest : public testing::Test {
  protected:
    PadExtract padding;
};

TEST_F(PadExtractTest, PadStringFillsOnTheSideOfItsType) {
    EXPECT_EQ(padding.PadString("123", 0, 5), "12300");
    EXPECT_EQ(padding.PadString("123", 1, 5), "123  ");
    EXPECT_EQ(padding.PadString("123", 2, 5), "00123");
    EXPECT_EQ(padding.PadString("123", 3, 5), "  123");
    EXPECT_EQ(padding.PadString("", 2, 3), "000");
}

TEST_F(PadExtractTest, PadStringCutsALongerTextForEveryType) {
    for (int32_t lPadType = -1; lPadType <= 4; ++lPadType) {
        EXPECT_EQ(padding.PadString("123", lPadType, 2), "12") << lPadType;
        EXPECT_EQ(padding.PadString("123", lPadType, 3), "123") << lPadType;
        EXPECT_EQ(padding.PadString("123", lPadType, 0), "") << lPadType;
    }
}

TEST_F(PadExtractTest, PadStringOfAWidthBelowZeroFailsAsAnEmptyText) {
    EXPECT_EQ(padding.PadString("123", 2, -1), "");
}

TEST_F(PadExtractTest, PadStringOfAnUnknownTypeIsEmpty) {
    EXPECT_EQ(padding.PadString("123", 4, 5), "");
    EXPECT_EQ(padding.PadString("123", -1, 5), "");
}

TEST_F(PadExtractTest, StripPaddingOfTypes0And2RemovesZeros) {
    EXPECT_EQ(padding.StripPadding(0, "00120 00"), "00120 ");
    EXPECT_EQ(padding.StripPadding(2, "00120 00"), "120 00");
    EXPECT_EQ(padding.StripPadding(0, "000"), "");
    EXPECT_EQ(padding.StripPadding(2, "000"), "");
    EXPECT_EQ(padding.StripPadding(0, ""), "");
    EXPECT_EQ(padding.StripPadding(2, ""), "");
}

TEST_F(PadExtractTest, StripPaddingOfTypes1And3IsCrossedAgainstPadString) {
    EXPECT_EQ(padding.StripPadding(1, "  a b  "), "a b  ");
    EXPECT_EQ(padding.StripPadding(3, "  a b  "), "  a b");
    EXPECT_EQ(padding.StripPadding(1, "   "), "");
    EXPECT_EQ(padding.StripPadding(3, "   "), "");
    EXPECT_EQ(padding.StripPadding(1, "\t a"), "\t a");
}

TEST_F(PadExtractTest, StripPaddingOfAnyOtherTypeIsEmpty) {
    EXPECT_EQ(padding.StripPadding(4, "123"), "");
    EXPECT_EQ(padding.StripPadding(-1, "123"), "");
}

TEST_F(PadExtractTest, ExtractDataEndsInFrontOfTheTerminator) {
    EXPECT_EQ(padding.ExtractData("ab|cd|ef", 1, '|', 8), "ab");
    EXPECT_EQ(padding.ExtractData("ab|cd|ef", 4, '|', 8), "cd");
    EXPECT_EQ(padding.ExtractData("ab|cd", 3, '|', 8), "");
    EXPECT_EQ(padding.ExtractData(std::string("ab\0cd", 5), 1, 0, 5), "ab");
    EXPECT_EQ(padding.ExtractData("ab\xFF"
                                  "cd",
                                  1, 255, 5),
              "ab");
}

TEST_F(PadExtractTest, ExtractDataLooksAtNoMoreThanTheMaximum) {
    EXPECT_EQ(padding.ExtractData("abcdef", 2, '|', 3), "bcd");
    EXPECT_EQ(padding.ExtractData("ab|def", 1, '|', 2), "ab");
    EXPECT_EQ(padding.ExtractData("abcdef", 1, '|', 0), "");
    EXPECT_EQ(padding.ExtractData("abcdef", 5, '|', 100), "ef");
    EXPECT_EQ(padding.ExtractData("abcdef", 7, '|', 1), "");
}

TEST_F(PadExtractTest, ExtractDataOfATerminatorThatIsNoByteFindsNone) {
    EXPECT_EQ(padding.ExtractData("ab\xFF"
                                  "c",
                                  1, -1, 4),
              "ab\xFF"
              "c");
    EXPECT_EQ(padding.ExtractData("a|b", 1, '|' + 256, 3), "a|b");
}

TEST_F(PadExtractTest, ExtractDataFailsAsAnEmptyText) {
    EXPECT_EQ(padding.ExtractData("abc", 0, '|', 3), "");
    EXPECT_EQ(padding.ExtractData("abc", -1, '|', 3), "");
    EXPECT_EQ(padding.ExtractData("abc", 1, '|', -1), "");
    EXPECT_EQ(padding.ExtractData("", 1, '|', 3), "");
}

} // namespace
} // namespace brennik
