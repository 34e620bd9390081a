// Profile differences against analytic areas (two straight profiles crossing once give two
// triangles) and against a fine numerical integration of random piecewise-linear profiles.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/blockarray.h"
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

}  // namespace
