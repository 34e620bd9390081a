// Geometry kernel: circles and parabolic arcs through points and by tangency, line and circle
// intersections, kernel sectors and Laguerre's root, checked against the geometry itself:
// circles pass through their points, arcs touch their lines with equal slopes, intersection
// points lie on both objects, roots make the polynomial vanish.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "korvelbase/qmmath.h"
#include "korvelbase/utmat_circles.h"

namespace {

constexpr uint32_t kFailure = ERR_FAILURE;
constexpr double kRelative = 1e-9;
const double kPi = std::acos(-1.0);

uint32_t errorWord() {
    uint32_t e = 0xFFFF, d = 0xFFFF;
    UTMAT_GetErreur(&e, &d);
    return e;
}
void raiseKernelError() { UTMAT_NormaliserAngle(99, 0.0); }

double distance(const Point2d& p, const Point2d& q) { return std::hypot(p.x - q.x, p.y - q.y); }

// The parabolic arc y = ys + (x - xs)^2/(2R) and its slope.
double arcY(const Point2d& s, double r, double x) { return s.y + (x - s.x) * (x - s.x) / (2.0 * r); }
double arcSlope(const Point2d& s, double r, double x) { return (x - s.x) / r; }
Point2d arcPoint(const Point2d& s, double r, double x) { return {x, arcY(s, r, x)}; }

// A line as y = m*x + q in the kernel's form (travelling towards +x).
UtDroite gradeLine(double m, double q) {
    const double n = std::hypot(1.0, m);
    return {m / n, -1.0 / n, q / n};
}
double lineValue(const UtDroite& d, const Point2d& p) {
    return (d.a * p.x + d.b * p.y + d.c) / std::hypot(d.a, d.b);
}
double lineSlope(const UtDroite& d) { return -d.a / d.b; }

// Tolerance for a quantity computed from coordinates of magnitude `scale`.
double tolFor(double scale) { return kRelative * std::fmax(1.0, std::fabs(scale)); }

struct Random {
    std::mt19937 engine{20261124};
    double operator()(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(engine); }
};

}  // namespace

// ---- through points -----------------------------------------------------------------------

TEST(UtmatCirclePs3Pt, PassesThroughSurveyTrianglesAndRefusesCollinearPoints) {
    Random rnd;
    for (int k = 0; k < 500; ++k) {
        const Point2d base{rnd(4e5, 6e5), rnd(4e6, 5e6)};  // survey coordinates
        const Point2d p0 = base, p1{base.x + rnd(-300, 300), base.y + rnd(-300, 300)},
                      p2{base.x + rnd(-300, 300), base.y + rnd(-300, 300)};
        const double area2 = (p1.x - p0.x) * (p2.y - p0.y) - (p1.y - p0.y) * (p2.x - p0.x);
        if (std::fabs(area2) < 1.0 || std::fabs(p1.x - p0.x) < 1e-3) continue;
        Point2d c{};
        double r = 0.0;
        int found = 0;
        UTMAT_CalculerCerPs3Pt(&p0, &p1, &p2, &c, &r, &found);
        ASSERT_EQ(found, 1);
        EXPECT_NEAR(distance(c, p0), r, tolFor(r));
        EXPECT_NEAR(distance(c, p1), r, tolFor(r));
        EXPECT_NEAR(distance(c, p2), r, tolFor(r));
    }
    // P1 exactly above P0: the branch that takes Y from the first equation alone.
    const Point2d a{10, 20}, b{10, 26}, c3{14, 22};
    Point2d c{};
    double r = 0.0;
    int found = 0;
    UTMAT_CalculerCerPs3Pt(&a, &b, &c3, &c, &r, &found);
    ASSERT_EQ(found, 1);
    EXPECT_NEAR(distance(c, a), r, 1e-12);
    EXPECT_NEAR(distance(c, b), r, 1e-12);
    EXPECT_NEAR(distance(c, c3), r, 1e-12);
    // Collinear points (both branches), and P0 = P1: found = 0 without error, outputs kept.
    for (const auto& pts : std::vector<std::vector<Point2d>>{{{0, 0}, {1, 1}, {3, 3}},
                                                            {{5, 0}, {5, 2}, {5, 7}},
                                                            {{1, 1}, {1, 1}, {4, 9}}}) {
        c = {-7, -7};
        found = 1;
        raiseKernelError();
        UTMAT_CalculerCerPs3Pt(&pts[0], &pts[1], &pts[2], &c, &r, &found);
        EXPECT_EQ(found, 0);
        EXPECT_EQ(errorWord(), 0u);
        EXPECT_EQ(c.x, -7.0);
    }
    found = 7;
    UTMAT_CalculerCerPs3Pt(nullptr, &b, &c3, &c, &r, &found);
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_EQ(found, 7);
    UTMAT_CalculerCerPs3Pt(&a, &b, &c3, &c, &r, nullptr);
    EXPECT_EQ(errorWord(), kFailure);
}

