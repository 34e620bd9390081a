// Point arrays: copies, polygon area and orientation, containment, closing, centroid and the
// removal of redundant and collinear points.
#include <cmath>
#include <cstring>
#include <utility>

#include "base/boundary.hpp"
#include "base/heap.hpp"
#include "base/optional_output.hpp"
#include "geometry/plane_math.hpp"
#include "geometry/point_math.hpp"
#include "korvelbase/mem.h"
#include "korvelbase/qmpoint.h"

namespace {

constexpr double kCentroidAreaFloor = 1e-10;

using kb::points::classifyEdge;
using kb::points::EdgeVerdict;

constexpr int kOutside = 0, kInside = 1, kOnBoundary = 2;

int containment(const Point3d* ring, int count, double px, double py) noexcept {
    bool inside = false;
    const Point3d* previous = &ring[count - 1];
    for (int i = 0; i < count; ++i) {
        const Point3d* current = &ring[i];
        // Quick rejection of edges entirely above or below the ray (the common case).
        if ((previous->y < py && current->y < py) || (previous->y > py && current->y > py)) {
            previous = current;
            continue;
        }
        const EdgeVerdict verdict = classifyEdge(*previous, *current, px, py);
        if (verdict == EdgeVerdict::boundary) return kOnBoundary;
        if (verdict == EdgeVerdict::crossing) inside = !inside;
        previous = current;
    }
    return inside ? kInside : kOutside;
}

// Index of the ring's edges by height: the y extent of the ring is cut into equal buckets and
// each edge is listed in every bucket its y range overlaps.  The bucket of a height is a
// monotone function of it, so every edge whose closed y range contains the height is listed
// in that height's bucket; testing those edges alone gives the full test's result.
class EdgeIndex {
public:
    bool build(const Point3d* ring, int count) {
        ring_ = ring;
        count_ = count;
        yMin_ = yMax_ = ring[0].y;
        for (int i = 1; i < count; ++i) {
            yMin_ = std::fmin(yMin_, ring[i].y);
            yMax_ = std::fmax(yMax_, ring[i].y);
        }
        if (!std::isfinite(yMin_) || !std::isfinite(yMax_)) return false;
        const double span = yMax_ - yMin_;
        // The largest bucket count (halving from the edge count) whose listings stay within a
        // fixed multiple of the edge count, so memory stays linear for any ring.
        const std::size_t budget = kListingsPerEdge * static_cast<std::size_t>(count) + 64;
        std::size_t buckets = static_cast<std::size_t>(count);
        for (;;) {
            scale_ = span > 0.0 ? static_cast<double>(buckets) / span : 0.0;
            if (!std::isfinite(scale_)) scale_ = 0.0;
            buckets_ = buckets;
            if (buckets == 1 || listingCount() <= budget) break;
            buckets /= 2;
        }
        start_.assign(buckets_ + 1, 0);
        for (int i = 0; i < count_; ++i) {
            const auto [lo, hi] = bucketRange(i);
            for (std::size_t b = lo; b <= hi; ++b) ++start_[b + 1];
        }
        for (std::size_t b = 0; b < buckets_; ++b) start_[b + 1] += start_[b];
        edges_.assign(start_[buckets_], 0);
        kb::Vector<std::size_t> fill(start_.begin(), start_.end() - 1);
        for (int i = 0; i < count_; ++i) {
            const auto [lo, hi] = bucketRange(i);
            for (std::size_t b = lo; b <= hi; ++b) edges_[fill[b]++] = i;
        }
        return true;
    }

    int classify(double px, double py) const noexcept {
        if (!(py >= yMin_ && py <= yMax_)) return kOutside;  // also NaN
        const std::size_t b = bucketOf(py);
        bool inside = false;
        for (std::size_t k = start_[b]; k < start_[b + 1]; ++k) {
            const int i = edges_[k];
            const Point3d& previous = ring_[i == 0 ? count_ - 1 : i - 1];
            const EdgeVerdict verdict = classifyEdge(previous, ring_[i], px, py);
            if (verdict == EdgeVerdict::boundary) return kOnBoundary;
            if (verdict == EdgeVerdict::crossing) inside = !inside;
        }
        return inside ? kInside : kOutside;
    }

private:
    static constexpr std::size_t kListingsPerEdge = 8;

    std::size_t bucketOf(double y) const noexcept {
        const double position = std::floor((y - yMin_) * scale_);
        if (!(position > 0.0)) return 0;
        const std::size_t b = static_cast<std::size_t>(
            std::fmin(position, static_cast<double>(buckets_ - 1)));
        return b;
    }
    // Edge i runs from entry i-1 (the last entry for i = 0) to entry i.
    std::pair<std::size_t, std::size_t> bucketRange(int i) const noexcept {
        const double y0 = ring_[i == 0 ? count_ - 1 : i - 1].y, y1 = ring_[i].y;
        return {bucketOf(std::fmin(y0, y1)), bucketOf(std::fmax(y0, y1))};
    }
    std::size_t listingCount() const noexcept {
        std::size_t total = 0;
        for (int i = 0; i < count_; ++i) {
            const auto [lo, hi] = bucketRange(i);
            total += hi - lo + 1;
        }
        return total;
    }

