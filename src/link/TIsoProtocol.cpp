#include "link/TIsoProtocol.h"

#include "link/CommsErrors.h"
#include "link/LinkStatus.h"
#include "platform/Clock.h"
#include "platform/PumpEvents.h"
#include "platform/RuntimeFailure.h"
#include "support/Rounding.h"
#include "support/TFLClientLog.h"

#include <algorithm>
#include <utility>

namespace brennik {
namespace {

constexpr char kStx = 0x02;
constexpr char kEtx = 0x03;
constexpr char kEot = 0x04;
constexpr char kEnq = 0x05;
constexpr char kAck = 0x06;
constexpr char kDle = 0x10;
constexpr char kNak = 0x15;

constexpr char kWriteData = 'W';
constexpr int32_t kLrc = 0;
constexpr int32_t kHighByteFirst = 0;
constexpr size_t kWriteHeader = 7; // "W", the length, and four bytes that mean nothing here
constexpr size_t kCrcSize = 2;

/// Seconds that the far end has for its ENQ once the line is open. It is the first to speak, and a
/// service that has taken the connection does so at once; a profile's limits have no say in it.
constexpr double kEnqTimeout = 10;

/// Milliseconds between two attempts of which the first could not wait for anything, because its
/// time was over before it began or because the channel failed: with thousands of attempts allowed
/// they would otherwise be a loop at full load that hears no event.
constexpr int32_t kPauseOfIdleAttemptMs = 10;

/// What one read of a frame may gather; a line that babbles without a frame ends by its time
/// limit, not by its appetite for memory.
constexpr size_t kMostGathered = size_t{16} * 1024 * 1024;

/// A time limit. The clock starts again at midnight and an end beyond that is never reached:
/// meant, and no provision is made for it.
double EndTime(double dSeconds) {
    return double{SecondsSinceMidnight()} + dSeconds;
}

bool HasTime(double dEnd) {
    return SecondsSinceMidnight() <= dEnd;
}

bool IsSingle(const std::string& strData, char cByte) {
    return strData.size() == 1 && strData.front() == cByte;
}

} // namespace

/// What a read knows of its buffer. Positions count from 0. The buffer only grows, so what was
/// found or sought once holds.
struct TIsoProtocol::FramePlace {
    static constexpr size_t kNone = std::string_view::npos;

    size_t nStart = kNone; ///< the first start character
    size_t nStartFrom = 0; ///< where to go on seeking it
    size_t nEtx = kNone;   ///< the first ETX of the buffer, wherever it stands
    size_t nEtxFrom = 0;   ///< where to go on seeking it
    bool bWritePacket = false;
    bool bGotPacket = false;
    size_t nPayload = 0; ///< bytes of the payload, which begins behind the start character
    size_t nCovered = 0; ///< bytes from there that the block check covers
    size_t nCheck = 0;   ///< bytes of the received block check, which follow those

