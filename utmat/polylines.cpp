// Polyline queries: intersections (segment with polyline, polyline with polyline through a grid
// or by reference abscissae), the nearest and the first intersection, points on polylines and
// in contours, segments in contours, cutting a profile, and the filling of unknown elevations
// along a 3-D polyline.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "base/boundary.hpp"
#include "base/heap.hpp"
#include "base/optional_output.hpp"
#include "korvelbase/blockarray.h"
#include "korvelbase/utmat_polylines.h"
#include "korvelbase/utmat_segments.h"
#include "utmat/kernel_state.hpp"
#include "utmat/vector_math.hpp"

namespace {

using kb::utmat::failed;

constexpr int kScratchCapacity = 50;  // intersections kept per segment of polyline 1

// ---- stored points and the duplicate test ------------------------------------------------------

void prefetchLine(const void* address) {
#if defined(__GNUC__) || defined(__clang__)
    __builtin_prefetch(address);
#else
    (void)address;
#endif
}

// Answers "is a stored point identical to p at the tolerance?" (|p - q| <= |tol|) exactly as a
// scan of every stored point would, through a hash of square cells at least 2 |tol| wide: the
// points within the tolerance of p lie in the cells that p's tolerance square overlaps (one
// cell, or two or four near a cell's edge), and each stored point is filed in its own cell.
// Cells share buckets (chains through the stored points); a shared bucket costs time, never a
// wrong answer, since every candidate is measured.  A bitmap eight times finer than the buckets
// marks the cells in use, so that most queries (points far from every stored one) end in that
// small bitmap without touching the buckets or the points.
class StoredPoints {
public:
    // `scale`: the largest coordinate magnitude the points can have.  Cells are never narrower
    // than scale * 2^-30, so cell indices stay exact 32-bit integers.  `keptIn`: where the
    // caller keeps the points added (point k at keptIn[k]), or null to keep copies here.
    StoredPoints(double tol, double scale, const Point2d* keptIn) : tol_(std::fabs(tol)), keptIn_(keptIn) {
        const double width = std::fmax(2.0 * tol_ * (1.0 + kWidthSlack), std::fabs(scale) * kSmallestCellFraction);
        width_ = width > 0.0 ? width : 1.0;
        hashed_ = std::isfinite(width_) && std::isfinite(tol_);
        reach_ = tol_ + width_ * kRoundingAllowance;
    }

    bool containsNear(const Point2d& p) const {
        if (std::isnan(tol_)) return false;  // nothing is identical at a NaN tolerance
        for (const int k : unhashed_) {
            if (identical(p, pointAt(k))) return true;
        }
        if (next_.empty() || !hashed_) return false;
        // The cells of the square of half side `reach_` around p: one or two per axis.
        long long x0 = 0, x1 = 0, y0 = 0, y1 = 0;
        if (!cellIndex(p.x - reach_, x0) || !cellIndex(p.x + reach_, x1) || !cellIndex(p.y - reach_, y0) ||
            !cellIndex(p.y + reach_, y1)) {
            return scanAll(p);  // far outside the scale: measured against everything
        }
        if (buckets_.empty()) return false;
        for (long long gx = x0; gx <= x1; ++gx) {
            for (long long gy = y0; gy <= y1; ++gy) {
                const std::uint64_t h = hashOf(gx, gy);
                if (!marked(h)) continue;
                for (int k = buckets_[bucketOf(h)]; k >= 0; k = next_[static_cast<std::size_t>(k)]) {
                    if (identical(p, pointAt(k))) return true;
                }
            }
        }
        return false;
    }

    // Starts fetching what a query for p will read first (p's own cell), so that the query can
    // come a little later without waiting on memory.
    void prefetch(const Point2d& p) const {
        long long cx = 0, cy = 0;
        if (buckets_.empty() || !hashed_ || !cellIndex(p.x, cx) || !cellIndex(p.y, cy)) return;
        const std::uint64_t h = hashOf(cx, cy);
        prefetchLine(&inUse_[bitOf(h) / 64]);
        prefetchLine(&buckets_[bucketOf(h)]);
    }

    // Adds the next point (its index is the number of points added before it).
    void add(const Point2d& p) {
        long long cx = 0, cy = 0;
        const bool filed = !std::isnan(p.x) && !std::isnan(p.y);  // a NaN point is never identical
        const bool hashable = filed && hashed_ && cellIndex(p.x, cx) && cellIndex(p.y, cy);
        if (hashable && hashedCount_ + 1 > buckets_.size()) {
            rehash(std::max(kInitialBuckets, 2 * buckets_.size()));  // before the new point is counted
        }
        const int index = static_cast<int>(next_.size());
        next_.push_back(-1);
        if (keptIn_ == nullptr) copies_.push_back(p);
        if (!filed) return;
        if (!hashable) {
            unhashed_.push_back(index);
            return;
        }
        file(index, cx, cy);
        ++hashedCount_;
    }

private:
    // Cells are 2 |tol| (1 + 2^-8) wide at least, and a query reaches |tol| + width * 2^-10:
    // past the rounding of coordinate / width (below 2^-22 of a cell for indices under 2^31),
    // yet short of a cell, so a query spans at most two cells per axis.
    static constexpr double kWidthSlack = 1.0 / 256.0;
    static constexpr double kRoundingAllowance = 1.0 / 1024.0;
    static constexpr double kSmallestCellFraction = 0x1p-30;  // of the coordinate scale
    static constexpr double kLargestCellIndex = 2147483000.0;   // below 2^31
    static constexpr std::size_t kInitialBuckets = 64;
    static constexpr std::size_t kBitsPerBucket = 8;

    bool identical(const Point2d& p, const Point2d& q) const {
        return kb::utmat::norm(kb::utmat::difference(p, q)) <= tol_;
    }
    const Point2d& pointAt(int k) const {
        return keptIn_ != nullptr ? keptIn_[k] : copies_[static_cast<std::size_t>(k)];
    }
    bool scanAll(const Point2d& p) const {
        for (int k = 0; k < static_cast<int>(next_.size()); ++k) {
            if (identical(p, pointAt(k))) return true;
        }
        return false;
    }
    // The cell index of a coordinate; false when it is not finite or too far out.
    bool cellIndex(double v, long long& index) const {
        const double g = std::floor(v / width_);
        if (!(std::fabs(g) < kLargestCellIndex)) return false;
        index = static_cast<long long>(g);
        return true;
    }
    static std::uint64_t hashOf(long long cx, long long cy) {
        std::uint64_t h = (static_cast<std::uint64_t>(cx) << 32 ^ static_cast<std::uint32_t>(cy)) * 0x9E3779B97F4A7C15ull;
        return h ^ h >> 31;
    }
    std::size_t bucketOf(std::uint64_t h) const { return static_cast<std::size_t>(h) & (buckets_.size() - 1); }
    // The cell's bit: the bucket's index with two more bits of the hash.
    std::size_t bitOf(std::uint64_t h) const {
        return static_cast<std::size_t>(h) & (kBitsPerBucket * buckets_.size() - 1);
    }
    bool marked(std::uint64_t h) const {
        const std::size_t bit = bitOf(h);
        return (inUse_[bit / 64] >> (bit % 64) & 1u) != 0;
    }
    void file(int index, long long cx, long long cy) {
        const std::uint64_t h = hashOf(cx, cy);
        const std::size_t bit = bitOf(h);
        inUse_[bit / 64] |= std::uint64_t{1} << (bit % 64);
        int& head = buckets_[bucketOf(h)];
        next_[static_cast<std::size_t>(index)] = head;
        head = index;
    }
    void rehash(std::size_t count) {
        buckets_.assign(count, -1);
        inUse_.assign(kBitsPerBucket * count / 64, 0);
        for (int k = 0; k < static_cast<int>(next_.size()); ++k) {
            const Point2d& p = pointAt(k);
            long long cx = 0, cy = 0;
            if (!std::isnan(p.x) && !std::isnan(p.y) && cellIndex(p.x, cx) && cellIndex(p.y, cy)) file(k, cx, cy);
        }
    }