TEST(UtmatArcPs3Pt, WorkedExampleAndRecoveryOfTheArcThatMadeThePoints) {
    const Point2d p0{0, 0.1}, p1{2, 0.1}, p2{3, 0.4};
    Point2d s{};
    double r = 0.0;
    int found = 0;
    UTMAT_CalculerArcParPs3Pt(&p1, &p0, &p2, &s, &r, &found);
    ASSERT_EQ(found, 1);
    EXPECT_NEAR(s.x, 1.0, 1e-12);
    EXPECT_NEAR(s.y, 0.0, 1e-12);
    EXPECT_NEAR(r, 5.0, 1e-12);
    Random rnd;
    for (int k = 0; k < 500; ++k) {
        const Point2d summit{rnd(1000, 5000), rnd(50, 300)};
        const double radius = (k % 2 ? 1.0 : -1.0) * rnd(500, 20000);  // sags and crests
        const double x0 = summit.x + rnd(-200, 200), x1 = x0 + rnd(10, 150), x2 = x1 + rnd(10, 150);
        const Point2d a = arcPoint(summit, radius, x0), b = arcPoint(summit, radius, x1),
                      c = arcPoint(summit, radius, x2);
        UTMAT_CalculerArcParPs3Pt(&b, &a, &c, &s, &r, &found);
        ASSERT_EQ(found, 1);
        EXPECT_NEAR(r, radius, 1e-6 * std::fabs(radius));
        EXPECT_NEAR(s.x, summit.x, 1e-6 * std::fabs(summit.x));
        for (const Point2d& p : {a, b, c}) EXPECT_NEAR(arcY(s, r, p.x), p.y, tolFor(p.y) * 10);
    }
    // Collinear points; two points on one vertical (zero radius).  Outputs zeroed.
    const Point2d q0{0, 0}, q1{1, 2}, q2{2, 4}, q3{1, 5};
    s = {9, 9};
    r = 9;
    UTMAT_CalculerArcParPs3Pt(&q1, &q0, &q2, &s, &r, &found);
    EXPECT_TRUE(found == 0 && s.x == 0.0 && s.y == 0.0 && r == 0.0 && errorWord() == 0u);
    UTMAT_CalculerArcParPs3Pt(&q1, &q0, &q3, &s, &r, &found);
    EXPECT_TRUE(found == 0 && r == 0.0 && errorWord() == 0u);
    UTMAT_CalculerArcParPs3Pt(&q1, &q0, nullptr, &s, &r, &found);
    EXPECT_EQ(errorWord(), kFailure);
}

TEST(UtmatArcPs2PtRayonAndSummit, RecoverTheSummitOrTheRadius) {
    Random rnd;
    for (int k = 0; k < 500; ++k) {
        const Point2d summit{rnd(-5000, 5000), rnd(-100, 300)};
        const double radius = (k % 2 ? 1.0 : -1.0) * rnd(200, 30000);
        const double xa = summit.x + rnd(-300, 300), xb = xa + (k % 3 ? 1 : -1) * rnd(5, 200);
        const Point2d a = arcPoint(summit, radius, xa), b = arcPoint(summit, radius, xb);
        Point2d s{};
        int found = 0;
        UTMAT_CalculerArcParPs2PtRayon(&b, &a, radius, &s, &found);
        ASSERT_EQ(found, 1);
        EXPECT_NEAR(s.x, summit.x, 1e-7 * std::fmax(1.0, std::fabs(summit.x)));
        EXPECT_NEAR(arcY(s, radius, a.x), a.y, 1e-7 * std::fmax(1.0, std::fabs(a.y)));
        EXPECT_NEAR(arcY(s, radius, b.x), b.y, 1e-7 * std::fmax(1.0, std::fabs(b.y)));
        double r = 0.0;
        UTMAT_CalculerArcParPs1PtSommet(&summit, &b, &r, &found);
        if (std::fabs(b.y - summit.y) > 1e-6) {
            ASSERT_EQ(found, 1);
            EXPECT_NEAR(r, radius, 1e-6 * std::fabs(radius));
        }
    }
    // P1 vertically above P0; zero radius; P level with the summit.
    const Point2d p0{3, 1}, p1{3, 8}, p2{7, 4}, summit{5, 4};
    Point2d s{1, 1};
    int found = 1;
    UTMAT_CalculerArcParPs2PtRayon(&p1, &p0, 100.0, &s, &found);
    EXPECT_TRUE(found == 0 && s.x == 0.0 && s.y == 0.0 && errorWord() == 0u);
    UTMAT_CalculerArcParPs2PtRayon(&p2, &p0, 0.0, &s, &found);
    EXPECT_TRUE(found == 0 && errorWord() == 0u);
    double r = 5.0;
    UTMAT_CalculerArcParPs1PtSommet(&summit, &p2, &r, &found);
    EXPECT_TRUE(found == 0 && r == 0.0 && errorWord() == 0u);
    // A summit exactly under the point: the degenerate radius 0, reported as found.
    const Point2d above{5, 9};
    UTMAT_CalculerArcParPs1PtSommet(&summit, &above, &r, &found);
    EXPECT_TRUE(found == 1 && r == 0.0);
    UTMAT_CalculerArcParPs1PtSommet(&summit, nullptr, &r, &found);
    EXPECT_EQ(errorWord(), kFailure);
    UTMAT_CalculerArcParPs2PtRayon(&p1, &p0, 1.0, nullptr, &found);
    EXPECT_EQ(errorWord(), kFailure);
}

