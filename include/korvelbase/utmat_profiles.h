/*
 * KorvelBase geometry kernel: the difference of two profiles.
 *
 * A profile is a Point2d polyline with x the chainage (non-decreasing) and y the level.  The
 * two profiles are walked together segment by segment over their common chainage; each piece
 * between chainages xa and xb has the mean difference m = (y1(xa) + y1(xb))/2 - (y2(xa) +
 * y2(xb))/2 and the area m (xb - xa) (0 when m is 0 at the calculation precision); where m > 0
 * profile 1 is above (its width and area go to the "above" totals), otherwise below or level.
 * Where the profiles cross, the crossing point is listed with a side code: the low byte is the
 * position of profile 1 relative to profile 2 just before it (2 below, 1 level, 4 above), bits
 * 16 to 18 just after (0x20000 below, 0x10000 level, 0x40000 above).  A crossing closes a zone,
 * whose signed area (positive where profile 1 is above) is listed for UTMAT_CalculateDiff2Lines.
 * The crossing lists are block arrays (release with MEM_LibererTableau); pass the address of a
 * null pointer, or null when the list is not wanted.  Totals are optional outputs.
 * Failures (allocation) go to the kernel error word.  Threads: one at a time with the kernel.
 */
#ifndef KORVELBASE_UTMAT_PROFILES_H
#define KORVELBASE_UTMAT_PROFILES_H

#include "korvelbase/utmat.h"

KB_BEGIN_DECLS

#define UTMAT_SIDE_BEFORE_BELOW 0x2
#define UTMAT_SIDE_BEFORE_LEVEL 0x1
#define UTMAT_SIDE_BEFORE_ABOVE 0x4
#define UTMAT_SIDE_AFTER_BELOW 0x20000
#define UTMAT_SIDE_AFTER_LEVEL 0x10000
#define UTMAT_SIDE_AFTER_ABOVE 0x40000

/** Lengths and areas above and below (or level), and the crossings of two profiles. */
KB_API void UTMAT_CalculerDifference2Polylignes(const Point2d* profile1, int n1, const Point2d* profile2, int n2,
                                                double* lengthAbove, double* areaAbove, double* lengthBelow,
                                                double* areaBelow, Point2d** crossings, int32_t** sides,
                                                int* count) KB_NOEXCEPT;
/**
 * The same, after the area check: a side next to a zone of zero area becomes level, and
 * crossings level on both sides are removed, so that every crossing left separates two zones of
 * non-zero area.
 */
KB_API void UTMAT_CalculerDifference2PolylignesAvecControleSurface(
    const Point2d* profile1, int n1, const Point2d* profile2, int n2, double* lengthAbove, double* areaAbove,
    double* lengthBelow, double* areaBelow, Point2d** crossings, int32_t** sides, int* count) KB_NOEXCEPT;
/**
 * UTMAT_CalculerDifference2Polylignes with the signed area of every zone (count + 1 of them:
 * before the first crossing, between crossings, after the last) in a block array; the three
 * further arguments are reserved (pass null).
 */
KB_API void UTMAT_CalculateDiff2Lines(const Point2d* profile1, int n1, const Point2d* profile2, int n2,
                                      double* lengthAbove, double* areaAbove, double* lengthBelow,
                                      double* areaBelow, Point2d** crossings, int32_t** sides, int* count,
                                      double** zoneAreas, void* reserved1, void* reserved2,
                                      void* reserved3) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_UTMAT_PROFILES_H */
