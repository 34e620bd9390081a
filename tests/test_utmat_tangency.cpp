// Circles tangent to lines and circles: every returned circle is checked against the geometry
// (tangent to its lines and circles, through its points, contact points on both objects), and
// the set of circles is compared with an independent solver written here: the centre is swept
// along the locus of one condition (an angle around a point or circle, or a polar ray from the
// given point with the radius in closed form) and the other condition is found by sign changes
// and bisection.  Order, duplicates, degenerate input and failures are checked on their own.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

#include "korvelbase/utmat_tangency.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kRelative = 1e-9;  // tangency and incidence checks, relative to the scale
const double kSigns[] = {-1.0, 1.0};

uint32_t errorWord() {
    uint32_t e = 0xFFFF, d = 0xFFFF;
    UTMAT_GetErreur(&e, &d);
    return e;
}

// ---- objects and checks -------------------------------------------------------------------

struct Line {
    UtDroite d;  // as given to the library (not normalised)
    double distance(const Point2d& p) const {
        return (d.a * p.x + d.b * p.y + d.c) / std::hypot(d.a, d.b);
    }
};
struct Circle {
    Point2d c;
    double r;
};
struct Solution {
    Point2d centre;
    double radius;
    std::vector<Point2d> contacts;
};

double dist(const Point2d& p, const Point2d& q) { return std::hypot(p.x - q.x, p.y - q.y); }

// A condition of a construction, as the test sees it.
struct Object {
    enum Kind { kLine, kCircle, kPoint } kind;
    Line line;
    Circle circle;
    Point2d point;
};
Object lineObj(const UtDroite& d) { return {Object::kLine, {d}, {}, {}}; }
Object circleObj(Point2d c, double r) { return {Object::kCircle, {}, {c, r}, {}}; }
Object pointObj(Point2d p) { return {Object::kPoint, {}, {}, p}; }

double scaleOf(const std::vector<Object>& objects, double extra) {
    double s = std::max(1.0, std::fabs(extra));
    for (const Object& o : objects) {
        if (o.kind == Object::kLine) s = std::max(s, std::fabs(o.line.distance({0, 0})));
        if (o.kind == Object::kCircle) s = std::max({s, std::fabs(o.circle.c.x), std::fabs(o.circle.c.y), std::fabs(o.circle.r)});
        if (o.kind == Object::kPoint) s = std::max({s, std::fabs(o.point.x), std::fabs(o.point.y)});
    }
    return s;
}

// The circle is tangent to every line and circle and passes through every point; each contact
// point lies on its object and on the circle.
void expectSolves(const Solution& s, const std::vector<Object>& objects) {
    const double tol = kRelative * scaleOf(objects, s.radius + std::hypot(s.centre.x, s.centre.y));
    ASSERT_GT(s.radius, 0.0);
    size_t contact = 0;
    for (const Object& o : objects) {
        if (o.kind == Object::kPoint) {
            EXPECT_NEAR(dist(s.centre, o.point), s.radius, tol) << "through the point";
            continue;
        }
        if (o.kind == Object::kLine) {
            EXPECT_NEAR(std::fabs(o.line.distance(s.centre)), s.radius, tol) << "tangent to the line";
        } else {
            const double d = dist(s.centre, o.circle.c);
            const bool tangent = std::fabs(d - (s.radius + std::fabs(o.circle.r))) <= tol ||
                                 std::fabs(d - std::fabs(s.radius - std::fabs(o.circle.r))) <= tol;
            EXPECT_TRUE(tangent) << "tangent to the circle: d " << d << " R " << s.radius << " r " << o.circle.r;
        }
        ASSERT_LT(contact, s.contacts.size());
        const Point2d& t = s.contacts[contact++];
        EXPECT_NEAR(dist(t, s.centre), s.radius, tol) << "contact on the solution";
        const double off = o.kind == Object::kLine ? o.line.distance(t) : dist(t, o.circle.c) - std::fabs(o.circle.r);
        EXPECT_NEAR(off, 0.0, tol) << "contact on the object";
    }
    EXPECT_EQ(contact, s.contacts.size());
}

// ---- the library, called with sentinel-guarded arrays --------------------------------------

constexpr double kSentinel = 1234567.0;

