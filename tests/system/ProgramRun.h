// A real program as a child process: started with its arguments and surroundings, waited for with
// a generous limit, its output read afterwards. Killed when it is still there at the end.
#pragma once

#include "tests/system/Sandbox.h"

#include <functional>
#include <string>
#include <vector>

namespace brennik::system_tests {

class ProgramRun {
  public:
    /// Starts the program at once. What it writes goes to files in a folder of its own.
    /// inChild, if given, runs in the child just before the program takes its place.
    explicit ProgramRun(const std::vector<std::string>& arguments,
                        const std::function<void()>& inChild = {});
    ~ProgramRun();
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;

    /// Waits for the end: the exit status, or 256 plus the signal that ended it; -1 when it hasn't
    /// ended within a generous limit (and is then killed).
    int Wait();

    bool bRunning();
    void Signal(int nSignal) const;
    std::string strOut() const { return ReadFile(folder_ / "out"); }
    std::string strErr() const { return ReadFile(folder_ / "err"); }

  private:
    TempFolder folder_;
    int pid_ = -1;
    int nStatus_ = -1;
};

/// Looks again and again, giving way in between, until the condition holds; false when a generous
/// limit passes first.
bool Eventually(const std::function<bool()>& condition);

} // namespace brennik::system_tests
