// Clothoid points (two series and an asymptotic form), derivatives, the relations between
// clothoid quantities and the tangent differences of offset curves.
#include <cmath>

#include "base/optional_output.hpp"
#include "korvelbase/qmmath.h"
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


// ---------------------------------------------------------------------------------------------
// Relations between clothoid quantities: A (parameter), L (length), R (radius at L), t (deflection
// at L) and the shift of the circle.

bool nearZero(double value) { return qmMath_doublesNearEqual(value, 0.0, kb::utmat::calculationPrecision()) != 0; }

// The outcome of one relation: an unknown code, a refusal (an input that cannot give the
// quantity), or a value.
struct Relation {
    enum Kind { unknown, refused, accepted } kind;
    double value;
};

constexpr Relation kUnknown{Relation::unknown, 0.0};
constexpr Relation kRefused{Relation::refused, 0.0};
Relation accept(double value) { return {Relation::accepted, value}; }

// The shift of the circle of curvature at L (radius R) from the clothoid's start tangent: the
// centre of curvature is the offset point at L, R to the left of a left-turning clothoid.
double circleShift(double a, double length, double radius, int selector) {
    const SpiralPoint centre = spiralPoint(a, length, -radius, selector);
    return std::fabs(centre.y - radius);
}

// The shift divided by the quantity it is given with.  The clothoid has one shape: scaled by A,
// every length (L, R, the shift) scales with it, so the ratio depends on the deflection alone and
// is computed on the clothoid A = 1.
enum class ShiftScale { parameter, length, radius };

double shiftRatio(double deflection, ShiftScale scale, int selector) {
    if (deflection <= 0.0) return 0.0;
    const double length = std::sqrt(2.0 * deflection);  // A = 1: L = sqrt(2 t), R = 1 / L
    const double radius = 1.0 / length;
    const double shift = circleShift(1.0, length, radius, selector);
    switch (scale) {
        case ShiftScale::parameter: return shift;
        case ShiftScale::length: return shift / length;
        case ShiftScale::radius: return shift / radius;
    }
    return shift;
}

// Inversions search deflections up to half a turn: far beyond any transition curve, and short
// of where the four-term series (near t = 3.43) stops giving a shift that grows with t.
constexpr double kInversionLimit = 3.14159265358979323846;
// Halvings of the deflection interval: double precision is exhausted after about 60.
constexpr int kMaxHalvings = 200;

// The deflection whose shift ratio is `target`, by bisection (the ratio grows monotonically
// with the deflection on the searched interval); refused when no deflection there reaches it.
Relation deflectionFromShiftRatio(double target, ShiftScale scale, int selector) {
    if (!(target >= 0.0) || target > shiftRatio(kInversionLimit, scale, selector)) return kRefused;
    double lo = 0.0;
    double hi = kInversionLimit;
    for (int i = 0; i < kMaxHalvings; ++i) {
        const double mid = 0.5 * (lo + hi);
        if (mid <= lo || mid >= hi) break;
        (shiftRatio(mid, scale, selector) < target ? lo : hi) = mid;
    }
    return accept(0.5 * (lo + hi));
}

// The quantity each inverse relation names, from the deflection found and its given quantity.
enum class Wanted { parameterFromLength, lengthFromParameter, lengthFromRadius, radiusFromParameter,
                    deflection };

Relation invertShift(double given, double shift, ShiftScale scale, Wanted wanted, int selector) {
    const Relation t = deflectionFromShiftRatio(shift / given, scale, selector);
    if (t.kind != Relation::accepted) return t;
    const double root = std::sqrt(2.0 * t.value);
    switch (wanted) {
        case Wanted::parameterFromLength: return accept(given / root);
        case Wanted::lengthFromParameter: return accept(given * root);
        case Wanted::lengthFromRadius: return accept(2.0 * given * t.value);
        case Wanted::radiusFromParameter: return accept(given / root);
        case Wanted::deflection: return t;
    }
    return kRefused;
}

Relation relate(int code, double p1, double p2, int selector);

// Codes 17 to 19: the shift, from A and L, R or the deflection, through the direct relations.
Relation shiftFrom(int code, double a, double p2, int selector) {
    Relation length{}, radius{};
    switch (code) {
        case 17: length = accept(p2); radius = relate(11, a, p2, selector); break;
        case 18: length = relate(7, a, p2, selector); radius = accept(p2); break;
        default: length = relate(8, a, p2, selector); radius = relate(12, a, p2, selector); break;
    }
    if (length.kind != Relation::accepted || radius.kind != Relation::accepted) return kRefused;
    return accept(circleShift(a, length.value, radius.value, selector));
}

bool knownCode(int code) { return code >= 1 && code <= 19 && code != 10; }
// A, L from R and t need both inputs; the other relations refuse only a zero first input.
bool requiresSecond(int code) { return code == 1 || code == 2 || code == 4; }
// Where a zero second input gives a zero (or, for a radius, an infinite) result, the output is 0;
// L from A and t and t from A and L give their natural 0.
bool zeroFromZeroSecond(int code) { return !requiresSecond(code) && code != 8 && code != 14; }

