// Polyline intersections (segment with polyline, polyline with polyline) and the filling of
// unknown elevations along a 3-D polyline.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>

#include "base/boundary.hpp"
#include "base/heap.hpp"
#include "korvelbase/utmat_polylines.h"
#include "korvelbase/utmat_segments.h"
#include "utmat/kernel_state.hpp"
#include "utmat/vector_math.hpp"

namespace {

using kb::utmat::failed;

constexpr int kScratchCapacity = 50;  // intersections kept per segment of polyline 1

// ---- stored points and the duplicate test ------------------------------------------------------

// Answers "is a stored point identical to p at the tolerance?" (|p - q| <= tol) exactly as a
// scan of every stored point would, through a hash of cells one tolerance wide: a point within
// the tolerance lies in the same or a neighbouring cell.
class StoredPoints {
public:
    explicit StoredPoints(double tol) : tol_(tol) {}

    bool containsNear(const Point2d& p) const {
        long long cx = 0;
        long long cy = 0;
        if (!cellOf(p, cx, cy)) return scanAll(p);
        for (long long dx = -1; dx <= 1; ++dx) {
            for (long long dy = -1; dy <= 1; ++dy) {
                const auto found = cells_.find(key(cx + dx, cy + dy));
                if (found == cells_.end()) continue;
                for (const Point2d& q : found->second) {
                    if (identical(p, q)) return true;
                }
            }
        }
        return scanAll(p, true);
    }

    void add(const Point2d& p) {
        long long cx = 0;
        long long cy = 0;
        if (cellOf(p, cx, cy)) {
            cells_[key(cx, cy)].push_back(p);
        } else {
            unhashed_.push_back(p);
        }
    }

private:
    bool identical(const Point2d& p, const Point2d& q) const {
        return std::fabs(kb::utmat::norm(kb::utmat::difference(p, q))) <= std::fabs(tol_);
    }
    // The cell of p; false when the tolerance or the coordinates make cells meaningless.
    bool cellOf(const Point2d& p, long long& cx, long long& cy) const {
        constexpr double kLargestCellIndex = 1e15;
        const double width = std::fabs(tol_);
        if (!(width > 0.0) || !std::isfinite(width)) return false;
        const double fx = std::floor(p.x / width);
        const double fy = std::floor(p.y / width);
        if (!(std::fabs(fx) < kLargestCellIndex) || !(std::fabs(fy) < kLargestCellIndex)) return false;
        cx = static_cast<long long>(fx);
        cy = static_cast<long long>(fy);
        return true;
    }
    static std::uint64_t key(long long cx, long long cy) {
        return static_cast<std::uint64_t>(cx) * 0x9E3779B97F4A7C15ull ^ static_cast<std::uint64_t>(cy);
    }
    // Points kept outside the cells (no usable cell), and, when everything is unhashed, all.
    bool scanAll(const Point2d& p, bool unhashedOnly = false) const {
        for (const Point2d& q : unhashed_) {
            if (identical(p, q)) return true;
        }
        if (unhashedOnly) return false;
        for (const auto& cell : cells_) {
            for (const Point2d& q : cell.second) {
                if (identical(p, q)) return true;
            }
        }
        return false;
    }

    using Cell = kb::Vector<Point2d>;
    double tol_;
    std::unordered_map<std::uint64_t, Cell, std::hash<std::uint64_t>, std::equal_to<std::uint64_t>,
                       kb::HeapAllocator<std::pair<const std::uint64_t, Cell>>>
        cells_;
    Cell unhashed_;
};

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

bool zeroLength(const Point2d& a, const Point2d& b) { return UTMAT_PointsIdentiques(&a, &b, 0.0) != 0; }

// Intersects segment s with segment k of the polyline, appending with the polyline's abscissae
// shifted by `along` (and the segment's by `alongSegment`); false when a primitive failed.
bool intersectPair(const Point2d* s, const Point2d* polyline, int k, double along, double alongSegment,
                   double tol, PointSink& points, StoredPoints& stored, OverlapSink& overlaps) {
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
    if (pointFound != 0) appendPoint(points, stored, p, t1 + alongSegment, t2 + along);
    if (overlapFound != 0) {
        const double a1[2] = {on1[0] + alongSegment, on1[1] + alongSegment};
        const double a2[2] = {on2[0] + along, on2[1] + along};
        appendOverlap(overlaps, ends, a1, a2);
    }
    return true;
}

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

Box boxOf(const Point2d& a, const Point2d& b, double grow) {
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
        const double f = std::floor((v - lo) / (hi - lo) * count);
        return f < 0 ? 0 : (f >= count ? count - 1 : static_cast<int>(f));
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
        if (!zeroLength(polyline[k], polyline[k + 1])) along += kb::utmat::norm(kb::utmat::difference(polyline[k], polyline[k + 1]));
    }
    return starts;
}

