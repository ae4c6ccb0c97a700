#include "sim/ScriptText.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_view_literals;
using sim::ScriptBytes;
using sim::ScriptProblem;
using sim::SplitScriptLine;

std::string Bytes(std::string_view strLine) {
    return ScriptBytes(SplitScriptLine(strLine), 0);
}

std::string ProblemOf(std::string_view strLine) {
    try {
        return "no problem, but " + Bytes(strLine);
    } catch (const ScriptProblem& problem) {
        return problem.strReason;
    }
}

TEST(ScriptText, SplitsAtBlanksAndDropsComments) {
    const auto words = SplitScriptLine("  at\tframe  3 close# and so on\r");
    ASSERT_EQ(words.size(), 4U);
    EXPECT_EQ(words[0].strText, "at");
    EXPECT_EQ(words[3].strText, "close");
    EXPECT_TRUE(SplitScriptLine("# only a comment").empty());
    EXPECT_TRUE(SplitScriptLine(" \t\r").empty());
    EXPECT_TRUE(SplitScriptLine("").empty());
}

TEST(ScriptText, TakesTextHexadecimalDigitsAndNames) {
    const struct {
        std::string_view strLine;
        std::string_view strBytes;
    } cases[] = {
        {R"("abc")", "abc"sv},
        {R"("a # b" # c)", "a # b"sv},
        {R"("\\ \" \r\n\t\0\x41\xfF")", "\\ \" \r\n\t\0A\xFF"sv},
        {R"("")", ""sv},
        {"02", "\x02"sv},
        {"0257fF00", "\x02W\xFF\0"sv},
        {"02 57 03", "\x02W\x03"sv},
        {"STX ETX EOT ENQ ACK DLE NAK FS", "\x02\x03\x04\x05\x06\x10\x15\x1C"sv},
        {R"(STX "Mhi" ETX 41)", "\x02Mhi\x03"
                                "A"sv},
        {R"("ab"*3)", "ababab"sv},
        {"41*2 ENQ*2", "AA\x05\x05"sv},
        {R"("x"*0 "y")", "y"sv},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(Bytes(row.strLine), row.strBytes) << row.strLine;
    }
}

TEST(ScriptText, RepeatsUpToSixteenMebibytes) {
    EXPECT_EQ(Bytes("41*16777216").size(), size_t{16} << 20);
    EXPECT_EQ(ProblemOf("41*16777216 42"), "more than 16 MiB in one line");
}

TEST(ScriptText, TellsWhatIsWrong) {
    const std::string strNoBytes = " is neither a quoted text, nor pairs of hexadecimal digits,"
                                   " nor one of STX ETX EOT ENQ ACK DLE NAK FS";
    const std::string strEscape = R"(unknown escape; there are \\ \" \r \n \t \0 and \xHH)";
    const struct {
        std::string_view strLine;
        std::string strReason;
    } cases[] = {
        {"", "bytes are missing at the end of the line"},
        {R"("open)", "a quoted text has no closing quote"},
        {R"("open\")", "a quoted text has no closing quote"},
        {R"("\q")", strEscape},
        {R"("\x4")", strEscape},
        {R"("\xZZ")", strEscape},
        {R"("\)", strEscape},
        {"4", "\"4\"" + strNoBytes},
        {"4G", "\"4G\"" + strNoBytes},
        {"enq", "\"enq\"" + strNoBytes},
        {R"("a""b")", "a blank is missing behind \"a\""},
        {R"(41"b")", "a blank is missing behind \"41\""},
        {"41*x", "a repetition must be a whole number from 0 to 16777216, not \"x\""},
        {"41*", "a repetition must be a whole number from 0 to 16777216, not \"\""},
        {"41*-1", "a repetition must be a whole number from 0 to 16777216, not \"-1\""},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(ProblemOf(row.strLine), row.strReason) << row.strLine;
    }
}

TEST(ScriptText, ReadsNumbersWithinTheirBounds) {
    EXPECT_EQ(sim::ScriptNumber("0", "n", 0, 9), 0);
    EXPECT_EQ(sim::ScriptNumber("9", "n", 0, 9), 9);
    for (const std::string_view strBad :
         {"10", "-1", "+1", "", "1x", " 1", "1.0", "0x1", "99999999999999999999"}) {
        EXPECT_THROW(sim::ScriptNumber(strBad, "n", 0, 9), ScriptProblem) << strBad;
    }
}

