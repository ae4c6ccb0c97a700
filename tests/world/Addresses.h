// IPv4 addresses and ports as the socket calls carry them: in network byte order.
// Plain conversions for the simulated network alone.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik::world {

/// What a text that is no address becomes.
inline constexpr uint32_t kNoAddress = 0xFFFFFFFF;

/// Four decimal parts of 0 to 255; everything else is kNoAddress.
uint32_t AddressOf(std::string_view strText);

/// True for such a text.
bool IsDotted(std::string_view strText);

std::string TextOf(uint32_t lAddress);

/// From network order to a plain number and back; the same work both ways.
uint16_t SwapPort(uint16_t iPort);

} // namespace brennik::world
