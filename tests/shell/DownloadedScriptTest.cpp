#include "tests/shell/ShellWorld.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using Strings = std::vector<std::string>;

class DownloadedScript : public shell::ShellTest {
  protected:
    DownloadedScript() {
        oConfig = std::make_unique<TBrennikClientConfig>();
        oConfig->bExecuteScriptFile(true);
        oConfig->strScriptFileName("go.sh");
        oConfig->strLogFilePath("/log");
        oConfig->strLogFileName("session.log");
        oConfig->bLoggingEnabled(true);
        host.files.Put("C:\\srv\\pos\\go.sh", "#!/bin/sh\n");
    }
    static constexpr const char* kStart = "INFO   : Starting downloaded script file processing";
    static constexpr const char* kEnd = "INFO   : Finished downloaded script file processing";
};

TEST_F(DownloadedScript, StartsTheScriptInItsFolderAndWaits) {
    host.processes.SetRunTime(90000000);
    const auto begin = host.Now();
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_EQ(host.processes.calls,
              (Strings{"ChangeDrive C", "ChangeDirectory C:\\srv\\pos\\",
                       "StartHidden C:\\srv\\pos\\go.sh", "WaitForExit 5001"}));
    EXPECT_GE(host.Now() - begin, 90000000);
    EXPECT_EQ(Log(), (Strings{kStart, "INFO   : Client configured script filename=go.sh",
                              "INFO   : About to shell C:\\srv\\pos\\go.sh", kEnd}));
}

TEST_F(DownloadedScript, AddsTheMissingBackslash) {
    RunDownloadedScript("C:\\srv\\pos");
    EXPECT_EQ(host.processes.calls[2], "StartHidden C:\\srv\\pos\\go.sh");
}

TEST_F(DownloadedScript, DoesNothingWhenNotAskedFor) {
    oConfig->bExecuteScriptFile(false);
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_TRUE(Log().empty());
    EXPECT_TRUE(host.processes.calls.empty());
}

TEST_F(DownloadedScript, LogsAnEmptyNameAndThenTheEnd) {
    oConfig->strScriptFileName("");
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_EQ(Log(), (Strings{kStart, "INFO   : Client configured script filename=",
                              "ERROR  : Invalid script filename - aborting script file processing.",
                              kEnd}));
    EXPECT_TRUE(host.processes.calls.empty());
}

TEST_F(DownloadedScript, LogsAMissingScriptAndThenTheEnd) {
    oConfig->strScriptFileName("none.sh");
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_EQ(Log(), (Strings{kStart, "INFO   : Client configured script filename=none.sh",
                              "ERROR  : Script file not found - aborting script file processing. "
                              "[C:\\srv\\pos\\none.sh]",
                              kEnd}));
    EXPECT_TRUE(host.processes.calls.empty());
}

TEST_F(DownloadedScript, DoesNotFindAScriptInADriveOrGroupFolder) {
    host.files.Remove("/srv/pos/go.sh");
    host.files.Put("/srv/pos/F/go.sh", "");
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_TRUE(host.processes.calls.empty());
}

TEST_F(DownloadedScript, StartsNothingInAFolderWithoutADrive) {
    RunDownloadedScript("/srv/pos\\");
    EXPECT_EQ(Log(), (Strings{kStart, "INFO   : Client configured script filename=go.sh",
                              "INFO   : About to shell /srv/pos\\go.sh",
                              "ERROR  : Unable to extract drive letter from folder. "
                              "[strFolder=/srv/pos\\]",
                              kEnd}));
    EXPECT_TRUE(host.processes.calls.empty());
}

TEST_F(DownloadedScript, LogsADriveThatCannotBeChangedTo) {
    host.FailNext(world::Op::ChangeDrive);
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_EQ(Log()[3], "ERROR  : ChangeDriveToBaseFolderDrive() Failed. "
                        "[strFolder=C:\\srv\\pos\\] - Path not found");
    EXPECT_EQ(Log()[4], kEnd);
    EXPECT_EQ(host.processes.calls, Strings{"ChangeDrive C"});
}

TEST_F(DownloadedScript, LogsADirectoryThatCannotBeChangedTo) {
    host.FailNext(world::Op::ChangeDirectory);
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_EQ(Log()[3],
              "ERROR  : ChangeDirectory() Failed. [strFolder=C:\\srv\\pos\\] - Path not found");
    EXPECT_EQ(Log()[4], kEnd);
    EXPECT_EQ(host.processes.calls, (Strings{"ChangeDrive C", "ChangeDirectory C:\\srv\\pos\\"}));
}

TEST_F(DownloadedScript, RunsWithLoggingOff) {
    oConfig->bLoggingEnabled(false);
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_EQ(host.processes.calls,
              (Strings{"ChangeDrive C", "ChangeDirectory C:\\srv\\pos\\",
                       "StartHidden C:\\srv\\pos\\go.sh", "WaitForExit 5001"}));
    EXPECT_FALSE(host.files.Exists("/log/session.log"));
}

TEST_F(DownloadedScript, TakesAnEmptyFolderAsTheRootWhichHasNoDrive) {
    RunDownloadedScript("");
    EXPECT_EQ(Log()[2],
              "ERROR  : Script file not found - aborting script file processing. [\\go.sh]");
    EXPECT_EQ(Log()[3], kEnd);
    host.files.Remove("/log/session.log");
    host.files.Put("/go.sh", "");
    RunDownloadedScript("");
    EXPECT_EQ(Log()[2], "INFO   : About to shell \\go.sh");
    EXPECT_EQ(Log()[3], "ERROR  : Unable to extract drive letter from folder. [strFolder=\\]");
    EXPECT_TRUE(host.processes.calls.empty());
}

TEST_F(DownloadedScript, TakesAWildcardThatMatchesAsAFileThatIsThere) {
    oConfig->strScriptFileName("*.sh");
    RunDownloadedScript("C:\\srv\\pos\\");
    // Only the start finds out that no file has that name, and a failed start is dropped.
    ASSERT_EQ(host.processes.calls.size(), 3u);
    EXPECT_EQ(host.processes.calls[2], "StartHidden C:\\srv\\pos\\*.sh");
    EXPECT_EQ(Log().back(), "INFO   : About to shell C:\\srv\\pos\\*.sh");
    host.processes.calls.clear();
    oConfig->strScriptFileName("*.cmd");
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_TRUE(host.processes.calls.empty()) << "none matches";
}

TEST_F(DownloadedScript, DropsAFailedStartWithoutAWord) {
    host.FailNext(world::Op::StartHidden);
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_EQ(Log().size(), 3u);
    EXPECT_EQ(Log().back(), "INFO   : About to shell C:\\srv\\pos\\go.sh") << "not even the end";
}

TEST_F(DownloadedScript, GivesANameWithBlanksAsItStands) {
    oConfig->strScriptFileName("go now.sh");
    host.files.Put("C:\\srv\\pos\\go now.sh", "");
    host.files.Put("C:\\srv\\pos\\go", "");
    RunDownloadedScript("C:\\srv\\pos\\");
    EXPECT_EQ(host.processes.calls[2], "StartHidden C:\\srv\\pos\\go now.sh");
}

} // namespace
} // namespace brennik
