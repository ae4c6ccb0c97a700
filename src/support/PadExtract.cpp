#include "support/PadExtract.h"

#include "support/AsciiText.h"
#include "support/Failure.h"

#include <algorithm>

namespace brennik {

namespace {

enum PadType : int32_t { ZerosOnTheRight, BlanksOnTheRight, ZerosOnTheLeft, BlanksOnTheLeft };

constexpr char kZero = '0';

template <class Body>
std::string TextOrEmpty(Body&& body) {
    return Guarded([&]() -> std::string { return std::string(body()); },
                   [](const std::string&) { return std::string(); });
}

// A position or a length within a text.
size_t Within(int32_t lValue, int32_t lLowest) {
    if (lValue < lLowest) {
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    }
    return static_cast<size_t>(lValue);
}

std::string_view WithoutLeft(std::string_view strData, char cPad) {
    return strData.substr(std::min(strData.find_first_not_of(cPad), strData.size()));
}

std::string_view WithoutRight(std::string_view strData, char cPad) {
    return strData.substr(0, strData.find_last_not_of(cPad) + 1);
}

} // namespace

std::string PadExtract::PadString(std::string_view strData, int32_t lPadType,
                                  int32_t lWidth) const {
    return TextOrEmpty([&]() -> std::string {
        const size_t nWidth = Within(lWidth, 0);
        if (strData.size() >= nWidth) {
            return std::string(strData.substr(0, nWidth));
        }
        const size_t nMissing = nWidth - strData.size();
        std::string strResult(strData);
        switch (lPadType) {
        case ZerosOnTheRight:
            return strResult.append(nMissing, kZero);
        case BlanksOnTheRight:
            return strResult.append(nMissing, kBlank);
        case ZerosOnTheLeft:
            return strResult.insert(0, nMissing, kZero);
        case BlanksOnTheLeft:
            return strResult.insert(0, nMissing, kBlank);
        default:
            return {};
        }
    });
}

std::string PadExtract::ExtractData(std::string_view strData, int32_t lStart, int16_t iTerminator,
                                    int32_t lMaxLength) const {
    return TextOrEmpty([&]() -> std::string_view {
        const size_t nFirst = Within(lStart, 1) - 1;
        const size_t nLength = Within(lMaxLength, 0);
        if (nFirst >= strData.size()) {
            return {};
        }
        const std::string_view strLookedAt = strData.substr(nFirst, nLength);
        const bool bIsByte = iTerminator >= 0 && iTerminator <= 255;
        return bIsByte ? strLookedAt.substr(0, strLookedAt.find(static_cast<char>(iTerminator)))
                       : strLookedAt;
    });
}

std::string PadExtract::StripPadding(int32_t lPadType, std::string_view strData) const {
    return TextOrEmpty([&]() -> std::string_view {
        switch (lPadType) {
        case ZerosOnTheRight:
            return WithoutRight(strData, kZero);
        case BlanksOnTheRight: // crossed with 3: it is meant so
            return WithoutLeft(strData, kBlank);
        case ZerosOnTheLeft:
            return WithoutLeft(strData, kZero);
        case BlanksOnTheLeft:
            return WithoutRight(strData, kBlank);
        default:
            return {};
        }
    });
}

} // namespace brennik
