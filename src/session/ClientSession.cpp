#include "config/OperatingMode.h"
#include "config/ProfileLogging.h"
#include "config/TBrennikClientConfig.h"
#include "generated/Version.h"
#include "link/CommsErrors.h"
#include "link/TConnectionInfo.h"
#include "link/TIsoProtocol.h"
#include "link/TSerialComms.h"
#include "link/TSocketComms.h"
#include "platform/PumpEvents.h"
#include "session/TBrennikPacket.h"
#include "session/TBrennikProtocol.h"
#include "support/AsciiText.h"
#include "support/FileSystem.h"
#include "support/TFLClientLog.h"

namespace brennik {

namespace {

constexpr int32_t kFullDownload = 0;

constexpr int32_t kCheckCrc16HighByteFirst = 2;
constexpr int16_t kStx = 2;

std::unique_ptr<TCommsChannel> MakeClientChannel(int32_t lOperatingMode) {
    if (lOperatingMode == kModeSerialClient)
        return std::make_unique<TSerialComms>();
    return std::make_unique<TSocketComms>();
}

// The numbers below are positions in the lists of the serial settings, not line values.

int32_t ParityPosition(const std::string& strParity) {
    switch (strParity.empty() ? '\0' : UpperCase(strParity.substr(0, 1)).front()) {
    case 'E':
        return 0;
    case 'N':
        return 2;
    case 'S':
        return 3;
    case 'M':
        return 4;
    default:
        return 1; // odd, also for an empty text
    }
}

int32_t DatabitsPosition(int16_t iDatabits) {
    return iDatabits >= 4 && iDatabits <= 7 ? iDatabits - 4 : 4;
}

int32_t StopbitPosition(double dStopBit) {
    if (dStopBit == 1.0)
        return 0;
    return dStopBit == 1.5 ? 1 : 2; // two also for a value that is missing: it is meant so
}

// The one place that joins the profile's numbering (0 none, 1 Xon/Xoff, 2 hardware) with the
// line's (0 none, 1 RTS/CTS, 2 DTR/DSR, 3 XON/XOFF).
int32_t FlowControlPosition(int16_t iFlowControl) {
    switch (iFlowControl) {
    case 0:
        return 0;
    case 1:
        return 3;
    case 2:
        return 1;
    default:
        return 2;
    }
}

} // namespace

TBrennikProtocol::TBrennikProtocol() : lFileHandle_(kNoFile) {
}

TBrennikProtocol::~TBrennikProtocol() = default;

const std::string& TBrennikProtocol::strDownloadFileName() const {
    return bTmsAppDownloadActive_ ? oTmsAppDownload_->strDownloadFileName() : strDownloadFileName_;
}

int32_t TBrennikProtocol::lDownloadFileSize() const {
    return bTmsAppDownloadActive_ ? oTmsAppDownload_->lDownloadFileSize() : lDownloadFileSize_;
}

int32_t TBrennikProtocol::lFileBytesDownloaded() const {
    return bTmsAppDownloadActive_ ? oTmsAppDownload_->lFileBytesDownloaded()
                                  : lFileBytesDownloaded_;
}

int32_t TBrennikProtocol::DoBrennikProtocol(TBrennikClientConfig& oConfig,
                                            const std::string& strConfigFileLoc,
                                            int32_t lProfileId) {
    // A run-time failure ends the run at once: nothing closes the connection in order, and nothing
    // is logged. It is meant so.
    return GuardedWithCode(
        error_, "TBrennikProtocol.DoBrennikProtocol() Failed - ", 1, [&]() -> int32_t {
            const int32_t lOperatingMode = oConfig.lOperatingMode();
            if (lOperatingMode != kModeTcpClient && lOperatingMode != kModeSerialClient)
                return DoBrennikPassThruProtocol(oConfig, strConfigFileLoc, lProfileId);
            return RunClientSession(oConfig, lProfileId);
        });
}

int32_t TBrennikProtocol::RunClientSession(TBrennikClientConfig& oConfig, int32_t lProfileId) {
    // The channel borrows these two for as long as it lives.
    TConnectionInfo oConnInfo;
    TFLClientLog oLog;
    const std::unique_ptr<TCommsChannel> oChannel = MakeClientChannel(oConfig.lOperatingMode());
    oFileSystem_ = std::make_unique<FileSystem>();
    oConfig_ = &oConfig;
    lFileHandle_ = kNoFile;
    TIsoProtocol oLink;
    InitialiseLoggingFromProfile(oLog, oConfig);
    LogRunHeader(oLog, lProfileId);

    int32_t lResult = 1;
    std::string strRequest;
    if (PrepareSession(*oChannel, oConnInfo, oLink, oLog, strRequest)) {
        lResult = HoldSession(oLink, oLog, strRequest);
        // A close that fails has written its own log lines, and changes nothing here.
        static_cast<void>(oChannel->Disconnect());
    }
    if (lResult == 1)
        oLog.LogErrorCodeAndMsg(error_.lErrorCode(), error_.strErrorMessage());
    oFileSystem_.reset();
    return lResult;
}

void TBrennikProtocol::LogRunHeader(TFLClientLog& oLog, int32_t lProfileId) const {
    LogProgramAndProfile(oLog, lProfileId);
    oLog.Logit("Brennik Application=" + oConfig_->strApplicationID(), false);
    oLog.Logit("Brennik Terminal Id=" + oConfig_->strTerminalId(), false);
}

void TBrennikProtocol::LogProgramAndProfile(TFLClientLog& oLog, int32_t lProfileId) {
    oLog.Logit("Brennik Client v" + ToDecimal(kVersionMajor) + "." + ToDecimal(kVersionMinor) +
                   "." + ToDecimal(kVersionRevision),
               false);
    oLog.Logit("Brennik Profile=" + ToDecimal(lProfileId), false);
}

bool TBrennikProtocol::PrepareSession(TCommsChannel& oChannel, TConnectionInfo& oConnInfo,
                                      TIsoProtocol& oLink, TFLClientLog& oLog,
                                      std::string& strRequest) {
    if (InitialiseFolders() != 0)
        return false;
    const TBrennikClientConfig& config = *oConfig_;
    if (oLink.InitialiseObject(oChannel, oLog, kCheckCrc16HighByteFirst, config.lCharTimeout(),
                               config.lReadPacketTimeout(), config.lCharTimeout(), kStx,
                               config.lReadPacketAttempts(), config.lSendPacketAttempts(),
                               /*bServerSide=*/false, /*bAckPackets=*/true) != 0) {
        error_.CopyFrom(oLink);
        return false;
    }
    LoadConnectionInfo(config, oConnInfo, /*bServer=*/true);

    TBrennikPacket oPacket;
    if (oPacket.BuildDownloadRequestPacket(
            config.strPlatformName(), config.lDownloadType() == kFullDownload,
            config.strApplicationID(), config.strTerminalId(), config.strEpromID(),
            config.lBlockSize(), config.strPTid(), config.lMemory(), config.strConfigTitle(),
            config.strReleaseTitle(), config.lOperatingMode() != kModeSerialClient,
            strRequest) != 0) {
        error_.CopyFrom(oPacket);
        return false;
    }
    if (oChannel.Connect(oConnInfo, oLog) != 0) {
        error_.CopyFrom(oChannel);
        return false;
    }
    return true;
}

int32_t TBrennikProtocol::HoldSession(TIsoProtocol& oLink, TFLClientLog& oLog,
                                      const std::string& strRequest) {
    // The far end speaks first.
    if (oLink.WaitForEnq() != 0 || oLink.SendPacket(strRequest) != 0) {
        error_.CopyFrom(oLink);
        return 1;
    }
    int32_t lResult = RunPacketLoop(oLink, oLog);
    // A cancel hides the failure of the same pass, and a success as well: it is meant so.
    if (bCancelComms_) {
        SetError(error_, CommsErrors::kAbortedByUser);
        lResult = 1;
    }
    // What was received stands; a close that fails changes no result.
    static_cast<void>(CloseDownloadFile());
    return lResult;
}

int32_t TBrennikProtocol::RunPacketLoop(TIsoProtocol& oLink, TFLClientLog& oLog) {
    TBrennikPacket oPacket;
    std::string strPacket;
    bool bDone = false;
    bool bAbort = false;
    while (!bDone && !bAbort && !bCancelComms_) {
        if (oLink.ReadPacket(strPacket, "") != 0) {
            error_.CopyFrom(oLink);
            bAbort = true;
        } else if (oPacket.BreakOutPacket(strPacket) != 0) {
            error_.CopyFrom(oPacket);
            bAbort = true;
        } else {
            bAbort = !ActOnPacket(oPacket, strPacket, oLog, bDone);
        }
        PumpEvents();
    }
    return bDone ? 0 : 1;
}

// One packet of the far end. False ends the session, with the error set.
bool TBrennikProtocol::ActOnPacket(TBrennikPacket& oPacket, std::string_view strPacket,
                                   TFLClientLog& oLog, bool& bDone) {
    // The state moves on whether or not its handler succeeds.
    const auto becomes = [&](BrennikState lState, bool bHandled) {
        lCurrentState_ = lState;
        return bHandled;
    };
    switch (oPacket.GetPacketType(strPacket)) {
    case BrennikPacketType::OpenFile:
        return becomes(BrennikState::DownloadingFile, OpenDownloadFile(oPacket, false));
    case BrennikPacketType::AppendFile:
        return becomes(BrennikState::DownloadingFile, OpenDownloadFile(oPacket, true));
    case BrennikPacketType::WriteData:
        return becomes(BrennikState::DownloadingFile, WriteToDownloadFile(oPacket));
    case BrennikPacketType::CloseFile: {
        // With nothing open this records the last name once more, and a close that failed is
        // listed all the same: it is meant so.
        const bool bHandled = CloseDownloadFile();
        oLog.Logit("Downloaded file=" + strCurrentFolder_ + strDownloadFileName_ +
                       ", filesize=" + ToDecimal(lDownloadFileSize_),
                   false);
        AddToDownloadArray(strCurrentFolder_, strDownloadFileName_);
        return becomes(BrennikState::DownloadingFile, bHandled);
    }
    case BrennikPacketType::ConfigVariable:
        return becomes(BrennikState::ProcessingConfigSysVariable, WriteToConfigSysFile(oPacket));
    case BrennikPacketType::Message:
        strStatusMessage_ = oPacket.strData();
        return becomes(BrennikState::ProcessingMessage, true);
    case BrennikPacketType::SetPassword:
        return becomes(BrennikState::ProcessingSetPassword, ProcessSetPasswordPacket());
    case BrennikPacketType::SetTime:
        return becomes(BrennikState::ProcessingSetTime, ProcessSetTimePacket());
    case BrennikPacketType::SessionSuccessful:
        bDone = true;
        return becomes(BrennikState::DisconnectingFromServer, true);
    case BrennikPacketType::SessionUnsuccessful:
        SetError(error_, CommsErrors::kDownloadFailed);
        return false;
    case BrennikPacketType::SetDirectory:
    case BrennikPacketType::Recognised: // neither of these two passes the break-out
    case BrennikPacketType::Unknown:
        break;
    }
    return true;
}

// A password for the terminal is of no use here; the packet is taken and the session goes on.
bool TBrennikProtocol::ProcessSetPasswordPacket() {
    return true;
}

// The clock of this machine is its owner's; the packet is taken and the session goes on.
bool TBrennikProtocol::ProcessSetTimePacket() {
    return true;
}

void TBrennikProtocol::LoadConnectionInfo(const TBrennikClientConfig& oConfig,
                                          TConnectionInfo& oConnInfo, bool bServer) {
    oConnInfo.lConnectionAttempts(oConfig.lConnectAttempts());
    if (bServer) {
        oConnInfo.strComPort("COM" + ToDecimal(oConfig.iServerComPort()));
        oConnInfo.lBaudRate(oConfig.lServerBaudRate());
        oConnInfo.lParity(ParityPosition(oConfig.strServerParity()));
        oConnInfo.lDatabits(DatabitsPosition(oConfig.iServerDatabits()));
        oConnInfo.lStopbit(StopbitPosition(oConfig.dServerStopBit()));
        oConnInfo.lFlowControl(FlowControlPosition(oConfig.iServerFlowControl()));
        oConnInfo.lConnectTimeout(oConfig.lServerConnectTimeout());
        oConnInfo.bBlockedSocket(oConfig.bServerBlockedSocket());
        oConnInfo.strIPAddress1(oConfig.strServerIPAddress1());
        oConnInfo.strIPAddress2(oConfig.strServerIPAddress2());
        oConnInfo.strIPAddress3(oConfig.strServerIPAddress3());
        oConnInfo.lIPPortNo1(oConfig.lServerPort1());
        oConnInfo.lIPPortNo2(oConfig.lServerPort2());
        oConnInfo.lIPPortNo3(oConfig.lServerPort3());
    } else {
        oConnInfo.strComPort("COM" + ToDecimal(oConfig.iClientComPort()));
        oConnInfo.lBaudRate(oConfig.lClientBaudRate());
        oConnInfo.lParity(ParityPosition(oConfig.strClientParity()));
        oConnInfo.lDatabits(DatabitsPosition(oConfig.iClientDatabits()));
        oConnInfo.lStopbit(StopbitPosition(oConfig.dClientStopBit()));
        oConnInfo.lFlowControl(FlowControlPosition(oConfig.iClientFlowControl()));
        oConnInfo.lConnectTimeout(oConfig.lClientConnectTimeout());
        oConnInfo.bBlockedSocket(oConfig.bClientBlockedSocket());
        oConnInfo.strIPAddress1(oConfig.strClientIPAddress1());
        oConnInfo.strIPAddress2(oConfig.strClientIPAddress2());
        oConnInfo.strIPAddress3(oConfig.strClientIPAddress3());
        oConnInfo.lIPPortNo1(oConfig.lClientPort1());
        oConnInfo.lIPPortNo2(oConfig.lClientPort2());
        oConnInfo.lIPPortNo3(oConfig.lClientPort3());
    }
}

} // namespace brennik
