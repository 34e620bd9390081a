/*
 * KorvelBase: conversion of surveying quantities (qmConversion_ family).
 *
 * Angles inside the library are radians; degrees, grads and degree-minute-second parts appear
 * only at this boundary.  Conventions:
 *   - a direction is measured counter-clockwise from the +x axis (east), in radians;
 *   - an azimuth is measured clockwise from the +y axis (north), in radians unless the
 *     function name says degrees;
 *   - bearing quadrants are 1 north-east, 2 south-east, 3 south-west, 4 north-west, 0 none;
 *   - degree-minute(-second) parts all carry the sign of the angle: -10.5 degrees is
 *     (-10, -30, 0), never (-10, 30, 0).
 * Lengths: the US survey foot is 1200/3937 m, the international foot 0.3048 m.  The factors
 * are the stored doubles quoted below; the two foot-to-foot factors are stored rounded and are
 * not exact reciprocals of each other.
 *
 * Every function is a pure computation and may be called from any thread.  The family uses
 * one small tolerance, 5e-08, for its carries, grid tests and near-zero guards.
 */
#ifndef KORVELBASE_CONVERSION_H
#define KORVELBASE_CONVERSION_H

#include "korvelbase/types.h"

/**
 * Largest number of bytes qmConversion_doubleToString can write, the terminating NUL
 * included: a sign, the 309 integer digits of the largest double, a decimal point and
 * 8 decimals (319 characters) plus the NUL.  A buffer of this size is always enough.
 */
#define QM_CONVERSION_DOUBLE_TEXT_SIZE 320

KB_BEGIN_DECLS

/* ---- Angle units -------------------------------------------------------------------------- */

/** Degrees to radians: dc_piover180 * degrees. */
KB_API double qmConversion_degreeToRadian(double degrees) KB_NOEXCEPT;

/** Radians to degrees: dc_180overpi * radians. */
KB_API double qmConversion_radianToDegree(double radians) KB_NOEXCEPT;

/** Grads (400 to the turn) to radians: (dc_pi * 0.005) * grads. */
KB_API double qmConversion_gradToRadian(double grads) KB_NOEXCEPT;

/** Radians to grads: (200 / dc_pi) * radians. */
KB_API double qmConversion_radianToGrad(double radians) KB_NOEXCEPT;

/* ---- Degrees, minutes and seconds ----------------------------------------------------------- */

/**
 * Splits an angle in degrees into whole degrees d (truncated toward zero) and minutes
 * m = (angle - d) * 60, both with the sign of the angle.  Minutes within 5e-08 of +60 or -60
 * carry into the degrees (m becomes 0, d moves by one).  Each part is stored only when its
 * pointer is not null.
 * Returns 0, or ERR_FAILURE with nothing stored when the angle is NaN or |angle| >= INT_MAX
 * (whole degrees that, after a carry, might not fit in an int).
 */
KB_API int qmConversion_degreeToDM(int* degrees, double* minutes, double angle) KB_NOEXCEPT;

/**
 * Splits an angle in degrees into whole degrees, whole minutes and seconds, all truncated
 * toward zero and carrying the sign of the angle.  Seconds within 5e-08 of +60 or -60 carry
 * into the minutes, and then minutes of exactly +60 or -60 carry into the degrees, so
 * 10.99999999999 gives (11, 0, 0.0).  Each part is stored only when its pointer is not null.
 * Returns 0, or ERR_FAILURE with nothing stored when the angle is NaN or |angle| >= INT_MAX
 * (whole degrees that, after a carry, might not fit in an int).
 */
KB_API int qmConversion_degreeToDMS(int* degrees, int* minutes, double* seconds,
                                    double angle) KB_NOEXCEPT;

/**
 * Degrees and minutes to degrees: degrees + minutes / 60, also stored in *out when out is not
 * null.  The parts are simply summed: mixed signs are not corrected.
 */
KB_API double qmConversion_DMToDegree(double* out, int degrees, double minutes) KB_NOEXCEPT;

/**
 * Degrees, minutes and seconds to degrees: (seconds / 3600 + minutes / 60) + degrees, also
 * stored in *out when out is not null.  The parts are simply summed: (-10, 30, 0) gives -9.5.
 */
KB_API double qmConversion_DMSTodegree(double* out, int degrees, int minutes,
                                       double seconds) KB_NOEXCEPT;

/* ---- Rounding to a step --------------------------------------------------------------------- */

/**
 * Rounds value to the grid of multiples of |step|.
 *   - |step| < 5e-08: the value is returned unchanged.
 *   - a value whose remainder fmod(value, step) is within 5e-08 of zero is on the grid and
 *     is returned unchanged, whatever the mode.
 *   - mode 1: the grid value above (toward plus infinity);
 *     mode 2: the grid value below (toward minus infinity);
 *     mode 3: the nearest grid value, ties toward plus infinity (2.5 -> 3, -2.5 -> -2 at a
 *             step of 1); a remainder within 5e-08 below half a step already counts as a tie
 *             for a positive value;
 *     any other mode: 0.0 (deliberately).
 * The result is returned and, when out is not null, also stored in *out.
 */
