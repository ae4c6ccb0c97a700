#include "shell/UnattendedRun.h"

#include "config/OperatingMode.h"
#include "config/TBrennikClientConfig.h"
#include "platform/Host.h"
#include "platform/StopRequest.h"
#include "session/TBrennikProtocol.h"
#include "shell/BrennikClnt.h"
#include "support/OstrandString.h"

namespace brennik {

namespace {

// The first of the three ways that gives a terminal id; empty when none does.
std::string TerminalIdOf(const UnattendedOptions& options) {
    if (!options.strTerminalId.empty())
        return options.strTerminalId;
    if (!options.strMerchantId.empty() && !options.strClientId.empty())
        return options.strMerchantId + "-" + options.strClientId;
    std::string strTerminalId;
    if (!options.strClientLogDir.empty())
        GetTerminalIdFromClientLog(options.strClientLogDir, strTerminalId);
    return strTerminalId;
}

} // namespace

void RunUnattended(const UnattendedOptions& options, int32_t lRunProfileId) {
    const std::string& strFolder = options.strConfigFileDir;
    if (oConfig->GetConfiguration(strFolder, lRunProfileId) != 0)
        return;
    const int32_t lComPort = OstrandString::StrToLong(options.strComPort);
    if (lComPort > 0)
        oConfig->SetComPortForProfile(strFolder, lRunProfileId, lComPort);
    const std::string strTerminalId = TerminalIdOf(options);
    if (!strTerminalId.empty())
        oConfig->SetBrennikTerminalIdForProfile(strFolder, lRunProfileId, strTerminalId);
    if (!options.strApplication.empty())
        oConfig->SetApplicationForProfile(strFolder, lRunProfileId, options.strApplication);

    // So that what was written is what runs. A failure here is not looked at: it is meant so.
    static_cast<void>(oConfig->GetConfiguration(strFolder, lRunProfileId));

    const int32_t lResult = oProtocol->DoBrennikProtocol(*oConfig, strFolder, lRunProfileId);
    // The base folder, although files may have gone into folders of it: it is meant so.
    if (lResult == 0 && oConfig->lOperatingMode() == kModeTcpClient &&
        oConfig->bExecuteScriptFile())
        RunDownloadedScript(oProtocol->strBaseFolder());
}

void CancelRunOnSignals() {
    CatchStopSignals();
    RealHost().pumpEvents = [] {
        if (StopRequested() && oProtocol != nullptr)
            oProtocol->bCancelComms(true);
    };
}

} // namespace brennik
