// Circles of the plane-mathematics family: projection on a circle, line-circle and
// circle-circle intersections, tangents from a point and the circle through three points.
#include <cmath>
#include <utility>

#include "base/optional_output.hpp"
#include "korvelbase/constants.h"
#include "korvelbase/conversion.h"
#include "korvelbase/qmmath.h"
#include "korvelbase/types.h"

namespace {

struct Vec {
    double x;
    double y;
};

Vec minus(Vec a, Vec b) { return {a.x - b.x, a.y - b.y}; }
double dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y; }

bool unit(Vec v, Vec& u) {
    const double n = std::hypot(v.x, v.y);
    if (!(n > 0.0) || !std::isfinite(n)) return false;
    u = {v.x / n, v.y / n};
    return true;
}

// The radius of the circle tangent to the tangents V->A and V->B (V the intersection point)
// that passes through P, with P on the arc between the tangency points.  The centre lies on
// the bisector of the angle at V, at R / sin(half angle) from V, so |C - P| = R is a quadratic
// in R: R^2 cos^2/sin^2 - 2 R (b.D)/sin + |D|^2 = 0 with D = P - V and b the bisector.
bool curveRadiusThroughPoint(Vec a, Vec b, Vec v, Vec p, double& radius) {
    constexpr double kLeastHalfAngleSine = 1e-12;  // tangents that are (nearly) one line
    Vec u, w;
    if (!unit(minus(a, v), u) || !unit(minus(b, v), w)) return false;
    Vec bisector;
    if (!unit({u.x + w.x, u.y + w.y}, bisector)) return false;  // tangents in opposite senses
    const double halfAngle = std::acos(std::fmax(-1.0, std::fmin(1.0, dot(u, w)))) / 2.0;
    const double s = std::sin(halfAngle);
    const double c = std::cos(halfAngle);
    if (s < kLeastHalfAngleSine || c < kLeastHalfAngleSine) return false;
    const Vec d = minus(p, v);
    const double qa = c * c / (s * s);
    const double qb = -2.0 * dot(bisector, d) / s;
    const double qc = dot(d, d);
    const double discriminant = qb * qb - 4.0 * qa * qc;
    if (discriminant < 0.0 || qc == 0.0) return false;
    const double root = std::sqrt(discriminant);
    // The point must lie on the arc: seen from the centre, within the half angle's complement
    // of the direction back towards V.
    for (const double r : {(-qb + root) / (2.0 * qa), (-qb - root) / (2.0 * qa)}) {
        if (!(r > 0.0)) continue;
        const Vec centre = {v.x + bisector.x * r / s, v.y + bisector.y * r / s};
        const Vec toPoint = minus(p, centre);
        if (-dot(toPoint, bisector) >= r * s * (1.0 - 1e-9)) {
            radius = r;
            return true;
        }
    }
    return false;
}

// Radius reported for three collinear points: a straight is a circle of "infinite" radius.
constexpr double kCollinearRadius = 1e100;

constexpr int kCoincidentCircles = 2;
constexpr int kTangentPointsFromOutside = 2;

void writePoint(double* x, double* y, double px, double py) noexcept {
    kb::storeOptional(x, px);
    kb::storeOptional(y, py);
}

// Azimuth of the direction from point 1 to point 2 (the conversion is its own inverse).
double azimuthBetween(double x1, double y1, double x2, double y2) noexcept {
    return qmConversion_azimuthToDirection(qmMath_direction2d(x1, y1, x2, y2));
}

}  // namespace