    std::string_view Covered(std::string_view strBuffer) const {
        return strBuffer.substr(nStart + 1, nCovered);
    }
    std::string_view ReceivedCheck(std::string_view strBuffer) const {
        return strBuffer.substr(nStart + 1 + nCovered, nCheck);
    }
};

int32_t TIsoProtocol::InitialiseObject(TCommsChannel& commsLink, TFLClientLog& log,
                                       int32_t lChecksumType, int32_t lCharTimeout,
                                       int32_t lPacketTimeout, int32_t lAckTimeout,
                                       int16_t iStartChar, int32_t lPacketReadAttempts,
                                       int32_t lPacketSendAttempts, bool bServerSide,
                                       bool bAckPackets) {
    return GuardedWithCode(error_, "TIsoProtocol.InitialiseObject() Failed - ", kFailure,
                           [&]() -> int32_t {
                               commsLink_ = &commsLink;
                               log_ = &log;
                               checksum_ = std::make_unique<TChecksum>();
                               lChecksumType_ = lChecksumType;
                               lCharTimeout_ = lCharTimeout;
                               lPacketTimeout_ = lPacketTimeout;
                               lAckTimeout_ = lAckTimeout;
                               iStartChar_ = iStartChar;
                               lPacketReadAttempts_ = lPacketReadAttempts;
                               lPacketSendAttempts_ = lPacketSendAttempts;
                               bServerSide_ = bServerSide;
                               bAckPackets_ = bAckPackets;
                               return kSuccess;
                           });
}

int32_t TIsoProtocol::FlushBuffer() {
    Quietly([&] {
        std::string strData;
        // Whether the read worked is of no interest: what it delivered is thrown away.
        static_cast<void>(Channel().ReadData(strData));
        if (!strData.empty()) {
            Log().Logit("Flushed Buffer: strData=" + strData, false);
        }
    });
    return kSuccess;
}

int32_t TIsoProtocol::SendPacket(std::string_view strData) {
    return GuardedWithCode(
        error_, "TIsoProtocol.SendPacket() Failed - ", kFailure, [&]() -> int32_t {
            const std::string strFrame = BuildFrame(strData);
            for (int64_t lAttempt = 1; lAttempt <= lPacketSendAttempts_; ++lAttempt) {
                if (Channel().WriteData(strFrame) != kSuccess) {
                    return FailWithChannelError();
                }
                Log().LogPacket(false, true, strFrame, bServerSide_);
                if (!bAckPackets_) {
                    return kSuccess;
                }
                switch (WaitForAck()) {
                case Answer::Ack:
                    return kSuccess;
                case Answer::Nak:
                    break;
                case Answer::None:
                    return FailWithTimeout(); // never sent again
                }
            }
            // Meant to be silent: attempts used up by NAKs, or none allowed, leave text and code
            // as they were.
            return kFailure;
        });
}

/// A write-data payload has a frame of its own: its length is counted, so there is no ETX, and its
/// check is the CRC with the high byte first whatever lChecksumType says.
std::string TIsoProtocol::BuildFrame(std::string_view strData) const {
    const bool bWritePacket = !strData.empty() && strData.front() == kWriteData;
    std::string strFrame;
    strFrame.reserve(strData.size() + 2 + kCrcSize);
    strFrame += StartChar();
    strFrame += strData;
    if (!bWritePacket) {
        strFrame += kEtx;
    }
    const std::string_view strCovered = std::string_view(strFrame).substr(1);
    strFrame += bWritePacket ? Checksum().GenerateCRC16(strCovered, kHighByteFirst)
                             : BlockCheck(strCovered);
    return strFrame;
}

std::string TIsoProtocol::BlockCheck(std::string_view strData) const {
    return lChecksumType_ == kLrc ? Checksum().GenerateLRC(strData)
                                  : Checksum().GenerateCRC16(strData, lChecksumType_);
}

/// Meant not to pump events itself: the channel's read does, where it waits long.
TIsoProtocol::Answer TIsoProtocol::WaitForAck() {
    const double dEnd = EndTime(lAckTimeout_);
    std::string strAnswer;
    while (HasTime(dEnd)) {
        strAnswer.clear();
        if (Channel().ReadCharacter(strAnswer) != kSuccess) {
            return Answer::None; // told as a time-out, so the channel's text isn't taken over
        }
        if (strAnswer.empty()) {
            continue;
        }
        Log().LogPacket(false, false, strAnswer, bServerSide_);
        if (IsSingle(strAnswer, kAck)) {
            return Answer::Ack;
        }
        if (IsSingle(strAnswer, kNak)) {
            return Answer::Nak;
        }
    }
    return Answer::None;
}

int32_t TIsoProtocol::ReadPacket(std::string& strData, std::string strInitial) {
    const auto read = [&]() -> int32_t {
        for (int64_t lAttempt = 1;; ++lAttempt) {
            // The attempts are counted from 1, so N of them allow N + 1 reads.
            const bool bLastAttempt = lAttempt > lPacketReadAttempts_;
            bool bWaited = false;
            switch (InternalReadPacket(strData, strInitial, bWaited)) {
            case IsoReadResult::IsoReadGood:
                if (bAckPackets_) {
                    SendAck();
                }
                return kSuccess;
            case IsoReadResult::IsoReadTimedOut: // never gets a NAK
                if (bLastAttempt) {
                    return FailWithTimeout();
                }
                if (!bWaited) {
                    PumpEvents();
                    Sleep(kPauseOfIdleAttemptMs);
                }
                break;
            case IsoReadResult::IsoReadBadCheck:
                if (!bAckPackets_) {
                    return kSuccess; // nobody would send the frame again
                }
                if (bLastAttempt) {
                    return FailWithTimeout(); // without a NAK
                }
                SendNak();
                break;
            case IsoReadResult::IsoReadFailed:
                return kFailure;
            }
        }
    };
    return GuardedWithCode(error_, "TIsoProtocol.ReadPacket() Failed - ", kFailure, read);
}

IsoReadResult TIsoProtocol::InternalReadPacket(std::string& strData, std::string_view strInitial,
                                               bool& bWaited) {
    bWaited = false;
    return GuardedWithCode(
        error_, "TIsoProtocol.InternalReadPacket() Failed - ", IsoReadResult::IsoReadFailed, [&] {
            strData.assign(strInitial);
            FramePlace place;
            bool bFailed = false;
            std::string strDelivered;
            const double dEnd = EndTime(lPacketTimeout_);
            while (!bFailed && !place.bGotPacket && HasTime(dEnd)) {
                PumpEvents();
                bFailed = !Gather(strData, strDelivered);
                bWaited = !bFailed;
                if (!bFailed) {
                    FindFrame(strData, place);
                }
            }
            LogRead(strData, place);
            if (!place.bGotPacket) {
                return IsoReadResult::IsoReadTimedOut;
            }
            // Meant: a write-data frame too is verified by lChecksumType, though it is always sent
            // with the high byte first. It passes while that is neither 0 nor 1.
            const bool bGood = BlockCheck(place.Covered(strData)) == place.ReceivedCheck(strData);
            strData.resize(place.nStart + 1 + place.nPayload);
            strData.erase(0, place.nStart + 1);
            return bGood ? IsoReadResult::IsoReadGood : IsoReadResult::IsoReadBadCheck;
        });
}

/// Puts what the channel delivers behind the buffer; a first delivery goes straight into it.
bool TIsoProtocol::Gather(std::string& strBuffer, std::string& strDelivered) {
    const bool bFirst = strBuffer.empty();
    std::string& strTarget = bFirst ? strBuffer : strDelivered;
    strTarget.clear();
    if (Channel().ReadData(strTarget) != kSuccess) {
        strTarget.clear();
        error_.CopyFrom(Channel());
        return false;
    }
    const size_t nRoom = kMostGathered - std::min(kMostGathered, bFirst ? 0 : strBuffer.size());
    if (strTarget.size() > nRoom) {
        strTarget.resize(nRoom);
    }
    if (!bFirst) {
        strBuffer += strDelivered;
    }
    return true;
}

/// Looks for a whole frame and notes where it stands.
void TIsoProtocol::FindFrame(std::string_view strBuffer, FramePlace& place) const {
    if (place.nStart == FramePlace::kNone) {
        place.nStart = strBuffer.find(StartChar(), place.nStartFrom);
        place.nStartFrom = strBuffer.size();
    }
    if (place.nStart == FramePlace::kNone || place.nStart + 1 == strBuffer.size()) {
        return; // no ETX that has come so far can lie behind it
    }
    place.bWritePacket = strBuffer[place.nStart + 1] == kWriteData;
    if (place.bWritePacket) {
        ExtractWritePacket(strBuffer, place);
    } else {
        ExtractPlainPacket(strBuffer, place);
    }
}

/// The ETX that counts is the first of the whole buffer. One that noise has left ahead of the
/// start character stays it, so that such a read runs to its time limit: this is meant.
void TIsoProtocol::ExtractPlainPacket(std::string_view strBuffer, FramePlace& place) const {
    if (place.nEtx == FramePlace::kNone) {
        place.nEtx = strBuffer.find(kEtx, place.nEtxFrom);
        place.nEtxFrom = strBuffer.size();
    }
    if (place.nEtx == FramePlace::kNone || place.nEtx <= place.nStart) {
        return;
    }
    place.nPayload = place.nEtx - place.nStart - 1;
    place.nCovered = place.nPayload + 1;
    place.nCheck = lChecksumType_ == kLrc ? 1 : kCrcSize;
    place.bGotPacket = strBuffer.size() > place.nEtx + place.nCheck;
}

/// The length must fit exactly. When more has arrived than the frame, it isn't whole and never
/// will be: the far end doesn't speak before its frame was answered, so this is meant.
void TIsoProtocol::ExtractWritePacket(std::string_view strBuffer, FramePlace& place) const {
    const std::string_view strFrame = strBuffer.substr(place.nStart + 1);
    if (strFrame.size() < kWriteHeader) {
        return;
    }
    const size_t nData = size_t{static_cast<unsigned char>(strFrame[1])} << 8 |
                         static_cast<unsigned char>(strFrame[2]);
    place.nPayload = kWriteHeader + nData;
    place.nCovered = place.nPayload;
    place.nCheck = kCrcSize;
    place.bGotPacket = strFrame.size() == place.nPayload + kCrcSize;
}

/// A read is logged with all that it gathered, whole or not, except that of a whole write-data
/// frame only the start character and the payload are shown.
void TIsoProtocol::LogRead(std::string_view strBuffer, const FramePlace& place) const {
    if (strBuffer.empty()) {
        return;
    }
    const bool bWholeWritePacket = place.bWritePacket && place.bGotPacket;
    Log().LogPacket(false, false,
                    bWholeWritePacket ? strBuffer.substr(place.nStart, place.nPayload + 1)
                                      : strBuffer,
                    bServerSide_);
}

int32_t TIsoProtocol::SendArbitraryData(std::string_view strData) {
    // The prefix is spelt as readers of the log know it.
    return GuardedWithCode(error_, "TIsoProtocol.SendABitraryData() Failed - ", kFailure,
                           [&]() -> int32_t {
                               if (Channel().WriteData(strData) != kSuccess) {
                                   return FailWithChannelError();
                               }
                               Log().LogPacket(false, true, strData, bServerSide_);
                               return kSuccess;
                           });
}

int32_t TIsoProtocol::ReadArbitraryData(std::string& strData, int32_t lTimeout,
                                        bool bAnyCharacter) {
    strData.clear();
    return GuardedWithCode(error_, "TIsoProtocol.ReadArbitraryData() Failed - ", kFailure,
                           [&]() -> int32_t {
                               std::string strReply;
                               bool bFailed = false;
                               if (lTimeout == 0) {
                                   bFailed = !TakeReply(strReply, bAnyCharacter);
                               } else {
                                   // A whole number, so that a limit may be half a second off.
                                   const double dEnd = RoundedTiesToEven(EndTime(lTimeout));
                                   while (!bFailed && strReply.empty() && HasTime(dEnd)) {
                                       bFailed = !TakeReply(strReply, bAnyCharacter);
                                       if (!bFailed) {
                                           PumpEvents();
                                       }
                                   }
                               }
                               if (bFailed) {
                                   return FailWithChannelError();
                               }
                               if (strReply.empty()) {
                                   return FailWithTimeout();
                               }
                               Log().LogPacket(false, false, strReply, bServerSide_);
                               strData = std::move(strReply);
                               return kSuccess;
                           });
}

/// One look at the line. False when the channel failed; an empty reply is none yet.
bool TIsoProtocol::TakeReply(std::string& strReply, bool bAnyCharacter) {
    std::string strCharacter;
    if (Channel().ReadCharacter(strCharacter) != kSuccess) {
        return false;
    }
    if (bAnyCharacter || IsSingle(strCharacter, kAck) || IsSingle(strCharacter, kNak)) {
        strReply = strCharacter;
    } else if (IsSingle(strCharacter, kStx)) {
        // Whatever is there by now; a reply is short, and nobody checks it. That a failed read
        // doesn't count either is meant: the STX has come, and so a reply.
        std::string strRest;
        static_cast<void>(Channel().ReadData(strRest));
        strReply = strCharacter + strRest;
    }
    return true;
}

int32_t TIsoProtocol::WaitForEnq() {
    return GuardedWithCode(error_, "TIsoProtocol.WaitForEnq() Failed - ", kFailure,
                           [&]() -> int32_t {
                               std::string strData;
                               const double dEnd = EndTime(kEnqTimeout);
                               while (HasTime(dEnd)) {
                                   PumpEvents();
                                   strData.clear();
                                   if (Channel().ReadData(strData) != kSuccess) {
                                       return FailWithChannelError();
                                   }
                                   if (strData.empty()) {
                                       continue;
                                   }
                                   Log().LogPacket(true, false, strData, bServerSide_);
                                   if (strData.find(kEnq) != std::string::npos) {
                                       return kSuccess;
                                   }
                               }
                               SetError(error_, CommsErrors::kReadEnq);
                               return kFailure;
                           });
}

void TIsoProtocol::SendAck() {
    SendControl({&kAck, 1});
}

void TIsoProtocol::SendNak() {
    SendControl({&kNak, 1});
}

void TIsoProtocol::SendEot() {
    SendControl(std::string{kDle, kEot});
}

void TIsoProtocol::SendEnq() {
    // Neither looked at nor logged.
    static_cast<void>(Channel().WriteData({&kEnq, 1}));
}

/// A control sequence that doesn't get through shows in what the far end does next.
void TIsoProtocol::SendControl(std::string_view strBytes) {
    static_cast<void>(Channel().WriteData(strBytes));
    Log().LogPacket(false, true, strBytes, bServerSide_);
}

int32_t TIsoProtocol::FailWithChannelError() {
    error_.CopyFrom(Channel());
    return kFailure;
}

int32_t TIsoProtocol::FailWithTimeout() {
    SetError(error_, CommsErrors::kIsoPacketTimeout);
    return kFailure;
}

char TIsoProtocol::StartChar() const {
    if (iStartChar_ < 0 || iStartChar_ > 255) {
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    }
    return static_cast<char>(iStartChar_);
}

TCommsChannel& TIsoProtocol::Channel() const {
    if (commsLink_ == nullptr) {
        throw RuntimeFailure(FailureKind::ObjectNotSet);
    }
    return *commsLink_;
}

TFLClientLog& TIsoProtocol::Log() const {
    if (log_ == nullptr) {
        throw RuntimeFailure(FailureKind::ObjectNotSet);
    }
    return *log_;
}

const TChecksum& TIsoProtocol::Checksum() const {
    if (checksum_ == nullptr) {
        throw RuntimeFailure(FailureKind::ObjectNotSet);
    }
    return *checksum_;
}

} // namespace brennik
