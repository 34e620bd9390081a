// Plane mathematics: angular sectors and the range of a circular arc, checked against
// brute force on sampled directions and sampled arc points.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/qmmath.h"

namespace {

const double kPi = std::acos(-1.0);
const double kTurn = 2.0 * kPi;
constexpr double kTol = 1e-9;
// Sampled directions closer than this to an edge are skipped: there the tolerance decides.
constexpr double kEdgeMargin = 1e-6;

struct Sector {
    double start;
    double sweep;  // signed, as the caller gives it
};

// Naive membership, written apart from the library: offset from the start reduced by fmod.
bool inSector(double direction, Sector s) {
    if (std::fabs(s.sweep) >= kTurn) return true;
    if (s.sweep < 0) s = {s.start + s.sweep, -s.sweep};
    double offset = std::fmod(direction - s.start, kTurn);
    if (offset < 0) offset += kTurn;
    return offset <= s.sweep;
}

double angularGap(double a, double b) {
    double d = std::fmod(std::fabs(a - b), kTurn);
    return std::min(d, kTurn - d);
}

bool nearEdge(double direction, const std::vector<Sector>& sectors) {
    for (const Sector& s : sectors) {
        if (std::fabs(s.sweep) >= kTurn) continue;
        if (angularGap(direction, s.start) < kEdgeMargin ||
            angularGap(direction, s.start + s.sweep) < kEdgeMargin) {
            return true;
        }
    }
    return false;
}

struct Result {
    int status = -1;
    int count = -1;
    int relation = 0;
    std::vector<Sector> sectors;
};

template <class Operation>
Result run(Operation operation, Sector a, Sector b) {
    double starts[2] = {-1, -1}, sweeps[2] = {-1, -1};
    Result r;
    r.status = operation(starts, sweeps, &r.count, &r.relation, a.start, a.sweep, b.start, b.sweep, kTol);
    for (int k = 0; k < r.count; ++k) r.sectors.push_back({starts[k], sweeps[k]});
    return r;
}

bool inAny(double direction, const std::vector<Sector>& sectors) {
    return std::any_of(sectors.begin(), sectors.end(),
                       [&](const Sector& s) { return inSector(direction, s); });
}

}  // namespace

TEST(QmMathSectors, UnionAndIntersectionAgreeWithBruteForceOnSampledDirections) {
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> angle(-10.0, 10.0), sweep(-kTurn * 1.05, kTurn * 1.05);
    int seenRelation[7] = {};
    for (int trial = 0; trial < 3000; ++trial) {
        const Sector a{angle(engine), sweep(engine) * (trial % 4 == 0 ? 0.3 : 1.0)};
        const Sector b{angle(engine), sweep(engine) * (trial % 5 == 0 ? 0.3 : 1.0)};
        const Result u = run(qmMath_calculateAngularSectorSum, a, b);
        const Result p = run(qmMath_calculateAngularSectorProduct, a, b);
        ASSERT_EQ(u.status, 0);
        ASSERT_EQ(p.status, 0);
        ASSERT_EQ(u.relation, p.relation);
        ASSERT_TRUE(u.relation >= 1 && u.relation <= 6);
        ++seenRelation[u.relation];
        // Counts follow the relation: two pieces only for an overlap at both ends, a union of
        // two only for disjoint sectors.
        EXPECT_EQ(p.count, u.relation == QMMATH_SECTORS_DISJOINT ? 0
                           : u.relation == QMMATH_SECTORS_OVERLAP_AT_BOTH_ENDS ? 2 : 1);
        EXPECT_EQ(u.count, u.relation == QMMATH_SECTORS_DISJOINT ? 2 : 1);
        for (const Result* r : {&u, &p}) {
            for (const Sector& s : r->sectors) {
                EXPECT_TRUE(s.start >= 0.0 && s.start < kTurn);
                EXPECT_TRUE(s.sweep >= 0.0 && s.sweep <= kTurn);
            }
        }
        std::vector<Sector> edges = {a, b};
        edges.insert(edges.end(), u.sectors.begin(), u.sectors.end());
        edges.insert(edges.end(), p.sectors.begin(), p.sectors.end());
        for (int k = 0; k < 720; ++k) {
            const double d = kTurn * (k + 0.37) / 720.0;
            if (nearEdge(d, edges)) continue;
            const bool inA = inSector(d, a), inB = inSector(d, b);
            ASSERT_EQ(inAny(d, u.sectors), inA || inB)
                << "union at " << d << " of (" << a.start << "," << a.sweep << ") (" << b.start << "," << b.sweep << ")";
            ASSERT_EQ(inAny(d, p.sectors), inA && inB)
                << "intersection at " << d << " of (" << a.start << "," << a.sweep << ") (" << b.start << "," << b.sweep << ")";
        }
    }
    for (int relation = 1; relation <= 6; ++relation) EXPECT_GT(seenRelation[relation], 0) << relation;
}

