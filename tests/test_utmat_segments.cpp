// Segment intersection against independent geometry (the point lies on both segments, at the
// abscissae reported), collinear overlaps with the kept abscissa rule, and the comparison of
// profile segments by status, sides and crossing.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "korvelbase/utmat_segments.h"

namespace {

struct Result {
    int pointFound = -1, overlapFound = -1;
    Point2d point{0, 0};
    double t1 = -1, t2 = -1;
    Point2d ends[2] = {{0, 0}, {0, 0}};
    double on1[2] = {-1, -1}, on2[2] = {-1, -1};
    uint32_t error = 0;
};

Result intersect(Point2d p1, Point2d q1, Point2d p2, Point2d q2, double tol = 1e-9) {
    const Point2d s1[2] = {p1, q1};
    const Point2d s2[2] = {p2, q2};
    Result r;
    UTMAT_CalculerIntersectionSegmentSegment(s1, s2, tol, &r.pointFound, &r.point, &r.t1, &r.t2,
                                             &r.overlapFound, r.ends, r.on1, r.on2);
    uint32_t detail = 0;
    UTMAT_GetErreur(&r.error, &detail);
    return r;
}

double distance(Point2d a, Point2d b) { return std::hypot(a.x - b.x, a.y - b.y); }

TEST(UtmatSegments, CrossingPointsLieOnBothSegmentsAtTheirAbscissae) {
    std::mt19937 random(31);
    std::uniform_real_distribution<double> coordinate(-100.0, 100.0);
    int crossings = 0;
    for (int trial = 0; trial < 2000; ++trial) {
        const Point2d p1{coordinate(random), coordinate(random)}, q1{coordinate(random), coordinate(random)};
        const Point2d p2{coordinate(random), coordinate(random)}, q2{coordinate(random), coordinate(random)};
        const Result r = intersect(p1, q1, p2, q2);
        ASSERT_EQ(r.error, 0u);
        EXPECT_EQ(r.overlapFound, 0);
        // Independent test: the segments cross when each one's ends lie on opposite sides of
        // the other's line.
        const auto side = [](Point2d a, Point2d b, Point2d c) {
            return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
        };
        const bool crosses = side(p1, q1, p2) * side(p1, q1, q2) < 0 && side(p2, q2, p1) * side(p2, q2, q1) < 0;
        EXPECT_EQ(r.pointFound, crosses ? 1 : 0) << trial;
        if (r.pointFound == 1) {
            ++crossings;
            const double l1 = distance(p1, q1), l2 = distance(p2, q2);
            const Point2d along1{p1.x + (q1.x - p1.x) * r.t1 / l1, p1.y + (q1.y - p1.y) * r.t1 / l1};
            const Point2d along2{p2.x + (q2.x - p2.x) * r.t2 / l2, p2.y + (q2.y - p2.y) * r.t2 / l2};
            EXPECT_LT(distance(along1, r.point), 1e-9 * (1 + l1));
            EXPECT_LT(distance(along2, r.point), 1e-9 * (1 + l2));
        }
    }
    EXPECT_GT(crossings, 200);
}

TEST(UtmatSegments, EndPointsOverlapsAndTheKeptAbscissaRule) {
    // Meeting exactly at an end point: found (closed intervals).
    Result r = intersect({0, 0}, {10, 0}, {10, 0}, {10, 5});
    EXPECT_EQ(r.pointFound, 1);
    EXPECT_NEAR(r.t1, 10.0, 1e-12);
    EXPECT_NEAR(r.t2, 0.0, 1e-12);
    // Collinear, segment 2 covering segment 1: from P1 (0 and 5) to Q1 (10 and a + L1 = 5).
    r = intersect({0, 0}, {10, 0}, {-5, 0}, {20, 0});
    EXPECT_EQ(r.pointFound, 0);
    ASSERT_EQ(r.overlapFound, 1);
    EXPECT_EQ(r.ends[0].x, 0.0);
    EXPECT_EQ(r.ends[1].x, 10.0);
    EXPECT_EQ(r.on1[0], 0.0);
    EXPECT_EQ(r.on2[0], 5.0);
    EXPECT_EQ(r.on1[1], 10.0);
    EXPECT_EQ(r.on2[1], 5.0);  // a + L1 with a = -5: kept as it stands
    // Collinear, inside and reversed: common part from Q2 to P2 in segment 1's direction.
    r = intersect({0, 0}, {10, 0}, {8, 0}, {3, 0});
    ASSERT_EQ(r.overlapFound, 1);
    EXPECT_EQ(r.ends[0].x, 3.0);
    EXPECT_EQ(r.ends[1].x, 8.0);
    EXPECT_EQ(r.on1[0], 3.0);
    EXPECT_EQ(r.on2[0], 5.0);  // L2 of the reversed segment
    EXPECT_EQ(r.on1[1], 8.0);
    EXPECT_EQ(r.on2[1], 0.0);
    // End to end: a touching point, no overlap.
    r = intersect({0, 0}, {10, 0}, {10, 0}, {15, 0});
    EXPECT_EQ(r.pointFound, 1);
    EXPECT_EQ(r.overlapFound, 0);
    EXPECT_EQ(r.point.x, 10.0);
    EXPECT_EQ(r.t1, 10.0);
    EXPECT_EQ(r.t2, 0.0);
    // Parallel and distinct: nothing, no error.
    r = intersect({0, 0}, {10, 0}, {0, 1}, {10, 1});
    EXPECT_EQ(r.pointFound + r.overlapFound, 0);
    EXPECT_EQ(r.error, 0u);
    // A zero-length segment is a failure of the kernel.
    r = intersect({0, 0}, {0, 0}, {0, 1}, {10, 1});
    EXPECT_EQ(r.error, static_cast<uint32_t>(ERR_FAILURE));
    EXPECT_EQ(r.pointFound, 0);
}

struct Comparison {
    int crosses = -1, before = -9, after = -9, flags = -1, status = -1;
    Point2d crossing{-1, -1};
    double x0 = -1, x1 = -1, f0 = -1, f1 = -1, s0 = -1, s1 = -1;
};

Comparison compare(Point2d a, Point2d b, Point2d c, Point2d d) {
    const Point2d first[2] = {a, b};
    const Point2d second[2] = {c, d};
    Comparison r;
    UTMAT_ComparerPosition2Segments(first, second, &r.crosses, &r.crossing, &r.before, &r.after, &r.x0, &r.x1,
                                    &r.f0, &r.f1, &r.s0, &r.s1, &r.flags, &r.status);
    return r;
}

TEST(UtmatSegments, ProfileSegmentComparison) {
    // A copy of itself: status 33, both sides 0, no crossing, equal ends flagged.
    Comparison r = compare({0, 0}, {10, 5}, {0, 0}, {10, 5});
    EXPECT_EQ(r.status, 33);
    EXPECT_EQ(r.before, 0);
    EXPECT_EQ(r.after, 0);
    EXPECT_EQ(r.crosses, 0);
    EXPECT_EQ(r.flags, UTMAT_POSITION_STARTS_EQUAL | UTMAT_POSITION_ENDS_EQUAL);
    // No common range: only status and flags.
    r = compare({0, 0}, {10, 5}, {12, 0}, {20, 5});
    EXPECT_EQ(r.status, 22);
    EXPECT_EQ(r.x0, -1.0);
    r = compare({10, 0}, {20, 5}, {0, 0}, {5, 5});
    EXPECT_EQ(r.status, 44);
    // Crossing X: second from below to above over the first's range (status 42).
    r = compare({0, 0}, {10, 0}, {-10, -10}, {20, 20});
    EXPECT_EQ(r.status, 42);
    EXPECT_EQ(r.x0, 0.0);
    EXPECT_EQ(r.x1, 10.0);
    EXPECT_NEAR(r.s0, 0.0, 1e-12);
    EXPECT_NEAR(r.s1, 10.0, 1e-12);
    EXPECT_EQ(r.before, 0);  // second y equals first y at x0
    EXPECT_EQ(r.after, 1);
    EXPECT_EQ(r.crosses, 1);
    EXPECT_EQ(r.crossing.x, 0.0);
    // Interior crossing (status 32): second starts inside below, ends beyond above.
    r = compare({0, 0}, {10, 0}, {5, -1}, {15, 3});
    EXPECT_EQ(r.status, 32);
    EXPECT_EQ(r.before, -1);
    EXPECT_EQ(r.after, 1);
    ASSERT_EQ(r.crosses, 1);
    EXPECT_NEAR(r.crossing.x, 7.5, 1e-12);
    EXPECT_NEAR(r.crossing.y, 0.0, 1e-12);
    // Status 43 without crossing: entirely above.
    r = compare({0, 0}, {10, 0}, {-5, 1}, {5, 2});
    EXPECT_EQ(r.status, 43);
    EXPECT_EQ(r.before, 1);
    EXPECT_EQ(r.after, 1);
    EXPECT_EQ(r.crosses, 0);
    EXPECT_NEAR(r.s0, 1.5, 1e-12);
    // A vertical first segment standing in the second's column (status 33).
    r = compare({5, 0}, {5, 10}, {5, 12}, {5, -3});
    EXPECT_EQ(r.status, 33);
    EXPECT_EQ(r.before, 1);
    EXPECT_EQ(r.after, -1);
    EXPECT_EQ(r.crosses, 1);
    EXPECT_EQ(r.crossing.y, 10.0);
}

}  // namespace
