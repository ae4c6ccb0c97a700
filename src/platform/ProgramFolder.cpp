#include "platform/ProgramFolder.h"

#include "platform/HomeFolders.h"
#include "platform/Paths.h"

#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace brennik {

namespace {

constexpr const char* kDataFolder = "/brennikclient";
constexpr const char* kDefaultDataHome = "/.local/share";

bool IsAbsolute(const std::string& strPath) {
    return !strPath.empty() && strPath.front() == '/';
}

std::string Environment(const char* strName) {
    const char* strValue = std::getenv(strName);
    return strValue != nullptr ? strValue : "";
}

std::string LinkTarget(const char* strLink) {
    char buffer[PATH_MAX];
    const ssize_t nLength = ::readlink(strLink, buffer, sizeof buffer);
    return nLength > 0 ? std::string(buffer, static_cast<size_t>(nLength)) : std::string();
}

} // namespace

ProgramFolderChoice ChooseProgramFolder(const ProgramFolderSources& sources) {
    if (!sources.strBrennikHome.empty()) {
        const std::string strBase =
            IsAbsolute(sources.strBrennikHome) ? "" : sources.strCurrentFolder + "/";
        return {WithoutEndSeparators(strBase + sources.strBrennikHome), false};
    }
    if (sources.strExecutable == sources.strInstalledProgram) {
        // A relative XDG_DATA_HOME is no valid one.
        if (IsAbsolute(sources.strDataHome)) {
            return {WithoutEndSeparators(sources.strDataHome) + kDataFolder, true};
        }
        if (IsAbsolute(sources.strHome)) {
            return {WithoutEndSeparators(sources.strHome) + kDefaultDataHome + kDataFolder, true};
        }
    }
    const size_t nName = sources.strExecutable.rfind('/');
    if (nName == std::string::npos) {
        return {sources.strCurrentFolder, false};
    }
    return {WithoutEndSeparators(sources.strExecutable.substr(0, nName + 1)), false};
}

std::string ExecutableFile() {
    return LinkTarget("/proc/self/exe");
}

ProgramFolderChoice CurrentProgramFolder() {
    ProgramFolderSources sources;
    sources.strBrennikHome = Environment("BRENNIK_HOME");
    sources.strExecutable = ExecutableFile();
    sources.strInstalledProgram = BRENNIK_INSTALLED_PROGRAM;
    sources.strDataHome = Environment("XDG_DATA_HOME");
    if (sources.strExecutable == sources.strInstalledProgram) {
        const auto homes = HomeFolders();
        sources.strHome = homes.empty() ? "" : homes.front();
    }
    char buffer[PATH_MAX];
    sources.strCurrentFolder = ::getcwd(buffer, sizeof buffer) != nullptr ? buffer : "/";
    return ChooseProgramFolder(sources);
}

} // namespace brennik
