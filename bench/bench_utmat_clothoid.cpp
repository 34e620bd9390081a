// Clothoid points per second under each formula (the four-term series, the nine-term series below
// the deflection 3.4394 and the asymptotic form beyond it), the derivatives, and the inversion of
// the circle shift.  Distances cycle through a table so the work is not hoisted.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/utmat_clothoid.h"

namespace {

constexpr std::size_t kTableSize = 1024;  // power of two: index with a mask
constexpr double kA = 250.0;

// Distances whose deflections are spread over [lowDeflection, highDeflection].
std::vector<double> distances(double lowDeflection, double highDeflection) {
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> deflection(lowDeflection, highDeflection);
    std::vector<double> out(kTableSize);
    for (double& s : out) s = kA * std::sqrt(2.0 * deflection(engine));
    return out;
}

void spiralPoints(benchmark::State& state, int selector, double lowDeflection, double highDeflection) {
    const std::vector<double> s = distances(lowDeflection, highDeflection);
    std::size_t i = 0;
    for (auto _ : state) {
        double x, y, tx, ty;
        qmMath_calculateSpiralPointByDistanceAndOffset(&x, &y, &tx, &ty, kA, s[i & (kTableSize - 1)], 1.5, selector);
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(y);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_SpiralPointFourTermSeries(benchmark::State& state) { spiralPoints(state, 1, 0.0, 1.5); }
BENCHMARK(BM_SpiralPointFourTermSeries);

void BM_SpiralPointNineTermSeries(benchmark::State& state) { spiralPoints(state, 2, 0.0, 3.4394); }
BENCHMARK(BM_SpiralPointNineTermSeries);

void BM_SpiralPointAsymptoticForm(benchmark::State& state) { spiralPoints(state, 2, 3.5, 20.0); }
BENCHMARK(BM_SpiralPointAsymptoticForm);

void BM_SpiralDerivatives(benchmark::State& state) {
    UTMAT_SetVelmoranSpiralFormula();
    const std::vector<double> s = distances(0.0, 3.4394);
    std::size_t i = 0;
    for (auto _ : state) {
        Point2d first, second;
        UTMAT_CalculerDeriveePremEtSecClot(kA, s[i & (kTableSize - 1)], &first, &second);
        benchmark::DoNotOptimize(first);
        benchmark::DoNotOptimize(second);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SpiralDerivatives);

// Length from A and the shift: a bisection over the deflection.
void BM_LengthFromShift(benchmark::State& state) {
    UTMAT_SetVelmoranSpiralFormula();
    std::mt19937 engine(3);
    std::uniform_real_distribution<double> shift(0.01, 2.0);
    std::vector<double> shifts(kTableSize);
    for (double& v : shifts) v = shift(engine);
    std::size_t i = 0;
    for (auto _ : state) {
        double length = 0.0;
        int valid = 0;
        UTMAT_CalculerParametreClotValide(5, kA, shifts[i & (kTableSize - 1)], &length, &valid);
        benchmark::DoNotOptimize(length);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LengthFromShift);

}  // namespace
