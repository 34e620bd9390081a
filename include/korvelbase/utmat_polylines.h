/*
 * KorvelBase geometry kernel: intersections of polylines and the filling of unknown elevations.
 *
 * A polyline is n Point2d with an int count.  The abscissa of a point on a polyline is its
 * distance along it from the first point (segments of zero length add nothing and are skipped).
 * Point results come as three parallel arrays, each optional (null: not wanted): the points,
 * their abscissae on the first object and on the second.  Overlaps (collinear pieces) come as
 * two points, two abscissae on the first and two on the second per piece.  A new point
 * identical to a point already stored (UTMAT_PointsIdentiques at the tolerance) is dropped, so
 * a crossing at a shared vertex is reported once; overlaps are not deduplicated (the duplicate
 * test goes through a hash of tolerance cells, so its cost does not grow with the number of
 * points stored).  Appending stops at the capacity.  Failures go to the kernel error word
 * (a failing primitive, as on a NaN coordinate, or a failed allocation ends the call with the
 * results gathered so far).
 * Threads: the kernel is for one thread at a time; the nearest- and first-intersection queries
 * moreover share process-wide scratch storage, so their calls must never overlap.
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
 * The intersections of two polylines found by a merge walk over reference abscissae:
 * request->abs1 and request->abs2 give one abscissa per point of each polyline along a common
 * reference (a chainage), non-decreasing.  Exactly the segment pairs whose closed abscissa
 * intervals overlap are intersected (exact comparisons), in order of polyline 1's segments and,
 * within one, of polyline 2's; segments of polyline 2 that end before the current segment of
 * polyline 1 starts are left behind.  Abscissae reported are the curvilinear ones (plan length
 * from the first point, zero-length segments skipped), points are deduplicated and results
 * appended, counted and cut at the capacity as in UTMAT_CalculerIntersectionPolylignePolyligne,
 * without its limit of 50 per segment; for profiles (abscissa = x) the results are those of
 * the full walk.  Cost: linear for profiles (each segment of polyline 2 is met about twice);
 * segments of zero abscissa length at one abscissa on both polylines add the product of their
 * numbers.  Null abscissa arrays: ERR_FAILURE.  Abscissae that decrease or are NaN cannot make
 * the walk loop; they only make it miss pairs.
 */
KB_API void UTMAT_CalculerIntersectionPolylignePolyligneAvecAbscisses(
    const UtDonneesIntersection* request, int* pointFound, int* pointCount, Point2d* points,
    double* abscissae1, double* abscissae2, int* overlapFound, int* overlapCount,
    Point2d* overlapPoints, double* overlapAbscissae1, double* overlapAbscissae2) KB_NOEXCEPT;

/**
 * The intersection of a segment with a polyline nearest a reference point.  All intersections
 * are gathered as by UTMAT_CalculerIntersectionSegmentPolyligne with a capacity of 50 of each
 * kind.  Among the points, the nearest to the reference wins (the first of equals); unless
 * acceptReference is non-zero, points at the reference itself (distance <= |tol|) are passed
 * over.  Among the overlap ends (two per piece, the reference not passed over) likewise; an
 * overlap end wins only when strictly nearer than the best point.  Outputs: the point and its
 * abscissae on the segment and on the polyline (each optional, written only when something was
 * found), *isPoint = 1 for a point intersection, *isOverlapEnd = 1 for an overlap end; both 0
 * when nothing was found (no error).  segment, reference and both flags must not be null.
 * Threads: one at a time; the 50-entry scratch results are process-wide static storage.
 */
KB_API void UTMAT_CalculerIntersectionSegmentPolylignePlusProche(
    const Point2d* segment, const Point2d* polyline, int n, double tol, const Point2d* reference,
    int acceptReference, Point2d* point, double* abscissaOnSegment, double* abscissaOnPolyline,
    int* isPoint, int* isOverlapEnd) KB_NOEXCEPT;

/**
 * The same with a second polyline in place of the segment: intersections gathered as by
 * UTMAT_CalculerIntersectionPolylignePolyligne with a capacity of 50 of each kind (so only the
 * first 50 in that order are candidates); abscissae on polyline 1 and polyline 2.
 */
KB_API void UTMAT_CalculerIntersectionPolylignePolylignePlusProche(
    const Point2d* poly1, int n1, const Point2d* poly2, int n2, double tol,
    const Point2d* reference, int acceptReference, Point2d* point, double* abscissa1,
    double* abscissa2, int* isPoint, int* isOverlapEnd) KB_NOEXCEPT;