// ---- by tangency --------------------------------------------------------------------------

TEST(UtmatArcTangency, ArcWithSummitTangentToALine) {
    Random rnd;
    for (int k = 0; k < 300; ++k) {
        const double m = (k % 2 ? 1 : -1) * rnd(0.005, 0.12);
        const UtDroite line = gradeLine(m, rnd(-50, 50));
        const Point2d summit{rnd(-1000, 1000), rnd(-100, 100)};
        if (std::fabs(lineValue(line, summit)) < 0.01) continue;
        double r = 0.0;
        Point2d t{};
        int found = 0;
        UTMAT_CalculerArcParTg1DteSommet(&line, &summit, &r, &t, &found);
        ASSERT_EQ(found, 1);
        EXPECT_NEAR(lineValue(line, t), 0.0, tolFor(t.y) * 10);       // on the line
        EXPECT_NEAR(arcY(summit, r, t.x), t.y, tolFor(t.y) * 10);     // on the arc
        EXPECT_NEAR(arcSlope(summit, r, t.x), m, 1e-9);                // same slope
        // Touching, not crossing: the arc stays on one side of the line.
        for (double x = t.x - 500; x <= t.x + 500; x += 25) {
            const double gap = arcY(summit, r, x) - (-(line.a * x + line.c) / line.b);
            EXPECT_GE(gap * (r > 0 ? 1 : -1), -1e-7);
        }
    }
    // Horizontal and vertical lines, a summit on the line; a line without normal.
    const Point2d summit{0, 1};
    double r = 0;
    Point2d t{};
    int found = 1;
    for (const UtDroite& d : {UtDroite{0, 1, -3}, UtDroite{1, 0, -3}, UtDroite{0.1, -1, 1}}) {
        UTMAT_CalculerArcParTg1DteSommet(&d, &summit, &r, &t, &found);
        EXPECT_TRUE(found == 0 && errorWord() == 0u);
    }
    const UtDroite none{0, 0, 1};
    UTMAT_CalculerArcParTg1DteSommet(&none, &summit, &r, &t, &found);
    EXPECT_TRUE(found == 0 && errorWord() == kFailure);
}

TEST(UtmatArcTangency, VerticalCurveOfGivenRadiusBetweenTwoGrades) {
    Random rnd;
    for (int k = 0; k < 300; ++k) {
        const double m1 = rnd(-0.08, 0.08), m2 = rnd(-0.08, 0.08);
        if (std::fabs(m1 - m2) < 0.002) continue;
        const UtDroite d1 = gradeLine(m1, rnd(-20, 20)), d2 = gradeLine(m2, rnd(-20, 20));
        const double radius = (k % 2 ? 1 : -1) * rnd(1000, 30000);
        Point2d s{}, t[2] = {};
        int found = 0;
        UTMAT_CalculerArcParTg2DteRayon(&d1, &d2, radius, &s, t, &found);
        ASSERT_EQ(found, 1);
        const UtDroite lines[2] = {d1, d2};
        const double slopes[2] = {m1, m2};
        for (int i = 0; i < 2; ++i) {
            EXPECT_NEAR(lineValue(lines[i], t[i]), 0.0, tolFor(t[i].x) * 100);
            EXPECT_NEAR(arcY(s, radius, t[i].x), t[i].y, tolFor(t[i].x) * 100);
            EXPECT_NEAR(arcSlope(s, radius, t[i].x), slopes[i], 1e-9);
        }
        // The usual curve from grade 1 to grade 2 when R*(m2 - m1) > 0.
        EXPECT_EQ(t[0].x < t[1].x, radius * (m2 - m1) > 0);
        EXPECT_NEAR(t[1].x - t[0].x, radius * (m2 - m1), 1e-9 * std::fabs(radius));
    }
    const UtDroite d1 = gradeLine(0.02, 0), d2 = gradeLine(0.02, 5), vertical{1, 0, -4};
    Point2d s{}, t[2] = {};
    int found = 1;
    UTMAT_CalculerArcParTg2DteRayon(&d1, &d2, 1000, &s, t, &found);
    EXPECT_TRUE(found == 0 && errorWord() == 0u);  // parallel grades
    UTMAT_CalculerArcParTg2DteRayon(&d1, &vertical, 1000, &s, t, &found);
    EXPECT_TRUE(found == 0 && errorWord() == 0u);
    const UtDroite d3 = gradeLine(-0.03, 1);
    UTMAT_CalculerArcParTg2DteRayon(&d1, &d3, 0.0, &s, t, &found);
    EXPECT_TRUE(found == 0 && errorWord() == 0u);  // no radius
    UTMAT_CalculerArcParTg2DteRayon(&d1, &d3, 1000, &s, nullptr, &found);
    EXPECT_EQ(errorWord(), kFailure);
}