struct Buffers {
    std::vector<Point2d> centres;
    std::vector<double> radii;
    std::vector<Point2d> contacts;
    int count = -1;
    int perSolution;
    int capacity;
    Buffers(int max, int k) : centres(max + 1, {kSentinel, kSentinel}), radii(max + 1, kSentinel),
                              contacts((max + 1) * std::max(k, 1), {kSentinel, kSentinel}), perSolution(k), capacity(max) {}
    // The solutions written; nothing beyond the stated maxima.
    std::vector<Solution> solutions(double givenRadius) const {
        EXPECT_GE(count, 0);
        EXPECT_LE(count, capacity);
        EXPECT_EQ(centres[capacity].x, kSentinel);
        EXPECT_EQ(radii[capacity], kSentinel);
        EXPECT_EQ(contacts[capacity * std::max(perSolution, 1)].x, kSentinel);
        std::vector<Solution> out;
        for (int i = 0; i < std::max(count, 0); ++i) {
            Solution s{centres[i], givenRadius > 0 ? givenRadius : radii[i], {}};
            for (int j = 0; j < perSolution; ++j) s.contacts.push_back(contacts[i * perSolution + j]);
            out.push_back(s);
        }
        return out;
    }
};

// ---- the independent solver ---------------------------------------------------------------

// Roots of f on [lo, hi] by sampling and bisection; a sign change across a pole is dropped by
// requiring a small residual.
std::vector<double> roots(const std::function<double(double)>& f, double lo, double hi, int samples,
                          double residualTol) {
    std::vector<double> out;
    double x0 = lo, f0 = f(lo);
    for (int i = 1; i <= samples; ++i) {
        const double x1 = lo + (hi - lo) * i / samples;
        const double f1 = f(x1);
        if (std::isfinite(f0) && std::isfinite(f1) && ((f0 < 0) != (f1 < 0))) {
            double a = x0, b = x1, fa = f0;
            for (int k = 0; k < 200 && a != b; ++k) {
                const double m = 0.5 * (a + b);
                if (m == a || m == b) break;
                const double fm = f(m);
                if ((fm < 0) == (fa < 0)) { a = m; fa = fm; } else { b = m; }
            }
            const double m = 0.5 * (a + b);
            if (std::fabs(f(m)) <= residualTol) out.push_back(m);
        }
        x0 = x1;
        f0 = f1;
    }
    return out;
}

void addDistinct(std::vector<Solution>& set, const Solution& s, double tol) {
    for (const Solution& t : set) {
        if (dist(t.centre, s.centre) <= tol && std::fabs(t.radius - s.radius) <= tol) return;
    }
    set.push_back(s);
}

// Signed distance condition of a solution (X, R) with one object and sign: zero when met.
double condition(const Object& o, double s, const Point2d& X, double R) {
    switch (o.kind) {
        case Object::kLine: return o.line.distance(X) - s * R;
        case Object::kCircle: return dist(X, o.circle.c) - std::fabs(s * o.circle.r + R);
        default: return dist(X, o.point) - R;
    }
}

// The reference object (the first point, else the first circle) and the others, in order.
size_t referenceOf(const std::vector<Object>& objects) {
    for (Object::Kind kind : {Object::kPoint, Object::kCircle}) {
        for (size_t i = 0; i < objects.size(); ++i) {
            if (objects[i].kind == kind) return i;
        }
    }
    return 0;
}

// Given radius R: sweep the centre round the reference point or circle at the distance each
// sign sets, and find where the condition of the other object holds.
std::vector<Solution> referenceGivenRadius(const std::vector<Object>& objects, double R) {
    std::vector<Solution> set;
    const double scale = scaleOf(objects, R);
    const size_t ref = referenceOf(objects);
    const Object& first = objects[ref];
    const Object& other = objects[1 - ref];
    const Point2d centre = first.kind == Object::kPoint ? first.point : first.circle.c;
    for (double s1 : kSigns) {
        const double around = first.kind == Object::kPoint ? R : std::fabs(s1 * first.circle.r + R);
        for (double s2 : kSigns) {
            const auto at = [&](double t) { return Point2d{centre.x + around * std::cos(t), centre.y + around * std::sin(t)}; };
            for (double t : roots([&](double t) { return condition(other, s2, at(t), R); }, 0.0, 2 * kPi, 20000, 1e-9 * scale)) {
                addDistinct(set, {at(t), R, {}}, 1e-6 * scale);
            }
        }
    }
    return set;
}

