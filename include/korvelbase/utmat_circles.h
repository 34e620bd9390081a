/*
 * KorvelBase geometry kernel: circles and parabolic arcs (vertical curves) through points and
 * by tangency, intersections of lines and circles, angular sectors, the direction of a radius
 * and a real root of a polynomial.
 *
 * Parabolic arc: a summit S = (xs, ys) and a radius R (non-zero), passed as separate values:
 *     y = ys + (x - xs)^2 / (2R),   slope (grade) y' = (x - xs) / R.
 * x is the abscissa (chainage) and y the level, so the axis is vertical.  R > 0 is a sag (the
 * summit is the lowest point), R < 0 a crest; |R| is the radius of curvature at the summit.
 * The point of slope m is (xs + R*m, ys + R*m^2/2).  Grades are dimensionless (0.02 = 2 %).
 *
 * Error word (UTMAT_GetErreur): cleared on entry, ERR_FAILURE for a null pointer (nothing is
 * then written) and for the failures stated per function.  Degenerate geometry (collinear
 * points, parallel lines, zero radius) is not an error: *found (or *count) = 0.  "Near 0"
 * below is the kernel's |v| <= calculation precision (UTMAT_getCalculPrec, initially 1e-4),
 * an absolute test, as UTMAT_Egal; an arc radius is usable when finite and not near 0.  The
 * division guard is qmMath_isDivisionPossible (|den| > |num| * 1e-100).
 *
 * Threads: the kernel's state is process-wide; use it from one thread at a time.
 */
#ifndef KORVELBASE_UTMAT_CIRCLES_H
#define KORVELBASE_UTMAT_CIRCLES_H

#include "korvelbase/qmmath.h"
#include "korvelbase/utmat.h"

KB_BEGIN_DECLS

/* ------------------------------------------------------------------------------------------ */
/* Circle and parabolic arcs through points                                                   */
/* (each solves in the frame translated to one point, UTMAT_ChangerRepere at angle 0)         */
/* ------------------------------------------------------------------------------------------ */

/**
 * Circle through P0, P1, P2.  With (x1, y1) = P1 - P0 and (x2, y2) = P2 - P0 the centre (X, Y)
 * relative to P0 solves 2*x1*X + 2*y1*Y = x1^2 + y1^2 and
 * 2*(x2 - x1)*X + 2*(y2 - y1)*Y = x2^2 + y2^2 - x1^2 - y1^2.
 *  - 2*x1 not near 0: found = 0 when the products 2(y2 - y1)*2x1 and 2(x2 - x1)*2y1 are
 *    within the calculation precision of each other (collinear points, or a determinant too
 *    small for that absolute test); else Y by Cramer's rule and X from the first equation.
 *  - 2*x1 near 0: found = 0 unless 2*(x2 - x1) and 2*y1 are both not near 0; then
 *    Y = (x1^2 + y1^2)/(2*y1) and X from the second equation (the x1 terms of the first are
 *    dropped, so with |x1| up to half the precision the circle misses P1 by about that much).
 * radius = distance from P2 to the centre; found = 1; the centre is returned absolute.
 * centre and radius are written only with found = 1.
 */
KB_API void UTMAT_CalculerCerPs3Pt(const Point2d* p0, const Point2d* p1, const Point2d* p2,
                                   Point2d* centre, double* radius, int* found) KB_NOEXCEPT;

/**
 * Parabolic arc through P1, P0 and P2 (note the order).  Outputs are zeroed first.  With
 * (x1, y1) = P1 - P0, (x2, y2) = P2 - P0 and D = 4*(y1*(x1 - x2) - x1*(y1 - y2)):
 * found = 0 when D is near 0 (collinear points) or R = 2*(x1^2*(x1 - x2) - (x1^2 - x2^2)*x1)/D
 * is near 0 (two points on one vertical); else xs = 2*((x1^2 - x2^2)*y1 - x1^2*(y1 - y2))/D,
 * ys = y2 - (x2 - xs)^2/(2R), summit = (xs, ys) + P0, found = 1.
 * Example: P0 = (0, 0.1), P1 = (2, 0.1), P2 = (3, 0.4) give summit (1, 0), radius 5.
 */
KB_API void UTMAT_CalculerArcParPs3Pt(const Point2d* p1, const Point2d* p0, const Point2d* p2,
                                      Point2d* summit, double* radius, int* found) KB_NOEXCEPT;

/**
 * Parabolic arc of radius R through P0 and P1 (note the order P1, P0).  The summit is zeroed
 * first.  With (x1, y1) = P1 - P0: found = 0 when the division guard refuses y1/x1 (vertical
 * chord); xs = x1/2 - (y1/x1)*R (the chord's grade is the arc's grade at mid-chord);
 * h = (x1 - xs)^2/2, found = 0 when the guard refuses h/R (R = 0); ys = y1 - h/R;
 * summit = (xs, ys) + P0, found = 1.
 */
