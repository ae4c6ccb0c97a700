#include "config/ProfileLogging.h"
#include "config/TBrennikClientConfig.h"
#include "platform/Host.h"
#include "shell/BrennikClnt.h"
#include "support/AsciiText.h"
#include "support/Failure.h"
#include "support/FileSystem.h"
#include "support/TFLClientLog.h"

namespace brennik {

namespace {

// Reports a failure in the log of the script step; the prefix names the operation.
int32_t RunStep(const char* strPrefix, const std::string& strFolder, TFLClientLog& olog,
                int32_t (*step)(const std::string&, TFLClientLog&)) {
    return Guarded([&] { return step(strFolder, olog); },
                   [&](const std::string& strDescription) {
                       olog.Logit(strPrefix + ("() Failed. [strFolder=" + strFolder) + "] - " +
                                      strDescription,
                                  true);
                       return 1;
                   });
}

// Paths need no current drive here. What stays of the step is its check: a folder without ":\"
// can't be worked in, and the script isn't started.
int32_t ChangeDriveToBaseFolderDrive(const std::string& strFolder, TFLClientLog& olog) {
    return RunStep(
        "ChangeDriveToBaseFolderDrive", strFolder, olog,
        [](const std::string& strPath, TFLClientLog& log) {
            const size_t nColon = strPath.find(":\\");
            if (nColon == std::string::npos) {
                log.Logit("Unable to extract drive letter from folder. [strFolder=" + strPath + "]",
                          true);
                return 1;
            }
            CurrentHost().processes.ChangeDrive(strPath.substr(0, nColon));
            return 0;
        });
}

int32_t ChangeDirectory(const std::string& strFolder, TFLClientLog& olog) {
    return RunStep("ChangeDirectory", strFolder, olog,
                   [](const std::string& strPath, TFLClientLog&) {
                       CurrentHost().processes.ChangeDirectory(strPath);
                       return 0;
                   });
}

void WaitForProcess(int32_t lProcessId) {
    CurrentHost().processes.WaitForExit(lProcessId);
}

void RunScriptIn(const std::string& strBaseFolder, TFLClientLog& olog) {
    const std::string strScriptFileName = oConfig->strScriptFileName();
    olog.Logit("Client configured script filename=" + strScriptFileName, false);
    if (strScriptFileName.empty()) {
        olog.Logit("Invalid script filename - aborting script file processing.", true);
        return;
    }
    const std::string strFolder = WithTrailingBackslash(strBaseFolder);
    const std::string strPath = strFolder + strScriptFileName;
    FileSystem oFileSystem;
    if (!oFileSystem.FileExists(strPath)) {
        olog.Logit("Script file not found - aborting script file processing. [" + strPath + "]",
                   true);
        return;
    }
    olog.Logit("About to shell " + strPath, false);
    // The whole path is the command line, without quotes: a name with blanks is split there.
    if (ChangeDriveToBaseFolderDrive(strFolder, olog) == 0 && ChangeDirectory(strFolder, olog) == 0)
        WaitForProcess(CurrentHost().processes.StartHidden(strPath));
}

} // namespace

void RunDownloadedScript(const std::string& strFolder) {
    // Whatever else fails here, the start of the script among it, is dropped without a word.
    Quietly([&] {
        if (!oConfig->bExecuteScriptFile())
            return;
        TFLClientLog olog;
        InitialiseLoggingFromProfile(olog, *oConfig);
        olog.Logit("Starting downloaded script file processing", false);
        RunScriptIn(strFolder, olog);
        olog.Logit("Finished downloaded script file processing", false);
    });
}

} // namespace brennik
