#include "config/ProfileKeys.h"

#include "support/AsciiText.h"
#include "support/OstrandString.h"

#include <array>

namespace brennik {

namespace {

// The forms of the values: how a text is read and how a value is written. Several are crooked, and
// files in the field count on it.

struct Raw {
    static std::string Read(const std::string& strText) { return strText; }
    static std::string Write(const std::string& strValue) { return strValue; }
};

struct Trimmed {
    static std::string Read(const std::string& strText) { return Trim(strText); }
    static std::string Write(const std::string& strValue) { return strValue; } // as it stands
};

// Blanks around a number do no harm.
struct Long {
    static int32_t Read(const std::string& strText) { return OstrandString::StrToLong(strText); }
    static std::string Write(int32_t lValue) { return ToDecimal(lValue); }
};

struct Int {
    static int16_t Read(const std::string& strText) { return OstrandString::StrToInt(strText); }
    static std::string Write(int16_t iValue) { return ToDecimal(iValue); }
};

// The one form that can make a load fail: a number of more than 32 bits is 0, but one of more
// than 16 is an overflow.
struct IntThroughLong : Int {
    static int16_t Read(const std::string& strText) { return Narrow<int16_t>(Long::Read(strText)); }
};

struct Double {
    static double Read(const std::string& strText) { return OstrandString::StrToDouble(strText); }
    static std::string Write(double dValue) { return ToDecimal(dValue); }
};

struct Boolean {
    static bool Read(const std::string& strText) { return UpperCase(strText) == "TRUE"; }
    static std::string Write(bool bValue) { return bValue ? "TRUE" : "FALSE"; }
};

// What is written never reads back as true; only a "TRUE" put there by hand does.
struct BooleanAsDigit : Boolean {
    static std::string Write(bool bValue) { return bValue ? "1" : "0"; }
};

struct DownloadType {
    static int32_t Read(const std::string& strText) {
        return UpperCase(Trim(strText)) == "F" ? 0 : 1; // a missing key is a partial download
    }
    static std::string Write(int32_t lValue) { return lValue == 0 ? "F" : "P"; }
};

template <class Form, auto Value>
constexpr ProfileKey ReadOnlyKeyOf(const char* strKey) {
    return {strKey,
            [](ProfileValues& profile, const std::string& strText) {
                profile.*Value = Form::Read(strText);
            },
            nullptr};
}

template <class Form, auto Value>
constexpr ProfileKey KeyOf(const char* strKey) {
    ProfileKey key = ReadOnlyKeyOf<Form, Value>(strKey);
    key.TextFrom = [](const ProfileValues& profile) { return Form::Write(profile.*Value); };
    return key;
}

constexpr std::array kProfileKeys = {
    KeyOf<Raw, &ProfileValues::strProfileName>("ProfileName"),
    KeyOf<Long, &ProfileValues::lOperatingMode>("Mode"),
    KeyOf<Boolean, &ProfileValues::bPedDownload>("PedDownLoad"),
    KeyOf<Trimmed, &ProfileValues::strWorkingFolder>("WorkingFolder"),
    KeyOf<Raw, &ProfileValues::strPlatformName>("PlatformName"),
    KeyOf<DownloadType, &ProfileValues::lDownloadType>("DownloadType"),
    KeyOf<Trimmed, &ProfileValues::strApplicationID>("ApplicationID"),
    KeyOf<Trimmed, &ProfileValues::strTerminalId>("TerminalID"),
    KeyOf<Trimmed, &ProfileValues::strPTid>("PTID"),
    KeyOf<Trimmed, &ProfileValues::strEpromID>("EpromID"),
    KeyOf<Long, &ProfileValues::lBlockSize>("BlockSize"),
    KeyOf<Boolean, &ProfileValues::bFolderperDownloadAttempt>("FolderPerDownloadAttempt"),
    KeyOf<Boolean, &ProfileValues::bDeleteFolderPerDownloadAttempt>(
        "DeleteFolderAfterDownloadAttempt"),
    KeyOf<Trimmed, &ProfileValues::strScriptFileName>("ScriptFileName"),
    KeyOf<Boolean, &ProfileValues::bExecuteScriptFile>("ExecuteScriptFile"),
    KeyOf<Long, &ProfileValues::lMemory>("MemorySize"),
    KeyOf<Raw, &ProfileValues::strTmsAppListFile>("TmsAppListFile"),
    KeyOf<Raw, &ProfileValues::strTmsAppFolder>("TmsAppFolder"),
    KeyOf<Trimmed, &ProfileValues::strLogFilePath>("LogFilePath"),
    KeyOf<Trimmed, &ProfileValues::strLogFileName>("LogFileName"),
    KeyOf<Boolean, &ProfileValues::bLoggingEnabled>("LoggingEnabled"),
    KeyOf<Boolean, &ProfileValues::bLogControlPackets>("LogControlPackets"),
    KeyOf<Boolean, &ProfileValues::bLogProcessingPackets>("LogProcessingPackets"),
    KeyOf<Long, &ProfileValues::lServerMode>("ServerMode"),
    KeyOf<Trimmed, &ProfileValues::strServerIPAddress1>("ServerIPAddress1"),
    KeyOf<Trimmed, &ProfileValues::strServerIPAddress2>("ServerIPAddress2"),
    KeyOf<Trimmed, &ProfileValues::strServerIPAddress3>("ServerIPAddress3"),
    KeyOf<Long, &ProfileValues::lServerPort1>("ServerPortNo1"),
    KeyOf<Long, &ProfileValues::lServerPort2>("ServerPortNo2"),
    KeyOf<Long, &ProfileValues::lServerPort3>("ServerPortNo3"),
    KeyOf<BooleanAsDigit, &ProfileValues::bServerBlockedSocket>("ServerBlockedSocket"),
    KeyOf<IntThroughLong, &ProfileValues::iServerComPort>("ServerComPort"),
    KeyOf<Long, &ProfileValues::lServerBaudRate>("ServerBaudRate"),
    KeyOf<Raw, &ProfileValues::strServerParity>("ServerParity"),
    KeyOf<Int, &ProfileValues::iServerDatabits>("ServerDatabits"),
    KeyOf<Double, &ProfileValues::dServerStopBit>("ServerStopbit"),
    KeyOf<Int, &ProfileValues::iServerFlowControl>("ServerFlowControl"),
    KeyOf<Long, &ProfileValues::lServerConnectTimeout>("ServerConnectTimeout"),
    KeyOf<Long, &ProfileValues::lClientMode>("ClientMode"),
    KeyOf<Trimmed, &ProfileValues::strClientIPAddress1>("ClientIPAddress1"),
    KeyOf<Trimmed, &ProfileValues::strClientIPAddress2>("ClientIPAddress2"),
    KeyOf<Trimmed, &ProfileValues::strClientIPAddress3>("ClientIPAddress3"),
    KeyOf<Long, &ProfileValues::lClientPort1>("ClientPortNo1"),
    KeyOf<Long, &ProfileValues::lClientPort2>("ClientPortNo2"),
    KeyOf<Long, &ProfileValues::lClientPort3>("ClientPortNo3"),
    KeyOf<BooleanAsDigit, &ProfileValues::bClientBlockedSocket>("ClientBlockedSocket"),
    KeyOf<IntThroughLong, &ProfileValues::iClientComPort>("ClientComPort"),
    KeyOf<Long, &ProfileValues::lClientBaudRate>("ClientBaudRate"),
    KeyOf<Raw, &ProfileValues::strClientParity>("ClientParity"),
    KeyOf<Int, &ProfileValues::iClientDatabits>("ClientDatabits"),
    KeyOf<Double, &ProfileValues::dClientStopBit>("ClientStopbit"),
    KeyOf<Int, &ProfileValues::iClientFlowControl>("ClientFlowControl"),
    KeyOf<Long, &ProfileValues::lClientConnectTimeout>("ClientConnectTimeout"),
    KeyOf<Long, &ProfileValues::lReadPacketAttempts>("ReadPacketAttempts"),
    KeyOf<Long, &ProfileValues::lSendPacketAttempts>("SendPacketAttempts"),
    KeyOf<Long, &ProfileValues::lCharTimeout>("CharTimeout"),
    KeyOf<Long, &ProfileValues::lConnectAttempts>("ConnectAttempts"),
    KeyOf<Long, &ProfileValues::lReadPacketTimeout>("ReadPacketTimeout"),
    KeyOf<Raw, &ProfileValues::strConfigTitle>("ConfigTitle"),
    KeyOf<Raw, &ProfileValues::strReleaseTitle>("ReleaseTitle"),
    KeyOf<Boolean, &ProfileValues::bAutoBaud>("Autobaud"),
    KeyOf<Boolean, &ProfileValues::bInjectPublicKeyFile>("InjectPublicKeyFile"),
    KeyOf<Raw, &ProfileValues::strPublickeyLocation>("PublicKeyFileLocation"),
    KeyOf<Long, &ProfileValues::lPassThruType>("PassThruType"),
    KeyOf<Long, &ProfileValues::lUploadFileType>("UploadFileTypes"),
    ReadOnlyKeyOf<Boolean, &ProfileValues::bForceApplicationSwap>("ForceApplicationSwap"),
};

} // namespace

std::span<const ProfileKey> ProfileKeys() {
    return kProfileKeys;
}

} // namespace brennik
