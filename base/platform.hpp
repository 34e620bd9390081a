// Internal: the one small layer between the library and the operating system.
//
// Everything the library needs from the platform goes through these functions, so a port
// touches platform.cpp only.
#ifndef KORVELBASE_BASE_PLATFORM_HPP
#define KORVELBASE_BASE_PLATFORM_HPP

#include <cstddef>
#include <cstdint>

namespace kb::platform {

// Usable size of a block obtained from the runtime heap (at least the requested size).
std::size_t heapUsableSize(void* block) noexcept;

// Path of the vertical profile fit's trace file.
const char* verticalFitTracePath() noexcept;

// The separator a directory name gets before a file name is appended to it.
char directorySeparator() noexcept;

// The operating-system family: 1 for Windows 95/98/Me, 2 for any other recognised platform, 0
// when the query fails.
int operatingSystemFamily() noexcept;

// True on Windows version 5.1.
bool isWindowsXP() noexcept;

// Starts a command line without waiting: CreateProcessA on Windows; elsewhere the arguments
// (already split, argv[0] the program, null-terminated) are started detached.  False when the
// program could not be started.
bool startDetached(char* commandLine, char* const* argv) noexcept;

// Fills buffer with bytes from the operating system's secure random source; false when it
// cannot.
bool secureRandomBytes(void* buffer, std::size_t size) noexcept;

// The system's identifier services, where the system has them (Windows: CoCreateGuid,
// StringFromGUID2, IIDFromString).  Each returns false when the system has none, and the
// library then does the work itself; otherwise it stores the system's result code.
bool systemCreateGuid(void* guid16, std::int32_t& result) noexcept;
bool systemGuidToText(const void* guid16, char16_t* text40, std::int32_t& result) noexcept;
bool systemGuidFromText(const char16_t* text, void* guid16, std::int32_t& result) noexcept;

// True when path names a regular file the process may execute.
bool isExecutableFile(const char* path) noexcept;

// Whether program names are looked up on PATH by this library (not on Windows, whose process
// start searches itself).
constexpr bool kLooksUpPrograms =
#if defined(_WIN32)
    false;
#else
    true;
#endif

// A file opened for reading at explicit offsets (no shared file position, nothing buffered).
class ReadOnlyFile {
public:
    ReadOnlyFile() noexcept = default;
    ~ReadOnlyFile() { close(); }
    ReadOnlyFile(const ReadOnlyFile&) = delete;
    ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;

    bool open(const char* path) noexcept;  // closes any file first
    void close() noexcept;
    bool isOpen() const noexcept;
    // Reads exactly size bytes at offset; false on any error or a short read (end of file).
    bool readAt(std::uint64_t offset, void* buffer, std::size_t size) const noexcept;
    // The file's size in bytes; false when it cannot be had.
    bool size(std::uint64_t& bytes) const noexcept;

private:
    std::intptr_t handle_ = -1;  // a descriptor, or a Windows HANDLE
};

}  // namespace kb::platform

#endif  // KORVELBASE_BASE_PLATFORM_HPP
