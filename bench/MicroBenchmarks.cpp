// The pieces of a frame's way through the program, each beside its limit: block checks, packets
// parsed, log lines. bench/run repeats them interleaved, so that runs of one repetition make pairs.

#include "bench/Frames.h"
#include "bench/ReferenceChecks.h"
#include "link/TChecksum.h"
#include "link/TCommsChannel.h"
#include "link/TIsoProtocol.h"
#include "session/TBrennikPacket.h"
#include "support/TFLClientLog.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace brennik::bench {

namespace {

constexpr size_t kBlock = 1024;

/// What the check of a write data frame of such a block covers, and more.
constexpr int64_t kCheckedSizes[] = {64, kBlock + kWriteFrameOverhead, 60010};

std::string RandomBytes(size_t nSize) {
    return DataBlocks(nSize).front();
}

void CountBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

template <uint16_t (*Crc16)(std::string_view)>
void ReferenceCrc16(benchmark::State& state) {
    const std::string strData = RandomBytes(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        std::string_view strView = strData;
        benchmark::DoNotOptimize(strView);
        benchmark::DoNotOptimize(Crc16(strView));
    }
    CountBytes(state);
}

void ProgramCrc16(benchmark::State& state) {
    const std::string strData = RandomBytes(static_cast<size_t>(state.range(0)));
    const TChecksum checksum;
    const uint16_t nCrc = BitwiseCrc16(strData);
    const std::string strExpected = {static_cast<char>(nCrc >> 8), static_cast<char>(nCrc & 0xFF)};
    if (checksum.GenerateCRC16(strData, 0) != strExpected)
        state.SkipWithError("the check is wrong");
    for (auto _ : state) {
        std::string_view strView = strData;
        benchmark::DoNotOptimize(strView);
        benchmark::DoNotOptimize(checksum.GenerateCRC16(strView, 0));
    }
    CountBytes(state);
}

void ProgramLrc(benchmark::State& state) {
    const std::string strData = RandomBytes(static_cast<size_t>(state.range(0)));
    const TChecksum checksum;
    for (auto _ : state) {
        std::string_view strView = strData;
        benchmark::DoNotOptimize(strView);
        benchmark::DoNotOptimize(checksum.GenerateLRC(strView));
    }
    CountBytes(state);
}

/// The limit of any check: the bytes are read once, a word at a time.
void ReadWords(benchmark::State& state) {
    const std::string strData = RandomBytes(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        const char* bytes = strData.data();
        benchmark::DoNotOptimize(bytes);
        uint64_t lSum = 0;
        for (size_t nAt = 0; nAt + sizeof lSum <= strData.size(); nAt += sizeof lSum) {
            uint64_t lWord = 0;
            std::memcpy(&lWord, bytes + nAt, sizeof lWord);
            lSum ^= lWord;
        }
        benchmark::DoNotOptimize(lSum);
    }
    CountBytes(state);
}

std::string Payload(const std::string& strFrame, size_t nBehind) {
    return strFrame.substr(1, strFrame.size() - 1 - nBehind);
}

void ParsePacket(benchmark::State& state, const std::string& strPayload) {
    TBrennikPacket packet;
    for (auto _ : state) {
        if (packet.BreakOutPacket(strPayload) != 0)
            state.SkipWithError("the packet was refused");
        benchmark::DoNotOptimize(packet.GetPacketType(strPayload));
    }
    state.SetItemsProcessed(state.iterations());
}

void ParseWriteData(benchmark::State& state) {
    ParsePacket(state, Payload(WriteFrames(kBlock).front(), 2));
}

void ParseOpenFile(benchmark::State& state) {
    ParsePacket(state, Payload(OpenFrame(FileNameOf(0), 4096), 3));
}

/// The limit of parsing a write data packet: its data is copied once.
void CopyBlock(benchmark::State& state) {
    const std::string strPayload = Payload(WriteFrames(kBlock).front(), 2);
    std::string strData;
    for (auto _ : state) {
        const char* bytes = strPayload.data() + kWriteDataAt - 1;
        benchmark::DoNotOptimize(bytes);
        strData.assign(bytes, kBlock);
        benchmark::DoNotOptimize(strData.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}

/// A far end that always has one and the same frame waiting.
class OneFrameChannel : public TCommsChannel {
  public:
    explicit OneFrameChannel(std::string strFrame) : strFrame_(std::move(strFrame)) {}
    int32_t Connect(TConnectionInfo&, TFLClientLog&) override { return 0; }
    int32_t Disconnect() override { return 0; }
    int32_t WriteData(std::string_view) override { return 0; }
    int32_t ReadData(std::string& strData) override {
        strData = strFrame_;
        return 0;
    }
    int32_t ReadCharacter(std::string& strData) override {
        strData = strFrame_.substr(0, 1);
        return 0;
    }
    int32_t lErrorCode() const override { return 0; }
    const std::string& strErrorMessage() const override { return strNone_; }
    const std::string& strConnectionData() const override { return strNone_; }

  private:
    std::string strFrame_;
    std::string strNone_;
};

/// The whole way of a frame from the channel to the fields of its packet, the check included.
void ReadAndParseFrame(benchmark::State& state) {
    OneFrameChannel channel(WriteFrames(kBlock).front());
    TFLClientLog log;
    log.InitialiseLogging("", "", false, false, false);
    TIsoProtocol link;
    if (link.InitialiseObject(channel, log, 2, 5, 5, 5, 2, 1, 3, false, true) != 0)
        state.SkipWithError("no link");
    TBrennikPacket packet;
    std::string strPacket;
    for (auto _ : state) {
        if (link.ReadPacket(strPacket, "") != 0 || packet.BreakOutPacket(strPacket) != 0)
            state.SkipWithError("the frame was refused");
        benchmark::DoNotOptimize(packet.strData().data());
    }
    state.SetItemsProcessed(state.iterations());
}

/// A log in a folder of its own, named by the environment's BENCH_FOLDER.
class LogFolder {
  public:
    LogFolder() : strFolder_(Parent() + "/log-" + std::to_string(::getpid())) {
        std::filesystem::create_directories(strFolder_);
    }
    ~LogFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(strFolder_, ignored);
    }
    LogFolder(const LogFolder&) = delete;
    LogFolder& operator=(const LogFolder&) = delete;

    const std::string& Path() const { return strFolder_; }
    std::string File() const { return strFolder_ + "/session.log"; }

  private:
    static std::string Parent() {
        const char* folder = std::getenv("BENCH_FOLDER");
        return folder != nullptr ? folder : "/tmp";
    }
    std::string strFolder_;
};

constexpr const char* kMessage = "Downloaded file=/srv/pos/f000000.dt, filesize=1048576";

void LogLine(benchmark::State& state) {
    const LogFolder folder;
    TFLClientLog log;
    log.InitialiseLogging(folder.Path(), "session.log", true, true, true);
    for (auto _ : state)
        log.Logit(kMessage, false);
    state.SetItemsProcessed(state.iterations());
}

void LogFrame(benchmark::State& state) {
    const LogFolder folder;
    TFLClientLog log;
    log.InitialiseLogging(folder.Path(), "session.log", true, true, true);
    const std::string strFrame = WriteFrames(kBlock).front();
    for (auto _ : state)
        log.LogPacket(false, false, strFrame, false);
    state.SetItemsProcessed(state.iterations());
}

/// The limit of a log line: the file is opened, a line made beforehand is written, the file closed.
void AppendLines(benchmark::State& state, const LogFolder& folder, const std::string& strLine) {
    const std::string strFile = folder.File();
    for (auto _ : state) {
        const int nFile = ::open(strFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
        const bool bWritten =
            ::write(nFile, strLine.data(), strLine.size()) == static_cast<ssize_t>(strLine.size());
        if (::close(nFile) != 0 || !bWritten)
            state.SkipWithError("the line was not written");
    }
    state.SetItemsProcessed(state.iterations());
}

/// The line that the log itself makes of one call.
template <class Call>
std::string LoggedLine(const LogFolder& folder, Call&& call) {
    TFLClientLog log;
    log.InitialiseLogging(folder.Path(), "sample.log", true, true, true);
    call(log);
    const std::string strFile = folder.Path() + "/sample.log";
    std::string strLine(std::filesystem::file_size(strFile), '\0');
    const int nFile = ::open(strFile.c_str(), O_RDONLY | O_CLOEXEC);
    const bool bRead =
        ::read(nFile, strLine.data(), strLine.size()) == static_cast<ssize_t>(strLine.size());
    ::close(nFile);
    return bRead ? strLine : std::string();
}

void AppendLine(benchmark::State& state) {
    const LogFolder folder;
    AppendLines(state, folder,
                LoggedLine(folder, [](TFLClientLog& log) { log.Logit(kMessage, false); }));
}

void AppendFrameLine(benchmark::State& state) {
    const LogFolder folder;
    AppendLines(state, folder, LoggedLine(folder, [](TFLClientLog& log) {
                    log.LogPacket(false, false, WriteFrames(kBlock).front(), false);
                }));
}

void EachCheckedSize(benchmark::internal::Benchmark* measured) {
    for (const int64_t lSize : kCheckedSizes)
        measured->Arg(lSize);
}

BENCHMARK(ProgramCrc16)->Name("crc16/program")->Apply(EachCheckedSize);
BENCHMARK(ReferenceCrc16<BitwiseCrc16>)->Name("crc16/bitwise")->Arg(kBlock + kWriteFrameOverhead);
BENCHMARK(ReferenceCrc16<OneTableCrc16>)
    ->Name("crc16/one-table")
    ->Arg(kBlock + kWriteFrameOverhead);
BENCHMARK(ReferenceCrc16<SlicedCrc16<8>>)->Name("crc16/sliced-8")->Apply(EachCheckedSize);
BENCHMARK(ReferenceCrc16<SlicedCrc16<16>>)->Name("crc16/sliced-16")->Apply(EachCheckedSize);
BENCHMARK(ProgramLrc)->Name("lrc/program")->Apply(EachCheckedSize);
BENCHMARK(ReadWords)->Name("lrc/words")->Apply(EachCheckedSize);
BENCHMARK(ParseWriteData)->Name("parse/write-data");
BENCHMARK(ParseOpenFile)->Name("parse/open-file");
BENCHMARK(ReadAndParseFrame)->Name("parse/frame");
BENCHMARK(CopyBlock)->Name("parse/copy");
BENCHMARK(LogLine)->Name("log/line");
BENCHMARK(AppendLine)->Name("log/append-line");
BENCHMARK(LogFrame)->Name("log/frame");
BENCHMARK(AppendFrameLine)->Name("log/append-frame");

} // namespace

} // namespace brennik::bench

BENCHMARK_MAIN();
