/*
 * KorvelBase: numbers and slopes as text.
 *
 * Narrow outputs hold 256 characters and wide (UTF-16) slope outputs 256 units, the NUL
 * included; nothing is ever written beyond, whatever the value, the digit count or the prefix:
 * longer text is cut.  Digits are those of printf in the "C" locale ("%.*f": correctly
 * rounded; NaN and infinities as nan, inf, -inf); the decimal separator is '.' whatever the
 * host's locale, except between qmFormat_HonorMachineLocale and qmFormat_RestoreDefaultLocale,
 * where it is the machine locale's.
 * Results: 0, or ERR_FAILURE for a null output.  Thread-safe, except the locale pair, which
 * changes the process's locale (one thread at a time).
 */
#ifndef KORVELBASE_QMFORMAT_H
#define KORVELBASE_QMFORMAT_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/** Size of every output, NUL included. */
#define QM_FORMAT_TEXT_SIZE 256

/** Slope notations of qmFormat_slopeToString. */
#define QM_SLOPE_RUN_OVER_RISE 1 /* 1 / slope, then ":1" */
#define QM_SLOPE_RISE_OVER_RUN 2 /* slope, then ":1" */
#define QM_SLOPE_PERCENT 3       /* slope * 100, then "%" */
#define QM_SLOPE_RATIO 4         /* slope */
#define QM_SLOPE_PER_MILLE 5     /* slope * 1000, then "%o" */

/** value with `decimals` digits after the point, truncated (0 decimals: no point). */
KB_API int qmFormat_doubleByDecimalDigits(char* text, double value, int decimals) KB_NOEXCEPT;
/** value with `decimals` digits after the point, rounded. */
KB_API int qmFormat_doubleByDecimalDigitsNoTrunc(char* text, double value, int decimals) KB_NOEXCEPT;
/**
 * value with `decimals` digits, truncated when truncate is non-zero (from the 16-decimal text;
 * digits beyond are dropped) or rounded; with pad non-zero, zeros are written in front until
 * the part before the point has `width` characters.  A minus sign counts and the zeros go in
 * front of it: -5.2, 1 decimal, width 4 gives "00-5.2" (kept as it stands).
 */
KB_API int qmFormat_doubleByDecimalDigitsExt(char* text, double value, int decimals, int truncate,
                                             int pad, int width) KB_NOEXCEPT;
/**
 * value with `digits` significant digits, truncated: with k = (int) log10 |value| + 1 digits
 * before the point, digits < k gives the integer part with its last k - digits digits zeroed
 * (123456.7, 3 gives 123000); otherwise digits - k decimals, truncated (1.23456, 3 gives 1.23;
 * 0.0123, 3 gives 0.012).  0 is written with digits - 1 decimals; NaN and infinities as
 * themselves.
 */
KB_API int qmFormat_doubleBySignificantDigits(char* text, double value, int digits) KB_NOEXCEPT;
/** prefix (null: none), value rounded to `decimals`, suffix (null: none). */
KB_API int qmFormat_doubleWithPrefixSuffix(char* text, const char* prefix, const char* suffix,
                                           int decimals, double value) KB_NOEXCEPT;
/** The integer zero-filled to `width` characters (the sign included); width < 1: as it is. */
KB_API int qmFormat_getPaddedInteger(char* text, int value, int width) KB_NOEXCEPT;
/**
 * The slope in a notation (QM_SLOPE_*) with `decimals` digits: slope <= -1e100 gives "-oo",
 * >= 1e100 gives "oo"; a run over rise of slope 0 writes 0 (no division); another mode leaves
 * the text empty.  A null output is ignored.
 */
KB_API void qmFormat_slopeToString(QmChar16* text, double slope, int mode, int decimals) KB_NOEXCEPT;
/** Selects the machine's locale for every category, remembering the one in use. */
KB_API void qmFormat_HonorMachineLocale(void) KB_NOEXCEPT;
/** Selects the locale remembered by qmFormat_HonorMachineLocale again. */
KB_API void qmFormat_RestoreDefaultLocale(void) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMFORMAT_H */
