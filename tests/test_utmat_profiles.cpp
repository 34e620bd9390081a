// Profile differences against analytic areas (two straight profiles crossing once give two
// triangles) and against a fine numerical integration of random piecewise-linear profiles; the
// junction point against its defining distances; offset-curve tangents against finite
// differences of offset points; the circle-triangle test against sampled distances.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/blockarray.h"
#include "korvelbase/utmat_clothoid.h"
#include "korvelbase/utmat_profiles.h"

namespace {

struct Totals {
    double lengthAbove = -1, areaAbove = -1, lengthBelow = -1, areaBelow = -1;
    std::vector<Point2d> crossings;
    std::vector<int32_t> sides;
    std::vector<double> zones;
};

Totals difference(const std::vector<Point2d>& a, const std::vector<Point2d>& b, bool zones = false) {
    Totals t;
    Point2d* crossings = nullptr;
    int32_t* sides = nullptr;
    double* zoneAreas = nullptr;
    int count = -1;
    UTMAT_CalculateDiff2Lines(a.data(), int(a.size()), b.data(), int(b.size()), &t.lengthAbove, &t.areaAbove,
                              &t.lengthBelow, &t.areaBelow, &crossings, &sides, &count, zones ? &zoneAreas : nullptr,
                              nullptr, nullptr, nullptr);
    for (int k = 0; k < count; ++k) {
        t.crossings.push_back(crossings[k]);
        t.sides.push_back(sides[k]);
    }
    if (zones && zoneAreas != nullptr) t.zones.assign(zoneAreas, zoneAreas + count + 1);
    if (crossings != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&crossings));
    if (sides != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&sides));
    if (zoneAreas != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&zoneAreas));
    return t;
}

TEST(UtmatProfiles, TwoStraightProfilesCrossingOnceGiveTwoTriangles) {
    // Profile 1 rises from 0 to 10 over 100 m, profile 2 is level at 4: they cross at 40.
    const Totals t = difference({{0, 0}, {100, 10}}, {{0, 4}, {100, 4}}, true);
    EXPECT_NEAR(t.areaBelow, 0.5 * 40 * 4, 1e-9);
    EXPECT_NEAR(t.areaAbove, 0.5 * 60 * 6, 1e-9);
    EXPECT_NEAR(t.lengthBelow, 40.0, 1e-9);
    EXPECT_NEAR(t.lengthAbove, 60.0, 1e-9);
    ASSERT_EQ(t.crossings.size(), 1u);
    EXPECT_NEAR(t.crossings[0].x, 40.0, 1e-9);
    EXPECT_EQ(t.sides[0], UTMAT_SIDE_BEFORE_BELOW | UTMAT_SIDE_AFTER_ABOVE);
    ASSERT_EQ(t.zones.size(), 2u);
    EXPECT_NEAR(t.zones[0], -80.0, 1e-9);
    EXPECT_NEAR(t.zones[1], 180.0, 1e-9);
    // Identical profiles: no area, all length below-or-level, no crossing.
    const Totals same = difference({{0, 1}, {10, 2}, {20, 0}}, {{0, 1}, {10, 2}, {20, 0}});
    EXPECT_EQ(same.areaAbove + same.areaBelow, 0.0);
    EXPECT_NEAR(same.lengthBelow, 20.0, 1e-12);
    EXPECT_TRUE(same.crossings.empty());
}

double levelAt(const std::vector<Point2d>& p, double x) {
    for (std::size_t i = 1; i < p.size(); ++i) {
        if (x <= p[i].x) return p[i - 1].y + (p[i].y - p[i - 1].y) * (x - p[i - 1].x) / (p[i].x - p[i - 1].x);
    }
    return p.back().y;
}

