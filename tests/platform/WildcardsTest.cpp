#include "platform/Wildcards.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

struct Row {
    const char* strPattern;
    const char* strName;
    bool bMatches;
};

class WildcardsOf : public testing::TestWithParam<Row> {};

TEST_P(WildcardsOf, Match) {
    EXPECT_EQ(MatchesWildcard(GetParam().strName, GetParam().strPattern), GetParam().bMatches)
        << GetParam().strPattern << " " << GetParam().strName;
}

INSTANTIATE_TEST_SUITE_P(
    Wildcards, WildcardsOf,
    testing::Values(Row{"*flclient*", "flclient", true}, Row{"*flclient*", "FLClient.log", true},
                    Row{"*flclient*", "my-FLCLIENT-2.txt", true},
                    Row{"*flclient*", "flclien.log", false}, Row{"*.*", "a.txt", true},
                    Row{"*.*", "nodot", true}, Row{"*.*", ".", true}, Row{"*.*", "..", true},
                    Row{"*", "", true}, Row{"*", "anything", true}, Row{"*.txt", "a.txt", true},
                    Row{"*.txt", "a.txt.bak", false}, Row{"*.txt", "A.TXT", true},
                    Row{"*.TXT", "a.txt", true}, Row{"a?c", "abc", true}, Row{"a?c", "ac", false},
                    Row{"a?c", "abbc", false}, Row{"?", "", false}, Row{"??", "..", true},
                    Row{"a*b*c", "a-b-b-c", true}, Row{"a*b*c", "a-c-b", false},
                    Row{"*ab", "aab", true}, Row{"*aab", "aaab", true}, Row{"a**b", "ab", true},
                    Row{"a*", "b", false}, Row{"*.*x", "a.x", true}, Row{"*.*x", "ax", false},
                    Row{"[a]*", "a", false}, Row{"*\xE4*", "\xC4", false}, Row{"", "", true},
                    Row{"", "a", false}));

TEST(Wildcards, AreStarsAndQuestionMarks) {
    EXPECT_TRUE(HasWildcard("a*"));
    EXPECT_TRUE(HasWildcard("?"));
    EXPECT_FALSE(HasWildcard("a[b].txt"));
    EXPECT_FALSE(HasWildcard(""));
}

TEST(Wildcards, ManyStarsOverALongNameEndSoon) {
    std::string strPattern;
    for (int n = 0; n < 60; ++n) {
        strPattern += "a*";
    }
    EXPECT_FALSE(MatchesWildcard(std::string(250, 'a'), strPattern + "b"));
    EXPECT_TRUE(MatchesWildcard(std::string(250, 'a'), strPattern));
}

TEST(Wildcards, UpperCasesAsciiAlone) {
    EXPECT_EQ(UpperCasedName("az_{\xE4.txt"), "AZ_{\xE4.TXT");
}

} // namespace
} // namespace brennik
