// The program brenniksim as a device, as a child process, met over the other side of its
// pseudo-terminal with bytes made by hand.
#include "tests/sim/GoldenFrames.h"
#include "tests/system/PlainLine.h"
#include "tests/system/ProgramRun.h"
#include "tests/system/Sandbox.h"
#include "tests/system/SimService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace brennik {
namespace {

namespace fs = std::filesystem;

using namespace std::string_view_literals;
using golden::kFailure;
using golden::kQuery;
using golden::kReady;
using golden::kShort;
using golden::kSuccess;
using golden::kUpload;
using system_tests::Ended;
using system_tests::Eventually;
using system_tests::MonotonicNanoseconds;
using system_tests::PlainLine;
using system_tests::ReadFile;
using system_tests::RunSim;
using system_tests::SimDevice;
using system_tests::TempFolder;
using system_tests::Tree;
using system_tests::WriteFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

// Frames, worked out by hand.
constexpr std::string_view kRequest =
    "\x02VFI,VX520,XDL,F,APP1,T0000001,EPROM1,1024,2048,PT000001,RELEASE,CONFIG\x03\x94\x25";
constexpr std::string_view kOpen = "\x02OD000000050000000020150522110000XXXXXXXXa.bin\x03\x51\x40";
constexpr std::string_view kWrite = "\x02W\x00\x05\x00\x00\x00\x00hello\x01\xE3"sv;
constexpr std::string_view kClose = "\x02"
                                    "C\x03\x8A\x0C";
constexpr std::string_view kUploadAgreed = "\x06\x02"
                                           "3.9,1,U,R,0,0,,,A\x03\x50";

/// A folder with the path of a line in it, and devices on that line.
class BrenniksimDevice : public testing::Test {
  protected:
    std::vector<std::string> Arguments(std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"--serial", strPath_});
        return options;
    }

    /// The options that make a device follow a script; its request is "VFI".
    std::vector<std::string> Scripted(const std::string& strScript,
                                      std::vector<std::string> options = {}) const {
        WriteFile(folder_ / "script", "request-record \"VFI\"\n" + strScript);
        options.insert(options.begin(), {"--script", folder_ / "script"});
        return Arguments(options);
    }

    std::string strStore() const { return folder_ / "store"; }

    const TempFolder folder_;
    const std::string strPath_ = folder_ / "line";
};

/// Says something and expects the answer.
void Exchange(PlainLine& line, std::string_view strBytes, std::string_view strAnswer) {
    line.Send(strBytes);
    EXPECT_EQ(line.Receive(strAnswer.size()), strAnswer);
}

/// A download of one file.
void PlaySession(PlainLine& line, std::string_view strRequest) {
    Exchange(line, "\x05", strRequest);
    line.Send("\x06");
    for (const std::string_view strFrame : {kOpen, kWrite, kClose, kSuccess}) {
        Exchange(line, strFrame, "\x06");
    }
}

void AwaitReport(const SimDevice& device, const std::string& strText) {
    EXPECT_TRUE(Eventually([&] { return device.strReport().find(strText) != std::string::npos; }))
        << device.strReport();
}

double MillisecondsSince(long long nanoseconds) {
    return static_cast<double>(MonotonicNanoseconds() - nanoseconds) * 1e-6;
}

TEST_F(BrenniksimDevice, TakesADownloadIntoAFolderAndEndsWithStatusZero) {
    SimDevice device(Arguments({"--once", "--store", strStore()}));
    EXPECT_EQ(device.strListening(), strPath_);
    PlainLine line(strPath_);
    line.SetRaw();
    PlaySession(line, kRequest);
    line.Close();
    EXPECT_EQ(device.Program().Wait(), 0);
    EXPECT_EQ(device.strReport(),
              "call 1 of 1: successful, 1 file, 5 bytes, 4 frames, 0 refused, 0 resent\n");
    EXPECT_EQ(device.Program().strErr(), "");
    EXPECT_THAT(Tree(strStore()), ElementsAre("I/", "I/1/", "I/1/a.bin"));
    EXPECT_EQ(ReadFile(folder_ / "store/I/1/a.bin"), "hello");
    EXPECT_FALSE(fs::is_symlink(strPath_));
}

TEST_F(BrenniksimDevice, HearsAndSpeaksNoiseAtAnotherSpeed) {
    SimDevice device(Scripted("rate 19200\nnoise \"x\"\n", {"--verbose"}));
    PlainLine line(strPath_);
    line.SetRaw(115200);
    Exchange(line, "\x05", "\xE3"); // "x" at the wrong speed
    line.SetRaw(9600);
    Exchange(line, "\x05", "\xE3");
    line.SetRaw(19200);
    Exchange(line, "\x05", kShort);
    EXPECT_THAT(device.strReport(), HasSubstr("device: ignored 1 byte\n"));
}