extern "C" {

int qmMath_projectPointOnCircle2d(double* x, double* y, double* angle, double px, double py,
                                  double cx, double cy, double radius) noexcept {
    const double t = std::atan2(py - cy, px - cx);
    writePoint(x, y, cx + radius * std::cos(t), cy + radius * std::sin(t));
    kb::storeOptional(angle, t);
    return 0;
}

int qmMath_calculateIntersectionLineCircle2d(double* x1, double* y1, double* x2, double* y2,
                                             int* count, double a, double b, double c, double cx,
                                             double cy, double radius, double tol) noexcept {
    if (!count) return ERR_FAILURE;
    const double norm = std::sqrt(a * a + b * b);
    if (norm == 0.0) return ERR_FAILURE;  // a = b = 0 (or both underflow when squared): no line
    // Normalised equation: a'x + b'y + c' is the signed distance, (-b', a') the unit tangent.
    const double k = 1.0 / norm;
    const double an = a * k, bn = b * k, cn = c * k;
    // A point of the line on the axis it crosses most steeply.
    double ox = 0.0, oy = 0.0;
    if (std::fabs(bn) < std::fabs(an)) {
        ox = -cn / an;
    } else {
        if (bn == 0.0) return ERR_FAILURE;  // both components underflowed
        oy = -cn / bn;
    }
    const double tx = -bn, ty = an;
    double fx = 0.0, fy = 0.0, offset = 0.0;
    qmMath_projectOnLineDefinedByPointAndTangent2d(&fx, &fy, nullptr, &offset, cx, cy, ox, oy, tx,
                                                   ty);
    const double h0 = std::fabs(offset);
    if (h0 - radius > tol) {
        *count = 0;
    } else if (h0 - radius >= -tol) {
        *count = 1;
        writePoint(x1, y1, fx, fy);
    } else {
        *count = 2;
        const double h = std::sqrt(radius * radius - h0 * h0);
        writePoint(x1, y1, fx + h * tx, fy + h * ty);
        writePoint(x2, y2, fx - h * tx, fy - h * ty);
    }
    return 0;
}

int qmMath_calculateIntersectionCircleCircle2d(double* x1, double* y1, double* x2, double* y2,
                                               int* count, double cx1, double cy1, double r1,
                                               double cx2, double cy2, double r2,
                                               double tol) noexcept {
    if (!count) return ERR_FAILURE;
    *count = 0;
    const double dx = cx2 - cx1, dy = cy2 - cy1;
    const double d = std::sqrt(dx * dx + dy * dy);
    if (d > tol) {
        // Radical line: subtracting the two circle equations leaves
        // dx*(x - cx1) + dy*(y - cy1) = (d^2 + r1^2 - r2^2)/2.
        const double c = -(dx * cx1 + dy * cy1) - (d * d + r1 * r1 - r2 * r2) / 2.0;
        return qmMath_calculateIntersectionLineCircle2d(x1, y1, x2, y2, count, dx, dy, c, cx1,
                                                        cy1, r1, tol);
    }
    return qmUtil_equalDouble(r1, r2, tol) ? kCoincidentCircles : 0;
}

int qmMath_lineTangentToCircleByPoint(double* xl, double* yl, double* xr, double* yr, double cx,
                                      double cy, double radius, double px, double py,
                                      double tol) noexcept {
    writePoint(xl, yl, px, py);
    writePoint(xr, yr, px, py);
    const double d = qmMath_distance2d(px, py, cx, cy);
    if (radius > d) return ERR_FAILURE;  // P inside the circle: no tangent
    if (radius == d) return 0;           // P on the circle: both tangent points are P
    // The tangent points see C and P at a right angle, so they lie on the circle about P of
    // radius sqrt(d^2 - r^2) (Pythagoras in the triangle C, T, P).
    double ax = 0.0, ay = 0.0, bx = 0.0, by = 0.0;
    int found = 0;
    const double reach = std::sqrt(d * d - radius * radius);
    const int status = qmMath_calculateIntersectionCircleCircle2d(&ax, &ay, &bx, &by, &found, cx,
                                                                  cy, radius, px, py, reach, tol);
    if (status != 0 || found != kTangentPointsFromOutside) return ERR_FAILURE;
    if (qmMath_sideOfLine2d(ax, ay, px, py, cx, cy) != -1) {
        std::swap(ax, bx);
        std::swap(ay, by);
    }
    writePoint(xl, yl, ax, ay);
    writePoint(xr, yr, bx, by);
    return 0;
}

int qmMath_computeCurveRadiusFromThreePoints(double x1, double y1, double x2, double y2,
                                             double x3, double y3, double* cx, double* cy,
                                             double* radius) noexcept {
    const double az21 = azimuthBetween(x2, y2, x1, y1);
    const double az23 = azimuthBetween(x2, y2, x3, y3);
    const double az13 = azimuthBetween(x1, y1, x3, y3);
    // Clockwise angle at P2 from the ray towards P1 to the ray towards P3; pi for a straight.
    const double turn = qmMath_angleRightBetweenAzimuths(az21, az23);
    // Collinear points have no circle.  The turn is exactly pi for a straight through P2 only
    // when the azimuths round favourably, so an exactly zero cross product of the two rays
    // also counts as collinear (it covers P2 outside P1P3 and coincident points too).
    const double cross = qmMath_crossProduct2d(x1 - x2, y1 - y2, x3 - x2, y3 - y2);
    if (turn == dc_pi || cross == 0.0) {
        kb::storeOptional(radius, kCollinearRadius);
        return 0;
    }
    // Inscribed angle theorem: the chord P1P3 subtends pi - |turn - pi| at P2 on the circle.
    const double r = qmMath_distance2d(x1, y1, x3, y3) / (2.0 * std::sin(std::fabs(turn - dc_pi)));
    double azimuthToCentre =
        turn > dc_pi ? 1.5 * dc_pi + az13 - turn : az13 - (turn - dc_piover2);
    if (azimuthToCentre < 0.0) {
        azimuthToCentre += dc_2pi;
    } else if (azimuthToCentre > dc_2pi) {
        azimuthToCentre -= dc_2pi;
    }
    kb::storeOptional(radius, r);
    qmMath_locateByDistanceDirection2d(cx, cy, x1, y1, r,
                                       qmConversion_azimuthToDirection(azimuthToCentre));
    return 0;
}

int qmMath_passTangentCurveThruPoint(double* radius, double a1, double a2, double b1, double b2,
                                     double q1, double q2, double p1, double p2) noexcept {
    if (radius == nullptr) return ERR_FAILURE;
    *radius = 0.0;
    return curveRadiusThroughPoint({a1, a2}, {b1, b2}, {q1, q2}, {p1, p2}, *radius) ? 0 : ERR_FAILURE;
}

}  // extern "C"
