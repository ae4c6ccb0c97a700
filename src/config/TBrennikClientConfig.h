// The model of one profile, and the only reader and writer of BrennikClient.ini: profiles, the
// platforms that the dialog offers, and the application names that the picker offers.
// It stores and converts and validates nothing. Behind it stands TTLIniFile, and so the profile
// strings of the current host; tests put files in memory there.
#pragma once

#include "config/ProfileKeys.h"
#include "support/Failure.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace brennik {

/// One line of the platform list.
struct PlatformRecord {
    std::string strName;
    std::vector<std::string> strEproms; ///< by position in the line, blank positions empty
    int32_t lEpromCount = 0;            ///< names that aren't blank
    std::vector<std::string> strApplications;
    int32_t lApplicationCount = 0;
};

/// strConfigFileLoc is everywhere the folder of the file, with or without its last backslash, and
/// lProfileId the number of a profile, from 1. A missing file, section or key reads as empty text.
class TBrennikClientConfig {
  public:
    /// The application names of the file, up to the first number without one; lNoApplications is
    /// their number, and the array is resized only when there are any. 0 success, 1 failure.
    [[nodiscard]] int32_t ReadApplications(const std::string& strConfigFileLoc,
                                           std::vector<std::string>& strApplications,
                                           int32_t& lNoApplications);

    /// The names of all profiles, element i - 1 for profile i, a profile without a name as empty
    /// text. 0 success, 1 failure; after a failure there are no names and lProfileCount is 0.
    [[nodiscard]] int32_t GetProfileNamesAndCount(const std::string& strConfigFileLoc,
                                                  std::vector<std::string>& strProfileNames,
                                                  int32_t& lProfileCount);

    /// Reads every key of the profile into its property; a profile that doesn't exist reads as
    /// neutral values. 0 success, 1 failure: a serial port number beyond 16 bits ends it where it
    /// stands, with the properties before it already changed.
    [[nodiscard]] int32_t GetConfiguration(const std::string& strConfigFileLoc, int32_t lProfileId);

    /// The four setters write straight to the file and leave the properties alone. They report
    /// nothing. The baud rate is that of the second link alone, the port that of both.
    void SetBaudRateForProfile(const std::string& strConfigFileLoc, int32_t lProfileId,
                               int32_t lBaudRate);
    void SetComPortForProfile(const std::string& strConfigFileLoc, int32_t lProfileId,
                              int32_t lComPort);
    void SetBrennikTerminalIdForProfile(const std::string& strConfigFileLoc, int32_t lProfileId,
                                        const std::string& strBrennikTermId);
    void SetApplicationForProfile(const std::string& strConfigFileLoc, int32_t lProfileId,
                                  const std::string& strApplication);

    /// Appends the platforms of the file to those already held; each call adds them once more.
    void GetPlatforms(const std::string& strConfigFileLoc);

    /// Writes the properties to the profile, or as a new profile behind the last one, whatever
    /// lProfileId says; the number of profiles then grows as the last write of all. 0 success, 1
    /// failure; a value that can't be written is no failure.
    [[nodiscard]] int32_t SaveConfiguration(const std::string& strConfigFileLoc, int32_t lProfileId,
                                            bool bNewProfile);

    /// Of the platform array; indices from 0. Out of range: an empty name, a count of 0. Names go
    /// by their position in the line, which blank ones take part in though they aren't counted.
    std::string GetPlatFormName(int32_t lPlatformIndex) const;
    int32_t GetEpromCount(int32_t lPlatformIndex) const;
    int32_t GetApplicationCount(int32_t lPlatformIndex) const;
    std::string GetEpromName(int32_t lPlatformIndex, int32_t lEpromIndex) const;
    std::string GetApplicationName(int32_t lPlatformIndex, int32_t lApplicationIndex) const;

    /// 0 clears lUploadFileType, 1 adds bit 0, 2 adds bit 1; anything else does nothing.
    void AddUploadFileType(int32_t lFileType);

    /// The last failure; a success leaves both as they are.
    const std::string& strErrorMessage() const { return error_.strErrorMessage(); }
    int32_t lErrorCode() const { return error_.lErrorCode(); }

