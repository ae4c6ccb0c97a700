#include "tests/system/Sandbox.h"

#include "platform/RuntimeFailure.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <sstream>
#include <stdexcept>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brennik::system_tests {

namespace {

constexpr suseconds_t kInterruptionMicroseconds = 3000;

volatile std::sig_atomic_t nInterruptions = 0;

void Require(bool bDone, const char* strWhat) {
    if (!bDone) {
        throw std::runtime_error(std::string(strWhat) + ": " + std::strerror(errno));
    }
}

void WriteControl(const char* strPath, const std::string& strText) {
    const int nFile = ::open(strPath, O_WRONLY | O_CLOEXEC);
    const bool bDone = nFile >= 0 && ::write(nFile, strText.data(), strText.size()) ==
                                         static_cast<ssize_t>(strText.size());
    ::close(nFile);
    Require(bDone, strPath);
}

/// An ordinary user becomes root of a world of its own; root needs only the mounts apart.
void EnterNamespaces() {
    const uid_t nUser = ::geteuid();
    const gid_t nGroup = ::getegid();
    if (nUser == 0) {
        Require(::unshare(CLONE_NEWNS) == 0, "unshare");
        return;
    }
    Require(::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0, "unshare");
    WriteControl("/proc/self/setgroups", "deny");
    WriteControl("/proc/self/uid_map", "0 " + std::to_string(nUser) + " 1");
    WriteControl("/proc/self/gid_map", "0 " + std::to_string(nGroup) + " 1");
}

void EnterSandbox(const std::string& strRoot, bool bProc) {
    EnterNamespaces();
    Require(::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private mounts");
    // The new root is a mount of its own, as a real one is.
    Require(::mount(strRoot.c_str(), strRoot.c_str(), nullptr, MS_BIND, nullptr) == 0, "bind");
    if (bProc) {
        const std::string strProc = strRoot + "/proc";
        std::filesystem::create_directory(strProc);
        Require(::mount("/proc", strProc.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0, "proc");
    }
    Require(::chroot(strRoot.c_str()) == 0 && ::chdir("/") == 0, "chroot");
}

std::string Guarded(const std::function<std::string()>& body) {
    try {
        return body();
    } catch (const std::exception& failure) {
        return std::string("threw: ") + failure.what();
    }
}

[[noreturn]] void ReportAndExit(int nPipe, const std::string& strReport) {
    size_t nSent = 0;
    while (nSent < strReport.size()) {
        const ssize_t nWritten = ::write(nPipe, strReport.data() + nSent, strReport.size() - nSent);
        if (nWritten <= 0) {
            ::_exit(3);
        }
        nSent += static_cast<size_t>(nWritten);
    }
    ::_exit(0);
}

} // namespace

TempFolder::TempFolder() {
    std::string strPattern = (std::filesystem::temp_directory_path() / "brennik-XXXXXX").string();
    Require(::mkdtemp(strPattern.data()) != nullptr, "mkdtemp");
    strPath_ = std::filesystem::canonical(strPattern).string();
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(strPath_, ignored);
}

ChildOutcome RunInChild(const std::function<std::string()>& body) {
    int ends[2];
    Require(::pipe2(ends, O_CLOEXEC) == 0, "pipe");
    const pid_t nChild = ::fork();
    Require(nChild >= 0, "fork");
    if (nChild == 0) {
        // Out of the way of bodies that close the standard descriptors.
        const int nPipe = ::fcntl(ends[1], F_DUPFD_CLOEXEC, 100);
        ::close(ends[0]);
        ::close(ends[1]);
        ReportAndExit(nPipe, Guarded(body));
    }
    ::close(ends[1]);
    ChildOutcome outcome;
    char buffer[4096];
    for (;;) {
        const ssize_t nRead = ::read(ends[0], buffer, sizeof buffer);
        if (nRead > 0) {
            outcome.strReport.append(buffer, static_cast<size_t>(nRead));
        } else if (nRead == 0 || errno != EINTR) {
            break;
        }
    }
    ::close(ends[0]);
    int nStatus = 0;
    while (::waitpid(nChild, &nStatus, 0) < 0 && errno == EINTR) {
    }
    outcome.nExit = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
    outcome.nSignal = WIFSIGNALED(nStatus) ? WTERMSIG(nStatus) : 0;
    return outcome;
}

std::string ReportOfChild(const std::function<std::string()>& body) {
    const ChildOutcome outcome = RunInChild(body);
    if (outcome.nSignal != 0) {
        return "ended by signal " + std::to_string(outcome.nSignal);
    }
    return outcome.nExit == 0 ? outcome.strReport : "exit " + std::to_string(outcome.nExit);
}

std::string ReportOfSandbox(const TempFolder& root, bool bProc,
                            const std::function<std::string()>& body) {
    return ReportOfChild([&]() -> std::string {
        try {
            EnterSandbox(root.strPath(), bProc);
        } catch (const std::exception& failure) {
            return std::string("no sandbox: ") + failure.what();
        }
        return Guarded(body);
    });
}

void MountMemory(const std::string& strFolder, const std::string& strSize) {
    std::filesystem::create_directories(strFolder);
    const std::string strOptions = "size=" + strSize;
    Require(::mount("none", strFolder.c_str(), "tmpfs", 0, strOptions.c_str()) == 0, "tmpfs");
}

void MountAgain(const std::string& strFrom, const std::string& strTo) {
    std::filesystem::create_directories(strTo);
    Require(::mount(strFrom.c_str(), strTo.c_str(), nullptr, MS_BIND, nullptr) == 0, "bind");
}

void WriteFile(const std::string& strPath, std::string_view strContent) {
    std::ofstream file(strPath, std::ios::binary | std::ios::trunc);
    file.write(strContent.data(), static_cast<std::streamsize>(strContent.size()));
    file.close();
    Require(file.good(), strPath.c_str());
}

std::string ReadFile(const std::string& strPath) {
    std::ifstream file(strPath, std::ios::binary);
    if (!file) {
        return "(none)";
    }
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

std::vector<std::string> Tree(const std::string& strFolder) {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(strFolder)) {
        std::string strName =
            entry.path().string().substr(strFolder == "/" ? 1 : strFolder.size() + 1);
        if (entry.is_symlink()) {
            strName += "@";
        } else if (entry.is_directory()) {
            strName += "/";
        }
        found.push_back(strName);
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string Joined(const std::vector<std::string>& words) {
    std::string strText;
    for (const std::string& strWord : words) {
        strText += (strText.empty() ? "" : " ") + strWord;
    }
    return strText;
}

std::string FailureOf(const std::function<void()>& body) {
    try {
        body();
    } catch (const RuntimeFailure& failure) {
        return failure.what();
    }
    return "nothing thrown";
}

Interruptions::Interruptions() {
    struct sigaction action {};
    action.sa_handler = [](int) { nInterruptions = nInterruptions + 1; };
    sigemptyset(&action.sa_mask); // without SA_RESTART: calls do fail with EINTR
    sigaction(SIGALRM, &action, nullptr);
    itimerval timer{};
    timer.it_interval.tv_usec = kInterruptionMicroseconds;
    timer.it_value.tv_usec = kInterruptionMicroseconds;
    setitimer(ITIMER_REAL, &timer, nullptr);
}

Interruptions::~Interruptions() {
    const itimerval none{};
    setitimer(ITIMER_REAL, &none, nullptr);
    std::signal(SIGALRM, SIG_DFL);
}

int Interruptions::Count() {
    return nInterruptions;
}

void Interruptions::Await(int nMore) {
    const int nUntil = nInterruptions + nMore;
    while (nInterruptions < nUntil) {
        const timespec pause{0, 1000000};
        nanosleep(&pause, nullptr);
    }
}

long long MonotonicNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

} // namespace brennik::system_tests
