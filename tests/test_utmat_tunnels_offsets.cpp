// Tunnel simplification and purge against the point-by-point procedures written here as
// references; offsets checked by brute-force distances to the centreline and a pairwise
// crossing test; masks checked by even-odd containment and brute-force inside lengths.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "korvelbase/blockarray.h"
#include "korvelbase/utmat_profiles.h"

namespace {

uint32_t kernelError() {
    uint32_t error = 0, detail = 0;
    UTMAT_GetErreur(&error, &detail);
    return error;
}

// ---- tunnels --------------------------------------------------------------------------------------

// The walk back exactly as described: every dropped point since the anchor tested one by one.
void referenceTunnel(const std::vector<Point3d>& p, double w, double l, int mode, std::vector<int32_t>& flags) {
    const int n = int(p.size());
    flags[0] = 0;
    int anchor = 0;
    for (int i = 1; i + 1 < n; ++i) {
        if (!utmat_PointEstDansTunnel(&p[anchor], &p[i + 1], &p[i], w, l, mode)) {
            anchor = i;
            continue;
        }
        int result = 1;
        for (int j = i - 1; j >= 0 && flags[j] == 1; --j) {
            result = utmat_PointEstDansTunnel(&p[anchor], &p[i + 1], &p[j], w, l, mode);
            if (result == 0) break;
        }
        flags[i] = result;
        if (result == 0) anchor = i;
    }
}

std::vector<int32_t> tunnel(const std::vector<Point3d>& p, double w, double l, int mode,
                            std::vector<int32_t> flags = {}) {
    if (flags.empty()) flags.assign(p.size(), 0);
    UTMAT_AppliquerTunnelAPolyligne(p.data(), int(p.size()), w, l, mode, flags.data());
    EXPECT_EQ(kernelError(), 0u);
    return flags;
}

TEST(UtmatTunnel, PointRuleIsStrictOnWidthAndLength) {
    const Point3d a{0, 0, 0}, b{10, 0, 0};
    const Point3d near{3, 0.49, 0}, edge{3, 0.5, 0}, far{5, 0, 0};
    EXPECT_EQ(utmat_PointEstDansTunnel(&a, &b, &near, 1.0, 5.0, 0), 1);
    EXPECT_EQ(utmat_PointEstDansTunnel(&a, &b, &edge, 1.0, 5.0, 0), 0);  // |d| = W/2
    EXPECT_EQ(utmat_PointEstDansTunnel(&a, &b, &far, 1.0, 5.0, 0), 0);   // at L
    // Mode 2 divides by the direction's x (1 here); mode 1 by its y, 0 here: deviation 0.
    const Point3d off{3, 0.6, 0};
    EXPECT_EQ(utmat_PointEstDansTunnel(&a, &b, &off, 1.0, 5.0, 2), 0);
    EXPECT_EQ(utmat_PointEstDansTunnel(&a, &b, &off, 1.0, 5.0, 1), 1);
    // A slanting axis in mode 2: d / cos(60 deg) = 2 d.
    const Point3d slant{5, 5 * std::sqrt(3.0), 0}, p{1, std::sqrt(3.0) + 0.6, 0};  // d = 0.3
    EXPECT_EQ(utmat_PointEstDansTunnel(&a, &slant, &p, 1.0, 10.0, 0), 1);
    EXPECT_EQ(utmat_PointEstDansTunnel(&a, &slant, &p, 1.0, 10.0, 2), 0);  // 0.6 > 0.5
}

TEST(UtmatTunnel, StraightLineDropsEveryInnerPointWhenTheTunnelIsLong) {
    std::vector<Point3d> line;
    for (int i = 0; i < 50; ++i) line.push_back({2.0 * i, 1.0 * i, 0.1 * i});
    const std::vector<int32_t> flags = tunnel(line, 0.01, 1e9, 0);
    EXPECT_EQ(flags.front(), 0);
    for (std::size_t i = 1; i + 1 < line.size(); ++i) EXPECT_EQ(flags[i], 1) << i;
    EXPECT_EQ(flags.back(), 0);  // never written
}

TEST(UtmatTunnel, PointAtTheTunnelLengthBecomesTheAnchor) {
    std::vector<Point3d> line;
    for (int i = 0; i <= 10; ++i) line.push_back({double(i), 0, 0});
    const std::vector<int32_t> flags = tunnel(line, 0.5, 3.0, 0);
    EXPECT_EQ(flags, (std::vector<int32_t>{0, 1, 1, 0, 1, 1, 0, 1, 1, 0, 0}));
}

TEST(UtmatTunnel, ZigZagBeyondTheWidthKeepsEveryPoint) {
    std::vector<Point3d> zigzag;
    for (int i = 0; i < 20; ++i) zigzag.push_back({double(i), i % 2 == 0 ? 0.0 : 1.0, 0});
    for (const int32_t f : tunnel(zigzag, 0.8, 100.0, 0)) EXPECT_EQ(f, 0);
    // Within the width (the deviation of an odd point from the axis 2k -> 2k + 2 is 1 or less).
    std::vector<Point3d> shallow;
    for (int i = 0; i < 20; ++i) shallow.push_back({double(i), i % 2 == 0 ? 0.0 : 0.1, 0});
    const std::vector<int32_t> flags = tunnel(shallow, 0.8, 100.0, 0);
    for (std::size_t i = 1; i + 1 < flags.size(); ++i) EXPECT_EQ(flags[i], 1) << i;
}

TEST(UtmatTunnel, FastWalkBackAgreesWithTheReferenceOnRandomPolylines) {
    std::mt19937 random(11);
    std::normal_distribution<double> noise(0.0, 1.0);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int trial = 0; trial < 120; ++trial) {
        const int n = 2 + int(unit(random) * 400);
        const double wiggle = std::pow(10.0, -4 + 4 * unit(random));
        const double turn = unit(random) < 0.5 ? 0.0 : 0.02 * unit(random);
        std::vector<Point3d> p{{1000.0, 2000.0, 50.0}};
        double heading = unit(random) * 6.28;
        for (int i = 1; i < n; ++i) {
            heading += turn + (unit(random) < 0.05 ? noise(random) : 0.0);
            const double step = unit(random) < 0.1 ? 0.0 : 0.5 + unit(random);
            p.push_back({p.back().x + step * std::cos(heading) + wiggle * noise(random),
                         p.back().y + step * std::sin(heading) + wiggle * noise(random),
                         p.back().z + 0.01 * step + wiggle * noise(random)});
        }
        if (trial % 7 == 6) p[p.size() / 2].x = NAN;  // never inside a tunnel
        const double w = std::pow(10.0, -3 + 3 * unit(random));
        const double l = unit(random) < 0.3 ? 1e12 : 5.0 + 200 * unit(random);
        const int mode = trial % 4;  // 3: distance as it is
        std::vector<int32_t> start(p.size(), 0);
        if (trial % 5 == 4) {  // flags not cleared: the unwritten ones are walked as they read
            for (int32_t& f : start) f = unit(random) < 0.5 ? 1 : 0;
        }
        std::vector<int32_t> expected = start;
        referenceTunnel(p, w, l, mode, expected);
        EXPECT_EQ(tunnel(p, w, l, mode, start), expected) << "trial " << trial;
    }
}