KB_API void UTMAT_CalculerArcParPs2PtRayon(const Point2d* p1, const Point2d* p0, double radius,
                                           Point2d* summit, int* found) KB_NOEXCEPT;

/**
 * Radius of the arc with summit S that passes through P: R = (xs - px)^2 / (2*(py - ys)).  The
 * radius is zeroed first; found = 0 when the division guard refuses it (P level with the
 * summit).  P exactly above or below the summit gives R = 0 with found = 1 (the degenerate
 * arc, kept as it stands).
 */
KB_API void UTMAT_CalculerArcParPs1PtSommet(const Point2d* summit, const Point2d* p,
                                            double* radius, int* found) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Parabolic arcs and lines by tangency                                                       */
/* (a line is taken as y = m*x + q, m = -a/b, q = -c/b; a vertical line gives found = 0;       */
/*  a line with a = b = 0 is an error, ERR_FAILURE)                                          */
/* ------------------------------------------------------------------------------------------ */

/**
 * Arc with the given summit S tangent to the line.  With k = m*xs + q - ys (the line's height
 * above the summit at xs), x^2/(2R) = m*x + k has a double root when R = -2k/m^2; the
 * tangency is at the slope m: T = (xs + R*m, ys + R*m^2/2).  A sag when the line passes below
 * the summit.  found = 0 (radius and tangency untouched) for a vertical or horizontal line, a
 * summit on the line (R near 0) or a non-finite result.
 */
KB_API void UTMAT_CalculerArcParTg1DteSommet(const UtDroite* line, const Point2d* summit,
                                             double* radius, Point2d* tangency,
                                             int* found) KB_NOEXCEPT;

/**
 * The vertical curve of radius R between two grades: the arc of radius R tangent to line 1
 * and line 2.  The arc of radius R touches y = m*x + q when ys = m*xs + q + R*m^2/2; the two
 * conditions give xs = (q2 - q1 + R*(m2^2 - m1^2)/2)/(m1 - m2), a unique arc.  tangencies (two
 * Point2d) receive the tangency on line 1, then on line 2: Ti = (xs + R*mi, ys + R*mi^2/2).
 * When R*(m2 - m1) > 0 (a sag from a lower to a higher grade, a crest the other way) T1 comes
 * before T2 in x, the usual curve from grade 1 to grade 2; otherwise the same arc touches the
 * lines in the opposite order.  found = 0 (outputs untouched) for a vertical line, parallel
 * grades, R near 0 or a non-finite result.
 */
KB_API void UTMAT_CalculerArcParTg2DteRayon(const UtDroite* line1, const UtDroite* line2,
                                            double radius, Point2d* summit, Point2d* tangencies,
                                            int* found) KB_NOEXCEPT;

/**
 * Arc with summit S2 tangent to the arc (S1, R1): the radius R2 and the tangency point T.
 * With d = xs2 - xs1, e = ys2 - ys1 and u = xT - xs1, equal slopes give R2 = R1*(u - d)/u and
 * equal heights then u = 2*R1*e/d: the solution is unique, T = (xs1 + u, ys1 + u^2/(2*R1)).
 * R2 has the opposite sign of R1 (a reverse curve) exactly when T lies strictly between the
 * two summits' abscissae, the same sign (a compound curve) otherwise.  found = 0 (outputs untouched) when R1 is not usable, the summits share
 * an abscissa (d = 0) or a level (e = 0: they could only meet at S1), S2 lies on arc 1 (R2
 * near 0) or a result is not finite.
 */
KB_API void UTMAT_CalculerArcParTg1ArcParSommet(const Point2d* summit1, double radius1,
                                                const Point2d* summit2, double* radius2,
                                                Point2d* tangency, int* found) KB_NOEXCEPT;

/**
 * Line of grade m (slope dy/dx) tangent to the arc (S, R): it touches at
 * T = (xs + R*m, ys + R*m^2/2).  line receives the normalised line through T with direction
 * (1, m) (a = m/n, b = -1/n, n = sqrt(1 + m^2)), positive side on the right of travel towards
 * increasing x, that is below the line.  found = 0 (outputs untouched) when R is not usable or
 * m or T is not finite.
 */
KB_API void UTMAT_CalculerDroiteTg1ArcParPente(const Point2d* summit, double radius, double slope,
                                               UtDroite* line, Point2d* tangency,
                                               int* found) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Angular sectors                                                                            */
/* ------------------------------------------------------------------------------------------ */
/*
 * A sector is a start direction and a sweep (radians; positive counter-clockwise, negative
 * clockwise; a full turn or more, or within the calculation precision of it, is the whole
 * circle).  These are the kernel's forms of qmMath_compareDirectionToSector,
 * qmMath_calculateAngularSectorSum and qmMath_calculateAngularSectorProduct (see qmmath.h for
 * the rules), with the calculation precision as the angular tolerance; both families share
 * one classification, so they agree exactly.  Result arrays have capacity 2; results are
 * counter-clockwise, start in [0, 2*pi), sweep in [0, 2*pi].  A NaN or infinite value:
 * ERR_FAILURE (count 0, or the result 0).
 */

