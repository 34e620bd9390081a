// Lines, circles, polynomial roots, parabolas and spiral length of the plane-mathematics
// family, checked against independent geometry.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "korvelbase/qmmath.h"

namespace {

constexpr double kSentinel = -777.0;

struct Rand {
    std::mt19937 rng{20240611};
    double operator()(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); }
};

// Signed distance of P from the line 1->2 by the plain cross product (positive right).
double rightOffset(double px, double py, double x1, double y1, double x2, double y2) {
    const double dx = x2 - x1, dy = y2 - y1;
    return ((px - x1) * dy - (py - y1) * dx) / std::hypot(dx, dy);
}

double cubic(const double* c, double x) { return ((c[3] * x + c[2]) * x + c[1]) * x + c[0]; }

// ---------------------------------------------------------------------------------------
// Lines
// ---------------------------------------------------------------------------------------

TEST(QmMathLines, EquationDistanceSideAndOffsetAgree) {
    Rand r;
    for (int i = 0; i < 200; ++i) {
        const double ox = r(-100, 100), oy = r(-100, 100), dx = r(-5, 5), dy = r(-5, 5);
        const double px = r(-100, 100), py = r(-100, 100);
        double a = 0, b = 0, c = 0, distance = 0, offset = 0;
        ASSERT_EQ(qmMath_calculateLineEquationFromOriginAndDirection2d(&a, &b, &c, ox, oy, dx, dy), 0);
        ASSERT_NEAR(a * ox + b * oy + c, 0.0, 1e-9);
        ASSERT_NEAR(a * (ox + dx) + b * (oy + dy) + c, 0.0, 1e-9);
        ASSERT_EQ(qmMath_calculerDistancePtLineEquation2d(&distance, 3 * a, 3 * b, 3 * c, px, py), 0);
        const double expected = rightOffset(px, py, ox, oy, ox + dx, oy + dy);
        ASSERT_NEAR(distance, expected, 1e-9);
        ASSERT_EQ(qmMath_offsetToLine2d(&offset, px, py, ox, oy, ox + dx, oy + dy), 0);
        ASSERT_NEAR(offset, expected, 1e-9);
        ASSERT_EQ(qmMath_sideOfLine2d(px, py, ox, oy, ox + dx, oy + dy), expected > 0 ? 1 : -1);
    }
    EXPECT_EQ(qmMath_sideOfLine2d(0, -1, 0, 0, 1, 0), 1);   // below a line heading east: right
    EXPECT_EQ(qmMath_sideOfLine2d(5, 0, 0, 0, 1, 0), 0);    // on the line, beyond the segment
    double a = 9, b = 9, c = 9, offset = 5;
    EXPECT_EQ(qmMath_calculateLineEquationFromOriginAndDirection2d(&a, &b, &c, 1, 1, 0, 0), ERR_FAILURE);
    EXPECT_EQ(qmMath_calculerDistancePtLineEquation2d(&a, 0, 0, 1, 2, 3), ERR_FAILURE);
    EXPECT_EQ(qmMath_offsetToLine2d(&offset, 1, 1, 2, 2, 2, 2), ERR_FAILURE);
    EXPECT_EQ(offset, 0.0);  // zeroed before the check
    EXPECT_EQ(qmMath_offsetToLine2d(nullptr, 1, 1, 0, 0, 2, 2), ERR_FAILURE);
}

