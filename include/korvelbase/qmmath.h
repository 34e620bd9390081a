/*
 * KorvelBase: plane mathematics on plain doubles (qmMath_ family).
 *
 * Conventions shared by every member:
 *  - Angles are radians.  A direction is measured counter-clockwise from the +x axis and its
 *    canonical range is [0, 2*pi); an azimuth is measured clockwise from north (+y).
 *  - Points are passed as separate x, y doubles.  Results come back through output pointers;
 *    an output documented as optional may be null and is then simply not written.  A required
 *    output that is null makes the function fail with ERR_FAILURE.
 *  - Status results are 0 for success and ERR_FAILURE (0x8000) for failure, with two stated
 *    exceptions: qmMath_intersectLineWithLine2d returns 1 for parallel lines and
 *    qmMath_calculateIntersectionCircleCircle2d returns 2 for coincident circles.  Intersection
 *    counts come back through an int output, never through the status.
 *  - "Right of the direction of travel" is positive for every signed offset.
 *  - The division guard: num/den is allowed when |den| > |num| * 1e-100 (so 0/0 is refused and
 *    0/x is allowed for any x other than 0).
 *  - Every member is a pure function of its arguments (no allocation, no global state) and may
 *    be called from any thread.
 */
#ifndef KORVELBASE_QMMATH_H
#define KORVELBASE_QMMATH_H

#include "korvelbase/compare.h"

KB_BEGIN_DECLS

/* ---------------------------------------------------------------------------------------- */
/* Angles and directions                                                                    */
/* ---------------------------------------------------------------------------------------- */

/** fmod(angle, 2*pi), plus 2*pi when negative: a direction in [0, 2*pi). */
KB_API double qmMath_normalizeAngle(double angle) KB_NOEXCEPT;

/**
 * The same normalisation for an angle in degrees: converted to radians (times pi, times 1/180),
 * normalised, converted back (divided by pi, times 180).  Range [0, 360) up to rounding.
 */
KB_API double qmMath_normalizeAngleDegree(double angle) KB_NOEXCEPT;

/** Arc tangent of y/x placed in its quadrant, in (-pi, pi] (y = -0 with x < 0 gives +pi). */
KB_API double qmMath_atan2(double y, double x) KB_NOEXCEPT;

/** Direction from point 1 to point 2 in [0, 2*pi); coincident points give 0. */
KB_API double qmMath_direction2d(double x1, double y1, double x2, double y2) KB_NOEXCEPT;

/**
 * Signed turn from direction d1 to direction d2 in (-pi, pi]: normalizeAngle(d2 - d1), minus
 * 2*pi when above pi.  Positive is counter-clockwise (a left turn).
 */
KB_API double qmMath_angleBetweenDirections(double d1, double d2) KB_NOEXCEPT;

/**
 * Clockwise turn from azimuth a0 to azimuth a1: a1 - a0, plus 2*pi when a1 comes before a0
 * (in an earlier quarter turn, or in the same quarter turn with a smaller value).  Range
 * [0, 2*pi) for azimuths in [0, 2*pi).
 */
KB_API double qmMath_angleRightBetweenAzimuths(double a0, double a1) KB_NOEXCEPT;

/**
 * 1 when two angles differ by less than tol after normalisation to [0, 2*pi), else 0.  The
 * wrap-around at 0 is only considered when one of the normalised angles is itself within tol
 * of 0.  A difference equal to tol counts as not near.
 */
KB_API int qmMath_anglesNearEqual(double a1, double a2, double tol) KB_NOEXCEPT;

/**
 * 1 when directions d1 and d2 are parallel within tol, same sense or opposite sense, else 0.
 * difference (optional) receives the angular gap in [0, pi]: the gap between d1 and d2 when
 * that is below tol, else the smaller of that gap and the gap between d1 and d2 + pi.
 */
KB_API int qmMath_directionsNearParallel(double* difference, double d1, double d2,
                                         double tol) KB_NOEXCEPT;

/**
 * Sweep around the centre C from point 1 to point 2.  ccw != 0: the counter-clockwise sweep in
 * [0, 2*pi); ccw = 0: that sweep minus 2*pi, in [-2*pi, 0) (coincident directions give 0 and
 * -2*pi).  ERR_FAILURE, angle untouched, when a point coincides exactly with the centre or
 * angle is null.
 */
