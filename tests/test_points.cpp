// Points and point arrays: polygon measures and containment against independent tests, run
// clean-up, the text reader, planes, lines, arcs and the parallel copy.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "korvelbase/mem.h"
#include "korvelbase/qmpoint.h"

namespace {

using Ring = std::vector<Point3d>;
constexpr double kPi = 3.14159265358979323846;

Ring square(bool clockwise) {
    Ring r = {{0, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0}, {0, 0, 0}};
    if (!clockwise) std::reverse(r.begin(), r.end());
    return r;
}

// Independent classifier for rings with integer vertices and integer query points: exact
// orientation for the boundary, then the textbook half-open even-odd rule.
int referenceContainment(const Ring& ring, double px, double py) {
    const size_t n = ring.size();
    bool inside = false;
    for (size_t i = 0, j = n - 1; i < n; j = i++) {
        const double xi = ring[i].x, yi = ring[i].y, xj = ring[j].x, yj = ring[j].y;
        const double cross = (xj - xi) * (py - yi) - (yj - yi) * (px - xi);
        if (cross == 0.0 && std::min(xi, xj) <= px && px <= std::max(xi, xj) &&
            std::min(yi, yj) <= py && py <= std::max(yi, yj))
            return 2;
        if ((yi > py) != (yj > py)) {
            // Integer data: compare px with the crossing by the sign of a product, exactly.
            const double lhs = (px - xi) * (yj - yi), rhs = (xj - xi) * (py - yi);
            if ((yj > yi) ? lhs < rhs : lhs > rhs) inside = !inside;
        }
    }
    return inside ? 1 : 0;
}

// Star-shaped lattice ring around the origin with edges of slope 0, +-1, +-2, +-1/2 or
// vertical, so that every edge's x at an integer height is computed exactly.
Ring latticeRing(std::mt19937& rng, int vertices) {
    static const int steps[][2] = {{2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}, {-1, 2}, {-2, 2},
                                   {-2, 1}, {-2, 0}, {-2, -1}, {-2, -2}, {-1, -2}, {0, -2},
                                   {1, -2}, {2, -2}, {2, -1}};
    Ring r;
    double x = 0, y = -10;
    std::uniform_int_distribution<int> len(1, 3);
    for (int i = 0; i < vertices; ++i) {
        const int k = (i * 16) / vertices;
        const int m = len(rng);
        x += steps[k][0] * m;
        y += steps[k][1] * m;
        r.push_back({x, y, 0});
    }
    return r;
}

TEST(PointArrayPolygon, AreaDirectionAndCentroidFollowTheRingSense) {
    struct Case {
        Ring ring;
        double area;
        int clockwise;
    } cases[] = {
        {square(true), 1.0, 1},
        {square(false), -1.0, 0},
        {{{1, 1, 0}, {1, 2, 0}, {2, 2, 0}, {2, 1, 0}}, 1.5, 1},  // no closing edge added
    };
    for (const Case& c : cases) {
        double a = 0, abs = -1;
        int flag = -1;
        EXPECT_EQ(0, qmPointArray_computeSimplePolygonAlgebricArea2d(c.ring.data(),
                                                                      (int)c.ring.size(), &a));
        EXPECT_DOUBLE_EQ(c.area, a);
        EXPECT_EQ(0, qmPoint_computeSimplePolygonArea2d(&abs, c.ring.data(), (int)c.ring.size()));
        EXPECT_DOUBLE_EQ(std::fabs(c.area), abs);
        EXPECT_EQ(0, qmPointArray_getPolygonDirection(c.ring.data(), (int)c.ring.size(), &flag));
        EXPECT_EQ(c.clockwise, flag);
    }
    // Centroid of a shifted, scaled L-shape equals the sum of its rectangles' moments.
    Ring l = {{10, 20, 0}, {10, 24, 0}, {12, 24, 0}, {12, 22, 0}, {16, 22, 0}, {16, 20, 0}};
    Point3d c{};
    ASSERT_EQ(0, qmPointArray_getCentroid(l.data(), (int)l.size(), &c));
    const double ax = 8 * 13.0 + 2 * 4 * 11 - 0, area = 8 + 4 + 4;  // 2x4 + 4x2 rectangles
    (void)ax;
    EXPECT_NEAR((2 * 4 * 11.0 + 4 * 2 * 14.0) / (8 + 8), c.x, 1e-12);
    EXPECT_NEAR((8 * 22.0 + 8 * 21.0) / 16, c.y, 1e-12);
    (void)area;
    Ring sq = {{0, 0, 5}, {0, 1, 5}, {1, 1, 5}, {1, 0, 5}};
    ASSERT_EQ(0, qmPointArray_getCentroid(sq.data(), 4, &c));
    EXPECT_DOUBLE_EQ(0.5, c.x);
    EXPECT_DOUBLE_EQ(0.5, c.y);
    EXPECT_EQ(0.0, c.z);
    Ring flat = {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}};
    ASSERT_EQ(0, qmPointArray_getCentroid(flat.data(), 3, &c));
    EXPECT_EQ(0.0, c.x);
}

