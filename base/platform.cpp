// Platform layer: POSIX (Linux, macOS) and Windows implementations.
#include "base/platform.hpp"

#if defined(_WIN32)
#include <malloc.h>
#include <objbase.h>
#include <windows.h>
#elif defined(__APPLE__)
#include <fcntl.h>
#include <malloc/malloc.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>
#else
#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <cerrno>
#include <cstring>
#if defined(__linux__)
#include <sys/random.h>
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

#if defined(_WIN32)

namespace {
// The version record of the query, 148 bytes as the query expects.
bool windowsVersion(OSVERSIONINFOA& info) {
    ZeroMemory(&info, sizeof info);
    info.dwOSVersionInfoSize = sizeof(OSVERSIONINFOA);
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
    return GetVersionExA(&info) != 0;
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
}
constexpr DWORD kWindows9xPlatform = 1;
constexpr DWORD kXpMajor = 5;
constexpr DWORD kXpMinor = 1;
}  // namespace

int operatingSystemFamily() noexcept {
    OSVERSIONINFOA info;
    if (!windowsVersion(info)) return 0;
    return info.dwPlatformId == kWindows9xPlatform ? 1 : 2;
}

bool isWindowsXP() noexcept {
    OSVERSIONINFOA info;
    return windowsVersion(info) && info.dwMajorVersion == kXpMajor && info.dwMinorVersion == kXpMinor;
}

bool secureRandomBytes(void* buffer, std::size_t size) noexcept {
    GUID g;  // CoCreateGuid draws from the system's secure source; take its random bytes
    auto* out = static_cast<unsigned char*>(buffer);
    while (size > 0) {
        if (CoCreateGuid(&g) != S_OK) return false;
        const std::size_t n = size < 8 ? size : 8;
        std::memcpy(out, g.Data4, n);
        out += n;
        size -= n;
    }
    return true;
}

static_assert(sizeof(GUID) == 16 && sizeof(wchar_t) == sizeof(char16_t), "Windows identifier layout");

bool systemCreateGuid(void* guid16, std::int32_t& result) noexcept {
    GUID g;
    result = static_cast<std::int32_t>(CoCreateGuid(&g));
    if (result == 0) std::memcpy(guid16, &g, sizeof g);
    return true;
}

bool systemGuidToText(const void* guid16, char16_t* text40, std::int32_t& result) noexcept {
    GUID g;
    std::memcpy(&g, guid16, sizeof g);
    wchar_t text[40];
    const int written = StringFromGUID2(g, text, 40);
    std::memcpy(text40, text, sizeof text);
    result = written > 0 ? 0 : static_cast<std::int32_t>(E_FAIL);
    return true;
}

bool systemGuidFromText(const char16_t* text, void* guid16, std::int32_t& result) noexcept {
    wchar_t copy[40];
    std::size_t n = 0;
    while (n < 39 && text[n] != 0) {
        copy[n] = static_cast<wchar_t>(text[n]);
        ++n;
    }
    copy[n] = 0;
    GUID g;
    result = static_cast<std::int32_t>(IIDFromString(copy, &g));
    if (result == 0) std::memcpy(guid16, &g, sizeof g);
    return true;
}

bool isExecutableFile(const char* path) noexcept {
    const DWORD attributes = GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool startDetached(char* commandLine, char* const* /*argv*/) noexcept {
    STARTUPINFOA startup;
    ZeroMemory(&startup, sizeof startup);
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process;
    ZeroMemory(&process, sizeof process);
    if (!CreateProcessA(nullptr, commandLine, nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr,
                        nullptr, &startup, &process)) {
        return false;
    }
    // Nothing waits for the process: the handles are not needed.
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return true;
}

#else

int operatingSystemFamily() noexcept {
    struct utsname name;
    return ::uname(&name) == 0 ? 2 : 0;
}

bool isWindowsXP() noexcept { return false; }

bool secureRandomBytes(void* buffer, std::size_t size) noexcept {
    auto* out = static_cast<unsigned char*>(buffer);
#if defined(__linux__)
    while (size > 0) {
        const ssize_t got = ::getrandom(out, size, 0);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        out += got;
        size -= static_cast<std::size_t>(got);
    }
    if (size == 0) return true;
#endif
    const int fd = ::open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    while (size > 0) {
        const ssize_t got = ::read(fd, out, size);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        out += got;
        size -= static_cast<std::size_t>(got);
    }
    ::close(fd);
    return size == 0;
}

bool systemCreateGuid(void*, std::int32_t&) noexcept { return false; }
bool systemGuidToText(const void*, char16_t*, std::int32_t&) noexcept { return false; }
bool systemGuidFromText(const char16_t*, void*, std::int32_t&) noexcept { return false; }

bool isExecutableFile(const char* path) noexcept {
    struct stat info;
    return ::stat(path, &info) == 0 && S_ISREG(info.st_mode) && ::access(path, X_OK) == 0;
}

// Double fork: the child starts a new session and forks the program, then exits at once and is
// reaped here, so the program is adopted by init and never becomes our zombie.  A pipe closed
// on a successful exec tells whether the program really started.
bool startDetached(char* /*commandLine*/, char* const* argv) noexcept {
    int report[2];
    if (::pipe(report) != 0) return false;
    ::fcntl(report[1], F_SETFD, FD_CLOEXEC);
    const pid_t child = ::fork();
    if (child < 0) {
        ::close(report[0]);
        ::close(report[1]);
        return false;
    }
    if (child == 0) {
        ::close(report[0]);
        ::setsid();
        const pid_t program = ::fork();
        if (program == 0) {
            ::execv(argv[0], argv);
            const int failure = errno;
            (void)!::write(report[1], &failure, sizeof failure);
            ::_exit(127);
        }
        ::_exit(program < 0 ? 1 : 0);
    }
    ::close(report[1]);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    int failure = 0;
    ssize_t got = 0;
    do {
        got = ::read(report[0], &failure, sizeof failure);
    } while (got < 0 && errno == EINTR);
    ::close(report[0]);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 && got == 0;
}

#endif

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
