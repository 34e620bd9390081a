// Angles, directions, scalar helpers and vector normalisation of the plane-mathematics family.
//
// Directions are radians counter-clockwise from +x in [0, 2*pi); azimuths are clockwise from
// north.  The normalisation and the two sweep rules are shared with the geometry kernel
// (base/angles.hpp) so both families agree to the last bit.
#include <cmath>
#include <cstdint>
#include <limits>

#include "base/angles.hpp"
#include "geometry/plane_math.hpp"
#include "korvelbase/constants.h"
#include "korvelbase/qmmath.h"
#include "korvelbase/types.h"

namespace {

// 1/180 as the literal the degree conversion multiplies by.
constexpr double kOneOverOneEighty = 0.005555555555555556;
constexpr double kDegreesPerHalfTurn = 180.0;

// From 34! on the product 1*2*...*n holds at least 32 factors of two, so it wraps to 0 in
// 32-bit arithmetic; the same holds for any run of 34 or more consecutive integers, whose
// product is a multiple of 34!.
constexpr std::int64_t kFactorsThatWrapToZero = 34;

// Absolute gap between two directions after normalisation, folded into [0, pi].
double foldedGap(double d1, double d2) noexcept {
    double gap = std::fabs(kb::normalizeAngle(d1) - kb::normalizeAngle(d2));
    if (gap > dc_pi) gap = dc_2pi - gap;
    return gap;
}

// Product of the consecutive integers hi, hi-1, ..., lo+1 (hi > lo) in wrapping 32-bit
// arithmetic.
std::uint32_t wrappedProductDown(std::int64_t hi, std::int64_t lo) noexcept {
    if (hi - lo >= kFactorsThatWrapToZero) return 0u;
    std::uint32_t product = 1u;
    for (std::int64_t k = hi; k > lo; --k) product *= static_cast<std::uint32_t>(k);
    return product;
}

// The wrapped 32-bit pattern read back as a signed 32-bit integer (two's complement).
double asSigned32(std::uint32_t bits) noexcept {
    constexpr std::int64_t kTwoToThe32 = 0x100000000LL;
    const std::int64_t value = static_cast<std::int64_t>(bits);
    return static_cast<double>(bits <= 0x7fffffffu ? value : value - kTwoToThe32);
}

}  // namespace

