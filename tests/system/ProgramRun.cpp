#include "tests/system/ProgramRun.h"

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brennik::system_tests {

namespace {

constexpr long long kLimitNanoseconds = 60'000'000'000;
constexpr int kSignalBase = 256;

int StatusOf(int nWaitStatus) {
    return WIFSIGNALED(nWaitStatus) ? kSignalBase + WTERMSIG(nWaitStatus)
                                    : WEXITSTATUS(nWaitStatus);
}

} // namespace

bool Eventually(const std::function<bool()>& condition) {
    const long long end = MonotonicNanoseconds() + kLimitNanoseconds;
    while (!condition()) {
        if (MonotonicNanoseconds() > end)
            return false;
        poll(nullptr, 0, 1);
    }
    return true;
}

ProgramRun::ProgramRun(const std::vector<std::string>& arguments,
                       const std::function<void()>& inChild) {
    const std::string strOut = folder_ / "out";
    const std::string strErr = folder_ / "err";
    std::vector<char*> argv;
    for (const std::string& strArgument : arguments)
        argv.push_back(const_cast<char*>(strArgument.c_str()));
    argv.push_back(nullptr);
    // Opened first, so that a child that gives its rights away can still become the program.
    const int program = open(argv[0], O_RDONLY | O_CLOEXEC);
    pid_ = fork();
    if (pid_ == 0) {
        dup2(open("/dev/null", O_RDONLY), 0);
        dup2(open(strOut.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 1);
        dup2(open(strErr.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
        if (inChild)
            inChild();
        fexecve(program, argv.data(), environ);
        _exit(127);
    }
    close(program);
}

ProgramRun::~ProgramRun() {
    if (bRunning()) {
        Signal(SIGKILL);
        Wait();
    }
}

bool ProgramRun::bRunning() {
    if (pid_ < 0)
        return false;
    int nWaitStatus = 0;
    if (waitpid(pid_, &nWaitStatus, WNOHANG) != pid_)
        return true;
    nStatus_ = StatusOf(nWaitStatus);
    pid_ = -1;
    return false;
}

int ProgramRun::Wait() {
    if (!Eventually([this] { return !bRunning(); })) {
        Signal(SIGKILL);
        waitpid(pid_, nullptr, 0);
        pid_ = -1;
        nStatus_ = -1;
    }
    return nStatus_;
}

void ProgramRun::Signal(int nSignal) const {
    if (pid_ > 0)
        kill(pid_, nSignal);
}

} // namespace brennik::system_tests
