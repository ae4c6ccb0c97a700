#include "platform/LinuxFiles.h"

#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace system_tests;

namespace fs = std::filesystem;

class LinuxFilesTest : public testing::Test {
  protected:
    /// What a listing of the pattern below the test's folder finds; folders end in "/".
    std::string Found(const std::string& strPattern) {
        std::vector<std::string> names;
        for (const FoundFile& file : files_.Find(folder_ / strPattern)) {
            names.push_back(file.strName + (file.bFolder ? "/" : ""));
        }
        return Joined(names);
    }

    void Put(const std::string& strName, std::string_view strContent = "x") {
        fs::create_directories(fs::path(folder_ / strName).parent_path());
        WriteFile(folder_ / strName, strContent);
    }

    std::string Content(const std::string& strName) { return ReadFile(folder_ / strName); }

    TempFolder folder_;
    LinuxFiles files_{DriveTable{{'C', "/"}, {'D', folder_.strPath()}}, folder_ / "program"};
    const std::string strLongName_ = std::string(60000, 'x');
};

// Lines of a log.

TEST_F(LinuxFilesTest, AppendsLinesAndMakesTheFile) {
    files_.AppendLine("D:\\log.txt", "one\r\n");
    files_.AppendLine("D:\\log.txt", "two\r\n");
    EXPECT_EQ(Content("log.txt"), "one\r\ntwo\r\n");
}

TEST_F(LinuxFilesTest, ALineThatCannotBeAppendedFails) {
    EXPECT_EQ(FailureOf([&] { files_.AppendLine("D:\\none\\log.txt", "x"); }), "Path not found");
    EXPECT_EQ(FailureOf([&] { files_.AppendLine("", "x"); }), "Path not found");
    EXPECT_EQ(FailureOf([&] { files_.AppendLine("D:\\", "x"); }), "Permission denied");
    EXPECT_EQ(FailureOf([&] { files_.AppendLine("D:\\" + strLongName_, "x"); }), "Path not found");
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0666), 0);
    EXPECT_EQ(FailureOf([&] { files_.AppendLine("D:\\pipe", "x"); }), "Device I/O error");
}

TEST_F(LinuxFilesTest, AFullDiskLosesTheWholeLineAndNothingElse) {
    Put("log", "before\r\n");
    EXPECT_EQ(ReportOfChild([&] {
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{20, 20};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  const std::string strFirst =
                      FailureOf([&] { files_.AppendLine(folder_ / "log", "too long for it\r\n"); });
                  const std::string strSecond =
                      FailureOf([&] { files_.AppendLine(folder_ / "log", "short\r\n"); });
                  const std::string strThird =
                      FailureOf([&] { files_.AppendLine(folder_ / "log", "toolong"); });
                  return strFirst + ", " + strSecond + ", " + strThird;
              }),
              "Disk full, nothing thrown, Disk full");
    EXPECT_EQ(Content("log"), "before\r\nshort\r\n");
}

TEST_F(LinuxFilesTest, LinesOfParallelProcessesNeverMix) {
    constexpr int kProcesses = 4;
    constexpr int kLines = 400;
    std::vector<pid_t> processes;
    for (int nProcess = 0; nProcess < kProcesses; ++nProcess) {
        processes.push_back(::fork());
        if (processes.back() == 0) {
            for (int n = 0; n < kLines; ++n) {
                const std::string strBody(static_cast<size_t>(1 + (n * 37) % 3000),
                                          static_cast<char>('a' + nProcess));
                files_.AppendLine(folder_ / "log", "<" + strBody + ">\r\n");
            }
            ::_exit(0);
        }
    }
    for (const pid_t nProcess : processes) {
        int nStatus = 0;
        ASSERT_EQ(::waitpid(nProcess, &nStatus, 0), nProcess);
        EXPECT_EQ(nStatus, 0);
    }
    const auto stream = files_.OpenText(folder_ / "log", OpenMode::Read);
    int nLines = 0;
    for (; !stream->AtEndOfStream(); ++nLines) {
        const std::string strLine = stream->ReadLine();
        ASSERT_GE(strLine.size(), 3U);
        ASSERT_EQ(strLine.front(), '<');
        ASSERT_EQ(strLine.find_first_not_of(strLine[1], 1), strLine.size() - 1) << strLine;
        ASSERT_EQ(strLine.back(), '>');
    }
    EXPECT_EQ(nLines, kProcesses * kLines);
}

