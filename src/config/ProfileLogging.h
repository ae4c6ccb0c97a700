// The session log as a profile asks for it: where it stands, and what goes into it.
// One home for the five values that each run, and the script behind it, begin with.
#pragma once

namespace brennik {

class TBrennikClientConfig;
class TFLClientLog;

/// Initialises the log with the five logging values of the profile.
void InitialiseLoggingFromProfile(TFLClientLog& oLog, const TBrennikClientConfig& oConfig);

} // namespace brennik
