// Geometry kernel: circles tangent to lines and circles and through points.
//
// Every construction is the same machinery fed with different objects: each tangent object is
// tried with the signs -1 then +1, each combination becomes a set of conditions on the unknown
// centre X (and the unknown radius R when it is not given), the conditions are reduced to
// linear equations plus one circle equation, and the roots of the resulting quadratic are the
// candidates, kept in order of first discovery.
//
// Conditions, in a frame translated to the construction's reference point:
//   circle equation   |X - C|^2 = (k*R + e)^2   (a point: e = 0; a circle: e = s*r; with R
//                                               given, k = 0 and e already holds the distance)
//   linear equation   a*x + b*y + w*R + h = 0   (a line offset to the side s: with R given
//                                               w = 0, h = c - s*R; else w = -s, h = c)
// Since k is the same (0 or 1) for every circle equation of a construction, the difference of
// two circle equations is linear in x, y and R.
#include <cmath>
#include <initializer_list>

#include "korvelbase/compare.h"
#include "korvelbase/utmat_tangency.h"
#include "utmat/kernel_state.hpp"
#include "utmat/vector_math.hpp"

namespace {

using kb::utmat::calculationPrecision;
using kb::utmat::failed;

constexpr int kMaxObjects = 3;        // every construction has three conditions
constexpr int kMaxTangentObjects = 2;
constexpr int kMaxUnknowns = 3;       // x, y and (when not given) R
constexpr int kUnknownX = 0;
constexpr int kUnknownY = 1;
constexpr int kUnknownRadius = 2;
constexpr double kSigns[] = {-1.0, 1.0};  // every signed version: -1 first

enum class Kind { Line, Circle, Point };

// One argument of a construction, in world coordinates (lines normalised).
struct GivenObject {
    Kind kind;
    UtDroite line;
    Point2d centre;  // circle centre or point
    double radius;   // circle radius as given (signed versions are s*radius)
};

// How a computed radius root is accepted.
enum class RootRule {
    PositiveOnly,  // R > precision: the signs then describe the side of the centre
    Magnitude,     // |R| > precision, reported as |R|
};

struct Construction {
    GivenObject objects[kMaxObjects];
    int objectCount = 0;
    bool radiusGiven = true;
    double radius = 0.0;             // R when given
    RootRule rootRule = RootRule::PositiveOnly;
    double coincidenceTolerance = 0.0;  // |s*r + R| at or below it: the solution is the circle

