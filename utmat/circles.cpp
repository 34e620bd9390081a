// Geometry kernel: circles and parabolic arcs (vertical curves) through points and tangent to
// lines and arcs, intersections of lines and circles, angular sectors, the direction of a
// radius and a real root of a polynomial by Laguerre's method.
//
// A parabolic arc is y = ys + (x - xs)^2 / (2R): summit S = (xs, ys), R > 0 a sag, R < 0 a
// crest, |R| the radius of curvature at the summit; its slope (grade) at x is (x - xs)/R.
// Profiles are drawn with x the chainage and y the level, so the axis is vertical and a
// vertical line is never tangent to an arc.  A line y = m*x + q is taken from a UtDroite
// a*x + b*y + c = 0 with m = -a/b and q = -c/b.
//
// The constructions through points solve in a frame translated to one of the points
// (UTMAT_ChangerRepere at angle 0), which keeps the small differences of large survey
// coordinates exact, and move the result back.  Near-equality tests use the calculation
// precision (the same rule as UTMAT_Egal, called through qmMath_doublesNearEqual so that the
// error word is not cleared part-way through an operation).
#include <cmath>
#include <complex>
#include <limits>

#include "geometry/sectors.hpp"
#include "korvelbase/compare.h"
#include "korvelbase/qmmath.h"
#include "korvelbase/utmat.h"
#include "korvelbase/utmat_circles.h"
#include "utmat/kernel_state.hpp"

