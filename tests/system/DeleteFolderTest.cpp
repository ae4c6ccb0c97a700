#include "platform/LinuxFiles.h"
#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace system_tests;

namespace fs = std::filesystem;

const DriveTable kDrives = {{'C', "/"}, {'D', "/srv/data"}};

/// The world of each test, inside its sandbox: homes, a program folder, a drive, a working folder.
void LayOut() {
    for (const char* strFolder : {"/home/pos", "/home/listed", "/opt/brennik", "/srv/data/in",
                                  "/srv/work/a/b", "/srv/keep", "/etc"}) {
        fs::create_directories(strFolder);
    }
    WriteFile("/srv/work/1.txt", "1");
    WriteFile("/srv/work/a/2.txt", "2");
    WriteFile("/srv/keep/3.txt", "3");
    WriteFile("/etc/passwd", "pos:x:" + std::to_string(::getuid()) + ":0::/home/listed:/bin/sh\n");
    ::setenv("HOME", "/home/pos", 1);
}

std::string WholeTree() {
    std::string strTree;
    for (const char* strTop : {"/home", "/opt", "/srv"}) {
        strTree += strTop;
        strTree += ": " + (fs::exists(strTop) ? Joined(Tree(strTop)) : "(gone)") + "\n";
    }
    return strTree;
}

std::string Gone(const std::string& strPath) {
    return fs::exists(strPath) ? "still there" : "gone";
}

/// What a delete of the folder says, and "changed" when anything else than nothing is gone.
std::string Deleting(const std::string& strPath) {
    LinuxFiles files(kDrives, "/opt/brennik");
    const std::string strBefore = WholeTree();
    const std::string strFailure = FailureOf([&] { files.DeleteFolder(strPath); });
    return strFailure + (WholeTree() == strBefore ? ", all there" : ", changed");
}

class DeleteFolder : public testing::Test {
  protected:
    std::string InSandbox(const std::function<std::string()>& body, bool bProc = true) {
        return ReportOfSandbox(root_, bProc, [&] {
            LayOut();
            return body();
        });
    }

    std::string Refused(const std::string& strPath) {
        return InSandbox([&] { return Deleting(strPath); });
    }

    TempFolder root_;
};

constexpr const char* kDenied = "Permission denied, all there";
constexpr const char* kNoPath = "Path not found, all there";

TEST_F(DeleteFolder, TakesEverythingInItAndNothingElse) {
    EXPECT_EQ(InSandbox([] {
                  WriteFile("/srv/work/.hidden", "x");
                  fs::create_directories("/srv/work/a/b/c/d");
                  const std::string strSaid = Deleting("/srv/work");
                  return strSaid + "\n" + WholeTree();
              }),
              "nothing thrown, changed\n"
              "/home: listed/ pos/\n"
              "/opt: brennik/\n"
              "/srv: data/ data/in/ keep/ keep/3.txt\n");
}

TEST_F(DeleteFolder, TakesAPathInEveryForm) {
    for (const char* strPath :
         {"C:\\srv\\work", "C:\\srv\\work\\", "/srv/work/", "/srv//work", "/srv/work/.",
          "\\srv\\work", "/srv/keep/../work", "/srv/work/a/.."}) {
        EXPECT_EQ(InSandbox([&] {
                      const std::string strSaid = Deleting(strPath);
                      return strSaid + " " + Gone("/srv/work");
                  }),
                  "nothing thrown, changed gone")
            << strPath;
    }
    EXPECT_EQ(InSandbox([] {
                  const std::string strSaid = Deleting("D:\\in");
                  return strSaid + " " + Gone("/srv/data/in");
              }),
              "nothing thrown, changed gone");
}

TEST_F(DeleteFolder, NeverFollowsALink) {
    EXPECT_EQ(InSandbox([] {
                  fs::create_directory_symlink("/srv/keep", "/srv/work/to-folder");
                  fs::create_directory_symlink("../keep", "/srv/work/a/relative");
                  fs::create_symlink("/srv/keep/3.txt", "/srv/work/to-file");
                  fs::create_symlink("/nowhere", "/srv/work/to-nothing");
                  fs::create_directory_symlink("/", "/srv/work/to-root");
                  const std::string strSaid = Deleting("/srv/work");
                  return strSaid + " " + Joined(Tree("/srv"));
              }),
              "nothing thrown, changed data/ data/in/ keep/ keep/3.txt");
}

