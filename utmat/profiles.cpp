// Profiles and polylines: the difference of two profiles (lengths and areas above and below,
// crossings and zones), tunnel simplification, purge of repeated points, the junction point of
// two directions, offsets, masks, tangents of offset curves and the circle-triangle test.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/boundary.hpp"
#include "base/heap.hpp"
#include "base/optional_output.hpp"
#include "korvelbase/blockarray.h"
#include "korvelbase/constants.h"
#include "korvelbase/utmat_clothoid.h"
#include "korvelbase/utmat_polylines.h"
#include "korvelbase/utmat_profiles.h"
#include "korvelbase/utmat_segments.h"
#include "utmat/kernel_state.hpp"
#include "utmat/segment_math.hpp"
#include "utmat/vector_math.hpp"

namespace {

using kb::utmat::failed;
using kb::utmat::raiseError;

// ---- the difference of two profiles -------------------------------------------------------------

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


// ---- tunnels ------------------------------------------------------------------------------------

// Deviation modes of the tunnel: the distance from the axis divided by the axis direction's y or
// x component; any other mode takes the distance as it is.
constexpr int kDeviationOverDy = 1;
constexpr int kDeviationOverDx = 2;
// Relative slack of the bounds that accept a whole group of points at once.  The exact test of
// one point carries a rounding error of a few units in the last place of its distance from the
// anchor; a group is accepted only when its bound clears the limits by 1e-10 of that distance,
// so a point it accepts is one the exact test accepts too.
constexpr double kGroupBoundSlack = 1e-10;

// The tunnel from an anchor A towards a point B: axis through A with the unit direction A -> B
// (a zero direction when A = B, as the kernel's 3-D line leaves it).
struct Tunnel {
    Point3d origin;
    Point3d direction;
    double halfWidth;
    double length;
    bool scaled;     // mode 1 or 2 with a usable divisor
    bool ignored;    // mode 1 or 2 with a divisor 0 at the precision: the deviation counts as 0
    double divisor;  // the direction's y (mode 1) or x (mode 2)
};

Tunnel makeTunnel(const Point3d& a, const Point3d& b, double width, double length, int mode) {
    Tunnel t{a, kb::utmat::unit(kb::utmat::difference(a, b)), width / 2.0, length, false, false, 1.0};
    if (mode == kDeviationOverDy || mode == kDeviationOverDx) {
        t.divisor = mode == kDeviationOverDy ? t.direction.y : t.direction.x;
        t.ignored = UTMAT_Egal(t.divisor, 0.0, kb::utmat::calculationPrecision()) != 0;
        t.scaled = !t.ignored;
    }
    return t;
}

// Distance of p from the axis: |direction x (p - A)|.
double axisDistance(const Tunnel& t, const Point3d& p) {
    return kb::utmat::norm(kb::utmat::cross(t.direction, kb::utmat::difference(t.origin, p)));
}

double reachFromAnchor(const Tunnel& t, const Point3d& p) {
    return kb::utmat::norm(kb::utmat::difference(t.origin, p));
}

// The deviation rule for a distance d from the axis (d >= 0).
bool deviationInside(const Tunnel& t, double d) {
    const double deviation = t.ignored ? 0.0 : (t.scaled ? d / t.divisor : d);
    return std::fabs(deviation) < t.halfWidth;
}

// The point-in-tunnel rule: deviation strictly below W/2 and distance from A strictly below L.
bool tunnelContains(const Tunnel& t, const Point3d& p) {
    return deviationInside(t, axisDistance(t, p)) && reachFromAnchor(t, p) < t.length;
}

// A group of consecutive points: every one lies within `radius` of the segment first -> last
// (the group's own first and last points).
struct Capsule {
    Point3d first;
    Point3d last;
    double radius;
};

double distanceToSegment(const Point3d& p, const Point3d& a, const Point3d& b) {
    const Point3d ab = kb::utmat::difference(a, b);
    const Point3d ap = kb::utmat::difference(a, p);
    const double span = ab.x * ab.x + ab.y * ab.y + ab.z * ab.z;
    double s = span > 0.0 ? (ap.x * ab.x + ap.y * ab.y + ap.z * ab.z) / span : 0.0;
    s = std::fmin(std::fmax(s, 0.0), 1.0);
    return kb::utmat::norm(Point3d{ap.x - s * ab.x, ap.y - s * ab.y, ap.z - s * ab.z});
}

// True only when every point of the group certainly passes the point-in-tunnel rule: the
// largest distance from the axis over the capsule is at most that of its ends plus the radius
// (convexity again), the largest distance from A likewise.
bool capsuleCertainlyInside(const Tunnel& t, const Capsule& c) {
    const double reach = std::fmax(reachFromAnchor(t, c.first), reachFromAnchor(t, c.last)) + c.radius;
    const double slack = kGroupBoundSlack * (reach + c.radius);
    if (!(reach + slack < t.length)) return false;
    if (t.ignored) return 0.0 < t.halfWidth;
    const double off = std::fmax(axisDistance(t, c.first), axisDistance(t, c.last)) + c.radius + slack;
    const double deviation = t.scaled ? off / std::fabs(t.divisor) : off;
    return deviation < t.halfWidth;
}

// The points dropped since the anchor, as a forest of groups whose sizes are decreasing powers
// of two (a binary counter), each group a binary tree of capsules; a capsule's radius is the
// largest distance of its points from its segment, measured when two groups merge (each point
// is measured once per level: O(m log m) in all for m points).  allInside answers "does every
// point pass the tunnel rule?" exactly as testing each point would: a group whose capsule is
// certainly inside is accepted whole; otherwise its first and last points are tested exactly
// (one outside settles the answer) and its two halves are examined.  On a straight or gently
// curving run the answer costs O(log m); near the tunnel's edges it descends to the small
// groups, never testing a point more than the walk back would, plus two per group visited.
class DroppedRun {
public:
    // Groups of up to this many points are tested point by point and keep no halves (a quarter
    // of the nodes a tree down to single points would need).
    static constexpr int kLeafPoints = 8;

