#include "sim/BlockCheck.h"

#include <array>
#include <cstddef>
#include <utility>

namespace brennik::sim {

namespace {

// Sixteen bytes a turn: only two of the sixteen look-ups wait for the turn before.
constexpr size_t kSlices = 16;

constexpr auto MakeSlices() {
    std::array<std::array<uint16_t, 256>, kSlices> slices{};
    for (uint32_t iByte = 0; iByte < 256; ++iByte) {
        uint32_t crc = iByte << 8;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x8000U) != 0 ? (crc << 1) ^ 0x8005U : crc << 1;
        }
        slices[0][iByte] = static_cast<uint16_t>(crc);
    }
    for (size_t n = 1; n < kSlices; ++n) {
        for (size_t iByte = 0; iByte < 256; ++iByte) {
            const uint32_t before = slices[n - 1][iByte];
            slices[n][iByte] = static_cast<uint16_t>((before << 8) ^ slices[0][before >> 8]);
        }
    }
    return slices;
}

constexpr auto kSlice = MakeSlices();

uint8_t Byte(char c) {
    return static_cast<uint8_t>(c);
}

// Written out by the compiler, look-up by look-up: a loop here costs half the speed.
template <size_t... n>
uint32_t NextSlices(uint32_t crc, const char* p, std::index_sequence<n...>) {
    const uint32_t first =
        uint32_t{kSlice[15][Byte(p[0]) ^ (crc >> 8)]} ^ kSlice[14][Byte(p[1]) ^ (crc & 0xFFU)];
    return (uint32_t{kSlice[13 - n][Byte(p[2 + n])]} ^ ...) ^ first;
}

} // namespace

uint16_t BlockCheck(std::string_view strBytes) noexcept {
    const char* p = strBytes.data();
    size_t nLeft = strBytes.size();
    uint32_t crc = 0;
    for (; nLeft >= kSlices; nLeft -= kSlices, p += kSlices) {
        crc = NextSlices(crc, p, std::make_index_sequence<kSlices - 2>());
    }
    for (; nLeft > 0; --nLeft, ++p) {
        crc = (crc << 8 & 0xFFFFU) ^ kSlice[0][(crc >> 8) ^ Byte(*p)];
    }
    return static_cast<uint16_t>(crc);
}

} // namespace brennik::sim
