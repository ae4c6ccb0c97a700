#include "dialogs/TextBoxFormat.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

constexpr int16_t kBackspace = 8;

/// All codes that a filter takes without any limit, as text; other than the code itself in braces.
template <class Filter>
std::string Taken(Filter&& filter) {
    std::string strTaken;
    for (int32_t lCode = -32768; lCode <= 32767; ++lCode) {
        const auto iKey = static_cast<int16_t>(lCode);
        const int16_t iTaken = filter(iKey);
        if (iTaken == 0)
            continue;
        const std::string strKey = iKey < 32 || iKey > 126
                                       ? "#" + std::to_string(iKey)
                                       : std::string(1, static_cast<char>(iKey));
        strTaken += strKey;
        if (iTaken != iKey)
            strTaken += "{" + std::string(1, static_cast<char>(iTaken)) + "}";
    }
    return strTaken;
}

const std::string kDigits = "0123456789";
const std::string kCapitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
const std::string kSmall = "abcdefghijklmnopqrstuvwxyz";

TEST(TextBoxFormat, NumericBoxTakesDigitsAndBackspaceOnly) {
    EXPECT_EQ(Taken([](int16_t iKey) { return TextBoxFormat::NumericBox(iKey, 0, 0, 0); }),
              "#8" + kDigits);
    EXPECT_EQ(TextBoxFormat::NumericBox('a', 0, 0, 0), 0);
    EXPECT_EQ(TextBoxFormat::NumericBox(kBackspace, 0, 0, 0), 8);
}

TEST(TextBoxFormat, AlphaBoxTakesLettersAndBackspaceOnly) {
    EXPECT_EQ(Taken([](int16_t iKey) { return TextBoxFormat::AlphaBox(iKey, 0, 0, 0); }),
              "#8" + kCapitals + kSmall);
}

TEST(TextBoxFormat, AlphaNumericBoxTakesDigitsLettersAndBackspaceOnly) {
    EXPECT_EQ(Taken([](int16_t iKey) { return TextBoxFormat::AlphaNumericBox(iKey, 0, 0, 0); }),
              "#8" + kDigits + kCapitals + kSmall);
}

TEST(TextBoxFormat, UCAlphaNumericBoxMakesCapitals) {
    std::string strSmall;
    for (const char c : kSmall)
        strSmall += std::string(1, c) + "{" + static_cast<char>(c - 'a' + 'A') + "}";
    EXPECT_EQ(Taken([](int16_t iKey) { return TextBoxFormat::UCAlphaNumericBox(iKey, 0, 0, 0); }),
              "#8" + kDigits + kCapitals + strSmall);
    EXPECT_EQ(TextBoxFormat::UCAlphaNumericBox('a', 0, 0, 0), 'A');
}

TEST(TextBoxFormat, AlphaNumLenTakesDigitsAndLettersAndThreeOthers) {
    EXPECT_EQ(Taken([](int16_t iKey) { return TextBoxFormat::AlphaNumLen(iKey, 0, 1); }),
              "#8%'" + kDigits + kCapitals + kSmall);
}

TEST(TextBoxFormat, AlphaNumLenStopsAtItsMaximum) {
    EXPECT_EQ(TextBoxFormat::AlphaNumLen('7', 7, 8), '7');
    EXPECT_EQ(TextBoxFormat::AlphaNumLen('7', 8, 8), 0);
    EXPECT_EQ(TextBoxFormat::AlphaNumLen('z', 9, 8), 0);
    EXPECT_EQ(TextBoxFormat::AlphaNumLen('z', 0, 0), 0) << "0 is a maximum too";
    for (const int16_t iKey : {int16_t{8}, int16_t{37}, int16_t{39}})
        EXPECT_EQ(TextBoxFormat::AlphaNumLen(iKey, 8, 8), iKey);
}

TEST(TextBoxFormat, TheLengthLimitStrikesWithoutASelection) {
    using Filter = int16_t (*)(int16_t, int16_t, int16_t, int16_t);
    const std::vector<std::pair<Filter, int16_t>> filters = {
        {TextBoxFormat::NumericBox, '5'},
        {TextBoxFormat::AlphaBox, 'Q'},
        {TextBoxFormat::AlphaNumericBox, 'q'},
        {TextBoxFormat::UCAlphaNumericBox, 'Q'}};
    for (const auto& [filter, iKey] : filters) {
        EXPECT_EQ(filter(iKey, 0, 7, 8), iKey);
        EXPECT_EQ(filter(iKey, 0, 8, 8), 0);
        EXPECT_EQ(filter(iKey, 0, 9, 8), 0);
        EXPECT_EQ(filter(iKey, 1, 8, 8), iKey) << "the selection makes room";
        EXPECT_EQ(filter(iKey, 0, 8, 0), iKey) << "no limit";
        EXPECT_EQ(filter(kBackspace, 0, 8, 8), kBackspace);
        EXPECT_EQ(filter('-', 1, 0, 8), 0);
    }
    EXPECT_EQ(TextBoxFormat::UCAlphaNumericBox('q', 0, 8, 8), 0);
    EXPECT_EQ(TextBoxFormat::UCAlphaNumericBox('q', 2, 8, 8), 'Q');
}

TEST(TextBoxFormat, CurrencyBoxTakesOnePointWhereThereAreDecimals) {
    EXPECT_EQ(TextBoxFormat::CurrencyBox("12", '.', 2, 2), '.');
    EXPECT_EQ(TextBoxFormat::CurrencyBox("", '.', 1, 0), '.');
    EXPECT_EQ(TextBoxFormat::CurrencyBox("12", '.', 0, 2), 0);
    EXPECT_EQ(TextBoxFormat::CurrencyBox("1.2", '.', 2, 0), 0);
}

