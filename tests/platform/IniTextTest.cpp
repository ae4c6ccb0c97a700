#include "platform/IniText.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;

constexpr const char* kSample = "; of the whole file\r\n"
                                "Stray=before any section\r\n"
                                "[GENERAL]\r\n"
                                "NumProfiles=2\r\n"
                                "  Spaced Name  =  some value  \r\n"
                                "; Hidden=no\r\n"
                                "   ;Hidden=no\r\n"
                                "NoEquals\r\n"
                                "Twice=first\r\n"
                                "Twice=second\r\n"
                                "Empty=\r\n"
                                "Equation=a=b\r\n"
                                "\r\n"
                                "[PROFILE_1]\r\n"
                                "Name=one\r\n"
                                "[general]\r\n"
                                "NumProfiles=9\r\n"
                                "OnlyInSecond=x\r\n";

std::string Value(std::string_view strContent, std::string_view strSection,
                  std::string_view strKey) {
    return FindIniValue(strContent, strSection, strKey).value_or("(none)");
}

TEST(IniText, FindsAValueInItsSection) {
    EXPECT_EQ(Value(kSample, "GENERAL", "NumProfiles"), "2");
    EXPECT_EQ(Value(kSample, "PROFILE_1", "Name"), "one");
    EXPECT_EQ(Value(kSample, "GENERAL", "Name"), "(none)");
}

TEST(IniText, NamesMatchWithoutRegardToCase) {
    EXPECT_EQ(Value(kSample, "gEnErAl", "NUMPROFILES"), "2");
    EXPECT_EQ(Value("[\xC4]\nK=1\n", "\xE4", "K"), "(none)") << "ASCII letters alone have a case";
    EXPECT_EQ(Value("[@`]\nK=1\n", "`@", "K"), "(none)");
}

TEST(IniText, BlanksAroundNamesAndValuesAreDropped) {
    EXPECT_EQ(Value(kSample, "GENERAL", "Spaced Name"), "some value");
    EXPECT_EQ(Value("  [ A B ]  \n x = y \n", " A B ", " x "), "y");
    EXPECT_EQ(Value("[A]\nx=\ty\t\n", "A", "x"), "\ty\t") << "a tab is no blank";
}

TEST(IniText, CommentsAndLinesWithoutEqualsAreNoKeys) {
    EXPECT_EQ(Value(kSample, "GENERAL", "Hidden"), "(none)");
    EXPECT_EQ(Value(kSample, "GENERAL", ";Hidden"), "(none)");
    EXPECT_EQ(Value(kSample, "GENERAL", "NoEquals"), "(none)");
}

TEST(IniText, TheFirstKeyAndTheFirstSectionOfANameCount) {
    EXPECT_EQ(Value(kSample, "GENERAL", "Twice"), "first");
    EXPECT_EQ(Value(kSample, "GENERAL", "OnlyInSecond"), "(none)");
}

TEST(IniText, AKeyAheadOfAnySectionBelongsToNone) {
    EXPECT_EQ(Value(kSample, "", "Stray"), "(none)");
    EXPECT_EQ(Value("[]\nStray=1\n", "", "Stray"), "1");
}

TEST(IniText, TheFirstEqualsEndsTheName) {
    EXPECT_EQ(Value(kSample, "GENERAL", "Equation"), "a=b");
    EXPECT_EQ(Value(kSample, "GENERAL", "Empty"), "");
}

TEST(IniText, OnePairOfMatchingQuotesIsDropped) {
    const char* strContent = "[Q]\n"
                             "a=\"  in quotes \"\n"
                             "b='single'\n"
                             "c=\"\"twice\"\"\n"
                             "d=\"unmatched'\n"
                             "e=\"\n"
                             "f=\"\"\n"
                             "g='half\n"
                             "h=in \"the\" middle\n";
    EXPECT_EQ(Value(strContent, "Q", "a"), "  in quotes ");
    EXPECT_EQ(Value(strContent, "Q", "b"), "single");
    EXPECT_EQ(Value(strContent, "Q", "c"), "\"twice\"");
    EXPECT_EQ(Value(strContent, "Q", "d"), "\"unmatched'");
    EXPECT_EQ(Value(strContent, "Q", "e"), "\"");
    EXPECT_EQ(Value(strContent, "Q", "f"), "");
    EXPECT_EQ(Value(strContent, "Q", "g"), "'half");
    EXPECT_EQ(Value(strContent, "Q", "h"), "in \"the\" middle");
}

TEST(IniText, AByteOrderMarkIsSkipped) {
    EXPECT_EQ(Value("\xEF\xBB\xBF[A]\r\nx=1\r\n", "A", "x"), "1");
    EXPECT_EQ(Value("[B]\n\xEF\xBB\xBF[A]\r\nx=1\r\n", "A", "x"), "(none)");
}