KB_API int qmMath_calculateSweepAngleTwoPointsFromCenter(double* angle, double cx, double cy,
                                                         double x1, double y1, double x2,
                                                         double y2, int ccw) KB_NOEXCEPT;

/**
 * Counter-clockwise angle in [0, 2*pi) from vector 1 to vector 2.  When a vector cannot be
 * normalised (see qmMath_normalizeVector2d: in practice a zero vector) the result is the
 * status value itself, 32768.0; callers compare against it.
 */
KB_API double qmMath_getSweepAngleBetweenVectors2d(double x1, double y1, double x2,
                                                   double y2) KB_NOEXCEPT;

/* ---------------------------------------------------------------------------------------- */
/* Scalars and small helpers                                                                */
/* ---------------------------------------------------------------------------------------- */

/** b unless b < a (ties and NaN give b). */
KB_API double qmMath_doubleMax(double a, double b) KB_NOEXCEPT;
/** b if b <= a, else a. */
KB_API double qmMath_doubleMin(double a, double b) KB_NOEXCEPT;
/** 1 if x > 0, 0 if x = 0 or NaN, else -1. */
KB_API int qmMath_doubleGetSign(double x) KB_NOEXCEPT;
/** The division guard: 1 when |denominator| > |numerator| * 1e-100, else 0. */
KB_API int qmMath_isDivisionPossible(double numerator, double denominator) KB_NOEXCEPT;

/**
 * n! computed in wrapping unsigned 32-bit arithmetic and returned as that unsigned value
 * (exact up to 12!, wrapped from 13! on, 0 from 34! on); n <= 1 gives 1.
 */
KB_API double qmMath_factorial(int n) KB_NOEXCEPT;

/**
 * n!/m! as a product of consecutive integers in wrapping signed 32-bit arithmetic:
 * n > m: n*(n-1)*...*(m+1); n = m: 1.0; n < m: 1.0 / (m*(m-1)*...*(n+1)).  A product that is
 * (or wraps to) 0 in the last case gives +infinity.
 */
KB_API double qmMath_factorialDivision(int n, int m) KB_NOEXCEPT;

/**
 * Linear interpolation of y at x between (x0, y0) and (x1, y1): y0 when x1 = x0 or y1 = y0
 * (exactly), else y0 + (x - x0)/(x1 - x0)*(y1 - y0).  Extrapolates outside [x0, x1].
 */
KB_API double qmMath_interpolateDoubles(double x0, double y0, double x, double x1,
                                        double y1) KB_NOEXCEPT;

/** x1*x2 + y1*y2. */
KB_API double qmMath_scalarProduct2d(double x1, double y1, double x2, double y2) KB_NOEXCEPT;
/** x1*y2 - y1*x2: positive when vector 2 lies counter-clockwise of vector 1. */
KB_API double qmMath_crossProduct2d(double x1, double y1, double x2, double y2) KB_NOEXCEPT;
/** Euclidean distance between two plane points. */
KB_API double qmMath_distance2d(double x1, double y1, double x2, double y2) KB_NOEXCEPT;
/** Euclidean distance between two space points. */
KB_API double qmMath_distance3d(double x1, double y1, double z1, double x2, double y2,
                                double z2) KB_NOEXCEPT;

/**
 * Scales (*x, *y) to unit length.  ERR_FAILURE, vector untouched, when a pointer is null or
 * the division guard refuses max(x, y)/n, n being the length and max the signed maximum of
 * the components (deliberately not the larger magnitude); in practice a zero vector.
 */
KB_API int qmMath_normalizeVector2d(double* x, double* y) KB_NOEXCEPT;
/** The same in space, with the signed maximum of the three components. */
KB_API int qmMath_normalizeVector3d(double* x, double* y, double* z) KB_NOEXCEPT;

/* ---------------------------------------------------------------------------------------- */
/* Lines                                                                                    */
/* ---------------------------------------------------------------------------------------- */