    double tol_;
    double width_ = 1.0;
    double reach_ = 0.0;
    bool hashed_ = false;
    const Point2d* keptIn_;
    kb::Vector<Point2d> copies_;  // the points, when the caller does not keep them
    kb::Vector<int> next_;        // per point: the next point of the same bucket; -1 ends the chain
    kb::Vector<int> unhashed_;  // points kept outside the cells
    kb::Vector<int> buckets_;   // first point of each bucket's chain; a power of two long
    kb::Vector<std::uint64_t> inUse_;  // one bit per (cell hash modulo 8 buckets) in use
    std::size_t hashedCount_ = 0;
};

// The largest coordinate magnitude of a polyline (the scale of its cells).
double coordinateScale(const Point2d* polyline, int n) {
    double scale = 0.0;
    for (int k = 0; k < n; ++k) {
        const double m = std::max(std::fabs(polyline[k].x), std::fabs(polyline[k].y));
        if (m > scale && std::isfinite(m)) scale = m;  // NaN and infinite coordinates set no scale
    }
    return scale;
}

// Where results go: one kind (points or overlaps), with its flag, count and optional arrays.
struct PointSink {
    int* found;
    int* count;
    Point2d* points;
    double* on1;
    double* on2;
    int capacity;
    bool wanted() const { return points != nullptr || on1 != nullptr || on2 != nullptr; }
    bool full() const { return !wanted() || *count >= capacity; }
};

struct OverlapSink {
    int* found;
    int* count;
    Point2d* points;  // two per piece
    double* on1;      // two per piece
    double* on2;
    int capacity;
    bool wanted() const { return points != nullptr || on1 != nullptr || on2 != nullptr; }
    bool full() const { return !wanted() || *count >= capacity; }
};

// Appends a point (dropped when identical to one stored); with no array wanted, counts it.
void appendPoint(PointSink& sink, StoredPoints& stored, const Point2d& p, double on1, double on2) {
    *sink.found = 1;
    if (!sink.wanted()) {
        ++*sink.count;
        return;
    }
    if (*sink.count >= sink.capacity || stored.containsNear(p)) return;
    const int k = (*sink.count)++;
    if (sink.points != nullptr) sink.points[k] = p;
    if (sink.on1 != nullptr) sink.on1[k] = on1;
    if (sink.on2 != nullptr) sink.on2[k] = on2;
    stored.add(p);
}

void appendOverlap(OverlapSink& sink, const Point2d (&ends)[2], const double (&on1)[2],
                   const double (&on2)[2]) {
    *sink.found = 1;
    if (!sink.wanted() || *sink.count >= sink.capacity) return;
    const int k = (*sink.count)++;
    for (int e = 0; e < 2; ++e) {
        if (sink.points != nullptr) sink.points[2 * k + e] = ends[e];
        if (sink.on1 != nullptr) sink.on1[2 * k + e] = on1[e];
        if (sink.on2 != nullptr) sink.on2[2 * k + e] = on2[e];
    }
}

double planLength(const Point2d* segment) { return kb::utmat::norm(kb::utmat::difference(segment[0], segment[1])); }

// A segment of zero length: the test of UTMAT_PointsIdentiques at tolerance 0 (the distance
// between the ends equals 0; NaN ends are not of zero length), without the call.
bool zeroLength(const Point2d* segment) { return planLength(segment) == 0.0; }

// ---- pairs that cannot meet ----------------------------------------------------------------------

// Rounding allowance of the rejection below, relative to the coordinates' magnitude: far above
// the few units in the last place by which the segment primitive's arithmetic can move a
// meeting point, so that a pair is set aside only when the primitive would find nothing.
constexpr double kRejectionMargin = 0x1p-30;

// The largest coordinate magnitude of two segments; NaN when any coordinate is NaN.
double largestMagnitude(const Point2d* a, const Point2d* b) {
    double m = 0.0;
    for (int e = 0; e < 2; ++e) {
        for (const double v : {a[e].x, a[e].y, b[e].x, b[e].y}) {
            if (std::isnan(v)) return v;
            m = std::max(m, std::fabs(v));
        }
    }
    return m;
}

// Every x of `a` exceeds every x of `b` by more than `reach` (false with a NaN among them).
bool beyondInX(const Point2d* a, const Point2d* b, double reach) {
    return a[0].x - reach > b[0].x && a[0].x - reach > b[1].x && a[1].x - reach > b[0].x && a[1].x - reach > b[1].x;
}

bool beyondInY(const Point2d* a, const Point2d* b, double reach) {
    return a[0].y - reach > b[0].y && a[0].y - reach > b[1].y && a[1].y - reach > b[0].y && a[1].y - reach > b[1].y;
}

// The boxes of two segments, grown by `reach`, are disjoint.
bool boxesApart(const Point2d* a, const Point2d* b, double reach) {
    return beyondInX(a, b, reach) || beyondInX(b, a, reach) || beyondInY(a, b, reach) || beyondInY(b, a, reach);
}

// Both ends of `s` lie on the same side of the line through `on`, farther than `reach`
// (compared squared: the magnitudes are bounded by the caller so nothing overflows).
bool endsBeyondLine(const Point2d* on, const Point2d* s, double reach) {
    const Point2d v = kb::utmat::difference(on[0], on[1]);
    const double limit = reach * reach * kb::utmat::dot(v, v);
    const double d0 = kb::utmat::cross(v, kb::utmat::difference(on[0], s[0]));
    const double d1 = kb::utmat::cross(v, kb::utmat::difference(on[0], s[1]));
    const bool sameSide = (d0 > 0.0 && d1 > 0.0) || (d0 < 0.0 && d1 < 0.0);
    return sameSide && d0 * d0 > limit && d1 * d1 > limit;
}

// Coordinates up to this magnitude keep every square above finite.
constexpr double kLargestFilteredMagnitude = 1e75;

// True only when the segment primitive at `tol` certainly finds neither a point nor a piece:
// a point it reports lies on both lines within the closed intervals widened by the tolerance,
// so within 2 |tol| of both segments' boxes and with each segment, lengthened by the
// tolerance, reaching the other's line; a collinear piece or touch needs an end within the
// tolerance of the other line.  Non-finite or huge values never reject, so the primitive still
// sees (and reports) them.
bool cannotMeet(const Point2d* a, const Point2d* b, double tol) {
    const double magnitude = largestMagnitude(a, b);
    if (!(magnitude <= kLargestFilteredMagnitude)) return false;
    const double reach = 2.0 * std::fabs(tol) + kRejectionMargin * magnitude;
    return boxesApart(a, b, reach) || endsBeyondLine(a, b, reach) || endsBeyondLine(b, a, reach);
}

// Intersects segment s with segment k of the polyline, handing a point to `onPoint` and
// appending a piece, with the polyline's abscissae shifted by `along` (and the segment's by
// `alongSegment`); false when a primitive failed.
template <typename OnPoint>
bool intersectPairWith(const Point2d* s, const Point2d* polyline, int k, double along, double alongSegment,
                       double tol, OnPoint onPoint, OverlapSink& overlaps) {
    if (cannotMeet(s, polyline + k, tol)) return true;
    int pointFound = 0;
    int overlapFound = 0;
    Point2d p{0.0, 0.0};
    double t1 = 0.0;
    double t2 = 0.0;
    Point2d ends[2];
    double on1[2];
    double on2[2];
    UTMAT_CalculerIntersectionSegmentSegment(s, polyline + k, tol, &pointFound, &p, &t1, &t2,
                                             &overlapFound, ends, on1, on2);
    if (failed()) return false;
    if (pointFound != 0) onPoint(p, t1 + alongSegment, t2 + along);
    if (overlapFound != 0) {
        const double a1[2] = {on1[0] + alongSegment, on1[1] + alongSegment};
        const double a2[2] = {on2[0] + along, on2[1] + along};
        appendOverlap(overlaps, ends, a1, a2);
    }
    return true;
}

bool intersectPair(const Point2d* s, const Point2d* polyline, int k, double along, double alongSegment,
                   double tol, PointSink& points, StoredPoints& stored, OverlapSink& overlaps) {
    const auto append = [&](const Point2d& p, double on1, double on2) { appendPoint(points, stored, p, on1, on2); };
    return intersectPairWith(s, polyline, k, along, alongSegment, tol, append, overlaps);
}

// Points waiting a few crossings for their duplicate test while the memory that test reads is
// fetched; they are appended in the order found, each tested against all points before it.
class DeferredPoints {
public:
    DeferredPoints(PointSink& sink, StoredPoints& stored) : sink_(sink), stored_(stored) {}
    DeferredPoints(const DeferredPoints&) = delete;
    DeferredPoints& operator=(const DeferredPoints&) = delete;
    ~DeferredPoints() { flush(); }

