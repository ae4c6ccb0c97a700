#include "config/TBrennikClientConfig.h"
#include "link/CommsErrors.h"
#include "link/TConnectionInfo.h"
#include "link/TIsoProtocol.h"
#include "link/TSocketComms.h"
#include "passthru/ManagementMessages.h"
#include "session/TBrennikProtocol.h"
#include "session/TVFIPacket.h"

namespace brennik {

namespace {

constexpr const char* kAck = "\x06";

} // namespace

/// Sends the transfer command and reads the answer, with the link set to the form of management
/// messages; it stays so.
bool TBrennikProtocol::AskForTransfer(const TBrennikClientConfig& oConfig,
                                      TIsoProtocol& oDeviceLink, std::string& strReply) {
    oDeviceLink.lChecksumType(kManagementChecksumType);
    oDeviceLink.bAckPackets(true);
    if (oDeviceLink.SendPacket(BuildTransferCommandMessage(oConfig)) != 0 ||
        oDeviceLink.ReadPacket(strReply, "") != 0) {
        error_.CopyFrom(oDeviceLink);
        return false;
    }
    return true;
}

bool TBrennikProtocol::RequestTmsMode(const TBrennikClientConfig& oConfig,
                                      TIsoProtocol& oDeviceLink, std::string& strPacket) {
    const int32_t lChecksumType = oDeviceLink.lChecksumType();
    const bool bAckPackets = oDeviceLink.bAckPackets();
    const auto giveBack = [&] {
        oDeviceLink.lChecksumType(lChecksumType);
        oDeviceLink.bAckPackets(bAckPackets);
    };
    bool bGotPacket = false;
    if (AskForTransfer(oConfig, oDeviceLink, strPacket)) {
        bDeviceAnswered_ = true;
        if (IsTransferAuthorisedReply(strPacket)) {
            // A device that agrees sends its request at once, without being polled.
            giveBack();
            bGotPacket = oDeviceLink.ReadPacket(strPacket, "") == 0;
            if (!bGotPacket)
                error_.CopyFrom(oDeviceLink);
        } else {
            SetError(error_, CommsErrors::kUploadNotAuthorised); // the polling goes on
        }
    }
    bTmsModeRequested_ = true; // not to be asked again, even where it failed
    giveBack();
    return bGotPacket;
}

int32_t TBrennikProtocol::ForcePedIntoTmsMode(TBrennikClientConfig& oConfig,
                                              TIsoProtocol& oDeviceLink, TIsoProtocol& oServerLink,
                                              TSocketComms& oServerChannel,
                                              TConnectionInfo& oServerConnection,
                                              TFLClientLog& oLog, std::string& strPacket) {
    return GuardedWithCode(
        error_, "TBrennikProtocol.ForcePedIntoTmsMode() Failed - ", 1, [&]() -> int32_t {
            const int32_t lChecksumType = oDeviceLink.lChecksumType();
            const bool bAckPackets = oDeviceLink.bAckPackets();
            if (!AskForTransfer(oConfig, oDeviceLink, strPacket))
                return 1;
            if (!IsTransferAuthorisedReply(strPacket)) {
                SetError(error_, CommsErrors::kUploadNotAuthorised);
                return 1;
            }
            oDeviceLink.lChecksumType(lChecksumType);
            oDeviceLink.bAckPackets(bAckPackets);
            strPacket.clear();
            if (oDeviceLink.ReadPacket(strPacket, "") != 0) {
                error_.CopyFrom(oDeviceLink);
                return 1;
            }
            oDeviceLink.bAckPackets(true); // both are meant to stay so
            oServerLink.bAckPackets(true);
            if (oServerChannel.Connect(oServerConnection, oLog) != 0) {
                error_.CopyFrom(oServerChannel);
                return 1;
            }
            const bool bPassed = PassEnquiry(oDeviceLink, oServerLink, strPacket);
            static_cast<void>(oServerChannel.Disconnect()); // it writes its own log lines
            return bPassed ? 0 : 1;
        });
}

/// The enquiry to the server, and its answer to the device.
bool TBrennikProtocol::PassEnquiry(TIsoProtocol& oDeviceLink, TIsoProtocol& oServerLink,
                                   std::string& strPacket) {
    if (oServerLink.WaitForEnq() != 0 || oServerLink.FlushBuffer() != 0 ||
        oServerLink.SendPacket(strPacket) != 0 || oServerLink.ReadPacket(strPacket, "") != 0) {
        error_.CopyFrom(oServerLink);
        return false;
    }
    if (oDeviceLink.SendArbitraryData(kAck) != 0 || oDeviceLink.SendPacket(strPacket) != 0) {
        error_.CopyFrom(oDeviceLink);
        return false;
    }
    return true;
}

void TBrennikProtocol::SubstituteProfileFields(const TBrennikClientConfig& oConfig,
                                               std::string& strPacket) {
    TVFIPacket oVfiPacket;
    bool bLastOfSeries = false;
    if (oVfiPacket.IsVfiPacket(strPacket) &&
        oVfiPacket.GetPacketType(strPacket, bLastOfSeries) == VfiPacketType::Partial) {
        // A partial request keeps its application.
        SubstituteIdsAndTitles(oConfig, false, strPacket);
    }
}

} // namespace brennik
