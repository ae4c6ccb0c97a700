// Starting one program in a process of its own: the part that runs between fork and exec.
// Room-internal: LinuxProcesses stands on it.
#pragma once

#include <string>
#include <vector>

namespace brennik {

/// One program with its arguments; the first word is the file that is run.
using ProgramWords = std::vector<std::string>;

/// Starts the program with /dev/null on descriptors 0 to 2, default signal dispositions and an
/// empty signal mask. A file that the system doesn't know how to run is given to the shell. Gives
/// the process id; throws a RuntimeFailure when the program could not be run.
int StartProgram(const ProgramWords& words);

} // namespace brennik
