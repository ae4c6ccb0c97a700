#include "config/ProfileLogging.h"

#include "config/TBrennikClientConfig.h"
#include "support/TFLClientLog.h"

namespace brennik {

void InitialiseLoggingFromProfile(TFLClientLog& oLog, const TBrennikClientConfig& oConfig) {
    oLog.InitialiseLogging(oConfig.strLogFilePath(), oConfig.strLogFileName(),
                           oConfig.bLoggingEnabled(), oConfig.bLogControlPackets(),
                           oConfig.bLogProcessingPackets());
}

} // namespace brennik