TEST(UtmatArcTangency, ArcWithSummitTangentToAnotherArc) {
    Random rnd;
    for (int k = 0; k < 300; ++k) {
        const Point2d s1{rnd(-500, 500), rnd(-20, 20)};
        const double r1 = (k % 2 ? 1 : -1) * rnd(1000, 20000);
        const Point2d s2{s1.x + (k % 3 ? 1 : -1) * rnd(20, 400), s1.y + rnd(-5, 5)};
        double r2 = 0.0;
        Point2d t{};
        int found = 0;
        UTMAT_CalculerArcParTg1ArcParSommet(&s1, r1, &s2, &r2, &t, &found);
        if (std::fabs(s2.y - s1.y) < 1e-6) continue;
        ASSERT_EQ(found, 1);
        EXPECT_NEAR(arcY(s1, r1, t.x), t.y, tolFor(t.y) * 10);
        EXPECT_NEAR(arcY(s2, r2, t.x), t.y, 1e-7 * std::fmax(1.0, std::fabs(t.y)));
        EXPECT_NEAR(arcSlope(s1, r1, t.x), arcSlope(s2, r2, t.x), 1e-9);
        // A reverse curve exactly when the tangency lies between the summits.
        const bool between = (t.x - s1.x) * (t.x - s2.x) < 0;
        EXPECT_EQ(between, r1 * r2 < 0);
    }
    const Point2d s1{0, 0}, level{100, 0}, vertical{0, 5};
    double r2 = 0;
    Point2d t{};
    int found = 1;
    UTMAT_CalculerArcParTg1ArcParSommet(&s1, 1000, &level, &r2, &t, &found);
    EXPECT_TRUE(found == 0 && errorWord() == 0u);
    UTMAT_CalculerArcParTg1ArcParSommet(&s1, 1000, &vertical, &r2, &t, &found);
    EXPECT_TRUE(found == 0 && errorWord() == 0u);
    UTMAT_CalculerArcParTg1ArcParSommet(&s1, 0.0, &level, &r2, &t, &found);
    EXPECT_TRUE(found == 0 && errorWord() == 0u);
}

TEST(UtmatArcTangency, LineOfGivenGradeTangentToAnArc) {
    Random rnd;
    for (int k = 0; k < 300; ++k) {
        const Point2d s{rnd(-1000, 1000), rnd(-50, 50)};
        const double r = (k % 2 ? 1 : -1) * rnd(500, 20000), m = rnd(-0.1, 0.1);
        UtDroite d{};
        Point2d t{};
        int found = 0;
        UTMAT_CalculerDroiteTg1ArcParPente(&s, r, m, &d, &t, &found);
        ASSERT_EQ(found, 1);
        EXPECT_NEAR(d.a * d.a + d.b * d.b, 1.0, 1e-15);
        EXPECT_NEAR(lineSlope(d), m, 1e-12);
        EXPECT_LT(d.b, 0.0);  // travel towards +x: the right (positive) side is below
        EXPECT_NEAR(lineValue(d, t), 0.0, tolFor(t.x));
        EXPECT_NEAR(arcY(s, r, t.x), t.y, tolFor(t.y));
        EXPECT_NEAR(arcSlope(s, r, t.x), m, 1e-12);
        // The arc lies above a sag's tangent and below a crest's.
        for (double x = t.x - 300; x <= t.x + 300; x += 30) {
            const Point2d p{x, arcY(s, r, x)};
            EXPECT_LE(lineValue(d, p) * (r > 0 ? 1 : -1), 1e-7);
        }
    }
    const Point2d s{0, 0};
    UtDroite d{};
    Point2d t{};
    int found = 1;
    UTMAT_CalculerDroiteTg1ArcParPente(&s, 0.0, 0.01, &d, &t, &found);
    EXPECT_TRUE(found == 0 && errorWord() == 0u);
    UTMAT_CalculerDroiteTg1ArcParPente(&s, 100.0, std::nan(""), &d, &t, &found);
    EXPECT_TRUE(found == 0 && errorWord() == 0u);
    UTMAT_CalculerDroiteTg1ArcParPente(&s, 100.0, 0.01, nullptr, &t, &found);
    EXPECT_EQ(errorWord(), kFailure);
}