TEST_F(BrenniksimDevice, TakesItsRateFromTheCommandLineFirst) {
    SimDevice device(Scripted("rate 9600\nnoise \"x\"\n", {"--rate", "56000"}));
    PlainLine line(strPath_);
    line.SetRaw(9600);
    Exchange(line, "\x05", "\xE3");
    line.SetRaw(57600);
    Exchange(line, "\x05", kShort); // within three in a hundred
}

TEST_F(BrenniksimDevice, LivesThroughClosings) {
    SimDevice device(Arguments({"--store", strStore()}));
    for (const std::string_view strSaid : {"\x05"sv, "\x06"sv, kOpen, kWrite, kClose, kSuccess}) {
        PlainLine line(strPath_);
        line.SetRaw();
        Exchange(line, strSaid,
                 strSaid == "\x05"sv   ? kRequest
                 : strSaid == "\x06"sv ? ""sv
                                       : "\x06"sv);
    }
    AwaitReport(device, "call 1 of 1: successful, 1 file, 5 bytes, 4 frames, 0 refused");
    EXPECT_EQ(ReadFile(folder_ / "store/I/1/a.bin"), "hello");
}

TEST_F(BrenniksimDevice, HearsAndAnswersEveryOpeningHoweverShortTheOthersWere) {
    SimDevice device(Scripted("rate 38400\n", {"--quiet"})); // what a fresh line is set to
    for (int n = 0; n < 300; ++n) {
        for (int nShort = 0; nShort < n % 3; ++nShort) {
            PlainLine(strPath_).Send("x");
        }
        PlainLine line(strPath_);
        line.Send(kQuery);
        ASSERT_EQ(line.Receive(kReady.size()), kReady) << n;
    }
}

TEST_F(BrenniksimDevice, ThrowsAwayWhatWasLeftUnread) {
    SimDevice device(Arguments({"--quiet"}));
    {
        PlainLine line(strPath_);
        line.SetRaw();
        line.Send(kQuery);
        EXPECT_EQ(line.Receive(2), kReady.substr(0, 2));
    }
    EXPECT_TRUE(Eventually([&] { return PlainLine(strPath_).nWaiting() == 0; }));
    PlainLine line(strPath_);
    Exchange(line, kQuery, kReady); // and the settings have stayed
}

TEST_F(BrenniksimDevice, RebootsBetweenItsCalls) {
    SimDevice device(Scripted("reboot 300\ncall\ncall\n", {"--once"}));
    PlainLine line(strPath_);
    line.SetRaw();
    Exchange(line, "\x05", kShort);
    const long long begun = MonotonicNanoseconds();
    Exchange(line, kSuccess, "\x06");
    std::string strHeard;
    EXPECT_TRUE(Eventually([&] {
        line.Send(kQuery);
        strHeard = line.ReceiveWithin(500, kReady.size());
        return !strHeard.empty();
    }));
    EXPECT_EQ(strHeard, kReady);
    EXPECT_GE(MillisecondsSince(begun), 300);
    Exchange(line, "\x06\x05", kShort);
    Exchange(line, kSuccess, "\x06");
    line.Close();
    EXPECT_EQ(device.Program().Wait(), 0);
}

TEST_F(BrenniksimDevice, RebootsWhileNobodyHasTheLineOpen) {
    SimDevice device(Scripted("reboot 50\ncall\ncall\n", {"--verbose"}));
    {
        PlainLine line(strPath_);
        line.SetRaw();
        Exchange(line, "\x05", kShort);
        Exchange(line, kSuccess, "\x06");
    }
    EXPECT_TRUE(Eventually([&] {
        PlainLine line(strPath_);
        line.SetRaw();
        line.Send("\x05");
        return line.ReceiveWithin(500, kShort.size()) == kShort;
    }));
    EXPECT_THAT(device.strReport(), HasSubstr("device: has rebooted\n"));
}

TEST_F(BrenniksimDevice, SaysNothingToAnOpeningOfWhatCameDueBefore) {
    SimDevice device(Scripted("at request pause 100\ntimeout answer 60000\n", {"--verbose"}));
    {
        PlainLine line(strPath_);
        line.SetRaw();
        line.Send("\x05");
        AwaitReport(device, "device: sent request: VFI\n");
    }
    const long long closed = MonotonicNanoseconds();
    EXPECT_TRUE(Eventually([&] { return MillisecondsSince(closed) > 200; }));
    PlainLine line(strPath_);
    line.SetRaw();
    Exchange(line, "\x06" + std::string(kSuccess), "\x06");
}