    void clear() {
        points_.clear();
        nodes_.clear();
        roots_.clear();
    }

    void append(const Point3d& p) {
        const int index = static_cast<int>(points_.size());
        points_.push_back(p);
        nodes_.push_back({Capsule{p, p, 0.0}, -1, -1, index, index + 1});
        roots_.push_back(static_cast<int>(nodes_.size()) - 1);
        while (roots_.size() >= 2 && size(node(roots_.back())) == size(node(roots_[roots_.size() - 2]))) {
            const int right = roots_.back();
            roots_.pop_back();
            const int left = roots_.back();
            roots_.pop_back();
            Node m = merged(left, right);
            if (size(m) <= kLeafPoints) {
                // A small group keeps no halves: its parts are the last two nodes; drop them.
                m.left = m.right = -1;
                nodes_.resize(nodes_.size() - 2);
            }
            nodes_.push_back(m);
            roots_.push_back(static_cast<int>(nodes_.size()) - 1);
        }
    }

    bool allInside(const Tunnel& t) {
        pending_.assign(roots_.begin(), roots_.end());
        while (!pending_.empty()) {
            const Node& n = node(pending_.back());
            pending_.pop_back();
            if (capsuleCertainlyInside(t, n.capsule)) continue;
            if (n.left < 0) {
                for (int k = n.begin; k < n.end; ++k) {
                    if (!tunnelContains(t, points_[static_cast<std::size_t>(k)])) return false;
                }
                continue;
            }
            if (!tunnelContains(t, n.capsule.first) || !tunnelContains(t, n.capsule.last)) return false;
            pending_.push_back(n.left);
            pending_.push_back(n.right);
        }
        return true;
    }

private:
    struct Node {
        Capsule capsule;
        int left;
        int right;
        int begin;  // the node's points: points_[begin .. end)
        int end;
    };
    const Node& node(int id) const { return nodes_[static_cast<std::size_t>(id)]; }
    static int size(const Node& n) { return n.end - n.begin; }

    Node merged(int left, int right) const {
        Node m{Capsule{node(left).capsule.first, node(right).capsule.last, 0.0}, left, right, node(left).begin,
               node(right).end};
        for (int k = m.begin; k < m.end; ++k) {
            const double d = distanceToSegment(points_[static_cast<std::size_t>(k)], m.capsule.first, m.capsule.last);
            // A NaN point (kept in the run by a flag the caller left at 1) spoils the bound.
            m.capsule.radius = std::isnan(d) ? INFINITY : std::fmax(m.capsule.radius, d);
        }
        return m;
    }

    kb::Vector<Point3d> points_;
    kb::Vector<Node> nodes_;
    kb::Vector<int> roots_;
    kb::Vector<int> pending_;
};

// Tunnel simplification.  At point i the tunnel runs from the anchor towards point i + 1; the
// points tested with it are i and the run of points just before i whose flags read 1 (the walk
// back stops at the first flag other than 1).  Flags of outside points and of the last point are
// left as the caller set them, and a flag left at 1 extends the run, as the walk back would read
// it.
void simplifyByTunnel(const Point3d* p, int n, double width, double length, int mode, int32_t* flags) {
    flags[0] = 0;
    int anchor = 0;
    DroppedRun run;
    for (int i = 1; i + 1 < n; ++i) {
        const Tunnel t = makeTunnel(p[anchor], p[i + 1], width, length, mode);
        if (!tunnelContains(t, p[i])) {
            anchor = i;
        } else {
            flags[i] = run.allInside(t) ? 1 : 0;
            if (flags[i] == 0) anchor = i;
        }
        if (flags[i] == 1) {
            run.append(p[i]);
        } else {
            run.clear();
        }
    }
}

// ---- junction of two directions -----------------------------------------------------------------

// The junction's quadratic is solved at this fixed precision, and the collinearity check judges
// its angles at the next one; neither follows the kernel's calculation precision.
constexpr double kJunctionSolverPrecision = 1e-5;
constexpr double kJunctionAngleTolerance = 1e-6;

// p + scale v.
Point2d plus(const Point2d& p, const Point2d& v, double scale) { return {p.x + scale * v.x, p.y + scale * v.y}; }

// Of two roots of the junction's quadratic: the one between 0 and the bound when exactly one
// is, otherwise the larger.  The bound is the shorter distance from P1 or P2 to the meeting
// point of the two tangent lines (|P1 P2| when they are parallel).  false: a primitive failed.
bool chooseJunctionRoot(const Point2d& p1, const Point2d& u1, const Point2d& p2, const Point2d& u2,
                        const double (&roots)[2], double& chosen) {
    UtDroite line1;
    UtDroite line2;
    UTMAT_CalculerDroitePtVecteur(&p1, &u1, &line1);
    if (failed()) return false;
    UTMAT_CalculerDroitePtVecteur(&p2, &u2, &line2);
    if (failed()) return false;
    Point2d meeting{0.0, 0.0};
    int found = 0;
    UTMAT_CalculerIntersection2Droite(&line1, &line2, &meeting, &found);
    if (failed()) return false;
    const double bound = found != 0 ? std::fmin(kb::utmat::norm(kb::utmat::difference(p1, meeting)),
                                                kb::utmat::norm(kb::utmat::difference(p2, meeting)))
                                    : kb::utmat::norm(kb::utmat::difference(p1, p2));
    const bool first = 0.0 <= roots[0] && roots[0] <= bound;
    const bool second = 0.0 <= roots[1] && roots[1] <= bound;
    if (first != second) {
        chosen = first ? roots[0] : roots[1];
    } else {
        chosen = std::fmax(roots[0], roots[1]);
    }
    return true;
}

// UTMAT_CalculerAngleV1V2 brought into (-pi, pi].
double signedAngle(const Point2d& from, const Point2d& to) {
    const double angle = UTMAT_CalculerAngleV1V2(&from, &to);
    if (failed()) return 0.0;
    return UTMAT_NormaliserAngle(0, angle);
}

bool differsFromZero(double angle) { return UTMAT_Egal(angle, 0.0, kJunctionAngleTolerance) == 0; }

// ---- a grid of segments -------------------------------------------------------------------------

struct Box {
    double minX, minY, maxX, maxY;
};

Box boxAround(const Point2d& a, const Point2d& b, double grow) {
    return {std::fmin(a.x, b.x) - grow, std::fmin(a.y, b.y) - grow, std::fmax(a.x, b.x) + grow,
            std::fmax(a.y, b.y) + grow};
}

// The segments of a polyline (segment k from point k to k + 1) listed in the cells of a uniform
// grid over their extent, about one cell per segment with square cells (a long thin extent gets
// a long row of cells).  visit calls back every segment whose cell range meets a box, once.
class SegmentGrid {
public:
    SegmentGrid(const Point2d* points, int segments) : segments_(segments) {
        Box all{INFINITY, INFINITY, -INFINITY, -INFINITY};
        for (int k = 0; k < segments; ++k) {
            const Box b = boxAround(points[k], points[k + 1], 0.0);
            all = {std::fmin(all.minX, b.minX), std::fmin(all.minY, b.minY), std::fmax(all.maxX, b.maxX),
                   std::fmax(all.maxY, b.maxY)};
        }
        bounds_ = all;
        const double width = all.maxX - all.minX;
        const double height = all.maxY - all.minY;
        usable_ = segments > 0 && std::isfinite(width) && std::isfinite(height);
        stamps_.assign(static_cast<std::size_t>(segments > 0 ? segments : 0), 0);
        if (!usable_) return;
        const double target = segments;
        double side = std::sqrt(width * height / target);
        side = std::fmax(side, std::fmax(width, height) / target);
        if (!(side > 0.0)) side = 1.0;
        columns_ = static_cast<int>(std::fmin(std::floor(width / side) + 1.0, 4.0 * target + 1.0));
        rows_ = static_cast<int>(std::fmin(std::floor(height / side) + 1.0, 4.0 * target + 1.0));
        cells_.resize(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_));
        for (int k = 0; k < segments; ++k) {
            forCells(boxAround(points[k], points[k + 1], 0.0), [&](std::size_t cell) { cells_[cell].push_back(k); });
        }
    }

