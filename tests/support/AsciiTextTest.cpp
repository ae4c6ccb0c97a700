#include "support/AsciiText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>

namespace brennik {
namespace {

template <class Body>
std::optional<FailureKind> KindThrownBy(Body&& body) {
    try {
        body();
    } catch (const RuntimeFailure& failure) {
        return failure.Kind();
    }
    return std::nullopt;
}

template <class Number>
std::optional<FailureKind> ParseFailure(std::string_view strText) {
    return KindThrownBy([&] { static_cast<void>(ParseNumber<Number>(strText)); });
}

TEST(AsciiText, UpperCaseChangesTheLettersAToZAlone) {
    EXPECT_EQ(UpperCase("azAZ09@[`{"), "AZAZ09@[`{");
    EXPECT_EQ(UpperCase(std::string_view("\xE4\xFF\0b", 4)), std::string("\xE4\xFF\0B", 4));
    EXPECT_EQ(UpperCase(""), "");
    EXPECT_EQ(UpperCase('q'), 'Q');
}

TEST(AsciiText, TrimRemovesBlanksFromBothEndsAlone) {
    EXPECT_EQ(Trim("  a b  "), "a b");
    EXPECT_EQ(Trim("a"), "a");
    EXPECT_EQ(Trim("   "), "");
    EXPECT_EQ(Trim(""), "");
    EXPECT_EQ(Trim(" \ta\r\n "), "\ta\r\n");
    EXPECT_EQ(Trim(std::string_view(" \0 ", 3)), std::string("\0", 1));
}

TEST(AsciiText, ToDecimalTellsFractionsWithoutAnExponent) {
    EXPECT_EQ(ToDecimal(1.0), "1");
    EXPECT_EQ(ToDecimal(1.5), "1.5");
    EXPECT_EQ(ToDecimal(-0.1), "-0.1");
    EXPECT_EQ(ToDecimal(1e22), "10000000000000000000000");
    EXPECT_EQ(ToDecimal(std::numeric_limits<double>::denorm_min()).size(), 326U);
    EXPECT_EQ(ToDecimal(-std::numeric_limits<double>::max()).size(), 310U);
}

TEST(AsciiText, ToDecimalTellsEveryWidth) {
    EXPECT_EQ(ToDecimal(0), "0");
    EXPECT_EQ(ToDecimal(-7), "-7");
    EXPECT_EQ(ToDecimal(std::numeric_limits<int32_t>::min()), "-2147483648");
    EXPECT_EQ(ToDecimal(std::numeric_limits<uint32_t>::max()), "4294967295");
    EXPECT_EQ(ToDecimal(std::numeric_limits<int16_t>::min()), "-32768");
    EXPECT_EQ(ToDecimal(uint8_t{255}), "255");
    EXPECT_EQ(ToDecimal(int8_t{-128}), "-128");
    EXPECT_EQ(ToDecimal(std::numeric_limits<int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(ToDecimal(std::numeric_limits<uint64_t>::max()), "18446744073709551615");
}

TEST(AsciiText, NarrowKeepsWhatFitsAndThrowsOverflowElse) {
    EXPECT_EQ(Narrow<int16_t>(32767), 32767);
    EXPECT_EQ(Narrow<int16_t>(-32768), -32768);
    EXPECT_EQ(Narrow<int32_t>(int64_t{2147483647}), 2147483647);
    EXPECT_EQ(Narrow<int32_t>(size_t{5}), 5);
    const auto overflow = std::optional(FailureKind::Overflow);
    EXPECT_EQ(KindThrownBy([] { static_cast<void>(Narrow<int16_t>(32768)); }), overflow);
    EXPECT_EQ(KindThrownBy([] { static_cast<void>(Narrow<int16_t>(-32769)); }), overflow);
    EXPECT_EQ(KindThrownBy([] { static_cast<void>(Narrow<int32_t>(int64_t{2147483648})); }),
              overflow);
    EXPECT_EQ(KindThrownBy([] { static_cast<void>(Narrow<uint32_t>(-1)); }), overflow);
}

TEST(AsciiText, ParseNumberTakesBlanksASignAndDigits) {
    EXPECT_EQ(ParseNumber<int32_t>("  -12 "), -12);
    EXPECT_EQ(ParseNumber<int32_t>("+7"), 7);
    EXPECT_EQ(ParseNumber<int16_t>("0032767"), 32767);
    EXPECT_EQ(ParseNumber<double>("1.5"), 1.5);
}

TEST(AsciiText, ParseNumberThrowsTypeMismatchForWhatIsNoNumber) {
    for (const char* strText : {"", " ", "+", "-", "--1", "+-1", "-+1", "1x", "0x10", "1 2", "- 1",
                                "1.5", "\t1", "1,000", "99999999999999x"}) {
        EXPECT_EQ(ParseFailure<int32_t>(strText), FailureKind::TypeMismatch) << strText;
    }
    EXPECT_EQ(ParseFailure<int32_t>(std::string_view("1\0", 2)), FailureKind::TypeMismatch);
}

TEST(AsciiText, ParseNumberThrowsOverflowForWhatDoesNotFit) {
    EXPECT_EQ(ParseFailure<int16_t>("32768"), FailureKind::Overflow);
    EXPECT_EQ(ParseFailure<int32_t>("2147483648"), FailureKind::Overflow);
    EXPECT_EQ(ParseFailure<int32_t>("-2147483649"), FailureKind::Overflow);
    EXPECT_EQ(ParseFailure<double>(std::string(400, '9')), FailureKind::Overflow);
}

} // namespace
} // namespace brennik
