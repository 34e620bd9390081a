/*
 * KorvelBase - horizontal fits: circles through three points, the weighted best-fit circle,
 * the weighted best-fit straight line and the least-squares plane.
 *
 * Units: coordinates in any consistent length unit; angles in radians counter-clockwise from
 * the +x axis.  Every function is pure (no state between calls) and may be called from any
 * thread; the only memory used is released before return.  Status results are 0 on success
 * and ERR_FAILURE (0x8000) on failure.
 *
 * Observed points of the circle and line fits are runs of four doubles per point:
 *   x, standard deviation of x, y, standard deviation of y.
 */
#ifndef KORVELBASE_BESTFIT_HORIZONTAL_H
#define KORVELBASE_BESTFIT_HORIZONTAL_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/** z = a*x + b*y + c. */
typedef struct PlaneCoefficients {
    double a;
    double b;
    double c;
} PlaneCoefficients;

/**
 * Circle through three points in closed form.  The radius output is set to 0 first.
 * With bc = (x1^2+y1^2 - x2^2-y2^2)/2, cd = (x2^2+y2^2 - x3^2-y3^2)/2 and
 * det = (x1-x2)(y2-y3) - (y1-y2)(x2-x3): |det| < 1e-9 (collinear or coincident points) gives
 * ERR_FAILURE; otherwise cx = ((y2-y3)bc - (y1-y2)cd)/det, cy = ((x1-x2)cd - (x2-x3)bc)/det and
 * the radius is the distance from the centre to point 1.  The centre outputs may be null; the
 * radius output must not (null: ERR_FAILURE).
 */
KB_API int qmBestFit_horz3PtCurveCalc(double* centreX, double* centreY, double* radius,
                                      double x1, double y1, double x2, double y2, double x3,
                                      double y3) KB_NOEXCEPT;

/**
 * Circle through three points from the general equation x^2 + y^2 + D x + E y + F = 0: the
 * 3x3 system with rows (xi, yi, 1) and right-hand side -(xi^2 + yi^2) is solved by dense
 * matrix inversion; centre (-D/2, -E/2), radius 0.5*sqrt(D^2 + E^2 - 4F).  Singular system
 * (collinear points), a null output or no memory: ERR_FAILURE, outputs untouched.
 */
KB_API int qmBestFit_horz3PtCurveCalcMatrix(double* centreX, double* centreY, double* radius,
                                            double x1, double y1, double x2, double y2,
                                            double x3, double y3) KB_NOEXCEPT;

/**
 * Weighted best-fit circle by a combined least-squares adjustment of the general circle
 * equation (condition equations x^2 + y^2 + D x + E y + F = 0 with both coordinates observed).
 *
 * Outputs, in this order: the centre's y (northing), then the centre's x (easting), then the
 * radius.  Coordinates are reduced by their minima before the adjustment and the centre moved
 * back afterwards; the reduction is applied on the fly, so the caller's array is only read.
 * The start circle comes from the first consecutive triple of points that is not collinear.
 * At most 20 iterations; converged when |dD| < 1e-5, |dE| < 1e-5 and |dF| < 1e-3.
 *
 * The condition matrix M = B Q B^T is diagonal (each condition involves one point only), so
 * every iteration reduces to a 3x3 normal system: time and memory grow linearly with n.
 *
 * ERR_FAILURE: count < 3, a null pointer, no non-collinear consecutive triple, a zero
 * condition weight (both standard deviations of a point zero, or the point at the centre), a
 * singular normal system, a non-finite value, or no convergence (then all three outputs are
 * set to 0).  Residuals are not reported.
 */
KB_API int qmBestFit_horzCurveCalc(double* centreY, double* centreX, double* radius, int count,
                                   const double* observations) KB_NOEXCEPT;

/**
 * Weighted best-fit straight line (orthogonal regression, weight 1/sd_x^2 per point).
 *
 * Outputs, in this order:
 *  1. direction: the line's direction in radians in [0, 2*pi), counter-clockwise from +x,
 *     pointing from the first extent point towards the second (see below);
 *  2. lineConstant: c of the normal form a*x + b*y + c = 0 with a = sin(direction),
 *     b = -cos(direction), so that a*x + b*y + c is the signed perpendicular distance of a point
 *     from the line, positive on the right of the direction of travel;
 *  3. startParameter, 4. endParameter: positions along the line of the two extent points'
 *     projections, measured from the foot of the perpendicular from the origin (-a*c, -b*c) in
 *     the direction of travel; the fitted segment runs from
 *     (-a*c + t*cos(direction), -b*c + t*sin(direction)) for t = start to t = end, and
 *     start <= end;
 *  5. rmsResidual: the weighted root mean square perpendicular distance of the points from the
 *     line, sqrt(sum w r^2 / sum w); set to 0 before anything else.
 *
 * The extent points are the point farthest from the first point, then the point farthest
 * from that one (strictly greater distance replaces).  The axis is the weighted principal axis
 * of the points, 0.5*atan2(2 Cxy, Cxx - Cyy) on the weighted central moments (pi/4 when
 * Cxx = Cyy).  Its sense follows the chord from the first extent point to the second: the
 * chord's slope dy/dx (1e17 when |dx| < 1e-11) decides which component is compared: above 1.5
 * in magnitude the chord is steep and the sign of dy decides; below 0.0001 it is treated as
 * level and the sign of dx decides; in between the chord and the axis must point into the
 * same half-plane (positive scalar product).  When all moments vanish (the points coincide or
 * are isotropic) the chord's own direction is used, or pi/4 without a chord.
 *
 * ERR_FAILURE with nothing written: count < 2, a null pointer, a standard deviation of x that
 * is not positive and finite, or a non-finite coordinate.
 */
KB_API int qmBestFit_lineCalc(double* direction, double* lineConstant, double* startParameter,
                              double* endParameter, double* rmsResidual, int count,
                              const double* observations) KB_NOEXCEPT;

/**
 * Least-squares plane z = a*x + b*y + c through points (normal equations (A^T A) p = A^T z
 * with design rows (x, y, 1), solved with the dense matrix functions).  All outputs are zeroed
 * first.  Outputs: mean x, mean y, the plane's z at (mean x, mean y), a, b, c and the standard
 * error sqrt(sum r^2) / n (not sqrt(sum r^2 / n); may be null).  Coordinates are reduced by
 * their means internally for conditioning; the results are those of the plain normal
 * equations.  ERR_FAILURE, with every output 0: count < 3, a null pointer, all points on one
 * line in plan (singular system), or no memory.
 */
KB_API int qmBestFit_planeCalc(double* meanX, double* meanY, double* zAtCentroid, double* a,
                               double* b, double* c, double* standardError, int count,
                               const Point3d* points) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_BESTFIT_HORIZONTAL_H */
