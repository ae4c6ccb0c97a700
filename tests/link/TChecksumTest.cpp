#include "link/TChecksum.h"

#include "tests/link/Bitwise.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;

std::string RandomBytes(size_t nBytes, uint32_t lSeed) {
    std::mt19937 random(lSeed);
    std::string strData(nBytes, '\0');
    for (char& cByte : strData) {
        cByte = static_cast<char>(random() & 0xFF);
    }
    return strData;
}

TEST(TChecksum, LrcIsTheXorOfAllBytesAsOneByte) {
    const TChecksum checksum;
    EXPECT_EQ(checksum.GenerateLRC(""), "\0"s);
    EXPECT_EQ(checksum.GenerateLRC("A"), "A");
    EXPECT_EQ(checksum.GenerateLRC("AB"), "\x03");
    EXPECT_EQ(checksum.GenerateLRC("A\x03"), "\x42");
    EXPECT_EQ(checksum.GenerateLRC("\0\0\0"s), "\0"s);
}

TEST(TChecksum, LrcOfBytesThatCancelOutIsOneZeroByte) {
    EXPECT_EQ(TChecksum().GenerateLRC("ZZ"), "\0"s);
}

TEST(TChecksum, LrcTakesHighBytesUnsigned) {
    EXPECT_EQ(TChecksum().GenerateLRC("\x80\x01"), "\x81");
    EXPECT_EQ(TChecksum().GenerateLRC("\xFF\x7F"), "\x80");
}

TEST(TChecksum, LrcAgreesWithItsDefinitionAtEveryLength) {
    for (size_t nBytes = 0; nBytes <= 200; ++nBytes) {
        const std::string strData = RandomBytes(nBytes, 1);
        ASSERT_EQ(TChecksum().GenerateLRC(strData), XorOfBytes(strData)) << nBytes;
    }
}

TEST(TChecksum, Crc16OfTheCatalogueCheckString) {
    EXPECT_EQ(TChecksum().GenerateCRC16("123456789", 0), "\xFE\xE8");
    EXPECT_EQ(TChecksum().GenerateCRC16("123456789", 1), "\xE8\xFE");
}

TEST(TChecksum, Crc16OfSingleBytesIsWorkedOutByHand) {
    // 1 leaves the polynomial itself, each further bit the polynomial shifted and reduced.
    EXPECT_EQ(TChecksum().GenerateCRC16("\x01", 0), "\x80\x05");
    EXPECT_EQ(TChecksum().GenerateCRC16("\x02", 0), "\x80\x0F");
    EXPECT_EQ(TChecksum().GenerateCRC16("\x03", 0), "\x00\x0A"s);
    EXPECT_EQ(TChecksum().GenerateCRC16("\x80", 0), "\x83\x03");
}

TEST(TChecksum, Crc16OfNothingIsTwoZeroBytesInEitherOrder) {
    EXPECT_EQ(TChecksum().GenerateCRC16("", 0), "\0\0"s);
    EXPECT_EQ(TChecksum().GenerateCRC16("", 1), "\0\0"s);
}

TEST(TChecksum, OnlySelectorOnePutsTheLowByteFirst) {
    for (const int32_t lSelector : {0, 2, 3, -1, 257, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(TChecksum().GenerateCRC16("123456789", lSelector), "\xFE\xE8") << lSelector;
    }
}

TEST(TChecksum, Crc16AgreesWithItsDefinitionAtEveryLength) {
    for (size_t nBytes = 0; nBytes <= 800; ++nBytes) {
        const std::string strData = RandomBytes(nBytes, static_cast<uint32_t>(nBytes) + 7);
        ASSERT_EQ(TChecksum().GenerateCRC16(strData, 0), HighByteFirst(BitwiseCrc16(strData)))
            << nBytes;
        ASSERT_EQ(TChecksum().GenerateCRC16(strData, 1), LowByteFirst(BitwiseCrc16(strData)))
            << nBytes;
    }
}

TEST(TChecksum, Crc16AgreesWithItsDefinitionOnFramesOfAllSizesInUse) {
    for (const size_t nBytes : {1024u, 1033u, 4103u, 16391u, 60007u, 65542u}) {
        for (uint32_t lSeed = 0; lSeed < 8; ++lSeed) {
            const std::string strData = RandomBytes(nBytes, lSeed);
            ASSERT_EQ(TChecksum().GenerateCRC16(strData, 0), HighByteFirst(BitwiseCrc16(strData)))
                << nBytes << " seed " << lSeed;
        }
    }
}

TEST(TChecksum, Crc16OfPartsOfABufferDoesNotDependOnWhereTheyStand) {
    const std::string strData = RandomBytes(1100, 5);
    for (size_t nFrom = 0; nFrom < 40; ++nFrom) {
        const std::string_view strPart = std::string_view(strData).substr(nFrom, 1034);
        ASSERT_EQ(TChecksum().GenerateCRC16(strPart, 0), HighByteFirst(BitwiseCrc16(strPart)))
            << nFrom;
    }
}

TEST(TChecksum, Crc16OfEverySingleBitIsItsPowerOfX) {
    // The check is linear, so the single bits of a length decide about all data of that length.
    // The last bit leaves the polynomial itself, and each bit further ahead is times x.
    for (const size_t nBytes : {719u, 720u, 721u, 1034u}) {
        std::string strData(nBytes, '\0');
        uint32_t lExpected = 0x8005;
        for (size_t nBit = 0; nBit < nBytes * 8; ++nBit) {
            char& cByte = strData[nBytes - 1 - nBit / 8];
            cByte = static_cast<char>(1U << nBit % 8);
            ASSERT_EQ(TChecksum().GenerateCRC16(strData, 0),
                      HighByteFirst(static_cast<uint16_t>(lExpected)))
                << nBytes << " bytes, bit " << nBit;
            cByte = 0;
            lExpected <<= 1;
            lExpected = (lExpected & 0x10000) != 0 ? lExpected ^ 0x18005 : lExpected;
        }
    }
}

TEST(TChecksum, EverySingleBitErrorChangesBothChecks) {
    const std::string strGood = RandomBytes(400, 9);
    for (size_t nBit = 0; nBit < strGood.size() * 8; ++nBit) {
        std::string strBad = strGood;
        strBad[nBit / 8] = static_cast<char>(strBad[nBit / 8] ^ (1 << (nBit % 8)));
        ASSERT_NE(TChecksum().GenerateCRC16(strBad, 0), TChecksum().GenerateCRC16(strGood, 0));
        ASSERT_NE(TChecksum().GenerateLRC(strBad), TChecksum().GenerateLRC(strGood));
    }
}

} // namespace
} // namespace brennik
