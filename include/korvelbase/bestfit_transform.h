/*
 * KorvelBase: plane coordinate transformations from control points.
 *
 * Control points are known in a source system (x, y) and a target system (X, Y).  Models:
 *   similarity (a, b, tx, ty):  X = a x - b y + tx,  Y = b x + a y + ty
 *                               (a = scale cos(rotation), b = scale sin(rotation));
 *   affine (a, b, c, d, e, f):  X = a x + b y + c,   Y = d x + e y + f;
 *   projective (a .. h):        w = g x + h y + 1,  X = (a x + b y + c) / w,
 *                               Y = (d x + e y + f) / w.
 * For each: an exact solution from the fewest pairs, a point transformation, and a weighted
 * least-squares fit from any number of pairs.
 *
 * The fits take count records of eight doubles: x, sd(x), y, sd(y), X, sd(X), Y, sd(Y).  Both
 * coordinate sets are observations (a combined adjustment): each point gives two conditions
 * F(observations, parameters) = 0, linearised with condition rows B (derivatives by the
 * point's four observations) and design rows A (derivatives by the parameters); with the
 * cofactors Q = diag(sd^2) and M = B Q B^T, each pass adds d = (A^T M^-1 A)^-1 A^T M^-1 w to
 * the parameters (w the misclosures), at most 10 passes, until every |d| < 1e-5.  M is 2 x 2
 * block-diagonal (each point's conditions involve only its own observations), so each pass
 * costs time linear in the number of points and no n x n matrix is ever formed.
 * Outputs: the parameters; the variance factor r^T M^-1 r / divisor of the last pass's
 * residuals r = w - A d (divisors: similarity 2n - 4 when n > 2; affine n - 3 when n > 3,
 * deliberately not the redundancy; projective n - 4 when n > 4; else 0); the residual measure
 * 2 sqrt(sum r^2) / n.
 * Results: 0; ERR_FAILURE for too few points (the affine fit returns 1 instead, deliberately),
 * for a pass that does not converge in 10 (parameters then 0, statistics still written), for a
 * singular system (points without weight, a degenerate configuration), null arguments or no
 * memory.  Thread-safe (no shared state).
 *
 * The projective fit starts from the exact affine of three control points: the first, the one
 * farthest from it, and the one farthest from the line through those two (the widest triangle
 * the first point belongs to), with g = h = 0.
 */
#ifndef KORVELBASE_BESTFIT_TRANSFORM_H
#define KORVELBASE_BESTFIT_TRANSFORM_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/**
 * Exact similarity through two pairs (x1, y1) -> (X1, Y1), (x2, y2) -> (X2, Y2), by inverting
 * the 4 x 4 system.  Coincident points are not detected.  Always 0 (null outputs are skipped).
 */
KB_API int qmBestFit_transformCalcParam2d(double* a, double* b, double* tx, double* ty, double x1,
                                          double y1, double X1, double Y1, double x2, double y2,
                                          double X2, double Y2) KB_NOEXCEPT;
/** Exact affine through three pairs, by inverting the 6 x 6 system.  Always 0. */
KB_API int qmBestFit_transformCalcParamAffine2d(double* a, double* b, double* c, double* d,
                                                double* e, double* f, double x1, double y1,
                                                double X1, double Y1, double x2, double y2,
                                                double X2, double Y2, double x3, double y3,
                                                double X3, double Y3) KB_NOEXCEPT;
/** (X, Y) of (x, y) under a similarity.  Always 0. */
KB_API int qmBestFit_transformPtBy2d(double* X, double* Y, double a, double b, double tx,
                                     double ty, double x, double y) KB_NOEXCEPT;
/** (X, Y) of (x, y) under an affine transformation.  Always 0. */
KB_API int qmBestFit_transformPtByAffine2d(double* X, double* Y, double a, double b, double c,
                                           double d, double e, double f, double x,
                                           double y) KB_NOEXCEPT;
/** (X, Y) of (x, y) under a projective transformation; w = 0 is not guarded.  Always 0. */
KB_API int qmBestFit_transformPtByProjective2d(double* X, double* Y, double a, double b, double c,
                                               double d, double e, double f, double g, double h,
                                               double x, double y) KB_NOEXCEPT;
/** Least-squares similarity from count >= 2 control records (see above). */
KB_API int qmBestFit_transform2d(double* a, double* b, double* tx, double* ty,
                                 double* varianceFactor, double* residualMeasure, int count,
                                 const double* points) KB_NOEXCEPT;
/** Least-squares affine from count >= 3 control records; fewer points return 1. */
KB_API int qmBestFit_transformAffine2d(double* a, double* b, double* c, double* d, double* e,
                                       double* f, double* varianceFactor, double* residualMeasure,
                                       int count, const double* points) KB_NOEXCEPT;
/** Least-squares projective from count >= 4 control records. */
KB_API int qmBestFit_transformProjective2d(double* a, double* b, double* c, double* d, double* e,
                                           double* f, double* g, double* h,
                                           double* varianceFactor, double* residualMeasure,
                                           int count, const double* points) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_BESTFIT_TRANSFORM_H */
