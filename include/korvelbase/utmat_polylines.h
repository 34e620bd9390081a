/*
 * KorvelBase geometry kernel: intersections of polylines and the filling of unknown elevations.
 *
 * A polyline is n Point2d with an int count.  The abscissa of a point on a polyline is its
 * distance along it from the first point (segments of zero length add nothing and are skipped).
 * Point results come as three parallel arrays, each optional (null: not wanted): the points,
 * their abscissae on the first object and on the second.  Overlaps (collinear pieces) come as
 * two points, two abscissae on the first and two on the second per piece.  A new point
 * identical to a point already stored (UTMAT_PointsIdentiques at the tolerance) is dropped, so
 * a crossing at a shared vertex is reported once; overlaps are not deduplicated.  Appending
 * stops at the capacity.  Failures go to the kernel error word.  Threads: one at a time.
 */
#ifndef KORVELBASE_UTMAT_POLYLINES_H
#define KORVELBASE_UTMAT_POLYLINES_H

#include "korvelbase/utmat.h"

KB_BEGIN_DECLS

/** The request record of the polyline-polyline intersections. */
typedef struct UtDonneesIntersection {
    Point2d* pts1;
    int32_t n1;
    Point2d* pts2;
    int32_t n2;
    double tol;
    int32_t capacity;
    double* abs1; /* one abscissa per point of polyline 1, non-decreasing (abscissa walk only) */
    double* abs2;
} UtDonneesIntersection;

/**
 * Intersections of a segment (two Point2d) with a polyline, in the polyline's segment order.
 * Found flags and counts must not be null; the arrays may be.  With all three point arrays
 * null, the point count grows by one per polyline segment that the segment crosses.
 */
KB_API void UTMAT_CalculerIntersectionSegmentPolyligne(
    const Point2d* segment, const Point2d* polyline, int n, double tol, int capacity,
    int* pointFound, int* pointCount, Point2d* points, double* abscissaeOnSegment,
    double* abscissaeOnPolyline, int* overlapFound, int* overlapCount, Point2d* overlapPoints,
    double* overlapAbscissaeOnSegment, double* overlapAbscissaeOnPolyline) KB_NOEXCEPT;

/**
 * Every intersection of two polylines, ordered by segment of polyline 1 and, within one, by
 * segment of polyline 2.  At most 50 intersections of each kind are kept per segment of
 * polyline 1.  Candidate segment pairs are found through an index of polyline 2's segment
 * boxes (grown by the tolerance), visited in polyline-2 order, so results and their order are
 * those of visiting every pair while the cost follows the pairs that can meet.
 */
KB_API void UTMAT_CalculerIntersectionPolylignePolyligne(
    const UtDonneesIntersection* request, int* pointFound, int* pointCount, Point2d* points,
    double* abscissae1, double* abscissae2, int* overlapFound, int* overlapCount,
    Point2d* overlapPoints, double* overlapAbscissae1, double* overlapAbscissae2) KB_NOEXCEPT;

/**
 * 1 when P lies on segment AB at the tolerance: P identical to A or B, or strictly between
 * them along AB (AB.AP > 0 and AB.PB > 0, exact) with a distance from the line within tol.
 * 0 otherwise (on the extension beyond B, for instance).
 */
KB_API int UTMAT_ComparerPointASegment(const Point2d* p, const Point2d* a, const Point2d* b,
                                       double tol) KB_NOEXCEPT;
/**
 * Where P lies on a polyline: at vertex i (*first = i, *second = -1), on the segment from
 * vertex i to i + 1 (*first = i, *second = i + 1), or nowhere (both -1).  The first hit in
 * order wins.
 */
KB_API void UTMAT_PointSurPolyligne(const Point2d* polyline, int n, const Point2d* p, double tol,
                                    int* first, int* second) KB_NOEXCEPT;
/**
 * Crossing-number test along a ray towards +x over the n - 1 segments between consecutive
 * points (the contour is not closed here): 1 inside, 2 outside, -(i + 1) when P lies on
 * segment i (named by its end vertex).  A segment with both ends left of, above or below P
 * (at the tolerance) is skipped; a level segment not skipped counts once; a vertex at the
 * ray's height counts for the segment that has its other end strictly above the ray only, so
 * a contour crossing the ray at a vertex counts once and one touching it counts 0 or 2 times.
 * Fewer than 2 points: 2.
 */
KB_API int UTMAT_PointDansContour(const Point2d* p, const Point2d* contour, int n, double tol) KB_NOEXCEPT;

/** Elevation-fill statuses. */
#define UTMAT_FILL_DONE 0
#define UTMAT_FILL_TOO_FEW_POINTS 1
#define UTMAT_FILL_NOTHING_TO_FILL (-1)
#define UTMAT_FILL_NO_ELEVATION 2
#define UTMAT_FILL_COINCIDENT_POINTS 3

/**
 * Fills unknown elevations (known[i] == 0) of a 3-D polyline in place, run by run of unknown
 * points, along the plan distance: one known side only gives a constant (or, with a grade
 * there, that grade extended); known ends on both sides give a straight line, a parabola
 * keeping the grade on the side that has one (z = zi + g t + c t^2 meeting zj, or the mirror
 * from j), or, with grades on both sides, the cubic that leaves i with the grade before it and
 * meets j with the grade after it.  A grade needs two consecutive known points.  *status:
 * UTMAT_FILL_* (fewer than 2 points; nothing unknown; nothing known; two consecutive points
 * closer in plan than the calculation precision: nothing done).
 */
KB_API void UTMAT_CalculerInterpolationCurviligneDuZ(Point3d* points, int n, const int32_t* known,
                                                     int* status) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_UTMAT_POLYLINES_H */
