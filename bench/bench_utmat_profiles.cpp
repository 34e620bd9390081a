// Profiles and polylines at survey scale: the difference of two 1,000,000-vertex profiles, the
// tunnel simplification of 100,000 and 1,000,000 points (per-point time should stay flat), and
// the purge of 1,000,000 points full of repeats.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "korvelbase/blockarray.h"
#include "korvelbase/utmat_profiles.h"

namespace {

std::vector<Point2d> randomProfile(int n, double meanSpacing, unsigned seed) {
    std::mt19937 engine(seed);
    std::uniform_real_distribution<double> spacing(0.5 * meanSpacing, 1.5 * meanSpacing), grade(-0.02, 0.02);
    std::vector<Point2d> p{{0.0, 100.0}};
    for (int i = 1; i < n; ++i) {
        const double dx = spacing(engine);
        p.push_back({p.back().x + dx, p.back().y + grade(engine) * dx + 0.05 * std::sin(i * 0.01)});
    }
    return p;
}

void BM_ProfileDifference(benchmark::State& state) {
    const int n = int(state.range(0));
    const std::vector<Point2d> a = randomProfile(n, 1.0, 1), b = randomProfile(n, 1.0, 2);
    for (auto _ : state) {
        double lengthAbove, areaAbove, lengthBelow, areaBelow;
        Point2d* crossings = nullptr;
        int32_t* sides = nullptr;
        int count = 0;
        UTMAT_CalculerDifference2Polylignes(a.data(), n, b.data(), n, &lengthAbove, &areaAbove, &lengthBelow,
                                            &areaBelow, &crossings, &sides, &count);
        benchmark::DoNotOptimize(areaAbove);
        state.counters["crossings"] = count;
        if (crossings != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&crossings));
        if (sides != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(&sides));
    }
    state.SetItemsProcessed(state.iterations() * 2 * n);
}
BENCHMARK(BM_ProfileDifference)->Arg(1000000)->Unit(benchmark::kMillisecond);

// A surveyed road line: gentle curves, 1 m spacing, centimetre noise.
std::vector<Point3d> surveyedLine(int n, unsigned seed) {
    std::mt19937 engine(seed);
    std::normal_distribution<double> noise(0.0, 0.01);
    std::vector<Point3d> p;
    double x = 500000.0, y = 4000000.0, heading = 0.3;
    for (int i = 0; i < n; ++i) {
        heading += 0.002 * std::sin(i * 0.001);
        x += std::cos(heading);
        y += std::sin(heading);
        p.push_back({x + noise(engine), y + noise(engine), 200.0 + 0.01 * i + noise(engine)});
    }
    return p;
}

void runTunnel(benchmark::State& state, double length) {
    const int n = int(state.range(0));
    const std::vector<Point3d> p = surveyedLine(n, 3);
    std::vector<int32_t> flags(std::size_t(n), 0);
    for (auto _ : state) {
        std::fill(flags.begin(), flags.end(), 0);
        UTMAT_AppliquerTunnelAPolyligne(p.data(), n, 0.1, length, 0, flags.data());
        benchmark::DoNotOptimize(flags.data());
    }
    std::size_t dropped = 0;
    for (const int32_t f : flags) dropped += std::size_t(f);
    state.counters["dropped"] = double(dropped);
    state.SetItemsProcessed(state.iterations() * n);
}

// A 50 m tunnel: the dropped points since an anchor stay few.
void BM_TunnelFixedLength(benchmark::State& state) { runTunnel(state, 50.0); }
BENCHMARK(BM_TunnelFixedLength)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// An unbounded tunnel on a straight noisy line: one anchor for the whole line, the case that a
// point-by-point walk back turns quadratic.
void BM_TunnelStraightLineUnboundedLength(benchmark::State& state) {
    const int n = int(state.range(0));
    std::mt19937 engine(4);
    std::uniform_real_distribution<double> jitter(-0.005, 0.005);
    std::vector<Point3d> p;
    for (int i = 0; i < n; ++i) p.push_back({500000.0 + 0.8 * i + jitter(engine), 0.6 * i + jitter(engine), jitter(engine)});
    std::vector<int32_t> flags(std::size_t(n), 0);
    for (auto _ : state) {
        std::fill(flags.begin(), flags.end(), 0);
        UTMAT_AppliquerTunnelAPolyligne(p.data(), n, 0.05, 1e12, 0, flags.data());
        benchmark::DoNotOptimize(flags.data());
    }
    std::size_t dropped = 0;
    for (const int32_t f : flags) dropped += std::size_t(f);
    state.counters["dropped"] = double(dropped);
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_TunnelStraightLineUnboundedLength)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// 1,000,000 points, each repeated 1 to 5 times (runs of up to 5 identical points).
void BM_PurgeRepeats(benchmark::State& state) {
    const int n = int(state.range(0));
    std::mt19937 engine(5);
    std::uniform_int_distribution<int> run(1, 5);
    std::vector<Point2d> points;
    for (int i = 0; int(points.size()) < n; ++i) {
        const int repeats = run(engine);
        for (int r = 0; r < repeats && int(points.size()) < n; ++r) points.push_back({double(i), 0.5 * i});
    }
    int kept = 0;
    for (auto _ : state) {
        state.PauseTiming();
        void* block = nullptr;
        MEM_CreerTableau(&block, int(sizeof(Point2d)), n);
        std::memcpy(block, points.data(), points.size() * sizeof(Point2d));
        Point2d* array = static_cast<Point2d*>(block);
        int count = n;
        state.ResumeTiming();
        UTMAT_PurgerPolyligne(&array, &count, 0.0);
        kept = count;
        state.PauseTiming();
        MEM_LibererTableau(reinterpret_cast<void**>(&array));
        state.ResumeTiming();
    }
    state.counters["kept"] = kept;
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_PurgeRepeats)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
