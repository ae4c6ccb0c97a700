#include "support/WireNumbers.h"

#include "support/AsciiText.h"
#include "support/Failure.h"

#include <cmath>

namespace brennik {

namespace {

int32_t HexDigit(char c) {
    const char cUpper = UpperCase(c);
    if (cUpper >= 'A' && cUpper <= 'F') {
        return cUpper - 'A' + 10;
    }
    if (cUpper >= '0' && cUpper <= '9') {
        return cUpper - '0';
    }
    throw RuntimeFailure(FailureKind::TypeMismatch);
}

int32_t Byte(char c) {
    return static_cast<unsigned char>(c);
}

// From the last digit to the first, in double precision: what is too much for 32 bits, and a weight
// too large for a double (even that of a leading zero), is an overflow.
template <class DigitOf>
int32_t AddUp(std::string_view strDigits, double dBase, DigitOf digitOf) {
    double dValue = 0;
    double dWeight = 1;
    for (size_t n = strDigits.size(); n > 0; --n) {
        const int32_t lDigit = digitOf(strDigits[n - 1]);
        if (std::isinf(dWeight)) {
            throw RuntimeFailure(FailureKind::Overflow);
        }
        dValue += lDigit * dWeight;
        if (dValue > std::numeric_limits<int32_t>::max()) {
            throw RuntimeFailure(FailureKind::Overflow);
        }
        dWeight *= dBase;
    }
    return static_cast<int32_t>(dValue);
}

int32_t NoNumber(const std::string&) {
    return 0;
}

} // namespace

int32_t HexStringToLong(std::string_view strHex) {
    return Guarded([&] { return AddUp(strHex, 16, HexDigit); }, NoNumber);
}

int32_t BinaryStringToLong(std::string_view strBytes) {
    return Guarded([&] { return AddUp(strBytes, 256, Byte); }, NoNumber);
}

} // namespace brennik
