#include "config/OperatingMode.h"
#include "config/TBrennikClientConfig.h"
#include "link/CommsErrors.h"
#include "link/TConnectionInfo.h"
#include "link/TIsoProtocol.h"
#include "link/TSerialComms.h"
#include "passthru/ManagementMessages.h"
#include "passthru/TTmsAppDownload.h"
#include "platform/Clock.h"
#include "platform/PumpEvents.h"
#include "session/TBrennikProtocol.h"
#include "session/TTmsEnquiryPacket.h"
#include "session/TVFIPacket.h"
#include "support/AsciiText.h"
#include "support/Rounding.h"
#include "support/TFLClientLog.h"

namespace brennik {

namespace {

constexpr const char* kEnq = "\x05";
constexpr const char* kStx = "\x02";
constexpr const char* kSyn = "\x16";

constexpr int32_t kPollingAttempts = 4;
constexpr double kPollingSeconds = 20; // of one attempt
constexpr int32_t kPollingPauseMs = 50;

// The two rates at which devices call.
constexpr int32_t kSlowRate = 19200;
constexpr int32_t kFastRate = 115200;

// Of the wait for a reboot, which no device ends earlier.
constexpr int32_t kRebootDelayMs = 20000;
constexpr int32_t kErrorReplyDelayMs = 40000;
constexpr int32_t kQueryPauseMs = 5000;
constexpr int32_t kQueryReadAttempts = 1;
constexpr int32_t kQueryReadTimeout = 3; // seconds

/// A whole second of the day. The clock starts again at midnight and never reaches one beyond it:
/// meant, and no provision is made for it.
double EndOf(double dSeconds) {
    return RoundedTiesToEven(double{SecondsSinceMidnight()} + dSeconds);
}

} // namespace

int32_t TBrennikProtocol::NextAutoBaudRate(bool bAutoBaud, int32_t lBaudRate) {
    if (!bAutoBaud)
        return lBaudRate;
    return lBaudRate == kSlowRate ? kFastRate : kSlowRate;
}

int32_t TBrennikProtocol::GetFirstPacketFromDevice(
    TBrennikClientConfig& oConfig, TSerialComms& oSerialComms, TIsoProtocol& oDeviceLink,
    TConnectionInfo& oConnection, const std::string& strConfigFileLoc, int32_t lProfileId,
    TFLClientLog& oLog, std::string& strPacket, std::string& strPTID,
    PassThruState& lPassThruState) {
    return GuardedWithCode(
        error_, "TBrennikProtocol.GetFirstPacketFromDevice() Failed - ", 1, [&]() -> int32_t {
            const int32_t lPassThruType = oConfig.lPassThruType();
            if (lPassThruType == kPassThruUpload || lPassThruType == kPassThruForceFullDownload) {
                const int32_t lStatus =
                    GetFirstPacketFromDeviceForUpload(oConfig, oDeviceLink, strPacket, strPTID);
                // Meant to be so whatever the call gave.
                lPassThruState = lPassThruType == kPassThruUpload ? PASSTHRU_ST_UPLOADFILES
                                                                  : PASSTHRU_ST_FULLDOWNLOAD;
                return lStatus;
            }
            DevicePoll poll{oConfig, oSerialComms, oDeviceLink, oConnection, oLog, strPacket};
            if (!PollDevice(poll))
                return 1;
            oConfig.SetBaudRateForProfile(strConfigFileLoc, lProfileId, poll.lBaudRate);
            return ClassifyFirstPacket(oConfig, oDeviceLink, oLog, strPacket, strPTID,
                                       lPassThruState);
        });
}

bool TBrennikProtocol::PollDevice(DevicePoll& poll) {
    poll.lBaudRate = poll.oConfig.lClientBaudRate();
    poll.oConnection.lBaudRate(poll.lBaudRate);
    poll.oSerialComms.ConfigureComPort(poll.oConnection);
    poll.LogBaudRate();
    for (int32_t lAttempt = 1; !poll.bGotPacket && !poll.bFatal && lAttempt <= kPollingAttempts;
         ++lAttempt) {
        poll.strPacket.clear();
        Sleep(kPollingPauseMs);
        if (poll.oConfig.bPedDownload() && !bTmsModeRequested_)
            poll.bGotPacket = RequestTmsMode(poll.oConfig, poll.oDeviceLink, poll.strPacket);
        const double dEnd = EndOf(kPollingSeconds);
        while (!poll.bGotPacket && !poll.bFatal && !bCancelComms_ && SecondsSinceMidnight() <= dEnd)
            PollDeviceOnce(poll);
        // Also after a cancel, and after a period of SYN alone.
        if (!poll.bGotPacket && !poll.bFatal) {
            poll.SetNextBaudRate();
            poll.oSerialComms.SetBaudRate(poll.oConnection);
            poll.LogBaudRate();
        }
    }
    return poll.bGotPacket;
}

void TBrennikProtocol::PollDeviceOnce(DevicePoll& poll) {
    poll.strPacket.clear();
    Sleep(kPollingPauseMs);
    if (poll.oDeviceLink.SendArbitraryData(kEnq) != 0)
        error_.CopyFrom(poll.oDeviceLink); // the line is looked at all the same
    if (poll.oDeviceLink.ReadArbitraryData(poll.strPacket, 0, true) != 0) {
        error_.CopyFrom(poll.oDeviceLink); // silence among others
    } else if (poll.strPacket == kStx) {
        poll.bGotPacket = poll.oDeviceLink.ReadPacket(poll.strPacket, kStx) == 0;
        if (!poll.bGotPacket) {
            error_.CopyFrom(poll.oDeviceLink);
            poll.bFatal = true;
        }
    } else if (poll.strPacket != kSyn) {
        // Noise: the device speaks at another speed. Meant to take the line down and up, and to
        // log nothing. A port that doesn't open again shows at the next poll.
        poll.SetNextBaudRate();
        static_cast<void>(poll.oSerialComms.Disconnect());
        static_cast<void>(poll.oSerialComms.Connect(poll.oConnection, poll.oLog));
        poll.oDeviceLink.FlushBuffer();
    }
    PumpEvents();
}

void TBrennikProtocol::DevicePoll::SetNextBaudRate() {
    lBaudRate = NextAutoBaudRate(oConfig.bAutoBaud(), lBaudRate);
    oConnection.lBaudRate(lBaudRate);
}

void TBrennikProtocol::DevicePoll::LogBaudRate() const {
    oLog.Logit("BaudRate set @ " + ToDecimal(lBaudRate), false);
}

int32_t TBrennikProtocol::ClassifyFirstPacket(TBrennikClientConfig& oConfig,
                                              TIsoProtocol& oDeviceLink, TFLClientLog& oLog,
                                              std::string& strPacket, std::string& strPTID,
                                              PassThruState& lPassThruState) {
    TVFIPacket oVfiPacket;
    if (!oVfiPacket.IsVfiPacket(strPacket)) {
        // Edited even when the profile has no values.
        TTmsEnquiryPacket oEnquiry;
        oEnquiry.SubstituteApplicationId(oConfig.strApplicationID(), strPacket);
        oEnquiry.SubstituteTerminalId(oConfig.strTerminalId(), strPacket);
        lPassThruState = PASSTHRU_ST_TMSENQUIRY;
        bTmsModeRequested_ = false;
        return 0;
    }
    bool bLastOfSeries = false;
    const VfiPacketType type = oVfiPacket.GetPacketType(strPacket, bLastOfSeries);
    if (type != VfiPacketType::Other) {
        SubstituteIdsAndTitles(oConfig, oConfig.bForceApplicationSwap(), strPacket);
        strPTID = oVfiPacket.GetPTid(strPacket);
        oVfiPacket.SubstituteDownloadType(strPacket); // the server never sees the last flag
    }
    switch (type) {
    case VfiPacketType::XcdlDownload:
        lPassThruState = bLastOfSeries ? PASSTHRU_ST_LASTFULLTMSAPP : PASSTHRU_ST_FULLTMSAPP;
        return 0;
    case VfiPacketType::Download:
        if (!oConfig.strTmsAppFolder().empty())
            return DownloadTmsApplication(oConfig, oDeviceLink, oLog, strPacket, lPassThruState);
        lPassThruState = PASSTHRU_ST_FULLDOWNLOAD;
        return 0;
    case VfiPacketType::Partial:
    case VfiPacketType::Other:
        break;
    }
    lPassThruState = PASSTHRU_ST_PARTIALDOWNLOAD;
    return 0;
}

/// The profile's values in the place of the device's, where the profile has any.
void TBrennikProtocol::SubstituteIdsAndTitles(const TBrennikClientConfig& oConfig,
                                              bool bSubstituteApplicationOnPartial,
                                              std::string& strPacket) {
    TVFIPacket oVfiPacket;
    if (!oConfig.strTerminalId().empty())
        oVfiPacket.SubstituteTerminalId(oConfig.strTerminalId(), strPacket);
    if (!oConfig.strApplicationID().empty())
        oVfiPacket.SubstituteApplicationId(oConfig.strApplicationID(), strPacket,
                                           bSubstituteApplicationOnPartial);
    if (!oConfig.strReleaseTitle().empty() || !oConfig.strConfigTitle().empty())
        oVfiPacket.SubsituteRelConfigTitle(oConfig.strReleaseTitle(), oConfig.strConfigTitle(),
                                           strPacket);
}

/// Runs right here, while the device waits for the answer to its request: the first frame of the
/// list is that answer.
int32_t TBrennikProtocol::DownloadTmsApplication(TBrennikClientConfig& oConfig,
                                                 TIsoProtocol& oDeviceLink, TFLClientLog& oLog,
                                                 const std::string& strPacket,
                                                 PassThruState& lPassThruState) {
    auto oDownload = std::make_unique<TTmsAppDownload>();
    TTmsAppDownload& download = *oDownload;
    oTmsAppDownload_ = std::move(oDownload);
    bTmsAppDownloadActive_ = true;
    lCurrentState_ = BrennikState::DownloadingTmsApplication;
    const int32_t lStatus =
        download.Download(oDeviceLink, oConfig, TVFIPacket().GetBlockSize(strPacket), oLog);
    if (lStatus == 0) {
        lPassThruState = PASSTHRU_ST_DOWNLOAAPPCOMPLETE;
    } else {
        error_.CopyFrom(download);
    }
    lDownloadFileSize_ = 0;
    lFileBytesDownloaded_ = 0;
    bTmsAppDownloadActive_ = false;
    return lStatus;
}

int32_t TBrennikProtocol::GetFirstPacketFromDeviceForUpload(TBrennikClientConfig& oConfig,
                                                            TIsoProtocol& oDeviceLink,
                                                            std::string& strPacket,
                                                            std::string& strPTID) {
    return GuardedWithCode(
        error_, "TBrennikProtocol.GetFirstPacketFromDeviceForUpload() Failed - ", 1,
        [&]() -> int32_t {
            // Meant to be given back only where the device agrees: the next cycle sets the link
            // up anew.
            const int32_t lChecksumType = oDeviceLink.lChecksumType();
            const bool bAckPackets = oDeviceLink.bAckPackets();
            if (!AskForTransfer(oConfig, oDeviceLink, strPacket))
                return 1;
            if (!IsTransferAuthorisedReply(strPacket)) {
                SetError(error_, CommsErrors::kUploadNotAuthorised); // for a download as well
                return 1;
            }
            oDeviceLink.lChecksumType(lChecksumType);
            oDeviceLink.bAckPackets(bAckPackets);
            strPacket.clear();
            if (oDeviceLink.ReadPacket(strPacket, "") != 0) {
                error_.CopyFrom(oDeviceLink);
                return 1;
            }
            TVFIPacket oVfiPacket;
            if (!oConfig.strTerminalId().empty())
                oVfiPacket.SubstituteTerminalId(oConfig.strTerminalId(), strPacket);
            if (!oConfig.strApplicationID().empty())
                oVfiPacket.SubstituteApplicationId(oConfig.strApplicationID(), strPacket, false);
            strPTID = oVfiPacket.GetPTid(strPacket);
            return 0;
        });
}

void TBrennikProtocol::WaitForDeviceReboot(TIsoProtocol& oDeviceLink, int32_t lTimeout,
                                           TFLClientLog& oLog,
                                           const TBrennikClientConfig& oConfig) {
    const double dEnd = EndOf(lTimeout);
    const std::string strQuery = BuildStatusQueryMessage(oConfig);
    oLog.Logit("Delaying for 20 secs", false);
    Sleep(kRebootDelayMs);
    const int32_t lChecksumType = oDeviceLink.lChecksumType();
    const int32_t lPacketReadAttempts = oDeviceLink.lPacketReadAttempts();
    const int32_t lPacketTimeout = oDeviceLink.lPacketTimeout();
    const bool bAckPackets = oDeviceLink.bAckPackets();
    oDeviceLink.lChecksumType(kManagementChecksumType);
    oDeviceLink.lPacketReadAttempts(kQueryReadAttempts);
    oDeviceLink.lPacketTimeout(kQueryReadTimeout);
    oDeviceLink.bAckPackets(true);
    bool bReady = false;
    bool bStop = false;
    // Meant to look at no cancel: it is seen in the next cycle.
    while (SecondsSinceMidnight() < dEnd && !bReady && !bStop) {
        PumpEvents();
        oDeviceLink.FlushBuffer();
        std::string strReply;
        if (oDeviceLink.SendPacket(strQuery) == 0 && oDeviceLink.ReadPacket(strReply, "") == 0) {
            if (IsDeviceErrorReply(strReply)) {
                Sleep(kErrorReplyDelayMs);
                bStop = true;
            } else {
                bReady = IsDeviceReadyReply(strReply);
            }
        }
        if (!bReady && !bStop)
            Sleep(kQueryPauseMs);
        PumpEvents();
    }
    oDeviceLink.lChecksumType(lChecksumType);
    oDeviceLink.lPacketReadAttempts(lPacketReadAttempts);
    oDeviceLink.lPacketTimeout(lPacketTimeout);
    oDeviceLink.bAckPackets(bAckPackets);
}

void TBrennikProtocol::CopyTerminalIdFromProfile(const std::string& strConfigFileLoc) {
    TBrennikClientConfig oOther;
    // What can't be read is empty, and what can't be written stays: nobody looks.
    static_cast<void>(oOther.GetConfiguration(strConfigFileLoc, 2));
    oConfig_->strTerminalId(oOther.strTerminalId());
    static_cast<void>(oConfig_->SaveConfiguration(strConfigFileLoc, 1, false));
}

} // namespace brennik
