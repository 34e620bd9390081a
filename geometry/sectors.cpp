// Angular sectors: the classification of two sectors shared by the kernel and the
// plane-mathematics family, the qmMath_ sector members built on it, and the range (bounding
// box) of a plane circular arc, whose extremes are the axis directions inside its sector.
#include "geometry/sectors.hpp"

#include <cmath>

#include "base/angles.hpp"
#include "korvelbase/constants.h"
#include "korvelbase/qmmath.h"

namespace kb::sectors {

namespace {

// Counter-clockwise offset of a direction from a reference direction, in [0, 2*pi]; an offset
// within tol below a full turn is folded to just below 0, so that a direction a hair
// clockwise of the reference counts as on it.
double offsetFrom(double reference, double direction, double tol) noexcept {
    const double offset = kb::normalizeAngle(direction - reference);
    return offset > dc_2pi - tol ? offset - dc_2pi : offset;
}

double clampSweep(double sweep, double most) noexcept {
    if (!(sweep > 0.0)) return 0.0;
    return sweep < most ? sweep : most;
}

Sector sectorFrom(double start, double sweep) noexcept { return {canonicalDirection(start), sweep}; }

bool isFullTurn(const Sector& s) noexcept { return s.sweep >= dc_2pi; }

// The offsets that decide the relation: where b starts and ends, counter-clockwise from a's
// start (start in (-tol, 2*pi - tol], end = start + b's sweep).
struct Placement {
    double start;
    double end;
};

Placement place(const Sector& a, const Sector& b, double tol) noexcept {
    const double start = offsetFrom(a.start, b.start, tol);
    return {start, start + b.sweep};
}

int classifyPlacement(const Sector& a, const Sector& b, const Placement& p, double tol) noexcept {
    if (isFullTurn(a)) return kFirstContainsSecond;
    if (isFullTurn(b)) return kSecondContainsFirst;
    const double span = a.sweep;
    if (p.end <= span + tol) return kFirstContainsSecond;
    const bool coversFromAStart = p.start <= tol && p.end >= span - tol;
    const bool coversAfterWrapping = p.end >= dc_2pi + span - tol;
    if (coversFromAStart || coversAfterWrapping) return kSecondContainsFirst;
    const bool startsInsideA = p.start <= span + tol;
    const bool wrapsBackIntoA = p.end >= dc_2pi - tol;
    if (startsInsideA && wrapsBackIntoA) return kOverlapAtBothEnds;
    if (startsInsideA) return kFirstThenSecond;
    if (wrapsBackIntoA) return kSecondThenFirst;
    return kDisjoint;
}

void append(SectorPair& pair, double start, double sweep) noexcept {
    pair.items[pair.count++] = sectorFrom(start, sweep);
}

void storeRelation(int* relation, int value) noexcept {
    if (relation != nullptr) *relation = value;
}

}  // namespace

bool toleranceUsable(double tol) noexcept { return std::isfinite(tol); }

double canonicalDirection(double angle) noexcept {
    const double direction = kb::normalizeAngle(angle);
    return direction >= dc_2pi ? 0.0 : direction;  // -tiny rounds up to a full turn
}

bool makeTwoSectors(double start1, double sweep1, double start2, double sweep2, double tol,
                    Sector& a, Sector& b) noexcept {
    return toleranceUsable(tol) && makeSector(start1, sweep1, tol, a) &&
           makeSector(start2, sweep2, tol, b);
}

void storePair(const SectorPair& pair, double* starts, double* sweeps, int* count) noexcept {
    *count = pair.count;
    for (int k = 0; k < pair.count; ++k) {
        starts[k] = pair.items[k].start;
        sweeps[k] = pair.items[k].sweep;
    }
}

bool makeSector(double start, double sweep, double tol, Sector& out) noexcept {
    if (!std::isfinite(start) || !std::isfinite(sweep)) return false;
    if (sweep < 0.0) {
        start += sweep;  // the clockwise sector ending at the given start
        sweep = -sweep;
    }
    if (sweep >= dc_2pi - std::fabs(tol)) sweep = dc_2pi;
    out = sectorFrom(start, sweep);
    return true;
}

int compareDirection(double direction, const Sector& sector, double tol) noexcept {
    if (isFullTurn(sector)) return -1;
    tol = std::fabs(tol);
    const double offset = offsetFrom(sector.start, direction, tol);
    if (std::fabs(offset) <= tol || std::fabs(offset - sector.sweep) <= tol) return 0;
    return offset < sector.sweep ? -1 : 1;
}

int classify(const Sector& a, const Sector& b, double tol) noexcept {
    tol = std::fabs(tol);
    return classifyPlacement(a, b, place(a, b, tol), tol);
}

SectorPair product(const Sector& a, const Sector& b, double tol, int* relation) noexcept {
    tol = std::fabs(tol);
    const Placement p = place(a, b, tol);
    const int kind = classifyPlacement(a, b, p, tol);
    storeRelation(relation, kind);
    const double most = a.sweep < b.sweep ? a.sweep : b.sweep;
    SectorPair result;
    switch (kind) {
        case kFirstContainsSecond: append(result, b.start, b.sweep); break;
        case kSecondContainsFirst: append(result, a.start, a.sweep); break;
        case kFirstThenSecond: append(result, b.start, clampSweep(a.sweep - p.start, most)); break;
        case kSecondThenFirst: append(result, a.start, clampSweep(p.end - dc_2pi, most)); break;
        case kOverlapAtBothEnds:
            append(result, a.start, clampSweep(p.end - dc_2pi, most));
            append(result, b.start, clampSweep(a.sweep - p.start, most));
            break;
        default: break;  // disjoint: nothing in common
    }
    return result;
}

SectorPair sum(const Sector& a, const Sector& b, double tol, int* relation) noexcept {
    tol = std::fabs(tol);
    const Placement p = place(a, b, tol);
    const int kind = classifyPlacement(a, b, p, tol);
    storeRelation(relation, kind);
    SectorPair result;
    switch (kind) {
        case kFirstContainsSecond: append(result, a.start, a.sweep); break;
        case kSecondContainsFirst: append(result, b.start, b.sweep); break;
        case kFirstThenSecond: append(result, a.start, clampSweep(p.end, dc_2pi)); break;
        case kSecondThenFirst:
            append(result, b.start, clampSweep(dc_2pi - p.start + a.sweep, dc_2pi));
            break;
        case kOverlapAtBothEnds: append(result, a.start, dc_2pi); break;
        default:  // disjoint: both, as they are
            append(result, a.start, a.sweep);
            append(result, b.start, b.sweep);
            break;
    }
    return result;
}

}  // namespace kb::sectors