// Radius computed, objects[0] the point P: the centre is P + rho (cos t, sin t) with R = rho;
// each other condition gives rho in closed form (it is linear in rho), and the solutions are
// the angles where the two values agree and are positive.
double rhoFor(const Object& o, double s, const Point2d& P, double t) {
    const double ux = std::cos(t), uy = std::sin(t);
    if (o.kind == Object::kLine) {
        const double n = std::hypot(o.line.d.a, o.line.d.b);
        const double a = o.line.d.a / n, b = o.line.d.b / n, c = o.line.d.c / n;
        return -(a * P.x + b * P.y + c) / (a * ux + b * uy - s);
    }
    const Point2d C = o.kind == Object::kCircle ? o.circle.c : o.point;
    const double sr = o.kind == Object::kCircle ? s * o.circle.r : 0.0;
    const double dx = P.x - C.x, dy = P.y - C.y;
    return (sr * sr - dx * dx - dy * dy) / (2.0 * (ux * dx + uy * dy - sr));
}

std::vector<Solution> referenceThroughPoint(const std::vector<Object>& objects) {
    std::vector<Solution> set;
    const size_t ref = referenceOf(objects);
    const Point2d P = objects[ref].point;
    std::vector<Object> others;
    for (size_t i = 0; i < objects.size(); ++i) {
        if (i != ref) others.push_back(objects[i]);
    }
    const double scale = scaleOf(objects, 0.0);
    for (double s1 : kSigns) {
        for (double s2 : kSigns) {
            const auto f = [&](double t) {
                const double r1 = rhoFor(others[0], s1, P, t), r2 = rhoFor(others[1], s2, P, t);
                return r1 > 0 && r2 > 0 ? (r1 - r2) / (r1 + r2) : NAN;
            };
            for (double t : roots(f, 0.0, 2 * kPi, 40000, 1e-9)) {
                const double rho = rhoFor(others[0], s1, P, t);
                if (rho > 1e6 * scale) continue;
                addDistinct(set, {{P.x + rho * std::cos(t), P.y + rho * std::sin(t)}, rho, {}}, 1e-6 * scale);
            }
        }
    }
    return set;
}

// The library's circles are exactly the reference ones (as sets, within a loose tolerance: the
// reference is only as good as its bisection).
void expectSameSet(const std::vector<Solution>& got, const std::vector<Solution>& want, double scale) {
    EXPECT_EQ(got.size(), want.size());
    for (const Solution& w : want) {
        const bool found = std::any_of(got.begin(), got.end(), [&](const Solution& g) {
            return dist(g.centre, w.centre) <= 1e-6 * scale && std::fabs(g.radius - w.radius) <= 1e-6 * scale;
        });
        EXPECT_TRUE(found) << "missing centre (" << w.centre.x << ", " << w.centre.y << ") R " << w.radius;
    }
}

// The index of the first sign combination (first object's sign slowest) whose conditions the
// circle meets with radius +R, or with -R when negative roots count; outputs must not go back.
int firstCombination(const std::vector<Object>& objects, const Solution& s, bool negativeRootsCount) {
    std::vector<int> tangent;
    for (size_t i = 0; i < objects.size(); ++i) {
        if (objects[i].kind != Object::kPoint) tangent.push_back(static_cast<int>(i));
    }
    const double tol = 1e-7 * scaleOf(objects, s.radius);
    const int n = 1 << tangent.size();
    for (int m = 0; m < n; ++m) {
        for (double R : {s.radius, -s.radius}) {
            if (R < 0 && !negativeRootsCount) continue;
            bool all = true;
            for (size_t j = 0; j < tangent.size(); ++j) {
                const double sign = kSigns[(m >> (tangent.size() - 1 - j)) & 1];
                const Object& o = objects[tangent[j]];
                const double c = o.kind == Object::kLine ? o.line.distance(s.centre) - sign * R
                                                         : dist(s.centre, o.circle.c) - std::fabs(sign * o.circle.r + R);
                all = all && std::fabs(c) <= tol;
            }
            if (all) return m;
        }
    }
    return n;
}

