// Walks along point runs: thinning of collinear points, the tolerance filter, the parallel
// copy and the projection of a point on the tangents of a run.
#include <cmath>
#include <cstring>

#include "base/boundary.hpp"
#include "base/heap.hpp"
#include "base/optional_output.hpp"
#include "geometry/plane_math.hpp"
#include "geometry/point_math.hpp"
#include "korvelbase/mem.h"
#include "korvelbase/qmmath.h"
#include "korvelbase/qmpoint.h"

namespace {

constexpr double kSameStation = 1e-6;       // plan distance below which points coincide
constexpr double kMitreFloor = 1e-12;       // 1 + cos(turn) below this: the run turns back
constexpr double kTangentReach = 1000.0;    // length of the tangent line drawn at each entry
constexpr double kOnEntryDistance = 0.001;  // query point this close to an entry: a candidate
constexpr int kMaxTangentCandidates = 20;

// Plan distance of p from the line a -> b; the distance to a when a and b coincide.
double offsetFromChord(const Point3d& p, const Point3d& a, const Point3d& b) noexcept {
    double offset = 0.0;
    if (kb::plane::signedOffsetFromLine(p.x, p.y, a.x, a.y, b.x, b.y, &offset))
        return std::fabs(offset);
    return kb::points::planDistance(p, a);
}

// True when every entry strictly between `from` and `to` (indices into `order`, or the run
// itself when `order` is null) lies within the tolerance of the chord between them.
bool chordHolds(const Point3d* points, const int* order, int from, int to,
                double tolerance) noexcept {
    const Point3d& a = points[order ? order[from] : from];
    const Point3d& b = points[order ? order[to] : to];
    for (int j = from + 1; j < to; ++j)
        if (offsetFromChord(points[order ? order[j] : j], a, b) > tolerance) return false;
    return true;
}

struct Direction {
    double x, y;
};

Direction rightNormal(const Point3d& from, const Point3d& to) noexcept {
    const double dx = to.x - from.x, dy = to.y - from.y, length = std::hypot(dx, dy);
    return {dy / length, -dx / length};
}

// Side of q relative to the tangent line at entry k (0 when undefined or on the line).
int tangentSide(const Point3d& q, const Point3d& p, const Point3d& t) noexcept {
    double ux = t.x - p.x, uy = t.y - p.y;
    if (qmMath_normalizeVector2d(&ux, &uy) != 0) return 0;
    double ex = 0.0, ey = 0.0;
    qmMath_locateByDistanceTangent2d(&ex, &ey, p.x, p.y, kTangentReach, ux, uy);
    return qmMath_sideOfLine2d(q.x, q.y, p.x, p.y, ex, ey);
}

struct TangentWalk {
    const Point3d* query;
    const Point3d* points;
    const Point3d* tangents;
    const double* distances;
    int count;
    int found[kMaxTangentCandidates];
    int foundCount = 0;

    bool record(int k) noexcept {
        for (int i = 0; i < foundCount; ++i)
            if (found[i] == k) return true;
        if (foundCount == kMaxTangentCandidates) return false;
        found[foundCount++] = k;
        return true;
    }
    bool isCandidate(int k, int* side) const noexcept {
        const int s = tangentSide(*query, points[k], tangents[k]);
        const bool changed = *side != 0 && s != 0 && s != *side;
        if (s != 0) *side = s;
        return changed || kb::points::planDistance(*query, points[k]) <= kOnEntryDistance;
    }
    // Walks from `start` by `step`; stops at the first candidate when `firstOnly`, and, once a
    // candidate exists, where the distance gap to the hint exceeds the last candidate's gap.
    void walk(int start, int step, bool firstOnly, const double* hint) noexcept {
        int side = 0;
        for (int k = start; k >= 0 && k < count; k += step) {
            if (hint != nullptr && foundCount > 0) {
                const double lastGap = std::fabs(distances[found[foundCount - 1]] - *hint);
                if (std::fabs(distances[k] - *hint) > lastGap) return;
            }
            if (isCandidate(k, &side)) {
                if (!record(k) || firstOnly) return;
            }
        }
    }
};

}  // namespace

