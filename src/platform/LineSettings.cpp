#include "platform/LineSettings.h"

#include <asm/termbits.h>

namespace brennik {

namespace {

constexpr int32_t kSmallestByte = 5;
constexpr uint32_t kSizes[] = {CS5, CS6, CS7, CS8};
constexpr int32_t kOn = 1;
constexpr int32_t kHandshake = 2;
constexpr int64_t kPercentOff = 3;

constexpr uint32_t kFrameFlags = CSIZE | PARENB | PARODD | CMSPAR;
constexpr uint32_t kSoftwareFlow = IXON | IXOFF;

bool HasFlag(const DCB& dcb, int32_t lBit) {
    return (static_cast<uint32_t>(dcb.Flags) >> lBit & 1U) != 0;
}

int32_t TwoBits(const DCB& dcb, int32_t lLowestBit) {
    return static_cast<int32_t>(static_cast<uint32_t>(dcb.Flags) >> lLowestBit & 3U);
}

std::optional<uint32_t> SizeFlags(const DCB& dcb) {
    if (dcb.ByteSize < kSmallestByte || dcb.ByteSize > 8) {
        return std::nullopt;
    }
    return kSizes[dcb.ByteSize - kSmallestByte];
}

std::optional<uint32_t> ParityFlags(const DCB& dcb) {
    switch (dcb.Parity) {
    case 0:
        return 0;
    case 1:
        return PARENB | PARODD;
    case 2:
        return PARENB;
    case 3:
        return PARENB | PARODD | CMSPAR;
    case 4:
        return PARENB | CMSPAR;
    default:
        return std::nullopt;
    }
}

/// A line with more than one stop bit has one and a half behind five data bits, two behind others.
std::optional<uint32_t> StopFlags(const DCB& dcb) {
    const bool bFiveBits = dcb.ByteSize == kSmallestByte;
    switch (dcb.StopBits) {
    case 0:
        return 0;
    case 1:
        return bFiveBits ? std::optional<uint32_t>(CSTOPB) : std::nullopt;
    case 2:
        return bFiveBits ? std::nullopt : std::optional<uint32_t>(CSTOPB);
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<LineSettings> LineSettingsOf(const DCB& dcb) {
    const auto lSize = SizeFlags(dcb);
    const auto lParity = ParityFlags(dcb);
    const auto lStop = StopFlags(dcb);
    const int32_t lDtr = TwoBits(dcb, dcbflag::kDtrControl);
    const int32_t lRts = TwoBits(dcb, dcbflag::kRtsControl);
    if (!lSize || !lParity || !lStop || dcb.BaudRate <= 0 || HasFlag(dcb, dcbflag::kOutxDsrFlow) ||
        lDtr >= kHandshake || lRts > kHandshake) {
        return std::nullopt;
    }
    LineSettings settings;
    settings.lControlFlags = CLOCAL | CREAD | *lSize | *lParity | *lStop;
    if (HasFlag(dcb, dcbflag::kOutxCtsFlow)) {
        settings.lControlFlags |= CRTSCTS;
    }
    if (HasFlag(dcb, dcbflag::kOutX)) {
        settings.lInputFlags |= IXON;
    }
    if (HasFlag(dcb, dcbflag::kInX)) {
        settings.lInputFlags |= IXOFF;
    }
    settings.lBaudRate = static_cast<uint32_t>(dcb.BaudRate);
    settings.cXon = dcb.XonChar;
    settings.cXoff = dcb.XoffChar;
    settings.bDtr = lDtr == kOn;
    // A handshake of RTS alone is what a change from RTS and CTS to another flow control leaves
    // behind. The line is then held, as a handshake with a buffer that never fills holds it.
    settings.bRts = lRts == kOn || lRts == kHandshake;
    return settings;
}

bool AreTaken(const LineSettings& wanted, const LineSettings& taken, bool bPseudoTerminal) {
    const uint32_t lCompared = CRTSCTS | CSTOPB | (bPseudoTerminal ? 0 : kFrameFlags);
    const int64_t lOff = int64_t{taken.lBaudRate} - wanted.lBaudRate;
    const int64_t lAllowed = int64_t{wanted.lBaudRate} * kPercentOff;
    return ((wanted.lControlFlags ^ taken.lControlFlags) & lCompared) == 0 &&
           ((wanted.lInputFlags ^ taken.lInputFlags) & kSoftwareFlow) == 0 &&
           lOff * 100 <= lAllowed && -lOff * 100 <= lAllowed;
}

int32_t HalfBitsOfByte(const DCB& dcb) {
    const int32_t lStartBit = 2;
    const int32_t lParityBit = dcb.Parity == 0 ? 0 : 2;
    const int32_t lStopBits = 2 + dcb.StopBits;
    return lStartBit + 2 * dcb.ByteSize + lParityBit + lStopBits;
}

} // namespace brennik
