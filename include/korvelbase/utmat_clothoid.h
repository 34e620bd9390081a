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

KB_END_DECLS

#endif /* KORVELBASE_UTMAT_CLOTHOID_H */
