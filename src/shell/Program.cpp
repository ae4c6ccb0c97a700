#include "platform/StandardStreams.h"
#include "shell/BrennikClnt.h"
#include "shell/CommandLine.h"
#include "shell/UnattendedRun.h"

#include <string>
#include <vector>

// The exit status is 0 whatever happened: who runs the program unattended reads the session log.
int main(int argc, char** argv) {
    brennik::OpenStandardStreams();
    const std::string strCommandLine =
        brennik::CommandLineFromArguments(std::vector<std::string>(argv + 1, argv + argc));
    if (!strCommandLine.empty())
        brennik::CancelRunOnSignals();
    brennik::Main(strCommandLine);
    return 0;
}
