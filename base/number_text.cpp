#include "base/number_text.hpp"

#include <charconv>

namespace kb {

namespace {
// Room for the longest fixed-point double: 309 integer digits, sign, point and decimals.
constexpr int kLongestFixedText = 400;
}  // namespace

String fixedText(double value, int decimals) {
    char buffer[kLongestFixedText];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value,
                                      std::chars_format::fixed, decimals);
    return String(buffer, result.ptr);
}

String integerText(long long value) {
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return String(buffer, result.ptr);
}

}  // namespace kb
