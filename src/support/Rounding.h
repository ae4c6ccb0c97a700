// The one way in which numbers with a fraction become whole: to the nearest, ties to even.
// A plain function, used as it is. It rounds in the mode in which every program starts and which
// nothing in this one changes.
#pragma once

#include <cmath>

namespace brennik {

/// The nearest whole number, of two equally near ones the even: 0.5 gives 0, 1.5 and 2.5 give 2.
inline double RoundedTiesToEven(double dValue) {
    return std::nearbyint(dValue);
}

} // namespace brennik
