// The program brenniksim on a serial line, as a child process, met over the other side of its
// pseudo-terminal with bytes made by hand.
#include "tests/sim/GoldenFrames.h"
#include "tests/system/PlainLine.h"
#include "tests/system/ProgramRun.h"
#include "tests/system/Sandbox.h"
#include "tests/system/SimService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sched.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace brennik {
namespace {

namespace fs = std::filesystem;

using namespace std::string_view_literals;
using golden::kSuccess;
using system_tests::Begin;
using system_tests::Ended;
using system_tests::Eventually;
using system_tests::kRequest;
using system_tests::kVariable;
using system_tests::MonotonicNanoseconds;
using system_tests::PlainLine;
using system_tests::ReportOfChild;
using system_tests::RunSim;
using system_tests::SimService;
using system_tests::TakePayload;
using system_tests::TempFolder;
using system_tests::WriteFile;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A folder with the path of a line in it, and services on that line.
class BrenniksimSerial : public testing::Test {
  protected:
    std::vector<std::string> Arguments(std::vector<std::string> options) const {
        options.insert(options.begin(), {"--serial", strPath_});
        return options;
    }

    /// The options that make a service follow a script.
    std::vector<std::string> Scripted(std::string_view strScript,
                                      std::vector<std::string> options = {}) const {
        WriteFile(folder_ / "script", strScript);
        options.insert(options.begin(), {"--script", folder_ / "script"});
        return Arguments(options);
    }

    bool bLinked() const { return fs::is_symlink(strPath_); }

