// Places in which a test may do harm: a folder of its own, a process of its own, and a process for
// which that folder is the whole file system, so that even a delete of "/" destroys nothing else.
// What a process of its own finds out comes back as text, which the test then judges.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::system_tests {

/// A new empty folder, taken away with all that is in it at the end.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& strPath() const { return strPath_; }
    std::string operator/(const std::string& strName) const { return strPath_ + "/" + strName; }

  private:
    std::string strPath_;
};

/// How a process of its own ended.
struct ChildOutcome {
    std::string strReport; ///< what its body gave
    int nExit = -1;        ///< its exit status, or -1
    int nSignal = 0;       ///< the signal that ended it, or 0
};

/// Runs the body in a forked process and waits for its end. What the body throws becomes the text
/// "threw: " and its description.
ChildOutcome RunInChild(const std::function<std::string()>& body);

/// The text alone; any other end than a plain one is the text "ended by signal n" or "exit n".
std::string ReportOfChild(const std::function<std::string()>& body);

/// Runs the body in a process whose root is the folder, in a mount namespace of its own. Without
/// bProc there is no /proc in it. A machine that permits none of this gives a report that begins
/// with "no sandbox: ".
std::string ReportOfSandbox(const TempFolder& root, bool bProc,
                            const std::function<std::string()>& body);

/// Inside a sandbox: an empty file system in memory on a folder, which is made; of nBytes at most.
void MountMemory(const std::string& strFolder, const std::string& strSize = "1m");

/// Inside a sandbox: the folder strFrom shows at strTo too.
void MountAgain(const std::string& strFrom, const std::string& strTo);

/// The descriptions of files in tests: content written whole, read whole ("(none)" without one).
void WriteFile(const std::string& strPath, std::string_view strContent);
std::string ReadFile(const std::string& strPath);

/// All entries below a folder, sorted, by their paths from there; folders end in "/", links in "@".
std::vector<std::string> Tree(const std::string& strFolder);

/// Words with one blank between them.
std::string Joined(const std::vector<std::string>& words);

/// The description of the RuntimeFailure that the body throws, or "nothing thrown".
std::string FailureOf(const std::function<void()>& body);

/// While it lives, signals interrupt the calls of this process every few milliseconds.
class Interruptions {
  public:
    Interruptions();
    ~Interruptions();
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

    /// How many there have been.
    static int Count();

    /// Waits until so many more have come.
    static void Await(int nMore);
};

/// Nanoseconds on a clock that only goes forward.
long long MonotonicNanoseconds();

} // namespace brennik::system_tests
