// Finds options in the raw command line: one string, searched as it stands, so that an option is
// found wherever its exact text occurs, inside a quoted value too. Text work, but for the events
// that are pumped inside quotes; tests use it as it is.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace brennik {

/// Gives the value that follows the option strName; 0 when the option is present and its value
/// could be read (it may be empty), 1 otherwise, with strValue empty or of no meaning.
[[nodiscard]] int16_t GetCommandLineArg(const std::string& strName, std::string& strValue,
                                        const std::string& strCmdLine);

/// The raw command line that the arguments (without the program's name) came from: joined by
/// single blanks. A shell has taken the quotes away, so an argument that holds a blank and begins
/// with neither a double quote nor "-" gets them back, its inner ones doubled.
std::string CommandLineFromArguments(const std::vector<std::string>& strArguments);

} // namespace brennik