    const TempFolder folder_;
    const std::string strPath_ = folder_ / "line";
};

/// The rest of a session of a service that sends nothing but "S".
void FinishSession(PlainLine& line) {
    EXPECT_EQ(line.Receive(5), kSuccess);
    line.Send("\x06");
    line.Close();
}

void PlaySession(const std::string& strPath) {
    PlainLine line(strPath);
    Begin(line);
    FinishSession(line);
}

/// Waits until the service has printed a text.
void AwaitReport(const SimService& service, const std::string& strText) {
    EXPECT_TRUE(Eventually([&] { return service.strReport().find(strText) != std::string::npos; }))
        << service.strReport();
}

double MillisecondsSince(long long nanoseconds) {
    return static_cast<double>(MonotonicNanoseconds() - nanoseconds) * 1e-6;
}

/// Milliseconds that bytes take on a line.
double LineTime(int nBytes, int nRate) {
    return 1000.0 * 10 * nBytes / nRate;
}

TEST_F(BrenniksimSerial, ServesASessionOnceAndEndsWithStatusZero) {
    SimService service(Arguments({"--once", "--config", "A=B"}));
    EXPECT_EQ(service.strListening(), strPath_);
    PlainLine line(strPath_);
    Begin(line);
    EXPECT_EQ(line.Receive(8), kVariable);
    line.Send("\x15");
    EXPECT_EQ(line.Receive(8), kVariable);
    line.Send("\x06");
    FinishSession(line);
    EXPECT_EQ(service.Program().Wait(), 0);
    EXPECT_EQ(service.strReport(),
              "session 1 (" + strPath_ + "): successful, 0 files, 0 bytes, 2 frames, 1 resent\n");
    EXPECT_EQ(service.Program().strErr(), "");
    EXPECT_FALSE(bLinked());
}

TEST_F(BrenniksimSerial, PlaysASessionForEachOpening) {
    SimService service(Arguments({}));
    PlaySession(strPath_);
    {
        PlainLine line(strPath_);
        Begin(line);
        line.Send("unread");
    }
    AwaitReport(service, "session 2 (" + strPath_ + "): left by the other end, ");
    for (int n = 0; n < 3; ++n) {
        PlaySession(strPath_);
    }
    service.Program().Signal(SIGTERM);
    EXPECT_EQ(service.Program().Wait(), 0);
    EXPECT_THAT(service.strReport(), HasSubstr("session 5 (" + strPath_ + "): successful"));
}

TEST_F(BrenniksimSerial, NoticesACloseThatAnOpeningFollowsAtOnce) {
    SimService service(Arguments({"--quiet"}));
    for (int n = 0; n < 300; ++n) {
        PlainLine line(strPath_);
        ASSERT_EQ(line.Receive(1), "\x05") << n;
    }
    PlaySession(strPath_);
}

TEST_F(BrenniksimSerial, BearsOpeningsThatAreClosedAtOnce) {
    SimService service(Arguments({"--once", "--quiet"}));
    EXPECT_TRUE(PlainLine(strPath_).bConnected());
    EXPECT_EQ(service.Program().Wait(), 1) << "even that is a session";
    SimService next(Arguments({"--quiet"}));
    for (int n = 0; n < 300; ++n) {
        EXPECT_TRUE(PlainLine(strPath_).bConnected());
    }
    // The first ENQ may still have been meant for one of them.
    PlainLine line(strPath_);
    std::string strHeard = line.Receive(1);
    while (strHeard == "\x05") {
        line.Send(kRequest);
        strHeard = line.Receive(1);
    }
    EXPECT_EQ(strHeard, "\x06");
    FinishSession(line);
}

TEST_F(BrenniksimSerial, IsNotMistakenByOthersThatLookAtTheLine) {
    SimService service(Arguments({"--once"}));
    PlainLine line(strPath_);
    Begin(line);
    for (int n = 0; n < 20; ++n) {
        EXPECT_TRUE(PlainLine(strPath_).bConnected());
    }
    FinishSession(line);
    EXPECT_EQ(service.Program().Wait(), 0);
}

TEST_F(BrenniksimSerial, PassesBytesThatComeBeforeTheClientHasSetTheLine) {
    constexpr std::string_view kAwkward = "\r\n\x03\x04\x11\x13\x1A\x7F\xFF\x00\x80"sv;
    SimService service(
        Scripted("at start bytes 0D 0A 03 04 11 13 1A 7F FF 00 80\n", {"--once", "--verbose"}));
    PlainLine line(strPath_);
    EXPECT_EQ(line.Receive(1), kAwkward.substr(0, 1));
    line.SetRaw();
    EXPECT_EQ(line.Receive(kAwkward.size() - 1), kAwkward.substr(1));
    Begin(line);
    FinishSession(line);
    EXPECT_EQ(service.Program().Wait(), 0);
    EXPECT_THAT(service.strReport(), Not(HasSubstr("ignored"))) << "nothing came back as an echo";
}

TEST_F(BrenniksimSerial, ForgetsTheSettingsOfTheLastClient) {
    SimService service(Arguments({}));
    {
        PlainLine line(strPath_);
        Begin(line);
        line.SetCooked();
    }
    AwaitReport(service, "session 1 (");
    PlaySession(strPath_);
}

TEST_F(BrenniksimSerial, ComesBackWhenAClientHasLeftTheLineLocked) {
    // The lock shows to ordinary users only.
    const auto becomeOrdinary = [] {
        if (::geteuid() == 0 && ::setuid(65534) != 0) {
            ::_exit(1);
        }
    };
    fs::permissions(folder_.strPath(), fs::perms::all);
    SimService service(Arguments({}), becomeOrdinary);
    for (int n = 0; n < 2; ++n) {
        EXPECT_EQ(ReportOfChild([&] {
                      becomeOrdinary();
                      std::string strFirst;
                      EXPECT_TRUE(Eventually([&] {
                          PlainLine line(strPath_);
                          strFirst = line.bConnected() ? line.Receive(1) : "";
                          line.TakeForItself();
                          return !strFirst.empty();
                      }));
                      return strFirst;
                  }),
                  "\x05");
    }
}

TEST_F(BrenniksimSerial, KeepsWhatTheClientIsSlowToTake) {
    SimService service(Scripted("at end packet \"M\" \"A\"*60000\n", {"--once"}));
    PlainLine line(strPath_);
    Begin(line);
    EXPECT_EQ(TakePayload(line, 60001), "M" + std::string(60000, 'A'));
    FinishSession(line);
    EXPECT_EQ(service.Program().Wait(), 0);
}

TEST_F(BrenniksimSerial, HangsUpAndComesBackByScript) {
    SimService service(Scripted("sessions 1\nat frame 1 hang-up 30\n", {"--config", "A=B"}));
    PlainLine line(strPath_);
    ASSERT_EQ(line.Receive(1), "\x05");
    const fs::path device = fs::read_symlink(strPath_);
    const long long begun = MonotonicNanoseconds();
    line.Send(kRequest);
    // What was on its way is lost, at times.
    EXPECT_THAT(line.ReceiveToEnd(), AnyOf("\x06(hung up)", "(hung up)"));
    EXPECT_TRUE(Eventually([&] { return bLinked(); }));
    EXPECT_GE(MillisecondsSince(begun), 30);
    EXPECT_NE(fs::read_symlink(strPath_), device) << "the client still holds the old one";
    PlainLine next(strPath_);
    Begin(next);
    EXPECT_EQ(next.Receive(8), kVariable) << "the script is over";
    next.Send("\x06");
    FinishSession(next);
    AwaitReport(service, "session 2 (" + strPath_ + "): successful");
    EXPECT_THAT(service.strReport(),
                StartsWith("session 1 (" + strPath_ + "): ended by the script"));
}

TEST_F(BrenniksimSerial, IsGoneWhileItIsHungUp) {
    SimService service(Scripted("at start hang-up 86400000\n"));
    PlainLine line(strPath_);
    EXPECT_EQ(line.ReceiveToEnd(), "(hung up)");
    EXPECT_FALSE(bLinked());
    service.Program().Signal(SIGTERM);
    EXPECT_EQ(service.Program().Wait(), 0);
}

TEST_F(BrenniksimSerial, EndsOnceWhenItHangsUp) {
    SimService service(Scripted("at start hang-up 86400000\n", {"--once"}));
    PlainLine line(strPath_);
    EXPECT_EQ(line.ReceiveToEnd(), "(hung up)");
    EXPECT_EQ(service.Program().Wait(), 1);
    EXPECT_FALSE(bLinked());
}

TEST_F(BrenniksimSerial, FailsWhenItsPathIsTakenWhileItIsHungUp) {
    SimService service(Scripted("at start hang-up 300\n"));
    PlainLine line(strPath_);
    EXPECT_EQ(line.ReceiveToEnd(), "(hung up)");
    WriteFile(strPath_, "mine");
    EXPECT_EQ(service.Program().Wait(), 1);
    EXPECT_EQ(service.Program().strErr(),
              "brenniksim service: " + strPath_ + ": what stands there is no symbolic link\n");
    EXPECT_EQ(system_tests::ReadFile(strPath_), "mine");
}

TEST_F(BrenniksimSerial, ComesBackAtOnceAfterCloseAndReset) {
    for (const auto& [strScript, strLast] :
         {std::pair{"sessions 1\nat end bytes \"bye\"\nat end close\n", "bye(hung up)"},
          std::pair{"sessions 1\nat end reset\n", "(hung up)"}}) {
        SimService service(Scripted(strScript, {"--quiet"}));
        PlainLine line(strPath_);
        ASSERT_EQ(line.Receive(1), "\x05");
        line.Send(kRequest);
        const std::string strEnd = line.ReceiveToEnd();
        EXPECT_THAT(strEnd, AnyOf("\x06" + std::string(strLast), "(hung up)"));
        PlaySession(strPath_);
    }
}

TEST_F(BrenniksimSerial, LetsTheClientReadTheRestBeforeItCloses) {
    SimService service(Scripted("at end bytes \"bye\"\nat end close\n", {"--once"}));
    PlainLine line(strPath_);
    Begin(line);
    EXPECT_EQ(line.ReceiveToEnd(), "bye(hung up)");
    EXPECT_EQ(service.Program().Wait(), 1);
}

TEST_F(BrenniksimSerial, LeavesAloneWhatIsNoLink) {
    WriteFile(strPath_, "mine");
    fs::create_directory(folder_ / "folder");
    for (const std::string& strTaken : {strPath_, folder_ / "folder"}) {
        const Ended ended = RunSim({"service", "--serial", strTaken});
        EXPECT_EQ(ended.nExit, 1);
        EXPECT_EQ(ended.strOutput, "");
        EXPECT_EQ(ended.strErrors,
                  "brenniksim service: " + strTaken + ": what stands there is no symbolic link\n");
    }
    EXPECT_EQ(system_tests::Tree(folder_.strPath()), (std::vector<std::string>{"folder/", "line"}));
    EXPECT_EQ(system_tests::ReadFile(strPath_), "mine");
}

TEST_F(BrenniksimSerial, FailsWhereNoLinkCanBe) {
    const Ended ended = RunSim({"service", "--serial", folder_ / "nowhere/line"});
    EXPECT_EQ(ended.nExit, 1);
    EXPECT_THAT(ended.strErrors, StartsWith("brenniksim service: " + (folder_ / "nowhere/line")));
    EXPECT_THAT(ended.strErrors, HasSubstr(": No such file or directory\n"));
}

TEST_F(BrenniksimSerial, ReplacesAnOldLink) {
    fs::create_symlink(folder_ / "gone", strPath_);
    SimService service(Arguments({"--quiet"}));
    PlaySession(strPath_);
}

TEST_F(BrenniksimSerial, TakesItsLinkAwayAtSignals) {
    for (const int signal : {SIGINT, SIGTERM}) {
        SimService idle(Arguments({}));
        EXPECT_TRUE(bLinked());
        idle.Program().Signal(signal);
        EXPECT_EQ(idle.Program().Wait(), 0);
        EXPECT_FALSE(bLinked());
        SimService busy(Arguments({"--once"}));
        PlainLine line(strPath_);
        Begin(line);
        EXPECT_EQ(line.Receive(5), kSuccess);
        busy.Program().Signal(signal);
        EXPECT_EQ(busy.Program().Wait(), 1) << "the one session was not successful";
        EXPECT_EQ(line.ReceiveToEnd(), "(hung up)");
        EXPECT_THAT(busy.strReport(), HasSubstr("left by the other end"));
        EXPECT_TRUE(fs::is_empty(folder_.strPath()));
    }
}

TEST_F(BrenniksimSerial, LeavesALinkThatIsNotItsOwnAnyMore) {
    SimService service(Arguments({}));
    fs::remove(strPath_);
    fs::create_symlink("elsewhere", strPath_);
    service.Program().Signal(SIGTERM);
    EXPECT_EQ(service.Program().Wait(), 0);
    EXPECT_EQ(fs::read_symlink(strPath_), "elsewhere");
}

TEST_F(BrenniksimSerial, TellsItsDeviceOnlyWhenAsked) {
    SimService verbose(Arguments({"--verbose"}));
    const std::string strDevice = fs::read_symlink(strPath_);
    AwaitReport(verbose, strPath_ + " is " + strDevice + "\n");
    PlaySession(strPath_);
    verbose.Program().Signal(SIGTERM);
    EXPECT_EQ(verbose.Program().Wait(), 0);
    EXPECT_THAT(verbose.strReport(), HasSubstr("session 1 (" + strPath_ + "): sent ENQ\n"));
    SimService plain(Arguments({"--once"}));
    PlaySession(strPath_);
    EXPECT_EQ(plain.Program().Wait(), 0);
    EXPECT_THAT(plain.strReport(), Not(HasSubstr("/dev/")));
}

TEST_F(BrenniksimSerial, SendsAtTheRateOfTheLine) {
    constexpr int kRate = 115200;
    SimService service(Scripted("at start bytes \"x\"*2048\n", {"--rate", "115200"}));
    const long long begun = MonotonicNanoseconds();
    PlainLine line(strPath_);
    EXPECT_EQ(line.Receive(1024), std::string(1024, 'x'));
    EXPECT_GE(MillisecondsSince(begun), LineTime(1024, kRate));
    EXPECT_EQ(line.Receive(1025), std::string(1024, 'x') + "\x05");
    EXPECT_GE(MillisecondsSince(begun), LineTime(2049, kRate));
}

TEST_F(BrenniksimSerial, HearsAtTheRateOfTheLine) {
    constexpr int kRate = 9600;
    SimService service(Arguments({"--once", "--rate", "9600", "--config", "A=B"}));
    PlainLine line(strPath_);
    ASSERT_EQ(line.Receive(1), "\x05");
    const long long requested = MonotonicNanoseconds();
    line.Send(kRequest);
    EXPECT_EQ(line.Receive(1), "\x06");
    EXPECT_GE(MillisecondsSince(requested), LineTime(static_cast<int>(kRequest.size()) + 1, kRate));
    EXPECT_EQ(line.Receive(8), kVariable);
    const long long acknowledged = MonotonicNanoseconds();
    line.Send("\x06");
    EXPECT_EQ(line.Receive(5), kSuccess);
    EXPECT_GE(MillisecondsSince(acknowledged), LineTime(1 + 5, kRate));
    line.Send("\x06");
    line.Close();
    EXPECT_EQ(service.Program().Wait(), 0) << "what was sent before the close still counts";
}

TEST_F(BrenniksimSerial, SendsAllBeforeAPacedLineCloses) {
    SimService service(
        Scripted("no-enq\nat start bytes \"x\"*60000\nat start close\n", {"--rate", "4000000"}));
    const long long begun = MonotonicNanoseconds();
    PlainLine line(strPath_);
    EXPECT_EQ(line.ReceiveToEnd(), std::string(60000, 'x') + "(hung up)");
    EXPECT_GE(MillisecondsSince(begun), LineTime(60000, 4'000'000));
}

double SecondsOfChildren() {
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

TEST_F(BrenniksimSerial, IsIdleWhileItWaits) {
    const double before = SecondsOfChildren();
    {
        SimService hungUp(Scripted("sessions 1\nat start hang-up 400\n"));
        SimService unopened({"--serial", folder_ / "unopened"});
        SimService silent({"--serial", folder_ / "silent", "--rate", "9600"});
        PlainLine opened(folder_ / "silent");
        EXPECT_EQ(opened.Receive(1), "\x05");
        PlainLine line(strPath_);
        EXPECT_EQ(line.ReceiveToEnd(), "(hung up)");
        EXPECT_TRUE(Eventually([&] { return bLinked(); }));
    }
    EXPECT_LT(SecondsOfChildren() - before, 0.25) << "of 0.4 seconds and more of waiting, each";
}

// Without the host's word on openings the line is looked at. A machine that doesn't let a process
// do without it still shows that sessions follow one another.
TEST_F(BrenniksimSerial, LooksWhenTheHostTellsNoOpenings) {
    SimService service(Arguments({}), [] {
        if (::unshare(CLONE_NEWUSER) == 0) {
            const int fd = ::open("/proc/sys/user/max_inotify_instances", O_WRONLY | O_CLOEXEC);
            static_cast<void>(::write(fd, "0", 1));
            ::close(fd);
        }
    });
    for (int n = 1; n <= 3; ++n) {
        PlaySession(strPath_);
        AwaitReport(service, "session " + std::to_string(n) + " (");
    }
    service.Program().Signal(SIGTERM);
    EXPECT_EQ(service.Program().Wait(), 0);
    EXPECT_THAT(service.strReport(), HasSubstr("session 3 (" + strPath_ + "): successful"));
}

} // namespace
} // namespace brennik