TEST(IniText, ReadsEveryLineEndAndALastLineWithoutOne) {
    EXPECT_EQ(Value("[A]\nx=1\ny=2", "A", "x"), "1");
    EXPECT_EQ(Value("[A]\nx=1\ny=2", "A", "y"), "2");
    EXPECT_EQ(Value("[A]\r\nx=1\r\n", "A", "x"), "1");
    EXPECT_EQ(Value("[A]\nx=1\ry=2\n", "A", "x"), "1\ry=2") << "a lone CR ends no line";
}

TEST(IniText, ASectionLineMayHaveSomethingBehindItsBracketOrNoneAtAll) {
    EXPECT_EQ(Value("[A] ; first\nx=1\n", "A", "x"), "1");
    EXPECT_EQ(Value("[A\nx=1\n", "A", "x"), "1");
    EXPECT_EQ(Value("[A]\nx=1\n[B\ny=2\n", "A", "y"), "(none)");
}

TEST(IniText, BytesPassAsTheyAre) {
    EXPECT_EQ(Value("[A]\nx=\xC3\xA4\xFF\x01\n", "A", "x"), "\xC3\xA4\xFF\x01");
    EXPECT_EQ(Value("[A]\nx=a\0b\n"s, "A", "x"), "a\0b"s);
}

TEST(IniText, NothingIsFoundInNothing) {
    EXPECT_FALSE(FindIniValue("", "A", "x").has_value());
    EXPECT_FALSE(FindIniValue("\xEF\xBB\xBF", "A", "x").has_value());
    EXPECT_FALSE(FindIniValue("[A]", "A", "x").has_value());
    EXPECT_FALSE(HasIniSection("", "A"));
    EXPECT_TRUE(HasIniSection("[A]", "a"));
}

TEST(IniText, TheIndexFindsWhatASearchFinds) {
    IniIndex index{std::string(kSample)};
    EXPECT_EQ(index.Content(), kSample);
    for (const char* strSection : {"GENERAL", "general", " Profile_1 ", "", "none"}) {
        for (const char* strKey : {"NumProfiles", "name", "Spaced Name", "Stray", "Empty", "Twice",
                                   "OnlyInSecond", "Hidden", "x"}) {
            EXPECT_EQ(index.Find(strSection, strKey), FindIniValue(kSample, strSection, strKey))
                << strSection << " " << strKey;
        }
    }
}

TEST(IniText, TheIndexFindsWhatASearchFindsInAnyText) {
    std::minstd_rand random(1);
    for (int nText = 0; nText < 300; ++nText) {
        std::string strContent = "[a]\n";
        while (strContent.size() < 200) {
            strContent += "aAbB== ;[]\"\r\n\n"[random() % 14];
        }
        IniIndex index{strContent};
        for (const char* strSection : {"A", "b", "ab", ""}) {
            for (const char* strKey : {"a", "B", "aa", "ab", "ba", "bb", "a b", ""}) {
                EXPECT_EQ(index.Find(strSection, strKey),
                          FindIniValue(strContent, strSection, strKey))
                    << strSection << " " << strKey << " in\n"
                    << strContent;
            }
        }
    }
}

TEST(IniText, AChangeTouchesTheOneLineAlone) {
    const std::string strContent = "; c\n[A]\r\n  Key =  old  \r\nOther=1\n\n[B]\nKey=b";
    EXPECT_EQ(WithIniValue(strContent, "a", "KEY", "new"),
              "; c\n[A]\r\n  Key =  new\r\nOther=1\n\n[B]\nKey=b");
    EXPECT_EQ(WithIniValue(strContent, "B", "Key", "new"),
              "; c\n[A]\r\n  Key =  old  \r\nOther=1\n\n[B]\nKey=new");
    EXPECT_EQ(WithIniValue("[A]\nKey=\nX=1\n", "A", "Key", "v"), "[A]\nKey=v\nX=1\n");
    EXPECT_EQ(WithIniValue("[A]\nKey=v\nX=1\n", "A", "Key", ""), "[A]\nKey=\nX=1\n");
    EXPECT_EQ(WithIniValue("[A]\nKey= \"v\" \nX=1\n", "A", "Key", "w"), "[A]\nKey= w\nX=1\n");
}

TEST(IniText, TheFirstOfTwoKeysIsChanged) {
    EXPECT_EQ(WithIniValue("[A]\nK=1\nK=2\n[A]\nK=3\n", "A", "K", "9"),
              "[A]\nK=9\nK=2\n[A]\nK=3\n");
}

TEST(IniText, AValueThatIsThereAlreadyChangesNothing) {
    for (const char* strContent : {"[A]\nKey=v\n", "[A]\n Key =  v  \n", "[A]\nKey=\"v\"\n"}) {
        EXPECT_EQ(WithIniValue(strContent, "A", "Key", "v"), strContent);
    }
    EXPECT_EQ(WithIniValue("[A]\nKey=\"v\"\n", "A", "Key", "\"v\""), "[A]\nKey=\"v\"\n");
    EXPECT_EQ(WithIniValue("[A]\nKey=v\n", "A", "Key", " v "), "[A]\nKey=v\n");
    EXPECT_EQ(WithIniValue("[A]\nKey=\n", "A", "Key", ""), "[A]\nKey=\n");
}