TEST(PointBasics, RectangleRingMeasuresCopiesAndComparisons) {
    const Point3d a{2.0, 1.0, 10.0}, b{5.0, 5.0, 20.0};
    Ring box(5);
    ASSERT_EQ(qmPointArray_blockPointsFromDiagonal(box.data(), &a, &b), 0);
    EXPECT_EQ(qmPointArray_isClosed(box.data(), 5, 0.0), 1);
    double area = 0.0;
    qmPointArray_computeSimplePolygonArea2d(box.data(), 5, &area);
    EXPECT_DOUBLE_EQ(area, 3.0 * 4.0);
    EXPECT_DOUBLE_EQ(qmPoint_distance2d(&a, &b), 5.0);  // the diagonal of a 3-4 rectangle
    EXPECT_DOUBLE_EQ(qmPoint_distance3d(&a, &b), std::sqrt(125.0));
    EXPECT_DOUBLE_EQ(qmPoint_direction2d(&box[0], &box[1]), 0.0);  // east along the first side
    EXPECT_DOUBLE_EQ(qmPoint_direction2d(&box[1], &box[0]), kPi);
    for (int i = 0; i < 4; ++i) {  // each corner is a right angle
        const Point3d &p = box[i], &q = box[i + 1], &r = box[(i + 2) % 4];
        EXPECT_EQ((q.x - p.x) * (r.x - q.x) + (q.y - p.y) * (r.y - q.y), 0.0);
    }
    double x = 0.0, y = 0.0;
    qmPoint_getCoordsFromPointArray(&x, &y, box.data(), 2);
    EXPECT_TRUE(x == b.x && y == b.y);
    qmPointArray_getCoordsByIndex2d(box.data(), &x, &y, 3);
    EXPECT_TRUE(x == a.x && y == b.y);

    // Overlapping copy shifts the ring by one record, as a move would.
    Ring shifted = box;
    ASSERT_EQ(qmPointArray_copy(shifted.data() + 1, 4, shifted.data()), 0);
    EXPECT_EQ(qmPoint_equal3d(&shifted[1], &box[0]), 1);
    EXPECT_EQ(qmPoint_equal3d(&shifted[4], &box[3]), 1);
    EXPECT_EQ(qmPointArray_isClosed(shifted.data(), 5, 0.0), 0);
    ASSERT_EQ(qmPoint_copyMultiple(shifted.data(), box.data(), 5), 0);
    qmPointArray_setZ(shifted.data(), 5, -1.0);
    EXPECT_EQ(qmPoint_equal2d(&shifted[3], &box[3]), 1);  // plan equal, heights differ
    EXPECT_EQ(qmPoint_equal3d(&shifted[3], &box[3]), 0);
    Point3d scratch = b;
    ASSERT_EQ(qmPoint_copy(&scratch, &shifted[2]), 0);
    EXPECT_EQ(scratch.z, -1.0);
    EXPECT_EQ(qmPoint_clear(&scratch), 0);
    EXPECT_TRUE(scratch.x == 0.0 && scratch.y == 0.0 && scratch.z == 0.0);
    EXPECT_EQ(qmPoint_clear(nullptr), ERR_FAILURE);
}