    // The values of the profile, as config/ProfileKeys.h tells them.
    const std::string& strWorkingFolder() const { return profile_.strWorkingFolder; }
    void strWorkingFolder(std::string strValue) { profile_.strWorkingFolder = std::move(strValue); }
    const std::string& strPlatformName() const { return profile_.strPlatformName; }
    void strPlatformName(std::string strValue) { profile_.strPlatformName = std::move(strValue); }
    int32_t lDownloadType() const { return profile_.lDownloadType; }
    void lDownloadType(int32_t lValue) { profile_.lDownloadType = lValue; }
    const std::string& strApplicationID() const { return profile_.strApplicationID; }
    void strApplicationID(std::string strValue) { profile_.strApplicationID = std::move(strValue); }
    const std::string& strTerminalId() const { return profile_.strTerminalId; }
    void strTerminalId(std::string strValue) { profile_.strTerminalId = std::move(strValue); }
    const std::string& strEpromID() const { return profile_.strEpromID; }
    void strEpromID(std::string strValue) { profile_.strEpromID = std::move(strValue); }
    int32_t lBlockSize() const { return profile_.lBlockSize; }
    void lBlockSize(int32_t lValue) { profile_.lBlockSize = lValue; }
    int32_t lOperatingMode() const { return profile_.lOperatingMode; }
    void lOperatingMode(int32_t lValue) { profile_.lOperatingMode = lValue; }
    int32_t lConnectAttempts() const { return profile_.lConnectAttempts; }
    void lConnectAttempts(int32_t lValue) { profile_.lConnectAttempts = lValue; }
    int32_t lReadPacketAttempts() const { return profile_.lReadPacketAttempts; }
    void lReadPacketAttempts(int32_t lValue) { profile_.lReadPacketAttempts = lValue; }
    int32_t lSendPacketAttempts() const { return profile_.lSendPacketAttempts; }
    void lSendPacketAttempts(int32_t lValue) { profile_.lSendPacketAttempts = lValue; }
    int32_t lCharTimeout() const { return profile_.lCharTimeout; }
    void lCharTimeout(int32_t lValue) { profile_.lCharTimeout = lValue; }
    const std::string& strLogFilePath() const { return profile_.strLogFilePath; }
    void strLogFilePath(std::string strValue) { profile_.strLogFilePath = std::move(strValue); }
    const std::string& strLogFileName() const { return profile_.strLogFileName; }
    void strLogFileName(std::string strValue) { profile_.strLogFileName = std::move(strValue); }
    bool bLoggingEnabled() const { return profile_.bLoggingEnabled; }
    void bLoggingEnabled(bool bValue) { profile_.bLoggingEnabled = bValue; }
    bool bLogControlPackets() const { return profile_.bLogControlPackets; }
    void bLogControlPackets(bool bValue) { profile_.bLogControlPackets = bValue; }
    bool bLogProcessingPackets() const { return profile_.bLogProcessingPackets; }
    void bLogProcessingPackets(bool bValue) { profile_.bLogProcessingPackets = bValue; }
    int32_t lReadPacketTimeout() const { return profile_.lReadPacketTimeout; }
    void lReadPacketTimeout(int32_t lValue) { profile_.lReadPacketTimeout = lValue; }
    const std::string& strPTid() const { return profile_.strPTid; }
    void strPTid(std::string strValue) { profile_.strPTid = std::move(strValue); }
    bool bFolderperDownloadAttempt() const { return profile_.bFolderperDownloadAttempt; }
    void bFolderperDownloadAttempt(bool bValue) { profile_.bFolderperDownloadAttempt = bValue; }
    const std::string& strScriptFileName() const { return profile_.strScriptFileName; }
    void strScriptFileName(std::string strValue) {
        profile_.strScriptFileName = std::move(strValue);
    }
    bool bExecuteScriptFile() const { return profile_.bExecuteScriptFile; }
    void bExecuteScriptFile(bool bValue) { profile_.bExecuteScriptFile = bValue; }
    int32_t lPlatformCount() const { return lPlatformCount_; }
    int32_t lMemory() const { return profile_.lMemory; }
    void lMemory(int32_t lValue) { profile_.lMemory = lValue; }
    bool bDeleteFolderPerDownloadAttempt() const {
        return profile_.bDeleteFolderPerDownloadAttempt;
    }
    void bDeleteFolderPerDownloadAttempt(bool bValue) {
        profile_.bDeleteFolderPerDownloadAttempt = bValue;
    }

