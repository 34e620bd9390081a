// Polyline intersections against a brute-force walk over every pair of segments (same points,
// abscissae and order), a crossing at a shared vertex reported once, and the elevation fill
// against exact grades, parabolas and cubics.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/utmat_polylines.h"
#include "korvelbase/utmat_segments.h"

namespace {

uint32_t kernelError() {
    uint32_t error = 0, detail = 0;
    UTMAT_GetErreur(&error, &detail);
    return error;
}

struct Found {
    std::vector<Point2d> points;
    std::vector<double> on1, on2;
    int overlaps = 0;
    bool failed = false;  // a pair the primitive refused ends the walk
};

// Every pair in order with the library's segment primitive; a point within the tolerance of one
// already kept is dropped.
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
            if (kernelError() != 0) {
                f.failed = true;
                return f;
            }
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

TEST(UtmatPolylines, ANaNVertexInEitherPolylineGivesTheBruteForcePoints) {
    std::mt19937 random(45);
    for (int trial = 0; trial < 6; ++trial) {
        std::vector<Point2d> a = randomWalk(70, random, 10.0);
        std::vector<Point2d> b = randomWalk(90, random, 10.0);
        std::vector<Point2d>& spoilt = trial % 2 == 0 ? a : b;
        spoilt[spoilt.size() / 2 + trial].y = std::nan("");
        const Found expected = bruteForce(a, b, 1e-9);
        UtDonneesIntersection request{a.data(), int(a.size()), b.data(), int(b.size()), 1e-9, 10000, nullptr, nullptr};
        std::vector<Point2d> points(10000);
        std::vector<double> on1(10000), on2(10000);
        int pf = -1, pc = -1, of = -1, oc = -1;
        UTMAT_CalculerIntersectionPolylignePolyligne(&request, &pf, &pc, points.data(), on1.data(), on2.data(), &of,
                                                     &oc, nullptr, nullptr, nullptr);
        EXPECT_TRUE(expected.failed) << trial;  // the primitive refuses a NaN segment
        EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE)) << trial;
        ASSERT_EQ(pc, int(expected.points.size())) << trial;
        for (int k = 0; k < pc; ++k) {
            EXPECT_EQ(points[k].x, expected.points[k].x) << trial << " " << k;
            EXPECT_EQ(points[k].y, expected.points[k].y);
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

// ---- the abscissa walk, nearest and first intersections, profile cuts, segments in contours ----

#include "korvelbase/blockarray.h"

namespace {

struct Crossing {
    Point2d point;
    double on1, on2;
};

double lengthOf(Point2d a, Point2d b) { return std::hypot(b.x - a.x, b.y - a.y); }
double crossOf(double ax, double ay, double bx, double by) { return ax * by - ay * bx; }

// Every crossing of two polylines by plain parametric intersection of every pair of segments,
// in pair order, with curvilinear abscissae on both (independent of the library).
std::vector<Crossing> allCrossings(const std::vector<Point2d>& a, const std::vector<Point2d>& b) {
    std::vector<Crossing> out;
    double along1 = 0.0;
    for (std::size_t i = 0; i + 1 < a.size(); ++i) {
        const double ux = a[i + 1].x - a[i].x, uy = a[i + 1].y - a[i].y;
        double along2 = 0.0;
        for (std::size_t k = 0; k + 1 < b.size(); ++k) {
            const double vx = b[k + 1].x - b[k].x, vy = b[k + 1].y - b[k].y;
            const double wx = b[k].x - a[i].x, wy = b[k].y - a[i].y;
            const double det = crossOf(ux, uy, vx, vy);
            if (det != 0.0) {
                const double s = crossOf(wx, wy, vx, vy) / det, t = crossOf(wx, wy, ux, uy) / det;
                if (s >= 0.0 && s <= 1.0 && t >= 0.0 && t <= 1.0) {
                    out.push_back({{a[i].x + s * ux, a[i].y + s * uy},
                                   along1 + s * lengthOf(a[i], a[i + 1]),
                                   along2 + t * lengthOf(b[k], b[k + 1])});
                }
            }
            along2 += lengthOf(b[k], b[k + 1]);
        }
        along1 += lengthOf(a[i], a[i + 1]);
    }
    return out;
}

// A profile: increasing x from x0 in random steps, y a random walk.
std::vector<Point2d> randomProfile(int n, double x0, std::mt19937& random) {
    std::uniform_real_distribution<double> step(0.5, 2.0), rise(-3.0, 3.0);
    std::vector<Point2d> p{{x0, 0.0}};
    for (int i = 1; i < n; ++i) p.push_back({p.back().x + step(random), p.back().y + rise(random)});
    return p;
}

std::vector<double> xOf(const std::vector<Point2d>& p) {
    std::vector<double> x;
    for (const Point2d& q : p) x.push_back(q.x);
    return x;
}

struct WalkResult {
    int pointFound = -1, pointCount = -1, overlapFound = -1, overlapCount = -1;
    std::vector<Point2d> points, overlapPoints;
    std::vector<double> on1, on2, overlapOn1, overlapOn2;
};

// One of the two polyline-polyline queries on copies of the inputs.
template <typename Query>
WalkResult runQuery(Query query, std::vector<Point2d> a, std::vector<Point2d> b, double tol, int capacity,
                    bool withAbscissae = true) {
    std::vector<double> abs1 = xOf(a), abs2 = xOf(b);
    UtDonneesIntersection request{a.data(), int(a.size()), b.data(), int(b.size()), tol, capacity,
                                  withAbscissae ? abs1.data() : nullptr, withAbscissae ? abs2.data() : nullptr};
    WalkResult r;
    const std::size_t room = static_cast<std::size_t>(std::max(capacity, 1));
    r.points.resize(room);
    r.on1.resize(room);
    r.on2.resize(room);
    r.overlapPoints.resize(2 * room);
    r.overlapOn1.resize(2 * room);
    r.overlapOn2.resize(2 * room);
    query(&request, &r.pointFound, &r.pointCount, r.points.data(), r.on1.data(), r.on2.data(), &r.overlapFound,
          &r.overlapCount, r.overlapPoints.data(), r.overlapOn1.data(), r.overlapOn2.data());
    return r;
}

void expectSameResults(const WalkResult& walk, const WalkResult& full) {
    ASSERT_EQ(walk.pointCount, full.pointCount);
    EXPECT_EQ(walk.pointFound, full.pointFound);
    for (int k = 0; k < walk.pointCount; ++k) {
        EXPECT_EQ(walk.points[k].x, full.points[k].x) << k;
        EXPECT_EQ(walk.points[k].y, full.points[k].y) << k;
        EXPECT_EQ(walk.on1[k], full.on1[k]) << k;
        EXPECT_EQ(walk.on2[k], full.on2[k]) << k;
    }
    ASSERT_EQ(walk.overlapCount, full.overlapCount);
    EXPECT_EQ(walk.overlapFound, full.overlapFound);
    for (int k = 0; k < 2 * walk.overlapCount; ++k) {
        EXPECT_EQ(walk.overlapPoints[k].x, full.overlapPoints[k].x);
        EXPECT_EQ(walk.overlapOn1[k], full.overlapOn1[k]);
        EXPECT_EQ(walk.overlapOn2[k], full.overlapOn2[k]);
    }
}

}  // namespace

TEST(UtmatPolylines, AbscissaWalkOnProfilesFindsEveryCrossingOfTheFullWalk) {
    std::mt19937 random(2024);
    const double tol = 1e-9;
    for (int trial = 0; trial < 30; ++trial) {
        const std::vector<Point2d> a = randomProfile(40 + 7 * trial, 0.0, random);
        const std::vector<Point2d> b = randomProfile(60, trial % 3 == 0 ? 0.0 : 0.37 * trial, random);
        const WalkResult walk = runQuery(UTMAT_CalculerIntersectionPolylignePolyligneAvecAbscisses, a, b, tol, 1000);
        EXPECT_EQ(kernelError(), 0u);
        const WalkResult full = runQuery(UTMAT_CalculerIntersectionPolylignePolyligne, a, b, tol, 1000);
        expectSameResults(walk, full);
        // Against the plain computation: same crossings, same order, same curvilinear abscissae.
        const std::vector<Crossing> expected = allCrossings(a, b);
        ASSERT_EQ(walk.pointCount, int(expected.size())) << trial;
        for (int k = 0; k < walk.pointCount; ++k) {
            EXPECT_NEAR(walk.points[k].x, expected[k].point.x, 1e-9);
            EXPECT_NEAR(walk.points[k].y, expected[k].point.y, 1e-9);
            EXPECT_NEAR(walk.on1[k], expected[k].on1, 1e-9);
            EXPECT_NEAR(walk.on2[k], expected[k].on2, 1e-9);
        }
        // A smaller capacity keeps the first crossings of the same list.
        const WalkResult cut = runQuery(UTMAT_CalculerIntersectionPolylignePolyligneAvecAbscisses, a, b, tol, 3);
        EXPECT_EQ(cut.pointCount, std::min(3, walk.pointCount));
        for (int k = 0; k < cut.pointCount; ++k) EXPECT_EQ(cut.on1[k], walk.on1[k]);
    }
}

TEST(UtmatPolylines, AbscissaWalkHandlesSharedVerticesOverlapsAndVerticalRuns) {
    const double tol = 1e-9;
    // Profile 2 passes exactly through a vertex of profile 1, runs along one of its segments,
    // and profile 1 has a vertical step, as has profile 2 at the same abscissa.
    const std::vector<Point2d> a = {{0, 0}, {2, 2}, {4, 0}, {6, 0}, {8, 0}, {8, 5}, {12, 5}};
    const std::vector<Point2d> b = {{0, 4}, {2, 2}, {3, -1}, {5, 0}, {7, 0}, {7.5, 3}, {8, 3}, {8, 4}, {12, 6}};
    const WalkResult walk = runQuery(UTMAT_CalculerIntersectionPolylignePolyligneAvecAbscisses, a, b, tol, 100);
    const WalkResult full = runQuery(UTMAT_CalculerIntersectionPolylignePolyligne, a, b, tol, 100);
    expectSameResults(walk, full);
    EXPECT_EQ(walk.overlapCount, 3);  // (5, 0)-(6, 0), (6, 0)-(7, 0) and the common vertical (8, 3)-(8, 4)
    int atSharedVertex = 0;
    for (int k = 0; k < walk.pointCount; ++k) atSharedVertex += walk.points[k].x == 2 && walk.points[k].y == 2;
    EXPECT_EQ(atSharedVertex, 1);
    // Nothing but counts wanted: the walk stops once both kinds are found.
    std::vector<Point2d> a2 = a, b2 = b;
    std::vector<double> abs1 = xOf(a), abs2 = xOf(b);
    UtDonneesIntersection request{a2.data(), int(a2.size()), b2.data(), int(b2.size()), tol, 0, abs1.data(), abs2.data()};
    int pf = 0, pc = 0, of = 0, oc = 0;
    UTMAT_CalculerIntersectionPolylignePolyligneAvecAbscisses(&request, &pf, &pc, nullptr, nullptr, nullptr, &of, &oc,
                                                              nullptr, nullptr, nullptr);
    EXPECT_EQ(pf, 1);
    EXPECT_EQ(of, 1);
    EXPECT_GE(pc, 1);
    // Abscissae are required.
    request.abs2 = nullptr;
    UTMAT_CalculerIntersectionPolylignePolyligneAvecAbscisses(&request, &pf, &pc, nullptr, nullptr, nullptr, &of, &oc,
                                                              nullptr, nullptr, nullptr);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
}

namespace {

struct Nearest {
    int isPoint = -1, isOverlapEnd = -1;
    Point2d point{-7, -7};
    double on1 = -7, on2 = -7;
};

}  // namespace

TEST(UtmatPolylines, NearestAndFirstIntersectionsAreTheBruteForceMinima) {
    std::mt19937 random(77);
    std::uniform_real_distribution<double> coordinate(-30.0, 30.0);
    const double tol = 1e-9;
    for (int trial = 0; trial < 40; ++trial) {
        const std::vector<Point2d> a = randomWalk(12, random, 10.0);
        const std::vector<Point2d> b = randomWalk(25, random, 10.0);
        const Point2d reference{coordinate(random), coordinate(random)};
        const std::vector<Crossing> all = allCrossings(a, b);
        ASSERT_LT(all.size(), 50u);
        Nearest n;
        UTMAT_CalculerIntersectionPolylignePolylignePlusProche(a.data(), int(a.size()), b.data(), int(b.size()), tol,
                                                               &reference, 0, &n.point, &n.on1, &n.on2, &n.isPoint,
                                                               &n.isOverlapEnd);
        Nearest f;
        UTMAT_CalculerPremiereIntersectionPolyligneAvecPolyligne(a.data(), int(a.size()), b.data(), int(b.size()), tol,
                                                                 &f.point, &f.on1, &f.on2, &f.isPoint, &f.isOverlapEnd);
        EXPECT_EQ(n.isOverlapEnd, 0);
        EXPECT_EQ(f.isOverlapEnd, 0);
        if (all.empty()) {
            EXPECT_EQ(n.isPoint, 0);
            EXPECT_EQ(f.isPoint, 0);
            EXPECT_EQ(n.on1, -7);  // untouched
            continue;
        }
        std::size_t nearest = 0, first = 0;
        for (std::size_t k = 1; k < all.size(); ++k) {
            const auto d = [&](std::size_t j) { return std::hypot(all[j].point.x - reference.x, all[j].point.y - reference.y); };
            if (d(k) < d(nearest)) nearest = k;
            if (all[k].on1 < all[first].on1) first = k;
        }
        EXPECT_EQ(n.isPoint, 1);
        EXPECT_NEAR(n.point.x, all[nearest].point.x, 1e-9);
        EXPECT_NEAR(n.point.y, all[nearest].point.y, 1e-9);
        EXPECT_NEAR(n.on1, all[nearest].on1, 1e-9);
        EXPECT_NEAR(n.on2, all[nearest].on2, 1e-9);
        EXPECT_EQ(f.isPoint, 1);
        EXPECT_NEAR(f.on1, all[first].on1, 1e-9);
        EXPECT_NEAR(f.on2, all[first].on2, 1e-9);
        EXPECT_NEAR(f.point.x, all[first].point.x, 1e-9);
        // The segment form: segment 0 of polyline 1 against polyline 2.
        const std::vector<Point2d> segment = {a[0], a[1]};
        const std::vector<Crossing> onSegment = allCrossings(segment, b);
        Nearest s;
        UTMAT_CalculerIntersectionSegmentPolylignePlusProche(segment.data(), b.data(), int(b.size()), tol, &reference, 0,
                                                             &s.point, &s.on1, &s.on2, &s.isPoint, &s.isOverlapEnd);
        EXPECT_EQ(s.isPoint, onSegment.empty() ? 0 : 1);
        if (!onSegment.empty()) {
            double best = 1e300;
            for (const Crossing& c : onSegment) {
                best = std::min(best, std::hypot(c.point.x - reference.x, c.point.y - reference.y));
            }
            EXPECT_NEAR(std::hypot(s.point.x - reference.x, s.point.y - reference.y), best, 1e-9);
        }
    }
}

TEST(UtmatPolylines, NearestIntersectionRulesForTheReferenceAndOverlaps) {
    const double tol = 1e-9;
    // A level polyline crossed by a vertical segment at x = 2 and x = 6.
    const std::vector<Point2d> line = {{0, 0}, {10, 0}};
    const std::vector<Point2d> comb = {{2, -1}, {2, 1}, {6, 1}, {6, -1}};
    const Point2d atCrossing{2, 0}, nearSix{5.5, 0.2};
    Nearest n;
    UTMAT_CalculerIntersectionPolylignePolylignePlusProche(line.data(), 2, comb.data(), 4, tol, &atCrossing, 0, &n.point,
                                                           &n.on1, &n.on2, &n.isPoint, &n.isOverlapEnd);
    EXPECT_EQ(n.isPoint, 1);
    EXPECT_EQ(n.point.x, 6.0);  // the crossing at the reference itself is passed over
    UTMAT_CalculerIntersectionPolylignePolylignePlusProche(line.data(), 2, comb.data(), 4, tol, &atCrossing, 1, &n.point,
                                                           &n.on1, &n.on2, &n.isPoint, &n.isOverlapEnd);
    EXPECT_EQ(n.point.x, 2.0);  // ... unless accepted
    EXPECT_EQ(n.on1, 2.0);
    EXPECT_EQ(n.on2, 1.0);
    // Crossing at (8, 0), touching at (5, 0), then along the line to (4, 0): the overlap end
    // (4, 0) is strictly nearer (3.5, 0.2) than any point; near (5.5, 0.2) the point at (5, 0)
    // and the overlap end there tie, and the point wins.
    const std::vector<Point2d> hook = {{8, -1}, {8, 1}, {5, 1}, {5, 0}, {4, 0}};
    const Point2d nearFour{3.5, 0.2};
    UTMAT_CalculerIntersectionPolylignePolylignePlusProche(line.data(), 2, hook.data(), 5, tol, &nearFour, 0, &n.point,
                                                           &n.on1, &n.on2, &n.isPoint, &n.isOverlapEnd);
    EXPECT_EQ(n.isOverlapEnd, 1);
    EXPECT_EQ(n.isPoint, 0);
    EXPECT_EQ(n.point.x, 4.0);
    EXPECT_EQ(n.on1, 4.0);
    EXPECT_EQ(n.on2, 7.0);  // 2 + 3 + 1 + 1 along the hook
    UTMAT_CalculerIntersectionPolylignePolylignePlusProche(line.data(), 2, hook.data(), 5, tol, &nearSix, 0, &n.point,
                                                           &n.on1, &n.on2, &n.isPoint, &n.isOverlapEnd);
    EXPECT_EQ(n.isPoint, 1);
    EXPECT_EQ(n.isOverlapEnd, 0);
    EXPECT_EQ(n.point.x, 5.0);
    // First intersection: the overlap from (2, 0) comes before the touch at (6, 0) and the
    // crossing at (8, 0); a point at the same abscissa as an overlap end wins.
    Nearest f;
    const std::vector<Point2d> late = {{2, 0}, {6, 0}, {6, 1}, {8, 1}, {8, -1}};
    UTMAT_CalculerPremiereIntersectionPolyligneAvecPolyligne(line.data(), 2, late.data(), 5, tol, &f.point, &f.on1,
                                                             &f.on2, &f.isPoint, &f.isOverlapEnd);
    EXPECT_EQ(f.isOverlapEnd, 1);
    EXPECT_EQ(f.isPoint, 0);
    EXPECT_EQ(f.on1, 2.0);
    EXPECT_EQ(f.on2, 0.0);
    UTMAT_CalculerPremiereIntersectionPolyligneAvecPolyligne(line.data(), 2, hook.data(), 5, tol, &f.point, &f.on1,
                                                             &f.on2, &f.isPoint, &f.isOverlapEnd);
    EXPECT_EQ(f.isOverlapEnd, 1);  // the overlap end (4, 0) at 4 comes before the touch at 5
    EXPECT_EQ(f.isPoint, 0);
    EXPECT_EQ(f.on1, 4.0);
    // Nothing found, no error; null flags are refused.
    const std::vector<Point2d> far = {{0, 5}, {10, 5}};
    UTMAT_CalculerPremiereIntersectionPolyligneAvecPolyligne(line.data(), 2, far.data(), 2, tol, nullptr, nullptr,
                                                             nullptr, &f.isPoint, &f.isOverlapEnd);
    EXPECT_EQ(f.isPoint + f.isOverlapEnd, 0);
    EXPECT_EQ(kernelError(), 0u);
    UTMAT_CalculerIntersectionSegmentPolylignePlusProche(line.data(), comb.data(), 4, tol, &nearSix, 0, nullptr, nullptr,
                                                         nullptr, nullptr, &n.isOverlapEnd);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
}

namespace {

struct Parts {
    std::vector<Point2d> first, second;
    uint32_t error = 0;
};

Parts cutAt(const std::vector<Point2d>& profile, Point2d p, double tol = 1e-9) {
    Point2d* first = nullptr;
    Point2d* second = nullptr;
    int firstCount = -1, secondCount = -1;
    UTMAT_SegmenterPolyligne(profile.data(), int(profile.size()), &p, tol, &first, &firstCount, &second, &secondCount);
    Parts parts;
    parts.error = kernelError();
    if (parts.error == 0) {
        parts.first.assign(first, first + firstCount);
        parts.second.assign(second, second + secondCount);
        EXPECT_EQ(first == nullptr, firstCount == 0);
        EXPECT_EQ(second == nullptr, secondCount == 0);
    }
    if (first != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&first));
    if (second != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&second));
    return parts;
}

bool same(Point2d a, Point2d b) { return a.x == b.x && a.y == b.y; }

}  // namespace

