#include "shell/BrennikClnt.h"

#include "config/TBrennikClientConfig.h"
#include "session/TBrennikProtocol.h"
#include "shell/CommandLine.h"
#include "shell/UnattendedRun.h"
#include "shell/Windows.h"
#include "support/Failure.h"
#include "support/OstrandString.h"

namespace brennik {

std::unique_ptr<TBrennikClientConfig> oConfig;
std::unique_ptr<TBrennikProtocol> oProtocol;
int32_t lProfileId = -1;

namespace {

// Reads an option that may be absent: its value is then empty.
void ReadOption(const char* strName, std::string& strValue, const std::string& strCommandLine) {
    if (GetCommandLineArg(strName, strValue, strCommandLine) != 0)
        strValue.clear();
}

bool AsksForHelp(const std::string& strCommandLine) {
    std::string strValue;
    return GetCommandLineArg("-help", strValue, strCommandLine) == 0;
}

void RunMain(const std::string& strCommandLine, Windows& windows) {
    oConfig = std::make_unique<TBrennikClientConfig>();
    oProtocol = std::make_unique<TBrennikProtocol>();
    if (strCommandLine.empty()) {
        windows.ShowMainWindow();
        return;
    }
    if (AsksForHelp(strCommandLine)) {
        ShowUsage(windows);
        return;
    }
    UnattendedOptions options;
    std::string strProfileId;
    if (GetCommandLineArg("-configfiledir", options.strConfigFileDir, strCommandLine) != 0 ||
        GetCommandLineArg("-profileid", strProfileId, strCommandLine) != 0)
        return;
    ReadOption("-comport", options.strComPort, strCommandLine);
    ReadOption("-flmerchantid", options.strMerchantId, strCommandLine);
    ReadOption("-flclientid", options.strClientId, strCommandLine);
    ReadOption("-flclientlogdir", options.strClientLogDir, strCommandLine);
    ReadOption("-application", options.strApplication, strCommandLine);
    ReadOption("-terminalid", options.strTerminalId, strCommandLine);

    const int32_t lRunProfileId = OstrandString::StrToLong(strProfileId);
    if (lRunProfileId > 0)
        RunUnattended(options, lRunProfileId);
}

} // namespace

void Main(const std::string& strCommandLine, Windows& windows) {
    Quietly([&] { RunMain(strCommandLine, windows); });
}

bool NeedsWindow(const std::string& strCommandLine) {
    return strCommandLine.empty() || AsksForHelp(strCommandLine);
}

// The misspellings, and the two options that aren't listed, are meant: the text is known so.
std::string UsageText() {
    return "Usage: brennikclient.exe\r\n"
           "\r\n"
           "[-configfiledir          <locate of brennikclient configuration file>]\r\n"
           "[-profileid            <id of brennik profile to run>]\r\n"
           "[-comport              <com port to which serail device is connectedf to>]\r\n"
           "[-flmerchantid         <fernlatch merchant id (used to create brennikclient "
           "terminald>]\r\n"
           "[-flclientid           <fernlatch client id (used to create brennikclient "
           "terminalid>]\r\n"
           "[-application          <brennikclient application name to use>]\r\n"
           "[-terminalid           <brennikclient terminal id to use>]";
}

void ShowUsage(Windows& windows) {
    windows.ShowUsageBox(UsageText());
}

} // namespace brennik
