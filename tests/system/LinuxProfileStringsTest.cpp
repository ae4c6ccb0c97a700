#include "platform/LinuxProfileStrings.h"

#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace system_tests;

namespace fs = std::filesystem;

constexpr const char* kContent = "\xEF\xBB\xBF; the till's own file \xFF\r\n"
                                 "\r\n"
                                 "[GENERAL]\n"
                                 "  NumProfiles = 2 \r\n"
                                 ";Hidden=1\n"
                                 "\t\n"
                                 "[PROFILE_1]\r\n"
                                 "Name=\"one\"\r\n"
                                 "\r\n"
                                 "; closing words";

class LinuxProfileStringsTest : public testing::Test {
  protected:
    std::string Read(const std::string& strSection, const std::string& strKey,
                     int32_t lBufferSize = 10000) {
        return strings_.GetPrivateProfileString(strSection, strKey, "(default)", lBufferSize,
                                                strPath_);
    }

    int32_t Write(const std::string& strSection, const std::string& strKey,
                  const std::string& strValue) {
        return strings_.WritePrivateProfileString(strSection, strKey, strValue, strPath_);
    }

    void Put(std::string_view strContent) { WriteFile(strPath_, strContent); }

    std::string Content() { return ReadFile(strPath_); }

    ino_t Inode() {
        struct stat status {};
        EXPECT_EQ(::stat(strPath_.c_str(), &status), 0);
        return status.st_ino;
    }

    TempFolder folder_;
    LinuxProfileStrings strings_{DriveTable{{'C', "/"}, {'D', folder_.strPath()}}};
    std::string strPath_ = folder_ / "BrennikClient.ini";
};

// Reading.

TEST_F(LinuxProfileStringsTest, ReadsAValueOrTheDefault) {
    Put(kContent);
    EXPECT_EQ(Read("GENERAL", "NumProfiles"), "2");
    EXPECT_EQ(Read("profile_1", "NAME"), "one");
    EXPECT_EQ(Read("GENERAL", "Hidden"), "(default)");
    EXPECT_EQ(Read("PROFILE_2", "Name"), "(default)");
}

TEST_F(LinuxProfileStringsTest, AMissingFileReadsAsTheDefaultAndIsNotMade) {
    EXPECT_EQ(Read("GENERAL", "NumProfiles"), "(default)");
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "");
}

TEST_F(LinuxProfileStringsTest, WhatIsNoFileReadsAsTheDefault) {
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0666), 0);
    for (const std::string& strPath :
         {folder_.strPath(), folder_ / "pipe", "/dev/zero"s, ""s, "Q:\\a.ini"s,
          "\\\\server\\a.ini"s, strPath_ + "\0"s, folder_ / std::string(60000, 'x')}) {
        EXPECT_EQ(strings_.GetPrivateProfileString("A", "K", "d", 100, strPath), "d") << strPath;
        EXPECT_EQ(strings_.WritePrivateProfileString("A", "K", "v", strPath), 0) << strPath;
    }
}

TEST_F(LinuxProfileStringsTest, AHugeFileIsNoIniFile) {
    Put("[A]\nK=v\n");
    ASSERT_EQ(::truncate(strPath_.c_str(), 67108865), 0);
    EXPECT_EQ(Read("A", "K"), "(default)");
    EXPECT_EQ(Write("A", "K", "w"), 0);
    EXPECT_EQ(fs::file_size(strPath_), 67108865U);
}

TEST_F(LinuxProfileStringsTest, CutsAValueToTheBuffer) {
    Put("[A]\nK=12345\n");
    EXPECT_EQ(Read("A", "K", 7), "12345");
    EXPECT_EQ(Read("A", "K", 6), "12345");
    EXPECT_EQ(Read("A", "K", 5), "1234");
    EXPECT_EQ(Read("A", "K", 1), "");
    EXPECT_EQ(Read("A", "K", 0), "");
    EXPECT_EQ(Read("A", "K", -1), "");
    EXPECT_EQ(Read("A", "none", 5), "(def");
    Put("[A]\nK=" + std::string(20000, 'x') + "\n");
    EXPECT_EQ(Read("A", "K", 10000), std::string(9999, 'x'));
}

TEST_F(LinuxProfileStringsTest, MapsItsPathLikeAllOthers) {
    Put("[A]\nK=v\n");
    EXPECT_EQ(strings_.GetPrivateProfileString("A", "K", "", 10, "D:\\BrennikClient.ini"), "v");
    EXPECT_EQ(strings_.WritePrivateProfileString("A", "K", "w", "D:\\BrennikClient.ini"), 1);
    EXPECT_EQ(Read("A", "K"), "w");
}