// ---- intersections and radii --------------------------------------------------------------

TEST(UtmatIntersections, LineAndCirclePointsLieOnBothInTravelOrder) {
    Random rnd;
    for (int k = 0; k < 500; ++k) {
        const Point2d c{rnd(-1000, 1000), rnd(-1000, 1000)};
        const double r = rnd(1, 200);
        const Point2d a{c.x + rnd(-300, 300), c.y + rnd(-300, 300)}, b{c.x + rnd(-300, 300), c.y + rnd(-300, 300)};
        UtDroite d{};
        UTMAT_CalculerDroite2Pt(&a, &b, &d);
        const double h = std::fabs(lineValue(d, c));
        if (std::fabs(h - r) < 1e-3) continue;
        Point2d pts[2] = {};
        int n = -1;
        UTMAT_CalculerIntersectionDroiteCercle(&d, &c, r, pts, &n);
        ASSERT_EQ(n, h < r ? 2 : 0);
        for (int i = 0; i < n; ++i) {
            EXPECT_NEAR(lineValue(d, pts[i]), 0.0, tolFor(1000));
            EXPECT_NEAR(distance(pts[i], c), r, tolFor(1000));
        }
        if (n == 2) {  // the first met when travelling from a to b
            const double along0 = (pts[0].x - a.x) * (b.x - a.x) + (pts[0].y - a.y) * (b.y - a.y);
            const double along1 = (pts[1].x - a.x) * (b.x - a.x) + (pts[1].y - a.y) * (b.y - a.y);
            EXPECT_LT(along0, along1);
        }
    }
    // An exact tangent, a line given unscaled, and the refusals.
    const Point2d c{2, 3};
    const UtDroite tangent{0, 5, -40};  // y = 8, five above the centre
    Point2d pts[2] = {};
    int n = 0;
    UTMAT_CalculerIntersectionDroiteCercle(&tangent, &c, 5.0, pts, &n);
    EXPECT_EQ(n, 1);
    EXPECT_NEAR(pts[0].x, 2.0, 1e-12);
    EXPECT_NEAR(pts[0].y, 8.0, 1e-12);
    const UtDroite none{0, 0, 1};
    n = 5;
    UTMAT_CalculerIntersectionDroiteCercle(&none, &c, 5.0, pts, &n);
    EXPECT_TRUE(n == 0 && errorWord() == kFailure);
    UTMAT_CalculerIntersectionDroiteCercle(&tangent, &c, -5.0, pts, &n);
    EXPECT_TRUE(n == 0 && errorWord() == kFailure);
    UTMAT_CalculerIntersectionDroiteCercle(&tangent, &c, 5.0, nullptr, &n);
    EXPECT_EQ(errorWord(), kFailure);
}

TEST(UtmatIntersections, TwoCirclesPointsLieOnBothLeftFirst) {
    Random rnd;
    for (int k = 0; k < 500; ++k) {
        const Point2d c1{rnd(-500, 500), rnd(-500, 500)}, c2{rnd(-500, 500), rnd(-500, 500)};
        const double r1 = rnd(1, 600), r2 = rnd(1, 600), d = distance(c1, c2);
        if (std::fabs(d - (r1 + r2)) < 1e-3 || std::fabs(d - std::fabs(r1 - r2)) < 1e-3) continue;
        Point2d pts[2] = {};
        int n = -1;
        UTMAT_CalculerIntersection2Cercle(&c1, r1, &c2, r2, pts, &n);
        ASSERT_EQ(n, (d < r1 + r2 && d > std::fabs(r1 - r2)) ? 2 : 0);
        for (int i = 0; i < n; ++i) {
            EXPECT_NEAR(distance(pts[i], c1), r1, tolFor(1000));
            EXPECT_NEAR(distance(pts[i], c2), r2, tolFor(1000));
        }
        if (n == 2) {
            const double side = (c2.x - c1.x) * (pts[0].y - c1.y) - (c2.y - c1.y) * (pts[0].x - c1.x);
            EXPECT_GT(side, 0.0);  // left of C1 -> C2
        }
    }
    const Point2d a{0, 0}, b{6, 0};
    Point2d pts[2] = {};
    int n = 0;
    UTMAT_CalculerIntersection2Cercle(&a, 3.0, &b, 3.0, pts, &n);  // touching
    EXPECT_EQ(n, 1);
    EXPECT_NEAR(pts[0].x, 3.0, 1e-12);
    UTMAT_CalculerIntersection2Cercle(&a, 3.0, &a, 2.0, pts, &n);  // concentric
    EXPECT_TRUE(n == 0 && errorWord() == 0u);
    UTMAT_CalculerIntersection2Cercle(&a, 3.0, &a, 3.0, pts, &n);  // the same circle
    EXPECT_TRUE(n == 0 && errorWord() == kFailure);
    UTMAT_CalculerIntersection2Cercle(&a, std::nan(""), &b, 3.0, pts, &n);
    EXPECT_TRUE(n == 0 && errorWord() == kFailure);
}

