#include "platform/SharedObject.h"
#include "platform/StandardStreams.h"
#include "shell/BrennikClnt.h"
#include "shell/CommandLine.h"
#include "shell/UnattendedRun.h"
#include "shell/WindowsEntry.h"
#include "shell/WindowsModule.h"

#include <string>
#include <vector>

// The exit status is 0 whatever happened: who runs the program unattended reads the session log.
int main(int argc, char** argv) {
    brennik::OpenStandardStreams();
    const std::vector<std::string> strArguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const std::string strCommandLine = brennik::CommandLineFromArguments(strArguments);
    brennik::WindowsModule windows;
    if (!brennik::NeedsWindow(strCommandLine))
        brennik::CancelRunOnSignals();
    else if (windows.TakeOver(brennik::LibraryPlaces(brennik::kWindowsModuleName), argc, argv))
        return 0;
    brennik::Main(strCommandLine, windows);
    return 0;
}
