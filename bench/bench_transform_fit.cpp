// Least-squares similarity and affine fits of 10,000 and 100,000 control points: the
// adjustment works point by point (2 x 2 blocks), so time grows linearly.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/bestfit_transform.h"

namespace {

std::vector<double> controlPoints(int count) {
    std::mt19937 random(9);
    std::uniform_real_distribution<double> coordinate(0.0, 5000.0);
    std::normal_distribution<double> noise(0.0, 0.01);
    const double a = 0.9995 * std::cos(0.3), b = 0.9995 * std::sin(0.3);
    std::vector<double> points;
    points.reserve(static_cast<std::size_t>(count) * 8);
    for (int i = 0; i < count; ++i) {
        const double x = coordinate(random), y = coordinate(random);
        points.insert(points.end(), {x, 0.005, y, 0.005, a * x - b * y + 4e5 + noise(random), 0.01,
                                     b * x + a * y + 5e6 + noise(random), 0.01});
    }
    return points;
}

void BM_SimilarityFit(benchmark::State& state) {
    const std::vector<double> points = controlPoints(static_cast<int>(state.range(0)));
    double p[4], vf, rm;
    for (auto _ : state) {
        benchmark::DoNotOptimize(qmBestFit_transform2d(&p[0], &p[1], &p[2], &p[3], &vf, &rm,
                                                       static_cast<int>(state.range(0)), points.data()));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SimilarityFit)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_AffineFit(benchmark::State& state) {
    const std::vector<double> points = controlPoints(static_cast<int>(state.range(0)));
    double p[6], vf, rm;
    for (auto _ : state) {
        benchmark::DoNotOptimize(qmBestFit_transformAffine2d(&p[0], &p[1], &p[2], &p[3], &p[4], &p[5],
                                                             &vf, &rm, static_cast<int>(state.range(0)),
                                                             points.data()));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_AffineFit)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
