#include "bench/Processes.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brennik::bench {

namespace {

constexpr int kChildFailed = 1;

pid_t Fork() {
    std::fflush(nullptr); // or each child would print it again
    const pid_t child = ::fork();
    if (child < 0)
        Fail(std::string("fork: ") + std::strerror(errno));
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::alarm(kLongestChildSeconds);
    }
    return child;
}

} // namespace

int64_t Now() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

void* SharedMemory(size_t nBytes) {
    void* memory =
        ::mmap(nullptr, nBytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        Fail(std::string("mmap: ") + std::strerror(errno));
    return memory;
}

pid_t StartChild(const std::function<int()>& body) {
    const pid_t child = Fork();
    if (child == 0)
        ::_exit(body());
    return child;
}

pid_t StartProgram(const std::vector<std::string>& arguments, int64_t* lExecAt, int nOutput) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& strArgument : arguments)
        argv.push_back(const_cast<char*>(strArgument.c_str()));
    argv.push_back(nullptr);
    const pid_t child = Fork();
    if (child != 0)
        return child;
    const int nOut = nOutput >= 0 ? nOutput : ::open("/dev/null", O_WRONLY);
    ::dup2(nOut, STDOUT_FILENO);
    if (lExecAt != nullptr)
        *lExecAt = Now();
    ::execv(argv[0], argv.data());
    std::fprintf(stderr, "%s: %s\n", argv[0], std::strerror(errno));
    ::_exit(kChildFailed);
}

pid_t StartAnnouncing(const std::vector<std::string>& arguments, std::string& strLine) {
    int ends[2];
    if (::pipe(ends) != 0)
        Fail("pipe");
    const pid_t child = StartProgram(arguments, nullptr, ends[1]);
    ::close(ends[1]);
    FILE* output = ::fdopen(ends[0], "r");
    char line[4096] = "";
    strLine.clear();
    if (std::fgets(line, sizeof line, output) != nullptr)
        strLine.assign(line, std::strcspn(line, "\n"));
    std::fclose(output);
    return child;
}

ChildEnd WaitFor(pid_t child) {
    int nStatus = 0;
    rusage usage{};
    while (::wait4(child, &nStatus, 0, &usage) < 0) {
        if (errno != EINTR)
            Fail(std::string("wait4: ") + std::strerror(errno));
    }
    const auto nanoseconds = [](const timeval& time) {
        return int64_t{time.tv_sec} * 1000000000 + time.tv_usec * 1000;
    };
    return {WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0, usage.ru_maxrss, Now(),
            nanoseconds(usage.ru_utime) + nanoseconds(usage.ru_stime)};
}

void StopChild(pid_t child) {
    ::kill(child, SIGTERM);
    static_cast<void>(WaitFor(child)); // how it ends is its own business
}

void Fail(const std::string& strMessage) {
    std::fprintf(stderr, "%s\n", strMessage.c_str());
    std::exit(kChildFailed);
}

} // namespace brennik::bench