TEST(UtmatTunnel, LongNoisyLineInOneTunnelAgreesWithTheReference) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> jitter(-0.004, 0.004);
    std::vector<Point3d> p;
    for (int i = 0; i < 3000; ++i) p.push_back({500000.0 + 0.8 * i + jitter(random), 0.6 * i + jitter(random), jitter(random)});
    std::vector<int32_t> expected(p.size(), 0);
    referenceTunnel(p, 0.02, 1e9, 0, expected);
    EXPECT_EQ(tunnel(p, 0.02, 1e9, 0), expected);
}

TEST(UtmatTunnel, LongRunsOnAGentleCurveAgreeWithTheReference) {
    // Runs of a few hundred points end where the arc's sagitta reaches the half-width: many
    // groups of dropped points straddle the tunnel's edge.
    std::mt19937 random(9);
    std::uniform_real_distribution<double> jitter(-0.001, 0.001);
    std::vector<Point3d> p;
    for (int i = 0; i < 6000; ++i) {
        const double a = i / 5000.0;
        p.push_back({5000 * std::sin(a) + jitter(random), 5000 * (1 - std::cos(a)) + jitter(random), 0.02 * i});
    }
    for (const int mode : {0, 2}) {
        std::vector<int32_t> expected(p.size(), 0);
        referenceTunnel(p, 0.5, 1e9, mode, expected);
        EXPECT_EQ(tunnel(p, 0.5, 1e9, mode), expected) << mode;
        int dropped = 0;
        for (const int32_t f : expected) dropped += f;
        EXPECT_GT(dropped, 5000);
    }
}

