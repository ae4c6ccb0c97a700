// The command "brenniksim service": the far end of client sessions on a TCP port or a serial
// line, serving a folder. It reads the options, makes a ServiceBehaviour for each connection and
// reports. Tests run it as a child process.
#pragma once

#include <string>
#include <vector>

namespace brennik::sim {

/// Runs the command with the arguments behind its name and gives the exit status. Throws
/// UsageProblem for a command line that it can't follow.
int RunService(const std::vector<std::string>& arguments);

} // namespace brennik::sim
