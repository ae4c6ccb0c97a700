// A whole host in memory: virtual time, network, files, profile strings and processes, and the
// Host made of them. Nearly every test lives in one, through the fixture WorldTest below.
// Every call of the seam costs a microsecond and counts against a budget, so that a loop that
// never waits is found. Waits move time on and run what is due: events, deliveries, far ends.
#pragma once

#include "platform/Host.h"
#include "tests/world/CallLedger.h"
#include "tests/world/SimClock.h"
#include "tests/world/SimComPorts.h"
#include "tests/world/SimFiles.h"
#include "tests/world/SimNetwork.h"
#include "tests/world/SimOstRtl.h"
#include "tests/world/SimProcesses.h"
#include "tests/world/SimProfileStrings.h"
#include "tests/world/SimTimeline.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

namespace brennik::world {

class SimHost {
  public:
    SimHost();
    SimHost(const SimHost&) = delete;
    SimHost& operator=(const SimHost&) = delete;

    /// The host to make current, for example with a ScopedHost; lives as long as this.
    Host& TheHost() { return host_; }

    // Time.
    Microseconds Now() const { return timeline.Now(); }
    /// Runs the action `delay` microseconds from now, when some wait or call moves time there.
    void At(Microseconds delay, std::function<void()> action) {
        timeline.At(delay, std::move(action));
    }
    /// Moves time on from the test itself, at no cost of calls.
    void RunFor(Microseconds duration) { timeline.Advance(duration); }

    /// Adds a hook that every PumpEvents runs, in the order of adding. Each PumpEvents is a call.
    void OnPump(std::function<void()> hook) { pumpHooks_.push_back(std::move(hook)); }
    /// How often events were pumped.
    int64_t nPumps() const { return nPumps_; }

    // Calls, budget and failures; see CallLedger.
    int64_t nCalls() const { return ledger.nCalls(); }
    int64_t nFailable() const { return ledger.nFailable(); }
    void SetBudget(int64_t nMore) { ledger.SetBudget(nMore); }
    bool BudgetExceeded() const { return ledger.BudgetExceeded(); }
    void ForgiveOverrun(int64_t nMore = 1000000) { ledger.ForgiveOverrun(nMore); }
    /// Fails the nth call from now on that can fail, once; a socket call with that last error.
    void FailNthCall(int64_t n, int32_t lLastError = 10054) {
        ledger.FailNthCall(n, Fault{.lLastError = lLastError});
    }
    /// Fails the next nTimes calls of an operation after nSkip that pass, for example
    /// FailNext(Op::Send, {.lLastError = 10053}) or FailNext(Op::Receive, {.lResult = 3}).
    void FailNext(Op op, Fault fault = {}, int32_t nTimes = 1, int32_t nSkip = 0) {
        ledger.FailNext(op, fault, nTimes, nSkip);
    }

    /// Keeps the order of all calls of the seam as text in ledger.trace: the entries of
    /// network.calls and processes.calls, "Sleep 50", and file calls as "OpenText C:\a.txt".
    void RecordCalls(bool bRecord = true) {
        ledger.RecordCalls(bRecord);
        network.RecordCalls(bRecord);
        comPorts.RecordCalls(bRecord);
    }

    SimTimeline timeline;
    CallLedger ledger;
    SimClock clock;
    SimNetwork network;
    SimComPorts comPorts;
    SimFiles files;
    SimProfileStrings profileStrings;
    SimProcesses processes;
    SimOstRtl ostRtl;

  private:
    std::vector<std::function<void()>> pumpHooks_;
    int64_t nPumps_ = 0;
    Host host_;
};

/// The fixture in which a test lives in a simulated host: it is the current one for the length of
/// the test. A budget that was overrun and not forgiven fails the test.
class WorldTest : public ::testing::Test {
  public:
    ~WorldTest() override;

  protected:
    SimHost host;

  private:
    ScopedHost scoped_{host.TheHost()};
};

} // namespace brennik::world
