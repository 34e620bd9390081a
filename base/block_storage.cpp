// Storage growth in blocks: the capacity rule and the resize-by-delta step.
#include "base/block_storage.hpp"

#include <cstring>
#include <limits>

#include "korvelbase/mem.h"

namespace kb {

std::int64_t blockCapacity(std::int64_t count, int blockSize) noexcept {
    if (count == 1) return 1;
    if (blockSize < 1) return count;
    const std::int64_t remainder = count % blockSize;
    if (remainder > 0) return count - remainder + blockSize;
    return count;
}

bool storageBytes(std::int64_t capacity, int elementSize, std::size_t* bytes) noexcept {
    if (capacity < 0 || elementSize < 0) return false;
    const auto wideCapacity = static_cast<std::uint64_t>(capacity);
    const auto wideSize = static_cast<std::uint64_t>(elementSize);
    if (wideSize != 0 && wideCapacity > std::numeric_limits<std::size_t>::max() / wideSize) {
        return false;
    }
    *bytes = static_cast<std::size_t>(wideCapacity * wideSize);
    return true;
}

bool resizeByDelta(void** storage, int elementSize, int* count, int delta, int blockSize,
                   OnReallocFailure onFailure) noexcept {
    const std::int64_t oldCount = *count;
    const std::int64_t newCount = oldCount + delta;
    if (newCount > std::numeric_limits<int>::max() || newCount < std::numeric_limits<int>::min()) {
        return false;
    }
    const std::int64_t oldCapacity = blockCapacity(oldCount, blockSize);
    const std::int64_t newCapacity = blockCapacity(newCount, blockSize);
    *count = static_cast<int>(newCount);
    if (oldCapacity == newCapacity) return true;
    if (newCount <= 0) return false;
    std::size_t bytes = 0;
    void* resized = nullptr;
    if (storageBytes(newCapacity, elementSize, &bytes) && bytes > 0) {
        resized = qmMem_realloc(*storage, bytes);
    }
    if (resized == nullptr) {
        if (onFailure == OnReallocFailure::ReleaseAndStoreNull) {
            qmMem_free(*storage);
            *storage = nullptr;
        }
        return false;
    }
    *storage = resized;
    return true;
}

void* allocateZeroedCapacity(int count, int elementSize, int blockSize) noexcept {
    std::size_t bytes = 0;
    if (count < 1 || !storageBytes(blockCapacity(count, blockSize), elementSize, &bytes)) {
        return nullptr;
    }
    if (bytes == 0) return nullptr;
    return qmMem_calloc(1, bytes);
}

void moveElements(void* storage, int elementSize, int to, int from, int count) noexcept {
    if (count <= 0 || elementSize <= 0) return;
    std::memmove(elementAddress(storage, elementSize, to), elementAddress(storage, elementSize, from),
                 static_cast<std::size_t>(count) * static_cast<std::size_t>(elementSize));
}

void zeroElements(void* storage, int elementSize, int first, int count) noexcept {
    if (count <= 0 || elementSize <= 0) return;
    std::memset(elementAddress(storage, elementSize, first), 0,
                static_cast<std::size_t>(count) * static_cast<std::size_t>(elementSize));
}

}  // namespace kb
