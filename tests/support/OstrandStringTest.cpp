#include "support/OstrandString.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

TEST(OstrandString, StrToLongReadsWholeNumbers) {
    EXPECT_EQ(OstrandString::StrToLong("0"), 0);
    EXPECT_EQ(OstrandString::StrToLong("42"), 42);
    EXPECT_EQ(OstrandString::StrToLong("-42"), -42);
    EXPECT_EQ(OstrandString::StrToLong("+42"), 42);
    EXPECT_EQ(OstrandString::StrToLong("  42  "), 42);
    EXPECT_EQ(OstrandString::StrToLong("000042"), 42);
    EXPECT_EQ(OstrandString::StrToLong("2147483647"), 2147483647);
    EXPECT_EQ(OstrandString::StrToLong("-2147483648"), -2147483647 - 1);
}

TEST(OstrandString, StrToLongGivesZeroForTheRest) {
    for (const char* strText :
         {"abc", "",     " ",    "12a",   "a12",        "1 2",         "1.5",
          "1e3", "0x10", "&H10", "--1",   "+-1",        "-",           "+",
          "- 1", "\t1",  "1\n",  "1,000", "2147483648", "-2147483649", "99999999999999999999"}) {
        EXPECT_EQ(OstrandString::StrToLong(strText), 0) << strText;
    }
    EXPECT_EQ(OstrandString::StrToLong(std::string("1\0", 2)), 0);
}

TEST(OstrandString, StrToIntHas16Bits) {
    EXPECT_EQ(OstrandString::StrToInt("2026"), 2026);
    EXPECT_EQ(OstrandString::StrToInt(" -7 "), -7);
    EXPECT_EQ(OstrandString::StrToInt("32767"), 32767);
    EXPECT_EQ(OstrandString::StrToInt("-32768"), -32768);
    EXPECT_EQ(OstrandString::StrToInt("32768"), 0);
    EXPECT_EQ(OstrandString::StrToInt("-32769"), 0);
    EXPECT_EQ(OstrandString::StrToInt("65537"), 0);
    EXPECT_EQ(OstrandString::StrToInt("x"), 0);
    EXPECT_EQ(OstrandString::StrToInt(""), 0);
}

TEST(OstrandString, StrToDoubleTakesAFraction) {
    EXPECT_EQ(OstrandString::StrToDouble("1.5"), 1.5);
    EXPECT_EQ(OstrandString::StrToDouble("-1.5"), -1.5);
    EXPECT_EQ(OstrandString::StrToDouble("+2"), 2.0);
    EXPECT_EQ(OstrandString::StrToDouble(" 2.25 "), 2.25);
    EXPECT_EQ(OstrandString::StrToDouble("1."), 1.0);
    EXPECT_EQ(OstrandString::StrToDouble(".5"), 0.5);
    EXPECT_EQ(OstrandString::StrToDouble("4294967296"), 4294967296.0);
}

TEST(OstrandString, StrToDoubleGivesZeroForTheRest) {
    for (const char* strText : {"", " ", ".", "-", "-.", "1,5", "1e3", "1E3", "inf", "nan",
                                "infinity", "0x1", "1.5.2", "1-", "+-1", "--1", "1.5x"}) {
        EXPECT_EQ(OstrandString::StrToDouble(strText), 0.0) << strText;
    }
    EXPECT_EQ(OstrandString::StrToDouble(std::string(400, '9')), 0.0);
}

} // namespace
} // namespace brennik