TEST(UtmatProfiles, RandomProfilesAgreeWithNumericalIntegration) {
    std::mt19937 random(6);
    std::uniform_real_distribution<double> level(-3.0, 3.0), gap(1.0, 8.0);
    for (int trial = 0; trial < 10; ++trial) {
        std::vector<Point2d> a{{0, level(random)}}, b{{0, level(random)}};
        while (a.back().x < 200) a.push_back({a.back().x + gap(random), level(random)});
        while (b.back().x < 200) b.push_back({b.back().x + gap(random), level(random)});
        const double end = std::fmin(a.back().x, b.back().x);
        double above = 0.0, below = 0.0;
        const int steps = 100000;
        for (int s = 0; s < steps; ++s) {
            const double x = (s + 0.5) * end / steps;
            const double d = levelAt(a, x) - levelAt(b, x);
            (d > 0 ? above : below) += std::fabs(d) * end / steps;
        }
        const Totals t = difference(a, b, true);
        EXPECT_NEAR(t.areaAbove, above, 1e-3 * (1 + above)) << trial;
        EXPECT_NEAR(t.areaBelow, below, 1e-3 * (1 + below)) << trial;
        EXPECT_NEAR(t.lengthAbove + t.lengthBelow, end, 1e-9);
        double zoneSum = 0.0;
        for (const double z : t.zones) zoneSum += z;
        EXPECT_NEAR(zoneSum, t.areaAbove - t.areaBelow, 1e-6);
        for (const Point2d& c : t.crossings) EXPECT_NEAR(levelAt(a, c.x), levelAt(b, c.x), 1e-9);
    }
}

TEST(UtmatProfiles, AreaCheckDropsATouchWithoutArea) {
    // Profile 1 touches profile 2 at x = 10 from above and leaves again: the touch is a
    // crossing for the plain comparison, removed by the area check.
    const std::vector<Point2d> a{{0, 2}, {10, 0}, {20, 2}};
    const std::vector<Point2d> b{{0, 0}, {20, 0}};
    Point2d* crossings = nullptr;
    int32_t* sides = nullptr;
    int plain = 0, checked = 0;
    UTMAT_CalculerDifference2Polylignes(a.data(), 3, b.data(), 2, nullptr, nullptr, nullptr, nullptr, &crossings,
                                        &sides, &plain);
    if (crossings != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&crossings));
    if (sides != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&sides));
    UTMAT_CalculerDifference2PolylignesAvecControleSurface(a.data(), 3, b.data(), 2, nullptr, nullptr, nullptr,
                                                           nullptr, &crossings, &sides, &checked);
    EXPECT_GE(plain, 1);
    EXPECT_LE(checked, plain);
    for (int k = 0; k < checked; ++k) {
        EXPECT_FALSE((sides[k] & UTMAT_SIDE_BEFORE_LEVEL) && (sides[k] & UTMAT_SIDE_AFTER_LEVEL));
    }
    if (crossings != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&crossings));
    if (sides != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&sides));
}

uint32_t kernelError() {
    uint32_t error = 0, detail = 0;
    UTMAT_GetErreur(&error, &detail);
    return error;
}

Point2d unitAt(double angle) { return {std::cos(angle), std::sin(angle)}; }

TEST(UtmatJunction, TangentLengthsAreEqualAndTheMiddleChordIsTwiceThem) {
    std::mt19937 random(17);
    std::uniform_real_distribution<double> coordinate(-50.0, 50.0), angle(0.0, 2 * M_PI);
    int built = 0;
    for (int trial = 0; trial < 500; ++trial) {
        const Point2d p1{coordinate(random), coordinate(random)}, p2{coordinate(random), coordinate(random)};
        const Point2d u1 = unitAt(angle(random)), u2 = unitAt(angle(random));
        ASSERT_EQ(UTMAT_VerifierTriangleInterpolation(&p1, &u1, &p2, &u2), 1);
        Point2d m{0, 0}, direction{0, 0};
        double t = -1;
        UTMAT_CalculerPointInterpolation(&p1, &u1, &p2, &u2, &m, &direction, &t);
        if (kernelError() != 0) continue;  // no real root
        ++built;
        const Point2d q1{p1.x + t * u1.x, p1.y + t * u1.y}, q2{p2.x - t * u2.x, p2.y - t * u2.y};
        const double chord = std::hypot(q2.x - q1.x, q2.y - q1.y);
        const double scale = 1.0 + std::hypot(p2.x - p1.x, p2.y - p1.y);
        EXPECT_NEAR(chord, 2 * std::fabs(t), 1e-9 * scale) << trial;
        EXPECT_NEAR(m.x, (q1.x + q2.x) / 2, 1e-9 * scale);
        EXPECT_NEAR(m.y, (q1.y + q2.y) / 2, 1e-9 * scale);
        EXPECT_NEAR(std::hypot(direction.x, direction.y), 1.0, 1e-12);
        if (chord > 1e-6) {
            EXPECT_NEAR(direction.x * (q2.x - q1.x) + direction.y * (q2.y - q1.y), chord, 1e-9 * scale);
        }
    }
    EXPECT_GT(built, 300);
}

