// The wish of the user or the system that the program ends: SIGINT and SIGTERM.
// The first one is kept as a flag to be asked, so that a run ends in order; the second one ends
// the process at once. Its tests send themselves signals in processes of their own.
#pragma once

namespace brennik {

/// From now on SIGINT and SIGTERM ask for a stop. A broken pipe and a file that may grow no
/// further are failed writes from now on, not the end of the process.
void CatchStopSignals();

/// True once a signal has asked for a stop.
bool StopRequested();

} // namespace brennik