TEST(PointArrayContainment, AgreesWithIndependentEvenOddTestIncludingVerticesAndEdges) {
    std::mt19937 rng(7);
    for (int trial = 0; trial < 40; ++trial) {
        Ring ring = latticeRing(rng, 16 + trial * 3);
        if (trial % 2) ring.push_back(ring.front());  // closed and open forms alike
        std::vector<Point3d> queries;
        for (int y = -14; y <= 30; ++y)
            for (int x = -30; x <= 30; ++x) queries.push_back({double(x), double(y), 0});
        for (const Point3d& v : ring) queries.push_back(v);
        for (const Point3d& q : queries) {
            const int expected = referenceContainment(ring, q.x, q.y);
            ASSERT_EQ(expected, qmPointArray_isPointInsidePolygon(ring.data(), (int)ring.size(), &q))
                << "trial " << trial << " at " << q.x << "," << q.y;
            ASSERT_EQ(expected, qmPoint_isInsidePolygon(&q, ring.data(), (int)ring.size()));
            int verdict = -5;
            ASSERT_EQ(0, qmPointArray_isArrayWithinPolygon(&verdict, &q, 1, ring.data(),
                                                           (int)ring.size()));
            ASSERT_EQ(expected == 0 ? 0 : 1, verdict);
        }
    }
}

TEST(PointArrayContainment, VertexRuleCountsCrossingsOnceAndTouchesEvenly) {
    // A diamond whose left and right vertices lie on the ray y = 0 (the ring crosses there),
    // and a ring with a spike touching the ray from above.
    Ring diamond = {{0, -1, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}};
    Point3d inside{0, 0, 0}, outside{-2, 0, 0}, beyond{2, 0, 0};
    EXPECT_EQ(1, qmPointArray_isPointInsidePolygon(diamond.data(), 4, &inside));
    EXPECT_EQ(0, qmPointArray_isPointInsidePolygon(diamond.data(), 4, &outside));
    EXPECT_EQ(0, qmPointArray_isPointInsidePolygon(diamond.data(), 4, &beyond));
    Ring spike = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {3, 4, 0}, {2, 2, 0}, {1, 4, 0}, {0, 4, 0}};
    Point3d left{0.5, 2, 0}, right{2.5, 2, 0}, gap{2, 3, 0}, horizontalExtension{5, 0, 0};
    EXPECT_EQ(1, qmPointArray_isPointInsidePolygon(spike.data(), 7, &left));
    EXPECT_EQ(1, qmPointArray_isPointInsidePolygon(spike.data(), 7, &right));
    EXPECT_EQ(0, qmPointArray_isPointInsidePolygon(spike.data(), 7, &gap));
    EXPECT_EQ(0, qmPointArray_isPointInsidePolygon(spike.data(), 7, &horizontalExtension));
    EXPECT_EQ(0, qmPointArray_isPointInsidePolygon(nullptr, 7, &left));
}

