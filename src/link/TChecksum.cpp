#include "link/TChecksum.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace brennik {
namespace {

constexpr uint32_t kPolynomial = 0x8005;

/// Bytes that the tables take at once. Row k holds the check of a byte with k zero bytes behind
/// it, so that sixteen bytes cost sixteen independent look-ups instead of a chain of them.
constexpr size_t kSlice = 16;

using Crc16Tables = std::array<std::array<uint16_t, 256>, kSlice>;

constexpr Crc16Tables MakeCrc16Tables() {
    Crc16Tables tables{};
    for (uint32_t lByte = 0; lByte < 256; ++lByte) {
        uint32_t lCrc = lByte << 8;
        for (int iBit = 0; iBit < 8; ++iBit) {
            lCrc = (lCrc & 0x8000) != 0 ? (lCrc << 1) ^ kPolynomial : lCrc << 1;
        }
        tables[0][lByte] = static_cast<uint16_t>(lCrc);
    }
    for (size_t nRow = 1; nRow < kSlice; ++nRow) {
        for (size_t nByte = 0; nByte < 256; ++nByte) {
            const uint32_t lCrc = tables[nRow - 1][nByte];
            tables[nRow][nByte] = static_cast<uint16_t>((lCrc << 8) ^ tables[0][lCrc >> 8]);
        }
    }
    return tables;
}

constexpr Crc16Tables kRow = MakeCrc16Tables();

/// Eight bytes with the first one lowest; compilers make a single load of it.
inline uint64_t LoadEight(const unsigned char* bytes) {
    return uint64_t{bytes[0]} | uint64_t{bytes[1]} << 8 | uint64_t{bytes[2]} << 16 |
           uint64_t{bytes[3]} << 24 | uint64_t{bytes[4]} << 32 | uint64_t{bytes[5]} << 40 |
           uint64_t{bytes[6]} << 48 | uint64_t{bytes[7]} << 56;
}

/// The look-ups are spelled out because loops aren't unrolled at the optimisation we build with;
/// the two that hang on the bytes before come last, which keeps the chain short.
uint32_t SlicedCrc16(const unsigned char* bytes, size_t nBytes) {
    uint32_t lCrc = 0;
    for (; nBytes >= kSlice; bytes += kSlice, nBytes -= kSlice) {
        const uint64_t a = LoadEight(bytes);
        const uint64_t b = LoadEight(bytes + 8);
        const uint32_t lRest = kRow[13][a >> 16 & 0xFF] ^ kRow[12][a >> 24 & 0xFF] ^
                               kRow[11][a >> 32 & 0xFF] ^ kRow[10][a >> 40 & 0xFF] ^
                               kRow[9][a >> 48 & 0xFF] ^ kRow[8][a >> 56] ^ kRow[7][b & 0xFF] ^
                               kRow[6][b >> 8 & 0xFF] ^ kRow[5][b >> 16 & 0xFF] ^
                               kRow[4][b >> 24 & 0xFF] ^ kRow[3][b >> 32 & 0xFF] ^
                               kRow[2][b >> 40 & 0xFF] ^ kRow[1][b >> 48 & 0xFF] ^ kRow[0][b >> 56];
        lCrc =
            lRest ^ kRow[15][(a & 0xFF) ^ (lCrc >> 8)] ^ kRow[14][(a >> 8 & 0xFF) ^ (lCrc & 0xFF)];
    }
    for (; nBytes > 0; ++bytes, --nBytes) {
        lCrc = (lCrc << 8 & 0xFFFF) ^ kRow[0][(lCrc >> 8) ^ *bytes];
    }
    return lCrc;
}

/// Long data is folded before the tables see it. The polynomial is (x + 1)(x^15 + x + 1), and
/// modulo the second factor x^15 is x + 1, hence x^960 is x^64 + 1: a word of 64 bits may be added
/// to the words 14 and 15 places behind it and then be forgotten. So blocks of 15 words run
/// through plain XORs, whatever the byte order of the machine, until less than two blocks are
/// left. Modulo x + 1 that isn't true; there the check is the parity of all bits, and where the
/// folding has changed it, the cofactor x^15 + x + 1 mends the result.
constexpr size_t kFoldWords = 15;
constexpr size_t kFoldBytes = kFoldWords * sizeof(uint64_t);
constexpr size_t kFoldWorthwhile = 6 * kFoldBytes;
constexpr uint32_t kCofactor = 0x8003;

/// Takes kFoldBytes at least; one whole block must be left for the carry to go into.
uint32_t FoldedCrc16(const unsigned char* bytes, size_t nBytes) {
    std::array<uint64_t, kFoldWords + 1> words{}; // of a block; the last one stays zero
    // What the blocks so far add to the words of the next, place by place.
    std::array<uint64_t, kFoldWords> carry{};
    // All words that were forgotten, as they came: their bits are missing from the parity.
    std::array<uint64_t, kFoldWords> sum{};
    for (; nBytes >= 2 * kFoldBytes; bytes += kFoldBytes, nBytes -= kFoldBytes) {
        for (size_t i = 0; i < kFoldWords; ++i) {
            uint64_t lWord = 0;
            std::memcpy(&lWord, bytes + i * sizeof lWord, sizeof lWord);
            sum[i] ^= lWord;
            words[i] = lWord ^ carry[i];
        }
        // 15 places on is the same place of the next block, 14 places on the place before it. Only
        // for the first word does that one lie in this block, so the carry comes after: the last
        // word must be complete before it is carried on itself.
        words[kFoldWords - 1] ^= words[0];
        for (size_t i = 0; i < kFoldWords; ++i) {
            carry[i] = words[i] ^ words[i + 1];
        }
    }

    std::array<unsigned char, 2 * kFoldBytes> rest;
    std::memcpy(rest.data(), bytes, nBytes);
    uint64_t lParity = 0; // of the bits that went and of those that came
    for (size_t i = 0; i < kFoldWords; ++i) {
        uint64_t lWord = 0;
        std::memcpy(&lWord, rest.data() + i * sizeof lWord, sizeof lWord);
        lWord ^= carry[i];
        std::memcpy(rest.data() + i * sizeof lWord, &lWord, sizeof lWord);
        lParity ^= sum[i] ^ carry[i];
    }
    const uint32_t lCrc = SlicedCrc16(rest.data(), nBytes);
    return std::popcount(lParity) % 2 == 0 ? lCrc : lCrc ^ kCofactor;
}

uint32_t Crc16(std::string_view strData) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(strData.data());
    return strData.size() < kFoldWorthwhile ? SlicedCrc16(bytes, strData.size())
                                            : FoldedCrc16(bytes, strData.size());
}

uint8_t Lrc(std::string_view strData) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(strData.data());
    size_t nLeft = strData.size();
    uint64_t lSum = 0;
    for (; nLeft >= 8; bytes += 8, nLeft -= 8) {
        lSum ^= LoadEight(bytes);
    }
    for (; nLeft > 0; ++bytes, --nLeft) {
        lSum ^= *bytes;
    }
    lSum ^= lSum >> 32;
    lSum ^= lSum >> 16;
    lSum ^= lSum >> 8;
    return static_cast<uint8_t>(lSum);
}

} // namespace

std::string TChecksum::GenerateLRC(std::string_view strData) const {
    return std::string(1, static_cast<char>(Lrc(strData)));
}

std::string TChecksum::GenerateCRC16(std::string_view strData, int32_t lByteOrder) const {
    const uint32_t lCrc = Crc16(strData);
    const char cHigh = static_cast<char>(lCrc >> 8);
    const char cLow = static_cast<char>(lCrc & 0xFF);
    return lByteOrder == 1 ? std::string{cLow, cHigh} : std::string{cHigh, cLow};
}

} // namespace brennik
