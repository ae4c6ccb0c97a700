// The framing between the session protocol and a channel: start character, terminator, block
// check, acknowledgements and retries, and raw passages past the framing.
// One object is bound to one channel, which it knows as TCommsChannel: for real TCP or a serial
// port, in tests the network in memory or a scripted channel. All time limits are whole seconds on
// the clock since midnight, without regard to midnight itself.
#pragma once

#include "link/TChecksum.h"
#include "link/TCommsChannel.h"
#include "support/Failure.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace brennik {

class TFLClientLog;

/// What one read of one frame came to.
enum class IsoReadResult : int32_t {
    IsoReadTimedOut = 0, ///< no complete frame before the limit, or the channel failed
    IsoReadGood = 2,     ///< frame complete, check correct
    IsoReadBadCheck = 4, ///< frame complete, check wrong
    IsoReadFailed = 5,   ///< internal failure
};

/// All statuses are 0 for success and 1 for failure, with the details in strErrorMessage and
/// lErrorCode, which a success leaves alone.
class TIsoProtocol {
  public:
    /// Binds the link to its channel; call it before all else. Channel and log are borrowed for as
    /// long as the link is used. lChecksumType: 0 LRC, 1 CRC low byte first, other CRC high byte
    /// first. Time limits in seconds; lCharTimeout is kept and not used. iStartChar is a byte
    /// value. bServerSide labels the log lines; bAckPackets says whether frames are acknowledged.
    [[nodiscard]] int32_t InitialiseObject(TCommsChannel& commsLink, TFLClientLog& log,
                                           int32_t lChecksumType, int32_t lCharTimeout,
                                           int32_t lPacketTimeout, int32_t lAckTimeout,
                                           int16_t iStartChar, int32_t lPacketReadAttempts,
                                           int32_t lPacketSendAttempts, bool bServerSide,
                                           bool bAckPackets);

    /// Takes what is waiting, once, and writes it to the log. Always 0, so there is nothing to
    /// look at and the result may be dropped.
    int32_t FlushBuffer();

    /// Frames and sends a payload and waits for its ACK where frames are acknowledged. Only a NAK
    /// sends the frame again; when the attempts are used up by NAKs the failure has no text.
    [[nodiscard]] int32_t SendPacket(std::string_view strData);

    /// Reads one frame, up to lPacketReadAttempts + 1 times, each time behind the bytes of
    /// strInitial. strData is the payload. Without acknowledgement the block check isn't enforced.
    /// On failure strData is what the last attempt left, of no use but to look at: all that it
    /// gathered, strInitial included, or the payload of a frame whose check was wrong.
    [[nodiscard]] int32_t ReadPacket(std::string& strData, std::string strInitial);

    /// Sends bytes as they are.
    [[nodiscard]] int32_t SendArbitraryData(std::string_view strData);

    /// Reads one reply: any byte, or with bAnyCharacter false an ACK, a NAK, or an STX with what
    /// is waiting behind it. lTimeout in seconds; 0 looks once. strData is empty on failure.
    [[nodiscard]] int32_t ReadArbitraryData(std::string& strData, int32_t lTimeout,
                                            bool bAnyCharacter);

    /// Waits ten seconds for a delivery that holds an ENQ; everything else is dropped.
    [[nodiscard]] int32_t WaitForEnq();

    const std::string& strErrorMessage() const { return error_.strErrorMessage(); }
    int32_t lErrorCode() const { return error_.lErrorCode(); }

    /// These four take effect on the next operation.
    int32_t lChecksumType() const { return lChecksumType_; }
    void lChecksumType(int32_t lValue) { lChecksumType_ = lValue; }
    int32_t lPacketTimeout() const { return lPacketTimeout_; }
    void lPacketTimeout(int32_t lValue) { lPacketTimeout_ = lValue; }
    int32_t lPacketReadAttempts() const { return lPacketReadAttempts_; }
    void lPacketReadAttempts(int32_t lValue) { lPacketReadAttempts_ = lValue; }
    bool bAckPackets() const { return bAckPackets_; }
    void bAckPackets(bool bValue) { bAckPackets_ = bValue; }

  private:
    friend class TIsoProtocolTestAccess;

    enum class Answer { Ack, Nak, None };
    struct FramePlace;

    /// One read of one frame. bWaited tells whether it had a pass in which the channel could do
    /// its waiting: false when there was none or when the channel failed.
    IsoReadResult InternalReadPacket(std::string& strData, std::string_view strInitial,
                                     bool& bWaited);
    bool Gather(std::string& strBuffer, std::string& strDelivered);
    void FindFrame(std::string_view strBuffer, FramePlace& place) const;
    void ExtractPlainPacket(std::string_view strBuffer, FramePlace& place) const;
    void ExtractWritePacket(std::string_view strBuffer, FramePlace& place) const;
    void LogRead(std::string_view strBuffer, const FramePlace& place) const;

    std::string BuildFrame(std::string_view strData) const;
    std::string BlockCheck(std::string_view strData) const;
    Answer WaitForAck();
    bool TakeReply(std::string& strReply, bool bAnyCharacter);

    void SendAck();
    void SendNak();
    // SendEot and SendEnq belong to the protocol and have no caller today.
    void SendEot();
    void SendEnq();
    void SendControl(std::string_view strBytes);

    int32_t FailWithChannelError();
    int32_t FailWithTimeout();
    char StartChar() const;
    TCommsChannel& Channel() const;
    TFLClientLog& Log() const;
    const TChecksum& Checksum() const;

    ErrorState error_;
    TCommsChannel* commsLink_ = nullptr;
    TFLClientLog* log_ = nullptr;
    std::unique_ptr<TChecksum> checksum_;
    int32_t lChecksumType_ = 0;
    int32_t lCharTimeout_ = 0;
    int32_t lPacketTimeout_ = 0;
    int32_t lAckTimeout_ = 0;
    int16_t iStartChar_ = 0;
    int32_t lPacketReadAttempts_ = 0;
    int32_t lPacketSendAttempts_ = 0;
    bool bServerSide_ = false;
    bool bAckPackets_ = false;
};

} // namespace brennik
