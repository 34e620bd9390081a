// Tolerant comparison of doubles, digit counting and the no-op initialiser.
//
// Every test is written so that an unordered comparison (a NaN operand) evaluates to false:
// IEEE comparisons with NaN are false, and no test is formed by negating another one.
#include <climits>
#include <cmath>
#include <cstdint>

#include "korvelbase/compare.h"

namespace {

// Decimal digits of a non-negative magnitude (0 has one digit).
int decimalDigits(std::int64_t magnitude) {
    int digits = 1;
    while (magnitude >= 10) {
        magnitude /= 10;
        ++digits;
    }
    return digits;
}

// floor(d) converted to int the way a 32-bit truncating conversion does it: values outside
// the int range, and NaN, give the "integer indefinite" value INT_MIN.
int floorToInt32(double d) {
    const double f = std::floor(d);
    if (!(f >= static_cast<double>(INT_MIN) && f <= static_cast<double>(INT_MAX))) return INT_MIN;
    return static_cast<int>(f);
}

constexpr int kSignificantDigitsOfDouble = 16;

}  // namespace

extern "C" {

int initialize(void) noexcept { return 0; }

int qmUtil_equalDouble(double a, double b, double tol) noexcept {
    return std::fabs(a - b) <= tol ? 1 : 0;
}

int qmUtil_greaterDouble(double a, double b, double tol) noexcept { return a - b > tol ? 1 : 0; }

int qmUtil_greaterOrEqualDouble(double a, double b, double tol) noexcept {
    return a - b >= -tol ? 1 : 0;
}

int qmUtil_lessDouble(double a, double b, double tol) noexcept { return a - b < -tol ? 1 : 0; }

int qmUtil_lessOrEqualDouble(double a, double b, double tol) noexcept {
    return a - b <= tol ? 1 : 0;
}

int qmUtil_belongToClosedIntervalDouble(double x, double lo, double hi, double tol) noexcept {
    return (x - lo >= -tol && x - hi <= tol) ? 1 : 0;
}

int qmUtil_belongToOpenIntervalDouble(double x, double lo, double hi, double tol) noexcept {
    return (lo + tol < x && hi - tol > x) ? 1 : 0;
}

int qmMath_doublesNearEqual(double a, double b, double tol) noexcept {
    return std::fabs(a - b) <= std::fabs(tol) ? 1 : 0;
}

int qmUtil_compareDoubleByPointer(const void* p, const void* q) noexcept {
    const double a = *static_cast<const double*>(p);
    const double b = *static_cast<const double*>(q);
    if (a < b) return -1;
    if (a > b) return 1;
    return 0;
}

int qmUtil_numberOfDigit(int n) noexcept {
    const std::int64_t wide = n;
    if (wide < 0) return decimalDigits(-wide) + 1;  // one position for the minus sign
    return decimalDigits(wide);
}

int qmUtil_numberOfMantissaDigit(double d) noexcept { return qmUtil_numberOfDigit(floorToInt32(d)); }

int qmUtil_numberOfDecimalsDigit(double d) noexcept {
    return kSignificantDigitsOfDouble - qmUtil_numberOfMantissaDigit(d);
}

}  // extern "C"