void expectSignOrder(const std::vector<Object>& objects, const std::vector<Solution>& got, bool negativeRootsCount) {
    int previous = 0;
    for (const Solution& s : got) {
        const int m = firstCombination(objects, s, negativeRootsCount);
        EXPECT_LT(m, 1 << 2) << "no combination holds";
        EXPECT_GE(m, previous) << "out of sign order";
        previous = m;
    }
}

// ---- calling each member on a list of objects ---------------------------------------------

// Member m (0..10, in the order of the header) on objects given in argument order.
std::vector<Solution> call(const std::vector<Object>& o, double R, int member) {
    const auto line = [&](int i) { return &o[i].line.d; };
    const auto centre = [&](int i) { return &o[i].circle.c; };
    const auto point = [&](int i) { return &o[i].point; };
    const auto radius = [&](int i) { return o[i].circle.r; };
    const int capacity[] = {4, 8, 4, 4, 2, 8, 8, 8, 8, 4, 4};
    const int contacts[] = {2, 2, 1, 1, 0, 2, 2, 2, 2, 1, 1};
    Buffers b(capacity[member], contacts[member]);
    Point2d* c = b.centres.data();
    double* r = b.radii.data();
    Point2d* t = b.contacts.data();
    int* n = &b.count;
    switch (member) {
        case 0: UTMAT_CalculerCerTg2DteRayon(line(0), line(1), R, c, t, n); break;
        case 1: UTMAT_CalculerCerTg2DtePs1Pt(line(0), line(1), point(2), c, r, t, n); break;
        case 2: UTMAT_CalculerCerTgDtePs1PtRayon(line(0), point(1), R, c, t, n); break;
        case 3: UTMAT_CalculerCerTgDtePs2Pt(line(0), point(1), point(2), c, r, t, n); break;
        case 4: UTMAT_CalculerCerPs2PtRayon(point(0), point(1), R, c, n); break;
        case 5: UTMAT_CalculerCerTg2CerRayon(centre(0), radius(0), centre(1), radius(1), R, c, t, n); break;
        case 6: UTMAT_CalculerCerTgCerDteRayon(centre(0), radius(0), line(1), R, c, t, n); break;
        case 7: UTMAT_CalculerCerTg2CerPs1Pt(centre(0), radius(0), centre(1), radius(1), point(2), c, r, t, n); break;
        case 8: UTMAT_CalculerCerTgCerDtePs1Pt(centre(0), radius(0), line(1), point(2), c, r, t, n); break;
        case 9: UTMAT_CalculerCerTgCerPs1PtRayon(centre(0), radius(0), point(1), R, c, t, n); break;
        default: UTMAT_CalculerCerTgCerPs2Pt(centre(0), radius(0), point(1), point(2), c, r, t, n); break;
    }
    return b.solutions(std::fabs(R));
}

struct Generator {
    std::mt19937 g;
    explicit Generator(unsigned seed) : g(seed) {}
    double uniform(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(g); }
    Point2d point() { return {uniform(-10, 10), uniform(-10, 10)}; }
    UtDroite line() {
        const double t = uniform(0, 2 * kPi), k = uniform(0.2, 5.0);
        return {k * std::cos(t), k * std::sin(t), k * uniform(-8, 8)};
    }
    Object circle() { return circleObj(point(), uniform(1, 6)); }
};

void checkAgainstReference(int member, const std::vector<Object>& objects, double R) {
    UTMAT_setCalculPrecision(1e-4);
    const std::vector<Solution> got = call(objects, R, member);
    EXPECT_EQ(errorWord(), 0u);
    for (const Solution& s : got) expectSolves(s, objects);
    const std::vector<Solution> want = R > 0 ? referenceGivenRadius(objects, R) : referenceThroughPoint(objects);
    expectSameSet(got, want, scaleOf(objects, R));
    expectSignOrder(objects, got, member >= 7);
}

}  // namespace

// ---- generic configurations against the independent solver --------------------------------

TEST(UtmatTangency, GivenRadiusMembersMatchTheReference) {
    Generator gen(11);
    for (int trial = 0; trial < 25; ++trial) {
        SCOPED_TRACE(trial);
        const double R = gen.uniform(0.5, 8);
        const Object P = pointObj(gen.point()), L = lineObj(gen.line()), C1 = gen.circle(), C2 = gen.circle();
        checkAgainstReference(2, {L, P}, R);
        checkAgainstReference(4, {P, pointObj(gen.point())}, R);
        checkAgainstReference(5, {C1, C2}, R);
        checkAgainstReference(6, {C1, L}, R);
        checkAgainstReference(9, {C1, P}, R);
    }
}