TEST(UtmatIntersections, DirectionOfARadius) {
    const Point2d c{10, 10};
    const double expected[][3] = {{11, 10, 0.0}, {10, 11, kPi / 2}, {9, 10, kPi},
                                  {10, 9, 1.5 * kPi}, {11, 9, 1.75 * kPi}};
    for (const auto& e : expected) {
        const Point2d p{e[0], e[1]};
        EXPECT_NEAR(UTMAT_CalculerAngleRayonPtCentre(&p, &c), e[2], 1e-15);
        EXPECT_EQ(errorWord(), 0u);
    }
    const Point2d justBelow{1.0, -1e-300}, origin{0, 0};
    const double t = UTMAT_CalculerAngleRayonPtCentre(&justBelow, &origin);
    EXPECT_TRUE(t >= 0.0 && t < 2 * kPi);
    EXPECT_EQ(UTMAT_CalculerAngleRayonPtCentre(&c, &c), 0.0);
    EXPECT_EQ(errorWord(), kFailure);
}

// ---- kernel sectors -----------------------------------------------------------------------

TEST(UtmatSectors, SixRelationsAndAgreementWithThePlaneFamily) {
    const double q = kPi / 2;
    // start1, sweep1, start2, sweep2, relation
    const double cases[][5] = {
        {0, q, 2 * q, q, 1},              // disjoint
        {0, 3 * q, q, q / 2, 2},          // second inside first
        {0.1, 0.1, 0.0, q, 3},            // first inside second
        {0, 2 * q, q, 2 * q, 4},          // first then second
        {q, 2 * q, 0, 2 * q, 5},          // second then first
        {0, 3 * q, 2 * q, 3 * q, 6},      // both ends overlap
        {1, 1, 1, 1, 2},                  // equal
        {0, 1, 1, 1, 4},                  // touching edges share a direction
        {q, -q, 0.2, 0.3, 2},             // a clockwise sweep is the sector before its start
        {0.5, 10.0, 3, 1, 2},             // a sweep beyond a turn is the whole circle
    };
    for (const auto& c : cases) {
        EXPECT_EQ(UTMAT_Classer2Secteurs(c[0], c[1], c[2], c[3]), static_cast<int>(c[4]))
            << c[0] << " " << c[1] << " " << c[2] << " " << c[3];
        const double tol = UTMAT_getCalculPrec();
        double ks[2], kw[2], qs[2], qw[2];
        int kn = -1, qn = -1, relation = 0;
        UTMAT_CalculerProduitSecteur(c[0], c[1], c[2], c[3], ks, kw, &kn);
        ASSERT_EQ(qmMath_calculateAngularSectorProduct(qs, qw, &qn, &relation, c[0], c[1], c[2], c[3], tol), 0);
        EXPECT_EQ(relation, static_cast<int>(c[4]));
        ASSERT_EQ(kn, qn);
        for (int i = 0; i < kn; ++i) EXPECT_TRUE(ks[i] == qs[i] && kw[i] == qw[i]);
        UTMAT_CalculerSommeSecteur(c[0], c[1], c[2], c[3], ks, kw, &kn);
        ASSERT_EQ(qmMath_calculateAngularSectorSum(qs, qw, &qn, nullptr, c[0], c[1], c[2], c[3], tol), 0);
        ASSERT_EQ(kn, qn);
        for (int i = 0; i < kn; ++i) EXPECT_TRUE(ks[i] == qs[i] && kw[i] == qw[i]);
    }
    // Case 6: two pieces of intersection, the whole circle as union.
    double s[2], w[2];
    int n = 0;
    UTMAT_CalculerProduitSecteur(0, 3 * q, 2 * q, 3 * q, s, w, &n);
    ASSERT_EQ(n, 2);
    EXPECT_NEAR(s[0], 0.0, 1e-15);
    EXPECT_NEAR(w[0], q, 1e-15);
    EXPECT_NEAR(s[1], 2 * q, 1e-15);
    EXPECT_NEAR(w[1], q, 1e-15);
    UTMAT_CalculerSommeSecteur(0, 3 * q, 2 * q, 3 * q, s, w, &n);
    EXPECT_TRUE(n == 1 && w[0] == 2 * kPi);
    // Position of a direction: inside, on an edge, outside, and the whole circle.
    EXPECT_EQ(UTMAT_ComparerAngleASecteurAngulaire(0.5, 0, 1), -1);
    EXPECT_EQ(UTMAT_ComparerAngleASecteurAngulaire(1.00005, 0, 1), 0);
    EXPECT_EQ(UTMAT_ComparerAngleASecteurAngulaire(-0.00005, 0, 1), 0);
    EXPECT_EQ(UTMAT_ComparerAngleASecteurAngulaire(2 * kPi + 0.5, 0, 1), -1);
    EXPECT_EQ(UTMAT_ComparerAngleASecteurAngulaire(3, 0, 1), 1);
    EXPECT_EQ(UTMAT_ComparerAngleASecteurAngulaire(0.5, 1, -1), -1);
    EXPECT_EQ(UTMAT_ComparerAngleASecteurAngulaire(4, 1, 2 * kPi), -1);
    // Non-finite values and null arrays.
    EXPECT_EQ(UTMAT_Classer2Secteurs(std::nan(""), 1, 0, 1), 0);
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_EQ(UTMAT_ComparerAngleASecteurAngulaire(0, 0, INFINITY), 0);
    EXPECT_EQ(errorWord(), kFailure);
    n = 9;
    UTMAT_CalculerSommeSecteur(0, 1, 0, std::nan(""), s, w, &n);
    EXPECT_TRUE(n == 0 && errorWord() == kFailure);
    UTMAT_CalculerProduitSecteur(0, 1, 0, 1, nullptr, w, &n);
    EXPECT_EQ(errorWord(), kFailure);
}

