// The two decodings of numbers as they stand on the wire: hexadecimal text and big-endian bytes.
// Plain functions without a far side; tests use them as they are.
#pragma once

#include <cstdint>
#include <string_view>

namespace brennik {

/// The value of hexadecimal text of either case, the last character weighing least. 0 for an empty
/// text, for one with a character that is no hexadecimal digit, and for a value above 0x7FFFFFFF;
/// also beyond 256 characters, whose weights no double holds.
int32_t HexStringToLong(std::string_view strHex);

/// The value of big-endian bytes. 0 for none, for a value above 0x7FFFFFFF, and beyond 128 bytes.
int32_t BinaryStringToLong(std::string_view strBytes);

} // namespace brennik
