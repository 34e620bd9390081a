// Every number and slope format on arbitrary doubles (special values included), digit counts,
// widths, prefixes and suffixes: outputs stay inside their 256 characters.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/fuzz_input.hpp"
#include "korvelbase/qmformat.h"

namespace {

constexpr std::size_t kGuard = 32;
constexpr unsigned char kGuardByte = 0x3C;

template <typename Unit>
struct Guarded {
    Unit units[QM_FORMAT_TEXT_SIZE + 2 * kGuard];
    Guarded() { std::memset(units, kGuardByte, sizeof units); }
    Unit* get() { return units + kGuard; }
    void check() const {
        const auto* bytes = reinterpret_cast<const unsigned char*>(units);
        const std::size_t guardBytes = kGuard * sizeof(Unit);
        const std::size_t tail = (kGuard + QM_FORMAT_TEXT_SIZE) * sizeof(Unit);
        for (std::size_t i = 0; i < guardBytes; ++i) {
            if (bytes[i] != kGuardByte || bytes[tail + i] != kGuardByte) std::abort();
        }
    }
};

std::string takeText(kbfuzz::Input& input) {
    std::string text(static_cast<std::size_t>(input.takeInt(0, 400)), 'x');
    for (char& c : text) {
        c = static_cast<char>(input.take<std::uint8_t>() | 1);  // no NUL inside
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kbfuzz::Input input(data, size);
    while (!input.empty()) {
        const double value = input.takeDouble();
        const int digits = input.takeInt(-50, 2000);
        const int width = input.takeInt(-10, 1000);
        Guarded<char> a, b, c, d;
        qmFormat_doubleByDecimalDigitsExt(a.get(), value, digits, input.take<std::uint8_t>() & 1, 1, width);
        qmFormat_doubleBySignificantDigits(b.get(), value, digits);
        const std::string prefix = takeText(input);
        const std::string suffix = takeText(input);
        qmFormat_doubleWithPrefixSuffix(c.get(), prefix.c_str(), suffix.c_str(), digits, value);
        qmFormat_getPaddedInteger(d.get(), input.take<int>(), width);
        Guarded<QmChar16> s;
        qmFormat_slopeToString(s.get(), value, input.takeInt(0, 6), digits);
        a.check();
        b.check();
        c.check();
        d.check();
        s.check();
    }
    return 0;
}
