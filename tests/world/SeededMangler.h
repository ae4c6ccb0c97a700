// A wire that mishandles bytes by chance: the same seed and the same bytes give the same damage.
// For the torture of the byte stream; the test prints the seed, and a run with it replays.
#pragma once

#include "tests/world/Mangler.h"

#include <cstdint>
#include <string>

namespace brennik::world {

/// Chances in 10,000. Drop, double, flip and split (a cut behind the byte) are drawn for each
/// byte, of which at most one happens to it; together they stay within 10,000. Delays are drawn
/// for each piece.
struct MangleRates {
    int32_t iSplit = 0;
    int32_t iDelay = 0;
    int32_t iDrop = 0;
    int32_t iDouble = 0;
    int32_t iFlip = 0;
    Microseconds longestDelay = 20 * kMillisecond;
};

/// A small generator whose numbers are the same on every machine.
class SeededNumbers {
  public:
    explicit SeededNumbers(uint64_t nSeed) : nState_(nSeed) {}
    uint64_t Next();
    /// 0 to nLimit - 1; nLimit is at least 1.
    uint64_t Below(uint64_t nLimit) { return Next() % nLimit; }
    /// True in iChance of 10,000 cases.
    bool Happens(int32_t iChance) {
        return iChance > 0 && Below(10000) < static_cast<uint64_t>(iChance);
    }

  private:
    uint64_t nState_;
};

/// The rates of one direction, drawn. Every wire cuts and delays; a harmful one drops, doubles and
/// flips too, each up to nWorst times in 10,000 bytes, and at times delays for seconds.
MangleRates DrawnRates(SeededNumbers& numbers, bool bHarm, uint64_t nWorst);

class SeededMangler : public Mangler {
  public:
    SeededMangler(uint64_t nSeed, const MangleRates& toServer, const MangleRates& toClient);

    void Pass(Direction direction, std::string_view strBytes, Outlet& outlet) override;

    /// Bytes dropped, doubled or flipped so far; 0 means that nothing was harmed.
    int64_t nHarmed() const { return nHarmed_; }

  private:
    /// A direction's chances as limits of a drawn number, each standing on the one before.
    struct Limits {
        explicit Limits(const MangleRates& rates);
        uint64_t nDrop;
        uint64_t nDouble;
        uint64_t nFlip;
        uint64_t nAny;
        int32_t iDelay;
        Microseconds longestDelay;
    };
    void PutPiece(const Limits& limits, Outlet& outlet);

    SeededNumbers numbers_;
    Limits toServer_;
    Limits toClient_;
    int64_t nHarmed_ = 0;
    std::string strPiece_;
};

} // namespace brennik::world