extern "C" {

int qmPointArray_removeCoLinearPoints2d(Point3d* points, int* newCount, int count,
                                        double tolerance) noexcept {
    if (points == nullptr || count < 3) return 0;
    // Compaction in place: a survivor is written at or before its own index, and every later
    // test reads only entries at or after the current anchor, which are not yet overwritten.
    Point3d anchor = points[0];
    int anchorIndex = 0, written = 1;
    for (int k = 0; k + 2 < count; ++k) {
        bool keepMiddle = false;
        for (int j = anchorIndex + 1; j < k + 2 && !keepMiddle; ++j)
            keepMiddle = offsetFromChord(points[j], anchor, points[k + 2]) > tolerance;
        if (keepMiddle) {
            anchor = points[k + 1];
            anchorIndex = k + 1;
            points[written++] = anchor;
        }
    }
    points[written++] = points[count - 1];
    kb::storeOptional(newCount, written);
    return 0;
}

int qmPointArray_filterByHorVerTolerance2d(int* keep, const Point3d* points, const int* locks,
                                           int count, double horizontalTolerance,
                                           double verticalTolerance) noexcept {
    if (keep == nullptr || points == nullptr || count < 1) return ERR_FAILURE;
    for (int i = 0; i < count; ++i) keep[i] = 1;
    if (!(horizontalTolerance > 0.0) || count < 3) return 0;
    return kb::callGuarded(ERR_FAILURE, [&]() {
        auto locked = [&](int i) { return locks != nullptr && locks[i] != 0; };
        // Stations: points not within kSameStation of their predecessor (locked ones stay).
        kb::Vector<int> stations;
        stations.reserve(static_cast<std::size_t>(count));
        stations.push_back(0);
        for (int i = 1; i < count; ++i) {
            const bool twin = kb::points::planDistance(points[i], points[i - 1]) < kSameStation;
            if (twin && !locked(i) && i != count - 1)
                keep[i] = 0;
            else
                stations.push_back(i);
        }
        const int m = static_cast<int>(stations.size());
        const bool testElevation = verticalTolerance != 0.0;
        int anchor = 0;
        for (int k = 0; k + 2 < m; ++k) {
            const int middle = stations[k + 1];
            bool drop = !locked(middle) &&
                        chordHolds(points, stations.data(), anchor, k + 2, horizontalTolerance);
            if (drop && testElevation) {
                const double z = points[middle].z;
                drop = std::fabs(z - points[stations[k]].z) <= verticalTolerance &&
                       std::fabs(z - points[stations[k + 2]].z) <= verticalTolerance;
            }
            if (drop)
                keep[middle] = 0;
            else
                anchor = k + 1;
        }
        return 0;
    });
}

int qmPointArray_copyParallel2d(Point3d* destination, const Point3d* source, int count,
                                double distance) noexcept {
    if (destination == nullptr || source == nullptr || count < 2) return ERR_FAILURE;
    // nextSegment[i]: the first j >= i with source[j] != source[j+1] in plan (-1: none).
    int* nextSegment = kb::heap::allocateArray<int>(static_cast<std::size_t>(count));
    Point3d* result = kb::heap::allocateArray<Point3d>(static_cast<std::size_t>(count));
    int status = ERR_FAILURE;
    if (nextSegment != nullptr && result != nullptr) {
        int next = -1;
        nextSegment[count - 1] = -1;
        for (int i = count - 2; i >= 0; --i) {
            if (!qmPoint_equal2d(&source[i], &source[i + 1])) next = i;
            nextSegment[i] = next;
        }
        int firstSegment = nextSegment[0], lastSegment = -1;
        for (int i = 0; i + 1 < count; ++i)
            if (!qmPoint_equal2d(&source[i], &source[i + 1])) lastSegment = i;
        const bool ring = firstSegment >= 0 && qmPoint_equal2d(&source[0], &source[count - 1]);
        status = firstSegment < 0 ? ERR_FAILURE : 0;
        int previousSegment = ring ? lastSegment : -1;
        for (int i = 0; i < count && status == 0; ++i) {
            int following = i + 1 < count ? nextSegment[i] : -1;
            if (following < 0 && ring) following = firstSegment;
            double ox = 0.0, oy = 0.0;
            if (previousSegment >= 0 && following >= 0) {
                const Direction a = rightNormal(source[previousSegment], source[previousSegment + 1]);
                const Direction b = rightNormal(source[following], source[following + 1]);
                const double denominator = 1.0 + a.x * b.x + a.y * b.y;
                if (denominator < kMitreFloor) {
                    status = ERR_FAILURE;
                    break;
                }
                ox = (a.x + b.x) / denominator;
                oy = (a.y + b.y) / denominator;
            } else {
                const int s = previousSegment >= 0 ? previousSegment : following;
                const Direction a = rightNormal(source[s], source[s + 1]);
                ox = a.x;
                oy = a.y;
            }
            result[i] = Point3d{source[i].x + distance * ox, source[i].y + distance * oy,
                                source[i].z};
            if (i + 1 < count && !qmPoint_equal2d(&source[i], &source[i + 1])) previousSegment = i;
        }
        if (status == 0)
            std::memmove(destination, result, static_cast<std::size_t>(count) * sizeof(Point3d));
    }
    kb::heap::release(nextSegment);
    kb::heap::release(result);
    return status;
}

int qmPoint_projectPointOnTangentUsingXYTanDistArraysIteration(
    Point3d** out, const double* hint, const Point3d* point, const Point3d* points,
    const Point3d* tangentPoints, const double* distances, int count) noexcept {
    if (out == nullptr || point == nullptr || points == nullptr || tangentPoints == nullptr ||
        distances == nullptr || count < 1)
        return 0;
    TangentWalk w{point, points, tangentPoints, distances, count, {}, 0};
    if (hint == nullptr) {
        w.walk(0, 1, false, nullptr);
    } else {
        int start = 0;
        for (int k = 0; k < count; ++k)
            if (distances[k] <= *hint) start = k;
        w.walk(start, -1, true, hint);
        w.walk(start, 1, true, hint);
        if (w.foundCount == 0) w.walk(0, 1, false, nullptr);
        if (w.foundCount > 1) {
            int best = 0;
            for (int i = 1; i < w.foundCount; ++i)
                if (std::fabs(distances[w.found[i]] - *hint) <
                    std::fabs(distances[w.found[best]] - *hint))
                    best = i;
            w.found[0] = w.found[best];
            w.foundCount = 1;
        }
    }
    if (w.foundCount == 0) return 0;
    auto* result = static_cast<Point3d*>(
        qmMem_malloc(static_cast<std::size_t>(w.foundCount) * sizeof(Point3d)));
    if (result == nullptr) return 0;
    for (int i = 0; i < w.foundCount; ++i) result[i] = points[w.found[i]];
    *out = result;
    return w.foundCount;
}

}  // extern "C"
