// Weighted best-fit circle through many noisy points, and the plane fit.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/bestfit_horizontal.h"

namespace {

std::vector<double> noisyCircle(int n) {
    std::mt19937 rng(5);
    std::normal_distribution<double> g(0.0, 0.01);
    std::vector<double> obs;
    obs.reserve(static_cast<std::size_t>(n) * 4);
    for (int i = 0; i < n; ++i) {
        const double a = 6.283185307179586 * i / n;
        obs.insert(obs.end(), {500000.0 + 250.0 * std::cos(a) + g(rng), 0.01,
                               4200000.0 + 250.0 * std::sin(a) + g(rng), 0.01});
    }
    return obs;
}

void BM_CircleFit(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto obs = noisyCircle(n);
    for (auto _ : state) {
        double cy = 0, cx = 0, r = 0;
        benchmark::DoNotOptimize(qmBestFit_horzCurveCalc(&cy, &cx, &r, n, obs.data()));
        benchmark::DoNotOptimize(r);
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_CircleFit)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_PlaneFit(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    std::mt19937 rng(6);
    std::uniform_real_distribution<double> u(0.0, 100.0);
    std::vector<Point3d> pts(static_cast<std::size_t>(n));
    for (Point3d& p : pts) {
        p.x = u(rng);
        p.y = u(rng);
        p.z = 0.1 * p.x - 0.2 * p.y + 3.0;
    }
    for (auto _ : state) {
        double mx, my, z, a, b, c, e;
        benchmark::DoNotOptimize(qmBestFit_planeCalc(&mx, &my, &z, &a, &b, &c, &e, n, pts.data()));
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_PlaneFit)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
