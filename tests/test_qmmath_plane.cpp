// Lines, circles, polynomial roots, parabolas and spiral length of the plane-mathematics
// family, checked against independent geometry.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

#include "korvelbase/qmmath.h"

namespace {

constexpr double kSentinel = -777.0;
using Pt = std::pair<double, double>;

struct Rand {
    std::mt19937 rng{20240611};
    double operator()(double lo, double hi) {
        return std::uniform_real_distribution<double>(lo, hi)(rng);
    }
};

// Signed distance of P from the line 1->2 by the plain cross product (positive right).
double rightOffset(double px, double py, double x1, double y1, double x2, double y2) {
    return ((px - x1) * (y2 - y1) - (py - y1) * (x2 - x1)) / std::hypot(x2 - x1, y2 - y1);
}
double distance(const Pt& p, double x, double y) { return std::hypot(p.first - x, p.second - y); }

TEST(QmMathLines, OffsetsProjectionsAndIntersectionsAgreeWithGeometry) {
    Rand r;
    for (int i = 0; i < 100; ++i) {
        const double x1 = r(-50, 50), y1 = r(-50, 50), x2 = r(-50, 50), y2 = r(-50, 50);
        const double x3 = r(-50, 50), y3 = r(-50, 50), x4 = r(-50, 50), y4 = r(-50, 50);
        const double px = r(-50, 50), py = r(-50, 50), want = r(-20, 20);
        const double expected = rightOffset(px, py, x1, y1, x2, y2);
        double a = 0, b = 0, c = 0, dist = 0, offset = 0, fx = 0, fy = 0, gx = 0, gy = 0, t = 0;
        ASSERT_EQ(qmMath_calculateLineEquationFromOriginAndDirection2d(&a, &b, &c, x1, y1, x2 - x1,
                                                                       y2 - y1), 0);
        ASSERT_NEAR(a * x2 + b * y2 + c, 0.0, 1e-9);
        ASSERT_EQ(qmMath_calculerDistancePtLineEquation2d(&dist, 3 * a, 3 * b, 3 * c, px, py), 0);
        ASSERT_NEAR(dist, expected, 1e-9);
        ASSERT_EQ(qmMath_offsetToLine2d(&offset, px, py, x1, y1, x2, y2), 0);
        ASSERT_NEAR(offset, expected, 1e-9);
        ASSERT_EQ(qmMath_sideOfLine2d(px, py, x1, y1, x2, y2), expected > 0 ? 1 : -1);
        ASSERT_EQ(qmMath_projectOnLine2d(&fx, &fy, &offset, px, py, x1, y1, x2, y2), 0);
        ASSERT_NEAR(rightOffset(fx, fy, x1, y1, x2, y2), 0.0, 1e-9);            // on the line
        ASSERT_NEAR((px - fx) * (x2 - x1) + (py - fy) * (y2 - y1), 0.0, 1e-8);  // perpendicular
        const double len = std::hypot(x2 - x1, y2 - y1), tx = (x2 - x1) / len, ty = (y2 - y1) / len;
        ASSERT_EQ(qmMath_projectOnLineDefinedByPointAndTangent2d(&gx, &gy, &t, &offset, px, py, x1,
                                                                 y1, tx, ty), 0);
        ASSERT_NEAR(distance({gx, gy}, fx, fy) + std::fabs(x1 + t * tx - fx), 0.0, 1e-9);
        ASSERT_NEAR(offset, expected, 1e-9);
        // The point of line 3->4 at a wanted offset from line 1->2.
        ASSERT_EQ(qmMath_projectOnLineByOffsetToLine2d(&fx, &fy, x1, y1, x2, y2, x3, y3, x4, y4,
                                                       want), 0);
        ASSERT_NEAR(rightOffset(fx, fy, x3, y3, x4, y4), 0.0, 1e-6);
        ASSERT_NEAR(rightOffset(fx, fy, x1, y1, x2, y2), want, 1e-6);
        ASSERT_EQ(qmMath_intersectLineWithLine2d(&fx, &fy, x1, y1, x2, y2, x3, y3, x4, y4), 0);
        const double scale = 1.0 + std::hypot(fx, fy);
        ASSERT_NEAR(rightOffset(fx, fy, x1, y1, x2, y2) / scale, 0.0, 1e-9);
        ASSERT_NEAR(rightOffset(fx, fy, x3, y3, x4, y4) / scale, 0.0, 1e-9);
    }
    EXPECT_EQ(qmMath_sideOfLine2d(0, -1, 0, 0, 1, 0), 1);  // below a line heading east: right
    double lx = 0, ly = 0;  // (2, 1) in a frame turned a quarter left and placed at (3, 4)
    EXPECT_EQ(qmMath_locateByTranslationRotation2d(&lx, &ly, 2, 1, 3, 4, M_PI / 2), 0);
    EXPECT_EQ(Pt(lx, ly), Pt(2.0, 6.0));
    EXPECT_EQ(qmMath_locateByDistanceTangent2d(nullptr, nullptr, 1, 2, 10, 0.6, 0.8), ERR_FAILURE);
    double x = kSentinel, offset = 5;  // a degenerate line: offset zeroed before the check
    EXPECT_EQ(qmMath_offsetToLine2d(&offset, 1, 1, 2, 2, 2, 2), ERR_FAILURE);
    EXPECT_EQ(offset, 0.0);
    EXPECT_EQ(qmMath_projectOnLine2d(&x, nullptr, nullptr, 1, 1, 3, 3, 3, 3), ERR_FAILURE);
    EXPECT_EQ(x, kSentinel);
    offset = kSentinel;  // a zero tangent fails after the foot (the origin) was written
    EXPECT_EQ(qmMath_projectOnLineDefinedByPointAndTangent2d(&x, nullptr, nullptr, &offset, 5, 5,
                                                             2, 3, 0, 0), ERR_FAILURE);
    EXPECT_EQ(Pt(x, offset), Pt(2.0, kSentinel));
    EXPECT_EQ(qmMath_projectOnLineByOffsetToLine2d(&x, nullptr, 0, 0, 1, 0, 0, 1, 1, 1, 2.0),
              ERR_FAILURE);  // parallel lines
    x = kSentinel;  // parallel and coincident lines give 1, the output untouched
    EXPECT_EQ(qmMath_intersectLineWithLine2d(&x, nullptr, 0, 0, 1, 1, 0, 1, 2, 3), 1);
    EXPECT_EQ(qmMath_intersectLineWithLine2d(&x, nullptr, 0, 0, 1, 1, 2, 2, 3, 3), 1);
    EXPECT_EQ(x, kSentinel);

    struct Case { double x3, y3, x4, y4; int overlap; };  // only the second segment's ends count
    const Case cases[] = {{-1, 0, 2, 0, 0},  // covers the first segment entirely: deliberately 0
                          {2, 0, 0.5, 0, 1}, {0.2, 0, 0.8, 0, 1}, {1, 0, 2, 0, 0},  // end only
                          {0.5, 0.1, 0.7, 0.1, 0}, {0.5, 0, 0.6, 0.5, 0}};  // off; not parallel
    for (const Case& c : cases) {
        EXPECT_EQ(qmMath_overlapLineSegments(0, 0, 1, 0, c.x3, c.y3, c.x4, c.y4, 0.001), c.overlap)
            << &c - cases;
    }
}

TEST(QmMathCircles, IntersectionsTangentsProjectionsAndThreePointCircles) {
    Pt p1, p2;
    int count = -1;
    const auto lineCircle = [&](double a, double b, double c, double cx, double cy, double rad,
                                double tol) {
        return qmMath_calculateIntersectionLineCircle2d(&p1.first, &p1.second, &p2.first,
                                                        &p2.second, &count, a, b, c, cx, cy, rad,
                                                        tol);
    };
    const auto circleCircle = [&](double cx, double cy, double r1, double cx2, double cy2,
                                  double r2, double tol) {
        return qmMath_calculateIntersectionCircleCircle2d(&p1.first, &p1.second, &p2.first,
                                                          &p2.second, &count, cx, cy, r1, cx2, cy2,
                                                          r2, tol);
    };
    const auto tangents = [&](double cx, double cy, double rad, double px, double py) {
        return qmMath_lineTangentToCircleByPoint(&p1.first, &p1.second, &p2.first, &p2.second, cx,
                                                 cy, rad, px, py, 1e-9);
    };
    Rand r;
    for (int i = 0; i < 150; ++i) {
        const double cx = r(-50, 50), cy = r(-50, 50), radius = r(1, 20);
        const double a = r(-3, 3), b = r(-3, 3), h = r(-1.5, 1.5) * radius;  // h: line to centre
        const double c = h * std::hypot(a, b) - a * cx - b * cy;
        ASSERT_EQ(lineCircle(a, b, c, cx, cy, radius, 1e-9), 0);
        ASSERT_EQ(count, std::fabs(h) < radius ? 2 : 0);
        for (int k = 0; k < count; ++k) {
            const Pt& p = k ? p2 : p1;
            ASSERT_NEAR(distance(p, cx, cy), radius, 1e-8);
            ASSERT_NEAR((a * p.first + b * p.second + c) / std::hypot(a, b), 0.0, 1e-8);
        }
        if (count == 2) {  // point 1 lies ahead of point 2 along the tangent (-b, a)
            ASSERT_GT((p1.first - p2.first) * -b + (p1.second - p2.second) * a, 0.0);
        }
        const double cx2 = r(-50, 50), cy2 = r(-50, 50), r2 = r(1, 20);
        const double d = std::hypot(cx2 - cx, cy2 - cy);
        ASSERT_EQ(circleCircle(cx, cy, radius, cx2, cy2, r2, 1e-9), 0);
        ASSERT_EQ(count, d < radius + r2 && d > std::fabs(radius - r2) ? 2 : 0);
        for (int k = 0; k < count; ++k) {
            ASSERT_NEAR(distance(k ? p2 : p1, cx, cy), radius, 1e-7);
            ASSERT_NEAR(distance(k ? p2 : p1, cx2, cy2), r2, 1e-7);
        }
        // Tangent points seen from an outside point: on the circle, radius perpendicular to PT.
        const double ang = r(0, 6.3), far = radius * r(1.05, 10);
        const double px = cx + far * std::cos(ang), py = cy + far * std::sin(ang);
        ASSERT_EQ(tangents(cx, cy, radius, px, py), 0);
        for (const auto& [x, y] : {p1, p2}) {
            ASSERT_NEAR(std::hypot(x - cx, y - cy), radius, 1e-8);
            ASSERT_NEAR((x - cx) * (x - px) + (y - cy) * (y - py), 0.0, 1e-7 * far * far);
        }
        ASSERT_LT(rightOffset(p1.first, p1.second, px, py, cx, cy), 0.0);  // left of P->C first
        ASSERT_GT(rightOffset(p2.first, p2.second, px, py, cx, cy), 0.0);
        const double qx = r(-99, 99), qy = r(-99, 99);  // the nearest point of the circle
        ASSERT_EQ(qmMath_projectPointOnCircle2d(&p1.first, &p1.second, nullptr, qx, qy, cx, cy,
                                                radius), 0);
        ASSERT_NEAR(distance(p1, cx, cy), radius, 1e-9 * radius);
        ASSERT_NEAR(distance(p1, qx, qy), std::fabs(std::hypot(qx - cx, qy - cy) - radius),
                    1e-9 * radius);
        // The circle through three points of any arc, radius up to 500.
        const double big = r(0.5, 500), t0 = r(0, 6.3), t1 = t0 + r(0.2, 3), t2 = t1 + r(0.2, 3);
        double pt[6], gr = 0;
        for (int k = 0; k < 3; ++k) {
            const double t = k == 0 ? t0 : k == 1 ? t1 : t2;
            pt[2 * k] = cx + big * std::cos(t), pt[2 * k + 1] = cy + big * std::sin(t);
        }
        ASSERT_EQ(qmMath_computeCurveRadiusFromThreePoints(pt[0], pt[1], pt[2], pt[3], pt[4], pt[5],
                                                           &p1.first, &p1.second, &gr), 0);
        ASSERT_NEAR(gr, big, 1e-8 * big);
        ASSERT_NEAR(distance(p1, cx, cy), 0.0, 1e-8 * big);
    }
    // Tangency within the tolerance (binary-exact values): distance r + tol gives 1, r + 2 tol 0;
    // the second point is written only for two.
    p2 = {kSentinel, kSentinel};
    EXPECT_EQ(lineCircle(0, 4, -5, 0, 0, 1, 0.25), 0);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(p1, Pt(0.0, 1.25));
    EXPECT_EQ(p2, Pt(kSentinel, kSentinel));
    EXPECT_EQ(qmMath_calculateIntersectionLineCircle2d(nullptr, nullptr, nullptr, nullptr, &count,
                                                       0, 4, -6, 0, 0, 1, 0.25), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(lineCircle(0, 0, 1, 0, 0, 1, 0.25), ERR_FAILURE);
    // Concentric circles: equal ones return 2, unequal ones 0, with count 0 either way.
    EXPECT_EQ(circleCircle(3, 4, 5, 3, 4, 5, 1e-6), 2);
    EXPECT_EQ(count, 0);
    count = -1;
    EXPECT_EQ(circleCircle(3, 4, 5, 3, 4, 6, 1e-6), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(tangents(0, 0, 2, 1, 0.5), ERR_FAILURE);
    EXPECT_EQ(p2, Pt(1.0, 0.5));  // inside: the outputs hold P
    EXPECT_EQ(tangents(0, 0, 2, 0, -2), 0);
    EXPECT_EQ(p1, Pt(0.0, -2.0));  // on the circle: both tangent points are P
    // Collinear in any direction and order: 1e100, the centre untouched.
    const double straights[][6] = {{5, 5, 5, 7, 5, 9}, {1, 2, 3, 5, 5, 8}, {0, 0, 2, 0, 1, 0}};
    for (const auto& p : straights) {
        double gx = kSentinel, gr = 0;
        EXPECT_EQ(qmMath_computeCurveRadiusFromThreePoints(p[0], p[1], p[2], p[3], p[4], p[5], &gx,
                                                           nullptr, &gr), 0);
        EXPECT_EQ(Pt(gr, gx), Pt(1e100, kSentinel)) << p[2] << "," << p[3];
    }
}

TEST(QmMathPolynomials, WorkedCasesAndRandomPolynomialsWithKnownRoots) {
    struct Case { double c[4]; double tol; int count; double roots[3]; };
    const Case cases[] = {
        {{-6, 11, -6, 1}, 1e-12, 3, {1, 2, 3}},  // (x - 1)(x - 2)(x - 3), ascending
        {{0, 2, -3, 1}, 1e-9, 3, {0, 1, 2}},     // a root at 0 stays exactly 0
        {{-6, 1, 1, 0}, 1e-12, 2, {-3, 2}},      // quadratic, ascending
        {{1, -2, 1, 0}, 1e-12, 2, {1, 1}},       // double root given twice
        {{1, 0, 1, 0}, 1e-12, 0, {}},            // no real root
        {{4, 2, 1e-9, 1e-9}, 1e-6, 1, {-2}},     // leading terms under the tolerance
        {{4, 0, 0, 0}, -1.0, 0, {}},             // constant, negative tolerance: no division
    };
    for (const Case& k : cases) {
        double roots[3] = {kSentinel, kSentinel, kSentinel};
        ASSERT_EQ(qmMath_solvePolynomialEquation(k.c, roots, k.tol), k.count) << k.c[0];
        for (int j = 0; j < k.count; ++j) EXPECT_NEAR(roots[j], k.roots[j], 1e-12) << k.c[0];
    }
    Rand r;
    for (int i = 0; i < 200; ++i) {
        const double lead = r(0.5, 5) * (i % 2 ? 1 : -1);
        double k[3] = {r(-10, 10), r(-10, 10), r(-10, 10)}, roots[3] = {0, 0, 0};
        std::sort(k, k + 3);
        if (k[1] - k[0] > 0.5 && k[2] - k[1] > 0.5) {
            const double c[4] = {-lead * k[0] * k[1] * k[2],
                                 lead * (k[0] * k[1] + k[1] * k[2] + k[0] * k[2]),
                                 -lead * (k[0] + k[1] + k[2]), lead};
            ASSERT_EQ(qmMath_solvePolynomialEquation(c, roots, 1e-12), 3);
            for (int j = 0; j < 3; ++j) ASSERT_NEAR(roots[j], k[j], 1e-9);
        }
        // One real root: (x - s)(x^2 + p x + q) with p^2 < 4q.
        const double s = r(-10, 10), p = r(-4, 4), q = p * p / 4 + r(0.5, 10);
        const double d[4] = {-s * q, q - s * p, p - s, 1.0};
        ASSERT_EQ(qmMath_solvePolynomialEquation(d, roots, 1e-12), 1);
        ASSERT_NEAR(roots[0], s, 1e-9);
    }
}

TEST(QmMathParabolas, TangentsAndCurveLengthThroughAPoint) {
    Rand r;
    for (int i = 0; i < 100; ++i) {
        const double g1 = r(-0.05, 0.05), g2 = g1 + r(0.01, 0.05) * (i % 2 ? 1 : -1);
        const double length = r(50, 300), y0 = r(0, 100), rate = (g2 - g1) / length;
        const auto height = [&](double u) { return y0 + g1 * u + rate * u * u; };
        // A point outside the convex side has two tangents through it.
        const double px = r(-100, 400), py = height(px) - (rate > 0 ? 1 : -1) * r(1, 20);
        Pt t1, t2;
        ASSERT_EQ(qmMath_parabolaTangentsToPoint(&t1.first, &t1.second, &t2.first, &t2.second, g1,
                                                 g2, length, 0.0, y0, px, py), 2);
        for (const auto& [x, y] : {t1, t2}) {
            ASSERT_NEAR(y, height(x), 1e-7);
            ASSERT_NEAR(py - y, (g1 + 2 * rate * x) * (px - x), 1e-6);  // tangent through P
        }
        // Abscissae move with the start point; heights use the absolute abscissa as they stand.
        const double x0 = r(-50, 50);
        ASSERT_EQ(qmMath_parabolaTangentsToPoint(&t2.first, &t2.second, nullptr, nullptr, g1, g2,
                                                 length, x0, y0, px + x0, py), 2);
        ASSERT_NEAR(t2.first, t1.first + x0, 1e-7);
        ASSERT_NEAR(t2.second, t2.first * (rate * t2.first + g1) + y0, 1e-9);
        // Vertical curve given as (level, chainage) pairs: vertex V, tangents through A and B.
        const double vs = r(100, 1000), vl = r(10, 100), s = vs + r(-0.5, 0.5) * length;
        if (std::fabs(g1 + g2) < 1e-6) continue;
        const double level = vl + g1 * (s - vs) + rate / 2 * std::pow(s - vs + length / 2, 2);
        double got = -1;
        ASSERT_EQ(qmMath_passTangentParabolaThruPoint(&got, vl - g1 * 500, vs - 500, vl + g2 * 500,
                                                      vs + 500, vl, vs, level, s), 0);
        ASSERT_NEAR(got, length, 1e-6 * length);
    }
    double x1 = 5, y1 = 5, x2 = 5, y2 = 5;
    EXPECT_EQ(qmMath_parabolaTangentsToPoint(&x1, &y1, &x2, &y2, 0.02, -0.01, 0, 0, 0, 10, -5), 0);
    EXPECT_EQ(x1 + y1 + x2 + y2, 0.0);  // zero length; outputs zeroed first
    EXPECT_EQ(qmMath_parabolaTangentsToPoint(&x1, &y1, &x2, &y2, 0.02, -0.02, 100, 0, 0, 10, 5), 0);
    // Refused vertical curves: A and V at one chainage, equal grades, opposite grades.
    const double refused[][4] = {{0, 200, 4, 400}, {0, 0, 4, 400}, {0, 0, 0, 400}};
    for (const auto& c : refused) {
        double got = -1;
        EXPECT_EQ(qmMath_passTangentParabolaThruPoint(&got, c[0], c[1], c[2], c[3], 2, 200, 3, 200),
                  0);
        EXPECT_EQ(got, 0.0) << c[1] << " " << c[2];
    }
}

TEST(QmMathSpirals, LengthFromDeflectionAndEndRadii) {
    // From a straight (radius 0 stands for infinite) into radius R the deflection is L/(2R).
    EXPECT_NEAR(qmMath_spiralLength(0.1, 0.0, 100.0, 0.0), 20.0, 1e-12);
    EXPECT_NEAR(qmMath_spiralLength(2 * M_PI - 0.05, 0.05, 0.0, 100.0), 20.0, 1e-9);  // via north
    EXPECT_EQ(qmMath_spiralLength(0.0, 0.1, 0.0, 0.0), 0.0);
    // Between radii the curvature runs linearly, so the deflection is L (1/R1 + 1/R2) / 2.
    EXPECT_NEAR(qmMath_spiralLength(3.0, 3.0 - 0.125, 100.0, 400.0), 20.0, 1e-9);
}

}  // namespace

TEST(QmMathCurves, CircularCurveThroughAPointBetweenTwoTangents) {
    // Tangents from the PI V towards A and B; the circle of radius R tangent to both has its
    // centre on the bisector.  Every point of its arc between the tangency points gives R back.
    const double kDeg = 3.14159265358979323846 / 180.0;
    const double vx = 1000.0, vy = 2000.0;
    for (const double opening : {40.0, 90.0, 150.0}) {
        for (const double r : {25.0, 300.0}) {
            const double ua = 10.0 * kDeg, ub = (10.0 + opening) * kDeg;
            const double ax = vx + 500 * std::cos(ua), ay = vy + 500 * std::sin(ua);
            const double bx = vx + 500 * std::cos(ub), by = vy + 500 * std::sin(ub);
            const double half = opening * kDeg / 2.0, bis = ua + half;
            const double cx = vx + r / std::sin(half) * std::cos(bis);
            const double cy = vy + r / std::sin(half) * std::sin(bis);
            // The arc faces V: directions from the centre within (90 - half) of the way to V.
            for (const double t : {-0.9, -0.3, 0.0, 0.5, 0.95}) {
                const double a = bis + 3.14159265358979323846 + t * (90.0 * kDeg - half);
                double found = -1.0;
                ASSERT_EQ(qmMath_passTangentCurveThruPoint(&found, ax, ay, bx, by, vx, vy,
                                                           cx + r * std::cos(a), cy + r * std::sin(a)),
                          0)
                    << opening << " " << r << " " << t;
                EXPECT_NEAR(found, r, 1e-7 * r) << opening << " " << r << " " << t;
            }
        }
    }
    double found = 7.0;
    // A point outside the angle between the tangents: no such curve.
    EXPECT_EQ(qmMath_passTangentCurveThruPoint(&found, 10, 0, 0, 10, 0, 0, -5, -5), ERR_FAILURE);
    EXPECT_EQ(found, 0.0);
    // Tangents along one line.
    EXPECT_EQ(qmMath_passTangentCurveThruPoint(&found, 10, 0, -10, 0, 0, 0, 0, 5), ERR_FAILURE);
    EXPECT_EQ(qmMath_passTangentCurveThruPoint(nullptr, 10, 0, 0, 10, 0, 0, 3, 3), ERR_FAILURE);
}