TEST(QmMathSectors, EdgesTouchingWithinTheToleranceAreShared) {
    Result u = run(qmMath_calculateAngularSectorSum, {0.0, 1.0}, {1.0 + 0.5 * kTol, 1.0});
    ASSERT_EQ(u.count, 1);  // adjacent sectors join
    EXPECT_NEAR(u.sectors[0].sweep, 2.0, 1e-8);
    Result p = run(qmMath_calculateAngularSectorProduct, {0.0, 1.0}, {1.0, 1.0});
    ASSERT_EQ(p.count, 1);  // the common edge, a zero-sweep sector
    EXPECT_EQ(p.sectors[0].sweep, 0.0);
    EXPECT_NEAR(p.sectors[0].start, 1.0, 1e-15);
    p = run(qmMath_calculateAngularSectorProduct, {0.0, 1.0}, {1.0 + 10 * kTol, 1.0});
    EXPECT_EQ(p.count, 0);
    // Across the zero direction: (-0.5, 1) is the sector from 2*pi - 0.5 to 0.5.
    u = run(qmMath_calculateAngularSectorSum, {-0.5, 1.0}, {0.5, 1.0});
    ASSERT_EQ(u.count, 1);
    EXPECT_NEAR(u.sectors[0].start, kTurn - 0.5, 1e-12);
    EXPECT_NEAR(u.sectors[0].sweep, 2.0, 1e-12);
}

TEST(QmMathSectors, DirectionPositionAndRefusals) {
    int position = 9;
    ASSERT_EQ(qmMath_compareDirectionToSector(&position, 0.2, kTurn - 0.5, 1.0, kTol), 0);
    EXPECT_EQ(position, -1);  // inside, across zero
    qmMath_compareDirectionToSector(&position, 0.5, kTurn - 0.5, 1.0, kTol);
    EXPECT_EQ(position, 0);   // the end edge
    qmMath_compareDirectionToSector(&position, 0.5 + 1e-6, kTurn - 0.5, 1.0, kTol);
    EXPECT_EQ(position, 1);
    qmMath_compareDirectionToSector(&position, -0.5 - 1e-10, kTurn - 0.5, 1.0, kTol);
    EXPECT_EQ(position, 0);   // the start edge, approached from below zero
    qmMath_compareDirectionToSector(&position, 3.0, 1.0, -kTurn, kTol);
    EXPECT_EQ(position, -1);  // a full clockwise turn is the whole circle
    position = 9;
    EXPECT_EQ(qmMath_compareDirectionToSector(&position, std::nan(""), 0, 1, kTol), ERR_FAILURE);
    EXPECT_EQ(position, 9);
    EXPECT_EQ(qmMath_compareDirectionToSector(nullptr, 0, 0, 1, kTol), ERR_FAILURE);
    double s[2], w[2];
    int count = 5;
    EXPECT_EQ(qmMath_calculateAngularSectorSum(s, w, &count, nullptr, 0, 1, 2, INFINITY, kTol), ERR_FAILURE);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(qmMath_calculateAngularSectorProduct(s, nullptr, &count, nullptr, 0, 1, 2, 1, kTol), ERR_FAILURE);
    EXPECT_EQ(qmMath_calculateAngularSectorProduct(s, w, nullptr, nullptr, 0, 1, 2, 1, kTol), ERR_FAILURE);
    EXPECT_EQ(qmMath_calculateAngularSectorProduct(s, w, &count, nullptr, 0, 1, 2, 1, std::nan("")), ERR_FAILURE);
}

