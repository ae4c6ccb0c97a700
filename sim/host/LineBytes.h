// The bytes that go over the pseudo-terminal of a serial line, both ways: at the pace of a rate,
// garbled when the ends aren't set alike, and kept as long as the other end doesn't take them.
// It stands on the operating system; tests of the far ends play them in virtual time instead.
#pragma once

#include "sim/FarEnd.h"
#include "sim/PacedBytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace brennik::sim {

class PseudoTerminal;

/// What a line is like, in bits per second; without a value it is as the host makes it.
struct LineRates {
    std::optional<int64_t> lPace;   ///< bytes take the time of this rate; see PacedBytes
    std::optional<int64_t> lFarEnd; ///< set to another rate, the line carries noise both ways
};

class LineBytes {
  public:
    /// The terminal must outlive this. Bytes of the other end go to receive once they are through.
    LineBytes(PseudoTerminal& line, const LineRates& rates,
              std::function<void(Microseconds now, std::string_view)> receive);

    /// Sends to the other end, behind all that is under way: from the arrival on to which this is
    /// an answer, or from the moment that Begin named.
    void Send(std::string_view strBytes);

    /// What is sent now begins to go at this moment.
    void Begin(Microseconds moment) { moment_ = moment; }

    /// Whether the other end is there. What goes to nobody is lost.
    void SetHeld(bool bHeld);

    /// What to wait for on the master side, as poll knows it.
    short Events() const;
    /// When to call Pace next, if at all.
    std::optional<Microseconds> NextLook() const;

    /// Takes some of what the host has by now, garbled where that is due; empty when there is
    /// nothing. The view lives until the next call.
    std::string_view Take();
    /// Puts what was taken on its way to here.
    void Arrived(Microseconds now, std::string_view strBytes);
    /// Writes on, when the host can take more.
    void WriteOn();
    /// Moves what is through by now, both ways.
    void Pace(Microseconds now);

    /// All that was sent has been taken by the host.
    bool bAllOut() const { return strUnsent_.empty() && (!toOther_ || toOther_->nUnderWay() == 0); }
    /// When all that was sent is through, as far as the pace decides.
    Microseconds AllThrough(Microseconds now) const;
    /// Nothing is on its way to here.
    bool bAllHere() const { return !fromOther_ || fromOther_->nUnderWay() == 0; }

  private:
    bool bNoisy() const;
    void Write(std::string_view strBytes);
    size_t WriteNow(std::string_view strBytes);

    PseudoTerminal& line_;
    std::function<void(Microseconds, std::string_view)> receive_;
    std::optional<int64_t> lFarEnd_;
    std::optional<PacedBytes> toOther_; ///< both only on a paced line
    std::optional<PacedBytes> fromOther_;
    bool bHeld_ = true;
    std::string strUnsent_;   ///< through the line, but not taken yet
    Microseconds moment_ = 0; ///< from which what is sent now goes out
    std::array<char, 4096> buffer_;
};

} // namespace brennik::sim
