// The operating modes of a profile, as "Mode" of its section numbers them.
// Plain constants: whoever decides by the mode compares with these.
#pragma once

#include <cstdint>

namespace brennik {

inline constexpr int32_t kModeTcpClient = 0;      ///< client of a service over TCP
inline constexpr int32_t kModeSerialClient = 1;   ///< client of a device on a serial line
inline constexpr int32_t kModeSerialPassThru = 2; ///< between a serial line and a service
// Every other mode is a pass-through too, between two TCP sides.

} // namespace brennik