/**
 * The intersection of two polylines with the smallest abscissa on polyline 1, among the first
 * 50 of each kind gathered as by UTMAT_CalculerIntersectionPolylignePolyligne.  A point wins
 * ties with an overlap end.  Outputs as for the nearest intersection (point and abscissae
 * optional; *isPoint or *isOverlap set to 1, both 0 when the polylines do not meet).
 * Threads: one at a time; the scratch results are process-wide static storage.
 */
KB_API void UTMAT_CalculerPremiereIntersectionPolyligneAvecPolyligne(
    const Point2d* poly1, int n1, const Point2d* poly2, int n2, double tol, Point2d* point,
    double* abscissa1, double* abscissa2, int* isPoint, int* isOverlap) KB_NOEXCEPT;

/**
 * Cuts a profile (monotone in x; only P's x decides where) at P into two new block arrays of
 * Point2d (16-byte elements, released by the caller with MEM_LibererTableau; the counts are
 * the caller's to reset).  *first and *second must be null on entry.
 *   - P.x outside [min, max] of the first and last x, widened by tol: ERR_FAILURE, nothing
 *     written.
 *   - P.x equal (at tol) to the first x: first part empty (null, 0), second part a copy of the
 *     profile; equal to the last x: the reverse.  P itself is not inserted.
 *   - Otherwise the first part is the points strictly before P.x (at tol, in the profile's
 *     direction: increasing when the last x >= the first x) and then P; the second part is P
 *     and the points after it.  In a vertical run at P.x the run points are taken up to the
 *     segment that holds P (UTMAT_ComparerPointASegment), whose start is taken unless it is P
 *     (UTMAT_PointsIdentiques at tol); a run point identical to P is not repeated.
 * A block-array failure is copied into the kernel error word (UTMAT_GetErreur also gives the
 * detail word); nothing is handed back then (both parts null, counts 0).
 */
KB_API void UTMAT_SegmenterPolyligne(const Point2d* polyline, int n, const Point2d* p, double tol,
                                     Point2d** first, int* firstCount, Point2d** second,
                                     int* secondCount) KB_NOEXCEPT;

/** Results of UTMAT_SegmentDansContour. */
#define UTMAT_SEGMENT_FAILED 0      /* null pointer, allocation or primitive failure: ERR_FAILURE */
#define UTMAT_SEGMENT_INSIDE 1      /* inside the region, touching or running along its boundary at most */
#define UTMAT_SEGMENT_OUTSIDE 2     /* outside the region, touching or running along its boundary at most */
#define UTMAT_SEGMENT_CROSSES 3     /* partly inside, partly outside */
#define UTMAT_SEGMENT_ON_BOUNDARY 4 /* wholly on the boundary */

/**
 * Where a segment (two Point2d) lies against the region enclosed by a contour (even-odd rule
 * over the n - 1 segments given, as UTMAT_PointDansContour: repeat the first point at the
 * end; the boundary is taken at the tolerance).  The segment is cut wherever it meets the contour (its intersections
 * with the contour polyline at tol) and each piece is placed with UTMAT_PointDansContour at a
 * probe point (1/2, 1/3, 2/3, 1/4, ... 11/12 of the piece, the first whose ray passes no
 * level contour edge within the tolerance, the contour being turned a quarter turn for a
 * probe level with such an edge, since the test counts a level edge as one crossing).  A probe
 * on the boundary is confirmed by the recursive boundary test (both ends of the piece on the
 * boundary and, when they lie on different edges, both halves in turn), or else the first
 * probe off the boundary decides.  A segment of zero length is placed as
 * its point.  Bounds: the boundary test halves at most 60 times (a piece is then 2^-60 of the
 * segment and counts as on the boundary) and makes at most 60 (n + 2) midpoint tests (beyond
 * them it answers "not along the boundary").  Cost: O(n) for the cuts plus O(n) per piece and
 * per boundary test.  Returns a UTMAT_SEGMENT_* value; UTMAT_SEGMENT_FAILED with ERR_FAILURE
 * for a null pointer or a failing primitive (non-finite coordinates).
 */
KB_API int UTMAT_SegmentDansContour(const Point2d* segment, const Point2d* contour, int n,
                                    double tol) KB_NOEXCEPT;

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