TEST(QmMathArcRange, BoxHoldsEverySampledPointAndIsReachedByThem) {
    std::mt19937 engine(11);
    std::uniform_real_distribution<double> coordinate(-1e5, 1e5), radius(0.1, 500.0),
        angle(-10.0, 10.0), sweep(-7.0, 7.0);
    for (int trial = 0; trial < 500; ++trial) {
        const double cx = coordinate(engine), cy = coordinate(engine), r = radius(engine);
        const double start = angle(engine), turn = sweep(engine);
        double xmin = 0, ymin = 0, xmax = 0, ymax = 0;
        ASSERT_EQ(qmMath_arcGetRange2d(&xmin, &ymin, &xmax, &ymax, cx, cy, r, start, turn), 0);
        const double covered = std::min(std::fabs(turn), kTurn);
        const int samples = 20000;
        double lx = INFINITY, ly = INFINITY, hx = -INFINITY, hy = -INFINITY;
        for (int k = 0; k <= samples; ++k) {
            const double t = start + std::copysign(covered, turn) * k / samples;
            const double x = cx + r * std::cos(t), y = cy + r * std::sin(t);
            lx = std::min(lx, x), hx = std::max(hx, x), ly = std::min(ly, y), hy = std::max(hy, y);
        }
        const double slack = 1e-9 * (1e5 + r);  // rounding of the absolute coordinates
        EXPECT_LE(xmin, lx + slack);
        EXPECT_GE(xmax, hx - slack);
        EXPECT_LE(ymin, ly + slack);
        EXPECT_GE(ymax, hy - slack);
        // Samples come within the sagitta of one sampling step of every edge.
        const double step = covered / samples;
        const double reach = r * step * step / 2.0 + slack;
        EXPECT_NEAR(xmin, lx, reach);
        EXPECT_NEAR(xmax, hx, reach);
        EXPECT_NEAR(ymin, ly, reach);
        EXPECT_NEAR(ymax, hy, reach);
    }
    // A quarter arc from east to north, the whole circle, a point-like arc, refusals.
    double xmin, ymin, xmax, ymax;
    qmMath_arcGetRange2d(&xmin, &ymin, &xmax, &ymax, 1, 2, 3, 0, kPi / 2);
    EXPECT_NEAR(xmin, 1.0, 1e-15);
    EXPECT_NEAR(xmax, 4.0, 1e-15);
    EXPECT_NEAR(ymin, 2.0, 1e-15);
    EXPECT_NEAR(ymax, 5.0, 1e-15);
    qmMath_arcGetRange2d(&xmin, &ymin, &xmax, &ymax, 1, 2, 3, 1.0, -kTurn);
    EXPECT_TRUE(xmin == -2 && xmax == 4 && ymin == -1 && ymax == 5);
    qmMath_arcGetRange2d(&xmin, &ymin, &xmax, &ymax, 1, 2, 0, 1.0, 2.0);
    EXPECT_TRUE(xmin == 1 && xmax == 1 && ymin == 2 && ymax == 2);
    EXPECT_EQ(qmMath_arcGetRange2d(&xmin, &ymin, &xmax, &ymax, 1, 2, -3, 0, 1), ERR_FAILURE);
    EXPECT_EQ(qmMath_arcGetRange2d(&xmin, &ymin, &xmax, &ymax, 1, 2, 3, std::nan(""), 1), ERR_FAILURE);
    EXPECT_EQ(qmMath_arcGetRange2d(&xmin, nullptr, &xmax, &ymax, 1, 2, 3, 0, 1), ERR_FAILURE);
}