TEST(UtmatTunnel, RefusesNullArguments) {
    const Point3d a{0, 0, 0};
    int32_t flag = 7;
    UTMAT_AppliquerTunnelAPolyligne(nullptr, 3, 1, 1, 0, &flag);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
    EXPECT_EQ(utmat_PointEstDansTunnel(&a, nullptr, &a, 1, 1, 0), 0);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
}

// ---- purge ----------------------------------------------------------------------------------------

Point2d* blockArray(const std::vector<Point2d>& points) {
    void* block = nullptr;
    MEM_CreerTableau(&block, int(sizeof(Point2d)), int(points.size()));
    if (!points.empty()) std::memcpy(block, points.data(), points.size() * sizeof(Point2d));
    return static_cast<Point2d*>(block);
}

// Deleting each repeat on its own and testing again at the same place.
void referencePurge(Point2d** points, int* count, double tol) {
    int i = 0;
    while (i + 1 < *count) {
        if (UTMAT_PointsIdentiques(&(*points)[i], &(*points)[i + 1], tol)) {
            MEM_SupprimerElementDansTableau(reinterpret_cast<void**>(points), int(sizeof(Point2d)), count, i + 1);
        } else {
            ++i;
        }
    }
}

TEST(UtmatPurge, OnePassAgreesWithDeletingRepeatsOneByOne) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int trial = 0; trial < 60; ++trial) {
        std::vector<Point2d> points;
        const int n = int(unit(random) * 300);
        for (int i = 0; i < n; ++i) {
            if (!points.empty() && unit(random) < 0.6) {
                points.push_back({points.back().x + 0.01 * (unit(random) - 0.5), points.back().y});  // near repeat
            } else {
                points.push_back({10 * unit(random), 10 * unit(random)});
            }
        }
        const double tol = trial % 3 == 0 ? 0.0 : 0.004;
        Point2d* fast = blockArray(points);
        Point2d* slow = blockArray(points);
        int fastCount = n, slowCount = n;
        UTMAT_PurgerPolyligne(&fast, &fastCount, tol);
        EXPECT_EQ(kernelError(), 0u);
        referencePurge(&slow, &slowCount, tol);
        ASSERT_EQ(fastCount, slowCount) << trial;
        for (int i = 0; i < fastCount; ++i) {
            EXPECT_EQ(fast[i].x, slow[i].x);
            EXPECT_EQ(fast[i].y, slow[i].y);
        }
        if (fast != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&fast));
        if (slow != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&slow));
    }
}

TEST(UtmatPurge, AllRepeatsLeaveOnePointAndNullIsRefused) {
    Point2d* points = blockArray(std::vector<Point2d>(25, Point2d{1, 2}));
    int count = 25;
    UTMAT_PurgerPolyligne(&points, &count, 0.0);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(points[0].x, 1.0);
    MEM_LibererTableau(reinterpret_cast<void**>(&points));
    UTMAT_PurgerPolyligne(nullptr, &count, 0.0);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
}

// ---- offsets --------------------------------------------------------------------------------------

double distanceToSegment(const Point2d& p, const Point2d& a, const Point2d& b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double span = dx * dx + dy * dy;
    const double s = span > 0 ? std::fmin(std::fmax(((p.x - a.x) * dx + (p.y - a.y) * dy) / span, 0.0), 1.0) : 0.0;
    return std::hypot(p.x - a.x - s * dx, p.y - a.y - s * dy);
}

double distanceToPolyline(const Point2d& p, const std::vector<Point2d>& line) {
    double best = INFINITY;
    for (std::size_t k = 0; k + 1 < line.size(); ++k) best = std::fmin(best, distanceToSegment(p, line[k], line[k + 1]));
    return best;
}