namespace {

using kb::sectors::Sector;

// The axis directions east, north, west, south (k quarter turns), where a circle reaches its
// extreme x or y, and their unit vectors.
constexpr int kAxisDirections = 4;
constexpr double kAxisX[kAxisDirections] = {1.0, 0.0, -1.0, 0.0};
constexpr double kAxisY[kAxisDirections] = {0.0, 1.0, 0.0, -1.0};

int combineSectors(kb::sectors::Operation operation, double* starts, double* sweeps, int* count,
                   int* relation, double start1, double sweep1, double start2, double sweep2,
                   double tol) noexcept {
    if (count == nullptr) return ERR_FAILURE;
    *count = 0;
    if (starts == nullptr || sweeps == nullptr) return ERR_FAILURE;
    Sector a{}, b{};
    if (!kb::sectors::makeTwoSectors(start1, sweep1, start2, sweep2, tol, a, b)) {
        return ERR_FAILURE;
    }
    kb::sectors::storePair(operation(a, b, tol, relation), starts, sweeps, count);
    return 0;
}

}  // namespace

extern "C" {

int qmMath_compareDirectionToSector(int* position, double direction, double start, double sweep,
                                    double tol) noexcept {
    if (position == nullptr) return ERR_FAILURE;
    Sector sector{};
    if (!std::isfinite(direction) || !kb::sectors::toleranceUsable(tol) ||
        !kb::sectors::makeSector(start, sweep, tol, sector)) {
        return ERR_FAILURE;
    }
    *position = kb::sectors::compareDirection(direction, sector, tol);
    return 0;
}

int qmMath_calculateAngularSectorSum(double* starts, double* sweeps, int* count, int* relation,
                                     double start1, double sweep1, double start2, double sweep2,
                                     double tol) noexcept {
    return combineSectors(kb::sectors::sum, starts, sweeps, count, relation, start1, sweep1,
                          start2, sweep2, tol);
}

int qmMath_calculateAngularSectorProduct(double* starts, double* sweeps, int* count,
                                         int* relation, double start1, double sweep1,
                                         double start2, double sweep2, double tol) noexcept {
    return combineSectors(kb::sectors::product, starts, sweeps, count, relation, start1, sweep1,
                          start2, sweep2, tol);
}

int qmMath_arcGetRange2d(double* xmin, double* ymin, double* xmax, double* ymax, double cx,
                         double cy, double radius, double start, double sweep) noexcept {
    if (xmin == nullptr || ymin == nullptr || xmax == nullptr || ymax == nullptr) {
        return ERR_FAILURE;
    }
    Sector sector{};
    if (!std::isfinite(cx) || !std::isfinite(cy) || !std::isfinite(radius) || radius < 0.0 ||
        !kb::sectors::makeSector(start, sweep, 0.0, sector)) {
        return ERR_FAILURE;
    }
    // The end points bound the arc, and so does every axis direction the arc sweeps through.
    const double end = sector.start + sector.sweep;
    double lowX = cx + radius * std::cos(sector.start), highX = lowX;
    double lowY = cy + radius * std::sin(sector.start), highY = lowY;
    const auto include = [&](double x, double y) {
        lowX = std::fmin(lowX, x);
        highX = std::fmax(highX, x);
        lowY = std::fmin(lowY, y);
        highY = std::fmax(highY, y);
    };
    include(cx + radius * std::cos(end), cy + radius * std::sin(end));
    for (int k = 0; k < kAxisDirections; ++k) {
        const double axis = dc_2pi * k / kAxisDirections;
        if (kb::sectors::containsDirection(axis, sector, 0.0)) {
            include(cx + radius * kAxisX[k], cy + radius * kAxisY[k]);
        }
    }
    *xmin = lowX;
    *ymin = lowY;
    *xmax = highX;
    *ymax = highY;
    return 0;
}

}  // extern "C"
