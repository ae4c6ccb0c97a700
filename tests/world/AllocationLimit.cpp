#include "tests/world/AllocationLimit.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace brennik::world {

namespace {

constexpr size_t kNone = std::numeric_limits<size_t>::max();
size_t nLimit = kNone;

} // namespace

AllocationLimit::AllocationLimit(size_t nBytes) {
    nLimit = nBytes;
}

AllocationLimit::~AllocationLimit() {
    nLimit = kNone;
}

namespace {

void* Allocate(size_t nBytes) {
    void* memory = nBytes >= nLimit ? nullptr : std::malloc(nBytes == 0 ? 1 : nBytes);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace
} // namespace brennik::world

void* operator new(size_t nBytes) {
    return brennik::world::Allocate(nBytes);
}

// Its memory comes back through the delete below, so it must come from the same place.
void* operator new(size_t nBytes, const std::nothrow_t&) noexcept {
    return std::malloc(nBytes == 0 ? 1 : nBytes);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