TEST(ScriptText, ReadsTheWordsOfALine) {
    sim::ScriptLine line("word \"a text\" 42 1500 \"x\" 00");
    EXPECT_TRUE(line.bMore());
    EXPECT_FALSE(line.bQuotedNext());
    EXPECT_EQ(line.Word("a word"), "word");
    EXPECT_TRUE(line.bQuotedNext());
    EXPECT_EQ(line.Text("a text"), "a text");
    EXPECT_EQ(line.Number("a number", 1, 42), 42);
    EXPECT_EQ(line.Time(), 1'500'000);
    EXPECT_EQ(line.RestAsBytes(), "x\0"sv);
    EXPECT_FALSE(line.bMore());
    EXPECT_FALSE(line.bQuotedNext());
    EXPECT_NO_THROW(line.End());
}

TEST(ScriptText, MissesTheWordsOfALine) {
    const struct {
        std::string_view strLine;
        void (*read)(sim::ScriptLine& line);
        std::string_view strProblem;
    } cases[] = {
        {"", [](sim::ScriptLine& line) { line.Word("a word"); },
         "a word is missing at the end of the line"},
        {"\"x\"", [](sim::ScriptLine& line) { line.Word("a word"); },
         "a word is expected in place of \"x\""},
        {"x*2", [](sim::ScriptLine& line) { line.Text("a text"); },
         "a text is expected in place of \"x\""},
        {"5", [](sim::ScriptLine& line) { line.Number("a number", 6, 7); },
         "a number must be a whole number from 6 to 7, not \"5\""},
        {"86400001", [](sim::ScriptLine& line) { line.Time(); },
         "a time in milliseconds must be a whole number from 0 to 86400000, not \"86400001\""},
        {"x", [](sim::ScriptLine& line) { line.End(); }, "nothing more is expected at \"x\""},
    };
    for (const auto& row : cases) {
        try {
            sim::ScriptLine line(row.strLine);
            row.read(line);
            ADD_FAILURE() << row.strLine;
        } catch (const ScriptProblem& problem) {
            EXPECT_EQ(problem.strReason, row.strProblem);
        }
    }
}

TEST(ScriptText, ReadsFrames) {
    const auto read = [](std::string_view strLine) {
        sim::ScriptLine line(strLine);
        const std::string strFirst = line.Word("a place");
        return sim::ReadFrames(strFirst, line);
    };
    EXPECT_TRUE(read("frame 3")->bHolds(3));
    EXPECT_FALSE(read("frame 3")->bHolds(2));
    EXPECT_FALSE(read("frame 3")->bHolds(4));
    for (const int64_t lFrame : {3, 4, 5}) {
        EXPECT_TRUE(read("frames 3-5")->bHolds(lFrame));
    }
    EXPECT_FALSE(read("frames 3-5")->bHolds(2));
    EXPECT_FALSE(read("frames 3-5")->bHolds(6));
    EXPECT_TRUE(read("every frame")->bHolds(1));
    EXPECT_TRUE(read("every frame")->bHolds(int64_t{1} << 62));
    EXPECT_FALSE(read("every other"));
    EXPECT_FALSE(read("end"));
}

TEST(ScriptText, ReadsScriptsLineByLine) {
    std::vector<std::string> words;
    std::string strError;
    const auto take = [&](sim::ScriptLine& line) { words.push_back(line.Word("a word")); };
    EXPECT_TRUE(sim::ReadScript("one\n\n # two\nthree # four", take, strError));
    EXPECT_EQ(words, (std::vector<std::string>{"one", "three"}));
    EXPECT_EQ(strError, "");
    EXPECT_FALSE(sim::ReadScript("one\ntwo more", take, strError));
    EXPECT_EQ(strError, "line 2: nothing more is expected at \"more\"");
    EXPECT_FALSE(sim::ReadScript("one\n\n\"two", take, strError));
    EXPECT_EQ(strError, "line 3: a quoted text has no closing quote");
}

} // namespace
} // namespace brennik