    void push(const Point2d& p, double on1, double on2) {
        if (!sink_.wanted()) {  // counted, not stored: nothing to wait for
            appendPoint(sink_, stored_, p, on1, on2);
            return;
        }
        stored_.prefetch(p);
        if (size_ == kDepth) popOldest();
        waiting_[(first_ + size_) % kDepth] = {p, on1, on2};
        ++size_;
    }
    void flush() {
        while (size_ > 0) popOldest();
    }

private:
    static constexpr int kDepth = 8;
    struct Waiting {
        Point2d point;
        double on1;
        double on2;
    };
    void popOldest() {
        const Waiting& w = waiting_[first_];
        appendPoint(sink_, stored_, w.point, w.on1, w.on2);
        first_ = (first_ + 1) % kDepth;
        --size_;
    }

    PointSink& sink_;
    StoredPoints& stored_;
    Waiting waiting_[kDepth];
    int first_ = 0;
    int size_ = 0;
};

bool bothComplete(const PointSink& points, const OverlapSink& overlaps) {
    return *points.found != 0 && *overlaps.found != 0 && points.full() && overlaps.full();
}

// ---- an index of polyline 2's segments -----------------------------------------------------------

struct Box {
    double minX, minY, maxX, maxY;
    bool meets(const Box& o) const {
        return !(o.minX > maxX || o.maxX < minX || o.minY > maxY || o.maxY < minY);
    }
};

// The box of a segment grown by `grow`; a NaN coordinate gives the whole plane, so that the
// segment stays a candidate for every query and the primitive gets to see (and refuse) it.
Box boxOf(const Point2d& a, const Point2d& b, double grow) {
    if (std::isnan(a.x) || std::isnan(a.y) || std::isnan(b.x) || std::isnan(b.y)) {
        return {-INFINITY, -INFINITY, INFINITY, INFINITY};
    }
    return {std::fmin(a.x, b.x) - grow, std::fmin(a.y, b.y) - grow, std::fmax(a.x, b.x) + grow,
            std::fmax(a.y, b.y) + grow};
}

// A uniform grid over the segments' boxes: each segment is listed in every cell its box covers.
class SegmentGrid {
public:
    SegmentGrid(const Point2d* polyline, int n, double grow) {
        const int segments = n - 1;
        boxes_.reserve(static_cast<std::size_t>(segments > 0 ? segments : 0));
        Box all{INFINITY, INFINITY, -INFINITY, -INFINITY};
        for (int k = 0; k < segments; ++k) {
            boxes_.push_back(boxOf(polyline[k], polyline[k + 1], grow));
            all = {std::fmin(all.minX, boxes_.back().minX), std::fmin(all.minY, boxes_.back().minY),
                   std::fmax(all.maxX, boxes_.back().maxX), std::fmax(all.maxY, boxes_.back().maxY)};
        }
        bounds_ = all;
        usable_ = segments > 0 && std::isfinite(all.minX) && std::isfinite(all.maxX) &&
                  std::isfinite(all.minY) && std::isfinite(all.maxY);
        if (!usable_) return;
        // About one cell per segment, shaped like the extent (a long profile gets one row of
        // cells, not a square grid whose every row each segment would cross).
        const double target = segments;
        const double width = all.maxX - all.minX;
        const double height = all.maxY - all.minY;
        double columns = height > 0.0 ? std::sqrt(target * width / height) : target;
        columns = std::fmin(std::fmax(std::round(columns), 1.0), target);
        columns_ = static_cast<int>(columns);
        rows_ = static_cast<int>(std::fmin(std::fmax(std::round(target / columns), 1.0), target));
        cells_.resize(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_));
        for (int k = 0; k < segments; ++k) {
            forCells(boxes_[static_cast<std::size_t>(k)], [&](std::size_t cell) { cells_[cell].push_back(k); });
        }
    }

    // The segments whose box meets `box`, in increasing order.
    void candidates(const Box& box, kb::Vector<int>& out) const {
        out.clear();
        if (!usable_) {
            for (int k = 0; k < static_cast<int>(boxes_.size()); ++k) out.push_back(k);
            return;
        }
        if (!box.meets(bounds_)) return;
        forCells(box, [&](std::size_t cell) {
            for (const int k : cells_[cell]) {
                if (boxes_[static_cast<std::size_t>(k)].meets(box)) out.push_back(k);
            }
        });
        std::sort(out.begin(), out.end());
        out.erase(std::unique(out.begin(), out.end()), out.end());
    }

private:
    static int cellIndex(double v, double lo, double hi, int count) {
        if (!(hi > lo)) return 0;
        // A box with a NaN side (a vertex with a NaN coordinate) meets no other box; any cell
        // will do, as long as the index is never made from NaN.
        const double f = std::floor((v - lo) / (hi - lo) * count);
        if (!(f > 0)) return 0;
        return f >= count ? count - 1 : static_cast<int>(f);
    }
    template <typename Visit>
    void forCells(const Box& box, Visit visit) const {
        const int x0 = cellIndex(box.minX, bounds_.minX, bounds_.maxX, columns_);
        const int x1 = cellIndex(box.maxX, bounds_.minX, bounds_.maxX, columns_);
        const int y0 = cellIndex(box.minY, bounds_.minY, bounds_.maxY, rows_);
        const int y1 = cellIndex(box.maxY, bounds_.minY, bounds_.maxY, rows_);
        for (int gx = x0; gx <= x1; ++gx) {
            for (int gy = y0; gy <= y1; ++gy) visit(static_cast<std::size_t>(gx) * rows_ + gy);
        }
    }

    kb::Vector<Box> boxes_;
    kb::Vector<kb::Vector<int>> cells_;
    Box bounds_{0, 0, 0, 0};
    int columns_ = 1;
    int rows_ = 1;
    bool usable_ = false;
};

// Abscissa of the start of each segment of a polyline (zero-length segments add nothing).
kb::Vector<double> segmentStarts(const Point2d* polyline, int n) {
    kb::Vector<double> starts(static_cast<std::size_t>(n > 0 ? n : 0), 0.0);
    double along = 0.0;
    for (int k = 0; k + 1 < n; ++k) {
        starts[static_cast<std::size_t>(k)] = along;
        if (!zeroLength(polyline + k)) along += planLength(polyline + k);
    }
    return starts;
}

