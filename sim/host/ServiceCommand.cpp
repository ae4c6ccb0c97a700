#include "sim/host/ServiceCommand.h"

#include "sim/Codec.h"
#include "sim/ServiceBehaviour.h"
#include "sim/host/ConnectionServer.h"
#include "sim/host/FolderTree.h"
#include "sim/host/OptionReader.h"

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace brennik::sim {

namespace {

constexpr char kHelp[] =
    R"(usage: brenniksim service [options]

Plays a Brennik service on a TCP port: asks each client with ENQ, takes its request, sends
variables, messages and files, and ends the session. The first line on stdout names the address
and port in use.

  --listen ADDRESS:PORT  where to listen; port 0 lets the system choose (127.0.0.1:0)
  --serve DIR            send what stands in DIR; its folders are drives, their folders groups
  --block N              data bytes in one write data packet, 1 to 65535 (what the client asks for)
  --config NAME=VALUE    send this configuration variable; may be repeated
  --message TEXT         send this message; may be repeated
  --script FILE          misbehave as the script in FILE says
  --once                 serve one connection, then end; exit status 0 when it was successful
  --quiet                print nothing but the first line
  --verbose              print each event of each session
  --help                 print this text

See brenniksim(1) for scripts and for the order in which files are sent.
)";

enum class Reporting { Quiet, Sessions, Events };

struct Settings {
    std::string strListen = "127.0.0.1:0";
    std::shared_ptr<ServedTree> tree = std::make_shared<ServedTree>();
    std::string strFolder;
    bool bVariables = false;
    ServiceOptions options;
    bool bOnce = false;
    bool bHelp = false;
    Reporting reporting = Reporting::Sessions;
};

// One line to stdout, at once: whoever reads it waits for it. A reader that has gone is no reason
// to stop serving.
void Print(const std::string& strLine) {
    std::printf("%s\n", strLine.c_str());
    std::fflush(stdout);
}

int32_t BlockOf(const std::string& strValue) {
    int32_t lBlock = 0;
    const char* end = strValue.data() + strValue.size();
    const auto parsed = std::from_chars(strValue.data(), end, lBlock);
    if (parsed.ec != std::errc() || parsed.ptr != end || lBlock < 1 ||
        lBlock > static_cast<int32_t>(kLargestBlock)) {
        throw UsageProblem{"--block needs a whole number from 1 to 65535, not \"" + strValue +
                           "\""};
    }
    return lBlock;
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

std::string ContentOf(const std::string& strFile) {
    const int fd = ::open(strFile.c_str(), O_RDONLY | O_CLOEXEC);
    std::string strContent;
    char buffer[4096];
    ssize_t nRead = fd < 0 ? -1 : 1;
    while (nRead > 0) {
        nRead = ::read(fd, buffer, sizeof buffer);
        strContent.append(buffer, nRead > 0 ? static_cast<size_t>(nRead) : 0);
    }
    const int error = errno;
    if (fd >= 0) {
        ::close(fd);
    }
    if (nRead < 0) {
        throw UsageProblem{strFile + ": " + std::strerror(error)};
    }
    return strContent;
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

std::string Counted(int64_t lCount, const char* strWhat) {
    return std::to_string(lCount) + " " + strWhat + (lCount == 1 ? "" : "s");
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

int Serve(const Settings& settings) {
    int64_t lSessions = 0;
    bool bSuccessful = false;
    const auto makeFarEnd = [&](const std::string& strPeer) {
        const std::string strName = "session " + std::to_string(++lSessions) + " (" + strPeer + ")";
        ServiceOptions options = settings.options;
        if (settings.reporting == Reporting::Events) {
            options.onEvent = [strName](std::string_view strEvent) {
                Print(strName + ": " + std::string(strEvent));
            };
        }
        return std::make_unique<NamedSession>(strName, settings.tree, std::move(options));
    };
    const auto farEndDone = [&](FarEnd& farEnd) {
        const auto& session = static_cast<const NamedSession&>(farEnd);
        bSuccessful = session.Outcome() == ServiceOutcome::Successful;
        if (settings.reporting != Reporting::Quiet) {
            Print(session.strName() + ": " + Report(session));
        }
    };
    ConnectionServer server(makeFarEnd, farEndDone);
    std::string strError;
    if (!server.Listen(settings.strListen, strError)) {
        std::fprintf(stderr, "brenniksim service: %s\n", strError.c_str());
        return 1;
    }
    Print("listening on " + server.strListening());
    const bool bStopped = !server.Run(settings.bOnce);
    return settings.bOnce && (bStopped || !bSuccessful) ? 1 : 0;
}

} // namespace

int RunService(const std::vector<std::string>& arguments) {
    Settings settings = ReadSettings(arguments);
    if (settings.bHelp) {
        std::fputs(kHelp, stdout);
        return 0;
    }
    ServeFolder(settings);
    return Serve(settings);
}

} // namespace brennik::sim
