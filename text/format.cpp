// Numbers and slopes as text, with '.' as separator unless the machine's locale is honoured.
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "korvelbase/qmformat.h"

namespace {

constexpr std::size_t kTextSize = QM_FORMAT_TEXT_SIZE;
constexpr int kDefaultPrecision = 6;       // printf's precision when none is given
constexpr int kTruncationDecimals = 16;    // the text truncation starts from
// Decimals beyond the last non-zero digit any double can have (1074) change nothing.
constexpr int kMostDecimals = 1100;
constexpr std::size_t kWorkSize = 1500;    // the longest fixed text: 309 digits, point, 1100

// ---- the locale pair ---------------------------------------------------------------------------

bool honouringMachineLocale = false;
constexpr std::size_t kLocaleNameSize = 512;
char rememberedLocale[kLocaleNameSize] = "C";

char decimalSeparator() {
    if (!honouringMachineLocale) return '.';
    const std::lconv* conventions = std::localeconv();
    return conventions != nullptr && conventions->decimal_point != nullptr &&
                   conventions->decimal_point[0] != '\0'
               ? conventions->decimal_point[0]
               : '.';
}

// ---- building text within the output size ------------------------------------------------------

// Text assembled into a work buffer, then written cut to the output size.
class Text {
public:
    void append(const char* text, std::size_t length) {
        const std::size_t room = kWorkSize - 1 - length_;
        const std::size_t n = length < room ? length : room;
        std::memcpy(buffer_ + length_, text, n);
        length_ += n;
    }
    void append(const char* text) { append(text, std::strlen(text)); }
    void appendFixed(double value, int decimals) {
        if (decimals < 0) decimals = kDefaultPrecision;
        if (decimals > kMostDecimals) decimals = kMostDecimals;
        char digits[kWorkSize];
        const auto result = std::to_chars(digits, digits + sizeof digits, value,
                                          std::chars_format::fixed, decimals);
        append(digits, static_cast<std::size_t>(result.ptr - digits));
    }
    void prependZeros(std::size_t count) {
        const std::size_t room = kWorkSize - 1 - length_;
        const std::size_t n = count < room ? count : room;
        std::memmove(buffer_ + n, buffer_, length_);
        std::memset(buffer_, '0', n);
        length_ += n;
    }
    void cutAt(std::size_t length) {
        if (length < length_) length_ = length;
    }
    std::size_t length() const { return length_; }
    const char* data() const { return buffer_; }
    // Index of the decimal point, or length() when there is none.
    std::size_t point() const {
        const void* found = std::memchr(buffer_, '.', length_);
        return found != nullptr ? static_cast<std::size_t>(static_cast<const char*>(found) - buffer_) : length_;
    }
    // Writes the text, cut to the output size and with the current separator.
    void writeTo(char* out) const {
        const std::size_t n = length_ < kTextSize - 1 ? length_ : kTextSize - 1;
        const char separator = decimalSeparator();
        for (std::size_t i = 0; i < n; ++i) out[i] = buffer_[i] == '.' ? separator : buffer_[i];
        out[n] = '\0';
    }
    void writeTo(QmChar16* out) const {
        const std::size_t n = length_ < kTextSize - 1 ? length_ : kTextSize - 1;
        const char separator = decimalSeparator();
        for (std::size_t i = 0; i < n; ++i) {
            const char c = buffer_[i] == '.' ? separator : buffer_[i];
            out[i] = static_cast<QmChar16>(static_cast<unsigned char>(c));
        }
        out[n] = 0;
    }

private:
    char buffer_[kWorkSize];
    std::size_t length_ = 0;
};

// The fixed-decimals core: truncated or rounded, optionally zero-padded in front.
void fixedDecimals(Text& text, double value, int decimals, bool truncate, bool pad, int width) {
    if (truncate) {
        text.appendFixed(value, kTruncationDecimals);
        const std::size_t point = text.point();
        if (point < text.length()) {
            const std::size_t keep = decimals <= 0 ? point : point + 1 + static_cast<std::size_t>(decimals);
            text.cutAt(keep);
        }
    } else {
        text.appendFixed(value, decimals);
    }
    if (pad) {
        const std::size_t before = text.point();
        if (width > 0 && before < static_cast<std::size_t>(width)) {
            text.prependZeros(static_cast<std::size_t>(width) - before);
        }
    }
}

// The integer part of value with its last `zeroed` digits replaced by zeros: m / d * d for
// d = 10^zeroed, truncating toward zero, without the overflow of an integer type.
void integerKeepingLeadingDigits(Text& text, double value, int zeroed) {
    Text digits;
    digits.appendFixed(std::trunc(value), 0);
    const char* p = digits.data();
    const bool negative = p[0] == '-';
    const std::size_t first = negative ? 1 : 0;
    const std::size_t count = digits.length() - first;
    if (zeroed < 0 || static_cast<std::size_t>(zeroed) >= count) {
        text.append("0");
        return;
    }
    char out[kWorkSize];
    std::memcpy(out, p, digits.length());
    std::memset(out + digits.length() - static_cast<std::size_t>(zeroed), '0', static_cast<std::size_t>(zeroed));
    text.append(out, digits.length());
}

void slopeText(Text& text, double slope, int mode, int decimals) {
    constexpr double kInfiniteSlope = 1e100;
    if (slope <= -kInfiniteSlope) {
        text.append("-oo");
        return;
    }
    if (slope >= kInfiniteSlope) {
        text.append("oo");
        return;
    }
    switch (mode) {
        case QM_SLOPE_RATIO:
            text.appendFixed(slope, decimals);
            break;
        case QM_SLOPE_PERCENT:
            text.appendFixed(slope * 100.0, decimals);
            text.append("%");
            break;
        case QM_SLOPE_PER_MILLE:
            text.appendFixed(slope * 1000.0, decimals);
            text.append("%o");
            break;
        case QM_SLOPE_RISE_OVER_RUN:
            text.appendFixed(slope, decimals);
            text.append(":1");
            break;
        case QM_SLOPE_RUN_OVER_RISE:
            text.appendFixed(slope == 0.0 ? 0.0 : 1.0 / slope, decimals);
            text.append(":1");
            break;
        default:
            break;
    }
}

}  // namespace

