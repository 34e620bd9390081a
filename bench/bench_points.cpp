// Point-in-polygon throughput on a 10,000-vertex ring: the library's single test, a bare
// even-odd loop for comparison, and the indexed batch test.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/qmpoint.h"

namespace {

constexpr int kRingVertices = 10000;
constexpr int kQueries = 4096;

// A wavy star: every horizontal ray meets many edges, as real parcel boundaries do.
std::vector<Point3d> wavyRing(int n) {
    std::vector<Point3d> ring(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        const double a = 2.0 * 3.14159265358979323846 * i / n, r = 1000.0 + 150.0 * std::sin(37 * a);
        ring[static_cast<std::size_t>(i)] = {r * std::cos(a), r * std::sin(a), 0.0};
    }
    return ring;
}

std::vector<Point3d> randomPoints(int n, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1200.0, 1200.0);
    std::vector<Point3d> pts(static_cast<std::size_t>(n));
    for (Point3d& p : pts) p = {u(rng), u(rng), 0.0};
    return pts;
}

int bareEvenOdd(const Point3d* ring, int n, double px, double py) {
    bool inside = false;
    for (int i = 0, j = n - 1; i < n; j = i++) {
        if ((ring[i].y > py) != (ring[j].y > py) &&
            px < (ring[j].x - ring[i].x) * (py - ring[i].y) / (ring[j].y - ring[i].y) + ring[i].x)
            inside = !inside;
    }
    return inside;
}

void BM_PointInPolygonSingle(benchmark::State& state) {
    const auto ring = wavyRing(kRingVertices);
    const auto pts = randomPoints(kQueries, 1);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            qmPointArray_isPointInsidePolygon(ring.data(), kRingVertices, &pts[i++ % kQueries]));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PointInPolygonSingle);

void BM_PointInPolygonBareEvenOdd(benchmark::State& state) {
    const auto ring = wavyRing(kRingVertices);
    const auto pts = randomPoints(kQueries, 1);
    std::size_t i = 0;
    for (auto _ : state) {
        const Point3d& p = pts[i++ % kQueries];
        benchmark::DoNotOptimize(bareEvenOdd(ring.data(), kRingVertices, p.x, p.y));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PointInPolygonBareEvenOdd);

// One call over a million points that all lie inside (so no early exit on a mixed verdict).
void BM_PointInPolygonBatch(benchmark::State& state) {
    const auto ring = wavyRing(kRingVertices);
    const int n = static_cast<int>(state.range(0));
    std::vector<Point3d> pts = randomPoints(n, 2);
    for (Point3d& p : pts) {  // pull every point inside the inner radius
        p.x *= 0.7;
        p.y *= 0.7;
        const double r = std::hypot(p.x, p.y);
        if (r > 800.0) {
            p.x *= 800.0 / r;
            p.y *= 800.0 / r;
        }
    }
    for (auto _ : state) {
        int verdict = -1;
        qmPointArray_isArrayWithinPolygon(&verdict, pts.data(), n, ring.data(), kRingVertices);
        benchmark::DoNotOptimize(verdict);
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_PointInPolygonBatch)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
