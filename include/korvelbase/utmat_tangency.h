/*
 * KorvelBase geometry kernel: circles tangent to lines and circles, circles through points, and
 * the circle osculating a clothoid through a point.
 *
 * Each construction finds every circle that meets three conditions taken from: tangent to a
 * line, tangent to a circle, passing through a point, having a given radius R.
 *
 * Objects.  Lines are UtDroite records (any scale; a private copy is normalised, the caller's
 * line is never changed; a = b = 0 is ERR_FAILURE).  A circle is passed as its centre and its
 * radius r.  Points are Point2d.  Lengths are in the caller's unit.
 *
 * Enumeration.  Each tangent object (line or circle) is tried in two signed versions s = -1,
 * then s = +1:
 *  - a line is replaced by its parallel at signed distance s*R (on a normalised line: the
 *    centre X satisfies a*x + b*y + c = s*R, so s is the side of the centre, +1 being the side
 *    the normal (a, b) points to);
 *  - a circle (C, r) is replaced by the signed radius s*r: the centre lies at distance
 *    |s*r + R| from C (s = +1 and s = -1 give the external and internal kinds of contact).
 * With two tangent objects the combinations run (-1,-1), (-1,+1), (+1,-1), (+1,+1), the first
 * sign belonging to the first object in argument order.  Within one combination the candidates
 * come in the order of the roots of UTMAT_ResoudreEquation2Degre (the cancellation-free pair,
 * -q/(2a) first).  A candidate is appended only when no circle stored so far has the same
 * centre at the calculation precision (distance <= precision) and, where the radius is
 * computed, the same radius at the precision: the output is in order of first discovery.
 *
 * Solving one combination.  Work is done in a local frame translated to a reference point: the
 * (first) given point where there is one, else the first circle's centre (the two-line
 * construction works in world coordinates).  Every condition is either a circle equation
 * |X - Ci|^2 = (k*R + ei)^2 (a point: ei = 0; a circle: ei = s*r; with R given, k = 0 and the
 * distance is folded into ei) or a linear equation a*x + b*y + c = s*R (a normalised line).  The
 * circle equation centred on the frame origin is kept; every other circle equation is
 * subtracted from it, which leaves linear equations (the squares of R cancel).  The linear
 * equations, in argument order, are solved by elimination with the pivot taken from x, then y,
 * then R: the first whose coefficient is not zero at the precision.  So with R given, when
 * Dx != 0 the quadratic is in y (leading coefficient Dy^2/Dx^2 + 1), otherwise, when Dy != 0,
 * in x; with R computed the quadratic is normally in R.  An equation without a usable pivot
 * (parallel lines, concentric circles) makes the combination yield nothing.  The remaining
 * unknown is then found from the kept circle equation (with two lines there is none: the two
 * offset lines fix the centre).
 *
 * Tangency points, k per solution in argument order of the tangent objects (point 2i on the
 * first object, 2i+1 on the second): on a line, the foot of the perpendicular from the centre
 * on the given line (not its offset); on a circle, Ti = Ci + (X - Ci) * s*r / (s*r + R).  When
 * s*r + R is exactly 0 (the solution is the given circle itself, so every point of it is
 * common) the tangency point is the given point P where there is one, else the solution's
 * tangency point on the other object.  UTMAT_CalculerCerTgCerPs1PtRayon applies this rule
 * whenever s*r + R is zero at the precision.
 *
 * Computed radii are returned as positive magnitudes: a negative root of a combination
 * describes the same circle as the opposite combination with the positive radius.
 *
 * Results and failures.  The caller provides the arrays, sized for the maximum count stated
 * for each function (tangency arrays hold k points per solution); the functions never allocate
 * and never write beyond those maxima.  On entry each function clears the kernel error word
 * and sets *count to 0.  Finding no circle is not an error: parallel or concentric conditions, a
 * negative discriminant, and a radius input R <= precision all leave count 0 and error 0.  A
 * null pointer, a degenerate line (a = b = 0), or any failing primitive sets ERR_FAILURE and
 * returns at once; the circles already written and their count are left as they stand.
 *
 * Tolerances: every test is made at the kernel's calculation precision (UTMAT_getCalculPrec,
 * default 0.0001) except the point-coincidence test of UTMAT_CalculerCerTgClotPs1Pt, which uses
 * the distance tolerance (UTMAT_getDistanceTolerance, default 2.0).
 *
 * Threads: the kernel's error word and tolerances are process-wide; one thread at a time.
 */