// Listing.

TEST_F(LinuxFilesTest, ListsInTheOrderOfUpperCasedNames) {
    for (const char* strName : {"beta.txt", "Alpha.txt", "alpha.TXT", "gamma", "_under.txt",
                                "10.txt", "9.txt", "B.txt", ".hidden.txt"}) {
        Put(strName);
    }
    fs::create_directory(folder_ / "folder.txt");
    EXPECT_EQ(Found("*.txt"), ".hidden.txt 10.txt 9.txt Alpha.txt alpha.TXT B.txt beta.txt "
                              "folder.txt/ _under.txt");
}

TEST_F(LinuxFilesTest, OrdersNamesThatDifferInCaseAloneByTheirBytes) {
    Put("Ab");
    Put("aB");
    Put("AB");
    Put("ab");
    EXPECT_EQ(Found("a?"), "AB Ab aB ab");
}

TEST_F(LinuxFilesTest, AWildcardFindsTheFoldersOwnNamesToo) {
    Put("a");
    EXPECT_EQ(Found("*"), "./ ../ a");
    EXPECT_EQ(Found("*.*"), "./ ../ a");
    EXPECT_EQ(Found("?"), "./ a");
    EXPECT_EQ(Found("*a*"), "a");
}

TEST_F(LinuxFilesTest, WildcardsIgnoreCaseAndWholeNamesDoNot) {
    Put("FLClient.LOG");
    EXPECT_EQ(Found("*flclient*"), "FLClient.LOG");
    EXPECT_EQ(Found("flclient.log"), "");
    EXPECT_EQ(Found("FLClient.LOG"), "FLClient.LOG");
}

TEST_F(LinuxFilesTest, FindsOneFileOrFolderByItsName) {
    Put("sub/a.txt");
    EXPECT_EQ(Found("sub"), "sub/");
    EXPECT_EQ(Found("sub\\a.txt"), "a.txt");
    EXPECT_EQ(Found("sub\\"), "");
    EXPECT_EQ(Found("none"), "");
    EXPECT_EQ(Found("none\\*"), "");
    EXPECT_EQ(Found("sub\\a.txt\\*"), "");
    EXPECT_EQ(Found("s*\\a.txt"), "") << "wildcards stand in the last part alone";
    EXPECT_EQ(Found(strLongName_), "");
    EXPECT_EQ(Found(strLongName_ + "*"), "");
    EXPECT_EQ(Found("a\0"s), "");
    EXPECT_TRUE(files_.Find("").empty());
    EXPECT_TRUE(files_.Find("Q:\\*").empty());
    EXPECT_TRUE(files_.Find("\\\\server\\*").empty());
}

TEST_F(LinuxFilesTest, BracketsAreNoWildcards) {
    Put("[a]1.txt");
    Put("a2.txt");
    EXPECT_EQ(Found("[a]*"), "[a]1.txt");
}

TEST_F(LinuxFilesTest, ALinkIsListedAsWhatItNames) {
    Put("sub/a");
    fs::create_directory_symlink(folder_ / "sub", folder_ / "to-folder");
    fs::create_symlink(folder_ / "sub/a", folder_ / "to-file");
    fs::create_symlink(folder_ / "nowhere", folder_ / "to-nothing");
    EXPECT_EQ(Found("to*"), "to-file to-folder/ to-nothing");
}

TEST_F(LinuxFilesTest, AFolderThatCannotBeReadFindsNotEvenItself) {
    fs::create_directories(folder_ / "locked/below");
    EXPECT_EQ(Found("locked/*"), "./ ../ below/");
    EXPECT_EQ(::chmod((folder_ / "locked").c_str(), 0), 0);
    EXPECT_EQ(ReportOfChild([&]() -> std::string {
                  // The superuser reads everything.
                  if (::geteuid() == 0 &&
                      (::chmod(folder_.strPath().c_str(), 0755) != 0 || ::setuid(65534) != 0))
                      return "no other user";
                  return "found: " + Found("locked/*");
              }),
              "found: ");
    EXPECT_EQ(::chmod((folder_ / "locked").c_str(), 0755), 0);
}