    template <typename Visit>
    void visit(const Box& box, Visit visitSegment) {
        ++stamp_;
        if (!usable_) {
            for (int k = 0; k < segments_; ++k) visitSegment(k);
            return;
        }
        if (box.minX > bounds_.maxX || box.maxX < bounds_.minX || box.minY > bounds_.maxY || box.maxY < bounds_.minY) {
            return;
        }
        forCells(box, [&](std::size_t cell) {
            for (const int k : cells_[cell]) {
                int& seen = stamps_[static_cast<std::size_t>(k)];
                if (seen == stamp_) continue;
                seen = stamp_;
                visitSegment(k);
            }
        });
    }

private:
    static int cellIndex(double v, double lo, double hi, int count) {
        if (!(hi > lo)) return 0;
        const double f = std::floor((v - lo) / (hi - lo) * count);
        if (!(f > 0.0)) return 0;  // below the grid, or NaN
        return f >= count ? count - 1 : static_cast<int>(f);
    }
    template <typename Visit>
    void forCells(const Box& box, Visit visitCell) const {
        const int x0 = cellIndex(box.minX, bounds_.minX, bounds_.maxX, columns_);
        const int x1 = cellIndex(box.maxX, bounds_.minX, bounds_.maxX, columns_);
        const int y0 = cellIndex(box.minY, bounds_.minY, bounds_.maxY, rows_);
        const int y1 = cellIndex(box.maxY, bounds_.minY, bounds_.maxY, rows_);
        for (int gx = x0; gx <= x1; ++gx) {
            for (int gy = y0; gy <= y1; ++gy) {
                visitCell(static_cast<std::size_t>(gx) * static_cast<std::size_t>(rows_) + static_cast<std::size_t>(gy));
            }
        }
    }

    int segments_;
    Box bounds_{0, 0, 0, 0};
    int columns_ = 1;
    int rows_ = 1;
    bool usable_ = false;
    kb::Vector<kb::Vector<int>> cells_;
    kb::Vector<int> stamps_;
    int stamp_ = 0;
};

// ---- offsets ------------------------------------------------------------------------------------

// A mitred corner farther than this many offset distances from its vertex is bevelled.
constexpr double kMitreLimit = 4.0;
// Most chords per rounded corner (a half turn at the finest chord tolerance).
constexpr int kMaxArcChords = 256;
// Relative slack of the test that keeps a piece of offset: its nearest part of the centreline
// may be closer than the part it was built from by at most this fraction of the distance.
constexpr double kNearestSlack = 1e-9;
// Absolute part of that slack, relative to the coordinates' magnitude (their rounding).
constexpr double kCoordinateSlack = 1e-12;

Point2d rightNormal(const Point2d& unitDirection) { return {unitDirection.y, -unitDirection.x}; }

Point2d rotated(const Point2d& v, double angle) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {v.x * c - v.y * s, v.x * s + v.y * c};
}

double distanceToSegment(const Point2d& p, const Point2d& a, const Point2d& b) {
    const Point2d ab = kb::utmat::difference(a, b);
    const Point2d ap = kb::utmat::difference(a, p);
    const double span = kb::utmat::dot(ab, ab);
    double s = span > 0.0 ? kb::utmat::dot(ap, ab) / span : 0.0;
    s = std::fmin(std::fmax(s, 0.0), 1.0);
    return kb::utmat::norm(Point2d{ap.x - s * ab.x, ap.y - s * ab.y});
}

