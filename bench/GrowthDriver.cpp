// Measures what happens when things get big: a session of ten thousand files, one file of 1 GiB,
// and a list of two thousand profiles; time beside a limit, and the most memory beside that of a
// small one of its kind.

#include "bench/MeasuredRun.h"
#include "bench/Options.h"
#include "bench/Processes.h"
#include "bench/Workplace.h"
#include "config/TBrennikClientConfig.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace brennik::bench {

namespace {

constexpr size_t kBlockOfManyFiles = 1024;
constexpr size_t kBlockOfBigFile = 60000;
constexpr int64_t kBigFile = int64_t{1} << 30;
constexpr int64_t kSmallFile = int64_t{1} << 20;

class GrowthDriver {
  public:
    explicit GrowthDriver(const Options& options)
        : options_(options), workplace_(options.strParent), run_(options, workplace_) {}

    void Measure() {
        MeasureList(options_.bQuick ? 100 : 2000);
        const int64_t lFiles = options_.bQuick ? 200 : 10000;
        const Job few{lFiles / 100, 1, kBlockOfManyFiles};
        MeasureSession("files", few, {lFiles, 1, kBlockOfManyFiles});
        const Job small{1, BlocksOf(kSmallFile), kBlockOfBigFile};
        MeasureSession("big-file", small,
                       {1, BlocksOf(options_.bQuick ? kBigFile / 32 : kBigFile), kBlockOfBigFile});
    }

  private:
    static int64_t BlocksOf(int64_t lBytes) {
        return (lBytes + static_cast<int64_t>(kBlockOfBigFile) - 1) /
               static_cast<int64_t>(kBlockOfBigFile);
    }

    void MeasureSession(const std::string& strFigure, const Job& small, const Job& big) {
        workplace_.WriteProfiles(workplace_.Profile(run_.Port(), big.nBlock, false), 1);
        for (int lRound = 0; lRound < options_.lRounds; ++lRound) {
            Tell(strFigure, "client-small", lRound, small, run_.Client(small, 1));
            Tell(strFigure, "checked", lRound, big, run_.PingPong(Receiver::Checked, big));
            Tell(strFigure, "client", lRound, big, run_.Client(big, 1, lRound == 0));
        }
        workplace_.Clear();
    }

    static void Tell(const std::string& strFigure, const char* strVariant, int lRound,
                     const Job& job, const RunResult& result) {
        Print({strFigure, static_cast<size_t>(job.lFiles), strVariant, lRound, job.DataFrames(),
               result.lNanoseconds, result.lPeakKiB, job.lFiles * job.FileBytes()});
    }

    // In a child each, so that one list's memory isn't counted with another's.
    void MeasureList(int32_t lProfiles) {
        int64_t& lNanoseconds = SharedBetweenProcesses<int64_t>();
        const auto measure = [&](const char* strVariant, int lRound, int32_t lListed,
                                 const auto& body) {
            const ChildEnd ended = WaitFor(StartChild([&] {
                const int64_t lBegun = Now();
                const bool bGood = body(lListed);
                lNanoseconds = Now() - lBegun;
                return bGood ? 0 : 1;
            }));
            if (!ended.bGood)
                Fail("the list of profiles did not come");
            Print({"list", static_cast<size_t>(lProfiles), strVariant, lRound, lListed,
                   lNanoseconds, ended.lPeakKiB, 0});
        };
        const ProfileValues profile = workplace_.Profile(run_.Port(), kBlockOfManyFiles, false);
        const auto list = [&](int32_t lListed) { return ListProfiles(lListed); };
        const auto read = [&](int32_t) { return ReadWholeFile(); };
        for (int lRound = 0; lRound < options_.lRounds; ++lRound) {
            WriteOldProfiles(profile, 1);
            measure("client-small", lRound, 1, list);
            WriteOldProfiles(profile, lProfiles);
            measure("read-file", lRound, lProfiles, read);
            measure("client", lRound, lProfiles, list);
        }
    }

    /// A list is of a file that was written some time ago; one that has just been written may have
    /// to be read with more care.
    void WriteOldProfiles(const ProfileValues& profile, int32_t lProfiles) const {
        workplace_.WriteProfiles(profile, lProfiles);
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }

    bool ListProfiles(int32_t lExpected) const {
        TBrennikClientConfig config;
        std::vector<std::string> names;
        int32_t lCount = 0;
        return config.GetProfileNamesAndCount(workplace_.Folder(), names, lCount) == 0 &&
               lCount == lExpected && names.size() == static_cast<size_t>(lExpected) &&
               names.back() == "Measured " + std::to_string(lExpected);
    }

    /// The limit: the file is read once, and its lines are counted.
    bool ReadWholeFile() const {
        const std::string strPath = workplace_.Folder() + "/BrennikClient.ini";
        std::string strText(std::filesystem::file_size(strPath), '\0');
        std::ifstream file(strPath, std::ios::binary);
        file.read(strText.data(), static_cast<std::streamsize>(strText.size()));
        return file && std::count(strText.begin(), strText.end(), '\n') > 0;
    }

    const Options& options_;
    Workplace workplace_;
    MeasuredRun run_;
};

} // namespace

} // namespace brennik::bench

int main(int argc, char** argv) {
    const auto options = brennik::bench::Options::Read(argc, argv);
    brennik::bench::GrowthDriver(options).Measure();
    return 0;
}
