// The allocation layer over the runtime heap, with the test-only failure injection.
#include "base/heap.hpp"

#include <cstdlib>

#ifdef KB_FAULT_INJECTION
#include "base/fault_injection.h"
#endif

namespace {

#ifdef KB_FAULT_INJECTION
// Allocations counted since the last arm; the armed one (1-based) and every later one fail
// until the injector is disarmed.  Zero means disarmed.
long long allocationsSeen = 0;
long long failingAllocation = 0;

bool injectFailure() noexcept {
    ++allocationsSeen;
    return failingAllocation > 0 && allocationsSeen >= failingAllocation;
}
#else
constexpr bool injectFailure() noexcept { return false; }
#endif

}  // namespace

namespace kb::heap {

void* allocate(std::size_t bytes) noexcept {
    if (injectFailure()) return nullptr;
    return std::malloc(bytes);
}

void* allocateZeroed(std::size_t count, std::size_t size) noexcept {
    if (injectFailure()) return nullptr;
    return std::calloc(count, size);
}

void* reallocate(void* block, std::size_t bytes) noexcept {
    if (injectFailure()) return nullptr;
    return std::realloc(block, bytes);
}

void release(void* block) noexcept { std::free(block); }

}  // namespace kb::heap

#ifdef KB_FAULT_INJECTION
extern "C" {

void kbFault_failFrom(long long k) noexcept {
    allocationsSeen = 0;
    failingAllocation = k;
}

void kbFault_disarm(void) noexcept { failingAllocation = 0; }

long long kbFault_allocationsSeen(void) noexcept { return allocationsSeen; }

}  // extern "C"
#endif