TEST(QmMathLines, ProjectionsDropPerpendicularFeet) {
    Rand r;
    for (int i = 0; i < 200; ++i) {
        const double x1 = r(-50, 50), y1 = r(-50, 50), x2 = r(-50, 50), y2 = r(-50, 50);
        const double px = r(-50, 50), py = r(-50, 50);
        double fx = 0, fy = 0, offset = 0;
        ASSERT_EQ(qmMath_projectOnLine2d(&fx, &fy, &offset, px, py, x1, y1, x2, y2), 0);
        ASSERT_NEAR(rightOffset(fx, fy, x1, y1, x2, y2), 0.0, 1e-9);                 // on the line
        ASSERT_NEAR((px - fx) * (x2 - x1) + (py - fy) * (y2 - y1), 0.0, 1e-8);       // perpendicular
        ASSERT_NEAR(offset, rightOffset(px, py, x1, y1, x2, y2), 1e-9);

        // Point and unit tangent form: abscissa along T, offset positive right of T.
        const double len = std::hypot(x2 - x1, y2 - y1);
        const double tx = (x2 - x1) / len, ty = (y2 - y1) / len;
        double gx = 0, gy = 0, abscissa = 0, offset2 = 0;
        ASSERT_EQ(qmMath_projectOnLineDefinedByPointAndTangent2d(&gx, &gy, &abscissa, &offset2, px,
                                                                 py, x1, y1, tx, ty), 0);
        ASSERT_NEAR(gx, fx, 1e-9);
        ASSERT_NEAR(gy, fy, 1e-9);
        ASSERT_NEAR(std::fabs(abscissa), std::hypot(fx - x1, fy - y1), 1e-9);
        ASSERT_NEAR(offset2, offset, 1e-9);

        // The point of line 3->4 at a given offset from line 1->2.
        const double x3 = r(-50, 50), y3 = r(-50, 50), x4 = r(-50, 50), y4 = r(-50, 50);
        const double wanted = r(-20, 20);
        double qx = 0, qy = 0;
        if (qmMath_projectOnLineByOffsetToLine2d(&qx, &qy, x1, y1, x2, y2, x3, y3, x4, y4, wanted) == 0) {
            ASSERT_NEAR(rightOffset(qx, qy, x3, y3, x4, y4), 0.0, 1e-6);
            ASSERT_NEAR(rightOffset(qx, qy, x1, y1, x2, y2), wanted, 1e-6);
        }
    }
    double fx = kSentinel, gx = kSentinel, abscissa = kSentinel, offset = kSentinel;
    EXPECT_EQ(qmMath_projectOnLine2d(&fx, nullptr, nullptr, 1, 1, 3, 3, 3, 3), ERR_FAILURE);
    EXPECT_EQ(fx, kSentinel);
    // A zero tangent fails after the foot (the origin) has been written.
    EXPECT_EQ(qmMath_projectOnLineDefinedByPointAndTangent2d(&gx, nullptr, &abscissa, &offset, 5,
                                                             5, 2, 3, 0, 0), ERR_FAILURE);
    EXPECT_EQ(gx, 2.0);
    EXPECT_EQ(offset, kSentinel);
    EXPECT_EQ(qmMath_projectOnLineByOffsetToLine2d(&fx, nullptr, 0, 0, 1, 0, 0, 1, 1, 1, 2.0), ERR_FAILURE);
}

TEST(QmMathLines, IntersectionLiesOnBothLinesAndParallelGivesOne) {
    Rand r;
    for (int i = 0; i < 300; ++i) {
        const double x1 = r(-100, 100), y1 = r(-100, 100), x2 = r(-100, 100), y2 = r(-100, 100);
        const double x3 = r(-100, 100), y3 = r(-100, 100), x4 = r(-100, 100), y4 = r(-100, 100);
        double x = 0, y = 0;
        ASSERT_EQ(qmMath_intersectLineWithLine2d(&x, &y, x1, y1, x2, y2, x3, y3, x4, y4), 0);
        const double scale = 1.0 + std::hypot(x, y);
        ASSERT_NEAR(rightOffset(x, y, x1, y1, x2, y2) / scale, 0.0, 1e-9);
        ASSERT_NEAR(rightOffset(x, y, x3, y3, x4, y4) / scale, 0.0, 1e-9);
    }
    double x = kSentinel;
    EXPECT_EQ(qmMath_intersectLineWithLine2d(&x, nullptr, 0, 0, 1, 1, 0, 1, 2, 3), 1);  // parallel
    EXPECT_EQ(qmMath_intersectLineWithLine2d(&x, nullptr, 0, 0, 1, 1, 2, 2, 3, 3), 1);  // the same line
    EXPECT_EQ(x, kSentinel);
    EXPECT_EQ(qmMath_intersectLineWithLine2d(nullptr, nullptr, 0, 0, 1, 0, 5, -1, 5, 1), 0);
}

