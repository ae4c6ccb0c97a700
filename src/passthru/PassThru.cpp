#include "config/ProfileLogging.h"
#include "config/TBrennikClientConfig.h"
#include "session/TBrennikProtocol.h"
#include "support/AsciiText.h"
#include "support/TFLClientLog.h"

namespace brennik {

int32_t TBrennikProtocol::DoBrennikPassThruProtocol(TBrennikClientConfig& oConfig,
                                                    const std::string& /*strConfigFileLoc*/,
                                                    int32_t lProfileId) {
    return GuardedWithCode(
        error_, "TBrennikProtocol.DoBrennikPassThruProtocol() Failed - ", 1, [&]() -> int32_t {
            oConfig_ = &oConfig;
            TFLClientLog oLog;
            InitialiseLoggingFromProfile(oLog, oConfig);
            LogRunHeader(oLog, lProfileId);
            error_.Set(kUnexpectedFailure,
                       "TBrennikProtocol.DoBrennikPassThruProtocol() Failed - This build has no "
                       "pass-through (operating mode " +
                           ToDecimal(oConfig.lOperatingMode()) + ")");
            oLog.LogErrorCodeAndMsg(error_.lErrorCode(), error_.strErrorMessage());
            return 1;
        });
}

} // namespace brennik
