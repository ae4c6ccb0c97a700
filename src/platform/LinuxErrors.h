// The two tables from the numbers of failed system calls to what the logic knows: run-time
// failures for files and processes, socket error numbers for the network.
// Room-internal: above the seam there is no errno.
#pragma once

#include "platform/RuntimeFailure.h"

#include <cstdint>

namespace brennik {

FailureKind FailureKindOf(int nErrno) noexcept;

/// The number that the logic tests; one that it has no name for passes as it is.
int32_t SocketErrorOf(int nErrno) noexcept;

/// Throws what the current errno stands for.
[[noreturn]] void ThrowErrno();

} // namespace brennik
