// Vertical profile fit of a long noisy survey: a design of grades and curves sampled at 1 m
// with uniform noise of 2 cm, fitted at tolerances of 5 cm (the greedy fit then places
// thousands of IPs).  The time per run should grow about linearly with the survey length.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/bestfit_vertical.h"
#include "korvelbase/mem.h"

namespace {

void makeSurvey(int count, std::vector<double>& stations, std::vector<double>& levels) {
    std::mt19937 random(42);
    std::uniform_real_distribution<double> noise(-0.02, 0.02);
    stations.resize(static_cast<std::size_t>(count));
    levels.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const double x = i;
        // Rolling ground: grades of a few percent changing over a few hundred metres.
        stations[static_cast<std::size_t>(i)] = x;
        levels[static_cast<std::size_t>(i)] =
            100.0 + 6.0 * std::sin(x / 170.0) + 3.0 * std::sin(x / 61.0) + noise(random);
    }
}

void BM_VerticalProfileFit(benchmark::State& state) {
    std::vector<double> stations;
    std::vector<double> levels;
    makeSurvey(static_cast<int>(state.range(0)), stations, levels);
    qmBestFit_verticalProfileInitialize(0.05, 0.05, 30.0, 30.0, 20.0, 1.0, 0, 0, 0);
    int ipCount = 0;
    for (auto _ : state) {
        double* s = nullptr;
        double* l = nullptr;
        double* v = nullptr;
        qmBestFit_verticalComputeProfile(&s, &l, &v, &ipCount, stations.data(), levels.data(),
                                         static_cast<int>(stations.size()));
        qmMem_free(s);
        qmMem_free(l);
        qmMem_free(v);
    }
    state.counters["IPs"] = ipCount;
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_VerticalProfileFit)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_SingleVerticalCurve(benchmark::State& state) {
    std::vector<double> points;
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0.0, 0.01);
    for (int i = 0; i < state.range(0); ++i) {
        const double x = i * 0.5;
        points.insert(points.end(), {x, 0.002, 1e-5 * x * x + 0.01 * x + 50 + noise(random), 0.01});
    }
    double out[8];
    for (auto _ : state) {
        benchmark::DoNotOptimize(qmBestFit_vertCurveCalc(&out[0], &out[1], &out[2], &out[3], &out[4],
                                                         &out[5], &out[6], &out[7],
                                                         static_cast<int>(state.range(0)),
                                                         points.data()));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SingleVerticalCurve)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