// Intersects one segment with the candidate segments of a polyline (all of them, in order,
// when `candidates` is null).
void segmentWithPolyline(const Point2d* segment, const Point2d* polyline, int n, const kb::Vector<double>& starts,
                         const kb::Vector<int>* candidates, double alongSegment, double tol,
                         PointSink& points, StoredPoints& stored, OverlapSink& overlaps) {
    const auto visit = [&](int k) {
        if (zeroLength(polyline + k)) return true;
        if (!intersectPair(segment, polyline, k, starts[static_cast<std::size_t>(k)], alongSegment, tol,
                           points, stored, overlaps)) {
            return false;
        }
        return !bothComplete(points, overlaps);
    };
    if (candidates == nullptr) {
        for (int k = 0; k + 1 < n; ++k) {
            if (!visit(k)) return;
        }
    } else {
        for (const int k : *candidates) {
            if (!visit(k)) return;
        }
    }
}

// ---- elevations ------------------------------------------------------------------------------------

double planDistance(const Point3d& a, const Point3d& b) { return std::hypot(b.x - a.x, b.y - a.y); }

int fillStatus(const Point3d* points, int n, const int32_t* known) {
    if (n < 2) return UTMAT_FILL_TOO_FEW_POINTS;
    bool all = true;
    bool none = true;
    for (int i = 0; i < n; ++i) {
        all = all && known[i] != 0;
        none = none && known[i] == 0;
    }
    if (all) return UTMAT_FILL_NOTHING_TO_FILL;
    if (none) return UTMAT_FILL_NO_ELEVATION;
    const double precision = kb::utmat::calculationPrecision();
    for (int i = 0; i + 1 < n; ++i) {
        if (planDistance(points[i], points[i + 1]) < precision) return UTMAT_FILL_COINCIDENT_POINTS;
    }
    return UTMAT_FILL_DONE;
}

// Fills the run of unknown points first..last (i = first - 1 and j = last + 1 when they exist).
void fillRun(Point3d* p, int n, const int32_t* known, int first, int last) {
    const int i = first - 1;
    const int j = last + 1 < n ? last + 1 : -1;
    const int left = i < 0 ? 0 : (i > 0 && known[i - 1] != 0 ? 2 : 1);
    const int right = j < 0 ? 0 : (j + 1 < n && known[j + 1] != 0 ? 2 : 1);
    const double gradeBefore = left == 2 ? (p[i].z - p[i - 1].z) / planDistance(p[i - 1], p[i]) : 0.0;
    const double gradeAfter = right == 2 ? (p[j + 1].z - p[j].z) / planDistance(p[j], p[j + 1]) : 0.0;
    // Plan distances from i (or from the run's first point when there is no i).
    const int origin = i >= 0 ? i : first;
    kb::Vector<double> t(static_cast<std::size_t>(last - origin + 2), 0.0);
    for (int k = origin + 1; k <= (j >= 0 ? j : last); ++k) {
        t[static_cast<std::size_t>(k - origin)] = t[static_cast<std::size_t>(k - origin - 1)] + planDistance(p[k - 1], p[k]);
    }
    const auto at = [&](int k) { return t[static_cast<std::size_t>(k - origin)]; };
    const int rule = left + right - 1;
    for (int k = first; k <= last; ++k) {
        double z = 0.0;
        if (rule == 0) {
            z = i >= 0 ? p[i].z : p[j].z;
        } else if (rule == 1 && left == 1 && right == 1) {
            z = p[i].z + (p[j].z - p[i].z) * at(k) / at(j);
        } else if (rule == 1 && left == 0) {
            z = p[j].z - gradeAfter * (at(j) - at(k));  // backwards from j along its grade
        } else if (rule == 1 && left == 2) {
            z = p[i].z + gradeBefore * at(k);  // forwards from i along its grade
        } else if (rule == 2) {
            // A parabola through both ends keeping the grade on the side that has one.
            const double length = at(j);
            if (left == 2) {
                const double c = (p[j].z - p[i].z - gradeBefore * length) / (length * length);
                z = p[i].z + gradeBefore * at(k) + c * at(k) * at(k);
            } else {
                const double s = length - at(k);  // distance back from j
                const double c = (p[i].z - p[j].z + gradeAfter * length) / (length * length);
                z = p[j].z - gradeAfter * s + c * s * s;
            }
        } else {
            const double length = at(j);
            const double v = ((p[j].z - p[i].z) - gradeBefore * length) / length;
            const double w = gradeAfter - gradeBefore;
            const double a = (3.0 * v - w) / length;
            const double b = (w - 2.0 * v) / (length * length);
            const double s = at(k);
            z = p[i].z + gradeBefore * s + a * s * s + b * s * s * s;
        }
        p[k].z = z;
    }
}

// ---- the query engines -----------------------------------------------------------------------

// Both result kinds of one query.
struct Sinks {
    PointSink points;
    OverlapSink overlaps;
    void clear() const { *points.found = *points.count = *overlaps.found = *overlaps.count = 0; }
};

// Runs a query body at the C boundary: an exception (an allocation that failed) becomes
// ERR_FAILURE in the error word; a failing primitive has already set it.
template <typename Body>
void runGuarded(Body&& body) noexcept {
    const int status = kb::callGuarded(ERR_FAILURE, [&] {
        body();
        return 0;
    });
    if (status != 0) kb::utmat::raiseError();
}

// A segment with every segment of a polyline, in order.
void segmentAgainstPolyline(const Point2d* segment, const Point2d* polyline, int n, double tol, Sinks& out) {
    if (polyline == nullptr || n < 2) return;
    StoredPoints stored(tol, std::fmax(coordinateScale(segment, 2), coordinateScale(polyline, n)), out.points.points);
    const kb::Vector<double> starts = segmentStarts(polyline, n);
    segmentWithPolyline(segment, polyline, n, starts, nullptr, 0.0, tol, out.points, stored, out.overlaps);
}

// Every intersection of two polylines, by segment of polyline 1 and, within one, by segment of
// polyline 2, at most 50 of each kind per segment of polyline 1; polyline 2's candidates come
// from a grid of its segment boxes.
void polylineAgainstPolyline(const Point2d* pts1, int n1, const Point2d* pts2, int n2, double tol, Sinks& out) {
    if (pts1 == nullptr || pts2 == nullptr || n1 < 2 || n2 < 2) return;
    const double scale = std::fmax(coordinateScale(pts1, n1), coordinateScale(pts2, n2));
    StoredPoints stored(tol, scale, out.points.points);
    const kb::Vector<double> starts2 = segmentStarts(pts2, n2);
    const SegmentGrid grid(pts2, n2, std::fabs(tol));
    kb::Vector<int> candidates;
    double along1 = 0.0;
    for (int i = 0; i + 1 < n1; ++i) {
        const Point2d* s = pts1 + i;
        if (zeroLength(s)) continue;
        // Up to 50 of each kind per segment of polyline 1, gathered first and then appended.
        int scratchFound = 0, scratchCount = 0, scratchOverlapFound = 0, scratchOverlapCount = 0;
        Point2d scratchPoints[kScratchCapacity];
        double scratchOn1[kScratchCapacity], scratchOn2[kScratchCapacity];
        Point2d scratchEnds[2 * kScratchCapacity];
        double scratchEndsOn1[2 * kScratchCapacity], scratchEndsOn2[2 * kScratchCapacity];
        PointSink scratch{&scratchFound, &scratchCount, scratchPoints, scratchOn1, scratchOn2, kScratchCapacity};
        OverlapSink scratchOverlaps{&scratchOverlapFound, &scratchOverlapCount, scratchEnds, scratchEndsOn1,
                                    scratchEndsOn2, kScratchCapacity};
        StoredPoints scratchStored(tol, scale, scratch.points);
        grid.candidates(boxOf(s[0], s[1], std::fabs(tol)), candidates);
        segmentWithPolyline(s, pts2, n2, starts2, &candidates, 0.0, tol, scratch, scratchStored, scratchOverlaps);
        // What was found before a refused pair is kept, as the walk of a single segment keeps it.
        const bool refused = failed();
        for (int k = 0; k < scratchCount; ++k) {
            appendPoint(out.points, stored, scratchPoints[k], scratchOn1[k] + along1, scratchOn2[k]);
        }
        for (int k = 0; k < scratchOverlapCount; ++k) {
            const Point2d ends[2] = {scratchEnds[2 * k], scratchEnds[2 * k + 1]};
            const double on1[2] = {scratchEndsOn1[2 * k] + along1, scratchEndsOn1[2 * k + 1] + along1};
            const double on2[2] = {scratchEndsOn2[2 * k], scratchEndsOn2[2 * k + 1]};
            appendOverlap(out.overlaps, ends, on1, on2);
        }
        if (refused) return;
        along1 += planLength(s);
        if (bothComplete(out.points, out.overlaps)) break;
    }
}