TEST(UtmatPolylines, CutPartsRejoinToTheProfileWithTheCutPointBetween) {
    std::mt19937 random(5);
    for (int trial = 0; trial < 50; ++trial) {
        std::vector<Point2d> profile = randomProfile(20, 0.0, random);
        if (trial % 2 == 1) std::reverse(profile.begin(), profile.end());  // decreasing x
        const double lo = std::min(profile.front().x, profile.back().x), hi = std::max(profile.front().x, profile.back().x);
        const Point2d p{lo + (hi - lo) * std::uniform_real_distribution<double>(0.01, 0.99)(random), 1000.0 + trial};
        const Parts parts = cutAt(profile, p);
        ASSERT_EQ(parts.error, 0u);
        ASSERT_GE(parts.first.size(), 2u);
        ASSERT_GE(parts.second.size(), 2u);
        EXPECT_TRUE(same(parts.first.back(), p));
        EXPECT_TRUE(same(parts.second.front(), p));
        // first without P, then second without P, is the profile; P's x lies between them.
        std::vector<Point2d> joined(parts.first.begin(), parts.first.end() - 1);
        joined.insert(joined.end(), parts.second.begin() + 1, parts.second.end());
        ASSERT_EQ(joined.size(), profile.size());
        for (std::size_t k = 0; k < joined.size(); ++k) EXPECT_TRUE(same(joined[k], profile[k]));
        const double before = parts.first[parts.first.size() - 2].x, after = parts.second[1].x;
        EXPECT_LT(std::min(before, after), p.x);
        EXPECT_GT(std::max(before, after), p.x);
    }
}

