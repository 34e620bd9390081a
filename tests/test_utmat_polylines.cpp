// Polyline intersections against a brute-force walk over every pair of segments (same points,
// abscissae and order), a crossing at a shared vertex reported once, and the elevation fill
// against exact grades, parabolas and cubics.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/utmat_polylines.h"
#include "korvelbase/utmat_segments.h"

namespace {

struct Found {
    std::vector<Point2d> points;
    std::vector<double> on1, on2;
    int overlaps = 0;
};

// Every pair in order with the library's segment primitive; duplicates dropped as specified.
Found bruteForce(const std::vector<Point2d>& a, const std::vector<Point2d>& b, double tol) {
    Found f;
    double along1 = 0.0;
    for (std::size_t i = 0; i + 1 < a.size(); ++i) {
        const double l1 = std::hypot(a[i + 1].x - a[i].x, a[i + 1].y - a[i].y);
        if (l1 == 0.0) continue;
        double along2 = 0.0;
        int perSegment = 0;
        std::vector<Point2d> seen;
        for (std::size_t k = 0; k + 1 < b.size(); ++k) {
            const double l2 = std::hypot(b[k + 1].x - b[k].x, b[k + 1].y - b[k].y);
            if (l2 == 0.0) continue;
            int pf = 0, of = 0;
            Point2d p;
            double t1, t2;
            UTMAT_CalculerIntersectionSegmentSegment(&a[i], &b[k], tol, &pf, &p, &t1, &t2, &of, nullptr, nullptr, nullptr);
            if (of) ++f.overlaps;
            if (pf && perSegment < 50) {
                bool duplicate = false;
                for (const Point2d& q : seen) duplicate = duplicate || std::hypot(p.x - q.x, p.y - q.y) <= tol;
                if (!duplicate) {
                    seen.push_back(p);
                    ++perSegment;
                    bool global = false;
                    for (const Point2d& q : f.points) global = global || std::hypot(p.x - q.x, p.y - q.y) <= tol;
                    if (!global) {
                        f.points.push_back(p);
                        f.on1.push_back(t1 + along1);
                        f.on2.push_back(t2 + along2);
                    }
                }
            }
            along2 += l2;
        }
        along1 += l1;
    }
    return f;
}

std::vector<Point2d> randomWalk(int n, std::mt19937& random, double step) {
    std::uniform_real_distribution<double> d(-step, step);
    std::vector<Point2d> p{{0, 0}};
    for (int i = 1; i < n; ++i) p.push_back({p.back().x + d(random), p.back().y + d(random)});
    return p;
}

TEST(UtmatPolylines, PolylineIntersectionsMatchTheBruteForceWalk) {
    std::mt19937 random(44);
    for (int trial = 0; trial < 20; ++trial) {
        std::vector<Point2d> a = randomWalk(60 + trial * 10, random, 10.0);
        std::vector<Point2d> b = randomWalk(80, random, 10.0);
        if (trial == 3) {  // a long segment crossing more than 50 segments of a zig-zag
            a = {{-1, 0}, {1001, 0}};
            b.clear();
            for (int k = 0; k <= 200; ++k) b.push_back({5.0 * k, (k % 2 == 0) ? -1.0 : 1.0});
        }
        const double tol = 1e-9;
        const Found expected = bruteForce(a, b, tol);
        UtDonneesIntersection request{a.data(), int(a.size()), b.data(), int(b.size()), tol, 10000, nullptr, nullptr};
        std::vector<Point2d> points(10000);
        std::vector<double> on1(10000), on2(10000);
        int pf = -1, pc = -1, of = -1, oc = -1;
        UTMAT_CalculerIntersectionPolylignePolyligne(&request, &pf, &pc, points.data(), on1.data(), on2.data(), &of,
                                                     &oc, nullptr, nullptr, nullptr);
        ASSERT_EQ(pc, int(expected.points.size())) << trial;
        EXPECT_EQ(pf, pc > 0 ? 1 : 0);
        for (int k = 0; k < pc; ++k) {
            EXPECT_EQ(points[k].x, expected.points[k].x) << trial << " " << k;
            EXPECT_EQ(points[k].y, expected.points[k].y);
            EXPECT_NEAR(on1[k], expected.on1[k], 1e-9);
            EXPECT_NEAR(on2[k], expected.on2[k], 1e-9);
        }
        if (trial == 3) {
            EXPECT_EQ(pc, 50);  // the cut-off per segment of polyline 1
        }
    }
}

TEST(UtmatPolylines, ACrossingAtASharedVertexIsReportedOnce) {
    const Point2d segment[2] = {{0, -5}, {0, 5}};
    const Point2d polyline[3] = {{-5, 0}, {0, 0}, {5, 0}};
    int pf = 0, pc = 0, of = 0, oc = 0;
    Point2d points[4];
    double onSegment[4], onPolyline[4];
    UTMAT_CalculerIntersectionSegmentPolyligne(segment, polyline, 3, 1e-9, 4, &pf, &pc, points, onSegment, onPolyline,
                                               &of, &oc, nullptr, nullptr, nullptr);
    EXPECT_EQ(pc, 1);
    EXPECT_EQ(onSegment[0], 5.0);
    EXPECT_EQ(onPolyline[0], 5.0);
}

TEST(UtmatPolylines, ElevationFillRules) {
    // A 2 % grade every 10 m, with runs missing in the middle, at the start and at the end.
    std::vector<Point3d> p;
    for (int i = 0; i < 12; ++i) p.push_back({10.0 * i, 0.0, 50.0 + 0.2 * i});
    const auto fill = [](std::vector<Point3d> pts, std::vector<int32_t> known) {
        int status = -9;
        UTMAT_CalculerInterpolationCurviligneDuZ(pts.data(), int(pts.size()), known.data(), &status);
        EXPECT_EQ(status, 0);
        return pts;
    };
    std::vector<int32_t> known(12, 1);
    known[5] = known[6] = 0;  // grades on both sides: the cubic reproduces a straight grade
    std::vector<Point3d> out = fill(p, known);
    EXPECT_NEAR(out[5].z, 51.0, 1e-12);
    EXPECT_NEAR(out[6].z, 51.2, 1e-12);
    known.assign(12, 1);
    known[0] = known[1] = 0;  // start: extend the grade of the first known pair backwards
    out = fill(p, known);
    EXPECT_NEAR(out[0].z, 50.0, 1e-12);
    known.assign(12, 1);
    known[10] = known[11] = 0;  // end: forwards along the grade before
    out = fill(p, known);
    EXPECT_NEAR(out[11].z, 52.2, 1e-12);
    // A cubic with different grades on each side meets both grades.
    std::vector<Point3d> q = {{0, 0, 10}, {10, 0, 11}, {20, 0, 0}, {30, 0, 0}, {40, 0, 14}, {50, 0, 13}};
    std::vector<int32_t> k2 = {1, 1, 0, 0, 1, 1};
    out = fill(q, k2);
    // z(t) = 11 + 0.1 t + a t^2 + b t^3 over L = 30 with g2 = -0.1.
    const double L = 30, g1 = 0.1, g2 = -0.1, V = ((14 - 11) - g1 * L) / L, W = g2 - g1;
    const double a = (3 * V - W) / L, b = (W - 2 * V) / (L * L);
    EXPECT_NEAR(out[2].z, 11 + g1 * 10 + a * 100 + b * 1000, 1e-12);
    EXPECT_NEAR(out[3].z, 11 + g1 * 20 + a * 400 + b * 8000, 1e-12);
    // Linear between single known points, and a constant from one side.
    std::vector<Point3d> r = {{0, 0, 10}, {3, 4, 0}, {6, 8, 20}};
    out = fill(r, {1, 0, 1});
    EXPECT_NEAR(out[1].z, 15.0, 1e-12);
    out = fill(r, {1, 0, 0});
    EXPECT_EQ(out[2].z, 10.0);
    // Statuses.
    int status = 0;
    UTMAT_CalculerInterpolationCurviligneDuZ(r.data(), 1, k2.data(), &status);
    EXPECT_EQ(status, UTMAT_FILL_TOO_FEW_POINTS);
    const std::vector<int32_t> all = {1, 1, 1}, none = {0, 0, 0};
    UTMAT_CalculerInterpolationCurviligneDuZ(r.data(), 3, all.data(), &status);
    EXPECT_EQ(status, UTMAT_FILL_NOTHING_TO_FILL);
    UTMAT_CalculerInterpolationCurviligneDuZ(r.data(), 3, none.data(), &status);
    EXPECT_EQ(status, UTMAT_FILL_NO_ELEVATION);
    std::vector<Point3d> twin = {{0, 0, 1}, {0, 0, 2}, {5, 0, 0}};
    const std::vector<int32_t> some = {1, 1, 0};
    UTMAT_CalculerInterpolationCurviligneDuZ(twin.data(), 3, some.data(), &status);
    EXPECT_EQ(status, UTMAT_FILL_COINCIDENT_POINTS);
}

}  // namespace