// One polyline's place in the walk by reference abscissae: its current segment, that
// segment's plan length (measured when first needed), and the summed plan length of the
// segments left behind.
class AbscissaCursor {
public:
    AbscissaCursor(const Point2d* points, const double* abscissae, int n)
        : points_(points), abscissae_(abscissae), segments_(n - 1) {}
    bool left() const { return index_ < segments_; }
    int index() const { return index_; }
    const Point2d* segment() const { return points_ + index_; }
    bool zeroLength() { return length() == 0.0; }  // as ::zeroLength
    double along() const { return along_; }
    double start() const { return abscissae_[index_]; }
    double end() const { return abscissae_[index_ + 1]; }
    void advance() {
        along_ += length();
        ++index_;
        measured_ = false;
    }

private:
    double length() {
        if (!measured_) {
            length_ = planLength(segment());
            measured_ = true;
        }
        return length_;
    }

    const Point2d* points_;
    const double* abscissae_;
    int segments_;
    int index_ = 0;
    double length_ = 0.0;
    bool measured_ = false;
    double along_ = 0.0;
};

// Intersects exactly the pairs of segments whose closed reference-abscissa intervals overlap,
// in one merge walk: for each segment of polyline 1 in order, the segments of polyline 2 that
// end before it starts are left behind for good, and those from there on that start before it
// ends are intersected in order.  For profiles (no common vertical runs) every segment of
// polyline 2 is seen about twice, so the walk is linear; a run of k segments of zero abscissa
// length on both polylines at one abscissa adds up to k * k pairs, all of which can meet.
// Abscissae out of order or NaN cannot make the walk loop; they only make it miss pairs.
void walkByAbscissae(const UtDonneesIntersection& r, Sinks& out) {
    StoredPoints stored(r.tol, std::fmax(coordinateScale(r.pts1, r.n1), coordinateScale(r.pts2, r.n2)),
                        out.points.points);
    DeferredPoints deferred(out.points, stored);  // appends what waits when the walk ends
    const auto defer = [&](const Point2d& p, double on1, double on2) { deferred.push(p, on1, on2); };
    // The early stop needs exact counts: waiting points are appended first.
    const auto complete = [&] {
        if (*out.overlaps.found == 0 || !out.overlaps.full()) return false;
        deferred.flush();
        return bothComplete(out.points, out.overlaps);
    };
    AbscissaCursor two(r.pts2, r.abs2, r.n2);
    for (AbscissaCursor one(r.pts1, r.abs1, r.n1); one.left() && two.left(); one.advance()) {
        while (two.left() && two.end() < one.start()) two.advance();
        if (one.zeroLength()) continue;
        for (AbscissaCursor k = two; k.left() && k.start() <= one.end(); k.advance()) {
            if (k.zeroLength()) continue;
            if (!intersectPairWith(one.segment(), r.pts2, k.index(), k.along(), one.along(), r.tol, defer,
                                   out.overlaps)) {
                return;
            }
            if (complete()) return;
        }
    }
}

// ---- nearest and first intersections --------------------------------------------------------

// The scratch results of the nearest- and first-intersection queries: process-wide static
// storage of 50 entries of each kind, reused by every call and kept between calls.  Like the
// kernel's error word it is unguarded, so these queries are for one thread at a time and two
// calls must never overlap.
struct ScratchResults {
    int pointFound;
    int pointCount;
    Point2d points[kScratchCapacity];
    double pointsOn1[kScratchCapacity];
    double pointsOn2[kScratchCapacity];
    int overlapFound;
    int overlapCount;
    Point2d ends[2 * kScratchCapacity];
    double endsOn1[2 * kScratchCapacity];
    double endsOn2[2 * kScratchCapacity];

    Sinks sinks() {
        Sinks s{{&pointFound, &pointCount, points, pointsOn1, pointsOn2, kScratchCapacity},
                {&overlapFound, &overlapCount, ends, endsOn1, endsOn2, kScratchCapacity}};
        s.clear();
        return s;
    }
};

ScratchResults scratchResults;

// The starting best distance and best abscissa of the searches: larger than any real one.
constexpr double kNothingYet = 1e31;

struct Best {
    int index = -1;
    double value = kNothingYet;
    bool found() const { return index >= 0; }
};

// The candidate nearest the reference (the first of equals); with `skipReference`, candidates
// at the reference itself (distance 0 at the tolerance) are passed over.  Stops at a candidate
// at distance 0.
Best nearestTo(const Point2d& reference, const Point2d* candidates, int count, double tol, bool skipReference) {
    Best best;
    for (int j = 0; j < count; ++j) {
        const double d = kb::utmat::norm(kb::utmat::difference(reference, candidates[j]));
        if (skipReference && UTMAT_Egal(d, 0.0, tol)) continue;
        if (d < best.value) best = {j, d};
        if (UTMAT_Egal(best.value, 0.0, tol)) break;
    }
    return best;
}

// The candidate of smallest abscissa (the first of equals).
Best smallestOf(const double* abscissae, int count) {
    Best best;
    for (int j = 0; j < count; ++j) {
        if (abscissae[j] < best.value) best = {j, abscissae[j]};
    }
    return best;
}

// Where the chosen result goes: point and abscissae optional, the two flags required.
struct Choice {
    Point2d* point;
    double* on1;
    double* on2;
    int* isPoint;
    int* isOverlapEnd;
};

void deliverPoint(const Choice& c, int j) {
    const ScratchResults& s = scratchResults;
    *c.isPoint = 1;
    kb::storeOptional(c.point, s.points[j]);
    kb::storeOptional(c.on1, s.pointsOn1[j]);
    kb::storeOptional(c.on2, s.pointsOn2[j]);
}

void deliverOverlapEnd(const Choice& c, int j) {
    const ScratchResults& s = scratchResults;
    *c.isOverlapEnd = 1;
    kb::storeOptional(c.point, s.ends[j]);
    kb::storeOptional(c.on1, s.endsOn1[j]);
    kb::storeOptional(c.on2, s.endsOn2[j]);
}

// From the scratch results: the point nearest the reference, or the overlap end when it is
// strictly nearer.
void chooseNearest(const Point2d& reference, double tol, int acceptReference, const Choice& c) {
    const ScratchResults& s = scratchResults;
    const Best point = nearestTo(reference, s.points, s.pointCount, tol, acceptReference == 0);
    const Best end = nearestTo(reference, s.ends, 2 * s.overlapCount, tol, false);
    if (end.found() && end.value < point.value) {
        deliverOverlapEnd(c, end.index);
    } else if (point.found()) {
        deliverPoint(c, point.index);
    }
}

// From the scratch results: the result of smallest abscissa on polyline 1, the point on ties.
void chooseFirst(const Choice& c) {
    const ScratchResults& s = scratchResults;
    const Best point = smallestOf(s.pointsOn1, s.pointCount);
    const Best end = smallestOf(s.endsOn1, 2 * s.overlapCount);
    if (point.found() && point.value <= end.value) {
        deliverPoint(c, point.index);
    } else if (end.found()) {
        deliverOverlapEnd(c, end.index);
    }
}