TEST(UtmatPolylines, CutAtVerticesVerticalRunsEndsAndOutOfRange) {
    const std::vector<Point2d> profile = {{0, 0}, {5, 0}, {5, 3}, {5, 6}, {10, 6}};
    const auto expectPoints = [](const std::vector<Point2d>& got, const std::vector<Point2d>& want) {
        ASSERT_EQ(got.size(), want.size());
        for (std::size_t k = 0; k < got.size(); ++k) EXPECT_TRUE(same(got[k], want[k])) << k;
    };
    Parts parts = cutAt(profile, {5, 4});  // inside the run, between (5, 3) and (5, 6)
    expectPoints(parts.first, {{0, 0}, {5, 0}, {5, 3}, {5, 4}});
    expectPoints(parts.second, {{5, 4}, {5, 6}, {10, 6}});
    parts = cutAt(profile, {5, 3});  // at a run point: not repeated
    expectPoints(parts.first, {{0, 0}, {5, 0}, {5, 3}});
    expectPoints(parts.second, {{5, 3}, {5, 6}, {10, 6}});
    parts = cutAt(profile, {5, 0});  // at the foot of the run
    expectPoints(parts.first, {{0, 0}, {5, 0}});
    expectPoints(parts.second, {{5, 0}, {5, 3}, {5, 6}, {10, 6}});
    parts = cutAt(profile, {5, 9});  // above the run: the whole run comes first
    expectPoints(parts.first, {{0, 0}, {5, 0}, {5, 3}, {5, 6}, {5, 9}});
    expectPoints(parts.second, {{5, 9}, {10, 6}});
    parts = cutAt(profile, {7.5, 6});  // at an inner point of a segment
    expectPoints(parts.first, {{0, 0}, {5, 0}, {5, 3}, {5, 6}, {7.5, 6}});
    parts = cutAt(profile, {0, 1});  // at the first x: the whole profile is the second part
    EXPECT_TRUE(parts.first.empty());
    expectPoints(parts.second, profile);
    parts = cutAt(profile, {10, 0});
    expectPoints(parts.first, profile);
    EXPECT_TRUE(parts.second.empty());
    parts = cutAt(profile, {10.5, 0});  // beyond the range
    EXPECT_EQ(parts.error, uint32_t(ERR_FAILURE));
    parts = cutAt(profile, {10.5, 0}, 1.0);  // ... but within the tolerance of the last x
    EXPECT_EQ(parts.error, 0u);
    EXPECT_TRUE(parts.second.empty());
    // Outputs must be empty on entry.
    Point2d existing[1] = {{0, 0}};
    Point2d* first = existing;
    Point2d* second = nullptr;
    int firstCount = 0, secondCount = 0;
    const Point2d p{2, 0};
    UTMAT_SegmenterPolyligne(profile.data(), 5, &p, 1e-9, &first, &firstCount, &second, &secondCount);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
    EXPECT_EQ(first, existing);
    EXPECT_EQ(second, nullptr);
}

