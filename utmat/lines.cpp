// Geometry kernel: point tests, vectors, plane lines (UtDroite), the space line and points on
// a circle.
//
// A UtDroite (a, b, c) is the line a*x + b*y + c = 0.  Once normalised (a^2 + b^2 = 1) the
// value a*x + b*y + c is the signed distance of (x, y), positive on the side the normal (a, b)
// points to; the kernel builds lines so that this is the right-hand side of travel.
#include <cmath>

#include "korvelbase/qmmath.h"
#include "korvelbase/utmat.h"
#include "utmat/kernel_state.hpp"
#include "utmat/vector_math.hpp"

namespace {

using kb::utmat::kNearZeroFactor;
using kb::utmat::raiseError;

double normalLength(const UtDroite& d) noexcept { return std::sqrt(d.a * d.a + d.b * d.b); }

double lineValue(const UtDroite& d, const Point2d& p) noexcept { return d.a * p.x + d.b * p.y + d.c; }

// Scales d to a unit normal; false (error raised, d unchanged) when the normal is not
// positive.  *normBefore, when not null, receives the norm before scaling.
bool normalizeLine(UtDroite& d, double* normBefore) noexcept {
    const double n = normalLength(d);
    if (!(n > 0.0)) {
        raiseError();
        return false;
    }
    const double inverse = 1.0 / n;
    d.a *= inverse;
    d.b *= inverse;
    d.c *= inverse;
    if (normBefore != nullptr) *normBefore = n;
    return true;
}

// The line through p whose normal is (a, b) scaled to unit length; false (error raised) for a
// zero normal, in which case out keeps the un-normalised a and b.
bool lineThroughWithNormal(const Point2d& p, double a, double b, UtDroite& out) noexcept {
    out.a = a;
    out.b = b;
    out.c = -(a * p.x + b * p.y);
    const double n = std::sqrt(a * a + b * b);
    if (!(n > 0.0)) {
        raiseError();
        return false;
    }
    out.a = a / n;
    out.b = b / n;
    out.c = -(out.a * p.x + out.b * p.y);
    return true;
}

// Cramer's rule followed by one step of residual correction on normalised lines.
Point2d solveTwoLines(const UtDroite& d1, const UtDroite& d2, double det) noexcept {
    const double inverse = 1.0 / det;
    const double x0 = (d1.b * d2.c - d2.b * d1.c) * inverse;
    const double y0 = (d2.a * d1.c - d1.a * d2.c) * inverse;
    const double r1 = d1.a * x0 + d1.b * y0 + d1.c;
    const double r2 = d2.a * x0 + d2.b * y0 + d2.c;
    return {x0 + (d1.b * r2 - d2.b * r1) * inverse, y0 + (d2.a * r1 - d1.a * r2) * inverse};
}

// Parallel when the determinant does not clear the larger constant (by signed comparison)
// scaled by the near-zero factor.
bool areParallel(const UtDroite& d1, const UtDroite& d2, double det) noexcept {
    const double largerC = d1.c <= d2.c ? d2.c : d1.c;
    return !(std::fabs(largerC * kNearZeroFactor) < std::fabs(det));
}

}  // namespace

using kb::utmat::enter;

