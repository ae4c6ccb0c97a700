#include "shell/BrennikClnt.h"

#include "tests/shell/ShellWorld.h"
#include "tests/world/AllocationLimit.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

class BrennikClnt : public shell::ShellTest {
  protected:
    struct Output {
        std::string strOut;
        std::string strErr;
    };
    /// Main, with all that went to the two streams meanwhile.
    Output RunMain(const std::string& strCommandLine) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        ShellTest::RunMain(strCommandLine);
        return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
    }
};

const std::string kUsageLines =
    "Usage: brennikclient.exe\n"
    "\n"
    "[-configfiledir          <locate of brennikclient configuration file>]\n"
    "[-profileid            <id of brennik profile to run>]\n"
    "[-comport              <com port to which serail device is connectedf to>]\n"
    "[-flmerchantid         <fernlatch merchant id (used to create brennikclient terminald>]\n"
    "[-flclientid           <fernlatch client id (used to create brennikclient terminalid>]\n"
    "[-application          <brennikclient application name to use>]\n"
    "[-terminalid           <brennikclient terminal id to use>]\n";

TEST_F(BrennikClnt, CreatesConfigurationAndEngineFirst) {
    EXPECT_EQ(lProfileId, -1);
    RunMain("-nothing");
    EXPECT_NE(oConfig, nullptr);
    EXPECT_NE(oProtocol, nullptr);
    EXPECT_EQ(lProfileId, -1);
}

TEST_F(BrennikClnt, OpensTheMainWindowForAnEmptyCommandLineAndReturns) {
    const Output output = RunMain("");
    EXPECT_EQ(windows.calls, std::vector<std::string>{"main window"});
    EXPECT_EQ(output.strOut + output.strErr, "");
    EXPECT_FALSE(Ran());
    EXPECT_NE(oConfig, nullptr);
    EXPECT_NE(oProtocol, nullptr);
}

TEST_F(BrennikClnt, HasTheUsageTextWithCarriageReturns) {
    std::string strExpected;
    for (char c : kUsageLines)
        strExpected += c == '\n' ? std::string("\r\n") : std::string(1, c);
    EXPECT_EQ(UsageText() + "\r\n", strExpected);
}

TEST_F(BrennikClnt, ShowsTheUsageForHelpWhateverElseIsGivenAndRunsNothing) {
    for (const char* line : {"-help", "-configfiledir /config -profileid 1 -help",
                             "-help -configfiledir /config -profileid 1"}) {
        windows.calls.clear();
        const Output output = RunMain(line);
        EXPECT_EQ(windows.calls, std::vector<std::string>{UsageText()}) << line;
        EXPECT_EQ(output.strOut + output.strErr, "") << line;
    }
    EXPECT_FALSE(Ran());
}

TEST_F(BrennikClnt, KnowsBeforehandWhetherAWindowOpens) {
    for (const char* line : {"", "-help", "-help x", "-profileid 1 -help", "-help \"x\""})
        EXPECT_TRUE(NeedsWindow(line)) << line;
    for (const char* line :
         {" ", "-configfiledir /config -profileid 1", "help", "-HELP", "-help \"never closed"}) {
        EXPECT_FALSE(NeedsWindow(line)) << line;
        RunMain(line);
    }
    EXPECT_TRUE(windows.calls.empty());
}

TEST_F(BrennikClnt, RunsAProfileWithoutAnyOutput) {
    const Output output = RunMain("-configfiledir /config -profileid 1");
    EXPECT_EQ(output.strOut + output.strErr, "");
    EXPECT_TRUE(Ran());
    EXPECT_EQ(Log().front(), "INFO   : Brennik Client v1.3.2");
    EXPECT_EQ(Log()[1], "INFO   : Brennik Profile=1");
}

TEST_F(BrennikClnt, TakesTheOptionsInAnyOrder) {
    RunMain("-profileid 1 -configfiledir /config");
    EXPECT_TRUE(Ran());
}

