#include "sim/host/ServiceCommand.h"

#include "sim/Codec.h"
#include "sim/Counted.h"
#include "sim/PacedBytes.h"
#include "sim/ServiceBehaviour.h"
#include "sim/host/CommandPieces.h"
#include "sim/host/ConnectionServer.h"
#include "sim/host/FolderTree.h"
#include "sim/host/OptionReader.h"
#include "sim/host/SerialServer.h"
#include "sim/host/Waiting.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace brennik::sim {

namespace {

constexpr char kHelp[] =
    R"(usage: brenniksim service [options]

Plays a Brennik service on a TCP port or a serial line: asks each client with ENQ, takes its
request, sends variables, messages and files, and ends the session. The first line on stdout names
the address and port in use, or the path of the line.

  --listen ADDRESS:PORT  where to listen; port 0 lets the system choose (127.0.0.1:0)
  --serial PATH          play on a serial line in place of a port: a pseudo-terminal, linked at PATH
  --rate N               bits per second of that line, 50 to 4000000 (as fast as the host can)
  --serve DIR            send what stands in DIR; its folders are drives, their folders groups
  --block N              data bytes in one write data packet, 1 to 65535 (what the client asks for)
  --config NAME=VALUE    send this configuration variable; may be repeated
  --message TEXT         send this message; may be repeated
  --script FILE          misbehave as the script in FILE says
  --once                 serve one session, then end; exit status 0 when it was successful
  --quiet                print nothing but the first line
  --verbose              print each event of each session
  --help                 print this text

See brenniksim(1) for scripts and for the order in which files are sent.
)";

struct Settings {
    std::optional<std::string> strListen;
    std::optional<std::string> strSerial;
    std::optional<int64_t> lRate;
    std::shared_ptr<ServedTree> tree = std::make_shared<ServedTree>();
    std::string strFolder;
    bool bVariables = false;
    ServiceOptions options;
    bool bOnce = false;
    bool bHelp = false;
    Reporting reporting = Reporting::Sessions;
};

int32_t BlockOf(const std::string& strValue) {
    return static_cast<int32_t>(
        NumberOf("--block", strValue, 1, static_cast<int64_t>(kLargestBlock)));
}

// Variables and messages go in frames that end at the first ETX.
void CheckField(const std::string& strOption, const std::string& strValue) {
    if (strValue.find(kEtx) != std::string::npos) {
        throw UsageProblem{strOption + " can't hold the byte ETX"};
    }
}

void AddVariable(Settings& settings, const std::string& strValue) {
    CheckField("--config", strValue);
    const size_t nEquals = strValue.find('=');
    if (nEquals == std::string::npos || nEquals == 0) {
        throw UsageProblem{"--config needs NAME=VALUE, not \"" + strValue + "\""};
    }
    settings.tree->AddVariable(strValue);
    settings.bVariables = true;
}

void AddMessage(Settings& settings, const std::string& strValue) {
    CheckField("--message", strValue);
    settings.tree->AddMessage(strValue);
}

ServiceScript ScriptOf(const std::string& strFile) {
    std::string strError;
    auto script = ServiceScript::Parse(ContentOf(strFile), strError);
    if (!script) {
        throw UsageProblem{strFile + ": " + strError};
    }
    return *std::move(script);
}

Settings ReadSettings(const std::vector<std::string>& arguments) {
    Settings settings;
    ReadOptions(
        arguments,
        {{"--listen", true, [&](const std::string& strValue) { settings.strListen = strValue; }},
         {"--serial", true, [&](const std::string& strValue) { settings.strSerial = strValue; }},
         {"--rate", true,
          [&](const std::string& strValue) {
              settings.lRate = NumberOf("--rate", strValue, kLowestRate, kHighestRate);
          }},
         {"--serve", true, [&](const std::string& strValue) { settings.strFolder = strValue; }},
         {"--block", true,
          [&](const std::string& strValue) { settings.options.lBlockSize = BlockOf(strValue); }},
         {"--config", true, [&](const std::string& strValue) { AddVariable(settings, strValue); }},
         {"--message", true, [&](const std::string& strValue) { AddMessage(settings, strValue); }},
         {"--script", true,
          [&](const std::string& strValue) { settings.options.script = ScriptOf(strValue); }},
         {"--once", false, [&](const std::string&) { settings.bOnce = true; }},
         {"--quiet", false, [&](const std::string&) { settings.reporting = Reporting::Quiet; }},
         {"--verbose", false, [&](const std::string&) { settings.reporting = Reporting::Events; }},
         {"--help", false, [&](const std::string&) { settings.bHelp = true; }}});
    if (settings.strSerial && settings.strListen) {
        throw UsageProblem{"--serial and --listen exclude each other"};
    }
    if (settings.lRate && !settings.strSerial) {
        throw UsageProblem{"--rate needs --serial"};
    }
    return settings;
}