TEST(QmMathLines, OverlapTestsOnlyTheSecondSegmentsEnds) {
    struct Case {
        double x3, y3, x4, y4;
        int overlap;
    };
    const double tol = 0.001;
    const Case cases[] = {
        {-1, 0, 2, 0, 0},        // covers the first segment entirely: deliberately 0
        {0.5, 0, 2, 0, 1},       // starts inside
        {2, 0, 0.5, 0, 1},       // ends inside
        {0.2, 0, 0.8, 0, 1},     // contained
        {1, 0, 2, 0, 0},         // touches the end only
        {0.5, 0.1, 0.7, 0.1, 0}, // parallel, another line
        {0.5, 0, 0.6, 0.5, 0},   // not parallel
    };
    for (const Case& c : cases) {
        EXPECT_EQ(qmMath_overlapLineSegments(0, 0, 1, 0, c.x3, c.y3, c.x4, c.y4, tol), c.overlap)
            << c.x3 << "," << c.y3 << " " << c.x4 << "," << c.y4;
    }
    EXPECT_EQ(qmMath_overlapLineSegments(1, 1, 1, 1, 1, 1, 1, 1, tol), 0);  // point-like
}

TEST(QmMathLines, LocatedPointsAndRotatedFrames) {
    double x = 0, y = 0;
    EXPECT_EQ(qmMath_locateByDistanceTangent2d(&x, &y, 1, 2, 10, 0.6, -0.8), 0);
    EXPECT_DOUBLE_EQ(x, 7.0);
    EXPECT_DOUBLE_EQ(y, -6.0);
    EXPECT_EQ(qmMath_locateByDistanceTangent2d(nullptr, &y, 1, 2, 10, 0.6, 0.8), 0);
    EXPECT_DOUBLE_EQ(y, 10.0);
    EXPECT_EQ(qmMath_locateByDistanceTangent2d(nullptr, nullptr, 1, 2, 10, 0.6, 0.8), ERR_FAILURE);
    EXPECT_EQ(qmMath_locateByDistanceDirection2d(nullptr, nullptr, 1, 2, 10, 0.3), ERR_FAILURE);
    EXPECT_EQ(qmMath_locateByTranslationRotation2d(nullptr, nullptr, 1, 2, 3, 4, 0.5), ERR_FAILURE);
    // A rotation keeps lengths and adds its angle to directions.
    Rand r;
    for (int i = 0; i < 100; ++i) {
        const double lx = r(-10, 10), ly = r(-10, 10), ox = r(-10, 10), oy = r(-10, 10), t = r(-7, 7);
        ASSERT_EQ(qmMath_locateByTranslationRotation2d(&x, &y, lx, ly, ox, oy, t), 0);
        ASSERT_NEAR(std::hypot(x - ox, y - oy), std::hypot(lx, ly), 1e-12);
        const double turn = qmMath_angleBetweenDirections(std::atan2(ly, lx) + t, std::atan2(y - oy, x - ox));
        ASSERT_NEAR(turn, 0.0, 1e-9);
    }
}

// ---------------------------------------------------------------------------------------
// Circles
// ---------------------------------------------------------------------------------------

TEST(QmMathCircles, LineCircleIntersectionsLieOnBoth) {
    Rand r;
    for (int i = 0; i < 300; ++i) {
        const double cx = r(-50, 50), cy = r(-50, 50), radius = r(1, 20);
        const double a = r(-3, 3), b = r(-3, 3);
        const double h = r(-1.5, 1.5) * radius;  // signed distance of the line from the centre
        const double c = h * std::hypot(a, b) - a * cx - b * cy;
        double x1 = kSentinel, y1 = kSentinel, x2 = kSentinel, y2 = kSentinel;
        int count = -1;
        ASSERT_EQ(qmMath_calculateIntersectionLineCircle2d(&x1, &y1, &x2, &y2, &count, a, b, c, cx,
                                                           cy, radius, 1e-9), 0);
        ASSERT_EQ(count, std::fabs(h) < radius ? 2 : 0);
        if (count == 2) {
            for (auto [x, y] : {std::array<double, 2>{x1, y1}, std::array<double, 2>{x2, y2}}) {
                ASSERT_NEAR(std::hypot(x - cx, y - cy), radius, 1e-8);
                ASSERT_NEAR((a * x + b * y + c) / std::hypot(a, b), 0.0, 1e-8);
            }
            // Point 1 lies ahead along the tangent (-b, a), point 2 behind.
            ASSERT_GT((x1 - x2) * -b + (y1 - y2) * a, 0.0);
        } else {
            ASSERT_EQ(x1, kSentinel);
        }
    }
    // Tangency within the tolerance (binary-exact values): distance r + tol gives 1, r + 2 tol 0.
    double x1 = kSentinel, y1 = kSentinel, x2 = kSentinel, y2 = kSentinel;
    int count = -1;
    EXPECT_EQ(qmMath_calculateIntersectionLineCircle2d(&x1, &y1, &x2, &y2, &count, 0, 4, -5, 0, 0, 1, 0.25), 0);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(x1, 0.0);
    EXPECT_EQ(y1, 1.25);
    EXPECT_EQ(x2, kSentinel);  // the second point is written only for two
    EXPECT_EQ(qmMath_calculateIntersectionLineCircle2d(&x1, &y1, &x2, &y2, &count, 0, 4, -6, 0, 0, 1, 0.25), 0);
    EXPECT_EQ(count, 0);
    count = -1;
    EXPECT_EQ(qmMath_calculateIntersectionLineCircle2d(&x1, &y1, &x2, &y2, &count, 0, 0, 1, 0, 0, 1, 0.25),
              ERR_FAILURE);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(qmMath_calculateIntersectionLineCircle2d(&x1, &y1, &x2, &y2, nullptr, 1, 0, 0, 0, 0, 1, 0.1),
              ERR_FAILURE);
}

