// The block check of the link, as the far ends compute it: a CRC of 16 bits with polynomial 0x8005
// and first value 0, most significant bit first, nothing reflected, nothing inverted at the end.
// A service that computed it slowly would be measured in place of the client that it serves, so
// there are two ways to the same number; tests compare both with the plain bitwise rule.
#pragma once

#include <cstdint>
#include <string_view>

namespace brennik::sim {

/// The check of some bytes, by the fastest way that this machine has.
uint16_t BlockCheck(std::string_view strBytes) noexcept;

/// The same by tables, which every machine can do. nCheck is the check of what stands before.
uint16_t BlockCheckByTables(std::string_view strBytes, uint16_t nCheck = 0) noexcept;

} // namespace brennik::sim