/**
 * Equation a*x + b*y + c = 0 of the line through O with direction D: a = dy, b = -dx,
 * c = -(a*ox + b*oy), not normalised; a*px + b*py + c is positive right of D.  ERR_FAILURE
 * when dx and dy are both exactly 0 or an output is null.
 */
KB_API int qmMath_calculateLineEquationFromOriginAndDirection2d(double* a, double* b, double* c,
                                                                double ox, double oy, double dx,
                                                                double dy) KB_NOEXCEPT;

/**
 * Signed distance (a*px + b*py + c)/sqrt(a^2 + b^2) from P to the line.  ERR_FAILURE when
 * a = b = 0 or distance is null.
 */
KB_API int qmMath_calculerDistancePtLineEquation2d(double* distance, double a, double b,
                                                   double c, double px, double py) KB_NOEXCEPT;

/**
 * Side of P against the directed line 1->2: 1 right, -1 left, 0 exactly on it (no tolerance).
 */
KB_API int qmMath_sideOfLine2d(double px, double py, double x1, double y1, double x2,
                               double y2) KB_NOEXCEPT;

/**
 * Signed distance from P to the line 1->2, positive right of the direction.  *offset is set
 * to 0 first.  ERR_FAILURE when offset is null or the guard refuses (coincident points).
 */
KB_API int qmMath_offsetToLine2d(double* offset, double px, double py, double x1, double y1,
                                 double x2, double y2) KB_NOEXCEPT;

/**
 * Foot of the perpendicular from P on the line 1->2 (optional x, y) and the signed offset of
 * P (optional, positive right).  ERR_FAILURE, nothing written, when points 1 and 2 coincide.
 */
KB_API int qmMath_projectOnLine2d(double* x, double* y, double* offset, double px, double py,
                                  double x1, double y1, double x2, double y2) KB_NOEXCEPT;

/**
 * Projection of P on the line through O with unit tangent T: abscissa t = (P - O).T, foot
 * O + t*T, offset positive right of T (all outputs optional).  T is not normalised here.
 * A zero T writes foot and abscissa (both O and 0) and then returns ERR_FAILURE.
 */
KB_API int qmMath_projectOnLineDefinedByPointAndTangent2d(double* x, double* y, double* abscissa,
                                                          double* offset, double px, double py,
                                                          double ox, double oy, double tx,
                                                          double ty) KB_NOEXCEPT;

/**
 * Point of the infinite line 3->4 whose signed offset from the reference line 1->2 (positive
 * right) equals offset (optional outputs).  ERR_FAILURE when the lines are parallel.
 */
KB_API int qmMath_projectOnLineByOffsetToLine2d(double* x, double* y, double x1, double y1,
                                                double x2, double y2, double x3, double y3,
                                                double x4, double y4,
                                                double offset) KB_NOEXCEPT;

/**
 * Intersection of the infinite lines 1->2 and 3->4 (optional outputs).  Returns 0 when found,
 * 1 (not ERR_FAILURE) when the guard refuses the parameter: parallel or degenerate lines.
 */
KB_API int qmMath_intersectLineWithLine2d(double* x, double* y, double x1, double y1, double x2,
                                          double y2, double x3, double y3, double x4,
                                          double y4) KB_NOEXCEPT;

/**
 * 1 when segment 3-4 lies on the line of segment 1-2 (cross products within tol) and one of
 * its end points falls in the interior [tol, 1 - tol] of segment 1-2 by parameter, else 0.
 * Only the end points of the second segment are tested, so a second segment covering the
 * whole first one and reaching beyond both ends gives 0 (deliberate).
 */
KB_API int qmMath_overlapLineSegments(double x1, double y1, double x2, double y2, double x3,
                                      double y3, double x4, double y4,
                                      double tol) KB_NOEXCEPT;

/**
 * Point at a distance from (x0, y0) along the tangent (tx, ty) (taken as given, not
 * normalised).  ERR_FAILURE only when both outputs are null.
 */
KB_API int qmMath_locateByDistanceTangent2d(double* x, double* y, double x0, double y0,
                                            double distance, double tx,
                                            double ty) KB_NOEXCEPT;

