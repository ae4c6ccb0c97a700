#include "tests/system/RealRun.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <signal.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace brennik::system_tests {
namespace {

namespace fs = std::filesystem;

// brenniksim serves a folder to brennikclient over the loopback, both as real processes.
class RealSession : public RealRun {
  protected:
    void Serve(const std::vector<std::string>& options = {}) {
        StartService({"--listen", "127.0.0.1:0"}, options);
        const std::string strListening = service_->strListening();
        strPort_ = strListening.substr(strListening.rfind(':') + 1);
    }

    void WriteProfile(const std::vector<std::string>& settings = {}) {
        std::vector<std::string> all{"Mode=0", "ServerIPAddress1=127.0.0.1",
                                     "ServerPortNo1=" + strPort_, "ServerConnectTimeout=5"};
        all.insert(all.end(), settings.begin(), settings.end());
        RealRun::WriteProfile(all);
    }

    std::string strPort_ = "1";
};

TEST_F(RealSession, BringsEveryFileDownUnchanged) {
    fs::create_directories(folder_ / "served/F/2");
    WriteFile(folder_ / "served/readme.txt", "text\r\n");
    WriteFile(folder_ / "served/empty.dat", "");
    WriteFile(folder_ / "served/big.bin", SomeBytes(700001));
    WriteFile(folder_ / "served/F/drive.bin", SomeBytes(4097));
    WriteFile(folder_ / "served/F/2/group.bin", SomeBytes(1));
    for (const char* block : {"1", "1024", "65535"}) {
        if (std::string(block) == "1")
            WriteFile(folder_ / "served/big.bin", SomeBytes(5000));
        else
            WriteFile(folder_ / "served/big.bin", SomeBytes(700001));
        Serve({"--block", block, "--config", "*A=1"});
        WriteProfile();
        RunClient();
        EXPECT_EQ(Tree(folder_ / "received"),
                  (std::vector<std::string>{"F/", "F/2/", "F/2/group.bin", "F/drive.bin", "big.bin",
                                            "config.sys", "empty.dat", "readme.txt"}));
        for (const char* name :
             {"readme.txt", "empty.dat", "big.bin", "F/drive.bin", "F/2/group.bin"})
            EXPECT_TRUE(Received(name) == Served(name)) << name << " in blocks of " << block;
        EXPECT_EQ(Received("config.sys"), "*A=1\r\n");
    }
    EXPECT_TRUE(Logged("INFO   : Brennik Client v1.3.2\r\n"));
    EXPECT_TRUE(Logged("Destroyed\r\n"));
    EXPECT_FALSE(Logged("ERROR"));
}

TEST_F(RealSession, RunsWithDescriptorsClosedAndWithoutHome) {
    WriteFile(folder_ / "served/a.txt", "a");
    Serve();
    WriteProfile();
    ProgramRun client(ClientArguments(), [] {
        close(0);
        close(1);
        close(2);
        unsetenv("HOME");
    });
    EXPECT_EQ(client.Wait(), 0);
    EXPECT_EQ(Received("a.txt"), "a");
    EXPECT_FALSE(Logged("ERROR"));
}

TEST_F(RealSession, ServesSeveralClientsAtOnceOnOneFileAndOneLog) {
    WriteFile(folder_ / "served/a.bin", SomeBytes(100000));
    Serve();
    WriteProfile({"FolderPerDownloadAttempt=FALSE", "LogProcessingPackets=TRUE"});
    std::string strIni = ReadFile(folder_ / "config/BrennikClient.ini");
    std::string strSecond = strIni;
    strSecond.replace(strSecond.find("PROFILE_1"), 9, "PROFILE_2");
    strSecond.replace(strSecond.find("received"), 8, "received2");
    WriteFile(folder_ / "config/BrennikClient.ini", strIni + strSecond);
    {
        ProgramRun first({BRENNIK_CLIENT_PROGRAM, "-configfiledir", folder_ / "config",
                          "-profileid", "1", "-terminalid", "FIRST"});
        ProgramRun second({BRENNIK_CLIENT_PROGRAM, "-configfiledir", folder_ / "config",
                           "-profileid", "2", "-terminalid", "SECOND"});
        EXPECT_EQ(first.Wait(), 0);
        EXPECT_EQ(second.Wait(), 0);
    }
    strIni = ReadFile(folder_ / "config/BrennikClient.ini");
    EXPECT_NE(strIni.find("TerminalID=FIRST"), std::string::npos);
    EXPECT_NE(strIni.find("TerminalID=SECOND"), std::string::npos);
    EXPECT_TRUE(ReadFile(folder_ / "received/a.bin") == Served("a.bin"));
    EXPECT_TRUE(ReadFile(folder_ / "received2/a.bin") == Served("a.bin"));
    // Every line begins with its date and ends whole.
    const std::string strLog = Log();
    size_t nLines = 0;
    for (size_t nAt = 0; nAt < strLog.size(); ++nLines) {
        const size_t nEnd = strLog.find("\r\n", nAt);
        ASSERT_NE(nEnd, std::string::npos);
        const std::string strLine = strLog.substr(nAt, nEnd - nAt);
        EXPECT_NE(strLine.find(" : [PID-TID="), std::string::npos) << strLine.substr(0, 80);
        EXPECT_EQ(strLine.find("[PID-TID="), strLine.rfind("[PID-TID=")) << strLine.substr(0, 80);
        nAt = nEnd + 2;
    }
    EXPECT_GT(nLines, 400u);
}

TEST_F(RealSession, KeepsReceivedNamesInsideItsFolder) {
    WriteFile(folder_ / "victim.txt", "mine");
    WriteFile(folder_ / "script", "at end packet \"OD0000000400000000\" "
                                  "\"20150522110000XXXXXXXX../victim.txt\"\n");
    Serve({"--script", folder_ / "script"});
    WriteProfile();
    RunClient();
    EXPECT_EQ(ReadFile(folder_ / "victim.txt"), "mine");
    EXPECT_TRUE(Logged("Error Code=1000027, Error Message=Failed opening file : ")) << Log();
}

TEST_F(RealSession, RefusesANameOfSixtyThousandCharacters) {
    WriteFile(folder_ / "script", "at end packet \"OD0000000400000000\" "
                                  "\"20150522110000XXXXXXXX\" \"" +
                                      std::string(60000, 'n') + "\"\n");
    Serve({"--script", folder_ / "script"});
    WriteProfile();
    RunClient();
    EXPECT_EQ(Tree(folder_ / "received"), std::vector<std::string>{});
    EXPECT_TRUE(Logged("Error Code=1000027, Error Message=Failed opening file : "));
}

TEST_F(RealSession, StopsInOrderOnTheFirstSignal) {
    // Slow enough to be met in the middle; the run ends at the frame behind the signal.
    WriteFile(folder_ / "served/a.bin", SomeBytes(1000000));
    WriteFile(folder_ / "script", "at every frame pause 20\n");
    Serve({"--script", folder_ / "script", "--block", "1000"});
    for (int nSignal : {SIGINT, SIGTERM}) {
        WriteProfile();
        fs::remove(folder_ / "log/session.log");
        ProgramRun client(ClientArguments());
        ASSERT_TRUE(Eventually([&] { return Received("a.bin").size() >= 1000; }));
        client.Signal(nSignal);
        EXPECT_EQ(client.Wait(), 0);
        EXPECT_TRUE(Logged("Error Code=1000031, Error Message=Communications aborted by user"))
            << Log();
        EXPECT_TRUE(Logged("Connection Closed, Socket "));
        EXPECT_LT(Received("a.bin").size(), 1000000u);
        fs::remove_all(folder_ / "received");
    }
}

TEST_F(RealSession, EndsAtOnceOnTheSecondSignal) {
    WriteFile(folder_ / "script", "at request silence\n");
    Serve({"--script", folder_ / "script"});
    WriteProfile();
    ProgramRun client(ClientArguments(),
                      [&] { WriteFile(folder_ / "pid", std::to_string(getpid())); });
    // The far end has the request and says nothing: the wait for its answer has no end.
    ASSERT_TRUE(Eventually([&] { return Logged("Connected to"); }));
    client.Signal(SIGTERM);
    // The two must not arrive as one: the first is taken, and the program goes on.
    const std::string strStatus = "/proc/" + ReadFile(folder_ / "pid") + "/status";
    ASSERT_TRUE(Eventually([&] {
        const std::string strText = ReadFile(strStatus);
        return strText.find("\nSigPnd:\t0000000000000000\n") != std::string::npos &&
               strText.find("\nShdPnd:\t0000000000000000\n") != std::string::npos;
    }));
    ASSERT_TRUE(client.bRunning());
    client.Signal(SIGTERM);
    EXPECT_EQ(client.Wait(), 256 + SIGTERM);
}

TEST_F(RealSession, RunsTheScriptThatCameDown) {
    WriteFile(folder_ / "served/go.sh", "echo \"$PWD\" >where.txt\nread line\n"
                                        "echo \"got=$line\" >>where.txt\necho to stdout\n");
    Serve();
    WriteProfile({"ScriptFileName=go.sh", "ExecuteScriptFile=TRUE"});
    std::string strIni = ReadFile(folder_ / "config/BrennikClient.ini");
    std::string strDriveForm = "C:" + (folder_ / "received");
    for (char& c : strDriveForm)
        c = c == '/' ? '\\' : c;
    strIni.replace(strIni.find(folder_ / "received"), (folder_ / "received").size(), strDriveForm);
    WriteFile(folder_ / "config/BrennikClient.ini", strIni);
    RunClient();
    EXPECT_EQ(Received("where.txt"), fs::canonical(folder_ / "received").string() + "\ngot=\n");
    EXPECT_TRUE(Logged("INFO   : About to shell " + strDriveForm + "\\go.sh\r\n")) << Log();
    EXPECT_TRUE(Logged("INFO   : Finished downloaded script file processing\r\n"));
}

TEST_F(RealSession, ConnectsToAHighPort) {
    // Any free port above 32767: kernels give those out by themselves.
    WriteFile(folder_ / "served/a.txt", "a");
    Serve();
    for (int nTries = 0; nTries < 50 && std::stoi(strPort_) <= 32767; ++nTries)
        Serve();
    ASSERT_GT(std::stoi(strPort_), 32767);
    WriteProfile();
    RunClient();
    EXPECT_EQ(Received("a.txt"), "a");
}

TEST_F(RealSession, TellsThatNobodyListens) {
    Serve();
    WriteProfile();
    service_.reset();
    RunClient();
    EXPECT_TRUE(Logged("Error Code=1000004, Error Message=Timed out waiting for connection to "
                       "remote machine - WSA Error Code=10061 WSA Error Message=\r\n"))
        << Log();
}

TEST_F(RealSession, LosesTheLogAloneWhenItsFolderIsMissing) {
    WriteFile(folder_ / "served/a.txt", "a");
    Serve();
    WriteProfile();
    fs::remove(folder_ / "log");
    RunClient();
    EXPECT_EQ(Received("a.txt"), "a");
    EXPECT_FALSE(fs::exists(folder_ / "log"));
}

TEST_F(RealSession, TouchesNothingForAnUnknownProfile) {
    WriteProfile();
    // Where the program may write, so that what it leaves could be seen.
    std::string strIni = ReadFile(folder_ / "config/BrennikClient.ini");
    strIni.replace(strIni.find(folder_ / "received"), (folder_ / "received").size(),
                   folder_ / "log/received");
    WriteFile(folder_ / "config/BrennikClient.ini", strIni);
    chmod(folder_.strPath().c_str(), 0755);
    chmod((folder_ / "config").c_str(), 0755);
    chmod((folder_ / "config/BrennikClient.ini").c_str(), 0644);
    chmod((folder_ / "log").c_str(), 0777);
    const auto asNobody = [] {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
            _exit(126); // as root it could remove more than a test may risk
    };
    const auto run = [&](const std::string& strProfile) {
        ProgramRun client({BRENNIK_CLIENT_PROGRAM, "-configfiledir", folder_ / "config",
                           "-profileid", strProfile},
                          asNobody);
        EXPECT_EQ(client.Wait(), 0) << strProfile;
        EXPECT_EQ(client.strOut() + client.strErr(), "") << strProfile;
    };
    const auto contents = [&] {
        std::vector<std::string> entries = Tree(folder_.strPath());
        for (std::string& strEntry : entries) {
            if (strEntry.back() != '/')
                strEntry += "=" + ReadFile(folder_ / strEntry);
        }
        return entries;
    };
    // A profile that stands reads its settings, makes its folder and logs that nobody listens.
    run("1");
    EXPECT_TRUE(Logged("Error Code=1000004, Error Message=")) << Log();
    EXPECT_TRUE(fs::exists(folder_ / "log/received"));
    fs::remove(folder_ / "log/session.log");
    WriteFile(folder_ / "log/received/kept.txt", "kept");

    const auto before = contents();
    run("99");
    EXPECT_EQ(contents(), before);
}

TEST_F(RealSession, PrintsItsUsageAndItsLackOfWindows) {
    // Alone in a folder, the program has no module of windows beside it.
    const std::string strProgram = folder_ / "brennikclient";
    fs::copy_file(BRENNIK_CLIENT_PROGRAM, strProgram);
    const std::string strLine =
        "brennikclient: no window can be opened: there is no libbrennikwindows.so here; run a "
        "profile with -configfiledir and -profileid\n";
    ProgramRun help({strProgram, "-help"});
    EXPECT_EQ(help.Wait(), 0);
    EXPECT_EQ(help.strOut().substr(0, 26), "Usage: brennikclient.exe\n\n");
    EXPECT_EQ(help.strErr(), strLine);
    ProgramRun bare({strProgram});
    EXPECT_EQ(bare.Wait(), 0);
    EXPECT_EQ(bare.strOut(), "");
    EXPECT_EQ(bare.strErr(), strLine);
}

} // namespace
} // namespace brennik::system_tests
