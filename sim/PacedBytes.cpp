#include "sim/PacedBytes.h"

#include <algorithm>

namespace brennik::sim {

namespace {

constexpr int64_t kBitsOfByte = 10;
constexpr int64_t kMicroseconds = 1'000'000;

// Looks closer together would cost more than they show: other ends read by the millisecond.
constexpr Microseconds kBetweenLooks = 1000;

} // namespace

void PacedBytes::Put(std::string_view strBytes, Microseconds moment) {
    if (moment >= AllThrough()) {
        lTaken_ -= lPut_;
        lPut_ = 0;
        begun_ = moment;
        looked_ = moment;
    }
    strBytes_.erase(0, nTaken_);
    nTaken_ = 0;
    strBytes_ += strBytes;
    lPut_ += static_cast<int64_t>(strBytes.size());
}

std::string_view PacedBytes::TakeThrough(Microseconds now) {
    const int64_t lThrough =
        now >= AllThrough() ? lPut_ : (now - begun_) * lRate_ / (kBitsOfByte * kMicroseconds);
    const int64_t lTake = std::max<int64_t>(0, lThrough - lTaken_);
    const size_t nFrom = nTaken_;
    nTaken_ += static_cast<size_t>(lTake);
    lTaken_ += lTake;
    looked_ = now;
    return std::string_view(strBytes_).substr(nFrom, static_cast<size_t>(lTake));
}

std::optional<Microseconds> PacedBytes::NextLook() const {
    if (nUnderWay() == 0) {
        return std::nullopt;
    }
    return std::min(AllThrough(), std::max(ThroughAt(lTaken_ + 1), looked_ + kBetweenLooks));
}

// Rounded up, so that no byte is through early.
Microseconds PacedBytes::ThroughAt(int64_t lByte) const {
    return begun_ + (lByte * kBitsOfByte * kMicroseconds + lRate_ - 1) / lRate_;
}

} // namespace brennik::sim
