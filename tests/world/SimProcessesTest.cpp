#include "tests/world/SimProcesses.h"

#include "tests/world/SimHost.h"

namespace brennik::world {
namespace {

class SimProcessesTest : public WorldTest {
  protected:
    SimProcesses& processes = host.processes;

    template <class Body>
    static std::optional<FailureKind> FailureOf(Body&& body) {
        try {
            body();
        } catch (const RuntimeFailure& failure) {
            return failure.Kind();
        }
        return std::nullopt;
    }
};

TEST_F(SimProcessesTest, HasFixedIdsAndAProgramFolder) {
    EXPECT_EQ(processes.GetCurrentProcessId(), 2044U);
    EXPECT_EQ(processes.GetCurrentThreadId(), 3172U);
    EXPECT_EQ(processes.ProgramFolder(), "/opt/brennik");
    processes.SetProgramFolder("/srv/brennik");
    host.files.MakeFolder("/srv/brennik");
    EXPECT_EQ(processes.ProgramFolder(), "/srv/brennik");
    EXPECT_EQ(FailureOf([&] { host.files.DeleteFolder("/srv"); }), FailureKind::PermissionDenied);
}

TEST_F(SimProcessesTest, RecordsWhatWasAskedForInOrder) {
    host.files.Put("C:\\pos\\run.sh", "");
    processes.ChangeDrive("C");
    processes.ChangeDirectory("C:\\pos\\");
    const int32_t lProcess = processes.StartHidden("C:\\pos\\run.sh now");
    processes.WaitForExit(lProcess);
    EXPECT_EQ(processes.calls,
              (std::vector<std::string>{"ChangeDrive C", "ChangeDirectory C:\\pos\\",
                                        "StartHidden C:\\pos\\run.sh now",
                                        "WaitForExit " + std::to_string(lProcess)}));
    EXPECT_EQ(host.files.CurrentFolder(), "/pos");
}

TEST_F(SimProcessesTest, RunsTheCallbackAndWaitsForTheEnd) {
    host.files.Put("/run.sh", "");
    processes.SetRunTime(3 * kSecond);
    std::string strRun;
    processes.OnRun = [&](const std::string& strCommandLine) { strRun = strCommandLine; };
    const int32_t lProcess = processes.StartHidden("/run.sh");
    EXPECT_EQ(strRun, "/run.sh");
    processes.WaitForExit(lProcess);
    EXPECT_EQ(host.Now(), 3 * kSecond + 1);
    processes.WaitForExit(lProcess); // long gone
    EXPECT_EQ(host.Now(), 3 * kSecond + 2);
}

TEST_F(SimProcessesTest, StartsOnlyWhatIsThere) {
    host.files.Put("/pos/my script.sh", "");
    EXPECT_EQ(FailureOf([&] { processes.StartHidden("/none.sh"); }), FailureKind::FileNotFound);
    EXPECT_EQ(FailureOf([&] { processes.StartHidden(""); }), FailureKind::FileNotFound);
    // Split at the blank, its first word is no file.
    EXPECT_EQ(FailureOf([&] { processes.StartHidden("/pos/my script.sh"); }),
              FailureKind::FileNotFound);
    EXPECT_EQ(processes.calls.back(), "StartHidden /pos/my script.sh");
}

TEST_F(SimProcessesTest, KnowsItsDrivesAndFolders) {
    EXPECT_EQ(FailureOf([&] { processes.ChangeDrive("c"); }), std::nullopt);
    EXPECT_EQ(FailureOf([&] { processes.ChangeDrive(""); }), std::nullopt);
    EXPECT_EQ(FailureOf([&] { processes.ChangeDrive("D"); }), FailureKind::PathNotFound);
    EXPECT_EQ(FailureOf([&] { processes.ChangeDirectory("C:\\none"); }), FailureKind::PathNotFound);
}

TEST_F(SimProcessesTest, TellsItsCurrentFolderAsANativePath) {
    EXPECT_EQ(processes.CurrentDirectory(), "/home/user");
    host.files.MakeFolder("/pos");
    processes.ChangeDirectory("C:\\pos\\");
    EXPECT_EQ(processes.CurrentDirectory(), "/pos");
    host.files.Remove("/pos");
    EXPECT_EQ(FailureOf([&] { processes.CurrentDirectory(); }), FailureKind::PathNotFound);
}

TEST_F(SimProcessesTest, EachCallCanFail) {
    host.files.Put("/run.sh", "");
    host.FailNext(Op::StartHidden);
    EXPECT_EQ(FailureOf([&] { processes.StartHidden("/run.sh"); }), FailureKind::FileNotFound);
    host.FailNext(Op::ChangeDrive);
    EXPECT_EQ(FailureOf([&] { processes.ChangeDrive("C"); }), FailureKind::PathNotFound);
    host.FailNext(Op::ChangeDirectory, {.kind = FailureKind::PermissionDenied});
    EXPECT_EQ(FailureOf([&] { processes.ChangeDirectory("/"); }), FailureKind::PermissionDenied);
    host.FailNext(Op::CurrentDirectory);
    EXPECT_EQ(FailureOf([&] { processes.CurrentDirectory(); }), FailureKind::PathNotFound);
    host.FailNext(Op::CurrentDirectory, {.kind = FailureKind::DeviceIoError});
    EXPECT_EQ(FailureOf([&] { processes.CurrentDirectory(); }), FailureKind::DeviceIoError);
}

} // namespace
} // namespace brennik::world