extern "C" {

int qmFormat_doubleByDecimalDigits(char* text, double value, int decimals) noexcept {
    return qmFormat_doubleByDecimalDigitsExt(text, value, decimals, 1, 0, 0);
}

int qmFormat_doubleByDecimalDigitsNoTrunc(char* text, double value, int decimals) noexcept {
    return qmFormat_doubleByDecimalDigitsExt(text, value, decimals, 0, 0, 0);
}

int qmFormat_doubleByDecimalDigitsExt(char* text, double value, int decimals, int truncate, int pad,
                                      int width) noexcept {
    if (text == nullptr) return ERR_FAILURE;
    Text out;
    fixedDecimals(out, value, decimals, truncate != 0, pad != 0, width);
    out.writeTo(text);
    return 0;
}

int qmFormat_doubleBySignificantDigits(char* text, double value, int digits) noexcept {
    if (text == nullptr) return ERR_FAILURE;
    Text out;
    if (!std::isfinite(value) || value == 0.0) {
        // No logarithm: NaN and infinities as themselves, 0 as a one-digit number.
        fixedDecimals(out, value, digits - 1, true, false, 0);
    } else {
        const int before = static_cast<int>(std::log10(std::fabs(value))) + 1;
        if (digits < before) {
            integerKeepingLeadingDigits(out, value, before - digits);
        } else {
            fixedDecimals(out, value, digits - before, true, false, 0);
        }
    }
    out.writeTo(text);
    return 0;
}

int qmFormat_doubleWithPrefixSuffix(char* text, const char* prefix, const char* suffix, int decimals,
                                    double value) noexcept {
    if (text == nullptr) return ERR_FAILURE;
    Text out;
    if (prefix != nullptr) out.append(prefix);
    out.appendFixed(value, decimals);  // printf's fixed text has no leading blanks to strip
    if (suffix != nullptr) out.append(suffix);
    out.writeTo(text);
    return 0;
}

int qmFormat_getPaddedInteger(char* text, int value, int width) noexcept {
    if (text == nullptr) return ERR_FAILURE;
    char digits[16];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    const std::size_t length = static_cast<std::size_t>(result.ptr - digits);
    Text out;
    const bool negative = value < 0;
    if (negative) out.append("-");
    // "%0*d": zeros between the sign and the digits up to the width.
    if (width > 0 && length < static_cast<std::size_t>(width)) {
        Text zeros;
        zeros.prependZeros(static_cast<std::size_t>(width) - length);
        out.append(zeros.data(), zeros.length());
    }
    out.append(digits + (negative ? 1 : 0), length - (negative ? 1 : 0));
    out.writeTo(text);
    return 0;
}

void qmFormat_slopeToString(QmChar16* text, double slope, int mode, int decimals) noexcept {
    if (text == nullptr) return;
    Text out;
    slopeText(out, slope, mode, decimals);
    out.writeTo(text);
}

void qmFormat_HonorMachineLocale(void) noexcept {
    const char* current = std::setlocale(LC_ALL, nullptr);
    // A copy of the name: the runtime may reuse its own string on the next change.
    if (current != nullptr && std::strlen(current) < kLocaleNameSize) {
        std::strcpy(rememberedLocale, current);
    }
    std::setlocale(LC_ALL, "");
    honouringMachineLocale = true;
}

void qmFormat_RestoreDefaultLocale(void) noexcept {
    std::setlocale(LC_ALL, rememberedLocale);
    honouringMachineLocale = false;
}

}  // extern "C"