TEST(QmMathCircles, CircleCircleIntersectionsAndConcentricCircles) {
    Rand r;
    for (int i = 0; i < 300; ++i) {
        const double cx1 = r(-50, 50), cy1 = r(-50, 50), r1 = r(1, 20);
        const double cx2 = r(-50, 50), cy2 = r(-50, 50), r2 = r(1, 20);
        const double d = std::hypot(cx2 - cx1, cy2 - cy1);
        double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
        int count = -1;
        ASSERT_EQ(qmMath_calculateIntersectionCircleCircle2d(&x1, &y1, &x2, &y2, &count, cx1, cy1, r1,
                                                             cx2, cy2, r2, 1e-9), 0);
        const bool cross = d < r1 + r2 && d > std::fabs(r1 - r2);
        ASSERT_EQ(count, cross ? 2 : 0) << d << " " << r1 << " " << r2;
        if (count == 2) {
            for (auto [x, y] : {std::array<double, 2>{x1, y1}, std::array<double, 2>{x2, y2}}) {
                ASSERT_NEAR(std::hypot(x - cx1, y - cy1), r1, 1e-7);
                ASSERT_NEAR(std::hypot(x - cx2, y - cy2), r2, 1e-7);
            }
        }
    }
    double x1 = 0, y1 = 0;
    int count = -1;
    EXPECT_EQ(qmMath_calculateIntersectionCircleCircle2d(&x1, &y1, nullptr, nullptr, &count, 0, 0, 1, 2, 0, 1, 1e-9), 0);
    EXPECT_EQ(count, 1);  // touching from outside
    EXPECT_NEAR(x1, 1.0, 1e-12);
    EXPECT_NEAR(y1, 0.0, 1e-12);
    count = -1;
    EXPECT_EQ(qmMath_calculateIntersectionCircleCircle2d(nullptr, nullptr, nullptr, nullptr, &count, 3, 4, 5, 3, 4, 5, 1e-6), 2);
    EXPECT_EQ(count, 0);
    count = -1;
    EXPECT_EQ(qmMath_calculateIntersectionCircleCircle2d(nullptr, nullptr, nullptr, nullptr, &count, 3, 4, 5, 3, 4, 6, 1e-6), 0);
    EXPECT_EQ(count, 0);
}

TEST(QmMathCircles, TangentsFromAPointTouchAtRightAngles) {
    Rand r;
    for (int i = 0; i < 300; ++i) {
        const double cx = r(-50, 50), cy = r(-50, 50), radius = r(1, 20);
        const double t = r(0, 6.28), d = radius * r(1.05, 10);
        const double px = cx + d * std::cos(t), py = cy + d * std::sin(t);
        double xl = 0, yl = 0, xr = 0, yr = 0;
        ASSERT_EQ(qmMath_lineTangentToCircleByPoint(&xl, &yl, &xr, &yr, cx, cy, radius, px, py, 1e-9), 0);
        for (auto [x, y] : {std::array<double, 2>{xl, yl}, std::array<double, 2>{xr, yr}}) {
            ASSERT_NEAR(std::hypot(x - cx, y - cy), radius, 1e-8);
            // The radius to the tangent point is perpendicular to the tangent line through P.
            ASSERT_NEAR((x - cx) * (x - px) + (y - cy) * (y - py), 0.0, 1e-7 * d * d);
        }
        ASSERT_LT(rightOffset(xl, yl, px, py, cx, cy), 0.0);  // left of P->C
        ASSERT_GT(rightOffset(xr, yr, px, py, cx, cy), 0.0);
    }
    double xl = 0, yl = 0, xr = 0, yr = 0;
    EXPECT_EQ(qmMath_lineTangentToCircleByPoint(&xl, &yl, &xr, &yr, 0, 0, 2, 1, 0.5, 1e-9), ERR_FAILURE);
    EXPECT_EQ(xr, 1.0);  // outputs hold P
    EXPECT_EQ(yl, 0.5);
    EXPECT_EQ(qmMath_lineTangentToCircleByPoint(&xl, &yl, &xr, &yr, 0, 0, 2, 0, -2, 1e-9), 0);
    EXPECT_EQ(xl, 0.0);  // on the circle: both tangent points are P
    EXPECT_EQ(yr, -2.0);
}