double cross(const Point2d& o, const Point2d& a, const Point2d& b) {
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

// Segments that cross or touch, other than neighbours sharing their common point.
bool selfIntersects(const std::vector<Point2d>& p) {
    for (std::size_t i = 0; i + 1 < p.size(); ++i) {
        for (std::size_t j = i + 2; j + 1 < p.size(); ++j) {
            const double d1 = cross(p[i], p[i + 1], p[j]), d2 = cross(p[i], p[i + 1], p[j + 1]);
            const double d3 = cross(p[j], p[j + 1], p[i]), d4 = cross(p[j], p[j + 1], p[i + 1]);
            if (((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0))) return true;
        }
    }
    return false;
}

std::vector<Point2d> offset(const std::vector<Point2d>& line, double d, int join, double tol = 1e-3) {
    Point2d* out = nullptr;
    int count = -1;
    UTMAT_TranslationComplexePolyligne(line.data(), int(line.size()), d, join, tol, &out, &count);
    EXPECT_EQ(kernelError(), 0u);
    std::vector<Point2d> result(out, out + (count > 0 ? count : 0));
    if (out != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&out));
    return result;
}

void expectPoints(const std::vector<Point2d>& actual, const std::vector<Point2d>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i].x, expected[i].x, 1e-12) << i;
        EXPECT_NEAR(actual[i].y, expected[i].y, 1e-12) << i;
    }
}

TEST(UtmatOffset, MitredBendOnTheOuterAndInnerSides) {
    const std::vector<Point2d> bend{{0, 0}, {10, 0}, {10, 10}};  // turns left
    expectPoints(offset(bend, 1.0, UTMAT_JOIN_MITRE), {{0, -1}, {11, -1}, {11, 10}});  // right: outer
    expectPoints(offset(bend, -1.0, UTMAT_JOIN_MITRE), {{0, 1}, {9, 1}, {9, 10}});     // left: inner
    // Rounded: the corner points lie on the circle of radius 1 about (10, 0).
    const std::vector<Point2d> round = offset(bend, 1.0, UTMAT_JOIN_ROUND, 1e-4);
    ASSERT_GT(round.size(), 4u);
    for (std::size_t i = 1; i + 1 < round.size(); ++i) EXPECT_NEAR(std::hypot(round[i].x - 10, round[i].y), 1.0, 1e-12);
    for (std::size_t i = 0; i + 1 < round.size(); ++i) {
        const Point2d mid{(round[i].x + round[i + 1].x) / 2, (round[i].y + round[i + 1].y) / 2};
        EXPECT_GE(distanceToPolyline(mid, bend), 1.0 - 1e-4 - 1e-12);  // sagitta within the tolerance
    }
}

TEST(UtmatOffset, LoopAtATightInnerBendIsDropped) {
    // Two left turns of 45 degrees around a segment too short for both inner cuts.
    const std::vector<Point2d> line{{0, 0}, {10, 0}, {10.5, 0.5}, {10.5, 10}};
    expectPoints(offset(line, -1.0, UTMAT_JOIN_MITRE), {{0, 1}, {9.5, 1}, {9.5, 10}});
    expectPoints(offset(line, -1.0, UTMAT_JOIN_ROUND), {{0, 1}, {9.5, 1}, {9.5, 10}});
}

TEST(UtmatOffset, RandomCentrelinesKeepTheirDistanceWithoutCrossing) {
    std::mt19937 random(21);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    int tested = 0;
    for (int trial = 0; trial < 100; ++trial) {
        std::vector<Point2d> line{{0, 0}};
        double heading = 0.0;
        for (int i = 0; i < 20; ++i) {
            heading += (unit(random) - 0.5) * 2.6;  // up to about 75 degrees a vertex
            const double step = unit(random) < 0.4 ? 0.1 + unit(random) : 2 + 5 * unit(random);
            line.push_back({line.back().x + step * std::cos(heading), line.back().y + step * std::sin(heading)});
        }
        if (selfIntersects(line)) continue;
        ++tested;
        const double d = (trial % 2 == 0 ? 1.0 : -1.0) * (0.5 + unit(random));
        for (const int join : {UTMAT_JOIN_MITRE, UTMAT_JOIN_ROUND}) {
            const double tol = 1e-3;
            const std::vector<Point2d> out = offset(line, d, join, tol);
            ASSERT_GE(out.size(), 2u) << trial;
            EXPECT_FALSE(selfIntersects(out)) << "trial " << trial << " join " << join;
            for (const Point2d& p : out) {
                const double distance = distanceToPolyline(p, line);
                EXPECT_GE(distance, std::fabs(d) - tol - 1e-9) << "trial " << trial << " join " << join;
                if (join == UTMAT_JOIN_ROUND) {
                    EXPECT_LE(distance, std::fabs(d) + 1e-9) << trial;
                }
            }
        }
    }
    EXPECT_GE(tested, 50);
}