    const Point3d* ring_ = nullptr;
    int count_ = 0;
    double yMin_ = 0.0, yMax_ = 0.0, scale_ = 0.0;
    std::size_t buckets_ = 1;
    kb::Vector<std::size_t> start_;
    kb::Vector<int> edges_;
};

int withinVerdict(bool anyIn, bool anyOut) noexcept {
    if (anyIn && anyOut) return 2;
    return anyIn ? 1 : 0;
}

}  // namespace

extern "C" {

int qmPointArray_copy(Point3d* destination, int count, const Point3d* source) noexcept {
    if (destination == nullptr || source == nullptr || count < 1) return ERR_FAILURE;
    std::memmove(destination, source, static_cast<std::size_t>(count) * sizeof(Point3d));
    return 0;
}

int qmPoint_copyMultiple(Point3d* destination, const Point3d* source, int count) noexcept {
    return qmPointArray_copy(destination, count, source);
}

int qmPointArray_clone(Point3d** out, const Point3d* source, int count) noexcept {
    if (out == nullptr || source == nullptr || count < 1) return ERR_FAILURE;
    auto* copy =
        static_cast<Point3d*>(qmMem_calloc(static_cast<std::size_t>(count), sizeof(Point3d)));
    if (copy == nullptr) return ERR_FAILURE;
    std::memcpy(copy, source, static_cast<std::size_t>(count) * sizeof(Point3d));
    *out = copy;
    return 0;
}

int qmPointArray_free(Point3d** array) noexcept {
    if (array == nullptr) return ERR_FAILURE;
    if (*array == nullptr) return 0;
    void* block = *array;
    const int status = qmMem_freeAndClear(&block);
    *array = nullptr;
    return status;
}

int qmPoint_freeArray(Point3d** array) noexcept { return qmPointArray_free(array); }

int qmPointArray_setZ(Point3d* points, int count, double z) noexcept {
    if (points == nullptr) return ERR_FAILURE;
    qmPoint_setZvalue(count, points, z);
    return 0;
}

int qmPoint_setZValue(Point3d* points, int count, double z) noexcept {
    return qmPointArray_setZ(points, count, z);
}

void qmPointArray_reverse(Point3d* points, int count) noexcept {
    if (points == nullptr) return;
    for (int i = 0, j = count - 1; i < j; ++i, --j) qmPoint_swap(&points[i], &points[j]);
}

int qmPointArray_getCoordsByIndex2d(const Point3d* points, double* x, double* y,
                                    int index) noexcept {
    if (points == nullptr || x == nullptr || y == nullptr) return ERR_FAILURE;
    *x = points[index].x;
    *y = points[index].y;
    return 0;
}

int qmPoint_getCoordsFromPointArray(double* x, double* y, const Point3d* points,
                                    int index) noexcept {
    return qmPointArray_getCoordsByIndex2d(points, x, y, index);
}

int qmPointArray_blockPointsFromDiagonal(Point3d* out, const Point3d* a,
                                         const Point3d* b) noexcept {
    if (out == nullptr || a == nullptr || b == nullptr) return ERR_FAILURE;
    const Point3d pa = *a, pb = *b;
    out[0] = pa;
    out[1] = Point3d{pb.x, pa.y, pa.z};
    out[2] = pb;
    out[3] = Point3d{pa.x, pb.y, pb.z};
    out[4] = pa;
    return 0;
}

Point3d* qmPoint_blockPointsFromDiagonal(Point3d* out, const Point3d* a,
                                         const Point3d* b) noexcept {
    return qmPointArray_blockPointsFromDiagonal(out, a, b) == 0 ? out : nullptr;
}

int qmPointArray_computeSimplePolygonAlgebricArea2d(const Point3d* points, int count,
                                                    double* area) noexcept {
    if (points == nullptr || area == nullptr) return ERR_FAILURE;
    double twice = 0.0;
    for (int i = 0; i + 1 < count; ++i)
        twice += points[i + 1].x * points[i].y - points[i].x * points[i + 1].y;
    *area = 0.5 * twice;
    return 0;
}

int qmPointArray_computeSimplePolygonArea2d(const Point3d* points, int count,
                                            double* area) noexcept {
    double signedArea = 0.0;
    qmPointArray_computeSimplePolygonAlgebricArea2d(points, count, &signedArea);
    kb::storeOptional(area, std::fabs(signedArea));
    return 0;
}

int qmPoint_computeSimplePolygonArea2d(double* area, const Point3d* points, int count) noexcept {
    return qmPointArray_computeSimplePolygonArea2d(points, count, area);
}

int qmPointArray_getPolygonDirection(const Point3d* points, int count, int* clockwise) noexcept {
    if (clockwise == nullptr) return 0;
    *clockwise = 0;
    if (points == nullptr) return 0;
    double sum = 0.0;
    for (int i = 1; i < count; ++i)
        sum += (points[i].x - points[i - 1].x) *
               ((points[i].y - points[i - 1].y) * 0.5 + points[i - 1].y);
    *clockwise = sum >= 0.0 ? 1 : 0;
    return 0;
}

int qmPointArray_computeConvexHull2d(const Point3d*, int, Point3d**, int*) noexcept {
    return ERR_FAILURE;  // not provided by this library
}

int qmPoint_computeConvexHull2d(const Point3d*, int, Point3d**, int*) noexcept {
    return ERR_FAILURE;
}

int qmPointArray_isPointInsidePolygon(const Point3d* polygon, int count,
                                      const Point3d* point) noexcept {
    if (polygon == nullptr || point == nullptr || count < 1) return kOutside;
    return containment(polygon, count, point->x, point->y);
}

int qmPoint_isInsidePolygon(const Point3d* point, const Point3d* polygon, int count) noexcept {
    return qmPointArray_isPointInsidePolygon(polygon, count, point);
}

int qmPointArray_isArrayWithinPolygon(int* verdict, const Point3d* points, int count,
                                      const Point3d* polygon, int polygonCount) noexcept {
    if (verdict == nullptr) return ERR_FAILURE;
    *verdict = -1;
    if (points == nullptr || count < 1 || polygon == nullptr || polygonCount < 1)
        return ERR_FAILURE;
    return kb::callGuarded(ERR_FAILURE, [&]() {
        EdgeIndex index;
        bool anyIn = false, anyOut = false;
        if (index.build(polygon, polygonCount)) {
            for (int i = 0; i < count && !(anyIn && anyOut); ++i) {
                const int where = index.classify(points[i].x, points[i].y);
                (where == kOutside ? anyOut : anyIn) = true;
            }
        } else {  // a ring with non-finite heights: the plain test, point by point
            for (int i = 0; i < count && !(anyIn && anyOut); ++i) {
                const int where = containment(polygon, polygonCount, points[i].x, points[i].y);
                (where == kOutside ? anyOut : anyIn) = true;
            }
        }
        *verdict = withinVerdict(anyIn, anyOut);
        return 0;
    });
}

int qmPointArray_isClosed(const Point3d* points, int count, double tolerance) noexcept {
    if (points == nullptr || count < 1) return 0;
    return qmPoint_nearEqual2d(&points[0], &points[count - 1], tolerance);
}

int qmPointArray_closePolygon(Point3d** points, int* count, double tolerance) noexcept {
    if (points == nullptr || *points == nullptr || count == nullptr || *count < 1)
        return ERR_FAILURE;
    Point3d* ring = *points;
    const int n = *count;
    if (qmPointArray_isClosed(ring, n, tolerance)) {
        ring[n - 1] = ring[0];
        return 0;
    }
    auto* grown = static_cast<Point3d*>(
        qmMem_realloc(ring, (static_cast<std::size_t>(n) + 1) * sizeof(Point3d)));
    if (grown == nullptr) return ERR_FAILURE;
    grown[n] = grown[0];
    *points = grown;
    *count = n + 1;
    return 0;
}

int qmPointArray_getCentroid(const Point3d* points, int count, Point3d* centroid) noexcept {
    if (points == nullptr || centroid == nullptr || count < 1) return ERR_FAILURE;
    double yMin = points[0].y;
    for (int i = 1; i < count; ++i) yMin = std::fmin(yMin, points[i].y);
    double area = 0.0, momentX = 0.0, momentY = 0.0;
    for (int i = 0; i < count; ++i) {
        const Point3d& p0 = points[i];
        const Point3d& p1 = points[i + 1 < count ? i + 1 : 0];
        area += (p1.x - p0.x) * (p1.y + p0.y - yMin) * 0.5;
        momentX += (p1.x * p1.x + (p1.x + p0.x) * p0.x) * (p1.y - p0.y) / 6.0;
        momentY += (p0.y * p0.y + (p1.y + p0.y) * p1.y) * (p1.x - p0.x) / 6.0;
    }
    if (std::fabs(area) < kCentroidAreaFloor)
        *centroid = Point3d{0.0, 0.0, 0.0};
    else
        *centroid = Point3d{-momentX / area, momentY / area, 0.0};
    return 0;
}

int qmPointArray_removeRedundantPoints(Point3d* points, int* newCount, int count,
                                       const Point3d* reference, double tolerance) noexcept {
    if (points == nullptr || count < 1) return ERR_FAILURE;
    // One compaction pass: the same result as shifting the tail down at each removal.
    int kept = 0;
    Point3d lastKept{};
    bool haveLast = false;
    if (reference != nullptr) {
        lastKept = *reference;
        haveLast = true;
    }
    for (int i = 0; i < count; ++i) {
        if (haveLast && qmPoint_nearEqual2d(&lastKept, &points[i], tolerance)) continue;
        lastKept = points[i];
        haveLast = true;
        points[kept++] = lastKept;
    }
    kb::storeOptional(newCount, kept);
    return 0;
}

int qmPoint_removeRedundantPointsFromArray(int* newCount, Point3d* points,
                                           const Point3d* reference, int count,
                                           double tolerance) noexcept {
    return qmPointArray_removeRedundantPoints(points, newCount, count, reference, tolerance);
}

}  // extern "C"
