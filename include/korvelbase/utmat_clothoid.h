/*
 * KorvelBase geometry kernel: clothoid (Euler spiral) points and derivatives.
 *
 * A clothoid starts at the origin with its tangent along +x; A (non-zero) is its parameter,
 * A^2 = R L, and its sign the turning side (A > 0 turns left, towards +y).  At a distance s
 * along it the deflection is t = s^2 / (2 A^2) and the normalised distance u = s / (sqrt(2)
 * |A|) (t = u^2); the unit tangent is (cos t, sigma sin t), sigma the sign of A.  An offset is
 * positive to the right of the direction of travel: the offset point is
 * (x + offset sigma sin t, y - offset cos t).
 *
 * Two series (the spiral-formula selector of the kernel, or the selector argument):
 *  1: x = sqrt(2)|A|(u - u^5/10 + u^9/216 - u^13/9360), y = sqrt(2) A (u^3/3 - u^7/42 +
 *     u^11/1320 - u^15/75600), four terms, powers taken one by one;
 *  2: the same series carried to nine terms each (stored coefficients) while t <= 3.4394; beyond,
 *     the asymptotic form with R = A^2/s, g = 0.4997 R/|A| - 0.042:
 *     x = R sin t + 0.88623|A| - g R cos(t - 0.2978),
 *     y = 0.88623 A - sigma g R sin(t - 0.2978) - sigma R cos t.
 * Accuracy against the exact clothoid (Fresnel integrals integrated numerically by the tests):
 * the distance of the computed point from the exact one, relative to s.
 *
 *   deflection t     four-term series   nine-term series   asymptotic form (selector 2)
 *   up to 0.5        6e-9               2e-16
 *   up to 1.0        1.5e-6             2e-16
 *   up to 2.0        3.7e-4             1.1e-12
 *   up to 2.5        2.2e-3             6.1e-11
 *   up to 3.0        9.2e-3             1.6e-9
 *   up to 3.4394     2.7e-2             1.9e-8
 *   3.5 to 4                                               3.1e-3
 *   4 to 20                                                2.8e-3, falling to 3.5e-4
 *
 * The nine-term series is limited near the switch by its truncation and its stored
 * coefficients (from u^27 on they differ from 1/(n ((n-1)/2)!) in the seventh digit).
 * Threads: reads the kernel's selector; one thread at a time with the kernel.
 */
#ifndef KORVELBASE_UTMAT_CLOTHOID_H
#define KORVELBASE_UTMAT_CLOTHOID_H

#include "korvelbase/utmat.h"

KB_BEGIN_DECLS

/**
 * The point at distance s, moved by `offset` to the right, and the unit tangent there, by
 * formula `selector` (1 or 2; any other value is taken as 1).  Each output may be null.
 * 0, or ERR_FAILURE for A = 0 (nothing written).
 */
KB_API int qmMath_calculateSpiralPointByDistanceAndOffset(double* x, double* y, double* tangentX,
                                                          double* tangentY, double A, double s,
                                                          double offset, int selector) KB_NOEXCEPT;
/**
 * The same with the kernel's current selector; point and tangent may be null.  Clears the error
 * word; A = 0 sets ERR_FAILURE and writes nothing.  Returns the tangent pointer.
 */
KB_API Point2d* UTMAT_CalculerPosPointArcClotAbscisse(double A, double s, double offset, Point2d* point,
                                                      Point2d* tangent) KB_NOEXCEPT;
/** UTMAT_CalculerPosPointArcClotAbscisse, returning the kernel error word (0 or ERR_FAILURE). */
KB_API uint32_t vmrUtmat_CalculateSpiralPointAtDistance(double A, double s, double offset, Point2d* point,
                                                        Point2d* tangent) KB_NOEXCEPT;
/**
 * First and second derivatives of the point with respect to u at distance s:
 * sqrt(2)(|A| C(u), A S(u)) and sqrt(2)(|A| C'(u), A S'(u)), C and S the cosine and sine series of
 * u^2 (four terms; nine with the kernel's selector 2).  A = 0: ERR_FAILURE in the error word.
 */
KB_API void UTMAT_CalculerDeriveePremEtSecClot(double A, double s, Point2d* first, Point2d* second) KB_NOEXCEPT;

