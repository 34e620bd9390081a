// Heap wrappers: one allocator for every block that crosses the library boundary.
#include <cstdlib>

#include "base/heap.hpp"
#include "base/platform.hpp"
#include "korvelbase/mem.h"

namespace {

// Upper bound of the heap probe, in bytes.
constexpr size_t kHeapProbeBytes = 64000000;

// Blocks kept by successful full-size probes.  Each kept block stores the address of the
// previously kept one in its first bytes, so keeping them needs no further allocation and
// they stay reachable for the life of the process.
void* keptProbeBlocks = nullptr;

void keepProbeBlock(void* block) {
    *static_cast<void**>(block) = keptProbeBlocks;
    keptProbeBlocks = block;
}

// Largest size below kHeapProbeBytes that can be allocated, found by bisection.
size_t bisectLargestAllocation() {
    size_t lo = 0;
    size_t hi = kHeapProbeBytes;
    size_t best = 0;
    while (hi > lo + 1) {
        const size_t mid = (lo + hi) / 2;
        void* block = kb::heap::allocate(mid);
        if (block == nullptr) {
            hi = mid;
            continue;
        }
        kb::heap::release(block);
        if (mid > best) best = mid;
        lo = mid;
    }
    return best;
}

}  // namespace

extern "C" {

void* qmMem_malloc(size_t size) noexcept { return kb::heap::allocate(size); }

void* qmMem_calloc(size_t count, size_t size) noexcept { return kb::heap::allocateZeroed(count, size); }

void* qmMem_realloc(void* block, size_t size) noexcept { return kb::heap::reallocate(block, size); }

int qmMem_free(void* block) noexcept {
    if (block == nullptr) return ERR_FAILURE;
    kb::heap::release(block);
    return 0;
}

int qmMem_freeAndClear(void** block) noexcept {
    if (block == nullptr || *block == nullptr) return ERR_FAILURE;
    kb::heap::release(*block);
    *block = nullptr;
    return 0;
}

int qmMem_freeAndClearArray(void** blocks, int count) noexcept {
    if (blocks == nullptr || count <= 0) return ERR_FAILURE;
    for (int i = 0; i < count; ++i) {
        if (blocks[i] != nullptr) qmMem_freeAndClear(&blocks[i]);
    }
    return 0;
}

int qmMem_getSize(void* block, size_t* size) noexcept {
    if (size == nullptr) return ERR_FAILURE;
    *size = 0;
    if (block == nullptr) return ERR_FAILURE;
    *size = kb::platform::heapUsableSize(block);
    return 0;
}

size_t qmMem_getMaximumAllocatableHeapMemory(void) noexcept {
    void* probe = kb::heap::allocate(kHeapProbeBytes);
    if (probe != nullptr) {
        keepProbeBlock(probe);
        return kHeapProbeBytes;
    }
    return bisectLargestAllocation();
}

}  // extern "C"