TEST(IniText, ANewKeyGoesBehindTheLastLineOfItsSection) {
    EXPECT_EQ(WithIniValue("[A]\r\nX=1\r\n\r\n\r\n[B]\r\nY=2\r\n", "A", "K", "v"),
              "[A]\r\nX=1\r\nK=v\r\n\r\n\r\n[B]\r\nY=2\r\n");
    EXPECT_EQ(WithIniValue("[A]\r\nX=1\r\n; about B\r\n[B]\r\n", "A", "K", "v"),
              "[A]\r\nX=1\r\n; about B\r\nK=v\r\n[B]\r\n");
    EXPECT_EQ(WithIniValue("[A]\n[B]\n", "A", "K", "v"), "[A]\nK=v\n[B]\n");
    EXPECT_EQ(WithIniValue("[A]\nX=1\n  \n", "A", "K", "v"), "[A]\nX=1\nK=v\n  \n");
}

TEST(IniText, ANewKeyTakesTheLineEndOfTheLineInFrontOfIt) {
    EXPECT_EQ(WithIniValue("[A]\r\nX=1\n[B]\r\n", "A", "K", "v"), "[A]\r\nX=1\nK=v\n[B]\r\n");
    EXPECT_EQ(WithIniValue("[A]\nX=1\r\n[B]\n", "A", "K", "v"), "[A]\nX=1\r\nK=v\r\n[B]\n");
    EXPECT_EQ(WithIniValue("[A]\nX=1", "A", "K", "v"), "[A]\nX=1\r\nK=v\r\n");
    EXPECT_EQ(WithIniValue("[A]", "A", "K", "v"), "[A]\r\nK=v\r\n");
}

TEST(IniText, ANewSectionGoesToTheEnd) {
    EXPECT_EQ(WithIniValue("", "A", "K", "v"), "[A]\r\nK=v\r\n");
    EXPECT_EQ(WithIniValue("[A]\r\nX=1\r\n", "B", "K", "v"), "[A]\r\nX=1\r\n[B]\r\nK=v\r\n");
    EXPECT_EQ(WithIniValue("[A]\nX=1\n", "B", "K", "v"), "[A]\nX=1\n[B]\nK=v\n");
    EXPECT_EQ(WithIniValue("[A]\nX=1", "B", "K", "v"), "[A]\nX=1\r\n[B]\r\nK=v\r\n");
    EXPECT_EQ(WithIniValue("\n", "B", "K", "v"), "\n[B]\nK=v\n");
    EXPECT_EQ(WithIniValue("\xEF\xBB\xBF", "B", "K", "v"), "\xEF\xBB\xBF[B]\r\nK=v\r\n");
}

TEST(IniText, WhatWasWrittenIsRead) {
    std::string strContent = "\xEF\xBB\xBF; comment\r\n";
    for (int nRound = 0; nRound < 3; ++nRound) {
        for (const char* strSection : {"GENERAL", "PROFILE_1", "PROFILE_2"}) {
            for (const char* strKey : {"One", "Two Words", "Three"}) {
                const std::string strValue =
                    std::string(strSection) + strKey + std::to_string(nRound);
                strContent = WithIniValue(strContent, strSection, strKey, strValue);
                EXPECT_EQ(Value(strContent, strSection, strKey), strValue);
            }
        }
    }
    EXPECT_EQ(strContent, "\xEF\xBB\xBF; comment\r\n"
                          "[GENERAL]\r\nOne=GENERALOne2\r\nTwo Words=GENERALTwo Words2\r\n"
                          "Three=GENERALThree2\r\n"
                          "[PROFILE_1]\r\nOne=PROFILE_1One2\r\nTwo Words=PROFILE_1Two Words2\r\n"
                          "Three=PROFILE_1Three2\r\n"
                          "[PROFILE_2]\r\nOne=PROFILE_2One2\r\nTwo Words=PROFILE_2Two Words2\r\n"
                          "Three=PROFILE_2Three2\r\n");
}

TEST(IniText, NamesAreWrittenWithoutTheBlanksAroundThem) {
    EXPECT_EQ(WithIniValue("", " A ", " K ", "v"), "[A]\r\nK=v\r\n");
}

TEST(IniText, LineEndsAndZeroBytesCannotStandOnOneLine) {
    EXPECT_TRUE(CanStandOnOneLine(""));
    EXPECT_TRUE(CanStandOnOneLine("a [b]=\"c\"; \t\xFF"));
    EXPECT_FALSE(CanStandOnOneLine("a\rb"));
    EXPECT_FALSE(CanStandOnOneLine("a\n"));
    EXPECT_FALSE(CanStandOnOneLine("a\0"s));
}

} // namespace
} // namespace brennik
