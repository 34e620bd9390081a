// Throughput of the tangent-circle constructions: one member of each kind of core (two lines
// with a radius, two circles with a radius, two circles through a point, circle and line
// through a point) and the circle osculating a clothoid through a point (a bisection at the
// default precision).  Inputs cycle through a precomputed table of generic configurations.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/utmat_tangency.h"

namespace {

constexpr std::size_t kTableSize = 1024;  // power of two: index with a mask

struct Configuration {
    UtDroite line1, line2;
    Point2d c1, c2, p;
    double r1, r2, radius;
};

std::vector<Configuration> configurations() {
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> coordinate(-10.0, 10.0), length(1.0, 6.0), angle(0.0, 6.283185307179586);
    std::vector<Configuration> out(kTableSize);
    for (Configuration& c : out) {
        const double t1 = angle(engine), t2 = angle(engine);
        c.line1 = {std::cos(t1), std::sin(t1), coordinate(engine)};
        c.line2 = {std::cos(t2), std::sin(t2), coordinate(engine)};
        c.c1 = {coordinate(engine), coordinate(engine)};
        c.c2 = {coordinate(engine), coordinate(engine)};
        c.p = {coordinate(engine), coordinate(engine)};
        c.r1 = length(engine);
        c.r2 = length(engine);
        c.radius = length(engine);
    }
    return out;
}

// Runs `construct` over the table; items are constructions.
template <class Construct>
void run(benchmark::State& state, Construct construct) {
    const std::vector<Configuration> table = configurations();
    Point2d centres[8], points[16];
    double radii[8];
    int count = 0;
    std::size_t i = 0;
    for (auto _ : state) {
        construct(table[i & (kTableSize - 1)], centres, radii, points, &count);
        benchmark::DoNotOptimize(centres);
        benchmark::DoNotOptimize(count);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_TwoLinesWithRadius(benchmark::State& state) {
    run(state, [](const Configuration& c, Point2d* centres, double*, Point2d* points, int* count) {
        UTMAT_CalculerCerTg2DteRayon(&c.line1, &c.line2, c.radius, centres, points, count);
    });
}
BENCHMARK(BM_TwoLinesWithRadius);

void BM_TwoCirclesWithRadius(benchmark::State& state) {
    run(state, [](const Configuration& c, Point2d* centres, double*, Point2d* points, int* count) {
        UTMAT_CalculerCerTg2CerRayon(&c.c1, c.r1, &c.c2, c.r2, c.radius, centres, points, count);
    });
}
BENCHMARK(BM_TwoCirclesWithRadius);

void BM_TwoCirclesThroughPoint(benchmark::State& state) {
    run(state, [](const Configuration& c, Point2d* centres, double* radii, Point2d* points, int* count) {
        UTMAT_CalculerCerTg2CerPs1Pt(&c.c1, c.r1, &c.c2, c.r2, &c.p, centres, radii, points, count);
    });
}
BENCHMARK(BM_TwoCirclesThroughPoint);

void BM_CircleAndLineThroughPoint(benchmark::State& state) {
    run(state, [](const Configuration& c, Point2d* centres, double* radii, Point2d* points, int* count) {
        UTMAT_CalculerCerTgCerDtePs1Pt(&c.c1, c.r1, &c.line1, &c.p, centres, radii, points, count);
    });
}
BENCHMARK(BM_CircleAndLineThroughPoint);

// P on the osculating circle at a random abscissa between the two ends.
void BM_ClothoidCircleThroughPoint(benchmark::State& state) {
    std::mt19937 engine(9);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double A = 150.0, s1 = 200.0, s2 = 20.0;
    std::vector<Point2d> points(kTableSize);
    for (Point2d& p : points) {
        const double s = s2 + (s1 - s2) * (0.05 + 0.9 * unit(engine));
        Point2d centre;
        UTMAT_CalculerPosPointArcClotAbscisse(A, s, -A * A / s, &centre, nullptr);
        const double phi = 6.283185307179586 * unit(engine);
        p = {centre.x + A * A / s * std::cos(phi), centre.y + A * A / s * std::sin(phi)};
    }
    Point2d centre, tangency;
    double radius = 0.0;
    int count = 0;
    std::size_t i = 0;
    for (auto _ : state) {
        UTMAT_CalculerCerTgClotPs1Pt(A, s1, s2, &points[i & (kTableSize - 1)], &centre, &radius, &tangency, &count);
        benchmark::DoNotOptimize(centre);
        benchmark::DoNotOptimize(count);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ClothoidCircleThroughPoint);

}  // namespace
