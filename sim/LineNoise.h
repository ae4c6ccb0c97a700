// What a serial line does to bytes between ends that aren't set to the same speed.
// Pure functions, for the simulated lines of tests and for real pseudo-terminals alike.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik::sim {

/// A byte at the wrong settings: deterministic, never a control character of the protocol.
char NoiseOf(char cByte) noexcept;
std::string NoiseOf(std::string_view strBytes);

/// The speed of one end suits that of the other: clocks agree well enough within 3 % of it.
bool SuitsSpeed(int64_t lSpeed, int64_t lOther) noexcept;

} // namespace brennik::sim
