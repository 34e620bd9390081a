// System utilities (operating system, process start) and small value and array helpers.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/boundary.hpp"
#include "base/heap.hpp"
#include "base/platform.hpp"
#include "korvelbase/qmutil.h"

namespace {

// ---- command lines ---------------------------------------------------------------------------

bool isBlank(char c) { return c == ' ' || c == '\t'; }

// Splits a command line as Windows programs split theirs: blanks separate arguments, double
// quotes group, and backslashes are literal except before a quote (2n of them give n and the
// quote delimits; 2n + 1 give n and a literal quote).
kb::Vector<kb::String> splitCommandLine(const char* line) {
    kb::Vector<kb::String> arguments;
    const char* p = line;
    for (;;) {
        while (isBlank(*p)) ++p;
        if (*p == '\0') break;
        kb::String argument;
        bool quoted = false;
        while (*p != '\0' && (quoted || !isBlank(*p))) {
            std::size_t backslashes = 0;
            while (*p == '\\') {
                ++backslashes;
                ++p;
            }
            if (*p == '"') {
                argument.append(backslashes / 2, '\\');
                if (backslashes % 2 == 1) {
                    argument += '"';
                } else if (quoted && p[1] == '"') {
                    argument += '"';  // "" inside quotes is a literal quote
                    ++p;
                } else {
                    quoted = !quoted;
                }
                ++p;
            } else {
                argument.append(backslashes, '\\');
                if (*p != '\0' && (quoted || !isBlank(*p))) argument += *p++;
            }
        }
        arguments.push_back(argument);
    }
    return arguments;
}

// The program to run: a name with a '/' as it is, otherwise the first executable of that name
// in the folders of PATH.  Empty when there is none.
kb::String resolveProgram(const kb::String& name) {
    if (name.find('/') != kb::String::npos) {
        return kb::platform::isExecutableFile(name.c_str()) ? name : kb::String();
    }
    const char* path = std::getenv("PATH");
    if (path == nullptr) return kb::String();
    const char* folder = path;
    for (;;) {
        const char* end = std::strchr(folder, ':');
        kb::String candidate(folder, end != nullptr ? static_cast<std::size_t>(end - folder) : std::strlen(folder));
        if (candidate.empty()) candidate = ".";
        candidate += '/';
        candidate += name;
        if (kb::platform::isExecutableFile(candidate.c_str())) return candidate;
        if (end == nullptr) return kb::String();
        folder = end + 1;
    }
}

int startProcess(char* commandLine) {
    kb::Vector<kb::String> arguments = splitCommandLine(commandLine);
    if (arguments.empty()) return ERR_FAILURE;
    if (kb::platform::kLooksUpPrograms) {
        arguments[0] = resolveProgram(arguments[0]);
        if (arguments[0].empty()) return ERR_FAILURE;
    }
    kb::Vector<char*> argv;
    for (kb::String& argument : arguments) argv.push_back(&argument[0]);
    argv.push_back(nullptr);
    return kb::platform::startDetached(commandLine, argv.data()) ? 0 : ERR_FAILURE;
}

// ---- arrays --------------------------------------------------------------------------------

constexpr std::size_t kSwapChunk = 256;

// Exchanges two blocks through a small buffer, a chunk at a time: no allocation, so it cannot
// fail.
void swapBytes(unsigned char* a, unsigned char* b, std::size_t size) {
    unsigned char buffer[kSwapChunk];
    while (size > 0) {
        const std::size_t n = std::min(size, kSwapChunk);
        std::memcpy(buffer, a, n);
        std::memcpy(a, b, n);
        std::memcpy(b, buffer, n);
        a += n;
        b += n;
        size -= n;
    }
}

// The quadratic in-place removal, for when no working memory can be had.
int removeDuplicatesInPlace(std::int32_t* array, int count) {
    for (int i = 0; i < count - 1; ++i) {
        for (int j = i + 1; j < count;) {
            if (array[i] == array[j]) {
                std::memmove(array + j, array + j + 1, static_cast<std::size_t>(count - j - 1) * sizeof *array);
                --count;
            } else {
                ++j;
            }
        }
    }
    return count;
}

// The same result in O(n log n): sort positions by value, keep the first position of each
// value, then compact in the original order.
int removeDuplicatesSorted(std::int32_t* array, int count) {
    kb::Vector<int> order(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) order[static_cast<std::size_t>(i)] = i;
    std::stable_sort(order.begin(), order.end(), [array](int x, int y) { return array[x] < array[y]; });
    kb::Vector<unsigned char> keep(static_cast<std::size_t>(count), 0);
    for (std::size_t k = 0; k < order.size(); ++k) {
        if (k == 0 || array[order[k]] != array[order[k - 1]]) keep[static_cast<std::size_t>(order[k])] = 1;
    }
    int kept = 0;
    for (int i = 0; i < count; ++i) {
        if (keep[static_cast<std::size_t>(i)] != 0) array[kept++] = array[i];
    }
    return kept;
}

}  // namespace

