// Throughput of the most used plane-mathematics members.
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <random>

#include "korvelbase/qmmath.h"

namespace {

constexpr std::size_t kInputs = 1024;  // a power of two, cycled with a mask

struct Inputs {
    std::array<double, kInputs> value{};
    Inputs(double lo, double hi, unsigned seed) {
        std::mt19937 rng(seed);
        std::uniform_real_distribution<double> dist(lo, hi);
        for (double& v : value) v = dist(rng);
    }
    double operator[](std::size_t i) const { return value[i & (kInputs - 1)]; }
};

void BM_IntersectLineWithLine2d(benchmark::State& state) {
    const Inputs c(-1000.0, 1000.0, 1);
    std::size_t i = 0;
    for (auto _ : state) {
        double x = 0.0, y = 0.0;
        const int status = qmMath_intersectLineWithLine2d(&x, &y, c[i], c[i + 1], c[i + 2],
                                                          c[i + 3], c[i + 4], c[i + 5], c[i + 6],
                                                          c[i + 7]);
        benchmark::DoNotOptimize(status);
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(y);
        i += 8;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_IntersectLineWithLine2d);

void BM_SolveCubicWithThreeRoots(benchmark::State& state) {
    // (x - r0)(x - r1)(x - r2) with three separated real roots.
    const Inputs r(-10.0, 10.0, 2);
    std::array<std::array<double, 4>, kInputs> polys{};
    for (std::size_t k = 0; k < kInputs; ++k) {
        const double a = r[3 * k], b = r[3 * k] + 1.0 + std::fabs(r[3 * k + 1]),
                     c = b + 1.0 + std::fabs(r[3 * k + 2]);
        polys[k] = {-a * b * c, a * b + b * c + a * c, -(a + b + c), 1.0};
    }
    std::size_t i = 0;
    for (auto _ : state) {
        double roots[3];
        const double* poly = polys[i & (kInputs - 1)].data();
        const int count = qmMath_solvePolynomialEquation(poly, roots, 1e-12);
        benchmark::DoNotOptimize(count);
        benchmark::DoNotOptimize(roots);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SolveCubicWithThreeRoots);

void BM_NormalizeAngle(benchmark::State& state) {
    const Inputs a(-50.0, 50.0, 3);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(qmMath_normalizeAngle(a[i++]));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_NormalizeAngle);

void BM_CurveRadiusFromThreePoints(benchmark::State& state) {
    // Points of a circle of radius 150 at random angles, prepared outside the timed loop.
    const Inputs t(0.0, 6.283185307179586, 4);
    constexpr double kRadius = 150.0;
    std::array<double, kInputs> xs{}, ys{};
    for (std::size_t k = 0; k < kInputs; ++k) {
        xs[k] = kRadius * std::cos(t[k]);
        ys[k] = kRadius * std::sin(t[k]);
    }
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t a = i & (kInputs - 1), b = (i + 1) & (kInputs - 1);
        const std::size_t c = (i + 2) & (kInputs - 1);
        double cx = 0.0, cy = 0.0, radius = 0.0;
        const int status = qmMath_computeCurveRadiusFromThreePoints(
            xs[a], ys[a], xs[b], ys[b], xs[c], ys[c], &cx, &cy, &radius);
        benchmark::DoNotOptimize(status);
        benchmark::DoNotOptimize(radius);
        benchmark::DoNotOptimize(cx);
        i += 3;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CurveRadiusFromThreePoints);

}  // namespace
