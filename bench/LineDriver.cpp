// Measures client sessions over a serial line, a pseudo-terminal with brenniksim at its far end:
// paced as lines of two rates are, and as fast as it goes. A run with many blocks and one with a
// single block differ by the blocks alone, so that start, end and the other packets fall out.

#include "bench/Options.h"
#include "bench/Processes.h"
#include "bench/SimProcess.h"
#include "bench/Workplace.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace brennik::bench {

namespace {

namespace fs = std::filesystem;

constexpr size_t kBlock = 1024;

/// Runs at the pace of a line take seconds each and hardly differ.
constexpr int kMostRounds = 3;

/// A line, and how many blocks make a run of some seconds on it. Rate 0 isn't paced.
struct Line {
    int32_t lRate;
    int64_t lBlocks;
};
constexpr std::array<Line, 3> kLines{{{19200, 12}, {115200, 40}, {0, 300}}};
constexpr int64_t kQuickBlocks = 3;

class LineDriver {
  public:
    explicit LineDriver(const Options& options)
        : options_(options), workplace_(options.strParent), strHome_(workplace_.Folder()) {
        ::setenv("BRENNIK_HOME", strHome_.c_str(), 1);
        std::ofstream(strHome_ + "/BrennikHost.ini") << "[PORTS]\nCOM1=" << strHome_ << "/line\n";
        ProfileValues profile = workplace_.Profile(0, kBlock, false);
        profile.lOperatingMode = 1;
        profile.iServerComPort = 1;
        profile.lServerBaudRate = 115200;
        profile.strServerParity = "NONE";
        profile.iServerDatabits = 8;
        profile.dServerStopBit = 1;
        workplace_.WriteProfiles(profile, 1);
    }

    void Measure() {
        for (const Line& line : kLines) {
            const int64_t lMany = options_.bQuick ? kQuickBlocks : line.lBlocks;
            for (int lRound = 0; lRound < std::min(options_.lRounds, kMostRounds); ++lRound) {
                MeasureRun(line.lRate, lMany, "many", lRound);
                MeasureRun(line.lRate, 1, "one", lRound);
            }
        }
    }

  private:
    void MeasureRun(int32_t lRate, int64_t lBlocks, const std::string& strVariant, int lRound) {
        const std::string strServed = strHome_ + "/served";
        const size_t nBytes = static_cast<size_t>(lBlocks) * kBlock;
        fs::create_directories(strServed);
        std::ofstream(strServed + "/file.bin", std::ios::binary) << std::string(nBytes, 'x');
        workplace_.Clear();
        std::vector<std::string> command{"service", "--serial", strHome_ + "/line",    "--serve",
                                         strServed, "--block",  std::to_string(kBlock)};
        if (lRate != 0)
            command.insert(command.end(), {"--rate", std::to_string(lRate)});
        const SimProcess service(options_, command);
        const int64_t lBegun = Now();
        const ChildEnd ended =
            WaitFor(StartProgram({options_.strPrograms + "/brennikclient", "-configfiledir",
                                  strHome_, "-profileid", "1"}));
        std::error_code none;
        if (fs::file_size(workplace_.Received() + "/I/1/file.bin", none) != nBytes || none)
            Fail("a session over a line did not come to its good end");
        const auto print = [&](const std::string& strWhat, int64_t lNanoseconds) {
            Print({"line", static_cast<size_t>(lRate), strWhat + "-" + strVariant, lRound, lBlocks,
                   lNanoseconds, ended.lPeakKiB, 0});
        };
        print("time", ended.lEndedAt - lBegun);
        print("cpu", ended.lCpuNanoseconds);
    }

    const Options& options_;
    Workplace workplace_;
    std::string strHome_;
};

} // namespace

} // namespace brennik::bench

int main(int argc, char** argv) {
    const auto options = brennik::bench::Options::Read(argc, argv);
    brennik::bench::LineDriver(options).Measure();
    return 0;
}