TEST_F(LinuxProfileStringsTest, SeesEveryChangeEvenWithinOneTickOfTheClock) {
    Put("[A]\nK=0000\n");
    const int nFile = ::open(strPath_.c_str(), O_WRONLY | O_CLOEXEC);
    for (int n = 1000; n < 1500; ++n) {
        // In place and of the same length: nothing but its times tells a change, if they do.
        const std::string strValue = std::to_string(n);
        ASSERT_EQ(::pwrite(nFile, strValue.data(), 4, 6), 4);
        ASSERT_EQ(Read("A", "K"), strValue);
    }
    ::close(nFile);
}

TEST_F(LinuxProfileStringsTest, SeesAFileThatIsReplacedRemovedAndMadeAgain) {
    for (int n = 0; n < 50; ++n) {
        Put("[A]\nK=a" + std::to_string(n) + "\n");
        ASSERT_EQ(Read("A", "K"), "a" + std::to_string(n));
        WriteFile(folder_ / "new", "[A]\nK=b" + std::to_string(n) + "\n");
        fs::rename(folder_ / "new", strPath_);
        ASSERT_EQ(Read("A", "K"), "b" + std::to_string(n));
        fs::remove(strPath_);
        ASSERT_EQ(Read("A", "K"), "(default)");
    }
}

TEST_F(LinuxProfileStringsTest, KeepsTwoFilesApart) {
    Put("[A]\nK=1\n");
    WriteFile(folder_ / "b.ini", "[A]\nK=2\n");
    for (int n = 0; n < 3; ++n) {
        EXPECT_EQ(Read("A", "K"), "1");
        EXPECT_EQ(strings_.GetPrivateProfileString("A", "K", "", 10, folder_ / "b.ini"), "2");
    }
}

/// The number of read calls that this process has made, this one's own among them.
long long ReadCallsSoFar() {
    const int nFile = ::open("/proc/self/io", O_RDONLY | O_CLOEXEC);
    char buffer[512];
    const ssize_t nRead = ::read(nFile, buffer, sizeof buffer);
    ::close(nFile);
    const std::string strAccount(buffer, nRead > 0 ? static_cast<size_t>(nRead) : 0);
    const size_t nAt = strAccount.find("syscr: ");
    return nAt == std::string::npos ? -1 : std::stoll(strAccount.substr(nAt + 7));
}

TEST_F(LinuxProfileStringsTest, AFileThatRestsIsReadOnceForManyValues) {
    std::string strContent;
    for (int n = 0; n < 2000; ++n) {
        strContent += "[PROFILE_" + std::to_string(n) + "]\r\nName=n" + std::to_string(n) + "\r\n";
    }
    Put(strContent);
    // Waits until the file is old enough to be trusted.
    const long long lLimit = MonotonicNanoseconds() + 60000000000;
    for (long long lCalls = -1; MonotonicNanoseconds() < lLimit;) {
        const long long lBefore = ReadCallsSoFar();
        ASSERT_GE(lBefore, 0);
        static_cast<void>(Read("PROFILE_0", "Name"));
        lCalls = ReadCallsSoFar() - lBefore;
        if (lCalls == 1) {
            break;
        }
    }
    const long long lBefore = ReadCallsSoFar();
    for (int n = 0; n < 2000; ++n) {
        ASSERT_EQ(Read("PROFILE_" + std::to_string(n), "Name"), "n" + std::to_string(n));
    }
    EXPECT_EQ(ReadCallsSoFar() - lBefore, 1);
}

TEST_F(LinuxProfileStringsTest, AYoungFileIsReadAgainForEveryValue) {
    // Its next change could fall into the same tick of the clock that files take their times from.
    const long long lLimit = MonotonicNanoseconds() + 60000000000;
    long long lCalls = 0;
    for (bool bYoung = false; !bYoung && MonotonicNanoseconds() < lLimit;) {
        Put("[A]\nK=" + std::to_string(MonotonicNanoseconds()) + "\n");
        const long long lMade = MonotonicNanoseconds();
        static_cast<void>(Read("A", "K"));
        const long long lBefore = ReadCallsSoFar();
        static_cast<void>(Read("A", "K"));
        lCalls = ReadCallsSoFar() - lBefore;
        bYoung = MonotonicNanoseconds() - lMade < 30000000;
    }
    EXPECT_GT(lCalls, 1);
}

