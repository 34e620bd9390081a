// Internal: storage growth in blocks, shared by the block arrays and the dynamic array.
//
// Both keep only an element count; the capacity follows from it by the block rule
//   capacity(1) = 1; otherwise count rounded up to a multiple of the block size
// (a count that already is a multiple, 0 included, is its own capacity).  So storage is
// reallocated once per block of elements, except that a single element gets exactly one slot.
#ifndef KORVELBASE_BASE_BLOCK_STORAGE_HPP
#define KORVELBASE_BASE_BLOCK_STORAGE_HPP

#include <cstddef>
#include <cstdint>

namespace kb {

// Capacity, in elements, of storage holding count elements grown in blocks of blockSize (>= 1).
std::int64_t blockCapacity(std::int64_t count, int blockSize) noexcept;

// Bytes of capacity elements of elementSize bytes; false when negative or not representable.
bool storageBytes(std::int64_t capacity, int elementSize, std::size_t* bytes) noexcept;

// What a failed reallocation leaves in the caller's storage pointer.
// KeepOldStorage leaves the old block in place; ReleaseAndStoreNull frees it and leaves null,
// so the storage reads as lost without the block being leaked.
enum class OnReallocFailure { KeepOldStorage, ReleaseAndStoreNull };

// The resize-by-delta step behind every growth and shrink of non-empty storage:
//  1. new count = count + delta, stored in *count at once;
//  2. equal old and new capacities: success, storage untouched;
//  3. a new count of 0 or less: failure;
//  4. otherwise reallocate to the new capacity; on failure apply onFailure.
// A delta that would overflow the count fails without changing anything.
// Returns true on success.
bool resizeByDelta(void** storage, int elementSize, int* count, int delta, int blockSize,
                   OnReallocFailure onFailure) noexcept;

// Zeroed storage for capacity(count) elements (exactly one slot for one element), or null.
void* allocateZeroedCapacity(int count, int elementSize, int blockSize) noexcept;

// Moves count elements of elementSize bytes from index from to index to (overlap allowed).
void moveElements(void* storage, int elementSize, int to, int from, int count) noexcept;

// Fills count elements starting at index first with zero bytes.
void zeroElements(void* storage, int elementSize, int first, int count) noexcept;

// Address of element index inside storage.
inline unsigned char* elementAddress(void* storage, int elementSize, int index) noexcept {
    return static_cast<unsigned char*>(storage) +
           static_cast<std::ptrdiff_t>(index) * static_cast<std::ptrdiff_t>(elementSize);
}

}  // namespace kb

#endif  // KORVELBASE_BASE_BLOCK_STORAGE_HPP
