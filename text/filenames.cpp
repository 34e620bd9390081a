// Relative and absolute file names over backslash-separated paths, compared ignoring case.
#include <cstring>

#include "base/boundary.hpp"
#include "base/heap.hpp"
#include "korvelbase/qmfilename.h"

namespace {

constexpr std::size_t kPathSize = QM_FILENAME_PATH_SIZE;  // destination size, NUL included
constexpr std::size_t kJoinedSize = 516;                  // working buffer of a join
constexpr std::size_t kLongestMovableText = 256;          // limit of an in-place removal
constexpr int kMostResolveRounds = 1000;                  // a path of 516 holds fewer pairs
constexpr char kSeparator = '\\';
constexpr char kDriveEnd = ':';
constexpr char kParent[] = "\\..";
constexpr std::size_t kParentLength = 3;

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

kb::String upperCopy(const char* text) {
    kb::String out(text);
    for (char& c : out) c = upper(c);
    return out;
}

// Copies text into a destination of kPathSize characters, cutting it (the NUL included).
void store(char* destination, const char* text, std::size_t length) {
    const std::size_t n = length < kPathSize - 1 ? length : kPathSize - 1;
    std::memmove(destination, text, n);  // the destination may be the text itself
    destination[n] = '\0';
}

void store(char* destination, const kb::String& text) { store(destination, text.data(), text.size()); }

bool equalIgnoringCase(const char* a, const char* b) {
    for (; *a != '\0' && *b != '\0'; ++a, ++b) {
        if (upper(*a) != upper(*b)) return false;
    }
    return *a == *b;
}

int commonPath(kb::String& out, const char* a, const char* b) {
    if (equalIgnoringCase(a, b)) {
        out = a;
        return 0;
    }
    const std::size_t la = std::strlen(a);
    const std::size_t lb = std::strlen(b);
    const std::size_t n = la < lb ? la : lb;
    if (n == 0) return ERR_FAILURE;
    std::size_t k = 0;
    while (k < n && upper(a[k]) == upper(b[k])) ++k;
    out.assign(a, k);
    // Back to the last separator: a backslash goes with the erased name, a drive's ':' stays.
    while (!out.empty() && out.back() != kSeparator && out.back() != kDriveEnd) out.pop_back();
    if (!out.empty() && out.back() == kSeparator) out.pop_back();
    return 0;
}

int relativePath(kb::String& out, const char* a, const char* b) {
    out.clear();
    const kb::String ua = upperCopy(a);
    const kb::String ub = upperCopy(b);
    if (ua.find(ub) != kb::String::npos) {
        const std::size_t skip = ub.size();
        out.assign(std::strlen(a) > skip ? a + skip : "");
        return 0;
    }
    if (ub.find(ua) != kb::String::npos) {
        const kb::String rest = ub.substr(ua.size());
        bool inComponent = false;
        for (const char c : rest) {
            if (c == kSeparator) {
                inComponent = false;
            } else if (!inComponent) {
                inComponent = true;
                out += kParent;
            }
        }
        return 0;
    }
    return ERR_FAILURE;
}

// Removes the first "\name\.." of path in place; false when there is none to remove (no "\..",
// no separator before it, or too much text to move).
bool removeFirstPair(char* path) {
    const char* parent = std::strstr(path, kParent);
    if (parent == nullptr) return false;
    char* start = nullptr;
    for (char* p = path; p < parent; ++p) {
        if (*p == kSeparator) start = p;
    }
    if (start == nullptr) return false;
    const std::size_t span = static_cast<std::size_t>(parent - start) + kParentLength;
    const std::size_t remaining = std::strlen(start);
    if (remaining + span > kLongestMovableText) return false;
    std::memmove(start, start + span, remaining - span + 1);
    return true;
}

int resolve(char* destination, char* path) {
    store(destination, path, std::strlen(path));
    // The first pair goes from the caller's path; the destination, still the plain copy, then
    // loses the same pair and every later one.
    if (!removeFirstPair(path)) return 0;
    for (int round = 0; round < kMostResolveRounds && removeFirstPair(destination); ++round) {
    }
    return 0;
}

}  // namespace

extern "C" {

int qmFilename_getCommonPath(char* destination, const char* a, const char* b) noexcept {
    if (destination == nullptr || a == nullptr || b == nullptr) return ERR_FAILURE;
    destination[0] = '\0';
    return kb::callGuarded(ERR_FAILURE, [&] {
        kb::String common;
        const int status = commonPath(common, a, b);
        if (status == 0) store(destination, common);
        return status;
    });
}

int qmFilename_getRelativePath(char* destination, const char* a, const char* b) noexcept {
    if (destination == nullptr || a == nullptr || b == nullptr) return ERR_FAILURE;
    destination[0] = '\0';
    return kb::callGuarded(ERR_FAILURE, [&] {
        kb::String relative;
        const int status = relativePath(relative, a, b);
        if (status == 0) store(destination, relative);
        return status;
    });
}

int qmFilename_expressUsingRelativePath(char* destination, const char* baseFolder,
                                        const char* targetPath) noexcept {
    if (destination == nullptr || baseFolder == nullptr || targetPath == nullptr) return ERR_FAILURE;
    destination[0] = '\0';
    return kb::callGuarded(ERR_FAILURE, [&] {
        kb::String common;
        if (commonPath(common, baseFolder, targetPath) != 0 || common.empty()) return ERR_FAILURE;
        kb::String relative;
        if (relativePath(relative, common.c_str(), baseFolder) != 0) return ERR_FAILURE;
        const std::size_t skip = common.size();
        relative += std::strlen(targetPath) > skip ? targetPath + skip : "";
        store(destination, relative);
        return 0;
    });
}

int qmFilename_fromRelativePath(char* destination, const char* baseFolder,
                                const char* relativePath) noexcept {
    if (destination == nullptr || baseFolder == nullptr || relativePath == nullptr) return ERR_FAILURE;
    destination[0] = '\0';
    char joined[kJoinedSize];
    const std::size_t lb = std::strlen(baseFolder);
    const std::size_t nb = lb < kJoinedSize - 1 ? lb : kJoinedSize - 1;
    std::memcpy(joined, baseFolder, nb);
    const std::size_t lr = std::strlen(relativePath);
    const std::size_t nr = lr < kJoinedSize - 1 - nb ? lr : kJoinedSize - 1 - nb;
    std::memcpy(joined + nb, relativePath, nr);
    joined[nb + nr] = '\0';
    if (joined[0] == '\0') return ERR_FAILURE;
    return resolve(destination, joined);
}

int qmFilename_resolveRelativePath(char* destination, char* path) noexcept {
    if (destination == nullptr || path == nullptr) return ERR_FAILURE;
    return resolve(destination, path);
}

}  // extern "C"
