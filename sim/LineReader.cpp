#include "sim/LineReader.h"

#include "sim/Codec.h"

#include <algorithm>
#include <cstdint>

namespace brennik::sim {

namespace {

// An other end that never ends its frame must not fill our memory.
constexpr size_t kLongestFrame = size_t{128} * 1024;

constexpr std::string_view kMeaningful = "\x02\x05\x06\x15"; // STX ENQ ACK NAK
constexpr std::string_view kEtxAlone = "\x03";
constexpr std::string_view kEtxOrEnq = "\x03\x05";

uint8_t Byte(char c) {
    return static_cast<uint8_t>(c);
}

} // namespace

LineReader::Result LineReader::Next(std::string_view& strBytes) {
    while (!strBytes.empty()) {
        if (!bInFrame()) {
            if (strBytes.front() != kStx) {
                return BetweenFrames(strBytes);
            }
            nCovered_ = 0;
            TakeUpTo(1, strBytes);
            continue;
        }
        if (TakeFrame(strBytes)) {
            return Check();
        }
        if (strFrame_.size() > kLongestFrame) {
            Abandon();
        }
        if (!bInFrame()) {
            return Result::Other;
        }
    }
    return Result::Nothing;
}

void LineReader::Abandon() {
    nOther_ = strFrame_.size();
    Drop();
}

LineReader::Result LineReader::BetweenFrames(std::string_view& strBytes) {
    const size_t nMeaningful = std::min(strBytes.find_first_of(kMeaningful), strBytes.size());
    if (nMeaningful > 0) {
        nOther_ = nMeaningful;
        strBytes.remove_prefix(nMeaningful);
        return Result::Other;
    }
    cControl_ = strBytes.front();
    strBytes.remove_prefix(1);
    return Result::Control;
}

// Moves bytes into the frame until it has that size; false when they don't suffice.
bool LineReader::TakeUpTo(size_t nSize, std::string_view& strBytes) {
    if (strFrame_.size() < nSize) {
        const size_t nTaken = std::min(nSize - strFrame_.size(), strBytes.size());
        strFrame_.append(strBytes.substr(0, nTaken));
        strBytes.remove_prefix(nTaken);
    }
    return strFrame_.size() >= nSize;
}

// True once the frame is whole, its check included.
bool LineReader::TakeFrame(std::string_view& strBytes) {
    if (strFrame_.size() == 1 && bEnqEndsFrame_ && strBytes.front() == kEnq) {
        Abandon();
        return false;
    }
    if (!TakeUpTo(2, strBytes)) {
        return false;
    }
    if (strFrame_[1] != 'W') {
        return TakePlainFrame(strBytes);
    }
    if (!TakeUpTo(4, strBytes)) {
        return false;
    }
    bManagement_ = false;
    nCovered_ = kWriteHeader + (size_t{Byte(strFrame_[2])} << 8 | Byte(strFrame_[3]));
    return TakeUpTo(1 + nCovered_ + 2, strBytes);
}

bool LineReader::TakePlainFrame(std::string_view& strBytes) {
    if (nCovered_ == 0 && strFrame_.back() != kEtx) {
        // A part at a time, so that an endless frame is noticed before it is taken.
        const size_t nMost = std::min(strBytes.size(), kLongestFrame);
        const size_t nEnd = strBytes.find_first_of(bEnqEndsFrame_ ? kEtxOrEnq : kEtxAlone);
        const bool bEnds = nEnd < nMost;
        const bool bEnq = bEnds && strBytes[nEnd] == kEnq;
        TakeUpTo(strFrame_.size() + (bEnds ? nEnd + (bEnq ? 0 : 1) : nMost), strBytes);
        if (bEnq) {
            Abandon();
        }
        if (!bEnds || bEnq) {
            return false;
        }
    }
    if (nCovered_ == 0) {
        nCovered_ = strFrame_.size() - 1;
        bManagement_ = !bOrdinaryOnly_ && HasManagementForm(std::string_view(strFrame_).substr(1));
    }
    return TakeUpTo(1 + nCovered_ + (bManagement_ ? 1 : 2), strBytes);
}

LineReader::Result LineReader::Check() {
    const std::string_view strFrame = strFrame_;
    const std::string_view strCovered = strFrame.substr(1, nCovered_);
    const std::string_view strCheck = strFrame.substr(1 + nCovered_);
    const bool bGood = bManagement_
                           ? strCheck[0] == LongitudinalCheck(strCovered)
                           : BlockCheck(strCovered) == (Byte(strCheck[0]) << 8 | Byte(strCheck[1]));
    const bool bEndsInEtx = strFrame[1] != 'W';
    strPayload_.assign(strCovered.substr(0, nCovered_ - (bEndsInEtx ? 1 : 0)));
    Drop();
    return bGood ? Result::Frame : Result::WrongFrame;
}

} // namespace brennik::sim
