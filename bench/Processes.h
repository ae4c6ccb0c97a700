// The child processes of a measurement: started, bounded in time, waited for with what they used.
// Each end of a measurement is a process of its own, as the two ends of a real session are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
#include <string>
#include <sys/types.h>
#include <vector>

namespace brennik::bench {

/// Nanoseconds of the monotonic clock, comparable between processes.
int64_t Now();

/// Zeroed memory that all children share with their parent, for as long as it lives.
void* SharedMemory(size_t nBytes);

/// One object in such memory.
template <class Object>
Object& SharedBetweenProcesses() {
    return *new (SharedMemory(sizeof(Object))) Object();
}

/// No child of a measurement lives longer.
inline constexpr unsigned kLongestChildSeconds = 120;

/// Runs the body in a child, whose exit status is the body's result.
pid_t StartChild(const std::function<int()>& body);

/// Runs a program in a child; lExecAt (shared between processes, or null) is set just before.
/// Its standard output goes to nOutput, or nowhere with -1.
pid_t StartProgram(const std::vector<std::string>& arguments, int64_t* lExecAt = nullptr,
                   int nOutput = -1);

/// The same, and waits for the first line that it prints, which is given without its line end;
/// empty when it ends without one.
pid_t StartAnnouncing(const std::vector<std::string>& arguments, std::string& strLine);

struct ChildEnd {
    bool bGood = false;          ///< it ended by itself with status 0
    int64_t lPeakKiB = 0;        ///< the most memory it held at any moment
    int64_t lEndedAt = 0;        ///< when it was found to have ended
    int64_t lCpuNanoseconds = 0; ///< that it ran, in itself and in the system
};

ChildEnd WaitFor(pid_t child);

/// Ends a child that would go on, and waits for it.
void StopChild(pid_t child);

/// Ends the measurement with a message: a figure of a run that went wrong is worth nothing.
[[noreturn]] void Fail(const std::string& strMessage);

} // namespace brennik::bench
