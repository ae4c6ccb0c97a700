#include "sim/host/DeviceCommand.h"

#include "sim/Counted.h"
#include "sim/DeviceBehaviour.h"
#include "sim/PacedBytes.h"
#include "sim/host/CommandPieces.h"
#include "sim/host/DeviceServer.h"
#include "sim/host/FolderStore.h"
#include "sim/host/FolderTree.h"
#include "sim/host/OptionReader.h"
#include "sim/host/Waiting.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace brennik::sim {

namespace {

constexpr char kHelp[] =
    R"(usage: brenniksim device --serial PATH [options]

Plays a payment device on a serial line: waits to be polled, asks for a download, takes the files
that it is sent, reboots, and calls again. The first line on stdout names the path of the line.

  --serial PATH    where the line is: a pseudo-terminal, linked at PATH
  --rate N         bits per second that the device hears and speaks at, 50 to 4000000 (115200, or
                   what the script says); a line set to another speed carries noise
  --pace           let bytes take the time that they take at that rate
  --script FILE    do as the script in FILE says
  --store DIR      put files that it is sent into DIR
  --files DIR      send what stands in DIR when it is told to upload
  --once           end when its calls are over and the line is closed; exit status 0 when all were
                   successful
  --quiet          print nothing but the first line
  --verbose        print each event
  --help           print this text

See brenniksim(1) for scripts.
)";

struct Settings {
    std::string strSerial;
    std::optional<int64_t> lRate;
    bool bPaced = false;
    DeviceOptions device;
    std::string strStore;
    std::string strFiles;
    bool bOnce = false;
    bool bHelp = false;
    Reporting reporting = Reporting::Sessions;
};

DeviceScript ScriptOf(const std::string& strFile) {
    std::string strError;
    auto script = DeviceScript::Parse(ContentOf(strFile), strError);
    if (!script) {
        throw UsageProblem{strFile + ": " + strError};
    }
    return *std::move(script);
}

Settings ReadSettings(const std::vector<std::string>& arguments) {
    Settings settings;
    ReadOptions(
        arguments,
        {{"--serial", true, [&](const std::string& strValue) { settings.strSerial = strValue; }},
         {"--rate", true,
          [&](const std::string& strValue) {
              settings.lRate = NumberOf("--rate", strValue, kLowestRate, kHighestRate);
          }},
         {"--pace", false, [&](const std::string&) { settings.bPaced = true; }},
         {"--script", true,
          [&](const std::string& strValue) { settings.device.script = ScriptOf(strValue); }},
         {"--store", true, [&](const std::string& strValue) { settings.strStore = strValue; }},
         {"--files", true, [&](const std::string& strValue) { settings.strFiles = strValue; }},
         {"--once", false, [&](const std::string&) { settings.bOnce = true; }},
         {"--quiet", false, [&](const std::string&) { settings.reporting = Reporting::Quiet; }},
         {"--verbose", false, [&](const std::string&) { settings.reporting = Reporting::Events; }},
         {"--help", false, [&](const std::string&) { settings.bHelp = true; }}});
    if (settings.bHelp) {
        return settings;
    }
    if (settings.strSerial.empty()) {
        throw UsageProblem{"device needs --serial PATH"};
    }
    if (settings.bOnce && settings.device.script.bRepeats()) {
        throw UsageProblem{"--once waits for the end of calls that the script repeats for ever"};
    }
    return settings;
}

void OpenFolders(Settings& settings) {
    std::string strError;
    if (!settings.strStore.empty()) {
        const auto store = std::make_shared<FolderStore>();
        if (!store->OpenFolder(settings.strStore, strError)) {
            throw UsageProblem{strError};
        }
        settings.device.store = store;
    }
    if (!settings.strFiles.empty()) {
        const auto files = std::make_shared<ServedTree>();
        if (!AddFolder(*files, settings.strFiles, strError)) {
            throw UsageProblem{strError};
        }
        settings.device.files = files;
    }
}

std::string Report(const DeviceReport& report) {
    return std::string(DescribeOutcome(report.outcome)) + ", " +
           Counted(report.received.lFiles + report.lFilesSent, "file") + ", " +
           Counted(report.received.lDataBytes + report.lDataBytesSent, "byte") + ", " +
           Counted(report.lFrames, "frame") + ", " + std::to_string(report.lRefused) +
           " refused, " + std::to_string(report.lResends) + " resent";
}

// Prints what a device tells. It is polled many times a second, so that an event that follows its
// like is only counted.
class Reporter {
  public:
    explicit Reporter(size_t nCalls) : strOf_(" of " + std::to_string(nCalls) + ": ") {}

    void Event(std::string_view strEvent) {
        if (strEvent == strLast_) {
            ++lMore_;
            return;
        }
        Finish();
        strLast_ = strEvent;
        Print("device: " + strLast_);
    }
    void Outcome(size_t nCall, const DeviceReport& report) {
        Finish();
        Print("call " + std::to_string(nCall + 1) + strOf_ + Report(report));
    }
    /// Tells how often the last event came again.
    void Finish() {
        if (lMore_ > 0) {
            Print("device: the same " + Counted(lMore_, "time") + " more");
        }
        strLast_.clear();
        lMore_ = 0;
    }

  private:
    std::string strOf_;
    std::string strLast_;
    int64_t lMore_ = 0;
};

DeviceOptions OptionsOf(const Settings& settings, Reporter& reporter) {
    DeviceOptions options = settings.device;
    if (settings.reporting != Reporting::Quiet) {
        options.onOutcome = [&](size_t nCall, const DeviceReport& report) {
            reporter.Outcome(nCall, report);
        };
    }
    if (settings.reporting == Reporting::Events) {
        options.onEvent = [&](std::string_view strEvent) { reporter.Event(strEvent); };
    }
    return options;
}

bool AllSuccessful(const DeviceBehaviour& device) {
    const auto& reports = device.Reports();
    return std::all_of(reports.begin(), reports.end(), [](const DeviceReport& report) {
        return report.outcome == DeviceOutcome::Successful ||
               report.outcome == DeviceOutcome::Answered;
    });
}

int PlayDevice(const Settings& settings) {
    Reporter reporter(settings.device.script.Calls().size());
    DeviceBehaviour device(OptionsOf(settings, reporter));
    const auto onDevice = [&](const std::string& strDevice) {
        if (settings.reporting == Reporting::Events) {
            Print(settings.strSerial + " is " + strDevice);
        }
    };
    const auto bEnough = [&] { return settings.bOnce && device.bSeriesOver(); };
    const int64_t lRate = settings.lRate.value_or(settings.device.script.lRate());
    LineRates rates;
    rates.lFarEnd = lRate;
    if (settings.bPaced) {
        rates.lPace = lRate;
    }
    const StopSignals signals; // from here on they take the link at the path away again
    DeviceServer server(settings.strSerial, rates, device, onDevice);
    std::string strError;
    if (!server.Open(strError)) {
        return FailCommand("device", strError);
    }
    Print("listening on " + settings.strSerial);
    const bool bStopped = !server.Run(signals, bEnough, strError);
    device.Disconnected(Now());
    reporter.Finish();
    if (!strError.empty()) {
        return FailCommand("device", strError);
    }
    return settings.bOnce && (bStopped || !AllSuccessful(device)) ? 1 : 0;
}

} // namespace

int RunDevice(const std::vector<std::string>& arguments) {
    Settings settings = ReadSettings(arguments);
    if (settings.bHelp) {
        std::fputs(kHelp, stdout);
        return 0;
    }
    OpenFolders(settings);
    return PlayDevice(settings);
}

} // namespace brennik::sim
