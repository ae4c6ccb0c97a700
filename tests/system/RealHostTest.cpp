#include "platform/Host.h"
#include "platform/ProgramFolder.h"
#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace brennik {
namespace {

using namespace system_tests;

namespace fs = std::filesystem;

constexpr const char* kAsked = "BRENNIK_TEST_REAL_HOST";

/// The real host is made once for a process, so each question needs one of its own that has done
/// nothing yet: this program again, which answers before any test begins.
const bool bAnswered = [] {
    const char* strOut = std::getenv(kAsked);
    if (strOut == nullptr) {
        return false;
    }
    Host& host = CurrentHost();
    std::string strAnswer = host.processes.ProgramFolder();
    for (const char* strFolder : {"C:\\", "D:\\", "E:\\"}) {
        strAnswer += host.files.FolderExists(strFolder) ? " yes" : " no";
    }
    strAnswer +=
        " " + host.profileStrings.GetPrivateProfileString("A", "K", "(none)", 100, "D:\\a.ini");
    // A device that is no serial line, or no such port.
    strAnswer += " " + std::to_string(host.comPorts.Open("TILL"));
    strAnswer += " " + std::to_string(host.comPorts.LastError());
    WriteFile(strOut, strAnswer);
    ::_exit(0);
}();

std::string AnswerOfRealHost(const TempFolder& folder, const std::function<void()>& environment) {
    const std::string strOut = folder / "answer";
    const std::string strProblem = ReportOfChild([&]() -> std::string {
        environment();
        ::setenv(kAsked, strOut.c_str(), 1);
        ::execl("/proc/self/exe", "tests", nullptr);
        return "not run again";
    });
    return strProblem.empty() ? ReadFile(strOut) : strProblem;
}

TEST(RealHost, FollowsTheHostFileInTheProgramsFolder) {
    const TempFolder folder;
    fs::create_directory(folder / "home");
    fs::create_directory(folder / "data");
    WriteFile(folder / "data/a.ini", "[A]\nK=v\n");
    WriteFile(folder / "home/BrennikHost.ini",
              "[DRIVES]\r\nD=" + (folder / "data") + "\r\n[PORTS]\r\nTill=/dev/null\r\n");
    EXPECT_EQ(
        AnswerOfRealHost(folder, [&] { ::setenv("BRENNIK_HOME", (folder / "home/").c_str(), 1); }),
        (folder / "home") + " no yes no v -1 25");
}

TEST(RealHost, WithoutAHostFileDriveCIsTheRoot) {
    const TempFolder folder;
    EXPECT_EQ(
        AnswerOfRealHost(folder, [&] { ::setenv("BRENNIK_HOME", folder.strPath().c_str(), 1); }),
        folder.strPath() + " yes no no (none) -1 2");
}

TEST(RealHost, AHostFileThatIsNoFileMapsNothing) {
    const TempFolder folder;
    fs::create_directory(folder / "BrennikHost.ini");
    EXPECT_EQ(
        AnswerOfRealHost(folder, [&] { ::setenv("BRENNIK_HOME", folder.strPath().c_str(), 1); }),
        folder.strPath() + " yes no no (none) -1 2");
}

TEST(RealHost, OtherwiseTheProgramsFolderIsThatOfItsExecutable) {
    const TempFolder folder;
    const std::string strExecutable = fs::read_symlink("/proc/self/exe").parent_path();
    EXPECT_EQ(AnswerOfRealHost(folder,
                               [&] {
                                   ::unsetenv("BRENNIK_HOME");
                                   ::unsetenv("HOME");
                               }),
              strExecutable + " yes no no (none) -1 2");
}

TEST(RealHost, ItsPumpHookDoesNothingAtFirst) {
    Host host = RealHost();
    host.pumpEvents();
}

} // namespace
} // namespace brennik