/** Relation of sector 2 to sector 1: QMMATH_SECTORS_DISJOINT (1) to _OVERLAP_AT_BOTH_ENDS (6);
 *  0 with ERR_FAILURE for a non-finite value. */
KB_API int UTMAT_Classer2Secteurs(double start1, double sweep1, double start2,
                                  double sweep2) KB_NOEXCEPT;

/** Intersection of two sectors: 0, 1 or 2 sectors (two: the part at sector 1's start first). */
KB_API void UTMAT_CalculerProduitSecteur(double start1, double sweep1, double start2,
                                         double sweep2, double* starts, double* sweeps,
                                         int* count) KB_NOEXCEPT;

/** Union of two sectors: 1 sector, or 2 (sector 1 then sector 2) when they are disjoint. */
KB_API void UTMAT_CalculerSommeSecteur(double start1, double sweep1, double start2,
                                       double sweep2, double* starts, double* sweeps,
                                       int* count) KB_NOEXCEPT;

/**
 * Position of a direction against a sector, as UTMAT_CalculerClassePtCercle places a point
 * against a circle: -1 inside, 0 on a bounding direction (within the calculation precision),
 * 1 outside.  The whole circle has no boundary (-1).
 */
KB_API int UTMAT_ComparerAngleASecteurAngulaire(double angle, double start,
                                                double sweep) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Intersections and radii                                                                    */
/* ------------------------------------------------------------------------------------------ */

/**
 * Intersection of a line (any scale) with the circle (C, R >= 0), with the calculation
 * precision as the tangency tolerance (qmMath_calculateIntersectionLineCircle2d): with h the
 * distance from C to the line, *count = 0 when h - R > precision, 1 (the foot of C on the
 * line) when |h - R| <= precision, else 2.  points (capacity 2) receive them in the order met
 * when travelling along the line's direction (-b, a).  *count is 0 first; ERR_FAILURE for
 * a = b = 0 or a negative or non-finite radius.
 */
KB_API void UTMAT_CalculerIntersectionDroiteCercle(const UtDroite* line, const Point2d* centre,
                                                   double radius, Point2d* points,
                                                   int* count) KB_NOEXCEPT;

/**
 * Intersection of the circles (C1, R1) and (C2, R2), radii >= 0, through their radical line
 * with the calculation precision as tolerance (qmMath_calculateIntersectionCircleCircle2d):
 * *count = 0 (apart, nested or concentric), 1 (touching) or 2.  points (capacity 2): the point
 * on the left of the direction C1 -> C2 first.  *count is 0 first; ERR_FAILURE for one circle
 * given twice (centres and radii within the precision: every point is common) and for a
 * negative or non-finite radius.
 */
KB_API void UTMAT_CalculerIntersection2Cercle(const Point2d* centre1, double radius1,
                                              const Point2d* centre2, double radius2,
                                              Point2d* points, int* count) KB_NOEXCEPT;

/**
 * Direction of the radius from the centre C to the point P, in [0, 2*pi):
 * atan2(Py - Cy, Px - Cx) brought into that range.  P exactly at C: ERR_FAILURE, 0.0.  A NaN
 * coordinate gives NaN.
 */
KB_API double UTMAT_CalculerAngleRayonPtCentre(const Point2d* p, const Point2d* centre) KB_NOEXCEPT;

/** Highest degree accepted by UTMAT_CalculerRacinePolynomeLaguerre. */
#define UTMAT_LAGUERRE_MAX_DEGREE 64

/**
 * A real root of c[0] + c[1]*x + ... + c[degree]*x^degree by Laguerre's method from start,
 * normally the real root nearest start (not guaranteed).  Zero leading coefficients are
 * dropped first.  The iteration runs in complex arithmetic (so it converges from any start,
 * cubically near a simple root) and stops when the value vanishes within its rounding bound
 * or the step no longer changes x; at most 80 steps per root, every tenth shortened by a
 * fixed fraction to break limit cycles.  A complex root (imaginary part above
 * 1e-7 * max(1, |real part|)) is divided out with its conjugate and the search restarts on the
 * quotient, so at most (degree/2 + 1) * 80 steps in all.  A real root is polished by up to 8
 * Newton steps on the original polynomial.  *found = 1 and *root when a real root is found;
 * found = 0 for a constant (or zero) polynomial, a polynomial without real roots, a start
 * so far out that the polynomial overflows there, or no convergence.  ERR_FAILURE for a degree below 0 or above UTMAT_LAGUERRE_MAX_DEGREE, or a
 * non-finite coefficient or start.
 */
KB_API void UTMAT_CalculerRacinePolynomeLaguerre(const double* coefficients, int degree,
                                                 double start, double* root,
                                                 int* found) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_UTMAT_CIRCLES_H */
