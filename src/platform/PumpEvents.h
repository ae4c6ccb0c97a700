// Lets pending window events, timers and the user's actions run, then returns.
// What stands behind it is the hook of the current host: nothing in a bare program, the stop
// request of an unattended run, or the event processing of the windows. Tests cancel from it.
#pragma once

namespace brennik {

void PumpEvents();

} // namespace brennik
