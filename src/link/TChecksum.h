// The two block checks of the link: a one-byte XOR and a two-byte CRC.
// Stateless arithmetic; nothing stands behind it, and tests use it as it is. Results are byte
// strings, ready to be put behind a frame and to be compared with what arrived.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik {

class TChecksum {
  public:
    /// The XOR of all bytes, always one byte; a zero byte for no data.
    std::string GenerateLRC(std::string_view strData) const;

    /// CRC of width 16, polynomial 0x8005, start 0, most significant bit first, nothing reflected
    /// or inverted; always two bytes. The low byte comes first when lByteOrder is exactly 1, and
    /// the high byte for every other value.
    std::string GenerateCRC16(std::string_view strData, int32_t lByteOrder) const;
};

} // namespace brennik
