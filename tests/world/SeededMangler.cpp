#include "tests/world/SeededMangler.h"

namespace brennik::world {

namespace {

// Draws are cut to 32 bits, so that sums of their limits never run over.
constexpr int kUnusedBits = 32;

uint64_t LimitOf(int32_t iChance) {
    return (static_cast<uint64_t>(iChance) << 32) / 10000;
}

} // namespace

uint64_t SeededNumbers::Next() {
    // One step of a counter and a scramble of its bits; short, and equal everywhere.
    uint64_t nValue = (nState_ += 0x9E3779B97F4A7C15U);
    nValue = (nValue ^ (nValue >> 30)) * 0xBF58476D1CE4E5B9U;
    nValue = (nValue ^ (nValue >> 27)) * 0x94D049BB133111EBU;
    return nValue ^ (nValue >> 31);
}

MangleRates DrawnRates(SeededNumbers& numbers, bool bHarm, uint64_t nWorst) {
    MangleRates rates;
    rates.iSplit = static_cast<int32_t>(numbers.Below(1500));
    rates.iDelay = static_cast<int32_t>(numbers.Below(1500));
    rates.longestDelay = static_cast<Microseconds>(1 + numbers.Below(60)) * kMillisecond;
    if (bHarm) {
        // Some wires are nearly clean, some are hopeless.
        const uint64_t nScale = 1 + numbers.Below(nWorst);
        rates.iDrop = static_cast<int32_t>(numbers.Below(nScale));
        rates.iDouble = static_cast<int32_t>(numbers.Below(nScale));
        rates.iFlip = static_cast<int32_t>(numbers.Below(nScale));
        if (numbers.Happens(500)) {
            rates.longestDelay = 3 * kSecond;
        }
    }
    return rates;
}

SeededMangler::SeededMangler(uint64_t nSeed, const MangleRates& toServer,
                             const MangleRates& toClient)
    : numbers_(nSeed), toServer_(toServer), toClient_(toClient) {
}

SeededMangler::Limits::Limits(const MangleRates& rates)
    : nDrop(LimitOf(rates.iDrop)),
      nDouble(nDrop + LimitOf(rates.iDouble)),
      nFlip(nDouble + LimitOf(rates.iFlip)),
      nAny(nFlip + LimitOf(rates.iSplit)),
      iDelay(rates.iDelay),
      longestDelay(rates.longestDelay) {
}

void SeededMangler::Pass(Direction direction, std::string_view strBytes, Outlet& outlet) {
    const Limits& limits = direction == Direction::ToServer ? toServer_ : toClient_;
    strPiece_.clear();
    size_t nPassed = 0; // bytes that are in the piece or gone
    for (size_t nByte = 0; nByte < strBytes.size(); ++nByte) {
        // One draw a byte: torture runs pass hundreds of megabytes through here.
        const uint64_t nDrawn = numbers_.Next() >> kUnusedBits;
        if (nDrawn >= limits.nAny) [[likely]] {
            continue;
        }
        strPiece_.append(strBytes, nPassed, nByte - nPassed);
        nPassed = nByte + 1;
        char arriving = strBytes[nByte];
        if (nDrawn < limits.nDrop) {
            ++nHarmed_;
            continue;
        }
        if (nDrawn >= limits.nDouble && nDrawn < limits.nFlip) {
            ++nHarmed_;
            arriving = static_cast<char>(arriving ^ (1 << numbers_.Below(8)));
        }
        strPiece_ += arriving;
        if (nDrawn < limits.nDouble) {
            ++nHarmed_;
            strPiece_ += arriving;
        }
        if (nDrawn >= limits.nFlip) {
            PutPiece(limits, outlet);
        }
    }
    strPiece_.append(strBytes, nPassed);
    PutPiece(limits, outlet);
}

void SeededMangler::PutPiece(const Limits& limits, Outlet& outlet) {
    if (strPiece_.empty()) {
        return;
    }
    Microseconds delay = 0;
    if (numbers_.Happens(limits.iDelay) && limits.longestDelay > 0) {
        delay = static_cast<Microseconds>(
            1 + numbers_.Below(static_cast<uint64_t>(limits.longestDelay)));
    }
    outlet.Put(strPiece_, delay);
    strPiece_.clear();
}

} // namespace brennik::world