// p + t r = q + u s; false when r and s are parallel.
bool meetLines(const Point2d& p, const Point2d& r, const Point2d& q, const Point2d& s, double& t, double& u) {
    const double denominator = kb::utmat::cross(r, s);
    if (denominator == 0.0 || !std::isfinite(denominator)) return false;
    const Point2d pq = kb::utmat::difference(p, q);
    t = kb::utmat::cross(pq, s) / denominator;
    u = kb::utmat::cross(pq, r) / denominator;
    return true;
}

// The centreline without repeated consecutive points, with a signed width (positive to the
// right) per point.
struct Centreline {
    kb::Vector<Point2d> points;
    kb::Vector<double> widths;
    kb::Vector<Point2d> directions;  // unit, one per segment
};

Centreline makeCentreline(const Point2d* p, int n, const double* widths, double constantWidth) {
    Centreline c;
    for (int k = 0; k < n; ++k) {
        if (!c.points.empty() && p[k].x == c.points.back().x && p[k].y == c.points.back().y) continue;
        c.points.push_back(p[k]);
        c.widths.push_back(widths != nullptr ? widths[k] : constantWidth);
    }
    for (std::size_t k = 0; k + 1 < c.points.size(); ++k) {
        c.directions.push_back(kb::utmat::unit(kb::utmat::difference(c.points[k], c.points[k + 1])));
    }
    return c;
}

// What a piece of the raw offset was built from: a centreline segment, or a vertex (the chords
// of a rounded corner, a bevel, the bridge at a tight inner corner).
struct Source {
    bool vertex;
    int index;
};

// The offset before clean-up: offset segments joined at every vertex, loops and all.
struct RawOffset {
    kb::Vector<Point2d> points;
    kb::Vector<Source> sources;  // of the raw segment that ends at points[r + 1]

    void add(const Point2d& p, Source from) {
        if (!points.empty()) sources.push_back(from);
        points.push_back(p);
    }
};

struct OffsetStyle {
    bool round;
    double chordTolerance;
};

// Chords of the rounded corner at vertex k: the circle of radius |w| about the vertex, from the
// normal of the segment before to the normal of the segment after, turning by `sweep`.
void addRoundCorner(RawOffset& raw, const Point2d& vertex, const Point2d& normalBefore, double w, double sweep,
                    const Point2d& end, int k, double chordTolerance) {
    const double radius = std::fabs(w);
    const double step = chordTolerance < radius ? 2.0 * std::acos(1.0 - chordTolerance / radius) : dc_pi / 2.0;
    const double wanted = std::ceil(std::fabs(sweep) / step);
    const int chords = static_cast<int>(std::fmin(std::fmax(wanted, 1.0), static_cast<double>(kMaxArcChords)));
    for (int j = 1; j < chords; ++j) {
        raw.add(plus(vertex, rotated(normalBefore, sweep * j / chords), w), {true, k});
    }
    raw.add(end, {true, k});
}

// The join at vertex k between offset segments k - 1 and k.
void addCorner(RawOffset& raw, const Centreline& c, int k, const OffsetStyle& style) {
    const Point2d& vertex = c.points[static_cast<std::size_t>(k)];
    const double w = c.widths[static_cast<std::size_t>(k)];
    const Point2d& before = c.directions[static_cast<std::size_t>(k - 1)];
    const Point2d& after = c.directions[static_cast<std::size_t>(k)];
    const Point2d normalBefore = rightNormal(before);
    const Point2d endBefore = plus(vertex, normalBefore, w);
    const Point2d startAfter = plus(vertex, rightNormal(after), w);
    const Source segmentBefore{false, k - 1};
    const double turn = kb::utmat::cross(before, after);
    const double alongTurn = kb::utmat::dot(before, after);
    if (w == 0.0 || (turn == 0.0 && alongTurn > 0.0)) {
        raw.add(endBefore, segmentBefore);  // on the vertex, or straight on: one point
        return;
    }
    const bool reversal = turn == 0.0;
    const bool outer = reversal || ((w > 0.0) == (turn > 0.0));
    // The two offset segments as lines: from their start, towards their end.
    const double wBefore = c.widths[static_cast<std::size_t>(k - 1)];
    const double wAfter = c.widths[static_cast<std::size_t>(k + 1)];
    const Point2d startBefore = plus(c.points[static_cast<std::size_t>(k - 1)], normalBefore, wBefore);
    const Point2d endAfter = plus(c.points[static_cast<std::size_t>(k + 1)], rightNormal(after), wAfter);
    const Point2d runBefore = kb::utmat::difference(startBefore, endBefore);
    const Point2d runAfter = kb::utmat::difference(startAfter, endAfter);
    double t = 0.0;
    double u = 0.0;
    const bool meet = meetLines(startBefore, runBefore, startAfter, runAfter, t, u);
    if (outer && style.round) {
        raw.add(endBefore, segmentBefore);
        const double sweep = reversal ? (w > 0.0 ? dc_pi : -dc_pi) : std::atan2(turn, alongTurn);
        addRoundCorner(raw, vertex, normalBefore, w, sweep, startAfter, k, style.chordTolerance);
        return;
    }
    if (outer && reversal) {
        // A square end: the corners a width beyond the vertex.
        raw.add(endBefore, segmentBefore);
        raw.add(plus(endBefore, before, std::fabs(w)), {true, k});
        raw.add(plus(startAfter, before, std::fabs(w)), {true, k});
        raw.add(startAfter, {true, k});
        return;
    }
    if (outer) {
        const Point2d mitre = plus(startBefore, runBefore, t);
        if (meet && kb::utmat::norm(kb::utmat::difference(vertex, mitre)) <= kMitreLimit * std::fabs(w)) {
            raw.add(mitre, segmentBefore);
            return;
        }
    } else if (meet && t >= 0.0 && t <= 1.0 && u >= 0.0 && u <= 1.0) {
        raw.add(plus(startBefore, runBefore, t), segmentBefore);  // the inner corner, trimmed
        return;
    }
    // A bevel, or at a tight inner corner the bridge whose loop the clean-up removes.
    raw.add(endBefore, segmentBefore);
    raw.add(startAfter, {true, k});
}

