/*
 * KorvelBase: tolerant comparison of doubles and digit counting.
 *
 * Every tolerance is absolute (never relative to the operands) and is compared against the
 * plain difference a - b in double precision.  Bounds are inclusive for equality:
 *   equal:            |a - b| <= tol
 *   greater:           a - b  >  tol      lessOrEqual:    a - b <= tol   (exact complements)
 *   less:              a - b  < -tol      greaterOrEqual: a - b >= -tol  (exact complements)
 *   closed interval:   x - lo >= -tol and x - hi <= tol   ([lo, hi] widened by tol)
 *   open interval:     lo + tol < x and hi - tol > x      ((lo, hi) narrowed by tol)
 *   qmMath_doublesNearEqual: |a - b| <= |tol|
 * Any comparison involving NaN yields 0.  A negative tolerance makes qmUtil_equalDouble always
 * 0, while qmMath_doublesNearEqual uses its magnitude.
 * All functions are pure and may be called from any thread.
 */
#ifndef KORVELBASE_COMPARE_H
#define KORVELBASE_COMPARE_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/** Does nothing (the constants are filled when the library loads); returns 0. */
KB_API int initialize(void) KB_NOEXCEPT;

KB_API int qmUtil_equalDouble(double a, double b, double tol) KB_NOEXCEPT;
KB_API int qmUtil_greaterDouble(double a, double b, double tol) KB_NOEXCEPT;
KB_API int qmUtil_greaterOrEqualDouble(double a, double b, double tol) KB_NOEXCEPT;
KB_API int qmUtil_lessDouble(double a, double b, double tol) KB_NOEXCEPT;
KB_API int qmUtil_lessOrEqualDouble(double a, double b, double tol) KB_NOEXCEPT;
KB_API int qmUtil_belongToClosedIntervalDouble(double x, double lo, double hi, double tol) KB_NOEXCEPT;
KB_API int qmUtil_belongToOpenIntervalDouble(double x, double lo, double hi, double tol) KB_NOEXCEPT;
KB_API int qmMath_doublesNearEqual(double a, double b, double tol) KB_NOEXCEPT;

/**
 * qsort-shaped comparison of two doubles: -1 when *p < *q, 1 when *p > *q, 0 otherwise
 * (exact, no tolerance).  Null pointers are not tested.
 */
KB_API int qmUtil_compareDoubleByPointer(const void* p, const void* q) KB_NOEXCEPT;

/** Characters of n written in decimal, minus sign included (0 -> 1, -5 -> 2, 100 -> 3). */
KB_API int qmUtil_numberOfDigit(int n) KB_NOEXCEPT;
/**
 * qmUtil_numberOfDigit of floor(d) truncated to int: the digits of the integer part, sign
 * included.  A value outside the int range (or NaN) truncates to INT_MIN, as a 32-bit
 * conversion does, and so counts 11.
 */
KB_API int qmUtil_numberOfMantissaDigit(double d) KB_NOEXCEPT;
/** 16 - qmUtil_numberOfMantissaDigit(d): decimals left when d carries 16 significant digits. */
KB_API int qmUtil_numberOfDecimalsDigit(double d) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_COMPARE_H */