void ServeFolder(Settings& settings) {
    if (settings.strFolder.empty()) {
        return;
    }
    std::string strError;
    if (!AddFolder(*settings.tree, settings.strFolder, strError)) {
        throw UsageProblem{strError};
    }
    struct stat status {};
    if (settings.bVariables && ::stat((settings.strFolder + "/config.sys").c_str(), &status) == 0) {
        throw UsageProblem{settings.strFolder + "/config.sys would replace what --config sends"};
    }
}

std::string Report(const ServiceBehaviour& session) {
    const ServiceCounts counts = session.Counts();
    return std::string(DescribeOutcome(session.Outcome())) + ", " + Counted(counts.lFiles, "file") +
           ", " + Counted(counts.lDataBytes, "byte") + ", " + Counted(counts.lFrames, "frame") +
           ", " + std::to_string(counts.lResends) + " resent";
}

// A session with the name under which it is reported.
class NamedSession : public ServiceBehaviour {
  public:
    NamedSession(std::string strName, std::shared_ptr<const ServedTree> tree,
                 ServiceOptions options)
        : ServiceBehaviour(std::move(tree), std::move(options)), strName_(std::move(strName)) {}

    const std::string& strName() const { return strName_; }

  private:
    std::string strName_;
};

// Makes the sessions of one run of the program and reports them.
class SessionMaker {
  public:
    explicit SessionMaker(const Settings& settings) : settings_(settings) {}

    std::unique_ptr<FarEnd> Make(const std::string& strPeer) {
        const std::string strName =
            "session " + std::to_string(++lSessions_) + " (" + strPeer + ")";
        ServiceOptions options = settings_.options;
        options.script = options.script.ForSession(lSessions_);
        if (settings_.reporting == Reporting::Events) {
            options.onEvent = [strName](std::string_view strEvent) {
                Print(strName + ": " + std::string(strEvent));
            };
        }
        return std::make_unique<NamedSession>(strName, settings_.tree, std::move(options));
    }

    void Done(FarEnd& farEnd) {
        const auto& session = static_cast<const NamedSession&>(farEnd);
        bSuccessful_ = session.Outcome() == ServiceOutcome::Successful;
        if (settings_.reporting != Reporting::Quiet) {
            Print(session.strName() + ": " + Report(session));
        }
    }

    /// The status of a run that was ended by a signal, or by the end of its one session.
    int ExitStatus(bool bStopped) const {
        return settings_.bOnce && (bStopped || !bSuccessful_) ? 1 : 0;
    }

  private:
    const Settings& settings_;
    int64_t lSessions_ = 0;
    bool bSuccessful_ = false;
};

int Fail(const std::string& strError) {
    return FailCommand("service", strError);
}

int ServePort(const Settings& settings) {
    SessionMaker sessions(settings);
    ConnectionServer server([&](const std::string& strPeer) { return sessions.Make(strPeer); },
                            [&](FarEnd& farEnd) { sessions.Done(farEnd); });
    std::string strError;
    if (!server.Listen(settings.strListen.value_or("127.0.0.1:0"), strError)) {
        return Fail(strError);
    }
    const StopSignals signals;
    Print("listening on " + server.strListening());
    return sessions.ExitStatus(!server.Run(signals, settings.bOnce));
}

int ServeLine(const Settings& settings) {
    const std::string& strPath = *settings.strSerial;
    SessionMaker sessions(settings);
    const auto onDevice = [&](const std::string& strDevice) {
        if (settings.reporting == Reporting::Events) {
            Print(strPath + " is " + strDevice);
        }
    };
    const StopSignals signals; // from here on they take the link at the path away again
    SerialServer server(strPath, settings.lRate,
                        {[&] { return sessions.Make(strPath); },
                         [&](FarEnd& farEnd) { sessions.Done(farEnd); }, onDevice});
    std::string strError;
    if (!server.Open(strError)) {
        return Fail(strError);
    }
    Print("listening on " + strPath);
    const bool bStopped = !server.Run(signals, settings.bOnce, strError);
    return strError.empty() ? sessions.ExitStatus(bStopped) : Fail(strError);
}

} // namespace

int RunService(const std::vector<std::string>& arguments) {
    Settings settings = ReadSettings(arguments);
    if (settings.bHelp) {
        std::fputs(kHelp, stdout);
        return 0;
    }
    ServeFolder(settings);
    return settings.strSerial ? ServeLine(settings) : ServePort(settings);
}

} // namespace brennik::sim