TEST(PointArrayContainment, BatchMatchesSingleTestsOnRandomRingsAndVerdicts) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> u(-1.5, 1.5);
    Ring ring;
    for (int i = 0; i < 500; ++i) {  // a wavy star
        const double a = 2 * kPi * i / 500, r = 1 + 0.3 * std::sin(13 * a);
        ring.push_back({r * std::cos(a), r * std::sin(a), 0});
    }
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<Point3d> pts(1 + trial % 5);
        int in = 0;
        for (Point3d& p : pts) {
            p = trial % 7 == 0 ? ring[rng() % ring.size()] : Point3d{u(rng), u(rng), 0};
            in += qmPointArray_isPointInsidePolygon(ring.data(), (int)ring.size(), &p) != 0;
        }
        const int expected = in == 0 ? 0 : (in == (int)pts.size() ? 1 : 2);
        int verdict = -5;
        ASSERT_EQ(0, qmPointArray_isArrayWithinPolygon(&verdict, pts.data(), (int)pts.size(),
                                                       ring.data(), (int)ring.size()));
        ASSERT_EQ(expected, verdict);
    }
    int verdict = 7;
    EXPECT_EQ(ERR_FAILURE, qmPointArray_isArrayWithinPolygon(&verdict, ring.data(), 0,
                                                             ring.data(), 4));
    EXPECT_EQ(-1, verdict);
}

TEST(PointArrayCleanup, RedundantCollinearAndToleranceFilter) {
    Ring run = {{0, 0, 1}, {0.0005, 0, 2}, {1, 0, 3}, {1, 0.0004, 4}, {2, 0, 5}};
    Point3d ref{0, 0.0001, 0};
    int n = -1;
    ASSERT_EQ(0, qmPointArray_removeRedundantPoints(run.data(), &n, 5, &ref, 0.001));
    ASSERT_EQ(2, n);
    EXPECT_EQ(3.0, run[0].z);
    EXPECT_EQ(5.0, run[1].z);

    // A slow arc whose chord deviation stays within the tolerance is thinned to its ends.
    Ring arc;
    for (int i = 0; i <= 10; ++i) arc.push_back({double(i), 0.001 * i * (10 - i), double(i)});
    n = -1;
    ASSERT_EQ(0, qmPointArray_removeCoLinearPoints2d(arc.data(), &n, 11, 0.1));
    EXPECT_EQ(2, n);
    EXPECT_EQ(10.0, arc[1].z);
    Ring corner = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 1, 0}, {2, 2, 0}};
    ASSERT_EQ(0, qmPointArray_removeCoLinearPoints2d(corner.data(), &n, 5, 0.01));
    ASSERT_EQ(3, n);
    EXPECT_EQ(2.0, corner[1].x);
    EXPECT_EQ(0.0, corner[1].y);
    n = 99;
    EXPECT_EQ(0, qmPointArray_removeCoLinearPoints2d(corner.data(), &n, 2, 0.01));
    EXPECT_EQ(99, n);

    Ring profile = {{0, 0, 10}, {1, 0.01, 10}, {2, 0, 15}, {3, 0, 15}, {3, 0, 15}, {4, 0, 15}};
    std::vector<int> keep(6, -1);
    int locks[6] = {0, 0, 0, 1, 0, 0};
    ASSERT_EQ(0, qmPointArray_filterByHorVerTolerance2d(keep.data(), profile.data(), nullptr, 6,
                                                        0.05, 1.0));
    EXPECT_EQ((std::vector<int>{1, 1, 1, 0, 0, 1}), keep);  // point 1 kept: its elevation
    ASSERT_EQ(0, qmPointArray_filterByHorVerTolerance2d(keep.data(), profile.data(), nullptr, 6,
                                                        0.05, 0.0));
    EXPECT_EQ((std::vector<int>{1, 0, 0, 0, 0, 1}), keep);
    ASSERT_EQ(0, qmPointArray_filterByHorVerTolerance2d(keep.data(), profile.data(), locks, 6,
                                                        0.05, 0.0));
    EXPECT_EQ((std::vector<int>{1, 0, 0, 1, 0, 1}), keep);
    ASSERT_EQ(0, qmPointArray_filterByHorVerTolerance2d(keep.data(), profile.data(), nullptr, 6,
                                                        0.0, 0.0));
    EXPECT_EQ((std::vector<int>(6, 1)), keep);
}

