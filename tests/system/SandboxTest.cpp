#include "tests/system/Sandbox.h"

#include "platform/RuntimeFailure.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <unistd.h>

namespace brennik::system_tests {
namespace {

TEST(Sandbox, AFolderIsGoneAtTheEnd) {
    std::string strPath;
    {
        const TempFolder folder;
        strPath = folder.strPath();
        WriteFile(folder / "a", "x");
        EXPECT_EQ(ReadFile(folder / "a"), "x");
        EXPECT_EQ(ReadFile(folder / "b"), "(none)");
    }
    EXPECT_FALSE(std::filesystem::exists(strPath));
}

TEST(Sandbox, AChildReportsWhatItFound) {
    EXPECT_EQ(ReportOfChild([] { return std::string(100000, 'x'); }), std::string(100000, 'x'));
}

TEST(Sandbox, AChildReportsEveryOtherEnd) {
    EXPECT_EQ(ReportOfChild([]() -> std::string { throw std::runtime_error("no luck"); }),
              "threw: no luck");
    EXPECT_EQ(ReportOfChild([]() -> std::string { ::_exit(7); }), "exit 7");
    EXPECT_EQ(ReportOfChild([]() -> std::string {
                  std::raise(SIGKILL);
                  return "alive";
              }),
              "ended by signal 9");
}

TEST(Sandbox, ItsRootIsTheFolder) {
    const TempFolder root;
    std::filesystem::create_directories(root / "home/pos");
    EXPECT_EQ(ReportOfSandbox(root, false, [] { return Joined(Tree("/")); }), "home/ home/pos/");
}

TEST(Sandbox, WhatIsDestroyedInItStaysInIt) {
    const TempFolder root;
    const TempFolder outside;
    WriteFile(outside / "a", "x");
    WriteFile(root / "b", "x");
    const std::string strOutside = outside / "a";
    EXPECT_EQ(ReportOfSandbox(root, false,
                              [&] {
                                  const bool bSeen = std::filesystem::exists(strOutside);
                                  std::filesystem::remove_all("/b");
                                  return std::string(bSeen ? "seen" : "unseen");
                              }),
              "unseen");
    EXPECT_EQ(ReadFile(strOutside), "x");
    EXPECT_EQ(ReadFile(root / "b"), "(none)");
}

TEST(Sandbox, HasMountsOfItsOwn) {
    const TempFolder root;
    EXPECT_EQ(ReportOfSandbox(root, true,
                              [] {
                                  MountMemory("/memory");
                                  WriteFile("/memory/a", "x");
                                  MountAgain("/memory", "/again");
                                  return ReadFile("/again/a");
                              }),
              "x");
    EXPECT_EQ(Joined(Tree(root.strPath())), "again/ memory/ proc/");
}

TEST(Sandbox, TellsWhichFailureWasThrown) {
    EXPECT_EQ(FailureOf([] { throw RuntimeFailure(FailureKind::DiskFull); }), "Disk full");
    EXPECT_EQ(FailureOf([] {}), "nothing thrown");
}

TEST(Sandbox, InterruptionsDoInterrupt) {
    EXPECT_EQ(ReportOfChild([] {
                  const Interruptions interruptions;
                  int ends[2];
                  char byte = 0;
                  if (::pipe(ends) != 0) {
                      return std::string("no pipe");
                  }
                  const ssize_t nRead = ::read(ends[0], &byte, 1);
                  return std::string(nRead < 0 && errno == EINTR ? "interrupted" : "not");
              }),
              "interrupted");
}

} // namespace
} // namespace brennik::system_tests