#ifndef KORVELBASE_UTMAT_TANGENCY_H
#define KORVELBASE_UTMAT_TANGENCY_H

#include "korvelbase/utmat.h"
#include "korvelbase/utmat_clothoid.h"

/** Upper bound on the halvings of UTMAT_CalculerCerTgClotPs1Pt (exhausts double precision). */
#define UTMAT_CLOTHOID_BISECTION_LIMIT 200

KB_BEGIN_DECLS

/**
 * Circles of radius R tangent to two lines: the centres where the parallels of line 1 at
 * -R, +R meet those of line 2 at -R, +R (one centre per combination, none for parallel lines).
 * Arrays: centres[4], tangencyPoints[8] (on line 1, then on line 2).  R <= precision: none.
 */
KB_API void UTMAT_CalculerCerTg2DteRayon(const UtDroite* line1, const UtDroite* line2, double R,
                                         Point2d* centres, Point2d* tangencyPoints,
                                         int* count) KB_NOEXCEPT;
/**
 * Circles tangent to two lines and passing through P (the frame origin).  A root is kept only
 * when its radius is greater than the precision (so s is the side of the centre).  Arrays:
 * centres[8], radii[8], tangencyPoints[16].
 */
KB_API void UTMAT_CalculerCerTg2DtePs1Pt(const UtDroite* line1, const UtDroite* line2, const Point2d* P,
                                         Point2d* centres, double* radii, Point2d* tangencyPoints,
                                         int* count) KB_NOEXCEPT;
/**
 * Circles of radius R tangent to a line and passing through P (the frame origin).  None when
 * |R| <= precision; a negative R is used as given (it swaps the order of the two sides).
 * Arrays: centres[4], tangencyPoints[4].
 */
KB_API void UTMAT_CalculerCerTgDtePs1PtRayon(const UtDroite* line, const Point2d* P, double R,
                                             Point2d* centres, Point2d* tangencyPoints,
                                             int* count) KB_NOEXCEPT;
/**
 * Circles tangent to a line and passing through P1 and P2 (frame origin P1).  A root is kept
 * only when its radius is greater than the precision.  Arrays: centres[4], radii[4],
 * tangencyPoints[4].
 */
KB_API void UTMAT_CalculerCerTgDtePs2Pt(const UtDroite* line, const Point2d* P1, const Point2d* P2,
                                        Point2d* centres, double* radii, Point2d* tangencyPoints,
                                        int* count) KB_NOEXCEPT;
/**
 * Centres of the circles of radius R through P1 and P2 (frame origin P1); R equal to half the
 * distance gives the midpoint once.  R <= precision: none.  Arrays: centres[2].
 */
KB_API void UTMAT_CalculerCerPs2PtRayon(const Point2d* P1, const Point2d* P2, double R, Point2d* centres,
                                        int* count) KB_NOEXCEPT;
/**
 * Circles of radius R tangent to circles (C1, r1) and (C2, r2) (frame origin C1).  Concentric
 * circles give none.  R <= precision: none.  Arrays: centres[8], tangencyPoints[16].
 */
KB_API void UTMAT_CalculerCerTg2CerRayon(const Point2d* C1, double r1, const Point2d* C2, double r2,
                                         double R, Point2d* centres, Point2d* tangencyPoints,
                                         int* count) KB_NOEXCEPT;
/**
 * Circles of radius R tangent to the circle (C, r) and to a line (frame origin C).
 * R <= precision: none.  Arrays: centres[8], tangencyPoints[16] (on the circle, then the line).
 */
KB_API void UTMAT_CalculerCerTgCerDteRayon(const Point2d* C, double r, const UtDroite* line, double R,
                                           Point2d* centres, Point2d* tangencyPoints,
                                           int* count) KB_NOEXCEPT;
/**
 * Circles tangent to circles (C1, r1) and (C2, r2) and passing through P (frame origin P).
 * Roots whose magnitude is not greater than the precision are dropped; duplicates are judged on
 * centre and radius.  Arrays: centres[8], radii[8], tangencyPoints[16].
 */
KB_API void UTMAT_CalculerCerTg2CerPs1Pt(const Point2d* C1, double r1, const Point2d* C2, double r2,
                                         const Point2d* P, Point2d* centres, double* radii,
                                         Point2d* tangencyPoints, int* count) KB_NOEXCEPT;
