// Internal: rules shared by the plane-mathematics sources.
#ifndef KORVELBASE_GEOMETRY_PLANE_MATH_HPP
#define KORVELBASE_GEOMETRY_PLANE_MATH_HPP

#include <cmath>

namespace kb {
namespace plane {

// A quotient num/den is attempted only when the denominator is not negligible against the
// numerator: |den| > |num| * 1e-100.  Relative, so a tiny but honest denominator passes; 0/0
// is refused and 0/x passes for every non-zero x.
constexpr double kDivisionGuardFactor = 1e-100;

inline bool divisionPossible(double numerator, double denominator) noexcept {
    return std::fabs(denominator) > std::fabs(numerator) * kDivisionGuardFactor;
}

// Signed distance from P to the line through point 1 and point 2, positive on the right of
// the direction 1->2: the cross product of (P1 - P) with the direction, over the length.
// False, *offset untouched, when the guard refuses the division (coincident points).
inline bool signedOffsetFromLine(double px, double py, double x1, double y1, double x2,
                                 double y2, double* offset) noexcept {
    const double dx = x2 - x1, dy = y2 - y1;
    const double length = std::sqrt(dx * dx + dy * dy);
    const double cross = (y1 - py) * dx - (x1 - px) * dy;
    if (!divisionPossible(cross, length)) return false;
    *offset = cross / length;
    return true;
}

}  // namespace plane
}  // namespace kb

#endif  // KORVELBASE_GEOMETRY_PLANE_MATH_HPP