    // The first link, toward whatever plays the server.
    const std::string& strServerIPAddress1() const { return profile_.strServerIPAddress1; }
    void strServerIPAddress1(std::string strValue) {
        profile_.strServerIPAddress1 = std::move(strValue);
    }
    const std::string& strServerIPAddress2() const { return profile_.strServerIPAddress2; }
    void strServerIPAddress2(std::string strValue) {
        profile_.strServerIPAddress2 = std::move(strValue);
    }
    const std::string& strServerIPAddress3() const { return profile_.strServerIPAddress3; }
    void strServerIPAddress3(std::string strValue) {
        profile_.strServerIPAddress3 = std::move(strValue);
    }
    int32_t lServerPort1() const { return profile_.lServerPort1; }
    void lServerPort1(int32_t lValue) { profile_.lServerPort1 = lValue; }
    int32_t lServerPort2() const { return profile_.lServerPort2; }
    void lServerPort2(int32_t lValue) { profile_.lServerPort2 = lValue; }
    int32_t lServerPort3() const { return profile_.lServerPort3; }
    void lServerPort3(int32_t lValue) { profile_.lServerPort3 = lValue; }
    int16_t iServerComPort() const { return profile_.iServerComPort; }
    void iServerComPort(int16_t iValue) { profile_.iServerComPort = iValue; }
    int32_t lServerBaudRate() const { return profile_.lServerBaudRate; }
    void lServerBaudRate(int32_t lValue) { profile_.lServerBaudRate = lValue; }
    const std::string& strServerParity() const { return profile_.strServerParity; }
    void strServerParity(std::string strValue) { profile_.strServerParity = std::move(strValue); }
    int16_t iServerDatabits() const { return profile_.iServerDatabits; }
    void iServerDatabits(int16_t iValue) { profile_.iServerDatabits = iValue; }
    double dServerStopBit() const { return profile_.dServerStopBit; }
    void dServerStopBit(double dValue) { profile_.dServerStopBit = dValue; }
    int16_t iServerFlowControl() const { return profile_.iServerFlowControl; }
    void iServerFlowControl(int16_t iValue) { profile_.iServerFlowControl = iValue; }

    // The second link, toward the device that plays the client.
    const std::string& strClientIPAddress1() const { return profile_.strClientIPAddress1; }
    void strClientIPAddress1(std::string strValue) {
        profile_.strClientIPAddress1 = std::move(strValue);
    }
    const std::string& strClientIPAddress2() const { return profile_.strClientIPAddress2; }
    void strClientIPAddress2(std::string strValue) {
        profile_.strClientIPAddress2 = std::move(strValue);
    }
    const std::string& strClientIPAddress3() const { return profile_.strClientIPAddress3; }
    void strClientIPAddress3(std::string strValue) {
        profile_.strClientIPAddress3 = std::move(strValue);
    }
    int32_t lClientPort1() const { return profile_.lClientPort1; }
    void lClientPort1(int32_t lValue) { profile_.lClientPort1 = lValue; }
    int32_t lClientPort2() const { return profile_.lClientPort2; }
    void lClientPort2(int32_t lValue) { profile_.lClientPort2 = lValue; }
    int32_t lClientPort3() const { return profile_.lClientPort3; }
    void lClientPort3(int32_t lValue) { profile_.lClientPort3 = lValue; }
    int16_t iClientComPort() const { return profile_.iClientComPort; }
    void iClientComPort(int16_t iValue) { profile_.iClientComPort = iValue; }
    int32_t lClientBaudRate() const { return profile_.lClientBaudRate; }
    void lClientBaudRate(int32_t lValue) { profile_.lClientBaudRate = lValue; }
    const std::string& strClientParity() const { return profile_.strClientParity; }
    void strClientParity(std::string strValue) { profile_.strClientParity = std::move(strValue); }
    int16_t iClientDatabits() const { return profile_.iClientDatabits; }
    void iClientDatabits(int16_t iValue) { profile_.iClientDatabits = iValue; }
    double dClientStopBit() const { return profile_.dClientStopBit; }
    void dClientStopBit(double dValue) { profile_.dClientStopBit = dValue; }
    int16_t iClientFlowControl() const { return profile_.iClientFlowControl; }
    void iClientFlowControl(int16_t iValue) { profile_.iClientFlowControl = iValue; }