TEST_F(LinuxProfileStringsTest, SeesAChangeOfAFileThatRested) {
    Put("[A]\nK=1\n");
    const long long lLimit = MonotonicNanoseconds() + 60000000000;
    for (bool bRests = false; !bRests && MonotonicNanoseconds() < lLimit;) {
        const long long lBefore = ReadCallsSoFar();
        static_cast<void>(Read("A", "K"));
        bRests = ReadCallsSoFar() - lBefore == 1;
    }
    Put("[A]\nK=2\n");
    EXPECT_EQ(Read("A", "K"), "2");
}

// Writing.

TEST_F(LinuxProfileStringsTest, MakesTheFileTheSectionAndTheKey) {
    EXPECT_NE(Write("GENERAL", "NumProfiles", "1"), 0);
    EXPECT_EQ(Content(), "[GENERAL]\r\nNumProfiles=1\r\n");
    EXPECT_NE(Write("GENERAL", "Other", ""), 0);
    EXPECT_NE(Write("PROFILE_1", "Name", "one"), 0);
    EXPECT_EQ(Content(), "[GENERAL]\r\nNumProfiles=1\r\nOther=\r\n[PROFILE_1]\r\nName=one\r\n");
    EXPECT_EQ(Read("GENERAL", "Other"), "");
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "BrennikClient.ini");
}

TEST_F(LinuxProfileStringsTest, ANewFileHasTheModeOfAnyNewFile) {
    const mode_t nMask = ::umask(027);
    EXPECT_NE(Write("A", "K", "v"), 0);
    ::umask(nMask);
    EXPECT_EQ(fs::status(strPath_).permissions(), fs::perms(0640));
}

TEST_F(LinuxProfileStringsTest, EveryOtherByteSurvives) {
    Put(kContent);
    EXPECT_NE(Write("general", "numprofiles", "3"), 0);
    EXPECT_NE(Write("PROFILE_1", "Host", "h"), 0);
    EXPECT_NE(Write("GENERAL", "Added", "a"), 0);
    EXPECT_EQ(Content(), "\xEF\xBB\xBF; the till's own file \xFF\r\n"
                         "\r\n"
                         "[GENERAL]\n"
                         "  NumProfiles = 3\r\n"
                         ";Hidden=1\n"
                         "\t\n"
                         "Added=a\n"
                         "[PROFILE_1]\r\n"
                         "Name=\"one\"\r\n"
                         "\r\n"
                         "; closing words\r\n"
                         "Host=h\r\n");
}

TEST_F(LinuxProfileStringsTest, AValueThatIsThereAlreadyIsNoWrite) {
    Put(kContent);
    const ino_t nInode = Inode();
    EXPECT_NE(Write("GENERAL", "NumProfiles", "2"), 0);
    EXPECT_NE(Write("PROFILE_1", "Name", "one"), 0);
    EXPECT_EQ(Inode(), nInode);
    EXPECT_EQ(Content(), kContent);
    EXPECT_NE(Write("GENERAL", "NumProfiles", "4"), 0);
    EXPECT_NE(Inode(), nInode) << "a write makes a new file";
}

TEST_F(LinuxProfileStringsTest, WhatCannotStandOnOneLineIsRefused) {
    Put(kContent);
    for (const std::string& strBad : {"a\rb"s, "a\n[B]"s, "a\0b"s}) {
        EXPECT_EQ(Write("GENERAL", "NumProfiles", strBad), 0);
        EXPECT_EQ(Write("GENERAL", strBad, "v"), 0);
        EXPECT_EQ(Write(strBad, "NumProfiles", "v"), 0);
    }
    EXPECT_EQ(Content(), kContent);
}

TEST_F(LinuxProfileStringsTest, AFileWithoutAWriteBitIsLeftAlone) {
    Put(kContent);
    ASSERT_EQ(::chmod(strPath_.c_str(), 0444), 0);
    EXPECT_EQ(Write("GENERAL", "NumProfiles", "3"), 0);
    EXPECT_NE(Write("GENERAL", "NumProfiles", "2"), 0) << "it is there already";
    EXPECT_EQ(Content(), kContent);
    EXPECT_EQ(fs::status(strPath_).permissions(), fs::perms(0444));
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "BrennikClient.ini");
}

TEST_F(LinuxProfileStringsTest, AMissingFolderIsNotMade) {
    strPath_ = folder_ / "none/a.ini";
    EXPECT_EQ(Write("A", "K", "v"), 0);
    strPath_ = folder_ / "none/";
    EXPECT_EQ(Write("A", "K", "v"), 0);
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "");
}