TEST(UtmatTangency, ComputedRadiusMembersMatchTheReference) {
    Generator gen(29);
    for (int trial = 0; trial < 25; ++trial) {
        SCOPED_TRACE(trial);
        const Object P = pointObj(gen.point()), L1 = lineObj(gen.line()), L2 = lineObj(gen.line());
        const Object C1 = gen.circle(), C2 = gen.circle(), Q = pointObj(gen.point());
        checkAgainstReference(1, {L1, L2, P}, 0);
        checkAgainstReference(3, {L1, P, Q}, 0);
        checkAgainstReference(7, {C1, C2, P}, 0);
        checkAgainstReference(8, {C1, L1, P}, 0);
        checkAgainstReference(10, {C1, P, Q}, 0);
    }
}

TEST(UtmatTangency, TwoLinesGivenRadiusCentresAreTheOffsetIntersectionsInSignOrder) {
    Generator gen(5);
    for (int trial = 0; trial < 50; ++trial) {
        const std::vector<Object> o = {lineObj(gen.line()), lineObj(gen.line())};
        const double R = gen.uniform(0.5, 5);
        const std::vector<Solution> got = call(o, R, 0);
        ASSERT_EQ(got.size(), 4u);
        for (int m = 0; m < 4; ++m) {
            expectSolves(got[m], o);
            // Combination m = (s1, s2): the centre is on side s1 of line 1 and s2 of line 2.
            EXPECT_NEAR(o[0].line.distance(got[m].centre), kSigns[m >> 1] * R, 1e-9 * scaleOf(o, R));
            EXPECT_NEAR(o[1].line.distance(got[m].centre), kSigns[m & 1] * R, 1e-9 * scaleOf(o, R));
        }
    }
    // The axes: centres (-R,-R)... read off by hand.  y = 0 has normal (0, -1) when built from
    // (0,0) to (1,0); x = 0 has normal (1, 0).
    const UtDroite xAxis{0, -1, 0}, yAxis{1, 0, 0};
    Point2d c[5], t[10];
    int n = 0;
    UTMAT_CalculerCerTg2DteRayon(&xAxis, &yAxis, 2.0, c, t, &n);
    ASSERT_EQ(n, 4);
    const Point2d want[] = {{-2, 2}, {2, 2}, {-2, -2}, {2, -2}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(c[i].x, want[i].x, 1e-12);
        EXPECT_NEAR(c[i].y, want[i].y, 1e-12);
        EXPECT_NEAR(t[2 * i].x, want[i].x, 1e-12);  // foot on y = 0
        EXPECT_NEAR(t[2 * i].y, 0.0, 1e-12);
        EXPECT_NEAR(t[2 * i + 1].x, 0.0, 1e-12);     // foot on x = 0
    }
}

// ---- degenerate configurations ------------------------------------------------------------

TEST(UtmatTangency, ParallelConcentricAndRepeatedConfigurations) {
    UTMAT_setCalculPrecision(1e-4);
    Point2d c[9], t[17];
    double r[9];
    int n = -1;
    // Parallel lines 6 apart, R = 3: every combination is parallel, none.
    const UtDroite y0{0, 1, 0}, y6{0, 2, -12};
    UTMAT_CalculerCerTg2DteRayon(&y0, &y6, 3.0, c, t, &n);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(errorWord(), 0u);
    // Concentric circles: none.
    const Point2d o{3, 4};
    UTMAT_CalculerCerTg2CerRayon(&o, 2.0, &o, 5.0, 1.5, c, t, &n);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(errorWord(), 0u);
    // A circle of radius 0 makes its two signs the same condition: each circle once, and the
    // set is what the reference finds.
    const std::vector<Object> zero = {circleObj({0, 0}, 0.0), circleObj({5, 1}, 2.0)};
    const std::vector<Solution> got = call(zero, 3.0, 5);
    for (const Solution& s : got) expectSolves(s, zero);
    expectSameSet(got, referenceGivenRadius(zero, 3.0), 10);
    EXPECT_EQ(got.size(), 2u);  // only |X - C2| = 5 meets the circle of radius 3 round C1
    // Two points 6 apart, R = 3: the midpoint once (a double root).
    const Point2d p1{1, 1}, p2{7, 1};
    UTMAT_CalculerCerPs2PtRayon(&p1, &p2, 3.0, c, &n);
    ASSERT_EQ(n, 1);
    EXPECT_NEAR(c[0].x, 4.0, 1e-6);
    EXPECT_NEAR(c[0].y, 1.0, 1e-6);
    // Points on both sides of a line: no circle through both is tangent to it.
    const UtDroite x0{1, 0, 0};
    const Point2d left{-1, 0}, right{1, 3};
    UTMAT_CalculerCerTgDtePs2Pt(&x0, &left, &right, c, r, t, &n);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(errorWord(), 0u);
}

