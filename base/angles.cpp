// Angle rules shared by the geometry kernel and the plane-mathematics family.
#include "base/angles.hpp"

#include <cmath>

#include "korvelbase/constants.h"

namespace kb {

double normalizeAngle(double angle) noexcept {
    const double remainder = std::fmod(angle, dc_2pi);
    return remainder < 0.0 ? remainder + dc_2pi : remainder;
}

bool sweepAroundCentre(double cx, double cy, double x1, double y1, double x2, double y2,
                       bool counterClockwise, double* sweep) noexcept {
    const double dx1 = x1 - cx, dy1 = y1 - cy;
    const double dx2 = x2 - cx, dy2 = y2 - cy;
    if ((dx1 == 0.0 && dy1 == 0.0) || (dx2 == 0.0 && dy2 == 0.0)) return false;
    const double t1 = std::atan2(dy1, dx1);
    const double t2 = std::atan2(dy2, dx2);
    double d = t2 - t1;
    if (t2 < t1) d += dc_2pi;
    *sweep = counterClockwise ? d : d - dc_2pi;
    return true;
}

double sweepBetweenUnitVectors(double ux1, double uy1, double ux2, double uy2) noexcept {
    double s = ux1 * uy2 - uy1 * ux2;
    if (s > 1.0) s = 1.0;
    if (s < -1.0) s = -1.0;
    double t = std::asin(s);
    if (ux1 * ux2 + uy1 * uy2 < 0.0) t = dc_pi - t;
    return normalizeAngle(t);
}

}  // namespace kb
