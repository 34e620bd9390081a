// Internal: the library's one allocation layer.
//
// Every allocation the library makes, whether a block handed to the caller (qmMem_*, block
// arrays, containers) or working storage inside a computation, goes through these functions.
// Standard containers used internally take kb::HeapAllocator (or the kb::Vector alias), so
// their storage comes from here too.  A test-only build of the library (KB_FAULT_INJECTION)
// can make the k-th allocation fail, which is how every allocation-failure path is exercised.
#ifndef KORVELBASE_BASE_HEAP_HPP
#define KORVELBASE_BASE_HEAP_HPP

#include <cstddef>
#include <new>
#include <string>
#include <vector>

namespace kb::heap {

void* allocate(std::size_t bytes) noexcept;                        // malloc
void* allocateZeroed(std::size_t count, std::size_t size) noexcept;  // calloc
void* reallocate(void* block, std::size_t bytes) noexcept;         // realloc; null keeps block
void release(void* block) noexcept;                                // free; null is a no-op

// Typed array of count elements of T (trivially copyable records); null on failure or when
// count * sizeof(T) does not fit in size_t.
template <typename T>
T* allocateArray(std::size_t count) noexcept {
    if (count != 0 && count > static_cast<std::size_t>(-1) / sizeof(T)) return nullptr;
    return static_cast<T*>(allocate(count * sizeof(T)));
}

// An object of T built in storage from the layer; null when the allocation fails.  T's
// constructor must not throw.
template <typename T, typename... Args>
T* create(Args&&... args) noexcept {
    void* storage = allocate(sizeof(T));
    if (storage == nullptr) return nullptr;
    return new (storage) T{static_cast<Args&&>(args)...};
}

// Ends an object made by create and returns its storage; null is a no-op.
template <typename T>
void destroy(T* object) noexcept {
    if (object == nullptr) return;
    object->~T();
    release(object);
}

}  // namespace kb::heap

namespace kb {

// Standard allocator over the allocation layer; throws std::bad_alloc on failure, which the
// C boundary (kb::callGuarded) turns into the function's failure result.
template <typename T>
struct HeapAllocator {
    using value_type = T;
    HeapAllocator() noexcept = default;
    template <typename U>
    HeapAllocator(const HeapAllocator<U>&) noexcept {}
    T* allocate(std::size_t n) {
        T* p = heap::allocateArray<T>(n == 0 ? 1 : n);
        if (p == nullptr) throw std::bad_alloc();
        return p;
    }
    void deallocate(T* p, std::size_t) noexcept { heap::release(p); }
    template <typename U>
    bool operator==(const HeapAllocator<U>&) const noexcept { return true; }
    template <typename U>
    bool operator!=(const HeapAllocator<U>&) const noexcept { return false; }
};

template <typename T>
using Vector = std::vector<T, HeapAllocator<T>>;

using String = std::basic_string<char, std::char_traits<char>, HeapAllocator<char>>;

}  // namespace kb

#endif  // KORVELBASE_BASE_HEAP_HPP
