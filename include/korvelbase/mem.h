/*
 * KorvelBase: heap wrappers.
 *
 * All memory that crosses the library boundary is allocated and released by one allocator:
 * whatever an exported function returns as a new block is released with qmMem_free (or
 * qmMem_freeAndClear).  Status results are 0 or ERR_FAILURE.  These functions never touch the
 * block-array error pair.
 */
#ifndef KORVELBASE_MEM_H
#define KORVELBASE_MEM_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/** The runtime's malloc(size); null on failure. */
KB_API void* qmMem_malloc(size_t size) KB_NOEXCEPT;
/** The runtime's calloc(count, size): a zeroed block, null on failure. */
KB_API void* qmMem_calloc(size_t count, size_t size) KB_NOEXCEPT;
/** The runtime's realloc(block, size). */
KB_API void* qmMem_realloc(void* block, size_t size) KB_NOEXCEPT;
/** Frees the block.  Null block: ERR_FAILURE; else 0. */
KB_API int qmMem_free(void* block) KB_NOEXCEPT;
/** Frees *block and stores null.  Null address or null *block: ERR_FAILURE; else 0. */
KB_API int qmMem_freeAndClear(void** block) KB_NOEXCEPT;
/**
 * Applies qmMem_freeAndClear to each of the count slots (null slots are skipped).
 * Null array or count <= 0: ERR_FAILURE; else 0.
 */
KB_API int qmMem_freeAndClearArray(void** blocks, int count) KB_NOEXCEPT;
/**
 * Stores the heap's usable size of the block in *size.  Null size address: ERR_FAILURE.
 * Otherwise *size is set to 0 first; a null block then returns ERR_FAILURE.
 */
KB_API int qmMem_getSize(void* block, size_t* size) KB_NOEXCEPT;
/**
 * The largest single block, in bytes and at most 64,000,000, that the heap can allocate.
 * A successful 64,000,000-byte probe is kept (not released) by the library, so a later call
 * starts from a smaller heap; below that bound the size is found by bisection.
 * Threads: the list of kept probe blocks is process-wide and unguarded, so call this from one
 * thread at a time; and since it allocates and frees while probing, its answer is only a
 * snapshot when other threads use the heap meanwhile.
 */
KB_API size_t qmMem_getMaximumAllocatableHeapMemory(void) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_MEM_H */
