// 12 x 12 inversions by full-pivot Gauss-Jordan, and (with Eigen present,
// KB_BENCH_WITH_EIGEN) Eigen's FullPivLU inverse of the same 1,000 matrices in the same run.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "korvelbase/qmmatrix.h"

#ifdef KB_BENCH_WITH_EIGEN
#include <Eigen/Dense>
#endif

namespace {

constexpr int kSize = 12;
constexpr int kMatrices = 1000;

const std::vector<std::vector<double>>& matrices() {
    static const std::vector<std::vector<double>> all = [] {
        std::mt19937 random(1);
        std::uniform_real_distribution<double> value(-1.0, 1.0);
        std::vector<std::vector<double>> out(kMatrices, std::vector<double>(kSize * kSize));
        for (auto& m : out) {
            for (int i = 0; i < kSize * kSize; ++i) m[i] = value(random) + (i % (kSize + 1) == 0 ? 3.0 : 0.0);
        }
        return out;
    }();
    return all;
}

void BM_InvertFullPivotGaussJordan(benchmark::State& state) {
    DenseMatrix m{0, 0, nullptr};
    qmMatrix_memMatrix(&m, kSize, kSize);
    std::size_t k = 0;
    for (auto _ : state) {
        const std::vector<double>& source = matrices()[k++ % kMatrices];
        std::copy(source.begin(), source.end(), m.data);
        benchmark::DoNotOptimize(qmMatrix_invertMatrix(&m));
    }
    qmMatrix_freeMatrix(&m);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_InvertFullPivotGaussJordan);

#ifdef KB_BENCH_WITH_EIGEN
void BM_EigenFullPivLuInverse(benchmark::State& state) {
    Eigen::Matrix<double, kSize, kSize> m;
    Eigen::Matrix<double, kSize, kSize> inverse;
    std::size_t k = 0;
    for (auto _ : state) {
        const std::vector<double>& source = matrices()[k++ % kMatrices];
        m = Eigen::Map<const Eigen::Matrix<double, kSize, kSize>>(source.data());
        inverse = m.fullPivLu().inverse();
        benchmark::DoNotOptimize(inverse.data());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EigenFullPivLuInverse);
#endif

}  // namespace
