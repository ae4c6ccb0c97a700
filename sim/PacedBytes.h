// Bytes under way on a line of some rate, in one direction: each is through once its own bits, and
// those of all bytes before it, have gone over the line. Pure arithmetic of bytes and moments.
// For real brenniksim paces a pseudo-terminal by it; tests tell it the time.
#pragma once

#include "sim/FarEnd.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace brennik::sim {

/// The rates that a paced line can have, in bits per second.
inline constexpr int64_t kLowestRate = 50;
inline constexpr int64_t kHighestRate = 4'000'000;

class PacedBytes {
  public:
    /// lRate is in bits per second, within the two bounds; a byte has ten bits.
    explicit PacedBytes(int64_t lRate) : lRate_(lRate) {}

    /// Puts bytes on the line at a moment, behind all that are under way by then.
    void Put(std::string_view strBytes, Microseconds moment);

    /// Takes all bytes that are through by then. The view lives until the next call.
    std::string_view TakeThrough(Microseconds now);

    /// When the last byte that was taken was through; it may have been taken later.
    Microseconds LastThrough() const { return ThroughAt(lTaken_); }

    /// When all bytes are through.
    Microseconds AllThrough() const { return ThroughAt(lPut_); }

    /// When to take next, so that bytes come as evenly as they can: at the end of the next byte,
    /// though not within a millisecond of the last look unless that ends the stream. Nothing when
    /// no byte is under way.
    std::optional<Microseconds> NextLook() const;

    size_t nUnderWay() const { return static_cast<size_t>(lPut_ - lTaken_); }

  private:
    Microseconds ThroughAt(int64_t lByte) const;

    int64_t lRate_;
    std::string strBytes_; ///< taken ones in front, until room is made
    size_t nTaken_ = 0;    ///< of strBytes_

    // Bytes are counted from the last moment at which the line began to be busy, so that no
    // rounding adds up. Those left from before it have numbers up to 0.
    Microseconds begun_ = 0;
    int64_t lPut_ = 0;
    int64_t lTaken_ = 0;
    Microseconds looked_ = 0;
};

} // namespace brennik::sim