TEST_F(LinuxFilesTest, TellsItsDrives) {
    EXPECT_EQ(files_.Drives(), (DriveTable{{'C', "/"}, {'D', folder_.strPath()}}));
}

TEST_F(LinuxFilesTest, RelativeNamesBeginAtTheCurrentFolder) {
    Put("a.txt");
    EXPECT_EQ(ReportOfChild([&] {
                  fs::current_path(folder_.strPath());
                  std::string strFound;
                  for (const char* strPattern : {"*.txt", "a.txt", ".\\*.txt"}) {
                      for (const FoundFile& file : files_.Find(strPattern)) {
                          strFound += file.strName + " ";
                      }
                  }
                  return strFound;
              }),
              "a.txt a.txt a.txt ");
}

// Times.

TEST_F(LinuxFilesTest, TellsTheTimesOfAFileInWholeSeconds) {
    const int64_t lBefore = ::time(nullptr);
    Put("a");
    const timespec times[2] = {{1000000000, 999999999}, {1100000000, 999999999}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder_ / "a").c_str(), times, 0), 0);
    const auto found = files_.GetTimes(folder_ / "a");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->lAccessed, 1000000000);
    EXPECT_EQ(found->lModified, 1100000000);
    struct statx status {};
    ASSERT_EQ(::statx(AT_FDCWD, (folder_ / "a").c_str(), 0, STATX_BTIME, &status), 0);
    if ((status.stx_mask & STATX_BTIME) != 0) {
        EXPECT_GE(found->lCreated, lBefore - 1);
        EXPECT_LE(found->lCreated, ::time(nullptr));
    } else {
        EXPECT_EQ(found->lCreated, found->lModified);
    }
    const auto listed = files_.Find(folder_ / "*a");
    ASSERT_EQ(listed.size(), 1U);
    EXPECT_EQ(listed[0].times.lModified, 1100000000);
    EXPECT_EQ(listed[0].times.lAccessed, 1000000000);
    EXPECT_EQ(listed[0].times.lCreated, found->lCreated);
}

TEST_F(LinuxFilesTest, WhatCannotBeReadHasNoTimes) {
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0666), 0);
    EXPECT_FALSE(files_.GetTimes(folder_ / "none").has_value());
    EXPECT_FALSE(files_.GetTimes(folder_.strPath()).has_value());
    EXPECT_FALSE(files_.GetTimes(folder_ / "pipe").has_value());
    EXPECT_FALSE(files_.GetTimes("").has_value());
    EXPECT_FALSE(files_.GetTimes(folder_ / strLongName_).has_value());
}

// Folders.

TEST_F(LinuxFilesTest, KnowsFolders) {
    Put("sub/a");
    fs::create_directory_symlink(folder_ / "sub", folder_ / "link");
    EXPECT_TRUE(files_.FolderExists("D:\\"));
    EXPECT_TRUE(files_.FolderExists("D:\\sub"));
    EXPECT_TRUE(files_.FolderExists("d:\\sub\\"));
    EXPECT_TRUE(files_.FolderExists("D:\\link"));
    EXPECT_TRUE(files_.FolderExists("C:\\"));
    EXPECT_FALSE(files_.FolderExists("D:\\sub\\a"));
    EXPECT_FALSE(files_.FolderExists("D:\\none"));
    EXPECT_FALSE(files_.FolderExists("D:\\SUB"));
    EXPECT_FALSE(files_.FolderExists("E:\\"));
    EXPECT_FALSE(files_.FolderExists(""));
    EXPECT_FALSE(files_.FolderExists("D:\\sub\0"s));
}