/** The same along a direction.  ERR_FAILURE only when both outputs are null. */
KB_API int qmMath_locateByDistanceDirection2d(double* x, double* y, double x0, double y0,
                                              double distance, double direction) KB_NOEXCEPT;

/**
 * Local point (lx, ly) of a frame rotated counter-clockwise by angle and placed at (ox, oy),
 * in global coordinates: (cos*lx - sin*ly + ox, sin*lx + cos*ly + oy).  ERR_FAILURE only when
 * both outputs are null.
 */
KB_API int qmMath_locateByTranslationRotation2d(double* x, double* y, double lx, double ly,
                                                double ox, double oy,
                                                double angle) KB_NOEXCEPT;

/* ---------------------------------------------------------------------------------------- */
/* Circles                                                                                  */
/* ---------------------------------------------------------------------------------------- */

/**
 * Point of the circle (C, radius) in the direction of P seen from C; angle receives that
 * direction as atan2, in [-pi, pi].  All outputs optional; always 0 (P = C uses direction 0).
 */
KB_API int qmMath_projectPointOnCircle2d(double* x, double* y, double* angle, double px,
                                         double py, double cx, double cy,
                                         double radius) KB_NOEXCEPT;

/**
 * Intersection of the line a*x + b*y + c = 0 (any scale) with the circle (C, radius).  With h0
 * the distance from C to the line: h0 - radius > tol gives count 0; |h0 - radius| <= tol a
 * tangent, count 1, point 1 = foot of C; otherwise count 2, point 1 = foot + h*T and point 2 =
 * foot - h*T with T = (-b, a)/|(a, b)| and h = sqrt(radius^2 - h0^2).  Point outputs are
 * optional; point 2 is written only with count 2.  ERR_FAILURE, nothing written, when a = b = 0
 * or count is null.
 */
KB_API int qmMath_calculateIntersectionLineCircle2d(double* x1, double* y1, double* x2,
                                                    double* y2, int* count, double a, double b,
                                                    double c, double cx, double cy,
                                                    double radius, double tol) KB_NOEXCEPT;

/**
 * Intersection of two circles through their radical line, with the tolerances of
 * qmMath_calculateIntersectionLineCircle2d.  Centres within tol of each other: returns 2 when
 * the radii are equal within tol (the same circle), else 0, with count 0 either way.  Point
 * outputs optional; ERR_FAILURE when count is null.
 */
KB_API int qmMath_calculateIntersectionCircleCircle2d(double* x1, double* y1, double* x2,
                                                      double* y2, int* count, double cx1,
                                                      double cy1, double r1, double cx2,
                                                      double cy2, double r2,
                                                      double tol) KB_NOEXCEPT;

/**
 * Tangent points of the two tangents from P to the circle (C, radius).  All outputs (optional)
 * are set to P first.  The tangent point left of the direction P->C goes to (xl, yl), the
 * other to (xr, yr).  P exactly on the circle: 0 with both pairs = P.  ERR_FAILURE when P is
 * inside the circle or the construction does not give two distinct points within tol.
 */
KB_API int qmMath_lineTangentToCircleByPoint(double* xl, double* yl, double* xr, double* yr,
                                             double cx, double cy, double radius, double px,
                                             double py, double tol) KB_NOEXCEPT;

/**
 * Circle through three points (outputs optional).  radius = |P1P3| / (2*sin|A - pi|) with A
 * the clockwise angle at P2 from the ray to P1 to the ray to P3 (inscribed angle theorem);
 * the centre is found from P1 along the chord's azimuth turned by A.  Collinear points (A
 * exactly pi, or an exactly zero cross product of P1 - P2 and P3 - P2, which includes
 * coincident points): radius 1e100 and the centre is not written.  Returns 0.
 */
KB_API int qmMath_computeCurveRadiusFromThreePoints(double x1, double y1, double x2, double y2,
                                                    double x3, double y3, double* cx,
                                                    double* cy, double* radius) KB_NOEXCEPT;

/* ---------------------------------------------------------------------------------------- */
/* Polynomials, parabolas and spirals                                                       */
/* ---------------------------------------------------------------------------------------- */

