// The entry of brenniksim: finds the command that is asked for and runs it.

#include "generated/Version.h"
#include "platform/StandardStreams.h"
#include "sim/host/DeviceCommand.h"
#include "sim/host/OptionReader.h"
#include "sim/host/ServiceCommand.h"

#include <csignal>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

using brennik::sim::UsageProblem;

struct Command {
    std::string_view strName;
    std::string_view strSummary;
    int (*run)(const std::vector<std::string>& arguments);
};

constexpr Command kCommands[] = {
    {"device", "play a payment device on a serial line", brennik::sim::RunDevice},
    {"service", "play a service on a TCP port or a serial line", brennik::sim::RunService},
};

void PrintHelp() {
    std::printf("usage: brenniksim COMMAND [options]\n"
                "       brenniksim --help | --version\n\n"
                "Plays the far ends that brennikclient talks to.\n\n");
    for (const Command& command : kCommands) {
        std::printf("  %-10s %s\n", command.strName.data(), command.strSummary.data());
    }
    std::printf("\nbrenniksim COMMAND --help tells the options of a command.\n");
}

int Run(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        throw UsageProblem{"no command; see brenniksim --help"};
    }
    const std::string& strFirst = arguments.front();
    if (strFirst == "--help") {
        PrintHelp();
        return 0;
    }
    if (strFirst == "--version") {
        std::printf("brenniksim %d.%d.%d\n", brennik::kVersionMajor, brennik::kVersionMinor,
                    brennik::kVersionRevision);
        return 0;
    }
    for (const Command& command : kCommands) {
        if (command.strName == strFirst) {
            return command.run({arguments.begin() + 1, arguments.end()});
        }
    }
    throw UsageProblem{"unknown command \"" + strFirst + "\"; see brenniksim --help"};
}

} // namespace

int main(int argc, char** argv) {
    brennik::OpenStandardStreams();
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN)); // a reader of stdout may go at any time
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    try {
        return Run(arguments);
    } catch (const UsageProblem& problem) {
        std::fprintf(stderr, "brenniksim: %s\n", problem.strReason.c_str());
        return 2;
    }
}
