// Dynamic arrays: growable arrays of fixed-size elements behind an opaque handle, grown in
// blocks whose size is a property of each array.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "base/block_storage.hpp"
#include "base/optional_output.hpp"
#include "korvelbase/dynarray.h"
#include "korvelbase/mem.h"

struct QmDynArray {
    int count;                    // elements in use
    int elementSize;              // bytes per element, fixed at creation
    void* storage;                // capacity(count) elements, null while empty
    QmDynArrayReleaseFn release;  // called on each cleared or deleted element; never set here
    int blockSize;                // growth step in elements
};

namespace {

constexpr int kDefaultBlockSize = 10;       // elements per growth step
constexpr int kLargeElementBytes = 128;     // elements above this size grow one at a time
constexpr int kLargeElementBlockSize = 1;
constexpr int kLastOrEnd = -1;              // index of the last element, or of the end

int defaultBlockSize(int elementSize) {
    return elementSize > kLargeElementBytes ? kLargeElementBlockSize : kDefaultBlockSize;
}

QmDynArray* newArray(int elementSize, int blockSize) {
    if (elementSize < 1 || blockSize < 1) return nullptr;
    auto* array = static_cast<QmDynArray*>(qmMem_calloc(1, sizeof(QmDynArray)));
    if (array == nullptr) return nullptr;
    array->elementSize = elementSize;
    array->blockSize = blockSize;
    return array;
}

// Elements that can be visited: none when a failed reallocation has emptied the storage.
int visitableCount(const QmDynArray* array) {
    return array->storage != nullptr ? array->count : 0;
}

unsigned char* addressOf(const QmDynArray* array, int index) {
    return kb::elementAddress(array->storage, array->elementSize, index);
}

// Resolves an index that addresses an existing element (-1: the last); -1 when there is none.
int existingIndex(const QmDynArray* array, int index) {
    const int resolved = index == kLastOrEnd ? array->count - 1 : index;
    if (resolved < 0 || resolved >= visitableCount(array)) return -1;
    return resolved;
}

// Resize by delta; a failed reallocation frees the old block and leaves the storage null.
bool resize(QmDynArray* array, int delta) {
    return kb::resizeByDelta(&array->storage, array->elementSize, &array->count, delta,
                             array->blockSize, kb::OnReallocFailure::ReleaseAndStoreNull);
}

// Appends n zeroed elements.  An empty array gets exactly capacity(n) fresh zeroed slots; its
// count is set first, so a failed allocation leaves the count at n and the storage null.
bool appendZeroed(QmDynArray* array, int n) {
    if (n < 1) return false;
    if (array->count == 0) {
        array->count = n;
        array->storage = kb::allocateZeroedCapacity(n, array->elementSize, array->blockSize);
        return array->storage != nullptr;
    }
    if (array->storage == nullptr) return false;
    const int oldCount = array->count;
    if (!resize(array, n) || array->storage == nullptr) return false;
    kb::zeroElements(array->storage, array->elementSize, oldCount, n);
    return true;
}

// Opens n elements before index; the gap inside the array is left as it was (not cleared).
bool insertGap(QmDynArray* array, int index, int n) {
    if (index == kLastOrEnd || array->storage == nullptr) return appendZeroed(array, n);
    if (n < 1 || index < 0 || index > array->count) return false;
    const int oldCount = array->count;
    if (!resize(array, n) || array->storage == nullptr) return false;
    kb::moveElements(array->storage, array->elementSize, index + n, index, oldCount - index);
    return true;
}

// Removes the element at a valid index; removing the only element releases the storage.
bool removeAt(QmDynArray* array, int index) {
    if (array->count == 1) {
        qmMem_free(array->storage);
        array->storage = nullptr;
        array->count = 0;
        return true;
    }
    kb::moveElements(array->storage, array->elementSize, index, index + 1,
                     array->count - index - 1);
    return resize(array, -1) && array->storage != nullptr;
}

void releaseElement(const QmDynArray* array, int index) {
    if (array->release != nullptr) array->release(addressOf(array, index));
}

// The bytes of an element that is about to be inserted.  Growing may move or free the storage,
// so a source lying inside it is first copied out (data is null if that copy cannot be made).
class InsertionSource {
public:
    InsertionSource(const QmDynArray* array, const void* source) : data_(source) {
        if (source == nullptr || !liesInStorage(array, source)) return;
        const auto bytes = static_cast<std::size_t>(array->elementSize);
        owned_ = qmMem_malloc(bytes);
        if (owned_ != nullptr) std::memcpy(owned_, source, bytes);
        data_ = owned_;
    }
    ~InsertionSource() {
        if (owned_ != nullptr) qmMem_free(owned_);
    }
    InsertionSource(const InsertionSource&) = delete;
    InsertionSource& operator=(const InsertionSource&) = delete;