TEST(UtmatOffset, WidthsVaryLinearlyAlongEachSegment) {
    const std::vector<Point2d> line{{0, 0}, {10, 0}, {20, 0}, {20, 10}};
    const std::vector<double> widths{1.0, 2.0, 2.0, -1.0};
    Point2d* out = nullptr;
    int count = 0;
    UTMAT_TranslationPolyligneParEpaisseurs(line.data(), 4, widths.data(), &out, &count);
    ASSERT_EQ(kernelError(), 0u);
    std::vector<Point2d> result(out, out + count);
    MEM_LibererTableau(reinterpret_cast<void**>(&out));
    // Right of +x is -y; the corner at (20, 0) turns left with width 2: the mitre of the lines
    // y = -2 and the segment from (22, 0) to (19, 10).
    ASSERT_EQ(result.size(), 4u);
    expectPoints({result[0], result[1]}, {{0, -1}, {10, -2}});
    EXPECT_NEAR(result[2].y, -2.0, 1e-12);
    EXPECT_NEAR(result[3].x, 19.0, 1e-12);
    EXPECT_NEAR(result[3].y, 10.0, 1e-12);
    // The corner lies on the line through (22, 0) and (19, 10).
    EXPECT_NEAR((result[2].x - 22) * 10 - (result[2].y - 0) * (19 - 22), 0.0, 1e-9);
    // A constant width is the plain offset.
    const std::vector<double> constant(4, -1.5);
    UTMAT_TranslationPolyligneParEpaisseurs(line.data(), 4, constant.data(), &out, &count);
    std::vector<Point2d> plain(out, out + count);
    MEM_LibererTableau(reinterpret_cast<void**>(&out));
    expectPoints(plain, offset(line, -1.5, UTMAT_JOIN_MITRE));
}

TEST(UtmatOffset, RefusesBadRequests) {
    const std::vector<Point2d> line{{0, 0}, {1, 0}};
    Point2d* out = nullptr;
    int count = 5;
    UTMAT_TranslationComplexePolyligne(line.data(), 2, 1.0, 7, 0.1, &out, &count);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
    EXPECT_EQ(count, 0);
    UTMAT_TranslationComplexePolyligne(line.data(), 2, 1.0, UTMAT_JOIN_ROUND, 0.0, &out, &count);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
    const std::vector<Point2d> point{{1, 1}, {1, 1}};
    UTMAT_TranslationComplexePolyligne(point.data(), 2, 1.0, UTMAT_JOIN_MITRE, 0.1, &out, &count);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
    EXPECT_EQ(out, nullptr);
}

// ---- masks ----------------------------------------------------------------------------------------

// Even-odd rule on the closed contour (no tolerance).
bool evenOddInside(const Point2d& p, const std::vector<Point2d>& contour) {
    bool inside = false;
    for (std::size_t i = 0, j = contour.size() - 1; i < contour.size(); j = i++) {
        const Point2d& a = contour[i];
        const Point2d& b = contour[j];
        if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) inside = !inside;
    }
    return inside;
}

struct Pieces {
    std::vector<std::vector<Point2d>> pieces;
};

