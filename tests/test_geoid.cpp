// Geoid model: grid files written by the test, a quadratic surface reproduced at and between
// nodes, border blocks, the tile choice of a model family, and files that are not grids.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "korvelbase/qmgeoid.h"

namespace {

namespace fs = std::filesystem;

struct GridSpec {
    double south, west, dlat, dlon;
    std::int32_t rows, columns, kind;
};

void putLittleEndian(std::ostream& out, std::uint64_t bits, int bytes) {
    for (int i = 0; i < bytes; ++i) out.put(static_cast<char>((bits >> (8 * i)) & 0xFF));
}

void putDouble(std::ostream& out, double v) {
    std::uint64_t bits;
    std::memcpy(&bits, &v, 8);
    putLittleEndian(out, bits, 8);
}

void putInt(std::ostream& out, std::int32_t v) {
    std::uint32_t bits;
    std::memcpy(&bits, &v, 4);
    putLittleEndian(out, bits, 4);
}

void putFloat(std::ostream& out, float v) {
    std::uint32_t bits;
    std::memcpy(&bits, &v, 4);
    putLittleEndian(out, bits, 4);
}

void putHeader(std::ostream& out, const GridSpec& g) {
    putDouble(out, g.south);
    putDouble(out, g.west);
    putDouble(out, g.dlat);
    putDouble(out, g.dlon);
    putInt(out, g.rows);
    putInt(out, g.columns);
    putInt(out, g.kind);
}

// Writes a grid whose node (r, c), from 1, holds value(r - 1, c - 1).
void writeGrid(const fs::path& path, const GridSpec& g,
               const std::function<double(double, double)>& value) {
    std::ofstream out(path, std::ios::binary);
    putHeader(out, g);
    for (int r = 0; r < g.rows; ++r) {
        for (int c = 0; c < g.columns; ++c) putFloat(out, static_cast<float>(value(r, c)));
    }
}

// A quadratic in the node coordinates with dyadic coefficients: exact in float at the nodes,
// and reproduced exactly by biquadratic interpolation everywhere.
double surface(double x, double y) {
    return 10.0 + 0.5 * x - 0.25 * y + 0.125 * x * y + 0.0625 * x * x - 0.03125 * y * y;
}

class Geoid : public ::testing::Test {
protected:
    void SetUp() override {
        folder_ = fs::temp_directory_path() /
                  ("kb-geoid-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
                   "-" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(folder_);
    }
    void TearDown() override {
        qmGeoid_closeModel();
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    fs::path folder_;
};

constexpr GridSpec kGrid{40.0, 350.0, 0.5, 0.25, 9, 13, 1};

double undulation(double lat, double lon, int east, int* status = nullptr) {
    double n = -1.0;
    const int result = qmGeoid_getUndulationAtLatLong(&n, lat, lon, east);
    if (status != nullptr) *status = result;
    return n;
}

TEST_F(Geoid, ReproducesAQuadraticAtAndBetweenNodes) {
    const fs::path path = folder_ / "grid.bin";
    writeGrid(path, kGrid, surface);
    ASSERT_EQ(qmGeoid_initModelByFile(path.string().c_str()), 0);
    for (double x = 0.0; x <= 8.0; x += 0.37) {
        for (double y = 0.0; y <= 12.0; y += 0.41) {
            const double lat = kGrid.south + x * kGrid.dlat;
            const double lon = kGrid.west + y * kGrid.dlon;
            int status = -1;
            EXPECT_NEAR(undulation(lat, lon, 1, &status), surface(x, y), 1e-9) << x << " " << y;
            EXPECT_EQ(status, 0);
        }
    }
    // Exactly on nodes, the edges and the far corner included.
    for (const auto& node : {std::pair<int, int>{0, 0}, {8, 12}, {0, 12}, {8, 0}, {3, 5}}) {
        EXPECT_EQ(undulation(kGrid.south + node.first * kGrid.dlat, kGrid.west + node.second * kGrid.dlon, 1),
                  static_cast<double>(static_cast<float>(surface(node.first, node.second))));
    }
    EXPECT_EQ(qmGeoid_biQuadraticFit(0.5, 1.0, 4.0, 9.0), 2.25);  // (t + 1)^2
}

TEST_F(Geoid, PositionRulesAndFailures) {
    writeGrid(folder_ / "world.bin", {-90.0, 0.0, 1.0, 1.0, 181, 361, 1},
              [](double r, double c) { return r * 0.5 + c * 0.25; });
    ASSERT_EQ(qmGeoid_initModelByFile((folder_ / "world.bin").string().c_str()), 0);
    // Node values are 0.5 * (lat + 90) + 0.25 * lon (lon east, 0..360).
    const auto expected = [](double lat, double lonEast) { return 0.5 * (lat + 90) + 0.25 * lonEast; };
    EXPECT_NEAR(undulation(10, 100, 0), expected(10, 260), 1e-9);  // west-positive 100 = 260 E
    EXPECT_NEAR(undulation(10, -10, 1), expected(10, 350), 1e-9);  // negative east: +360
    EXPECT_NEAR(undulation(10, -10, 0), expected(10, 10), 1e-9);   // negative west = 10 E
    int status = 0;
    for (const auto& bad : {std::pair<double, double>{91, 0}, {-90.5, 0}, {0, 361}, {0, -360.5}}) {
        EXPECT_EQ(undulation(bad.first, bad.second, 1, &status), 0.0);
        EXPECT_EQ(status, 1);
    }
    EXPECT_EQ(qmGeoid_getUndulationAtLatLong(nullptr, 0, 0, 1), 1);
    qmGeoid_closeModel();
    EXPECT_EQ(undulation(10, 10, 1, &status), 0.0);
    EXPECT_EQ(status, 1);
    // Outside a regional grid.
    writeGrid(folder_ / "grid.bin", kGrid, surface);
    ASSERT_EQ(qmGeoid_initModelByFile((folder_ / "grid.bin").string().c_str()), 0);
    EXPECT_EQ(undulation(39.9, 351, 1, &status), 0.0);
    EXPECT_EQ(status, 1);
}

TEST_F(Geoid, FilesThatAreNotGridsAreRejected) {
    EXPECT_EQ(qmGeoid_initModelByFile(nullptr), 1);
    EXPECT_EQ(qmGeoid_initModelByFile(""), 1);
    EXPECT_EQ(qmGeoid_initModelByFile((folder_ / "missing.bin").string().c_str()), 1);
    EXPECT_EQ(qmGeoid_initModelByFile(folder_.string().c_str()), 1);  // a folder
    const GridSpec bad[] = {
        {40, 350, 0.5, 0.25, 9, 13, 0},                // kind 0
        {40, 350, 0.5, 0.25, 0, 13, 1},                // no rows
        {40, 350, -0.5, 0.25, 9, 13, 1},               // negative spacing
        {40, 350, NAN, 0.25, 9, 13, 1},                // not finite
        {40, 350, 0.5, 0.25, 2000000000, 2000000000, 1},  // far more nodes than the file holds
    };
    for (const GridSpec& g : bad) {
        const fs::path path = folder_ / "bad.bin";
        writeGrid(path, {g.south, g.west, g.dlat, g.dlon, std::min(g.rows, 9), std::min(g.columns, 13), g.kind},
                  surface);
        // Rewrite the header with the impossible values, keeping the 9 x 13 body.
        std::fstream patch(path, std::ios::binary | std::ios::in | std::ios::out);
        patch.seekp(0);
        putHeader(patch, g);
        patch.close();
        EXPECT_EQ(qmGeoid_initModelByFile(path.string().c_str()), 1) << g.rows << " " << g.kind;
        EXPECT_EQ(undulation(42, 351, 1), 0.0);
    }
}

TEST_F(Geoid, AFileTruncatedWhileOpenGivesFailureNotACrash) {
    const fs::path path = folder_ / "grid.bin";
    writeGrid(path, kGrid, surface);
    ASSERT_EQ(qmGeoid_initModelByFile(path.string().c_str()), 0);
    int status = -1;
    EXPECT_NEAR(undulation(43.1, 352.1, 1, &status), surface(6.2, 8.4), 1e-9);
    fs::resize_file(path, 44 + 4 * 13);  // only the southern row is left
    EXPECT_EQ(undulation(43.1, 352.1, 1, &status), 0.0);
    EXPECT_EQ(status, 1);
}

TEST_F(Geoid, TileSearchPrefersTheDeepestTileThenTheLowerNumber) {
    // Tile 1: 40..45 N, 0..5 E; tile 2: 44..50 N, 0..5 E (overlapping 44..45); tile 3 missing;
    // tile 4: 40..50 N, 4..10 E.  Each holds its tile number everywhere.
    const GridSpec tiles[] = {{40, 0, 0.5, 0.5, 11, 11, 1}, {44, 0, 0.5, 0.5, 13, 11, 1},
                              {0, 0, 1, 1, 1, 1, 1}, {40, 4, 0.5, 0.5, 21, 13, 1}};
    for (int t = 0; t < 4; ++t) {
        if (t == 2) continue;
        writeGrid(folder_ / ("g2003u0" + std::to_string(t + 1) + ".bin"), tiles[t],
                  [t](double, double) { return t + 1.0; });
    }
    const std::string dir = folder_.string();
    const auto servedBy = [&](double lat, double lon) {
        if (qmGeoid_initModelByGeoid(2, dir.c_str(), lat, lon, 1) != 0) return 0.0;
        return undulation(lat, lon, 1);
    };
    EXPECT_EQ(servedBy(42, 2), 1.0);    // deep inside tile 1 only
    EXPECT_EQ(servedBy(44.9, 2), 2.0);  // near tile 1's north edge, deep in tile 2
    EXPECT_EQ(servedBy(44.5, 2), 1.0);  // deep in both: the first tile wins
    EXPECT_EQ(servedBy(42, 4.8), 4.0);  // near tile 1's east edge, deep in tile 4
    EXPECT_EQ(servedBy(40.1, 4.9), 4.0);  // corner of 1 (class 1), edge of 4 (class 2)
    EXPECT_EQ(servedBy(40.1, 0.1), 1.0);  // only tile 1, in its corner
    EXPECT_EQ(qmGeoid_initModelByGeoid(2, dir.c_str(), 60, 2, 1), 1);  // no tile
    EXPECT_EQ(qmGeoid_initModelByGeoid(7, dir.c_str(), 42, 2, 1), 1);  // no such family
    EXPECT_EQ(qmGeoid_initModelByGeoid(2, nullptr, 42, 2, 1), 1);
    // A directory given with its separator works the same.
    EXPECT_EQ(qmGeoid_initModelByGeoid(2, (dir + "/").c_str(), 42, 2, 1), 0);
}

}  // namespace
