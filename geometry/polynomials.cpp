// Closed-form polynomial roots, constructions on vertical-curve parabolas and the length of a
// clothoid from its deflection.
#include <cmath>
#include <utility>

#include "geometry/plane_math.hpp"
#include "korvelbase/constants.h"
#include "korvelbase/conversion.h"
#include "korvelbase/qmmath.h"
#include "korvelbase/types.h"

namespace {

using kb::plane::divisionPossible;

// The exponents the cube and sixth roots are taken with (pow of a magnitude).
constexpr double kOneThird = 0.3333333333333333;
constexpr double kOneSixth = 0.16666666666666666;

// Tolerance under which a leading coefficient of the quadratics built by the parabola
// constructions counts as zero.
constexpr double kParabolaSolverTolerance = 1e-5;

constexpr int kMaxQuadraticRoots = 2;

// A coefficient that lowers the degree: within the tolerance of 0, or exactly 0 whatever the
// tolerance (a negative tolerance must not lead to a division by zero).
bool negligible(double coefficient, double tol) noexcept {
    return std::fabs(coefficient) <= tol || coefficient == 0.0;
}

// Real cube root by magnitude: |x|^(1/3), negated when x <= 0.
double signedCubeRoot(double x) noexcept {
    const double magnitude = std::pow(std::fabs(x), kOneThird);
    return x <= 0.0 ? -magnitude : magnitude;
}

int solveLinearOrQuadratic(double c0, double c1, double c2, double* roots, double tol) noexcept {
    if (negligible(c2, tol)) {
        if (negligible(c1, tol)) return 0;
        roots[0] = -c0 / c1;
        return 1;
    }
    // x^2 + 2p x + c0/c2 = 0, so x = -p +- sqrt(p^2 - c0/c2).
    const double inverse = 1.0 / c2;
    const double p = c1 * inverse / 2.0;
    const double q = p * p - c0 * inverse;
    if (q < 0.0) return 0;
    const double root = std::sqrt(q);
    roots[0] = -p - root;
    roots[1] = root - p;
    return 2;
}

void sortThreeAscending(double* roots) noexcept {
    if (roots[1] < roots[0]) std::swap(roots[0], roots[1]);
    if (roots[2] < roots[1]) std::swap(roots[1], roots[2]);
    if (roots[1] < roots[0]) std::swap(roots[0], roots[1]);
}

// One Newton step on c0 + c1 x + c2 x^2 + c3 x^3, skipped where the derivative vanishes.
double newtonStep(double x, double c0, double c1, double c2, double c3) noexcept {
    const double derivative = (3.0 * c3 * x + 2.0 * c2) * x + c1;
    if (derivative == 0.0) return x;
    return x - (((c3 * x + c2) * x + c1) * x + c0) / derivative;
}

// Cardano on the depressed cubic: with x = y - s, s = c2/(3 c3), the cubic becomes
// y^3 + 3Q y - 2R = 0 and D = R^2 + Q^3 decides between one real root (D >= 0) and three
// (D < 0, the trigonometric form).
int solveCubic(double c0, double c1, double c2, double c3, double* roots, double tol) noexcept {
    const double inverse = 1.0 / (3.0 * c3);
    const double s = inverse * c2;
    const double Q = inverse * c1 - s * s;
    const double R = -0.5 * (2.0 * s * s * s - (s * c1 - c0) / c3);
    const double D = R * R + Q * Q * Q;
    int count = 0;
    if (D >= 0.0) {
        const double sqrtD = std::sqrt(D);
        roots[0] = signedCubeRoot(R + sqrtD) + signedCubeRoot(R - sqrtD) - s;
        count = 1;
    } else {
        const double minusQCubed = -Q * Q * Q;
        const double m = std::pow(minusQCubed, kOneSixth);  // sqrt(-Q)
        double cosine = R / std::sqrt(minusQCubed);
        if (cosine > 1.0) cosine = 1.0;
        if (cosine < -1.0) cosine = -1.0;
        const double f = std::acos(cosine);
        for (int k = 0; k < 3; ++k) roots[k] = 2.0 * m * std::cos((f + 2.0 * k * dc_pi) / 3.0) - s;
        sortThreeAscending(roots);
        for (int k = 0; k < 3; ++k) {
            if (std::fabs(roots[k]) <= tol) roots[k] = 0.0;
        }
        count = 3;
    }
    for (int k = 0; k < count; ++k) roots[k] = newtonStep(roots[k], c0, c1, c2, c3);
    return count;
}

}  // namespace