RawOffset buildRawOffset(const Centreline& c, const OffsetStyle& style) {
    RawOffset raw;
    const int last = static_cast<int>(c.points.size()) - 1;
    raw.add(plus(c.points[0], rightNormal(c.directions[0]), c.widths[0]), {false, 0});
    for (int k = 1; k < last; ++k) addCorner(raw, c, k, style);
    raw.add(plus(c.points[static_cast<std::size_t>(last)], rightNormal(c.directions.back()),
                 c.widths[static_cast<std::size_t>(last)]),
            {false, last - 1});
    return raw;
}

double distanceToSource(const Centreline& c, const Point2d& p, const Source& s) {
    const std::size_t k = static_cast<std::size_t>(s.index);
    if (s.vertex) return kb::utmat::norm(kb::utmat::difference(c.points[k], p));
    return distanceToSegment(p, c.points[k], c.points[k + 1]);
}

// A piece of raw offset is kept when the part of the centreline it was built from is (within
// the slack) the nearest part of the centreline to it: the pieces of a loop at a tight bend
// come closer to a neighbouring segment than to their own.
bool keepsItsDistance(const Centreline& c, SegmentGrid& grid, const Point2d& p, const Source& s) {
    const double own = distanceToSource(c, p, s);
    const double slack = kNearestSlack * own + kCoordinateSlack * (std::fabs(p.x) + std::fabs(p.y));
    bool kept = true;
    grid.visit(boxAround(p, p, own), [&](int k) {
        if (!kept) return;
        const std::size_t i = static_cast<std::size_t>(k);
        if (distanceToSegment(p, c.points[i], c.points[i + 1]) < own - slack) kept = false;
    });
    return kept;
}

// A cut of a raw segment where another crosses it: the parameter along it and the point (shared
// by both segments, so that the pieces on either side meet exactly).
struct Cut {
    double t;
    Point2d at;
};

// Where segments r and q of a polyline meet (parameters along each, both in [0, 1]); false when
// they do not or are parallel.
bool segmentsMeet(const Point2d* line, int r, int q, double& t, double& u) {
    const Point2d& p = line[r];
    const Point2d& o = line[q];
    return meetLines(p, kb::utmat::difference(p, line[r + 1]), o, kb::utmat::difference(o, line[q + 1]), t, u) &&
           t >= 0.0 && t <= 1.0 && u >= 0.0 && u <= 1.0;
}

Box segmentBox(const Point2d* line, int r) { return boxAround(line[r], line[r + 1], 0.0); }

// Cuts every raw segment where a non-adjacent raw segment crosses it.
kb::Vector<kb::Vector<Cut>> selfCrossings(const RawOffset& raw) {
    const int segments = static_cast<int>(raw.points.size()) - 1;
    kb::Vector<kb::Vector<Cut>> cuts(static_cast<std::size_t>(segments));
    const Point2d* line = raw.points.data();
    SegmentGrid grid(line, segments);
    for (int r = 0; r < segments; ++r) {
        grid.visit(segmentBox(line, r), [&](int q) {
            double t = 0.0;
            double u = 0.0;
            if (q <= r + 1 || !segmentsMeet(line, r, q, t, u)) return;
            const Point2d at = plus(line[r], kb::utmat::difference(line[r], line[r + 1]), t);
            cuts[static_cast<std::size_t>(r)].push_back({t, at});
            cuts[static_cast<std::size_t>(q)].push_back({u, at});
        });
    }
    return cuts;
}

// The first crossing of two non-adjacent segments (the lowest r, then the lowest q); false when
// the polyline does not cross itself.
bool firstSelfCrossing(const kb::Vector<Point2d>& polyline, int& r, int& q, Point2d& at) {
    const int segments = static_cast<int>(polyline.size()) - 1;
    const Point2d* line = polyline.data();
    SegmentGrid grid(line, segments);
    for (r = 0; r < segments; ++r) {
        q = -1;
        grid.visit(segmentBox(line, r), [&](int other) {
            double t = 0.0;
            double u = 0.0;
            if (other <= r + 1 || (q >= 0 && other >= q) || !segmentsMeet(line, r, other, t, u)) return;
            q = other;
            at = plus(line[r], kb::utmat::difference(line[r], line[r + 1]), t);
        });
        if (q >= 0) return true;
    }
    return false;
}

// Kept pieces that do not meet are joined straight, and at a hairpin narrower than the offset
// such a join can cross another piece: the loop it closes is cut out at the crossing, the first
// crossing first.  Each cut removes at least one point, which bounds the passes.
void dropRemainingLoops(kb::Vector<Point2d>& line) {
    const std::size_t passes = line.size();
    for (std::size_t pass = 0; pass < passes; ++pass) {
        int r = 0;
        int q = 0;
        Point2d at{0.0, 0.0};
        if (!firstSelfCrossing(line, r, q, at)) return;
        line.erase(line.begin() + r + 1, line.begin() + q + 1);
        line.insert(line.begin() + r + 1, at);
    }
}

// Bisection between a parameter where `holds` is true and one where it is false: the last
// parameter found to hold, to within the double's resolution (the loop is bounded).
template <typename Holds>
double lastKept(const Holds& holds, double kept, double dropped) {
    constexpr int kBisections = 64;
    for (int i = 0; i < kBisections; ++i) {
        const double middle = (kept + dropped) / 2.0;
        if (middle == kept || middle == dropped) break;
        if (holds(middle)) {
            kept = middle;
        } else {
            dropped = middle;
        }
    }
    return kept;
}

