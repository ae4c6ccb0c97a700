// The command "brenniksim device": a payment device on a serial line. It reads the options, lets
// one DeviceBehaviour live through all openings of the line, and reports its calls. Tests run it as
// a child process.
#pragma once

#include <string>
#include <vector>

namespace brennik::sim {

/// Runs the command with the arguments behind its name and gives the exit status. Throws
/// UsageProblem for a command line that it can't follow.
int RunDevice(const std::vector<std::string>& arguments);

} // namespace brennik::sim
