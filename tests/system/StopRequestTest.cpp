#include "platform/StopRequest.h"

#include "platform/LinuxFiles.h"
#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace brennik {
namespace {

using namespace system_tests;

std::string Asked() {
    return StopRequested() ? "asked " : "quiet ";
}

TEST(StopRequest, TheFirstSignalAsksForAStop) {
    for (const int nSignal : {SIGINT, SIGTERM}) {
        EXPECT_EQ(ReportOfChild([&] {
                      CatchStopSignals();
                      const std::string strBefore = Asked();
                      std::raise(nSignal);
                      return strBefore + Asked();
                  }),
                  "quiet asked ");
    }
}

TEST(StopRequest, TheSecondSignalEndsTheProcessAtOnce) {
    for (const int nFirst : {SIGINT, SIGTERM}) {
        for (const int nSecond : {SIGINT, SIGTERM}) {
            const ChildOutcome outcome = RunInChild([&] {
                CatchStopSignals();
                std::raise(nFirst);
                std::raise(nSecond);
                return std::string("still here");
            });
            EXPECT_EQ(outcome.nSignal, nSecond);
            EXPECT_EQ(outcome.strReport, "");
        }
    }
}

TEST(StopRequest, SignalsThatWereBlockedOrIgnoredAreCaught) {
    EXPECT_EQ(ReportOfChild([] {
                  sigset_t set;
                  sigemptyset(&set);
                  sigaddset(&set, SIGTERM);
                  sigprocmask(SIG_BLOCK, &set, nullptr);
                  std::signal(SIGTERM, SIG_IGN);
                  CatchStopSignals();
                  std::raise(SIGTERM);
                  return Asked();
              }),
              "asked ");
}

TEST(StopRequest, ABrokenPipeEndsNothing) {
    EXPECT_EQ(ReportOfChild([] {
                  CatchStopSignals();
                  int ends[2];
                  if (::pipe(ends) != 0) {
                      return std::string("no pipe");
                  }
                  ::close(ends[0]);
                  const bool bFailed = ::write(ends[1], "x", 1) < 0 && errno == EPIPE;
                  return std::string(bFailed ? "failed " : "written ") + Asked();
              }),
              "failed quiet ");
}

TEST(StopRequest, AFileThatMayGrowNoFurtherEndsNothing) {
    const TempFolder folder;
    EXPECT_EQ(ReportOfChild([&] {
                  CatchStopSignals();
                  const rlimit limit{10, 10};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  LinuxFiles files(DefaultDrives(), folder / "program");
                  const auto stream = files.OpenText(folder / "a", OpenMode::Write);
                  return FailureOf([&] { stream->Write("more than ten bytes"); });
              }),
              "Disk full");
}

} // namespace
} // namespace brennik
