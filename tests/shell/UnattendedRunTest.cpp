#include "shell/UnattendedRun.h"

#include "tests/session/Contents.h"
#include "tests/shell/ShellWorld.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using session::Open;

class UnattendedRun : public shell::ShellTest {
  protected:
    /// A run of profile 1 with more options behind the required ones.
    void Run(const std::string& strOptions = "") {
        RunMain("-configfiledir /config -profileid 1 " + strOptions);
        host.RunFor(world::kMillisecond); // the last answer reaches the service of this run
    }
};

const std::string kLoginLine = "14 Nov 2026: 10:00:00 : INFO   : M7,C8 logged in, Mode=1\r\n";

TEST_F(UnattendedRun, WritesNothingToTheFileWithoutOptions) {
    const std::string strBefore = Ini();
    Run();
    EXPECT_TRUE(Ran());
    EXPECT_EQ(Ini(), strBefore);
}

TEST_F(UnattendedRun, WritesTheComPortIntoBothKeysForGood) {
    Run("-comport 5");
    EXPECT_TRUE(IniHolds("ClientComPort=5"));
    EXPECT_TRUE(IniHolds("ServerComPort=5"));
    EXPECT_EQ(oConfig->iServerComPort(), 5) << "read again before the run";
    EXPECT_TRUE(Ran());
}

TEST_F(UnattendedRun, LeavesThePortForANumberThatIsNotAboveZero) {
    const std::string strBefore = Ini();
    for (const char* option : {"-comport 0", "-comport abc", "-comport", "-comport \"-3\""}) {
        Run(option);
        EXPECT_EQ(Ini(), strBefore) << option;
    }
}

TEST_F(UnattendedRun, RunsOnWithAPortThatDoesNotFitInTheProfile) {
    // The second reading of the profile fails at the port and isn't looked at: it is meant so.
    Run("-comport 70000");
    EXPECT_TRUE(IniHolds("ServerComPort=70000"));
    EXPECT_EQ(oConfig->lErrorCode(), 1000000);
    EXPECT_TRUE(Ran());
}

TEST_F(UnattendedRun, EndsSilentlyWhenTheProfileCannotBeRead) {
    WriteProfile(1, {"ServerComPort=70000"});
    Run("-terminalid T9");
    EXPECT_FALSE(Ran());
    EXPECT_FALSE(host.files.Exists("/log/session.log"));
    EXPECT_FALSE(IniHolds("TerminalID=T9"));
}

TEST_F(UnattendedRun, WritesTheTerminalIdAndRunsWithIt) {
    Run("-terminalid T9");
    EXPECT_TRUE(IniHolds("TerminalID=T9"));
    EXPECT_NE(peer.Received().find(",T9,"), std::string::npos);
    EXPECT_EQ(Log()[3], "INFO   : Brennik Terminal Id=T9");
}

TEST_F(UnattendedRun, KeepsTheTerminalIdWhenTheGivenOneHasNoClosingQuote) {
    const std::string strBefore = Ini();
    Run("-terminalid \"open");
    EXPECT_EQ(Ini(), strBefore);
    EXPECT_EQ(Log()[3], "INFO   : Brennik Terminal Id=T1");
    EXPECT_NE(peer.Received().find(",T1,"), std::string::npos);
}

TEST_F(UnattendedRun, PrefersTheTerminalIdToTheComposedOne) {
    Run("-terminalid T9 -flmerchantid M1 -flclientid C2 -flclientlogdir /fl");
    EXPECT_TRUE(IniHolds("TerminalID=T9"));
}

TEST_F(UnattendedRun, ComposesTheTerminalIdOfMerchantAndClient) {
    host.files.Put("/fl/flclient.log", kLoginLine);
    Run("-flmerchantid M1 -flclientid C2 -flclientlogdir /fl");
    EXPECT_TRUE(IniHolds("TerminalID=M1-C2"));
}

TEST_F(UnattendedRun, LooksIntoTheClientLogWhenOneHalfIsMissing) {
    host.files.Put("/fl/flclient.log", kLoginLine);
    for (const char* half : {"-flmerchantid M1", "-flclientid C2", ""}) {
        WriteProfile(1);
        Run(std::string(half) + " -flclientlogdir /fl");
        EXPECT_TRUE(IniHolds("TerminalID=M7-C8")) << half;
    }
}