/**
 * Circles tangent to the circle (C, r) and to a line and passing through P (frame origin P).
 * Radius rule and duplicates as in UTMAT_CalculerCerTg2CerPs1Pt.  Arrays: centres[8],
 * radii[8], tangencyPoints[16] (on the circle, then the line).
 */
KB_API void UTMAT_CalculerCerTgCerDtePs1Pt(const Point2d* C, double r, const UtDroite* line,
                                           const Point2d* P, Point2d* centres, double* radii,
                                           Point2d* tangencyPoints, int* count) KB_NOEXCEPT;
/**
 * Circles of radius R tangent to the circle (C, r) and passing through P (frame origin P).
 * When s*r + R is zero at the precision the tangency point is P itself (kept on purpose: the
 * solution then coincides with the given circle).  R <= precision: none.  Arrays: centres[4],
 * tangencyPoints[4].
 */
KB_API void UTMAT_CalculerCerTgCerPs1PtRayon(const Point2d* C, double r, const Point2d* P, double R,
                                             Point2d* centres, Point2d* tangencyPoints,
                                             int* count) KB_NOEXCEPT;
/**
 * Circles tangent to the circle (C, r) and passing through P1 and P2 (frame origin P1).
 * Radius rule and duplicates as in UTMAT_CalculerCerTg2CerPs1Pt.  Arrays: centres[4],
 * radii[4], tangencyPoints[4].
 */
KB_API void UTMAT_CalculerCerTgCerPs2Pt(const Point2d* C, double r, const Point2d* P1, const Point2d* P2,
                                        Point2d* centres, double* radii, Point2d* tangencyPoints,
                                        int* count) KB_NOEXCEPT;

/**
 * The circle osculating the clothoid of parameter A (local frame of utmat_clothoid.h: origin at
 * the start, tangent along +x, A > 0 turning left) at some abscissa s between s1 and s2 and
 * passing through P.
 *
 * At an abscissa s the osculating circle has the radius R(s) = A^2/|s| (relation 11 of
 * UTMAT_CalculerParametreClot; R = 0 at s near 0, the straight start, where there is no
 * circle), its centre is the clothoid point at s offset by side*R (side -1 for A > 0, +1 for
 * A <= 0: the centre is on the inner side of the turn; the side is reversed at a negative s,
 * where the clothoid continued through its origin turns the other way), and it touches the
 * clothoid at the clothoid point at s.  Let d(s) be the distance from P to that centre.
 *  1. *count = 0, *radius = 0.  A = 0: nothing more (no error).
 *  2. P within the distance tolerance of the clothoid point at s1, and R(s1) not zero at the
 *     precision: the osculating circle at s1.  Otherwise the same at s2.
 *  3. Otherwise, when d(s1) >= R(s1) and d(s2) <= R(s2) (P on or outside the first circle, on
 *     or inside the second; at the precision), bisection on s: while d > R + precision at the
 *     lower end and d < R - precision at the upper end, the midpoint replaces the upper end
 *     when d <= R + precision there, else the lower end; at most
 *     UTMAT_CLOTHOID_BISECTION_LIMIT halvings.  Then the circle at the upper end when d = R
 *     there at the precision, else the one at the lower end when d = R there, else none; a
 *     radius zero at the precision (the straight start) is never returned.
 * The osculating circles along a clothoid are nested (the one further along, of larger
 * curvature, lies inside), so such a P lies on exactly one of them; for P between them pass as
 * s1 the end of larger curvature (larger |s|): with the ends the other way round P is inside
 * the circle at s1 and nothing is found.  The circle returned passes through P within the
 * calculation precision (or within the distance tolerance at an end).
 * Outputs: *centre, *radius (R > 0), *tangencyPoint (the clothoid point), *count (0 or 1).
 * Non-finite input finds nothing.  Failures: null pointer; a relation refused by
 * UTMAT_CalculerParametreClot (|A| within the precision of 0): ERR_FAILURE.  Uses the kernel's
 * current spiral formula.
 */
KB_API void UTMAT_CalculerCerTgClotPs1Pt(double A, double s1, double s2, const Point2d* P, Point2d* centre,
                                         double* radius, Point2d* tangencyPoint, int* count) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_UTMAT_TANGENCY_H */
