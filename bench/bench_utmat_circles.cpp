// Throughput of the kernel's circle and vertical-curve constructions, the line and circle
// intersections, Laguerre's root and the sector operations of both families.  Inputs cycle
// through precomputed tables so the branch predictor sees realistic variety.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "korvelbase/qmmath.h"
#include "korvelbase/utmat_circles.h"

namespace {

constexpr std::size_t kTableSize = 1024;  // power of two: index with a mask

std::vector<double> randomValues(std::size_t n, double low, double high, unsigned seed) {
    std::mt19937 engine(seed);
    std::uniform_real_distribution<double> value(low, high);
    std::vector<double> out(n);
    for (double& v : out) v = value(engine);
    return out;
}

std::vector<Point2d> randomPoints(std::size_t n, double low, double high, unsigned seed) {
    const std::vector<double> v = randomValues(2 * n, low, high, seed);
    std::vector<Point2d> out(n);
    for (std::size_t k = 0; k < n; ++k) out[k] = {v[2 * k], v[2 * k + 1]};
    return out;
}

void BM_CircleThroughThreePoints(benchmark::State& state) {
    const std::vector<Point2d> p = randomPoints(kTableSize * 3, 0.0, 1000.0, 1);
    std::size_t i = 0;
    for (auto _ : state) {
        const Point2d* t = &p[(i & (kTableSize - 1)) * 3];
        Point2d centre;
        double radius;
        int found;
        UTMAT_CalculerCerPs3Pt(&t[0], &t[1], &t[2], &centre, &radius, &found);
        benchmark::DoNotOptimize(centre);
        benchmark::DoNotOptimize(found);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CircleThroughThreePoints);

void BM_ArcThroughThreePoints(benchmark::State& state) {
    const std::vector<Point2d> p = randomPoints(kTableSize * 3, 0.0, 1000.0, 2);
    std::size_t i = 0;
    for (auto _ : state) {
        const Point2d* t = &p[(i & (kTableSize - 1)) * 3];
        Point2d summit;
        double radius;
        int found;
        UTMAT_CalculerArcParPs3Pt(&t[0], &t[1], &t[2], &summit, &radius, &found);
        benchmark::DoNotOptimize(summit);
        benchmark::DoNotOptimize(found);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ArcThroughThreePoints);

void BM_VerticalCurveBetweenTwoGrades(benchmark::State& state) {
    const std::vector<double> v = randomValues(kTableSize * 5, -0.08, 0.08, 3);
    std::size_t i = 0;
    for (auto _ : state) {
        const double* c = &v[(i & (kTableSize - 1)) * 5];
        const UtDroite d1{c[0], -1.0, c[1] * 100.0}, d2{c[2], -1.0, c[3] * 100.0};
        Point2d summit, tangencies[2];
        int found;
        UTMAT_CalculerArcParTg2DteRayon(&d1, &d2, 5000.0 + c[4] * 1e4, &summit, tangencies, &found);
        benchmark::DoNotOptimize(tangencies);
        benchmark::DoNotOptimize(found);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_VerticalCurveBetweenTwoGrades);

void BM_IntersectionOfTwoCircles(benchmark::State& state) {
    const std::vector<double> v = randomValues(kTableSize * 6, 0.0, 100.0, 4);
    std::size_t i = 0;
    for (auto _ : state) {
        const double* c = &v[(i & (kTableSize - 1)) * 6];
        const Point2d c1{c[0], c[1]}, c2{c[3], c[4]};
        Point2d points[2];
        int count;
        UTMAT_CalculerIntersection2Cercle(&c1, c[2], &c2, c[5], points, &count);
        benchmark::DoNotOptimize(points);
        benchmark::DoNotOptimize(count);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_IntersectionOfTwoCircles);

void BM_LaguerreRootOfQuintic(benchmark::State& state) {
    // (x - r1)...(x - r5) expanded, for random roots.
    std::vector<std::vector<double>> polys;
    const std::vector<double> roots = randomValues(kTableSize * 5, -10.0, 10.0, 5);
    for (std::size_t k = 0; k < kTableSize; ++k) {
        std::vector<double> c{1.0};
        for (int j = 0; j < 5; ++j) {
            std::vector<double> next(c.size() + 1, 0.0);
            for (std::size_t m = 0; m < c.size(); ++m) {
                next[m + 1] += c[m];
                next[m] -= roots[k * 5 + j] * c[m];
            }
            c = next;
        }
        polys.push_back(c);
    }
    std::size_t i = 0;
    for (auto _ : state) {
        double root;
        int found;
        UTMAT_CalculerRacinePolynomeLaguerre(polys[i & (kTableSize - 1)].data(), 5, 0.0, &root, &found);
        benchmark::DoNotOptimize(root);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LaguerreRootOfQuintic);

void BM_SectorUnionKernel(benchmark::State& state) {
    const std::vector<double> v = randomValues(kTableSize * 4, -7.0, 7.0, 6);
    std::size_t i = 0;
    for (auto _ : state) {
        const double* c = &v[(i & (kTableSize - 1)) * 4];
        double starts[2], sweeps[2];
        int count;
        UTMAT_CalculerSommeSecteur(c[0], c[1], c[2], c[3], starts, sweeps, &count);
        benchmark::DoNotOptimize(starts);
        benchmark::DoNotOptimize(count);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SectorUnionKernel);

void BM_SectorIntersectionPlane(benchmark::State& state) {
    const std::vector<double> v = randomValues(kTableSize * 4, -7.0, 7.0, 7);
    std::size_t i = 0;
    for (auto _ : state) {
        const double* c = &v[(i & (kTableSize - 1)) * 4];
        double starts[2], sweeps[2];
        int count, relation;
        qmMath_calculateAngularSectorProduct(starts, sweeps, &count, &relation, c[0], c[1], c[2],
                                             c[3], 1e-9);
        benchmark::DoNotOptimize(starts);
        benchmark::DoNotOptimize(count);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SectorIntersectionPlane);

void BM_ArcRange(benchmark::State& state) {
    const std::vector<double> v = randomValues(kTableSize * 5, -7.0, 7.0, 8);
    std::size_t i = 0;
    for (auto _ : state) {
        const double* c = &v[(i & (kTableSize - 1)) * 5];
        double xmin, ymin, xmax, ymax;
        qmMath_arcGetRange2d(&xmin, &ymin, &xmax, &ymax, c[0], c[1], 10.0 + c[2], c[3], c[4]);
        benchmark::DoNotOptimize(xmin);
        benchmark::DoNotOptimize(ymax);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ArcRange);

}  // namespace
