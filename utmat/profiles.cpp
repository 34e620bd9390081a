// The difference of two profiles: lengths and areas above and below, crossings and zones.
#include <cmath>
#include <cstring>

#include "base/boundary.hpp"
#include "base/heap.hpp"
#include "base/optional_output.hpp"
#include "korvelbase/blockarray.h"
#include "korvelbase/utmat_profiles.h"
#include "korvelbase/utmat_segments.h"
#include "utmat/kernel_state.hpp"
#include "utmat/segment_math.hpp"

namespace {

constexpr int kBeforeMask = 0xFF;
constexpr int kAfterMask = 0x70000;

int beforeCode(int positionOfFirst) {
    return positionOfFirst > 0 ? UTMAT_SIDE_BEFORE_ABOVE
                               : (positionOfFirst < 0 ? UTMAT_SIDE_BEFORE_BELOW : UTMAT_SIDE_BEFORE_LEVEL);
}

int afterCode(int positionOfFirst) {
    return positionOfFirst > 0 ? UTMAT_SIDE_AFTER_ABOVE
                               : (positionOfFirst < 0 ? UTMAT_SIDE_AFTER_BELOW : UTMAT_SIDE_AFTER_LEVEL);
}

struct Difference {
    double lengthAbove = 0.0;
    double areaAbove = 0.0;
    double lengthBelow = 0.0;
    double areaBelow = 0.0;
    kb::Vector<Point2d> crossings;
    kb::Vector<int32_t> sides;
    kb::Vector<double> zones{0.0};  // the open zone is the last

    // A piece from xa to xb with both profiles' levels at its ends.
    void account(double xa, double xb, double y1a, double y1b, double y2a, double y2b) {
        const double width = xb - xa;
        const double mean = (y1a + y1b) / 2.0 - (y2a + y2b) / 2.0;
        const double area = UTMAT_Egal(mean, 0.0, kb::utmat::calculationPrecision()) ? 0.0 : mean * width;
        if (mean > 0.0) {
            lengthAbove += width;
            areaAbove += std::fabs(area);
        } else {
            lengthBelow += width;
            areaBelow += std::fabs(area);
        }
        zones.back() += area;
    }