TEST(UtmatTangency, SolutionCoincidingWithTheGivenCircle) {
    UTMAT_setCalculPrecision(1e-4);
    Point2d c[5], t[5];
    int n = 0;
    // P on the circle and R = r: the sign -1 gives the circle itself; its contact point is P.
    const Point2d C{2, 3}, P{5, 3};
    UTMAT_CalculerCerTgCerPs1PtRayon(&C, 3.0, &P, 3.0, c, t, &n);
    ASSERT_GE(n, 1);
    EXPECT_NEAR(c[0].x, 2.0, 1e-9);
    EXPECT_NEAR(c[0].y, 3.0, 1e-9);
    EXPECT_EQ(t[0].x, P.x);
    EXPECT_EQ(t[0].y, P.y);
    // Kept on purpose: within the precision of s*r + R = 0 the contact point is P too.
    UTMAT_CalculerCerTgCerPs1PtRayon(&C, 3.0 + 5e-5, &P, 3.0, c, t, &n);
    ASSERT_GE(n, 1);
    EXPECT_EQ(t[0].x, P.x);
    // Two circles, R = r1: the solution centred on C1 is circle 1; its contact on circle 1 is
    // the contact on circle 2 (a point common to all three).
    const Point2d C2{7, 3};
    Point2d cc[9], tt[17];
    UTMAT_CalculerCerTg2CerRayon(&C, 3.0, &C2, 2.0, 3.0, cc, tt, &n);
    bool seen = false;
    for (int i = 0; i < n; ++i) {
        EXPECT_TRUE(std::isfinite(tt[2 * i].x) && std::isfinite(tt[2 * i + 1].x));
        if (dist(cc[i], C) < 1e-9) {
            seen = true;
            EXPECT_EQ(tt[2 * i].x, tt[2 * i + 1].x);
            EXPECT_NEAR(dist(tt[2 * i], C2), 2.0, 1e-9);
        }
    }
    EXPECT_TRUE(seen);
}