TEST(UtmatJunction, SymmetricBendGivesTheKnownJunction) {
    // From (0, 0) heading +x to (10, 10) heading +y: by symmetry M lies on the line x + y = 10.
    const Point2d p1{0, 0}, u1{1, 0}, p2{10, 10}, u2{0, 1};
    Point2d m{0, 0}, direction{0, 0};
    double t = 0;
    UTMAT_CalculerPointInterpolation(&p1, &u1, &p2, &u2, &m, &direction, &t);
    ASSERT_EQ(kernelError(), 0u);
    // Q1 = (t, 0), Q2 = (10, 10 - t) and |Q1 Q2| = 2t: 2 (10 - t)^2 = 4 t^2, whose root in
    // [0, 10] (10 from either point to the tangents' meeting point) is t = 10 / (1 + sqrt(2)).
    EXPECT_NEAR(t, 10.0 / (1.0 + std::sqrt(2.0)), 1e-12);
    EXPECT_NEAR(m.x + m.y, 10.0, 1e-12);
    EXPECT_NEAR(direction.x, std::sqrt(0.5), 1e-12);
    EXPECT_NEAR(direction.y, std::sqrt(0.5), 1e-12);
}

TEST(UtmatJunction, CollinearDataFailTheCheck) {
    const Point2d p1{0, 0}, p2{10, 0}, along{1, 0}, up{0, 1};
    EXPECT_EQ(UTMAT_VerifierTriangleInterpolation(&p1, &along, &p2, &along), 0);
    EXPECT_EQ(UTMAT_VerifierTriangleInterpolation(&p1, &along, &p2, &up), 1);
    const Point2d slightly = unitAt(2e-6);
    EXPECT_EQ(UTMAT_VerifierTriangleInterpolation(&p1, &along, &p2, &slightly), 1);
    const Point2d within = unitAt(5e-7);
    EXPECT_EQ(UTMAT_VerifierTriangleInterpolation(&p1, &along, &p2, &within), 0);
    Point2d m, direction;
    UTMAT_CalculerPointInterpolation(&p1, &along, nullptr, &along, &m, &direction, nullptr);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
}

TEST(UtmatOffsetTangent, CircleTangentAndFactorMatchTheConcentricArc) {
    const Point2d centre{3, -2};
    for (const double radius : {50.0, -50.0}) {
        for (const double offset : {0.0, 4.0, -7.5, 80.0}) {
            const double alpha = 0.7;
            // Arc length s on the base arc: angle s / R about the centre (clockwise for R < 0).
            const auto offsetPoint = [&](double s) {
                const double a = alpha + s / radius;
                const double r = std::fabs(radius) + (radius > 0 ? offset : -offset);
                return Point2d{centre.x + r * std::cos(a), centre.y + r * std::sin(a)};
            };
            // The point of the base arc (its offset point lies beyond the centre when the
            // offset passes it).
            const Point2d at{centre.x + std::fabs(radius) * std::cos(alpha), centre.y + std::fabs(radius) * std::sin(alpha)};
            Point2d tangent{0, 0};
            double factor = 0;
            UTMAT_CalculerTangenteOffCer(&centre, radius, offset, &at, &tangent, &factor);
            ASSERT_EQ(kernelError(), 0u);
            const double h = 1e-4;
            const Point2d ahead = offsetPoint(h), behind = offsetPoint(-h);
            const Point2d derivative{(ahead.x - behind.x) / (2 * h), (ahead.y - behind.y) / (2 * h)};
            EXPECT_NEAR(factor, 1.0 + offset / radius, 1e-15);
            EXPECT_NEAR(std::fabs(factor) * tangent.x, derivative.x, 1e-7) << radius << " " << offset;
            EXPECT_NEAR(std::fabs(factor) * tangent.y, derivative.y, 1e-7) << radius << " " << offset;
        }
    }
    UTMAT_CalculerTangenteOffCer(&centre, 10.0, 1.0, &centre, nullptr, nullptr);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
}

