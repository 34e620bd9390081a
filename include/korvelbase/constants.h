/*
 * KorvelBase: exported double constants.
 *
 * Each constant is a read-only 64-bit IEEE double that callers link to by name.  The literal
 * values live in read-only data.  The values derived from pi are computed once, when the
 * library is loaded into the process, in this order:
 *   pi = atan2(1, 1) * 4,  2pi = pi + pi,  r = 1/pi,  180overpi = r * 180,
 *   piover180 = (1/180) * pi,  piover2 = pi * 0.5,  piover3 = pi * (1/3),
 *   piover4 = pi * 0.25,  piover6 = pi * (1/6),  iang_to_rad = (1/360000) * piover180,
 *   rad_to_iang = r * 64800000,  miang_to_rad = piover180 * (-1/360000).
 * Each derived value is within one unit in the last place of the correctly rounded result;
 * do not assume bit identity with a decimal literal.
 *
 * The integer angle unit ("iang") is 1/360000 of a degree: 129600000 units to the full turn.
 * dc_miang_to_rad is dc_iang_to_rad with its sign reversed, on purpose.
 */
#ifndef KORVELBASE_CONSTANTS_H
#define KORVELBASE_CONSTANTS_H

#include "korvelbase/export.h"

KB_BEGIN_DECLS

KB_API extern const double dc_zero;         /* 0.0 */
KB_API extern const double dc_onehalf;      /* 0.5 */
KB_API extern const double dc_1;            /* 1.0 */
KB_API extern const double dc_m1;           /* -1.0 */
KB_API extern const double dc_2;            /* 2.0 */
KB_API extern const double dc_3;            /* 3.0 */
KB_API extern const double dc_4;            /* 4.0 */
KB_API extern const double dc_5;            /* 5.0 */
KB_API extern const double dc_10;           /* 10.0 */
KB_API extern const double dc_30;           /* 30.0 */
KB_API extern const double dc_60;           /* 60.0 */
KB_API extern const double dc_90;           /* 90.0 */
KB_API extern const double dc_100;          /* 100.0 */
KB_API extern const double dc_180;          /* 180.0 */
KB_API extern const double dc_270;          /* 270.0 */
KB_API extern const double dc_360;          /* 360.0 */
KB_API extern const double dc_750;          /* 750.0 */
KB_API extern const double dc_1000;         /* 1000.0 */
KB_API extern const double dc_10000;        /* 10000.0 */
KB_API extern const double dc_100000;       /* 100000.0 */
KB_API extern const double dc_360000;       /* 360000.0 */
KB_API extern const double dc_p1;           /* 0.1 */
KB_API extern const double dc_p01;          /* 0.01 */
KB_API extern const double dc_p001;         /* 0.001 */
KB_API extern const double dc_p0001;        /* 0.0001 */
KB_API extern const double dc_mm_per_in;    /* 25.4 */

KB_API extern const double dc_pi;           /* pi */
KB_API extern const double dc_2pi;          /* 2 pi */
KB_API extern const double dc_piover2;      /* pi / 2 */
KB_API extern const double dc_piover3;      /* pi * (1/3) */
KB_API extern const double dc_piover4;      /* pi / 4 */
KB_API extern const double dc_piover6;      /* pi * (1/6) */
KB_API extern const double dc_piover180;    /* (1/180) * pi: radians per degree */
KB_API extern const double dc_180overpi;    /* 180 * (1/pi): degrees per radian */
KB_API extern const double dc_iang_to_rad;  /* radians per integer angle unit */
KB_API extern const double dc_rad_to_iang;  /* integer angle units per radian */
KB_API extern const double dc_miang_to_rad; /* -(radians per integer angle unit) */

KB_END_DECLS

#endif /* KORVELBASE_CONSTANTS_H */
