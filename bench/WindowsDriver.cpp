// Measures a client session with the status window open, on a display in memory, beside the same
// session unattended. It lasts long enough for many updates of the window.

#include "bench/MeasuredRun.h"
#include "bench/Options.h"
#include "bench/Workplace.h"

namespace brennik::bench {

namespace {

constexpr size_t kBlock = 1024;

class WindowsDriver {
  public:
    explicit WindowsDriver(const Options& options)
        : options_(options), workplace_(options.strParent), run_(options, workplace_) {}

    void Measure() {
        const Job job = run_.JobLasting(options_.bQuick ? 0.02 : 1.5, kBlock);
        workplace_.WriteProfiles(workplace_.Profile(run_.Port(), kBlock, false), 1);
        for (int lRound = 0; lRound < options_.lRounds; ++lRound) {
            // The order changes from round to round, so that no side always has the better place.
            for (const bool bWindow : {lRound % 2 == 0, lRound % 2 != 0}) {
                const RunResult result = bWindow ? run_.InWindows(job) : run_.Client(job, 1);
                Print({"windows", kBlock, bWindow ? "window" : "unattended", lRound,
                       job.DataFrames(), result.lNanoseconds, result.lPeakKiB, 0});
            }
        }
    }

  private:
    const Options& options_;
    Workplace workplace_;
    MeasuredRun run_;
};

} // namespace

} // namespace brennik::bench

int main(int argc, char** argv) {
    const auto options = brennik::bench::Options::Read(argc, argv);
    brennik::bench::WindowsDriver(options).Measure();
    return 0;
}