KB_API double qmConversion_roundDouble(double* out, double value, double step,
                                       int mode) KB_NOEXCEPT;

/**
 * qmConversion_roundDouble with step = 10^-digits (digits may be negative: -2 rounds to
 * hundreds).  The result is returned and stored in *out when out is not null.
 */
KB_API double qmConversion_roundDoubleByDecimalDigits(double* out, double value, int digits,
                                                      int mode) KB_NOEXCEPT;

/* ---- Feet and metres ------------------------------------------------------------------------ */

/** US survey feet to metres: feet * 0.3048006096012192 (1200/3937). */
KB_API double qmConversion_usfootToMeter(double feet) KB_NOEXCEPT;

/** International feet to metres: feet * 0.3048. */
KB_API double qmConversion_internationalFootToMeter(double feet) KB_NOEXCEPT;

/** Metres to US survey feet: metres * 3.2808333333333333 (3937/1200). */
KB_API double qmConversion_meterToUsFoot(double metres) KB_NOEXCEPT;

/** Metres to international feet: metres * 3.280839895013123 (1/0.3048). */
KB_API double qmConversion_meterToInternationalFoot(double metres) KB_NOEXCEPT;

/**
 * US survey feet to international feet: feet * 1.000002000004, the reciprocal of 0.999998
 * stored rounded to 13 significant digits.
 */
KB_API double qmConversion_usFootToInternationalFoot(double feet) KB_NOEXCEPT;

/**
 * International feet to US survey feet: feet * 0.999998 (= 0.3048 * 3937 / 1200).  The two
 * foot-to-foot factors are used as stored and are not exact reciprocals of each other (their
 * product is 1 - 8e-21, which rounds to 1 in double precision).
 */
KB_API double qmConversion_internationalFootToUsFoot(double feet) KB_NOEXCEPT;

/* ---- Degree of curvature -------------------------------------------------------------------- */

/**
 * Radius to degree of curvature, arc definition: the angle in degrees subtended by an arc of
 * 100 length units, D = 100 * 360 / (2 * pi * R) (about 5729.578 / R).  Returns 0 when
 * |R| <= 5e-08.  The sign of R passes through.
 */
KB_API double qmConversion_radiusToDegree(double radius) KB_NOEXCEPT;

/**
 * Degree of curvature (arc definition) to radius: R = 100 * 360 / (2 * pi * D).  Returns 0
 * when |D| <= 5e-08.  The sign of D passes through.
 */
KB_API double qmConversion_degreeToRadius(double degree) KB_NOEXCEPT;

/**
 * Radius to degree of curvature, chord definition: the angle in degrees subtended by a chord
 * of 100 length units, D = 2 * asin(50 / R).  Returns 0 when |R| < 50 (no such chord); 50
 * gives 180.  The sign of R passes through.
 */
KB_API double qmConversion_radiusToDegreeChord(double radius) KB_NOEXCEPT;

/**
 * Degree of curvature (chord definition) to radius: R = 50 / sin(D / 2), D in degrees.
 * Returns 0 when |D| <= 5e-08.  The sign of D passes through.
 */
KB_API double qmConversion_degreeToRadiusChord(double degree) KB_NOEXCEPT;

/* ---- Azimuths, directions and quadrants ----------------------------------------------------- */

/**
 * Azimuth (radians, clockwise from north) to direction (radians, counter-clockwise from east):
 * normalizeAngle(pi/2 - azimuth), in [0, 2*pi).  The formula is its own inverse: the same call
 * turns a direction into an azimuth.
 */
KB_API double qmConversion_azimuthToDirection(double azimuth) KB_NOEXCEPT;

/**
 * qmConversion_azimuthToDirection in degrees: the azimuth is converted to radians, turned into
 * a direction and the result converted back to degrees, in [0, 360).  Its own inverse too.
 */
KB_API double qmConversion_azimuthToDirectionDegree(double azimuth) KB_NOEXCEPT;

/**
 * Bearing quadrant of a direction (radians): 1 north-east [0, pi/2), 4 north-west
 * [pi/2, pi), 3 south-west [pi, 3*pi/2), 2 south-east [3*pi/2, 2*pi), tested on the direction
 * normalised to [0, 2*pi).  Every boundary is shifted down by 5e-08, so a direction within
 * 5e-08 below a boundary already counts in the next quadrant; a direction within 5e-08 below
 * 2*pi gives 0 (deliberately: it does not wrap to quadrant 1).  NaN gives 0.
 */
KB_API int qmConversion_quadrantNumber(double direction) KB_NOEXCEPT;

/* ---- Text ----------------------------------------------------------------------------------- */

/**
 * Writes value as printf's "%-.*lf" with the number of decimals clamped to 0..8, followed by a
 * NUL, and returns the number of characters written (the NUL not counted, so it equals
 * strlen(buffer)).  No length is passed: the caller provides room for the text, at most
 * QM_CONVERSION_DOUBLE_TEXT_SIZE bytes with the NUL.  Exactly the text and its NUL are
 * written, nothing beyond.  A null buffer writes nothing and returns 0.
 */
KB_API int qmConversion_doubleToString(char* buffer, double value, int decimals) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_CONVERSION_H */