// ---- cutting a profile ---------------------------------------------------------------------

constexpr int kPointBytes = 16;  // the element size of the point block arrays
static_assert(sizeof(Point2d) == kPointBytes, "a block-array point is two doubles");

// A profile cut at P: the first part is points [0, firstEnd) then P, the second part P then
// points [secondBegin, n).
struct Cut {
    int firstEnd;
    int secondBegin;
};

Cut cutProfile(const Point2d* p, int n, const Point2d& at, double tol) {
    const bool increasing = p[n - 1].x >= p[0].x;
    const auto beforeCut = [&](double x) {
        return increasing ? UTMAT_Inf(x, at.x, tol) != 0 : UTMAT_Sup(x, at.x, tol) != 0;
    };
    int j = 1;  // the first point is before the cut (the cut is not at the first abscissa)
    while (j < n && beforeCut(p[j].x)) ++j;
    // A vertical run at the cut: its points are taken up to the segment that holds P, whose
    // start is taken unless it is P itself; a run point identical to P is not repeated.
    for (int r = j; r + 1 < n && UTMAT_Egal(p[r].x, at.x, tol); ++r) {
        if (!UTMAT_ComparerPointASegment(&at, &p[r], &p[r + 1], tol)) continue;
        const int firstEnd = UTMAT_PointsIdentiques(&at, &p[r], tol) ? r : r + 1;
        const int secondBegin = UTMAT_PointsIdentiques(&at, &p[r + 1], tol) ? r + 2 : r + 1;
        return {firstEnd, secondBegin};
    }
    int r = j;
    while (r < n && UTMAT_Egal(p[r].x, at.x, tol)) ++r;
    return {r, r};
}

// A new block array of `count` points copied from `from`, with P before them (`cutFirst`) or
// after them (`cutLast`); false (error word set) when the block array could not be made.
bool makePart(Point2d** out, const Point2d* from, int count, const Point2d* cutFirst, const Point2d* cutLast,
              int* outCount) {
    const int total = count + (cutFirst != nullptr ? 1 : 0) + (cutLast != nullptr ? 1 : 0);
    void* block = nullptr;
    MEM_CreerTableau(&block, kPointBytes, total);
    kb::utmat::takeBlockArrayError();
    if (failed()) return false;
    Point2d* points = static_cast<Point2d*>(block);
    int k = 0;
    if (cutFirst != nullptr) points[k++] = *cutFirst;
    for (int j = 0; j < count; ++j) points[k++] = from[j];
    if (cutLast != nullptr) points[k++] = *cutLast;
    *out = points;
    *outCount = total;
    return true;
}

// ---- segment in a contour --------------------------------------------------------------------

// The recursive boundary test halves a piece at most this many times (a piece then measures
// 2^-60 of the segment, below the resolution of its coordinates) ...
constexpr int kBoundaryDepthLimit = 60;
// ... and makes at most this many midpoint tests per contour point.
constexpr int kBoundaryTestsPerPoint = 60;
// Probe points of a piece: at 1/2, 1/3, 2/3, 1/4, 3/4, 1/5, ... up to twelfths.
constexpr int kLargestProbeDenominator = 12;

enum class Place { inside, outside, boundary };

struct ContourView {
    const Point2d* points;
    int n;
    double tol;
};

// (x, y) -> (y, -x): exact, and the contour's region turns with it.
Point2d quarterTurn(const Point2d& p) { return {p.y, -p.x}; }

// The crossing-number test counts an edge that is level at the calculation precision as one
// crossing wherever the ray runs within the tolerance of its height, which misplaces points
// level with such an edge.  A point is a clean probe when it lies off every such band.
bool offLevelBands(const Point2d& p, const ContourView& c) {
    const double precision = kb::utmat::calculationPrecision();
    const double margin = 2.0 * std::fabs(c.tol) + 1e-12 * (1.0 + std::fabs(p.y));
    for (int i = 0; i + 1 < c.n; ++i) {
        const Point2d& a = c.points[i];
        const Point2d& b = c.points[i + 1];
        if (!UTMAT_Egal(a.y, b.y, precision)) continue;
        if (!(p.y < std::min(a.y, b.y) - margin || p.y > std::max(a.y, b.y) + margin)) return false;
    }
    return true;
}

Place placeOf(const Point2d& p, const ContourView& c) {
    const int where = UTMAT_PointDansContour(&p, c.points, c.n, c.tol);
    return where < 0 ? Place::boundary : (where == 1 ? Place::inside : Place::outside);
}

// The contour as given and turned a quarter turn: a point level with a level edge of the one
// is read in the other, where its ray runs the other way.
struct ContourFrames {
    ContourView plain;
    kb::Vector<Point2d> turnedPoints;
    ContourView turned;
    ContourFrames(const ContourFrames&) = delete;  // `turned` points into `turnedPoints`
    ContourFrames& operator=(const ContourFrames&) = delete;
    explicit ContourFrames(const ContourView& c) : plain(c), turned{nullptr, c.n, c.tol} {
        turnedPoints.reserve(static_cast<std::size_t>(c.n > 0 ? c.n : 0));
        for (int i = 0; i < c.n; ++i) turnedPoints.push_back(quarterTurn(c.points[i]));
        turned.points = turnedPoints.data();
    }
};

// The place of p when one of the two frames gives it a clean ray.
bool cleanPlace(const Point2d& p, const ContourFrames& f, Place& out) {
    if (offLevelBands(p, f.plain)) {
        out = placeOf(p, f.plain);
        return true;
    }
    const Point2d q = quarterTurn(p);
    if (offLevelBands(q, f.turned)) {
        out = placeOf(q, f.turned);
        return true;
    }
    return false;
}

// The place of a point: clean if possible, else as the test reads it.
Place placeOfPoint(const Point2d& p, const ContourFrames& f) {
    Place place = Place::boundary;
    return cleanPlace(p, f, place) ? place : placeOf(p, f.plain);
}

Point2d pointAt(const Point2d& a, const Point2d& b, double fraction) {
    return {a.x + (b.x - a.x) * fraction, a.y + (b.y - a.y) * fraction};
}

// Visits the probe fractions in order until `visit` answers true; false if it never does.
template <typename Visit>
bool anyProbeFraction(Visit visit) {
    for (int d = 2; d <= kLargestProbeDenominator; ++d) {
        for (int k = 1; k < d; ++k) {
            if (std::gcd(k, d) == 1 && visit(static_cast<double>(k) / d)) return true;
        }
    }
    return false;
}

// The contour edge that holds p (the first one), or -1 when p is off the boundary.
int edgeHolding(const Point2d& p, const ContourView& c) {
    const int where = UTMAT_PointDansContour(&p, c.points, c.n, c.tol);
    return where < 0 ? -where - 1 : -1;
}

// 1 when the piece a-b runs along the boundary: both ends on it and, when they are on
// different edges, both halves in turn.  `edgeA` and `edgeB` are the ends' edges (-1: off).
bool alongBoundary(const Point2d& a, int edgeA, const Point2d& b, int edgeB, const ContourView& c, int depth,
                   int& testsLeft) {
    if (edgeA < 0 || edgeB < 0) return false;
    if (edgeA == edgeB || depth >= kBoundaryDepthLimit) return true;
    if (--testsLeft < 0) return false;
    const Point2d middle = pointAt(a, b, 0.5);
    const int edgeMiddle = edgeHolding(middle, c);
    return alongBoundary(a, edgeA, middle, edgeMiddle, c, depth + 1, testsLeft) &&
           alongBoundary(middle, edgeMiddle, b, edgeB, c, depth + 1, testsLeft);
}

