#include "sim/BlockCheck.h"

#include <array>
#include <cstddef>
#include <cstring>
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

#if defined(__x86_64__)

// x to the power n modulo the polynomial: what a value is multiplied by to stand n bits higher.
constexpr int64_t PowerOfX(int n) {
    uint32_t power = 1;
    for (; n > 0; --n) {
        power = (power & 0x8000U) != 0 ? (power << 1 ^ 0x8005U) & 0xFFFFU : power << 1;
    }
    return power;
}

constexpr size_t kLane = 16;
constexpr size_t kLanes = 4;
constexpr int64_t kTurnLow = PowerOfX(512);
constexpr int64_t kTurnHigh = PowerOfX(512 + 64);
constexpr int64_t kLaneLow = PowerOfX(128);
constexpr int64_t kLaneHigh = PowerOfX(128 + 64);

using Lane = long long __attribute__((vector_size(kLane)));
using LaneBytes = char __attribute__((vector_size(kLane)));

// Turns first byte lowest into first byte highest, and back.
__attribute__((target("pclmul,ssse3"))) Lane Reversed(Lane lane) {
    const auto bytes = reinterpret_cast<LaneBytes>(lane);
    return reinterpret_cast<Lane>(__builtin_shufflevector(bytes, bytes, 15, 14, 13, 12, 11, 10, 9,
                                                          8, 7, 6, 5, 4, 3, 2, 1, 0));
}

// The bytes as one number of 128 bits, the first byte highest.
__attribute__((target("pclmul,ssse3"))) Lane Load(const char* p) {
    Lane lane;
    std::memcpy(&lane, p, sizeof lane);
    return Reversed(lane);
}

// Moves a lane up by the bits that the factors stand for and adds what follows there.
__attribute__((target("pclmul,ssse3"))) Lane Fold(Lane lane, Lane factors, Lane next) {
    return __builtin_ia32_pclmulqdq128(lane, factors, 0x11) ^
           __builtin_ia32_pclmulqdq128(lane, factors, 0x00) ^ next;
}

// Four lanes side by side over the whole turns of 64 bytes; what they come to is 16 bytes with the
// same check, to which the tables add the rest. Takes 64 bytes at least.
__attribute__((target("pclmul,ssse3"))) uint16_t BlockCheckByFolding(std::string_view strBytes) {
    constexpr size_t kTurn = kLanes * kLane;
    const Lane byTurn = {kTurnLow, kTurnHigh};
    const Lane byLane = {kLaneLow, kLaneHigh};
    const char* p = strBytes.data();
    const char* end = p + strBytes.size() / kTurn * kTurn;
    Lane a = Load(p);
    Lane b = Load(p + kLane);
    Lane c = Load(p + 2 * kLane);
    Lane d = Load(p + 3 * kLane);
    for (p += kTurn; p != end; p += kTurn) {
        a = Fold(a, byTurn, Load(p));
        b = Fold(b, byTurn, Load(p + kLane));
        c = Fold(c, byTurn, Load(p + 2 * kLane));
        d = Fold(d, byTurn, Load(p + 3 * kLane));
    }
    const Lane sum = Reversed(Fold(Fold(Fold(a, byLane, b), byLane, c), byLane, d));
    char folded[kLane];
    std::memcpy(folded, &sum, sizeof folded);
    const uint16_t nCheck = BlockCheckByTables({folded, kLane});
    return BlockCheckByTables(strBytes.substr(strBytes.size() / kTurn * kTurn), nCheck);
}

bool CanFold() {
    static const bool bCanFold =
        __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("ssse3") != 0;
    return bCanFold;
}

#endif

} // namespace

uint16_t BlockCheck(std::string_view strBytes) noexcept {
#if defined(__x86_64__)
    if (strBytes.size() >= kLanes * kLane && CanFold()) {
        return BlockCheckByFolding(strBytes);
    }
#endif
    return BlockCheckByTables(strBytes);
}

uint16_t BlockCheckByTables(std::string_view strBytes, uint16_t nCheck) noexcept {
    const char* p = strBytes.data();
    size_t nLeft = strBytes.size();
    uint32_t crc = nCheck;
    for (; nLeft >= kSlices; nLeft -= kSlices, p += kSlices) {
        crc = NextSlices(crc, p, std::make_index_sequence<kSlices - 2>());
    }
    for (; nLeft > 0; --nLeft, ++p) {
        crc = (crc << 8 & 0xFFFFU) ^ kSlice[0][(crc >> 8) ^ Byte(*p)];
    }
    return static_cast<uint16_t>(crc);
}

} // namespace brennik::sim
