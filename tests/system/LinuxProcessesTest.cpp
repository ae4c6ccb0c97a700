#include "platform/LinuxProcesses.h"

#include "platform/LinuxFiles.h"
#include "platform/LinuxSockets.h"
#include "platform/StopRequest.h"
#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace system_tests;

namespace fs = std::filesystem;

/// A script that tells where its own three standard descriptors lead.
const std::string kTellStandardStreams =
    "seen=$(for n in 0 1 2; do readlink /proc/$$/fd/$n; done); echo \"$seen\"";

/// The lines of a text that begin with "SigBlk", "SigIgn" or "SigCgt".
std::string SignalLines(const std::string& strStatus) {
    std::string strLines;
    for (size_t nAt = 0; nAt < strStatus.size();) {
        const size_t nEnd = std::min(strStatus.find('\n', nAt), strStatus.size());
        const std::string strLine = strStatus.substr(nAt, nEnd - nAt);
        const std::string strName = strLine.substr(0, 6);
        if (strName == "SigBlk" || strName == "SigIgn" || strName == "SigCgt") {
            strLines += strLine + "\n";
        }
        nAt = nEnd + 1;
    }
    return strLines;
}

/// True when that thread of this process waits for something.
bool Sleeps(uint32_t lThread) {
    const std::string strStatus = ReadFile("/proc/self/task/" + std::to_string(lThread) + "/stat");
    return strStatus.find(") S ") != std::string::npos;
}

class LinuxProcessesTest : public testing::Test {
  protected:
    /// A script in the test's folder, in drive form: D:\name.
    std::string Script(const std::string& strName, const std::string& strContent,
                       mode_t nMode = 0644) {
        WriteFile(folder_ / strName, strContent);
        EXPECT_EQ(::chmod((folder_ / strName).c_str(), nMode), 0);
        return "D:\\" + strName;
    }

    /// Starts a command line, waits for its end, and gives what it has left in the file "out".
    std::string Output(const std::string& strCommandLine) {
        const int32_t lProcess = processes_.StartHidden(strCommandLine);
        EXPECT_GT(lProcess, 0);
        processes_.WaitForExit(lProcess);
        return ReadFile(folder_ / "out");
    }

    std::string StartFailure(const std::string& strCommandLine) {
        return FailureOf([&] { static_cast<void>(processes_.StartHidden(strCommandLine)); });
    }

    TempFolder folder_;
    LinuxProcesses processes_{DriveTable{{'C', "/"}, {'D', folder_.strPath()}},
                              ProgramFolderChoice{folder_ / "program", false}};
    const std::string strToOut_ = " > " + (folder_ / "out") + "\n";
};

TEST_F(LinuxProcessesTest, KnowsItsIds) {
    EXPECT_EQ(processes_.GetCurrentProcessId(), static_cast<uint32_t>(::getpid()));
    EXPECT_EQ(processes_.GetCurrentThreadId(), static_cast<uint32_t>(::syscall(SYS_gettid)));
    uint32_t lOther = 0;
    std::thread([&] { lOther = processes_.GetCurrentThreadId(); }).join();
    EXPECT_NE(lOther, processes_.GetCurrentThreadId());
}

TEST_F(LinuxProcessesTest, AScriptWithoutAnExecutableBitIsRunByItsFirstLine) {
    EXPECT_EQ(Output(Script("a", "#!/bin/sh -e\nprintf '%s|' \"$-\" \"$0\" \"$@\"" + strToOut_) +
                     " one two"),
              "e|" + (folder_ / "a") + "|one|two|");
    EXPECT_EQ(Output(Script("b", "#!/bin/sh\r\necho crlf" + strToOut_)), "crlf\n");
    EXPECT_EQ(Output(Script("c", "#! /usr/bin/env sh\necho env" + strToOut_)), "env\n");
}

TEST_F(LinuxProcessesTest, AScriptWithoutAFirstLineIsRunByTheShell) {
    EXPECT_EQ(Output(Script("a", "printf '%s|' \"$0\" \"$@\"" + strToOut_) + " one two"),
              (folder_ / "a") + "|one|two|");
    EXPECT_EQ(Output(Script("b", "printf '%s|' \"$0\" \"$@\"" + strToOut_, 0755) + " one two"),
              (folder_ / "b") + "|one|two|")
        << "executable, but of no kind that the system knows";
}

TEST_F(LinuxProcessesTest, AnExecutableScriptRunsItself) {
    EXPECT_EQ(
        Output(Script("a", "#!/bin/sh -e\nprintf '%s|' \"$-\" \"$@\"" + strToOut_, 0755) + " one"),
        "e|one|");
}