TEST(PointArrayMemory, CloneCloseReverseAndFree) {
    Point3d* ring = nullptr;
    Ring open = {{0, 0, 1}, {0, 1, 2}, {1, 1, 3}};
    ASSERT_EQ(0, qmPointArray_clone(&ring, open.data(), 3));
    int n = 3;
    ASSERT_EQ(0, qmPointArray_closePolygon(&ring, &n, 0.01));
    ASSERT_EQ(4, n);
    EXPECT_EQ(0, std::memcmp(&ring[0], &ring[3], sizeof(Point3d)));
    ring[3].x += 0.001;
    ASSERT_EQ(0, qmPointArray_closePolygon(&ring, &n, 0.01));
    EXPECT_EQ(4, n);
    EXPECT_EQ(0, std::memcmp(&ring[0], &ring[3], sizeof(Point3d)));
    qmPointArray_reverse(ring, 3);
    EXPECT_EQ(3.0, ring[0].z);
    EXPECT_EQ(1.0, ring[2].z);
    EXPECT_EQ(0, qmPoint_freeArray(&ring));
    EXPECT_EQ(nullptr, ring);
    EXPECT_EQ(0, qmPointArray_free(&ring));
    EXPECT_EQ(ERR_FAILURE, qmPointArray_free(nullptr));
    Point3d* hull = nullptr;
    int hullCount = -3;
    EXPECT_EQ(ERR_FAILURE, qmPointArray_computeConvexHull2d(open.data(), 3, &hull, &hullCount));
    EXPECT_EQ(ERR_FAILURE, qmPoint_computeConvexHull2d(open.data(), 3, &hull, &hullCount));
    EXPECT_EQ(-3, hullCount);
    Point3d block[5];
    Point3d a{0, 0, 1}, b{2, 3, 4};
    ASSERT_EQ(block, qmPoint_blockPointsFromDiagonal(block, &a, &b));
    EXPECT_EQ(2.0, block[1].x);
    EXPECT_EQ(1.0, block[1].z);
    EXPECT_EQ(3.0, block[3].y);
    EXPECT_EQ(0, std::memcmp(&block[0], &block[4], sizeof(Point3d)));
}

TEST(PointSingle, PredicatesMarkersAndRangeRule) {
    const double big = std::numeric_limits<double>::max();
    Point3d d{1, -big, 0}, ordinary{1, 2, 3};
    EXPECT_EQ(1, qmPoint_isDisconnect(&d));
    EXPECT_EQ(0, qmPoint_isDisconnect(&ordinary));
    EXPECT_EQ(0, qmPoint_isDisconnect(nullptr));
    Point3d p{};
    EXPECT_EQ(&p, qmPoint_initialize2d(&p));
    EXPECT_EQ(3.4028234663852886e38, p.z);
    Point3d lo{0, 0, 0}, hi{10, 10, 0}, onLow{5, 0, 0}, mid{5, 5, 0};
    EXPECT_EQ(1, qmPoint_isInRange2d(&onLow, &lo, &hi));
    EXPECT_EQ(0, qmPoint_isInRange2d(&mid, &lo, &hi));  // the upper y bound is low.y
    Point3d out{13, 14, 0};
    EXPECT_DOUBLE_EQ(5.0, qmPoint_getDistanceToRectangle2d(&out, &lo, &hi));
    Point3d side{5, -2, 0};
    EXPECT_DOUBLE_EQ(2.0, qmPoint_getDistanceToRectangle2d(&side, &lo, &hi));
    EXPECT_EQ(0.0, qmPoint_getDistanceToRectangle2d(&mid, &lo, &hi));
    double dist = 9, dir = 9;
    EXPECT_EQ(ERR_FAILURE, qmPoint_distanceDirection2d(&dist, &dir, nullptr, &p));
    EXPECT_EQ(0.0, dist);
    EXPECT_EQ(0.0, dir);
}

