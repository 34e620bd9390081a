// Lines of the plane-mathematics family: equations, offsets, projections, intersections and
// points located along a tangent or in a rotated frame.
//
// Sign convention: a signed offset is positive on the right of the direction of travel.  For
// the equation a*x + b*y + c = 0 built from a direction (dx, dy) as a = dy, b = -dx, the value
// a*px + b*py + c is the cross product of the direction with (P - O) reversed, so it too is
// positive on the right.
#include <cmath>

#include "base/optional_output.hpp"
#include "geometry/plane_math.hpp"
#include "korvelbase/qmmath.h"
#include "korvelbase/types.h"

namespace {

using kb::plane::divisionPossible;
using kb::storeOptional;

// Writes the located point into the outputs that are present; fails only when both are absent.
int writeLocatedPoint(double* x, double* y, double px, double py) noexcept {
    if (!x && !y) return ERR_FAILURE;
    kb::storeOptional(x, px);
    kb::storeOptional(y, py);
    return 0;
}

}  // namespace

extern "C" {

int qmMath_calculateLineEquationFromOriginAndDirection2d(double* a, double* b, double* c,
                                                         double ox, double oy, double dx,
                                                         double dy) noexcept {
    if (!a || !b || !c) return ERR_FAILURE;
    if (dx == 0.0 && dy == 0.0) return ERR_FAILURE;
    *a = dy;
    *b = -dx;
    *c = -(dy * ox - dx * oy);
    return 0;
}

int qmMath_calculerDistancePtLineEquation2d(double* distance, double a, double b, double c,
                                            double px, double py) noexcept {
    if (!distance) return ERR_FAILURE;
    const double norm = std::sqrt(a * a + b * b);
    if (norm == 0.0) return ERR_FAILURE;
    *distance = (a * px + b * py + c) / norm;
    return 0;
}

int qmMath_sideOfLine2d(double px, double py, double x1, double y1, double x2,
                        double y2) noexcept {
    const double v = (x2 - x1) * (y1 - py) - (y2 - y1) * (x1 - px);
    if (v > 0.0) return 1;
    if (v < 0.0) return -1;
    return 0;
}

int qmMath_offsetToLine2d(double* offset, double px, double py, double x1, double y1, double x2,
                          double y2) noexcept {
    if (!offset) return ERR_FAILURE;
    *offset = 0.0;
    return kb::plane::signedOffsetFromLine(px, py, x1, y1, x2, y2, offset) ? 0 : ERR_FAILURE;
}

int qmMath_projectOnLine2d(double* x, double* y, double* offset, double px, double py, double x1,
                           double y1, double x2, double y2) noexcept {
    const double dx = x2 - x1, dy = y2 - y1;
    const double lengthSquared = dx * dx + dy * dy;
    const double along = (px - x1) * dx + (py - y1) * dy;
    if (!divisionPossible(along, lengthSquared)) return ERR_FAILURE;
    const double t = along / lengthSquared;
    storeOptional(x, x1 + t * dx);
    storeOptional(y, y1 + t * dy);
    if (offset && !kb::plane::signedOffsetFromLine(px, py, x1, y1, x2, y2, offset)) {
        return ERR_FAILURE;
    }
    return 0;
}

int qmMath_projectOnLineDefinedByPointAndTangent2d(double* x, double* y, double* abscissa,
                                                   double* offset, double px, double py,
                                                   double ox, double oy, double tx,
                                                   double ty) noexcept {
    const double t = (px - ox) * tx + (py - oy) * ty;
    storeOptional(x, ox + t * tx);
    storeOptional(y, oy + t * ty);
    storeOptional(abscissa, t);
    double a = 0.0, b = 0.0, c = 0.0;
    if (qmMath_calculateLineEquationFromOriginAndDirection2d(&a, &b, &c, ox, oy, tx, ty) != 0) {
        return ERR_FAILURE;
    }
    storeOptional(offset, a * px + b * py + c);
    return 0;
}

int qmMath_projectOnLineByOffsetToLine2d(double* x, double* y, double x1, double y1, double x2,
                                         double y2, double x3, double y3, double x4, double y4,
                                         double offset) noexcept {
    // Q = P3 + t*(P4 - P3) has offset ((y1 - qy)*dx - (x1 - qx)*dy)/L from line 1->2; setting
    // that to the wanted offset is linear in t.
    const double dx = x2 - x1, dy = y2 - y1;
    const double ex = x4 - x3, ey = y4 - y3;
    const double length = std::sqrt(dx * dx + dy * dy);
    const double numerator = length * offset + (x1 - x3) * dy - (y1 - y3) * dx;
    const double denominator = dy * ex - dx * ey;
    if (!divisionPossible(numerator, denominator)) return ERR_FAILURE;
    const double t = numerator / denominator;
    storeOptional(x, x3 + t * ex);
    storeOptional(y, y3 + t * ey);
    return 0;
}

int qmMath_intersectLineWithLine2d(double* x, double* y, double x1, double y1, double x2,
                                   double y2, double x3, double y3, double x4,
                                   double y4) noexcept {
    // Parameter of the intersection along 1->2, from Cramer's rule on P1 + t*d1 = P3 + s*d2.
    constexpr int kParallel = 1;
    const double dx1 = x2 - x1, dy1 = y2 - y1;
    const double dx2 = x4 - x3, dy2 = y4 - y3;
    const double denominator = dy2 * dx1 - dx2 * dy1;
    const double numerator = (y1 - y3) * dx2 - (x1 - x3) * dy2;
    if (!divisionPossible(numerator, denominator)) return kParallel;
    const double t = numerator / denominator;
    storeOptional(x, x1 + t * dx1);
    storeOptional(y, y1 + t * dy1);
    return 0;
}

int qmMath_overlapLineSegments(double x1, double y1, double x2, double y2, double x3, double y3,
                               double x4, double y4, double tol) noexcept {
    const double dx1 = x2 - x1, dy1 = y2 - y1;
    const double dx2 = x4 - x3, dy2 = y4 - y3;
    if (std::fabs(dy2 * dx1 - dx2 * dy1) > tol) return 0;               // not parallel
    if (std::fabs(dx2 * (y1 - y3) - dy2 * (x1 - x3)) > tol) return 0;   // not on one line
    const double lengthSquared = dx1 * dx1 + dy1 * dy1;
    const auto insideFirst = [&](double qx, double qy) {
        const double along = (qx - x1) * dx1 + (qy - y1) * dy1;
        if (!divisionPossible(along, lengthSquared)) return false;  // point-like first segment
        const double t = along / lengthSquared;
        return tol <= t && t <= 1.0 - tol;
    };
    return (insideFirst(x3, y3) || insideFirst(x4, y4)) ? 1 : 0;
}

int qmMath_locateByDistanceTangent2d(double* x, double* y, double x0, double y0, double distance,
                                     double tx, double ty) noexcept {
    return writeLocatedPoint(x, y, x0 + distance * tx, y0 + distance * ty);
}

int qmMath_locateByDistanceDirection2d(double* x, double* y, double x0, double y0,
                                       double distance, double direction) noexcept {
    return qmMath_locateByDistanceTangent2d(x, y, x0, y0, distance, std::cos(direction),
                                            std::sin(direction));
}

int qmMath_locateByTranslationRotation2d(double* x, double* y, double lx, double ly, double ox,
                                         double oy, double angle) noexcept {
    const double cosine = std::cos(angle), sine = std::sin(angle);
    return writeLocatedPoint(x, y, cosine * lx - sine * ly + ox, sine * lx + cosine * ly + oy);
}

}  // extern "C"
