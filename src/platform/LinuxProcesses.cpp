#include "platform/LinuxProcesses.h"

#include "platform/Descriptor.h"
#include "platform/LinuxErrors.h"
#include "platform/ProcessStart.h"
#include "platform/ScriptLine.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brennik {

namespace {

constexpr size_t kLongestScriptLine = 4096;
constexpr mode_t kExecuteBits = 0111;

ProgramWords WordsOf(const std::string& strCommandLine) {
    ProgramWords words;
    for (size_t nAt = 0; nAt < strCommandLine.size();) {
        const size_t nBlank = std::min(strCommandLine.find(' ', nAt), strCommandLine.size());
        if (nBlank > nAt) {
            words.push_back(strCommandLine.substr(nAt, nBlank - nAt));
        }
        nAt = nBlank + 1;
    }
    return words;
}

/// Puts the program in front that runs a script which can't run itself.
void AddInterpreter(ProgramWords& words) {
    const Descriptor file = OpenDescriptor(words.front(), O_RDONLY);
    if (!file.IsOpen()) {
        ThrowErrno();
    }
    char buffer[kLongestScriptLine];
    const ssize_t nRead = Resumed([&] { return ::read(file.Get(), buffer, sizeof buffer); });
    if (nRead < 0) {
        ThrowErrno();
    }
    const auto interpreter = InterpreterOf(std::string_view(buffer, static_cast<size_t>(nRead)))
                                 .value_or(ScriptInterpreter{"/bin/sh", ""});
    if (!interpreter.strArgument.empty()) {
        words.insert(words.begin(), interpreter.strArgument);
    }
    words.insert(words.begin(), interpreter.strProgram);
}

/// Makes a folder with all folders above it; a failure shows where it is used.
void MakeFolders(const std::string& strFolder) {
    for (size_t nEnd = strFolder.find('/', 1);; nEnd = strFolder.find('/', nEnd + 1)) {
        static_cast<void>(::mkdir(strFolder.substr(0, nEnd).c_str(), 0700)); // mostly there already
        if (nEnd == std::string::npos) {
            return;
        }
    }
}

} // namespace

LinuxProcesses::LinuxProcesses(DriveTable drives, ProgramFolderChoice programFolder)
    : drives_(std::move(drives)), programFolder_(std::move(programFolder)) {
}

uint32_t LinuxProcesses::GetCurrentProcessId() {
    return static_cast<uint32_t>(::getpid());
}

uint32_t LinuxProcesses::GetCurrentThreadId() {
    return static_cast<uint32_t>(::gettid());
}

int32_t LinuxProcesses::StartHidden(const std::string& strCommandLine) {
    ProgramWords words = WordsOf(strCommandLine);
    const auto strNative = words.empty() || strCommandLine.find('\0') != std::string::npos
                               ? std::nullopt
                               : NativePath(words.front(), drives_);
    if (!strNative) {
        throw RuntimeFailure(FailureKind::FileNotFound);
    }
    // With a folder in front no name is ever taken for an option of the shell.
    words.front() = strNative->find('/') == std::string::npos ? "./" + *strNative : *strNative;
    struct stat status {};
    if (::stat(words.front().c_str(), &status) != 0) {
        ThrowErrno();
    }
    if (!S_ISREG(status.st_mode)) {
        throw RuntimeFailure(FailureKind::PermissionDenied);
    }
    if ((status.st_mode & kExecuteBits) == 0) {
        AddInterpreter(words);
    }
    return StartProgram(words);
}

void LinuxProcesses::WaitForExit(int32_t lProcessId) {
    if (lProcessId < 1) {
        return;
    }
    if (Resumed([&] { return ::waitpid(lProcessId, nullptr, 0); }) == lProcessId) {
        return;
    }
    // No child of ours; the system can wait for others too.
    const Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, lProcessId, 0)));
    if (process.IsOpen()) {
        pollfd watched{process.Get(), POLLIN, 0};
        static_cast<void>(Resumed([&] { return ::poll(&watched, 1, -1); })); // it has ended then
    }
}

void LinuxProcesses::ChangeDrive(const std::string& strDrive) {
    if (!strDrive.empty() && !IsKnownDrive(strDrive.front(), drives_)) {
        throw RuntimeFailure(FailureKind::PathNotFound);
    }
}

std::string LinuxProcesses::CurrentDirectory() {
    const std::unique_ptr<char, void (*)(void*)> found(::getcwd(nullptr, 0), std::free);
    if (!found || std::strchr(found.get(), '\\') != nullptr) {
        throw RuntimeFailure(FailureKind::PathNotFound);
    }
    return found.get();
}

void LinuxProcesses::ChangeDirectory(const std::string& strFolder) {
    const auto strNative = NativePath(strFolder, drives_);
    if (!strNative || ::chdir(strNative->c_str()) != 0) {
        throw RuntimeFailure(FailureKind::PathNotFound);
    }
}

std::string LinuxProcesses::ProgramFolder() {
    if (programFolder_.bCreate) {
        MakeFolders(programFolder_.strFolder);
        programFolder_.bCreate = false;
    }
    return programFolder_.strFolder;
}

} // namespace brennik