extern "C" {

// ---- point tests --------------------------------------------------------------------------

int UTMAT_PointsIdentiques(const Point2d* p1, const Point2d* p2, double tol) noexcept {
    if (!enter(p1, p2)) return 0;
    return UTMAT_Egal(kb::utmat::norm(kb::utmat::difference(*p1, *p2)), 0.0, tol);
}

int UTMAT_Points3dIdentiques(const Point3d* p1, const Point3d* p2, double tol) noexcept {
    if (!enter(p1, p2)) return 0;
    return UTMAT_Egal(kb::utmat::norm(kb::utmat::difference(*p1, *p2)), 0.0, tol);
}

// ---- vectors ------------------------------------------------------------------------------

Point2d* UTMAT_CalculerVecteur(const Point2d* p0, const Point2d* p1, Point2d* out) noexcept {
    if (!enter(p0, p1, out)) return out;
    *out = kb::utmat::difference(*p0, *p1);
    return out;
}

void UTMAT_CalculerVecteur3d(const Point3d* p0, const Point3d* p1, Point3d* out) noexcept {
    if (!enter(p0, p1, out)) return;
    *out = kb::utmat::difference(*p0, *p1);
}

double UTMAT_CalculerNormeVecteur(const Point2d* v) noexcept {
    if (!enter(v)) return 0.0;
    return kb::utmat::norm(*v);
}

double UTMAT_CalculerNormeVecteur3d(const Point3d* v) noexcept {
    if (!enter(v)) return 0.0;
    return kb::utmat::norm(*v);
}

void UTMAT_CalculerSommeV1V2(const Point2d* v1, const Point2d* v2, Point2d* out) noexcept {
    if (!enter(v1, v2, out)) return;
    *out = {v1->x + v2->x, v1->y + v2->y};
}

void UTMAT_NormerVecteur(Point2d* v) noexcept {
    if (!enter(v)) return;
    *v = kb::utmat::unit(*v);
}

void UTMAT_NormerVecteur3d(Point3d* v) noexcept {
    if (!enter(v)) return;
    *v = kb::utmat::unit(*v);
}

double UTMAT_CalculerProduitScalaire(const Point2d* v1, const Point2d* v2) noexcept {
    if (!enter(v1, v2)) return 0.0;
    return kb::utmat::dot(*v1, *v2);
}

double UTMAT_CalculerProduitVectoriel(const Point2d* v1, const Point2d* v2) noexcept {
    if (!enter(v1, v2)) return 0.0;
    return kb::utmat::cross(*v1, *v2);
}

void UTMAT_CalculerProduitVectoriel3d(const Point3d* v1, const Point3d* v2, Point3d* out) noexcept {
    if (!enter(v1, v2, out)) return;
    *out = kb::utmat::cross(*v1, *v2);
}

double UTMAT_CalculerDistance2Pt(const Point2d* p1, const Point2d* p2) noexcept {
    if (!enter(p1, p2)) return 0.0;
    return kb::utmat::norm(kb::utmat::difference(*p1, *p2));
}

double UTMAT_CalculerDistance2Pt3d(const Point3d* p1, const Point3d* p2) noexcept {
    if (!enter(p1, p2)) return 0.0;
    return kb::utmat::norm(kb::utmat::difference(*p1, *p2));
}

// ---- lines --------------------------------------------------------------------------------

void UTMAT_NormerDroite(UtDroite* d, double* norm) noexcept {
    if (!enter(d)) return;
    normalizeLine(*d, norm);
}

void UTMAT_TranslaterDroite(const UtDroite* d, const Point2d* v, UtDroite* out) noexcept {
    if (!enter(d, v, out)) return;
    *out = {d->a, d->b, d->c - d->a * v->x - d->b * v->y};
}

void UTMAT_CalculerDroite2Pt(const Point2d* p0, const Point2d* p1, UtDroite* out) noexcept {
    if (!enter(p0, p1, out)) return;
    // Normal = direction p0 -> p1 turned a quarter turn clockwise: positive side on the right.
    lineThroughWithNormal(*p0, p1->y - p0->y, p0->x - p1->x, *out);
}

void UTMAT_CalculerDroite2Pt3d(const Point3d* p0, const Point3d* p1, UtDroite3d* out) noexcept {
    if (!enter(p0, p1, out)) return;
    out->point = *p0;
    out->direction = kb::utmat::unit(kb::utmat::difference(*p0, *p1));
}

void UTMAT_CalculerDroitePtVecteur(const Point2d* p, const Point2d* v, UtDroite* out) noexcept {
    if (!enter(p, v, out)) return;
    lineThroughWithNormal(*p, v->y, -v->x, *out);
}

void UTMAT_CalculerDroiteOrthoDroitePs1Pt(const UtDroite* d, const Point2d* p,
                                          UtDroite* out) noexcept {
    if (!enter(d, p, out)) return;
    // Direction (-b', a') = (a, b): the new line runs along the normal of d.
    *out = {d->b, -d->a, p->y * d->a - d->b * p->x};
}

void UTMAT_CalculerDroiteParalleleDroitePs1Pt(const UtDroite* d, const Point2d* p,
                                              UtDroite* out) noexcept {
    if (!enter(d, p, out)) return;
    *out = {d->a, d->b, -(d->a * p->x + d->b * p->y)};
}

void UTMAT_CalculerDroiteParalleleDroiteDistance(const UtDroite* d, double dist,
                                                 UtDroite* out) noexcept {
    if (!enter(d, out)) return;
    *out = {d->a, d->b, d->c - dist * normalLength(*d)};
}

void UTMAT_CalculerDeportPtDroite(const UtDroite* d, const Point2d* p, double* out) noexcept {
    if (!enter(d, p, out)) return;
    const double n = normalLength(*d);
    // Signed c on purpose: a negative c always passes, even with a zero normal.
    if (!(d->c * kNearZeroFactor < n)) {
        raiseError();
        return;
    }
    *out = lineValue(*d, *p) / n;
}

void UTMAT_CalculerDeportPtDroite3d(const UtDroite3d* line, const Point3d* p, double* out) noexcept {
    if (!enter(line, p, out)) return;
    *out = kb::utmat::norm(kb::utmat::cross(line->direction, kb::utmat::difference(line->point, *p)));
}

double UTMAT_CalculerPuissancePtDroite(const UtDroite* d, const Point2d* p) noexcept {
    if (!enter(d, p)) return 0.0;
    return lineValue(*d, *p);
}

void UTMAT_CalculerIntersection2Droite(const UtDroite* d1, const UtDroite* d2, Point2d* out,
                                       int* found) noexcept {
    if (!enter(d1, d2, out, found)) return;
    *found = 0;
    UtDroite n1 = *d1;
    UtDroite n2 = *d2;
    if (!normalizeLine(n1, nullptr) || !normalizeLine(n2, nullptr)) return;
    const double det = n1.a * n2.b - n1.b * n2.a;
    if (areParallel(n1, n2, det)) return;
    *found = 1;
    *out = solveTwoLines(n1, n2, det);
}

void UTMAT_CalculerBissectriceD1D2(const UtDroite* d1, const UtDroite* d2, UtDroite* out) noexcept {
    if (!enter(d1, d2, out)) return;
    // N2*D1 - N1*D2 vanishes where the normalised offsets from both lines are equal.
    const double n1 = normalLength(*d1);
    const double n2 = normalLength(*d2);
    out[0] = {n2 * d1->a - n1 * d2->a, n2 * d1->b - n1 * d2->b, n2 * d1->c - n1 * d2->c};
    out[1] = {-(n2 * d1->a + n1 * d2->a), -(n2 * d1->b + n1 * d2->b), -(n2 * d1->c + n1 * d2->c)};
}

void UTMAT_ProjeterPtSurDroite(const UtDroite* d, const Point2d* p, Point2d* out) noexcept {
    if (!enter(d, p, out)) return;
    const double q = d->a * d->a + d->b * d->b;
    // Signed c on purpose, as in UTMAT_CalculerDeportPtDroite (against the squared norm here).
    if (!(d->c * kNearZeroFactor < q)) {
        raiseError();
        return;
    }
    const double k = (d->a * p->x + d->b * p->y) / q + d->c / q;
    *out = {p->x - d->a * k, p->y - d->b * k};
}

int UTMAT_CalculerClassePtDroite(const Point2d* p, const UtDroite* d, double tol) noexcept {
    if (!enter(p, d)) return 0;
    const double v = lineValue(*d, *p);
    if (-tol > v) return -1;
    if (v > tol) return 1;
    return 0;
}

// ---- points on a circle -------------------------------------------------------------------

void UTMAT_ProjeterPtSurCercle(const Point2d* c, double r, const Point2d* p, Point2d* out,
                               double* angle) noexcept {
    if (!enter(c, p, out)) return;
    qmMath_projectPointOnCircle2d(&out->x, &out->y, angle, p->x, p->y, c->x, c->y, r);
}

void UTMAT_CalculerPtSurCercleAngle(const Point2d* c, double r, double t, Point2d* out) noexcept {
    if (!enter(c, out)) return;
    *out = {c->x + r * std::cos(t), c->y + r * std::sin(t)};
}

int UTMAT_CalculerClassePtCercle(const Point2d* p, const Point2d* c, double r, double tol) noexcept {
    if (!enter(p, c)) return 0;
    const double v = kb::utmat::norm(kb::utmat::difference(*c, *p)) - r;
    if (v < -tol) return -1;
    if (v > tol) return 1;
    return 0;
}

}  // extern "C"