/**
 * Real roots of c0 + c1*x + c2*x^2 + c3*x^3 (coefficients[k] = ck) in closed form; returns
 * their number (0 to 3, 0 also for null arrays).  A leading coefficient within tol of 0 (or
 * exactly 0) lowers the degree; a linear equation gives its root unrefined.  Quadratic
 * (x = -p +- sqrt(q) with p = c1/(2*c2), q = p^2 - c0/c2): 0 roots when q < 0, else both,
 * unrefined and ascending, a double root twice.  Cubic (Cardano, D = R^2 + Q^3 of the
 * depressed form): one real root when D >= 0, else three in ascending order with those within
 * tol of 0 set to 0; each cubic root then takes one Newton step.
 */
KB_API int qmMath_solvePolynomialEquation(const double* coefficients, double* roots,
                                          double tol) KB_NOEXCEPT;

/**
 * Tangents from P to the parabola y = y0 + g1*u + r*u^2 (u = x - x0, r = (g2 - g1)/length)
 * that starts at (x0, y0).  Returns the number of tangent points (0 to 2; 0 when length <= 0
 * or g1 = -g2 exactly); point k is (X, X*(r*X + g1) + y0) with X = u_k + x0, the height taken
 * with the absolute X (as it stands, it agrees with the parabola only for x0 = 0).  Outputs
 * are optional and set to 0 first.
 */
KB_API int qmMath_parabolaTangentsToPoint(double* x1, double* y1, double* x2, double* y2,
                                          double g1, double g2, double length, double x0,
                                          double y0, double px, double py) KB_NOEXCEPT;

/**
 * Radius of the circular curve that joins the tangents A->V and V->B (V their intersection
 * point, the curve's PI) and passes through P: the circle tangent to both lines whose centre
 * lies on the bisector of the angle at V, with P on the arc between the two tangency points.
 * Of the two circles tangent to both lines through P, the larger radius is tried first.
 * *radius is set to 0 first; ERR_FAILURE (radius 0) when radius is null, a tangent has no
 * length, the tangents are one line, or no such arc passes through P (P outside the angle).
 */
KB_API int qmMath_passTangentCurveThruPoint(double* radius, double a1, double a2, double b1,
                                            double b2, double q1, double q2, double p1,
                                            double p2) KB_NOEXCEPT;

/**
 * Length of the symmetric parabolic vertical curve that joins the tangents A->V and V->B (V
 * the vertex) and passes through P.  Each point is a (level, chainage) pair: k1 = (q1 - a1)/
 * (q2 - a2) and k2 = (q1 - b1)/(q2 - b2) are the grades.  With e = p2 - q2, the half length l
 * solves l^2 + (2e - 4(p1 - q1 - k1*e)/(k2 - k1))*l + e^2 = 0; the larger non-negative root
 * is kept and *length = 2*l.  *length is 0 when a tangent is vertical (no chainage change),
 * the grades are equal or exactly opposite (k1 = -k2), or no root is non-negative.
 * ERR_FAILURE only when length is null; otherwise 0.
 */
KB_API int qmMath_passTangentParabolaThruPoint(double* length, double a1, double a2, double b1,
                                               double b2, double q1, double q2, double p1,
                                               double p2) KB_NOEXCEPT;

/**
 * Length of a clothoid from its deflection and end radii: 2*|t|/(1/R1 + 1/R2), t the turn from
 * azimuth 1 to azimuth 2 in [-pi, pi].  A radius of 0 (the usual notation of a straight, that is an
 * infinite radius) contributes no curvature; a zero total curvature gives 0.  Radii are signed
 * as given: opposite signs reduce the total curvature.
 */
KB_API double qmMath_spiralLength(double azimuth1, double azimuth2, double r1,
                                  double r2) KB_NOEXCEPT;

/* ---------------------------------------------------------------------------------------- */
/* Angular sectors and arcs                                                                 */
/* ---------------------------------------------------------------------------------------- */

