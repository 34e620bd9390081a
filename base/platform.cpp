// Platform layer: POSIX (Linux, macOS) and Windows implementations.
#include "base/platform.hpp"

#if defined(_WIN32)
#include <malloc.h>
#include <windows.h>
#elif defined(__APPLE__)
#include <fcntl.h>
#include <malloc/malloc.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <cerrno>

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

char directorySeparator() noexcept {
#if defined(_WIN32)
    return '\\';
#else
    return '/';
#endif
}

#if defined(_WIN32)

namespace {
HANDLE asHandle(std::intptr_t h) { return reinterpret_cast<HANDLE>(h); }
constexpr std::intptr_t kNoFile = -1;  // INVALID_HANDLE_VALUE
}  // namespace

bool ReadOnlyFile::open(const char* path) noexcept {
    close();
    HANDLE h = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) return false;
    handle_ = reinterpret_cast<std::intptr_t>(h);
    return true;
}

void ReadOnlyFile::close() noexcept {
    if (handle_ != kNoFile) CloseHandle(asHandle(handle_));
    handle_ = kNoFile;
}

bool ReadOnlyFile::isOpen() const noexcept { return handle_ != kNoFile; }

bool ReadOnlyFile::readAt(std::uint64_t offset, void* buffer, std::size_t size) const noexcept {
    if (handle_ == kNoFile || size > 0xFFFFFFFFu) return false;
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(offset & 0xFFFFFFFFu);
    at.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD read = 0;
    if (!ReadFile(asHandle(handle_), buffer, static_cast<DWORD>(size), &read, &at)) return false;
    return read == size;
}

bool ReadOnlyFile::size(std::uint64_t& bytes) const noexcept {
    LARGE_INTEGER length;
    if (handle_ == kNoFile || !GetFileSizeEx(asHandle(handle_), &length)) return false;
    bytes = static_cast<std::uint64_t>(length.QuadPart);
    return true;
}

#else

bool ReadOnlyFile::open(const char* path) noexcept {
    close();
    const int fd = ::open(path, O_RDONLY);
    if (fd < 0) return false;
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {  // a folder is not a file
        ::close(fd);
        return false;
    }
    handle_ = fd;
    return true;
}

void ReadOnlyFile::close() noexcept {
    if (handle_ >= 0) ::close(static_cast<int>(handle_));
    handle_ = -1;
}

bool ReadOnlyFile::isOpen() const noexcept { return handle_ >= 0; }

bool ReadOnlyFile::readAt(std::uint64_t offset, void* buffer, std::size_t size) const noexcept {
    if (handle_ < 0) return false;
    auto* bytes = static_cast<unsigned char*>(buffer);
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = ::pread(static_cast<int>(handle_), bytes + done, size - done,
                                    static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;  // an error, or the end of a (perhaps truncated) file
        done += static_cast<std::size_t>(got);
    }
    return true;
}

bool ReadOnlyFile::size(std::uint64_t& bytes) const noexcept {
    struct stat info;
    if (handle_ < 0 || ::fstat(static_cast<int>(handle_), &info) != 0) return false;
    bytes = static_cast<std::uint64_t>(info.st_size);
    return true;
}

#endif

}  // namespace kb::platform
