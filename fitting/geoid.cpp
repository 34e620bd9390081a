// Geoid model: grid files read on demand and interpolated biquadratically.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include "base/number_text.hpp"

#include "base/boundary.hpp"
#include "base/platform.hpp"
#include "korvelbase/qmgeoid.h"

namespace {

constexpr int kFailure = 1;
constexpr std::uint64_t kHeaderBytes = 44;
constexpr std::uint64_t kNodeBytes = 4;
constexpr int kBlock = 3;  // nodes per side of the interpolation block
constexpr double kLargestLatitude = 90.0;
constexpr double kFullTurn = 360.0;

// The grid header; the reset values are those of a closed model.
struct Grid {
    double south = 1.0;
    double west = 1.0;
    double latitudeSpacing = 1.0;
    double longitudeSpacing = 1.0;
    std::int32_t rows = 1;
    std::int32_t columns = 1;
    std::int32_t kind = 0;
    double north() const { return south + (rows - 1) * latitudeSpacing; }
    double east() const { return west + (columns - 1) * longitudeSpacing; }
};

// The open model: one per process, as callers of this family expect.
struct Model {
    Grid grid;
    kb::platform::ReadOnlyFile file;
    bool loaded = false;
};
Model model;

// ---- little-endian decoding, whatever the host's byte order -------------------------------

std::uint64_t littleEndian(const unsigned char* bytes, int count) {
    std::uint64_t value = 0;
    for (int i = count - 1; i >= 0; --i) value = (value << 8) | bytes[i];
    return value;
}

double doubleAt(const unsigned char* bytes) {
    const std::uint64_t bits = littleEndian(bytes, 8);
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::int32_t int32At(const unsigned char* bytes) {
    const auto bits = static_cast<std::uint32_t>(littleEndian(bytes, 4));
    std::int32_t value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

float floatAt(const unsigned char* bytes) {
    const auto bits = static_cast<std::uint32_t>(littleEndian(bytes, 4));
    float value = 0.0f;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// ---- header --------------------------------------------------------------------------------

// A header that can describe a grid stored in a file of fileBytes bytes.
bool plausible(const Grid& g, std::uint64_t fileBytes) {
    if (g.kind == 0 || g.rows < 1 || g.columns < 1) return false;
    if (!std::isfinite(g.south) || !std::isfinite(g.west)) return false;
    if (!(g.latitudeSpacing > 0.0) || !std::isfinite(g.latitudeSpacing)) return false;
    if (!(g.longitudeSpacing > 0.0) || !std::isfinite(g.longitudeSpacing)) return false;
    if (!std::isfinite(g.north()) || !std::isfinite(g.east())) return false;
    const auto nodes = static_cast<std::uint64_t>(g.rows) * static_cast<std::uint64_t>(g.columns);
    return fileBytes >= kHeaderBytes && (fileBytes - kHeaderBytes) / kNodeBytes >= nodes;
}

// Reads the header of an open file; false for an unreadable or impossible one.
bool readHeader(const kb::platform::ReadOnlyFile& file, Grid& g) {
    unsigned char header[kHeaderBytes];
    std::uint64_t bytes = 0;
    if (!file.size(bytes) || !file.readAt(0, header, sizeof header)) return false;
    g.south = doubleAt(header);
    g.west = doubleAt(header + 8);
    g.latitudeSpacing = doubleAt(header + 16);
    g.longitudeSpacing = doubleAt(header + 24);
    g.rows = int32At(header + 32);
    g.columns = int32At(header + 36);
    g.kind = int32At(header + 40);
    return plausible(g, bytes);
}

void closeModel() {
    model.file.close();
    model.grid = Grid{};
    model.loaded = false;
}

bool openModel(const char* path) {
    closeModel();
    Grid g;
    if (!model.file.open(path) || !readHeader(model.file, g)) {
        closeModel();
        return false;
    }
    model.grid = g;
    model.loaded = true;
    return true;
}

// ---- positions -------------------------------------------------------------------------------

// The position in the grid's frame (longitude east, 0..360); false when rejected.
bool normalise(double latitude, double longitude, int eastFlag, double& lat, double& lon) {
    if (!(std::fabs(latitude) <= kLargestLatitude) || !(std::fabs(longitude) <= kFullTurn)) {
        return false;
    }
    lon = longitude < 0.0 ? longitude + kFullTurn : longitude;
    if (eastFlag == 0) lon = kFullTurn - lon;  // west-positive to east
    lat = latitude;
    return true;
}

bool inside(const Grid& g, double lat, double lon) {
    return g.south <= lat && lat <= g.north() && g.west <= lon && lon <= g.east();
}

// How deep inside a tile a position lies: 3 more than half a spacing inside every edge, 2 near
// one edge (or both opposite ones of a narrow grid), 1 near a corner, 0 outside.
int depthClass(const Grid& g, double lat, double lon) {
    if (!inside(g, lat, lon)) return 0;
    const double halfLat = g.latitudeSpacing / 2.0;
    const double halfLon = g.longitudeSpacing / 2.0;
    const bool nearNorthOrSouth = lat - g.south <= halfLat || g.north() - lat <= halfLat;
    const bool nearEastOrWest = lon - g.west <= halfLon || g.east() - lon <= halfLon;
    if (nearNorthOrSouth && nearEastOrWest) return 1;
    if (nearNorthOrSouth || nearEastOrWest) return 2;
    return 3;
}

// ---- model families --------------------------------------------------------------------------

struct TileRun {
    const char* suffix;
    int first;
    int last;
};

struct Family {
    int code;
    const char* prefix;
    TileRun runs[4];
    int runCount;
};

const Family kFamilies[] = {
    {2, "g2003", {{"u0", 1, 8}}, 1},
    {3, "s2003", {{"u0", 1, 8}}, 1},
    {4, "g1999", {{"u0", 1, 8}, {"a0", 1, 4}, {"h0", 1, 1}, {"p0", 1, 1}}, 4},
    {5, "s1999", {{"u0", 1, 8}}, 1},
};

const Family* familyOf(int code) {
    for (const Family& f : kFamilies) {
        if (f.code == code) return &f;
    }
    return nullptr;
}

kb::String tilePath(const kb::String& directory, const char* prefix, const char* suffix,
                     int number) {
    kb::String path = directory;
    const bool hasSeparator = !path.empty() && (path.back() == '/' || path.back() == '\\');
    if (!hasSeparator) path += kb::platform::directorySeparator();
    return path + prefix + suffix + kb::integerText(number) + ".bin";
}

// The best tile of a family for the position, or an empty path.
kb::String bestTile(const Family& family, const kb::String& directory, double lat, double lon) {
    kb::String nearEdge;
    kb::String nearCorner;
    kb::platform::ReadOnlyFile tile;
    for (int r = 0; r < family.runCount; ++r) {
        const TileRun& run = family.runs[r];
        for (int number = run.first; number <= run.last; ++number) {
            const kb::String path = tilePath(directory, family.prefix, run.suffix, number);
            Grid g;
            if (!tile.open(path.c_str()) || !readHeader(tile, g)) continue;
            const int depth = depthClass(g, lat, lon);
            if (depth == 3) return path;
            if (depth == 2 && nearEdge.empty()) nearEdge = path;
            if (depth == 1 && nearCorner.empty()) nearCorner = path;
        }
    }
    return nearEdge.empty() ? nearCorner : nearEdge;
}

// ---- interpolation ---------------------------------------------------------------------------

double quadraticThrough(double t, double f0, double f1, double f2) {
    return f0 + t * ((f1 - f0) + (f2 - f1 - (f1 - f0)) * (t - 1.0) * 0.5);
}

std::uint64_t nodeOffset(const Grid& g, std::int64_t row, std::int64_t column) {
    return kHeaderBytes + static_cast<std::uint64_t>((row - 1) * g.columns + (column - 1)) * kNodeBytes;
}

// count consecutive nodes of one row from (row, column); false when the read fails.
bool readNodes(std::int64_t row, std::int64_t column, int count, double* values) {
    unsigned char bytes[kBlock * kNodeBytes];
    if (!model.file.readAt(nodeOffset(model.grid, row, column), bytes,
                           static_cast<std::size_t>(count) * kNodeBytes)) {
        return false;
    }
    for (int k = 0; k < count; ++k) values[k] = floatAt(bytes + k * kNodeBytes);
    return true;
}

// The block's centre index moved inward so that the block stays inside 1..count.
std::int64_t blockCentre(std::int64_t index, std::int32_t count) {
    if (index <= 1) return 2;
    if (index >= count) return count - 1;
    return index;
}

bool interpolate(double lat, double lon, double& value) {
    const Grid& g = model.grid;
    const double rowPosition = (lat - g.south) / g.latitudeSpacing;
    const double columnPosition = (lon - g.west) / g.longitudeSpacing;
    std::int64_t i = static_cast<std::int64_t>(std::floor(rowPosition)) + 1;
    std::int64_t j = static_cast<std::int64_t>(std::floor(columnPosition)) + 1;
    // Rounding at the far edges cannot push an index outside the grid.
    i = i < 1 ? 1 : (i > g.rows ? g.rows : i);
    j = j < 1 ? 1 : (j > g.columns ? g.columns : j);
    if (lat == g.south + (i - 1) * g.latitudeSpacing && lon == g.west + (j - 1) * g.longitudeSpacing) {
        return readNodes(i, j, 1, &value);
    }
    if (g.rows < kBlock || g.columns < kBlock) return false;  // no 3 x 3 block to fit
    const std::int64_t ic = blockCentre(i, g.rows);
    const std::int64_t jc = blockCentre(j, g.columns);
    const double t = (lon - (g.west + static_cast<double>(jc - 2) * g.longitudeSpacing)) / g.longitudeSpacing;
    double rowValues[kBlock];
    for (int r = 0; r < kBlock; ++r) {
        double nodes[kBlock];
        if (!readNodes(ic - 1 + r, jc - 1, kBlock, nodes)) return false;
        rowValues[r] = quadraticThrough(t, nodes[0], nodes[1], nodes[2]);
    }
    const double u = (lat - (g.south + static_cast<double>(ic - 2) * g.latitudeSpacing)) / g.latitudeSpacing;
    value = quadraticThrough(u, rowValues[0], rowValues[1], rowValues[2]);
    return true;
}

}  // namespace

extern "C" {

int qmGeoid_initModelByFile(const char* path) noexcept {
    if (path == nullptr || path[0] == '\0') {
        closeModel();
        return kFailure;
    }
    return openModel(path) ? 0 : kFailure;
}

int qmGeoid_initModelByGeoid(int modelCode, const char* directory, double latitude,
                             double longitude, int eastFlag) noexcept {
    closeModel();
    const Family* family = familyOf(modelCode);
    double lat = 0.0;
    double lon = 0.0;
    if (family == nullptr || directory == nullptr ||
        !normalise(latitude, longitude, eastFlag, lat, lon)) {
        return kFailure;
    }
    return kb::callGuarded(kFailure, [&] {
        const kb::String path = bestTile(*family, kb::String(directory), lat, lon);
        if (path.empty()) return kFailure;
        return openModel(path.c_str()) ? 0 : kFailure;
    });
}

int qmGeoid_getUndulationAtLatLong(double* undulation, double latitude, double longitude,
                                   int eastFlag) noexcept {
    if (undulation == nullptr) return kFailure;
    *undulation = 0.0;
    double lat = 0.0;
    double lon = 0.0;
    if (!model.loaded || !normalise(latitude, longitude, eastFlag, lat, lon) ||
        !inside(model.grid, lat, lon)) {
        return kFailure;
    }
    double value = 0.0;
    if (!interpolate(lat, lon, value)) return kFailure;
    *undulation = value;
    return 0;
}

double qmGeoid_biQuadraticFit(double t, double f0, double f1, double f2) noexcept {
    return quadraticThrough(t, f0, f1, f2);
}

int qmGeoid_closeModel(void) noexcept {
    closeModel();
    return 0;
}

}  // extern "C"
