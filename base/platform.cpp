// Platform layer: POSIX (Linux, macOS) and Windows implementations.
#include "base/platform.hpp"

#if defined(_WIN32)
#include <malloc.h>
#elif defined(__APPLE__)
#include <malloc/malloc.h>
#else
#include <malloc.h>
#endif

namespace kb::platform {

std::size_t heapUsableSize(void* block) noexcept {
#if defined(_WIN32)
    return _msize(block);
#elif defined(__APPLE__)
    return malloc_size(block);
#else
    return malloc_usable_size(block);
#endif
}

const char* verticalFitTracePath() noexcept {
#if defined(_WIN32)
    return "C:\\BestFit_Vertical_Debug.txt";
#else
    return "/tmp/BestFit_Vertical_Debug.txt";
#endif
}

}  // namespace kb::platform
