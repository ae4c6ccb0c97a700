#include "sim/LineNoise.h"

namespace brennik::sim {

char NoiseOf(char cByte) noexcept {
    return static_cast<char>(0x80 | ((static_cast<unsigned char>(cByte) * 37U + 11U) & 0x7FU));
}

std::string NoiseOf(std::string_view strBytes) {
    std::string strNoise(strBytes);
    for (char& c : strNoise) {
        c = NoiseOf(c);
    }
    return strNoise;
}

bool SuitsSpeed(int64_t lSpeed, int64_t lOther) noexcept {
    const int64_t lApart = lSpeed < lOther ? lOther - lSpeed : lSpeed - lOther;
    return lApart * 100 <= lOther * 3;
}

} // namespace brennik::sim