TEST_F(BrenniksimDevice, UploadsAFolderWhenItIsTold) {
    fs::create_directory(folder_ / "files");
    WriteFile(folder_ / "files/log", "hello");
    SimDevice device(Scripted("", {"--once", "--files", folder_ / "files"}));
    PlainLine line(strPath_);
    line.SetRaw();
    Exchange(line, kUpload, kUploadAgreed);
    Exchange(line, "\x06", kShort);
    line.Send("\x06");
    EXPECT_THAT(line.Receive(47), StartsWith("\x02OD0000000500000000"));
    Exchange(line, "\x06", kWrite);
    Exchange(line, "\x15", kWrite);
    Exchange(line, "\x06", kClose);
    Exchange(line, "\x06", kSuccess);
    line.Send("\x06");
    line.Close();
    EXPECT_EQ(device.Program().Wait(), 0);
    EXPECT_EQ(device.strReport(),
              "call 1 of 1: successful, 1 file, 5 bytes, 4 frames, 0 refused, 1 resent\n");
}

// The folder.

TEST_F(BrenniksimDevice, FollowsNoLinkOutOfItsStore) {
    fs::create_directory(strStore());
    fs::create_directory(folder_ / "elsewhere");
    fs::create_directory_symlink("../elsewhere", strStore() + "/I");
    SimDevice device(Arguments({"--store", strStore()}));
    PlainLine line(strPath_);
    line.SetRaw();
    Exchange(line, "\x05", kRequest);
    line.Send("\x06");
    Exchange(line, kOpen, "\x15");
    fs::remove(strStore() + "/I");
    fs::create_directories(strStore() + "/I/1");
    WriteFile(folder_ / "mine", "mine");
    fs::create_symlink("../../../mine", strStore() + "/I/1/a.bin");
    Exchange(line, kOpen, "\x15");
    fs::remove(strStore() + "/I/1/a.bin");
    fs::create_directory(strStore() + "/I/1/a.bin");
    Exchange(line, kOpen, "\x15");
    fs::remove(strStore() + "/I/1/a.bin");
    ASSERT_EQ(::mkfifo((strStore() + "/I/1/a.bin").c_str(), 0600), 0);
    Exchange(line, kOpen, "\x15");
    fs::remove(strStore() + "/I/1/a.bin");
    Exchange(line, kOpen, "\x06");
    EXPECT_EQ(ReadFile(folder_ / "mine"), "mine");
    EXPECT_TRUE(fs::is_empty(folder_ / "elsewhere"));
}

TEST_F(BrenniksimDevice, ResumesAndAppendsInItsStore) {
    fs::create_directories(strStore() + "/I/1");
    WriteFile(strStore() + "/I/1/a.bin", "0123456789");
    SimDevice device(Scripted("resume a.bin 3\n", {"--store", strStore()}));
    PlainLine line(strPath_);
    line.SetRaw();
    Exchange(line, "\x05", kShort);
    Exchange(line, "\x06" + std::string(kOpen), "\x02R3\x03");
    Exchange(line, kWrite, "\x06");
    for (int n = 0; n < 2; ++n) {
        Exchange(line,
                 "\x02LA\x1C"
                 "B\x03\x05\x81",
                 "\x06");
    }
    Exchange(line, kWrite, "\x06");
    Exchange(line, kClose, "\x06");
    EXPECT_EQ(ReadFile(strStore() + "/I/1/a.bin"), "012hellohello");
    EXPECT_EQ(ReadFile(strStore() + "/I/1/config.sys"), "A=B\r\nA=B\r\n");
}

// The line.

TEST_F(BrenniksimDevice, TakesTheTimeOfItsRateWhenItIsPaced) {
    SimDevice device(Scripted("rate 9600\n", {"--pace"}));
    PlainLine line(strPath_);
    line.SetRaw(9600);
    const long long begun = MonotonicNanoseconds();
    Exchange(line, "\x05", kShort);
    EXPECT_GE(MillisecondsSince(begun), 1000.0 * 10 * (1 + 7) / 9600);
}

TEST_F(BrenniksimDevice, PrintsNoMoreThanItIsAsked) {
    SimDevice quiet(Scripted("", {"--once", "--quiet"}));
    PlainLine line(strPath_);
    line.SetRaw();
    Exchange(line, "\x05", kShort);
    Exchange(line, kSuccess, "\x06");
    line.Close();
    EXPECT_EQ(quiet.Program().Wait(), 0);
    EXPECT_EQ(quiet.strReport(), "");
}

