// Throughput of the kernel's most used primitives: line intersection, angle normalisation and
// the quadratic solver.  Inputs cycle through a precomputed table so the branch predictor and
// the optimiser see realistic variety.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "korvelbase/utmat.h"

namespace {

constexpr std::size_t kTableSize = 1024;  // power of two: index with a mask

std::vector<double> randomValues(std::size_t n, double low, double high, unsigned seed) {
    std::mt19937 engine(seed);
    std::uniform_real_distribution<double> value(low, high);
    std::vector<double> out(n);
    for (double& v : out) v = value(engine);
    return out;
}

void BM_IntersectionOfTwoLines(benchmark::State& state) {
    const std::vector<double> coef = randomValues(kTableSize * 6, -100.0, 100.0, 1);
    std::size_t i = 0;
    for (auto _ : state) {
        const double* c = &coef[(i & (kTableSize - 1)) * 6];
        const UtDroite d1{c[0], c[1], c[2]}, d2{c[3], c[4], c[5]};
        Point2d point;
        int found;
        UTMAT_CalculerIntersection2Droite(&d1, &d2, &point, &found);
        benchmark::DoNotOptimize(point);
        benchmark::DoNotOptimize(found);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_IntersectionOfTwoLines);

void BM_NormaliseAngle(benchmark::State& state) {
    const int mode = static_cast<int>(state.range(0));
    const std::vector<double> angles = randomValues(kTableSize, -50.0, 50.0, 2);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(UTMAT_NormaliserAngle(mode, angles[i & (kTableSize - 1)]));
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_NormaliseAngle)->Arg(0)->Arg(1)->Arg(2);

void BM_SolveQuadratic(benchmark::State& state) {
    const std::vector<double> coef = randomValues(kTableSize * 3, -10.0, 10.0, 3);
    std::size_t i = 0;
    for (auto _ : state) {
        const double* c = &coef[(i & (kTableSize - 1)) * 3];
        double roots[2];
        int count;
        UTMAT_ResoudreEquation2Degre(c[0], c[1], c[2], 0.0, roots, &count);
        benchmark::DoNotOptimize(roots);
        benchmark::DoNotOptimize(count);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SolveQuadratic);

}  // namespace
