// The processes of the simulated host: a recorder of what was started, with fixed ids.
// It stands in the place of LinuxProcesses; nothing runs but the callback that a test gives.
#pragma once

#include "platform/Processes.h"
#include "tests/world/SimFiles.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace brennik::world {

inline constexpr uint32_t kProcessId = 2044;
inline constexpr uint32_t kThreadId = 3172;

class SimProcesses : public Processes {
  public:
    SimProcesses(SimTimeline& timeline, CallLedger& ledger, SimFiles& files)
        : timeline_(timeline), ledger_(ledger), files_(files) {}

    uint32_t GetCurrentProcessId() override;
    uint32_t GetCurrentThreadId() override;
    /// Fails with FileNotFound when the first word is no file of the simulated host.
    int32_t StartHidden(const std::string& strCommandLine) override;
    void WaitForExit(int32_t lProcessId) override;
    void ChangeDrive(const std::string& strDrive) override;
    std::string CurrentDirectory() override;
    void ChangeDirectory(const std::string& strFolder) override;
    std::string ProgramFolder() override;

    // What follows is for tests.

    /// Called when a process starts, with its command line; its work is then done at once.
    std::function<void(const std::string&)> OnRun;
    /// How long each process runs: what WaitForExit waits for. 0 at first.
    void SetRunTime(Microseconds runTime) { runTime_ = runTime; }
    void SetProgramFolder(const std::string& strFolder);

    /// All calls but the getters, in order, failed ones too: "ChangeDrive C",
    /// "ChangeDirectory C:\pos", "StartHidden C:\pos\run.sh", "WaitForExit 5001".
    std::vector<std::string> calls;

  private:
    void Note(const char* strCall, const std::string& strArgument);

    SimTimeline& timeline_;
    CallLedger& ledger_;
    SimFiles& files_;
    Microseconds runTime_ = 0;
    std::string strProgramFolder_ = kProgramFolder;
    int32_t lNextProcess_ = 5001;
    std::map<int32_t, Microseconds> ends_;
};

} // namespace brennik::world