    void cross(const Point2d& at, int sideCode) {
        const bool repeat = !crossings.empty() && (sides.back() & kAfterMask) == UTMAT_SIDE_AFTER_LEVEL &&
                            UTMAT_PointsIdentiques(&crossings.back(), &at, kb::utmat::calculationPrecision());
        if (repeat) return;
        crossings.push_back(at);
        sides.push_back(sideCode);
        zones.push_back(0.0);
    }
};

Difference compareProfiles(const Point2d* p1, int n1, const Point2d* p2, int n2) {
    Difference d;
    int i = 0;
    int k = 0;
    while (i + 1 < n1 && k + 1 < n2) {
        const Point2d* s1 = p1 + i;
        const Point2d* s2 = p2 + k;
        const bool vertical1 = s1[0].x == s1[1].x;
        const bool vertical2 = s2[0].x == s2[1].x;
        if (vertical1 || vertical2) {
            if (vertical1) ++i;
            if (vertical2) ++k;
            continue;
        }
        const kb::utmat::SegmentComparison c = kb::utmat::compareProfileSegments(s1, s2);
        if (c.rangeWritten) {
            const double lowStart = std::fmin(s1[0].x, s2[0].x);
            const double highEnd = std::fmax(s1[1].x, s2[1].x);
            if (c.crosses != 0 && c.crossing.x > lowStart && !(c.crossing.x > highEnd)) {
                d.account(c.x0, c.crossing.x, c.firstY0, c.crossing.y, c.secondY0, c.crossing.y);
                // The comparison gives the second profile's side; profile 1 is on the other.
                d.cross(c.crossing, beforeCode(-c.sideBefore) | afterCode(-c.sideAfter));
                d.account(c.crossing.x, c.x1, c.crossing.y, c.firstY1, c.crossing.y, c.secondY1);
            } else {
                d.account(c.x0, c.x1, c.firstY0, c.firstY1, c.secondY0, c.secondY1);
            }
        }
        // Advance the segment that ends first (both on a tie).
        const double end1 = s1[1].x;
        const double end2 = s2[1].x;
        if (end1 <= end2) ++i;
        if (end2 <= end1) ++k;
    }
    return d;
}

// Replaces the sides next to zones of zero area by level, then drops crossings level on both
// sides.
void areaCheck(Difference& d) {
    const double precision = kb::utmat::calculationPrecision();
    for (std::size_t k = 0; k < d.crossings.size(); ++k) {
        int code = d.sides[k];
        const int before = code & kBeforeMask;
        const int after = code & kAfterMask;
        if (before != UTMAT_SIDE_BEFORE_LEVEL && UTMAT_Egal(d.zones[k], 0.0, precision)) {
            code = (code & ~kBeforeMask) | UTMAT_SIDE_BEFORE_LEVEL;
        }
        if (after != UTMAT_SIDE_AFTER_LEVEL && UTMAT_Egal(d.zones[k + 1], 0.0, precision)) {
            code = (code & ~kAfterMask) | UTMAT_SIDE_AFTER_LEVEL;
        }
        d.sides[k] = code;
    }
    std::size_t kept = 0;
    for (std::size_t k = 0; k < d.crossings.size(); ++k) {
        const bool levelBoth = (d.sides[k] & UTMAT_SIDE_BEFORE_LEVEL) != 0 && (d.sides[k] & UTMAT_SIDE_AFTER_LEVEL) != 0;
        if (levelBoth) continue;
        d.crossings[kept] = d.crossings[k];
        d.sides[kept] = d.sides[k];
        ++kept;
    }
    d.crossings.resize(kept);
    d.sides.resize(kept);
}

// A block array holding a copy of values; false (error word set) when it cannot be made.
template <typename T>
bool toBlockArray(T** out, const kb::Vector<T>& values) {
    *out = nullptr;
    if (values.empty()) return true;
    void* block = nullptr;
    MEM_CreerTableau(&block, static_cast<int>(sizeof(T)), static_cast<int>(values.size()));
    kb::utmat::takeBlockArrayError();
    if (kb::utmat::failed() || block == nullptr) {
        kb::utmat::raiseError();
        return false;
    }
    std::memcpy(block, values.data(), values.size() * sizeof(T));
    *out = static_cast<T*>(block);
    return true;
}

struct Outputs {
    double* lengthAbove;
    double* areaAbove;
    double* lengthBelow;
    double* areaBelow;
    Point2d** crossings;
    int32_t** sides;
    int* count;
    double** zoneAreas;
};

void clearOutputs(const Outputs& o) {
    kb::storeOptional(o.lengthAbove, 0.0);
    kb::storeOptional(o.areaAbove, 0.0);
    kb::storeOptional(o.lengthBelow, 0.0);
    kb::storeOptional(o.areaBelow, 0.0);
    kb::storeOptional(o.count, 0);
}

void run(const Point2d* p1, int n1, const Point2d* p2, int n2, const Outputs& o, bool checkAreas) {
    kb::utmat::enter();
    clearOutputs(o);
    if (p1 == nullptr || p2 == nullptr || n1 < 2 || n2 < 2) return;
    const int status = kb::callGuarded(ERR_FAILURE, [&] {
        Difference d = compareProfiles(p1, n1, p2, n2);
        if (checkAreas) areaCheck(d);
        kb::storeOptional(o.lengthAbove, d.lengthAbove);
        kb::storeOptional(o.areaAbove, d.areaAbove);
        kb::storeOptional(o.lengthBelow, d.lengthBelow);
        kb::storeOptional(o.areaBelow, d.areaBelow);
        if (o.crossings != nullptr && !toBlockArray(o.crossings, d.crossings)) return ERR_FAILURE;
        if (o.sides != nullptr && !toBlockArray(o.sides, d.sides)) return ERR_FAILURE;
        if (o.zoneAreas != nullptr && !toBlockArray(o.zoneAreas, d.zones)) return ERR_FAILURE;
        kb::storeOptional(o.count, static_cast<int>(d.crossings.size()));
        return 0;
    });
    if (status != 0) kb::utmat::raiseError();
}

}  // namespace

extern "C" {

void UTMAT_CalculerDifference2Polylignes(const Point2d* profile1, int n1, const Point2d* profile2, int n2,
                                         double* lengthAbove, double* areaAbove, double* lengthBelow,
                                         double* areaBelow, Point2d** crossings, int32_t** sides,
                                         int* count) noexcept {
    run(profile1, n1, profile2, n2,
        {lengthAbove, areaAbove, lengthBelow, areaBelow, crossings, sides, count, nullptr}, false);
}

void UTMAT_CalculerDifference2PolylignesAvecControleSurface(
    const Point2d* profile1, int n1, const Point2d* profile2, int n2, double* lengthAbove, double* areaAbove,
    double* lengthBelow, double* areaBelow, Point2d** crossings, int32_t** sides, int* count) noexcept {
    run(profile1, n1, profile2, n2,
        {lengthAbove, areaAbove, lengthBelow, areaBelow, crossings, sides, count, nullptr}, true);
}

void UTMAT_CalculateDiff2Lines(const Point2d* profile1, int n1, const Point2d* profile2, int n2,
                               double* lengthAbove, double* areaAbove, double* lengthBelow, double* areaBelow,
                               Point2d** crossings, int32_t** sides, int* count, double** zoneAreas,
                               void* /*reserved1*/, void* /*reserved2*/, void* /*reserved3*/) noexcept {
    run(profile1, n1, profile2, n2,
        {lengthAbove, areaAbove, lengthBelow, areaBelow, crossings, sides, count, zoneAreas}, false);
}

}  // extern "C"
