#include "tests/system/RealRun.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace brennik::system_tests {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

// The same over a pseudo-terminal, whose path is COM1 in the host file.
class RealSerialSession : public RealRun {
  protected:
    RealSerialSession() {
        fs::create_directory(folder_ / "home");
        WriteFile(folder_ / "home/BrennikHost.ini", "[PORTS]\nCOM1=" + (folder_ / "line") + "\n");
    }

    void Serve(const Lines& options = {}) { StartService({"--serial", folder_ / "line"}, options); }

    void WriteProfile(const Lines& settings = {}) {
        Lines all{"Mode=1",           "ServerComPort=1", "ServerBaudRate=115200", "ServerParity=N",
                  "ServerDatabits=8", "ServerStopbit=1", "ServerFlowControl=0"};
        all.insert(all.end(), settings.begin(), settings.end());
        RealRun::WriteProfile(all);
    }

    std::function<void()> AtHome() const {
        return [strHome = folder_ / "home"] { setenv("BRENNIK_HOME", strHome.c_str(), 1); };
    }
    void RunSerialClient() { RunClient(AtHome()); }

    /// The lines of the log without date, time and process.
    Lines LogLines() const {
        Lines lines;
        std::string strLine;
        for (const char c : Log()) {
            if (c != '\n') {
                strLine += c;
                continue;
            }
            lines.push_back(strLine.substr(strLine.find("] ") + 2));
            strLine.clear();
        }
        return lines;
    }
};

TEST_F(RealSerialSession, BringsEveryFileDownUnchanged) {
    fs::create_directories(folder_ / "served/F/2");
    WriteFile(folder_ / "served/readme.txt", "text\r\n");
    WriteFile(folder_ / "served/big.bin", SomeBytes(9001));
    WriteFile(folder_ / "served/F/2/group.bin", SomeBytes(1));
    Serve({"--config", "*A=1"});
    WriteProfile();
    RunSerialClient();
    EXPECT_EQ(Tree(folder_ / "received"),
              (Lines{"F/", "F/1/", "F/2/", "F/2/group.bin", "I/", "I/1/", "I/1/big.bin",
                     "I/1/config.sys", "I/1/readme.txt"}));
    EXPECT_TRUE(Received("I/1/big.bin") == Served("big.bin"));
    EXPECT_TRUE(Received("F/2/group.bin") == Served("F/2/group.bin"));
    EXPECT_FALSE(Logged("ERROR"));
}

TEST_F(RealSerialSession, LogsWhatASessionOverTcpLogsButForTheChannelAndTheTitles) {
    fs::create_directories(folder_ / "served/I/1");
    WriteFile(folder_ / "served/I/1/a.bin", SomeBytes(1500));
    const Lines logAll{"LogProcessingPackets=TRUE", "ReleaseTitle=R", "ConfigTitle=C"};
    Serve();
    WriteProfile(logAll);
    RunSerialClient();
    Lines serial = LogLines();
    fs::remove(folder_ / "log/session.log");

    StartService({"--listen", "127.0.0.1:0"}, {});
    Lines tcp{"Mode=0", "ServerIPAddress1=127.0.0.1",
              "ServerPortNo1=" + std::to_string(service_->iPort()), "ServerConnectTimeout=5"};
    tcp.insert(tcp.end(), logAll.begin(), logAll.end());
    RealRun::WriteProfile(tcp);
    RunClient();
    Lines overTcp = LogLines();

    ASSERT_EQ(serial.size() + 1, overTcp.size()); // the attempt has a line of its own over TCP
    EXPECT_EQ(serial[4], "INFO   : Connected to Port=COM1, BaudRate=115200, Parity=None "
                         ",Databits=8 ,Stopbit=1 ,Flowcontrol=None ,Connection Attempt=1\r");
    EXPECT_EQ(serial[5].find("R,C<ETX>"), std::string::npos);
    EXPECT_NE(overTcp[6].find(",R,C<ETX>"), std::string::npos);
    EXPECT_EQ(serial.back(), "INFO   : Connection Closed\r");
    const auto withoutChannel = [](Lines& lines, size_t nRequest) {
        lines.pop_back();
        lines.erase(lines.begin() + 4, lines.begin() + static_cast<long>(nRequest) + 1);
        // The time of sending stands in the open file packets, and the block check behind it.
        for (std::string& strLine : lines) {
            if (strLine.find("<STX>O") != std::string::npos)
                strLine = strLine.substr(0, strLine.find("<STX>O") + 24);
            // Over TCP there is no group yet when the drive is named.
            if (const size_t nGroup = strLine.find("\\1\\SETDRIVE"); nGroup != std::string::npos)
                strLine.erase(nGroup, 2);
        }
    };
    withoutChannel(serial, 5);
    withoutChannel(overTcp, 6);
    EXPECT_EQ(serial, overTcp);
}

TEST_F(RealSerialSession, EndsWhenTheLineIsUnpluggedAndRunsAnewWhenItIsBack) {
    WriteFile(folder_ / "served/big.bin", SomeBytes(8000));
    WriteFile(folder_ / "script", "sessions 1\nat frame 5 hang-up 1\n");
    Serve({"--script", folder_ / "script"});
    WriteProfile();
    RunSerialClient();
    EXPECT_TRUE(Logged("ERROR  : Error Code=1000011, Error Message=Timed out reading ISO packet"));
    EXPECT_TRUE(Received("I/1/big.bin") == SomeBytes(8000).substr(0, 3 * 1024))
        << "the part that came stays: frames 2 to 4 of a file whose first is its opening";
    ASSERT_TRUE(Eventually([&] { return fs::exists(folder_ / "line"); }));
    RunSerialClient();
    EXPECT_TRUE(Received("I/1/big.bin") == Served("big.bin"));
}

TEST_F(RealSerialSession, LeavesAPortToTheProgramThatHasIt) {
    WriteFile(folder_ / "served/a.bin", SomeBytes(1));
    WriteFile(folder_ / "script", "sessions 1\nat request silence\n");
    Serve({"--script", folder_ / "script"});
    WriteProfile({"CharTimeout=60"});
    ProgramRun first(ClientArguments(), AtHome());
    ASSERT_TRUE(Eventually([&] { return Logged("Connected to Port=COM1"); }));
    RunSerialClient();
    EXPECT_TRUE(Logged("ERROR  : Error Code=1000018, Error Message=Failed opening COM Port COM1"));
    EXPECT_TRUE(first.bRunning());
}

} // namespace
} // namespace brennik::system_tests