TEST(PointSingle, LocationsArcsAndRotation) {
    Point3d o{1, 1, 7}, t{4, 5, 0}, r{};
    ASSERT_EQ(0, qmPoint_locatePointByDistanceTangent2d(&r, 10, &t, &o));
    EXPECT_NEAR(7.0, r.x, 1e-12);
    EXPECT_NEAR(9.0, r.y, 1e-12);
    EXPECT_EQ(7.0, r.z);
    Point3d q{1, 0, 2};
    ASSERT_EQ(0, qmPoint_rotateByAngle2d(&q, kPi / 2));
    EXPECT_NEAR(0.0, q.x, 1e-15);
    EXPECT_NEAR(1.0, q.y, 1e-15);
    EXPECT_EQ(2.0, q.z);
    Point3d c{0, 0, 0}, s{1, 0, 0}, e{0, 1, 0};
    double sweep = 0;
    ASSERT_EQ(0, qmPoint_calculateSweepAngle2d(&c, &sweep, &s, &e, 1));
    EXPECT_NEAR(kPi / 2, sweep, 1e-15);
    ASSERT_EQ(0, qmPoint_calculateSweepAngle2d(&c, &sweep, &s, &e, 0));
    EXPECT_NEAR(-1.5 * kPi, sweep, 1e-15);
    EXPECT_EQ(ERR_FAILURE, qmPoint_calculateSweepAngle2d(&c, &sweep, &c, &e, 0));
    // Arc info through three points of a circle of radius 5 about (2, 3).
    Point3d p1{7, 3, 0}, p2{2, 8, 0}, p3{-3, 3, 0}, centre{};
    double radius = 0, start = 0;
    ASSERT_EQ(0, qmPoint_calculateArcInfoFor3pts(&centre, &radius, &start, &sweep, &p1, &p2, &p3));
    EXPECT_NEAR(2.0, centre.x, 1e-12);
    EXPECT_NEAR(3.0, centre.y, 1e-12);
    EXPECT_NEAR(5.0, radius, 1e-12);
    EXPECT_NEAR(0.0, start, 1e-12);
    EXPECT_NEAR(kPi, sweep, 1e-12);  // middle point right of the chord: counter-clockwise
    Point3d low{2, -2, 0};
    ASSERT_EQ(0, qmPoint_calculateArcInfoFor3pts(nullptr, nullptr, nullptr, &sweep, &p1, &low, &p3));
    EXPECT_NEAR(-kPi, sweep, 1e-12);
    Point3d north{2, 8, 0}, northEast{2 + 5 * std::sqrt(0.5), 3 + 5 * std::sqrt(0.5), 0},
        south{2, -2, 0};
    ASSERT_EQ(0, qmPoint_calculateArcInfoFor3pts(nullptr, nullptr, nullptr, &sweep, &p1,
                                                 &northEast, &north));
    EXPECT_NEAR(kPi / 2, sweep, 1e-12);
    ASSERT_EQ(0, qmPoint_calculateArcInfoFor3pts(nullptr, nullptr, nullptr, &sweep, &p1, &south,
                                                 &north));
    EXPECT_NEAR(-1.5 * kPi, sweep, 1e-12);
    Point3d along{};
    ASSERT_EQ(0, qmPoint_calculatePointAlongArc(&along, &p1, &centre, 5 * kPi / 2, 0));
    EXPECT_NEAR(2.0, along.x, 1e-12);
    EXPECT_NEAR(8.0, along.y, 1e-12);
    Point3d line3[3] = {{0, 0, 0}, {1, 1e-9, 0}, {2, 0, 0}};
    EXPECT_EQ(ERR_FAILURE, qmPoint_calculateArcInfoFor3pts(nullptr, nullptr, nullptr, nullptr,
                                                           &line3[0], &line3[1], &line3[2]));
    unsigned char flag = 9;
    Ring straight = {{0, 0, 0}, {1, 1, 0}, {-2, -2, 0}, {3, 3, 0}};
    ASSERT_EQ(0, qmPoint_checkForColinear2D(4, straight.data(), 1e-9, &flag));
    EXPECT_EQ(1, flag);
    ASSERT_EQ(0, qmPoint_checkForColinear2DInSameDir(4, straight.data(), 1e-9, &flag));
    EXPECT_EQ(0, flag);
}