namespace {

// Distance from p to the nearest edge of a closed ring.
double distanceToRing(const std::vector<Point2d>& ring, Point2d p) {
    double best = 1e300;
    for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
        const Point2d a = ring[j], b = ring[i];
        const double vx = b.x - a.x, vy = b.y - a.y;
        double t = ((p.x - a.x) * vx + (p.y - a.y) * vy) / (vx * vx + vy * vy);
        t = std::max(0.0, std::min(1.0, t));
        best = std::min(best, std::hypot(a.x + t * vx - p.x, a.y + t * vy - p.y));
    }
    return best;
}

int segmentInContour(Point2d a, Point2d b, const std::vector<Point2d>& ring, double tol = 1e-9) {
    std::vector<Point2d> contour = ring;
    contour.push_back(ring.front());
    const Point2d segment[2] = {a, b};
    return UTMAT_SegmentDansContour(segment, contour.data(), int(contour.size()), tol);
}

// Samples along the segment, away from the boundary, classified by even-odd containment.
void expectAgreesWithSampling(Point2d a, Point2d b, const std::vector<Point2d>& ring) {
    const int result = segmentInContour(a, b, ring);
    bool inside = false, outside = false;
    for (int k = 0; k <= 4000; ++k) {
        const Point2d p{a.x + (b.x - a.x) * k / 4000.0, a.y + (b.y - a.y) * k / 4000.0};
        if (distanceToRing(ring, p) < 1e-6) continue;
        (evenOddInside(ring, p) ? inside : outside) = true;
    }
    const int expected = inside && outside ? UTMAT_SEGMENT_CROSSES
                         : inside          ? UTMAT_SEGMENT_INSIDE
                         : outside         ? UTMAT_SEGMENT_OUTSIDE
                                           : UTMAT_SEGMENT_ON_BOUNDARY;
    EXPECT_EQ(result, expected) << a.x << "," << a.y << " " << b.x << "," << b.y;
}

}  // namespace