TEST_F(LinuxProcessesTest, TheCommandLineIsSplitAtBlanksWithoutAnyQuoting) {
    const std::string strScript = Script("a", "printf '%s|' \"$@\"" + strToOut_);
    EXPECT_EQ(Output("  " + strScript + "  \"x y\"   'z'\t\\ $HOME * "),
              "\"x|y\"|'z'\t\\|$HOME|*|");
}

TEST_F(LinuxProcessesTest, AFolderWithABlankCutsThePath) {
    fs::create_directory(folder_ / "my files");
    Script("my files/a", "echo no" + strToOut_);
    EXPECT_EQ(StartFailure("D:\\my files\\a"), "File not found");
}

TEST_F(LinuxProcessesTest, AProgramRuns) {
    EXPECT_EQ(Output("/bin/cp " + (folder_ / "in") + " " + (folder_ / "out")), "(none)");
    WriteFile(folder_ / "in", "copied");
    EXPECT_EQ(Output("C:\\bin\\cp " + (folder_ / "in") + " " + (folder_ / "out")), "copied");
}

TEST_F(LinuxProcessesTest, RunsInTheCurrentFolder) {
    Script("-a", "pwd" + strToOut_);
    EXPECT_EQ(ReportOfChild([&] {
                  processes_.ChangeDirectory("D:\\");
                  return Output("-a");
              }),
              folder_.strPath() + "\n")
        << "its name is no option of the shell";
}

TEST_F(LinuxProcessesTest, WhatCannotBeStartedFails) {
    EXPECT_EQ(StartFailure(""), "File not found");
    EXPECT_EQ(StartFailure("   "), "File not found");
    EXPECT_EQ(StartFailure("D:\\none"), "File not found");
    EXPECT_EQ(StartFailure("Q:\\a"), "File not found");
    EXPECT_EQ(StartFailure("\\\\server\\a"), "File not found");
    EXPECT_EQ(StartFailure("/bin/cp\0 x"s), "File not found");
    EXPECT_EQ(StartFailure("D:\\" + std::string(60000, 'x')), "Path not found");
    EXPECT_EQ(StartFailure("D:\\"), "Permission denied");
    EXPECT_EQ(StartFailure("/dev/null"), "Permission denied");
    EXPECT_EQ(StartFailure("cp"), "File not found") << "no list of folders is searched";
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0777), 0);
    EXPECT_EQ(StartFailure("D:\\pipe"), "Permission denied");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "nothing is left behind";
}