TEST(PointText, ReadsNorthingEastingElevationAndRejectsMalformedText) {
    struct Case {
        const char* text;
        int status;
        double x, y, z;
    } cases[] = {
        {"100 200", 0, 200, 100, 0},
        {"\t 1.5 -2.25 3e2\r\n", 0, -2.25, 1.5, 300},
        {"abc 7", 0, 7, 0, 0},  // malformed numbers read as 0
        {"100", ERR_FAILURE, 0, 0, 0},
        {"100  200", ERR_FAILURE, 0, 0, 0},  // an empty second token
        {"   ", ERR_FAILURE, 0, 0, 0},
        {"", ERR_FAILURE, 0, 0, 0},
    };
    for (const Case& c : cases) {
        Point3d p{-1, -1, -1};
        ASSERT_EQ(c.status, qmPoint_setFromYXZString(&p, c.text)) << c.text;
        if (c.status == 0) {
            EXPECT_EQ(c.x, p.x);
            EXPECT_EQ(c.y, p.y);
            EXPECT_EQ(c.z, p.z);
        }
    }
    EXPECT_EQ(ERR_FAILURE, qmPoint_setFromYXZString(nullptr, "1 2"));
    std::string longText(600, '1');
    longText[3] = ' ';
    Point3d p{};
    EXPECT_EQ(0, qmPoint_setFromYXZString(&p, longText.c_str()));
    EXPECT_EQ(111.0, p.y);
}

TEST(PointPlaneAndLine, RecoverGeneratingGeometry) {
    const PlaneCoefficients truth{0.02, -0.015, 120.0};
    Ring pts;
    for (int i = 0; i < 30; ++i) {
        const double x = 500000.0 + 13.0 * (i % 6), y = 4000000.0 + 7.0 * (i / 6);
        pts.push_back({x, y, truth.a * x + truth.b * y + truth.c});
    }
    PlaneCoefficients plane{};
    Point3d centroid{};
    double error = -1;
    ASSERT_EQ(0, qmApiPoint_computePlane(&centroid, &plane, &error, pts.data(), (int)pts.size()));
    EXPECT_NEAR(truth.a, plane.a, 1e-9);
    EXPECT_NEAR(truth.b, plane.b, 1e-9);
    EXPECT_NEAR(truth.a * centroid.x + truth.b * centroid.y + truth.c, centroid.z, 1e-6);
    EXPECT_NEAR(0.0, error, 1e-6);
    EXPECT_EQ(ERR_FAILURE, qmPoint_computePlane(&centroid, &plane, &error, pts.data(), 2));
    Point3d above{1, 2, 10}, foot{};
    PlaneCoefficients level{0, 0, 4};
    double d = 0, diff = 0;
    ASSERT_EQ(0, qmPoint_computeMinimumDistancefromPlane(&d, &foot, &above, &level));
    EXPECT_DOUBLE_EQ(6.0, d);
    EXPECT_DOUBLE_EQ(4.0, foot.z);
    ASSERT_EQ(0, qmPoint_computeOnPlaneGivenXY(&diff, &foot, &above, &level));
    EXPECT_DOUBLE_EQ(6.0, diff);

    // Points on the line y = 2x + 1 (descending in x): the fitted ends are the extremes.
    Ring line;
    for (int i = 0; i < 9; ++i) line.push_back({4.0 - i, 2.0 * (4.0 - i) + 1.0, double(i)});
    Point3d a{}, b{};
    double direction = 0, rms = -1;
    ASSERT_EQ(0, qmPoint_computeLineLeastSquares(&a, &b, &direction, &rms, line.data(), 9));
    EXPECT_NEAR(0.0, rms, 1e-12);
    EXPECT_NEAR(2.0, std::tan(direction), 1e-9);
    EXPECT_NEAR(std::hypot(8.0, 16.0), std::hypot(b.x - a.x, b.y - a.y), 1e-9);
    EXPECT_NEAR(2.0 * a.x + 1.0, a.y, 1e-9);
    EXPECT_EQ(0.0, a.z);
    EXPECT_EQ(8.0, b.z);
}