namespace {

// Independent even-odd test on a closed ring (half-open in y), for points off the boundary.
bool evenOddInside(const std::vector<Point2d>& ring, Point2d p) {
    bool inside = false;
    for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
        const Point2d a = ring[j], b = ring[i];
        if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) inside = !inside;
    }
    return inside;
}

}  // namespace

TEST(UtmatPolylines, PointInContourAgreesWithEvenOddAndNamesBoundarySegments) {
    std::mt19937 random(12);
    std::uniform_real_distribution<double> radius(20.0, 50.0), coordinate(-60.0, 60.0);
    std::vector<Point2d> ring;
    for (int k = 0; k < 40; ++k) {
        const double a = 2 * 3.14159265358979 * k / 40, r = radius(random);
        ring.push_back({r * std::cos(a), r * std::sin(a)});
    }
    std::vector<Point2d> contour = ring;
    contour.push_back(ring.front());  // the test does not close the contour itself
    for (int trial = 0; trial < 3000; ++trial) {
        const Point2d p{coordinate(random), coordinate(random)};
        EXPECT_EQ(UTMAT_PointDansContour(&p, contour.data(), int(contour.size()), 1e-12),
                  evenOddInside(ring, p) ? 1 : 2);
    }
    // On an edge: minus the end vertex of that edge; on a vertex: the first edge holding it.
    const Point2d mid{(contour[5].x + contour[6].x) / 2, (contour[5].y + contour[6].y) / 2};
    EXPECT_EQ(UTMAT_PointDansContour(&mid, contour.data(), int(contour.size()), 1e-9), -6);
    // A square crossed by the ray exactly at its vertex (2, 0): counted once, inside.
    const std::vector<Point2d> diamond = {{0, -2}, {2, 0}, {0, 2}, {-2, 0}, {0, -2}};
    const Point2d centre{0, 0};
    EXPECT_EQ(UTMAT_PointDansContour(&centre, diamond.data(), 5, 1e-12), 1);
    // A ray touching a vertex without crossing: outside.
    const std::vector<Point2d> tooth = {{0, 0}, {4, 2}, {8, 0}, {8, -4}, {0, -4}, {0, 0}};
    const Point2d beside{-5, 2};
    EXPECT_EQ(UTMAT_PointDansContour(&beside, tooth.data(), 6, 1e-12), 2);
    // Point on segment and on polyline.
    const Point2d a{0, 0}, b{10, 0}, beyond{12, 0}, on{4, 0};
    EXPECT_EQ(UTMAT_ComparerPointASegment(&beyond, &a, &b, 1e-9), 0);
    EXPECT_EQ(UTMAT_ComparerPointASegment(&on, &a, &b, 1e-9), 1);
    int first = 0, second = 0;
    const std::vector<Point2d> line = {{0, 0}, {10, 0}, {10, 10}};
    const Point2d vertex{10, 0}, along{10, 4}, off{3, 3};
    UTMAT_PointSurPolyligne(line.data(), 3, &vertex, 1e-9, &first, &second);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, -1);
    UTMAT_PointSurPolyligne(line.data(), 3, &along, 1e-9, &first, &second);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    UTMAT_PointSurPolyligne(line.data(), 3, &off, 1e-9, &first, &second);
    EXPECT_EQ(first, -1);
}
