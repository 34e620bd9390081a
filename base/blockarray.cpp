// Block arrays: growable arrays of fixed-size elements in steps of ten, with a process-wide
// error pair instead of return values.
#include <cstring>

#include "base/block_storage.hpp"
#include "base/entry.hpp"
#include "korvelbase/blockarray.h"
#include "korvelbase/mem.h"

namespace {

constexpr int kBlockArrayStep = 10;  // elements per growth step

// The block-array error pair.  Every operation clears the error word on entry and raises it
// on failure; the second word belongs to callers (MEM_SetErreur) and is never touched here.
int memErrorWord = 0;
int memDetailWord = 0;

void clearError() noexcept { memErrorWord = 0; }
void raiseError() noexcept { memErrorWord = ERR_FAILURE; }

// The entry of every block-array operation: clears the error word, then false (word raised)
// when a required pointer is null.
template <typename... Pointers>
[[nodiscard]] bool enter(const Pointers*... pointers) noexcept {
    return kb::enterOperation<clearError, raiseError>(pointers...);
}

// False, with the error word raised, when a condition on the arguments does not hold.
bool require(bool holds) noexcept {
    if (!holds) raiseError();
    return holds;
}

bool resize(void** array, int size, int* count, int delta) {
    return kb::resizeByDelta(array, size, count, delta, kBlockArrayStep,
                             kb::OnReallocFailure::KeepOldStorage);
}

// Starts an empty array with k zeroed elements (one slot exactly for k = 1).
void startWithZeroed(void** array, int size, int* count, int k) {
    *count = k;
    *array = kb::allocateZeroedCapacity(k, size, kBlockArrayStep);
    if (*array == nullptr) raiseError();
}

// Grows a non-empty array by k elements at the end; false (error raised) on failure.
bool growNonEmpty(void** array, int size, int* count, int k) {
    if (*array == nullptr || !resize(array, size, count, k) || *array == nullptr) {
        raiseError();
        return false;
    }
    return true;
}

void appendZeroed(void** array, int size, int* count, int k) {
    if (!enter(array, count) || !require(*count >= 0 && size >= 0 && k >= 1)) return;
    if (*count == 0) {
        startWithZeroed(array, size, count, k);
        return;
    }
    const int oldCount = *count;
    if (growNonEmpty(array, size, count, k)) kb::zeroElements(*array, size, oldCount, k);
}

void insertGap(void** array, int size, int* count, int index, int k) {
    if (!enter(array, count) ||
        !require(*count >= 0 && size >= 0 && k >= 1 && index >= 0 && index <= *count)) {
        return;
    }
    if (*count == 0) {
        if (*array != nullptr) {
            raiseError();
            return;
        }
        startWithZeroed(array, size, count, k);
        return;
    }
    if (!growNonEmpty(array, size, count, k)) return;
    // The gap keeps the bytes that were at index..index+k-1: callers overwrite it.
    kb::moveElements(*array, size, index + k, index, *count - index - k);
}

void releaseStorage(void** array) {
    if (array == nullptr || *array == nullptr) {
        raiseError();
        return;
    }
    qmMem_free(*array);
    *array = nullptr;
}

void removeRange(void** array, int size, int* count, int first, int last) {
    if (!enter(array, count) || !require(size >= 0 && *count >= 0 && first >= 0 &&
                                          last >= first && last < *count && *array != nullptr)) {
        return;
    }
    const int removed = last - first + 1;
    if (removed == *count) {
        releaseStorage(array);
        if (memErrorWord == 0) *count = 0;
        return;
    }
    kb::moveElements(*array, size, first, last + 1, *count - last - 1);
    if (!resize(array, size, count, -removed) || *array == nullptr) raiseError();
}

}  // namespace

extern "C" {

void MEM_GetErreur(int* error, int* detail) noexcept {
    if (error != nullptr) *error = memErrorWord;
    if (detail != nullptr) *detail = memDetailWord;
}

void MEM_SetErreur(int error, int detail) noexcept {
    memErrorWord = error;
    memDetailWord = detail;
}

void MEM_CreerTableau(void** array, int size, int n) noexcept {
    if (!enter(array) || !require(*array == nullptr && n >= 0 && size >= 0)) return;
    if (n == 0) {
        *array = nullptr;
        return;
    }
    *array = kb::allocateZeroedCapacity(n, size, kBlockArrayStep);
    if (*array == nullptr) raiseError();
}

void MEM_ModifierTailleTableau(void** array, int size, int n) noexcept {
    if (!enter(array) || !require(*array != nullptr && n >= 0 && size >= 0)) return;
    if (n == 0) {
        // The old storage is not released here: callers release it before shrinking to zero.
        *array = nullptr;
        return;
    }
    std::size_t bytes = 0;
    void* resized = nullptr;
    if (kb::storageBytes(kb::blockCapacity(n, kBlockArrayStep), size, &bytes) && bytes > 0) {
        resized = qmMem_realloc(*array, bytes);
    }
    if (resized == nullptr) {
        // The caller's pointer becomes null; the old block goes back to the heap rather than
        // leaking, since nothing refers to it any more.
        qmMem_free(*array);
        raiseError();
    }
    *array = resized;
}

int MEM_RecupererRang(const void* base, int count, int size, const void* sample, int* rank) noexcept {
    if (!enter(rank)) return 0;
    *rank = -1;
    if (count < 1) return 0;
    if (!require(base != nullptr && size >= 0 && (sample != nullptr || size == 0))) return 0;
    const auto* bytes = static_cast<const unsigned char*>(base);
    const auto elementBytes = static_cast<std::size_t>(size);
    for (int i = 0; i < count; ++i) {
        if (elementBytes == 0 || std::memcmp(bytes + i * elementBytes, sample, elementBytes) == 0) {
            *rank = i;
            return i;
        }
    }
    return count;
}

void MEM_EtendreTableau(void** array, int size, int* count) noexcept {
    appendZeroed(array, size, count, 1);
}

void MEM_EtendreTableauParBloc(void** array, int size, int* count, int k) noexcept {
    appendZeroed(array, size, count, k);
}

void MEM_LibererTableau(void** array) noexcept {
    if (!enter(array)) return;
    releaseStorage(array);
}

void MEM_InsererElementDansTableau(void** array, int size, int* count, int i) noexcept {
    insertGap(array, size, count, i, 1);
}

void MEM_InsererElementsDansTableau(void** array, int size, int* count, int i, int k) noexcept {
    insertGap(array, size, count, i, k);
}

void MEM_SupprimerElementDansTableau(void** array, int size, int* count, int i) noexcept {
    removeRange(array, size, count, i, i);
}

void MEM_SupprimerElementsDansTableau(void** array, int size, int* count, int first,
                                      int last) noexcept {
    removeRange(array, size, count, first, last);
}

}  // extern "C"