TEST(QmMathCircles, CircleThroughThreePointsAndProjectionOnCircle) {
    Rand r;
    for (int i = 0; i < 300; ++i) {
        const double cx = r(-100, 100), cy = r(-100, 100), radius = r(0.5, 500);
        double t[3] = {r(0, 6.28), r(0, 6.28), r(0, 6.28)};
        if (std::fabs(std::sin((t[0] - t[1]) / 2)) < 0.05 || std::fabs(std::sin((t[1] - t[2]) / 2)) < 0.05 ||
            std::fabs(std::sin((t[0] - t[2]) / 2)) < 0.05) continue;  // nearly coincident points
        double xs[3], ys[3];
        for (int k = 0; k < 3; ++k) xs[k] = cx + radius * std::cos(t[k]), ys[k] = cy + radius * std::sin(t[k]);
        double gx = 0, gy = 0, gr = 0;
        ASSERT_EQ(qmMath_computeCurveRadiusFromThreePoints(xs[0], ys[0], xs[1], ys[1], xs[2], ys[2], &gx, &gy, &gr), 0);
        ASSERT_NEAR(gr, radius, 1e-8 * radius);
        ASSERT_NEAR(gx, cx, 1e-8 * radius);
        ASSERT_NEAR(gy, cy, 1e-8 * radius);

        double px = 0, py = 0, angle = 0;
        const double qx = r(-100, 100), qy = r(-100, 100);
        ASSERT_EQ(qmMath_projectPointOnCircle2d(&px, &py, &angle, qx, qy, cx, cy, radius), 0);
        ASSERT_NEAR(std::hypot(px - cx, py - cy), radius, 1e-9 * radius);
        ASSERT_NEAR(rightOffset(px, py, cx, cy, qx, qy), 0.0, 1e-9 * radius);  // on the ray C->Q
        ASSERT_GT((px - cx) * (qx - cx) + (py - cy) * (qy - cy), 0.0);
        ASSERT_DOUBLE_EQ(angle, std::atan2(qy - cy, qx - cx));
    }
    double gx = kSentinel, gy = kSentinel, gr = 0;
    EXPECT_EQ(qmMath_computeCurveRadiusFromThreePoints(0, 0, 1, 0, 2, 0, &gx, &gy, &gr), 0);
    EXPECT_EQ(gr, 1e100);
    EXPECT_EQ(gx, kSentinel);  // the centre is not written
    EXPECT_EQ(qmMath_computeCurveRadiusFromThreePoints(5, 5, 5, 7, 5, 9, &gx, &gy, &gr), 0);
    EXPECT_EQ(gr, 1e100);
}

// ---------------------------------------------------------------------------------------
// Polynomials, parabolas, spirals
// ---------------------------------------------------------------------------------------

