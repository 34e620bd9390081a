// Geoid queries on a 0.25-degree global grid of an analytic surface, written by the benchmark.
// With GeographicLib present (KB_BENCH_WITH_GEOGRAPHICLIB), its Geoid class answers the same
// queries on the same surface stored in its own PGM format, without its cache.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "korvelbase/qmgeoid.h"

#ifdef KB_BENCH_WITH_GEOGRAPHICLIB
#include <GeographicLib/Geoid.hpp>
#endif

namespace {

namespace fs = std::filesystem;

constexpr double kStep = 0.25;
constexpr int kRows = 721;     // -90 .. 90
constexpr int kColumns = 1441;  // 0 .. 360
constexpr double kPi = 3.14159265358979323846;

double surface(double lat, double lon) {
    return 20.0 * std::sin(lat * kPi / 90.0) * std::cos(lon * kPi / 120.0) + 5.0;
}

fs::path folder() {
    static const fs::path path = fs::temp_directory_path() / "kb-bench-geoid";
    return path;
}

void put(std::ofstream& out, const void* value, int bytes) {
    out.write(static_cast<const char*>(value), bytes);  // the benchmark host is little-endian
}

const std::string& gridFile() {
    static const std::string path = [] {
        fs::create_directories(folder());
        const fs::path file = folder() / "global.bin";
        std::ofstream out(file, std::ios::binary);
        const double header[4] = {-90.0, 0.0, kStep, kStep};
        const std::int32_t counts[3] = {kRows, kColumns, 1};
        put(out, header, sizeof header);
        put(out, counts, sizeof counts);
        for (int r = 0; r < kRows; ++r) {
            for (int c = 0; c < kColumns; ++c) {
                const float v = static_cast<float>(surface(-90.0 + r * kStep, c * kStep));
                put(out, &v, sizeof v);
            }
        }
        return file.string();
    }();
    return path;
}

std::vector<std::pair<double, double>> queries() {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> lat(-89.0, 89.0);
    std::uniform_real_distribution<double> lon(0.0, 359.0);
    std::vector<std::pair<double, double>> out(100000);
    for (auto& q : out) q = {lat(random), lon(random)};
    return out;
}

void BM_KorvelGeoid(benchmark::State& state) {
    qmGeoid_initModelByFile(gridFile().c_str());
    const auto positions = queries();
    std::size_t k = 0;
    double n = 0.0;
    for (auto _ : state) {
        const auto& q = positions[k++ % positions.size()];
        qmGeoid_getUndulationAtLatLong(&n, q.first, q.second, 1);
        benchmark::DoNotOptimize(n);
    }
    state.SetItemsProcessed(state.iterations());
    qmGeoid_closeModel();
}
BENCHMARK(BM_KorvelGeoid);

#ifdef KB_BENCH_WITH_GEOGRAPHICLIB
// The same surface as a GeographicLib PGM: 16-bit big-endian values with an offset and scale,
// rows from north to south, columns from 0 east, without the repeated 360 column.
std::string pgmFolder() {
    static const std::string path = [] {
        const fs::path file = folder() / "bench-surface.pgm";
        const double offset = -20.0;
        const double scale = 0.001;
        std::ofstream out(file, std::ios::binary);
        out << "P5\n# Offset " << offset << "\n# Scale " << scale << "\n"
            << (kColumns - 1) << " " << kRows << "\n65535\n";
        for (int r = 0; r < kRows; ++r) {
            for (int c = 0; c < kColumns - 1; ++c) {
                const double v = surface(90.0 - r * kStep, c * kStep);
                const auto raw = static_cast<std::uint16_t>(std::lround((v - offset) / scale));
                out.put(static_cast<char>(raw >> 8));
                out.put(static_cast<char>(raw & 0xFF));
            }
        }
        return folder().string();
    }();
    return path;
}

void BM_GeographicLibGeoidUncached(benchmark::State& state) {
    const GeographicLib::Geoid geoid("bench-surface", pgmFolder(), false, false);
    const auto positions = queries();
    std::size_t k = 0;
    for (auto _ : state) {
        const auto& q = positions[k++ % positions.size()];
        benchmark::DoNotOptimize(geoid(q.first, q.second));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_GeographicLibGeoidUncached);
#endif

}  // namespace
