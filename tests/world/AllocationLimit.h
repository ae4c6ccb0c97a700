// A limit on single allocations of this test program, so that running out of memory can be tested.
// While one stands, every request of that many bytes or more fails as it does for real.
#pragma once

#include <cstddef>

namespace brennik::world {

class AllocationLimit {
  public:
    explicit AllocationLimit(size_t nBytes);
    ~AllocationLimit();
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
};

} // namespace brennik::world