TEST_F(LinuxFilesTest, MakesOneLevelOfAFolder) {
    files_.CreateFolder("D:\\one");
    files_.CreateFolder("D:\\one\\two\\");
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "one/ one/two/");
    Put("file");
    EXPECT_EQ(FailureOf([&] { files_.CreateFolder("D:\\one"); }), "File already exists");
    EXPECT_EQ(FailureOf([&] { files_.CreateFolder("D:\\file"); }), "File already exists");
    EXPECT_EQ(FailureOf([&] { files_.CreateFolder("D:\\a\\b"); }), "Path not found");
    EXPECT_EQ(FailureOf([&] { files_.CreateFolder("D:\\file\\b"); }), "Path not found");
    EXPECT_EQ(FailureOf([&] { files_.CreateFolder(""); }), "Path not found");
    EXPECT_EQ(FailureOf([&] { files_.CreateFolder("D:\\" + strLongName_); }), "Path not found");
    EXPECT_EQ(FailureOf([&] { files_.CreateFolder("\\\\server\\x"); }), "Path not found");
}

TEST_F(LinuxFilesTest, TellsSizes) {
    Put("a", "12345");
    Put("sub/b", "123");
    Put("sub/deep/c", "1");
    fs::create_symlink(folder_ / "a", folder_ / "sub/link");
    fs::create_directory_symlink(folder_.strPath(), folder_ / "sub/round");
    EXPECT_EQ(files_.GetFileSize("D:\\a"), 5);
    EXPECT_EQ(files_.GetFileSize("D:\\sub\\link"), 5);
    EXPECT_EQ(files_.GetFolderSize("D:\\sub"), 4);
    EXPECT_EQ(files_.GetFolderSize("D:\\"), 9);
    EXPECT_EQ(FailureOf([&] { static_cast<void>(files_.GetFileSize("D:\\none")); }),
              "File not found");
    EXPECT_EQ(FailureOf([&] { static_cast<void>(files_.GetFileSize("D:\\none\\a")); }),
              "Path not found");
    EXPECT_EQ(FailureOf([&] { static_cast<void>(files_.GetFileSize("D:\\sub")); }),
              "File not found");
    EXPECT_EQ(FailureOf([&] { static_cast<void>(files_.GetFolderSize("D:\\none")); }),
              "Path not found");
    EXPECT_EQ(FailureOf([&] { static_cast<void>(files_.GetFolderSize("D:\\a")); }),
              "Path not found");
}

TEST_F(LinuxFilesTest, TellsSizesBeyond31Bits) {
    Put("large");
    ASSERT_EQ(::truncate((folder_ / "large").c_str(), 5000000000), 0);
    EXPECT_EQ(files_.GetFileSize("D:\\large"), 5000000000);
    EXPECT_EQ(files_.GetFolderSize("D:\\"), 5000000000);
}

// Single files.

TEST_F(LinuxFilesTest, DeletesAFileReadOnlyOrNot) {
    Put("a");
    Put("b");
    Put("c*");
    Put("cc");
    ASSERT_EQ(::chmod((folder_ / "b").c_str(), 0444), 0);
    fs::create_symlink(folder_ / "a", folder_ / "link");
    files_.DeleteFile("D:\\link");
    files_.DeleteFile("D:\\b");
    files_.DeleteFile("D:\\c*");
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "a cc");
    EXPECT_EQ(FailureOf([&] { files_.DeleteFile("D:\\none"); }), "File not found");
    EXPECT_EQ(FailureOf([&] { files_.DeleteFile("D:\\none\\a"); }), "Path not found");
    EXPECT_EQ(FailureOf([&] { files_.DeleteFile("D:\\?"); }), "File not found");
    EXPECT_EQ(FailureOf([&] { files_.DeleteFile(""); }), "Path not found");
    fs::create_directory(folder_ / "sub");
    EXPECT_EQ(FailureOf([&] { files_.DeleteFile("D:\\sub"); }), "Permission denied");
}

TEST_F(LinuxFilesTest, CopiesAFileOverWhatIsThere) {
    const std::string strContent = std::string(300000, 'x') + "\0\r\n\xFF"s;
    Put("a", strContent);
    Put("b", std::string(400000, 'y'));
    ASSERT_EQ(::chmod((folder_ / "a").c_str(), 0640), 0);
    files_.CopyFile("D:\\a", "D:\\b");
    files_.CopyFile("D:\\a", "D:\\c");
    EXPECT_EQ(Content("b"), strContent);
    EXPECT_EQ(Content("c"), strContent);
    EXPECT_EQ(fs::status(folder_ / "c").permissions(), fs::perms(0640));
}

