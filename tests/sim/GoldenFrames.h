// Frames that devices and services exchange in tests, worked out by hand: no code of ours has made
// them. Plain constants, for far ends in virtual time and for the program alike.
#pragma once

#include <string_view>

namespace brennik::golden {

/// The end of a session.
inline constexpr std::string_view kSuccess = "\x02S\x03\x6A\x0F";
inline constexpr std::string_view kFailure = "\x02U\x03\x7E\x0F";

/// A request of one field.
inline constexpr std::string_view kShort = "\x02VFI\x03\x8B\x6C";

/// Management messages: the command to upload, the question whether a device is ready, and its ACK
/// with the reply that it is.
inline constexpr std::string_view kUpload = "\x02"
                                            "3.9,3,U,Q,0,0,,,U,3\x03\x5A";
inline constexpr std::string_view kQuery = "\x02"
                                           "5.8,0,LS,Q,0,0,,,\x03\x5E";
inline constexpr std::string_view kReady = "\x06\x02"
                                           "5.8,1,LS,R,0,0,,,R\x03\x0E";

} // namespace brennik::golden
