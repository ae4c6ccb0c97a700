// The door to the windows. This build has none: a window that must open is told of in one line on
// stderr, and the usage text goes to stdout. Tests capture both streams.
#pragma once

#include <string>

namespace brennik {

/// Opens the main window; without windows, says so in one line on stderr.
void ShowMainWindow();

/// Shows the usage box; without windows, prints the text (lines ending in CR LF) on stdout, its
/// lines ending in LF.
void ShowUsageBox(const std::string& strText);

} // namespace brennik
