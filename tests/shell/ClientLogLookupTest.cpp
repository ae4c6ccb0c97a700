#include "tests/shell/ShellWorld.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

class ClientLogLookup : public shell::ShellTest {
  protected:
    std::string Lookup(const std::string& strFolder = "/fl") {
        std::string strTerminalId = "left over";
        GetTerminalIdFromClientLog(strFolder, strTerminalId);
        return strTerminalId;
    }
    /// A log file of one line, modified so many seconds after some moment.
    void PutLog(const std::string& strName, const std::string& strLine, int64_t lModified) {
        host.files.Put("/fl/" + strName, strLine + "\r\n");
        host.files.SetTimes("/fl/" + strName, {0, 0, 1700000000 + lModified});
    }
    static std::string Login(const std::string& strIdentity) {
        return "14 Nov 2026: 10:00:00 : INFO   : " + strIdentity + " logged in, Mode=1";
    }
};

TEST_F(ClientLogLookup, FindsMerchantAndClientOfALogin) {
    PutLog("flclient.log", Login("M7,C8"), 0);
    EXPECT_EQ(Lookup(), "M7-C8");
    EXPECT_EQ(Lookup("/fl\\"), "M7-C8");
    EXPECT_EQ(Lookup("C:\\fl"), "M7-C8");
}

TEST_F(ClientLogLookup, ReplacesEveryCommaAndTrims) {
    PutLog("flclient.log", Login("  1,2,3  "), 0);
    EXPECT_EQ(Lookup(), "1-2-3");
}

TEST_F(ClientLogLookup, KeepsAnIdWithoutAComma) {
    PutLog("flclient.log", Login("ALONE"), 0);
    EXPECT_EQ(Lookup(), "ALONE");
}

TEST_F(ClientLogLookup, TakesTheFirstLoginOfALog) {
    PutLog("flclient.log", Login("first,1") + "\r\n" + Login("second,2"), 0);
    EXPECT_EQ(Lookup(), "first-1");
}

TEST_F(ClientLogLookup, SkipsLinesWithoutBothMarks) {
    PutLog("flclient.log",
           "WARN   : M1,C1 logged in, Mode=1\r\n"
           "x INFO  : M1,C1 logged in, Mode=1\r\n"
           "x INFO   : M1,C1 logged out\r\n" +
               Login("M7,C8"),
           0);
    EXPECT_EQ(Lookup(), "M7-C8");
}

TEST_F(ClientLogLookup, EndsWithoutAnIdWhereTheMarksStandTheOtherWayRound) {
    PutLog("flclient.log", "a logged in, Mode=1 INFO   : x\r\n" + Login("M7,C8"), 0);
    EXPECT_EQ(Lookup(), "");
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(ClientLogLookup, ReadsOnlyTheNewestLog) {
    PutLog("aflclient1.log", Login("old,1"), 10);
    PutLog("bflclient2.log", "nothing", 20);
    EXPECT_EQ(Lookup(), "");
    PutLog("cflclient3.log", Login("new,3"), 30);
    EXPECT_EQ(Lookup(), "new-3");
    PutLog("dflclient4.log", Login("older,4"), 5);
    EXPECT_EQ(Lookup(), "new-3");
}

TEST_F(ClientLogLookup, TakesTheFirstOfLogsWithOneTime) {
    PutLog("a-flclient.log", Login("a,1"), 10);
    PutLog("b-flclient.log", Login("b,2"), 10);
    EXPECT_EQ(Lookup(), "a-1");
    PutLog("c-flclient.log", Login("c,3"), 11);
    EXPECT_EQ(Lookup(), "c-3");
}

TEST_F(ClientLogLookup, FindsLogsByTheirNameInAnyCase) {
    PutLog("other.log", Login("x,1"), 50);
    PutLog("brennikclient.log", Login("y,2"), 60);
    PutLog("MyFLClient-7.txt", Login("M7,C8"), 10);
    EXPECT_EQ(Lookup(), "M7-C8");
}

TEST_F(ClientLogLookup, GivesNothingForAFolderWithoutLogs) {
    EXPECT_EQ(Lookup(), "");
    host.files.MakeFolder("/fl");
    EXPECT_EQ(Lookup(), "");
    PutLog("other.log", Login("x,1"), 0);
    EXPECT_EQ(Lookup(), "");
    EXPECT_EQ(Lookup(""), "");
}

TEST_F(ClientLogLookup, GivesNothingForALogThatCannotBeOpened) {
    PutLog("flclient.log", Login("M7,C8"), 0);
    host.files.Deny("/fl/flclient.log");
    EXPECT_EQ(Lookup(), "");
}

TEST_F(ClientLogLookup, EndsTheSearchAtALoginWithoutAnIdentity) {
    for (const char* identity : {"", " ", "   "}) {
        PutLog("flclient.log", Login(identity) + "\r\n" + Login("M7,C8"), 0);
        EXPECT_EQ(Lookup(), "") << "[" << identity << "]";
    }
    PutLog("flclient.log", "no login\r\n" + Login("M7,C8"), 0);
    EXPECT_EQ(Lookup(), "M7-C8");
}

TEST_F(ClientLogLookup, CountsALogWithoutTimesAsTheOldest) {
    PutLog("a-flclient.log", Login("a,1"), 10);
    PutLog("b-flclient.log", Login("b,2"), 20);
    host.FailNext(world::Op::GetTimes, {}, 1, 1); // of the second, which is newer
    EXPECT_EQ(Lookup(), "a-1");
    PutLog("a-flclient.log", Login("a,1"), 30);
    host.FailNext(world::Op::GetTimes); // of the first, which is newer now
    EXPECT_EQ(Lookup(), "b-2");
    EXPECT_EQ(Lookup(), "a-1") << "with all times";
}

TEST_F(ClientLogLookup, GivesNothingWhenTheFolderCannotBeListed) {
    PutLog("flclient.log", Login("M7,C8"), 0);
    host.FailNext(world::Op::Find);
    EXPECT_EQ(Lookup(), "");
    EXPECT_EQ(Lookup(), "M7-C8");
}

TEST_F(ClientLogLookup, GivesNothingWhenTheLogFailsInTheMiddle) {
    PutLog("flclient.log", "one\r\ntwo\r\n" + Login("M7,C8"), 0);
    // Each line is a look for the end and a read: the second line's read, then its look.
    for (int32_t nPass : {3, 2}) {
        host.FailNext(world::Op::StreamRead, {}, 1, nPass);
        EXPECT_EQ(Lookup(), "") << nPass;
        EXPECT_EQ(host.files.nOpenStreams(), 0);
    }
    EXPECT_EQ(Lookup(), "M7-C8");
}

TEST_F(ClientLogLookup, ReadsLogsWithPlainLineEnds) {
    host.files.Put("/fl/flclient.log", "one\n" + Login("M7,C8") + "\nthree");
    EXPECT_EQ(Lookup(), "M7-C8");
}

} // namespace
} // namespace brennik
