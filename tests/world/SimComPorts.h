// The serial ports of the simulated host: lines in memory, added by name, with a far end each.
// It stands in the place of LinuxComPorts and keeps its rules: the time limits of reads and writes,
// settings that can't be made, a hang-up that is a failure. A port that wasn't added is missing.
#pragma once

#include "platform/ComPorts.h"
#include "tests/world/CallLedger.h"
#include "tests/world/ScriptedPeer.h"
#include "tests/world/SimLine.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::world {

/// Error numbers of the operating system that the lines give.
namespace comerror {
inline constexpr int32_t kMissing = 2;
inline constexpr int32_t kHungUp = 5;
inline constexpr int32_t kNoHandle = 9;
inline constexpr int32_t kNotPermitted = 13;
inline constexpr int32_t kBusy = 16;
inline constexpr int32_t kInvalid = 22;
} // namespace comerror

class SimComPorts : public ComPorts {
  public:
    SimComPorts(SimTimeline& timeline, CallLedger& ledger) : timeline_(timeline), ledger_(ledger) {}

    int32_t LastError() override;
    int32_t Open(const std::string& strPort) override;
    bool Close(int32_t hPort) override;
    bool Read(int32_t hPort, char* buffer, int32_t lCount, int32_t& lRead) override;
    bool Write(int32_t hPort, std::string_view strData, int32_t& lWritten) override;
    void Purge(int32_t hPort, int32_t lFlags) override;
    bool GetState(int32_t hPort, DCB& dcb) override;
    bool SetState(int32_t hPort, const DCB& dcb) override;
    bool SetTimeouts(int32_t hPort, const CommTimeouts& timeouts) override;

    // What follows is for tests; it costs nothing and counts nowhere.

    /// A line behind that port name ("COM1"), with nothing plugged in. Lives as long as this; a
    /// name is added once.
    SimLine& AddLine(const std::string& strPort);
    /// A line whose far end is played by hand: connected while the port is open.
    ScriptedPeer& AddPeer(const std::string& strPort);
    SimLine& Line(const std::string& strPort) { return *lines_.at(strPort); }

    int32_t nOpenPorts() const { return static_cast<int32_t>(open_.size()); }

    /// Keeps the calls as text in `calls` and what each Write was offered in `writes`. Entries:
    /// "Open COM1", "Close", "Read 1" (the count asked for), "Write 1000", "Purge 10", "GetState",
    /// "SetState" and "SetTimeouts". LastError isn't kept.
    void RecordCalls(bool bRecord) { bRecording_ = bRecord; }
    std::vector<std::string> calls;
    std::vector<std::string> writes;

  private:
    SimLine* Find(int32_t hPort);
    bool Fail(int32_t lError);
    /// Enters a call on an open port: its line, or null when the call must fail.
    SimLine* Enter(Op op, int32_t hPort, const Fault** fault = nullptr);
    void Note(std::string strCall);

    SimTimeline& timeline_;
    CallLedger& ledger_;
    std::map<std::string, std::unique_ptr<SimLine>> lines_;
    std::vector<std::unique_ptr<ScriptedPeer>> peers_;
    std::map<int32_t, SimLine*> open_;
    int32_t lNextHandle_ = 0;
    int32_t lLastError_ = 0;
    bool bRecording_ = false;
};

} // namespace brennik::world
