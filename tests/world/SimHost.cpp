#include "tests/world/SimHost.h"

namespace brennik::world {

SimHost::SimHost()
    : ledger(timeline),
      clock(timeline, ledger),
      network(timeline, ledger),
      comPorts(timeline, ledger),
      files(ledger, clock),
      profileStrings(ledger, files),
      processes(timeline, ledger, files),
      ostRtl(ledger),
      host_{clock, network, comPorts, files, profileStrings, processes, ostRtl, [this] {
                ledger.Enter();
                ++nPumps_;
                // A hook may add a hook, so the list is walked by its places.
                for (size_t nHook = 0; nHook < pumpHooks_.size(); ++nHook) {
                    const auto hook = pumpHooks_[nHook];
                    hook();
                }
            }} {
}

WorldTest::~WorldTest() {
    EXPECT_FALSE(host.BudgetExceeded()) << "The test made more calls of the seam than its budget "
                                           "allows: a loop that never waits or never ends.";
}

} // namespace brennik::world
