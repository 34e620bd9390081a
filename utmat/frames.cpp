// Geometry kernel: angles (normalisation, sweeps, angles between vectors and lines, bisector
// of two directions) and changes of frame in the plane.
//
// Angles are radians counter-clockwise from +x.  A frame (O, t) has its origin at O and its x
// axis at angle t; local coordinates L and world coordinates P are related by
// P = O + R(t) L, with R(t) the counter-clockwise rotation by t.
#include <cmath>

#include "base/angles.hpp"
#include "korvelbase/compare.h"
#include "korvelbase/constants.h"
#include "korvelbase/qmmath.h"
#include "korvelbase/utmat.h"
#include "utmat/kernel_state.hpp"
#include "utmat/vector_math.hpp"

namespace {

using kb::utmat::raiseError;

// Modes of UTMAT_NormaliserAngle.
constexpr int kRangeHalfTurnEachSide = 0;  // (-pi, pi]
constexpr int kRangeFullTurn = 1;          // [0, 2*pi)
constexpr int kClampToTwoTurns = 2;        // [-2*pi, 2*pi], no reduction

double clamp(double value, double low, double high) noexcept {
    if (value > high) return high;
    if (value < low) return low;
    return value;  // NaN passes through
}

// R(t) v.
Point2d rotated(const Point2d& v, double t) noexcept {
    const double c = std::cos(t);
    const double s = std::sin(t);
    return {v.x * c - v.y * s, v.x * s + v.y * c};
}

// Direction vector (-b, a) of a line: the normal (a, b) turned a quarter turn counter-clockwise.
Point2d lineDirection(const UtDroite& d) noexcept { return {-d.b, d.a}; }

double angleBetween(const Point2d& v1, const Point2d& v2) noexcept {
    const Point2d u1 = kb::utmat::unit(v1);
    const Point2d u2 = kb::utmat::unit(v2);
    return kb::sweepBetweenUnitVectors(u1.x, u1.y, u2.x, u2.y);
}

}  // namespace

using kb::utmat::enter;

extern "C" {

double UTMAT_NormaliserAngle(int mode, double angle) noexcept {
    enter();
    switch (mode) {
        case kRangeHalfTurnEachSide: {
            const double r = kb::normalizeAngle(angle);
            return r > dc_pi ? r - dc_2pi : r;
        }
        case kRangeFullTurn:
            return kb::normalizeAngle(angle);
        case kClampToTwoTurns:
            return clamp(angle, -dc_2pi, dc_2pi);
        default:
            raiseError();
            return angle;
    }
}

double UTMAT_CalculerAngleAuCentre(const Point2d* c, const Point2d* p1, const Point2d* p2,
                                   int ccw) noexcept {
    if (!enter(c, p1, p2)) return 0.0;
    double sweep = 0.0;
    if (!kb::sweepAroundCentre(c->x, c->y, p1->x, p1->y, p2->x, p2->y, ccw != 0, &sweep)) {
        raiseError();
        return 0.0;
    }
    return sweep;
}

double UTMAT_CalculerAnglePtOffsetAngle(const Point2d* p, const Point2d* c, double t0,
                                        int ccw) noexcept {
    if (!enter(p, c)) return 0.0;
    double t = std::atan2(p->y - c->y, p->x - c->x);
    if (t < 0.0) t += dc_2pi;
    const double sweep = t0 <= t ? t - t0 : dc_2pi - (t0 - t);
    return ccw != 0 ? sweep : sweep - dc_2pi;
}

double UTMAT_CalculerAngleV1V2(const Point2d* v1, const Point2d* v2) noexcept {
    if (!enter(v1, v2)) return 0.0;
    return angleBetween(*v1, *v2);
}

void UTMAT_CalculerAngleD1D2(const UtDroite* d1, const UtDroite* d2, double* out) noexcept {
    if (!enter(d1, d2, out)) return;
    *out = angleBetween(lineDirection(*d1), lineDirection(*d2));
}

void UTMAT_CalculerBissectriceV1V2(const Point2d* v1, const Point2d* v2, Point2d* out) noexcept {
    if (!enter(v1, v2, out)) return;
    const Point2d u1 = kb::utmat::unit(*v1);
    const Point2d u2 = kb::utmat::unit(*v2);
    const double k = kb::utmat::cross(u1, u2);
    if (!qmMath_doublesNearEqual(k, 0.0, kb::utmat::calculationPrecision())) {
        // u1 + u2 bisects the angle below a half turn; flip it to the side of the
        // counter-clockwise sweep when v2 is clockwise of v1.
        const double sign = k < 0.0 ? -1.0 : 1.0;
        *out = kb::utmat::unit(Point2d{sign * (u1.x + u2.x), sign * (u1.y + u2.y)});
    } else if (kb::utmat::dot(u1, u2) < 0.0) {
        *out = {-u1.y, u1.x};  // opposite directions: a quarter turn counter-clockwise
    } else {
        *out = u1;
    }
}

void UTMAT_ChangerRepere(const Point2d* p, const Point2d* o, double t, Point2d* out) noexcept {
    if (!enter(p, o, out)) return;
    *out = rotated(kb::utmat::difference(*o, *p), -t);
}

void UTMAT_CalculerCentreRepere2(const Point2d* p, const Point2d* q, double t, Point2d* out) noexcept {
    if (!enter(p, q, out)) return;
    const Point2d offset = rotated(*q, t);
    *out = {p->x - offset.x, p->y - offset.y};
}

Point2d* UTMAT_CalculerPointTranslationRotation(const Point2d* translation, double t,
                                                Point2d* p) noexcept {
    if (!enter(translation, p)) return p;
    qmMath_locateByTranslationRotation2d(&p->x, &p->y, p->x, p->y, translation->x,
                                         translation->y, t);
    return p;
}

}  // extern "C"
