// Block checks as their definition reads, bit by bit, for tests to hold the fast ones against.
// Plain functions, slow, and short enough to be seen to be right.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik {

inline uint16_t BitwiseCrc16(std::string_view strData) {
    uint16_t iCrc = 0;
    for (const char cByte : strData) {
        auto iWord = static_cast<uint16_t>(static_cast<unsigned char>(cByte) << 8);
        for (int iBit = 0; iBit < 8; ++iBit) {
            const bool bTop = ((iCrc ^ iWord) & 0x8000) != 0;
            iCrc = static_cast<uint16_t>(iCrc << 1);
            if (bTop) {
                iCrc = static_cast<uint16_t>(iCrc ^ 0x8005);
            }
            iWord = static_cast<uint16_t>(iWord << 1);
        }
    }
    return iCrc;
}

inline std::string HighByteFirst(uint16_t iValue) {
    return {static_cast<char>(iValue >> 8), static_cast<char>(iValue & 0xFF)};
}

inline std::string LowByteFirst(uint16_t iValue) {
    return {static_cast<char>(iValue & 0xFF), static_cast<char>(iValue >> 8)};
}

inline std::string XorOfBytes(std::string_view strData) {
    char cSum = 0;
    for (const char cByte : strData) {
        cSum = static_cast<char>(cSum ^ cByte);
    }
    return std::string(1, cSum);
}

} // namespace brennik
