// Numbers that a person may set for a run of the tests, by an environment variable: how often a
// torture runs, from which seed. The one place in which a test looks at its surroundings.
#pragma once

#include <cstdint>

namespace brennik::world {

/// The whole number in the environment variable; the default where it is missing or is none.
int64_t TestOption(const char* strName, int64_t lDefault);

} // namespace brennik::world
