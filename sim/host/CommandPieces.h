// What the commands of brenniksim have in common: how they read values and files, and how they
// report. Tests see it in what the program prints.
#pragma once

#include <cstdint>
#include <string>

namespace brennik::sim {

/// How much a command prints.
enum class Reporting { Quiet, Sessions, Events };

/// One line to stdout, at once: whoever reads it waits for it. A reader that has gone is no reason
/// to stop.
void Print(const std::string& strLine);

/// A whole number within both bounds; throws UsageProblem otherwise.
int64_t NumberOf(const std::string& strOption, const std::string& strValue, int64_t lLeast,
                 int64_t lMost);

/// What stands in a file; throws UsageProblem when it can't be read.
std::string ContentOf(const std::string& strFile);

/// Says on stderr why a command ends, and gives the exit status.
int FailCommand(const char* strCommand, const std::string& strError);

} // namespace brennik::sim