/*
 * An angular sector is the closed set of directions swept from a start direction through a
 * sweep, both in radians: a positive sweep turns counter-clockwise, a negative one clockwise
 * (the sector (t, -s) is the sector (t - s, s)).  A sweep of a full turn or more, or within
 * tol of it, is the whole circle.  Results are always given counter-clockwise: a start in
 * [0, 2*pi) and a sweep in [0, 2*pi].  Directions are compared absolutely and inclusively at
 * the tolerance tol (radians, taken by magnitude): sectors whose edges meet within tol share
 * that edge, so their union is one sector and their intersection the zero-sweep sector at
 * the common direction.  A NaN or infinite start, sweep, direction or tolerance gives
 * ERR_FAILURE.
 *
 * The relation of a second sector B to a first sector A (the same six cases as the kernel's
 * UTMAT_Classer2Secteurs):
 */
#define QMMATH_SECTORS_DISJOINT 1              /* no common direction                       */
#define QMMATH_SECTORS_FIRST_CONTAINS_SECOND 2 /* B inside A; also equal sectors, or A full */
#define QMMATH_SECTORS_SECOND_CONTAINS_FIRST 3 /* A inside B, B strictly larger             */
#define QMMATH_SECTORS_FIRST_THEN_SECOND 4     /* B starts inside A, ends beyond A's end    */
#define QMMATH_SECTORS_SECOND_THEN_FIRST 5     /* B starts outside A, ends inside A         */
#define QMMATH_SECTORS_OVERLAP_AT_BOTH_ENDS 6  /* B starts inside A, runs round the circle  */
                                               /* and ends inside A again: two overlaps     */

/**
 * Position of a direction against the sector (start, sweep): *position = -1 strictly inside,
 * 0 on one of the two bounding directions (within tol), 1 outside; a whole-circle sector has
 * no boundary and gives -1 for every direction.  Returns 0, or ERR_FAILURE (position
 * untouched) when position is null or a value is not finite.
 */
KB_API int qmMath_compareDirectionToSector(int* position, double direction, double start,
                                           double sweep, double tol) KB_NOEXCEPT;

/**
 * Union of sector 1 (A) and sector 2 (B).  starts and sweeps are arrays of capacity 2;
 * *count receives the number of sectors written: 2 when the sectors are disjoint (A then B,
 * each in canonical form), otherwise 1: A or B when one contains the other, the sector from
 * the start of the first to the end of the second for a single overlap (cases 4 and 5), the
 * whole circle starting at A's start for an overlap at both ends (case 6).  relation
 * (optional) receives the case, 1 to 6.  Returns 0, or ERR_FAILURE with *count = 0 (when
 * count is not null) for a null array or a non-finite value.
 */
KB_API int qmMath_calculateAngularSectorSum(double* starts, double* sweeps, int* count,
                                            int* relation, double start1, double sweep1,
                                            double start2, double sweep2,
                                            double tol) KB_NOEXCEPT;

/**
 * Intersection of sector 1 (A) and sector 2 (B), with the arrays, count, relation and
 * failures of qmMath_calculateAngularSectorSum: *count = 0 when disjoint; 1 for containment
 * (the inner sector) and for a single overlap (the common part); 2 for an overlap at both
 * ends, the part at A's start first, then the part at A's end.  Sweeps are never negative: a
 * contact within tol gives a zero-sweep sector.
 */
KB_API int qmMath_calculateAngularSectorProduct(double* starts, double* sweeps, int* count,
                                                int* relation, double start1, double sweep1,
                                                double start2, double sweep2,
                                                double tol) KB_NOEXCEPT;

/**
 * Range (axis-aligned bounding box) of the circular arc of centre (cx, cy) and radius
 * radius >= 0 that starts in direction start and turns through sweep (radians, positive
 * counter-clockwise; a full turn or more is the whole circle).  The box holds the two end
 * points and, for each axis direction 0, pi/2, pi, 3*pi/2 the arc passes through (ends
 * included, exact comparison), the circle's extreme point in that direction; it is therefore
 * the exact box of the arc, up to the rounding of the end points.  All four outputs are
 * required.  Returns 0, or ERR_FAILURE (nothing written) for a null output, a negative radius
 * or a non-finite value.
 */
KB_API int qmMath_arcGetRange2d(double* xmin, double* ymin, double* xmax, double* ymax,
                                double cx, double cy, double radius, double start,
                                double sweep) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMMATH_H */
