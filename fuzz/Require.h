// What a fuzz target holds to be true: stops the program where it isn't.
// Each target includes it; tests have the expectations of their own library.
#pragma once

#include <stdexcept>

namespace brennik::fuzz {

/// Thrown out of a target, it ends the fuzzer with its text and the input that led here.
struct DoesNotHold : std::logic_error {
    using std::logic_error::logic_error;
};

inline void Require(bool bHolds, const char* strWhat) {
    if (!bHolds)
        throw DoesNotHold(strWhat);
}

} // namespace brennik::fuzz
