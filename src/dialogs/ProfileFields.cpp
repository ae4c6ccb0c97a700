#include "dialogs/ProfileFields.h"

#include "dialogs/ConfigControls.h"
#include "dialogs/DigitField.h"
#include "dialogs/TextField.h"

#include <array>

namespace brennik {

namespace {

using Controls = ConfigControls;
using Config = TBrennikClientConfig;

template <auto Member>
TextField* Field(const Controls& controls) {
    return controls.*Member;
}

template <size_t Index>
TextField* CommsField(const Controls& controls) {
    return controls.txtComms[Index];
}

constexpr std::array<TextSetting, 10> kTextSettings = {{
    {Field<&Controls::txtProfileName>, &Config::strProfileName, &Config::strProfileName},
    {Field<&Controls::txtPTID>, &Config::strPTid, &Config::strPTid},
    {Field<&Controls::txtTid>, &Config::strTerminalId, &Config::strTerminalId},
    {Field<&Controls::txtBaseFolder>, &Config::strWorkingFolder, &Config::strWorkingFolder},
    {Field<&Controls::txtScriptFileName>, &Config::strScriptFileName, &Config::strScriptFileName},
    {Field<&Controls::txtConfigTitle>, &Config::strConfigTitle, &Config::strConfigTitle},
    {Field<&Controls::txtReleaseTitle>, &Config::strReleaseTitle, &Config::strReleaseTitle},
    {Field<&Controls::txtLogPath>, &Config::strLogFilePath, &Config::strLogFilePath},
    {Field<&Controls::txtLogFileName>, &Config::strLogFileName, &Config::strLogFileName},
    {Field<&Controls::txtKeyFileLoc>, &Config::strPublickeyLocation, &Config::strPublickeyLocation},
}};

// The last two stand crossed to their labels, "Send Packet Attempts" and "Read Packet Attempts":
// meant, since profiles in the field were set up so.
constexpr std::array<NumberSetting, 7> kNumberSettings = {{
    {Field<&Controls::txtBlockSize>, &Config::lBlockSize, &Config::lBlockSize},
    {Field<&Controls::txtMemory>, &Config::lMemory, &Config::lMemory},
    {CommsField<0>, &Config::lCharTimeout, &Config::lCharTimeout},
    {CommsField<1>, &Config::lReadPacketTimeout, &Config::lReadPacketTimeout},
    {CommsField<2>, &Config::lConnectAttempts, &Config::lConnectAttempts},
    {CommsField<3>, &Config::lReadPacketAttempts, &Config::lReadPacketAttempts},
    {CommsField<4>, &Config::lSendPacketAttempts, &Config::lSendPacketAttempts},
}};

constexpr std::array<CheckSetting, 8> kCheckSettings = {{
    {&Controls::chkPedDownload, &Config::bPedDownload, &Config::bPedDownload},
    {&Controls::chkNewFolder, &Config::bFolderperDownloadAttempt,
     &Config::bFolderperDownloadAttempt},
    {&Controls::chkDeleteFolder, &Config::bDeleteFolderPerDownloadAttempt,
     &Config::bDeleteFolderPerDownloadAttempt},
    {&Controls::chkExecuteScript, &Config::bExecuteScriptFile, &Config::bExecuteScriptFile},
    {&Controls::chkLogging, &Config::bLoggingEnabled, &Config::bLoggingEnabled},
    {&Controls::chkLogControlPkt, &Config::bLogControlPackets, &Config::bLogControlPackets},
    {&Controls::chkLogProcessPkt, &Config::bLogProcessingPackets, &Config::bLogProcessingPackets},
    {&Controls::chkInjectPublicKey, &Config::bInjectPublicKeyFile, &Config::bInjectPublicKeyFile},
}};

} // namespace

std::span<const TextSetting> TextSettings() {
    return kTextSettings;
}

std::span<const NumberSetting> NumberSettings() {
    return kNumberSettings;
}

std::span<const CheckSetting> CheckSettings() {
    return kCheckSettings;
}

} // namespace brennik