TEST_F(LinuxFilesTest, ACopyOntoItselfDestroysNothing) {
    Put("a", "content");
    fs::create_symlink(folder_ / "a", folder_ / "link");
    fs::create_hard_link(folder_ / "a", folder_ / "same");
    for (const char* strTarget : {"D:\\a", "D:\\link", "D:\\same"}) {
        EXPECT_EQ(FailureOf([&] { files_.CopyFile("D:\\a", strTarget); }), "Permission denied");
    }
    EXPECT_EQ(Content("a"), "content");
}

TEST_F(LinuxFilesTest, ACopyThatCannotBeMadeFails) {
    Put("a");
    fs::create_directory(folder_ / "sub");
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0666), 0);
    EXPECT_EQ(FailureOf([&] { files_.CopyFile("D:\\none", "D:\\b"); }), "File not found");
    EXPECT_EQ(FailureOf([&] { files_.CopyFile("D:\\sub", "D:\\b"); }), "Permission denied");
    EXPECT_EQ(FailureOf([&] { files_.CopyFile("D:\\pipe", "D:\\b"); }), "Permission denied");
    EXPECT_EQ(FailureOf([&] { files_.CopyFile("D:\\a", "D:\\sub"); }), "Permission denied");
    EXPECT_EQ(FailureOf([&] { files_.CopyFile("D:\\a", "Q:\\b"); }), "Path not found");
    EXPECT_EQ(Found("b"), "");
}

TEST_F(LinuxFilesTest, ACopyThatFindsNoRoomLeavesNoHalfFile) {
    Put("a", std::string(1000, 'x'));
    EXPECT_EQ(ReportOfChild([&] {
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{500, 500};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  return FailureOf([&] { files_.CopyFile("D:\\a", "D:\\b"); });
              }),
              "Disk full");
    EXPECT_EQ(Found("b"), "");
}

TEST_F(LinuxFilesTest, MovesAFileWhereNoneIs) {
    Put("a", "content");
    files_.MoveFile("D:\\a", "D:\\b");
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "b");
    EXPECT_EQ(Content("b"), "content");
    Put("a", "other");
    EXPECT_EQ(FailureOf([&] { files_.MoveFile("D:\\a", "D:\\b"); }), "File already exists");
    EXPECT_EQ(Content("a") + " " + Content("b"), "other content");
    EXPECT_EQ(FailureOf([&] { files_.MoveFile("D:\\none", "D:\\c"); }), "File not found");
    fs::create_directory(folder_ / "sub");
    EXPECT_EQ(FailureOf([&] { files_.MoveFile("D:\\sub", "D:\\c"); }), "File not found");
    EXPECT_EQ(FailureOf([&] { files_.MoveFile("D:\\a", "D:\\sub"); }), "File already exists");
}

TEST_F(LinuxFilesTest, MovesAFileToAnotherDevice) {
    EXPECT_EQ(ReportOfSandbox(folder_, false,
                              [] {
                                  MountMemory("/memory");
                                  WriteFile("/a", "content");
                                  WriteFile("/b", "other");
                                  const timespec times[2] = {{1000000000, 0}, {1100000000, 0}};
                                  ::utimensat(AT_FDCWD, "/a", times, 0);
                                  LinuxFiles files(DefaultDrives(), "/program");
                                  files.MoveFile("/a", "/memory/a");
                                  const std::string strAgain =
                                      FailureOf([&] { files.MoveFile("/b", "/memory/a"); });
                                  return strAgain + " " + ReadFile("/memory/a") + " " +
                                         ReadFile("/a") + " " + ReadFile("/b") + " " +
                                         std::to_string(files.GetTimes("/memory/a")->lModified);
                              }),
              "File already exists content (none) other 1100000000");
}