// One relation on |p1|, |p2|.  A refusal is judged before the "output 0" rule.
Relation relate(int code, double p1, double p2, int selector) {
    p1 = std::fabs(p1);
    p2 = std::fabs(p2);
    if (!knownCode(code)) return kUnknown;
    if (nearZero(p1) || (requiresSecond(code) && nearZero(p2))) return kRefused;
    if (zeroFromZeroSecond(code) && nearZero(p2)) return accept(0.0);
    switch (code) {
        case 1: return accept(std::sqrt(p1 * p2));          // A from R and L
        case 2: return accept(p1 / std::sqrt(2.0 * p2));    // A from L and t
        case 3: return invertShift(p1, p2, ShiftScale::length, Wanted::parameterFromLength, selector);
        case 4: return accept(p1 * std::sqrt(2.0 * p2));    // A from R and t
        case 5: return invertShift(p1, p2, ShiftScale::parameter, Wanted::lengthFromParameter, selector);
        case 6: return invertShift(p1, p2, ShiftScale::radius, Wanted::lengthFromRadius, selector);
        case 7:                                             // L from A and R
        case 11: return accept(p1 * p1 / p2);               // R from A and L
        case 8: return accept(p1 * std::sqrt(2.0 * p2));    // L from A and t
        case 9: return invertShift(p1, p2, ShiftScale::parameter, Wanted::radiusFromParameter, selector);
        case 12: return accept(p1 / std::sqrt(2.0 * p2));   // R from A and t
        case 13: return invertShift(p1, p2, ShiftScale::parameter, Wanted::deflection, selector);
        case 14: return accept(p2 * p2 / (2.0 * p1 * p1));  // t from A and L
        case 15: return accept(p1 * p1 / (2.0 * p2 * p2));  // t from A and R
        case 16: return invertShift(p1, p2, ShiftScale::radius, Wanted::deflection, selector);
        default: return shiftFrom(code, p1, p2, selector);  // 17, 18, 19
    }
}

// Relation entry shared by both exported forms: output and valid cleared, then the relation.
Relation relationEntry(int code, double p1, double p2, double* value, int* valid) {
    *value = 0.0;
    kb::storeOptional(valid, 0);
    const Relation r = relate(code, p1, p2, kb::utmat::spiralFormula());
    if (r.kind == Relation::unknown) {
        kb::utmat::raiseError();
    } else if (r.kind == Relation::accepted) {
        *value = r.value;
        kb::storeOptional(valid, 1);
    }
    return r;
}

// ---------------------------------------------------------------------------------------------
// Tangent of an offset curve reached by the same distance: an offset curve at d (positive to the
// right) of a curve of signed curvature k (positive turning left) runs at speed 1 + d k, so the
// same distance travelled on it covers less (outside) or more (inside) of the base curve.

// Base distance sigma covered when the offset of a curve of curvature k(sigma) = sigma * rate has
// run s: sigma + d rate sigma^2 / 2 = s, in the form that keeps its precision for small d.
// False when the offset curve reaches its cusp (speed 0) before s.
bool baseDistanceOnClothoidOffset(double s, double offset, double rate, double& sigma) {
    const double c = 0.5 * offset * rate;
    const double discriminant = 1.0 + 4.0 * c * s;
    if (!(discriminant > 0.0)) return false;
    sigma = 2.0 * s / (1.0 + std::sqrt(discriminant));
    return true;
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

void UTMAT_CalculerParametreClot(int code, double p1, double p2, double* value) noexcept {
    if (!kb::utmat::enter(value)) return;
    if (relationEntry(code, p1, p2, value, nullptr).kind == Relation::refused) kb::utmat::raiseError();
}

void UTMAT_CalculerParametreClotValide(int code, double p1, double p2, double* value, int* valid) noexcept {
    if (!kb::utmat::enter(value, valid)) return;
    relationEntry(code, p1, p2, value, valid);
}

void UTMAT_CalculerDifferenceTgArcCerTgOffCer(double radius, double s, double offset,
                                              double* difference) noexcept {
    if (!kb::utmat::enter(difference)) return;
    *difference = 0.0;
    if (radius == 0.0) return;  // a straight: its offset runs parallel
    const double offsetRadius = radius + offset;
    if (!(offsetRadius / radius > 0.0)) {
        kb::utmat::raiseError();  // the offset passes the centre: no offset arc
        return;
    }
    *difference = s / radius - s / offsetRadius;
}

void UTMAT_CalculerDifferenceTgArcClotTgOffClt(double A, double s, double offset, double* difference) noexcept {
    if (!kb::utmat::enter(difference)) return;
    *difference = 0.0;
    double sigma = 0.0;
    if (A == 0.0 || !baseDistanceOnClothoidOffset(s, offset, 1.0 / (A * std::fabs(A)), sigma)) {
        kb::utmat::raiseError();
        return;
    }
    const double sign = A > 0.0 ? 1.0 : -1.0;
    *difference = sign * (s * s - sigma * sigma) / (2.0 * A * A);
}

}  // extern "C"
