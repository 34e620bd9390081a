// Geometry kernel: factorials, the (deliberately guarded) linear interpolation, the
// second-degree equation and the 4x4 matrix helpers.
#include <cmath>
#include <cstdint>

#include "korvelbase/compare.h"
#include "korvelbase/utmat.h"
#include "utmat/kernel_state.hpp"
#include "utmat/vector_math.hpp"

namespace {

using kb::utmat::raiseError;
using kb::utmat::refuseNull;
using kb::utmat::refuseNull;

constexpr int kMatrixOrder = 4;
// Relative rounding error assumed on each coefficient of the quadratic when judging whether
// its discriminant is zero.
constexpr double kCoefficientRounding = 1e-12;

// Product of the integers first..last (first <= last) as a double.  Stops as soon as the
// result is settled (a zero factor, or an infinite magnitude whose sign the remaining factors
// can only flip), so huge ranges cost no more than a few hundred multiplications.
double productOfIntegers(std::int64_t first, std::int64_t last) noexcept {
    if (first <= 0 && last >= 0) return 0.0;
    double product = 1.0;
    for (std::int64_t k = first; k <= last; ++k) {
        product *= static_cast<double>(k);
        if (std::isinf(product)) {
            // Remaining factors share the sign of k (the range does not cross zero).
            const bool oddNegativesLeft = k < 0 && (last - k) % 2 != 0;
            return oddNegativesLeft ? -product : product;
        }
    }
    return product;
}

// Bound of the rounding error of b^2 - 4*a*c when each coefficient carries a relative error
// of kCoefficientRounding.
double discriminantRoundingBound(double a, double b, double c) noexcept {
    const double ea = std::fabs(a * kCoefficientRounding);
    const double eb = std::fabs(b * kCoefficientRounding);
    const double ec = std::fabs(c * kCoefficientRounding);
    return 4.0 * (std::fabs(c) * ea + (std::fabs(a) + ea) * ec) + (2.0 * std::fabs(b) + eb) * eb;
}

// Writes the real roots of a*x^2 + b*x + c (a != 0) and returns their count.  The pair
// -q/(2a), c/(a * first) avoids the cancellation of -b + sqrt(disc) when b^2 >> 4ac.
int solveQuadratic(double a, double b, double c, double* roots) noexcept {
    const double disc = b * b - 4.0 * a * c;
    const double bound = discriminantRoundingBound(a, b, c);
    if (qmMath_doublesNearEqual(disc, 0.0, bound)) {
        roots[0] = -(b / (2.0 * a));
        return 1;
    }
    if (!qmUtil_greaterDouble(disc, 0.0, bound)) return 0;
    const double root = std::sqrt(disc);
    const double q = qmUtil_greaterOrEqualDouble(b, 0.0, bound) ? b + root : b - root;
    roots[0] = -q / (2.0 * a);
    roots[1] = c / (a * roots[0]);
    return 2;
}

double& at(UtMatrice4D& m, int row, int column) noexcept { return m.m[row * kMatrixOrder + column]; }

double at(const UtMatrice4D& m, int row, int column) noexcept {
    return m.m[row * kMatrixOrder + column];
}

}  // namespace

using kb::utmat::enter;

extern "C" {

// ---- numbers ------------------------------------------------------------------------------

double UTMAT_FactorielleDivision(int n, int m) noexcept {
    enter();
    if (m > n) {
        raiseError();
        return 1.0;
    }
    if (m == n) return 1.0;
    return productOfIntegers(static_cast<std::int64_t>(m) + 1, n);
}

double UTMAT_DFactorielle(int n) noexcept {
    enter();
    if (n < 1) return 1.0;
    return productOfIntegers(1, n);
}

double UTMAT_CalculerInterpolationLineaire(double t, double T, double y0, double y1) noexcept {
    enter();
    // Kept as it stands: the test is the reverse of a guard against dividing by a small T, so
    // every ordinary T returns y0 and only a T tiny against t interpolates.
    if (t * kb::utmat::kNearZeroFactor < std::fabs(T)) return y0;
    return (t / T) * (y1 - y0) + y0;
}

void UTMAT_ResoudreEquation2Degre(double a, double b, double c, double /*unused*/, double* roots,
                                  int* count) noexcept {
    if (!enter(count)) return;
    *count = 0;
    if (refuseNull(roots)) return;
    if (a == 0.0) {
        if (b == 0.0) return;
        roots[0] = -(c / b);
        *count = 1;
        return;
    }
    *count = solveQuadratic(a, b, c, roots);
}

// ---- 4x4 matrices -------------------------------------------------------------------------

void UTMAT_CalculerProduitMatrice4D(const UtMatrice4D* a, const UtMatrice4D* b,
                                    UtMatrice4D* out) noexcept {
    if (!enter(a, b, out)) return;
    UtMatrice4D product;  // built apart, so that out may be a or b
    for (int i = 0; i < kMatrixOrder; ++i) {
        for (int j = 0; j < kMatrixOrder; ++j) {
            double sum = 0.0;
            for (int k = 0; k < kMatrixOrder; ++k) sum += at(*a, i, k) * at(*b, k, j);
            at(product, i, j) = sum;
        }
    }
    *out = product;
}

void UTMAT_CopierMatrice4D(const UtMatrice4D* source, UtMatrice4D* destination) noexcept {
    if (!enter(source, destination)) return;
    *destination = *source;
}

void UTMAT_RecupererMatriceIdentite4D(UtMatrice4D* out) noexcept {
    if (!enter(out)) return;
    for (int i = 0; i < kMatrixOrder; ++i) {
        for (int j = 0; j < kMatrixOrder; ++j) at(*out, i, j) = i == j ? 1.0 : 0.0;
    }
}

void UTMAT_TransformerPointParMatrice4D(const double* p, const UtMatrice4D* m, double* out) noexcept {
    if (!enter(p, m, out)) return;
    double result[kMatrixOrder];  // built apart, so that out may be p
    for (int i = 0; i < kMatrixOrder; ++i) {
        double sum = 0.0;
        for (int j = 0; j < kMatrixOrder; ++j) sum += at(*m, i, j) * p[j];
        result[i] = sum;
    }
    for (int i = 0; i < kMatrixOrder; ++i) out[i] = result[i];
}

}  // extern "C"