Pieces mask(const std::vector<Point2d>& line, const std::vector<Point2d>& contour, int keepInside) {
    Point2d* points = nullptr;
    int32_t* sizes = nullptr;
    int count = -1;
    UTMAT_AppliquerMasque(line.data(), int(line.size()), contour.data(), int(contour.size()), keepInside, 1e-9,
                          &points, &sizes, &count);
    EXPECT_EQ(kernelError(), 0u);
    Pieces result;
    int at = 0;
    for (int k = 0; k < count; ++k) {
        result.pieces.emplace_back(points + at, points + at + sizes[k]);
        at += sizes[k];
    }
    if (points != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&points));
    if (sizes != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&sizes));
    return result;
}

double length(const std::vector<Point2d>& p) {
    double total = 0;
    for (std::size_t i = 0; i + 1 < p.size(); ++i) total += std::hypot(p[i + 1].x - p[i].x, p[i + 1].y - p[i].y);
    return total;
}

TEST(UtmatMask, PiecesLieOnTheirSideAndAddUpToTheInsideLength) {
    std::mt19937 random(8);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int trial = 0; trial < 12; ++trial) {
        // A star-shaped, non-convex contour about (5, 5), left open on odd trials.
        std::vector<Point2d> contour;
        const int corners = 5 + trial % 6;
        for (int k = 0; k < corners; ++k) {
            const double angle = 2 * M_PI * k / corners;
            const double radius = 2 + 3 * unit(random);
            contour.push_back({5 + radius * std::cos(angle), 5 + radius * std::sin(angle)});
        }
        std::vector<Point2d> closed = contour;
        if (trial % 2 == 0) contour.push_back(contour.front());
        std::vector<Point2d> line;
        for (int i = 0; i < 15; ++i) line.push_back({10 * unit(random), 10 * unit(random)});
        // Brute force: the inside length by fine sampling of every segment.
        double inside = 0.0;
        const int samples = 20000;
        for (std::size_t k = 0; k + 1 < line.size(); ++k) {
            const double segment = std::hypot(line[k + 1].x - line[k].x, line[k + 1].y - line[k].y);
            int in = 0;
            for (int s = 0; s < samples; ++s) {
                const double t = (s + 0.5) / samples;
                in += evenOddInside({line[k].x + t * (line[k + 1].x - line[k].x), line[k].y + t * (line[k + 1].y - line[k].y)}, closed);
            }
            inside += segment * in / samples;
        }
        for (const int keepInside : {1, 0}) {
            const Pieces kept = mask(line, contour, keepInside);
            double total = 0.0;
            for (const std::vector<Point2d>& piece : kept.pieces) {
                ASSERT_GE(piece.size(), 2u);
                total += length(piece);
                for (std::size_t i = 0; i + 1 < piece.size(); ++i) {
                    for (const double t : {0.1, 0.5, 0.9}) {
                        const Point2d p{piece[i].x + t * (piece[i + 1].x - piece[i].x), piece[i].y + t * (piece[i + 1].y - piece[i].y)};
                        EXPECT_EQ(evenOddInside(p, closed), keepInside == 1) << trial;
                    }
                }
            }
            const double expected = keepInside ? inside : length(line) - inside;
            EXPECT_NEAR(total, expected, 2e-4 * length(line)) << "trial " << trial << " inside " << keepInside;
        }
    }
}

TEST(UtmatMask, LineThroughASquareGivesOnePieceInsideAndTwoOutside) {
    const std::vector<Point2d> square{{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    const std::vector<Point2d> line{{-5, 5}, {5, 5}, {15, 5}};
    const Pieces in = mask(line, square, 1);
    ASSERT_EQ(in.pieces.size(), 1u);
    expectPoints(in.pieces[0], {{0, 5}, {5, 5}, {10, 5}});
    const Pieces out = mask(line, square, 0);
    ASSERT_EQ(out.pieces.size(), 2u);
    expectPoints(out.pieces[0], {{-5, 5}, {0, 5}});
    expectPoints(out.pieces[1], {{10, 5}, {15, 5}});
    // Along an edge: the boundary belongs to the region.
    const std::vector<Point2d> edge{{-5, 0}, {15, 0}};
    const Pieces onEdge = mask(edge, square, 1);
    ASSERT_EQ(onEdge.pieces.size(), 1u);
    expectPoints(onEdge.pieces[0], {{0, 0}, {10, 0}});
    EXPECT_EQ(mask(edge, square, 0).pieces.size(), 2u);
}

}  // namespace