TEST_F(LinuxFilesTest, SetsTheReadOnlyAttribute) {
    Put("a");
    const auto mode = [&] { return static_cast<int>(fs::status(folder_ / "a").permissions()); };
    ASSERT_EQ(::chmod((folder_ / "a").c_str(), 0666), 0);
    files_.SetAttributes("D:\\a", 1);
    EXPECT_EQ(mode(), 0444);
    files_.SetAttributes("D:\\a", 0x20);
    EXPECT_EQ(mode(), 0644);
    files_.SetAttributes("D:\\a", 0x27);
    EXPECT_EQ(mode(), 0444);
    ASSERT_EQ(::chmod((folder_ / "a").c_str(), 0464), 0);
    files_.SetAttributes("D:\\a", 0);
    EXPECT_EQ(mode(), 0464) << "it has a write bit";
    EXPECT_EQ(FailureOf([&] { files_.SetAttributes("D:\\none", 1); }), "File not found");
    EXPECT_EQ(FailureOf([&] { files_.SetAttributes("", 1); }), "Path not found");
    EXPECT_EQ(FailureOf([&] { files_.SetAttributes("/dev/null", 128); }), "Permission denied");
}

// Whole folders.

TEST_F(LinuxFilesTest, CopiesAFolderWithAllThatIsInIt) {
    Put("from/a", "1");
    Put("from/sub/deep/b", "2");
    fs::create_directory(folder_ / "from/empty");
    fs::create_symlink("a", folder_ / "from/link");
    fs::create_directory_symlink("..", folder_ / "from/sub/round");
    files_.CopyFolder("D:\\from", "D:\\to", false);
    EXPECT_EQ(Joined(Tree(folder_ / "to")), "a empty/ link@ sub/ sub/deep/ sub/deep/b sub/round@");
    EXPECT_EQ(Content("to/a") + Content("to/sub/deep/b") + Content("to/link"), "121");
    EXPECT_EQ(fs::read_symlink(folder_ / "to/sub/round"), "..");
}

TEST_F(LinuxFilesTest, CopiesAFolderIntoOneThatIsThere) {
    Put("from/a", "new");
    fs::create_symlink("a", folder_ / "from/link");
    Put("to/a", "old");
    Put("to/b", "stays");
    EXPECT_EQ(FailureOf([&] { files_.CopyFolder("D:\\from", "D:\\to", false); }),
              "File already exists");
    EXPECT_EQ(Content("to/a"), "old");
    files_.CopyFolder("D:\\from", "D:\\to", true);
    files_.CopyFolder("D:\\from\\", "D:\\to\\", true);
    EXPECT_EQ(Content("to/a") + Content("to/b") + Content("to/link"), "newstaysnew");
}

TEST_F(LinuxFilesTest, NeverCopiesAFolderIntoItself) {
    Put("from/a");
    fs::create_directory(folder_ / "from/sub");
    for (const char* strTarget :
         {"D:\\from", "D:\\from\\sub", "D:\\from\\new", "D:\\from\\new\\"}) {
        EXPECT_EQ(FailureOf([&] { files_.CopyFolder("D:\\from", strTarget, true); }),
                  "Permission denied")
            << strTarget;
    }
    EXPECT_EQ(Joined(Tree(folder_.strPath())), "from/ from/a from/sub/");
    files_.CopyFolder("D:\\from", "D:\\from2", true);
    EXPECT_EQ(Joined(Tree(folder_ / "from2")), "a sub/");
}

TEST_F(LinuxFilesTest, AFolderThatCannotBeCopiedFails) {
    Put("a");
    EXPECT_EQ(FailureOf([&] { files_.CopyFolder("D:\\none", "D:\\to", true); }), "Path not found");
    EXPECT_EQ(FailureOf([&] { files_.CopyFolder("D:\\a", "D:\\to", true); }), "Path not found");
    fs::create_directory(folder_ / "from");
    EXPECT_EQ(FailureOf([&] { files_.CopyFolder("D:\\from", "D:\\a", true); }),
              "File already exists");
    EXPECT_EQ(FailureOf([&] { files_.CopyFolder("D:\\from", "D:\\x\\y", true); }),
              "Path not found");
    ASSERT_EQ(::mkfifo((folder_ / "from/pipe").c_str(), 0666), 0);
    EXPECT_EQ(FailureOf([&] { files_.CopyFolder("D:\\from", "D:\\to", true); }),
              "Permission denied");
}

