#include "support/TLongBitMap.h"

#include "platform/RuntimeFailure.h"

namespace brennik {

namespace {

// The power of two of bit 31 is beyond a signed number of 32 bits; the walks end in front of it.
constexpr size_t kNumberBits = 31;

size_t IndexOf(int32_t lBit) {
    if (lBit < 0 || lBit > 31) {
        throw RuntimeFailure(FailureKind::SubscriptOutOfRange);
    }
    return static_cast<size_t>(lBit);
}

} // namespace

void TLongBitMap::SetBitMap(int32_t lValue) {
    for (size_t nBit = 0; nBit < kNumberBits; ++nBit) {
        bits_[nBit] = (lValue & (1 << nBit)) != 0 ? 1 : 0;
    }
}

std::string TLongBitMap::GetBitMapAsBinaryString() const {
    std::string strResult;
    strResult.reserve(bits_.size());
    for (size_t nBit = bits_.size(); nBit > 0; --nBit) {
        strResult += bits_[nBit - 1] != 0 ? '1' : '0';
    }
    return strResult;
}

void TLongBitMap::SetField(int32_t lBit, bool bValue) {
    bits_[IndexOf(lBit)] = bValue ? 1 : 0;
}

bool TLongBitMap::GetField(int32_t lBit) const {
    return bits_[IndexOf(lBit)] != 0;
}

int32_t TLongBitMap::GetBitMap() const {
    int32_t lValue = 0;
    for (size_t nBit = 0; nBit < kNumberBits; ++nBit) {
        lValue += bits_[nBit] != 0 ? 1 << nBit : 0;
    }
    return lValue;
}

} // namespace brennik