    bool bServerBlockedSocket() const { return profile_.bServerBlockedSocket; }
    void bServerBlockedSocket(bool bValue) { profile_.bServerBlockedSocket = bValue; }
    bool bClientBlockedSocket() const { return profile_.bClientBlockedSocket; }
    void bClientBlockedSocket(bool bValue) { profile_.bClientBlockedSocket = bValue; }
    int32_t lServerConnectTimeout() const { return profile_.lServerConnectTimeout; }
    void lServerConnectTimeout(int32_t lValue) { profile_.lServerConnectTimeout = lValue; }
    int32_t lClientConnectTimeout() const { return profile_.lClientConnectTimeout; }
    void lClientConnectTimeout(int32_t lValue) { profile_.lClientConnectTimeout = lValue; }
    const std::string& strProfileName() const { return profile_.strProfileName; }
    void strProfileName(std::string strValue) { profile_.strProfileName = std::move(strValue); }
    int32_t lServerMode() const { return profile_.lServerMode; }
    void lServerMode(int32_t lValue) { profile_.lServerMode = lValue; }
    int32_t lClientMode() const { return profile_.lClientMode; }
    void lClientMode(int32_t lValue) { profile_.lClientMode = lValue; }
    /// 0 at all times, also right after a profile was added: the dialog counts on it.
    int32_t lNewProfileId() const { return 0; }
    const std::string& strConfigTitle() const { return profile_.strConfigTitle; }
    void strConfigTitle(std::string strValue) { profile_.strConfigTitle = std::move(strValue); }
    const std::string& strReleaseTitle() const { return profile_.strReleaseTitle; }
    void strReleaseTitle(std::string strValue) { profile_.strReleaseTitle = std::move(strValue); }
    bool bAutoBaud() const { return profile_.bAutoBaud; }
    void bAutoBaud(bool bValue) { profile_.bAutoBaud = bValue; }
    bool bInjectPublicKeyFile() const { return profile_.bInjectPublicKeyFile; }
    void bInjectPublicKeyFile(bool bValue) { profile_.bInjectPublicKeyFile = bValue; }
    const std::string& strPublickeyLocation() const { return profile_.strPublickeyLocation; }
    void strPublickeyLocation(std::string strValue) {
        profile_.strPublickeyLocation = std::move(strValue);
    }
    int32_t lPassThruType() const { return profile_.lPassThruType; }
    void lPassThruType(int32_t lValue) { profile_.lPassThruType = lValue; }
    int32_t lUploadFileType() const { return profile_.lUploadFileType; }
    void lUploadFileType(int32_t lValue) { profile_.lUploadFileType = lValue; }
    const std::string& strTmsAppListFile() const { return profile_.strTmsAppListFile; }
    void strTmsAppListFile(std::string strValue) {
        profile_.strTmsAppListFile = std::move(strValue);
    }
    const std::string& strTmsAppFolder() const { return profile_.strTmsAppFolder; }
    void strTmsAppFolder(std::string strValue) { profile_.strTmsAppFolder = std::move(strValue); }
    bool bPedDownload() const { return profile_.bPedDownload; }
    void bPedDownload(bool bValue) { profile_.bPedDownload = bValue; }
    bool bForceApplicationSwap() const { return profile_.bForceApplicationSwap; }
    void bForceApplicationSwap(bool bValue) { profile_.bForceApplicationSwap = bValue; }

  private:
    void AddPlatform(const std::string& strLine);
    const PlatformRecord* FindPlatform(int32_t lPlatformIndex) const;

    ErrorState error_;
    ProfileValues profile_;
    int32_t lPlatformCount_ = 0;
    std::vector<PlatformRecord> platforms_;
};

} // namespace brennik