// ---- Laguerre ----------------------------------------------------------------------------

namespace {

double evaluate(const std::vector<double>& c, double x) {
    double v = 0.0;
    for (std::size_t k = c.size(); k-- > 0;) v = v * x + c[k];
    return v;
}
// The rounding scale of the value at x: the sum of |c_k| |x|^k.
double evaluationScale(const std::vector<double>& c, double x) {
    double v = 0.0;
    for (std::size_t k = c.size(); k-- > 0;) v = v * std::fabs(x) + std::fabs(c[k]);
    return v;
}
std::vector<double> fromRoots(const std::vector<double>& roots) {
    std::vector<double> c{1.0};
    for (double r : roots) {
        std::vector<double> next(c.size() + 1, 0.0);
        for (std::size_t k = 0; k < c.size(); ++k) {
            next[k + 1] += c[k];
            next[k] -= r * c[k];
        }
        c = next;
    }
    return c;
}
bool laguerre(const std::vector<double>& c, double start, double& root) {
    int found = -1;
    UTMAT_CalculerRacinePolynomeLaguerre(c.data(), static_cast<int>(c.size()) - 1, start, &root, &found);
    return found == 1;
}

}  // namespace

TEST(UtmatLaguerre, FindsRealRootsThatMakeThePolynomialVanish) {
    double root = 0.0;
    ASSERT_TRUE(laguerre({-6, 11, -6, 1}, 2.2, root));  // (x-1)(x-2)(x-3)
    EXPECT_NEAR(root, 2.0, 1e-14);
    ASSERT_TRUE(laguerre({-3, 1, -3, 1}, 0.0, root));  // (x^2+1)(x-3): a complex pair first
    EXPECT_NEAR(root, 3.0, 1e-13);
    ASSERT_TRUE(laguerre({-4, 0, 1, 0, 0}, 100.0, root));  // zero leading terms dropped
    EXPECT_NEAR(std::fabs(root), 2.0, 1e-14);
    // Roots 1..10 from starts across the range, and random real-rooted polynomials.
    const std::vector<double> wilkinson = fromRoots({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    for (double start = -5; start <= 15; start += 0.7) {
        ASSERT_TRUE(laguerre(wilkinson, start, root)) << start;
        EXPECT_LE(std::fabs(evaluate(wilkinson, root)), 1e-12 * evaluationScale(wilkinson, root));
        EXPECT_NEAR(root, std::round(root), 1e-8);
    }
    Random rnd;
    for (int k = 0; k < 200; ++k) {
        std::vector<double> roots;
        const int degree = 1 + k % 7;
        for (int i = 0; i < degree; ++i) roots.push_back(rnd(-50, 50));
        std::vector<double> c = fromRoots(roots);
        for (double& v : c) v *= 3.5;
        ASSERT_TRUE(laguerre(c, rnd(-60, 60), root));
        EXPECT_LE(std::fabs(evaluate(c, root)), 1e-11 * evaluationScale(c, root));
    }
    // Multiple roots converge slowly and come out complex-looking; they are still found.
    for (const auto& c : {fromRoots({1, 1, 1}), fromRoots({2, 2, -3}), fromRoots({0.5, 0.5, 0.5, 0.5})}) {
        for (double start : {-7.0, 0.0, 0.9, 6.0}) {
            ASSERT_TRUE(laguerre(c, start, root)) << start;
            EXPECT_LE(std::fabs(evaluate(c, root)), 1e-12 * evaluationScale(c, root));
        }
    }
    // Without real roots, constants, and refusals.
    EXPECT_FALSE(laguerre({1, 0, 1}, 0.3, root));
    EXPECT_FALSE(laguerre({1, 0, 2, 0, 1}, -2.0, root));  // (x^2+1)^2
    EXPECT_EQ(errorWord(), 0u);
    EXPECT_FALSE(laguerre({-6, 11, -6, 1}, 1e300, root));  // the cubic overflows at the start
    EXPECT_FALSE(laguerre({5}, 0.0, root));
    EXPECT_FALSE(laguerre({0, 0, 0}, 0.0, root));
    EXPECT_EQ(errorWord(), 0u);
    std::vector<double> tooHigh(UTMAT_LAGUERRE_MAX_DEGREE + 2, 1.0);
    EXPECT_FALSE(laguerre(tooHigh, 0.0, root));
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_FALSE(laguerre({1, std::nan(""), 1}, 0.0, root));
    EXPECT_EQ(errorWord(), kFailure);
    int found = 3;
    UTMAT_CalculerRacinePolynomeLaguerre(nullptr, 2, 0.0, &root, &found);
    EXPECT_TRUE(found == 3 && errorWord() == kFailure);
}

TEST(UtmatCirclesRobustness, SpecialValuesGiveAStatusNeverACrash) {
    const double values[] = {0.0, -0.0, 1.0, -2.5, 1e-300, 1e300, -1e300, INFINITY, -INFINITY, std::nan("")};
    const int n = static_cast<int>(sizeof values / sizeof values[0]);
    for (int i = 0; i < n * n * n; ++i) {
        const double u = values[i % n], v = values[(i / n) % n], w = values[i / (n * n)];
        const Point2d a{u, v}, b{v, w}, c{w, u};
        const UtDroite d{u, v, w};
        Point2d p{}, pts[2] = {};
        double r = 0.0;
        int found = -1, count = -1;
        UTMAT_CalculerCerPs3Pt(&a, &b, &c, &p, &r, &found);
        EXPECT_TRUE(found == 0 || found == 1);
        UTMAT_CalculerArcParPs3Pt(&a, &b, &c, &p, &r, &found);
        EXPECT_TRUE(found == 0 || found == 1);
        UTMAT_CalculerArcParPs2PtRayon(&a, &b, w, &p, &found);
        UTMAT_CalculerArcParPs1PtSommet(&a, &b, &r, &found);
        // The tangency constructions report only finite results.
        UTMAT_CalculerArcParTg1DteSommet(&d, &a, &r, &p, &found);
        EXPECT_TRUE(found == 0 || (std::isfinite(r) && std::isfinite(p.x) && std::isfinite(p.y)));
        UTMAT_CalculerArcParTg2DteRayon(&d, &d, u, &p, pts, &found);
        EXPECT_EQ(found, 0);  // a line with itself: parallel grades, or a failure
        UTMAT_CalculerArcParTg1ArcParSommet(&a, w, &b, &r, &p, &found);
        EXPECT_TRUE(found == 0 || (std::isfinite(r) && std::isfinite(p.x) && std::isfinite(p.y)));
        UtDroite line{};
        UTMAT_CalculerDroiteTg1ArcParPente(&a, v, w, &line, &p, &found);
        EXPECT_TRUE(found == 0 || (std::isfinite(line.a) && std::isfinite(p.y)));
        UTMAT_CalculerIntersectionDroiteCercle(&d, &a, w, pts, &count);
        EXPECT_TRUE(count >= 0 && count <= 2);
        UTMAT_CalculerIntersection2Cercle(&a, u, &b, w, pts, &count);
        EXPECT_TRUE(count >= 0 && count <= 2);
        const double t = UTMAT_CalculerAngleRayonPtCentre(&a, &b);
        EXPECT_TRUE(std::isnan(t) || (t >= 0.0 && t < 2 * kPi));
        double s[2], sw[2];
        UTMAT_CalculerProduitSecteur(u, v, w, u, s, sw, &count);
        EXPECT_TRUE(count >= 0 && count <= 2);
        UTMAT_CalculerSommeSecteur(u, v, w, u, s, sw, &count);
        EXPECT_TRUE(count >= 0 && count <= 2);
        const double coefficients[4] = {u, v, w, 1.0};
        UTMAT_CalculerRacinePolynomeLaguerre(coefficients, 3, v, &r, &found);
        EXPECT_TRUE(found == 0 || std::isfinite(r));
    }
}
