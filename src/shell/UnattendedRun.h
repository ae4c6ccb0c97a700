// One profile, run from start to end without a window. Its only trace is the session log and, for
// the options given, the configuration file. Works on the shell's oConfig and oProtocol,
// over the current host, which tests replace.
#pragma once

#include <cstdint>
#include <string>

namespace brennik {

/// The values of the command line's options, empty where absent.
struct UnattendedOptions {
    std::string strConfigFileDir;
    std::string strComPort;
    std::string strMerchantId;
    std::string strClientId;
    std::string strClientLogDir;
    std::string strApplication;
    std::string strTerminalId;
};

/// Writes the options into the profile (above 0) for good, runs it once and, if the profile asks
/// for it, starts the script that came down. Reports nothing.
void RunUnattended(const UnattendedOptions& options, int32_t lRunProfileId);

/// Lets SIGINT and SIGTERM ask the run to stop, by setting bCancelComms of oProtocol whenever
/// events are pumped; a second signal ends the process at once. For the real program only.
void CancelRunOnSignals();

} // namespace brennik