TEST_F(DeleteFolder, TakesPipesAndSocketsWithoutWaiting) {
    EXPECT_EQ(InSandbox([] {
                  ::mkfifo("/srv/work/pipe", 0666);
                  const int nSocket = ::socket(AF_UNIX, SOCK_STREAM, 0);
                  sockaddr_un address{AF_UNIX, "/srv/work/socket"};
                  ::bind(nSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
                  const std::string strThere = Joined(Tree("/srv/work"));
                  return strThere + " " + Deleting("/srv/work");
              }),
              "1.txt a/ a/2.txt a/b/ pipe socket nothing thrown, changed");
}

TEST_F(DeleteFolder, RefusesWhatIsNoPath) {
    EXPECT_EQ(Refused(""), kNoPath);
    EXPECT_EQ(Refused("\\\\server\\srv\\work"), kNoPath);
    EXPECT_EQ(Refused("Q:\\srv\\work"), kNoPath);
    EXPECT_EQ(Refused("/srv/work\0"s), kNoPath);
    EXPECT_EQ(Refused("/srv/none"), kNoPath);
    EXPECT_EQ(Refused("/srv/work/1.txt"), kNoPath);
    EXPECT_EQ(Refused("/srv/work/1.txt/"), kNoPath);
    EXPECT_EQ(Refused("/srv/" + std::string(60000, 'x')), kNoPath);
}

TEST_F(DeleteFolder, RefusesTheRoot) {
    for (const char* strPath : {"/", "\\", "C:\\", "C:", "c:\\", "//", "/.", "/srv/.."}) {
        EXPECT_EQ(Refused(strPath), kDenied) << strPath;
    }
}

TEST_F(DeleteFolder, RefusesADrivesRoot) {
    for (const char* strPath : {"D:\\", "D:", "d:\\", "/srv/data", "C:\\srv\\data\\"}) {
        EXPECT_EQ(Refused(strPath), kDenied) << strPath;
    }
}

TEST_F(DeleteFolder, RefusesTheHomesAndTheProgramsFolder) {
    for (const char* strPath : {"/home/pos", "/home/listed", "C:\\opt\\brennik\\"}) {
        EXPECT_EQ(Refused(strPath), kDenied) << strPath;
    }
}

TEST_F(DeleteFolder, RefusesTheListedHomeWhenTheEnvironmentNamesNone) {
    EXPECT_EQ(InSandbox([] {
                  ::unsetenv("HOME");
                  return Deleting("/home/listed");
              }),
              kDenied);
}

TEST_F(DeleteFolder, RefusesAHomeThatIsNamedThroughALink) {
    EXPECT_EQ(InSandbox([] {
                  fs::create_directory_symlink("/home/pos", "/home/me");
                  ::setenv("HOME", "/home/me/", 1);
                  return Deleting("/home/pos");
              }),
              kDenied);
}

TEST_F(DeleteFolder, RefusesWhatHoldsAHomeThatIsNamedThroughALink) {
    EXPECT_EQ(InSandbox([] {
                  fs::create_directory("/srv/work/a/me");
                  fs::create_directory_symlink("/srv/work/a/me", "/home/me");
                  ::setenv("HOME", "/home/me", 1);
                  return Deleting("/srv/work");
              }),
              kDenied);
}

TEST_F(DeleteFolder, RefusesEveryFolderThatHoldsOneOfThese) {
    for (const char* strPath : {"/home", "/opt", "/srv", "C:\\home\\", "/home/pos/.."}) {
        EXPECT_EQ(Refused(strPath), kDenied) << strPath;
    }
}

TEST_F(DeleteFolder, RefusesAHomeReachedThroughALinkAboveIt) {
    EXPECT_EQ(InSandbox([] {
                  fs::create_directory_symlink("/home", "/srv/homes");
                  return Deleting("/srv/homes/pos");
              }),
              kDenied);
}

TEST_F(DeleteFolder, TakesAFolderReachedThroughALinkAboveIt) {
    EXPECT_EQ(InSandbox([] {
                  fs::create_directory_symlink("/srv/work", "/srv/link");
                  const std::string strSaid = Deleting("/srv/link/a");
                  return strSaid + " " + Joined(Tree("/srv/work"));
              }),
              "nothing thrown, changed 1.txt");
}

TEST_F(DeleteFolder, RefusesALink) {
    for (const char* strPath : {"/srv/link", "/srv/link/", "/srv/link/.", "/srv/link//./"}) {
        EXPECT_EQ(InSandbox([&] {
                      fs::create_directory_symlink("/srv/work", "/srv/link");
                      return Deleting(strPath);
                  }),
                  kDenied)
            << strPath;
        fs::remove(root_ / "srv/link");
    }
}

TEST_F(DeleteFolder, RefusesAMountPointAndWhatHoldsOne) {
    for (const char* strPath : {"/srv/work/a/b", "/srv/work/a", "/srv/work"}) {
        EXPECT_EQ(InSandbox([&] {
                      MountMemory("/srv/work/a/b");
                      WriteFile("/srv/work/a/b/inside", "x");
                      return Deleting(strPath);
                  }),
                  kDenied)
            << strPath;
    }
}

TEST_F(DeleteFolder, RefusesAMountPointOfTheSameDevice) {
    for (const char* strPath : {"/srv/work/a/b", "/srv/work"}) {
        EXPECT_EQ(InSandbox([&] {
                      MountAgain("/srv/keep", "/srv/work/a/b");
                      return Deleting(strPath);
                  }),
                  kDenied)
            << strPath;
    }
}

TEST_F(DeleteFolder, RefusesAMountPointWithABlankInItsName) {
    EXPECT_EQ(InSandbox([] {
                  MountAgain("/srv/keep", "/srv/work/usb stick");
                  return Deleting("/srv/work");
              }),
              kDenied);
}

TEST_F(DeleteFolder, RefusesMountPointsWithoutAListOfThemToo) {
    for (const char* strPath : {"/srv/work/a/b", "/srv/work/a", "/srv/work"}) {
        EXPECT_EQ(InSandbox(
                      [&] {
                          MountMemory("/srv/work/a/b");
                          WriteFile("/srv/work/a/b/inside", "x");
                          return Deleting(strPath);
                      },
                      false),
                  kDenied)
            << strPath;
    }
    EXPECT_EQ(InSandbox([] { return Deleting("/srv/work/a"); }, false), "nothing thrown, changed");
}

TEST_F(DeleteFolder, RefusesAHomeThatShowsUnderAnotherName) {
    EXPECT_EQ(InSandbox([] {
                  MountAgain("/home", "/srv/again");
                  return Deleting("/srv/again/pos");
              }),
              kDenied);
    EXPECT_EQ(InSandbox([] {
                  fs::create_directories("/outer/home/pos/x");
                  ::setenv("HOME", "/outer/home/pos", 1);
                  MountAgain("/outer", "/srv/again");
                  return Deleting("/srv/again/home");
              }),
              kDenied);
}

TEST_F(DeleteFolder, RefusesATreeWithAnEntryWithoutAWriteBit) {
    EXPECT_EQ(InSandbox([] {
                  ::chmod("/srv/work/a/2.txt", 0444);
                  return Deleting("/srv/work");
              }),
              kDenied);
    fs::permissions(root_ / "srv/work/a/2.txt", fs::perms(0644));
    EXPECT_EQ(InSandbox([] {
                  ::chmod("/srv/work/a/b", 0555);
                  return Deleting("/srv/work");
              }),
              kDenied);
    fs::permissions(root_ / "srv/work/a/b", fs::perms(0755));
    EXPECT_EQ(InSandbox([] {
                  ::chmod("/srv/work", 0555);
                  const std::string strSaid = Deleting("/srv/work");
                  ::chmod("/srv/work", 0755);
                  return strSaid;
              }),
              kDenied);
}

TEST_F(DeleteFolder, AnyOneWriteBitWillDo) {
    EXPECT_EQ(InSandbox([] {
                  ::chmod("/srv/work/1.txt", 0422);
                  ::chmod("/srv/work/a/2.txt", 0002);
                  return Deleting("/srv/work");
              }),
              "nothing thrown, changed");
}

TEST_F(DeleteFolder, RefusesATreeWithAFolderThatCannotBeChanged) {
    EXPECT_EQ(InSandbox([] {
                  ::chmod("/srv/work/a", 0575); // writable, but not by its owner
                  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
                  __user_cap_data_struct none[2] = {};
                  if (::syscall(SYS_capset, &header, none) != 0) {
                      return std::string("can't give up the rights of root");
                  }
                  LinuxFiles files(kDrives, "/opt/brennik");
                  const std::string strSaid = FailureOf([&] { files.DeleteFolder("/srv/work"); });
                  const bool bThere = fs::exists("/srv/work/1.txt") && fs::exists("/srv/work/a/b");
                  ::chmod("/srv/work/a", 0755); // so that the folder can be taken away
                  return strSaid + (bThere ? ", all there" : ", changed");
              }),
              kDenied);
}

TEST_F(DeleteFolder, TakesNoWildcards) {
    EXPECT_EQ(Refused("/srv/w*"), kNoPath);
    EXPECT_EQ(Refused("/srv/wor?"), kNoPath);
    EXPECT_EQ(Refused("/srv/*"), kNoPath);
    EXPECT_EQ(InSandbox([] {
                  fs::create_directory("/srv/w*");
                  const std::string strSaid = Deleting("/srv/w*");
                  return strSaid + " " + Joined(Tree("/srv/work"));
              }),
              "nothing thrown, changed 1.txt a/ a/2.txt a/b/");
}

TEST_F(DeleteFolder, NamesBeginAtTheCurrentFolderUnlessTheyAreWhole) {
    EXPECT_EQ(InSandbox([] {
                  fs::current_path("/srv");
                  const std::string strSaid = Deleting("work\\a");
                  return strSaid + " " + Joined(Tree("/srv/work"));
              }),
              "nothing thrown, changed 1.txt");
    EXPECT_EQ(InSandbox([] {
                  fs::current_path("/home/pos");
                  return Deleting(".");
              }),
              kDenied);
}

TEST_F(DeleteFolder, ADeepTreeNeedsFewDescriptors) {
    EXPECT_EQ(
        InSandbox([]() -> std::string {
            MountMemory("/memory", "100m");
            fs::create_directory("/memory/work");
            int nAt = ::open("/memory/work", O_RDONLY | O_DIRECTORY);
            for (int n = 0; n < 3000; ++n) {
                if (::mkdirat(nAt, "a-level-below", 0777) != 0) {
                    return "can't build it";
                }
                const int nNext = ::openat(nAt, "a-level-below", O_RDONLY | O_DIRECTORY);
                ::close(nAt);
                nAt = nNext;
            }
            ::close(nAt);
            // As many as are open now, and six more.
            const int nFree = ::open("/", O_RDONLY);
            ::close(nFree);
            const rlimit limit{static_cast<rlim_t>(nFree) + 6, static_cast<rlim_t>(nFree) + 6};
            ::setrlimit(RLIMIT_NOFILE, &limit);
            LinuxFiles files(kDrives, "/opt/brennik");
            const std::string strSaid = FailureOf([&] { files.DeleteFolder("/memory/work"); });
            return strSaid + " " + Gone("/memory/work");
        }),
        "nothing thrown gone");
}

TEST_F(DeleteFolder, AFolderOfManyEntriesGoes) {
    EXPECT_EQ(InSandbox([] {
                  MountMemory("/memory", "100m");
                  fs::create_directory("/memory/work");
                  for (int n = 0; n < 3000; ++n) {
                      WriteFile("/memory/work/file" + std::to_string(n), "");
                      fs::create_directory("/memory/work/folder" + std::to_string(n));
                  }
                  LinuxFiles files(kDrives, "/opt/brennik");
                  const std::string strSaid =
                      FailureOf([&] { files.DeleteFolder("/memory/work"); });
                  return strSaid + " " + Gone("/memory/work");
              }),
              "nothing thrown gone");
}

} // namespace
} // namespace brennik
