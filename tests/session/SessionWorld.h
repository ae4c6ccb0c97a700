// A client session in the simulated host: a profile, a far end played from a list of payloads, the
// engine, and what it left behind.
#pragma once

#include "config/TBrennikClientConfig.h"
#include "session/TBrennikPacket.h"
#include "session/TBrennikProtocol.h"
#include "sim/ServiceScript.h"
#include "support/FileSystem.h"
#include "tests/session/Packets.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {

/// The tests' one way into the engine.
class TBrennikProtocolTestAccess {
  public:
    explicit TBrennikProtocolTestAccess(TBrennikProtocol& oProtocol) : oProtocol_(oProtocol) {}

    static void LoadConnectionInfo(const TBrennikClientConfig& oConfig, TConnectionInfo& oConnInfo,
                                   bool bServer) {
        TBrennikProtocol::LoadConnectionInfo(oConfig, oConnInfo, bServer);
    }
    void BeginTmsAppDownload(std::unique_ptr<DownloadProgress> progress) {
        oProtocol_.oTmsAppDownload_ = std::move(progress);
        oProtocol_.bTmsAppDownloadActive_ = true;
    }
    /// Prepares the folders of the profile as the run of any mode does.
    int32_t InitialiseFolders(TBrennikClientConfig& oConfig) {
        oProtocol_.oFileSystem_ = std::make_unique<FileSystem>();
        oProtocol_.oConfig_ = &oConfig;
        return oProtocol_.InitialiseFolders();
    }
    bool OpenDownloadFile(TBrennikPacket& oPacket, bool bResume) {
        return oProtocol_.OpenDownloadFile(oPacket, bResume);
    }
    const std::string& strDriveFolder() const { return oProtocol_.strDriveFolder_; }
    const std::string& strGroupFolder() const { return oProtocol_.strGroupFolder_; }
    void EndTmsAppDownload() { oProtocol_.bTmsAppDownloadActive_ = false; }

    // The operations on a device, with the arguments of the engine's own.

    int32_t GetFirstPacketFromDevice(TBrennikClientConfig& oConfig, TSerialComms& oSerialComms,
                                     TIsoProtocol& oDeviceLink, TConnectionInfo& oConnection,
                                     const std::string& strConfigFileLoc, int32_t lProfileId,
                                     TFLClientLog& oLog, std::string& strPacket,
                                     std::string& strPTID, PassThruState& lPassThruState) {
        return oProtocol_.GetFirstPacketFromDevice(oConfig, oSerialComms, oDeviceLink, oConnection,
                                                   strConfigFileLoc, lProfileId, oLog, strPacket,
                                                   strPTID, lPassThruState);
    }
    int32_t GetFirstPacketFromDeviceForUpload(TBrennikClientConfig& oConfig,
                                              TIsoProtocol& oDeviceLink, std::string& strPacket,
                                              std::string& strPTID) {
        return oProtocol_.GetFirstPacketFromDeviceForUpload(oConfig, oDeviceLink, strPacket,
                                                            strPTID);
    }
    void WaitForDeviceReboot(TIsoProtocol& oDeviceLink, int32_t lTimeout, TFLClientLog& oLog,
                             const TBrennikClientConfig& oConfig) {
        oProtocol_.WaitForDeviceReboot(oDeviceLink, lTimeout, oLog, oConfig);
    }
    static int32_t NextAutoBaudRate(bool bAutoBaud, int32_t lBaudRate) {
        return TBrennikProtocol::NextAutoBaudRate(bAutoBaud, lBaudRate);
    }
    void CopyTerminalIdFromProfile(TBrennikClientConfig& oConfig,
                                   const std::string& strConfigFileLoc) {
        oProtocol_.oConfig_ = &oConfig;
        oProtocol_.CopyTerminalIdFromProfile(strConfigFileLoc);
    }
    int32_t ForcePedIntoTmsMode(TBrennikClientConfig& oConfig, TIsoProtocol& oDeviceLink,
                                TIsoProtocol& oServerLink, TSocketComms& oServerChannel,
                                TConnectionInfo& oServerConnection, TFLClientLog& oLog,
                                std::string& strPacket) {
        return oProtocol_.ForcePedIntoTmsMode(oConfig, oDeviceLink, oServerLink, oServerChannel,
                                              oServerConnection, oLog, strPacket);
    }
    void SubstituteProfileFields(const TBrennikClientConfig& oConfig, std::string& strPacket) {
        oProtocol_.SubstituteProfileFields(oConfig, strPacket);
    }
    int32_t DownloadTmsApplication(TBrennikClientConfig& oConfig, TIsoProtocol& oDeviceLink,
                                   TFLClientLog& oLog, const std::string& strPacket,
                                   PassThruState& lPassThruState) {
        return oProtocol_.DownloadTmsApplication(oConfig, oDeviceLink, oLog, strPacket,
                                                 lPassThruState);
    }
    bool bTmsModeRequested() const { return oProtocol_.bTmsModeRequested_; }
    void bTmsModeRequested(bool bRequested) { oProtocol_.bTmsModeRequested_ = bRequested; }
    bool bDeviceAnswered() const { return oProtocol_.bDeviceAnswered_; }
    bool bTmsAppDownloadActive() const { return oProtocol_.bTmsAppDownloadActive_; }

  private:
    TBrennikProtocol& oProtocol_;
};

namespace session {

/// The port of a profile in mode 1, and what the line to it is set to.
inline constexpr const char* kComPort = "COM3";
inline constexpr int32_t kBaudRate = 115200;

enum class Over { Tcp, SerialLine };

/// What a service does ahead of its ENQ: it lets the line be set, which happens a moment after the
/// port was opened.
sim::ServiceScript LineSettled();

class SessionTest : public world::WorldTest {
  protected:
    explicit SessionTest(Over over = Over::Tcp);

    /// What the far end sends behind its ACK of the request, each payload when the one before it
    /// was acknowledged. Bytes of a kind of their own go with SayRaw.
    void Say(std::vector<std::string> payloads);

    /// Runs the profile with a new engine: the result of DoBrennikProtocol.
    int32_t Run();

    /// The lines of the session log from the tag on, without date, time and process.
    std::vector<std::string> Log() const;
    /// Those of them that tell an error.
    std::vector<std::string> Errors() const;
    std::string File(const std::string& strPath) const { return host.files.Get(strPath).value(); }
    bool Exists(const std::string& strPath) const { return host.files.Exists(strPath); }

    /// A run that failed with that code and text, logged as its one error.
    void ExpectFailure(int32_t lCode, const std::string& strText);

    TBrennikClientConfig config;
    std::unique_ptr<TBrennikProtocol> engine;
    world::ScriptedPeer& peer;
    /// Called with the new engine in place, before it runs.
    std::function<void()> onEngine;
    /// Called with the index of each payload before it goes out.
    std::function<void(size_t)> onPayload;

  private:
    std::vector<std::string> payloads_;
};

} // namespace session
} // namespace brennik
