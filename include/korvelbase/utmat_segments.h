/*
 * KorvelBase geometry kernel: intersection of two segments and position comparison of two
 * profile segments.
 *
 * A segment is two consecutive Point2d, start then end; functions take a pointer to the first.
 * The abscissa of a point on a segment is its distance from the segment's start along it.
 * Both functions report failures through the kernel error word (UTMAT_GetErreur), cleared on
 * entry; finding nothing is not a failure.  Threads: the kernel's state is process-wide; one
 * thread at a time.
 */
#ifndef KORVELBASE_UTMAT_SEGMENTS_H
#define KORVELBASE_UTMAT_SEGMENTS_H

#include "korvelbase/utmat.h"

KB_BEGIN_DECLS

/**
 * Intersection of segment 1 (P1, Q1) and segment 2 (P2, Q2) at tolerance tol (the kernel's
 * tolerant comparisons, closed intervals):
 *  - lines meeting in a point I that lies on both segments: *pointFound = 1, I and its
 *    abscissae on both segments;
 *  - collinear segments (P2 at distance 0 from line 1 at tol) overlapping over a positive
 *    length: *overlapFound = 1, the two ends of the common part in the direction of segment 1
 *    with their abscissae on both segments.  When the common part ends at Q1, the abscissa on
 *    segment 2 is a + L1 (L2 - (a + L1) when segment 2 runs against segment 1), a being P2's
 *    (or Q2's) position along segment 1: this value is kept as it stands;
 *  - collinear segments that only touch end to end: *pointFound = 1 at the shared end.
 * pointFound and overlapFound must not be null (both cleared first); every other output may be
 * null.  A zero-length segment sets ERR_FAILURE in the error word.
 */
KB_API void UTMAT_CalculerIntersectionSegmentSegment(const Point2d* segment1, const Point2d* segment2,
                                                     double tol, int* pointFound, Point2d* point,
                                                     double* abscissa1, double* abscissa2,
                                                     int* overlapFound, Point2d* overlapPoints,
                                                     double* overlapAbscissae1,
                                                     double* overlapAbscissae2) KB_NOEXCEPT;

/** Side codes of UTMAT_ComparerPosition2Segments: second segment above, on, below the first. */
#define UTMAT_SIDE_ABOVE 1
#define UTMAT_SIDE_ON 0
#define UTMAT_SIDE_BELOW (-1)

/** Coincidence flags of UTMAT_ComparerPosition2Segments. */
#define UTMAT_POSITION_SECOND_VERTICAL 0x20
#define UTMAT_POSITION_STARTS_EQUAL 0x01       /* first start x == second start x */
#define UTMAT_POSITION_END_EQUALS_START 0x02   /* first end x == second start x */
#define UTMAT_POSITION_START_EQUALS_END 0x04   /* first start x == second end x */
#define UTMAT_POSITION_ENDS_EQUAL 0x08         /* first end x == second end x */

/**
 * Compares two profile segments (x increasing, exact comparisons) over their common x range.
 * status = 10 * class(second start x) + class(second end x), class against the first's range:
 * 2 beyond its end, 3 within (bounds included), 4 before its start; 22 and 44 have no common
 * range (only status and flags are written).  For the other statuses: the range [x0, x1], the y
 * of both segments at x0 and x1 (linear interpolation), the side of the second segment at x0
 * and at x1 (UTMAT_SIDE_*), and whether and where they cross (opposite sides: the lines'
 * intersection, the middle of the range for parallel lines; a side of 0 at one end: that end).
 * A vertical first segment is handled as a point column at its x.  Segments running in
 * decreasing x (statuses 23, 24, 34) write nothing beyond status and flags.  Every pointer
 * must be valid (null: ERR_FAILURE in the error word, nothing written).
 */
KB_API void UTMAT_ComparerPosition2Segments(const Point2d* first, const Point2d* second, int* crosses,
                                            Point2d* crossing, int* sideBefore, int* sideAfter,
                                            double* x0, double* x1, double* firstY0, double* firstY1,
                                            double* secondY0, double* secondY1, int* flags,
                                            int* status) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_UTMAT_SEGMENTS_H */