    void add(const GivenObject& object) noexcept { objects[objectCount++] = object; }
};

struct Outputs {
    Point2d* centres;
    double* radii;  // null when the radius is given
    Point2d* tangencyPoints;
    int* count;
};

struct CircleEquation {
    Point2d centre;
    double k;
    double e;
};

struct LinearEquation {
    double coefficient[kMaxUnknowns];
    double constant;
};

// Every unknown as an affine function of the free unknown t: value = base + t * direction.
struct AffineSolution {
    double base[kMaxUnknowns];
    double direction[kMaxUnknowns];
};

bool isZero(double value, double precision) noexcept { return qmMath_doublesNearEqual(value, 0.0, precision) != 0; }

// ---- frames -------------------------------------------------------------------------------

// The reference object of the local frame, whose circle equation is kept whole: the first
// given point, else the first circle; -1 when there is neither (two lines: world frame).
int referenceIndex(const Construction& c) noexcept {
    for (Kind wanted : {Kind::Point, Kind::Circle}) {
        for (int i = 0; i < c.objectCount; ++i) {
            if (c.objects[i].kind == wanted) return i;
        }
    }
    return -1;
}

Point2d frameOrigin(const Construction& c) noexcept {
    const int reference = referenceIndex(c);
    return reference >= 0 ? c.objects[reference].centre : Point2d{0.0, 0.0};
}

// The objects moved into the frame with origin `origin`; false when a primitive failed.
bool toLocalFrame(const Construction& world, const Point2d& origin, GivenObject* local) noexcept {
    const Point2d backwards{-origin.x, -origin.y};
    for (int i = 0; i < world.objectCount; ++i) {
        local[i] = world.objects[i];
        if (world.objects[i].kind == Kind::Line) {
            UTMAT_TranslaterDroite(&world.objects[i].line, &backwards, &local[i].line);
            if (failed()) return false;
            UTMAT_NormerDroite(&local[i].line, nullptr);
        } else {
            UTMAT_ChangerRepere(&world.objects[i].centre, &origin, 0.0, &local[i].centre);
        }
        if (failed()) return false;
    }
    return true;
}

// ---- one combination ----------------------------------------------------------------------

CircleEquation circleEquation(const Construction& c, const GivenObject& object, double sign) noexcept {
    const double signedRadius = object.kind == Kind::Circle ? sign * object.radius : 0.0;
    if (c.radiusGiven) return {object.centre, 0.0, signedRadius + c.radius};
    return {object.centre, 1.0, signedRadius};
}

LinearEquation lineEquation(const Construction& c, const UtDroite& line, double sign) noexcept {
    if (c.radiusGiven) return {{line.a, line.b, 0.0}, line.c - sign * c.radius};
    return {{line.a, line.b, -sign}, line.c};
}

// kept - other: 2 (C_o - C_k).X + 2k (e_o - e_k) R + |C_k|^2 - |C_o|^2 + e_o^2 - e_k^2 = 0.
LinearEquation difference(const CircleEquation& kept, const CircleEquation& other) noexcept {
    return {{2.0 * (other.centre.x - kept.centre.x), 2.0 * (other.centre.y - kept.centre.y),
             2.0 * kept.k * (other.e - kept.e)},
            kb::utmat::dot(kept.centre, kept.centre) - kb::utmat::dot(other.centre, other.centre) +
                other.e * other.e - kept.e * kept.e};
}

// Solves `count` linear equations in `unknowns` unknowns (count = unknowns or unknowns - 1) by
// elimination, each equation taking as pivot the first of x, y, R not yet used whose
// coefficient is not zero at the precision.  The unknown left without a pivot is the free
// one.  False when an equation has no usable pivot (parallel or concentric conditions).
bool solveLinear(LinearEquation* equations, int count, int unknowns, double precision,
                 AffineSolution& solution) noexcept {
    bool used[kMaxUnknowns] = {false, false, false};
    int pivotOf[kMaxUnknowns] = {0, 0, 0};
    for (int i = 0; i < count; ++i) {
        int pivot = -1;
        for (int u = 0; u < unknowns && pivot < 0; ++u) {
            if (!used[u] && !isZero(equations[i].coefficient[u], precision)) pivot = u;
        }
        if (pivot < 0) return false;
        used[pivot] = true;
        pivotOf[i] = pivot;
        for (int j = i + 1; j < count; ++j) {
            const double factor = equations[j].coefficient[pivot] / equations[i].coefficient[pivot];
            for (int u = 0; u < unknowns; ++u) equations[j].coefficient[u] -= factor * equations[i].coefficient[u];
            equations[j].constant -= factor * equations[i].constant;
            equations[j].coefficient[pivot] = 0.0;
        }
    }
    for (int u = 0; u < kMaxUnknowns; ++u) {
        solution.base[u] = 0.0;
        solution.direction[u] = used[u] || u >= unknowns ? 0.0 : 1.0;
    }
    for (int i = count - 1; i >= 0; --i) {
        const int p = pivotOf[i];
        double base = equations[i].constant;
        double direction = 0.0;
        for (int u = 0; u < unknowns; ++u) {
            if (u == p) continue;
            base += equations[i].coefficient[u] * solution.base[u];
            direction += equations[i].coefficient[u] * solution.direction[u];
        }
        solution.base[p] = -base / equations[i].coefficient[p];
        solution.direction[p] = -direction / equations[i].coefficient[p];
    }
    return true;
}

struct Candidate {
    Point2d centre;  // local frame
    double radius;   // signed root, or the given R
};

// Substitutes the affine solution into the kept circle equation and solves for t; writes up to
// two candidates and returns their count, or -1 when the solver failed.
int candidatesOnCircle(const AffineSolution& s, const CircleEquation& kept, double givenRadius,
                       Candidate* out) noexcept {
    const Point2d origin{s.base[kUnknownX] - kept.centre.x, s.base[kUnknownY] - kept.centre.y};
    const Point2d direction{s.direction[kUnknownX], s.direction[kUnknownY]};
    const double distance = kept.k * s.base[kUnknownRadius] + kept.e;
    const double distanceRate = kept.k * s.direction[kUnknownRadius];
    const double a = kb::utmat::dot(direction, direction) - distanceRate * distanceRate;
    const double b = 2.0 * (kb::utmat::dot(direction, origin) - distanceRate * distance);
    const double c = kb::utmat::dot(origin, origin) - distance * distance;
    double roots[2] = {0.0, 0.0};
    int rootCount = 0;
    UTMAT_ResoudreEquation2Degre(a, b, c, 0.0, roots, &rootCount);
    if (failed()) return -1;
    for (int i = 0; i < rootCount; ++i) {
        const double t = roots[i];
        out[i].centre = {s.base[kUnknownX] + t * s.direction[kUnknownX], s.base[kUnknownY] + t * s.direction[kUnknownY]};
        out[i].radius = kept.k != 0.0 ? s.base[kUnknownRadius] + t * s.direction[kUnknownRadius] : givenRadius;
    }
    return rootCount;
}

// The candidates of one sign combination (signs[j] for the j-th object; points ignore theirs);
// -1 when a primitive failed.
int solveCombination(const Construction& local, const double* signs, Candidate* out) noexcept {
    const double precision = calculationPrecision();
    const int kept = referenceIndex(local);
    const int unknowns = local.radiusGiven ? kUnknownRadius : kMaxUnknowns;
    LinearEquation equations[kMaxObjects];
    int equationCount = 0;
    CircleEquation keptEquation{{0.0, 0.0}, 0.0, 0.0};
    if (kept >= 0) keptEquation = circleEquation(local, local.objects[kept], signs[kept]);
    for (int i = 0; i < local.objectCount; ++i) {
        const GivenObject& object = local.objects[i];
        if (i == kept) continue;
        equations[equationCount++] =
            object.kind == Kind::Line ? lineEquation(local, object.line, signs[i])
                                      : difference(keptEquation, circleEquation(local, object, signs[i]));
    }
    AffineSolution solution;
    if (!solveLinear(equations, equationCount, unknowns, precision, solution)) return 0;
    if (kept >= 0) return candidatesOnCircle(solution, keptEquation, local.radius, out);
    out[0] = {{solution.base[kUnknownX], solution.base[kUnknownY]}, local.radius};
    return 1;
}

// ---- recording ----------------------------------------------------------------------------

bool acceptRadius(const Construction& c, double& radius) noexcept {
    if (c.radiusGiven) return true;
    const double precision = calculationPrecision();
    if (c.rootRule == RootRule::Magnitude) radius = std::fabs(radius);
    return qmUtil_greaterDouble(radius, 0.0, precision) != 0;
}

bool isDuplicate(const Outputs& out, bool radiusComputed, const Point2d& centre, double radius) noexcept {
    const double precision = calculationPrecision();
    for (int i = 0; i < *out.count; ++i) {
        const double gap = kb::utmat::norm(kb::utmat::difference(out.centres[i], centre));
        if (!qmMath_doublesNearEqual(gap, 0.0, precision)) continue;
        if (!radiusComputed || qmMath_doublesNearEqual(out.radii[i], radius, precision)) return true;
    }
    return false;
}

// The contact points of the solution circle (world centre X, signed radius R) with the tangent
// objects, in argument order; false when a primitive failed.
bool tangencyPoints(const Construction& world, const double* signs, const Point2d& X, double R,
                    Point2d* points) noexcept {
    int written = 0;
    int coincident = -1;  // the tangent object the solution coincides with, if any
    const Point2d* givenPoint = nullptr;
    for (int i = 0; i < world.objectCount; ++i) {
        const GivenObject& object = world.objects[i];
        if (object.kind == Kind::Point) {
            if (givenPoint == nullptr) givenPoint = &object.centre;
            continue;
        }
        Point2d& T = points[written];
        T = X;
        if (object.kind == Kind::Line) {
            UTMAT_ProjeterPtSurDroite(&object.line, &X, &T);
            if (failed()) return false;
        } else {
            const double signedRadius = signs[i] * object.radius;
            const double distance = signedRadius + R;
            if (std::fabs(distance) <= world.coincidenceTolerance || (X.x == object.centre.x && X.y == object.centre.y)) {
                coincident = written;
            } else {
                const double ratio = signedRadius / distance;
                T = {object.centre.x + (X.x - object.centre.x) * ratio, object.centre.y + (X.y - object.centre.y) * ratio};
            }
        }
        ++written;
    }
    if (coincident >= 0) {
        // The solution is that circle itself, so all its points are common: report the given
        // point, else the contact with the other tangent object (common to all three).
        const int other = written - 1 - coincident;
        points[coincident] = givenPoint != nullptr ? *givenPoint : points[other];
    }
    return true;
}

int tangentObjectCount(const Construction& c) noexcept {
    int n = 0;
    for (int i = 0; i < c.objectCount; ++i) n += c.objects[i].kind == Kind::Point ? 0 : 1;
    return n;
}

// The signs of the combination with index m: the first tangent object varies slowest.
void combinationSigns(const Construction& c, int m, int tangentCount, double* signs) noexcept {
    int position = 0;
    for (int i = 0; i < c.objectCount; ++i) {
        if (c.objects[i].kind == Kind::Point) {
            signs[i] = 1.0;
            continue;
        }
        const int bit = tangentCount - 1 - position++;
        signs[i] = kSigns[(m >> bit) & 1];
    }
}

// The whole construction: every combination, every root, duplicates removed, results written.
void solveConstruction(const Construction& world, const Outputs& out) noexcept {
    const Point2d origin = frameOrigin(world);
    Construction local = world;
    if (!toLocalFrame(world, origin, local.objects)) return;
    const int tangentCount = tangentObjectCount(world);
    const int combinations = 1 << tangentCount;
    const bool radiusComputed = !world.radiusGiven;
    const Point2d backwards{-origin.x, -origin.y};  // ChangerRepere with it adds the origin back
    for (int m = 0; m < combinations; ++m) {
        double signs[kMaxObjects];
        combinationSigns(world, m, tangentCount, signs);
        Candidate candidates[2];
        const int found = solveCombination(local, signs, candidates);
        if (found < 0) return;
        for (int i = 0; i < found; ++i) {
            double radius = candidates[i].radius;
            const double signedRadius = radius;
            if (!acceptRadius(world, radius)) continue;
            Point2d centre;
            UTMAT_ChangerRepere(&candidates[i].centre, &backwards, 0.0, &centre);
            if (failed()) return;
            if (isDuplicate(out, radiusComputed, centre, radius)) continue;
            Point2d points[kMaxTangentObjects];
            if (!tangencyPoints(world, signs, centre, signedRadius, points)) return;
            const int n = *out.count;
            out.centres[n] = centre;
            if (radiusComputed) out.radii[n] = radius;
            for (int j = 0; j < tangentCount; ++j) out.tangencyPoints[n * tangentCount + j] = points[j];
            *out.count = n + 1;
        }
    }
}

// ---- building the constructions -----------------------------------------------------------

// A normalised copy of the caller's line; false (ERR_FAILURE) for a = b = 0.
bool lineObject(const UtDroite& line, GivenObject& object) noexcept {
    object = {Kind::Line, line, {0.0, 0.0}, 0.0};
    UTMAT_NormerDroite(&object.line, nullptr);
    return !failed();
}

GivenObject circleObject(const Point2d& centre, double radius) noexcept {
    return {Kind::Circle, {0.0, 0.0, 0.0}, centre, radius};
}

GivenObject pointObject(const Point2d& point) noexcept { return {Kind::Point, {0.0, 0.0, 0.0}, point, 0.0}; }

// A construction with the radius R given; false when R is not greater than the precision.
bool withRadius(Construction& c, double R, double testedRadius) noexcept {
    c.radiusGiven = true;
    c.radius = R;
    return qmUtil_greaterDouble(testedRadius, 0.0, calculationPrecision()) != 0;
}

Construction computedRadius(RootRule rule) noexcept {
    Construction c;
    c.radiusGiven = false;
    c.rootRule = rule;
    return c;
}

// ---- the circle osculating a clothoid ------------------------------------------------------

constexpr int kRadiusFromParameterAndLength = 11;  // relation of UTMAT_CalculerParametreClot

// The osculating circle of the clothoid at abscissa s and its distance from P.
struct Osculating {
    double s;
    double radius;
    Point2d centre;
    Point2d point;  // on the clothoid
    double gap;     // distance from P to the centre
};

// The centre lies on the inner side of the turn: left (offset < 0) when the clothoid turns
// left (A > 0) and s >= 0; the continuation through the origin (s < 0) turns the other way.
double centreSide(double A, double s) noexcept { return (A > 0.0) == (s >= 0.0) ? -1.0 : 1.0; }

bool osculatingAt(double A, double s, const Point2d& P, Osculating& out) noexcept {
    out.s = s;
    UTMAT_CalculerParametreClot(kRadiusFromParameterAndLength, A, s, &out.radius);
    if (failed()) return false;
    UTMAT_CalculerPosPointArcClotAbscisse(A, s, centreSide(A, s) * out.radius, &out.centre, nullptr);
    if (failed()) return false;
    UTMAT_CalculerPosPointArcClotAbscisse(A, s, 0.0, &out.point, nullptr);
    if (failed()) return false;
    out.gap = UTMAT_CalculerDistance2Pt(&P, &out.centre);
    return !failed();
}

// P is at the end's clothoid point (distance tolerance) and a circle exists there.
bool isOsculatingEnd(const Osculating& end, const Point2d& P) noexcept {
    return UTMAT_PointsIdentiques(&P, &end.point, kb::utmat::distanceTolerance()) != 0 &&
           !isZero(end.radius, calculationPrecision());
}

}  // namespace