// Intersects one segment with the candidate segments of a polyline (all of them, in order,
// when `candidates` is null).
void segmentWithPolyline(const Point2d* segment, const Point2d* polyline, int n, const kb::Vector<double>& starts,
                         const kb::Vector<int>* candidates, double alongSegment, double tol,
                         PointSink& points, StoredPoints& stored, OverlapSink& overlaps) {
    const auto visit = [&](int k) {
        if (zeroLength(polyline[k], polyline[k + 1])) return true;
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

}  // namespace

extern "C" {

void UTMAT_CalculerIntersectionSegmentPolyligne(
    const Point2d* segment, const Point2d* polyline, int n, double tol, int capacity, int* pointFound,
    int* pointCount, Point2d* points, double* abscissaeOnSegment, double* abscissaeOnPolyline,
    int* overlapFound, int* overlapCount, Point2d* overlapPoints, double* overlapAbscissaeOnSegment,
    double* overlapAbscissaeOnPolyline) noexcept {
    if (!kb::utmat::enter(segment, pointFound, pointCount, overlapFound, overlapCount)) return;
    *pointFound = *pointCount = *overlapFound = *overlapCount = 0;
    if (polyline == nullptr || n < 2) return;
    kb::callGuarded(0, [&] {
        PointSink pointSink{pointFound, pointCount, points, abscissaeOnSegment, abscissaeOnPolyline, capacity};
        OverlapSink overlapSink{overlapFound, overlapCount, overlapPoints, overlapAbscissaeOnSegment,
                                overlapAbscissaeOnPolyline, capacity};
        StoredPoints stored(tol);
        const kb::Vector<double> starts = segmentStarts(polyline, n);
        segmentWithPolyline(segment, polyline, n, starts, nullptr, 0.0, tol, pointSink, stored, overlapSink);
        return 0;
    });
}

void UTMAT_CalculerIntersectionPolylignePolyligne(
    const UtDonneesIntersection* request, int* pointFound, int* pointCount, Point2d* points,
    double* abscissae1, double* abscissae2, int* overlapFound, int* overlapCount, Point2d* overlapPoints,
    double* overlapAbscissae1, double* overlapAbscissae2) noexcept {
    if (!kb::utmat::enter(request, pointFound, pointCount, overlapFound, overlapCount)) return;
    *pointFound = *pointCount = *overlapFound = *overlapCount = 0;
    const UtDonneesIntersection& r = *request;
    if (r.pts1 == nullptr || r.pts2 == nullptr || r.n1 < 2 || r.n2 < 2) return;
    const int failedStatus = kb::callGuarded(ERR_FAILURE, [&] {
        PointSink out{pointFound, pointCount, points, abscissae1, abscissae2, r.capacity};
        OverlapSink outOverlaps{overlapFound, overlapCount, overlapPoints, overlapAbscissae1,
                                overlapAbscissae2, r.capacity};
        StoredPoints stored(r.tol);
        const kb::Vector<double> starts2 = segmentStarts(r.pts2, r.n2);
        const SegmentGrid grid(r.pts2, r.n2, std::fabs(r.tol));
        kb::Vector<int> candidates;
        double along1 = 0.0;
        for (int i = 0; i + 1 < r.n1; ++i) {
            const Point2d* s = r.pts1 + i;
            if (zeroLength(s[0], s[1])) continue;
            // Up to 50 of each kind per segment of polyline 1, gathered first and then appended.
            int scratchFound = 0, scratchCount = 0, scratchOverlapFound = 0, scratchOverlapCount = 0;
            Point2d scratchPoints[kScratchCapacity];
            double scratchOn1[kScratchCapacity], scratchOn2[kScratchCapacity];
            Point2d scratchEnds[2 * kScratchCapacity];
            double scratchEndsOn1[2 * kScratchCapacity], scratchEndsOn2[2 * kScratchCapacity];
            PointSink scratch{&scratchFound, &scratchCount, scratchPoints, scratchOn1, scratchOn2, kScratchCapacity};
            OverlapSink scratchOverlaps{&scratchOverlapFound, &scratchOverlapCount, scratchEnds, scratchEndsOn1,
                                        scratchEndsOn2, kScratchCapacity};
            StoredPoints scratchStored(r.tol);
            grid.candidates(boxOf(s[0], s[1], std::fabs(r.tol)), candidates);
            segmentWithPolyline(s, r.pts2, r.n2, starts2, &candidates, 0.0, r.tol, scratch, scratchStored,
                                scratchOverlaps);
            if (failed()) return ERR_FAILURE;
            for (int k = 0; k < scratchCount; ++k) {
                appendPoint(out, stored, scratchPoints[k], scratchOn1[k] + along1, scratchOn2[k]);
            }
            for (int k = 0; k < scratchOverlapCount; ++k) {
                const Point2d ends[2] = {scratchEnds[2 * k], scratchEnds[2 * k + 1]};
                const double on1[2] = {scratchEndsOn1[2 * k] + along1, scratchEndsOn1[2 * k + 1] + along1};
                const double on2[2] = {scratchEndsOn2[2 * k], scratchEndsOn2[2 * k + 1]};
                appendOverlap(outOverlaps, ends, on1, on2);
            }
            along1 += kb::utmat::norm(kb::utmat::difference(s[0], s[1]));
            if (bothComplete(out, outOverlaps)) break;
        }
        return 0;
    });
    if (failedStatus != 0 && !failed()) kb::utmat::raiseError();
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