TEST(UtmatOffsetTangent, ClothoidOffsetCurveMovesAtOnePlusOffsetTimesCurvature) {
    for (const double a : {60.0, -60.0}) {
        for (const double offset : {0.0, 3.5, -3.5}) {
            for (const double s : {5.0, 30.0, 55.0}) {
                Point2d tangent{0, 0};
                double factor = 0;
                UTMAT_CalculerTangenteOffClt(a, s, offset, &tangent, &factor);
                ASSERT_EQ(kernelError(), 0u);
                const double h = 1e-3;
                Point2d ahead, behind;
                UTMAT_CalculerPosPointArcClotAbscisse(a, s + h, offset, &ahead, nullptr);
                UTMAT_CalculerPosPointArcClotAbscisse(a, s - h, offset, &behind, nullptr);
                const Point2d derivative{(ahead.x - behind.x) / (2 * h), (ahead.y - behind.y) / (2 * h)};
                EXPECT_NEAR(factor * tangent.x, derivative.x, 1e-6) << a << " " << offset << " " << s;
                EXPECT_NEAR(factor * tangent.y, derivative.y, 1e-6) << a << " " << offset << " " << s;
                EXPECT_NEAR(std::hypot(tangent.x, tangent.y), 1.0, 1e-12);
            }
        }
    }
    // Past the centre of curvature: A = 60 at s = 180 turns left with curvature 1/20; an offset
    // of 30 to the left gives the factor 1 - 30/20.
    Point2d tangent;
    double factor = 0;
    UTMAT_CalculerTangenteOffClt(60.0, 180.0, -30.0, &tangent, &factor);
    EXPECT_NEAR(factor, -0.5, 1e-12);
    UTMAT_CalculerTangenteOffClt(0.0, 1.0, 0.0, &tangent, &factor);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
}

double segmentDistance(const Point2d& p, const Point2d& a, const Point2d& b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double s = std::fmin(std::fmax(((p.x - a.x) * dx + (p.y - a.y) * dy) / (dx * dx + dy * dy), 0.0), 1.0);
    return std::hypot(p.x - a.x - s * dx, p.y - a.y - s * dy);
}

TEST(UtmatCircleTriangle, AgreesWithSampledDistances) {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> coordinate(-10.0, 10.0), size(0.1, 8.0), weight(0.0, 1.0);
    int meets = 0, misses = 0;
    for (int trial = 0; trial < 400; ++trial) {
        const Point2d a{coordinate(random), coordinate(random)}, b{coordinate(random), coordinate(random)},
            c{coordinate(random), coordinate(random)}, centre{coordinate(random), coordinate(random)};
        const double radius = size(random);
        // Brute force: the disk meets the triangle when a sampled point of the triangle (its
        // sides finely, its inside by barycentric weights) lies in the disk.
        double nearest = INFINITY;
        const Point2d corners[3] = {a, b, c};
        for (int side = 0; side < 3; ++side) {
            const Point2d& p = corners[side];
            const Point2d& q = corners[(side + 1) % 3];
            for (int k = 0; k <= 4000; ++k) {
                const double t = k / 4000.0;
                nearest = std::fmin(nearest, std::hypot(p.x + t * (q.x - p.x) - centre.x, p.y + t * (q.y - p.y) - centre.y));
            }
        }
        const double area = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
        const double w1 = ((b.x - centre.x) * (c.y - centre.y) - (b.y - centre.y) * (c.x - centre.x)) / area;
        const double w2 = ((c.x - centre.x) * (a.y - centre.y) - (c.y - centre.y) * (a.x - centre.x)) / area;
        const bool centreInside = w1 >= 0 && w2 >= 0 && 1 - w1 - w2 >= 0;
        if (!centreInside && std::fabs(nearest - radius) < 0.02) continue;  // too close to call by sampling
        const int expected = centreInside || nearest <= radius ? 1 : 0;
        (expected ? meets : misses)++;
        EXPECT_EQ(UTMAT_TesterIntersectionCercleTriangle(&centre, radius, &a, &b, &c), expected) << trial;
    }
    EXPECT_GT(meets, 50);
    EXPECT_GT(misses, 50);
    // A small circle well inside, and a triangle well inside a large circle.
    const Point2d a{0, 0}, b{10, 0}, c{0, 10}, inside{2, 2};
    EXPECT_EQ(UTMAT_TesterIntersectionCercleTriangle(&inside, 0.5, &a, &b, &c), 1);
    EXPECT_EQ(UTMAT_TesterIntersectionCercleTriangle(&inside, 100.0, &a, &b, &c), 1);
    EXPECT_EQ(segmentDistance(inside, a, b), 2.0);
    UTMAT_TesterIntersectionCercleTriangle(&inside, -1.0, &a, &b, &c);
    EXPECT_EQ(kernelError(), uint32_t(ERR_FAILURE));
}

}  // namespace