TEST(UtmatPolylines, SegmentInContourAgreesWithSamplingOnConvexAndConcaveContours) {
    std::vector<Point2d> convex;
    for (int k = 0; k < 12; ++k) convex.push_back({20 * std::cos(k * 3.14159265358979 / 6), 20 * std::sin(k * 3.14159265358979 / 6)});
    std::vector<Point2d> star;
    for (int k = 0; k < 14; ++k) {
        const double r = k % 2 == 0 ? 25.0 : 9.0, angle = k * 3.14159265358979 / 7;
        star.push_back({r * std::cos(angle), r * std::sin(angle)});
    }
    std::vector<Point2d> notch = {{0, 0}, {30, 0}, {30, 30}, {20, 30}, {20, 10}, {10, 10}, {10, 30}, {0, 30}};
    std::mt19937 random(31);
    std::uniform_real_distribution<double> coordinate(-32.0, 32.0);
    for (const auto* ring : {&convex, &star, &notch}) {
        for (int trial = 0; trial < 150; ++trial) {
            expectAgreesWithSampling({coordinate(random), coordinate(random)}, {coordinate(random), coordinate(random)}, *ring);
        }
        // Chords between vertices, and segments from a vertex to the middle of another edge.
        for (std::size_t i = 0; i < ring->size(); ++i) {
            for (std::size_t j = i + 1; j < ring->size(); ++j) {
                const Point2d a = (*ring)[i], b = (*ring)[j];
                expectAgreesWithSampling(a, b, *ring);
                const Point2d c = (*ring)[(j + 1) % ring->size()];
                expectAgreesWithSampling(a, {(b.x + c.x) / 2, (b.y + c.y) / 2}, *ring);
            }
        }
    }
}

