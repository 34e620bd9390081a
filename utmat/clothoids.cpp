// Clothoid points (two series and an asymptotic form) and derivatives.
#include <cmath>

#include "base/optional_output.hpp"
#include "korvelbase/utmat_clothoid.h"
#include "utmat/kernel_state.hpp"

namespace {

constexpr double kSeriesLimit = 3.4394;  // deflection beyond which the nine-term series is left

// Coefficients of the x and y series in powers u^(4k+1) and u^(4k+3), signs alternating; the
// stored values are the required ones (not recomputed reciprocals).
constexpr double kX[] = {1.0, 0.1, 0.004629629629629629, 0.00010683760683760684, 1.4589169000933706e-06,
                         1.3122532963802806e-08, 8.35070279514724e-11, 3.955430212367048e-13,
                         1.4483266034423827e-15};
constexpr double kY[] = {0.3333333333333333, 0.023809523809523808, 0.0007575757575757576,
                         1.3227513227513228e-05, 1.4503852223150468e-07, 1.0892221037148573e-09,
                         5.947792655189806e-12, 2.4668273393540367e-14, 8.032735001678841e-17};
// Cosine and sine series of u^2 and their derivatives by u.
constexpr double kC[] = {1.0, 0.5, 0.041666666666666664, 0.001388888888888889, 2.48015873015873e-5,
                         2.7557319223985894e-7, 2.08767569878681e-9, 1.147074761586444e-11,
                         4.779477791359863e-14};
constexpr double kS[] = {1.0, 0.16666666666666666, 0.008333333333333333, 0.0001984126984126984,
                         2.755731922398589e-6, 2.5052108385441717e-8, 1.6059040169012478e-10,
                         7.647164751997514e-13, 2.8114572505875943e-15};
constexpr double kDC[] = {2.0, 0.3333333333333333, 0.016666666666666666, 0.0003968253968253968,
                          5.5114638447971785e-6, 5.010421677088344e-8, 3.211809332442043e-10,
                          1.5294328932351561e-12};
constexpr double kDS[] = {2.0, 1.0, 0.08333333333333333, 0.002777777777777778, 4.96031746031746e-5,
                          5.511463844797178e-7, 4.175350443943244e-9, 2.294149425599254e-11,
                          9.558954651997821e-14};
constexpr int kShortTerms = 4;
constexpr int kLongTerms = 9;

// sum over k < terms of (-1)^k c[k] u^(first + 4k), each power taken on its own.
double series(const double* c, int terms, double u, int first) {
    double sum = 0.0;
    for (int k = 0; k < terms; ++k) {
        const double term = c[k] * std::pow(u, first + 4 * k);
        sum += k % 2 == 0 ? term : -term;
    }
    return sum;
}

struct SpiralPoint {
    double x, y, tx, ty;
};

SpiralPoint spiralPoint(double a, double s, double offset, int selector) {
    const double root2 = std::sqrt(2.0);
    const double sigma = a > 0.0 ? 1.0 : -1.0;
    const double absA = std::fabs(a);
    const double u = s / (root2 * absA);
    const double t = s * s / (2.0 * a * a);
    double x = 0.0;
    double y = 0.0;
    if (selector != UTMAT_SPIRAL_FORMULA_VELMORAN) {
        x = root2 * absA * series(kX, kShortTerms, u, 1);
        y = root2 * a * series(kY, kShortTerms, u, 3);
    } else if (s == 0.0) {
        x = y = 0.0;
    } else if (t <= kSeriesLimit) {
        x = root2 * absA * series(kX, kLongTerms, u, 1);
        y = root2 * a * series(kY, kLongTerms, u, 3);
    } else {
        const double r = a * a / s;
        const double g = (r / absA) * 0.4997 - 0.042;
        x = r * std::sin(t) + 0.88623 * absA - g * r * std::cos(t - 0.2978);
        y = 0.88623 * a - sigma * g * r * std::sin(t - 0.2978) - sigma * r * std::cos(t);
    }
    const double tx = std::cos(t);
    const double ty = sigma * std::sin(t);
    return {x + offset * sigma * std::sin(t), y - offset * std::cos(t), tx, ty};
}

}  // namespace

extern "C" {

int qmMath_calculateSpiralPointByDistanceAndOffset(double* x, double* y, double* tangentX, double* tangentY,
                                                   double A, double s, double offset, int selector) noexcept {
    if (A == 0.0) return ERR_FAILURE;
    const int chosen = selector == UTMAT_SPIRAL_FORMULA_VELMORAN ? selector : UTMAT_SPIRAL_FORMULA_TARNAK;
    const SpiralPoint p = spiralPoint(A, s, offset, chosen);
    kb::storeOptional(x, p.x);
    kb::storeOptional(y, p.y);
    kb::storeOptional(tangentX, p.tx);
    kb::storeOptional(tangentY, p.ty);
    return 0;
}

Point2d* UTMAT_CalculerPosPointArcClotAbscisse(double A, double s, double offset, Point2d* point,
                                               Point2d* tangent) noexcept {
    kb::utmat::enter();
    if (A == 0.0) {
        kb::utmat::raiseError();
        return tangent;
    }
    const SpiralPoint p = spiralPoint(A, s, offset, kb::utmat::spiralFormula());
    kb::storeOptional(point, Point2d{p.x, p.y});
    kb::storeOptional(tangent, Point2d{p.tx, p.ty});
    return tangent;
}

uint32_t vmrUtmat_CalculateSpiralPointAtDistance(double A, double s, double offset, Point2d* point,
                                                 Point2d* tangent) noexcept {
    UTMAT_CalculerPosPointArcClotAbscisse(A, s, offset, point, tangent);
    return kb::utmat::errorWord();
}

void UTMAT_CalculerDeriveePremEtSecClot(double A, double s, Point2d* first, Point2d* second) noexcept {
    if (!kb::utmat::enter(first, second)) return;
    if (A == 0.0) {
        kb::utmat::raiseError();
        return;
    }
    const double root2 = std::sqrt(2.0);
    const double u = s / (root2 * std::fabs(A));
    const int terms = kb::utmat::spiralFormula() == UTMAT_SPIRAL_FORMULA_VELMORAN ? kLongTerms : kShortTerms;
    // The second derivative's x series starts at u^3 (its constant term vanishes): one term less.
    *first = {root2 * std::fabs(A) * series(kC, terms, u, 0), root2 * A * series(kS, terms, u, 2)};
    *second = {root2 * std::fabs(A) * -series(kDC, terms - 1, u, 3), root2 * A * series(kDS, terms, u, 1)};
}

}  // extern "C"
