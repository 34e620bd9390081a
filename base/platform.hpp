// Internal: the one small layer between the library and the operating system.
//
// Everything the library needs from the platform goes through these functions, so a port
// touches platform.cpp only.
#ifndef KORVELBASE_BASE_PLATFORM_HPP
#define KORVELBASE_BASE_PLATFORM_HPP

#include <cstddef>

namespace kb::platform {

// Usable size of a block obtained from the runtime heap (at least the requested size).
std::size_t heapUsableSize(void* block) noexcept;

// Path of the vertical profile fit's trace file.
const char* verticalFitTracePath() noexcept;

}  // namespace kb::platform

#endif  // KORVELBASE_BASE_PLATFORM_HPP
