// Every file-name function on arbitrary text: destinations of exactly 260 characters inside
// guarded buffers, and nothing may be written past them.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "korvelbase/qmfilename.h"

namespace {

constexpr std::size_t kGuard = 32;
constexpr unsigned char kGuardByte = 0xA5;

struct Guarded {
    unsigned char bytes[QM_FILENAME_PATH_SIZE + 2 * kGuard];
    Guarded() { std::memset(bytes, kGuardByte, sizeof bytes); }
    char* get() { return reinterpret_cast<char*>(bytes + kGuard); }
    void check() const {
        for (std::size_t i = 0; i < kGuard; ++i) {
            if (bytes[i] != kGuardByte || bytes[kGuard + QM_FILENAME_PATH_SIZE + i] != kGuardByte) std::abort();
        }
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Two texts separated by the first NUL (or split in half).
    const char* bytes = reinterpret_cast<const char*>(data);
    const void* nul = std::memchr(bytes, 0, size);
    const std::size_t split = nul != nullptr ? static_cast<std::size_t>(static_cast<const char*>(nul) - bytes) : size / 2;
    std::string a(bytes, split);
    std::string b(bytes + (split < size ? split + 1 : size), size - (split < size ? split + 1 : size));
    a = a.c_str();
    b = b.c_str();
    const auto run = [](auto call) {
        Guarded d;
        call(d.get());
        d.check();
    };
    run([&](char* d) { qmFilename_getCommonPath(d, a.c_str(), b.c_str()); });
    run([&](char* d) { qmFilename_getRelativePath(d, a.c_str(), b.c_str()); });
    run([&](char* d) { qmFilename_expressUsingRelativePath(d, a.c_str(), b.c_str()); });
    run([&](char* d) { qmFilename_fromRelativePath(d, a.c_str(), b.c_str()); });
    std::string editable = a;
    run([&](char* d) { qmFilename_resolveRelativePath(d, &editable[0]); });
    if (editable.size() != a.size()) std::abort();  // the caller's text keeps its buffer
    return 0;
}