TEST_F(LinuxProfileStringsTest, TheModeIsKept) {
    Put(kContent);
    for (const auto mode : {0600, 0640, 0664, 0622}) {
        ASSERT_EQ(::chmod(strPath_.c_str(), static_cast<mode_t>(mode)), 0);
        EXPECT_NE(Write("GENERAL", "NumProfiles", std::to_string(mode)), 0);
        EXPECT_EQ(fs::status(strPath_).permissions(), fs::perms(mode));
    }
}

TEST_F(LinuxProfileStringsTest, TheOwnerIsKeptWherePermitted) {
    Put(kContent);
    // Root keeps any owner; an ordinary user can only show that its own stays.
    const bool bRoot = ::geteuid() == 0;
    const uid_t nUser = bRoot ? 12345 : ::geteuid();
    const gid_t nGroup = bRoot ? 23456 : ::getegid();
    ASSERT_EQ(::chown(strPath_.c_str(), nUser, nGroup), 0);
    EXPECT_NE(Write("GENERAL", "NumProfiles", "3"), 0);
    struct stat status {};
    ASSERT_EQ(::stat(strPath_.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, nUser);
    EXPECT_EQ(status.st_gid, nGroup);
}

TEST_F(LinuxProfileStringsTest, ALinkStaysAndItsTargetIsWritten) {
    fs::create_directories(folder_ / "elsewhere");
    WriteFile(folder_ / "elsewhere/real.ini", "[A]\nK=1\n");
    fs::create_symlink("elsewhere/second", strPath_);
    fs::create_symlink(folder_ / "elsewhere/real.ini", folder_ / "elsewhere/second");
    EXPECT_NE(Write("A", "K", "2"), 0);
    EXPECT_EQ(Read("A", "K"), "2");
    EXPECT_EQ(ReadFile(folder_ / "elsewhere/real.ini"), "[A]\nK=2\n");
    EXPECT_EQ(Joined(Tree(folder_.strPath())),
              "BrennikClient.ini@ elsewhere/ elsewhere/real.ini elsewhere/second@");
}

TEST_F(LinuxProfileStringsTest, ALinkToNothingGetsItsTarget) {
    fs::create_symlink("real.ini", strPath_);
    EXPECT_NE(Write("A", "K", "2"), 0);
    EXPECT_EQ(ReadFile(folder_ / "real.ini"), "[A]\r\nK=2\r\n");
    EXPECT_TRUE(fs::is_symlink(strPath_));
}

TEST_F(LinuxProfileStringsTest, LinksInACircleAreRefused) {
    fs::create_symlink("other", strPath_);
    fs::create_symlink("BrennikClient.ini", folder_ / "other");
    EXPECT_EQ(Write("A", "K", "2"), 0);
    EXPECT_EQ(Read("A", "K"), "(default)");
}

TEST_F(LinuxProfileStringsTest, WhatAKilledWriterLeftIsTakenAway) {
    Put(kContent);
    WriteFile(folder_ / "victim", "untouched");
    fs::create_symlink("victim", folder_ / ".brennik-ini.new");
    EXPECT_NE(Write("GENERAL", "NumProfiles", "3"), 0);
    WriteFile(folder_ / ".brennik-ini.new", "half of a fi");
    EXPECT_NE(Write("GENERAL", "NumProfiles", "4"), 0);
    EXPECT_EQ(ReadFile(folder_ / "victim"), "untouched");
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "BrennikClient.ini victim");
}

TEST_F(LinuxProfileStringsTest, TheNewFilesOwnNameIsRefused) {
    strPath_ = folder_ / ".brennik-ini.new";
    Put(kContent);
    EXPECT_EQ(Write("GENERAL", "NumProfiles", "3"), 0);
    EXPECT_EQ(Content(), kContent);
}

TEST_F(LinuxProfileStringsTest, AFullDiskLeavesTheOldFile) {
    const TempFolder root;
    EXPECT_EQ(ReportOfSandbox(
                  root, false,
                  [] {
                      MountMemory("/memory", "64k");
                      const std::string strOld = "[A]\r\nK=" + std::string(40000, 'x') + "\r\n";
                      WriteFile("/memory/a.ini", strOld);
                      LinuxProfileStrings strings{DefaultDrives()};
                      const int32_t lDone = strings.WritePrivateProfileString(
                          "A", "K", "v" + std::string(40000, 'y'), "/memory/a.ini");
                      return std::to_string(lDone) +
                             (ReadFile("/memory/a.ini") == strOld ? " whole " : " damaged ") +
                             Joined(Tree("/memory"));
                  }),
              "0 whole a.ini");
}