using kb::utmat::enter;

extern "C" {

void UTMAT_CalculerCerTg2DteRayon(const UtDroite* line1, const UtDroite* line2, double R, Point2d* centres,
                                  Point2d* tangencyPoints, int* count) noexcept {
    if (!enter(line1, line2, centres, tangencyPoints, count)) return;
    *count = 0;
    Construction c;
    if (!withRadius(c, R, R)) return;
    GivenObject l1, l2;
    if (!lineObject(*line1, l1) || !lineObject(*line2, l2)) return;
    c.add(l1);
    c.add(l2);
    solveConstruction(c, {centres, nullptr, tangencyPoints, count});
}

void UTMAT_CalculerCerTg2DtePs1Pt(const UtDroite* line1, const UtDroite* line2, const Point2d* P, Point2d* centres,
                                  double* radii, Point2d* tangencyPoints, int* count) noexcept {
    if (!enter(line1, line2, P, centres, radii, tangencyPoints, count)) return;
    *count = 0;
    Construction c = computedRadius(RootRule::PositiveOnly);
    GivenObject l1, l2;
    if (!lineObject(*line1, l1) || !lineObject(*line2, l2)) return;
    c.add(l1);
    c.add(l2);
    c.add(pointObject(*P));
    solveConstruction(c, {centres, radii, tangencyPoints, count});
}

void UTMAT_CalculerCerTgDtePs1PtRayon(const UtDroite* line, const Point2d* P, double R, Point2d* centres,
                                      Point2d* tangencyPoints, int* count) noexcept {
    if (!enter(line, P, centres, tangencyPoints, count)) return;
    *count = 0;
    Construction c;
    if (!withRadius(c, R, std::fabs(R))) return;
    GivenObject l;
    if (!lineObject(*line, l)) return;
    c.add(l);
    c.add(pointObject(*P));
    solveConstruction(c, {centres, nullptr, tangencyPoints, count});
}

void UTMAT_CalculerCerTgDtePs2Pt(const UtDroite* line, const Point2d* P1, const Point2d* P2, Point2d* centres,
                                 double* radii, Point2d* tangencyPoints, int* count) noexcept {
    if (!enter(line, P1, P2, centres, radii, tangencyPoints, count)) return;
    *count = 0;
    Construction c = computedRadius(RootRule::PositiveOnly);
    GivenObject l;
    if (!lineObject(*line, l)) return;
    c.add(l);
    c.add(pointObject(*P1));
    c.add(pointObject(*P2));
    solveConstruction(c, {centres, radii, tangencyPoints, count});
}

void UTMAT_CalculerCerPs2PtRayon(const Point2d* P1, const Point2d* P2, double R, Point2d* centres,
                                 int* count) noexcept {
    if (!enter(P1, P2, centres, count)) return;
    *count = 0;
    Construction c;
    if (!withRadius(c, R, R)) return;
    c.add(pointObject(*P1));
    c.add(pointObject(*P2));
    solveConstruction(c, {centres, nullptr, nullptr, count});
}

void UTMAT_CalculerCerTg2CerRayon(const Point2d* C1, double r1, const Point2d* C2, double r2, double R,
                                  Point2d* centres, Point2d* tangencyPoints, int* count) noexcept {
    if (!enter(C1, C2, centres, tangencyPoints, count)) return;
    *count = 0;
    Construction c;
    if (!withRadius(c, R, R)) return;
    c.add(circleObject(*C1, r1));
    c.add(circleObject(*C2, r2));
    solveConstruction(c, {centres, nullptr, tangencyPoints, count});
}

void UTMAT_CalculerCerTgCerDteRayon(const Point2d* C, double r, const UtDroite* line, double R, Point2d* centres,
                                    Point2d* tangencyPoints, int* count) noexcept {
    if (!enter(C, line, centres, tangencyPoints, count)) return;
    *count = 0;
    Construction c;
    if (!withRadius(c, R, R)) return;
    GivenObject l;
    if (!lineObject(*line, l)) return;
    c.add(circleObject(*C, r));
    c.add(l);
    solveConstruction(c, {centres, nullptr, tangencyPoints, count});
}

void UTMAT_CalculerCerTg2CerPs1Pt(const Point2d* C1, double r1, const Point2d* C2, double r2, const Point2d* P,
                                  Point2d* centres, double* radii, Point2d* tangencyPoints, int* count) noexcept {
    if (!enter(C1, C2, P, centres, radii, tangencyPoints, count)) return;
    *count = 0;
    Construction c = computedRadius(RootRule::Magnitude);
    c.add(circleObject(*C1, r1));
    c.add(circleObject(*C2, r2));
    c.add(pointObject(*P));
    solveConstruction(c, {centres, radii, tangencyPoints, count});
}

void UTMAT_CalculerCerTgCerDtePs1Pt(const Point2d* C, double r, const UtDroite* line, const Point2d* P,
                                    Point2d* centres, double* radii, Point2d* tangencyPoints, int* count) noexcept {
    if (!enter(C, line, P, centres, radii, tangencyPoints, count)) return;
    *count = 0;
    Construction c = computedRadius(RootRule::Magnitude);
    GivenObject l;
    if (!lineObject(*line, l)) return;
    c.add(circleObject(*C, r));
    c.add(l);
    c.add(pointObject(*P));
    solveConstruction(c, {centres, radii, tangencyPoints, count});
}

void UTMAT_CalculerCerTgCerPs1PtRayon(const Point2d* C, double r, const Point2d* P, double R, Point2d* centres,
                                      Point2d* tangencyPoints, int* count) noexcept {
    if (!enter(C, P, centres, tangencyPoints, count)) return;
    *count = 0;
    Construction c;
    if (!withRadius(c, R, R)) return;
    c.coincidenceTolerance = calculationPrecision();
    c.add(circleObject(*C, r));
    c.add(pointObject(*P));
    solveConstruction(c, {centres, nullptr, tangencyPoints, count});
}

void UTMAT_CalculerCerTgCerPs2Pt(const Point2d* C, double r, const Point2d* P1, const Point2d* P2,
                                 Point2d* centres, double* radii, Point2d* tangencyPoints, int* count) noexcept {
    if (!enter(C, P1, P2, centres, radii, tangencyPoints, count)) return;
    *count = 0;
    Construction c = computedRadius(RootRule::Magnitude);
    c.add(circleObject(*C, r));
    c.add(pointObject(*P1));
    c.add(pointObject(*P2));
    solveConstruction(c, {centres, radii, tangencyPoints, count});
}

void UTMAT_CalculerCerTgClotPs1Pt(double A, double s1, double s2, const Point2d* P, Point2d* centre, double* radius,
                                  Point2d* tangencyPoint, int* count) noexcept {
    if (!enter(P, centre, radius, tangencyPoint, count)) return;
    *count = 0;
    *radius = 0.0;
    if (A == 0.0) return;
    const auto write = [&](const Osculating& circle) {
        *centre = circle.centre;
        *radius = circle.radius;
        *tangencyPoint = circle.point;
        *count = 1;
    };
    Osculating lo, hi;
    if (!osculatingAt(A, s1, *P, lo) || !osculatingAt(A, s2, *P, hi)) return;
    if (isOsculatingEnd(lo, *P)) return write(lo);
    if (isOsculatingEnd(hi, *P)) return write(hi);
    const double precision = calculationPrecision();
    // P on or outside the circle at s1 and on or inside the one at s2.
    if (!qmUtil_greaterOrEqualDouble(lo.gap, lo.radius, precision) ||
        !qmUtil_lessOrEqualDouble(hi.gap, hi.radius, precision)) {
        return;
    }
    for (int halving = 0; halving < UTMAT_CLOTHOID_BISECTION_LIMIT && qmUtil_greaterDouble(lo.gap, lo.radius, precision) &&
                          qmUtil_lessDouble(hi.gap, hi.radius, precision);
         ++halving) {
        Osculating middle;
        if (!osculatingAt(A, 0.5 * (lo.s + hi.s), *P, middle)) return;
        if (qmUtil_lessOrEqualDouble(middle.gap, middle.radius, precision)) {
            hi = middle;
        } else {
            lo = middle;
        }
    }
    // As at the ends, a radius of 0 (the straight start) is no circle.
    const auto passesThroughP = [&](const Osculating& end) {
        return qmMath_doublesNearEqual(end.gap, end.radius, precision) && !isZero(end.radius, precision);
    };
    if (passesThroughP(hi)) return write(hi);
    if (passesThroughP(lo)) write(lo);
}

}  // extern "C"