TEST(QmMathPolynomials, WorkedCasesAndDegreeLowering) {
    double roots[3] = {0, 0, 0};
    const double threeRoots[4] = {-6, 11, -6, 1};  // (x - 1)(x - 2)(x - 3)
    ASSERT_EQ(qmMath_solvePolynomialEquation(threeRoots, roots, 1e-12), 3);
    EXPECT_NEAR(roots[0], 1.0, 1e-12);
    EXPECT_NEAR(roots[1], 2.0, 1e-12);
    EXPECT_NEAR(roots[2], 3.0, 1e-12);
    const double doubleRoot[4] = {1, -2, 1, 0};
    ASSERT_EQ(qmMath_solvePolynomialEquation(doubleRoot, roots, 1e-12), 2);
    EXPECT_EQ(roots[0], 1.0);
    EXPECT_EQ(roots[1], 1.0);
    const double noRealRoot[4] = {1, 0, 1, 0};
    EXPECT_EQ(qmMath_solvePolynomialEquation(noRealRoot, roots, 1e-12), 0);
    const double linear[4] = {4, 2, 1e-9, 1e-9};  // leading terms under the tolerance
    ASSERT_EQ(qmMath_solvePolynomialEquation(linear, roots, 1e-6), 1);
    EXPECT_EQ(roots[0], -2.0);
    const double constant[4] = {4, 0, 0, 0};
    EXPECT_EQ(qmMath_solvePolynomialEquation(constant, roots, -1.0), 0);  // no division by zero
    const double zeroRoot[4] = {0, 2, -3, 1};  // x(x - 1)(x - 2)
    ASSERT_EQ(qmMath_solvePolynomialEquation(zeroRoot, roots, 1e-9), 3);
    EXPECT_EQ(roots[0], 0.0);
    EXPECT_EQ(qmMath_solvePolynomialEquation(nullptr, roots, 1e-9), 0);
    EXPECT_EQ(qmMath_solvePolynomialEquation(zeroRoot, nullptr, 1e-9), 0);
}

TEST(QmMathPolynomials, RandomCubicsWithKnownRoots) {
    Rand r;
    for (int i = 0; i < 500; ++i) {
        const double lead = r(0.5, 5) * (i % 2 ? 1 : -1);
        double known[3] = {r(-10, 10), r(-10, 10), r(-10, 10)};
        std::sort(known, known + 3);
        if (known[1] - known[0] < 0.5 || known[2] - known[1] < 0.5) continue;
        const double c[4] = {-lead * known[0] * known[1] * known[2],
                             lead * (known[0] * known[1] + known[1] * known[2] + known[0] * known[2]),
                             -lead * (known[0] + known[1] + known[2]), lead};
        double roots[3] = {0, 0, 0};
        ASSERT_EQ(qmMath_solvePolynomialEquation(c, roots, 1e-12), 3);
        for (int k = 0; k < 3; ++k) {
            ASSERT_NEAR(roots[k], known[k], 1e-9);
            ASSERT_NEAR(cubic(c, roots[k]), 0.0, 1e-9 * std::fabs(lead) * 1000);
        }
        // One real root: (x - s)(x^2 + p x + q) with p^2 < 4q.
        const double s = r(-10, 10), p = r(-4, 4), q = p * p / 4 + r(0.5, 10);
        const double d[4] = {-s * q, q - s * p, p - s, 1.0};
        ASSERT_EQ(qmMath_solvePolynomialEquation(d, roots, 1e-12), 1);
        ASSERT_NEAR(roots[0], s, 1e-9);
        // Quadratic with two known roots.
        const double u = r(-10, 10), v = r(-10, 10);
        const double e[4] = {lead * u * v, -lead * (u + v), lead, 0.0};
        ASSERT_EQ(qmMath_solvePolynomialEquation(e, roots, 1e-12), 2);
        ASSERT_LE(roots[0], roots[1]);
        ASSERT_NEAR(roots[0], std::min(u, v), 1e-8);
        ASSERT_NEAR(roots[1], std::max(u, v), 1e-8);
    }
}