namespace {

using kb::utmat::calculationPrecision;
using kb::utmat::failed;
using kb::utmat::raiseError;

// ---- tolerant tests and small helpers -------------------------------------------------------

bool nearEqual(double a, double b) noexcept {
    return qmMath_doublesNearEqual(a, b, calculationPrecision()) != 0;
}

bool nearZero(double v) noexcept { return nearEqual(v, 0.0); }

bool divisible(double numerator, double denominator) noexcept {
    return qmMath_isDivisionPossible(numerator, denominator) != 0;
}

bool isFinite(const Point2d& p) noexcept { return std::isfinite(p.x) && std::isfinite(p.y); }

// A radius that makes an arc: finite and not within the calculation precision of 0 (the rule
// of the arc through three points, applied to every arc construction).
bool usableRadius(double r) noexcept { return std::isfinite(r) && !nearZero(r); }

Point2d plus(const Point2d& p, const Point2d& origin) noexcept {
    return {p.x + origin.x, p.y + origin.y};
}

// p in the frame translated to origin; false when the frame change failed (error word as the
// frame change left it).
bool toLocal(const Point2d& p, const Point2d& origin, Point2d& local) noexcept {
    UTMAT_ChangerRepere(&p, &origin, 0.0, &local);
    return !failed();
}

// ---- parabolic arcs -------------------------------------------------------------------------

// Height of the arc (S, R) at abscissa x.
double arcHeight(const Point2d& s, double r, double x) noexcept {
    const double u = x - s.x;
    return s.y + u * u / (2.0 * r);
}

// The point of the arc (S, R) where its slope is m: x = xs + R*m.
Point2d arcPointOfSlope(const Point2d& s, double r, double m) noexcept {
    return {s.x + r * m, s.y + r * m * m / 2.0};
}

// A non-vertical line as y = slope*x + intercept.
struct Grade {
    double slope;
    double intercept;
};

// True when the line has a normal (a, b) not zero; otherwise the error is raised.
bool hasNormal(const UtDroite& d) noexcept {
    if (d.a != 0.0 || d.b != 0.0) return true;
    raiseError();
    return false;
}

// The line as a grade; false (no error) for a vertical line, which no arc can touch.
bool asGrade(const UtDroite& d, Grade& g) noexcept {
    if (!divisible(d.a, d.b) || !divisible(d.c, d.b)) return false;
    g = {-d.a / d.b, -d.c / d.b};
    return std::isfinite(g.slope) && std::isfinite(g.intercept);
}

// ---- Laguerre's method ----------------------------------------------------------------------

using Complex = std::complex<double>;

constexpr int kMaxLaguerreDegree = UTMAT_LAGUERRE_MAX_DEGREE;
// Iterations of one root search: kLaguerreCycles cycles of kStepsPerCycle steps, the last step
// of each cycle shortened by the next fraction to break a limit cycle.
constexpr int kStepsPerCycle = 10;
constexpr int kLaguerreCycles = 8;
constexpr double kCycleBreakingFractions[kLaguerreCycles] = {0.5, 0.25, 0.75, 0.13,
                                                             0.38, 0.62, 0.88, 1.0};
constexpr double kMachineEpsilon = std::numeric_limits<double>::epsilon();
// A converged root is real when its imaginary part is below this fraction of max(1, |real|).
constexpr double kRealRootImaginaryFraction = 1e-7;
// Newton steps that polish a real root on the undeflated polynomial.
constexpr int kPolishSteps = 8;

struct Polynomial {
    int degree = 0;
    double c[kMaxLaguerreDegree + 1] = {};  // c[k] multiplies x^k
};

// Laguerre's iteration from x on a polynomial of degree >= 1 with c[degree] != 0.  True when
// it converged (the value vanished within its rounding bound, or the step stopped changing x).
bool laguerre(const Polynomial& p, Complex& x) noexcept {
    const int m = p.degree;
    const double md = static_cast<double>(m);
    for (int iteration = 1; iteration <= kStepsPerCycle * kLaguerreCycles; ++iteration) {
        // Horner: value b, first derivative d, half the second derivative f.
        Complex b = p.c[m], d = 0.0, f = 0.0;
        const double magnitude = std::abs(x);
        double bound = std::abs(b);
        for (int j = m - 1; j >= 0; --j) {
            f = x * f + d;
            d = x * d + b;
            b = x * b + p.c[j];
            bound = std::abs(b) + magnitude * bound;
        }
        if (!std::isfinite(bound)) return false;  // the polynomial overflows at x
        if (std::abs(b) <= bound * kMachineEpsilon) return true;
        const Complex g = d / b;
        const Complex g2 = g * g;
        const Complex h = g2 - 2.0 * f / b;
        const Complex root = std::sqrt((md - 1.0) * (md * h - g2));
        Complex denominator = g + root;
        const Complex other = g - root;
        if (std::abs(denominator) < std::abs(other)) denominator = other;
        const Complex step = std::abs(denominator) > 0.0
                                 ? md / denominator
                                 : std::polar(1.0 + magnitude, static_cast<double>(iteration));
        const Complex next = x - step;
        if (next == x) return true;
        if (iteration % kStepsPerCycle != 0) {
            x = next;
        } else {
            x -= kCycleBreakingFractions[iteration / kStepsPerCycle - 1] * step;
        }
        if (!std::isfinite(x.real()) || !std::isfinite(x.imag())) return false;
    }
    return false;
}

// p divided by x^2 + s*x + t (the factor of a conjugate pair); the remainder is dropped.
void deflateByQuadratic(Polynomial& p, double s, double t) noexcept {
    Polynomial q;
    q.degree = p.degree - 2;
    for (int k = q.degree; k >= 0; --k) {
        const double above = k + 1 <= q.degree ? q.c[k + 1] : 0.0;
        const double twoAbove = k + 2 <= q.degree ? q.c[k + 2] : 0.0;
        q.c[k] = p.c[k + 2] - s * above - t * twoAbove;
    }
    p = q;
}

double valueAt(const Polynomial& p, double x, double* derivative) noexcept {
    double value = p.c[p.degree], slope = 0.0;
    for (int j = p.degree - 1; j >= 0; --j) {
        slope = slope * x + value;
        value = value * x + p.c[j];
    }
    *derivative = slope;
    return value;
}

// Newton steps on the original polynomial, keeping the best value seen.
double polishRealRoot(const Polynomial& p, double x) noexcept {
    double slope = 0.0;
    double best = x, bestValue = std::fabs(valueAt(p, x, &slope));
    for (int k = 0; k < kPolishSteps && bestValue > 0.0 && slope != 0.0; ++k) {
        x -= valueAt(p, x, &slope) / slope;
        if (!std::isfinite(x)) break;
        const double value = std::fabs(valueAt(p, x, &slope));
        if (value < bestValue) {
            best = x;
            bestValue = value;
        }
    }
    return best;
}

bool isReal(const Complex& z) noexcept {
    return std::fabs(z.imag()) <= kRealRootImaginaryFraction * std::fmax(1.0, std::fabs(z.real()));
}

// A real root of p (degree >= 1, leading coefficient non-zero) searched from start: Laguerre's
// iteration; a complex root found instead is divided out with its conjugate and the search
// starts again on the quotient.
bool findRealRoot(const Polynomial& original, double start, double& root) noexcept {
    Polynomial p = original;
    while (p.degree >= 1) {
        Complex z = start;
        if (!laguerre(p, z)) return false;
        if (isReal(z)) {
            root = polishRealRoot(original, z.real());
            double slope = 0.0;
            return std::isfinite(valueAt(original, root, &slope));
        }
        if (p.degree < 2) return false;
        deflateByQuadratic(p, -2.0 * z.real(), std::norm(z));
    }
    return false;
}

// ---- sectors --------------------------------------------------------------------------------

using kb::sectors::Sector;

// Both sectors in canonical form at the calculation precision; false (error raised) for a
// non-finite value.
bool kernelSectors(double start1, double sweep1, double start2, double sweep2, Sector& a,
                   Sector& b) noexcept {
    if (kb::sectors::makeTwoSectors(start1, sweep1, start2, sweep2, calculationPrecision(), a, b)) {
        return true;
    }
    raiseError();
    return false;
}

void combineKernelSectors(kb::sectors::Operation operation, double start1, double sweep1,
                          double start2, double sweep2, double* starts, double* sweeps,
                          int* count) noexcept {
    if (!kb::utmat::enter(starts, sweeps, count)) return;
    *count = 0;
    Sector a{}, b{};
    if (!kernelSectors(start1, sweep1, start2, sweep2, a, b)) return;
    kb::sectors::storePair(operation(a, b, calculationPrecision(), nullptr), starts, sweeps, count);
}

// ---- intersections --------------------------------------------------------------------------

bool usableCircleRadius(double r) noexcept { return std::isfinite(r) && r >= 0.0; }

}  // namespace