extern "C" {

int qmUtil_getOperatingSystem(void) noexcept { return kb::platform::operatingSystemFamily(); }

int qmUtil_isOperatingSystemWindowsXP(void) noexcept { return kb::platform::isWindowsXP() ? 1 : 0; }

int qmUtil_createWindowsProcess(char* commandLine) noexcept {
    if (commandLine == nullptr || commandLine[0] == '\0') return ERR_FAILURE;
    return kb::callGuarded(ERR_FAILURE, [&] { return startProcess(commandLine); });
}

void qmUtil_swapDouble(double* a, double* b) noexcept {
    if (a != nullptr && b != nullptr) std::swap(*a, *b);
}

void qmUtil_swapFloat(float* a, float* b) noexcept {
    if (a != nullptr && b != nullptr) std::swap(*a, *b);
}

void qmUtil_swapInt(int* a, int* b) noexcept {
    if (a != nullptr && b != nullptr) std::swap(*a, *b);
}

void qmUtil_swapLong(int32_t* a, int32_t* b) noexcept {
    if (a != nullptr && b != nullptr) std::swap(*a, *b);
}

void qmUtil_swapMem(void* a, void* b, int size) noexcept {
    if (a == nullptr || b == nullptr || size < 1) return;
    swapBytes(static_cast<unsigned char*>(a), static_cast<unsigned char*>(b), static_cast<std::size_t>(size));
}

int qmUtil_swapBytesShortArray(short* array, int /*unused*/, int n) noexcept {
    if (array != nullptr && n == 1) {
        auto* bytes = reinterpret_cast<unsigned char*>(array);
        std::swap(bytes[0], bytes[1]);
    }
    return 0;
}

int qmUtil_getGreaterInteger(int a, int b) noexcept { return a > b ? a : b; }

int qmUtil_getSmallerInteger(int a, int b) noexcept { return a < b ? a : b; }

void qmUtil_reverseArray(void* array, int n, int elementSize) noexcept {
    if (array == nullptr || n < 2 || elementSize < 1) return;
    auto* bytes = static_cast<unsigned char*>(array);
    const auto size = static_cast<std::size_t>(elementSize);
    for (int k = 0; k < n / 2; ++k) {
        swapBytes(bytes + static_cast<std::size_t>(k) * size,
                  bytes + static_cast<std::size_t>(n - 1 - k) * size, size);
    }
}

int qmUtil_removeDuplicatesFromLongArray(int32_t* array, int* count) noexcept {
    if (array == nullptr || count == nullptr) return ERR_FAILURE;
    if (*count < 2) return 0;
    const int n = *count;
    *count = kb::callGuarded(-1, [&] { return removeDuplicatesSorted(array, n); });
    if (*count < 0) *count = removeDuplicatesInPlace(array, n);
    return 0;
}

}  // extern "C"