TEST(QmMathParabolas, TangentsFromAPointTouchTheParabola) {
    Rand r;
    for (int i = 0; i < 200; ++i) {
        const double g1 = r(-0.05, 0.05), g2 = r(-0.05, 0.05), length = r(50, 300), y0 = r(0, 100);
        if (std::fabs(g2 - g1) < 0.01) continue;
        const double rate = (g2 - g1) / length;
        const auto height = [&](double u) { return y0 + g1 * u + rate * u * u; };
        // A point on the convex side's outside: off the curve by a clear margin against rate.
        const double px = r(-100, 400), py = height(px) - (rate > 0 ? 1 : -1) * r(1, 20);
        double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
        ASSERT_EQ(qmMath_parabolaTangentsToPoint(&x1, &y1, &x2, &y2, g1, g2, length, 0.0, y0, px, py), 2);
        for (auto [x, y] : {std::array<double, 2>{x1, y1}, std::array<double, 2>{x2, y2}}) {
            ASSERT_NEAR(y, height(x), 1e-7);
            const double slope = g1 + 2 * rate * x;
            ASSERT_NEAR(py - y, slope * (px - x), 1e-6);  // the tangent at x passes through P
        }
        // Abscissae move with the start point; heights use the absolute abscissa as they stand.
        const double x0 = r(-50, 50);
        double s1 = 0, t1 = 0;
        ASSERT_EQ(qmMath_parabolaTangentsToPoint(&s1, &t1, nullptr, nullptr, g1, g2, length, x0, y0, px + x0, py), 2);
        ASSERT_NEAR(s1, x1 + x0, 1e-7);
        ASSERT_NEAR(t1, s1 * (rate * s1 + g1) + y0, 1e-9);
    }
    double x1 = 5, y1 = 5, x2 = 5, y2 = 5;
    EXPECT_EQ(qmMath_parabolaTangentsToPoint(&x1, &y1, &x2, &y2, 0.02, -0.01, 0.0, 0, 0, 10, -5), 0);
    EXPECT_EQ(x1 + y1 + x2 + y2, 0.0);  // zeroed first
    EXPECT_EQ(qmMath_parabolaTangentsToPoint(&x1, &y1, &x2, &y2, 0.02, -0.02, 100.0, 0, 0, 10, 5), 0);
}

TEST(QmMathParabolas, VerticalCurveThroughAPointRecoversItsLength) {
    Rand r;
    for (int i = 0; i < 200; ++i) {
        // (level, chainage) pairs: vertex V, start tangent through A, end tangent through B.
        const double vs = r(100, 1000), vl = r(10, 100), g1 = r(-0.06, 0.06), g2 = r(-0.06, 0.06);
        if (std::fabs(g1 - g2) < 0.01 || std::fabs(g1 + g2) < 1e-6) continue;
        const double length = r(40, 400);
        const double as = vs - 500, al = vl - g1 * 500, bs = vs + 500, bl = vl + g2 * 500;
        const double s = vs + r(-0.5, 0.5) * length;
        const double level = vl + g1 * (s - vs) + (g2 - g1) / (2 * length) * std::pow(s - vs + length / 2, 2);
        double got = -1;
        ASSERT_EQ(qmMath_passTangentParabolaThruPoint(&got, al, as, bl, bs, vl, vs, level, s), 0);
        ASSERT_NEAR(got, length, 1e-6 * length);
    }
    double got = -1;
    EXPECT_EQ(qmMath_passTangentParabolaThruPoint(&got, 0, 100, 2, 300, 4, 100, 5, 150), 0);
    EXPECT_EQ(got, 0.0);  // A and V at one chainage: no grade
    EXPECT_EQ(qmMath_passTangentParabolaThruPoint(&got, 0, 0, 4, 400, 2, 200, 3, 200), 0);
    EXPECT_EQ(got, 0.0);  // equal grades: no curve
    EXPECT_EQ(qmMath_passTangentParabolaThruPoint(&got, 0, 0, 0, 400, 2, 200, 1, 200), 0);
    EXPECT_EQ(got, 0.0);  // opposite grades are refused as they stand
    EXPECT_EQ(qmMath_passTangentParabolaThruPoint(nullptr, 0, 0, 4, 400, 2, 200, 3, 200), ERR_FAILURE);
}

TEST(QmMathSpirals, LengthFromDeflectionAndEndRadii) {
    // From a straight (radius 0 stands for infinite) into radius R: deflection L/(2R).
    EXPECT_NEAR(qmMath_spiralLength(0.0, 0.1, 0.0, 100.0), 20.0, 1e-12);
    EXPECT_NEAR(qmMath_spiralLength(0.1, 0.0, 100.0, 0.0), 20.0, 1e-12);
    EXPECT_NEAR(qmMath_spiralLength(2 * M_PI - 0.05, 0.05, 0.0, 100.0), 20.0, 1e-9);  // across north
    EXPECT_EQ(qmMath_spiralLength(0.0, 0.1, 0.0, 0.0), 0.0);
    Rand r;
    for (int i = 0; i < 100; ++i) {
        const double a1 = r(0, 6.28), turn = r(-1, 1), r1 = r(50, 1000), r2 = r(50, 1000);
        const double expected = 2 * std::fabs(turn) / (1 / r1 + 1 / r2);
        ASSERT_NEAR(qmMath_spiralLength(a1, a1 + turn, r1, r2), expected, 1e-9 * expected + 1e-9);
    }
}

}  // namespace
