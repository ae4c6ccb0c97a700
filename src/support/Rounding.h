// The one way in which numbers with a fraction become whole: to the nearest, ties to even.
// A plain function, used as it is; no rounding mode that anyone may have set has a say.
#pragma once

#include <cmath>

namespace brennik {

/// The nearest whole number, of two equally near ones the even: 0.5 gives 0, 1.5 and 2.5 give 2.
/// What is no finite number stays what it is.
inline double RoundedTiesToEven(double dValue) {
    const double dBelow = std::floor(dValue);
    const double dFraction = dValue - dBelow;
    if (dFraction > 0.5 || (dFraction == 0.5 && std::fmod(dBelow, 2) != 0)) {
        return dBelow + 1;
    }
    return std::isfinite(dValue) ? dBelow : dValue;
}

} // namespace brennik