TEST(UtmatPolylines, SegmentInContourAlongTheBoundary) {
    // A square with an extra vertex on its bottom edge (two collinear edges there).
    const std::vector<Point2d> square = {{0, 0}, {4, 0}, {10, 0}, {10, 10}, {0, 10}};
    EXPECT_EQ(segmentInContour({1, 0}, {3, 0}, square), UTMAT_SEGMENT_ON_BOUNDARY);  // within one edge
    EXPECT_EQ(segmentInContour({1, 0}, {9, 0}, square), UTMAT_SEGMENT_ON_BOUNDARY);  // across the collinear vertex
    EXPECT_EQ(segmentInContour({0, 0}, {10, 0}, square), UTMAT_SEGMENT_ON_BOUNDARY); // vertex to vertex
    EXPECT_EQ(segmentInContour({10, 0}, {10, 10}, square), UTMAT_SEGMENT_ON_BOUNDARY);
    EXPECT_EQ(segmentInContour({5, 0}, {15, 0}, square), UTMAT_SEGMENT_OUTSIDE);     // along, then beyond
    EXPECT_EQ(segmentInContour({0, 0}, {10, 10}, square), UTMAT_SEGMENT_INSIDE);     // diagonal
    EXPECT_EQ(segmentInContour({5, 0}, {5, 10}, square), UTMAT_SEGMENT_INSIDE);      // edge to edge
    EXPECT_EQ(segmentInContour({5, 0}, {10, 5}, square), UTMAT_SEGMENT_INSIDE);      // across a corner, inside
    EXPECT_EQ(segmentInContour({5, 0}, {5, -3}, square), UTMAT_SEGMENT_OUTSIDE);     // leaving from an edge
    EXPECT_EQ(segmentInContour({-5, 5}, {15, 5}, square), UTMAT_SEGMENT_CROSSES);
    EXPECT_EQ(segmentInContour({2, 2}, {2, 2}, square), UTMAT_SEGMENT_INSIDE);       // zero length: its point
    EXPECT_EQ(segmentInContour({2, 0}, {2, 0}, square), UTMAT_SEGMENT_ON_BOUNDARY);
    // Along the inner edges of a notch, which the region lies on one side of.
    const std::vector<Point2d> notch = {{0, 0}, {30, 0}, {30, 30}, {20, 30}, {20, 10}, {10, 10}, {10, 30}, {0, 30}};
    EXPECT_EQ(segmentInContour({10, 20}, {10, 10}, notch), UTMAT_SEGMENT_ON_BOUNDARY);
    EXPECT_EQ(segmentInContour({10, 20}, {20, 20}, notch), UTMAT_SEGMENT_OUTSIDE);   // across the notch
    EXPECT_EQ(segmentInContour({5, 20}, {25, 20}, notch), UTMAT_SEGMENT_CROSSES);
    EXPECT_EQ(segmentInContour({5, 5}, {25, 5}, notch), UTMAT_SEGMENT_INSIDE);
    // Exact tolerance 0 still ends (the halving is bounded) and finds the boundary.
    EXPECT_EQ(segmentInContour({1, 0}, {9, 0}, square, 0.0), UTMAT_SEGMENT_ON_BOUNDARY);
    const Point2d segment[2] = {{0, 0}, {1, 1}};
    EXPECT_EQ(UTMAT_SegmentDansContour(segment, nullptr, 3, 1e-9), UTMAT_SEGMENT_FAILED);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
}
