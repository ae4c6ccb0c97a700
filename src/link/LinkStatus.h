// The two statuses that the operations of the links and channels give.
// Plain numbers, used as they are. A caller tests for kSuccess alone: another channel may give
// any other number for a failure.
#pragma once

#include <cstdint>

namespace brennik {

inline constexpr int32_t kSuccess = 0;
inline constexpr int32_t kFailure = 1;

} // namespace brennik