TEST(UtmatTangency, SmallRadiiDegenerateLinesAndNullPointers) {
    UTMAT_setCalculPrecision(1e-4);
    Point2d c[9], t[17];
    double r[9];
    int n = -1;
    const UtDroite d{1, 1, 3}, bad{0, 0, 1};
    const Point2d P{1, 2}, Q{4, -1};
    for (double R : {0.0, 1e-4, -2.0}) {
        n = -1;
        UTMAT_CalculerCerTg2DteRayon(&d, &bad, R, c, t, &n);  // the radius is refused first
        EXPECT_EQ(n, 0);
        EXPECT_EQ(errorWord(), 0u);
        UTMAT_CalculerCerPs2PtRayon(&P, &Q, R, c, &n);
        EXPECT_EQ(n, 0);
        UTMAT_CalculerCerTg2CerRayon(&P, 1.0, &Q, 1.0, R, c, t, &n);
        EXPECT_EQ(n, 0);
        UTMAT_CalculerCerTgCerDteRayon(&P, 1.0, &d, R, c, t, &n);
        EXPECT_EQ(n, 0);
        UTMAT_CalculerCerTgCerPs1PtRayon(&P, 1.0, &Q, R, c, t, &n);
        EXPECT_EQ(n, 0);
        EXPECT_EQ(errorWord(), 0u);
    }
    // By |R| for a line and a point: a negative radius is a radius.
    UTMAT_CalculerCerTgDtePs1PtRayon(&d, &P, -1e-4, c, t, &n);
    EXPECT_EQ(n, 0);
    UTMAT_CalculerCerTgDtePs1PtRayon(&d, &P, -5.0, c, t, &n);
    EXPECT_EQ(n, 2);
    for (int i = 0; i < n; ++i) expectSolves({c[i], 5.0, {t[i]}}, {lineObj(d), pointObj(P)});
    // A line with a = b = 0 is a failure in every member that takes one.
    const auto failsWithBadLine = [&](const std::function<void()>& f) {
        n = -1;
        f();
        EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
        EXPECT_EQ(n, 0);
    };
    failsWithBadLine([&] { UTMAT_CalculerCerTg2DteRayon(&d, &bad, 1.0, c, t, &n); });
    failsWithBadLine([&] { UTMAT_CalculerCerTg2DtePs1Pt(&bad, &d, &P, c, r, t, &n); });
    failsWithBadLine([&] { UTMAT_CalculerCerTgDtePs1PtRayon(&bad, &P, 1.0, c, t, &n); });
    failsWithBadLine([&] { UTMAT_CalculerCerTgDtePs2Pt(&bad, &P, &Q, c, r, t, &n); });
    failsWithBadLine([&] { UTMAT_CalculerCerTgCerDteRayon(&P, 1.0, &bad, 1.0, c, t, &n); });
    failsWithBadLine([&] { UTMAT_CalculerCerTgCerDtePs1Pt(&P, 1.0, &bad, &Q, c, r, t, &n); });
    // Null pointers are refused without writing.
    UTMAT_CalculerCerTg2CerPs1Pt(&P, 1.0, &Q, 1.0, nullptr, c, r, t, &n);
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
    UTMAT_CalculerCerTgCerPs2Pt(&P, 1.0, &Q, &P, c, nullptr, t, &n);
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
    UTMAT_CalculerCerPs2PtRayon(&P, &Q, 3.0, c, nullptr);
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
}

TEST(UtmatTangency, NonFiniteInputFindsNothingAndTerminates) {
    UTMAT_setCalculPrecision(1e-4);
    Point2d c[9], t[17];
    double r[9];
    int n = -1;
    const double nan = std::nan(""), inf = HUGE_VAL;
    const Point2d P{1, 2}, bad{nan, 0}, far{inf, 1};
    const UtDroite d{1, 1, 3};
    UTMAT_CalculerCerTg2CerPs1Pt(&P, 1.0, &bad, 2.0, &far, c, r, t, &n);
    EXPECT_LE(n, 8);
    UTMAT_CalculerCerTgCerDtePs1Pt(&bad, nan, &d, &P, c, r, t, &n);
    EXPECT_LE(n, 8);
    UTMAT_CalculerCerTgCerDteRayon(&P, 1e300, &d, 1e300, c, t, &n);
    EXPECT_LE(n, 8);
}

// ---- the circle osculating a clothoid -----------------------------------------------------

namespace {

struct ClothoidPoint {
    Point2d point, centre;
    double radius;
};

// The osculating circle at s > 0 from the tangent direction: the centre is R along the normal
// on the inner side (left for A > 0).
ClothoidPoint osculating(double A, double s) {
    Point2d p, tangent;
    UTMAT_CalculerPosPointArcClotAbscisse(A, s, 0.0, &p, &tangent);
    const double R = A * A / s;
    const double side = A > 0 ? 1.0 : -1.0;  // left normal (-ty, tx), or the right one
    return {p, {p.x - side * R * tangent.y, p.y + side * R * tangent.x}, R};
}

struct ClothoidResult {
    Point2d centre{kSentinel, kSentinel}, point{kSentinel, kSentinel};
    double radius = kSentinel;
    int count = -1;
};

ClothoidResult clothoidCircle(double A, double s1, double s2, Point2d P) {
    ClothoidResult r;
    UTMAT_CalculerCerTgClotPs1Pt(A, s1, s2, &P, &r.centre, &r.radius, &r.point, &r.count);
    return r;
}

}  // namespace

