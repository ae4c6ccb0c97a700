#include "dialogs/TextBoxFormat.h"

#include "support/AsciiText.h"

#include <charconv>
#include <cmath>

namespace brennik {

namespace {

constexpr int16_t kDropped = 0;
constexpr int16_t kBackspace = 8;
constexpr int16_t kLeftKey = 37;
constexpr int16_t kRightKey = 39;
constexpr int16_t kMostDecimals = 3;
constexpr size_t kLongestNumber = 400; ///< of a double written out

bool IsDigit(int16_t iKey) {
    return iKey >= '0' && iKey <= '9';
}

bool IsCapital(int16_t iKey) {
    return iKey >= 'A' && iKey <= 'Z';
}

bool IsSmall(int16_t iKey) {
    return iKey >= 'a' && iKey <= 'z';
}

bool IsLetter(int16_t iKey) {
    return IsCapital(iKey) || IsSmall(iKey);
}

/// The key as it passes a box that takes it or doesn't, for as long as there is room.
int16_t Limited(int16_t iKey, bool bTaken, int16_t iSelLength, int16_t iLen, int16_t iMaxLen) {
    if (iKey == kBackspace)
        return iKey;
    const bool bFull = iLen >= iMaxLen && iMaxLen != 0 && iSelLength == 0;
    return bTaken && !bFull ? iKey : kDropped;
}

std::string Without(std::string_view strText, std::string_view strPart) {
    std::string strResult(strText);
    if (strPart.empty())
        return strResult;
    for (size_t nAt = strResult.find(strPart); nAt != std::string::npos;
         nAt = strResult.find(strPart, nAt))
        strResult.erase(nAt, strPart.size());
    return strResult;
}

/// A whole number of so many places behind the point, as "0.00" would show it.
std::string WithPoint(double dWhole, size_t nPlaces) {
    char digits[kLongestNumber];
    const auto end = std::to_chars(digits, digits + sizeof digits, std::fabs(dWhole),
                                   std::chars_format::fixed, 0);
    const std::string_view strDigits(digits, static_cast<size_t>(end.ptr - digits));
    std::string strPadded(nPlaces < strDigits.size() ? 0 : nPlaces + 1 - strDigits.size(), '0');
    strPadded.append(strDigits);
    const size_t nPoint = strPadded.size() - nPlaces;
    std::string strText(dWhole < 0 ? 1 : 0, '-');
    strText.append(strPadded, 0, nPoint);
    if (nPlaces > 0) {
        strText += '.';
        strText.append(strPadded, nPoint);
    }
    return strText;
}

/// The value as the decimals show it; nothing where that shows 0.
std::string Shown(double dValue, int16_t iExp) {
    const bool bOptionalPlace = iExp == 1; // "#0.0#": a second place only where there is one
    const size_t nPlaces = bOptionalPlace ? 2 : static_cast<size_t>(iExp);
    const double dWhole = std::round(bOptionalPlace ? dValue * 10 : dValue);
    if (dWhole == 0)
        return {};
    std::string strText = WithPoint(dWhole, nPlaces);
    if (bOptionalPlace && strText.ends_with('0'))
        strText.pop_back();
    return strText;
}

} // namespace

std::string TextBoxFormat::ExpFormat(int16_t iExp, std::string_view strValue,
                                     std::string_view strExpChar, int16_t iKeyCode) {
    std::string strText = Without(strValue, strExpChar);
    if (iKeyCode == kBackspace || iKeyCode == kLeftKey) {
        if (!strText.empty())
            strText.pop_back();
    } else if (IsDigit(iKeyCode)) {
        strText = Trim(strText + static_cast<char>(iKeyCode));
    }
    double dValue = 0;
    if (TryParseNumber(strText, dValue) != NumberText::Fits || dValue == 0)
        return {};
    return iExp < 0 || iExp > kMostDecimals ? strText : Shown(dValue, iExp);
}

int16_t TextBoxFormat::CurrencyBox(std::string_view strCurrent, int16_t iKeyAscii,
                                   int16_t iExponent, int16_t iSelStart) {
    if (iKeyAscii == kBackspace)
        return iKeyAscii;
    const size_t nPoint = strCurrent.find('.');
    const bool bPoint = nPoint != std::string_view::npos;
    if (iKeyAscii == '.')
        return iExponent == 0 || bPoint ? kDropped : iKeyAscii;
    if (!IsDigit(iKeyAscii))
        return kDropped;
    if (!bPoint || iSelStart <= static_cast<int64_t>(nPoint))
        return iKeyAscii;
    const auto lBehind = static_cast<int64_t>(strCurrent.size() - nPoint - 1);
    return lBehind > iExponent - 1 ? kDropped : iKeyAscii;
}

int16_t TextBoxFormat::NumericBox(int16_t iKeyAscii, int16_t iSelLength, int16_t iLen,
                                  int16_t iMaxLen) {
    return Limited(iKeyAscii, IsDigit(iKeyAscii), iSelLength, iLen, iMaxLen);
}

int16_t TextBoxFormat::AlphaBox(int16_t iKeyAscii, int16_t iSelLength, int16_t iLen,
                                int16_t iMaxLen) {
    return Limited(iKeyAscii, IsLetter(iKeyAscii), iSelLength, iLen, iMaxLen);
}

int16_t TextBoxFormat::AlphaNumericBox(int16_t iKeyAscii, int16_t iSelLength, int16_t iLen,
                                       int16_t iMaxLen) {
    return Limited(iKeyAscii, IsDigit(iKeyAscii) || IsLetter(iKeyAscii), iSelLength, iLen, iMaxLen);
}

int16_t TextBoxFormat::UCAlphaNumericBox(int16_t iKeyAscii, int16_t iSelLength, int16_t iLen,
                                         int16_t iMaxLen) {
    const int16_t iKey =
        IsSmall(iKeyAscii) ? static_cast<int16_t>(iKeyAscii - 'a' + 'A') : iKeyAscii;
    return Limited(iKey, IsDigit(iKey) || IsCapital(iKey), iSelLength, iLen, iMaxLen);
}

int16_t TextBoxFormat::AlphaNumLen(int16_t iKeyAscii, int16_t iLen, int16_t iMaxLen) {
    if (iKeyAscii == kBackspace || iKeyAscii == kLeftKey || iKeyAscii == kRightKey)
        return iKeyAscii;
    const bool bTaken = IsDigit(iKeyAscii) || IsLetter(iKeyAscii);
    return bTaken && iLen < iMaxLen ? iKeyAscii : kDropped;
}

} // namespace brennik
