#include "config/TBrennikClientConfig.h"
#include "link/CommsErrors.h"
#include "passthru/PassThruRun.h"
#include "platform/PumpEvents.h"
#include "support/AsciiText.h"

namespace brennik {

namespace {

constexpr const char* kAck = "\x06";

} // namespace

/// Server frames to the device, and each of its answers back. Nothing is changed in a frame, and
/// nothing repairs one: a wrong check is passed on, and the far end's NAK brings the frame again.
void TBrennikProtocol::RelayDownload(PassThruRun& run) {
    TIsoProtocol& oServer = run.oServerLink;
    TIsoProtocol& oDevice = run.oDeviceLink;
    const int32_t lTimeout = run.oConfig.lCharTimeout();
    bool bEnded = false;
    while (!bEnded && !run.bError && !AbortIfCancelled(run)) {
        run.strPacket.clear();
        if (RelayStep(run, oServer.ReadPacket(run.strPacket, ""), oServer) &&
            RelayStep(run, oDevice.SendPacket(run.strPacket), oDevice) &&
            RelayStep(run, oDevice.ReadArbitraryData(run.strChar, lTimeout, false), oDevice) &&
            RelayStep(run, oServer.SendArbitraryData(run.strChar), oServer) &&
            ActOnRelayedFrame(run, BrennikState::DownloadingFile, CommsErrors::kDownloadFailed,
                              bEnded)) {
            run.bError = true;
        }
    }
}

/// Device frames to the server. Each failure takes its text from the other link than the one that
/// failed, which may hold an older one or none: it is meant so.
void TBrennikProtocol::RelayUpload(PassThruRun& run) {
    TIsoProtocol& oServer = run.oServerLink;
    TIsoProtocol& oDevice = run.oDeviceLink;
    const int32_t lTimeout = run.oConfig.lCharTimeout();
    bool bEnded = false;
    while (!bEnded && !run.bError && !AbortIfCancelled(run)) {
        run.strPacket.clear();
        if (RelayStep(run, oDevice.ReadPacket(run.strPacket, ""), oServer) &&
            RelayStep(run, oServer.SendPacket(run.strPacket), oDevice) &&
            RelayStep(run, oServer.ReadArbitraryData(run.strChar, lTimeout, false), oDevice) &&
            RelayStep(run, oDevice.SendArbitraryData(run.strChar), oServer) &&
            ActOnRelayedFrame(run, BrennikState::UploadingFile, CommsErrors::kUploadFailed,
                              bEnded)) {
            run.bError = true;
        }
    }
}

/// What a relay learns from a frame that it has delivered: progress, and the end of the session,
/// told by bEnded. True for the packet of a session that was unsuccessful, whose text is set.
bool TBrennikProtocol::ActOnRelayedFrame(PassThruRun& run, BrennikState lState,
                                         const CommsError& unsuccessful, bool& bEnded) {
    bool bUnsuccessful = false;
    if (run.oPacket.BreakOutPacket(run.strPacket) != 0) {
        FailPassThru(run, run.oPacket); // delivered all the same
    } else {
        const BrennikPacketType type = run.oPacket.GetPacketType(run.strPacket);
        ShowRelayProgress(run.oPacket, type, lState);
        PumpEvents();
        PumpEvents();
        bEnded = type == BrennikPacketType::SessionSuccessful;
        bUnsuccessful = type == BrennikPacketType::SessionUnsuccessful;
        if (bUnsuccessful)
            SetError(error_, unsuccessful);
    }
    PumpEvents();
    return bUnsuccessful;
}

void TBrennikProtocol::ShowRelayProgress(const TBrennikPacket& oPacket, BrennikPacketType type,
                                         BrennikState lState) {
    switch (type) {
    case BrennikPacketType::OpenFile:
    case BrennikPacketType::AppendFile:
        strDownloadFileName_ = oPacket.strFilename();
        lDownloadFileSize_ = oPacket.lFileSize();
        lFileBytesDownloaded_ = 0;
        lCurrentState_ = lState;
        break;
    case BrennikPacketType::WriteData:
        lFileBytesDownloaded_ =
            Narrow<int32_t>(int64_t{lFileBytesDownloaded_} + oPacket.lDataSize());
        lCurrentState_ = lState;
        break;
    default:
        break;
    }
}

/// A short question and answer. Both links acknowledge by themselves here, since each far end
/// talks to this system and not to the other.
void TBrennikProtocol::ExchangeTmsEnquiry(PassThruRun& run) {
    run.oLog.Logit("STATE=TMSENQUIRY", false);
    const bool bServerAcks = run.oServerLink.bAckPackets();
    const bool bDeviceAcks = run.oDeviceLink.bAckPackets();
    run.oServerLink.bAckPackets(true);
    run.oDeviceLink.bAckPackets(true);
    if (AskServerForEnquiry(run) && AnswerEnquiry(run) &&
        run.oEnquiry.IsErrorPacket(run.strPacket)) {
        // Refused. The device falls back on an ordinary request, which is still carried out.
        error_.Set(CommsErrors::kDownloadFailed.lErrorCode, run.oEnquiry.strErrorMessage());
        run.lPassThruState = PASSTHRU_ST_USERABORTED;
        ServeFallbackRequest(run);
    }
    static_cast<void>(AbortIfCancelled(run)); // the end of the cycle looks at the state
    run.oServerLink.bAckPackets(bServerAcks);
    run.oDeviceLink.bAckPackets(bDeviceAcks);
}

/// The enquiry to the server and its reply into strPacket.
bool TBrennikProtocol::AskServerForEnquiry(PassThruRun& run) {
    TIsoProtocol& oServerLink = run.oServerLink;
    if (run.oServerChannel->Connect(run.oServerConnection, run.oLog) != 0) {
        FailPassThru(run, *run.oServerChannel);
        return false;
    }
    if (oServerLink.WaitForEnq() != 0) {
        FailPassThru(run, oServerLink);
        return false;
    }
    if (oServerLink.FlushBuffer() != 0) {
        run.bError = true; // meant to take no text over
        return false;
    }
    if (oServerLink.SendPacket(run.strPacket) != 0 ||
        oServerLink.ReadPacket(run.strPacket, "") != 0) {
        FailPassThru(run, oServerLink);
        return false;
    }
    return true;
}

/// The reply to the device, behind the ACK of its enquiry, which it hasn't had until now.
bool TBrennikProtocol::AnswerEnquiry(PassThruRun& run) {
    if (run.oDeviceLink.SendArbitraryData(kAck) != 0) {
        FailPassThru(run, run.oDeviceLink);
        return false;
    }
    if (run.oDeviceLink.SendPacket(run.strPacket) != 0) {
        FailPassThru(run, run.oDeviceLink);
        // Once more, and whatever becomes of it shows in the log alone: it is meant so.
        const int32_t lStatus = run.oDeviceLink.SendPacket(run.strPacket);
        run.oLog.Logit("TMS Enq: Error " + ToDecimal(lStatus), false);
        return false;
    }
    return true;
}

/// The first two failures take their text from the other link: it is meant so.
void TBrennikProtocol::ServeFallbackRequest(PassThruRun& run) {
    if (run.oDeviceLink.ReadPacket(run.strPacket, "") != 0) {
        FailPassThru(run, run.oServerLink);
        return;
    }
    SubstituteProfileFields(run.oConfig, run.strPacket);
    if (run.oServerLink.SendPacket(run.strPacket) != 0) {
        FailPassThru(run, run.oDeviceLink);
        return;
    }
    bool bEnded = false;
    while (!bEnded && !run.bError && !bCancelComms_) {
        run.strPacket.clear();
        if (RelayStep(run, run.oServerLink.ReadPacket(run.strPacket, ""), run.oServerLink) &&
            RelayStep(run, run.oDeviceLink.SendPacket(run.strPacket), run.oDeviceLink) &&
            ActOnRelayedFrame(run, BrennikState::UploadingFile, CommsErrors::kUploadFailed,
                              bEnded)) {
            bEnded = true; // counts as ended, not as an error
        }
    }
}

/// Tells whether a step of a relay worked. A failure takes the text of that link.
bool TBrennikProtocol::RelayStep(PassThruRun& run, int32_t lStatus,
                                 const TIsoProtocol& oLinkOfText) {
    if (lStatus == 0)
        return true;
    FailPassThru(run, oLinkOfText);
    PumpEvents();
    return false;
}

} // namespace brennik
