// Number-to-text conversion on arbitrary doubles and decimal counts: the text is what printf
// gives, its length is returned, and nothing is written past the text and its NUL.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fuzz/fuzz_input.hpp"
#include "korvelbase/conversion.h"

namespace {

constexpr unsigned char kGuardByte = 0xA5;
constexpr int kMostDecimals = 8;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kbfuzz::Input input(data, size);
    while (!input.empty()) {
        const double value = input.takeDouble();
        const int decimals = input.takeInt(-20, 20);
        char buffer[QM_CONVERSION_DOUBLE_TEXT_SIZE + 64];
        std::memset(buffer, kGuardByte, sizeof buffer);
        const int length = qmConversion_doubleToString(buffer, value, decimals);
        if (length < 0 || length >= QM_CONVERSION_DOUBLE_TEXT_SIZE) std::abort();
        if (std::strlen(buffer) != static_cast<std::size_t>(length)) std::abort();
        for (std::size_t i = static_cast<std::size_t>(length) + 1; i < sizeof buffer; ++i) {
            if (static_cast<unsigned char>(buffer[i]) != kGuardByte) std::abort();
        }
        const int clamped = decimals < 0 ? 0 : (decimals > kMostDecimals ? kMostDecimals : decimals);
        char expected[QM_CONVERSION_DOUBLE_TEXT_SIZE];
        std::snprintf(expected, sizeof expected, "%-.*f", clamped, value);
        if (std::strcmp(expected, buffer) != 0) std::abort();
    }
    return 0;
}
