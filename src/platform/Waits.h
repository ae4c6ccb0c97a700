// The clock that only goes forward, and waits on it that no interruption cuts short.
// Room-internal: everything above the seam waits by the operations of the host.
#pragma once

#include <cstdint>
#include <optional>
#include <poll.h>

namespace brennik {

inline constexpr int64_t kNanosecondsOfSecond = 1000000000;
inline constexpr int64_t kNanosecondsOfMillisecond = 1000000;

/// Nanoseconds since some moment before the program began.
int64_t MonotonicNow();

/// Waits for events until the deadline, or without one; an interrupted wait goes on with the rest
/// of its time. The number of ready descriptors (0 or 1), or -1 with errno set.
int PollUntil(pollfd& watched, std::optional<int64_t> lDeadline);

void SleepUntil(int64_t lDeadline);

} // namespace brennik
