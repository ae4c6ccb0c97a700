// The program brenniksim itself, as a child process, met over a plain socket with bytes made by
// hand.
#include "tests/sim/GoldenFrames.h"
#include "tests/system/PlainSocket.h"
#include "tests/system/ProgramRun.h"
#include "tests/system/Sandbox.h"
#include "tests/system/SimService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using golden::kFailure;
using golden::kSuccess;
using system_tests::Begin;
using system_tests::Ended;
using system_tests::kRequest;
using system_tests::kVariable;
using system_tests::PlainSocket;
using system_tests::ProgramRun;
using system_tests::RunSim;
using system_tests::SimService;
using system_tests::TakePayload;
using system_tests::TempFolder;
using system_tests::WriteFile;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

TEST(Brenniksim, TellsItsUseAndItsVersion) {
    const Ended help = RunSim({"--help"});
    EXPECT_EQ(help.nExit, 0);
    EXPECT_THAT(help.strOutput, StartsWith("usage: brenniksim COMMAND [options]\n"));
    EXPECT_THAT(help.strOutput, HasSubstr("  service "));
    EXPECT_EQ(help.strErrors, "");
    const Ended version = RunSim({"--version"});
    EXPECT_EQ(version.nExit, 0);
    EXPECT_THAT(version.strOutput, MatchesRegex("brenniksim [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    const Ended service = RunSim({"service", "--help"});
    EXPECT_EQ(service.nExit, 0);
    EXPECT_THAT(service.strOutput, StartsWith("usage: brenniksim service [options]\n"));
    for (const char* strOption :
         {"--listen", "--serial", "--rate", "--serve", "--block", "--config", "--message",
          "--script", "--once", "--quiet", "--verbose", "--help"}) {
        EXPECT_THAT(service.strOutput, HasSubstr("\n  "s + strOption));
    }
}

TEST(Brenniksim, RefusesBadCommandLinesInOneLine) {
    const struct {
        std::vector<std::string> arguments;
        std::string_view strError;
    } cases[] = {
        {{}, "no command; see brenniksim --help"},
        {{"serve"}, "unknown command \"serve\"; see brenniksim --help"},
        {{"service", "--port", "1"}, "unknown option --port"},
        {{"service", "-v"}, "unexpected argument \"-v\""},
        {{"service", "here"}, "unexpected argument \"here\""},
        {{"service", "--listen"}, "option --listen needs a value"},
        {{"service", "--once=yes"}, "option --once takes no value"},
        {{"service", "--block", "0"}, "--block needs a whole number from 1 to 65535, not \"0\""},
        {{"service", "--block=65536"},
         "--block needs a whole number from 1 to 65535, not \"65536\""},
        {{"service", "--block", "1k"}, "--block needs a whole number from 1 to 65535, not \"1k\""},
        {{"service", "--config", "A"}, "--config needs NAME=VALUE, not \"A\""},
        {{"service", "--config", "=B"}, "--config needs NAME=VALUE, not \"=B\""},
        {{"service", "--serial", "/tmp/a", "--listen", "127.0.0.1:0"},
         "--serial and --listen exclude each other"},
        {{"service", "--rate", "9600"}, "--rate needs --serial"},
        {{"service", "--serial=/tmp/a", "--rate", "49"},
         "--rate needs a whole number from 50 to 4000000, not \"49\""},
        {{"service", "--serial=/tmp/a", "--rate", "4000001"},
         "--rate needs a whole number from 50 to 4000000, not \"4000001\""},
        {{"service", "--message", "a\x03z"}, "--message can't hold the byte ETX"},
        {{"service", "--config", "a=\x03"}, "--config can't hold the byte ETX"},
        {{"service", "--serve", "/nowhere"}, "/nowhere: No such file or directory"},
        {{"service", "--script", "/nowhere"}, "/nowhere: No such file or directory"},
    };
    for (const auto& row : cases) {
        const Ended ended = RunSim(row.arguments);
        EXPECT_EQ(ended.nExit, 2) << row.strError;
        EXPECT_EQ(ended.strErrors, "brenniksim: " + std::string(row.strError) + "\n");
        EXPECT_EQ(ended.strOutput, "");
    }
}

TEST(Brenniksim, RefusesAWrongScriptWithItsLine) {
    const TempFolder folder;
    WriteFile(folder / "script", "no-enq\nexplode\n");
    const Ended ended = RunSim({"service", "--script", folder / "script"});
    EXPECT_EQ(ended.nExit, 2);
    EXPECT_EQ(ended.strErrors,
              "brenniksim: " + (folder / "script") + ": line 2: unknown statement \"explode\"\n");
}

TEST(Brenniksim, FailsWhenItCannotListen) {
    const SimService service({});
    const Ended taken =
        RunSim({"service", "--listen", "127.0.0.1:" + std::to_string(service.iPort())});
    EXPECT_EQ(taken.nExit, 1);
    EXPECT_THAT(taken.strErrors, HasSubstr("Address already in use\n"));
}

TEST(Brenniksim, RefusesWhatIsNoAddressAndPort) {
    for (const char* strAddress :
         {"", "127.0.0.1", ":5", "127.0.0.1:x", "127.0.0.1:65536", "127.0.0.1:", "127.0.0.1:-1"}) {
        const Ended ended = RunSim({"service", "--listen", strAddress});
        EXPECT_EQ(ended.nExit, 2);
        EXPECT_EQ(ended.strErrors, "brenniksim: \""s + strAddress +
                                       "\" is no address and port, such as 127.0.0.1:0\n");
    }
}

TEST(Brenniksim, ServesASessionOnceAndEndsWithStatusZero) {
    SimService service({"--once", "--config", "A=B"});
    PlainSocket socket(service.iPort());
    Begin(socket);
    EXPECT_EQ(socket.Receive(8), kVariable);
    socket.Send("\x15");
    EXPECT_EQ(socket.Receive(8), kVariable);
    socket.Send("\x06");
    EXPECT_EQ(socket.Receive(5), kSuccess);
    socket.Send("\x06");
    socket.Close();
    EXPECT_EQ(service.Program().Wait(), 0);
    EXPECT_THAT(service.strReport(),
                MatchesRegex("session 1 \\(127\\.0\\.0\\.1:[0-9]+\\): successful, 0 files, 0 bytes,"
                             " 2 frames, 1 resent\n"));
    EXPECT_EQ(service.Program().strErr(), "");
}

TEST(Brenniksim, EndsOnceWithStatusOneWhenTheClientLeaves) {
    SimService service({"--once"});
    PlainSocket socket(service.iPort());
    Begin(socket);
    EXPECT_EQ(socket.Receive(5), kSuccess);
    socket.Close();
    EXPECT_EQ(service.Program().Wait(), 1);
    EXPECT_THAT(service.strReport(), HasSubstr("left by the other end"));
}

TEST(Brenniksim, TakesNoSecondConnectionWithOnce) {
    SimService service({"--once", "--quiet"});
    PlainSocket socket(service.iPort());
    ASSERT_EQ(socket.Receive(1), "\x05");
    EXPECT_FALSE(PlainSocket(service.iPort()).bConnected());
    socket.Close();
    EXPECT_EQ(service.Program().Wait(), 1);
    EXPECT_EQ(service.strReport(), "");
}

TEST(Brenniksim, EndsOnceWithStatusOneAfterUnsuccessful) {
    const TempFolder folder;
    WriteFile(folder / "script", "end-with U\n");
    SimService service({"--once", "--script", folder / "script"});
    PlainSocket socket(service.iPort());
    Begin(socket);
    EXPECT_EQ(socket.Receive(5), kFailure);
    socket.Send("\x06");
    socket.Close();
    EXPECT_EQ(service.Program().Wait(), 1);
}

TEST(Brenniksim, ServesSeveralConnectionsAtOnce) {
    SimService service({"--quiet", "--config", "A=B"});
    std::vector<std::unique_ptr<PlainSocket>> sockets;
    for (int n = 0; n < 20; ++n) {
        sockets.push_back(std::make_unique<PlainSocket>(service.iPort()));
    }
    for (const auto& socket : sockets) {
        Begin(*socket);
    }
    for (const auto& socket : sockets) {
        EXPECT_EQ(socket->Receive(8), kVariable);
        socket->Send("\x06");
    }
    for (const auto& socket : sockets) {
        EXPECT_EQ(socket->Receive(5), kSuccess);
        socket->Send("\x06");
        socket->Close();
    }
    service.Program().Signal(SIGTERM);
    EXPECT_EQ(service.Program().Wait(), 0);
}

TEST(Brenniksim, EndsInOrderOnSignals) {
    for (const int signal : {SIGINT, SIGTERM}) {
        SimService idle({});
        idle.Program().Signal(signal);
        EXPECT_EQ(idle.Program().Wait(), 0);
        SimService busy({"--once"});
        PlainSocket socket(busy.iPort());
        Begin(socket);
        busy.Program().Signal(signal);
        EXPECT_EQ(busy.Program().Wait(), 1) << "the one session was not successful";
        EXPECT_EQ(socket.ReceiveToEnd(), std::string(kSuccess) + "(closed)");
    }
}

TEST(Brenniksim, ServesFoldersAsDrivesAndGroups) {
    const TempFolder folder;
    std::filesystem::create_directories(folder / "F/2");
    std::filesystem::create_directories(folder / "E");
    WriteFile(folder / "z.txt", "0123456789abcdefXYZ");
    WriteFile(folder / "F/f.txt", "");
    WriteFile(folder / "F/2/deep.bin", "\x03\x02"sv);
    SimService service({"--once", "--serve", folder.strPath()});
    PlainSocket socket(service.iPort());
    Begin(socket);
    const auto takeOpen = [&](const std::string& strSize, const std::string& strName) {
        const std::string strPayload = TakePayload(socket, 40 + strName.size());
        EXPECT_EQ(strPayload.substr(0, 18), "OD" + strSize + "00000000");
        EXPECT_THAT(strPayload.substr(18, 14), MatchesRegex("[0-9]+"));
        EXPECT_EQ(strPayload.substr(32), "XXXXXXXX" + strName);
    };
    takeOpen("00000013", "z.txt");
    EXPECT_EQ(TakePayload(socket, 23, true), "W\x00\x10\x00\x00\x00\x00"
                                             "0123456789abcdef"sv);
    EXPECT_EQ(TakePayload(socket, 10, true), "W\x00\x03\x00\x00\x00\x10XYZ"sv);
    EXPECT_EQ(TakePayload(socket, 1), "C");
    for (const char* strName : {"SETDRIVE.E", "SETDRIVE.F", "f.txt", "SETDRIVE.F", "SETGROUP.2"}) {
        takeOpen("00000000", strName);
        EXPECT_EQ(TakePayload(socket, 1), "C");
    }
    takeOpen("00000002", "deep.bin");
    EXPECT_EQ(TakePayload(socket, 9, true), "W\x00\x02\x00\x00\x00\x00\x03\x02"sv);
    EXPECT_EQ(TakePayload(socket, 1), "C");
    EXPECT_EQ(TakePayload(socket, 1), "S");
    socket.Close();
    EXPECT_EQ(service.Program().Wait(), 0);
    EXPECT_THAT(service.strReport(),
                HasSubstr("successful, 3 files, 21 bytes, 18 frames, 0 resent"));
}

TEST(Brenniksim, HonoursItsBlockSizeOverTheRequest) {
    const TempFolder folder;
    WriteFile(folder / "a", std::string(70'000, 'x'));
    SimService service({"--once", "--serve", folder.strPath(), "--block", "65535"});
    PlainSocket socket(service.iPort());
    Begin(socket);
    TakePayload(socket, 41);
    EXPECT_EQ(TakePayload(socket, 65542, true).substr(0, 8), "W\xFF\xFF\x00\x00\x00\x00x"sv);
    EXPECT_EQ(TakePayload(socket, 4472, true).substr(0, 8), "W\x11\x71\x00\x00\xFF\xFFx"sv);
}

TEST(Brenniksim, RefusesToServeWhatNoClientWouldStore) {
    const struct {
        std::string strPath;
        bool bFolder;
        std::string strError;
    } cases[] = {
        {"setdrive.x", false, ": a client would not store a file or folder of this name"},
        {"xSETGROUPx", true, ": a client would not store a file or folder of this name"},
        {"a\\b", false, ": a client would not store a file or folder of this name"},
        {"a\x03z", false, ": a client would not store a file or folder of this name"},
        {"<Default>", false, ": a client would not store a file or folder of this name"},
        {"d/g/deeper", true, ": a folder below a group can't be served"},
        {"config.sys", false, " would replace what --config sends"},
    };
    for (const auto& row : cases) {
        const TempFolder folder;
        const std::filesystem::path path = folder / row.strPath;
        std::filesystem::create_directories(row.bFolder ? path : path.parent_path());
        if (!row.bFolder) {
            WriteFile(path, "x");
        }
        const Ended ended = RunSim({"service", "--serve", folder.strPath(), "--config", "A=B"});
        EXPECT_EQ(ended.nExit, 2);
        EXPECT_EQ(ended.strErrors, "brenniksim: " + path.string() + row.strError + "\n");
    }
}

TEST(Brenniksim, EndsWithUnsuccessfulWhenAFileHasGone) {
    const TempFolder folder;
    WriteFile(folder / "a", "x");
    SimService service({"--serve", folder.strPath()});
    std::filesystem::remove(folder / "a");
    PlainSocket socket(service.iPort());
    Begin(socket);
    EXPECT_EQ(TakePayload(socket, 1), "U");
}

TEST(Brenniksim, ClosesAndResetsByScript) {
    const TempFolder folder;
    WriteFile(folder / "close", "at end bytes \"bye\"\nat end close\n");
    WriteFile(folder / "reset", "at end reset\n");
    SimService closing({"--once", "--script", folder / "close"});
    PlainSocket closed(closing.iPort());
    Begin(closed);
    EXPECT_EQ(closed.ReceiveToEnd(), "bye(closed)");
    closed.Close();
    EXPECT_EQ(closing.Program().Wait(), 1);
    SimService resetting({"--once", "--script", folder / "reset"});
    PlainSocket reset(resetting.iPort());
    ASSERT_EQ(reset.Receive(1), "\x05");
    reset.Send(kRequest);
    EXPECT_THAT(reset.ReceiveToEnd(), testing::AnyOf("\x06(reset)", "(reset)"));
    EXPECT_EQ(resetting.Program().Wait(), 1);
}

TEST(Brenniksim, KeepsItsTimeLimitsByTheRealClock) {
    const TempFolder folder;
    WriteFile(folder / "script",
              "timeout answer 30\nat start pause 20\nat frame 1 fragment 3 10\n");
    SimService service({"--once", "--config", "A=B", "--script", folder / "script"});
    PlainSocket socket(service.iPort());
    Begin(socket);
    EXPECT_EQ(socket.ReceiveToEnd(), std::string(kVariable) + "(closed)");
    socket.Close();
    EXPECT_EQ(service.Program().Wait(), 1);
    EXPECT_THAT(service.strReport(), HasSubstr("no answer"));
}

TEST(Brenniksim, CountsOneThingAsOne) {
    const TempFolder files;
    WriteFile(files / "a", "x");
    SimService service({"--once", "--serve", files.strPath()});
    PlainSocket socket(service.iPort());
    Begin(socket);
    TakePayload(socket, 41);
    EXPECT_EQ(TakePayload(socket, 8, true), "W\x00\x01\x00\x00\x00\x00x"sv);
    EXPECT_EQ(TakePayload(socket, 1), "C");
    EXPECT_EQ(TakePayload(socket, 1), "S");
    socket.Close();
    EXPECT_EQ(service.Program().Wait(), 0);
    EXPECT_THAT(service.strReport(), HasSubstr("1 file, 1 byte, 4 frames, 0 resent"));
}

TEST(Brenniksim, RunsWithClosedStandardDescriptors) {
    const TempFolder folder;
    ProgramRun program({BRENNIK_SIM_PROGRAM, "service", "--serve", folder / "nowhere"}, [] {
        ::close(0);
        ::close(1);
    });
    EXPECT_EQ(program.Wait(), 2);
    EXPECT_EQ(program.strErr(),
              "brenniksim: " + (folder / "nowhere") + ": No such file or directory\n");
}

TEST(Brenniksim, TellsEachEventWhenAsked) {
    SimService service({"--once", "--verbose"});
    PlainSocket socket(service.iPort());
    Begin(socket);
    EXPECT_EQ(socket.Receive(5), kSuccess);
    socket.Send("\x06");
    socket.Close();
    EXPECT_EQ(service.Program().Wait(), 0);
    EXPECT_THAT(service.strReport(), HasSubstr(": sent frame 1: S, 5 bytes\n"));
    EXPECT_THAT(service.strReport(), HasSubstr(": session ended: successful\n"));
}

double SecondsOfChildren() {
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

TEST(Brenniksim, IsIdleWhileItWaits) {
    const TempFolder folder;
    WriteFile(folder / "script", "at start pause 600\n");
    const double before = SecondsOfChildren();
    SimService service({"--once", "--script", folder / "script"});
    PlainSocket socket(service.iPort());
    Begin(socket);
    socket.Close();
    EXPECT_EQ(service.Program().Wait(), 1);
    EXPECT_LT(SecondsOfChildren() - before, 0.3) << "of 0.6 seconds and more of waiting";
}

} // namespace
} // namespace brennik