extern "C" {

// ---------------------------------------------------------------------------------------
// Angles and directions
// ---------------------------------------------------------------------------------------

double qmMath_normalizeAngle(double angle) noexcept { return kb::normalizeAngle(angle); }

double qmMath_normalizeAngleDegree(double angle) noexcept {
    const double radians = angle * dc_pi * kOneOverOneEighty;
    return kb::normalizeAngle(radians) / dc_pi * kDegreesPerHalfTurn;
}

double qmMath_atan2(double y, double x) noexcept {
    const double t = std::atan2(y, x);
    // atan2 gives -pi for y = -0 on the negative x axis; the range here is (-pi, pi].
    return t == -dc_pi ? dc_pi : t;
}

double qmMath_direction2d(double x1, double y1, double x2, double y2) noexcept {
    return kb::normalizeAngle(std::atan2(y2 - y1, x2 - x1));
}

double qmMath_angleBetweenDirections(double d1, double d2) noexcept {
    const double turn = kb::normalizeAngle(d2 - d1);
    return turn > dc_pi ? turn - dc_2pi : turn;
}

double qmMath_angleRightBetweenAzimuths(double a0, double a1) noexcept {
    // "An earlier quarter turn, or the same quarter turn and a smaller value" orders azimuths
    // exactly as a1 < a0 does, the quarter being a non-decreasing function of the azimuth.
    const double turn = a1 - a0;
    return a1 < a0 ? turn + dc_2pi : turn;
}

int qmMath_anglesNearEqual(double a1, double a2, double tol) noexcept {
    const double n1 = kb::normalizeAngle(a1);
    const double n2 = kb::normalizeAngle(a2);
    double gap = std::fabs(n1 - n2);
    if (tol > gap) return 1;
    // Wrap-around through 0, looked at only when one of the angles is itself near 0.
    if (qmMath_doublesNearEqual(0.0, n1, tol)) {
        gap = dc_2pi - n2 + n1;
    } else if (qmMath_doublesNearEqual(0.0, n2, tol)) {
        gap = dc_2pi - n1 + n2;
    }
    return tol > gap ? 1 : 0;
}

int qmMath_directionsNearParallel(double* difference, double d1, double d2, double tol) noexcept {
    const double sameSense = foldedGap(d1, d2);
    if (sameSense < tol) {
        if (difference) *difference = sameSense;
        return 1;
    }
    const double oppositeSense = foldedGap(d1, dc_pi + d2);
    if (difference) *difference = qmMath_doubleMin(sameSense, oppositeSense);
    return oppositeSense < tol ? 1 : 0;
}

int qmMath_calculateSweepAngleTwoPointsFromCenter(double* angle, double cx, double cy, double x1,
                                                  double y1, double x2, double y2,
                                                  int ccw) noexcept {
    if (!angle) return ERR_FAILURE;
    return kb::sweepAroundCentre(cx, cy, x1, y1, x2, y2, ccw != 0, angle) ? 0 : ERR_FAILURE;
}

double qmMath_getSweepAngleBetweenVectors2d(double x1, double y1, double x2, double y2) noexcept {
    // The status value doubles as the failure result: callers test for 32768.0.
    constexpr double kFailureAngle = static_cast<double>(ERR_FAILURE);
    if (qmMath_normalizeVector2d(&x1, &y1) != 0) return kFailureAngle;
    if (qmMath_normalizeVector2d(&x2, &y2) != 0) return kFailureAngle;
    return kb::sweepBetweenUnitVectors(x1, y1, x2, y2);
}

// ---------------------------------------------------------------------------------------
// Scalars and small helpers
// ---------------------------------------------------------------------------------------

double qmMath_doubleMax(double a, double b) noexcept { return b < a ? a : b; }

double qmMath_doubleMin(double a, double b) noexcept { return b <= a ? b : a; }

int qmMath_doubleGetSign(double x) noexcept {
    if (x > 0.0) return 1;
    if (x < 0.0) return -1;
    return 0;  // zero and NaN
}

int qmMath_isDivisionPossible(double numerator, double denominator) noexcept {
    return kb::plane::divisionPossible(numerator, denominator) ? 1 : 0;
}

double qmMath_factorial(int n) noexcept {
    if (n <= 1) return 1.0;
    return static_cast<double>(wrappedProductDown(n, 1));
}

double qmMath_factorialDivision(int n, int m) noexcept {
    if (n == m) return 1.0;
    if (n > m) return asSigned32(wrappedProductDown(n, m));
    const double divisor = asSigned32(wrappedProductDown(m, n));
    if (divisor == 0.0) return std::numeric_limits<double>::infinity();
    return 1.0 / divisor;
}

double qmMath_interpolateDoubles(double x0, double y0, double x, double x1, double y1) noexcept {
    if (x1 == x0 || y0 == y1) return y0;
    return y0 + (x - x0) / (x1 - x0) * (y1 - y0);
}

double qmMath_scalarProduct2d(double x1, double y1, double x2, double y2) noexcept {
    return x1 * x2 + y1 * y2;
}

double qmMath_crossProduct2d(double x1, double y1, double x2, double y2) noexcept {
    return x1 * y2 - y1 * x2;
}

double qmMath_distance2d(double x1, double y1, double x2, double y2) noexcept {
    const double dx = x2 - x1, dy = y2 - y1;
    return std::sqrt(dx * dx + dy * dy);
}

double qmMath_distance3d(double x1, double y1, double z1, double x2, double y2,
                         double z2) noexcept {
    const double dx = x2 - x1, dy = y2 - y1, dz = z2 - z1;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

int qmMath_normalizeVector2d(double* x, double* y) noexcept {
    if (!x || !y) return ERR_FAILURE;
    const double length = std::sqrt(*x * *x + *y * *y);
    // The guard is taken against the signed maximum of the components, as it always was.
    if (!kb::plane::divisionPossible(qmMath_doubleMax(*x, *y), length)) return ERR_FAILURE;
    *x /= length;
    *y /= length;
    return 0;
}

int qmMath_normalizeVector3d(double* x, double* y, double* z) noexcept {
    if (!x || !y || !z) return ERR_FAILURE;
    const double length = std::sqrt(*x * *x + *y * *y + *z * *z);
    const double signedMax = qmMath_doubleMax(qmMath_doubleMax(*x, *y), *z);
    if (!kb::plane::divisionPossible(signedMax, length)) return ERR_FAILURE;
    *x /= length;
    *y /= length;
    *z /= length;
    return 0;
}

}  // extern "C"