void appendDistinct(kb::Vector<Point2d>& out, const Point2d& p) {
    if (out.empty() || out.back().x != p.x || out.back().y != p.y) out.push_back(p);
}

// The raw offset cut at its self-crossings, its pieces that keep their distance chained in
// order (two kept pieces that do not meet are joined by a straight segment).
kb::Vector<Point2d> cleanOffset(const RawOffset& raw, const Centreline& c) {
    kb::Vector<kb::Vector<Cut>> cuts = selfCrossings(raw);
    SegmentGrid centreGrid(c.points.data(), static_cast<int>(c.points.size()) - 1);
    kb::Vector<Point2d> out;
    for (std::size_t r = 0; r < cuts.size(); ++r) {
        kb::Vector<Cut>& along = cuts[r];
        along.push_back({0.0, raw.points[r]});
        along.push_back({1.0, raw.points[r + 1]});
        std::sort(along.begin(), along.end(), [](const Cut& a, const Cut& b) { return a.t < b.t; });
        for (std::size_t j = 0; j + 1 < along.size(); ++j) {
            const Point2d& a = along[j].at;
            const Point2d& b = along[j + 1].at;
            if (a.x == b.x && a.y == b.y) continue;
            const auto keeps = [&](double t) {
                return keepsItsDistance(c, centreGrid, plus(a, kb::utmat::difference(a, b), t), raw.sources[r]);
            };
            if (!keeps(0.5)) continue;
            // Where the piece's distance gives way near an end without a crossing (next to an
            // end of the centreline, say), the piece is cut back to where it holds.
            const double first = keeps(0.0) ? 0.0 : lastKept(keeps, 0.5, 0.0);
            const double last = keeps(1.0) ? 1.0 : lastKept(keeps, 0.5, 1.0);
            appendDistinct(out, first == 0.0 ? a : plus(a, kb::utmat::difference(a, b), first));
            appendDistinct(out, last == 1.0 ? b : plus(a, kb::utmat::difference(a, b), last));
        }
    }
    dropRemainingLoops(out);
    return out;
}

// The offset of a centreline into a block array; false (error word set) on failure.
bool offsetPolyline(const Point2d* p, int n, const double* widths, double width, const OffsetStyle& style,
                    Point2d** out, int* count) {
    for (int k = 0; k < n; ++k) {
        if (!std::isfinite(p[k].x) || !std::isfinite(p[k].y)) {
            raiseError();
            return false;
        }
    }
    const Centreline c = makeCentreline(p, n, widths, width);
    if (c.points.size() < 2) {
        raiseError();
        return false;
    }
    const kb::Vector<Point2d> offset = cleanOffset(buildRawOffset(c, style), c);
    if (!toBlockArray(out, offset)) return false;
    *count = static_cast<int>(offset.size());
    return true;
}

// ---- masks --------------------------------------------------------------------------------------

// The contour closed: its first point repeated at the end when the caller did not.
kb::Vector<Point2d> closedContour(const Point2d* contour, int m) {
    kb::Vector<Point2d> closed(contour, contour + m);
    if (contour[0].x != contour[m - 1].x || contour[0].y != contour[m - 1].y) closed.push_back(contour[0]);
    return closed;
}

// Parameters (0 to 1) at which the segment a -> b meets the contour, with 0 and 1, sorted.
bool contourCuts(const Point2d* segment, const kb::Vector<Point2d>& contour, double tol, kb::Vector<double>& cuts) {
    const int m = static_cast<int>(contour.size());
    kb::Vector<double> onSegment(static_cast<std::size_t>(m), 0.0);
    kb::Vector<double> overlapOnSegment(static_cast<std::size_t>(2 * m), 0.0);
    int pointFound = 0, pointCount = 0, overlapFound = 0, overlapCount = 0;
    UTMAT_CalculerIntersectionSegmentPolyligne(segment, contour.data(), m, tol, m, &pointFound, &pointCount,
                                               nullptr, onSegment.data(), nullptr, &overlapFound, &overlapCount,
                                               nullptr, overlapOnSegment.data(), nullptr);
    if (failed()) return false;
    const double length = kb::utmat::norm(kb::utmat::difference(segment[0], segment[1]));
    cuts.assign({0.0, 1.0});
    const auto add = [&](double abscissa) { cuts.push_back(std::fmin(std::fmax(abscissa / length, 0.0), 1.0)); };
    for (int k = 0; k < pointCount; ++k) add(onSegment[static_cast<std::size_t>(k)]);
    for (int k = 0; k < 2 * overlapCount; ++k) add(overlapOnSegment[static_cast<std::size_t>(k)]);
    std::sort(cuts.begin(), cuts.end());
    cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());
    return true;
}

// Even-odd rule with half-open edges (an edge counts when exactly one of its ends lies strictly
// above p), so that a vertex or a level edge at p's height is counted consistently.  The
// kernel's contour test is asked only whether p lies on the boundary: it counts a level edge at
// the ray's height as a crossing, which would misplace a point on the extension of such an edge.
bool insideByCrossings(const Point2d& p, const kb::Vector<Point2d>& closed) {
    bool inside = false;
    for (std::size_t k = 0; k + 1 < closed.size(); ++k) {
        const Point2d& a = closed[k];
        const Point2d& b = closed[k + 1];
        if ((a.y > p.y) == (b.y > p.y)) continue;
        const double x = a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y);
        if (p.x < x) inside = !inside;
    }
    return inside;
}

// The kept pieces: all their points one after the other, and the number of points of each.
struct MaskedPieces {
    kb::Vector<Point2d> points;
    kb::Vector<int32_t> sizes;
    bool open = false;

    void keep(const Point2d& a, const Point2d& b) {
        if (!open) {
            sizes.push_back(1);
            points.push_back(a);
            open = true;
        }
        points.push_back(b);
        ++sizes.back();
    }
    void close() { open = false; }
};

