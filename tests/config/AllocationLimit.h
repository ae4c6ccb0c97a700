// The limit on single allocations under the name that the tests of this room know it by.
#pragma once

#include "tests/world/AllocationLimit.h"

namespace brennik::configtest {

using world::AllocationLimit;

} // namespace brennik::configtest
