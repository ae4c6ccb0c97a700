// The block check of the link, as the far ends compute it: a CRC of 16 bits with polynomial 0x8005
// and first value 0, most significant bit first, nothing reflected, nothing inverted at the end.
// By sliced tables: a service that computed it slowly would be measured in place of the client that
// it serves. Tests compare it with the plain bitwise rule.
#pragma once

#include <cstdint>
#include <string_view>

namespace brennik::sim {

uint16_t BlockCheck(std::string_view strBytes) noexcept;

} // namespace brennik::sim