TEST_F(BrennikClnt, EndsSilentlyWithoutARequiredOptionOrWithABadProfile) {
    for (const char* line :
         {"-configfiledir /config", "-profileid 1", "something else", "-configfiledir",
          "-configfiledir /config -profileid 0", "-configfiledir /config -profileid abc",
          "-configfiledir /config -profileid -1", "-configfiledir /config -profileid \"-1\"",
          "-configfiledir /config -profileid 99999999999", "-configfiledir /config -profileid",
          "-ConfigFileDir /config -profileid 1", "-configfiledir \"/config -profileid 1"}) {
        const Output output = RunMain(line);
        EXPECT_EQ(output.strOut + output.strErr, "") << line;
        EXPECT_FALSE(Ran()) << line;
        EXPECT_FALSE(host.files.Exists("/log/session.log")) << line;
    }
}

TEST_F(BrennikClnt, RunsNoProfileWhoseNumberIsNotAboveZeroThoughItsSectionStands) {
    for (int32_t lNumber : {0, -1}) {
        WriteProfile(lNumber);
        const std::string strNumber = std::to_string(lNumber);
        RunMain("-configfiledir /config -profileid " + strNumber);
        RunMain("-configfiledir /config -profileid \"" + strNumber + "\"");
        EXPECT_FALSE(Ran()) << lNumber;
        EXPECT_FALSE(host.files.Exists("/log/session.log")) << lNumber;
    }
    WriteProfile(2);
    RunMain("-configfiledir /config -profileid 2");
    EXPECT_TRUE(Ran());
}

TEST_F(BrennikClnt, TakesAConfigurationFolderWithoutAValueAsTheRoot) {
    const std::string strIni = Ini();
    RunMain("-configfiledir -profileid 1");
    EXPECT_FALSE(Ran()) << "no file there";
    host.files.Put("/BrennikClient.ini", strIni);
    RunMain("-configfiledir -profileid 1");
    EXPECT_TRUE(Ran());
}

TEST_F(BrennikClnt, TakesTheFirstOfTwoOptionsOfOneName) {
    RunMain("-configfiledir /config -profileid 1 -terminalid A -terminalid B");
    EXPECT_TRUE(IniHolds("TerminalID=A"));
    WriteProfile(2);
    RunMain("-configfiledir /config -profileid 99 -profileid 2 -terminalid C");
    EXPECT_NE(Ini().find("[PROFILE_99]\r\nTerminalID=C\r\n"), std::string::npos);
    EXPECT_EQ(peer.nConnections(), 1) << "profile 99, which is nothing, and not 2";
}

TEST_F(BrennikClnt, TakesAFolderOfSeveralWordsInQuotes) {
    host.files.Put("/two words/BrennikClient.ini", Ini());
    RunMain("-configfiledir \"/two words\" -profileid 1");
    EXPECT_TRUE(Ran());
}

TEST_F(BrennikClnt, EndsWithoutAWordOnARunTimeFailure) {
    // Each half of the terminal id fits into memory, the two together don't: it fails behind the
    // reading of the options and of the profile, where nothing but Main itself catches it.
    const std::string strHalf(300000, 'n');
    const std::string strLine = "-configfiledir /config -profileid 1 -comport 5 -flmerchantid " +
                                strHalf + " -flclientid " + strHalf;
    Output output;
    {
        const world::AllocationLimit limit(1 << 19);
        EXPECT_NO_THROW(output = RunMain(strLine));
    }
    EXPECT_EQ(output.strOut + output.strErr, "");
    EXPECT_TRUE(IniHolds("ServerComPort=5")) << "the run had begun";
    EXPECT_FALSE(IniHolds("TerminalID=" + strHalf + "-" + strHalf));
    EXPECT_FALSE(Ran());
}

TEST_F(BrennikClnt, OffersTheNumberHelpersOfTheWire) {
    EXPECT_EQ(HexStringToLong("0aBc"), 2748);
    EXPECT_EQ(BinaryStringToLong(std::string("\x01\x02", 2)), 258);
}

} // namespace
} // namespace brennik