// Staying inside a folder.

class StaysInside : public LinuxFilesTest {
  protected:
    void SetUp() override {
        Put("base/sub/a");
        Put("outside/a");
        fs::create_directory_symlink("../outside", folder_ / "base/link");
        fs::create_directory_symlink("sub", folder_ / "base/inner");
        fs::create_symlink("/nowhere", folder_ / "base/dangling");
        fs::create_directory_symlink("base", folder_ / "alias");
    }

    bool Inside(const std::string& strBelow) {
        return files_.StaysInside("D:\\base\\", "D:\\base\\" + strBelow);
    }
};

TEST_F(StaysInside, AcceptsWhatLiesBelow) {
    for (const char* strBelow :
         {"a", "sub", "sub\\a", "sub\\", "sub\\new\\deeper\\a", "..x", "x..", "...", ".\\a",
          ".hidden", "sub\\\\a", "C:\\x", "\\a", "/etc/x", "a\xFF\xC4"}) {
        EXPECT_TRUE(Inside(strBelow)) << strBelow;
    }
}

TEST_F(StaysInside, RefusesEveryStepUp) {
    for (const char* strBelow : {"..", "..\\x", "..\\..\\x", "sub\\..\\a", "sub\\..", "/../x",
                                 "new\\..\\..\\x", "..//x", ".\\.."}) {
        EXPECT_FALSE(Inside(strBelow)) << strBelow;
    }
}

TEST_F(StaysInside, RefusesEveryLink) {
    for (const char* strBelow : {"link", "link\\a", "link\\new", "inner\\a", "inner", "dangling",
                                 "sub\\..\\link", "link\\", "link\\."}) {
        EXPECT_FALSE(Inside(strBelow)) << strBelow;
    }
}

TEST_F(StaysInside, ALinkAboveOrAtTheBaseIsTheUsersOwn) {
    EXPECT_TRUE(files_.StaysInside("D:\\alias", "D:\\alias\\sub\\a"));
    EXPECT_TRUE(files_.StaysInside("D:\\alias\\", "D:\\alias\\new"));
}

TEST_F(StaysInside, RefusesWhatLiesElsewhere) {
    EXPECT_FALSE(files_.StaysInside("D:\\base", "D:\\outside\\a"));
    EXPECT_FALSE(files_.StaysInside("D:\\base", "D:\\base2"));
    EXPECT_FALSE(files_.StaysInside("D:\\base", "D:\\base"));
    EXPECT_FALSE(files_.StaysInside("D:\\base\\", "D:\\base\\"));
    EXPECT_FALSE(files_.StaysInside("D:\\base", "/etc/x"));
    EXPECT_FALSE(files_.StaysInside("D:\\base", "\\\\server\\x"));
    EXPECT_FALSE(files_.StaysInside("D:\\base", "base\\a"));
}

TEST_F(StaysInside, ComparesPathsNotTexts) {
    EXPECT_TRUE(files_.StaysInside("d:\\base", folder_ / "base/a"));
    EXPECT_TRUE(files_.StaysInside("C:\\", "/" + std::string("new")));
    EXPECT_TRUE(files_.StaysInside("/", "/etc"));
}

TEST_F(StaysInside, RefusesWhatIsNoPath) {
    EXPECT_FALSE(Inside("a\0b"s));
    EXPECT_FALSE(files_.StaysInside("D:\\base", ""));
    EXPECT_FALSE(files_.StaysInside("", "a"));
    EXPECT_FALSE(files_.StaysInside("", "\\a"));
    EXPECT_FALSE(files_.StaysInside("Q:\\base", "Q:\\base\\a"));
    EXPECT_FALSE(Inside(strLongName_));
    EXPECT_FALSE(Inside("sub\\" + strLongName_));
}

TEST_F(StaysInside, AFileWhereAFolderShouldBeLeadsNowhereElse) {
    EXPECT_TRUE(Inside("sub\\a\\b"));
    EXPECT_EQ(FailureOf([&] { files_.OpenText("D:\\base\\sub\\a\\b", OpenMode::Write); }),
              "Path not found");
}

} // namespace
} // namespace brennik
