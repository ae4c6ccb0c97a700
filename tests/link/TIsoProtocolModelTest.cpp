// The reader against a plain model that searches the whole buffer again after every delivery.
#include "link/TIsoProtocol.h"
#include "tests/link/Bitwise.h"
#include "tests/link/IsoFixture.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

namespace brennik {
namespace {

using world::kSecond;

class TIsoProtocolModel : public IsoReadFixture {};

struct Outcome {
    IsoReadResult result = IsoReadResult::IsoReadTimedOut;
    std::string strData;
    size_t nDeliveries = 0;
};

std::string ModelCheck(const std::string& strData, int32_t lChecksumType) {
    if (lChecksumType == 0) {
        return XorOfBytes(strData);
    }
    const uint16_t iCrc = BitwiseCrc16(strData);
    return lChecksumType == 1 ? LowByteFirst(iCrc) : HighByteFirst(iCrc);
}

/// Positions count from 1 and 0 is none, as the rules are told.
Outcome Model(const Lines& deliveries, const std::string& strInitial, int32_t lChecksumType) {
    Outcome outcome{.strData = strInitial};
    std::string& strBuffer = outcome.strData;
    const auto at = [&](size_t nPosition) {
        return static_cast<unsigned char>(strBuffer[nPosition - 1]);
    };
    bool bWrite = false;
    for (const std::string& strDelivery : deliveries) {
        ++outcome.nDeliveries;
        strBuffer += strDelivery;
        const size_t nStart = strBuffer.find('\x02') + 1;
        const size_t nEtx = strBuffer.find('\x03') + 1;
        std::string strCheck;
        if (nStart != 0 && nStart < strBuffer.size() && at(nStart + 1) == 'W') {
            bWrite = true;
            if (strBuffer.size() >= nStart + 7) {
                const size_t nLength = at(nStart + 2) * 256u + at(nStart + 3);
                if (strBuffer.size() - (nStart + 7) + 1 == nLength + 3) {
                    strCheck = strBuffer.substr(nStart + 8 + nLength - 1, 2);
                    strBuffer = strBuffer.substr(nStart, nLength + 7);
                    outcome.result = strCheck == ModelCheck(strBuffer, lChecksumType)
                                         ? IsoReadResult::IsoReadGood
                                         : IsoReadResult::IsoReadBadCheck;
                    return outcome;
                }
            }
        }
        if (bWrite || nStart == 0 || nEtx == 0 || nEtx < nStart) {
            continue;
        }
        const size_t nCheck = lChecksumType == 0 ? 1 : 2;
        if (strBuffer.size() < nEtx + nCheck) {
            continue;
        }
        strCheck = strBuffer.substr(nEtx, nCheck);
        strBuffer = strBuffer.substr(nStart, nEtx - nStart - 1);
        outcome.result = strCheck == ModelCheck(strBuffer + "\x03", lChecksumType)
                             ? IsoReadResult::IsoReadGood
                             : IsoReadResult::IsoReadBadCheck;
        return outcome;
    }
    return outcome;
}

TEST_F(TIsoProtocolModel, AgreesWithAPlainModelOnAnyBytesInAnyCutting) {
    StartAt(0);
    Use({.lPacketTimeout = 1});
    std::array<int, 6> seen{};
    for (uint32_t lSeed = 1; lSeed <= 12000; ++lSeed) {
        std::mt19937 random(lSeed);
        const auto below = [&](uint32_t n) { return random() % n; };
        const int32_t lChecksumType = static_cast<int32_t>(below(3));
        std::string strStream;
        while (below(4) != 0 || strStream.empty()) {
            std::string strPayload(below(12), '\0');
            for (char& cByte : strPayload) {
                cByte = "\x02\x03WDS\x00\x01\xFF"[below(8)];
            }
            switch (below(6)) {
            case 0:
                strStream += strPayload;
                break;
            case 1:
                strStream += "noise";
                break;
            case 2: {
                strPayload = "W" + HighByteFirst(static_cast<uint16_t>(strPayload.size())) +
                             "hdr." + strPayload;
                strStream += "\x02" + strPayload + ModelCheck(strPayload, lChecksumType);
                break;
            }
            default:
                std::erase(strPayload, '\x03');
                strStream +=
                    "\x02" + strPayload + "\x03" + ModelCheck(strPayload + "\x03", lChecksumType);
            }
        }
        if (below(4) == 0) {
            strStream[below(static_cast<uint32_t>(strStream.size()))] ^= 1;
        }
        const std::string strInitial = strStream.substr(0, below(5) == 0 ? below(8) : 0);
        Lines deliveries;
        for (size_t nFrom = strInitial.size(); nFrom < strStream.size();) {
            const size_t nPiece = below(3) == 0 ? below(4) : below(40);
            deliveries.push_back(strStream.substr(nFrom, nPiece));
            nFrom += nPiece;
        }
        if (deliveries.empty()) {
            deliveries.emplace_back();
        }

        const Outcome expected = Model(deliveries, strInitial, lChecksumType);
        channel.reads.clear();
        for (const std::string& strDelivery : deliveries) {
            channel.reads.push_back({strDelivery});
        }
        host.clock.SetTimeOfDay(100 * kSecond);
        link.lChecksumType(lChecksumType);
        ASSERT_EQ(ReadOnce(strInitial), expected.result) << "seed " << lSeed;
        ASSERT_EQ(strData, expected.strData) << "seed " << lSeed;
        ASSERT_EQ(deliveries.size() - channel.reads.size(), expected.nDeliveries)
            << "seed " << lSeed;
        ++seen.at(static_cast<size_t>(expected.result));
    }
    // The streams are worth their while only if they end in each of the ways.
    EXPECT_GT(seen[0], 500);
    EXPECT_GT(seen[2], 500);
    EXPECT_GT(seen[4], 500);
}

} // namespace
} // namespace brennik
