// The entry module: Main, which tells the two ways of running apart, the objects that the whole
// shell shares, and helpers used across it. Free of any window toolkit. Everything it does goes
// through the current host, which tests replace.
#pragma once

#include "support/WireNumbers.h" // HexStringToLong and BinaryStringToLong are offered from here too

#include <cstdint>
#include <memory>
#include <string>

namespace brennik {

class TBrennikClientConfig;
class TBrennikProtocol;
class Windows;

/// The profile loaded for the run. Main creates it; the profile picker replaces it.
extern std::unique_ptr<TBrennikClientConfig> oConfig;

/// The engine of the run. Main creates it; the status window replaces it before each run.
extern std::unique_ptr<TBrennikProtocol> oProtocol;

/// The number of the profile picked in the windows, -1 for none. Unattended runs don't use it.
extern int32_t lProfileId;

/// The whole program: opens the main window for an empty command line, shows the usage for -help,
/// and otherwise runs one profile unattended. Reports nothing; failures end it without a word.
/// The windows are borrowed until it returns.
void Main(const std::string& strCommandLine, Windows& windows);

/// Whether Main opens a window for that command line. Uses no host.
bool NeedsWindow(const std::string& strCommandLine);

/// The text of the usage box, lines ending in CR LF.
std::string UsageText();

/// Shows the usage text.
void ShowUsage(Windows& windows);

/// Starts the script that came down with the files in strFolder and waits, without limit, until it
/// has ended. Writes its course to the session log; a failure changes nothing else.
void RunDownloadedScript(const std::string& strFolder);

/// Finds the identity of the newest client log in the folder, as a terminal id; empty when there
/// is none.
void GetTerminalIdFromClientLog(const std::string& strLogFolder, std::string& strTerminalId);

} // namespace brennik