TEST(TextBoxFormat, CurrencyBoxLimitsTheDigitsBehindThePoint) {
    EXPECT_EQ(TextBoxFormat::CurrencyBox("123456", '7', 2, 6), '7');
    EXPECT_EQ(TextBoxFormat::CurrencyBox("123456", '7', 0, 6), '7');
    EXPECT_EQ(TextBoxFormat::CurrencyBox("1.", '7', 2, 2), '7');
    EXPECT_EQ(TextBoxFormat::CurrencyBox("1.2", '7', 2, 3), '7');
    EXPECT_EQ(TextBoxFormat::CurrencyBox("1.23", '7', 2, 4), 0);
    EXPECT_EQ(TextBoxFormat::CurrencyBox("1.23", '7', 2, 2), 0) << "just behind the point";
    EXPECT_EQ(TextBoxFormat::CurrencyBox("1.23", '7', 2, 1), '7') << "just in front of it";
    EXPECT_EQ(TextBoxFormat::CurrencyBox("1.23", '7', 2, 0), '7');
    EXPECT_EQ(TextBoxFormat::CurrencyBox("1.23", '7', 3, 4), '7');
    EXPECT_EQ(TextBoxFormat::CurrencyBox("1.", '7', 0, 2), 0);
}

TEST(TextBoxFormat, CurrencyBoxTakesNothingElse) {
    EXPECT_EQ(Taken([](int16_t iKey) { return TextBoxFormat::CurrencyBox("", iKey, 2, 0); }),
              "#8." + kDigits);
    EXPECT_EQ(TextBoxFormat::CurrencyBox("1.23", kBackspace, 2, 4), kBackspace);
}

struct Row {
    int16_t iExp;
    const char* strValue;
    const char* strExpChar;
    int16_t iKeyCode;
    const char* strShown;
};

TEST(TextBoxFormat, ExpFormatGrowsAmountsFromTheRight) {
    const std::vector<Row> rows = {
        {2, "1.23", ".", '4', "12.34"},
        {2, "0.01", ".", 8, ""},
        {2, "", ".", '1', "0.01"},
        {2, "0.01", ".", '0', "0.10"},
        {2, "12.34", ".", 8, "1.23"},
        {2, "12.34", ".", 37, "1.23"},
        {2, "12.34", ".", 'x', "12.34"},
        {2, "12.34", ".", '.', "12.34"},
        {2, "1,234.56", ",", '7', "12.35"}, // the point stands for itself, and rounds
        {2, "1 234", " ", '5', "123.45"},
        {2, "1--2--3", "--", '4', "12.34"},
        {2, "1234", "", '5', "123.45"},
        {2, " 12", "", '3', "1.23"},
        {0, "12", ".", '3', "123"},
        {0, "007", ".", 'x', "7"},
        {0, "0", ".", '0', ""},
        {1, "1.2", ".", '3', "12.3"},
        {1, "1.2", ".", '0', "12.0"},
        {1, "0.25", "", 'x', "0.03"}, // "#0.0#" has a second place
        {1, "12.5", "", 'x', "1.25"},
        {1, "", ".", '5', "0.5"},
        {3, "1.234", ".", '5', "12.345"},
        {3, "", ".", '5', "0.005"},
        {3, "0.012", ".", 8, "0.001"},
        {2, "-1.23", ".", '4', "-12.34"},
        {2, "123456789012.34", ".", '5', "1234567890123.45"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(TextBoxFormat::ExpFormat(row.iExp, row.strValue, row.strExpChar, row.iKeyCode),
                  row.strShown)
            << row.iExp << " " << row.strValue << " " << row.iKeyCode;
}

TEST(TextBoxFormat, ExpFormatLeavesTheTextForOtherDecimals) {
    EXPECT_EQ(TextBoxFormat::ExpFormat(4, "1.20", ".", '3'), "1203");
    EXPECT_EQ(TextBoxFormat::ExpFormat(-1, "007", ".", 'x'), "007");
    EXPECT_EQ(TextBoxFormat::ExpFormat(4, "00", ".", '0'), "");
}

TEST(TextBoxFormat, ExpFormatOfNoNumberIsEmpty) {
    for (const int16_t iExp : {int16_t{0}, int16_t{1}, int16_t{2}, int16_t{3}, int16_t{4}}) {
        EXPECT_EQ(TextBoxFormat::ExpFormat(iExp, "", ".", 'x'), "");
        EXPECT_EQ(TextBoxFormat::ExpFormat(iExp, "", ".", 8), "");
        EXPECT_EQ(TextBoxFormat::ExpFormat(iExp, "abc", ".", '1'), "");
        EXPECT_EQ(TextBoxFormat::ExpFormat(iExp, "1.2.3", "", 'x'), "");
        EXPECT_EQ(TextBoxFormat::ExpFormat(iExp, std::string(500, '9'), ".", 'x'), "");
    }
}

TEST(TextBoxFormat, ExpFormatShowsTheLargestNumbersWhole) {
    const std::string strShown = TextBoxFormat::ExpFormat(2, std::string(308, '9'), ".", 'x');
    EXPECT_EQ(strShown.size(), 310U);
    EXPECT_EQ(strShown.find('.'), 307U);
}

} // namespace
} // namespace brennik
