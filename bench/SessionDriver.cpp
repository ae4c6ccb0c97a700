// Measures client sessions over the loopback for several sizes of blocks, with logging off and
// with every packet logged, beside the two ping-pongs that set the limit. Then the same session
// with brenniksim as the service, beside the one with the frame sender, both by the client's whole
// time, to show whether the service holds it up.

#include "bench/MeasuredRun.h"
#include "bench/Options.h"
#include "bench/Processes.h"
#include "bench/SimProcess.h"
#include "bench/Workplace.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>

namespace brennik::bench {

namespace {

namespace fs = std::filesystem;

constexpr std::array<size_t, 5> kBlockSizes = {256, 1024, 4096, 16384, 60000};
/// A log of all packets is seven times the size of the data, and takes its time.
constexpr int64_t kMostBytesOfLoggedRun = int64_t{16} << 20;

class SessionDriver {
  public:
    explicit SessionDriver(const Options& options)
        : options_(options), workplace_(options.strParent), run_(options, workplace_) {}

    void Measure() {
        for (const size_t nBlock : kBlockSizes) {
            const Job job = run_.JobLasting(options_.bQuick ? 0.02 : 0.15, nBlock);
            for (int lRound = 0; lRound < options_.lRounds; ++lRound)
                MeasurePair(job, lRound);
            MeasureService(job);
        }
    }

  private:
    static int64_t MostBlocks(int64_t lBytes, size_t nBlock) {
        return lBytes / static_cast<int64_t>(nBlock);
    }

    // The order changes from round to round, so that no side always has the better place.
    void MeasurePair(const Job& job, int lRound) {
        Job logged = job;
        logged.lBlocksOfFile =
            std::min(job.lBlocksOfFile, MostBlocks(kMostBytesOfLoggedRun, job.nBlock));
        const std::array<std::function<void()>, 4> sides = {
            [&] { Tell(job, "bare", lRound, run_.PingPong(Receiver::Bare, job)); },
            [&] { Tell(job, "checked", lRound, run_.PingPong(Receiver::Checked, job)); },
            [&] { Tell(job, "log-off", lRound, ClientRun(job, false, lRound == 0)); },
            [&] { Tell(logged, "log-all", lRound, ClientRun(logged, true, false)); }};
        for (size_t nSide = 0; nSide < sides.size(); ++nSide)
            sides[(nSide + static_cast<size_t>(lRound)) % sides.size()]();
    }

    RunResult ClientRun(const Job& job, bool bLogAll, bool bContent) {
        workplace_.WriteProfiles(workplace_.Profile(run_.Port(), job.nBlock, bLogAll), 1);
        return run_.Client(job, 1, bContent);
    }

    void Tell(const Job& job, const char* strVariant, int lRound, const RunResult& result) {
        Print({"session", job.nBlock, strVariant, lRound, job.DataFrames(), result.lNanoseconds,
               result.lPeakKiB, result.lLogBytes});
    }

    void MeasureService(const Job& job) {
        const std::string strServed = workplace_.Folder() + "/served";
        fs::create_directory(strServed);
        WriteServedFile(strServed + "/" + FileNameOf(0), job);
        {
            const SimProcess service(options_, {"service", "--listen", "127.0.0.1:0", "--serve",
                                                strServed, "--block", std::to_string(job.nBlock)});
            for (int lRound = 0; lRound < options_.lRounds; ++lRound) {
                RunResult sent = ClientRun(job, false, false);
                sent.lNanoseconds = sent.lStartToEnd;
                Tell(job, "whole-sender", lRound, sent);
                Tell(job, "whole-service", lRound, ServiceRun(job, service));
            }
        }
        fs::remove_all(strServed);
    }

    RunResult ServiceRun(const Job& job, const SimProcess& service) {
        workplace_.WriteProfiles(workplace_.Profile(service.Port(), job.nBlock, false), 1);
        return run_.ClientAlone(job, 1);
    }

    static void WriteServedFile(const std::string& strPath, const Job& job) {
        const auto blocks = DataBlocks(job.nBlock);
        std::ofstream file(strPath, std::ios::binary);
        for (int64_t lBlock = 0; lBlock < job.lBlocksOfFile; ++lBlock)
            file << blocks[static_cast<size_t>(lBlock) % blocks.size()];
    }

    const Options& options_;
    Workplace workplace_;
    MeasuredRun run_;
};

} // namespace

} // namespace brennik::bench

int main(int argc, char** argv) {
    const auto options = brennik::bench::Options::Read(argc, argv);
    brennik::bench::SessionDriver(options).Measure();
    return 0;
}