TEST_F(UnattendedRun, KeepsTheTerminalIdWhenNoneIsFound) {
    const std::string strBefore = Ini();
    Run("-flmerchantid M1");
    Run("-flclientlogdir /nowhere");
    host.files.Put("/fl/flclient.log", "no login here\r\n");
    Run("-flclientlogdir /fl");
    EXPECT_EQ(Ini(), strBefore);
    EXPECT_NE(peer.Received().find(",T1,"), std::string::npos);
}

TEST_F(UnattendedRun, WritesTheApplication) {
    Run("-application NEWAPP");
    EXPECT_TRUE(IniHolds("ApplicationID=NEWAPP"));
    EXPECT_NE(peer.Received().find(",NEWAPP,"), std::string::npos);
}

TEST_F(UnattendedRun, WritesPortTerminalAndApplicationInThatOrder) {
    host.RecordCalls();
    Run("-application A2 -terminalid T2 -comport 4");
    std::vector<std::string> keys;
    for (const auto& write : host.profileStrings.writes)
        keys.push_back(write.strKey + "=" + write.strValue);
    EXPECT_EQ(keys, (std::vector<std::string>{"ClientComPort=4", "ServerComPort=4", "TerminalID=T2",
                                              "ApplicationID=A2"}));
}

TEST_F(UnattendedRun, StartsTheScriptOnlyAfterASuccessInMode0ThatAsksForIt) {
    const std::vector<std::string> script = {"ScriptFileName=go.sh", "ExecuteScriptFile=TRUE"};
    Serve({Open("go.sh", 0), "C", "S"});
    WriteProfile(1, script);
    Run();
    EXPECT_EQ(host.processes.calls.size(), 4u);

    host.processes.calls.clear();
    Serve({Open("go.sh", 0), "C", "U"});
    Run();
    EXPECT_TRUE(host.processes.calls.empty()) << "a failed run starts nothing";

    host.files.Remove("/log/session.log");
    Serve({Open("go.sh", 0), "C", "S"});
    WriteProfile(1, {"ScriptFileName=go.sh", "ExecuteScriptFile=FALSE"});
    Run();
    EXPECT_TRUE(Log().back().starts_with("INFO   : Connection Closed")) << "a success";
    EXPECT_TRUE(host.processes.calls.empty()) << "not asked for";

    // A device side over TCP that can't be reached would be waited for without end.
    std::vector<std::string> reachable = script;
    reachable.insert(reachable.end(),
                     {"ClientIPAddress1=10.0.0.1", "ClientPortNo1=5000", "ClientConnectTimeout=5"});
    for (int32_t lMode = 1; lMode <= 3; ++lMode) {
        WriteProfile(1, reachable);
        std::string strIni = Ini();
        strIni.replace(strIni.find("Mode=0"), 6, "Mode=" + std::to_string(lMode));
        host.files.Put("/config/BrennikClient.ini", strIni);
        Run();
        EXPECT_TRUE(host.processes.calls.empty()) << "another mode";
    }
}

TEST_F(UnattendedRun, LooksForTheScriptInTheBaseFolderAfterAChangeOfGroup) {
    WriteProfile(1, {"ScriptFileName=go.sh", "ExecuteScriptFile=TRUE"});
    Serve({Open("go.sh", 0), "C", Open("SETGROUP.2", 0), "C", Open("other", 0), "C", "S"});
    Run();
    EXPECT_EQ(host.processes.calls,
              (std::vector<std::string>{"ChangeDrive C", "ChangeDirectory C:\\srv\\pos\\",
                                        "StartHidden C:\\srv\\pos\\go.sh", "WaitForExit 5001"}));

    host.processes.calls.clear();
    Serve({Open("SETGROUP.2", 0), "C", Open("go.sh", 0), "C", "S"});
    Run();
    EXPECT_TRUE(host.files.Exists("/srv/pos/2/go.sh"));
    EXPECT_TRUE(host.processes.calls.empty());
    const auto lines = Log();
    EXPECT_EQ(lines[lines.size() - 2],
              "ERROR  : Script file not found - aborting script file processing. "
              "[C:\\srv\\pos\\go.sh]");
}

TEST_F(UnattendedRun, TouchesNothingOnDiskForAnUnknownProfile) {
    host.files.Put("/home/user/letter.txt", "mine");
    const auto before = session::Contents(host.files);
    RunMain("-configfiledir /config -profileid 99");
    EXPECT_EQ(session::Contents(host.files), before);
    EXPECT_FALSE(Ran());
}

} // namespace
} // namespace brennik
