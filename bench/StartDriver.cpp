// Measures the cold start of the program: from exec to its first connection, with a configuration
// file of 50 profiles of which it runs the last, and the most memory that such a run holds. Beside
// it stands a program that does nothing but connect.

#include "bench/MeasuredRun.h"
#include "bench/Options.h"
#include "bench/Processes.h"
#include "bench/Workplace.h"

#include <chrono>
#include <thread>

namespace brennik::bench {

namespace {

constexpr int32_t kProfiles = 50;
constexpr int kRunsOfRound = 5;

class StartDriver {
  public:
    explicit StartDriver(const Options& options)
        : options_(options),
          workplace_(options.strParent),
          run_(options, workplace_),
          lExecAt_(SharedBetweenProcesses<int64_t>()),
          lAcceptedAt_(SharedBetweenProcesses<int64_t>()) {}

    void Measure() {
        workplace_.WriteProfiles(workplace_.Profile(run_.Port(), job_.nBlock, false), kProfiles);
        // A file that has just been written may have to be read with more care than an old one.
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        const int lRuns = options_.lRounds * (options_.bQuick ? 1 : kRunsOfRound);
        for (int lRound = 0; lRound < lRuns; ++lRound) {
            MeasureClient(lRound);
            MeasureBareConnect(lRound);
            // What a child has before it becomes another program counts towards its peak: a
            // program's peak that equals this one would say nothing about the program.
            const ChildEnd empty = WaitFor(StartChild([] { return 0; }));
            Print({"start", kProfiles, "before-exec", lRound, 1, 0, empty.lPeakKiB, 0});
        }
    }

  private:
    void MeasureClient(int lRound) {
        const RunResult result = run_.Client(job_, kProfiles);
        Print(
            {"start", kProfiles, "client", lRound, 1, result.lStartToConnect, result.lPeakKiB, 0});
    }

    void MeasureBareConnect(int lRound) {
        const pid_t acceptor = StartChild([&] {
            SenderTimes times;
            // The other end closes at once, so this can't end well, and needn't.
            static_cast<void>(ServeOneSession(listener_, job_, times));
            lAcceptedAt_ = times.lAccepted;
            return 0;
        });
        const ChildEnd ended = WaitFor(StartProgram(
            {options_.strPrograms + "/bench/bare_connect", std::to_string(listener_.Port())},
            &lExecAt_));
        if (!ended.bGood || !WaitFor(acceptor).bGood)
            Fail("bare_connect did not connect");
        Print({"start", kProfiles, "bare", lRound, 1, lAcceptedAt_ - lExecAt_, ended.lPeakKiB, 0});
    }

    const Options& options_;
    Workplace workplace_;
    MeasuredRun run_;
    Listener listener_;
    const Job job_{1, 4, 1024};
    int64_t& lExecAt_;
    int64_t& lAcceptedAt_;
};

} // namespace

} // namespace brennik::bench

int main(int argc, char** argv) {
    const auto options = brennik::bench::Options::Read(argc, argv);
    brennik::bench::StartDriver(options).Measure();
    return 0;
}