TEST(PointArrayParallel, OffsetSegmentsStayParallelAtTheDistance) {
    Ring run = {{0, 0, 1}, {10, 0, 2}, {10, 0, 2}, {10, 10, 3}, {0, 20, 4}};
    Ring out(run.size());
    ASSERT_EQ(0, qmPointArray_copyParallel2d(out.data(), run.data(), (int)run.size(), 2.0));
    // Right of travel: the first leg runs +x, so its offset is at y = -2.
    EXPECT_NEAR(-2.0, out[0].y, 1e-12);
    EXPECT_NEAR(12.0, out[1].x, 1e-12);
    EXPECT_NEAR(-2.0, out[1].y, 1e-12);
    EXPECT_EQ(out[1].x, out[2].x);
    for (size_t i = 0; i + 1 < run.size(); ++i) {
        if (run[i].x == run[i + 1].x && run[i].y == run[i + 1].y) continue;
        const double dx = run[i + 1].x - run[i].x, dy = run[i + 1].y - run[i].y;
        const double len = std::hypot(dx, dy);
        for (const Point3d* q : {&out[i], &out[i + 1]}) {
            const double offset = ((q->x - run[i].x) * dy - (q->y - run[i].y) * dx) / len;
            EXPECT_NEAR(2.0, offset, 1e-12);
        }
        EXPECT_EQ(run[i].z, out[i].z);
    }
    Ring copy = run;  // in place
    ASSERT_EQ(0, qmPointArray_copyParallel2d(copy.data(), copy.data(), (int)copy.size(), 2.0));
    EXPECT_EQ(0, std::memcmp(copy.data(), out.data(), out.size() * sizeof(Point3d)));
    Ring back = {{0, 0, 0}, {1, 0, 0}, {0, 0, 0}};
    EXPECT_EQ(ERR_FAILURE, qmPointArray_copyParallel2d(out.data(), back.data(), 3, 1.0));
}

TEST(PointProjection, FindsTheEntryWhereThePerpendicularCrosses) {
    // A run along x whose tangent points lie on the normals: the side of the query changes
    // between the entries on either side of its perpendicular foot.
    Ring pts, normals;
    std::vector<double> dist;
    for (int i = 0; i <= 10; ++i) {
        pts.push_back({double(i), 0, double(i)});
        normals.push_back({double(i), 1, 0});
        dist.push_back(100.0 + i);
    }
    Point3d query{5.5, 3, 0};
    Point3d* found = nullptr;
    ASSERT_EQ(1, qmPoint_projectPointOnTangentUsingXYTanDistArraysIteration(
                     &found, nullptr, &query, pts.data(), normals.data(), dist.data(), 11));
    EXPECT_EQ(6.0, found[0].x);
    qmPointArray_free(&found);
    const double hint = 105.2;
    ASSERT_EQ(1, qmPoint_projectPointOnTangentUsingXYTanDistArraysIteration(
                     &found, &hint, &query, pts.data(), normals.data(), dist.data(), 11));
    EXPECT_EQ(6.0, found[0].z);
    qmPointArray_free(&found);
    // Within 0.001 of entry 3, and on its normal: the side change is seen at entry 4 too.
    Point3d onEntry{3, 0.0005, 0};
    ASSERT_EQ(2, qmPoint_projectPointOnTangentUsingXYTanDistArraysIteration(
                     &found, nullptr, &onEntry, pts.data(), normals.data(), dist.data(), 11));
    EXPECT_EQ(3.0, found[0].x);
    EXPECT_EQ(4.0, found[1].x);
    qmPointArray_free(&found);
    EXPECT_EQ(0, qmPoint_projectPointOnTangentUsingXYTanDistArraysIteration(
                     &found, nullptr, &query, pts.data(), normals.data(), dist.data(), 0));
}

}  // namespace
