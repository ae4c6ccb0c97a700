// Block checks written in the plain ways that the program's own is measured against: CRC16 bit by
// bit, with one table, and sliced by N bytes. They are the measurements' own, so that frames are
// made and checked here without the code under measurement.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace brennik::bench {

inline constexpr uint32_t kCrcPolynomial = 0x8005;

inline uint16_t BitwiseCrc16(std::string_view strData) {
    uint32_t lCrc = 0;
    for (const char cByte : strData) {
        lCrc ^= uint32_t{static_cast<unsigned char>(cByte)} << 8;
        for (int iBit = 0; iBit < 8; ++iBit)
            lCrc = (lCrc & 0x8000) != 0 ? (lCrc << 1) ^ kCrcPolynomial : lCrc << 1;
    }
    return static_cast<uint16_t>(lCrc);
}

/// Row k holds the check of a byte with k zero bytes behind it.
template <size_t Rows>
constexpr auto MakeCrcRows() {
    std::array<std::array<uint16_t, 256>, Rows> rows{};
    for (uint32_t lByte = 0; lByte < 256; ++lByte) {
        uint32_t lCrc = lByte << 8;
        for (int iBit = 0; iBit < 8; ++iBit)
            lCrc = (lCrc & 0x8000) != 0 ? (lCrc << 1) ^ kCrcPolynomial : lCrc << 1;
        rows[0][lByte] = static_cast<uint16_t>(lCrc);
    }
    for (size_t nRow = 1; nRow < Rows; ++nRow) {
        for (size_t nByte = 0; nByte < 256; ++nByte) {
            const uint32_t lCrc = rows[nRow - 1][nByte];
            rows[nRow][nByte] = static_cast<uint16_t>((lCrc << 8) ^ rows[0][lCrc >> 8]);
        }
    }
    return rows;
}

template <size_t Rows>
inline constexpr auto kCrcRows = MakeCrcRows<Rows>();

inline uint16_t OneTableCrc16(std::string_view strData) {
    uint32_t lCrc = 0;
    for (const char cByte : strData) {
        const auto lByte = static_cast<unsigned char>(cByte);
        lCrc = (lCrc << 8 & 0xFFFF) ^ kCrcRows<1>[0][(lCrc >> 8) ^ lByte];
    }
    return static_cast<uint16_t>(lCrc);
}

/// Takes Rows bytes a step; the compiler is told to unroll, since -O2 alone doesn't.
template <size_t Rows>
uint16_t SlicedCrc16(std::string_view strData) {
    const auto& rows = kCrcRows<Rows>;
    const auto* bytes = reinterpret_cast<const unsigned char*>(strData.data());
    size_t nBytes = strData.size();
    uint32_t lCrc = 0;
    for (; nBytes >= Rows; bytes += Rows, nBytes -= Rows) {
        uint32_t lNext = rows[Rows - 1][bytes[0] ^ (lCrc >> 8)];
        lNext ^= rows[Rows - 2][bytes[1] ^ (lCrc & 0xFF)];
#pragma GCC unroll 16
        for (size_t nByte = 2; nByte < Rows; ++nByte)
            lNext ^= rows[Rows - 1 - nByte][bytes[nByte]];
        lCrc = lNext;
    }
    for (; nBytes > 0; ++bytes, --nBytes)
        lCrc = (lCrc << 8 & 0xFFFF) ^ rows[0][(lCrc >> 8) ^ *bytes];
    return static_cast<uint16_t>(lCrc);
}

} // namespace brennik::bench
