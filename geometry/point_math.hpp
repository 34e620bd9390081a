// Internal: small rules on Point3d shared by the point and point-array sources.
#ifndef KORVELBASE_GEOMETRY_POINT_MATH_HPP
#define KORVELBASE_GEOMETRY_POINT_MATH_HPP

#include <cmath>

#include "korvelbase/types.h"

namespace kb::points {

inline double planDistance(const Point3d& a, const Point3d& b) noexcept {
    return std::hypot(b.x - a.x, b.y - a.y);
}

// Result of testing one ring edge against a point for the crossing-number test.
enum class EdgeVerdict { skip, crossing, boundary };

// One edge (a, b) of a ring against the point (px, py), with exact comparisons:
//  - boundary: the point is an end of the edge, lies on a horizontal edge between its end x
//    values, or the edge's x at the point's height equals the point's x;
//  - crossing: the edge crosses the ray towards +x.  An edge counts when exactly one end
//    lies above the point (y > py), so a vertex on the ray is counted once when the ring
//    passes through the ray there and twice or not at all when it only touches it;
//  - skip otherwise.
// The crossing x is found by proportion from the end with the smaller x.
inline EdgeVerdict classifyEdge(const Point3d& a, const Point3d& b, double px,
                                double py) noexcept {
    const double ylo = a.y < b.y ? a.y : b.y, yhi = a.y < b.y ? b.y : a.y;
    if (!(py >= ylo && py <= yhi)) return EdgeVerdict::skip;
    if ((a.x == px && a.y == py) || (b.x == px && b.y == py)) return EdgeVerdict::boundary;
    if (a.y == b.y) {
        const double xlo = a.x < b.x ? a.x : b.x, xhi = a.x < b.x ? b.x : a.x;
        return (px >= xlo && px <= xhi) ? EdgeVerdict::boundary : EdgeVerdict::skip;
    }
    const Point3d& left = a.x <= b.x ? a : b;
    const Point3d& right = a.x <= b.x ? b : a;
    const double crossingX =
        left.x == right.x
            ? left.x
            : left.x + std::fabs(py - left.y) /
                           (std::fabs(right.y - left.y) / std::fabs(right.x - left.x));
    if (crossingX == px) return EdgeVerdict::boundary;
    const bool straddles = (a.y > py) != (b.y > py);
    return (straddles && crossingX > px) ? EdgeVerdict::crossing : EdgeVerdict::skip;
}

}  // namespace kb::points

#endif  // KORVELBASE_GEOMETRY_POINT_MATH_HPP