extern "C" {

int qmMath_solvePolynomialEquation(const double* coefficients, double* roots,
                                   double tol) noexcept {
    if (!coefficients || !roots) return 0;
    const double c0 = coefficients[0], c1 = coefficients[1];
    const double c2 = coefficients[2], c3 = coefficients[3];
    if (negligible(c3, tol)) return solveLinearOrQuadratic(c0, c1, c2, roots, tol);
    return solveCubic(c0, c1, c2, c3, roots, tol);
}

int qmMath_parabolaTangentsToPoint(double* x1, double* y1, double* x2, double* y2, double g1,
                                   double g2, double length, double x0, double y0, double px,
                                   double py) noexcept {
    double* const xs[kMaxQuadraticRoots] = {x1, x2};
    double* const ys[kMaxQuadraticRoots] = {y1, y2};
    for (int k = 0; k < kMaxQuadraticRoots; ++k) {
        if (xs[k]) *xs[k] = 0.0;
        if (ys[k]) *ys[k] = 0.0;
    }
    if (length <= 0.0) return 0;
    if (qmUtil_equalDouble(g1, -g2, 0.0)) return 0;
    // The tangent at abscissa u, h(u) + h'(u)*(du - u) with h(u) = g1*u + r*u^2, passes through
    // (du, py - y0) exactly when r*u^2 - 2*r*du*u + (py - y0 - g1*du) = 0.
    const double r = (g2 - g1) / length;
    const double du = px - x0;
    const double coefficients[4] = {py - y0 - g1 * du, -2.0 * r * du, r, 0.0};
    double roots[3] = {0.0, 0.0, 0.0};
    const int count = qmMath_solvePolynomialEquation(coefficients, roots, kParabolaSolverTolerance);
    for (int k = 0; k < count && k < kMaxQuadraticRoots; ++k) {
        const double x = roots[k] + x0;
        if (xs[k]) *xs[k] = x;
        if (ys[k]) *ys[k] = x * (r * x + g1) + y0;  // absolute x, kept as it stands
    }
    return count;
}

int qmMath_passTangentParabolaThruPoint(double* length, double a1, double a2, double b1,
                                        double b2, double q1, double q2, double p1,
                                        double p2) noexcept {
    if (!length) return ERR_FAILURE;
    *length = 0.0;
    // Points are (level, chainage) pairs: k1 and k2 are the grades of A->V and V->B.
    if (!divisionPossible(q1 - a1, q2 - a2) || !divisionPossible(q1 - b1, q2 - b2)) return 0;
    const double k1 = (q1 - a1) / (q2 - a2);
    const double k2 = (q1 - b1) / (q2 - b2);
    if (qmUtil_equalDouble(k1, -k2, 0.0)) return 0;
    // With e the chainage of P from V and l the half length, P on the curve
    // level = k1*e + (k2 - k1)/(4l)*(e + l)^2 gives l^2 + (2e - 4(dlevel - k1*e)/(k2 - k1))*l
    // + e^2 = 0.
    const double e = p2 - q2;
    const double levelAboveTangent = p1 - q1 - k1 * e;
    const double gradeChange = k2 - k1;
    if (!divisionPossible(levelAboveTangent, gradeChange)) return 0;  // equal grades: no curve
    const double coefficients[4] = {e * e, 2.0 * e - 4.0 * levelAboveTangent / gradeChange, 1.0,
                                    0.0};
    double roots[3] = {0.0, 0.0, 0.0};
    const int count = qmMath_solvePolynomialEquation(coefficients, roots, kParabolaSolverTolerance);
    double halfLength = 0.0;
    for (int k = 0; k < count; ++k) {
        if (roots[k] >= 0.0) halfLength = roots[k];
    }
    *length = 2.0 * halfLength;
    return 0;
}

double qmMath_spiralLength(double azimuth1, double azimuth2, double r1, double r2) noexcept {
    double deflection =
        qmConversion_azimuthToDirection(azimuth2) - qmConversion_azimuthToDirection(azimuth1);
    if (deflection > dc_pi) {
        deflection -= dc_2pi;
    } else if (deflection < -dc_pi) {
        deflection += dc_2pi;
    }
    // Curvature varies linearly along a clothoid, so the deflection is the length times the
    // mean curvature (k1 + k2)/2.
    const auto curvature = [](double radius) {
        return divisionPossible(1.0, radius) ? 1.0 / radius : 0.0;
    };
    const double totalCurvature = curvature(r1) + curvature(r2);
    const double twiceDeflection = 2.0 * std::fabs(deflection);
    if (!divisionPossible(twiceDeflection, totalCurvature)) return 0.0;
    return twiceDeflection / totalCurvature;
}

}  // extern "C"
