// The values of one profile and the keys under which they stand in the file.
// Plain data and plain conversions: text in, text out; TBrennikClientConfig carries them to and
// from the file.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace brennik {

/// In the order of the keys, which is worth more here than a few bytes of padding.
struct ProfileValues { // NOLINT(clang-analyzer-optin.performance.Padding)
    std::string strProfileName;
    int32_t lOperatingMode = 0; ///< 0 TCP client, 1 serial client, 2 and 3 pass-through
    bool bPedDownload = false;
    std::string strWorkingFolder;
    std::string strPlatformName;
    int32_t lDownloadType = 0; ///< 0 full, 1 partial
    std::string strApplicationID;
    std::string strTerminalId;
    std::string strPTid;
    std::string strEpromID;
    int32_t lBlockSize = 0;
    bool bFolderperDownloadAttempt = false;
    bool bDeleteFolderPerDownloadAttempt = false;
    std::string strScriptFileName;
    bool bExecuteScriptFile = false;
    int32_t lMemory = 0;
    std::string strTmsAppListFile;
    std::string strTmsAppFolder;
    std::string strLogFilePath;
    std::string strLogFileName;
    bool bLoggingEnabled = false;
    bool bLogControlPackets = false;
    bool bLogProcessingPackets = false;
    int32_t lServerMode = 0; ///< 0 TCP/IP, 1 serial; nothing at run time looks at it
    std::string strServerIPAddress1;
    std::string strServerIPAddress2;
    std::string strServerIPAddress3;
    int32_t lServerPort1 = 0;
    int32_t lServerPort2 = 0;
    int32_t lServerPort3 = 0;
    bool bServerBlockedSocket = false;
    int16_t iServerComPort = 0; ///< n of COMn
    int32_t lServerBaudRate = 0;
    std::string strServerParity;       ///< "EVEN", "ODD", "NONE", "SPACE" or "MARK"
    int16_t iServerDatabits = 0;       ///< 5 to 8
    double dServerStopBit = 0;         ///< 1, 1.5 or 2
    int16_t iServerFlowControl = 0;    ///< 0 none, 1 Xon/Xoff, 2 hardware
    int32_t lServerConnectTimeout = 0; ///< seconds
    int32_t lClientMode = 0;           ///< as lServerMode
    std::string strClientIPAddress1;
    std::string strClientIPAddress2;
    std::string strClientIPAddress3;
    int32_t lClientPort1 = 0;
    int32_t lClientPort2 = 0;
    int32_t lClientPort3 = 0;
    bool bClientBlockedSocket = false;
    int16_t iClientComPort = 0;
    int32_t lClientBaudRate = 0;
    std::string strClientParity;
    int16_t iClientDatabits = 0;
    double dClientStopBit = 0;
    int16_t iClientFlowControl = 0;
    int32_t lClientConnectTimeout = 0; ///< seconds
    int32_t lReadPacketAttempts = 0;
    int32_t lSendPacketAttempts = 0;
    int32_t lCharTimeout = 0; ///< seconds
    int32_t lConnectAttempts = 0;
    int32_t lReadPacketTimeout = 0; ///< seconds
    std::string strConfigTitle;
    std::string strReleaseTitle;
    bool bAutoBaud = false;
    bool bInjectPublicKeyFile = false;
    std::string strPublickeyLocation;
    int32_t lPassThruType = 0;   ///< 0 download, 1 upload, 2 forced full download
    int32_t lUploadFileType = 0; ///< bit 0 log files, bit 1 offline transactions; 0 all
    bool bForceApplicationSwap = false;
};

/// One key: how its text becomes the value, and how the value becomes its text.
struct ProfileKey {
    const char* strKey;

    /// Stores the converted text; text that doesn't convert gives the neutral value. The two port
    /// numbers of a serial line alone may throw: an Overflow when 16 bits can't hold the number.
    void (*ReadInto)(ProfileValues& profile, const std::string& strText);

    /// The text of the value; null for a key that is never written.
    std::string (*TextFrom)(const ProfileValues& profile);
};

/// All keys in the order in which a profile is written.
std::span<const ProfileKey> ProfileKeys();

} // namespace brennik