    const void* data() const { return data_; }

private:
    static bool liesInStorage(const QmDynArray* array, const void* source) {
        if (array->storage == nullptr) return false;
        const auto begin = reinterpret_cast<std::uintptr_t>(array->storage);
        const auto end = begin + static_cast<std::uintptr_t>(array->count) *
                                     static_cast<std::uintptr_t>(array->elementSize);
        const auto at = reinterpret_cast<std::uintptr_t>(source);
        return at >= begin && at < end;
    }

    const void* data_;
    void* owned_ = nullptr;
};

}  // namespace

extern "C" {

int qmDynArray_create(QmDynArray** out, int elementSize) noexcept {
    if (out != nullptr) *out = newArray(elementSize, defaultBlockSize(elementSize));
    return 0;
}

int qmDynArray_createWithMinBlockNumberAllocated(QmDynArray** out, int elementSize,
                                                 int blockSize) noexcept {
    kb::storeOptional<QmDynArray*>(out, nullptr);
    if (out == nullptr || elementSize < 1 || blockSize < 1) return ERR_FAILURE;
    *out = newArray(elementSize, blockSize);
    return 0;
}

int qmDynArray_destroy(QmDynArray** handle) noexcept {
    if (handle == nullptr || *handle == nullptr) return ERR_FAILURE;
    if ((*handle)->storage != nullptr) qmMem_free((*handle)->storage);
    qmMem_free(*handle);
    *handle = nullptr;
    return 0;
}

int qmDynArray_clear(QmDynArray* array) noexcept {
    if (array == nullptr) return ERR_FAILURE;
    for (int i = 0; i < visitableCount(array); ++i) releaseElement(array, i);
    if (array->storage != nullptr) qmMem_free(array->storage);
    array->storage = nullptr;
    array->count = 0;
    return 0;
}

int qmDynArray_getSize(const QmDynArray* array) noexcept {
    return array != nullptr ? array->count : 0;
}

int qmDynArray_insertElements(QmDynArray* array, int index, int n) noexcept {
    if (array == nullptr) return ERR_FAILURE;
    insertGap(array, index, n);  // the status of the step is swallowed deliberately
    return 0;
}

int qmDynArray_insertElement(QmDynArray* array, int index) noexcept {
    return qmDynArray_insertElements(array, index, 1);
}

int qmDynArray_insertAndSetElement(QmDynArray* array, int index, const void* source) noexcept {
    if (array == nullptr) return ERR_FAILURE;
    const InsertionSource bytes(array, source);
    qmDynArray_insertElement(array, index);
    qmDynArray_setElement(array, index, bytes.data());  // swallowed like the insertion
    return 0;
}

int qmDynArray_deleteElement(QmDynArray* array, int index) noexcept {
    if (array == nullptr) return ERR_FAILURE;
    // -1 is the last element; only an index past the last is a failure.  An index below -1, or
    // an array whose storage a failed reallocation lost, makes the removal itself fail, which
    // the result does not report.
    const int last = array->count - 1;
    if ((index == kLastOrEnd ? last : index) > last || (index == kLastOrEnd && last < 0)) {
        return ERR_FAILURE;
    }
    const int resolved = existingIndex(array, index);
    if (resolved < 0) return 0;
    releaseElement(array, resolved);
    removeAt(array, resolved);  // a failed shrink is swallowed deliberately
    return 0;
}

int qmDynArray_getElement(QmDynArray* array, int index, void* destination) noexcept {
    const void* element = qmDynArray_getElementAdd(array, index);
    if (element == nullptr || destination == nullptr) return ERR_FAILURE;
    std::memcpy(destination, element, static_cast<std::size_t>(array->elementSize));
    return 0;
}

int qmDynArray_setElement(QmDynArray* array, int index, const void* source) noexcept {
    void* element = qmDynArray_getElementAdd(array, index);
    if (element == nullptr || source == nullptr) return ERR_FAILURE;
    std::memmove(element, source, static_cast<std::size_t>(array->elementSize));
    return 0;
}

void* qmDynArray_getElementAdd(QmDynArray* array, int index) noexcept {
    if (array == nullptr) return nullptr;
    const int resolved = existingIndex(array, index);
    return resolved < 0 ? nullptr : addressOf(array, resolved);
}

int qmDynArray_clone(QmDynArray** out, const QmDynArray* source) noexcept {
    kb::storeOptional<QmDynArray*>(out, nullptr);
    if (out == nullptr || source == nullptr) return ERR_FAILURE;
    if (source->count > 0 && source->storage == nullptr) return ERR_FAILURE;
    QmDynArray* copy = newArray(source->elementSize, source->blockSize);
    if (copy == nullptr) return ERR_FAILURE;
    if (source->count > 0) {
        if (!appendZeroed(copy, source->count)) {
            qmDynArray_destroy(&copy);
            return ERR_FAILURE;
        }
        std::memcpy(copy->storage, source->storage,
                    static_cast<std::size_t>(source->count) *
                        static_cast<std::size_t>(source->elementSize));
    }
    *out = copy;
    return 0;
}

int qmDynArray_findElement(QmDynArray* array, QmDynArrayPredicateFn predicate, const void* key,
                           int* index) noexcept {
    if (index != nullptr) *index = -1;
    if (array == nullptr || predicate == nullptr || index == nullptr) return ERR_FAILURE;
    for (int i = 0; i < visitableCount(array); ++i) {
        if (predicate(addressOf(array, i), key) != 0) {
            *index = i;
            break;
        }
    }
    return 0;
}

int qmDynArray_sort(QmDynArray* array, QmDynArraySortFn compare) noexcept {
    if (array == nullptr || compare == nullptr) return ERR_FAILURE;
    const int count = visitableCount(array);
    if (count > 1) {
        std::qsort(array->storage, static_cast<std::size_t>(count),
                   static_cast<std::size_t>(array->elementSize), compare);
    }
    return 0;
}

int qmDynArray_performAction(QmDynArray* array, QmDynArrayActionFn action, void* userData,
                             int first, int last) noexcept {
    if (array == nullptr || action == nullptr) return ERR_FAILURE;
    const int from = first == kLastOrEnd ? 0 : first;
    const int to = last == kLastOrEnd ? array->count - 1 : last;
    if (from < 0 || to >= array->count) return ERR_FAILURE;
    // The range is validated only; the walk always covers the array from its first element.
    for (int i = 0; i < visitableCount(array); ++i) {
        if (action(addressOf(array, i), userData) != 0) break;
    }
    return 0;
}

int qmDynArray_insertElementByOrder(QmDynArray* array, const void* element,
                                    QmDynArrayOrderFn compare) noexcept {
    constexpr int kOrdersAfter = 1;  // only this exact result marks an insertion position
    if (array == nullptr || element == nullptr || compare == nullptr) return ERR_FAILURE;
    int position = kLastOrEnd;
    for (int i = 0; i < visitableCount(array); ++i) {
        const int order = compare(addressOf(array, i), element);
        if (order == 0) return 0;  // the key is already present
        if (order == kOrdersAfter) {
            position = i;
            break;
        }
    }
    const InsertionSource bytes(array, element);
    if (bytes.data() != nullptr && insertGap(array, position, 1)) {
        std::memcpy(addressOf(array, position == kLastOrEnd ? array->count - 1 : position),
                    bytes.data(), static_cast<std::size_t>(array->elementSize));
    }
    return 0;
}

}  // extern "C"