bool maskPolyline(const Point2d* p, int n, const kb::Vector<Point2d>& contour, int keepInside, double tol,
                  MaskedPieces& pieces) {
    kb::Vector<double> cuts;
    for (int k = 0; k + 1 < n; ++k) {
        if (p[k].x == p[k + 1].x && p[k].y == p[k + 1].y) continue;
        if (!contourCuts(p + k, contour, tol, cuts)) return false;
        const Point2d run = kb::utmat::difference(p[k], p[k + 1]);
        for (std::size_t j = 0; j + 1 < cuts.size(); ++j) {
            const Point2d a = j == 0 ? p[k] : plus(p[k], run, cuts[j]);
            const Point2d b = j + 2 == cuts.size() ? p[k + 1] : plus(p[k], run, cuts[j + 1]);
            const Point2d middle = plus(p[k], run, (cuts[j] + cuts[j + 1]) / 2.0);
            const int where = UTMAT_PointDansContour(&middle, contour.data(), static_cast<int>(contour.size()), tol);
            if (failed()) return false;
            const bool inside = where < 0 || insideByCrossings(middle, contour);  // the boundary belongs to the region
            if (inside == (keepInside != 0)) {
                pieces.keep(a, b);
            } else {
                pieces.close();
            }
        }
    }
    return true;
}

// ---- circle and triangle ------------------------------------------------------------------------

