#include "config/OperatingMode.h"
#include "config/ProfileLogging.h"
#include "config/TBrennikClientConfig.h"
#include "generated/Version.h"
#include "link/CommsErrors.h"
#include "link/TSerialComms.h"
#include "link/TSocketComms.h"
#include "passthru/PassThruRun.h"
#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/FileSystem.h"

#include <array>

namespace brennik {

namespace {

constexpr int32_t kLastTries = 12; // cycles ended before the last one: thirteen in all

constexpr int32_t kRebootSeconds = 240;

// Of both links.
constexpr int32_t kCheckCrc16HighByteFirst = 2;
constexpr int16_t kStx = 2;

/// By number, misspellings included: readers of the log know them so.
constexpr std::array<const char*, 11> kStateNames{
    "PASSTHRU_ST_COMLETE",         "PASSTHRU_ST_ERROR",
    "PASSTHRU_ST_PARTIALDOWNLOAD", "PASSTHRU_ST_UPLOADFILES",
    "PASSTHRU_ST_FULLDOWNLOAD",    "PASSTHRU_ST_TMSENQUIRY",
    "PASSTHRU_ST_START",           "PASSTHRU_ST_USERABORTED",
    "PASSTHRU_ST_FULLTMSAPP",      "PASSTHRU_ST_DOWNLOAAPPCOMPLETE",
    "PASSTHRU_ST_LASTFULLTMSAPP"};

/// States in which the session that the device asked for has been held.
bool EndsSession(PassThruState lState) {
    return lState == PASSTHRU_ST_FULLDOWNLOAD || lState == PASSTHRU_ST_PARTIALDOWNLOAD ||
           lState == PASSTHRU_ST_UPLOADFILES || lState == PASSTHRU_ST_LASTFULLTMSAPP;
}

bool IsFullDownload(PassThruState lState) {
    return lState == PASSTHRU_ST_FULLDOWNLOAD || lState == PASSTHRU_ST_FULLTMSAPP ||
           lState == PASSTHRU_ST_LASTFULLTMSAPP;
}

} // namespace

std::string PassThruStateName(int32_t lState) {
    return lState >= 0 && static_cast<size_t>(lState) < kStateNames.size()
               ? kStateNames[static_cast<size_t>(lState)]
               : "";
}

int32_t TBrennikProtocol::DoBrennikPassThruProtocol(TBrennikClientConfig& oConfig,
                                                    const std::string& strConfigFileLoc,
                                                    int32_t lProfileId) {
    // A run-time failure ends the run at once, and nothing is logged: it is meant so.
    return GuardedWithCode(
        error_, "TBrennikProtocol.DoBrennikPassThruProtocol() Failed - ", 1, [&]() -> int32_t {
            oFileSystem_ = std::make_unique<FileSystem>();
            oConfig_ = &oConfig;
            lFileHandle_ = kNoFile;
            lNumFilesDownloaded_ = 0;
            bTmsModeRequested_ = false;
            bDeviceAnswered_ = false;
            PassThruRun run(oConfig, strConfigFileLoc, lProfileId);
            while (run.lTries <= kLastTries && run.lPassThruState != PASSTHRU_ST_USERABORTED &&
                   run.lPassThruState != PASSTHRU_ST_COMLETE) {
                DoPassThruCycle(run);
            }
            if (run.bError)
                run.oLog.LogErrorCodeAndMsg(error_.lErrorCode(), error_.strErrorMessage());
            oFileSystem_.reset();
            return run.lResult;
        });
}

void TBrennikProtocol::DoPassThruCycle(PassThruRun& run) {
    BeginPassThruCycle(run);
    if (!AbortIfCancelled(run) && !run.bError) {
        // A device on anything but a serial line is refused here, by its type.
        auto* const oSerialComms = dynamic_cast<TSerialComms*>(run.oDeviceChannel.get());
        if (oSerialComms == nullptr)
            throw RuntimeFailure(FailureKind::TypeMismatch);
        if (GetFirstPacketFromDevice(run.oConfig, *oSerialComms, run.oDeviceLink,
                                     run.oDeviceConnection, run.strConfigFileLoc, run.lProfileId,
                                     run.oLog, run.strPacket, run.strPTID,
                                     run.lPassThruState) != 0) {
            run.bError = true;
            run.lResult = 1;
        } else if (run.lPassThruState == PASSTHRU_ST_TMSENQUIRY) {
            ExchangeTmsEnquiry(run);
        } else if (run.lPassThruState != PASSTHRU_ST_DOWNLOAAPPCOMPLETE) {
            ExchangeWithServer(run);
        }
    }
    EndPassThruCycle(run);
}

/// Log, channels and links anew, and the device side opened: always before the server side.
void TBrennikProtocol::BeginPassThruCycle(PassThruRun& run) {
    const TBrennikClientConfig& config = run.oConfig;
    InitialiseLoggingFromProfile(run.oLog, config);
    LogProgramAndProfile(run.oLog, run.lProfileId);
    run.oServerChannel = std::make_unique<TSocketComms>();
    if (config.lOperatingMode() == kModeSerialPassThru)
        run.oDeviceChannel = std::make_unique<TSerialComms>();
    else
        run.oDeviceChannel = std::make_unique<TSocketComms>();
    // Both in any case: none may keep the channel of the cycle before.
    const bool bServerLink =
        InitialisePassThruLink(run, run.oServerLink, *run.oServerChannel, true);
    const bool bDeviceLink =
        InitialisePassThruLink(run, run.oDeviceLink, *run.oDeviceChannel, false);
    if (!bServerLink || !bDeviceLink)
        return;
    LoadConnectionInfo(config, run.oServerConnection, /*bServer=*/true);
    LoadConnectionInfo(config, run.oDeviceConnection, /*bServer=*/false);
    if (run.oDeviceChannel->Connect(run.oDeviceConnection, run.oLog) != 0)
        FailPassThru(run, *run.oDeviceChannel);
}

/// Neither link acknowledges by itself: every ACK and NAK comes from a far end and is copied.
bool TBrennikProtocol::InitialisePassThruLink(PassThruRun& run, TIsoProtocol& oLink,
                                              TCommsChannel& oChannel, bool bServerSide) {
    const TBrennikClientConfig& config = run.oConfig;
    if (oLink.InitialiseObject(oChannel, run.oLog, kCheckCrc16HighByteFirst, config.lCharTimeout(),
                               config.lReadPacketTimeout(), config.lCharTimeout(), kStx,
                               config.lReadPacketAttempts(), config.lSendPacketAttempts(),
                               bServerSide, /*bAckPackets=*/false) == 0)
        return true;
    FailPassThru(run, oLink);
    return false;
}

void TBrennikProtocol::ExchangeWithServer(PassThruRun& run) {
    PassFirstPacketToServer(run);
    if (AbortIfCancelled(run) || run.bError)
        return;
    const int32_t lPassThruType = run.oConfig.lPassThruType();
    const bool bDownload =
        lPassThruType == kPassThruDownload || lPassThruType == kPassThruForceFullDownload;
    // In the pause between the server's acknowledgement and its first frame. How it goes has no
    // effect on the run.
    if (run.oConfig.bInjectPublicKeyFile() && bDownload && IsFullDownload(run.lPassThruState))
        InjectPublicKeyFile(run.oLog, run.oConfig, run.oDeviceLink, run.strPTID);
    if (bDownload)
        RelayDownload(run);
    else
        RelayUpload(run);
    static_cast<void>(AbortIfCancelled(run)); // the end of the cycle looks at the state
}

/// Up to the server's verdict on the first packet, which is passed to the device: its ACK comes
/// only now, and from the server.
void TBrennikProtocol::PassFirstPacketToServer(PassThruRun& run) {
    TIsoProtocol& oServerLink = run.oServerLink;
    if (run.oServerChannel->Connect(run.oServerConnection, run.oLog) != 0) {
        FailPassThru(run, *run.oServerChannel);
        return;
    }
    if (oServerLink.WaitForEnq() != 0) {
        FailPassThru(run, oServerLink);
        return;
    }
    if (oServerLink.FlushBuffer() != 0) {
        run.bError = true; // meant to take no text over
        return;
    }
    if (oServerLink.SendPacket(run.strPacket) != 0 ||
        oServerLink.ReadArbitraryData(run.strChar, run.oConfig.lCharTimeout(), true) != 0) {
        FailPassThru(run, oServerLink);
        return;
    }
    if (run.strChar.size() == 1 && run.oDeviceLink.SendArbitraryData(run.strChar) != 0)
        FailPassThru(run, run.oDeviceLink);
}

void TBrennikProtocol::EndPassThruCycle(PassThruRun& run) {
    // What a close reports stands in the log already and changes nothing here; a side that was
    // never opened closes with success.
    const auto disconnect = [](TCommsChannel& oChannel) {
        static_cast<void>(oChannel.Disconnect());
    };
    disconnect(*run.oServerChannel);
    ++run.lTries;
    if (run.lPassThruState == PASSTHRU_ST_USERABORTED) {
        disconnect(*run.oDeviceChannel);
    } else if (!EndsSession(run.lPassThruState)) {
        LogWaitForReboot(run, "[C]");
        // Behind an enquiry the device calls again at once.
        if (run.lPassThruState != PASSTHRU_ST_TMSENQUIRY)
            WaitForDeviceReboot(run.oDeviceLink, kRebootSeconds, run.oLog, run.oConfig);
        disconnect(*run.oDeviceChannel);
    } else {
        const std::string strState = PassThruStateName(run.lPassThruState);
        run.oLog.Logit("State=" + strState, false);
        if (run.oConfig.bPedDownload() && !run.bRebooted &&
            run.lPassThruState != PASSTHRU_ST_UPLOADFILES) {
            // The device has one more reboot to make.
            LogWaitForReboot(run, "[A]");
            WaitForDeviceReboot(run.oDeviceLink, kRebootSeconds, run.oLog, run.oConfig);
            bTmsModeRequested_ = false;
            run.bRebooted = true;
            run.lPassThruState = PASSTHRU_ST_START;
            disconnect(*run.oDeviceChannel);
        } else {
            disconnect(*run.oDeviceChannel);
            run.oLog.Logit("[B] State=" + strState + ", Exiting now as session is complete", false);
            run.lResult = run.bError ? 1 : 0;
            run.lPassThruState = PASSTHRU_ST_COMLETE;
        }
    }
}

void TBrennikProtocol::LogWaitForReboot(PassThruRun& run, const char* strMark) {
    run.oLog.Logit(strMark + (" State=" + PassThruStateName(run.lPassThruState)) +
                       ", lTries=" + ToDecimal(run.lTries) + ", Waiting for terminal to reboot...",
                   false);
}

bool TBrennikProtocol::AbortIfCancelled(PassThruRun& run) {
    if (bCancelComms_) {
        SetError(error_, CommsErrors::kAbortedByUser);
        run.lPassThruState = PASSTHRU_ST_USERABORTED;
    }
    return bCancelComms_;
}

} // namespace brennik
