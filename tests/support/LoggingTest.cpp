#include "support/Logging.h"

#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <array>

namespace brennik {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* kFile = "C:\\log\\client.log";

// The simulated day is 14 November 2026; each call of the seam costs a microsecond, so that all of
// a test happens within its second.
class LoggingTest : public world::WorldTest {
  protected:
    LoggingTest() {
        host.files.MakeFolder("C:\\log");
        host.clock.SetLocal({2026, 11, 14, 23, 46, 32});
        log.strLogPath("C:\\log\\");
        log.strLogFile("client.log");
        log.bLoggingEnabled(true);
    }

    std::string Written() { return host.files.Get(kFile).value_or("no file"); }

    Logging log;
};

TEST(LoggingProperties, StartEmptyAndOff) {
    const Logging log;
    EXPECT_EQ(log.strLogPath(), "");
    EXPECT_EQ(log.strLogFile(), "");
    EXPECT_FALSE(log.bLoggingEnabled());
    EXPECT_FALSE(log.bObscureNumericStrings());
    EXPECT_EQ(log.strLogFileDirAndName(), "");
    EXPECT_FALSE(log.bArchiveLogFile());
}

TEST_F(LoggingTest, WritesOneStampedLineThatEndsInCrLf) {
    log.Logit("INFO   : Connection Closed");
    EXPECT_EQ(Written(), "14 Nov 2026: 23:46:32 : INFO   : Connection Closed\r\n");
    log.Logit("");
    EXPECT_EQ(Written(), "14 Nov 2026: 23:46:32 : INFO   : Connection Closed\r\n"
                         "14 Nov 2026: 23:46:32 : \r\n");
}

TEST_F(LoggingTest, TheStampHasFixedWidths) {
    host.clock.SetLocal({2027, 1, 5, 3, 4, 9});
    log.Logit("x");
    EXPECT_EQ(Written(), "05 Jan 2027: 03:04:09 : x\r\n");
}

TEST_F(LoggingTest, TheStampFollowsTheClockOverMidnight) {
    host.clock.SetLocal({2026, 12, 31, 23, 59, 59});
    log.Logit("a");
    host.RunFor(world::kSecond);
    log.Logit("b");
    EXPECT_EQ(host.files.Lines(kFile),
              (Lines{"31 Dec 2026: 23:59:59 : a", "01 Jan 2027: 00:00:00 : b"}));
}

TEST_F(LoggingTest, TheMonthNameIsThatOfTheClock) {
    host.clock.SetMonthName(11, "nov.");
    log.Logit("x");
    EXPECT_EQ(Written(), "14 nov. 2026: 23:46:32 : x\r\n");
}

TEST_F(LoggingTest, TouchesNoFileUnlessEnabled) {
    log.bLoggingEnabled(false);
    log.bArchiveLogFile(true);
    const int64_t nCalls = host.nCalls();
    log.Logit("x");
    log.LogJoined({"x", "y"});
    log.Logit2("x");
    EXPECT_EQ(host.nCalls(), nCalls);
    EXPECT_FALSE(host.files.Exists(kFile));
}

TEST_F(LoggingTest, EachLineIsOneWriteAndNoFileStaysOpen) {
    log.Logit("a");
    log.Logit("b");
    EXPECT_EQ(host.files.nWrites(), 2);
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(LoggingTest, AMessageInPartsIsOneMessage) {
    log.LogJoined({"a", "", "\x02", "b"});
    EXPECT_EQ(Written(), "14 Nov 2026: 23:46:32 : a<STX>b\r\n");
}

TEST_F(LoggingTest, PutsABackslashBehindThePathForGood) {
    log.strLogPath("C:\\log");
    EXPECT_EQ(log.strLogPath(), "C:\\log");
    log.Logit("x");
    EXPECT_EQ(log.strLogPath(), "C:\\log\\");
    EXPECT_EQ(Written(), "14 Nov 2026: 23:46:32 : x\r\n");
    log.Logit("x");
    EXPECT_EQ(log.strLogPath(), "C:\\log\\");
}

TEST_F(LoggingTest, TheWholePathStandsInForFolderAndName) {
    log.strLogPath("C:\\log");
    log.strLogFileDirAndName("C:\\other.log");
    log.Logit("x");
    EXPECT_EQ(host.files.Get("C:\\other.log"), "14 Nov 2026: 23:46:32 : x\r\n");
    EXPECT_FALSE(host.files.Exists(kFile));
    EXPECT_EQ(log.strLogPath(), "C:\\log");
}

TEST_F(LoggingTest, WithoutAFolderNothingIsWritten) {
    log.strLogPath("");
    const auto tree = host.files.Tree();
    log.Logit("x");
    log.Logit2("x");
    EXPECT_EQ(host.files.Tree(), tree);
    EXPECT_EQ(log.strLogPath(), "");
    log.strLogFileDirAndName("C:\\other.log");
    log.Logit("x");
    EXPECT_EQ(host.files.Get("C:\\other.log"), "14 Nov 2026: 23:46:32 : x\r\n");
}

TEST_F(LoggingTest, SwallowsFailuresAndTriesAgainWithTheNextLine) {
    host.FailNext(world::Op::AppendLine, {.kind = FailureKind::PermissionDenied});
    log.Logit("lost");
    log.Logit("kept");
    log.strLogPath("C:\\none");
    log.Logit("lost");
    EXPECT_EQ(Written(), "14 Nov 2026: 23:46:32 : kept\r\n");
}

TEST_F(LoggingTest, AFullDiskLosesTheWholeLine) {
    log.Logit("kept");
    const std::string strBefore = Written();
    host.files.SetQuota(host.files.TotalBytes() + 5);
    log.Logit("lost");
    EXPECT_EQ(Written(), strBefore);
}

// Logit2.

TEST_F(LoggingTest, Logit2WritesTheMessageRaw) {
    log.strLogFileDirAndName(kFile);
    log.Logit2(std::string_view("a\0\x02\xFF", 4));
    EXPECT_EQ(Written(), std::string("14 Nov 2026: 23:46:32 : a\0\x02\xFF\r\n", 30));
}

TEST_F(LoggingTest, Logit2WithoutTheWholePathOpensTheFolderAndFails) {
    log.strLogPath("C:\\log");
    host.RecordCalls();
    log.Logit2("x");
    EXPECT_EQ(host.ledger.trace, Lines{"AppendLine C:\\log\\"});
    EXPECT_EQ(log.strLogPath(), "C:\\log\\");
    EXPECT_EQ(host.files.Tree("C:\\log"), Lines{});
}

TEST_F(LoggingTest, Logit2ObscuresAndArchivesToo) {
    log.strLogFileDirAndName("C:\\other.log");
    log.bObscureNumericStrings(true);
    log.bArchiveLogFile(true);
    host.files.Put(kFile, std::string(1048577, 'x'));
    log.Logit2("4111111111111111");
    EXPECT_EQ(host.files.Get("C:\\other.log"), "14 Nov 2026: 23:46:32 : ************1111\r\n");
    EXPECT_EQ(host.files.Tree("C:\\log"), (Lines{"old/", "old/20261114_234632_client.log"}));
}

// ProcessLogMsg.

TEST_F(LoggingTest, NamesTheControlCharactersThatHaveOne) {
    const std::array<std::pair<int, const char*>, 16> names = {{{0, "NUL"},
                                                                {1, "SOH"},
                                                                {2, "STX"},
                                                                {3, "ETX"},
                                                                {4, "EOT"},
                                                                {5, "ENQ"},
                                                                {6, "ACK"},
                                                                {7, "BEL"},
                                                                {10, "LF"},
                                                                {13, "CR"},
                                                                {16, "DLE"},
                                                                {21, "NAK"},
                                                                {22, "SYN"},
                                                                {28, "FS"},
                                                                {30, "RS"},
                                                                {31, "US"}}};
    std::array<bool, 256> bNamed{};
    for (const auto& [nByte, strName] : names) {
        const std::string strMsg(1, static_cast<char>(nByte));
        EXPECT_EQ(Logging::ProcessLogMsg(strMsg), "<" + std::string(strName) + ">");
        bNamed[static_cast<size_t>(nByte)] = true;
    }
    for (size_t nByte = 0; nByte < 256; ++nByte) {
        if (!bNamed[nByte]) {
            const std::string strMsg(1, static_cast<char>(nByte));
            const bool bPlain = nByte >= 32 && nByte < 127;
            EXPECT_EQ(Logging::ProcessLogMsg(strMsg),
                      bPlain ? strMsg : "<ASCII " + std::to_string(nByte) + ">");
        }
    }
}

TEST_F(LoggingTest, ShowsBytesWithoutANameByTheirNumber) {
    EXPECT_EQ(Logging::ProcessLogMsg("\x7F"), "<ASCII 127>");
    EXPECT_EQ(Logging::ProcessLogMsg("\t"), "<ASCII 9>");
    EXPECT_EQ(Logging::ProcessLogMsg("\b"), "<ASCII 8>"); // not "BS": it is meant so
    EXPECT_EQ(Logging::ProcessLogMsg("\xFF"), "<ASCII 255>");
    EXPECT_EQ(Logging::ProcessLogMsg("\x02"
                                     "A B~\x03\x80"),
              "<STX>A B~<ETX><ASCII 128>");
    EXPECT_EQ(Logging::ProcessLogMsg(""), "");
    EXPECT_EQ(Logging::ProcessLogMsg("<STX>"), "<STX>");
}

TEST_F(LoggingTest, NoControlByteReachesTheFile) {
    std::string strAll;
    for (int nByte = 0; nByte < 256; ++nByte) {
        strAll += static_cast<char>(nByte);
    }
    log.Logit(strAll);
    const std::string strLine = host.files.Lines(kFile).at(0);
    for (const char c : strLine) {
        EXPECT_TRUE(c >= 32 && c < 127);
    }
    EXPECT_EQ(Written(), strLine + "\r\n");
}

// Masking.

TEST_F(LoggingTest, MasksRunsOf13DigitsAndMore) {
    log.bObscureNumericStrings(true);
    log.Logit("4111111111111111");
    log.Logit("123456789012");
    log.Logit("1234567890123");
    log.Logit("a4111111111111111b1234567890123 12");
    log.Logit("41111111 11111111");
    log.Logit("no number");
    EXPECT_EQ(
        host.files.Lines(kFile),
        (Lines{"14 Nov 2026: 23:46:32 : ************1111",
               "14 Nov 2026: 23:46:32 : 123456789012", //
               "14 Nov 2026: 23:46:32 : *********0123",
               "14 Nov 2026: 23:46:32 : a************1111b*********0123 12",
               "14 Nov 2026: 23:46:32 : 41111111 11111111", "14 Nov 2026: 23:46:32 : no number"}));
}

TEST_F(LoggingTest, LeavesNumbersAloneUnlessAsked) {
    log.Logit("4111111111111111");
    EXPECT_EQ(Written(), "14 Nov 2026: 23:46:32 : 4111111111111111\r\n");
}

// The archive rule.

class LoggingArchiveTest : public LoggingTest {
  protected:
    LoggingArchiveTest() {
        log.bArchiveLogFile(true);
        host.files.Put(kFile, strLarge);
    }

    const std::string strLarge = std::string(1048577, 'x');
    const std::string strNewLine = "14 Nov 2026: 23:46:32 : new\r\n";
};

TEST_F(LoggingArchiveTest, MovesAnOversizedFileAside) {
    log.Logit("new");
    EXPECT_EQ(host.files.Get("C:\\log\\old\\20261114_234632_client.log"), strLarge);
    EXPECT_EQ(Written(), strNewLine);
}

TEST_F(LoggingArchiveTest, UsesAFolderThatIsThere) {
    host.files.MakeFolder("C:\\log\\old");
    host.clock.SetLocal({2027, 1, 5, 3, 4, 9});
    log.Logit("new");
    EXPECT_EQ(host.files.Tree("C:\\log"),
              (Lines{"client.log", "old/", "old/20270105_030409_client.log"}));
}

TEST_F(LoggingArchiveTest, LeavesAFileOfExactlyOneMebibyteAlone) {
    host.files.Put(kFile, strLarge.substr(1));
    log.Logit("new");
    EXPECT_EQ(Written(), strLarge.substr(1) + strNewLine);
    EXPECT_EQ(host.files.Tree("C:\\log"), (Lines{"client.log", "old/"}));
}

TEST_F(LoggingArchiveTest, LeavesEveryFileAloneUnlessAsked) {
    log.bArchiveLogFile(false);
    log.Logit("new");
    EXPECT_EQ(Written(), strLarge + strNewLine);
    EXPECT_EQ(host.files.Tree("C:\\log"), Lines{"client.log"});
}

TEST_F(LoggingArchiveTest, GoesOnWhenTheFolderCannotBeMade) {
    host.FailNext(world::Op::CreateFolder, {.kind = FailureKind::PermissionDenied});
    log.Logit("new");
    EXPECT_EQ(Written(), strLarge + strNewLine);
}

TEST_F(LoggingArchiveTest, GoesOnWhenTheFileCannotBeMoved) {
    host.files.Put("C:\\log\\old\\20261114_234632_client.log", "there");
    log.Logit("new");
    EXPECT_EQ(Written(), strLarge + strNewLine);
    EXPECT_EQ(host.files.Get("C:\\log\\old\\20261114_234632_client.log"), "there");
}

TEST_F(LoggingArchiveTest, MakesNoFolderInAMissingOne) {
    log.strLogPath("C:\\none");
    log.Logit("lost");
    EXPECT_FALSE(host.files.Exists("C:\\none"));
}

TEST_F(LoggingArchiveTest, AlwaysLooksAtFolderAndName) {
    log.strLogFileDirAndName("C:\\other.log");
    host.files.Put("C:\\other.log", strLarge);
    log.Logit("new");
    EXPECT_EQ(host.files.Get("C:\\other.log"), strLarge + strNewLine);
    EXPECT_EQ(host.files.Tree("C:\\log"), (Lines{"old/", "old/20261114_234632_client.log"}));
}

TEST_F(LoggingArchiveTest, WithTheWholePathTheFolderGetsNoBackslash) {
    log.strLogFileDirAndName("C:\\other.log");
    log.strLogPath("C:\\log");
    log.Logit("new");
    EXPECT_TRUE(host.files.Exists("C:\\logold"));
    EXPECT_EQ(Written(), strLarge);
}

} // namespace
} // namespace brennik