using kb::utmat::enter;

extern "C" {

// ---- circle and arcs through points -------------------------------------------------------

void UTMAT_CalculerCerPs3Pt(const Point2d* p0, const Point2d* p1, const Point2d* p2,
                            Point2d* centre, double* radius, int* found) noexcept {
    if (!enter(p0, p1, p2, centre, radius, found)) return;
    *found = 0;
    Point2d l1{}, l2{};
    if (!toLocal(*p1, *p0, l1) || !toLocal(*p2, *p0, l2)) return;
    const double x1 = l1.x, y1 = l1.y, x2 = l2.x, y2 = l2.y;
    // The centre (X, Y) is equidistant from the origin (P0) and P1 (e1) and from P1 and P2 (e2):
    // e1: 2*x1*X + 2*y1*Y - k1 = 0, e2: 2*(x2 - x1)*X + 2*(y2 - y1)*Y + k2 = 0.
    const double twoX1 = 2.0 * x1, twoY1 = 2.0 * y1;
    const double twoDx = 2.0 * (x2 - x1), twoDy = 2.0 * (y2 - y1);
    const double k1 = x1 * x1 + y1 * y1;
    const double k2 = k1 - x2 * x2 - y2 * y2;
    double cx = 0.0, cy = 0.0;
    if (!nearZero(twoX1)) {
        if (nearEqual(twoDy * twoX1, twoDx * twoY1)) return;  // collinear points
        cy = (twoDx * (-k1) - k2 * twoX1) / (twoDy * twoX1 - twoDx * twoY1);
        cx = -(twoY1 * cy - k1) / twoX1;
    } else {
        // P1 (nearly) level in x with P0: e1 gives Y alone, with the x1 terms dropped.
        if (nearZero(twoDx) || nearZero(twoY1)) return;
        cy = k1 / twoY1;
        cx = (twoDy * (-k1) - k2 * twoY1) / (twoDx * twoY1);
    }
    *radius = std::sqrt((x2 - cx) * (x2 - cx) + (y2 - cy) * (y2 - cy));
    *found = 1;
    *centre = plus({cx, cy}, *p0);
}

void UTMAT_CalculerArcParPs3Pt(const Point2d* p1, const Point2d* p0, const Point2d* p2,
                               Point2d* summit, double* radius, int* found) noexcept {
    if (!enter(p1, p0, p2, summit, radius, found)) return;
    *found = 0;
    *summit = {0.0, 0.0};
    *radius = 0.0;
    Point2d l1{}, l2{};
    if (!toLocal(*p1, *p0, l1) || !toLocal(*p2, *p0, l2)) return;
    const double x1 = l1.x, y1 = l1.y, x2 = l2.x, y2 = l2.y;
    // y = a*x^2 + b*x through the origin, P1 and P2 by Cramer's rule; R = 1/(2a).
    const double det = 4.0 * (y1 * (x1 - x2) - x1 * (y1 - y2));
    if (nearZero(det)) return;  // collinear points
    const double r = 2.0 * (x1 * x1 * (x1 - x2) - (x1 * x1 - x2 * x2) * x1) / det;
    if (nearZero(r)) return;
    const double xs = 2.0 * ((x1 * x1 - x2 * x2) * y1 - x1 * x1 * (y1 - y2)) / det;
    const double ys = y2 - (x2 - xs) * (x2 - xs) / r * 0.5;
    *summit = plus({xs, ys}, *p0);
    *radius = r;
    *found = 1;
}

void UTMAT_CalculerArcParPs2PtRayon(const Point2d* p1, const Point2d* p0, double radius,
                                    Point2d* summit, int* found) noexcept {
    if (!enter(p1, p0, summit, found)) return;
    *found = 0;
    *summit = {0.0, 0.0};
    Point2d l1{};
    if (!toLocal(*p1, *p0, l1)) return;
    const double x1 = l1.x, y1 = l1.y;
    if (!divisible(y1, x1)) return;  // vertical chord
    // The chord's slope y1/x1 is the arc's slope at its middle x1/2 = xs + R*y1/x1.
    const double xs = x1 / 2.0 - (y1 / x1) * radius;
    const double h = (x1 - xs) * (x1 - xs) / 2.0;
    if (!divisible(h, radius)) return;
    *summit = plus({xs, y1 - h / radius}, *p0);
    *found = 1;
}

void UTMAT_CalculerArcParPs1PtSommet(const Point2d* summit, const Point2d* p, double* radius,
                                     int* found) noexcept {
    if (!enter(summit, p, radius, found)) return;
    *found = 0;
    *radius = 0.0;
    Point2d s{};  // the summit seen from P
    if (!toLocal(*summit, *p, s)) return;
    const double h = s.x * s.x / 2.0;
    if (!divisible(h, -s.y)) return;  // P level with the summit
    *radius = h / -s.y;
    *found = 1;
}

// ---- arcs and lines by tangency -----------------------------------------------------------

void UTMAT_CalculerArcParTg1DteSommet(const UtDroite* line, const Point2d* summit, double* radius,
                                      Point2d* tangency, int* found) noexcept {
    if (!enter(line, summit, radius, tangency, found)) return;
    *found = 0;
    if (!hasNormal(*line)) return;
    Grade g{};
    if (!asGrade(*line, g)) return;
    // k = height of the line above the summit at xs.  The arc touches the line where
    // x^2/(2R) = m*x + k has a double root (x from the summit): m^2 + 2k/R = 0.
    const double k = g.slope * summit->x + g.intercept - summit->y;
    if (!divisible(2.0 * k, g.slope * g.slope)) return;  // horizontal line
    const double r = -2.0 * k / (g.slope * g.slope);
    if (!usableRadius(r)) return;  // summit on the line
    const Point2d touch = arcPointOfSlope(*summit, r, g.slope);
    if (!isFinite(touch)) return;
    *radius = r;
    *tangency = touch;
    *found = 1;
}

void UTMAT_CalculerArcParTg2DteRayon(const UtDroite* line1, const UtDroite* line2, double radius,
                                     Point2d* summit, Point2d* tangencies, int* found) noexcept {
    if (!enter(line1, line2, summit, tangencies, found)) return;
    *found = 0;
    if (!hasNormal(*line1) || !hasNormal(*line2)) return;
    Grade g1{}, g2{};
    if (!asGrade(*line1, g1) || !asGrade(*line2, g2) || !usableRadius(radius)) return;
    // The arc of radius R touches y = m*x + q exactly when its summit lies R*m^2/2 above the
    // line at xs: ys = m*xs + q + R*m^2/2.  Two lines give two linear equations in (xs, ys).
    const double numerator =
        g2.intercept - g1.intercept + radius * (g2.slope * g2.slope - g1.slope * g1.slope) / 2.0;
    const double slopeGap = g1.slope - g2.slope;
    if (!divisible(numerator, slopeGap)) return;  // parallel grades
    const double xs = numerator / slopeGap;
    const Point2d s{xs, g1.slope * xs + g1.intercept + radius * g1.slope * g1.slope / 2.0};
    const Point2d t1 = arcPointOfSlope(s, radius, g1.slope);
    const Point2d t2 = arcPointOfSlope(s, radius, g2.slope);
    if (!isFinite(s) || !isFinite(t1) || !isFinite(t2)) return;
    *summit = s;
    tangencies[0] = t1;
    tangencies[1] = t2;
    *found = 1;
}

void UTMAT_CalculerArcParTg1ArcParSommet(const Point2d* summit1, double radius1,
                                         const Point2d* summit2, double* radius2,
                                         Point2d* tangency, int* found) noexcept {
    if (!enter(summit1, summit2, radius2, tangency, found)) return;
    *found = 0;
    if (!usableRadius(radius1)) return;
    // From summit 1: d, e = summit 2's offsets, u = the tangency's.  Equal slopes give
    // R2 = R1*(u - d)/u, and equal heights then reduce to u*d/(2*R1) = e.
    const double d = summit2->x - summit1->x;
    const double e = summit2->y - summit1->y;
    if (!divisible(2.0 * radius1 * e, d)) return;  // summits on one vertical
    const double u = 2.0 * radius1 * e / d;
    if (!divisible(radius1 * (u - d), u)) return;  // summits level: touching only at summit 1
    const double r2 = radius1 * (u - d) / u;
    if (!usableRadius(r2)) return;  // summit 2 on arc 1
    const Point2d touch{summit1->x + u, arcHeight(*summit1, radius1, summit1->x + u)};
    if (!isFinite(touch)) return;
    *radius2 = r2;
    *tangency = touch;
    *found = 1;
}

void UTMAT_CalculerDroiteTg1ArcParPente(const Point2d* summit, double radius, double slope,
                                        UtDroite* line, Point2d* tangency, int* found) noexcept {
    if (!enter(summit, line, tangency, found)) return;
    *found = 0;
    if (!usableRadius(radius) || !std::isfinite(slope)) return;
    const Point2d touch = arcPointOfSlope(*summit, radius, slope);
    if (!isFinite(touch)) return;
    // Travel towards increasing x: the positive side is the right, below the line.
    const Point2d direction{1.0, slope};
    UtDroite tangent{};
    UTMAT_CalculerDroitePtVecteur(&touch, &direction, &tangent);
    if (failed()) return;
    *line = tangent;
    *tangency = touch;
    *found = 1;
}

// ---- angular sectors ------------------------------------------------------------------------

int UTMAT_Classer2Secteurs(double start1, double sweep1, double start2, double sweep2) noexcept {
    enter();
    Sector a{}, b{};
    if (!kernelSectors(start1, sweep1, start2, sweep2, a, b)) return 0;
    return kb::sectors::classify(a, b, calculationPrecision());
}

void UTMAT_CalculerProduitSecteur(double start1, double sweep1, double start2, double sweep2,
                                  double* starts, double* sweeps, int* count) noexcept {
    combineKernelSectors(kb::sectors::product, start1, sweep1, start2, sweep2, starts, sweeps,
                         count);
}

void UTMAT_CalculerSommeSecteur(double start1, double sweep1, double start2, double sweep2,
                                double* starts, double* sweeps, int* count) noexcept {
    combineKernelSectors(kb::sectors::sum, start1, sweep1, start2, sweep2, starts, sweeps, count);
}

int UTMAT_ComparerAngleASecteurAngulaire(double angle, double start, double sweep) noexcept {
    enter();
    const double tol = calculationPrecision();
    Sector sector{};
    if (!std::isfinite(angle) || !kb::sectors::toleranceUsable(tol) ||
        !kb::sectors::makeSector(start, sweep, tol, sector)) {
        raiseError();
        return 0;
    }
    return kb::sectors::compareDirection(angle, sector, tol);
}

// ---- intersections and the direction of a radius --------------------------------------------

void UTMAT_CalculerIntersectionDroiteCercle(const UtDroite* line, const Point2d* centre,
                                            double radius, Point2d* points, int* count) noexcept {
    if (!enter(line, centre, points, count)) return;
    *count = 0;
    if (!hasNormal(*line)) return;
    if (!usableCircleRadius(radius)) {
        raiseError();
        return;
    }
    Point2d ahead{}, behind{};
    int n = 0;
    if (qmMath_calculateIntersectionLineCircle2d(&ahead.x, &ahead.y, &behind.x, &behind.y, &n,
                                                 line->a, line->b, line->c, centre->x, centre->y,
                                                 radius, calculationPrecision()) != 0) {
        raiseError();
        return;
    }
    // In the order met when travelling along the line's direction (-b, a).
    if (n == 2) {
        points[0] = behind;
        points[1] = ahead;
    } else if (n == 1) {
        points[0] = ahead;
    }
    *count = n;
}

void UTMAT_CalculerIntersection2Cercle(const Point2d* centre1, double radius1,
                                       const Point2d* centre2, double radius2, Point2d* points,
                                       int* count) noexcept {
    if (!enter(centre1, centre2, points, count)) return;
    *count = 0;
    if (!usableCircleRadius(radius1) || !usableCircleRadius(radius2)) {
        raiseError();
        return;
    }
    Point2d left{}, right{};
    int n = 0;
    const int status = qmMath_calculateIntersectionCircleCircle2d(
        &left.x, &left.y, &right.x, &right.y, &n, centre1->x, centre1->y, radius1, centre2->x,
        centre2->y, radius2, calculationPrecision());
    // Any status but 0 is one circle given twice: every point is common, none can be listed.
    if (status != 0) {
        raiseError();
        return;
    }
    if (n >= 1) points[0] = left;
    if (n == 2) points[1] = right;
    *count = n;
}

double UTMAT_CalculerAngleRayonPtCentre(const Point2d* p, const Point2d* centre) noexcept {
    if (!enter(p, centre)) return 0.0;
    const double dx = p->x - centre->x, dy = p->y - centre->y;
    if (dx == 0.0 && dy == 0.0) {
        raiseError();  // no radius: the point is the centre
        return 0.0;
    }
    return kb::sectors::canonicalDirection(std::atan2(dy, dx));
}

// ---- polynomial root ------------------------------------------------------------------------

void UTMAT_CalculerRacinePolynomeLaguerre(const double* coefficients, int degree, double start,
                                          double* root, int* found) noexcept {
    if (!enter(coefficients, root, found)) return;
    *found = 0;
    if (degree < 0 || degree > kMaxLaguerreDegree || !std::isfinite(start)) {
        raiseError();
        return;
    }
    Polynomial p;
    p.degree = degree;
    for (int k = 0; k <= degree; ++k) {
        if (!std::isfinite(coefficients[k])) {
            raiseError();
            return;
        }
        p.c[k] = coefficients[k];
    }
    while (p.degree > 0 && p.c[p.degree] == 0.0) --p.degree;  // true degree
    if (p.degree < 1) return;  // a constant: no root to find
    double x = 0.0;
    if (!findRealRoot(p, start, x)) return;
    *root = x;
    *found = 1;
}

}  // extern "C"