TEST_F(LinuxProfileStringsTest, WorksInTheCurrentFolder) {
    EXPECT_EQ(ReportOfChild([&] {
                  fs::current_path(folder_.strPath());
                  const int32_t lDone =
                      strings_.WritePrivateProfileString("A", "K", "v", "here.ini");
                  return std::to_string(lDone) +
                         strings_.GetPrivateProfileString("A", "K", "", 10, "here.ini");
              }),
              "1v");
}

TEST_F(LinuxProfileStringsTest, ParallelWritersLoseNothing) {
    constexpr int kProcesses = 4;
    constexpr int kKeys = 40;
    Put("; shared\r\n[GENERAL]\r\n");
    std::vector<pid_t> processes;
    for (int nProcess = 0; nProcess < kProcesses; ++nProcess) {
        processes.push_back(::fork());
        if (processes.back() == 0) {
            bool bDone = true;
            for (int n = 0; n < kKeys; ++n) {
                bDone = Write("GENERAL", std::to_string(nProcess) + "_" + std::to_string(n),
                              std::string(static_cast<size_t>(n), 'v')) != 0 &&
                        bDone;
            }
            ::_exit(bDone ? 0 : 1);
        }
    }
    for (const pid_t nProcess : processes) {
        int nStatus = -1;
        ASSERT_EQ(::waitpid(nProcess, &nStatus, 0), nProcess);
        EXPECT_EQ(nStatus, 0);
    }
    for (int nProcess = 0; nProcess < kProcesses; ++nProcess) {
        for (int n = 0; n < kKeys; ++n) {
            EXPECT_EQ(Read("GENERAL", std::to_string(nProcess) + "_" + std::to_string(n)),
                      std::string(static_cast<size_t>(n), 'v'));
        }
    }
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "BrennikClient.ini");
}

TEST_F(LinuxProfileStringsTest, TheFileIsWholeWheneverAWriterIsKilled) {
    const std::string strFirst = "; first line\r\n[GENERAL]\r\nKey=";
    const std::string strLast = "\r\nOther=stays\r\n; last line\r\n";
    Put(strFirst + "start" + strLast);
    const unsigned nSeed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(nSeed));
    std::mt19937 random(nSeed);
    int nChanged = 0;
    std::string strSeen = Content();
    for (int nRound = 0; nRound < 200; ++nRound) {
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        const pid_t nWriter = ::fork();
        if (nWriter == 0) {
            for (int n = 0;; ++n) {
                const std::string strMark =
                    "<" + std::to_string(nRound) + "." + std::to_string(n) + ">";
                static_cast<void>(
                    Write("GENERAL", "Key", strMark + std::string(20000, 'v') + strMark));
                if (n == 0) {
                    static_cast<void>(!::write(ends[1], "x", 1));
                }
            }
        }
        ::close(ends[1]);
        // Kills it somewhere in its second write or a later one, now and then in its first.
        pollfd started{ends[0], POLLIN, 0};
        const bool bFirst = random() % 4 == 0;
        ASSERT_GE(::poll(&started, 1, bFirst ? static_cast<int>(random() % 3) : 60000), 0);
        const timespec moment{0, static_cast<long>(random() % 3000000)};
        ::nanosleep(&moment, nullptr);
        ::kill(nWriter, SIGKILL);
        ASSERT_EQ(::waitpid(nWriter, nullptr, 0), nWriter);
        ::close(ends[0]);

        const std::string strContent = Content();
        ASSERT_EQ(strContent.compare(0, strFirst.size(), strFirst), 0) << strContent;
        ASSERT_GE(strContent.size(), strFirst.size() + strLast.size());
        const size_t nEnd = strContent.size() - strLast.size();
        ASSERT_EQ(strContent.substr(nEnd), strLast);
        const std::string strValue = strContent.substr(strFirst.size(), nEnd - strFirst.size());
        if (strValue != "start") {
            const std::string strMark = strValue.substr(0, strValue.find('>') + 1);
            ASSERT_EQ(strValue, strMark + std::string(20000, 'v') + strMark);
        }
        nChanged += strContent == strSeen ? 0 : 1;
        strSeen = strContent;
        ASSERT_LE(Tree(folder_.strPath()).size(), 2U) << "at most one file is left behind";
    }
    EXPECT_GT(nChanged, 50) << "the writers did write";
}

} // namespace
} // namespace brennik