bool alongBoundary(const Point2d& a, const Point2d& b, const ContourView& c) {
    int testsLeft = kBoundaryTestsPerPoint * (c.n + 2);
    return alongBoundary(a, edgeHolding(a, c), b, edgeHolding(b, c), c, 0, testsLeft);
}

// The place of the piece a-b, which the boundary does not cross: read at its first clean
// probe; a probe on the boundary stands for the piece only when the piece runs along it,
// otherwise (the piece is near the boundary only at the tolerance) the first clean probe off
// the boundary decides.
Place placeOfPiece(const Point2d& a, const Point2d& b, const ContourFrames& f) {
    Place first = Place::boundary;
    if (!anyProbeFraction([&](double t) { return cleanPlace(pointAt(a, b, t), f, first); })) {
        first = placeOf(pointAt(a, b, 0.5), f.plain);
    }
    if (first != Place::boundary || alongBoundary(a, b, f.plain)) return first;
    Place off = Place::boundary;
    anyProbeFraction([&](double t) {
        Place p = Place::boundary;
        if (!cleanPlace(pointAt(a, b, t), f, p) || p == Place::boundary) return false;
        off = p;
        return true;
    });
    return off;
}

// The abscissae along the segment where it meets the contour, with both ends, in order.
kb::Vector<double> cutsAlong(const Point2d* segment, const ContourView& c) {
    const double length = planLength(segment);
    kb::Vector<double> cuts{0.0, length};
    if (c.n >= 2) {
        const int capacity = c.n - 1;  // one result per contour segment at most
        kb::Vector<double> onSegment(static_cast<std::size_t>(capacity));
        kb::Vector<double> endsOnSegment(2 * static_cast<std::size_t>(capacity));
        int pointFound = 0, pointCount = 0, overlapFound = 0, overlapCount = 0;
        Sinks sinks{{&pointFound, &pointCount, nullptr, onSegment.data(), nullptr, capacity},
                    {&overlapFound, &overlapCount, nullptr, endsOnSegment.data(), nullptr, capacity}};
        segmentAgainstPolyline(segment, c.points, c.n, c.tol, sinks);
        if (failed()) return cuts;
        cuts.insert(cuts.end(), onSegment.begin(), onSegment.begin() + pointCount);
        cuts.insert(cuts.end(), endsOnSegment.begin(), endsOnSegment.begin() + 2 * overlapCount);
    }
    for (double& t : cuts) t = std::fmin(std::fmax(t, 0.0), length);
    std::sort(cuts.begin(), cuts.end());
    return cuts;
}

int resultFor(Place p) {
    return p == Place::inside ? UTMAT_SEGMENT_INSIDE
                              : (p == Place::outside ? UTMAT_SEGMENT_OUTSIDE : UTMAT_SEGMENT_ON_BOUNDARY);
}

int segmentPlace(const Point2d* segment, const ContourView& c) {
    const Point2d& a = segment[0];
    const Point2d& b = segment[1];
    const ContourFrames frames(c);
    if (zeroLength(segment)) return resultFor(placeOfPoint(a, frames));
    if (alongBoundary(a, b, c)) return UTMAT_SEGMENT_ON_BOUNDARY;
    const kb::Vector<double> cuts = cutsAlong(segment, c);
    if (failed()) return UTMAT_SEGMENT_FAILED;
    const double length = cuts.back();
    bool inside = false;
    bool outside = false;
    for (std::size_t j = 0; j + 1 < cuts.size() && !(inside && outside); ++j) {
        if (!(cuts[j + 1] > cuts[j])) continue;
        const Place p = placeOfPiece(pointAt(a, b, cuts[j] / length), pointAt(a, b, cuts[j + 1] / length), frames);
        inside = inside || p == Place::inside;
        outside = outside || p == Place::outside;
    }
    if (inside && outside) return UTMAT_SEGMENT_CROSSES;
    if (inside) return UTMAT_SEGMENT_INSIDE;
    return outside ? UTMAT_SEGMENT_OUTSIDE : UTMAT_SEGMENT_ON_BOUNDARY;
}

}  // namespace