/**
 * Relations between clothoid quantities: A (parameter), L (length from the origin), R (radius of
 * curvature at L), t (deflection at L, radians) and the shift of the circle (the distance from
 * the start tangent of the circle of curvature at L, less R: |y_centre - R|).  One quantity from
 * two others, both inputs taken in absolute value; "near zero" is within the kernel's calculation
 * precision.
 *
 *   code  result                    from (p1, p2)      refused when      output 0 when
 *    1    A = sqrt(R L)             (R, L)             p1 or p2 near 0
 *    2    A = L / sqrt(2 t)         (L, t)             p1 or p2 near 0
 *    3    A                         (L, shift)         p1 near 0         p2 near 0
 *    4    A = R sqrt(2 t)           (R, t)             p1 or p2 near 0
 *    5    L                         (A, shift)         p1 near 0         p2 near 0
 *    6    L                         (R, shift)         p1 near 0         p2 near 0
 *    7    L = A^2 / R               (A, R)             p1 near 0         p2 near 0
 *    8    L = A sqrt(2 t)           (A, t)             p1 near 0
 *    9    R                         (A, shift)         p1 near 0         p2 near 0
 *   11    R = A^2 / L               (A, L)             p1 near 0         p2 near 0
 *   12    R = A / sqrt(2 t)         (A, t)             p1 near 0         p2 near 0
 *   13    t                         (A, shift)         p1 near 0         p2 near 0
 *   14    t = L^2 / (2 A^2)         (A, L)             p1 near 0
 *   15    t = A^2 / (2 R^2)         (A, R)             p1 near 0         p2 near 0
 *   16    t                         (R, shift)         p1 near 0         p2 near 0
 *   17    shift                     (A, L)             p1 near 0         p2 near 0
 *   18    shift                     (A, R)             p1 near 0         p2 near 0
 *   19    shift                     (A, t)             p1 near 0         p2 near 0
 *   other (10 included)             ERR_FAILURE
 *
 * A refusal is judged before the output-0 rule.  An output 0 for a radius or a parameter stands
 * for "infinite" (a straight).  The shift (17-19) is computed on the kernel's current spiral
 * formula: the centre of curvature is the clothoid point at L with offset -R.
 *
 * Codes 3, 5, 6, 9, 13 and 16 invert the shift: shift / p1 depends on the deflection alone (the
 * clothoid has one shape, scaled by A) and grows monotonically with it over 0 < t <= pi (half a
 * turn), so the deflection is found by bisection there (at most 200 halvings; double precision
 * ends it after about 60) and the quantity follows from it and p1.  A shift beyond the one
 * reached at t = pi is refused.  Each evaluation uses the kernel's current spiral formula, so
 * the inverse and the direct codes 17 to 19 agree to rounding.
 *
 * UTMAT_CalculerParametreClot: clears the error word, sets *value to 0, and on success writes the
 * result; a refused relation or an unknown code sets ERR_FAILURE.  UTMAT_CalculerParametreClotValide:
 * the same, but a refusal only leaves *valid = 0 (no error); *valid = 1 on success; an unknown
 * code sets ERR_FAILURE.  Null outputs: ERR_FAILURE.
 */
KB_API void UTMAT_CalculerParametreClot(int code, double p1, double p2, double* value) KB_NOEXCEPT;
KB_API void UTMAT_CalculerParametreClotValide(int code, double p1, double p2, double* value,
                                              int* valid) KB_NOEXCEPT;

/**
 * Tangent difference of an offset circular arc.  An arc of signed radius R (R > 0 turns left)
 * starts with the same tangent as its offset arc at `offset` (positive to the right, so the
 * offset radius is R + offset).  After the same distance s travelled on each, the base tangent
 * has turned s/R and the offset one s/(R + offset); *difference = s/R - s/(R + offset) radians
 * (positive for an offset to the right, which turns less to the left).  R = 0 stands for a straight: difference 0.
 * An offset that reaches or passes the centre (R + offset of the other sign, or 0) has no arc:
 * ERR_FAILURE, *difference 0.
 */
KB_API void UTMAT_CalculerDifferenceTgArcCerTgOffCer(double R, double s, double offset,
                                                     double* difference) KB_NOEXCEPT;
/**
 * Tangent difference of an offset clothoid.  The offset curve of the clothoid A at `offset`
 * (positive to the right) runs at speed 1 + offset k(sigma), k = sigma/(A |A|) the signed
 * curvature, so after a distance s on it the base abscissa reached is sigma with
 * sigma + offset sigma^2 / (2 A |A|) = s.  *difference = sign(A) (s^2 - sigma^2) / (2 A^2): the
 * base tangent direction at s less the offset curve's at its own distance s (radians, the
 * offset curve's tangent at sigma is the base tangent at sigma).  A = 0, or an offset curve that
 * reaches its cusp (speed 0) before s: ERR_FAILURE, *difference 0.
 */
KB_API void UTMAT_CalculerDifferenceTgArcClotTgOffClt(double A, double s, double offset,
                                                      double* difference) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_UTMAT_CLOTHOID_H */