TEST_F(BrenniksimDevice, CountsEventsThatFollowTheirLike) {
    SimDevice device(Scripted("enq syn 3\n", {"--verbose"}));
    PlainLine line(strPath_);
    line.SetRaw();
    for (int n = 0; n < 3; ++n) {
        Exchange(line, "\x05", "\x16");
    }
    Exchange(line, "\x05", kShort);
    AwaitReport(device, "device: ENQ: sent SYN\ndevice: the same 2 times more\ndevice: ENQ\n"
                        "device: sent request: VFI\n");
}

// Ends.

TEST_F(BrenniksimDevice, EndsAtSignalsAndTakesItsLinkAway) {
    for (const int signal : {SIGINT, SIGTERM}) {
        SimDevice idle(Arguments());
        idle.Program().Signal(signal);
        EXPECT_EQ(idle.Program().Wait(), 0);
        EXPECT_FALSE(fs::is_symlink(strPath_));
        SimDevice busy(Scripted("", {"--once"}));
        PlainLine line(strPath_);
        line.SetRaw();
        Exchange(line, "\x05", kShort);
        busy.Program().Signal(signal);
        EXPECT_EQ(busy.Program().Wait(), 1) << "the calls were not over";
        EXPECT_EQ(busy.strReport(),
                  "call 1 of 1: no answer, 0 files, 0 bytes, 0 frames, 0 refused, 0 resent\n");
    }
}

TEST_F(BrenniksimDevice, EndsWithStatusOneWhenACallFailed) {
    SimDevice device(Scripted("reboot 0\ncall\ncall\n", {"--once"}));
    PlainLine line(strPath_);
    line.SetRaw();
    Exchange(line, "\x05", kShort);
    Exchange(line, kFailure, "\x06");
    Exchange(line, "\x05", kShort);
    Exchange(line, kSuccess, "\x06");
    Exchange(line, "\x05", "\x16"); // it stays as long as the line is open
    line.Close();
    EXPECT_EQ(device.Program().Wait(), 1);
    EXPECT_THAT(device.strReport(), StartsWith("call 1 of 2: unsuccessful, 0 files, "));
}

TEST_F(BrenniksimDevice, SaysWhatItCanNotDo) {
    WriteFile(folder_ / "bad", "call\nrate 9600\n");
    WriteFile(folder_ / "endless", "repeat\n");
    const struct {
        std::vector<std::string> arguments;
        std::string strError;
    } cases[] = {
        {{}, "device needs --serial PATH"},
        {{"--serial", ""}, "device needs --serial PATH"},
        {{"--serial", strPath_, "--rate", "49"},
         "--rate needs a whole number from 50 to 4000000, not \"49\""},
        {{"--serial", strPath_, "--script", folder_ / "none"},
         (folder_ / "none") + ": No such file or directory"},
        {{"--serial", strPath_, "--script", folder_ / "bad"},
         (folder_ / "bad") + ": line 2: rate belongs ahead of the first call"},
        {{"--serial", strPath_, "--script", folder_ / "endless", "--once"},
         "--once waits for the end of calls that the script repeats for ever"},
        {{"--serial", strPath_, "--store", folder_ / "bad"},
         (folder_ / "bad") + ": Not a directory"},
        {{"--serial", strPath_, "--files", folder_ / "none"},
         (folder_ / "none") + ": No such file or directory"},
        {{"--listen", "x"}, "unknown option --listen"},
    };
    for (const auto& row : cases) {
        std::vector<std::string> arguments = row.arguments;
        arguments.insert(arguments.begin(), "device");
        const Ended ended = RunSim(arguments);
        EXPECT_EQ(ended.nExit, 2);
        EXPECT_EQ(ended.strErrors, "brenniksim: " + row.strError + "\n");
        EXPECT_EQ(ended.strOutput, "");
    }
    WriteFile(strPath_, "mine");
    const Ended taken = RunSim({"device", "--serial", strPath_});
    EXPECT_EQ(taken.nExit, 1);
    EXPECT_EQ(taken.strErrors,
              "brenniksim device: " + strPath_ + ": what stands there is no symbolic link\n");
}

TEST_F(BrenniksimDevice, TellsItsOptions) {
    const Ended ended = RunSim({"device", "--help"});
    EXPECT_EQ(ended.nExit, 0);
    EXPECT_THAT(ended.strOutput, StartsWith("usage: brenniksim device --serial PATH [options]\n"));
    EXPECT_THAT(RunSim({"--help"}).strOutput, HasSubstr("\n  device     play a payment device"));
}

} // namespace
} // namespace brennik