// Whether p lies in the closed triangle abc (either orientation; a flat triangle has no inside).
bool inTriangle(const Point2d& p, const Point2d& a, const Point2d& b, const Point2d& c) {
    const double s1 = kb::utmat::cross(kb::utmat::difference(a, b), kb::utmat::difference(a, p));
    const double s2 = kb::utmat::cross(kb::utmat::difference(b, c), kb::utmat::difference(b, p));
    const double s3 = kb::utmat::cross(kb::utmat::difference(c, a), kb::utmat::difference(c, p));
    const double area = kb::utmat::cross(kb::utmat::difference(a, b), kb::utmat::difference(a, c));
    if (area == 0.0) return false;
    return area > 0.0 ? (s1 >= 0.0 && s2 >= 0.0 && s3 >= 0.0) : (s1 <= 0.0 && s2 <= 0.0 && s3 <= 0.0);
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


// ---- tunnels ------------------------------------------------------------------------------------

int utmat_PointEstDansTunnel(const Point3d* a, const Point3d* b, const Point3d* p, double width, double length,
                             int mode) noexcept {
    if (!kb::utmat::enter(a, b, p)) return 0;
    return tunnelContains(makeTunnel(*a, *b, width, length, mode), *p) ? 1 : 0;
}

void UTMAT_AppliquerTunnelAPolyligne(const Point3d* points, int n, double width, double length, int mode,
                                     int32_t* flags) noexcept {
    if (!kb::utmat::enter(points, flags)) return;
    if (n < 1) return;
    const int status = kb::callGuarded(ERR_FAILURE, [&] {
        simplifyByTunnel(points, n, width, length, mode, flags);
        return 0;
    });
    if (status != 0) raiseError();
}

// ---- purge of repeated points -------------------------------------------------------------------

void UTMAT_PurgerPolyligne(Point2d** points, int* count, double tol) noexcept {
    if (!kb::utmat::enter(points, count)) return;
    const int n = *count;
    if (n < 2) return;
    if (*points == nullptr) {
        raiseError();
        return;
    }
    // One pass: each point is compared with the last point kept, as deleting repeats one at a
    // time and testing again at the same place would; the tail is then removed in one step.
    Point2d* p = *points;
    int kept = 0;
    for (int j = 1; j < n; ++j) {
        if (UTMAT_PointsIdentiques(&p[kept], &p[j], tol)) continue;
        p[++kept] = p[j];
    }
    if (kept + 1 == n) return;
    void* storage = p;
    MEM_SupprimerElementsDansTableau(&storage, static_cast<int>(sizeof(Point2d)), count, kept + 1, n - 1);
    kb::utmat::takeBlockArrayError();
    *points = static_cast<Point2d*>(storage);
}

// ---- junction of two directions -----------------------------------------------------------------

void UTMAT_CalculerPointInterpolation(const Point2d* p1, const Point2d* u1, const Point2d* p2, const Point2d* u2,
                                      Point2d* junction, Point2d* direction, double* tangentLength) noexcept {
    if (!kb::utmat::enter(p1, u1, p2, u2, junction, direction)) return;
    // |Q1 Q2| = 2t with Q1 = P1 + t u1, Q2 = P2 - t u2: |D + t s|^2 = 4 t^2, s = u1 + u2, D = P1 - P2.
    const Point2d s{u1->x + u2->x, u1->y + u2->y};
    const Point2d d = kb::utmat::difference(*p2, *p1);
    double roots[2] = {0.0, 0.0};
    int count = 0;
    UTMAT_ResoudreEquation2Degre(kb::utmat::dot(s, s) - 4.0, 2.0 * kb::utmat::dot(s, d), kb::utmat::dot(d, d),
                                 kJunctionSolverPrecision, roots, &count);
    if (failed()) return;
    if (count == 0) {
        raiseError();
        return;
    }
    double t = roots[0];
    if (count == 2 && !chooseJunctionRoot(*p1, *u1, *p2, *u2, roots, t)) return;
    kb::storeOptional(tangentLength, t);
    const Point2d q1 = plus(*p1, *u1, t);
    const Point2d q2 = plus(*p2, *u2, -t);
    *junction = {(q1.x + q2.x) / 2.0, (q1.y + q2.y) / 2.0};
    *direction = kb::utmat::unit(kb::utmat::difference(q1, q2));
}

int UTMAT_VerifierTriangleInterpolation(const Point2d* p1, const Point2d* u1, const Point2d* p2,
                                        const Point2d* u2) noexcept {
    if (!kb::utmat::enter(p1, u1, p2, u2)) return 0;
    const Point2d chord = kb::utmat::difference(*p1, *p2);
    const double between = signedAngle(*u1, *u2);
    if (failed()) return 0;
    const double firstToChord = signedAngle(*u1, chord);
    if (failed()) return 0;
    if (differsFromZero(between) || differsFromZero(firstToChord)) return 1;
    const double secondToChord = signedAngle(*u2, chord);
    if (failed()) return 0;
    return differsFromZero(2.0 * std::fmax(std::fabs(secondToChord), std::fabs(firstToChord))) ? 1 : 0;
}

// ---- offsets ------------------------------------------------------------------------------------

void UTMAT_TranslationComplexePolyligne(const Point2d* polyline, int n, double distance, int join,
                                        double chordTolerance, Point2d** offset, int* count) noexcept {
    if (!kb::utmat::enter(polyline, offset, count)) return;
    *count = 0;
    const bool round = join == UTMAT_JOIN_ROUND;
    if ((!round && join != UTMAT_JOIN_MITRE) || (round && !(chordTolerance > 0.0)) || !std::isfinite(distance) ||
        *offset != nullptr) {
        raiseError();
        return;
    }
    const int status = kb::callGuarded(ERR_FAILURE, [&] {
        return offsetPolyline(polyline, n, nullptr, distance, {round, chordTolerance}, offset, count) ? 0
                                                                                                      : ERR_FAILURE;
    });
    if (status != 0) raiseError();
}

void UTMAT_TranslationPolyligneParEpaisseurs(const Point2d* polyline, int n, const double* widths,
                                             Point2d** offset, int* count) noexcept {
    if (!kb::utmat::enter(polyline, widths, offset, count)) return;
    *count = 0;
    if (*offset != nullptr) {
        raiseError();
        return;
    }
    for (int k = 0; k < n; ++k) {
        if (!std::isfinite(widths[k])) {
            raiseError();
            return;
        }
    }
    const int status = kb::callGuarded(ERR_FAILURE, [&] {
        return offsetPolyline(polyline, n, widths, 0.0, {false, 0.0}, offset, count) ? 0 : ERR_FAILURE;
    });
    if (status != 0) raiseError();
}

// ---- masks --------------------------------------------------------------------------------------

void UTMAT_AppliquerMasque(const Point2d* polyline, int n, const Point2d* contour, int m, int keepInside, double tol,
                           Point2d** points, int32_t** pieceSizes, int* pieceCount) noexcept {
    if (!kb::utmat::enter(polyline, contour, points, pieceSizes, pieceCount)) return;
    *pieceCount = 0;
    if (m < 3 || *points != nullptr || *pieceSizes != nullptr) {
        raiseError();
        return;
    }
    const int status = kb::callGuarded(ERR_FAILURE, [&] {
        MaskedPieces pieces;
        if (!maskPolyline(polyline, n, closedContour(contour, m), keepInside, tol, pieces)) return ERR_FAILURE;
        if (!toBlockArray(points, pieces.points)) return ERR_FAILURE;
        if (!toBlockArray(pieceSizes, pieces.sizes)) return ERR_FAILURE;
        *pieceCount = static_cast<int>(pieces.sizes.size());
        return 0;
    });
    if (status != 0) {
        if (*points != nullptr) MEM_LibererTableau(reinterpret_cast<void**>(points));
        *pieceCount = 0;
        raiseError();
    }
}

// ---- tangents of offset curves ------------------------------------------------------------------

void UTMAT_CalculerTangenteOffCer(const Point2d* centre, double radius, double offset, const Point2d* point,
                                  Point2d* tangent, double* speedFactor) noexcept {
    if (!kb::utmat::enter(centre, point, tangent)) return;
    const Point2d radial = kb::utmat::difference(*centre, *point);
    if (radius == 0.0 || !std::isfinite(radius) || (radial.x == 0.0 && radial.y == 0.0)) {
        raiseError();
        return;
    }
    // Counter-clockwise travel (radius > 0): the radial direction turned a quarter turn left.
    const Point2d outward = kb::utmat::unit(radial);
    const Point2d travel = radius > 0.0 ? Point2d{-outward.y, outward.x} : Point2d{outward.y, -outward.x};
    const double factor = 1.0 + offset / radius;
    *tangent = factor < 0.0 ? Point2d{-travel.x, -travel.y} : travel;
    kb::storeOptional(speedFactor, factor);
}

void UTMAT_CalculerTangenteOffClt(double A, double s, double offset, Point2d* tangent, double* speedFactor) noexcept {
    if (!kb::utmat::enter(tangent)) return;
    Point2d travel{0.0, 0.0};
    UTMAT_CalculerPosPointArcClotAbscisse(A, s, 0.0, nullptr, &travel);
    if (failed()) return;
    // Curvature s / A^2, positive (turning left) for A > 0.
    const double factor = 1.0 + offset * s / (A * std::fabs(A));
    *tangent = factor < 0.0 ? Point2d{-travel.x, -travel.y} : travel;
    kb::storeOptional(speedFactor, factor);
}

// ---- circle and triangle ------------------------------------------------------------------------

int UTMAT_TesterIntersectionCercleTriangle(const Point2d* centre, double radius, const Point2d* a, const Point2d* b,
                                           const Point2d* c) noexcept {
    if (!kb::utmat::enter(centre, a, b, c)) return 0;
    if (!(radius >= 0.0)) {
        raiseError();
        return 0;
    }
    if (inTriangle(*centre, *a, *b, *c)) return 1;
    const double nearest = std::fmin(distanceToSegment(*centre, *a, *b),
                                     std::fmin(distanceToSegment(*centre, *b, *c), distanceToSegment(*centre, *c, *a)));
    return nearest <= radius ? 1 : 0;
}

}  // extern "C"