TEST(UtmatTangency, ClothoidCircleThroughAPointBetweenTwoOsculatingCircles) {
    UTMAT_setCalculPrecision(1e-10);
    UTMAT_setDistanceTolerance(1e-6);
    Generator gen(3);
    for (int trial = 0; trial < 40; ++trial) {
        SCOPED_TRACE(trial);
        const double A = gen.uniform(50, 300) * (trial % 2 == 0 ? 1 : -1);
        const double s2 = gen.uniform(5, 100), s1 = s2 + gen.uniform(20, 150), sStar = gen.uniform(s2 + 1, s1 - 1);
        const ClothoidPoint want = osculating(A, sStar);
        // P on the circle at s*, a quarter to three quarters of a turn away from the contact.
        const double phi = std::atan2(want.point.y - want.centre.y, want.point.x - want.centre.x) + gen.uniform(0.5, 5.8);
        const Point2d P{want.centre.x + want.radius * std::cos(phi), want.centre.y + want.radius * std::sin(phi)};
        const ClothoidResult got = clothoidCircle(A, s1, s2, P);
        EXPECT_EQ(errorWord(), 0u);
        ASSERT_EQ(got.count, 1);
        // The osculating circle at the returned point, through P, at the abscissa A^2/R.
        const double s = A * A / got.radius;
        const ClothoidPoint at = osculating(A, s);
        const double scale = want.radius + std::hypot(P.x, P.y);
        EXPECT_NEAR(dist(got.point, at.point), 0.0, 1e-9 * scale);
        EXPECT_NEAR(dist(got.centre, at.centre), 0.0, 1e-9 * scale);
        EXPECT_NEAR(dist(got.centre, P), got.radius, 1e-9 * scale);
        EXPECT_NEAR(s, sStar, 1e-6 * sStar);  // nested circles: only one passes through P
        // With the ends the other way round P is inside the circle at s1: nothing.
        EXPECT_EQ(clothoidCircle(A, s2, s1, P).count, 0);
    }
}

TEST(UtmatTangency, ClothoidCircleAtAnEndAndOnDegenerateInput) {
    UTMAT_setCalculPrecision(1e-4);
    UTMAT_setDistanceTolerance(0.01);
    const double A = 120.0;
    // P at the start point (within the distance tolerance): the osculating circle there.
    const ClothoidPoint start = osculating(A, 40.0);
    ClothoidResult r = clothoidCircle(A, 40.0, 90.0, {start.point.x + 0.005, start.point.y});
    ASSERT_EQ(r.count, 1);
    EXPECT_NEAR(r.radius, A * A / 40.0, 1e-9);
    EXPECT_NEAR(dist(r.centre, start.centre), 0.0, 1e-9);
    EXPECT_NEAR(dist(r.point, start.point), 0.0, 1e-12);
    // At the end point likewise; at the straight start (s = 0) there is no circle.
    const ClothoidPoint end = osculating(-A, 90.0);
    r = clothoidCircle(-A, 0.0, 90.0, end.point);
    ASSERT_EQ(r.count, 1);
    EXPECT_NEAR(dist(r.centre, end.centre), 0.0, 1e-9);
    r = clothoidCircle(A, 0.0, 0.0, {0.0, 0.0});
    EXPECT_EQ(r.count, 0);
    EXPECT_EQ(r.radius, 0.0);
    // A = 0: nothing, no error.  |A| within the precision of 0: the relation is refused.
    r = clothoidCircle(0.0, 10.0, 20.0, {1, 1});
    EXPECT_EQ(r.count, 0);
    EXPECT_EQ(errorWord(), 0u);
    r = clothoidCircle(1e-6, 10.0, 20.0, {1, 1});
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
    EXPECT_EQ(r.count, 0);
    // Adversarial input ends: non-finite values find nothing; with a zero precision the
    // bisection can only stop at its bound.
    const double nan = std::nan(""), big = 1e300;
    for (const auto& in : {std::vector<double>{nan, 10, 20}, {A, nan, 20}, {A, 10, nan}, {big, 1, big}, {A, big, -big}, {A, 1e-300, 1e300}}) {
        r = clothoidCircle(in[0], in[1], in[2], {3, 4});
        EXPECT_LE(r.count, 1);
        r = clothoidCircle(in[0], in[1], in[2], {nan, 4});
        EXPECT_EQ(r.count, 0);
    }
    UTMAT_setCalculPrecision(0.0);
    const ClothoidPoint mid = osculating(A, 60.0);
    r = clothoidCircle(A, 90.0, 40.0, {mid.centre.x, mid.centre.y - mid.radius});
    EXPECT_LE(r.count, 1);
    UTMAT_setCalculPrecision(1e-4);
    UTMAT_setDistanceTolerance(2.0);
}
