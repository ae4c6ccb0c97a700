#include "platform/ProcessStart.h"

#include "platform/Descriptor.h"
#include "platform/LinuxErrors.h"

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brennik {

namespace {

constexpr int kFirstOwnDescriptor = 3;
constexpr int kExecFailed = 127;

std::vector<char*> ArgumentsOf(const ProgramWords& words) {
    std::vector<char*> arguments;
    for (const std::string& strWord : words) {
        arguments.push_back(const_cast<char*>(strWord.c_str())); // exec only reads them
    }
    arguments.push_back(nullptr);
    return arguments;
}

/// Moves a descriptor out of the way of the standard ones, close-on-exec.
Descriptor AboveStandard(Descriptor descriptor) {
    if (descriptor.IsOpen() && descriptor.Get() < kFirstOwnDescriptor) {
        return Descriptor(::fcntl(descriptor.Get(), F_DUPFD_CLOEXEC, kFirstOwnDescriptor));
    }
    return descriptor;
}

struct Pipe {
    Descriptor reading;
    Descriptor writing;
};

Pipe OpenPipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        ThrowErrno();
    }
    Pipe pipe{AboveStandard(Descriptor(ends[0])), AboveStandard(Descriptor(ends[1]))};
    if (!pipe.reading.IsOpen() || !pipe.writing.IsOpen()) {
        ThrowErrno();
    }
    return pipe;
}

/// Runs in the new process: only calls that are safe between fork and exec.
[[noreturn]] void BecomeProgram(int nNull, int nReport, char* const* arguments,
                                char* const* shellArguments) {
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    for (int nSignal = 1; nSignal < NSIG; ++nSignal) {
        static_cast<void>(sigaction(nSignal, &standard, nullptr)); // two of them can't be set
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    if (::dup2(nNull, STDIN_FILENO) >= 0 && ::dup2(nNull, STDOUT_FILENO) >= 0 &&
        ::dup2(nNull, STDERR_FILENO) >= 0) {
        ::execv(arguments[0], arguments);
        if (errno == ENOEXEC) {
            ::execv(shellArguments[0], shellArguments);
        }
    }
    const int nError = errno;
    static_cast<void>(!::write(nReport, &nError, sizeof nError)); // nobody else to tell
    ::_exit(kExecFailed);
}

/// The errno of a failed exec, or 0 once the program runs.
int ReportOf(const Descriptor& reading) {
    int nError = 0;
    const ssize_t nRead = Resumed([&] { return ::read(reading.Get(), &nError, sizeof nError); });
    return nRead == static_cast<ssize_t>(sizeof nError) ? nError : 0;
}

} // namespace

int StartProgram(const ProgramWords& words) {
    ProgramWords shellWords = words;
    shellWords.insert(shellWords.begin(), "/bin/sh");
    const auto arguments = ArgumentsOf(words);
    const auto shellArguments = ArgumentsOf(shellWords);
    const Descriptor null = AboveStandard(OpenDescriptor("/dev/null", O_RDWR));
    if (!null.IsOpen()) {
        ThrowErrno();
    }
    Pipe pipe = OpenPipe();

    // No signal may reach our handlers in the new process before they are gone from it.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t nProcess = ::fork();
    if (nProcess == 0) {
        BecomeProgram(null.Get(), pipe.writing.Get(), arguments.data(), shellArguments.data());
    }
    const int nForkError = errno;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (nProcess < 0) {
        throw RuntimeFailure(FailureKindOf(nForkError));
    }
    static_cast<void>(pipe.writing.Close()); // so that the end of the pipe tells of the exec
    const int nError = ReportOf(pipe.reading);
    if (nError != 0) {
        static_cast<void>(Resumed([&] { return ::waitpid(nProcess, nullptr, 0); })); // it is gone
        throw RuntimeFailure(FailureKindOf(nError));
    }
    return nProcess;
}

} // namespace brennik
