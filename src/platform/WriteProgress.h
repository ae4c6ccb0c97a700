// How far a write on a serial line has come, judged by what the driver has taken and what it still
// holds: when the rest is as good as out, how long to look away, and what counts in the end.
// Room-internal, pure: SerialLine asks the driver and waits; tests hand in the counts.
#pragma once

#include "platform/ComPorts.h"

#include <cstdint>
#include <optional>

namespace brennik {

class WriteProgress {
  public:
    /// For a write of so many bytes on a line that is set as the control block says.
    WriteProgress(const DCB& dcb, int32_t lCount);

    /// What the driver has taken of the bytes so far, and what it holds, earlier bytes included.
    /// While the write settles, bytes go on into the buffer of the hardware, which is no movement
    /// of the line.
    void Note(int32_t lTaken, int32_t lHeld, bool bSettling = false);

    /// All bytes are taken, and what is held takes at most 10 ms on the line.
    bool IsOut() const;

    /// Nanoseconds after which looking again is worthwhile: 1 to 5 ms.
    int64_t PauseNanoseconds() const;

    /// Not a single byte has left the driver since the first note, or since the last one that was
    /// made while the write settled.
    bool IsStuck() const { return lGone_ == lGoneAtFirst_; }

    /// The bytes that count as written when the time is over: all taken ones while they move, else
    /// those that have left.
    int32_t Written() const;

  private:
    int64_t MicrosecondsHeld() const;

    int32_t lCount_;
    int64_t lBaudRate_;
    int64_t lHalfBits_;
    int64_t lTaken_ = 0;
    int64_t lHeld_ = 0;
    int64_t lGone_ = 0; ///< taken bytes less those held: it grows with each that leaves
    std::optional<int64_t> lGoneAtFirst_;
};

} // namespace brennik
