// Internal: angle rules shared by the geometry kernel and the plane-mathematics family.
//
// Both families measure angles in radians counter-clockwise from the +x axis and report
// directions in [0, 2*pi); the rules below are written once and called by both.
#ifndef KORVELBASE_BASE_ANGLES_HPP
#define KORVELBASE_BASE_ANGLES_HPP

namespace kb {

// fmod(angle, 2*pi), plus 2*pi when the remainder is negative: the range [0, 2*pi).
double normalizeAngle(double angle) noexcept;

// Sweep around a centre C from point 1 to point 2.  Counter-clockwise: the sweep in
// [0, 2*pi); clockwise: that value minus 2*pi, in [-2*pi, 0) (coincident directions give 0
// and -2*pi).  False, with *sweep untouched, when a point coincides exactly with the centre.
bool sweepAroundCentre(double cx, double cy, double x1, double y1, double x2, double y2,
                       bool counterClockwise, double* sweep) noexcept;

// Counter-clockwise angle in [0, 2*pi) from unit vector u1 to unit vector u2: asin of the
// cross product (clamped to [-1, 1]), reflected to pi - t when the dot product is negative.
double sweepBetweenUnitVectors(double ux1, double uy1, double ux2, double uy2) noexcept;

}  // namespace kb

#endif  // KORVELBASE_BASE_ANGLES_HPP
