// Number and slope formatting against hand-written text and against printf in the "C" locale,
// with every output inside a guarded buffer (nothing past 256 characters), and the separator
// independent of the host's locale outside the locale pair.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "korvelbase/qmformat.h"

namespace {

struct Narrow {
    static constexpr std::size_t kGuard = 64;
    char bytes[QM_FORMAT_TEXT_SIZE + 2 * kGuard];
    Narrow() { std::memset(bytes, 0x77, sizeof bytes); }
    char* get() { return bytes + kGuard; }
    std::string text() {
        EXPECT_TRUE(intact());
        return get();
    }
    bool intact() const {
        for (std::size_t i = 0; i < kGuard; ++i) {
            if (bytes[i] != 0x77 || bytes[kGuard + QM_FORMAT_TEXT_SIZE + i] != 0x77) return false;
        }
        return true;
    }
};

std::string ext(double v, int decimals, int truncate, int pad = 0, int width = 0) {
    Narrow out;
    EXPECT_EQ(qmFormat_doubleByDecimalDigitsExt(out.get(), v, decimals, truncate, pad, width), 0);
    return out.text();
}

std::string significant(double v, int digits) {
    Narrow out;
    EXPECT_EQ(qmFormat_doubleBySignificantDigits(out.get(), v, digits), 0);
    return out.text();
}

std::string slope(double s, int mode, int decimals) {
    QmChar16 buffer[QM_FORMAT_TEXT_SIZE + 16];
    std::fill(std::begin(buffer), std::end(buffer), QmChar16{0x2222});
    qmFormat_slopeToString(buffer, s, mode, decimals);
    for (std::size_t i = QM_FORMAT_TEXT_SIZE; i < sizeof buffer / sizeof buffer[0]; ++i) {
        EXPECT_EQ(buffer[i], 0x2222);
    }
    std::string out;
    for (const QmChar16* p = buffer; *p != 0; ++p) out += static_cast<char>(*p);
    return out;
}

TEST(Format, FixedDecimalsTruncatedRoundedAndPadded) {
    EXPECT_EQ(ext(2.999, 2, 1), "2.99");
    EXPECT_EQ(ext(2.999, 2, 0), "3.00");
    EXPECT_EQ(ext(7.5, 0, 1), "7");
    EXPECT_EQ(ext(-5.2, 1, 0, 1, 4), "00-5.2");  // the zeros go in front of the sign
    EXPECT_EQ(ext(12.34, 1, 1, 1, 5), "00012.3");
    EXPECT_EQ(ext(123456.0, 1, 1, 1, 3), "123456.0");
    Narrow out;
    EXPECT_EQ(qmFormat_doubleByDecimalDigits(out.get(), 1.23456789, 4), 0);
    EXPECT_EQ(out.text(), "1.2345");
    EXPECT_EQ(qmFormat_doubleByDecimalDigitsNoTrunc(out.get(), 1.23456789, 4), 0);
    EXPECT_EQ(out.text(), "1.2346");
    EXPECT_EQ(qmFormat_doubleByDecimalDigits(nullptr, 1.0, 2), ERR_FAILURE);
}

TEST(Format, RoundingAgreesWithPrintfInTheCLocale) {
    std::mt19937 random(12);
    std::uniform_real_distribution<double> mantissa(-10.0, 10.0);
    std::uniform_int_distribution<int> exponent(-12, 12);
    std::uniform_int_distribution<int> decimals(0, 12);
    for (int i = 0; i < 5000; ++i) {
        const double v = mantissa(random) * std::pow(10.0, exponent(random));
        const int d = decimals(random);
        char expected[512];
        std::snprintf(expected, sizeof expected, "%.*f", d, v);
        EXPECT_EQ(ext(v, d, 0), expected) << v << " " << d;
        std::snprintf(expected, sizeof expected, "%.16f", v);
        std::string truncated = expected;
        const std::size_t point = truncated.find('.');
        truncated = truncated.substr(0, d == 0 ? point : point + 1 + static_cast<std::size_t>(d));
        EXPECT_EQ(ext(v, d, 1), truncated) << v << " " << d;
    }
}

TEST(Format, SignificantDigits) {
    EXPECT_EQ(significant(123456.7, 3), "123000");
    EXPECT_EQ(significant(-123456.7, 2), "-120000");
    EXPECT_EQ(significant(1.23456, 3), "1.23");
    EXPECT_EQ(significant(0.0123, 3), "0.012");
    EXPECT_EQ(significant(99.99, 2), "99");
    EXPECT_EQ(significant(5.0, 0), "0");
    EXPECT_EQ(significant(0.0, 3), "0.00");
    EXPECT_EQ(significant(1e300, 2).substr(0, 4), "1000");  // no integer overflow
    EXPECT_EQ(significant(std::numeric_limits<double>::infinity(), 3), "inf");
}

TEST(Format, PrefixSuffixAndPaddedIntegers) {
    Narrow out;
    EXPECT_EQ(qmFormat_doubleWithPrefixSuffix(out.get(), "Ch ", " m", 2, 1234.567), 0);
    EXPECT_EQ(out.text(), "Ch 1234.57 m");
    EXPECT_EQ(qmFormat_doubleWithPrefixSuffix(out.get(), nullptr, nullptr, 0, -2.5), 0);
    EXPECT_EQ(out.text(), "-2");  // printf rounds half to even
    EXPECT_EQ(qmFormat_getPaddedInteger(out.get(), 42, 0), 0);
    EXPECT_EQ(out.text(), "42");
    EXPECT_EQ(qmFormat_getPaddedInteger(out.get(), 42, 5), 0);
    EXPECT_EQ(out.text(), "00042");
    EXPECT_EQ(qmFormat_getPaddedInteger(out.get(), -42, 5), 0);
    EXPECT_EQ(out.text(), "-0042");  // as "%05d"
    EXPECT_EQ(qmFormat_getPaddedInteger(out.get(), -2147483647 - 1, 3), 0);
    EXPECT_EQ(out.text(), "-2147483648");
}

TEST(Format, SlopeNotations) {
    EXPECT_EQ(slope(0.02, QM_SLOPE_PERCENT, 1), "2.0%");
    EXPECT_EQ(slope(0.02, QM_SLOPE_PER_MILLE, 0), "20%o");
    EXPECT_EQ(slope(0.02, QM_SLOPE_RUN_OVER_RISE, 0), "50:1");
    EXPECT_EQ(slope(0.02, QM_SLOPE_RISE_OVER_RUN, 2), "0.02:1");
    EXPECT_EQ(slope(0.02, QM_SLOPE_RATIO, 3), "0.020");
    for (int mode = 0; mode <= 6; ++mode) {
        EXPECT_EQ(slope(1e100, mode, 2), "oo");
        EXPECT_EQ(slope(-2e100, mode, 2), "-oo");
    }
    EXPECT_EQ(slope(0.0, QM_SLOPE_RUN_OVER_RISE, 0), "0:1");
    EXPECT_EQ(slope(0.5, 9, 2), "");
    qmFormat_slopeToString(nullptr, 1.0, 1, 1);  // ignored
}

TEST(Format, NothingIsWrittenPastTheOutputSize) {
    const std::string prefix(250, 'P');
    const double values[] = {1e300, -1e300, std::numeric_limits<double>::max(),
                             std::numeric_limits<double>::denorm_min(), NAN, -INFINITY, 0.0};
    for (const double v : values) {
        for (const int decimals : {0, 17, 300, 5000, -3}) {
            Narrow a, b, c;
            EXPECT_EQ(qmFormat_doubleByDecimalDigitsExt(a.get(), v, decimals, 0, 1, 100000), 0);
            EXPECT_EQ(qmFormat_doubleBySignificantDigits(b.get(), v, decimals), 0);
            EXPECT_EQ(qmFormat_doubleWithPrefixSuffix(c.get(), prefix.c_str(), prefix.c_str(), decimals, v), 0);
            EXPECT_LT(a.text().size(), std::size_t{QM_FORMAT_TEXT_SIZE});
            EXPECT_LT(b.text().size(), std::size_t{QM_FORMAT_TEXT_SIZE});
            EXPECT_EQ(c.text().size(), QM_FORMAT_TEXT_SIZE - 1u);
            slope(v, QM_SLOPE_PERCENT, decimals);
        }
    }
    Narrow d;
    EXPECT_EQ(qmFormat_getPaddedInteger(d.get(), 7, 1000000), 0);
    EXPECT_EQ(d.text().size(), QM_FORMAT_TEXT_SIZE - 1u);
}

TEST(Format, TheHostLocaleMattersOnlyBetweenTheLocalePair) {
    // A locale with a decimal comma, when the machine has one installed.
    const char* comma = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "German_Germany.1252"}) {
        if (std::setlocale(LC_NUMERIC, name) != nullptr) {
            comma = name;
            break;
        }
    }
    Narrow out;
    qmFormat_doubleByDecimalDigitsNoTrunc(out.get(), 1.25, 2);
    EXPECT_EQ(out.text(), "1.25");  // '.' whatever the host set
    std::setlocale(LC_ALL, "C");
    if (comma == nullptr) GTEST_SKIP() << "no locale with a decimal comma is installed";
    // Between the pair the machine locale (the environment's) is used: point it at the comma.
#if !defined(_WIN32)
    setenv("LC_ALL", comma, 1);
#endif
    qmFormat_HonorMachineLocale();
    // The machine locale's own separator (a comma where the environment selects one).
    const std::string separator(1, std::localeconv()->decimal_point[0]);
    qmFormat_doubleByDecimalDigitsNoTrunc(out.get(), 1.25, 2);
    EXPECT_EQ(out.text(), "1" + separator + "25");
    qmFormat_RestoreDefaultLocale();
    qmFormat_doubleByDecimalDigitsNoTrunc(out.get(), 1.25, 2);
    EXPECT_EQ(out.text(), "1.25");
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

}  // namespace
