// The operating modes and pass-through types of a profile, as "Mode" and "PassThruType" of its
// section number them. Plain constants: whoever decides by them compares with these.
#pragma once

#include <cstdint>

namespace brennik {

inline constexpr int32_t kModeTcpClient = 0;      ///< client of a service over TCP
inline constexpr int32_t kModeSerialClient = 1;   ///< client of a device on a serial line
inline constexpr int32_t kModeSerialPassThru = 2; ///< between a serial line and a service
// Every other mode is a pass-through too, between two TCP sides.

inline constexpr int32_t kPassThruDownload = 0;          ///< from the server to the device
inline constexpr int32_t kPassThruUpload = 1;            ///< from the device to the server
inline constexpr int32_t kPassThruForceFullDownload = 2; ///< the device must fetch everything

} // namespace brennik