TEST_F(LinuxProcessesTest, AMissingInterpreterFails) {
    EXPECT_EQ(StartFailure(Script("a", "#!/none/sh\necho\n")), "File not found");
    EXPECT_EQ(StartFailure(Script("b", "#!/none/sh\necho\n", 0755)), "File not found");
    EXPECT_EQ(StartFailure(Script("c", "#!" + folder_.strPath() + "\n")), "Permission denied");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST_F(LinuxProcessesTest, AnEmptyScriptDoesNothing) {
    processes_.WaitForExit(processes_.StartHidden(Script("a", "")));
    processes_.WaitForExit(processes_.StartHidden(Script("b", "", 0755)));
}

TEST_F(LinuxProcessesTest, AStartedProgramSeesAndSaysNothing) {
    const std::string strScript = Script("a", kTellStandardStreams + strToOut_);
    EXPECT_EQ(ReportOfChild([&] { return Output(strScript); }),
              "/dev/null\n/dev/null\n/dev/null\n");
}

TEST_F(LinuxProcessesTest, AStartWithClosedStandardDescriptorsWorksToo) {
    const std::string strScript = Script("a", kTellStandardStreams + strToOut_);
    EXPECT_EQ(ReportOfChild([&] {
                  for (int n = 0; n <= 2; ++n) {
                      ::close(n);
                  }
                  const std::string strFailure = StartFailure("#!/none");
                  return Output(strScript) + strFailure;
              }),
              "/dev/null\n/dev/null\n/dev/null\nFile not found");
}

TEST_F(LinuxProcessesTest, AStartedProgramHasNoneOfOurDescriptors) {
    const std::string strScript = Script("a", "ls -l /proc/$$/fd" + strToOut_);
    const std::string strSeen = ReportOfChild([&] {
        // What this program was given itself is none of ours.
        for (int n = 3; n < 1024; ++n) {
            static_cast<void>(::fcntl(n, F_SETFD, FD_CLOEXEC)); // most of them aren't open
        }
        LinuxFiles files(DefaultDrives(), folder_ / "program");
        LinuxSockets sockets;
        const auto stream = files.OpenText(folder_ / "ours", OpenMode::Write);
        const int32_t lSocket = sockets.Socket();
        std::string strOutput = Output(strScript);
        static_cast<void>(sockets.CloseSocket(lSocket)); // it has done its part
        return strOutput;
    });
    EXPECT_NE(strSeen.find("/dev/null"), std::string::npos) << strSeen;
    EXPECT_EQ(strSeen.find("ours"), std::string::npos) << strSeen;
    EXPECT_EQ(strSeen.find("socket:"), std::string::npos) << strSeen;
    EXPECT_EQ(strSeen.find("pipe:"), std::string::npos) << strSeen;
}

TEST_F(LinuxProcessesTest, AStartedProgramHasFreshSignals) {
    const std::string strScript = Script("a", "#!/bin/sh\nexec cat /proc/self/status" + strToOut_);
    EXPECT_EQ(ReportOfChild([&] {
                  CatchStopSignals(); // catches two and ignores two
                  std::signal(SIGUSR1, SIG_IGN);
                  sigset_t blocked;
                  sigemptyset(&blocked);
                  sigaddset(&blocked, SIGUSR2);
                  sigprocmask(SIG_BLOCK, &blocked, nullptr);
                  std::string strOutput = SignalLines(Output(strScript));
                  sigset_t now;
                  sigprocmask(SIG_BLOCK, nullptr, &now);
                  strOutput += sigismember(&now, SIGUSR2) == 1 ? "kept " : "lost ";
                  strOutput += sigismember(&now, SIGTERM) == 1 ? "more" : "no more";
                  return strOutput;
              }),
              "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n"
              "SigCgt:\t0000000000000000\nkept no more");
}

TEST_F(LinuxProcessesTest, WaitsForTheEnd) {
    ASSERT_EQ(::mkfifo((folder_ / "gate").c_str(), 0666), 0);
    const std::string strScript =
        Script("a", "read line < " + (folder_ / "gate") + "; echo \"$line\"" + strToOut_);
    const int32_t lProcess = processes_.StartHidden(strScript);
    std::thread opener([&] { WriteFile(folder_ / "gate", "open\n"); });
    processes_.WaitForExit(lProcess);
    EXPECT_EQ(ReadFile(folder_ / "out"), "open\n");
    opener.join();
    EXPECT_EQ(::waitpid(lProcess, nullptr, WNOHANG), -1) << "its end was taken note of";
}

TEST_F(LinuxProcessesTest, AnInterruptedWaitIsResumed) {
    ASSERT_EQ(::mkfifo((folder_ / "gate").c_str(), 0666), 0);
    const std::string strScript =
        Script("a", "read line < " + (folder_ / "gate") + "; echo \"$line\"" + strToOut_);
    EXPECT_EQ(ReportOfChild([&] {
                  const Interruptions interruptions;
                  const int32_t lProcess = processes_.StartHidden(strScript);
                  std::thread opener([&] {
                      sigset_t alarms;
                      sigemptyset(&alarms);
                      sigaddset(&alarms, SIGALRM);
                      pthread_sigmask(SIG_BLOCK, &alarms, nullptr);
                      Interruptions::Await(5);
                      WriteFile(folder_ / "gate", "open\n");
                  });
                  processes_.WaitForExit(lProcess);
                  const std::string strOutput = ReadFile(folder_ / "out");
                  opener.join();
                  return strOutput;
              }),
              "open\n");
}

TEST_F(LinuxProcessesTest, ThereIsNothingToWaitForWithoutAProcess) {
    EXPECT_EQ(ReportOfChild([&] {
                  const int32_t lProcess = processes_.StartHidden("/bin/true");
                  processes_.WaitForExit(lProcess);
                  for (const int32_t lNone : {0, -1, lProcess, 2147483647, -2147483647 - 1}) {
                      processes_.WaitForExit(lNone);
                  }
                  return std::string("back");
              }),
              "back");
}

TEST_F(LinuxProcessesTest, WaitingForNoProcessLeavesOtherChildrenAlone) {
    EXPECT_EQ(ReportOfChild([&] {
                  const pid_t nOther = ::fork();
                  if (nOther == 0) {
                      ::_exit(5);
                  }
                  processes_.WaitForExit(-1);
                  processes_.WaitForExit(0);
                  int nStatus = 0;
                  return std::string(::waitpid(nOther, &nStatus, 0) == nOther ? "ours" : "lost");
              }),
              "ours");
}

TEST_F(LinuxProcessesTest, WaitsForAProcessOfOthersToo) {
    EXPECT_EQ(ReportOfChild([&]() -> std::string {
                  int gate[2];
                  int ids[2];
                  if (::pipe(gate) != 0 || ::pipe(ids) != 0) {
                      return "no pipes";
                  }
                  const pid_t nBetween = ::fork();
                  if (nBetween == 0) {
                      const pid_t nGrandchild = ::fork();
                      if (nGrandchild == 0) {
                          char byte = 0;
                          ::close(gate[1]);
                          static_cast<void>(!::read(gate[0], &byte, 1));
                          WriteFile(folder_ / "out", "ended");
                          ::_exit(0);
                      }
                      static_cast<void>(!::write(ids[1], &nGrandchild, sizeof nGrandchild));
                      ::_exit(0);
                  }
                  pid_t nGrandchild = 0;
                  if (::read(ids[0], &nGrandchild, sizeof nGrandchild) != sizeof nGrandchild) {
                      return "no id";
                  }
                  ::waitpid(nBetween, nullptr, 0);
                  const uint32_t lWaiter = processes_.GetCurrentThreadId();
                  std::atomic<bool> bReturned = false;
                  bool bEarly = false;
                  std::thread opener([&] {
                      while (!Sleeps(lWaiter)) {
                      }
                      bEarly = bReturned;
                      ::close(gate[1]);
                  });
                  processes_.WaitForExit(nGrandchild);
                  bReturned = true;
                  const std::string strOutput = ReadFile(folder_ / "out");
                  opener.join();
                  return strOutput + (bEarly ? " too late" : " in time");
              }),
              "ended in time");
}

TEST_F(LinuxProcessesTest, AnUnknownDriveIsNoCurrentOne) {
    processes_.ChangeDrive("C");
    processes_.ChangeDrive("d");
    processes_.ChangeDrive("D:\\anything");
    processes_.ChangeDrive("");
    for (const char* strDrive : {"Q", "/", "\\", "1", "\xC4", "/srv"}) {
        EXPECT_EQ(FailureOf([&] { processes_.ChangeDrive(strDrive); }), "Path not found")
            << strDrive;
    }
}

TEST_F(LinuxProcessesTest, ChangesTheCurrentFolder) {
    fs::create_directory(folder_ / "sub");
    WriteFile(folder_ / "file", "");
    EXPECT_EQ(ReportOfChild([&] {
                  processes_.ChangeDirectory("D:\\sub\\");
                  return fs::current_path().string();
              }),
              folder_ / "sub");
    for (const std::string& strFolder :
         {""s, "Q:\\"s, "D:\\none"s, "D:\\file"s, "\\\\server\\x"s, "D:\\sub\0"s}) {
        EXPECT_EQ(FailureOf([&] { processes_.ChangeDirectory(strFolder); }), "Path not found");
    }
}

TEST_F(LinuxProcessesTest, TellsTheCurrentFolder) {
    fs::create_directory(folder_ / "sub");
    fs::create_directory(folder_ / "a\\b");
    EXPECT_EQ(ReportOfChild([&] {
                  processes_.ChangeDirectory("D:\\sub\\");
                  const std::string strSub = processes_.CurrentDirectory();
                  processes_.ChangeDirectory("/");
                  const std::string strRoot = processes_.CurrentDirectory();
                  processes_.ChangeDirectory(strSub);
                  return strRoot + " " + processes_.CurrentDirectory();
              }),
              "/ " + (folder_ / "sub"));
    EXPECT_EQ(ReportOfChild([&] {
                  processes_.ChangeDirectory("D:\\sub");
                  fs::remove(folder_ / "sub");
                  return FailureOf([&] { processes_.CurrentDirectory(); });
              }),
              "Path not found")
        << "it is gone";
    EXPECT_EQ(ReportOfChild([&] {
                  fs::current_path(folder_ / "a\\b");
                  return FailureOf([&] { processes_.CurrentDirectory(); });
              }),
              "Path not found")
        << "no text leads there";
}

TEST_F(LinuxProcessesTest, TheProgramFolderIsMadeWhenItIsFirstNeeded) {
    const std::string strFolder = folder_ / "data/brennikclient";
    LinuxProcesses installed(DefaultDrives(), ProgramFolderChoice{strFolder, true});
    EXPECT_FALSE(fs::exists(folder_ / "data"));
    EXPECT_EQ(installed.ProgramFolder(), strFolder);
    EXPECT_EQ(installed.ProgramFolder(), strFolder);
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "data/ data/brennikclient/");
    EXPECT_EQ(fs::status(strFolder).permissions(), fs::perms(0700));
    EXPECT_EQ(processes_.ProgramFolder(), folder_ / "program");
    EXPECT_FALSE(fs::exists(folder_ / "program")) << "any other one is there or is not";
}

} // namespace
} // namespace brennik
