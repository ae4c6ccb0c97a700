// Every key of a profile with the property behind it, by the kind of its value, as tests of the
// configuration go through them. Told here once more by hand, apart from the code's own table.
#pragma once

#include "config/TBrennikClientConfig.h"

#include <array>
#include <cstdint>
#include <string>

namespace brennik::configtest {

struct TextKey {
    const char* strKey;
    const std::string& (TBrennikClientConfig::*get)() const;
    void (TBrennikClientConfig::*set)(std::string);
    bool bTrimmed; ///< read without the blanks on both sides
};

struct LongKey {
    const char* strKey;
    int32_t (TBrennikClientConfig::*get)() const;
    void (TBrennikClientConfig::*set)(int32_t);
};

struct IntKey {
    const char* strKey;
    int16_t (TBrennikClientConfig::*get)() const;
    void (TBrennikClientConfig::*set)(int16_t);
    bool bThroughLong; ///< a number of 17 to 32 bits is an overflow, not 0
};

struct DoubleKey {
    const char* strKey;
    double (TBrennikClientConfig::*get)() const;
    void (TBrennikClientConfig::*set)(double);
};

struct BooleanKey {
    const char* strKey;
    bool (TBrennikClientConfig::*get)() const;
    void (TBrennikClientConfig::*set)(bool);
    bool bAsDigit; ///< written as "1" or "0"
};

// clang-format off
inline constexpr std::array<TextKey, 23> kTextKeys = {{
    {"ProfileName", &TBrennikClientConfig::strProfileName, &TBrennikClientConfig::strProfileName, false},
    {"WorkingFolder", &TBrennikClientConfig::strWorkingFolder, &TBrennikClientConfig::strWorkingFolder, true},
    {"PlatformName", &TBrennikClientConfig::strPlatformName, &TBrennikClientConfig::strPlatformName, false},
    {"ApplicationID", &TBrennikClientConfig::strApplicationID, &TBrennikClientConfig::strApplicationID, true},
    {"TerminalID", &TBrennikClientConfig::strTerminalId, &TBrennikClientConfig::strTerminalId, true},
    {"PTID", &TBrennikClientConfig::strPTid, &TBrennikClientConfig::strPTid, true},
    {"EpromID", &TBrennikClientConfig::strEpromID, &TBrennikClientConfig::strEpromID, true},
    {"ScriptFileName", &TBrennikClientConfig::strScriptFileName, &TBrennikClientConfig::strScriptFileName, true},
    {"TmsAppListFile", &TBrennikClientConfig::strTmsAppListFile, &TBrennikClientConfig::strTmsAppListFile, false},
    {"TmsAppFolder", &TBrennikClientConfig::strTmsAppFolder, &TBrennikClientConfig::strTmsAppFolder, false},
    {"LogFilePath", &TBrennikClientConfig::strLogFilePath, &TBrennikClientConfig::strLogFilePath, true},
    {"LogFileName", &TBrennikClientConfig::strLogFileName, &TBrennikClientConfig::strLogFileName, true},
    {"ServerIPAddress1", &TBrennikClientConfig::strServerIPAddress1, &TBrennikClientConfig::strServerIPAddress1, true},
    {"ServerIPAddress2", &TBrennikClientConfig::strServerIPAddress2, &TBrennikClientConfig::strServerIPAddress2, true},
    {"ServerIPAddress3", &TBrennikClientConfig::strServerIPAddress3, &TBrennikClientConfig::strServerIPAddress3, true},
    {"ServerParity", &TBrennikClientConfig::strServerParity, &TBrennikClientConfig::strServerParity, false},
    {"ClientIPAddress1", &TBrennikClientConfig::strClientIPAddress1, &TBrennikClientConfig::strClientIPAddress1, true},
    {"ClientIPAddress2", &TBrennikClientConfig::strClientIPAddress2, &TBrennikClientConfig::strClientIPAddress2, true},
    {"ClientIPAddress3", &TBrennikClientConfig::strClientIPAddress3, &TBrennikClientConfig::strClientIPAddress3, true},
    {"ClientParity", &TBrennikClientConfig::strClientParity, &TBrennikClientConfig::strClientParity, false},
    {"ConfigTitle", &TBrennikClientConfig::strConfigTitle, &TBrennikClientConfig::strConfigTitle, false},
    {"ReleaseTitle", &TBrennikClientConfig::strReleaseTitle, &TBrennikClientConfig::strReleaseTitle, false},
    {"PublicKeyFileLocation", &TBrennikClientConfig::strPublickeyLocation, &TBrennikClientConfig::strPublickeyLocation, false},
}};

inline constexpr std::array<LongKey, 22> kLongKeys = {{
    {"Mode", &TBrennikClientConfig::lOperatingMode, &TBrennikClientConfig::lOperatingMode},
    {"BlockSize", &TBrennikClientConfig::lBlockSize, &TBrennikClientConfig::lBlockSize},
    {"MemorySize", &TBrennikClientConfig::lMemory, &TBrennikClientConfig::lMemory},
    {"ServerMode", &TBrennikClientConfig::lServerMode, &TBrennikClientConfig::lServerMode},
    {"ServerPortNo1", &TBrennikClientConfig::lServerPort1, &TBrennikClientConfig::lServerPort1},
    {"ServerPortNo2", &TBrennikClientConfig::lServerPort2, &TBrennikClientConfig::lServerPort2},
    {"ServerPortNo3", &TBrennikClientConfig::lServerPort3, &TBrennikClientConfig::lServerPort3},
    {"ServerBaudRate", &TBrennikClientConfig::lServerBaudRate, &TBrennikClientConfig::lServerBaudRate},
    {"ServerConnectTimeout", &TBrennikClientConfig::lServerConnectTimeout, &TBrennikClientConfig::lServerConnectTimeout},
    {"ClientMode", &TBrennikClientConfig::lClientMode, &TBrennikClientConfig::lClientMode},
    {"ClientPortNo1", &TBrennikClientConfig::lClientPort1, &TBrennikClientConfig::lClientPort1},
    {"ClientPortNo2", &TBrennikClientConfig::lClientPort2, &TBrennikClientConfig::lClientPort2},
    {"ClientPortNo3", &TBrennikClientConfig::lClientPort3, &TBrennikClientConfig::lClientPort3},
    {"ClientBaudRate", &TBrennikClientConfig::lClientBaudRate, &TBrennikClientConfig::lClientBaudRate},
    {"ClientConnectTimeout", &TBrennikClientConfig::lClientConnectTimeout, &TBrennikClientConfig::lClientConnectTimeout},
    {"ReadPacketAttempts", &TBrennikClientConfig::lReadPacketAttempts, &TBrennikClientConfig::lReadPacketAttempts},
    {"SendPacketAttempts", &TBrennikClientConfig::lSendPacketAttempts, &TBrennikClientConfig::lSendPacketAttempts},
    {"CharTimeout", &TBrennikClientConfig::lCharTimeout, &TBrennikClientConfig::lCharTimeout},
    {"ConnectAttempts", &TBrennikClientConfig::lConnectAttempts, &TBrennikClientConfig::lConnectAttempts},
    {"ReadPacketTimeout", &TBrennikClientConfig::lReadPacketTimeout, &TBrennikClientConfig::lReadPacketTimeout},
    {"PassThruType", &TBrennikClientConfig::lPassThruType, &TBrennikClientConfig::lPassThruType},
    {"UploadFileTypes", &TBrennikClientConfig::lUploadFileType, &TBrennikClientConfig::lUploadFileType},
}};

inline constexpr std::array<IntKey, 6> kIntKeys = {{
    {"ServerComPort", &TBrennikClientConfig::iServerComPort, &TBrennikClientConfig::iServerComPort, true},
    {"ServerDatabits", &TBrennikClientConfig::iServerDatabits, &TBrennikClientConfig::iServerDatabits, false},
    {"ServerFlowControl", &TBrennikClientConfig::iServerFlowControl, &TBrennikClientConfig::iServerFlowControl, false},
    {"ClientComPort", &TBrennikClientConfig::iClientComPort, &TBrennikClientConfig::iClientComPort, true},
    {"ClientDatabits", &TBrennikClientConfig::iClientDatabits, &TBrennikClientConfig::iClientDatabits, false},
    {"ClientFlowControl", &TBrennikClientConfig::iClientFlowControl, &TBrennikClientConfig::iClientFlowControl, false},
}};

inline constexpr std::array<DoubleKey, 2> kDoubleKeys = {{
    {"ServerStopbit", &TBrennikClientConfig::dServerStopBit, &TBrennikClientConfig::dServerStopBit},
    {"ClientStopbit", &TBrennikClientConfig::dClientStopBit, &TBrennikClientConfig::dClientStopBit},
}};

inline constexpr std::array<BooleanKey, 12> kBooleanKeys = {{
    {"PedDownLoad", &TBrennikClientConfig::bPedDownload, &TBrennikClientConfig::bPedDownload, false},
    {"FolderPerDownloadAttempt", &TBrennikClientConfig::bFolderperDownloadAttempt, &TBrennikClientConfig::bFolderperDownloadAttempt, false},
    {"DeleteFolderAfterDownloadAttempt", &TBrennikClientConfig::bDeleteFolderPerDownloadAttempt, &TBrennikClientConfig::bDeleteFolderPerDownloadAttempt, false},
    {"ExecuteScriptFile", &TBrennikClientConfig::bExecuteScriptFile, &TBrennikClientConfig::bExecuteScriptFile, false},
    {"LoggingEnabled", &TBrennikClientConfig::bLoggingEnabled, &TBrennikClientConfig::bLoggingEnabled, false},
    {"LogControlPackets", &TBrennikClientConfig::bLogControlPackets, &TBrennikClientConfig::bLogControlPackets, false},
    {"LogProcessingPackets", &TBrennikClientConfig::bLogProcessingPackets, &TBrennikClientConfig::bLogProcessingPackets, false},
    {"ServerBlockedSocket", &TBrennikClientConfig::bServerBlockedSocket, &TBrennikClientConfig::bServerBlockedSocket, true},
    {"ClientBlockedSocket", &TBrennikClientConfig::bClientBlockedSocket, &TBrennikClientConfig::bClientBlockedSocket, true},
    {"Autobaud", &TBrennikClientConfig::bAutoBaud, &TBrennikClientConfig::bAutoBaud, false},
    {"InjectPublicKeyFile", &TBrennikClientConfig::bInjectPublicKeyFile, &TBrennikClientConfig::bInjectPublicKeyFile, false},
    {"ForceApplicationSwap", &TBrennikClientConfig::bForceApplicationSwap, &TBrennikClientConfig::bForceApplicationSwap, false},
}};

// clang-format on

} // namespace brennik::configtest