extern "C" {

void UTMAT_CalculerIntersectionSegmentPolyligne(
    const Point2d* segment, const Point2d* polyline, int n, double tol, int capacity, int* pointFound,
    int* pointCount, Point2d* points, double* abscissaeOnSegment, double* abscissaeOnPolyline,
    int* overlapFound, int* overlapCount, Point2d* overlapPoints, double* overlapAbscissaeOnSegment,
    double* overlapAbscissaeOnPolyline) noexcept {
    if (!kb::utmat::enter(segment, pointFound, pointCount, overlapFound, overlapCount)) return;
    Sinks out{{pointFound, pointCount, points, abscissaeOnSegment, abscissaeOnPolyline, capacity},
              {overlapFound, overlapCount, overlapPoints, overlapAbscissaeOnSegment, overlapAbscissaeOnPolyline,
               capacity}};
    out.clear();
    runGuarded([&] { segmentAgainstPolyline(segment, polyline, n, tol, out); });
}

void UTMAT_CalculerIntersectionPolylignePolyligne(
    const UtDonneesIntersection* request, int* pointFound, int* pointCount, Point2d* points,
    double* abscissae1, double* abscissae2, int* overlapFound, int* overlapCount, Point2d* overlapPoints,
    double* overlapAbscissae1, double* overlapAbscissae2) noexcept {
    if (!kb::utmat::enter(request, pointFound, pointCount, overlapFound, overlapCount)) return;
    const UtDonneesIntersection& r = *request;
    Sinks out{{pointFound, pointCount, points, abscissae1, abscissae2, r.capacity},
              {overlapFound, overlapCount, overlapPoints, overlapAbscissae1, overlapAbscissae2, r.capacity}};
    out.clear();
    runGuarded([&] { polylineAgainstPolyline(r.pts1, r.n1, r.pts2, r.n2, r.tol, out); });
}

void UTMAT_CalculerIntersectionPolylignePolyligneAvecAbscisses(
    const UtDonneesIntersection* request, int* pointFound, int* pointCount, Point2d* points,
    double* abscissae1, double* abscissae2, int* overlapFound, int* overlapCount, Point2d* overlapPoints,
    double* overlapAbscissae1, double* overlapAbscissae2) noexcept {
    if (!kb::utmat::enter(request, pointFound, pointCount, overlapFound, overlapCount)) return;
    const UtDonneesIntersection& r = *request;
    Sinks out{{pointFound, pointCount, points, abscissae1, abscissae2, r.capacity},
              {overlapFound, overlapCount, overlapPoints, overlapAbscissae1, overlapAbscissae2, r.capacity}};
    out.clear();
    if (r.pts1 == nullptr || r.pts2 == nullptr || r.n1 < 2 || r.n2 < 2) return;
    if (kb::utmat::refuseNull(r.abs1, r.abs2)) return;
    runGuarded([&] { walkByAbscissae(r, out); });
}

void UTMAT_CalculerIntersectionSegmentPolylignePlusProche(const Point2d* segment, const Point2d* polyline, int n,
                                                          double tol, const Point2d* reference, int acceptReference,
                                                          Point2d* point, double* abscissaOnSegment,
                                                          double* abscissaOnPolyline, int* isPoint,
                                                          int* isOverlapEnd) noexcept {
    if (!kb::utmat::enter(segment, reference, isPoint, isOverlapEnd)) return;
    *isPoint = *isOverlapEnd = 0;
    Sinks scratch = scratchResults.sinks();
    runGuarded([&] { segmentAgainstPolyline(segment, polyline, n, tol, scratch); });
    if (failed()) return;
    chooseNearest(*reference, tol, acceptReference, {point, abscissaOnSegment, abscissaOnPolyline, isPoint, isOverlapEnd});
}

void UTMAT_CalculerIntersectionPolylignePolylignePlusProche(const Point2d* poly1, int n1, const Point2d* poly2,
                                                            int n2, double tol, const Point2d* reference,
                                                            int acceptReference, Point2d* point, double* abscissa1,
                                                            double* abscissa2, int* isPoint,
                                                            int* isOverlapEnd) noexcept {
    if (!kb::utmat::enter(reference, isPoint, isOverlapEnd)) return;
    *isPoint = *isOverlapEnd = 0;
    Sinks scratch = scratchResults.sinks();
    runGuarded([&] { polylineAgainstPolyline(poly1, n1, poly2, n2, tol, scratch); });
    if (failed()) return;
    chooseNearest(*reference, tol, acceptReference, {point, abscissa1, abscissa2, isPoint, isOverlapEnd});
}

void UTMAT_CalculerPremiereIntersectionPolyligneAvecPolyligne(const Point2d* poly1, int n1, const Point2d* poly2,
                                                              int n2, double tol, Point2d* point, double* abscissa1,
                                                              double* abscissa2, int* isPoint,
                                                              int* isOverlap) noexcept {
    if (!kb::utmat::enter(isPoint, isOverlap)) return;
    *isPoint = *isOverlap = 0;
    Sinks scratch = scratchResults.sinks();
    runGuarded([&] { polylineAgainstPolyline(poly1, n1, poly2, n2, tol, scratch); });
    if (failed()) return;
    chooseFirst({point, abscissa1, abscissa2, isPoint, isOverlap});
}

void UTMAT_SegmenterPolyligne(const Point2d* polyline, int n, const Point2d* p, double tol, Point2d** first,
                              int* firstCount, Point2d** second, int* secondCount) noexcept {
    if (!kb::utmat::enter(polyline, p, first, firstCount, second, secondCount)) return;
    if (n < 1 || *first != nullptr || *second != nullptr) {
        kb::utmat::raiseError();
        return;
    }
    const double lo = std::fmin(polyline[0].x, polyline[n - 1].x);
    const double hi = std::fmax(polyline[0].x, polyline[n - 1].x);
    if (!UTMAT_AppartenirAIntFerme(p->x, lo, hi, tol)) {
        kb::utmat::raiseError();
        return;
    }
    *firstCount = *secondCount = 0;
    bool made = false;
    if (UTMAT_Egal(p->x, polyline[0].x, tol)) {
        made = makePart(second, polyline, n, nullptr, nullptr, secondCount);
    } else if (UTMAT_Egal(p->x, polyline[n - 1].x, tol)) {
        made = makePart(first, polyline, n, nullptr, nullptr, firstCount);
    } else {
        const Cut cut = cutProfile(polyline, n, *p, tol);
        made = makePart(first, polyline, cut.firstEnd, nullptr, p, firstCount) &&
               makePart(second, polyline + cut.secondBegin, n - cut.secondBegin, p, nullptr, secondCount);
    }
    if (made) return;
    // Nothing is handed back on failure: a part already made is released.
    void* made1 = *first;
    if (made1 != nullptr) MEM_LibererTableau(&made1);
    *first = nullptr;
    *firstCount = 0;
    kb::utmat::raiseError();
}

int UTMAT_ComparerPointASegment(const Point2d* p, const Point2d* a, const Point2d* b, double tol) noexcept {
    if (!kb::utmat::enter(p, a, b)) return 0;
    if (UTMAT_PointsIdentiques(p, a, tol) || UTMAT_PointsIdentiques(p, b, tol)) return 1;
    const Point2d ab = kb::utmat::difference(*a, *b);
    if (kb::utmat::dot(ab, kb::utmat::difference(*a, *p)) <= 0.0) return 0;
    if (kb::utmat::dot(ab, kb::utmat::difference(*p, *b)) <= 0.0) return 0;
    UtDroite line;
    UTMAT_CalculerDroite2Pt(a, b, &line);
    if (failed()) return 0;
    double offset = 0.0;
    UTMAT_CalculerDeportPtDroite(&line, p, &offset);
    return !failed() && UTMAT_Egal(offset, 0.0, tol) ? 1 : 0;
}

void UTMAT_PointSurPolyligne(const Point2d* polyline, int n, const Point2d* p, double tol, int* first,
                             int* second) noexcept {
    if (!kb::utmat::enter(p, first, second)) return;
    *first = *second = -1;
    if (polyline == nullptr) return;
    for (int i = 0; i + 1 < n; ++i) {
        if (UTMAT_PointsIdentiques(p, &polyline[i], tol)) {
            *first = i;
            return;
        }
        if (UTMAT_PointsIdentiques(p, &polyline[i + 1], tol)) {
            *first = i + 1;
            return;
        }
        if (UTMAT_ComparerPointASegment(p, &polyline[i], &polyline[i + 1], tol)) {
            *first = i;
            *second = i + 1;
            return;
        }
    }
}

int UTMAT_PointDansContour(const Point2d* p, const Point2d* contour, int n, double tol) noexcept {
    constexpr int kInside = 1;
    constexpr int kOutside = 2;
    if (!kb::utmat::enter(p)) return kOutside;
    if (contour == nullptr || n < 2) return kOutside;
    int crossings = 0;
    for (int i = 0; i + 1 < n; ++i) {
        const Point2d& a = contour[i];
        const Point2d& b = contour[i + 1];
        const bool bothLeft = UTMAT_Inf(a.x, p->x, tol) && UTMAT_Inf(b.x, p->x, tol);
        const bool bothAbove = UTMAT_Sup(a.y, p->y, tol) && UTMAT_Sup(b.y, p->y, tol);
        const bool bothBelow = UTMAT_Inf(a.y, p->y, tol) && UTMAT_Inf(b.y, p->y, tol);
        if (bothLeft || bothAbove || bothBelow) continue;
        if (UTMAT_ComparerPointASegment(p, &a, &b, tol)) return -(i + 1);
        if (UTMAT_Egal(a.y, b.y, kb::utmat::calculationPrecision())) {
            ++crossings;  // a level segment at the ray's height
            continue;
        }
        // Half-open rule: an end exactly at the ray's height counts with the segment whose
        // other end is strictly above, so a crossing vertex counts once.
        const bool aAbove = a.y > p->y;
        const bool bAbove = b.y > p->y;
        if (aAbove == bAbove) continue;
        const double x = (p->y - a.y) * (b.x - a.x) / (b.y - a.y) + a.x;
        if (x > p->x) ++crossings;
    }
    return crossings % 2 == 1 ? kInside : kOutside;
}

int UTMAT_SegmentDansContour(const Point2d* segment, const Point2d* contour, int n, double tol) noexcept {
    if (!kb::utmat::enter(segment, contour)) return UTMAT_SEGMENT_FAILED;
    const int status = kb::callGuarded(UTMAT_SEGMENT_FAILED, [&] { return segmentPlace(segment, {contour, n, tol}); });
    if (status == UTMAT_SEGMENT_FAILED && !failed()) kb::utmat::raiseError();
    return failed() ? UTMAT_SEGMENT_FAILED : status;
}

void UTMAT_CalculerInterpolationCurviligneDuZ(Point3d* points, int n, const int32_t* known,
                                              int* status) noexcept {
    if (!kb::utmat::enter(status)) return;
    if (points == nullptr || known == nullptr) {
        *status = UTMAT_FILL_TOO_FEW_POINTS;
        kb::utmat::raiseError();
        return;
    }
    *status = fillStatus(points, n, known);
    if (*status != UTMAT_FILL_DONE) return;
    const int result = kb::callGuarded(ERR_FAILURE, [&] {
        for (int k = 0; k < n;) {
            if (known[k] != 0) {
                ++k;
                continue;
            }
            int last = k;
            while (last + 1 < n && known[last + 1] == 0) ++last;
            fillRun(points, n, known, k, last);
            k = last + 1;
        }
        return 0;
    });
    if (result != 0) kb::utmat::raiseError();
}

}  // extern "C"
